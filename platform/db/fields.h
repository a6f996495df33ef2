// Fields: TField and its family, TFields (a dataset's fields in order) and
// TFieldDefs (the columns a dataset offers before its fields exist).
//
// A field reads and writes the dataset's active record: the current
// record, or another one while a data link, a filter or a calculation
// looks at it. Data fields keep their values in the dataset's record
// store; calculated and lookup fields in a per-record calculation buffer
// that the dataset fills through OnCalcFields and the lookup datasets.
//
// Ownership: persistent fields are components owned by their Owner (a
// form, usually) and attached to a dataset with SetDataSet; fields made at
// open from the field definitions are owned by the dataset and go when it
// closes.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/db/dbtypes.h"
#include "platform/db/recordstore.h"
#include "platform/rtl/classes.h"
#include "platform/rtl/datetime.h"
#include "platform/rtl/streams.h"
#include "platform/rtl/variant.h"

class TDataSet;
class TField;

using TFieldNotifyEvent = TEvent<void(TField* Sender)>;
using TFieldGetTextEvent = TEvent<void(TField* Sender, String& Text, bool DisplayText)>;
using TFieldSetTextEvent = TEvent<void(TField* Sender, const String& Text)>;

// ---- Field definitions -----------------------------------------------------

class TFieldDef : public TPersistent {
  KELMAR_CLASS(TFieldDef, TPersistent)
 public:
  TFieldDef() = default;
  TFieldDef(const String& name, TFieldType type, int size, bool required)
      : name_(name), dataType_(type), size_(size), required_(required) {}

  const String& Name() const { return name_; }
  void SetName(const String& v) { name_ = v; }
  TFieldType DataType() const { return dataType_; }
  void SetDataType(TFieldType v) { dataType_ = v; }
  int Size() const { return size_; }
  void SetSize(int v) { size_ = v; }
  int Precision() const { return precision_; }
  void SetPrecision(int v) { precision_ = v; }
  bool Required() const { return required_; }
  void SetRequired(bool v) { required_ = v; }
  // The source column ("TABLE.COLUMN") when the engine knows it.
  const String& Origin() const { return origin_; }
  void SetOrigin(const String& v) { origin_ = v; }
  // 1-based position among the definitions.
  int FieldNo() const { return fieldNo_; }

 private:
  friend class TFieldDefs;
  String name_;
  TFieldType dataType_ = ftUnknown;
  int size_ = 0;
  int precision_ = 0;
  bool required_ = false;
  String origin_;
  int fieldNo_ = 0;
};

class TFieldDefs : public TPersistent {
  KELMAR_CLASS(TFieldDefs, TPersistent)
 public:
  TFieldDefs() = default;

  int Count() const { return static_cast<int>(items_.size()); }
  TFieldDef* Items(int index) const;
  TFieldDef* operator[](int index) const { return Items(index); }
  TFieldDef* Add(const String& name, TFieldType type, int size = 0, bool required = false);
  TFieldDef* AddFieldDef();
  // Case-insensitive; -1 / null when absent. Find raises EDatabaseError
  // "Field 'X' not found".
  int IndexOf(const String& name) const;
  TFieldDef* Find(const String& name) const;
  void Clear() { items_.clear(); }
  void Assign(TPersistent* Source) override;

 private:
  std::vector<std::unique_ptr<TFieldDef>> items_;
};

// ---- TField ----------------------------------------------------------------

class TField : public TComponent {
  KELMAR_CLASS(TField, TComponent)
 public:
  explicit TField(TComponent* AOwner);
  ~TField() override;

  // ---- Identity ----
  TDataSet* DataSet() const { return dataSet_; }
  void SetDataSet(TDataSet* ADataSet);
  const String& FieldName() const { return fieldName_; }
  void SetFieldName(const String& v);
  TFieldKind FieldKind() const { return fieldKind_; }
  void SetFieldKind(TFieldKind v) { fieldKind_ = v; }
  TFieldType DataType() const { return dataType_; }
  // Position among the dataset's fields, 0-based.
  int Index() const;
  // 1-based position among the field definitions; 0 for calculated fields.
  int FieldNo() const { return fieldNo_; }
  String DisplayName() const { return displayLabel_.IsEmpty() ? fieldName_ : displayLabel_; }
  int Size() const { return size_; }
  void SetSize(int v) { size_ = v; }
  bool Calculated() const { return fieldKind_ == fkCalculated || fieldKind_ == fkInternalCalc; }
  bool Lookup() const { return fieldKind_ == fkLookup; }
  void SetLookup(bool v) { fieldKind_ = v ? fkLookup : fkData; }
  bool IsBlob() const;
  // The source column, as "TABLE.COLUMN" or a plain column name.
  const String& Origin() const { return origin_; }
  void SetOrigin(const String& v) { origin_ = v; }

  // ---- Appearance ----
  const String& DisplayLabel() const { return displayLabel_.IsEmpty() ? fieldName_ : displayLabel_; }
  void SetDisplayLabel(const String& v);
  int DisplayWidth() const;
  void SetDisplayWidth(int v);
  bool Visible() const { return visible_; }
  void SetVisible(bool v);
  const String& EditMask() const { return editMask_; }
  void SetEditMask(const String& v);
  TAlignment Alignment() const { return alignment_; }
  void SetAlignment(TAlignment v);

  // ---- Rules ----
  bool ReadOnly() const { return readOnly_; }
  void SetReadOnly(bool v) { readOnly_ = v; }
  bool Required() const { return required_; }
  void SetRequired(bool v) { required_ = v; }
  // False for a read-only field or dataset, and outside the modes that
  // take values.
  virtual bool CanModify() const;

  // ---- Lookup description ----
  TDataSet* LookupDataSet() const { return lookupDataSet_; }
  void SetLookupDataSet(TDataSet* v);
  const String& KeyFields() const { return keyFields_; }
  void SetKeyFields(const String& v) { keyFields_ = v; }
  const String& LookupKeyFields() const { return lookupKeyFields_; }
  void SetLookupKeyFields(const String& v) { lookupKeyFields_ = v; }
  const String& LookupResultField() const { return lookupResultField_; }
  void SetLookupResultField(const String& v) { lookupResultField_ = v; }

  // ---- Value ----
  bool IsNull() const;
  void Clear();
  String AsString() const { return GetAsString(); }
  void SetAsString(const String& v) { SetAsStringValue(v); }
  int AsInteger() const;
  void SetAsInteger(int v) { SetAsLargeInt(v); }
  int64_t AsLargeInt() const { return GetAsLargeInt(); }
  void SetAsLargeInt(int64_t v) { SetAsLargeIntValue(v); }
  double AsFloat() const { return GetAsFloat(); }
  void SetAsFloat(double v) { SetAsFloatValue(v); }
  double AsCurrency() const { return GetAsFloat(); }
  void SetAsCurrency(double v) { SetAsFloatValue(v); }
  TDateTime AsDateTime() const { return GetAsDateTime(); }
  void SetAsDateTime(TDateTime v) { SetAsDateTimeValue(v); }
  bool AsBoolean() const { return GetAsBoolean(); }
  void SetAsBoolean(bool v) { SetAsBooleanValue(v); }
  Variant AsVariant() const { return GetAsVariant(); }
  void SetAsVariant(const Variant& v);
  Variant Value() const { return GetAsVariant(); }
  void SetValue(const Variant& v) { SetAsVariant(v); }
  // The value the record had before the present edit.
  Variant OldValue() const;
  // The raw value: false for null. With a buffer, copies DataSize() bytes
  // into it: an int64 for integer and boolean fields, a double for numbers
  // and dates, the UTF-8 or blob bytes otherwise.
  bool GetData(void* Buffer = nullptr) const;
  int DataSize() const;

  // Text: Text is the edit form, DisplayText the display form; both go
  // through OnGetText when it is assigned. Setting Text goes through
  // OnSetText, or is read as AsString.
  String Text() const { return GetTextWithEvent(false); }
  void SetText(const String& v);
  String DisplayText() const { return GetTextWithEvent(true); }
  // The text an editor starts from: Text laid out by EditMask.
  String EditText() const;
  void SetEditText(const String& v) { SetText(v); }

  // Events.
  TFieldNotifyEvent OnChange;
  TFieldNotifyEvent OnValidate;
  TFieldGetTextEvent OnGetText;
  TFieldSetTextEvent OnSetText;

  // ---- Used by the dataset ----
  TColumnKind ColumnKind() const { return columnKind_; }
  // The store column for data fields, -1 otherwise; the slot in the
  // calculation buffer for the others.
  int Column() const { return column_; }
  int CalcSlot() const { return calcSlot_; }
  void Bind(int fieldNo, int column, int calcSlot) {
    fieldNo_ = fieldNo;
    column_ = column;
    calcSlot_ = calcSlot;
  }
  void Change() { OnChange(this); }
  void Validate() { OnValidate(this); }
  // Raises EDatabaseError "Field 'X' must have a value" when required and
  // null.
  void CheckRequired() const;

 protected:
  TField(TComponent* AOwner, TFieldType type, TColumnKind kind);

  // What a descendant gives for its type. The base raises "Cannot access
  // field 'X' as type Y" for conversions a type does not have.
  virtual String GetAsString() const;
  virtual int64_t GetAsLargeInt() const;
  virtual double GetAsFloat() const;
  virtual TDateTime GetAsDateTime() const;
  virtual bool GetAsBoolean() const;
  virtual Variant GetAsVariant() const;
  virtual void SetAsStringValue(const String& v);
  virtual void SetAsLargeIntValue(int64_t v);
  virtual void SetAsFloatValue(double v);
  virtual void SetAsDateTimeValue(TDateTime v);
  virtual void SetAsBooleanValue(bool v);
  // The field's own text when no OnGetText is assigned.
  virtual String GetText(bool displayText) const;
  virtual int DefaultWidth() const { return size_ > 0 ? size_ : 10; }

  void Notification(TComponent* AComponent, TOperation Operation) override;
  [[noreturn]] void AccessError(const char16_t* typeName) const;
  [[noreturn]] void ConvertError(const String& text, const char16_t* what) const;
  String GetTextWithEvent(bool displayText) const;

  // The active record's cell; false when it is null or there is none.
  bool ReadInteger(int64_t& v) const;
  bool ReadFloat(double& v) const;
  bool ReadBytes(std::string_view& v) const;
  void WriteInteger(int64_t v);
  void WriteFloat(double v);
  void WriteBytes(std::string_view v);
  void WriteNull();

  void SetDataType(TFieldType v) { dataType_ = v; }

 private:
  friend class TDataSet;

  TDataSet* dataSet_ = nullptr;
  String fieldName_;
  TFieldKind fieldKind_ = fkData;
  TFieldType dataType_ = ftUnknown;
  TColumnKind columnKind_ = ckText;
  int fieldNo_ = 0;
  int column_ = -1;
  int calcSlot_ = -1;
  int size_ = 0;
  String origin_;
  String displayLabel_;
  int displayWidth_ = 0;
  bool visible_ = true;
  String editMask_;
  TAlignment alignment_ = taLeftJustify;
  bool readOnly_ = false;
  bool required_ = false;
  TDataSet* lookupDataSet_ = nullptr;
  String keyFields_;
  String lookupKeyFields_;
  String lookupResultField_;
};

// ---- Text fields -----------------------------------------------------------

class TStringField : public TField {
  KELMAR_CLASS(TStringField, TField)
 public:
  explicit TStringField(TComponent* AOwner);

 protected:
  TStringField(TComponent* AOwner, TFieldType type);
  String GetAsString() const override;
  int64_t GetAsLargeInt() const override;
  double GetAsFloat() const override;
  TDateTime GetAsDateTime() const override;
  bool GetAsBoolean() const override;
  Variant GetAsVariant() const override;
  void SetAsStringValue(const String& v) override;
  void SetAsLargeIntValue(int64_t v) override;
  void SetAsFloatValue(double v) override;
  void SetAsDateTimeValue(TDateTime v) override;
  void SetAsBooleanValue(bool v) override;
  String GetText(bool displayText) const override;
};

class TWideStringField : public TStringField {
  KELMAR_CLASS(TWideStringField, TStringField)
 public:
  explicit TWideStringField(TComponent* AOwner);
};

// ---- Numbers ---------------------------------------------------------------

// Numbers shown through DisplayFormat (FormatFloat patterns) and edited
// through EditFormat; aligned right.
class TNumericField : public TField {
  KELMAR_CLASS(TNumericField, TField)
 public:
  const String& DisplayFormat() const { return displayFormat_; }
  void SetDisplayFormat(const String& v);
  const String& EditFormat() const { return editFormat_; }
  void SetEditFormat(const String& v);

 protected:
  TNumericField(TComponent* AOwner, TFieldType type, TColumnKind kind);
  String FormatNumber(double v, bool displayText, int precision) const;

 private:
  String displayFormat_;
  String editFormat_;
};

// Integer fields keep an int64 and check their range on write:
// EDatabaseError "N is not a valid value for field 'X'. The allowed range
// is A to B".
class TIntegerField : public TNumericField {
  KELMAR_CLASS(TIntegerField, TNumericField)
 public:
  explicit TIntegerField(TComponent* AOwner);
  int64_t MinValue() const { return minValue_; }
  void SetMinValue(int64_t v) { minValue_ = v; }
  int64_t MaxValue() const { return maxValue_; }
  void SetMaxValue(int64_t v) { maxValue_ = v; }

 protected:
  TIntegerField(TComponent* AOwner, TFieldType type, int64_t low, int64_t high);
  String GetAsString() const override;
  int64_t GetAsLargeInt() const override;
  double GetAsFloat() const override;
  bool GetAsBoolean() const override;
  Variant GetAsVariant() const override;
  void SetAsStringValue(const String& v) override;
  void SetAsLargeIntValue(int64_t v) override;
  void SetAsFloatValue(double v) override;
  void SetAsBooleanValue(bool v) override;
  String GetText(bool displayText) const override;

 private:
  int64_t minValue_ = 0;
  int64_t maxValue_ = 0;
  int64_t low_;
  int64_t high_;
};

class TSmallintField : public TIntegerField {
  KELMAR_CLASS(TSmallintField, TIntegerField)
 public:
  explicit TSmallintField(TComponent* AOwner);
};

class TWordField : public TIntegerField {
  KELMAR_CLASS(TWordField, TIntegerField)
 public:
  explicit TWordField(TComponent* AOwner);
};

class TLargeintField : public TIntegerField {
  KELMAR_CLASS(TLargeintField, TIntegerField)
 public:
  explicit TLargeintField(TComponent* AOwner);
};

class TAutoIncField : public TIntegerField {
  KELMAR_CLASS(TAutoIncField, TIntegerField)
 public:
  explicit TAutoIncField(TComponent* AOwner);
};

class TFloatField : public TNumericField {
  KELMAR_CLASS(TFloatField, TNumericField)
 public:
  explicit TFloatField(TComponent* AOwner);
  // Significant digits of the default text (15).
  int Precision() const { return precision_; }
  void SetPrecision(int v) { precision_ = v; }
  // Shown as money when no DisplayFormat is set.
  bool Currency() const { return currency_; }
  void SetCurrency(bool v) { currency_ = v; }

 protected:
  TFloatField(TComponent* AOwner, TFieldType type);
  String GetAsString() const override;
  int64_t GetAsLargeInt() const override;
  double GetAsFloat() const override;
  TDateTime GetAsDateTime() const override;
  Variant GetAsVariant() const override;
  void SetAsStringValue(const String& v) override;
  void SetAsLargeIntValue(int64_t v) override;
  void SetAsFloatValue(double v) override;
  String GetText(bool displayText) const override;

 private:
  int precision_ = 15;
  bool currency_ = false;
};

class TCurrencyField : public TFloatField {
  KELMAR_CLASS(TCurrencyField, TFloatField)
 public:
  explicit TCurrencyField(TComponent* AOwner);
};

// Decimal numbers of a given precision and scale (Size is the scale),
// kept as doubles.
class TBCDField : public TFloatField {
  KELMAR_CLASS(TBCDField, TFloatField)
 public:
  explicit TBCDField(TComponent* AOwner);

 protected:
  TBCDField(TComponent* AOwner, TFieldType type);
};

class TFMTBCDField : public TBCDField {
  KELMAR_CLASS(TFMTBCDField, TBCDField)
 public:
  explicit TFMTBCDField(TComponent* AOwner);
};

class TBooleanField : public TField {
  KELMAR_CLASS(TBooleanField, TField)
 public:
  explicit TBooleanField(TComponent* AOwner);
  // "True text;False text", "True;False" by default.
  const String& DisplayValues() const { return displayValues_; }
  void SetDisplayValues(const String& v) { displayValues_ = v; }

 protected:
  String GetAsString() const override;
  int64_t GetAsLargeInt() const override;
  bool GetAsBoolean() const override;
  Variant GetAsVariant() const override;
  void SetAsStringValue(const String& v) override;
  void SetAsLargeIntValue(int64_t v) override;
  void SetAsBooleanValue(bool v) override;
  int DefaultWidth() const override { return 5; }

 private:
  String displayValues_ = u"True;False";
};

// ---- Dates and times ---------------------------------------------------------

class TDateTimeField : public TField {
  KELMAR_CLASS(TDateTimeField, TField)
 public:
  explicit TDateTimeField(TComponent* AOwner);
  // A FormatDateTime pattern; empty means the short date and long time.
  const String& DisplayFormat() const { return displayFormat_; }
  void SetDisplayFormat(const String& v);

 protected:
  TDateTimeField(TComponent* AOwner, TFieldType type);
  String GetAsString() const override;
  double GetAsFloat() const override;
  TDateTime GetAsDateTime() const override;
  Variant GetAsVariant() const override;
  void SetAsStringValue(const String& v) override;
  void SetAsFloatValue(double v) override;
  void SetAsDateTimeValue(TDateTime v) override;
  String GetText(bool displayText) const override;
  int DefaultWidth() const override { return 18; }
  virtual String DefaultFormat() const;
  virtual TDateTime Parse(const String& text) const;

 private:
  String displayFormat_;
};

class TDateField : public TDateTimeField {
  KELMAR_CLASS(TDateField, TDateTimeField)
 public:
  explicit TDateField(TComponent* AOwner);

 protected:
  String DefaultFormat() const override;
  TDateTime Parse(const String& text) const override;
  void SetAsDateTimeValue(TDateTime v) override;
  int DefaultWidth() const override { return 10; }
};

class TTimeField : public TDateTimeField {
  KELMAR_CLASS(TTimeField, TDateTimeField)
 public:
  explicit TTimeField(TComponent* AOwner);

 protected:
  String DefaultFormat() const override;
  TDateTime Parse(const String& text) const override;
  int DefaultWidth() const override { return 8; }
};

// ---- Large values ------------------------------------------------------------

// Binary content; TMemoField holds text. AsString of a blob is its bytes
// taken as 8-bit text in the system code page.
class TBlobField : public TField {
  KELMAR_CLASS(TBlobField, TField)
 public:
  explicit TBlobField(TComponent* AOwner);

  int64_t BlobSize() const;
  // The raw bytes of the active record.
  std::string AsBytes() const;
  void SetAsBytes(std::string_view bytes);
  void LoadFromStream(TStream* Stream);
  void LoadFromFile(const String& FileName);
  void SaveToStream(TStream* Stream) const;
  void SaveToFile(const String& FileName) const;

 protected:
  TBlobField(TComponent* AOwner, TFieldType type, TColumnKind kind);
  String GetAsString() const override;
  Variant GetAsVariant() const override;
  void SetAsStringValue(const String& v) override;
  String GetText(bool displayText) const override;
};

class TMemoField : public TBlobField {
  KELMAR_CLASS(TMemoField, TBlobField)
 public:
  explicit TMemoField(TComponent* AOwner);

 protected:
  TMemoField(TComponent* AOwner, TFieldType type);
  String GetAsString() const override;
  Variant GetAsVariant() const override;
  void SetAsStringValue(const String& v) override;
};

class TWideMemoField : public TMemoField {
  KELMAR_CLASS(TWideMemoField, TMemoField)
 public:
  explicit TWideMemoField(TComponent* AOwner);
};

// The field class for a data type (TStringField for ftString...).
TField* CreateFieldOfType(TFieldType type, TComponent* owner);
// The store column kind that keeps values of a data type.
TColumnKind ColumnKindOf(TFieldType type);

// ---- TFields ---------------------------------------------------------------

class TFields : public TObject {
  KELMAR_CLASS(TFields, TObject)
 public:
  explicit TFields(TDataSet* ADataSet) : dataSet_(ADataSet) {}

  int Count() const { return static_cast<int>(list_.size()); }
  TField* Fields(int index) const;
  TField* operator[](int index) const { return Fields(index); }
  // Case-insensitive; null when absent.
  TField* FindField(const String& name) const;
  // Raises EDatabaseError "Field 'X' not found".
  TField* FieldByName(const String& name) const;
  int IndexOf(const TField* field) const;
  TDataSet* DataSet() const { return dataSet_; }

  void Add(TField* field);
  void Remove(TField* field);
  void Clear() { list_.clear(); }
  auto begin() const { return list_.begin(); }
  auto end() const { return list_.end(); }

 private:
  TDataSet* dataSet_;
  std::vector<TField*> list_;
};
