// Free functions through which any dataset is driven: the guarded
// commands, the master refresh, and the small helpers that messages and
// grids use. They take a plain TDataSet and reach the family's extras by
// published property name, so a dataset outside the kit works too and its
// guard simply reads as off.
#pragma once

#include "data/veskcontract.h"

class TDataLink;
class TDataSource;

// Writes VeskCom by name; nothing on a dataset without it.
void SetVeskCom(TDataSet* DataSet, TVeskState Value);

// The guarded commands: each declares its intent in VeskCom, then acts, so
// that a guarded dataset lets the change through. An abort of the guard
// passes through to the caller.
//   __EDIT    outside edit and insert: Edit (dsgEdit), or Insert (dsgInsert)
//             on an empty dataset
//   __POST    in edit or insert: Post (dsgPost); otherwise nothing at all
//   __CANCEL  in edit or insert: Cancel (dsgCancel)
//   __DELETE  Delete (dsgDelete)
//   __INSERT  Insert (dsgInsert)
//   __APPEND  Append (dsgInsert)
void __EDIT(TDataSet* DataSet);
void __POST(TDataSet* DataSet);
void __CANCEL(TDataSet* DataSet);
void __DELETE(TDataSet* DataSet);
void __INSERT(TDataSet* DataSet);
void __APPEND(TDataSet* DataSet);

// Re-reads the master's current record when the dataset is a detail of an
// Oracle dataset in browse state, and goes on upward while the masters have
// VeskMasterRefresh on.
void MasterRefresh(TDataSet* DataSet);

// "Owner.Name" of the dataset for messages; "<no name>" for an unnamed one.
String GetDataSetName(const TComponent* DataSet);

// FindField, and failing that a name "ALIAS.FIELD" whose alias is the
// dataset's VeskAlias (ignoring case) finds FIELD (at most 30 characters).
// Null for a null dataset, an empty name or no match.
TField* FindFieldIgnoreAlias(TDataSet* DataSet, const String& Name);

// A data link that wants to load its control when its dataset opens (the
// setting controls bound to a data source).
class TVeskOpenAware {
 public:
  virtual ~TVeskOpenAware() = default;
  virtual void DataSourceOpened() = 0;
};

// Tells every link of the source that asks for it (a TDataLink that is also
// a TVeskOpenAware) that the dataset has opened. Nothing for null.
void DataSourceOpen(TDataSource* Source);
