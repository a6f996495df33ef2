#include "platform/rtl/classes.h"

#include <algorithm>

#include "platform/rtl/exceptions.h"

KELMAR_PUBLISH(TPersistent) {}

void TPersistent::Assign(TPersistent* Source) {
  if (Source) {
    Source->AssignTo(this);
    return;
  }
  AssignError(nullptr);
}

void TPersistent::AssignTo(TPersistent* Dest) { Dest->AssignError(this); }

void TPersistent::AssignError(const TPersistent* Source) const {
  String source = Source ? Source->ClassName() : String(u"nil");
  throw EConvertError(u"Cannot assign a " + source + u" to a " + ClassName());
}

String TPersistent::GetNamePath() const { return ClassName(); }

KELMAR_PUBLISH(TComponent) {
  r.Prop(u"Name", &TComponent::Name, &TComponent::SetName);
  r.Prop(u"Tag", &TComponent::Tag, &TComponent::SetTag).Default = 0;
}

TComponent::TComponent(TComponent* AOwner) {
  if (AOwner) AOwner->InsertComponent(this);
}

TComponent::~TComponent() {
  state_ << csDestroying;
  // Tell every peer that asked; they must drop their pointers to us.
  while (!freeNotifies_.empty()) {
    TComponent* peer = freeNotifies_.back();
    freeNotifies_.pop_back();
    auto& back = peer->freeNotifies_;
    back.erase(std::remove(back.begin(), back.end(), this), back.end());
    peer->Notification(this, opRemove);
  }
  DestroyComponents();
  if (owner_) owner_->RemoveComponent(this);
}

TComponent* TComponent::Components(int index) const {
  if (index < 0 || index >= ComponentCount())
    throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return components_[static_cast<size_t>(index)];
}

int TComponent::ComponentIndex() const {
  if (!owner_) return -1;
  auto& list = owner_->components_;
  auto it = std::find(list.begin(), list.end(), this);
  return it == list.end() ? -1 : static_cast<int>(it - list.begin());
}

TComponent* TComponent::FindComponent(const String& AName) const {
  if (AName.IsEmpty()) return nullptr;
  for (TComponent* c : components_)
    if (SameText(c->name_, AName)) return c;
  return nullptr;
}

namespace {
bool IsValidIdent(const String& s) {
  if (s.IsEmpty()) return false;
  auto alpha = [](char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_'; };
  auto digit = [](char16_t c) { return c >= u'0' && c <= u'9'; };
  if (!alpha(s.view()[0])) return false;
  for (char16_t c : s.view())
    if (!alpha(c) && !digit(c)) return false;
  return true;
}
}  // namespace

void TComponent::SetName(const String& NewName) {
  if (name_ == NewName) return;
  if (!NewName.IsEmpty() && !IsValidIdent(NewName))
    throw EComponentError(u"'" + NewName + u"' is not a valid component name");
  if (owner_ && !NewName.IsEmpty()) {
    TComponent* other = owner_->FindComponent(NewName);
    if (other && other != this) throw EComponentError(u"A component named " + NewName + u" already exists");
  }
  name_ = NewName;
}

void TComponent::Insert(TComponent* AComponent) {
  components_.push_back(AComponent);
  AComponent->owner_ = this;
}

void TComponent::Remove(TComponent* AComponent) {
  components_.erase(std::remove(components_.begin(), components_.end(), AComponent), components_.end());
  AComponent->owner_ = nullptr;
}

void TComponent::InsertComponent(TComponent* AComponent) {
  if (!AComponent->name_.IsEmpty() && FindComponent(AComponent->name_))
    throw EComponentError(u"A component named " + AComponent->name_ + u" already exists");
  if (AComponent->owner_) AComponent->owner_->RemoveComponent(AComponent);
  Insert(AComponent);
  if (state_.Contains(csDesigning)) AComponent->SetDesigning(true);
  Notification(AComponent, opInsert);
}

void TComponent::RemoveComponent(TComponent* AComponent) {
  Notification(AComponent, opRemove);
  Remove(AComponent);
}

void TComponent::DestroyComponents() {
  while (!components_.empty()) {
    TComponent* c = components_.back();
    Remove(c);
    delete c;
  }
}

void TComponent::SetState(TComponentStateFlag flag, bool on) {
  if (on) state_ << flag;
  else state_ >> flag;
}

void TComponent::SetDesigning(bool value, bool setChildren) {
  SetState(csDesigning, value);
  if (setChildren)
    for (TComponent* c : components_) c->SetDesigning(value, true);
}

void TComponent::BeginLoading() { state_ << csLoading; }

void TComponent::Loaded() { state_ >> csLoading; }

void TComponent::FreeNotification(TComponent* AComponent) {
  if (!AComponent || AComponent == this) return;
  if (std::find(freeNotifies_.begin(), freeNotifies_.end(), AComponent) == freeNotifies_.end()) {
    freeNotifies_.push_back(AComponent);
    AComponent->freeNotifies_.push_back(this);
  }
  state_ << csFreeNotification;
}

void TComponent::RemoveFreeNotification(TComponent* AComponent) {
  if (!AComponent) return;
  freeNotifies_.erase(std::remove(freeNotifies_.begin(), freeNotifies_.end(), AComponent), freeNotifies_.end());
  auto& back = AComponent->freeNotifies_;
  back.erase(std::remove(back.begin(), back.end(), this), back.end());
}

void TComponent::Notification(TComponent* AComponent, TOperation Operation) {
  if (Operation == opRemove && AComponent) RemoveFreeNotification(AComponent);
  // Siblings hear of one another through their owner.
  for (int i = ComponentCount() - 1; i >= 0; --i) {
    if (i >= ComponentCount()) continue;
    TComponent* c = components_[static_cast<size_t>(i)];
    if (c != AComponent) c->Notification(AComponent, Operation);
  }
}

String TComponent::GetNamePath() const { return name_; }
