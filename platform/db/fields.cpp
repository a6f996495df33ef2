#include "platform/db/fields.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "platform/db/dataset.h"
#include "platform/db/editmask.h"
#include "platform/rtl/format.h"

using TCell = TRecordStore::TCell;

namespace {

// Blob bytes travel as text one byte per character, so that no byte is
// lost on the way through a String; text with wider characters is stored
// as UTF-8.
String BytesToText(std::string_view bytes) {
  std::u16string s(bytes.size(), u'\0');
  for (size_t i = 0; i < bytes.size(); ++i) s[i] = static_cast<unsigned char>(bytes[i]);
  return String(std::move(s));
}

std::string TextToBytes(const String& text) {
  for (char16_t c : text.view())
    if (c > 0xFF) return text.ToUtf8();
  std::string s(static_cast<size_t>(text.Length()), '\0');
  for (size_t i = 0; i < s.size(); ++i) s[i] = static_cast<char>(text.view()[i]);
  return s;
}

// UTF-8 to String with a quick path for ASCII, the common case of
// fetched text.
String Utf8ToText(std::string_view bytes) {
  const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
  unsigned char high = 0;
  for (size_t i = 0; i < bytes.size(); ++i) high |= in[i];
  if (high >= 0x80) return String::FromUtf8(bytes);
  // Built straight from the bytes: no zeroed buffer written a second time.
  return String(std::u16string(in, in + bytes.size()));
}

TCell IntegerCell(int64_t v) {
  TCell c;
  c.Null = false;
  c.Int = v;
  return c;
}
TCell FloatCell(double v) {
  TCell c;
  c.Null = false;
  c.Float = v;
  return c;
}
TCell BytesCell(std::string v) {
  TCell c;
  c.Null = false;
  c.Bytes = std::move(v);
  return c;
}

}  // namespace

// ---- TFieldDefs ------------------------------------------------------------

KELMAR_PUBLISH(TFieldDef) {
  r.Prop(u"Name", &TFieldDef::Name, &TFieldDef::SetName);
  r.Prop(u"DataType", &TFieldDef::DataType, &TFieldDef::SetDataType);
  r.Prop(u"Size", &TFieldDef::Size, &TFieldDef::SetSize);
  r.Prop(u"Precision", &TFieldDef::Precision, &TFieldDef::SetPrecision);
  r.Prop(u"Required", &TFieldDef::Required, &TFieldDef::SetRequired);
}

KELMAR_PUBLISH(TFieldDefs) {}

TFieldDef* TFieldDefs::Items(int index) const {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return items_[static_cast<size_t>(index)].get();
}

TFieldDef* TFieldDefs::AddFieldDef() {
  items_.push_back(std::make_unique<TFieldDef>());
  items_.back()->fieldNo_ = Count();
  return items_.back().get();
}

TFieldDef* TFieldDefs::Add(const String& name, TFieldType type, int size, bool required) {
  if (name.IsEmpty()) throw EDatabaseError(u"Field name missing");
  if (IndexOf(name) >= 0) throw EDatabaseError(u"Duplicate field name '" + name + u"'");
  TFieldDef* def = AddFieldDef();
  def->name_ = name;
  def->dataType_ = type;
  def->size_ = size;
  def->required_ = required;
  return def;
}

int TFieldDefs::IndexOf(const String& name) const {
  for (int i = 0; i < Count(); ++i)
    if (SameText(items_[static_cast<size_t>(i)]->name_, name)) return i;
  return -1;
}

TFieldDef* TFieldDefs::Find(const String& name) const {
  int i = IndexOf(name);
  if (i < 0) throw EDatabaseError(u"Field '" + name + u"' not found");
  return items_[static_cast<size_t>(i)].get();
}

void TFieldDefs::Assign(TPersistent* Source) {
  auto* other = dynamic_cast<TFieldDefs*>(Source);
  if (!other) return TPersistent::Assign(Source);
  if (other == this) return;
  items_.clear();
  for (const auto& d : other->items_) {
    TFieldDef* def = AddFieldDef();
    int no = def->fieldNo_;
    *def = *d;
    def->fieldNo_ = no;
  }
}

// ---- TField ------------------------------------------------------------------

KELMAR_PUBLISH(TField) {
  r.Prop(u"FieldName", &TField::FieldName, &TField::SetFieldName);
  r.Prop(u"FieldKind", &TField::FieldKind, &TField::SetFieldKind);
  r.Prop(u"DataType", &TField::DataType, nullptr);
  r.Prop(u"Size", &TField::Size, &TField::SetSize);
  r.Prop(u"DisplayLabel", &TField::DisplayLabel, &TField::SetDisplayLabel);
  r.Prop(u"DisplayWidth", &TField::DisplayWidth, &TField::SetDisplayWidth);
  r.Prop(u"Visible", &TField::Visible, &TField::SetVisible).Default = 1;
  r.Prop(u"EditMask", &TField::EditMask, &TField::SetEditMask);
  r.Prop(u"Alignment", &TField::Alignment, &TField::SetAlignment);
  r.Prop(u"ReadOnly", &TField::ReadOnly, &TField::SetReadOnly).Default = 0;
  r.Prop(u"Required", &TField::Required, &TField::SetRequired).Default = 0;
  r.Prop(u"Origin", &TField::Origin, &TField::SetOrigin);
  r.Prop(u"LookupDataSet", &TField::LookupDataSet, &TField::SetLookupDataSet);
  r.Prop(u"KeyFields", &TField::KeyFields, &TField::SetKeyFields);
  r.Prop(u"LookupKeyFields", &TField::LookupKeyFields, &TField::SetLookupKeyFields);
  r.Prop(u"LookupResultField", &TField::LookupResultField, &TField::SetLookupResultField);
  r.Prop(u"OnChange", &TField::OnChange);
  r.Prop(u"OnValidate", &TField::OnValidate);
  r.Prop(u"OnGetText", &TField::OnGetText);
  r.Prop(u"OnSetText", &TField::OnSetText);
}

TField::TField(TComponent* AOwner) : TField(AOwner, ftUnknown, ckText) {}

TField::TField(TComponent* AOwner, TFieldType type, TColumnKind kind)
    : TComponent(AOwner), dataType_(type), columnKind_(kind) {}

TField::~TField() {
  if (lookupDataSet_) lookupDataSet_->RemoveFreeNotification(this);
  if (dataSet_) dataSet_->Fields()->Remove(this);
}

void TField::SetDataSet(TDataSet* ADataSet) {
  if (ADataSet == dataSet_) return;
  if (dataSet_) dataSet_->CheckInactive();
  if (ADataSet) {
    ADataSet->CheckInactive();
    if (!fieldName_.IsEmpty() && ADataSet->FindField(fieldName_))
      DatabaseError(u"Duplicate field name '" + fieldName_ + u"'", ADataSet);
  }
  if (dataSet_) dataSet_->Fields()->Remove(this);
  dataSet_ = ADataSet;
  if (dataSet_) dataSet_->Fields()->Add(this);
}

void TField::SetFieldName(const String& v) {
  if (dataSet_ && dataSet_->Active()) dataSet_->CheckInactive();
  fieldName_ = v;
}

int TField::Index() const { return dataSet_ ? dataSet_->Fields()->IndexOf(this) : -1; }

bool TField::IsBlob() const { return dynamic_cast<const TBlobField*>(this) != nullptr; }

void TField::SetDisplayLabel(const String& v) {
  displayLabel_ = v == fieldName_ ? String() : v;
  if (dataSet_) dataSet_->DataEvent(deLayoutChange);
}

int TField::DisplayWidth() const { return displayWidth_ > 0 ? displayWidth_ : DefaultWidth(); }

void TField::SetDisplayWidth(int v) {
  displayWidth_ = v;
  if (dataSet_) dataSet_->DataEvent(deLayoutChange);
}

void TField::SetVisible(bool v) {
  visible_ = v;
  if (dataSet_) dataSet_->DataEvent(deLayoutChange);
}

void TField::SetEditMask(const String& v) {
  editMask_ = v;
  if (dataSet_) dataSet_->DataEvent(deLayoutChange);
}

void TField::SetAlignment(TAlignment v) {
  alignment_ = v;
  if (dataSet_) dataSet_->DataEvent(deLayoutChange);
}

bool TField::CanModify() const {
  if (readOnly_ || !dataSet_) return false;
  if (fieldKind_ != fkData && fieldKind_ != fkLookup) return false;
  return dataSet_->CanModify();
}

void TField::SetLookupDataSet(TDataSet* v) {
  if (lookupDataSet_ == v) return;
  if (lookupDataSet_) lookupDataSet_->RemoveFreeNotification(this);
  lookupDataSet_ = v;
  if (v) v->FreeNotification(this);
}

void TField::Notification(TComponent* AComponent, TOperation Operation) {
  TComponent::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == lookupDataSet_) lookupDataSet_ = nullptr;
}

void TField::CheckRequired() const {
  if (required_ && !readOnly_ && fieldKind_ == fkData && IsNull())
    DatabaseError(u"Field '" + DisplayName() + u"' must have a value", dataSet_);
}

// ---- Cells -------------------------------------------------------------------

bool TField::ReadInteger(int64_t& v) const {
  if (!dataSet_) return false;
  if (column_ < 0) {
    const TCell& c = dataSet_->CalcCell(this);
    v = c.Int;
    return !c.Null;
  }
  TRecordStore::RowId row;
  if (!dataSet_->ActiveRow(row) || dataSet_->Store().IsNull(row, column_)) return false;
  v = dataSet_->Store().Integer(row, column_);
  return true;
}

bool TField::ReadFloat(double& v) const {
  if (!dataSet_) return false;
  if (column_ < 0) {
    const TCell& c = dataSet_->CalcCell(this);
    v = c.Float;
    return !c.Null;
  }
  TRecordStore::RowId row;
  if (!dataSet_->ActiveRow(row) || dataSet_->Store().IsNull(row, column_)) return false;
  v = dataSet_->Store().Float(row, column_);
  return true;
}

bool TField::ReadBytes(std::string_view& v) const {
  if (!dataSet_) return false;
  if (column_ < 0) {
    const TCell& c = dataSet_->CalcCell(this);
    v = c.Bytes;
    return !c.Null;
  }
  TRecordStore::RowId row;
  if (!dataSet_->ActiveRow(row) || dataSet_->Store().IsNull(row, column_)) return false;
  v = dataSet_->Store().Bytes(row, column_);
  return true;
}

void TField::WriteInteger(int64_t v) {
  if (!dataSet_) DatabaseError(u"Field '" + DisplayName() + u"' has no dataset");
  dataSet_->SetFieldData(this, IntegerCell(v));
}

void TField::WriteFloat(double v) {
  if (!dataSet_) DatabaseError(u"Field '" + DisplayName() + u"' has no dataset");
  if (!std::isfinite(v)) DatabaseError(u"Invalid floating point value for field '" + DisplayName() + u"'");
  dataSet_->SetFieldData(this, FloatCell(v));
}

void TField::WriteBytes(std::string_view v) {
  if (!dataSet_) DatabaseError(u"Field '" + DisplayName() + u"' has no dataset");
  dataSet_->SetFieldData(this, BytesCell(std::string(v)));
}

void TField::WriteNull() {
  if (!dataSet_) DatabaseError(u"Field '" + DisplayName() + u"' has no dataset");
  dataSet_->SetFieldData(this, TCell());
}

bool TField::IsNull() const {
  switch (columnKind_) {
    case ckInteger: {
      int64_t v;
      return !ReadInteger(v);
    }
    case ckFloat: {
      double v;
      return !ReadFloat(v);
    }
    default: {
      std::string_view v;
      return !ReadBytes(v);
    }
  }
}

void TField::Clear() { WriteNull(); }

// ---- Conversions -------------------------------------------------------------

void TField::AccessError(const char16_t* typeName) const {
  DatabaseError(u"Cannot access field '" + DisplayName() + u"' as type " + typeName, dataSet_);
}

void TField::ConvertError(const String& text, const char16_t* what) const {
  DatabaseError(u"'" + text + u"' is not a valid " + what + u" value for field '" + DisplayName() + u"'", dataSet_);
}

int TField::AsInteger() const {
  int64_t v = GetAsLargeInt();
  if (v < std::numeric_limits<int>::min() || v > std::numeric_limits<int>::max())
    DatabaseError(u"Value of field '" + DisplayName() + u"' is out of the range of Integer", dataSet_);
  return static_cast<int>(v);
}

String TField::GetAsString() const { AccessError(u"String"); }
int64_t TField::GetAsLargeInt() const { AccessError(u"Integer"); }
double TField::GetAsFloat() const { AccessError(u"Float"); }
TDateTime TField::GetAsDateTime() const { AccessError(u"TDateTime"); }
bool TField::GetAsBoolean() const { AccessError(u"Boolean"); }
Variant TField::GetAsVariant() const { AccessError(u"Variant"); }
void TField::SetAsStringValue(const String&) { AccessError(u"String"); }
void TField::SetAsLargeIntValue(int64_t) { AccessError(u"Integer"); }
void TField::SetAsFloatValue(double) { AccessError(u"Float"); }
void TField::SetAsDateTimeValue(TDateTime) { AccessError(u"TDateTime"); }
void TField::SetAsBooleanValue(bool) { AccessError(u"Boolean"); }

void TField::SetAsVariant(const Variant& v) {
  if (v.IsNull() || v.IsEmpty()) return Clear();
  switch (v.VarType() & varTypeMask) {
    case varBoolean: return SetAsBoolean(v.AsBoolean());
    case varSmallint:
    case varInteger:
    case varShortInt:
    case varByte:
    case varWord:
    case varLongWord:
    case varInt64: return SetAsLargeInt(v.AsInt64());
    case varSingle:
    case varDouble:
    case varCurrency: return SetAsFloat(v.AsFloat());
    case varDate: return SetAsDateTime(v.AsDateTime());
    default: return SetAsString(v.AsString());
  }
}

Variant TField::OldValue() const {
  if (!dataSet_ || column_ < 0) return Null();
  const TCell* c = dataSet_->OldCell(this);
  if (!c) return Value();
  if (c->Null) return Null();
  switch (columnKind_) {
    case ckInteger:
      if (dataType_ == ftBoolean) return Variant(c->Int != 0);
      return Variant(c->Int);
    case ckFloat:
      if (dataType_ == ftDate || dataType_ == ftTime || dataType_ == ftDateTime || dataType_ == ftTimeStamp)
        return Variant(TDateTime(c->Float));
      return Variant(c->Float);
    case ckText: return Variant(Utf8ToText(c->Bytes));
    case ckBlob: return Variant(BytesToText(c->Bytes));
  }
  return Null();
}

bool TField::GetData(void* Buffer) const {
  switch (columnKind_) {
    case ckInteger: {
      int64_t v;
      if (!ReadInteger(v)) return false;
      if (Buffer) std::memcpy(Buffer, &v, sizeof v);
      return true;
    }
    case ckFloat: {
      double v;
      if (!ReadFloat(v)) return false;
      if (Buffer) std::memcpy(Buffer, &v, sizeof v);
      return true;
    }
    default: {
      std::string_view v;
      if (!ReadBytes(v)) return false;
      if (Buffer && !v.empty()) std::memcpy(Buffer, v.data(), v.size());
      return true;
    }
  }
}

int TField::DataSize() const {
  if (columnKind_ == ckInteger || columnKind_ == ckFloat) return 8;
  std::string_view v;
  return ReadBytes(v) ? static_cast<int>(v.size()) : 0;
}

// ---- Text --------------------------------------------------------------------

String TField::GetText(bool) const { return IsNull() ? String() : GetAsString(); }

String TField::GetTextWithEvent(bool displayText) const {
  if (OnGetText) {
    String text;
    OnGetText(const_cast<TField*>(this), text, displayText);
    return text;
  }
  return GetText(displayText);
}

void TField::SetText(const String& v) {
  if (OnSetText) OnSetText(this, v);
  else SetAsString(v);
}

String TField::EditText() const {
  String text = Text();
  return editMask_.IsEmpty() ? text : FormatMaskText(editMask_, text);
}

// ---- TStringField ------------------------------------------------------------

KELMAR_PUBLISH(TStringField) {}

TStringField::TStringField(TComponent* AOwner) : TStringField(AOwner, ftString) {}
TStringField::TStringField(TComponent* AOwner, TFieldType type) : TField(AOwner, type, ckText) { SetSize(20); }

String TStringField::GetAsString() const {
  std::string_view v;
  return ReadBytes(v) ? Utf8ToText(v) : String();
}

int64_t TStringField::GetAsLargeInt() const {
  String s = Trim(GetAsString());
  if (s.IsEmpty()) return 0;
  int64_t v;
  if (!TryStrToInt64(s, v)) throw EConvertError(u"'" + s + u"' is not a valid integer value");
  return v;
}

double TStringField::GetAsFloat() const {
  String s = Trim(GetAsString());
  if (s.IsEmpty()) return 0;
  return StrToFloat(s);
}

TDateTime TStringField::GetAsDateTime() const {
  String s = Trim(GetAsString());
  return s.IsEmpty() ? TDateTime() : StrToDateTime(s);
}

bool TStringField::GetAsBoolean() const {
  String s = Trim(GetAsString());
  if (s.IsEmpty()) return false;
  bool v;
  if (!TryStrToBool(s, v)) throw EConvertError(u"'" + s + u"' is not a valid boolean value");
  return v;
}

Variant TStringField::GetAsVariant() const {
  std::string_view v;
  return ReadBytes(v) ? Variant(Utf8ToText(v)) : Null();
}

void TStringField::SetAsStringValue(const String& v) { WriteBytes(v.ToUtf8()); }
void TStringField::SetAsLargeIntValue(int64_t v) { SetAsStringValue(IntToStr(v)); }
void TStringField::SetAsFloatValue(double v) { SetAsStringValue(FloatToStr(v)); }
void TStringField::SetAsDateTimeValue(TDateTime v) { SetAsStringValue(DateTimeToStr(v)); }
void TStringField::SetAsBooleanValue(bool v) { SetAsStringValue(BoolToStr(v, true)); }

String TStringField::GetText(bool displayText) const {
  String s = GetAsString();
  if (displayText && !EditMask().IsEmpty()) return FormatMaskText(EditMask(), s);
  return s;
}

KELMAR_PUBLISH(TWideStringField) {}
TWideStringField::TWideStringField(TComponent* AOwner) : TStringField(AOwner, ftWideString) {}

// ---- TNumericField -----------------------------------------------------------

KELMAR_PUBLISH(TNumericField) {
  r.Prop(u"DisplayFormat", &TNumericField::DisplayFormat, &TNumericField::SetDisplayFormat);
  r.Prop(u"EditFormat", &TNumericField::EditFormat, &TNumericField::SetEditFormat);
}

TNumericField::TNumericField(TComponent* AOwner, TFieldType type, TColumnKind kind) : TField(AOwner, type, kind) {
  SetAlignment(taRightJustify);
}

void TNumericField::SetDisplayFormat(const String& v) {
  displayFormat_ = v;
  if (DataSet()) DataSet()->DataEvent(deLayoutChange);
}

void TNumericField::SetEditFormat(const String& v) {
  editFormat_ = v;
  if (DataSet()) DataSet()->DataEvent(deLayoutChange);
}

String TNumericField::FormatNumber(double v, bool displayText, int precision) const {
  const String& format = displayText || editFormat_.IsEmpty() ? displayFormat_ : editFormat_;
  if (!format.IsEmpty()) return FormatFloat(format, v);
  return FloatToStrF(v, ffGeneral, precision, 0);
}

// ---- Integer fields ----------------------------------------------------------

KELMAR_PUBLISH(TIntegerField) {
  r.Prop(u"MinValue", &TIntegerField::MinValue, &TIntegerField::SetMinValue);
  r.Prop(u"MaxValue", &TIntegerField::MaxValue, &TIntegerField::SetMaxValue);
}

TIntegerField::TIntegerField(TComponent* AOwner)
    : TIntegerField(AOwner, ftInteger, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()) {}

TIntegerField::TIntegerField(TComponent* AOwner, TFieldType type, int64_t low, int64_t high)
    : TNumericField(AOwner, type, ckInteger), low_(low), high_(high) {}

String TIntegerField::GetAsString() const {
  int64_t v;
  return ReadInteger(v) ? IntToStr(v) : String();
}

int64_t TIntegerField::GetAsLargeInt() const {
  int64_t v;
  return ReadInteger(v) ? v : 0;
}

double TIntegerField::GetAsFloat() const { return static_cast<double>(GetAsLargeInt()); }
bool TIntegerField::GetAsBoolean() const { return GetAsLargeInt() != 0; }

Variant TIntegerField::GetAsVariant() const {
  int64_t v;
  if (!ReadInteger(v)) return Null();
  if (v >= std::numeric_limits<int>::min() && v <= std::numeric_limits<int>::max()) return Variant(static_cast<int>(v));
  return Variant(v);
}

void TIntegerField::SetAsStringValue(const String& v) {
  String s = Trim(v);
  if (s.IsEmpty()) return Clear();
  int64_t n;
  if (!TryStrToInt64(s, n)) ConvertError(v, u"integer");
  SetAsLargeIntValue(n);
}

void TIntegerField::SetAsLargeIntValue(int64_t v) {
  int64_t low = low_, high = high_;
  if (minValue_ != 0 || maxValue_ != 0) {
    low = minValue_;
    high = maxValue_;
  }
  if (v < low || v > high)
    DatabaseError(IntToStr(v) + u" is not a valid value for field '" + DisplayName() + u"'. The allowed range is " +
                      IntToStr(low) + u" to " + IntToStr(high),
                  DataSet());
  WriteInteger(v);
}

void TIntegerField::SetAsFloatValue(double v) {
  double r = std::nearbyint(v);
  if (!(r >= -9.2e18 && r <= 9.2e18)) ConvertError(FloatToStr(v), u"integer");
  SetAsLargeIntValue(static_cast<int64_t>(r));
}

void TIntegerField::SetAsBooleanValue(bool v) { SetAsLargeIntValue(v ? 1 : 0); }

String TIntegerField::GetText(bool displayText) const {
  int64_t v;
  if (!ReadInteger(v)) return String();
  const String& format = displayText || EditFormat().IsEmpty() ? DisplayFormat() : EditFormat();
  return format.IsEmpty() ? IntToStr(v) : FormatFloat(format, static_cast<double>(v));
}

KELMAR_PUBLISH(TSmallintField) {}
TSmallintField::TSmallintField(TComponent* AOwner) : TIntegerField(AOwner, ftSmallint, -32768, 32767) {}
KELMAR_PUBLISH(TWordField) {}
TWordField::TWordField(TComponent* AOwner) : TIntegerField(AOwner, ftWord, 0, 65535) {}
KELMAR_PUBLISH(TLargeintField) {}
TLargeintField::TLargeintField(TComponent* AOwner)
    : TIntegerField(AOwner, ftLargeint, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max()) {}
KELMAR_PUBLISH(TAutoIncField) {}
TAutoIncField::TAutoIncField(TComponent* AOwner)
    : TIntegerField(AOwner, ftAutoInc, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()) {}

// ---- Float fields ------------------------------------------------------------

KELMAR_PUBLISH(TFloatField) {
  r.Prop(u"Precision", &TFloatField::Precision, &TFloatField::SetPrecision);
  r.Prop(u"Currency", &TFloatField::Currency, &TFloatField::SetCurrency);
}

TFloatField::TFloatField(TComponent* AOwner) : TFloatField(AOwner, ftFloat) {}
TFloatField::TFloatField(TComponent* AOwner, TFieldType type) : TNumericField(AOwner, type, ckFloat) {}

String TFloatField::GetAsString() const {
  double v;
  return ReadFloat(v) ? FloatToStrF(v, ffGeneral, precision_, 0) : String();
}

int64_t TFloatField::GetAsLargeInt() const {
  double v = GetAsFloat();
  double r = std::nearbyint(v);
  if (!(r >= -9.2e18 && r <= 9.2e18)) DatabaseError(u"Value of field '" + DisplayName() + u"' is out of range", DataSet());
  return static_cast<int64_t>(r);
}

double TFloatField::GetAsFloat() const {
  double v;
  return ReadFloat(v) ? v : 0;
}

TDateTime TFloatField::GetAsDateTime() const { return TDateTime(GetAsFloat()); }

Variant TFloatField::GetAsVariant() const {
  double v;
  return ReadFloat(v) ? Variant(v) : Null();
}

void TFloatField::SetAsStringValue(const String& v) {
  String s = Trim(v);
  if (s.IsEmpty()) return Clear();
  double d;
  if (!TryStrToFloat(s, d)) ConvertError(v, u"floating point");
  SetAsFloatValue(d);
}

void TFloatField::SetAsLargeIntValue(int64_t v) { SetAsFloatValue(static_cast<double>(v)); }
void TFloatField::SetAsFloatValue(double v) { WriteFloat(v); }

String TFloatField::GetText(bool displayText) const {
  double v;
  if (!ReadFloat(v)) return String();
  if (currency_ && DisplayFormat().IsEmpty() && (displayText || EditFormat().IsEmpty()))
    return displayText ? FloatToStrF(v, ffCurrency, precision_, FormatSettings.CurrencyDecimals)
                       : FloatToStrF(v, ffFixed, precision_, FormatSettings.CurrencyDecimals);
  return FormatNumber(v, displayText, precision_);
}

KELMAR_PUBLISH(TCurrencyField) {}
TCurrencyField::TCurrencyField(TComponent* AOwner) : TFloatField(AOwner, ftCurrency) { SetCurrency(true); }
KELMAR_PUBLISH(TBCDField) {}
TBCDField::TBCDField(TComponent* AOwner) : TBCDField(AOwner, ftBCD) {}
TBCDField::TBCDField(TComponent* AOwner, TFieldType type) : TFloatField(AOwner, type) { SetSize(4); }
KELMAR_PUBLISH(TFMTBCDField) {}
TFMTBCDField::TFMTBCDField(TComponent* AOwner) : TBCDField(AOwner, ftFMTBcd) {}

// ---- TBooleanField -----------------------------------------------------------

KELMAR_PUBLISH(TBooleanField) {
  r.Prop(u"DisplayValues", &TBooleanField::DisplayValues, &TBooleanField::SetDisplayValues);
}

TBooleanField::TBooleanField(TComponent* AOwner) : TField(AOwner, ftBoolean, ckInteger) {}

String TBooleanField::GetAsString() const {
  int64_t v;
  if (!ReadInteger(v)) return String();
  int semi = displayValues_.Pos(u";");
  if (semi == 0) return v ? displayValues_ : String();
  return v ? displayValues_.SubString(1, semi - 1) : displayValues_.SubString(semi + 1, displayValues_.Length());
}

int64_t TBooleanField::GetAsLargeInt() const { return GetAsBoolean() ? 1 : 0; }

bool TBooleanField::GetAsBoolean() const {
  int64_t v;
  return ReadInteger(v) && v != 0;
}

Variant TBooleanField::GetAsVariant() const {
  int64_t v;
  return ReadInteger(v) ? Variant(v != 0) : Null();
}

void TBooleanField::SetAsStringValue(const String& v) {
  String s = Trim(v);
  if (s.IsEmpty()) return Clear();
  int semi = displayValues_.Pos(u";");
  String yes = semi ? displayValues_.SubString(1, semi - 1) : displayValues_;
  String no = semi ? displayValues_.SubString(semi + 1, displayValues_.Length()) : String();
  bool b;
  if (!yes.IsEmpty() && SameText(s, yes)) b = true;
  else if (!no.IsEmpty() && SameText(s, no)) b = false;
  else if (!TryStrToBool(s, b)) ConvertError(v, u"boolean");
  WriteInteger(b ? 1 : 0);
}

void TBooleanField::SetAsLargeIntValue(int64_t v) { WriteInteger(v != 0 ? 1 : 0); }
void TBooleanField::SetAsBooleanValue(bool v) { WriteInteger(v ? 1 : 0); }

// ---- Dates and times ---------------------------------------------------------

KELMAR_PUBLISH(TDateTimeField) {
  r.Prop(u"DisplayFormat", &TDateTimeField::DisplayFormat, &TDateTimeField::SetDisplayFormat);
}

TDateTimeField::TDateTimeField(TComponent* AOwner) : TDateTimeField(AOwner, ftDateTime) {}
TDateTimeField::TDateTimeField(TComponent* AOwner, TFieldType type) : TField(AOwner, type, ckFloat) {}

void TDateTimeField::SetDisplayFormat(const String& v) {
  displayFormat_ = v;
  if (DataSet()) DataSet()->DataEvent(deLayoutChange);
}

String TDateTimeField::DefaultFormat() const { return u"c"; }
TDateTime TDateTimeField::Parse(const String& text) const { return StrToDateTime(text); }

String TDateTimeField::GetAsString() const {
  double v;
  return ReadFloat(v) ? FormatDateTime(DefaultFormat(), TDateTime(v)) : String();
}

double TDateTimeField::GetAsFloat() const {
  double v;
  return ReadFloat(v) ? v : 0;
}

TDateTime TDateTimeField::GetAsDateTime() const { return TDateTime(GetAsFloat()); }

Variant TDateTimeField::GetAsVariant() const {
  double v;
  return ReadFloat(v) ? Variant(TDateTime(v)) : Null();
}

void TDateTimeField::SetAsStringValue(const String& v) {
  String s = Trim(v);
  if (s.IsEmpty()) return Clear();
  TDateTime d;
  try {
    d = Parse(s);
  } catch (const EConvertError&) {
    ConvertError(v, u"date and time");
  }
  SetAsDateTimeValue(d);
}

void TDateTimeField::SetAsFloatValue(double v) { SetAsDateTimeValue(TDateTime(v)); }
void TDateTimeField::SetAsDateTimeValue(TDateTime v) { WriteFloat(v.Val); }

String TDateTimeField::GetText(bool displayText) const {
  double v;
  if (!ReadFloat(v)) return String();
  const String& format = displayText && !displayFormat_.IsEmpty() ? displayFormat_ : DefaultFormat();
  return FormatDateTime(format, TDateTime(v));
}

KELMAR_PUBLISH(TDateField) {}
TDateField::TDateField(TComponent* AOwner) : TDateTimeField(AOwner, ftDate) {}
String TDateField::DefaultFormat() const { return u"ddddd"; }
TDateTime TDateField::Parse(const String& text) const { return StrToDate(text); }
void TDateField::SetAsDateTimeValue(TDateTime v) { WriteFloat(std::floor(v.Val)); }

KELMAR_PUBLISH(TTimeField) {}
TTimeField::TTimeField(TComponent* AOwner) : TDateTimeField(AOwner, ftTime) {}
String TTimeField::DefaultFormat() const { return u"tt"; }
TDateTime TTimeField::Parse(const String& text) const { return StrToTime(text); }

// ---- Blobs -------------------------------------------------------------------

KELMAR_PUBLISH(TBlobField) {}

TBlobField::TBlobField(TComponent* AOwner) : TBlobField(AOwner, ftBlob, ckBlob) {}
TBlobField::TBlobField(TComponent* AOwner, TFieldType type, TColumnKind kind) : TField(AOwner, type, kind) {}

int64_t TBlobField::BlobSize() const {
  std::string_view v;
  return ReadBytes(v) ? static_cast<int64_t>(v.size()) : 0;
}

std::string TBlobField::AsBytes() const {
  std::string_view v;
  return ReadBytes(v) ? std::string(v) : std::string();
}

void TBlobField::SetAsBytes(std::string_view bytes) { WriteBytes(bytes); }

void TBlobField::LoadFromStream(TStream* Stream) {
  Stream->SetPosition(0);
  int64_t size = Stream->Size();
  std::string bytes(static_cast<size_t>(size), '\0');
  if (size > 0) Stream->ReadBuffer(bytes.data(), size);
  WriteBytes(bytes);
}

void TBlobField::LoadFromFile(const String& FileName) {
  TFileStream stream(FileName, fmOpenRead);
  LoadFromStream(&stream);
}

void TBlobField::SaveToStream(TStream* Stream) const {
  std::string_view v;
  if (ReadBytes(v) && !v.empty()) Stream->WriteBuffer(v.data(), static_cast<int64_t>(v.size()));
}

void TBlobField::SaveToFile(const String& FileName) const {
  TFileStream stream(FileName, fmCreate);
  SaveToStream(&stream);
}

String TBlobField::GetAsString() const {
  std::string_view v;
  return ReadBytes(v) ? BytesToText(v) : String();
}

Variant TBlobField::GetAsVariant() const {
  std::string_view v;
  return ReadBytes(v) ? Variant(BytesToText(v)) : Null();
}

void TBlobField::SetAsStringValue(const String& v) { WriteBytes(TextToBytes(v)); }

// "(Memo)" while empty, "(MEMO)" with content: the type, not the bytes.
String TBlobField::GetText(bool) const {
  String name;
  switch (DataType()) {
    case ftMemo: name = u"Memo"; break;
    case ftWideMemo: name = u"WideMemo"; break;
    case ftFmtMemo: name = u"FmtMemo"; break;
    case ftGraphic: name = u"Graphic"; break;
    case ftOraBlob: name = u"OraBlob"; break;
    case ftOraClob: name = u"OraClob"; break;
    default: name = u"Blob"; break;
  }
  return IsNull() ? u"(" + name + u")" : u"(" + UpperCase(name) + u")";
}

KELMAR_PUBLISH(TMemoField) {}
TMemoField::TMemoField(TComponent* AOwner) : TMemoField(AOwner, ftMemo) {}
TMemoField::TMemoField(TComponent* AOwner, TFieldType type) : TBlobField(AOwner, type, ckText) {}

String TMemoField::GetAsString() const {
  std::string_view v;
  return ReadBytes(v) ? Utf8ToText(v) : String();
}

Variant TMemoField::GetAsVariant() const {
  std::string_view v;
  return ReadBytes(v) ? Variant(Utf8ToText(v)) : Null();
}

void TMemoField::SetAsStringValue(const String& v) { WriteBytes(v.ToUtf8()); }

KELMAR_PUBLISH(TWideMemoField) {}
TWideMemoField::TWideMemoField(TComponent* AOwner) : TMemoField(AOwner, ftWideMemo) {}

// ---- Factories ---------------------------------------------------------------

TColumnKind ColumnKindOf(TFieldType type) {
  switch (type) {
    case ftSmallint:
    case ftInteger:
    case ftWord:
    case ftBoolean:
    case ftAutoInc:
    case ftLargeint: return ckInteger;
    case ftFloat:
    case ftCurrency:
    case ftBCD:
    case ftFMTBcd:
    case ftDate:
    case ftTime:
    case ftDateTime:
    case ftTimeStamp: return ckFloat;
    case ftBlob:
    case ftGraphic:
    case ftBytes:
    case ftVarBytes:
    case ftTypedBinary:
    case ftOraBlob: return ckBlob;
    default: return ckText;
  }
}

TField* CreateFieldOfType(TFieldType type, TComponent* owner) {
  switch (type) {
    case ftString:
    case ftFixedChar:
    case ftGuid: return new TStringField(owner);
    case ftWideString:
    case ftFixedWideChar: return new TWideStringField(owner);
    case ftSmallint: return new TSmallintField(owner);
    case ftInteger: return new TIntegerField(owner);
    case ftWord: return new TWordField(owner);
    case ftAutoInc: return new TAutoIncField(owner);
    case ftLargeint: return new TLargeintField(owner);
    case ftBoolean: return new TBooleanField(owner);
    case ftFloat: return new TFloatField(owner);
    case ftCurrency: return new TCurrencyField(owner);
    case ftBCD: return new TBCDField(owner);
    case ftFMTBcd: return new TFMTBCDField(owner);
    case ftDate: return new TDateField(owner);
    case ftTime: return new TTimeField(owner);
    case ftDateTime:
    case ftTimeStamp: return new TDateTimeField(owner);
    case ftMemo:
    case ftFmtMemo:
    case ftOraClob: return new TMemoField(owner);
    case ftWideMemo: return new TWideMemoField(owner);
    case ftBlob:
    case ftGraphic:
    case ftBytes:
    case ftVarBytes:
    case ftTypedBinary:
    case ftOraBlob: return new TBlobField(owner);
    default: throw EDatabaseError(u"Field type " + IntToStr(static_cast<int>(type)) + u" is not supported");
  }
}

// ---- TFields -----------------------------------------------------------------

KELMAR_PUBLISH(TFields) {}

TField* TFields::Fields(int index) const {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return list_[static_cast<size_t>(index)];
}

TField* TFields::FindField(const String& name) const {
  for (TField* f : list_)
    if (SameText(f->FieldName(), name)) return f;
  return nullptr;
}

TField* TFields::FieldByName(const String& name) const {
  TField* f = FindField(name);
  if (!f) DatabaseError(u"Field '" + name + u"' not found", dataSet_);
  return f;
}

int TFields::IndexOf(const TField* field) const {
  for (size_t i = 0; i < list_.size(); ++i)
    if (list_[i] == field) return static_cast<int>(i);
  return -1;
}

void TFields::Add(TField* field) { list_.push_back(field); }

void TFields::Remove(TField* field) {
  int i = IndexOf(field);
  if (i >= 0) list_.erase(list_.begin() + i);
}
