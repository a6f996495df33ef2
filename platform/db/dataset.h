// TDataSet: the record-oriented dataset and its state machine.
//
// States dsInactive, dsBrowse, dsEdit and dsInsert. Every operation runs
// its overridable steps in the historical order:
//
//   Open     DoBeforeOpen, OpenCursor, state dsBrowse, DoAfterOpen,
//            DoAfterScroll (when not empty)
//   Close    DoBeforeClose, state dsInactive, CloseCursor, DoAfterClose
//   Edit     DoBeforeEdit, state dsEdit, DataEvent, DoAfterEdit
//   Insert   DoBeforeInsert, DoBeforeScroll, state dsInsert, DoOnNewRecord,
//   Append   DataEvent, DoAfterInsert, DoAfterScroll
//   Post     UpdateRecord, DoBeforePost, InternalPost, state dsBrowse,
//            DoAfterPost
//   Cancel   DoBeforeCancel, InternalCancel, state dsBrowse, DoAfterCancel
//   Delete   DoBeforeDelete, DoBeforeScroll, InternalDelete, state dsBrowse,
//            DoAfterDelete, DoAfterScroll
//   Refresh  DoBeforeRefresh, InternalRefresh, DoAfterRefresh
//   moves    DoBeforeScroll, the move, DoAfterScroll (First, Last, Next,
//            Prior, MoveBy, GotoBookmark, Locate)
//
// An exception (Abort among them) from a DoBefore step leaves the state as
// it was; a failed InternalPost leaves the record in edit with its values.
//
// Records live in a TRecordStore; the dataset shows them through a view,
// a vector of record ids holding the records that pass the filter, in
// order. A descendant supplies the records: FetchRecords appends rows to
// the store on demand, block by block, and the Internal... steps write
// changes wherever the records come from.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/db/fields.h"

class TDataSource;
class TDataLink;
class TFilterExpression;
class TMasterLink;

using TDataSetNotifyEvent = TEvent<void(TDataSet* DataSet)>;
using TFilterRecordEvent = TEvent<void(TDataSet* DataSet, bool& Accept)>;

enum TDataAction { daFail, daAbort, daRetry };
KELMAR_ENUM(TDataAction, u"daFail", u"daAbort", u"daRetry");
using TDataSetErrorEvent = TEvent<void(TDataSet* DataSet, EDatabaseError* E, TDataAction& Action)>;

class TDataSet : public TComponent {
  KELMAR_CLASS(TDataSet, TComponent)
 public:
  explicit TDataSet(TComponent* AOwner);
  ~TDataSet() override;

  // ---- State ----
  bool Active() const { return state_ != dsInactive; }
  void SetActive(bool value);
  TDataSetState State() const { return state_; }
  bool Modified() const { return modified_; }
  bool Eof() const { return eof_; }
  bool Bof() const { return bof_; }
  bool IsEmpty() const;
  // Fetches every record first.
  virtual int RecordCount();
  // 1-based position of the current record in the view; 0 when none.
  int RecNo() const;
  void SetRecNo(int value);
  bool ControlsDisabled() const { return disableCount_ > 0; }
  bool CanModify() const { return Active() && GetCanModify(); }

  // ---- Fields ----
  TFields* Fields() const { return fields_.get(); }
  int FieldCount() const { return fields_->Count(); }
  TFieldDefs* FieldDefs() const { return fieldDefs_.get(); }
  TField* FieldByName(const String& name) const { return fields_->FieldByName(name); }
  TField* FindField(const String& name) const { return fields_->FindField(name); }
  // One field's value, or a Variant array of several (";"-separated).
  Variant GetFieldValue(const String& names) const;
  Variant FieldValues(const String& names) const { return GetFieldValue(names); }
  void SetFieldValues(const String& names, const Variant& value);
  // Every field of the dataset with the given kind, in order.
  void GetFieldList(std::vector<TField*>& list, const String& names) const;

  // ---- Movement ----
  void First();
  void Last();
  void Next() { MoveBy(1); }
  void Prior() { MoveBy(-1); }
  // Moves up to `distance` records and returns how far it went.
  int MoveBy(int distance);

  // ---- Bookmarks ----
  TBookmark GetBookmark() const;
  void GotoBookmark(const TBookmark& bookmark);
  bool BookmarkValid(const TBookmark& bookmark) const;
  void FreeBookmark(TBookmark& bookmark) const { bookmark = TBookmark(); }
  TBookmark Bookmark() const { return GetBookmark(); }
  void SetBookmark(const TBookmark& bookmark) { GotoBookmark(bookmark); }
  // < 0, 0, > 0 by position in the view; unassigned bookmarks come first.
  int CompareBookmarks(const TBookmark& a, const TBookmark& b) const;

  // ---- Change ----
  void Open() { SetActive(true); }
  void Close() { SetActive(false); }
  void Edit();
  void Insert();
  void Append();
  void Post();
  void Cancel();
  void Delete();
  void Refresh();
  // Posts a modified record, cancels an unmodified one.
  void CheckBrowseMode();
  // Asks the links to write their pending edits into the fields.
  void UpdateRecord();
  // Raises "Cannot perform this operation on a closed dataset".
  void CheckActive() const;
  void CheckInactive() const;

  // ---- Search ----
  // KeyFields is ";"-separated; one key takes a scalar, several a Variant
  // array in the same order. Locate moves to the first match.
  virtual bool Locate(const String& KeyFields, const Variant& KeyValues, TLocateOptions Options);
  // The result fields' value (a Variant array for several) of the first
  // match, without moving; Null when none matches.
  virtual Variant Lookup(const String& KeyFields, const Variant& KeyValues, const String& ResultFields);

  // ---- Filter ----
  bool Filtered() const { return filtered_; }
  virtual void SetFiltered(bool value);
  const String& Filter() const { return filterText_; }
  // Raises EDatabaseError with the position for a bad expression.
  void SetFilter(const String& value);
  TFilterOptions FilterOptions() const { return filterOptions_; }
  void SetFilterOptions(TFilterOptions value);

  // ---- Controls and links ----
  void DisableControls();
  void EnableControls();
  // The master of a detail dataset.
  TDataSource* DataSource() const { return masterSource_; }
  virtual void SetDataSource(TDataSource* value);
  // The data sources attached to this dataset, in attaching order.
  const std::vector<TDataSource*>& DataSources() const { return dataSources_; }
  // Tells the links; a field change marks the record modified.
  void DataEvent(TDataEvent event, TField* field = nullptr);
  // Re-reads the view around the current record and tells the links.
  virtual void Resync(TResyncMode mode);

  // ---- Record access for links, filters and fields ----
  // The record the fields read: the current one, or another while a link,
  // a filter or a calculation looks at it. False when there is none.
  // Inline: every field read of a scan goes through here.
  bool ActiveRow(TRecordStore::RowId& row) const {
    if (readRow_ >= 0) {
      row = static_cast<TRecordStore::RowId>(readRow_);
      return true;
    }
    const auto& v = View();
    const int p = readPos_ >= 0 ? readPos_ : pos_;
    if (p < 0 || p >= static_cast<int>(v.size())) return false;
    row = v[static_cast<size_t>(p)];
    return true;
  }
  TRecordStore& Store() { return store_; }
  const TRecordStore& Store() const { return store_; }
  // Calculated values of the active record.
  TRecordStore::TCell& CalcCell(const TField* field) const;
  // Old value of a data field while the current record is edited.
  const TRecordStore::TCell* OldCell(const TField* field) const;
  // Checks the mode and the field, writes one cell of the active record,
  // runs OnValidate and OnChange and tells the links.
  void SetFieldData(TField* field, const TRecordStore::TCell& cell);
  // Positions of the view, for data links: the number of records held and
  // reading another record than the current one.
  int ViewCount() const { return static_cast<int>(View().size()); }
  int ViewPosition() const { return pos_; }
  // Fetches until the view holds `count` records or the source is done.
  void FetchUntil(int count);
  // Makes the fields read the record at a view position; -1 goes back to
  // the current record.
  void SetReadPosition(int position);

  // ---- Events ----
  TDataSetNotifyEvent BeforeOpen, AfterOpen, BeforeClose, AfterClose;
  TDataSetNotifyEvent BeforeInsert, AfterInsert, BeforeEdit, AfterEdit;
  TDataSetNotifyEvent BeforePost, AfterPost, BeforeCancel, AfterCancel;
  TDataSetNotifyEvent BeforeDelete, AfterDelete, BeforeScroll, AfterScroll;
  TDataSetNotifyEvent BeforeRefresh, AfterRefresh;
  TDataSetNotifyEvent OnNewRecord, OnCalcFields;
  TFilterRecordEvent OnFilterRecord;
  TDataSetErrorEvent OnPostError, OnEditError, OnDeleteError;

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

  // ---- The overridable steps ----
  virtual void OpenCursor(bool InfoQuery);
  virtual void CloseCursor();
  virtual void DoBeforeOpen() { BeforeOpen(this); }
  virtual void DoAfterOpen() { AfterOpen(this); }
  virtual void DoBeforeClose() { BeforeClose(this); }
  virtual void DoAfterClose() { AfterClose(this); }
  virtual void DoBeforeScroll() { BeforeScroll(this); }
  virtual void DoAfterScroll() { AfterScroll(this); }
  virtual void DoBeforeEdit() { BeforeEdit(this); }
  virtual void DoAfterEdit() { AfterEdit(this); }
  virtual void DoBeforeInsert() { BeforeInsert(this); }
  virtual void DoAfterInsert() { AfterInsert(this); }
  virtual void DoBeforePost() { BeforePost(this); }
  virtual void DoAfterPost() { AfterPost(this); }
  virtual void DoBeforeCancel() { BeforeCancel(this); }
  virtual void DoAfterCancel() { AfterCancel(this); }
  virtual void DoBeforeDelete() { BeforeDelete(this); }
  virtual void DoAfterDelete() { AfterDelete(this); }
  virtual void DoBeforeRefresh() { BeforeRefresh(this); }
  virtual void DoAfterRefresh() { AfterRefresh(this); }
  virtual void DoOnNewRecord() { OnNewRecord(this); }
  virtual void DoOnCalcFields() { OnCalcFields(this); }

  // ---- What a descendant supplies ----
  // Readies the source and fills FieldDefs (InfoQuery: definitions only).
  virtual void InternalOpen(bool InfoQuery) {}
  virtual void InternalClose() {}
  // Appends up to `count` rows to the store with AddFetchedRow; returns
  // how many it added. 0 means the source is exhausted.
  virtual int FetchRecords(int count) { return 0; }
  // Block size of on-demand fetching.
  virtual int FetchBlockSize() const { return 25; }
  // Records held are only the current block (unidirectional cursors).
  virtual bool KeepsOnlyCurrentBlock() const { return false; }
  // Before the old values are kept: a chance to lock or re-read.
  virtual void InternalEdit() {}
  // Write the current record to where records come from; raise to refuse.
  virtual void InternalPost(bool inserting) {}
  virtual void InternalDelete() {}
  // Re-reads the records; the default applies the filter anew to those
  // held (SQL datasets run their statement again).
  virtual void InternalRefresh();
  virtual bool GetCanModify() const { return true; }
  // The master opened, moved or changed (detail datasets re-query).
  virtual void MasterChanged() {}

  // Helpers for descendants.
  void SetState(TDataSetState value);
  // Called by FetchRecords after filling a new row: puts it in the view
  // when it passes the filter.
  void AddFetchedRow(TRecordStore::RowId row);
  // Drops every record and the view (Clear of memory datasets).
  void ClearRecords();
  // Records stay in the store across Close and Open (memory datasets).
  virtual bool RetainsRecords() const { return false; }
  // Creates fields from FieldDefs when there are no persistent ones and
  // binds every data field to its store column.
  void CreateAndBindFields();
  void DestroyDefaultFields();
  bool DefaultFields() const { return defaultFields_; }
  // Re-applies the filter to every record held.
  void RebuildView();
  // Id of the current record; false when there is none.
  bool CurrentRow(TRecordStore::RowId& row) const;
  // The old values of the record being edited (:OLD_ parameters).
  const TRecordStore::TRowImage& OldValues() const { return oldValues_; }
  // Forget everything fetched and fetch the first block again (Refresh of
  // SQL datasets, re-executing the statement first).
  void ResetRecords();
  // Finds the first view position from `from` on whose key fields match;
  // -1 when none.
  int LocateRecord(const String& KeyFields, const Variant& KeyValues, TLocateOptions Options, int from = 0);

 private:
  friend class TDataSource;
  friend class TDataLink;
  friend class TField;
  friend class TMasterLink;

  struct ReadOverride;
  std::vector<TRecordStore::RowId>& View() { return useView_ ? view_ : order_; }
  const std::vector<TRecordStore::RowId>& View() const { return useView_ ? view_ : order_; }
  bool FetchMore();
  bool NextBlock();
  void FetchAll();
  void RemoveCurrentFromView();
  bool Accepts(TRecordStore::RowId row);
  void CalculateFields(TRecordStore::RowId row) const;
  void InvalidateCalc() const { calcRow_ = -1; }
  void AddDataSource(TDataSource* source);
  void RemoveDataSource(TDataSource* source);
  void NotifyLinks(TDataEvent event, TField* field);
  void BeginInsertAppend(bool append);
  void CheckOperation(const std::function<void()>& operation, const TDataSetErrorEvent& handler);
  void ClampPosition();
  void SetFieldsFromDefs();
  void CheckCanModify() const;
  void CheckUniDirectional(int target) const;

  TDataSetState state_ = dsInactive;
  bool cursorOpen_ = false;
  bool modified_ = false;
  bool eof_ = true;
  bool bof_ = true;
  int disableCount_ = 0;
  bool changedWhileDisabled_ = false;
  TDataSetState stateWhenDisabled_ = dsInactive;

  std::unique_ptr<TFields> fields_;
  std::unique_ptr<TFieldDefs> fieldDefs_;
  bool defaultFields_ = false;

  TRecordStore store_;
  std::vector<TRecordStore::RowId> order_;  // every live record, in order
  std::vector<TRecordStore::RowId> view_;   // those passing the filter
  bool useView_ = false;                    // a filter is in force
  int pos_ = -1;             // current view position; -1 when empty
  int readPos_ = -1;         // a link's reading position; -1: the current one
  int64_t readRow_ = -1;     // a filter's or calculation's row; -1: none
  bool fetchedAll_ = true;
  int droppedBefore_ = 0;    // records of earlier blocks (unidirectional)
  TRecordStore::TRowImage oldValues_;
  bool editing_ = false;     // oldValues_ holds the record's old values

  mutable std::vector<TRecordStore::TCell> calcBuffer_;
  mutable int64_t calcRow_ = -1;
  mutable bool calculating_ = false;

  bool filtered_ = false;
  String filterText_;
  TFilterOptions filterOptions_;
  std::unique_ptr<TFilterExpression> filterExpr_;

  std::vector<TDataSource*> dataSources_;
  TDataSource* masterSource_ = nullptr;
  std::unique_ptr<TMasterLink> masterLink_;
};
