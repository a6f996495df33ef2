#include "filter/vesksearch.h"

#include "filter/gridinput.h"
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

// The kit's own search dialogue for a grid.
bool AskGridInput(TField* selected, String& text, bool& partial, bool& byCode) {
  TGridInputRequest request;
  request.DataSet = selected ? selected->DataSet() : nullptr;
  request.Field = selected;
  request.Caption = u"Search";
  request.Text = text;
  request.Partial = partial;
  if (!ShowGridInputForm(request)) return false;
  text = request.Text;
  partial = request.Partial;
  byCode = request.ByCode;
  return true;
}

// The grid's search dialogue: sets the value, the match and the field.
// False when cancelled.
bool RunGridDialog(const TVeskSearchHooks& hooks, TComponent* grid, TVeskSearchState& state, TField*& field,
                   TVeskLocateOption& options) {
  auto* dbGrid = dynamic_cast<TCustomDBGrid*>(grid);
  TField* selected = dbGrid && dbGrid->SelectedField() ? dbGrid->SelectedField() : field;
  String text = state.LastValue;
  bool partial = options.Contains(vloPartialKey), byCode = false;
  const bool ok = hooks.GridDialog ? hooks.GridDialog(grid, selected, text, partial, byCode)
                                   : AskGridInput(selected, text, partial, byCode);
  if (!ok) return false;
  state.LastValue = text;
  if (partial) options << vloPartialKey;
  else options >> vloPartialKey;
  // A code the dataset does not have leaves the selected field.
  TField* code = byCode ? GridInputCodeField(selected) : nullptr;
  if (selected) field = code ? code : selected;
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
                      const String& Value, int Repeat, TComponent* Grid) {
  if (!DataSet) return false;
  if (!Value.IsEmpty()) State.LastValue = Value;
  TVeskLocateOption options = VeskLocateOptions(Hooks.Options);
  if (Repeat != 0) options << vloFromNext;

  bool asked = false;
  if (Grid) {
    if (!RunGridDialog(Hooks, Grid, State, Field, options)) return true;
    asked = true;
  }
  if (!Field) {
    Field = State.LastField.IsEmpty() ? nullptr : DataSet->FindField(State.LastField);
    if (!Field) return true;
  }
  State.LastField = Field->FieldName();

  // A search without a text of its own asks, offering the last one; with
  // no grid to ask, that is how a search command gets its text.
  const bool askFirst = !asked && (Value.IsEmpty() || Repeat != 0);
  bool found = false;
  switch (Field->FieldKind()) {
    case fkCalculated:
      if (Hooks.ExtSearch) {
        Hooks.ExtSearch(DataSet);
        return true;
      }
      if (askFirst && !AskValue(Field, State.LastValue)) return false;
      found = Hooks.LocateCalc
                  ? Hooks.LocateCalc(Field->FieldName(), State.LastValue, PlainOptions(options), Repeat != 0)
                  : Locate(DataSet, Field->FieldName(), State.LastValue, options);
      break;
    case fkLookup:
      if (Hooks.LookupFilterCount > 0) {
        ShowMessage(u"Can't do this with enabled lookUp filters\nRemove them and try agan");
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
    if (Hooks.Miss) Hooks.Miss(State.MissField, State.MissValue);
  }
  return found;
}
