// Client sort: VeskSort rewrites a dataset's records in the order of one
// field, for datasets that have no server order; ListApplyToDataSet posts
// an edited record when a parameter list asks for it.
#pragma once

#include "platform/rtl/ustring.h"

class TDataSet;
class TStrings;
class TWinControl;

// Reads every record, sorts them on FieldName (nulls first, then numbers
// and dates by value, then texts ordinally; ties keep their order) and
// writes them back in that order, or the reverse for Descending; then
// locates the value the sort field had on the current record. Fewer than
// two records: nothing happens.
//
// Nothing is lost when the rewrite fails half-way:
// - an in-memory dataset (TMemDataSet, TVirtualTable and their kin) is
//   emptied with Clear and, on a failure, refilled with the records in
//   their old order before the error goes on;
// - a dataset on a session (TCustomDADataSet) is rewritten in a
//   transaction of its own, which is rolled back on a failure, and the
//   dataset is reopened to show the rows again; with a transaction already
//   open the sort is refused with EDatabaseError before anything changes;
// - any other dataset is refused with EDatabaseError.
// Records that a filter hides on an in-memory dataset are sorted and
// written back with the rest. A dataset that publishes the booleans
// "VeskMode" or "XTTShowSummary" (the kit's virtual table among them) has
// them off while the records are written, and back after, so that the
// guard asks nothing and the summaries are computed once.
void VeskSort(TDataSet* DataSet, const String& FieldName, bool Descending);

// The same for the dataset of a data grid (TCustomDBGrid); nothing without
// a grid or a dataset. The grid's selected column is kept.
void VeskSort(TWinControl* Grid, const String& FieldName, bool Descending);

// With the dataset in edit or insert and a non-empty list: posts when the
// list has a value for "AutoPost" or "AutoPostEdit", and with
// "AutoPostEdit" goes back to edit.
void ListApplyToDataSet(TDataSet* DataSet, TStrings* List);
