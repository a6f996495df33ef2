// Values that fill new records: the per-dataset defaults that a person sets
// on a column (setDefFV, getDefFV, freeDefFV of the dataset family), and
// the text a failed search leaves for the next insert.
#pragma once

#include <vector>

#include "platform/db/dataset.h"

// ---- Default values --------------------------------------------------------------

// One default: a field name and the value a new record takes.
struct TVeskDefaultValue {
  String Name;
  Variant Value;
};
using TVeskDefaultList = std::vector<TVeskDefaultValue>;

// The name a field's default is kept under: a data field's FieldName, a
// calculated field's Origin, a lookup field's KeyFields (a lookup defaults
// its key, not its text); empty for a field that takes no default.
String DefaultValueName(const TField* Field);

// Sets the field's default in the list (setDefFV): a record of the same
// name, ignoring case, takes the value, else one is appended.
//  - A data field with an Origin that names another field of the dataset
//    sets that field's default first, so that a code and the data field it
//    feeds get theirs together; the person is asked only once, for the
//    origin.
//  - Data field: with Ask, the input box "Default value:" gives the text
//    (a cancel stores nothing); without, the field's present value.
//  - Calculated field with an Origin, lookup field: the present value of
//    the field named by DefaultValueName.
void SetFieldDefault(TVeskDefaultList& List, TField* Field, bool Ask);
// The default kept for the field (getDefFV); Unassigned when there is none.
Variant FieldDefault(const TVeskDefaultList& List, const TField* Field);
// Writes each default, in list order, into its field when the dataset has
// the field and it can be modified.
void ApplyDefaultValues(TDataSet* DataSet, const TVeskDefaultList& List);

// ---- The search-miss slot -----------------------------------------------------------

// A field name and the text that a failed search looked for.
struct TVeskSearchMiss {
  String Name;
  String Value;
};
// Types the text into the field when the dataset has it and it can be
// modified, its ReadOnly lifted for the moment; the name is cleared in any
// case, so the text seeds one insert only.
void ApplySearchMiss(TDataSet* DataSet, TVeskSearchMiss& Miss);
