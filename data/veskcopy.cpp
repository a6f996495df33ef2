#include "data/veskcopy.h"

#include <memory>
#include <vector>

#include "data/veskutil.h"
#include "platform/db/dadataset.h"
#include "platform/db/datasource.h"
#include "platform/rtl/stringlist.h"

TReadOnlyLift::TReadOnlyLift(TField* Field) : field_(Field), was_(Field->ReadOnly()) { field_->SetReadOnly(false); }

TReadOnlyLift::~TReadOnlyLift() { field_->SetReadOnly(was_); }

// ---- The record before ------------------------------------------------------------

namespace {

bool Editing(TDataSetState State) { return State == dsEdit || State == dsInsert; }

// Puts a link's active record back when it goes out of scope, also when an
// exception travels through.
class TActiveRecordKeeper {
 public:
  TActiveRecordKeeper(TDataLink& Link, int Record) : link_(Link), record_(Record) {}
  ~TActiveRecordKeeper() {
    try {
      link_.SetActiveRecord(record_);
    } catch (...) {
      // The window lost its place: the fields read the current record.
      if (TDataSet* ds = link_.DataSet()) ds->SetReadPosition(-1);
    }
  }
  TActiveRecordKeeper(const TActiveRecordKeeper&) = delete;
  TActiveRecordKeeper& operator=(const TActiveRecordKeeper&) = delete;

 private:
  TDataLink& link_;
  int record_;
};

// The ";"-separated names, trimmed, without empty ones; no limit on the
// list's length.
std::vector<String> SplitNames(const String& Names) {
  std::vector<String> result;
  int start = 1;
  for (int i = 1; i <= Names.Length() + 1; ++i) {
    if (i <= Names.Length() && Names[i] != u';') continue;
    String name = Trim(Names.SubString(start, i - start));
    if (!name.IsEmpty()) result.push_back(name);
    start = i + 1;
  }
  return result;
}

bool Listed(const std::vector<String>& Names, const String& Name) {
  for (const String& name : Names)
    if (SameText(name, Name)) return true;
  return false;
}

}  // namespace

void CopyDataFromPrev(TDataSource* Source, TField* Field) {
  if (!Source || !Field || Field->ReadOnly() || !Editing(Source->State())) return;
  TDataSet* ds = Field->DataSet();
  if (!ds || Source->DataSet() != ds) return;
  const String companionName = Field->KeyFields().IsEmpty() ? Field->Origin() : Field->KeyFields();
  TField* companion = companionName.IsEmpty() ? nullptr : ds->FindField(companionName);

  TDataLink link;
  link.SetBufferCount(2);  // the current record and the one before it
  link.SetDataSource(Source);
  const int current = link.ActiveRecord();
  if (current <= 0) return;
  Variant value, companionValue;
  {
    TActiveRecordKeeper keeper(link, current);
    link.SetActiveRecord(current - 1);
    value = Field->Value();
    if (companion) companionValue = companion->Value();
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

void DittoFieldsExcept(TDataSet* DataSet, const String& KeyNames) {
  const std::vector<String> keys = SplitNames(KeyNames);
  for (int i = 0; i < DataSet->FieldCount(); ++i) {
    TField* field = DataSet->Fields()->Fields(i);
    if (!Listed(keys, field->FieldName())) getDitto(field, nullptr);
  }
}

// ---- Duplication ------------------------------------------------------------------

void DuplicateRecord(TDataSet* DataSet, bool StayInEdit) {
  if (!DataSet) return;
  TStringList keys;
  keys.SetCommaText(
      UpperCase(StringReplace(GetPropString(DataSet, u"VeskKeyFields"), u";", u",", TReplaceFlags{rfReplaceAll})));
  struct TSaved {
    TField* Field;
    Variant Value;
  };
  std::vector<TSaved> saved;
  for (int i = 0; i < DataSet->FieldCount(); ++i) {
    TField* field = DataSet->Fields()->Fields(i);
    // A lookup written by its text would look its key up again and could
    // land on another record of the same text; it follows its key instead.
    if (field->FieldKind() == fkData) saved.push_back({field, field->Value()});
  }
  __APPEND(DataSet);
  for (const TSaved& item : saved) {
    if (keys.IndexOf(UpperCase(item.Field->FieldName())) >= 0) continue;
    TReadOnlyLift lift(item.Field);
    item.Field->SetValue(item.Value);
  }
  if (!StayInEdit) __POST(DataSet);
}

// ---- Detail from master -------------------------------------------------------------

namespace {

bool IsWordChar(WideChar c) { return (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_' || c == u'$'; }
bool IsBlank(WideChar c) { return c == u' ' || c == u'\r' || c == u'\n' || c == u'\t'; }

// The field that the statement compares with ":NAME" ("COL = :NAME"): each
// occurrence followed by ":", a blank, a line end or the end of the text is
// tried in turn until one names a field.
TField* FieldComparedWith(TDataSet* DataSet, const String& UpperSQL, const String& Name) {
  const String place = u":" + UpperCase(Name);
  const int n = UpperSQL.Length();
  for (int at = UpperSQL.Pos(place); at > 0;) {
    const int after = at + place.Length();
    if (after > n || String(u": \r\n").Pos(String(UpperSQL[after])) > 0) {
      int i = at - 1;
      while (i >= 1 && IsBlank(UpperSQL[i])) --i;
      if (i >= 1 && UpperSQL[i] == u'=') {
        --i;
        while (i >= 1 && IsBlank(UpperSQL[i])) --i;
        const int end = i;
        while (i >= 1 && IsWordChar(UpperSQL[i])) --i;
        if (end > i)
          if (TField* field = DataSet->FindField(UpperSQL.SubString(i + 1, end - i))) return field;
      }
    }
    const int next = UpperSQL.SubString(at + 1, n - at).Pos(place);
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
    const TField* masterField = master->FindField(param->Name());
    const Variant value = masterField ? masterField->Value() : param->Value();
    TReadOnlyLift lift(field);
    field->SetValue(value);
  }
}
