// Binding a query's parameters and macros from one name=value list.
//
// The same list carries values in and results out: input parameters and
// macros read their value from it, and a name the list lacks is added as
// "NAME=" so that a caller sees what the statement wants; output and
// result parameters write their value back into it.
//
// Each takes any dataset and raises Exception for a null one ("SetupParams:
// Parameter AQuery is not specified"), for one that is not a TOraDataSet
// ("SetupParams: Query1 is not TOraDataSet") and for a null list.
#pragma once

class TDataSet;
class TStrings;

void SetupParams(TDataSet* AQuery, TStrings* AParams);
void SetupMacros(TDataSet* AQuery, TStrings* AParams);
// Writes the macros' values into SQL itself, "&NAME" by "&NAME" without
// regard to case, the longer of two names sharing a prefix first; a macro
// the list lacks is added as "NAME=" and vanishes from the text.
void ReplaceMacros(TDataSet* AQuery, TStrings* AParams);
