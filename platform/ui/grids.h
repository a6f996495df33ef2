// The platform grid: cells in rows and columns with fixed ones at the top
// and left, a current cell, scrolling, keyboard navigation, an in-place
// editor, and cell drawing onto the canvas. TStringGrid keeps text per cell.
//
// Keys (KeyDown): arrows move the current cell (Left and Right move rows
// with goRowSelect); PgUp and PgDn move a page; Home and End go to the first
// and last column (Ctrl: the first and last cell); Tab and Shift+Tab walk
// the cells with goTabs; F2 shows the editor. Enter (KeyPress) shows or
// hides the editor. With goEditing a typed character opens the editor and
// lands in it.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "platform/ui/stdctrls.h"

struct TGridCoord {
  int X = 0, Y = 0;
  bool operator==(const TGridCoord&) const = default;
};

struct TGridRect {
  int Left = 0, Top = 0, Right = 0, Bottom = 0;
  bool operator==(const TGridRect&) const = default;
};

enum TGridOption {
  goFixedVertLine, goFixedHorzLine, goVertLine, goHorzLine, goRangeSelect, goDrawFocusSelected, goRowSizing,
  goColSizing, goRowMoving, goColMoving, goEditing, goTabs, goRowSelect, goAlwaysShowEditor, goThumbTracking
};
KELMAR_ENUM(TGridOption, u"goFixedVertLine", u"goFixedHorzLine", u"goVertLine", u"goHorzLine", u"goRangeSelect",
            u"goDrawFocusSelected", u"goRowSizing", u"goColSizing", u"goRowMoving", u"goColMoving", u"goEditing",
            u"goTabs", u"goRowSelect", u"goAlwaysShowEditor", u"goThumbTracking");
using TGridOptions = Set<TGridOption>;

enum TGridDrawStateItem { gdSelected, gdFocused, gdFixed };
KELMAR_ENUM(TGridDrawStateItem, u"gdSelected", u"gdFocused", u"gdFixed");
using TGridDrawState = Set<TGridDrawStateItem>;

class TCustomGrid;

// The editor's kind: plain, with a button that runs the grid's
// EditButtonClick, or with a list to pick from.
enum TEditStyle { esSimple, esEllipsis, esPickList };
KELMAR_ENUM(TEditStyle, u"esSimple", u"esEllipsis", u"esPickList");

// The editor over the current cell, a child of the grid. Navigation keys
// go on to the grid's KeyDown; typing edits the text, which the grid takes
// through SetEditText. With esEllipsis, Ctrl+Enter or the button runs the
// grid's EditButtonClick; with esPickList, Alt+Down, Alt+Up or F4 opens
// the list, Up and Down move in it, Enter takes the item and Escape closes
// it.
class TInplaceEdit : public TCustomMaskEdit {
  KELMAR_CLASS(TInplaceEdit, TCustomMaskEdit)
 public:
  explicit TInplaceEdit(TComponent* AOwner);

  TCustomGrid* Grid() const { return grid_; }
  // Places the editor over a cell, shows it and focuses it when the grid
  // has the focus.
  void Move(const TRect& location);
  void Hide();
  // Reloads text, mask and limit from the grid's current cell.
  virtual void UpdateContents();
  void Deselect() { SetSelLength(0); }

  TEditStyle EditStyle() const { return editStyle_; }
  void SetEditStyle(TEditStyle v);
  TStrings* PickList() const { return pickList_.get(); }
  bool ListVisible() const { return listVisible_; }
  // The item marked in the open list, -1 for none.
  int ListIndex() const { return listIndex_; }
  void DropDown();
  // Closes the list; with Accept the marked item becomes the text.
  void CloseUp(bool Accept);
  // A click on the editor's button.
  void ButtonClick();

  void KeyDown(Word& Key, TShiftState Shift) override;
  void KeyPress(WideChar& Key) override;
  void KeyUp(Word& Key, TShiftState Shift) override;
  LRESULT GetDlgCode() const override;

 protected:
  friend class TCustomGrid;
  void Change() override;

 private:
  void SendToParent(Word& Key, TShiftState Shift);
  bool ListKey(Word& Key, TShiftState Shift);
  TCustomGrid* grid_ = nullptr;
  bool loading_ = false;
  TEditStyle editStyle_ = esSimple;
  std::unique_ptr<TStringList> pickList_ = std::make_unique<TStringList>();
  bool listVisible_ = false;
  int listIndex_ = -1;
};

using TSelectCellEvent = TEvent<void(TObject* Sender, int ACol, int ARow, bool& CanSelect)>;
using TDrawCellEvent = TEvent<void(TObject* Sender, int ACol, int ARow, const TRect& Rect, TGridDrawState State)>;
using TGetEditEvent = TEvent<void(TObject* Sender, int ACol, int ARow, String& Value)>;
using TSetEditEvent = TEvent<void(TObject* Sender, int ACol, int ARow, const String& Value)>;
using TMovedEvent = TEvent<void(TObject* Sender, int FromIndex, int ToIndex)>;

class TCustomGrid : public TCustomControl {
  KELMAR_CLASS(TCustomGrid, TCustomControl)
 public:
  explicit TCustomGrid(TComponent* AOwner);
  ~TCustomGrid() override;

  // ---- Shape ----
  int ColCount() const { return static_cast<int>(colWidths_.size()); }
  void SetColCount(int v);
  int RowCount() const { return static_cast<int>(rowHeights_.size()); }
  void SetRowCount(int v);
  int FixedCols() const { return fixedCols_; }
  void SetFixedCols(int v);
  int FixedRows() const { return fixedRows_; }
  void SetFixedRows(int v);
  int DefaultColWidth() const { return defaultColWidth_; }
  void SetDefaultColWidth(int v);
  int DefaultRowHeight() const { return defaultRowHeight_; }
  void SetDefaultRowHeight(int v);
  int ColWidths(int index) const;
  void SetColWidths(int index, int v);
  int RowHeights(int index) const;
  void SetRowHeights(int index, int v);
  int GridLineWidth() const { return gridLineWidth_; }
  void SetGridLineWidth(int v) { gridLineWidth_ = v; Invalidate(); }
  TColor FixedColor() const { return fixedColor_; }
  void SetFixedColor(TColor v) { fixedColor_ = v; Invalidate(); }
  TGridOptions Options() const { return options_; }
  void SetOptions(TGridOptions v);
  bool DefaultDrawing() const { return defaultDrawing_; }
  void SetDefaultDrawing(bool v) { defaultDrawing_ = v; }

  // ---- Position ----
  int Col() const { return current_.X; }
  void SetCol(int v) { FocusCell(v, current_.Y, true); }
  int Row() const { return current_.Y; }
  void SetRow(int v) { FocusCell(current_.X, v, true); }
  TGridRect Selection() const;
  void SetSelection(TGridRect v);
  int LeftCol() const { return topLeft_.X; }
  void SetLeftCol(int v) { MoveTopLeft(v, topLeft_.Y); }
  int TopRow() const { return topLeft_.Y; }
  void SetTopRow(int v) { MoveTopLeft(topLeft_.X, v); }
  // Columns and rows fully shown past the fixed ones (at least 1).
  int VisibleColCount() const;
  int VisibleRowCount() const;
  // The cell's rectangle in client coordinates; empty when not shown.
  TRect CellRect(int ACol, int ARow) const;
  // The cell under a client point; -1 in a coordinate outside the cells.
  TGridCoord MouseCoord(int X, int Y) const;
  void MouseToCell(int X, int Y, int& ACol, int& ARow) const;

  // ---- Editing ----
  bool EditorMode() const { return editorMode_; }
  void SetEditorMode(bool v);
  TInplaceEdit* InplaceEditor() const { return editor_; }
  virtual void ShowEditor();
  virtual void HideEditor();
  // Puts the editor's text into the cell (SetEditText).
  void UpdateText();
  void InvalidateEditor();
  void InvalidateCell(int ACol, int ARow) { Invalidate(); }

  void KeyDown(Word& Key, TShiftState Shift) override;
  void KeyPress(WideChar& Key) override;
  void MouseDown(TMouseButton Button, TShiftState Shift, int X, int Y) override;
  void Dispatch(TMessage& Message) override;
  LRESULT GetDlgCode() const override;

  // ---- Hooks for descendants ----
  // The editor's text for a cell, and where a change of it goes.
  virtual String GetEditText(int ACol, int ARow) { return String(); }
  virtual void SetEditText(int ACol, int ARow, const String& Value) {}
  virtual String GetEditMask(int ACol, int ARow) { return String(); }
  virtual TEditStyle GetEditStyle(int ACol, int ARow) { return esSimple; }
  // Fills the editor's list for a cell of style esPickList.
  virtual void GetPickList(int ACol, int ARow, TStrings* List) {}
  // The editor's button was pressed (esEllipsis).
  virtual void EditButtonClick() {}
  virtual int GetEditLimit() { return 0; }
  virtual bool CanEditShow();
  virtual bool CanEditModify() { return true; }
  virtual bool CanEditAcceptKey(WideChar Key) { return true; }
  virtual bool CanGridAcceptKey(Word Key, TShiftState Shift) { return true; }
  virtual bool SelectCell(int ACol, int ARow) { return true; }
  virtual void DrawCell(int ACol, int ARow, const TRect& ARect, TGridDrawState AState) {}
  virtual void TopLeftChanged() {}
  virtual void ColumnMoved(int FromIndex, int ToIndex) {}
  virtual void RowMoved(int FromIndex, int ToIndex) {}
  virtual void SizeChanged(int OldColCount, int OldRowCount) {}
  virtual void ColWidthsChanged() {}
  virtual void RowHeightsChanged() {}
  virtual TInplaceEdit* CreateEditor();

  // Moves the current cell when SelectCell allows, scrolling it into view.
  void FocusCell(int ACol, int ARow, bool MoveAnchor);
  void MoveColumn(int FromIndex, int ToIndex);
  void MoveRow(int FromIndex, int ToIndex);
  void MoveTopLeft(int ALeft, int ATop);

 protected:
  void Paint() override;
  // Whether Tab stops at a column (all do).
  virtual bool TabStops(int ACol) const { return true; }
  // A typed character with goEditing: the editor opens and takes it.
  void ShowEditorChar(WideChar Ch);
  // The current cell as the grid holds it, for descendants that move it
  // without the checks of FocusCell.
  void SetCurrent(TGridCoord c) { current_ = c; anchor_ = c; }
  void ClampInView();

 private:
  int ColumnsWidth(int from, int to) const;
  int RowsHeight(int from, int to) const;

  std::vector<int> colWidths_, rowHeights_;  // -1: the default
  int fixedCols_ = 1, fixedRows_ = 1;
  int defaultColWidth_ = 64, defaultRowHeight_ = 24;
  int gridLineWidth_ = 1;
  TColor fixedColor_ = clBtnFace;
  TGridOptions options_{goFixedVertLine, goFixedHorzLine, goVertLine, goHorzLine, goRangeSelect};
  bool defaultDrawing_ = true;
  TGridCoord current_{1, 1}, anchor_{1, 1}, topLeft_{1, 1};
  bool editorMode_ = false;
  TInplaceEdit* editor_ = nullptr;
};

class TDrawGrid : public TCustomGrid {
  KELMAR_CLASS(TDrawGrid, TCustomGrid)
 public:
  explicit TDrawGrid(TComponent* AOwner) : TCustomGrid(AOwner) {}

  String GetEditText(int ACol, int ARow) override;
  void SetEditText(int ACol, int ARow, const String& Value) override;
  bool SelectCell(int ACol, int ARow) override;
  void DrawCell(int ACol, int ARow, const TRect& ARect, TGridDrawState AState) override;
  void TopLeftChanged() override { OnTopLeftChanged(this); }
  void ColumnMoved(int FromIndex, int ToIndex) override { OnColumnMoved(this, FromIndex, ToIndex); }
  void RowMoved(int FromIndex, int ToIndex) override { OnRowMoved(this, FromIndex, ToIndex); }

  TDrawCellEvent OnDrawCell;
  TSelectCellEvent OnSelectCell;
  TGetEditEvent OnGetEditText;
  TSetEditEvent OnSetEditText;
  TNotifyEvent OnTopLeftChanged;
  TMovedEvent OnColumnMoved;
  TMovedEvent OnRowMoved;
};

class TStringGrid : public TDrawGrid {
  KELMAR_CLASS(TStringGrid, TDrawGrid)
 public:
  explicit TStringGrid(TComponent* AOwner) : TDrawGrid(AOwner) {}

  // Any cell may be read; an empty string where nothing was put. Writing
  // outside ColCount x RowCount raises EListError.
  String Cells(int ACol, int ARow) const;
  void SetCells(int ACol, int ARow, const String& Value);
  TObject* Objects(int ACol, int ARow) const;
  void SetObjects(int ACol, int ARow, TObject* Value);

  String GetEditText(int ACol, int ARow) override;
  void SetEditText(int ACol, int ARow, const String& Value) override;
  void DrawCell(int ACol, int ARow, const TRect& ARect, TGridDrawState AState) override;
  void ColumnMoved(int FromIndex, int ToIndex) override;
  void RowMoved(int FromIndex, int ToIndex) override;
  void SizeChanged(int OldColCount, int OldRowCount) override;

 private:
  void CheckCell(int ACol, int ARow) const;
  std::map<std::pair<int, int>, String> cells_;
  std::map<std::pair<int, int>, TObject*> objects_;
};
