// TVeskBody: the one body that every member of the dataset family shares.
//
// A member is the body over its platform base class and a traits struct
// that says which groups it has:
//
//   using TVeskODACQueryBody = TVeskBody<TOraQuery, TVeskODACQueryTraits>;
//   class TVeskODACQuery : public TVeskODACQueryBody {
//     KELMAR_CLASS(TVeskODACQuery, TVeskODACQueryBody)
//   };
//   KELMAR_PUBLISH(TVeskODACQuery) { PublishVeskBody(r); }
//
// Every member has the guard, the position and default services, the
// summaries and the search and default commands. The groups add:
//
//   SqlComposition  VeskTableLive, VeskAlias, VeskGroupField, VeskFilter,
//                   VeskFilterSYS, VeskSQL1 and the composer; refresh after
//                   writes; the filter list and the filter commands
//   SessionGroup    transactions, the read-only switch, single-row mode,
//                   master refresh, DBMS output, lock mode
//   LocateLookup    OnVESKLocateEvent and OnVESKLookupEvent
//   CFunc           sgCFunc, aggregates on the server
//   Updater         the updater of data/veskupdater.h: autonomous writes,
//                   skipped record refreshes, the record-refresh hooks
//
// A member's properties outside its groups neither exist in C++ nor are
// published, so a write by name to them falls on the floor. Steps of the
// hooks that speak to a server, a transaction or SQL text are left out on
// bases that have none.
//
// The body answers the grids' state questions through TVeskStateHost
// (filter/filterstate.h) and searches through filter/vesksearch.h; both
// headers sit below data/ and include nothing of it.
//
// The member functions are defined in data/veskbodyimpl.h, which only the
// units that define a member include.
#pragma once

#include <memory>
#include <type_traits>

#include "data/lookupfilters.h"
#include "data/veskcontract.h"
#include "data/veskcopy.h"
#include "data/veskdefaults.h"
#include "data/veskpos.h"
#include "filter/filterstate.h"
#include "platform/db/bdedataset.h"
#include "platform/db/dadataset.h"
#include "platform/db/memdataset.h"
#include "platform/rtl/stringlist.h"

class TListFilts;
class TOraNavigator;
class TStatusBar;
class XTTTSummaryCollection;

// The groups of a member; each member's traits derive from this and switch
// on what it has.
struct TVeskNoGroups {
  static constexpr bool SqlComposition = false;
  static constexpr bool SessionGroup = false;
  static constexpr bool LocateLookup = false;
  static constexpr bool CFunc = false;
  static constexpr bool Updater = false;
};

// The lookup table a composed statement joins for a lookup field: the
// VeskTableLive of a TVeskODACQuery, the TableName of a table dataset,
// else empty.
String VeskLookupTableName(TDataSet* LookupDataSet);

template <class Base, class Traits>
class TVeskBody : public Base, public TVeskFilterHost, public TVeskStateHost {
 public:
  using inherited = Base;
  using TTraits = Traits;
  // What the base class can do.
  static constexpr bool kSql = std::is_base_of_v<TCustomDADataSet, Base>;
  static constexpr bool kOra = std::is_base_of_v<TOraDataSet, Base>;
  static constexpr bool kTable = std::is_base_of_v<TOraTable, Base>;
  static_assert(!Traits::SqlComposition || kSql, "SQL composition needs an SQL dataset");
  static_assert(!Traits::SessionGroup || kOra, "the session group needs an Oracle dataset");
  static_assert(!Traits::CFunc || kSql, "sgCFunc needs an SQL dataset");
  static_assert(!Traits::Updater || kOra, "the updater needs an Oracle dataset");

  explicit TVeskBody(TComponent* AOwner);
  ~TVeskBody() override;

  // ---- The guard ----
  bool VeskMode() const { return veskMode_; }
  void SetVeskMode(bool Value) { veskMode_ = Value; }
  // What the caller has declared it is about to do.
  TVeskState VeskCom() const { return veskCom_; }
  void SetVeskCom(TVeskState Value) { veskCom_ = Value; }
  // Implicit edit and scroll go through without asking.
  bool VeskModeNotAbort() const { return veskModeNotAbort_; }
  void SetVeskModeNotAbort(bool Value) { veskModeNotAbort_ = Value; }
  // With VeskModeNotAbort: post and cancel go through without asking.
  bool VeskModePostAuto() const { return veskModePostAuto_; }
  void SetVeskModePostAuto(bool Value) { veskModePostAuto_ = Value; }
  // A scroll out of a record declared for post goes through.
  bool Ze5EnableScrollBeforePost() const { return ze5EnableScrollBeforePost_; }
  void SetZe5EnableScrollBeforePost(bool Value) { ze5EnableScrollBeforePost_ = Value; }
  // Asks the active TGridPropCmp whether an undeclared change to
  // `Requested` may happen; aborts without one, without a handler, or on a
  // refusal.
  void CheckStateChange(TVeskState Requested);
  // The table-in-edit flag: set while a declared edit or insert is open.
  bool TbliSEdit() const { return tblIsEdit_; }
  // Sets the flag when the guard is on; a change takes the moving buttons
  // off VeskNav. Returns the flag.
  bool TblToEdit(bool Value);
  // A navigator that this dataset drives; not owned.
  TOraNavigator* VeskNav() const { return veskNav_; }
  void SetVeskNav(TOraNavigator* Value);
  // Fired when an edit or insert has begun, and when it ends.
  TMyEvent2 TblBegEdit, TblEndEdit;
  // Stored for the application; no code here fires it.
  TLogEvent OnInLog;

  // ---- Position, keys and refresh ----
  bool VeskRememberPos() const { return veskRememberPos_; }
  void SetVeskRememberPos(bool Value) { veskRememberPos_ = Value; }
  // ";"-separated key fields; a "," written here becomes ";".
  const String& VeskKeyFields() const { return veskKeyFields_; }
  void SetVeskKeyFields(const String& Value);
  // Filter and search work by SQL on the server; writes refresh the query.
  bool VeskSQLServer() const { return veskSQLServer_; }
  void SetVeskSQLServer(bool Value) { veskSQLServer_ = Value; }
  // Remembers the current record by its VeskKeyFields values.
  void VeskMemorizeFieldValues();
  // Finds the remembered record again; false when it is gone.
  bool VeskLocate();
  // The values of the named fields (";"-separated) that the dataset has:
  // the scalar for one, else a Variant array in order.
  Variant getVeskFieldsValues(const String& Names) const;
  // VeskKeyFields, or when that is empty the names of all fields joined by
  // ";"; Store keeps the answer in VeskKeyFields.
  String getVeskKeyFields(bool Store);

  // ---- Defaults, the search-miss slot, searching ----
  // Stores the field's default for new records (asking for it with Ask).
  void setDefFV(TField* Field, bool Ask) { SetFieldDefault(defaults_, Field, Ask); }
  // The field's default; Unassigned when it has none.
  Variant getDefFV(const TField* Field) const { return FieldDefault(defaults_, Field); }
  void freeDefFV() { defaults_.clear(); }
  const TVeskDefaultList& DefaultValues() const { return defaults_; }
  // Left by a failed search; the next insert types it in.
  const TVeskSearchMiss& SearchMiss() const { return searchMiss_; }
  void SetSearchMiss(const String& FieldName, const String& Value) { searchMiss_ = {FieldName, Value}; }
  // The search behind SearchCmdFirst, SearchCmdNext and a grid's typed
  // search (filter/vesksearch.h): asks for the value when none is given or
  // on a repeat, which starts behind the current record; with a grid the
  // grid's search dialogue asks first. False when not found or when the
  // prompt is cancelled.
  bool locate(TField* Field, const String& Value, bool Repeat, TComponent* Grid = nullptr);
  const String& LastSearchField() const { return search_.LastField; }
  const String& LastSearchValue() const { return search_.LastValue; }
  // What the grids ask through filter/filterstate.h.
  TListFilts* FindFilterList() const override;
  const TVeskSearchState& SearchState() const override { return search_; }
  String DefaultValuesText() const override;
  void RememberFilter(const String& Text) override;
  // Options of the search's dataset Locate; both at first.
  TLocateOptions LocateOptions() const { return locateOptions_; }
  void SetLocateOptions(TLocateOptions Value) { locateOptions_ = Value; }
  // Application hooks for search and filter over calculated fields.
  TNotifyEvent VeskExtSearch, VeskExtFilter, VeskExtFilterFree;
  // Fired after a write that rebuilt SQL, with what changed (vsc...).
  TVeskSQLChangedEvent VeskSQLChanged;

  // ---- Client filters (data/lookupfilters.h) ----
  // The lookup filters and search fields, keyed by KeyFields and FieldName.
  TVeskFilterLists& FilterLists() override { return filterLists_; }
  bool addLF(TField* Field, const String& Text, int Partial, bool CaseSens) {
    return filterLists_.addLF(Field, Text, Partial, CaseSens);
  }
  bool addSF(TField* Field, const String& Text, int Partial, bool CaseSens) {
    return filterLists_.addSF(Field, Text, Partial, CaseSens);
  }
  bool removeLF(const String& Key) { return filterLists_.removeLF(Key); }
  bool removeSF(const String& Key) { return filterLists_.removeSF(Key); }
  String getLF(const String& Key) const { return filterLists_.getLF(Key); }
  String getSF(const String& Key) const { return filterLists_.getSF(Key); }
  bool isLF(const String& Key) const { return filterLists_.isLF(Key); }
  bool isSF(const String& Key) const { return filterLists_.isSF(Key); }
  int GetIndexLF(const String& Key) const { return filterLists_.GetIndexLF(Key); }
  int GetIndexSF(const String& Key) const { return filterLists_.GetIndexSF(Key); }
  // The lookup-filter flag: SetFiltered installs the record filter.
  void EnabledLookUpFilter(bool Value) { filterLists_.SetLookUpFilter(Value); }
  // The record filter installed by SetFiltered: the lists, then the
  // application's OnVeskFilterRecord has the last word.
  void VeskSetOnFilterRecord(TDataSet* DataSet, bool& Accept);
  void SetFiltered(bool Value) override;
  // Drops the client filters; without Keep also restores the filter text
  // and, with composition, clears the user's condition on the server.
  void freeFilters(bool Keep);
  // The one-click filter on a column: by SQL for a data field under
  // VeskSQLServer, else on the client (lists, Filter text or VeskExtFilter).
  // Multi: Value is a comma list, and a grid asks for field and value when
  // none is given. False when the user cancels.
  bool setFilter(TField* Field, const String& Value, bool Multi, TComponent* Grid);
  // A locate over the fields' values, for lookup and calculated fields.
  bool LocateLKCALC(const String& KeyFields, const Variant& KeyValues, TLocateOptions Options, bool Forward) {
    return ::LocateLKCALC(this, KeyFields, KeyValues, Options, Forward);
  }
  TFilterRecordEvent OnVeskFilterRecord;
  // Filtered datasets append behind their last visible record.
  void Append();
  // The field (and its companion) takes the value of the record before.
  void getDitto(TField* Field, TDataSource* Source = nullptr) { ::getDitto(Field, Source); }
  // Outside edit and insert: a new record behind the current one, or at
  // the end with AppendRecord, takes the current record's values but for
  // the fields named in the ";"-separated KeyNames, and stays in insert.
  // False, with nothing done, in edit or insert.
  bool duplicateRecord(bool AppendRecord, const String& KeyNames);

  // ---- Commands (write-only properties) ----
  void SetSearchCmdFirst(int FieldIndex);
  void SetSearchCmdNext(int FieldIndex);
  void SetDefValCmdSet(int FieldIndex);
  void SetDefValCmdSetCurr(int FieldIndex);
  void SetDefValCmdClear(int) { freeDefFV(); }
  void SetPrevRecCmdCopy(int FieldIndex);

  // ---- Summaries ----
  TStatusBar* XTTStatusBar() const;
  void SetXTTStatusBar(TStatusBar* Value);
  // The same reference as a component, as the property carries it.
  TComponent* XTTStatusBarComponent() const { return statusBar_; }
  void SetXTTStatusBarComponent(TComponent* Value);
  bool XTTShowSummary() const { return showSummary_; }
  // On: computes and shows; off: blanks the bar's panels.
  void SetXTTShowSummary(bool Value);
  XTTTSummaryCollection* XTTSummary() const { return summary_.get(); }
  void SetXTTSummary(XTTTSummaryCollection* Value);
  TNotifyEvent OnXTTChangeSum;
  // In browse state: computes, tells OnXTTChangeSum, shows.
  void XTTCalcSummaries();
  void XTTDisplaySummaries();
  // Set while the summaries walk the records: the scroll hooks stand still.
  void XTTPosition(bool Value) { walking_ = Value; }

  // ---- SQL composition ----
  const String& VeskTableLive() const requires Traits::SqlComposition { return tableLive_; }
  void SetVeskTableLive(const String& Value) requires Traits::SqlComposition;
  const String& VeskAlias() const requires Traits::SqlComposition { return alias_; }
  void SetVeskAlias(const String& Value) requires Traits::SqlComposition { alias_ = Value; }
  // The sort of the composed statement, in spite of its name.
  const String& VeskGroupField() const requires Traits::SqlComposition { return groupField_; }
  void SetVeskGroupField(const String& Value) requires Traits::SqlComposition { setVeskSQLComp(vscGroupField, Value); }
  // The user's condition.
  const String& VeskFilter() const requires Traits::SqlComposition { return filter_; }
  void SetVeskFilter(const String& Value) requires Traits::SqlComposition { setVeskSQLComp(vscFilter, Value); }
  // The application's fixed condition.
  const String& VeskFilterSYS() const requires Traits::SqlComposition { return filterSYS_; }
  void SetVeskFilterSYS(const String& Value) requires Traits::SqlComposition { setVeskSQLComp(vscFilterSYS, Value); }
  // A whole base statement used in place of VeskTableLive; made on first
  // read.
  TStrings* VeskSQL1() requires Traits::SqlComposition;
  void SetVeskSQL1(TStrings* Value) requires Traits::SqlComposition;
  bool VeskSimpleRefresh() const requires Traits::SqlComposition { return simpleRefresh_; }
  void SetVeskSimpleRefresh(bool Value) requires Traits::SqlComposition { simpleRefresh_ = Value; }
  bool VeskEditRefreshNotNeed() const requires Traits::SqlComposition { return editRefreshNotNeed_; }
  void SetVeskEditRefreshNotNeed(bool Value) requires Traits::SqlComposition { editRefreshNotNeed_ = Value; }
  bool VeskParamsNotCPLAfterInsert() const requires Traits::SqlComposition { return paramsNotCPL_; }
  void SetVeskParamsNotCPLAfterInsert(bool Value) requires Traits::SqlComposition { paramsNotCPL_ = Value; }
  // Stores the table and rebuilds SQL from the parts, reopening an open
  // dataset; an open that leaves it closed brings the old text back.
  void setVeskTableLive(const String& Value) requires Traits::SqlComposition;
  // The statement before its WHERE and ORDER BY.
  String getVeskSQL() requires Traits::SqlComposition;
  // Stores the sort (1), the user's (2) or the fixed condition (3) and
  // rebuilds.
  void setVeskSQLComp(int Which, const String& Text) requires Traits::SqlComposition;
  void SobratiVseVESKParams() requires Traits::SqlComposition { setVeskTableLive(tableLive_); }
  // Re-reads the query and comes back to the same record (or only the
  // record, with VeskSimpleRefresh).
  void RefreshQuery() requires Traits::SqlComposition;
  // A new record takes the master's values of the linking parameters.
  void FillDetailFieldsFromMaster(TDataSource* Source) requires Traits::SqlComposition {
    FillDetailFields(this, Source);
  }
  TListFilts* ListFilts() const requires Traits::SqlComposition { return listFilts_.get(); }
  // Whether the filter list is refilled from the fields after an open; the
  // filter code clears it around the reopens it causes.
  bool RefillListFilts() const requires Traits::SqlComposition { return refill_; }
  void SetRefillListFilts(bool Value) requires Traits::SqlComposition { refill_ = Value; }
  void SetFilterCmdShow(const String& FieldName) requires Traits::SqlComposition { DoFilterCmdShow(FieldName); }
  void SetFilterCmdSetExpr(const String& Text) requires Traits::SqlComposition { DoFilterCmdSetExpr(Text); }
  void SetFilterCmdClear(bool Keep) requires Traits::SqlComposition { freeFilters(Keep); }
  void DoFilterCmdShow(const String& FieldName) requires Traits::SqlComposition;
  void DoFilterCmdSetExpr(const String& Text) requires Traits::SqlComposition;

  // ---- Session group ----
  // The global read-only mode does not hold for this dataset.
  bool VeskNotReadOnly() const requires Traits::SessionGroup { return notReadOnly_; }
  void SetVeskNotReadOnly(bool Value) requires Traits::SessionGroup { notReadOnly_ = Value; }
  // Edit, insert and delete start a transaction when none is open.
  bool TransVeskAutoStart() const requires Traits::SessionGroup { return transAutoStart_; }
  void SetTransVeskAutoStart(bool Value) requires Traits::SessionGroup { transAutoStart_ = Value; }
  // Post and delete commit, cancel rolls back.
  bool TransVeskAutoEnd() const requires Traits::SessionGroup { return transAutoEnd_; }
  void SetTransVeskAutoEnd(bool Value) requires Traits::SessionGroup { transAutoEnd_ = Value; }
  // Cancel in an open transaction asks first.
  bool TransVeskAutoEndCheck() const requires Traits::SessionGroup { return transAutoEndCheck_; }
  void SetTransVeskAutoEndCheck(bool Value) requires Traits::SessionGroup { transAutoEndCheck_ = Value; }
  bool TrnsVeskAutonomous() const requires Traits::SessionGroup { return autonomous_; }
  void SetTrnsVeskAutonomous(bool Value) requires Traits::SessionGroup { autonomous_ = Value; }
  int Version() const requires Traits::SessionGroup { return version_; }
  void SetVersion(int Value) requires Traits::SessionGroup { version_ = Value; }
  TVeskODACenableIntegers VeskXsessionEnableIntegers() const requires Traits::SessionGroup { return integers_; }
  void SetVeskXsessionEnableIntegers(TVeskODACenableIntegers Value) requires Traits::SessionGroup {
    integers_ = Value;
  }
  // One row at a time: Locate and Lookup re-query.
  bool VeskXSingleRowQuery() const requires Traits::SessionGroup { return singleRow_; }
  void SetVeskXSingleRowQuery(bool Value) requires Traits::SessionGroup { singleRow_ = Value; }
  // Opening may connect a closed session.
  bool EnableAutoConnect() const requires Traits::SessionGroup { return enableAutoConnect_; }
  void SetEnableAutoConnect(bool Value) requires Traits::SessionGroup { enableAutoConnect_ = Value; }
  // After post, delete and refresh the master's record is re-read.
  bool VeskMasterRefresh() const requires Traits::SessionGroup { return masterRefresh_; }
  void SetVeskMasterRefresh(bool Value) requires Traits::SessionGroup { masterRefresh_ = Value; }
  bool ShowDBMSOutput() const requires Traits::SessionGroup { return showDBMSOutput_; }
  void SetShowDBMSOutput(bool Value) requires Traits::SessionGroup { showDBMSOutput_ = Value; }
  // The updater does not re-read a record.
  bool SkipRefreshRecord() const requires Traits::SessionGroup { return skipRefreshRecord_; }
  void SetSkipRefreshRecord(bool Value) requires Traits::SessionGroup { skipRefreshRecord_ = Value; }
  // A pessimistic lock without a lock statement cannot run autonomously.
  void CheckLockMode() requires Traits::SessionGroup;
  // Puts the single row of the keys into the cursor: FilterSQL
  // "NAME = :p__NAME and ... " bound from the values.
  void PrepareXSingleRowQuery(const String& KeyFields, const Variant& KeyValues) requires Traits::SessionGroup;
  // Lines "key=value" of single-row lookups (at most 1000 are kept).
  const TStringList* LookupCache() const requires Traits::SessionGroup { return &lookupCache_; }

  // ---- Locate and Lookup ----
  // Replace Locate and Lookup altogether when assigned. Inside its own
  // handler, Locate (or Lookup) is the ordinary one, so that a handler may
  // leave the search to the dataset.
  TVESKLocateEvent OnVESKLocateEvent;
  TVESKLookupEvent OnVESKLookupEvent;
  bool Locate(const String& KeyFields, const Variant& KeyValues, TLocateOptions Options) override;
  Variant Lookup(const String& KeyFields, const Variant& KeyValues, const String& ResultFields) override;

  // ---- Server aggregates ----
  // The function (SUM, MIN, MAX, AVG) of a column over the statement's
  // rows, with an extra condition (or the client Filter), as text.
  String sgCFunc(TVeskFunc Func, const String& Field, const String& Where) requires Traits::CFunc;

  // An ORA-01002 reopens the dataset and is reported; an ORA-01722 passes
  // in silence; other errors are reported with the component's name.
  void Resync(TResyncMode Mode) override;

  // Around a record refresh: the summaries take the record out and in.
  virtual void DoBeforeRefreshRecord();
  virtual void DoAfterRefreshRecord();

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;
  bool GetCanModify() const override;
  void OpenCursor(bool InfoQuery) override;
  void DoBeforeOpen() override;
  void DoAfterOpen() override;
  void DoAfterClose() override;
  void DoBeforeScroll() override;
  void DoAfterScroll() override;
  void DoBeforeEdit() override;
  void DoAfterEdit() override;
  void DoBeforeInsert() override;
  void DoAfterInsert() override;
  void DoBeforePost() override;
  void DoAfterPost() override;
  void DoBeforeCancel() override;
  void DoAfterCancel() override;
  void DoBeforeDelete() override;
  void DoAfterDelete() override;
  void DoBeforeRefresh() override;
  void DoAfterRefresh() override;

 private:
  bool Designing() const { return this->ComponentState().Contains(csDesigning); }
  static bool IsDataReadOnly();
  TOraSession* TransactionSession() const;
  void AutoStartTransaction();
  bool RefreshAfterWrite() const;
  int CurrentRecordCount() { return this->Active() ? this->RecordCount() : 0; }
  TField* FieldAt(int Index) const;
  String ComposedSQL() requires Traits::SqlComposition;

  // The guard.
  bool veskMode_ = false;
  TVeskState veskCom_ = dsgInactive;
  bool veskModeNotAbort_ = false;
  bool veskModePostAuto_ = false;
  bool ze5EnableScrollBeforePost_ = false;
  bool tblIsEdit_ = false;
  TOraNavigator* veskNav_ = nullptr;

  // Position, defaults, search.
  bool veskRememberPos_ = false;
  String veskKeyFields_;
  bool veskSQLServer_ = false;
  String memKeyText_;
  Variant memKeyValue_;
  TBookmark memBookmark_;
  bool restoring_ = false;
  TVeskDefaultList defaults_;
  TVeskSearchMiss searchMiss_;
  TVeskSearchState search_;
  TLocateOptions locateOptions_{loCaseInsensitive, loPartialKey};

  // Client filters: the dataset's own filter text, taken before the first
  // filter of the kit changes it.
  String pristineFilter_;
  bool pristineFilterPending_ = true;
  TVeskFilterLists filterLists_;
  bool SetFilterOnClient(TField* Field, String Value, bool Multi, TComponent* Grid);

  // Summaries.
  TComponent* statusBar_ = nullptr;
  bool showSummary_ = false;
  std::unique_ptr<XTTTSummaryCollection> summary_;
  bool walking_ = false;

  // SQL composition.
  String tableLive_, alias_, groupField_, filter_, filterSYS_;
  std::unique_ptr<TStringList> sql1_;
  String composedSQL_;  // the last text the composer wrote
  bool simpleRefresh_ = false;
  bool editRefreshNotNeed_ = false;
  bool paramsNotCPL_ = false;
  bool selfClose_ = false;
  bool refill_ = true;
  std::unique_ptr<TListFilts> listFilts_;
  // Recomposes with VeskFilter = Text without refilling the filter list;
  // with OpenClosed also opens a dataset that a refused open left closed.
  void ComposeKeepingList(const String& Text, bool OpenClosed = false) requires Traits::SqlComposition;
  // Runs Change (false: nothing to apply) and puts the list's FilterText
  // into VeskFilter. A failure runs Restore, puts the old VeskFilter back
  // and travels on.
  template <class Change, class Restore>
  bool ApplyListFilter(Change change, Restore restore) requires Traits::SqlComposition;
  bool SetFilterOnServer(TField* Field, const String& Value, bool Multi, TComponent* Grid)
      requires Traits::SqlComposition;

  // Session group.
  bool notReadOnly_ = false;
  bool transAutoStart_ = false;
  bool transAutoEnd_ = false;
  bool transAutoEndCheck_ = false;
  bool autonomous_ = false;
  int version_ = 0;
  TVeskODACenableIntegers integers_ = odacEIdefault;
  bool singleRow_ = false;
  bool enableAutoConnect_ = false;
  bool masterRefresh_ = false;
  bool showDBMSOutput_ = false;
  bool skipRefreshRecord_ = false;
  bool refusedOpen_ = false;
  TStringList singleRowKeys_;  // the key names of the single row
  Variant singleRowValues_;
  TStringList lookupCache_;

  // Set while OnVESKLocateEvent or OnVESKLookupEvent runs.
  bool inLocateEvent_ = false;
  bool inLookupEvent_ = false;
  // Stored for the documents that carry it; object fields are not split.
};

// Publishes the body's properties of the member's groups; called from each
// member's KELMAR_PUBLISH.
template <class C>
void PublishVeskBody(TPublisher<C>& r);
