// The general record-by-record search of the kit, which a person can stop
// by pressing a key or the mouse, and qlocate over a dataset's index fields.
//
// Unlike TDataSet::Locate, this search walks the records with First and
// Next, so it sees calculated and lookup fields as they show, can start
// behind the current record, and can stop early on ordered data.
#pragma once

#include "platform/db/dataset.h"
#include "platform/rtl/sets.h"

class TStrings;

// The search options; a TLocateOptions set maps onto the first two.
enum TVeskLocateFlag {
  vloCaseInsensitive,  // string fields compare in upper case
  vloPartialKey,       // a string field matches when it begins with the value
  vloFromNext,         // start behind the current record instead of the first
  vloOrdered           // one key field in ascending order: stop once it is passed,
                       // and stay where the search stopped on a miss
};
using TVeskLocateOption = Set<TVeskLocateFlag>;

TVeskLocateOption VeskLocateOptions(TLocateOptions Options);

// True when key or mouse input waits in the front end's queue (asked
// through the UserInterface port); the search asks on every record.
bool UserInputMessage();

// Finds the first record whose fields equal the values; true when found,
// and the dataset stands on it. Values: one Variant for one name, a
// Variant array in the same order for several. A null field matches a
// null value only; string fields compare as text under the case and
// partial options, other fields as Variants. A miss (or a stop by the
// person) goes back to where the search began, except with vloOrdered,
// which stays where it stopped. Unknown field names raise.
bool Locate(TDataSet* DataSet, TStrings* Names, const Variant& Values, TVeskLocateOption Options);
// Names separated by "," or ";".
bool Locate(TDataSet* DataSet, const String& Names, const Variant& Values, TVeskLocateOption Options);
bool Locate(TDataSet* DataSet, const String& Names, const Variant& Values, TLocateOptions Options);

// Locates on the leading values that are set (not empty), taken against
// the dataset's index fields (its published "IndexFieldNames", split at
// ";") in order. False when no value is set or the dataset names fewer
// index fields than values.
bool qlocate(TDataSet* DataSet, const Variant& V1, const Variant& V2 = Variant(), const Variant& V3 = Variant(),
             const Variant& V4 = Variant(), const Variant& V5 = Variant(), const Variant& V6 = Variant(),
             const Variant& V7 = Variant());
