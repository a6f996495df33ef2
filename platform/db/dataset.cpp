#include "platform/db/dataset.h"

#include <algorithm>

#include "platform/db/datasource.h"
#include "platform/db/filterexpr.h"

using RowId = TRecordStore::RowId;
using TCell = TRecordStore::TCell;

void DatabaseError(const String& message, const TComponent* component) {
  if (component && !component->Name().IsEmpty()) throw EDatabaseError(component->Name() + u": " + message);
  throw EDatabaseError(message);
}

// The master side of a detail dataset: tells the detail when the master's
// record changes.
class TMasterLink : public TDataLink {
 public:
  explicit TMasterLink(TDataSet* detail) : detail_(detail) {}

 protected:
  void ActiveChanged() override {
    if (Active()) detail_->MasterChanged();
  }
  void RecordChanged(TField* Field) override {
    if (!Field && Active()) detail_->MasterChanged();
  }
  void CheckBrowseMode() override {}

 private:
  TDataSet* detail_;
};

// Makes the fields read another record for a while; puts everything back
// however the block is left.
struct TDataSet::ReadOverride {
  ReadOverride(const TDataSet* ds, int64_t row, TDataSetState state)
      : ds_(const_cast<TDataSet*>(ds)), row_(ds->readRow_), state_(ds->state_) {
    ds_->readRow_ = row;
    ds_->state_ = state;
  }
  ~ReadOverride() {
    ds_->readRow_ = row_;
    ds_->state_ = state_;
  }
  TDataSet* ds_;
  int64_t row_;
  TDataSetState state_;
};

KELMAR_PUBLISH(TDataSet) {
  r.Prop(u"Active", &TDataSet::Active, &TDataSet::SetActive).Default = 0;
  r.Prop(u"State", &TDataSet::State, nullptr);
  r.Prop(u"Filtered", &TDataSet::Filtered, &TDataSet::SetFiltered).Default = 0;
  r.Prop(u"Filter", &TDataSet::Filter, &TDataSet::SetFilter);
  r.Prop(u"FilterOptions", &TDataSet::FilterOptions, &TDataSet::SetFilterOptions);
  r.Prop(u"DataSource", &TDataSet::DataSource, &TDataSet::SetDataSource);
  r.Prop(u"BeforeOpen", &TDataSet::BeforeOpen);
  r.Prop(u"AfterOpen", &TDataSet::AfterOpen);
  r.Prop(u"BeforeClose", &TDataSet::BeforeClose);
  r.Prop(u"AfterClose", &TDataSet::AfterClose);
  r.Prop(u"BeforeInsert", &TDataSet::BeforeInsert);
  r.Prop(u"AfterInsert", &TDataSet::AfterInsert);
  r.Prop(u"BeforeEdit", &TDataSet::BeforeEdit);
  r.Prop(u"AfterEdit", &TDataSet::AfterEdit);
  r.Prop(u"BeforePost", &TDataSet::BeforePost);
  r.Prop(u"AfterPost", &TDataSet::AfterPost);
  r.Prop(u"BeforeCancel", &TDataSet::BeforeCancel);
  r.Prop(u"AfterCancel", &TDataSet::AfterCancel);
  r.Prop(u"BeforeDelete", &TDataSet::BeforeDelete);
  r.Prop(u"AfterDelete", &TDataSet::AfterDelete);
  r.Prop(u"BeforeScroll", &TDataSet::BeforeScroll);
  r.Prop(u"AfterScroll", &TDataSet::AfterScroll);
  r.Prop(u"BeforeRefresh", &TDataSet::BeforeRefresh);
  r.Prop(u"AfterRefresh", &TDataSet::AfterRefresh);
  r.Prop(u"OnNewRecord", &TDataSet::OnNewRecord);
  r.Prop(u"OnCalcFields", &TDataSet::OnCalcFields);
  r.Prop(u"OnFilterRecord", &TDataSet::OnFilterRecord);
  r.Prop(u"OnPostError", &TDataSet::OnPostError);
  r.Prop(u"OnEditError", &TDataSet::OnEditError);
  r.Prop(u"OnDeleteError", &TDataSet::OnDeleteError);
}

TDataSet::TDataSet(TComponent* AOwner)
    : TComponent(AOwner), fields_(std::make_unique<TFields>(this)), fieldDefs_(std::make_unique<TFieldDefs>()),
      masterLink_(std::make_unique<TMasterLink>(this)) {}

TDataSet::~TDataSet() {
  state_ = dsInactive;
  masterLink_.reset();
  for (TDataSource* source : std::vector<TDataSource*>(dataSources_)) source->SetDataSet(nullptr);
  DestroyDefaultFields();
  for (TField* f : *fields_) f->dataSet_ = nullptr;
  fields_->Clear();
}

// ---- State -------------------------------------------------------------------

void TDataSet::SetState(TDataSetState value) {
  if (state_ == value) return;
  state_ = value;
  modified_ = false;
  DataEvent(deUpdateState);
}

void TDataSet::CheckActive() const {
  if (!Active()) DatabaseError(u"Cannot perform this operation on a closed dataset", this);
}

void TDataSet::CheckInactive() const {
  if (Active()) DatabaseError(u"Cannot perform this operation on an open dataset", this);
}

void TDataSet::CheckCanModify() const {
  if (!GetCanModify()) DatabaseError(u"Cannot modify a read-only dataset", this);
}

bool TDataSet::IsEmpty() const { return View().empty(); }

int TDataSet::RecordCount() {
  CheckActive();
  if (!KeepsOnlyCurrentBlock()) FetchAll();
  return droppedBefore_ + static_cast<int>(View().size());
}

int TDataSet::RecNo() const { return pos_ < 0 ? 0 : droppedBefore_ + pos_ + 1; }

void TDataSet::SetRecNo(int value) {
  CheckBrowseMode();
  MoveBy(value - RecNo());
}

// ---- Open and close ------------------------------------------------------------

void TDataSet::SetActive(bool value) {
  if (value == Active()) return;
  if (value) {
    DoBeforeOpen();
    state_ = dsOpening;
    try {
      OpenCursor(false);
    } catch (...) {
      state_ = dsInactive;
      try {
        CloseCursor();
      } catch (...) {
      }
      throw;
    }
    state_ = dsInactive;
    SetState(dsBrowse);
    DoAfterOpen();
    if (!IsEmpty()) DoAfterScroll();
  } else {
    DoBeforeClose();
    SetState(dsInactive);
    CloseCursor();
    DoAfterClose();
  }
}

void TDataSet::OpenCursor(bool InfoQuery) {
  InternalOpen(InfoQuery);
  if (InfoQuery) return;
  CreateAndBindFields();
  // A filter not in force does not stop the opening; it is read when switched on.
  if (filtered_ && !Trim(filterText_).IsEmpty())
    filterExpr_ = std::make_unique<TFilterExpression>(filterText_, this, filterOptions_);
  cursorOpen_ = true;
  fetchedAll_ = false;
  droppedBefore_ = 0;
  order_.clear();
  for (size_t row = 0; row < store_.RowCount(); ++row)
    if (!store_.IsDeleted(static_cast<RowId>(row))) order_.push_back(static_cast<RowId>(row));
  RebuildView();
  FetchUntil(1);
  pos_ = IsEmpty() ? -1 : 0;
  bof_ = true;
  eof_ = IsEmpty();
}

void TDataSet::CloseCursor() {
  if (state_ == dsInsert || editing_) {
    // Closing drops an unposted change, as it always has.
    RowId row;
    if (CurrentRow(row)) {
      if (state_ == dsInsert) store_.MarkDeleted(row);
      else store_.Restore(row, oldValues_);
    }
  }
  editing_ = false;
  oldValues_.clear();
  InternalClose();
  cursorOpen_ = false;
  order_.clear();
  view_.clear();
  pos_ = readPos_ = -1;
  readRow_ = calcRow_ = -1;
  eof_ = bof_ = true;
  filterExpr_.reset();
  useView_ = false;
  DestroyDefaultFields();
}

void TDataSet::CreateAndBindFields() {
  if (fields_->Count() == 0) SetFieldsFromDefs();
  std::vector<TColumnKind> kinds(static_cast<size_t>(fieldDefs_->Count()));
  for (int i = 0; i < fieldDefs_->Count(); ++i) kinds[static_cast<size_t>(i)] = ColumnKindOf(fieldDefs_->Items(i)->DataType());
  int slot = 0;
  for (TField* f : *fields_) {
    if (f->FieldKind() != fkData) {
      f->Bind(0, -1, slot++);
      continue;
    }
    int i = fieldDefs_->IndexOf(f->FieldName());
    if (i < 0) DatabaseError(u"Field '" + f->FieldName() + u"' not found", this);
    // The column keeps what the field reads, whatever the engine declared.
    kinds[static_cast<size_t>(i)] = f->ColumnKind();
    f->Bind(i + 1, i, -1);
  }
  bool same = RetainsRecords() && store_.ColumnCount() == static_cast<int>(kinds.size());
  for (int i = 0; same && i < store_.ColumnCount(); ++i) same = store_.Kind(i) == kinds[static_cast<size_t>(i)];
  if (!same) store_.Reset(kinds);
  calcBuffer_.assign(static_cast<size_t>(slot), TCell());
  calcRow_ = -1;
}

void TDataSet::SetFieldsFromDefs() {
  for (int i = 0; i < fieldDefs_->Count(); ++i) {
    TFieldDef* def = fieldDefs_->Items(i);
    TField* f = CreateFieldOfType(def->DataType(), nullptr);
    f->SetFieldName(def->Name());
    if (def->Size() > 0) f->SetSize(def->Size());
    f->SetRequired(def->Required());
    f->SetOrigin(def->Origin());
    if (auto* fl = dynamic_cast<TFloatField*>(f); fl && def->Precision() > 0) fl->SetPrecision(def->Precision());
    f->dataSet_ = this;
    fields_->Add(f);
  }
  defaultFields_ = true;
}

void TDataSet::DestroyDefaultFields() {
  if (!defaultFields_) return;
  defaultFields_ = false;
  std::vector<TField*> list(fields_->begin(), fields_->end());
  fields_->Clear();
  for (TField* f : list) {
    f->dataSet_ = nullptr;
    delete f;
  }
}

// ---- Fetching and the view -------------------------------------------------------

bool TDataSet::FetchMore() {
  if (fetchedAll_ || !cursorOpen_) return false;
  if (FetchRecords(FetchBlockSize()) == 0) {
    fetchedAll_ = true;
    return false;
  }
  return true;
}

void TDataSet::FetchUntil(int count) {
  if (KeepsOnlyCurrentBlock() && !View().empty()) return;
  while (static_cast<int>(View().size()) < count && FetchMore()) {
  }
}

void TDataSet::FetchAll() {
  while (FetchMore()) {
  }
}

// Unidirectional cursors hold one block: moving past it drops it. When
// no block follows, the current record stays.
bool TDataSet::NextBlock() {
  if (fetchedAll_) return false;
  int held = static_cast<int>(View().size());
  RowId current;
  bool had = CurrentRow(current);
  TRecordStore::TRowImage image;
  if (had) image = store_.Save(current);
  store_.Clear();
  order_.clear();
  view_.clear();
  while (View().empty() && FetchMore()) {
  }
  if (!View().empty()) {
    droppedBefore_ += held;
    return true;
  }
  if (had) {
    RowId row = store_.AddRow();
    store_.Restore(row, image);
    order_.push_back(row);
    if (useView_) view_.push_back(row);
    droppedBefore_ += held - 1;
  }
  pos_ = View().empty() ? -1 : 0;
  return false;
}

void TDataSet::AddFetchedRow(RowId row) {
  order_.push_back(row);
  if (useView_ && Accepts(row)) view_.push_back(row);
}

void TDataSet::ClearRecords() {
  store_.Clear();
  order_.clear();
  view_.clear();
  pos_ = -1;
  readPos_ = -1;
  calcRow_ = -1;
  eof_ = bof_ = true;
  editing_ = false;
  oldValues_.clear();
}

void TDataSet::ResetRecords() {
  ClearRecords();
  fetchedAll_ = !cursorOpen_;
  droppedBefore_ = 0;
  FetchUntil(1);
  pos_ = IsEmpty() ? -1 : 0;
  bof_ = true;
  eof_ = IsEmpty();
}

bool TDataSet::Accepts(RowId row) {
  if (!filterExpr_ && !OnFilterRecord) return true;
  ReadOverride over(this, row, dsFilter);
  bool accept = true;
  if (filterExpr_) accept = filterExpr_->Evaluate();
  if (accept && OnFilterRecord) OnFilterRecord(this, accept);
  return accept;
}

void TDataSet::RebuildView() {
  RowId current = 0;
  bool had = CurrentRow(current);
  useView_ = filtered_ && (filterExpr_ || OnFilterRecord);
  view_.clear();
  if (useView_)
    for (RowId row : order_)
      if (Accepts(row)) view_.push_back(row);
  if (!cursorOpen_) return;
  FetchUntil(1);
  pos_ = -1;
  if (had) {
    auto& v = View();
    auto it = std::find(v.begin(), v.end(), current);
    if (it != v.end()) pos_ = static_cast<int>(it - v.begin());
  }
  if (pos_ < 0 && !IsEmpty()) pos_ = 0;
  bof_ = pos_ <= 0;
  eof_ = IsEmpty();
}

bool TDataSet::CurrentRow(RowId& row) const {
  const auto& v = View();
  if (pos_ < 0 || pos_ >= static_cast<int>(v.size())) return false;
  row = v[static_cast<size_t>(pos_)];
  return true;
}

void TDataSet::SetReadPosition(int position) { readPos_ = position; }

void TDataSet::ClampPosition() {
  int n = static_cast<int>(View().size());
  if (pos_ >= n) FetchUntil(pos_ + 1);
  n = static_cast<int>(View().size());
  if (pos_ >= n) pos_ = n - 1;
  if (pos_ < 0 && n > 0) pos_ = 0;
  readPos_ = -1;
}

void TDataSet::RemoveCurrentFromView() {
  RowId row;
  if (!CurrentRow(row)) return;
  store_.MarkDeleted(row);
  auto drop = [row](std::vector<RowId>& v) {
    auto it = std::find(v.begin(), v.end(), row);
    if (it != v.end()) v.erase(it);
  };
  drop(order_);
  if (useView_) drop(view_);
  ClampPosition();
}

// ---- Calculated fields -----------------------------------------------------------

void TDataSet::CalculateFields(RowId row) const {
  if (calcBuffer_.empty()) return;
  auto* self = const_cast<TDataSet*>(this);
  ReadOverride over(this, row, dsCalcFields);
  calculating_ = true;
  try {
    for (TCell& c : calcBuffer_) c = TCell();
    for (TField* f : *fields_) {
      if (f->FieldKind() != fkLookup || !f->LookupDataSet() || !f->LookupDataSet()->Active()) continue;
      Variant key = GetFieldValue(f->KeyFields());
      if (key.IsNull()) continue;
      f->SetAsVariant(f->LookupDataSet()->Lookup(f->LookupKeyFields(), key, f->LookupResultField()));
    }
    self->DoOnCalcFields();
  } catch (...) {
    // The buffer is half-filled: no record may take it for its values.
    calculating_ = false;
    calcRow_ = -1;
    throw;
  }
  calculating_ = false;
  calcRow_ = row;
}

TCell& TDataSet::CalcCell(const TField* field) const {
  static thread_local TCell none;
  size_t slot = static_cast<size_t>(field->CalcSlot());
  if (slot >= calcBuffer_.size()) {
    none = TCell();
    return none;
  }
  RowId row;
  if (!ActiveRow(row)) {
    none = TCell();
    return none;
  }
  if (!calculating_ && calcRow_ != static_cast<int64_t>(row)) CalculateFields(row);
  return calcBuffer_[slot];
}

const TCell* TDataSet::OldCell(const TField* field) const {
  if (!editing_ || field->Column() < 0 || static_cast<size_t>(field->Column()) >= oldValues_.size()) return nullptr;
  RowId row, current;
  if (!ActiveRow(row) || !CurrentRow(current) || row != current) return nullptr;
  return &oldValues_[static_cast<size_t>(field->Column())];
}

void TDataSet::SetFieldData(TField* field, const TCell& cell) {
  if (field->Column() < 0 && (state_ == dsCalcFields || state_ == dsInternalCalc)) {
    if (static_cast<size_t>(field->CalcSlot()) < calcBuffer_.size())
      calcBuffer_[static_cast<size_t>(field->CalcSlot())] = cell;
    return;
  }
  if (state_ != dsEdit && state_ != dsInsert) DatabaseError(u"Dataset not in edit or insert mode", this);
  if (field->ReadOnly()) DatabaseError(u"Field '" + field->DisplayName() + u"' cannot be modified", this);
  RowId row;
  if (!CurrentRow(row)) DatabaseError(u"No current record", this);
  if (field->Column() < 0) {
    if (field->FieldKind() == fkLookup) {
      // A lookup field is set through its key: find the key of the text.
      TDataSet* lookup = field->LookupDataSet();
      if (!lookup || !lookup->Active()) DatabaseError(u"Field '" + field->DisplayName() + u"' cannot be modified", this);
      Variant key = Null();
      if (!cell.Null) {
        Variant value;
        switch (field->ColumnKind()) {
          case ckInteger: value = Variant(cell.Int); break;
          case ckFloat: value = Variant(cell.Float); break;
          default: value = Variant(String::FromUtf8(cell.Bytes)); break;
        }
        key = lookup->Lookup(field->LookupResultField(), value, field->LookupKeyFields());
      }
      SetFieldValues(field->KeyFields(), key);
      return;
    }
    calcBuffer_[static_cast<size_t>(field->CalcSlot())] = cell;
    DataEvent(deFieldChange, field);
    return;
  }
  int col = field->Column();
  TCell old;
  old.Null = store_.IsNull(row, col);
  if (!old.Null) {
    switch (store_.Kind(col)) {
      case ckInteger: old.Int = store_.Integer(row, col); break;
      case ckFloat: old.Float = store_.Float(row, col); break;
      default: old.Bytes = std::string(store_.Bytes(row, col)); break;
    }
  }
  auto put = [&](const TCell& c) {
    if (c.Null) return store_.SetNull(row, col);
    switch (store_.Kind(col)) {
      case ckInteger: return store_.SetInteger(row, col, c.Int);
      case ckFloat: return store_.SetFloat(row, col, c.Float);
      default: return store_.SetBytes(row, col, c.Bytes);
    }
  };
  put(cell);
  InvalidateCalc();
  try {
    field->Validate();
  } catch (...) {
    put(old);
    throw;
  }
  DataEvent(deFieldChange, field);
}

// ---- Movement ----------------------------------------------------------------

void TDataSet::CheckUniDirectional(int target) const {
  if (KeepsOnlyCurrentBlock() && target < 0 && droppedBefore_ > 0)
    DatabaseError(u"Operation not allowed on a unidirectional dataset", this);
}

void TDataSet::First() {
  CheckActive();
  CheckBrowseMode();
  CheckUniDirectional(-1);
  DoBeforeScroll();
  pos_ = IsEmpty() ? -1 : 0;
  readPos_ = -1;
  bof_ = true;
  eof_ = IsEmpty();
  DataEvent(deDataSetChange);
  DoAfterScroll();
}

void TDataSet::Last() {
  CheckActive();
  CheckBrowseMode();
  DoBeforeScroll();
  if (KeepsOnlyCurrentBlock()) {
    do {
      pos_ = static_cast<int>(View().size()) - 1;
    } while (NextBlock());
  } else {
    FetchAll();
  }
  pos_ = static_cast<int>(View().size()) - 1;
  readPos_ = -1;
  eof_ = true;
  bof_ = IsEmpty();
  DataEvent(deDataSetChange);
  DoAfterScroll();
}

int TDataSet::MoveBy(int distance) {
  CheckActive();
  CheckBrowseMode();
  int moved = 0;
  DoBeforeScroll();
  if ((distance > 0 && !eof_) || (distance < 0 && !bof_)) {
    bof_ = eof_ = false;
    readPos_ = -1;
    while (distance > 0) {
      if (pos_ + 1 >= static_cast<int>(View().size())) {
        bool more = KeepsOnlyCurrentBlock() ? NextBlock() : FetchMore() || pos_ + 1 < static_cast<int>(View().size());
        if (KeepsOnlyCurrentBlock() && more) {
          pos_ = 0;
          --distance;
          ++moved;
          continue;
        }
        if (!more) {
          eof_ = true;
          break;
        }
        continue;
      }
      ++pos_;
      --distance;
      ++moved;
    }
    while (distance < 0) {
      if (pos_ <= 0) {
        CheckUniDirectional(-1);
        bof_ = true;
        break;
      }
      --pos_;
      ++distance;
      --moved;
    }
    DataEvent(deDataSetScroll);
    DoAfterScroll();
  }
  return moved;
}

// ---- Bookmarks -----------------------------------------------------------------

TBookmark TDataSet::GetBookmark() const {
  RowId row;
  if (!Active() || !CurrentRow(row)) return TBookmark();
  return TBookmark{row};
}

bool TDataSet::BookmarkValid(const TBookmark& bookmark) const {
  if (!Active() || !bookmark.Assigned()) return false;
  const auto& v = View();
  return std::find(v.begin(), v.end(), static_cast<RowId>(bookmark.Id)) != v.end();
}

void TDataSet::GotoBookmark(const TBookmark& bookmark) {
  CheckActive();
  CheckBrowseMode();
  const auto& v = View();
  auto it = bookmark.Assigned() ? std::find(v.begin(), v.end(), static_cast<RowId>(bookmark.Id)) : v.end();
  if (it == v.end()) DatabaseError(u"Record not found", this);
  DoBeforeScroll();
  pos_ = static_cast<int>(it - v.begin());
  readPos_ = -1;
  bof_ = eof_ = false;
  DataEvent(deDataSetChange);
  DoAfterScroll();
}

int TDataSet::CompareBookmarks(const TBookmark& a, const TBookmark& b) const {
  if (!a.Assigned() || !b.Assigned()) return (a.Assigned() ? 1 : 0) - (b.Assigned() ? 1 : 0);
  if (a == b) return 0;
  const auto& v = View();
  auto ia = std::find(v.begin(), v.end(), static_cast<RowId>(a.Id));
  auto ib = std::find(v.begin(), v.end(), static_cast<RowId>(b.Id));
  return ia < ib ? -1 : ia > ib ? 1 : 0;
}

// ---- Changes -------------------------------------------------------------------

void TDataSet::CheckOperation(const std::function<void()>& operation, const TDataSetErrorEvent& handler) {
  for (;;) {
    try {
      operation();
      return;
    } catch (EDatabaseError& e) {
      if (!handler) throw;
      TDataAction action = daFail;
      handler(this, &e, action);
      if (action == daFail) throw;
      if (action == daAbort) Abort();
    }
  }
}

void TDataSet::Edit() {
  if (state_ == dsEdit || state_ == dsInsert) return;
  CheckActive();
  if (IsEmpty()) return Insert();
  CheckCanModify();
  DoBeforeEdit();
  RowId row;
  CheckOperation(
      [&] {
        if (!CurrentRow(row)) DatabaseError(u"No current record", this);
        InternalEdit();
        oldValues_ = store_.Save(row);
      },
      OnEditError);
  editing_ = true;
  SetState(dsEdit);
  DataEvent(deRecordChange);
  DoAfterEdit();
}

void TDataSet::BeginInsertAppend(bool append) {
  CheckActive();
  CheckBrowseMode();
  CheckCanModify();
  DoBeforeInsert();
  DoBeforeScroll();
  if (append) FetchAll();
  RowId row = store_.AddRow();
  auto& v = View();
  int at = append || pos_ < 0 ? static_cast<int>(v.size()) : pos_;
  if (useView_) {
    // The new record goes before the current one in the unfiltered order too.
    RowId current;
    auto it = !append && CurrentRow(current) ? std::find(order_.begin(), order_.end(), current) : order_.end();
    order_.insert(it, row);
  }
  v.insert(v.begin() + at, row);
  pos_ = at;
  readPos_ = -1;
  oldValues_ = store_.Save(row);
  editing_ = false;
  calcRow_ = -1;
  bof_ = eof_ = false;
  if (append) eof_ = true;
  SetState(dsInsert);
  try {
    DoOnNewRecord();
  } catch (...) {
    RemoveCurrentFromView();
    SetState(dsBrowse);
    Resync(TResyncMode());
    throw;
  }
  modified_ = false;
  DataEvent(deDataSetChange);
  DoAfterInsert();
  DoAfterScroll();
}

void TDataSet::Insert() { BeginInsertAppend(false); }
void TDataSet::Append() { BeginInsertAppend(true); }

void TDataSet::UpdateRecord() {
  if (state_ != dsEdit && state_ != dsInsert && state_ != dsSetKey) return;
  DataEvent(deUpdateRecord);
}

void TDataSet::Post() {
  CheckActive();
  UpdateRecord();
  if (state_ != dsEdit && state_ != dsInsert) return;
  DataEvent(deCheckBrowseMode);
  DoBeforePost();
  bool inserting = state_ == dsInsert;
  CheckOperation(
      [&] {
        for (TField* f : *fields_) f->CheckRequired();
        InternalPost(inserting);
      },
      OnPostError);
  editing_ = false;
  oldValues_.clear();
  calcRow_ = -1;
  SetState(dsBrowse);
  Resync(TResyncMode());
  DoAfterPost();
}

void TDataSet::Cancel() {
  if (state_ != dsEdit && state_ != dsInsert) return;
  DataEvent(deCheckBrowseMode);
  DoBeforeCancel();
  bool inserting = state_ == dsInsert;
  if (inserting) {
    RemoveCurrentFromView();
  } else {
    RowId row;
    if (CurrentRow(row)) store_.Restore(row, oldValues_);
  }
  editing_ = false;
  oldValues_.clear();
  calcRow_ = -1;
  SetState(dsBrowse);
  Resync(TResyncMode());
  DoAfterCancel();
}

void TDataSet::Delete() {
  CheckActive();
  if (state_ == dsInsert) return Cancel();
  if (IsEmpty()) DatabaseError(u"Cannot perform this operation on an empty dataset", this);
  CheckCanModify();
  DataEvent(deCheckBrowseMode);
  DoBeforeDelete();
  DoBeforeScroll();
  CheckOperation([&] { InternalDelete(); }, OnDeleteError);
  editing_ = false;
  oldValues_.clear();
  RemoveCurrentFromView();
  calcRow_ = -1;
  SetState(dsBrowse);
  Resync(TResyncMode());
  DoAfterDelete();
  DoAfterScroll();
}

void TDataSet::CheckBrowseMode() {
  CheckActive();
  DataEvent(deCheckBrowseMode);
  if (state_ == dsEdit || state_ == dsInsert) {
    UpdateRecord();
    if (modified_) Post();
    else Cancel();
  }
}

void TDataSet::Refresh() {
  CheckActive();
  DoBeforeRefresh();
  CheckBrowseMode();
  int keep = pos_;
  InternalRefresh();
  pos_ = keep;
  ClampPosition();
  bof_ = pos_ <= 0;
  eof_ = IsEmpty();
  calcRow_ = -1;
  Resync(TResyncMode());
  DoAfterRefresh();
}

void TDataSet::InternalRefresh() { RebuildView(); }

void TDataSet::Resync(TResyncMode) {
  ClampPosition();
  calcRow_ = -1;
  DataEvent(deDataSetChange);
}

// ---- Fields by name ------------------------------------------------------------

void TDataSet::GetFieldList(std::vector<TField*>& list, const String& names) const {
  list.clear();
  int start = 1;
  for (int i = 1; i <= names.Length() + 1; ++i) {
    if (i <= names.Length() && names[i] != u';') continue;
    String name = Trim(names.SubString(start, i - start));
    start = i + 1;
    if (!name.IsEmpty()) list.push_back(FieldByName(name));
  }
}

Variant TDataSet::GetFieldValue(const String& names) const {
  std::vector<TField*> list;
  GetFieldList(list, names);
  if (list.size() == 1) return list[0]->Value();
  Variant result = VarArrayCreate(0, static_cast<int>(list.size()) - 1);
  for (size_t i = 0; i < list.size(); ++i) result.PutElement(static_cast<int>(i), list[i]->Value());
  return result;
}

void TDataSet::SetFieldValues(const String& names, const Variant& value) {
  std::vector<TField*> list;
  GetFieldList(list, names);
  if (list.size() == 1) return list[0]->SetValue(value);
  for (size_t i = 0; i < list.size(); ++i)
    list[i]->SetValue(value.IsArray() ? value.GetElement(VarArrayLowBound(value, 1) + static_cast<int>(i)) : value);
}

// ---- Filter --------------------------------------------------------------------

void TDataSet::SetFiltered(bool value) {
  if (filtered_ == value) return;
  if (Active()) CheckBrowseMode();
  if (value && Active() && !filterExpr_ && !Trim(filterText_).IsEmpty())
    filterExpr_ = std::make_unique<TFilterExpression>(filterText_, this, filterOptions_);
  filtered_ = value;
  if (Active()) {
    RebuildView();
    DataEvent(deDataSetChange);
  }
}

void TDataSet::SetFilter(const String& value) {
  if (Active()) CheckBrowseMode();
  std::unique_ptr<TFilterExpression> expr;
  if (!Trim(value).IsEmpty() && Active()) expr = std::make_unique<TFilterExpression>(value, this, filterOptions_);
  filterText_ = value;
  filterExpr_ = std::move(expr);
  if (Active() && filtered_) {
    RebuildView();
    DataEvent(deDataSetChange);
  }
}

void TDataSet::SetFilterOptions(TFilterOptions value) {
  filterOptions_ = value;
  if (!filterText_.IsEmpty()) SetFilter(filterText_);
}

// ---- Controls and links ------------------------------------------------------------

void TDataSet::DisableControls() {
  if (disableCount_++ == 0) {
    stateWhenDisabled_ = state_;
    changedWhileDisabled_ = false;
  }
}

void TDataSet::EnableControls() {
  if (disableCount_ == 0 || --disableCount_ > 0) return;
  if (stateWhenDisabled_ != state_) NotifyLinks(deUpdateState, nullptr);
  if (Active() && changedWhileDisabled_) NotifyLinks(deDataSetChange, nullptr);
}

void TDataSet::DataEvent(TDataEvent event, TField* field) {
  if (event == deFieldChange && field) {
    if (field->FieldKind() == fkData || field->FieldKind() == fkInternalCalc) modified_ = true;
    calcRow_ = -1;
    field->Change();
  }
  if (ControlsDisabled() && event != deUpdateState) {
    changedWhileDisabled_ = true;
    return;
  }
  if (ControlsDisabled()) changedWhileDisabled_ = true;
  NotifyLinks(event, field);
}

void TDataSet::NotifyLinks(TDataEvent event, TField* field) {
  if (dataSources_.empty()) return;  // the common scan with no control attached: no copy of the list
  for (TDataSource* source : std::vector<TDataSource*>(dataSources_))
    if (std::find(dataSources_.begin(), dataSources_.end(), source) != dataSources_.end()) source->DataEvent(event, field);
}

void TDataSet::AddDataSource(TDataSource* source) { dataSources_.push_back(source); }

void TDataSet::RemoveDataSource(TDataSource* source) {
  dataSources_.erase(std::remove(dataSources_.begin(), dataSources_.end(), source), dataSources_.end());
}

void TDataSet::SetDataSource(TDataSource* value) {
  if (value == masterSource_) return;
  if (value && value->DataSet() == this) DatabaseError(u"Circular datalinks are not allowed", this);
  if (masterSource_) masterSource_->RemoveFreeNotification(this);
  masterSource_ = value;
  if (value) value->FreeNotification(this);
  masterLink_->SetDataSource(value);
}

void TDataSet::Notification(TComponent* AComponent, TOperation Operation) {
  TComponent::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == masterSource_) {
    masterSource_ = nullptr;
    masterLink_->SetDataSource(nullptr);
  }
}

// ---- Locate and Lookup ---------------------------------------------------------------

namespace {

char AsciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

bool IsAscii(std::string_view s) {
  for (char c : s)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

// One key of a search, prepared in the form its store column holds.
struct TLocateKey {
  TField* field = nullptr;
  int column = -1;
  bool null = false;
  bool impossible = false;  // the value cannot be held by the column
  int64_t i = 0;
  double d = 0;
  std::string bytes;  // UTF-8, upper-cased (ASCII) when case is ignored
  String text;        // upper-cased, for non-ASCII text ignoring case
  Variant value;      // for calculated and lookup keys
  bool ignoreCase = false;
  bool partial = false;
};

TLocateKey PrepareKey(TField* f, const Variant& v, TLocateOptions options) {
  TLocateKey k;
  k.field = f;
  k.column = f->Column();
  k.value = v;
  k.null = v.IsNull() || v.IsEmpty();
  if (k.null || k.column < 0) return k;
  try {
    switch (f->ColumnKind()) {
      case ckInteger:
        k.i = f->DataType() == ftBoolean ? (v.AsBoolean() ? 1 : 0) : v.AsInt64();
        if (VarIsFloat(v) && static_cast<double>(k.i) != v.AsFloat()) k.impossible = true;
        break;
      case ckFloat:
        k.d = (f->DataType() == ftDate || f->DataType() == ftTime || f->DataType() == ftDateTime)
                  ? VarToDateTime(v).Val
                  : v.AsFloat();
        break;
      case ckText:
      case ckBlob:
        k.ignoreCase = options.Contains(loCaseInsensitive);
        k.partial = options.Contains(loPartialKey);
        k.text = v.AsString();
        k.bytes = k.text.ToUtf8();
        if (k.ignoreCase) {
          k.text = UpperCase(k.text);
          for (char& c : k.bytes) c = AsciiUpper(c);
        }
        break;
    }
  } catch (const EConvertError&) {
    k.impossible = true;
  } catch (const EVariantError&) {
    k.impossible = true;
  }
  return k;
}

bool TextMatches(const TLocateKey& k, std::string_view cell) {
  if (!k.ignoreCase) {
    if (k.partial) return cell.substr(0, k.bytes.size()) == k.bytes;
    return cell == k.bytes;
  }
  if (IsAscii(cell) && IsAscii(k.bytes)) {
    if (k.partial ? cell.size() < k.bytes.size() : cell.size() != k.bytes.size()) return false;
    for (size_t i = 0; i < k.bytes.size(); ++i)
      if (AsciiUpper(cell[i]) != k.bytes[i]) return false;
    return true;
  }
  String s = UpperCase(String::FromUtf8(cell));
  if (k.partial) return s.SubString(1, k.text.Length()) == k.text;
  return s == k.text;
}

}  // namespace

int TDataSet::LocateRecord(const String& KeyFields, const Variant& KeyValues, TLocateOptions Options, int from) {
  CheckActive();
  std::vector<TField*> list;
  GetFieldList(list, KeyFields);
  if (list.empty()) DatabaseError(u"No key fields given", this);
  std::vector<TLocateKey> keys;
  if (list.size() == 1) {
    Variant v = KeyValues.IsArray() ? KeyValues.GetElement(VarArrayLowBound(KeyValues, 1)) : KeyValues;
    keys.push_back(PrepareKey(list[0], v, Options));
  } else {
    if (!KeyValues.IsArray() ||
        VarArrayHighBound(KeyValues, 1) - VarArrayLowBound(KeyValues, 1) + 1 != static_cast<int>(list.size()))
      DatabaseError(u"The number of key values does not match the key fields '" + KeyFields + u"'", this);
    for (size_t i = 0; i < list.size(); ++i)
      keys.push_back(PrepareKey(list[i], KeyValues.GetElement(VarArrayLowBound(KeyValues, 1) + static_cast<int>(i)), Options));
  }
  for (const TLocateKey& k : keys)
    if (k.impossible) return -1;

  auto matches = [&](RowId row, int position) {
    for (const TLocateKey& k : keys) {
      if (k.column < 0) {
        int saved = readPos_;
        readPos_ = position;
        Variant v = k.field->Value();
        readPos_ = saved;
        if (k.null) {
          if (!v.IsNull()) return false;
          continue;
        }
        if (v.IsNull()) return false;
        if (VarIsStr(k.value) || VarIsStr(v)) {
          TLocateKey text = PrepareKey(k.field, k.value, Options);
          text.ignoreCase = Options.Contains(loCaseInsensitive);
          text.partial = Options.Contains(loPartialKey);
          text.bytes = text.ignoreCase ? UpperCase(k.value.AsString()).ToUtf8() : k.value.AsString().ToUtf8();
          text.text = UpperCase(k.value.AsString());
          if (!TextMatches(text, v.AsString().ToUtf8())) return false;
        } else if (VarCompareValue(v, k.value) != vrEqual) {
          return false;
        }
        continue;
      }
      bool isNull = store_.IsNull(row, k.column);
      if (k.null || isNull) {
        if (k.null != isNull) return false;
        continue;
      }
      switch (store_.Kind(k.column)) {
        case ckInteger:
          if (store_.Integer(row, k.column) != k.i) return false;
          break;
        case ckFloat:
          if (store_.Float(row, k.column) != k.d) return false;
          break;
        default:
          if (!TextMatches(k, store_.Bytes(row, k.column))) return false;
          break;
      }
    }
    return true;
  };

  // One exact key on a stored column: the store's own search loop.
  const TLocateKey& k0 = keys[0];
  if (keys.size() == 1 && k0.column >= 0 && !k0.null && !k0.ignoreCase && !k0.partial &&
      (store_.Kind(k0.column) != ckFloat)) {
    for (size_t p = static_cast<size_t>(std::max(from, 0));;) {
      int64_t hit = store_.Kind(k0.column) == ckInteger ? store_.FindInteger(View(), p, k0.column, k0.i)
                                                         : store_.FindBytes(View(), p, k0.column, k0.bytes);
      if (hit >= 0) return static_cast<int>(hit);
      p = View().size();
      if (KeepsOnlyCurrentBlock() || !FetchMore()) return -1;
    }
  }

  for (int p = from;; ++p) {
    if (p >= static_cast<int>(View().size())) {
      if (KeepsOnlyCurrentBlock() || !FetchMore()) return -1;
      --p;
      continue;
    }
    if (matches(View()[static_cast<size_t>(p)], p)) return p;
  }
}

bool TDataSet::Locate(const String& KeyFields, const Variant& KeyValues, TLocateOptions Options) {
  CheckBrowseMode();
  DoBeforeScroll();
  int p = LocateRecord(KeyFields, KeyValues, Options);
  if (p < 0) return false;
  pos_ = p;
  readPos_ = -1;
  bof_ = eof_ = false;
  DataEvent(deDataSetChange);
  DoAfterScroll();
  return true;
}

Variant TDataSet::Lookup(const String& KeyFields, const Variant& KeyValues, const String& ResultFields) {
  int p = LocateRecord(KeyFields, KeyValues, TLocateOptions());
  if (p < 0) return Null();
  ReadOverride over(this, View()[static_cast<size_t>(p)], state_);
  return GetFieldValue(ResultFields);
}
