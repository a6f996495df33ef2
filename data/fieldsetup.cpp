#include "data/fieldsetup.h"

#include <algorithm>
#include <initializer_list>

#include "data/contfields.h"
#include "grid/gridpropcmp.h"
#include "platform/db/dadataset.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"

namespace {

// ---- The content settings of the active TGridPropCmp ----

bool ContentFieldsOn() {
  const TGridPropCmp* store = GetGridPropCmp();
  return store && store->UseDotInCont();
}

WideChar ContentDot() { return TGridPropCmp::DotInContChar(); }

// ---- Field kinds ----

bool IsA(const TField* field, TClass cls) { return field && field->InheritsFrom(cls); }

bool IsNumberField(const TField* field) {
  return IsA(field, TIntegerField::StaticClass()) || IsA(field, TFloatField::StaticClass());
}

bool EndsWith(const String& text, const String& tail) {
  return text.Length() >= tail.Length() && text.SubString(text.Length() - tail.Length() + 1, tail.Length()) == tail;
}

bool StartsWith(const String& text, const String& head) { return text.SubString(1, head.Length()) == head; }

bool IsContentName(const String& fieldName) {
  String name = UpperCase(fieldName);
  name = name.SubString(name.Pos(u".") + 1, 30);
  for (const char16_t* known : {u"DT", u"CT", u"CONT", u"XCONT", u"CC1", u"CC2"})
    if (name == known) return true;
  return StartsWith(name, u"CONT_");
}

// DisplayFormat lives on numbers and dates only; others have none.
String DisplayFormatOf(const TField* field) {
  if (auto* n = dynamic_cast<const TNumericField*>(field)) return n->DisplayFormat();
  if (auto* d = dynamic_cast<const TDateTimeField*>(field)) return d->DisplayFormat();
  return String();
}

// Does nothing to a field that has no DisplayFormat.
void SetDisplayFormatOf(TField* field, const String& format) {
  if (auto* n = dynamic_cast<TNumericField*>(field)) n->SetDisplayFormat(format);
  else if (auto* d = dynamic_cast<TDateTimeField*>(field)) d->SetDisplayFormat(format);
}

// Entry i of a comma list for field i, while both last.
template <class Apply>
void ForEachEntry(TDataSet* dataSet, const String& text, Apply apply) {
  if (!dataSet) return;
  TStringList entries;
  entries.SetCommaText(text);
  const int count = std::min(entries.Count(), dataSet->FieldCount());
  for (int i = 0; i < count; ++i)
    if (!entries[i].IsEmpty()) apply(dataSet->Fields()->Fields(i), entries[i]);
}

void SetDesignFromKeys(TDataSet* dataSet, TStrings* list, const String& captionsKey, const String& widthsKey) {
  if (!dataSet || !list) return;
  const String captions = Trim(list->Values(captionsKey));
  const String widths = Trim(list->Values(widthsKey));
  if (!captions.IsEmpty()) SetupFieldLabels(dataSet, captions);
  if (!widths.IsEmpty()) SetupFieldWidths(dataSet, widths);
}

// The Origin a field takes by the "TIP" of a parameter line: the code
// column for the plain kinds, the account column for "P".
bool OriginByKind(TStrings* list, String& origin) {
  const String kind = list->Values(u"TIP");
  if (kind.Length() != 1) return false;
  const char16_t* key = nullptr;
  if (Pos(kind, u"USIiM") > 0) key = u"FIELD_COD";
  else if (kind == u"P") key = u"FIELD_CONT";
  if (!key || list->IndexOfName(key) < 0) return false;
  origin = list->Values(key);
  return true;
}

}  // namespace

// ---- Format classes ----------------------------------------------------------------

TFieldFormatClass FieldFormatClass(const TField* field) {
  if (!field) return fcNone;
  if (ContentFieldsOn() && IsNumberField(field) && IsContentName(field->FieldName())) return fcContent;
  if (IsA(field, TDateField::StaticClass())) return fcDate;
  if (IsA(field, TTimeField::StaticClass())) return fcTime;
  if (IsA(field, TDateTimeField::StaticClass())) {
    const String name = UpperCase(field->FieldName());
    if (EndsWith(name, u"DATETIME")) return fcDateTime;
    if (EndsWith(name, u"TIME")) return fcTime;
    return fcDate;
  }
  return fcNone;
}

String FormatClassDisplayFormat(TFieldFormatClass formatClass) {
  switch (formatClass) {
    case fcContent: return u"00" + String(ContentDot()) + u"00";
    case fcDate: return u"dd.mm.yyyy";
    case fcTime: return u"hh:nn:ss";
    case fcDateTime: return u"dd.mm.yyyy hh:nn:ss";
    default: return String();
  }
}

String FormatClassEditMask(TFieldFormatClass formatClass) {
  switch (formatClass) {
    case fcContent: return u"99\\" + String(ContentDot()) + u"99";
    case fcDate: return u"99.99.9999";
    case fcTime: return u"99:99:99";
    case fcDateTime: return u"99.99.9999 99:99:99";
    default: return String();
  }
}

// ---- After open ----------------------------------------------------------------------

void SetupFieldsAfterOpen(TDataSet* DataSet) {
  if (!DataSet) return;
  for (int i = 0; i < DataSet->FieldCount(); ++i) {
    TField* field = DataSet->Fields()->Fields(i);
    if (field->Name().IsEmpty())
      if (TField* companion = FindCompanionField(DataSet, field->FieldName())) field->SetOrigin(companion->FieldName());
    const TFieldFormatClass formatClass = FieldFormatClass(field);
    if (formatClass != fcNone) {
      if (formatClass == fcContent || field->EditMask().IsEmpty()) field->SetEditMask(FormatClassEditMask(formatClass));
      if (formatClass != fcDateTime && DisplayFormatOf(field).IsEmpty())
        SetDisplayFormatOf(field, FormatClassDisplayFormat(formatClass));
    }
    if (!field->EditMask().IsEmpty() && !field->OnSetText.Assigned()) field->OnSetText = &SetTextByMask;
    if (formatClass == fcContent) MakeContentField(field);
  }
}

TField* FindCompanionField(TDataSet* DataSet, const String& FieldName) {
  if (!DataSet) return nullptr;
  const String name = UpperCase(FieldName);
  if (name.Length() <= 3 || !StartsWith(name, u"CLC")) return nullptr;
  String rest = name.SubString(4, name.Length());
  if (StartsWith(rest, u"_")) rest = rest.SubString(2, rest.Length());
  if (TField* found = DataSet->FindField(rest)) return found;
  if (EndsWith(rest, u"T")) {
    rest.SetLength(rest.Length() - 1);
    if (EndsWith(rest, u"_")) rest.SetLength(rest.Length() - 1);
    if (TField* found = DataSet->FindField(rest)) return found;
  }
  // Columns of joined tables come as "TABLE.COLUMN"; the calculated name
  // could only spell the dot as "_" or drop it.
  for (TField* field : *DataSet->Fields()) {
    if (!IsNumberField(field)) continue;
    const String upper = UpperCase(field->FieldName());
    if (upper.Pos(u".") == 0) continue;
    for (const String& spelled : {StringReplace(upper, u".", u"_", TReplaceFlags() << rfReplaceAll),
                                  StringReplace(upper, u".", u"", TReplaceFlags() << rfReplaceAll)})
      if (spelled == rest || spelled == rest + u"T" || spelled == rest + u"_T") return field;
  }
  return nullptr;
}

void SetTextByMask(TField* Sender, const String& Text) {
  for (WideChar c : Text.view())
    if (c >= u'0' && c <= u'9') {
      Sender->SetAsString(Text);
      return;
    }
  Sender->Clear();
}

// ---- Labels and widths -----------------------------------------------------------------

void SetupFieldLabels(TDataSet* DataSet, const String& Text) {
  ForEachEntry(DataSet, Text, [](TField* field, const String& entry) { field->SetDisplayLabel(entry); });
}

void SetupFieldWidths(TDataSet* DataSet, const String& Text) {
  ForEachEntry(DataSet, Text, [](TField* field, const String& entry) {
    if (entry == u"0") field->SetVisible(false);
    else field->SetDisplayWidth(StrToInt(entry));
  });
}

void SetDesignFromParams(TDataSet* DataSet, TStrings* List) {
  SetDesignFromKeys(DataSet, List, u".Captions", u".Widths");
}

void SetDesignFromParamsDetail(TDataSet* DataSet, TStrings* List) {
  SetDesignFromKeys(DataSet, List, u"CaptionsD", u"WidthsD");
}

void SetDesignFromSQL(TDataSet* DataSet) {
  if (auto* sqlDataSet = dynamic_cast<TCustomDADataSet*>(DataSet)) SetDesignFromParams(sqlDataSet, sqlDataSet->SQL());
}

// ---- A field's format settings in a list ---------------------------------------------

void GetVeskFieldParams(TField* Field, TStrings* List) {
  if (!Field || !List) return;
  const TFieldFormatClass formatClass = FieldFormatClass(Field);
  if (formatClass == fcNone) return;
  String format = DisplayFormatOf(Field);
  if (format == FormatClassDisplayFormat(formatClass)) format = String();
  List->SetValues(u"DisplayFormat", format);
  if (formatClass != fcContent) List->SetValues(u"EditMask", Field->EditMask());
}

void SetVeskFieldParams(TField* Field, TStrings* List) {
  if (!Field || !List || !Field->DataSet()) return;
  const TFieldFormatClass formatClass = FieldFormatClass(Field);

  const String format = List->Values(u"DisplayFormat");
  if (!format.IsEmpty()) {
    SetDisplayFormatOf(Field, format);
  } else if (formatClass != fcNone && Field->Name().IsEmpty() && DisplayFormatOf(Field).IsEmpty()) {
    SetDisplayFormatOf(Field, FormatClassDisplayFormat(formatClass));
  }

  String origin;
  if (List->IndexOfName(u"Origin") >= 0) Field->SetOrigin(List->Values(u"Origin"));
  else if (OriginByKind(List, origin)) Field->SetOrigin(origin);

  // Outside the content class a list without a mask leaves the field's own.
  const String mask = List->Values(u"EditMask");
  if (formatClass == fcContent) Field->SetEditMask(FormatClassEditMask(fcContent));
  else if (!mask.IsEmpty()) Field->SetEditMask(mask);
}
