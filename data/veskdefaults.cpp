#include "data/veskdefaults.h"

#include "data/veskcopy.h"
#include "data/veskui.h"

// ---- Default values --------------------------------------------------------------

namespace {

void StoreDefault(TVeskDefaultList& List, const String& Name, const Variant& Value) {
  for (TVeskDefaultValue& item : List)
    if (SameText(item.Name, Name)) {
      item.Value = Value;
      return;
    }
  List.push_back({Name, Value});
}

// Origin: the field whose default this one is taking along (the re-entry);
// its own origin is not followed again.
void SetDefault(TVeskDefaultList& List, TField* Field, bool Ask, bool Origin) {
  TDataSet* ds = Field->DataSet();
  if (!Origin && Field->FieldKind() == fkData && !Field->Origin().IsEmpty()) {
    if (TField* origin = ds->FindField(Field->Origin()); origin && origin != Field) {
      SetDefault(List, origin, Ask, true);
      Ask = false;
    }
  }
  const String name = DefaultValueName(Field);
  if (name.IsEmpty()) return;
  Variant value;
  if (Field->FieldKind() == fkData) {
    value = Field->Value();
    if (Ask) {
      String text;
      if (!AskText(u"Default value:", name + u":", text)) return;
      value = text;
    }
  } else {
    const TField* source = ds->FindField(name);
    value = source ? source->Value() : Variant();
  }
  StoreDefault(List, name, value);
}

}  // namespace

String DefaultValueName(const TField* Field) {
  if (!Field) return String();
  switch (Field->FieldKind()) {
    case fkData: return Field->FieldName();
    case fkCalculated: return Field->Origin();
    case fkLookup: return Field->KeyFields();
    default: return String();
  }
}

void SetFieldDefault(TVeskDefaultList& List, TField* Field, bool Ask) {
  if (Field && Field->DataSet()) SetDefault(List, Field, Ask, false);
}

Variant FieldDefault(const TVeskDefaultList& List, const TField* Field) {
  const String name = DefaultValueName(Field);
  if (name.IsEmpty()) return Variant();
  for (const TVeskDefaultValue& item : List)
    if (SameText(item.Name, name)) return item.Value;
  return Variant();
}

void ApplyDefaultValues(TDataSet* DataSet, const TVeskDefaultList& List) {
  for (const TVeskDefaultValue& item : List) {
    TField* field = DataSet->FindField(item.Name);
    if (field && field->CanModify()) field->SetValue(item.Value);
  }
}

// ---- The search-miss slot -----------------------------------------------------------

void ApplySearchMiss(TDataSet* DataSet, TVeskSearchMiss& Miss) {
  if (Miss.Name.IsEmpty()) return;
  const String name = Miss.Name;
  Miss.Name = String();
  TField* field = DataSet->FindField(name);
  if (!field) return;
  TReadOnlyLift lift(field);
  if (field->CanModify()) field->SetAsString(Miss.Value);
}
