// The search behind a grid's typed search and the dataset commands
// SearchCmdFirst and SearchCmdNext: the dataset member `locate` of the
// family, written as a free function over the parts of the dataset it
// needs. The family's body keeps a TVeskSearchState and fills
// TVeskSearchHooks from its own members, then forwards `locate` here.
#pragma once

#include <functional>

#include "filter/vesklocate.h"

// What the dataset keeps between searches.
struct TVeskSearchState {
  String LastField, LastValue;  // the last search; GetSearched tests LastField
  String MissField, MissValue;  // the last search that found nothing, for the grid's status
};

// The dataset's parts the search calls.
struct TVeskSearchHooks {
  // The options of the dataset's own Locate.
  TLocateOptions Options{loCaseInsensitive, loPartialKey};
  // VeskExtSearch: when assigned, a search on a calculated field is its own.
  TNotifyEvent ExtSearch;
  // Entries in the lookup-filter list: a lookup field can not be searched
  // while the list filters on lookups.
  int LookupFilterCount = 0;
  // LocateLKCALC(key fields, value, options, forward); unset: the general
  // Locate over the field's shown values.
  std::function<bool(const String&, const Variant&, TLocateOptions, bool)> LocateCalc;
  // The search dialogue for a grid: fills the text, whether the match is
  // partial, and whether to search the code (the field named by the
  // selected field's KeyFields) instead of the selected field; false on
  // cancel. Unset: the kit's TGridInputForm (filter/gridinput.h).
  std::function<bool(TComponent* Grid, TField* Selected, String& Text, bool& Partial, bool& ByCode)> GridDialog;
  // Told the field and text of a search that found nothing; the family
  // keeps them for the next insert (SetSearchMiss).
  std::function<void(const String& FieldName, const String& Value)> Miss;
};

// Searches Field (or the last searched field when null) for Value (or the
// last value). Repeat 0 starts at the first record, 1 behind the current
// one. With a grid the search dialogue comes first and gives the text, the
// match and the field (the grid's selected field, or its code field).
// Without it the value is asked under "Search:" when there is none yet or
// when repeating. False when not found or when that question is
// cancelled; true when the dialogue is cancelled, when the last field no
// longer exists, or when ExtSearch took the search.
bool VeskSearchLocate(TDataSet* DataSet, TVeskSearchState& State, const TVeskSearchHooks& Hooks, TField* Field,
                      const String& Value, int Repeat, TComponent* Grid);
