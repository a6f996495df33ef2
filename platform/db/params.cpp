#include "platform/db/params.h"

namespace {

TFieldType TypeOfValue(const Variant& v) {
  switch (v.VarType() & varTypeMask) {
    case varBoolean: return ftBoolean;
    case varSmallint:
    case varShortInt:
    case varByte: return ftSmallint;
    case varWord:
    case varInteger: return ftInteger;
    case varLongWord:
    case varInt64:
    case varUInt64: return ftLargeint;
    case varSingle:
    case varDouble: return ftFloat;
    case varCurrency: return ftCurrency;
    case varDate: return ftDateTime;
    case varOleStr:
    case varString:
    case varUString: return ftString;
    default: return ftUnknown;
  }
}

// Replaces `items` by one item per name, reusing the items of names
// already present.
template <class T, class Make>
void UpdateByNames(std::vector<std::unique_ptr<T>>& items, const std::vector<String>& names, Make make) {
  std::vector<std::unique_ptr<T>> next;
  for (const String& name : names) {
    std::unique_ptr<T> item;
    for (auto& old : items)
      if (old && SameText(old->Name(), name)) {
        item = std::move(old);
        break;
      }
    if (!item) item = make(name);
    item->SetName(name);
    next.push_back(std::move(item));
  }
  items = std::move(next);
}

}  // namespace

// ---- TParam ------------------------------------------------------------------

KELMAR_PUBLISH(TParam) {
  r.Prop(u"Name", &TParam::Name, &TParam::SetName);
  r.Prop(u"ParamType", &TParam::ParamType, &TParam::SetParamType);
  r.Prop(u"DataType", &TParam::DataType, &TParam::SetDataType);
}

void TParam::Put(const Variant& v, TFieldType type) {
  value_ = v;
  bound_ = true;
  if (type != ftUnknown) dataType_ = type;
}

void TParam::SetValue(const Variant& v) { Put(v, dataType_ == ftUnknown ? TypeOfValue(v) : ftUnknown); }
void TParam::Clear() { Put(Null(), ftUnknown); }
void TParam::SetAsString(const String& v) { Put(Variant(v), ftString); }
void TParam::SetAsInteger(int v) { Put(Variant(v), ftInteger); }
void TParam::SetAsLargeInt(int64_t v) { Put(Variant(v), ftLargeint); }
void TParam::SetAsFloat(double v) { Put(Variant(v), ftFloat); }
void TParam::SetAsDateTime(TDateTime v) { Put(Variant(v), ftDateTime); }
void TParam::SetAsDate(TDateTime v) { Put(Variant(v), ftDate); }
void TParam::SetAsBoolean(bool v) { Put(Variant(v), ftBoolean); }

void TParam::Assign(TPersistent* Source) {
  auto* p = dynamic_cast<TParam*>(Source);
  if (!p) return TPersistent::Assign(Source);
  name_ = p->name_;
  paramType_ = p->paramType_;
  dataType_ = p->dataType_;
  value_ = p->value_;
  bound_ = p->bound_;
}

// ---- TParams -----------------------------------------------------------------

KELMAR_PUBLISH(TParams) {}

TParam* TParams::Items(int index) const {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return items_[static_cast<size_t>(index)].get();
}

TParam* TParams::FindParam(const String& name) const {
  for (const auto& p : items_)
    if (SameText(p->Name(), name)) return p.get();
  return nullptr;
}

TParam* TParams::ParamByName(const String& name) const {
  TParam* p = FindParam(name);
  if (!p) throw EDatabaseError(u"Parameter '" + name + u"' not found");
  return p;
}

TParam* TParams::CreateParam(TFieldType type, const String& name, TParamType paramType) {
  items_.push_back(NewParam(name));
  items_.back()->SetDataType(type);
  items_.back()->SetParamType(paramType);
  return items_.back().get();
}

void TParams::AssignValues(const TParams* Other) {
  if (!Other) return;
  for (const auto& p : items_)
    if (TParam* q = Other->FindParam(p->Name())) {
      p->SetDataType(q->DataType());
      p->SetValue(q->Value());
      p->SetBound(q->Bound());
    }
}

void TParams::Update(const std::vector<String>& names) {
  UpdateByNames(items_, names, [this](const String& name) { return NewParam(name); });
}

Variant TParams::ParamValues(const String& names) const {
  std::vector<TParam*> list;
  int start = 1;
  for (int i = 1; i <= names.Length() + 1; ++i) {
    if (i <= names.Length() && names[i] != u';') continue;
    String name = Trim(names.SubString(start, i - start));
    start = i + 1;
    if (!name.IsEmpty()) list.push_back(ParamByName(name));
  }
  if (list.size() == 1) return list[0]->Value();
  Variant result = VarArrayCreate(0, static_cast<int>(list.size()) - 1);
  for (size_t i = 0; i < list.size(); ++i) result.PutElement(static_cast<int>(i), list[i]->Value());
  return result;
}

void TParams::SetParamValues(const String& names, const Variant& value) {
  int start = 1, index = 0;
  for (int i = 1; i <= names.Length() + 1; ++i) {
    if (i <= names.Length() && names[i] != u';') continue;
    String name = Trim(names.SubString(start, i - start));
    start = i + 1;
    if (name.IsEmpty()) continue;
    ParamByName(name)->SetValue(value.IsArray() ? value.GetElement(VarArrayLowBound(value, 1) + index) : value);
    ++index;
  }
}

void TParams::Assign(TPersistent* Source) {
  auto* other = dynamic_cast<TParams*>(Source);
  if (!other) return TPersistent::Assign(Source);
  if (other == this) return;
  items_.clear();
  for (const auto& p : other->items_) {
    items_.push_back(NewParam(p->Name()));
    items_.back()->Assign(p.get());
  }
}

KELMAR_PUBLISH(TOraParam) { r.Prop(u"Size", &TOraParam::Size, &TOraParam::SetSize); }
KELMAR_PUBLISH(TOraParams) {}

// ---- Macros ------------------------------------------------------------------

KELMAR_PUBLISH(TMacro) {
  r.Prop(u"Name", &TMacro::Name, &TMacro::SetName);
  r.Prop(u"Value", &TMacro::Value, &TMacro::SetValue);
  r.Prop(u"Active", &TMacro::Active, &TMacro::SetActive).Default = 1;
}

void TMacro::Assign(TPersistent* Source) {
  auto* m = dynamic_cast<TMacro*>(Source);
  if (!m) return TPersistent::Assign(Source);
  name_ = m->name_;
  value_ = m->value_;
  active_ = m->active_;
}

KELMAR_PUBLISH(TMacros) {}

TMacro* TMacros::Items(int index) const {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return items_[static_cast<size_t>(index)].get();
}

TMacro* TMacros::FindMacro(const String& name) const {
  for (const auto& m : items_)
    if (SameText(m->Name(), name)) return m.get();
  return nullptr;
}

TMacro* TMacros::MacroByName(const String& name) const {
  TMacro* m = FindMacro(name);
  if (!m) throw EDatabaseError(u"Macro '" + name + u"' not found");
  return m;
}

void TMacros::AssignValues(const TMacros* Other) {
  if (!Other) return;
  for (const auto& m : items_)
    if (TMacro* o = Other->FindMacro(m->Name())) {
      m->SetValue(o->Value());
      m->SetActive(o->Active());
    }
}

void TMacros::Update(const std::vector<String>& names) {
  UpdateByNames(items_, names, [](const String& name) { return std::make_unique<TMacro>(name); });
}
