#include "data/veskpos.h"

#include <memory>

#include "data/veskui.h"
#include "platform/db/dadataset.h"
#include "platform/db/datasource.h"

int breakApart(const String& Text, std::vector<String>& Parts, const String& Separators) {
  constexpr size_t kMaxParts = 255;
  Parts.clear();
  String part;
  auto flush = [&] {
    if (!part.IsEmpty() && Parts.size() < kMaxParts) Parts.push_back(part);
    part = String();
  };
  for (int i = 1; i <= Text.Length(); ++i) {
    WideChar c = Text[i];
    if (c == u'~' || Separators.Pos(String(c)) > 0) flush();
    else part += c;
  }
  flush();
  return static_cast<int>(Parts.size());
}

void ReadKeyValues(const TDataSet* DataSet, const String& Names, String& KeyText, Variant& KeyValue) {
  std::vector<String> names;
  breakApart(Names, names, u";");
  std::vector<Variant> values;
  KeyText = String();
  for (const String& name : names) {
    TField* field = DataSet->FindField(name);
    if (!field) continue;
    KeyText += (KeyText.IsEmpty() ? u"" : u";") + field->FieldName();
    values.push_back(field->Value());
  }
  if (values.empty()) KeyValue = Variant();
  else if (values.size() == 1) KeyValue = values[0];
  else KeyValue = VarArrayOf(values);
}

// ---- Default values ------------------------------------------------------------

namespace {

void StoreDefault(TVeskDefaultList& List, const String& Name, const Variant& Value) {
  for (TVeskDefaultValue& item : List)
    if (SameText(item.Name, Name)) {
      item.Value = Value;
      return;
    }
  List.push_back({Name, Value});
}

void SetDefault(TVeskDefaultList& List, TField* Field, bool Ask, bool Nested) {
  TDataSet* ds = Field->DataSet();
  if (!Nested && Field->FieldKind() == fkData && !Field->Origin().IsEmpty()) {
    if (TField* origin = ds->FindField(Field->Origin())) {
      SetDefault(List, origin, Ask, true);
      Ask = false;
    }
  }
  switch (Field->FieldKind()) {
    case fkData: {
      Variant value = Field->Value();
      if (Ask) {
        String text;
        if (!AskText(u"Default value:", Field->FieldName() + u":", text)) return;
        value = text;
      }
      StoreDefault(List, Field->FieldName(), value);
      break;
    }
    case fkCalculated: {
      if (Field->Origin().IsEmpty()) return;
      TField* origin = ds->FindField(Field->Origin());
      StoreDefault(List, Field->Origin(), origin ? origin->Value() : Variant());
      break;
    }
    case fkLookup: {
      TField* key = ds->FindField(Field->KeyFields());
      StoreDefault(List, Field->KeyFields(), key ? key->Value() : Variant());
      break;
    }
    default: break;
  }
}

// Lifts a field's ReadOnly for a write and puts it back in any case.
class TReadOnlyLift {
 public:
  explicit TReadOnlyLift(TField* field) : field_(field), was_(field->ReadOnly()) { field_->SetReadOnly(false); }
  ~TReadOnlyLift() { field_->SetReadOnly(was_); }
  TReadOnlyLift(const TReadOnlyLift&) = delete;
  TReadOnlyLift& operator=(const TReadOnlyLift&) = delete;

 private:
  TField* field_;
  bool was_;
};

}  // namespace

void SetFieldDefault(TVeskDefaultList& List, TField* Field, bool Ask) {
  if (Field && Field->DataSet()) SetDefault(List, Field, Ask, false);
}

void ApplyDefaultValues(TDataSet* DataSet, const TVeskDefaultList& List) {
  for (const TVeskDefaultValue& item : List) {
    TField* field = DataSet->FindField(item.Name);
    if (field && field->CanModify()) field->SetValue(item.Value);
  }
}

// ---- The search-miss slot ---------------------------------------------------------

void ApplySearchMiss(TDataSet* DataSet, TVeskSearchMiss& Miss) {
  if (Miss.Name.IsEmpty()) return;
  String name = Miss.Name;
  Miss.Name = String();
  TField* field = DataSet->FindField(name);
  if (!field) return;
  TReadOnlyLift lift(field);
  if (field->CanModify()) field->SetAsString(Miss.Value);
}

// ---- Master and previous record ------------------------------------------------------

namespace {

bool IsWordChar(WideChar c) { return (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_' || c == u'$'; }
bool IsBlank(WideChar c) { return c == u' ' || c == u'\r' || c == u'\n' || c == u'\t'; }

// The field that the statement compares with ":NAME" ("COL = :NAME").
TField* FieldComparedWith(TDataSet* DataSet, const String& UpperSQL, const String& Name) {
  const String place = u":" + UpperCase(Name);
  const int n = UpperSQL.Length();
  for (int at = UpperSQL.Pos(place); at > 0;) {
    int after = at + place.Length();
    if (after > n || String(u": \r\n").Pos(String(UpperSQL[after])) > 0) {
      int i = at - 1;
      while (i >= 1 && IsBlank(UpperSQL[i])) --i;
      if (i >= 1 && UpperSQL[i] == u'=') {
        --i;
        while (i >= 1 && IsBlank(UpperSQL[i])) --i;
        int end = i;
        while (i >= 1 && IsWordChar(UpperSQL[i])) --i;
        if (end > i)
          if (TField* field = DataSet->FindField(UpperSQL.SubString(i + 1, end - i))) return field;
      }
    }
    int next = UpperSQL.SubString(at + 1, n - at).Pos(place);
    at = next > 0 ? at + next : 0;
  }
  return nullptr;
}

}  // namespace

void FillDetailFields(TCustomDADataSet* Detail, TDataSource* Source) {
  if (!Detail || !Source || !Source->DataSet() || Detail->ParamCount() == 0) return;
  TDataSet* master = Source->DataSet();
  const String upperSQL = UpperCase(Detail->SQL()->Text());
  for (int i = 0; i < Detail->ParamCount(); ++i) {
    TParam* param = Detail->Params()->Items(i);
    TField* field = Detail->FindField(param->Name());
    if (!field) field = FieldComparedWith(Detail, upperSQL, param->Name());
    if (!field) continue;
    TField* masterField = master->FindField(param->Name());
    Variant value = masterField ? masterField->Value() : param->Value();
    TReadOnlyLift lift(field);
    field->SetValue(value);
  }
}

void CopyDataFromPrev(TDataSource* Source, TField* Field) {
  if (!Source || !Field || Field->ReadOnly()) return;
  if (Source->State() != dsEdit && Source->State() != dsInsert) return;
  TDataSet* ds = Field->DataSet();
  TDataLink link;
  link.SetBufferCount(2);
  link.SetDataSource(Source);
  const int current = link.ActiveRecord();
  if (current <= 0) return;
  const String companionName = Field->KeyFields().IsEmpty() ? Field->Origin() : Field->KeyFields();
  TField* companion = companionName.IsEmpty() ? nullptr : ds->FindField(companionName);
  Variant value, companionValue;
  try {
    link.SetActiveRecord(current - 1);
    value = Field->Value();
    if (companion) companionValue = companion->Value();
    link.SetActiveRecord(current);
  } catch (...) {
    ds->SetReadPosition(-1);
    throw;
  }
  Field->SetValue(value);
  if (companion && !companion->ReadOnly()) companion->SetValue(companionValue);
}

void getDitto(TField* Field, TDataSource* Source) {
  if (!Field || Field->ReadOnly() || !Field->DataSet()) return;
  TDataSet* ds = Field->DataSet();
  std::unique_ptr<TDataSource> own;
  if (!Source && !ds->DataSources().empty()) Source = ds->DataSources().front();
  if (!Source) {
    own = std::make_unique<TDataSource>(nullptr);
    own->SetDataSet(ds);
    Source = own.get();
  }
  CopyDataFromPrev(Source, Field);
}
