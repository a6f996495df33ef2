// Record position by key values, default values for new records, the
// value a failed search leaves for the next insert, and copying values
// from the record before: the services behind the dataset members
// VeskMemorizeFieldValues, VeskLocate, setDefFV, FillDetailFieldsFromMaster
// and getDitto.
#pragma once

#include <vector>

#include "platform/db/dataset.h"

class TCustomDADataSet;
class TDataSource;

// Cuts a text at any of `Separators` and always at "~", skipping empty
// parts; at most 255 parts. Returns their number.
int breakApart(const String& Text, std::vector<String>& Parts, const String& Separators);

// The values of the named fields (";"-separated) that the dataset has:
// the key text names those found, joined by ";"; the key value is the
// scalar for one field, else a Variant array in the same order (Unassigned
// for none).
void ReadKeyValues(const TDataSet* DataSet, const String& Names, String& KeyText, Variant& KeyValue);

// ---- Default values ------------------------------------------------------------

// One default: a field name and the value a new record takes.
struct TVeskDefaultValue {
  String Name;
  Variant Value;
};
using TVeskDefaultList = std::vector<TVeskDefaultValue>;

// Sets the default of a field in the list (setDefFV). A data field with an
// Origin that names another field takes that field's default along, and
// the user is asked once. With Ask the value is typed ("Default value:");
// a cancel stores nothing. A calculated field stores under its Origin, a
// lookup field under its KeyFields with the key's value.
void SetFieldDefault(TVeskDefaultList& List, TField* Field, bool Ask);
// Writes each default into its field when the field exists and can be
// modified, in list order.
void ApplyDefaultValues(TDataSet* DataSet, const TVeskDefaultList& List);

// ---- The search-miss slot ---------------------------------------------------------

// A field name and the text a failed search looked for.
struct TVeskSearchMiss {
  String Name;
  String Value;
};
// Writes the text into the field (read-only lifted for the moment) when the
// field exists and can be modified; the name is cleared in any case.
void ApplySearchMiss(TDataSet* DataSet, TVeskSearchMiss& Miss);

// ---- Master and previous record ------------------------------------------------------

// A new detail record takes the master's values for the parameters that
// tie it to the master: for each parameter, the field of its name, or the
// field compared with it in the statement ("WHERE DOC_ID = :ID" fills
// DOC_ID), gets the master field's value of the parameter's name, or else
// the parameter's own value.
void FillDetailFields(TCustomDADataSet* Detail, TDataSource* Source);

// In edit or insert: the field (and its companion, named by KeyFields or
// else Origin) takes the values of the record before the current one.
void CopyDataFromPrev(TDataSource* Source, TField* Field);
// CopyDataFromPrev through Source, or the dataset's first data source, or
// one made for the moment. A read-only field is left alone.
void getDitto(TField* Field, TDataSource* Source);
