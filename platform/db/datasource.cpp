#include "platform/db/datasource.h"

#include <algorithm>

// ---- TDataSource ---------------------------------------------------------------

KELMAR_PUBLISH(TDataSource) {
  r.Prop(u"DataSet", &TDataSource::DataSet, &TDataSource::SetDataSet);
  r.Prop(u"Enabled", &TDataSource::Enabled, &TDataSource::SetEnabled).Default = 1;
  r.Prop(u"AutoEdit", &TDataSource::AutoEdit, &TDataSource::SetAutoEdit).Default = 1;
  r.Prop(u"OnStateChange", &TDataSource::OnStateChange);
  r.Prop(u"OnDataChange", &TDataSource::OnDataChange);
  r.Prop(u"OnUpdateData", &TDataSource::OnUpdateData);
}

TDataSource::TDataSource(TComponent* AOwner) : TComponent(AOwner) {}

TDataSource::~TDataSource() {
  SetDataSet(nullptr);
  for (TDataLink* link : std::vector<TDataLink*>(links_)) link->SetDataSource(nullptr);
}

void TDataSource::SetDataSet(TDataSet* value) {
  if (value == dataSet_) return;
  if (value && value->DataSource() == this) DatabaseError(u"Circular datalinks are not allowed", value);
  if (dataSet_) {
    dataSet_->RemoveDataSource(this);
    dataSet_->RemoveFreeNotification(this);
  }
  dataSet_ = value;
  if (dataSet_) {
    dataSet_->AddDataSource(this);
    dataSet_->FreeNotification(this);
  }
  UpdateState();
}

void TDataSource::Notification(TComponent* AComponent, TOperation Operation) {
  TComponent::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == dataSet_) {
    dataSet_ = nullptr;
    UpdateState();
  }
}

void TDataSource::SetEnabled(bool value) {
  enabled_ = value;
  UpdateState();
}

bool TDataSource::IsLinkedTo(const TDataSet* dataSet) const {
  for (const TDataSource* source = this; source && source->dataSet_;) {
    if (source->dataSet_ == dataSet) return true;
    source = source->dataSet_->DataSource();
  }
  return false;
}

void TDataSource::Edit() {
  if (autoEdit_ && dataSet_ && dataSet_->State() == dsBrowse) dataSet_->Edit();
}

void TDataSource::UpdateState() {
  TDataSetState state = enabled_ && dataSet_ ? dataSet_->State() : dsInactive;
  if (state == state_) return;
  bool activeChanged = (state == dsInactive) != (state_ == dsInactive);
  state_ = state;
  for (TDataLink* link : std::vector<TDataLink*>(links_)) link->DataEvent(deUpdateState, nullptr);
  OnStateChange(this);
  if (activeChanged && state != dsInactive) OnDataChange(this, nullptr);
}

void TDataSource::DataEvent(TDataEvent event, TField* field) {
  if (event == deUpdateState) return UpdateState();
  if (state_ == dsInactive) return;
  for (TDataLink* link : std::vector<TDataLink*>(links_))
    if (std::find(links_.begin(), links_.end(), link) != links_.end()) link->DataEvent(event, field);
  switch (event) {
    case deFieldChange:
    case deRecordChange:
    case deDataSetChange:
    case deDataSetScroll:
    case deLayoutChange: OnDataChange(this, event == deFieldChange || event == deRecordChange ? field : nullptr); break;
    case deUpdateRecord: OnUpdateData(this); break;
    default: break;
  }
}

void TDataSource::AddLink(TDataLink* link) {
  links_.push_back(link);
  link->DataEvent(deUpdateState, nullptr);
}

void TDataSource::RemoveLink(TDataLink* link) { links_.erase(std::remove(links_.begin(), links_.end(), link), links_.end()); }

// ---- TDataLink -----------------------------------------------------------------

KELMAR_PUBLISH(TDataLink) {}

TDataLink::TDataLink() = default;

TDataLink::~TDataLink() {
  if (dataSource_) dataSource_->RemoveLink(this);
}

void TDataLink::SetDataSource(TDataSource* value) {
  if (value == dataSource_) return;
  if (dataSource_) dataSource_->RemoveLink(this);
  dataSource_ = value;
  if (dataSource_) dataSource_->AddLink(this);
  else DataEvent(deUpdateState, nullptr);
}

TDataSet* TDataLink::DataSet() const { return dataSource_ ? dataSource_->DataSet() : nullptr; }

void TDataLink::SetReadOnly(bool value) {
  if (readOnly_ == value) return;
  readOnly_ = value;
  SetEditing(active_ && !readOnly_ && DataSet() &&
             (DataSet()->State() == dsEdit || DataSet()->State() == dsInsert));
}

void TDataLink::SetActive(bool value) {
  if (active_ == value) return;
  active_ = value;
  activeRecord_ = -1;
  if (value) UpdateWindow();
  else first_ = 0;
  ActiveChanged();
}

void TDataLink::SetEditing(bool value) {
  if (editing_ == value) return;
  editing_ = value;
  EditingChanged();
}

void TDataLink::DataEvent(TDataEvent event, TField* field) {
  if (event == deUpdateState) {
    bool active = dataSource_ && dataSource_->State() != dsInactive;
    SetActive(active);
    TDataSetState state = dataSource_ ? dataSource_->State() : dsInactive;
    SetEditing(active && !readOnly_ && (state == dsEdit || state == dsInsert));
    return;
  }
  if (!active_) return;
  switch (event) {
    case deFieldChange:
    case deRecordChange:
      if (!updating_) RecordChanged(field);
      break;
    case deDataSetChange:
    case deDataSetScroll:
    case deLayoutChange: {
      int oldFirst = first_;
      UpdateWindow();
      if (event == deDataSetScroll) DataSetScrolled(first_ - oldFirst);
      else if (event == deLayoutChange) LayoutChanged();
      else DataSetChanged();
      break;
    }
    case deUpdateRecord: UpdateRecord(); break;
    case deCheckBrowseMode: CheckBrowseMode(); break;
    case deFocusControl: FocusControl(field); break;
    default: break;
  }
}

void TDataLink::UpdateWindow() {
  TDataSet* ds = DataSet();
  if (!ds) return;
  activeRecord_ = -1;
  ds->SetReadPosition(-1);
  ds->FetchUntil(first_ + bufferCount_);
  int count = ds->ViewCount();
  int cur = ds->ViewPosition();
  if (first_ > count - bufferCount_) first_ = std::max(0, count - bufferCount_);
  if (cur >= 0 && cur < first_) first_ = cur;
  if (cur >= first_ + bufferCount_) first_ = cur - bufferCount_ + 1;
  if (first_ < 0) first_ = 0;
}

void TDataLink::SetBufferCount(int value) {
  if (value < 1) value = 1;
  bufferCount_ = value;
  if (active_) UpdateWindow();
}

int TDataLink::RecordCount() const {
  TDataSet* ds = DataSet();
  if (!active_ || !ds) return 0;
  return std::max(0, std::min(bufferCount_, ds->ViewCount() - first_));
}

int TDataLink::ActiveRecord() const {
  TDataSet* ds = DataSet();
  if (!active_ || !ds) return 0;
  if (activeRecord_ >= 0) return activeRecord_;
  return std::max(0, ds->ViewPosition() - first_);
}

void TDataLink::SetActiveRecord(int value) {
  TDataSet* ds = DataSet();
  if (!active_ || !ds) return;
  if (value < 0 || value >= RecordCount())
    DatabaseError(u"Record " + IntToStr(value) + u" is outside the data link's buffer", ds);
  if (first_ + value == ds->ViewPosition()) {
    activeRecord_ = -1;
    ds->SetReadPosition(-1);
  } else {
    activeRecord_ = value;
    ds->SetReadPosition(first_ + value);
  }
}

bool TDataLink::Eof() const { return active_ && DataSet() && DataSet()->Eof(); }
bool TDataLink::Bof() const { return active_ && DataSet() && DataSet()->Bof(); }

bool TDataLink::Edit() {
  if (!readOnly_ && dataSource_) dataSource_->Edit();
  return editing_;
}

void TDataLink::UpdateRecord() {
  updating_ = true;
  try {
    UpdateData();
  } catch (...) {
    updating_ = false;
    throw;
  }
  updating_ = false;
}

int TDataLink::MoveBy(int distance) { return DataSet() ? DataSet()->MoveBy(distance) : 0; }
