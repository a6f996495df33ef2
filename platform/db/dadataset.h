// SQL datasets: TCustomDADataSet and the Oracle family over it.
//
// SQL holds the statement with its "&name" macros and ":name" parameters;
// every change of SQL re-parses both lists, keeping the values of names
// that stay. GetFinalSQL is the text with the macros replaced, as the
// engine gets it. Opening executes it and fetches rows on demand, FetchRows
// at a time (all of them for RecordCount and Last); UniDirectional keeps
// only the current block.
//
// Changes are written through SQLInsert, SQLUpdate and SQLDelete: a
// parameter ":NAME" takes the field NAME's new value, ":OLD_NAME" its value
// before the edit, any other name the dataset's parameter of that name.
// "RETURNING ... INTO :NAME" values come back into the fields. RefreshRecord
// re-reads the current record through SQLRefresh; a SQLRefresh that is a
// WHERE clause alone is applied to the dataset's own statement. Posting
// without the statement it needs raises EDatabaseError, and a failed post
// leaves the record in edit with its values.
//
// The statements go through a replaceable updater object (SetUpdater), so
// that a descendant can change how they are chosen, handed to the engine,
// and how a record is re-read.
#pragma once

#include <memory>

#include "platform/db/dataset.h"
#include "platform/db/orasession.h"
#include "platform/rtl/stringlist.h"

// The kinds of the write statements, numbered as the kit numbers them.
enum TStatementType { stQuery, stInsert, stUpdate, stDelete, stLock, stRefresh };

enum TRefreshOption { roAfterInsert, roAfterUpdate, roBeforeEdit };
KELMAR_ENUM(TRefreshOption, u"roAfterInsert", u"roAfterUpdate", u"roBeforeEdit");
using TRefreshOptions = Set<TRefreshOption>;

enum TLockMode { lmNone, lmPessimistic, lmOptimistic };
KELMAR_ENUM(TLockMode, u"lmNone", u"lmPessimistic", u"lmOptimistic");

class TCustomDADataSet;

class TDADataSetUpdater : public TObject {
  KELMAR_CLASS(TDADataSetUpdater, TObject)
 public:
  explicit TDADataSetUpdater(TCustomDADataSet* DataSet) : dataSet_(DataSet) {}
  TCustomDADataSet* DataSet() const { return dataSet_; }

  // The text of a write statement; empty when the dataset has none.
  virtual String GetUpdateStatement(TStatementType StatementType);
  // Re-reads the current record; false when it did nothing.
  virtual bool PerformRefreshRecord();
  // Hands one write statement to the engine: binds it from the record and
  // the parameters, runs it, and writes RETURNING values back.
  virtual void PerformSQL(const String& SQL, TStatementType StatementType);

 private:
  TCustomDADataSet* dataSet_;
};

class TCustomDADataSet : public TDataSet {
  KELMAR_CLASS(TCustomDADataSet, TDataSet)
 public:
  explicit TCustomDADataSet(TComponent* AOwner);
  ~TCustomDADataSet() override;

  // ---- Statement ----
  TStrings* SQL() const { return sql_.get(); }
  void SetSQL(TStrings* value) { sql_->Assign(value); }
  // The statement as the engine gets it: macros replaced, FilterSQL applied.
  String GetFinalSQL() const;
  // An extra condition on the statement's rows.
  const String& FilterSQL() const { return filterSQL_; }
  void SetFilterSQL(const String& value);

  // ---- Parameters and macros ----
  TOraParams* Params() const { return params_.get(); }
  void SetParams(TOraParams* value) { params_->Assign(value); }
  int ParamCount() const { return params_->Count(); }
  TOraParam* ParamByName(const String& name) const { return params_->ParamByName(name); }
  TOraParam* FindParam(const String& name) const { return params_->FindParam(name); }
  TMacros* Macros() const { return macros_.get(); }
  int MacroCount() const { return macros_->Count(); }
  TMacro* MacroByName(const String& name) const { return macros_->MacroByName(name); }
  TMacro* FindMacro(const String& name) const { return macros_->FindMacro(name); }

  // ---- Write statements ----
  TStrings* SQLInsert() const { return statements_[stInsert].get(); }
  TStrings* SQLUpdate() const { return statements_[stUpdate].get(); }
  TStrings* SQLDelete() const { return statements_[stDelete].get(); }
  TStrings* SQLLock() const { return statements_[stLock].get(); }
  TStrings* SQLRefresh() const { return statements_[stRefresh].get(); }
  void SetSQLInsert(TStrings* v) { statements_[stInsert]->Assign(v); }
  void SetSQLUpdate(TStrings* v) { statements_[stUpdate]->Assign(v); }
  void SetSQLDelete(TStrings* v) { statements_[stDelete]->Assign(v); }
  void SetSQLLock(TStrings* v) { statements_[stLock]->Assign(v); }
  void SetSQLRefresh(TStrings* v) { statements_[stRefresh]->Assign(v); }
  // By kind: 1 insert, 2 update, 3 delete, 4 lock, 5 refresh; null otherwise.
  TStrings* UpdateSQL(int StatementType) const;

  // ---- Behaviour ----
  int FetchRows() const { return fetchRows_; }
  void SetFetchRows(int value);
  bool UniDirectional() const { return uniDirectional_; }
  void SetUniDirectional(bool value);
  TRefreshOptions RefreshOptions() const { return refreshOptions_; }
  virtual void SetRefreshOptions(TRefreshOptions value) { refreshOptions_ = value; }
  // Re-reads inserted and updated records through SQLRefresh.
  bool DMLRefresh() const { return dmlRefresh_; }
  void SetDMLRefresh(bool value) { dmlRefresh_ = value; }
  // Refresh re-reads the whole statement (it always does here); kept for
  // the designs that set it from RefreshOptions.
  bool FullRefresh() const { return fullRefresh_; }
  void SetFullRefresh(bool value) { fullRefresh_ = value; }
  bool ReadOnly() const { return readOnly_; }
  void SetReadOnly(bool value) { readOnly_ = value; }
  bool CachedUpdates() const { return false; }
  // ";"-separated fields that identify a record (generated statements).
  const String& KeyFields() const { return keyFields_; }
  void SetKeyFields(const String& value) { keyFields_ = value; }

  // ---- Session ----
  TOraSession* Session() const { return session_; }
  void SetSession(TOraSession* value);
  // The session in use: Session, or DefaultSession() when none is set.
  TOraSession* UsedSession() const { return session_ ? session_ : DefaultSession(); }

  // ---- Running ----
  // Runs the statement without opening the dataset; output parameters and
  // RETURNING values come back into Params.
  void ExecSQL();
  void Execute() { ExecSQL(); }
  int64_t RowsAffected() const { return rowsAffected_; }
  // Re-reads the current record from the engine.
  void RefreshRecord();

  TDADataSetUpdater* Updater() const { return updater_.get(); }
  // Takes ownership; null restores the standard updater.
  void SetUpdater(TDADataSetUpdater* value);

  // ---- Used by the updater ----
  // The value a statement parameter takes: a field's new or (OLD_) old
  // value, else the dataset's parameter, else null.
  TDbValue ParamValueFor(const String& name) const;
  // Writes a value from the engine into a field of the current record,
  // ignoring read-only and mode (RETURNING values, refreshed records).
  void StoreFieldValue(TField* field, const TDbValue& value);
  // The statement a write of this kind runs when the dataset has none of
  // its own; empty when it cannot make one.
  virtual String DefaultUpdateStatement(TStatementType StatementType) const { return String(); }
  // Prepares and runs a write statement bound through ParamValueFor.
  std::unique_ptr<TDbStatement> RunWriteStatement(const String& sql) { return Run(sql, true); }
  bool CurrentRecord(TRecordStore::RowId& row) const { return CurrentRow(row); }
  // Copies one column of the statement's row into a store cell.
  static void CopyColumn(TRecordStore& store, TRecordStore::RowId row, int column, const TDbStatement& statement,
                         int source);
  void SessionGone(TOraSession* session);

  TDataSetNotifyEvent BeforeUpdateExecute, AfterUpdateExecute;

 protected:
  void InternalOpen(bool InfoQuery) override;
  void InternalClose() override;
  int FetchRecords(int count) override;
  int FetchBlockSize() const override { return fetchRows_; }
  bool KeepsOnlyCurrentBlock() const override { return uniDirectional_; }
  void InternalEdit() override;
  void InternalPost(bool inserting) override;
  void InternalDelete() override;
  void InternalRefresh() override;
  bool GetCanModify() const override { return !readOnly_; }
  void MasterChanged() override;
  void Notification(TComponent* AComponent, TOperation Operation) override;
  // The base statement before FilterSQL; descendants that make their own
  // statement (tables) override it.
  virtual String BaseSQL() const;
  // Called when SQL changed: re-parses parameters and macros.
  virtual void SQLChanged();

  // Prepares, binds and runs a statement on the session (connecting it
  // when needed): from the record and then Params, or from Params alone.
  std::unique_ptr<TDbStatement> Run(const String& sql, bool fromRecord);

 private:
  void DefineFields();
  bool MasterParamsChanged();
  void SQLTextChanged(TObject* Sender) { SQLChanged(); }

  std::unique_ptr<TStringList> sql_;
  std::unique_ptr<TStringList> statements_[6];  // by TStatementType
  std::unique_ptr<TOraParams> params_;
  std::unique_ptr<TMacros> macros_;
  std::unique_ptr<TDADataSetUpdater> updater_;
  TOraSession* session_ = nullptr;
  TOraSession* attached_ = nullptr;
  std::unique_ptr<TDbStatement> cursor_;
  bool pendingRow_ = false;  // the cursor stands on a row not yet stored
  TDbBlock block_;           // reused by every fetch
  String filterSQL_;
  String keyFields_;
  int fetchRows_ = 25;
  bool uniDirectional_ = false;
  bool dmlRefresh_ = false;
  bool readOnly_ = false;
  bool fullRefresh_ = false;
  TRefreshOptions refreshOptions_;
  int64_t rowsAffected_ = 0;
};

// ---- The Oracle family ---------------------------------------------------------

class TOraDataSetOptions : public TPersistent {
  KELMAR_CLASS(TOraDataSetOptions, TPersistent)
 public:
  // An update or delete that finds no record, or more than one, fails.
  bool StrictUpdate() const { return strictUpdate_; }
  void SetStrictUpdate(bool v) { strictUpdate_ = v; }
  void Assign(TPersistent* Source) override;

 private:
  bool strictUpdate_ = true;
};

class TOraDataSet : public TCustomDADataSet {
  KELMAR_CLASS(TOraDataSet, TCustomDADataSet)
 public:
  explicit TOraDataSet(TComponent* AOwner);
  ~TOraDataSet() override;

  TLockMode LockMode() const { return lockMode_; }
  void SetLockMode(TLockMode value) { lockMode_ = value; }
  TOraDataSetOptions* Options() const { return options_.get(); }
  void SetOptions(TOraDataSetOptions* value) { options_->Assign(value); }
  // Object columns as whole objects rather than split into fields. The
  // embedded engine has no object columns; the setting is kept and stored.
  bool ObjectView() const { return objectView_; }
  void SetObjectView(bool value) { objectView_ = value; }

 private:
  TLockMode lockMode_ = lmNone;
  bool objectView_ = false;
  std::unique_ptr<TOraDataSetOptions> options_;
};

class TOraDataSetUpdater : public TDADataSetUpdater {
  KELMAR_CLASS(TOraDataSetUpdater, TDADataSetUpdater)
 public:
  using TDADataSetUpdater::TDADataSetUpdater;
};

class TOraQuery : public TOraDataSet {
  KELMAR_CLASS(TOraQuery, TOraDataSet)
 public:
  explicit TOraQuery(TComponent* AOwner) : TOraDataSet(AOwner) {}
};

class TSmartQuery : public TOraDataSet {
  KELMAR_CLASS(TSmartQuery, TOraDataSet)
 public:
  explicit TSmartQuery(TComponent* AOwner) : TOraDataSet(AOwner) {}
};

// A nested table of a record; on engines without them, a query like any
// other.
class TOraNestedTable : public TOraDataSet {
  KELMAR_CLASS(TOraNestedTable, TOraDataSet)
 public:
  explicit TOraNestedTable(TComponent* AOwner) : TOraDataSet(AOwner) {}
};

// Reads "SELECT * FROM TableName" (ordered by OrderFields when set) and
// writes through statements of its own when SQLInsert, SQLUpdate or
// SQLDelete are empty, finding records by KeyFields.
class TOraTable : public TOraDataSet {
  KELMAR_CLASS(TOraTable, TOraDataSet)
 public:
  explicit TOraTable(TComponent* AOwner) : TOraDataSet(AOwner) {}
  const String& TableName() const { return tableName_; }
  void SetTableName(const String& value);
  const String& OrderFields() const { return orderFields_; }
  void SetOrderFields(const String& value);
  String DefaultUpdateStatement(TStatementType StatementType) const override;

 protected:
  String BaseSQL() const override;

 private:
  String tableName_;
  String orderFields_;
};

// Runs a procedure registered on the session (TOraSession::
// RegisterProcedure) with Params; raises ORA-06550 for an unknown name.
class TOraStoredProc : public TOraDataSet {
  KELMAR_CLASS(TOraStoredProc, TOraDataSet)
 public:
  explicit TOraStoredProc(TComponent* AOwner) : TOraDataSet(AOwner) {}
  const String& StoredProcName() const { return storedProcName_; }
  void SetStoredProcName(const String& value) { storedProcName_ = value; }
  void ExecProc();

 private:
  String storedProcName_;
};

// Generated write statements over one table: "INSERT INTO t (a, b)
// VALUES (:a, :b)", and UPDATE and DELETE finding the record by the key
// fields (all non-blob fields when none are given) through :OLD_ values.
String MakeTableStatement(const TDataSet* dataSet, const String& table, const String& keyFields, TStatementType kind);
