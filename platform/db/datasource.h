// TDataSource and TDataLink: how controls and detail datasets follow a
// dataset.
//
// A data source connects one dataset to any number of links. A link sees
// a window of BufferCount records around the current one; ActiveRecord is
// the current record's place in that window, and setting it makes the
// dataset's fields read another record of the window (a link with
// BufferCount 2 reaches the record before the current one). The window
// moves as little as it can when the dataset scrolls, as a grid's rows do.
//
// Lifetimes: a link does not own its data source, nor a data source its
// dataset; both let go when the other is deleted.
#pragma once

#include <vector>

#include "platform/db/dataset.h"

using TDataChangeEvent = TEvent<void(TObject* Sender, TField* Field)>;

class TDataSource : public TComponent {
  KELMAR_CLASS(TDataSource, TComponent)
 public:
  explicit TDataSource(TComponent* AOwner);
  ~TDataSource() override;

  TDataSet* DataSet() const { return dataSet_; }
  void SetDataSet(TDataSet* value);
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool value);
  bool AutoEdit() const { return autoEdit_; }
  void SetAutoEdit(bool value) { autoEdit_ = value; }
  TDataSetState State() const { return state_; }
  // Puts the dataset into edit when AutoEdit allows.
  void Edit();
  bool IsLinkedTo(const TDataSet* dataSet) const;
  const std::vector<TDataLink*>& DataLinks() const { return links_; }

  TNotifyEvent OnStateChange;
  TDataChangeEvent OnDataChange;
  TNotifyEvent OnUpdateData;

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  friend class TDataSet;
  friend class TDataLink;
  void DataEvent(TDataEvent event, TField* field);
  void UpdateState();
  void AddLink(TDataLink* link);
  void RemoveLink(TDataLink* link);

  TDataSet* dataSet_ = nullptr;
  bool enabled_ = true;
  bool autoEdit_ = true;
  TDataSetState state_ = dsInactive;
  std::vector<TDataLink*> links_;
};

class TDataLink : public TPersistent {
  KELMAR_CLASS(TDataLink, TPersistent)
 public:
  TDataLink();
  ~TDataLink() override;

  TDataSource* DataSource() const { return dataSource_; }
  void SetDataSource(TDataSource* value);
  TDataSet* DataSet() const;
  bool Active() const { return active_; }
  bool Editing() const { return editing_; }
  bool ReadOnly() const { return readOnly_; }
  void SetReadOnly(bool value);

  // ---- The window ----
  int BufferCount() const { return bufferCount_; }
  void SetBufferCount(int value);
  // Records in the window (up to BufferCount).
  int RecordCount() const;
  // The record the dataset's fields show, as a place in the window.
  int ActiveRecord() const;
  void SetActiveRecord(int value);
  bool Eof() const;
  bool Bof() const;

  // ---- Acting through the link ----
  bool Edit();
  void UpdateRecord();
  int MoveBy(int distance);

 protected:
  // ---- What the framework tells a link ----
  virtual void ActiveChanged() {}
  virtual void CheckBrowseMode() {}
  virtual void DataSetChanged() { RecordChanged(nullptr); }
  virtual void DataSetScrolled(int Distance) { DataSetChanged(); }
  virtual void EditingChanged() {}
  virtual void FocusControl(TField* Field) {}
  virtual void LayoutChanged() { DataSetChanged(); }
  virtual void RecordChanged(TField* Field) {}
  virtual void UpdateData() {}

 private:
  friend class TDataSource;
  void DataEvent(TDataEvent event, TField* field);
  void SetActive(bool value);
  void UpdateWindow();
  void SetEditing(bool value);

  TDataSource* dataSource_ = nullptr;
  bool active_ = false;
  bool editing_ = false;
  bool readOnly_ = false;
  bool updating_ = false;
  int bufferCount_ = 1;
  int first_ = 0;        // view position of the window's first record
  int activeRecord_ = -1;  // set by SetActiveRecord; -1: the current one
};
