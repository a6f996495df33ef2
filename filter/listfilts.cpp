#include "filter/listfilts.h"

#include "platform/db/bdedataset.h"

namespace {

// Every column that holds a row's value, as the dialogue edits it.
constexpr TListFilts::TColumn kValueColumns[] = {TListFilts::lfExpression, TListFilts::lfExpressionBackup,
                                                 TListFilts::lfConfig, TListFilts::lfConfigBackup,
                                                 TListFilts::lfCodText};

const String kBlank = u" ";

// The filter class of a data type: "S", "I", "D", or empty when the type
// cannot be filtered this way.
String FieldClassOf(TFieldType type) {
  switch (type) {
    case ftString: return u"S";
    case ftSmallint:
    case ftInteger:
    case ftWord:
    case ftBoolean:
    case ftFloat:
    case ftCurrency:
    case ftBCD:
    case ftBytes:
    case ftAutoInc: return u"I";
    case ftDate:
    case ftTime:
    case ftDateTime: return u"D";
    default: return String();
  }
}

// Family members of later units are told by class name, so that this unit
// needs none of their headers.
bool InheritsFromName(const TObject* object, const char16_t* className) {
  for (TClass c = object->ClassType(); c; c = c->ClassParent())
    if (c->ClassName() == className) return true;
  return false;
}

// The table a lookup dataset reads; empty for classes the filter cannot
// turn into a sub-select.
String LookupTableOf(const TDataSet* lookup) {
  if (!lookup) return String();
  if (InheritsFromName(lookup, u"TVeskQuery1")) return GetPropString(lookup, u"VeskTableLive");
  if (auto* table = dynamic_cast<const TTable*>(lookup)) return table->TableName();
  return String();
}

}  // namespace

KELMAR_PUBLISH(TListFilts) {}

TListFilts::TListFilts(TDataSet* DataSet) : dataSet_(DataSet) {
  for (auto& column : columns_) column = std::make_unique<TStringList>();
}

TListFilts::~TListFilts() = default;

String TListFilts::Alias() const { return dataSet_ ? GetPropString(dataSet_, u"VeskAlias") : String(); }

String TListFilts::QualifiedName(const String& Name) const {
  String alias = Alias();
  return alias.IsEmpty() ? Name : alias + u"." + Name;
}

// ---- Rows ------------------------------------------------------------------------

void TListFilts::AddFields(TFields* Fields) {
  if (!Fields) return;
  String alias = Alias();
  for (TField* field : *Fields) {
    String type = FieldClassOf(field->DataType());
    if (type.IsEmpty()) continue;
    String realName = alias.IsEmpty() ? field->FieldName() : alias + u"." + field->FieldName();
    if (field->FieldKind() != fkLookup && !field->LookupDataSet()) {
      AddRecord(field->DisplayName(), type, realName, kBlank, kBlank, kBlank, kBlank, kBlank);
      continue;
    }
    String table = LookupTableOf(field->LookupDataSet());
    if (table.IsEmpty()) continue;
    AddRecord(field->DisplayName(), type, realName, table, field->KeyFields(), field->LookupResultField(),
              field->LookupKeyFields(), u"2");
  }
}

void TListFilts::AddRecord(const String& Field, const String& Type, const String& RealFieldName,
                           const String& TableName, const String& KeyField, const String& LResField,
                           const String& LKeyField, const String& FieldKind) {
  Column(lfField)->Add(Field);
  Column(lfType)->Add(Type);
  Column(lfRealFieldName)->Add(RealFieldName);
  Column(lfTableName)->Add(TableName);
  Column(lfKeyField)->Add(KeyField);
  Column(lfLResField)->Add(LResField);
  Column(lfLKeyField)->Add(LKeyField);
  Column(lfFieldKind)->Add(FieldKind);
  // The backups get the placeholder too, so that a state taken before the
  // dialogue has ever run restores whole.
  for (TColumn column : kValueColumns) Column(column)->Add(kBlank);
}

void TListFilts::ClearAll() {
  for (auto& column : columns_) column->Clear();
}

void TListFilts::ClearValues() {
  for (TColumn column : kValueColumns) Column(column)->Clear();
  filterText_ = String();
}

// ---- By field name -----------------------------------------------------------------

int TListFilts::GetFieldIndex(const String& Name) const {
  String wanted = UpperCase(QualifiedName(Name));
  const TStringList* names = Column(lfRealFieldName);
  for (int i = 0; i < names->Count(); ++i)
    if (UpperCase(names->Strings(i)) == wanted) return i;
  return -1;
}

String TListFilts::GetFieldExpr(const String& Name) const {
  int row = GetFieldIndex(Name);
  const TStringList* expressions = Column(lfExpression);
  return row >= 0 && row < expressions->Count() ? expressions->Strings(row) : String();
}

void TListFilts::SetFieldExpr(const String& Name, const String& Expr) {
  int row = GetFieldIndex(Name);
  if (row < 0) return;
  // After ClearValues the expressions have no entries: put the placeholder
  // back up to the row rather than fail.
  TStringList* expressions = Column(lfExpression);
  while (expressions->Count() <= row) expressions->Add(kBlank);
  expressions->SetStrings(row, Expr);
}

bool TListFilts::GetIsFiltered(const String& Name) const {
  int row = GetFieldIndex(Name);
  const TStringList* expressions = Column(lfExpression);
  return row >= 0 && row < expressions->Count() && !Trim(expressions->Strings(row)).IsEmpty();
}

// ---- State -------------------------------------------------------------------------

String TListFilts::GetState() const {
  String state;
  for (TColumn column : kValueColumns) {
    const TStringList* list = Column(column);
    for (int i = 0; i < list->Count(); ++i) state += list->Strings(i) + u"\n";
  }
  return state;
}

void TListFilts::SetState(const String& Text) {
  TStringList lines;
  lines.SetText(Text);
  if (lines.Count() % 5 != 0) return;
  ClearValues();
  TStringList* expressions = Column(lfExpression);
  for (int i = 0; i < lines.Count() / 5; ++i) expressions->Add(lines.Strings(i));
}
