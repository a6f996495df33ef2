// The data grid: TCustomDBGrid over a TDataSource, with its columns
// (dbcolumns.h), a data link whose window is the visible rows, editing
// through the in-place editor, title and cell clicks, and drawing.
//
// Layout: with dgIndicator, grid column 0 is the indicator and data column
// i is grid column i + 1; with dgTitles, grid row 0 holds the titles and
// record r of the link's window is grid row r + 1.
//
// Keys, as the platform grid has them: Up and Down move the record (Down
// past the last appends when editing is allowed; leaving an untouched new
// record cancels it); PgUp and PgDn move a page, with Ctrl to the window's
// first or last row; Ctrl+Home and Ctrl+End go to the first and last
// record; Left, Right, Home, End and Tab move among the columns (Tab from
// the last column goes to the next record); F2 shows the editor and Enter
// shows or hides it, writing the text to the field; Escape first takes back
// an edited cell, then cancels the record; Insert inserts; Ctrl+Delete
// deletes, asking "Delete record?" with dgConfirmDelete.
//
// Editing: typing into the editor puts the dataset in edit; the text goes
// to the field when the record is written, when Enter is pressed, or when
// the column changes.
#pragma once

#include <memory>
#include <vector>

#include "platform/db/datasource.h"
#include "platform/ui/dbcolumns.h"
#include "platform/ui/grids.h"

enum TDBGridOption {
  dgEditing, dgAlwaysShowEditor, dgTitles, dgIndicator, dgColumnResize, dgColLines, dgRowLines, dgTabs,
  dgRowSelect, dgAlwaysShowSelection, dgConfirmDelete, dgCancelOnExit, dgMultiSelect, dgTitleClick, dgTitleHotTrack
};
KELMAR_ENUM(TDBGridOption, u"dgEditing", u"dgAlwaysShowEditor", u"dgTitles", u"dgIndicator", u"dgColumnResize",
            u"dgColLines", u"dgRowLines", u"dgTabs", u"dgRowSelect", u"dgAlwaysShowSelection", u"dgConfirmDelete",
            u"dgCancelOnExit", u"dgMultiSelect", u"dgTitleClick", u"dgTitleHotTrack");
using TDBGridOptions = Set<TDBGridOption>;

class TCustomDBGrid;

// Tells the grid what its dataset does.
class TGridDataLink : public TDataLink {
  KELMAR_CLASS(TGridDataLink, TDataLink)
 public:
  explicit TGridDataLink(TCustomDBGrid* grid) : grid_(grid) {}
  TCustomDBGrid* Grid() const { return grid_; }
  // Whether the grid holds an edited text not yet written to its field.
  bool Modified() const { return modified_; }
  void SetModified() { modified_ = true; }
  // Escape: an edited text is taken back, or else the record cancelled.
  void Reset();

 protected:
  void ActiveChanged() override;
  void DataSetChanged() override;
  void DataSetScrolled(int Distance) override;
  void EditingChanged() override;
  void LayoutChanged() override;
  void RecordChanged(TField* Field) override;
  void UpdateData() override;
  void FocusControl(TField* Field) override;

 private:
  friend class TCustomDBGrid;
  TCustomDBGrid* grid_;
  bool modified_ = false;
};

// The records marked in a grid with dgMultiSelect: Ctrl+click marks or
// unmarks a row, Shift with Up or Down marks the rows passed over, and a
// plain move clears the marks.
class TBookmarkList {
 public:
  explicit TBookmarkList(TCustomDBGrid* grid) : grid_(grid) {}
  int Count() const { return static_cast<int>(items_.size()); }
  TBookmark Items(int index) const;
  // Whether the record the dataset's fields show is marked (while a row is
  // drawn, that row's record).
  bool CurrentRowSelected() const;
  void SetCurrentRowSelected(bool v);
  int IndexOf(const TBookmark& bookmark) const;
  void Clear();
  // Deletes the marked records from the dataset.
  void Delete();
  // Drops the marks of records no longer in the dataset; true when any went.
  bool Refresh();

 private:
  TBookmark Current() const;
  TCustomDBGrid* grid_;
  std::vector<TBookmark> items_;  // sorted
};

using TDrawColumnCellEvent =
    TEvent<void(TObject* Sender, const TRect& Rect, int DataCol, TColumn* Column, TGridDrawState State)>;
using TDBGridClickEvent = TEvent<void(TColumn* Column)>;

class TCustomDBGrid : public TCustomGrid {
  KELMAR_CLASS(TCustomDBGrid, TCustomGrid)
 public:
  explicit TCustomDBGrid(TComponent* AOwner);
  ~TCustomDBGrid() override;

  TDataSource* DataSource() const { return dataLink_->DataSource(); }
  void SetDataSource(TDataSource* v);
  TGridDataLink* DataLink() const { return dataLink_.get(); }
  TDBGridColumns* Columns() const { return columns_.get(); }
  void SetColumns(TDBGridColumns* v) { columns_->Assign(v); }
  TDBGridOptions Options() const { return dbOptions_; }
  void SetOptions(TDBGridOptions v);
  bool ReadOnly() const { return readOnly_; }
  void SetReadOnly(bool v) { readOnly_ = v; }
  TBookmarkList* SelectedRows() const { return selectedRows_.get(); }
  TFont* TitleFont() const { return titleFont_.get(); }
  void SetTitleFont(TFont* v) { titleFont_->Assign(v); }

  // The column the cursor is in, as an index into Columns.
  int SelectedIndex() const;
  void SetSelectedIndex(int v);
  TField* SelectedField() const;
  virtual void SetSelectedField(TField* v);
  // The field of each column, in column order.
  int FieldCount() const { return Columns()->Count(); }
  TField* Fields(int index) const;
  // Data column (Columns index) of a grid column, and back.
  int RawToDataColumn(int ACol) const { return ACol - IndicatorOffset(); }
  int DataToRawColumn(int ACol) const { return ACol + IndicatorOffset(); }
  int IndicatorOffset() const { return dbOptions_.Contains(dgIndicator) ? 1 : 0; }
  int TitleOffset() const { return dbOptions_.Contains(dgTitles) ? 1 : 0; }

  // Layout: the grid's columns and rows made again from Columns and the
  // dataset. BeginLayout and EndLayout bracket several changes into one.
  virtual void LayoutChanged();
  void BeginLayout() { ++layoutLock_; }
  void EndLayout();
  int LayoutLock() const { return layoutLock_; }

  virtual void ColEnter() { OnColEnter(this); }
  virtual void ColExit() { OnColExit(this); }
  virtual void TitleClick(TColumn* Column) { OnTitleClick(Column); }
  virtual void CellClick(TColumn* Column) { OnCellClick(Column); }
  void EditButtonClick() override { OnEditButtonClick(this); }
  virtual void DrawColumnCell(const TRect& Rect, int DataCol, TColumn* Column, TGridDrawState State);
  // The field's display text, aligned as the column is, on the canvas.
  void DefaultDrawColumnCell(const TRect& Rect, int DataCol, TColumn* Column, TGridDrawState State);

  void KeyDown(Word& Key, TShiftState Shift) override;
  void KeyPress(WideChar& Key) override;
  void MouseDown(TMouseButton Button, TShiftState Shift, int X, int Y) override;
  void MouseUp(TMouseButton Button, TShiftState Shift, int X, int Y) override;
  void DoExit() override;

  String GetEditText(int ACol, int ARow) override;
  void SetEditText(int ACol, int ARow, const String& Value) override;
  String GetEditMask(int ACol, int ARow) override;
  // esEllipsis for cbsEllipsis columns, esPickList for cbsAuto columns
  // with a pick list.
  TEditStyle GetEditStyle(int ACol, int ARow) override;
  void GetPickList(int ACol, int ARow, TStrings* List) override;
  int GetEditLimit() override;
  bool CanEditShow() override;
  bool CanEditModify() override;
  void DrawCell(int ACol, int ARow, const TRect& ARect, TGridDrawState AState) override;

  TNotifyEvent OnColEnter;
  TNotifyEvent OnColExit;
  TNotifyEvent OnEditButtonClick;
  TDBGridClickEvent OnTitleClick;
  TDBGridClickEvent OnCellClick;
  TDrawColumnCellEvent OnDrawColumnCell;

 protected:
  friend class TGridDataLink;
  friend class TDBGridColumns;
  // What the data link reports.
  virtual void LinkActive(bool Value);
  virtual void DataChanged();
  virtual void Scroll(int Distance);
  virtual void EditingChanged() { Invalidate(); }
  virtual void RecordChanged(TField* Field);
  virtual void UpdateData();
  // Moves to a grid column (skipping hidden ones in `direction`), with
  // ColExit before and ColEnter after.
  void MoveCol(int RawCol, int Direction);
  bool TabStops(int ACol) const override;
  void Notification(TComponent* AComponent, TOperation Operation) override;
  // A new size or row height changes how many records the window holds.
  void Resize() override;
  void RowHeightsChanged() override;

 private:
  void SyncGridOptions();
  void UpdateBuffer();
  void UpdateRowCount();
  void UpdateActive();
  int DataRowsThatFit() const;
  // Up and Down; `select` marks the rows passed with dgMultiSelect.
  void NextRow(bool select = false);
  void PriorRow(bool select = false);
  void ClearSelection();
  void Tab(bool goForward);

  std::unique_ptr<TGridDataLink> dataLink_;
  std::unique_ptr<TDBGridColumns> columns_;
  std::unique_ptr<TFont> titleFont_;
  std::unique_ptr<TBookmarkList> selectedRows_;
  TDBGridOptions dbOptions_{dgEditing,    dgTitles, dgIndicator,     dgColumnResize, dgColLines,
                            dgRowLines,   dgTabs,   dgConfirmDelete, dgCancelOnExit};
  bool readOnly_ = false;
  int layoutLock_ = 0;
  bool inColExit_ = false;
  String editText_;
  TGridCoord titleDown_{-1, -1};
};

class TDBGrid : public TCustomDBGrid {
  KELMAR_CLASS(TDBGrid, TCustomDBGrid)
 public:
  explicit TDBGrid(TComponent* AOwner) : TCustomDBGrid(AOwner) {}
};

