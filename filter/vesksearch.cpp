#include "filter/vesksearch.h"

#include "platform/db/fields.h"
#include "platform/ui/dbgrids.h"
#include "platform/ui/dialogs.h"

namespace {

// The value for the search; false when the person cancels.
bool AskValue(TField* field, String& value) {
  String text = value;
  if (!InputQuery(u"Search:", field->FieldName() + u":", text)) return false;
  value = text;
  return true;
}

// The grid's search dialogue: sets the value, the match and the field.
// False when cancelled.
bool RunGridDialog(const TVeskSearchHooks& hooks, TWinControl* grid, TDataSet* ds, TVeskSearchState& state,
                   TField*& field, TVeskLocateOption& options) {
  String text = state.LastValue;
  bool partial = options.Contains(vloPartialKey), byCode = false;
  if (!hooks.GridDialog(grid, text, partial, byCode)) return false;
  state.LastValue = text;
  if (partial) options << vloPartialKey;
  else options >> vloPartialKey;
  auto* dbGrid = dynamic_cast<TCustomDBGrid*>(grid);
  TField* selected = dbGrid ? dbGrid->SelectedField() : nullptr;
  if (selected) field = byCode && !selected->KeyFields().IsEmpty() ? ds->FieldByName(selected->KeyFields()) : selected;
  return true;
}

TLocateOptions PlainOptions(TVeskLocateOption options) {
  TLocateOptions plain;
  if (options.Contains(vloCaseInsensitive)) plain << loCaseInsensitive;
  if (options.Contains(vloPartialKey)) plain << loPartialKey;
  return plain;
}

// The dataset's own Locate first, then a second try as the field's type
// allows.
bool FindData(TDataSet* ds, TField* field, const String& text, TVeskLocateOption options) {
  const bool fromNext = options.Contains(vloFromNext);
  auto search = [&](TLocateOptions with) {
    if (fromNext) return Locate(ds, field->FieldName(), text, VeskLocateOptions(with) << vloFromNext);
    return ds->Locate(field->FieldName(), text, with);
  };
  if (search(PlainOptions(options))) return true;
  if (field->DataType() == ftInteger || field->DataType() == ftFloat)
    return Locate(ds, field->FieldName(), text, options);
  return search(TLocateOptions{loCaseInsensitive, loPartialKey});
}

}  // namespace

bool VeskSearchLocate(TDataSet* DataSet, TVeskSearchState& State, const TVeskSearchHooks& Hooks, TField* Field,
                      const String& Value, int Repeat, TWinControl* Grid) {
  if (!DataSet) return false;
  if (!Value.IsEmpty()) State.LastValue = Value;
  TVeskLocateOption options = VeskLocateOptions(Hooks.Options);
  if (Repeat != 0) options << vloFromNext;

  bool asked = false;
  if (Grid && Repeat != 0 && Hooks.GridDialog) {
    if (!RunGridDialog(Hooks, Grid, DataSet, State, Field, options)) return true;
    asked = true;
  }
  if (!Field) {
    Field = State.LastField.IsEmpty() ? nullptr : DataSet->FindField(State.LastField);
    if (!Field) return true;
  }
  State.LastField = Field->FieldName();

  const bool askFirst = !asked && (State.LastValue.IsEmpty() || Repeat != 0);
  bool found = false;
  switch (Field->FieldKind()) {
    case fkCalculated:
      if (Hooks.ExtSearch) {
        Hooks.ExtSearch(DataSet);
        return true;
      }
      if (askFirst && !AskValue(Field, State.LastValue)) return false;
      found = Hooks.LocateCalc
                  ? Hooks.LocateCalc(Field->FieldName(), State.LastValue, Hooks.Options, Repeat != 0)
                  : Locate(DataSet, Field->FieldName(), State.LastValue, options);
      break;
    case fkLookup:
      if (Hooks.LookupFilterCount > 0) {
        ShowMessage(u"Can't do this ");
        return false;
      }
      if (askFirst && !AskValue(Field, State.LastValue)) return false;
      found = Locate(DataSet, Field->FieldName(), State.LastValue, options);
      break;
    default:
      if (askFirst && !AskValue(Field, State.LastValue)) return false;
      found = FindData(DataSet, Field, State.LastValue, options);
      break;
  }
  if (!found) {
    State.MissField = State.LastField;
    State.MissValue = State.LastValue;
  }
  return found;
}
