// Values copied into the record being edited: from the record before it
// (ditto), from the master of a detail, and from the record being
// duplicated.
#pragma once

#include "platform/db/dataset.h"

class TCustomDADataSet;
class TDataSource;

// Lifts a field's ReadOnly for a write and puts it back in any case.
class TReadOnlyLift {
 public:
  explicit TReadOnlyLift(TField* Field);
  ~TReadOnlyLift();
  TReadOnlyLift(const TReadOnlyLift&) = delete;
  TReadOnlyLift& operator=(const TReadOnlyLift&) = delete;

 private:
  TField* field_;
  bool was_;
};

// ---- The record before ------------------------------------------------------------

// In edit or insert, a field that is not read-only takes its value in the
// record before the current one, read through a data link on Source (which
// must serve the field's dataset); so does its companion, the field named
// by its KeyFields or else its Origin, when that is not read-only. Nothing
// on the first record. The dataset's own cursor never moves.
void CopyDataFromPrev(TDataSource* Source, TField* Field);
// CopyDataFromPrev through Source, or the dataset's first data source, or
// one made for the moment. A read-only field is left alone.
void getDitto(TField* Field, TDataSource* Source);
// Ditto for every field of the dataset whose name is not in the
// ";"-separated KeyNames (ignoring case and blanks around names): the
// copying step of the dataset member duplicateRecord. The list may be of
// any length.
void DittoFieldsExcept(TDataSet* DataSet, const String& KeyNames);

// ---- Duplication ------------------------------------------------------------------

// Appends a copy of the current record through the guarded __APPEND and
// posts it through __POST unless StayInEdit. The data fields named by the
// dataset's VeskKeyFields (read by name) keep what the new record got; the
// others take the original's values, read-only ones included. Lookup and
// calculated fields follow the data fields.
void DuplicateRecord(TDataSet* DataSet, bool StayInEdit);

// ---- Detail from master -------------------------------------------------------------

// A new detail record takes the master's values for the parameters that
// tie it to the master (FillDetailFieldsFromMaster). For each parameter,
// the field of the same name, or failing that the field the statement
// compares with it ("WHERE DOC_ID = :ID" names DOC_ID), gets the value of
// the master's field of the parameter's name, or else the parameter's own
// value, through its ReadOnly. Nothing without a source, a master, or
// parameters.
void FillDetailFields(TCustomDADataSet* Detail, TDataSource* Source);
