#include "platform/ui/menus.h"

#include <algorithm>

#include "platform/rtl/sysutils.h"
#include "platform/ui/uiport.h"

// ---- Actions ---------------------------------------------------------------------

KELMAR_PUBLISH(TBasicAction) {
  r.Prop(u"OnExecute", &TBasicAction::OnExecute);
  r.Prop(u"OnUpdate", &TBasicAction::OnUpdate);
}

bool TBasicAction::Execute() {
  if (!OnExecute) return false;
  OnExecute(this);
  return true;
}

bool TBasicAction::Update() {
  if (!OnUpdate) return false;
  OnUpdate(this);
  return true;
}

KELMAR_PUBLISH(TAction) {
  r.Prop(u"Caption", &TAction::Caption, &TAction::SetCaption);
  r.Prop(u"Checked", &TAction::Checked, &TAction::SetChecked).Default = 0;
  r.Prop(u"Enabled", &TAction::Enabled, &TAction::SetEnabled).Default = 1;
  r.Prop(u"Hint", &TAction::Hint, &TAction::SetHint);
  r.Prop(u"ImageIndex", &TAction::ImageIndex, &TAction::SetImageIndex).Default = -1;
  r.Prop(u"ShortCut", &TAction::ShortCut, &TAction::SetShortCut).Default = 0;
  r.Prop(u"Visible", &TAction::Visible, &TAction::SetVisible).Default = 1;
}

TAction::~TAction() {
  while (!clients_.empty()) clients_.back()->SetAction(nullptr);
}

void TAction::SetCaption(const String& v) { caption_ = v; Changed(); }
void TAction::SetEnabled(bool v) { enabled_ = v; Changed(); }
void TAction::SetVisible(bool v) { visible_ = v; Changed(); }
void TAction::SetChecked(bool v) { checked_ = v; Changed(); }
void TAction::SetShortCut(TShortCut v) { shortCut_ = v; Changed(); }

void TAction::Changed() {
  for (TMenuItem* item : clients_) item->ActionChanged();
}

bool TAction::Execute() {
  Update();
  if (!enabled_) return false;
  return inherited::Execute();
}

KELMAR_PUBLISH(TActionList) {}

void TActionList::AddAction(TBasicAction* action) {
  if (std::find(actions_.begin(), actions_.end(), action) != actions_.end()) return;
  actions_.push_back(action);
  action->FreeNotification(this);
}

void TActionList::RemoveAction(TBasicAction* action) {
  actions_.erase(std::remove(actions_.begin(), actions_.end(), action), actions_.end());
}

void TActionList::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove) actions_.erase(std::remove(actions_.begin(), actions_.end(), AComponent), actions_.end());
}

bool TActionList::IsShortCut(Word Key, TShiftState Shift) {
  TShortCut sc = ::ShortCut(Key, Shift);
  if (sc == 0) return false;
  for (TBasicAction* a : std::vector<TBasicAction*>(actions_)) {
    auto* action = dynamic_cast<TAction*>(a);
    if (!action || action->ShortCut() != sc) continue;
    action->Update();
    return action->Enabled() && action->Execute();
  }
  return false;
}

// ---- Menu items --------------------------------------------------------------------

KELMAR_PUBLISH(TMenuItem) {
  r.Prop(u"Action", &TMenuItem::Action, &TMenuItem::SetAction);
  r.Prop(u"AutoCheck", &TMenuItem::AutoCheck, &TMenuItem::SetAutoCheck).Default = 0;
  r.Prop(u"Caption", &TMenuItem::Caption, &TMenuItem::SetCaption);
  r.Prop(u"Checked", &TMenuItem::Checked, &TMenuItem::SetChecked).Default = 0;
  r.Prop(u"Enabled", &TMenuItem::Enabled, &TMenuItem::SetEnabled).Default = 1;
  r.Prop(u"GroupIndex", &TMenuItem::GroupIndex, &TMenuItem::SetGroupIndex).Default = 0;
  r.Prop(u"Hint", &TMenuItem::Hint, &TMenuItem::SetHint);
  r.Prop(u"ImageIndex", &TMenuItem::ImageIndex, &TMenuItem::SetImageIndex).Default = -1;
  r.Prop(u"RadioItem", &TMenuItem::RadioItem, &TMenuItem::SetRadioItem).Default = 0;
  r.Prop(u"ShortCut", &TMenuItem::ShortCut, &TMenuItem::SetShortCut).Default = 0;
  r.Prop(u"Visible", &TMenuItem::Visible, &TMenuItem::SetVisible).Default = 1;
  r.Prop(u"OnClick", &TMenuItem::OnClick);
}

TMenuItem::TMenuItem(TComponent* AOwner) : TComponent(AOwner) {}

TMenuItem::~TMenuItem() {
  SetAction(nullptr);
  while (!items_.empty()) delete items_.back();
  if (parent_) parent_->Remove(this);
}

void TMenuItem::SetChecked(bool v) {
  checked_ = v;
  // A checked radio item unchecks the others of its group.
  if (v && radioItem_ && parent_)
    for (TMenuItem* sibling : parent_->items_)
      if (sibling != this && sibling->radioItem_ && sibling->groupIndex_ == groupIndex_) sibling->checked_ = false;
}

void TMenuItem::SetAction(TAction* action) {
  if (action_ == action) return;
  if (action_) {
    auto& clients = action_->clients_;
    clients.erase(std::remove(clients.begin(), clients.end(), this), clients.end());
    action_->RemoveFreeNotification(this);
  }
  action_ = action;
  if (action) {
    action->clients_.push_back(this);
    action->FreeNotification(this);
    ActionChanged();
  }
}

void TMenuItem::ActionChanged() {
  caption_ = action_->Caption();
  enabled_ = action_->Enabled();
  visible_ = action_->Visible();
  checked_ = action_->Checked();
  shortCut_ = action_->ShortCut();
  hint_ = action_->Hint();
  imageIndex_ = action_->ImageIndex();
}

void TMenuItem::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == action_) action_ = nullptr;
}

TMenuItem* TMenuItem::Items(int index) const {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return items_[static_cast<size_t>(index)];
}

void TMenuItem::Add(TMenuItem* item) { Insert(Count(), item); }

void TMenuItem::Insert(int index, TMenuItem* item) {
  if (!item) return;
  if (item->parent_) throw EInvalidOperation(u"Menu inserted twice");
  if (index < 0 || index > Count()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  items_.insert(items_.begin() + index, item);
  item->parent_ = this;
}

void TMenuItem::Delete(int index) {
  TMenuItem* item = Items(index);
  items_.erase(items_.begin() + index);
  item->parent_ = nullptr;
}

void TMenuItem::Remove(TMenuItem* item) {
  int i = IndexOf(item);
  if (i >= 0) Delete(i);
}

void TMenuItem::Clear() {
  while (!items_.empty()) delete items_.back();
}

int TMenuItem::IndexOf(const TMenuItem* item) const {
  auto it = std::find(items_.begin(), items_.end(), item);
  return it == items_.end() ? -1 : static_cast<int>(it - items_.begin());
}

TMenuItem* TMenuItem::Find(const String& caption) const {
  String wanted = StripHotkey(caption);
  for (TMenuItem* item : items_)
    if (SameText(StripHotkey(item->caption_), wanted)) return item;
  return nullptr;
}

void TMenuItem::SetMenuIndex(int index) {
  if (!parent_) return;
  TMenuItem* p = parent_;
  p->Remove(this);
  p->Insert(std::clamp(index, 0, p->Count()), this);
}

void TMenuItem::Click() {
  if (!enabled_) return;
  if (autoCheck_) SetChecked(!checked_);
  if (action_ && action_->Execute()) return;
  OnClick(this);
}

TMenuItem* TMenuItem::FindShortCut(TShortCut shortCut) {
  if (!visible_) return nullptr;
  if (shortCut_ == shortCut && enabled_) return this;
  for (TMenuItem* item : items_)
    if (TMenuItem* found = item->FindShortCut(shortCut)) return found;
  return nullptr;
}

// ---- Menus ------------------------------------------------------------------------

KELMAR_PUBLISH(TMenu) {}

TMenu::TMenu(TComponent* AOwner) : TComponent(AOwner), items_(new TMenuItem(nullptr)) {}

TMenu::~TMenu() { delete items_; }

bool TMenu::IsShortCut(Word Key, TShiftState Shift) {
  TShortCut sc = ::ShortCut(Key, Shift);
  if (sc == 0) return false;
  for (int i = 0; i < items_->Count(); ++i) {
    if (TMenuItem* item = items_->Items(i)->FindShortCut(sc)) {
      item->Click();
      return true;
    }
  }
  return false;
}

KELMAR_PUBLISH(TPopupMenu) {
  r.Prop(u"Alignment", &TPopupMenu::Alignment, &TPopupMenu::SetAlignment).Default = paLeft;
  r.Prop(u"AutoPopup", &TPopupMenu::AutoPopup, &TPopupMenu::SetAutoPopup).Default = 1;
  r.Prop(u"OnPopup", &TPopupMenu::OnPopup);
}

void TPopupMenu::SetPopupComponent(TComponent* c) {
  if (popupComponent_ == c) return;
  if (popupComponent_) popupComponent_->RemoveFreeNotification(this);
  popupComponent_ = c;
  if (c) c->FreeNotification(this);
}

void TPopupMenu::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == popupComponent_) popupComponent_ = nullptr;
}

void TPopupMenu::Popup(int X, int Y) {
  try {
    DoPopup();
  } catch (const EAbort&) {
    return;
  }
  if (TMenuItem* picked = CurrentUserInterface().TrackPopupMenu(*this, X, Y)) picked->Click();
}

KELMAR_PUBLISH(TMainMenu) {}

String StripHotkey(const String& caption) {
  String result;
  for (int i = 1; i <= caption.Length(); ++i) {
    if (caption[i] == u'&' && i < caption.Length()) ++i;
    else if (caption[i] == u'&') continue;
    result += caption[i];
  }
  return result;
}

TMenuItem* NewItem(TComponent* owner, const String& caption, TShortCut shortCut, TNotifyEvent onClick,
                   const String& name) {
  auto* item = new TMenuItem(owner);
  if (!name.IsEmpty()) item->SetName(name);
  item->SetCaption(caption);
  item->SetShortCut(shortCut);
  item->OnClick = std::move(onClick);
  return item;
}

TMenuItem* NewLine(TComponent* owner) { return NewItem(owner, u"-", 0, nullptr); }
