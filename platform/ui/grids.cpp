#include "platform/ui/grids.h"

#include <algorithm>

#include "platform/rtl/sysutils.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/forms.h"

// ---- TInplaceEdit --------------------------------------------------------------------

KELMAR_PUBLISH(TInplaceEdit) {}

TInplaceEdit::TInplaceEdit(TComponent* AOwner) : TCustomMaskEdit(AOwner) {
  SetVisible(false);
  SetAutoSelect(false);
}

void TInplaceEdit::Move(const TRect& location) {
  SetBounds(location.Left, location.Top, location.Width(), location.Height());
  SetVisible(true);
  if (grid_ && grid_->Focused() && CanFocus()) SetFocus();
}

void TInplaceEdit::Hide() {
  if (!Visible()) return;
  if (Focused() && grid_ && grid_->CanFocus()) grid_->SetFocus();
  SetVisible(false);
}

void TInplaceEdit::UpdateContents() {
  if (!grid_) return;
  loading_ = true;
  CloseUp(false);
  SetEditStyle(grid_->GetEditStyle(grid_->Col(), grid_->Row()));
  pickList_->Clear();
  if (editStyle_ == esPickList) grid_->GetPickList(grid_->Col(), grid_->Row(), pickList_.get());
  SetEditMask(grid_->GetEditMask(grid_->Col(), grid_->Row()));
  SetMaxLength(grid_->GetEditLimit());
  SetText(grid_->GetEditText(grid_->Col(), grid_->Row()));
  SelectAll();
  SetModified(false);
  loading_ = false;
}

void TInplaceEdit::SetEditStyle(TEditStyle v) {
  if (v != esPickList) CloseUp(false);
  editStyle_ = v;
}

void TInplaceEdit::DropDown() {
  if (editStyle_ != esPickList || listVisible_) return;
  listVisible_ = true;
  listIndex_ = pickList_->IndexOf(Text());
}

void TInplaceEdit::CloseUp(bool Accept) {
  if (!listVisible_) return;
  listVisible_ = false;
  if (!Accept || listIndex_ < 0 || listIndex_ >= pickList_->Count()) return;
  String value = pickList_->Strings(listIndex_);
  if (value == Text() || !grid_ || !grid_->CanEditModify()) return;
  SetText(value);
  SelectAll();
  SetModified(true);
}

void TInplaceEdit::ButtonClick() {
  if (editStyle_ == esEllipsis && grid_) grid_->EditButtonClick();
  else if (editStyle_ == esPickList) {
    if (listVisible_) CloseUp(false);
    else DropDown();
  }
}

bool TInplaceEdit::ListKey(Word& Key, TShiftState Shift) {
  bool alt = Shift.Contains(ssAlt);
  if (editStyle_ == esEllipsis && Key == VK_RETURN && Shift == TShiftState{ssCtrl}) {
    ButtonClick();
    Key = 0;
    return true;
  }
  if (editStyle_ != esPickList) return false;
  if (Key == VK_F4 || (alt && (Key == VK_DOWN || Key == VK_UP))) {
    ButtonClick();
    Key = 0;
    return true;
  }
  if (!listVisible_) return false;
  switch (Key) {
    case VK_DOWN: listIndex_ = std::min(pickList_->Count() - 1, listIndex_ + 1); break;
    case VK_UP: listIndex_ = std::max(0, listIndex_ - 1); break;
    case VK_RETURN: CloseUp(true); break;
    case VK_ESCAPE: CloseUp(false); break;
    default: return false;
  }
  Key = 0;
  return true;
}

LRESULT TInplaceEdit::GetDlgCode() const {
  LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
  if (grid_ && grid_->Options().Contains(goTabs)) code |= DLGC_WANTTAB;
  // An open list keeps Enter and Escape.
  if (listVisible_ || editStyle_ == esEllipsis) code |= DLGC_WANTALLKEYS;
  return code;
}

void TInplaceEdit::Change() {
  inherited::Change();
  if (!loading_ && grid_) grid_->UpdateText();
}

void TInplaceEdit::SendToParent(Word& Key, TShiftState Shift) {
  grid_->KeyDown(Key, Shift);
  Key = 0;
}

void TInplaceEdit::KeyDown(Word& Key, TShiftState Shift) {
  if (!grid_) {
    inherited::KeyDown(Key, Shift);
    return;
  }
  if (ListKey(Key, Shift)) return;
  bool ctrl = Shift.Contains(ssCtrl);
  // Left and Right leave the text only when the grid always shows its
  // editor: at the text's edge, or with Ctrl.
  bool forward = grid_->Options().Contains(goAlwaysShowEditor);
  bool atLeft = SelStart() == 0 && SelLength() == 0;
  bool atRight = SelStart() == Text().Length() && SelLength() == 0;
  switch (Key) {
    case VK_UP: case VK_DOWN: case VK_PRIOR: case VK_NEXT: case VK_ESCAPE:
      SendToParent(Key, Shift);
      break;
    case VK_INSERT:
      if (Shift.Empty()) SendToParent(Key, Shift);
      else if (Shift == TShiftState{ssShift} && !grid_->CanEditModify()) Key = 0;
      break;
    case VK_LEFT: case VK_HOME:
      if (forward && (ctrl || atLeft)) SendToParent(Key, Shift);
      break;
    case VK_RIGHT: case VK_END:
      if (forward && (ctrl || atRight)) SendToParent(Key, Shift);
      break;
    case VK_DELETE:
      if (ctrl) SendToParent(Key, Shift);
      else if (!grid_->CanEditModify()) Key = 0;
      break;
    case VK_F2:
      Deselect();
      Key = 0;
      break;
    case VK_TAB:
      if (!Shift.Contains(ssAlt)) SendToParent(Key, Shift);
      break;
    default: break;
  }
  if (Key != 0) {
    grid_->OnKeyDown(grid_, Key, Shift);
    if (Key != 0) inherited::KeyDown(Key, Shift);
  }
}

void TInplaceEdit::KeyPress(WideChar& Key) {
  if (!grid_) {
    inherited::KeyPress(Key);
    return;
  }
  grid_->KeyPress(Key);
  if (Key >= 32 && !grid_->CanEditAcceptKey(Key)) {
    Key = 0;
    MessageBeep(MB_OK);
  }
  switch (Key) {
    case 9: case 27: Key = 0; break;
    case 13:
      if (SelStart() == 0 && SelLength() == Text().Length()) Deselect();
      else SelectAll();
      Key = 0;
      break;
    case 0: break;
    default:
      if ((Key == 8 || Key == 22 || Key == 24 || Key >= 32) && !grid_->CanEditModify()) Key = 0;
  }
  if (Key != 0) inherited::KeyPress(Key);
}

void TInplaceEdit::KeyUp(Word& Key, TShiftState Shift) {
  if (grid_) grid_->KeyUp(Key, Shift);
  if (Key != 0) inherited::KeyUp(Key, Shift);
}

// ---- TCustomGrid -------------------------------------------------------------------------

KELMAR_PUBLISH(TCustomGrid) {
  r.Prop(u"ColCount", &TCustomGrid::ColCount, &TCustomGrid::SetColCount).Default = 5;
  r.Prop(u"DefaultColWidth", &TCustomGrid::DefaultColWidth, &TCustomGrid::SetDefaultColWidth).Default = 64;
  r.Prop(u"DefaultDrawing", &TCustomGrid::DefaultDrawing, &TCustomGrid::SetDefaultDrawing).Default = 1;
  r.Prop(u"DefaultRowHeight", &TCustomGrid::DefaultRowHeight, &TCustomGrid::SetDefaultRowHeight).Default = 24;
  r.Prop(u"FixedColor", &TCustomGrid::FixedColor, &TCustomGrid::SetFixedColor);
  r.Prop(u"FixedCols", &TCustomGrid::FixedCols, &TCustomGrid::SetFixedCols).Default = 1;
  r.Prop(u"FixedRows", &TCustomGrid::FixedRows, &TCustomGrid::SetFixedRows).Default = 1;
  r.Prop(u"GridLineWidth", &TCustomGrid::GridLineWidth, &TCustomGrid::SetGridLineWidth).Default = 1;
  r.Prop(u"Options", &TCustomGrid::Options, &TCustomGrid::SetOptions);
  r.Prop(u"RowCount", &TCustomGrid::RowCount, &TCustomGrid::SetRowCount).Default = 5;
}

TCustomGrid::TCustomGrid(TComponent* AOwner) : TCustomControl(AOwner), colWidths_(5, -1), rowHeights_(5, -1) {
  SetTabStop(true);
  SetColor(clWindow);
  SetBounds(0, 0, 320, 120);
}

TCustomGrid::~TCustomGrid() = default;

void TCustomGrid::SetColCount(int v) {
  if (v < 1) v = 1;
  if (v == ColCount()) return;
  int oldCols = ColCount();
  colWidths_.resize(static_cast<size_t>(v), -1);
  if (fixedCols_ >= v) fixedCols_ = v - 1;
  current_.X = std::clamp(current_.X, fixedCols_, v - 1);
  anchor_ = current_;
  topLeft_.X = std::clamp(topLeft_.X, fixedCols_, v - 1);
  SizeChanged(oldCols, RowCount());
  Invalidate();
}

void TCustomGrid::SetRowCount(int v) {
  if (v < 1) v = 1;
  if (v == RowCount()) return;
  int oldRows = RowCount();
  rowHeights_.resize(static_cast<size_t>(v), -1);
  if (fixedRows_ >= v) fixedRows_ = v - 1;
  current_.Y = std::clamp(current_.Y, fixedRows_, v - 1);
  anchor_ = current_;
  topLeft_.Y = std::clamp(topLeft_.Y, fixedRows_, v - 1);
  SizeChanged(ColCount(), oldRows);
  Invalidate();
}

void TCustomGrid::SetFixedCols(int v) {
  if (v < 0 || v >= ColCount()) throw EInvalidOperation(u"Fixed column count must be less than column count");
  fixedCols_ = v;
  current_.X = std::max(current_.X, v);
  anchor_ = current_;
  topLeft_.X = std::max(topLeft_.X, v);
  Invalidate();
}

void TCustomGrid::SetFixedRows(int v) {
  if (v < 0 || v >= RowCount()) throw EInvalidOperation(u"Fixed row count must be less than row count");
  fixedRows_ = v;
  current_.Y = std::max(current_.Y, v);
  anchor_ = current_;
  topLeft_.Y = std::max(topLeft_.Y, v);
  Invalidate();
}

void TCustomGrid::SetDefaultColWidth(int v) {
  defaultColWidth_ = v;
  std::fill(colWidths_.begin(), colWidths_.end(), -1);
  ColWidthsChanged();
  Invalidate();
}

void TCustomGrid::SetDefaultRowHeight(int v) {
  defaultRowHeight_ = v;
  std::fill(rowHeights_.begin(), rowHeights_.end(), -1);
  RowHeightsChanged();
  Invalidate();
}

int TCustomGrid::ColWidths(int index) const {
  if (index < 0 || index >= ColCount()) throw EListError(u"Grid index out of range");
  int w = colWidths_[static_cast<size_t>(index)];
  return w < 0 ? defaultColWidth_ : w;
}

void TCustomGrid::SetColWidths(int index, int v) {
  ColWidths(index);
  colWidths_[static_cast<size_t>(index)] = std::max(0, v);
  ColWidthsChanged();
  Invalidate();
}

int TCustomGrid::RowHeights(int index) const {
  if (index < 0 || index >= RowCount()) throw EListError(u"Grid index out of range");
  int h = rowHeights_[static_cast<size_t>(index)];
  return h < 0 ? defaultRowHeight_ : h;
}

void TCustomGrid::SetRowHeights(int index, int v) {
  RowHeights(index);
  rowHeights_[static_cast<size_t>(index)] = std::max(0, v);
  RowHeightsChanged();
  Invalidate();
}

void TCustomGrid::SetOptions(TGridOptions v) {
  if (options_ == v) return;
  options_ = v;
  if (!v.Contains(goEditing) || v.Contains(goRowSelect)) HideEditor();
  Invalidate();
}

TGridRect TCustomGrid::Selection() const {
  if (options_.Contains(goRowSelect)) return {fixedCols_, current_.Y, ColCount() - 1, current_.Y};
  return {std::min(anchor_.X, current_.X), std::min(anchor_.Y, current_.Y), std::max(anchor_.X, current_.X),
          std::max(anchor_.Y, current_.Y)};
}

void TCustomGrid::SetSelection(TGridRect v) {
  anchor_ = {v.Left, v.Top};
  FocusCell(v.Right, v.Bottom, false);
  Invalidate();
}

int TCustomGrid::ColumnsWidth(int from, int to) const {
  int w = 0;
  for (int i = from; i < to; ++i) w += ColWidths(i) + gridLineWidth_;
  return w;
}

int TCustomGrid::RowsHeight(int from, int to) const {
  int h = 0;
  for (int i = from; i < to; ++i) h += RowHeights(i) + gridLineWidth_;
  return h;
}

int TCustomGrid::VisibleColCount() const {
  int x = ColumnsWidth(0, fixedCols_), n = 0;
  for (int c = topLeft_.X; c < ColCount(); ++c) {
    x += ColWidths(c) + gridLineWidth_;
    if (x > ClientWidth() + gridLineWidth_) break;
    ++n;
  }
  return std::max(1, n);
}

int TCustomGrid::VisibleRowCount() const {
  int y = RowsHeight(0, fixedRows_), n = 0;
  for (int r = topLeft_.Y; r < RowCount(); ++r) {
    y += RowHeights(r) + gridLineWidth_;
    if (y > ClientHeight() + gridLineWidth_) break;
    ++n;
  }
  return std::max(1, n);
}

TRect TCustomGrid::CellRect(int ACol, int ARow) const {
  if (ACol < 0 || ARow < 0 || ACol >= ColCount() || ARow >= RowCount()) return TRect();
  if ((ACol >= fixedCols_ && ACol < topLeft_.X) || (ARow >= fixedRows_ && ARow < topLeft_.Y)) return TRect();
  int x = ACol < fixedCols_ ? ColumnsWidth(0, ACol) : ColumnsWidth(0, fixedCols_) + ColumnsWidth(topLeft_.X, ACol);
  int y = ARow < fixedRows_ ? RowsHeight(0, ARow) : RowsHeight(0, fixedRows_) + RowsHeight(topLeft_.Y, ARow);
  if (x >= ClientWidth() || y >= ClientHeight()) return TRect();
  return Bounds(x, y, ColWidths(ACol), RowHeights(ARow));
}

TGridCoord TCustomGrid::MouseCoord(int X, int Y) const {
  auto find = [](int p, int fixed, int first, int count, int line, auto size) {
    int edge = 0;
    for (int i = 0; i < count; ++i) {
      if (i == fixed) i = std::max(i, first);
      if (i >= count) break;
      int next = edge + size(i) + line;
      if (p >= edge && p < next) return i;
      edge = next;
    }
    return -1;
  };
  if (X < 0 || Y < 0 || X >= ClientWidth() || Y >= ClientHeight()) return {-1, -1};
  int c = find(X, fixedCols_, topLeft_.X, ColCount(), gridLineWidth_, [this](int i) { return ColWidths(i); });
  int r = find(Y, fixedRows_, topLeft_.Y, RowCount(), gridLineWidth_, [this](int i) { return RowHeights(i); });
  return {c, r};
}

void TCustomGrid::MouseToCell(int X, int Y, int& ACol, int& ARow) const {
  TGridCoord c = MouseCoord(X, Y);
  ACol = c.X;
  ARow = c.Y;
}

void TCustomGrid::MoveTopLeft(int ALeft, int ATop) {
  ALeft = std::clamp(ALeft, fixedCols_, std::max(fixedCols_, ColCount() - 1));
  ATop = std::clamp(ATop, fixedRows_, std::max(fixedRows_, RowCount() - 1));
  if (ALeft == topLeft_.X && ATop == topLeft_.Y) return;
  topLeft_ = {ALeft, ATop};
  if (editor_ && editor_->Visible()) editor_->SetBounds(CellRect(current_.X, current_.Y).Left,
                                                        CellRect(current_.X, current_.Y).Top, editor_->Width(),
                                                        editor_->Height());
  TopLeftChanged();
  Invalidate();
}

void TCustomGrid::ClampInView() {
  int top = topLeft_.Y, left = topLeft_.X;
  if (current_.Y < top) top = current_.Y;
  else if (current_.Y >= top + VisibleRowCount()) top = current_.Y - VisibleRowCount() + 1;
  if (!options_.Contains(goRowSelect)) {
    if (current_.X < left) left = current_.X;
    else if (current_.X >= left + VisibleColCount()) left = current_.X - VisibleColCount() + 1;
  }
  MoveTopLeft(left, top);
}

void TCustomGrid::FocusCell(int ACol, int ARow, bool MoveAnchor) {
  ACol = std::clamp(ACol, fixedCols_, ColCount() - 1);
  ARow = std::clamp(ARow, fixedRows_, RowCount() - 1);
  if (ACol == current_.X && ARow == current_.Y) {
    if (MoveAnchor) anchor_ = current_;
    return;
  }
  if (!SelectCell(ACol, ARow)) return;
  bool editing = editor_ && editor_->Visible();
  if (editing) UpdateText();
  current_ = {ACol, ARow};
  if (MoveAnchor || !options_.Contains(goRangeSelect)) anchor_ = current_;
  ClampInView();
  if (editing) {
    editor_->UpdateContents();
    editor_->Move(CellRect(current_.X, current_.Y));
  }
  Invalidate();
}

void TCustomGrid::MoveColumn(int FromIndex, int ToIndex) {
  if (FromIndex == ToIndex) return;
  int w = colWidths_.at(static_cast<size_t>(FromIndex));
  colWidths_.erase(colWidths_.begin() + FromIndex);
  colWidths_.insert(colWidths_.begin() + std::clamp(ToIndex, 0, ColCount()), w);
  ColumnMoved(FromIndex, ToIndex);
  Invalidate();
}

void TCustomGrid::MoveRow(int FromIndex, int ToIndex) {
  if (FromIndex == ToIndex) return;
  int h = rowHeights_.at(static_cast<size_t>(FromIndex));
  rowHeights_.erase(rowHeights_.begin() + FromIndex);
  rowHeights_.insert(rowHeights_.begin() + std::clamp(ToIndex, 0, RowCount()), h);
  RowMoved(FromIndex, ToIndex);
  Invalidate();
}

// ---- Editing ---------------------------------------------------------------------------

TInplaceEdit* TCustomGrid::CreateEditor() { return new TInplaceEdit(this); }

bool TCustomGrid::CanEditShow() {
  if (!options_.Contains(goEditing) || options_.Contains(goRowSelect) || !editorMode_) return false;
  if (ComponentState().Contains(csDesigning)) return false;
  TWinControl* focused = Screen->ActiveControl();
  return options_.Contains(goAlwaysShowEditor) || (focused && ContainsControl(focused));
}

void TCustomGrid::SetEditorMode(bool v) {
  if (v) ShowEditor();
  else HideEditor();
}

void TCustomGrid::ShowEditor() {
  if (current_.X < fixedCols_ || current_.Y < fixedRows_) return;
  editorMode_ = true;
  if (!CanEditShow()) return;
  if (!editor_) {
    editor_ = CreateEditor();
    editor_->grid_ = this;
    editor_->SetParent(this);
  }
  editor_->UpdateContents();
  editor_->Move(CellRect(current_.X, current_.Y));
}

void TCustomGrid::HideEditor() {
  editorMode_ = false;
  if (editor_ && editor_->Visible()) {
    UpdateText();
    editor_->Hide();
  }
}

void TCustomGrid::InvalidateEditor() {
  if (editor_ && editor_->Visible()) editor_->UpdateContents();
}

void TCustomGrid::UpdateText() {
  if (editor_) SetEditText(current_.X, current_.Y, editor_->Text());
}

void TCustomGrid::ShowEditorChar(WideChar Ch) {
  ShowEditor();
  // The historical grid posts the character to its editor; it is handed
  // over at once here, which the person cannot tell apart.
  if (editor_ && editor_->Visible()) editor_->Perform(WM_CHAR, Ch, 0);
}

// ---- Input -------------------------------------------------------------------------------

LRESULT TCustomGrid::GetDlgCode() const {
  LRESULT code = DLGC_WANTARROWS;
  if (options_.Contains(goTabs)) code |= DLGC_WANTTAB;
  if (options_.Contains(goEditing)) code |= DLGC_WANTCHARS;
  return code;
}

void TCustomGrid::Dispatch(TMessage& Message) {
  if (Message.Msg == WM_CHAR && options_.Contains(goEditing)) {
    WideChar c = static_cast<WideChar>(Message.WParam);
    if (c == 8 || c >= 32) {
      ShowEditorChar(c);
      return;
    }
  }
  inherited::Dispatch(Message);
}

void TCustomGrid::KeyDown(Word& Key, TShiftState Shift) {
  inherited::KeyDown(Key, Shift);
  if (Key == 0) return;
  if (!CanGridAcceptKey(Key, Shift)) {
    Key = 0;
    return;
  }
  TGridCoord next = current_;
  TGridCoord topLeft = topLeft_;
  int page = VisibleRowCount();
  bool rowSelect = options_.Contains(goRowSelect);
  if (Shift.Contains(ssCtrl)) {
    switch (Key) {
      case VK_UP: --topLeft.Y; break;
      case VK_DOWN: ++topLeft.Y; break;
      case VK_LEFT: if (!rowSelect) { next.X -= VisibleColCount(); topLeft.X -= VisibleColCount(); } break;
      case VK_RIGHT: if (!rowSelect) { next.X += VisibleColCount(); topLeft.X += VisibleColCount(); } break;
      case VK_PRIOR: next.Y = topLeft_.Y; break;
      case VK_NEXT: next.Y = topLeft_.Y + page - 1; break;
      case VK_HOME: next = {fixedCols_, fixedRows_}; break;
      case VK_END: next = {ColCount() - 1, RowCount() - 1}; break;
      default: break;
    }
  } else {
    switch (Key) {
      case VK_UP: --next.Y; break;
      case VK_DOWN: ++next.Y; break;
      case VK_LEFT: if (rowSelect) --next.Y; else --next.X; break;
      case VK_RIGHT: if (rowSelect) ++next.Y; else ++next.X; break;
      case VK_NEXT: next.Y += page; topLeft.Y += page; break;
      case VK_PRIOR: next.Y -= page; topLeft.Y -= page; break;
      case VK_HOME: if (rowSelect) next.Y = fixedRows_; else next.X = fixedCols_; break;
      case VK_END: if (rowSelect) next.Y = RowCount() - 1; else next.X = ColCount() - 1; break;
      case VK_TAB:
        if (!Shift.Contains(ssAlt)) {
          bool back = Shift.Contains(ssShift);
          do {
            if (back) {
              if (--next.X < fixedCols_) {
                next.X = ColCount() - 1;
                if (--next.Y < fixedRows_) next.Y = RowCount() - 1;
              }
            } else if (++next.X >= ColCount()) {
              next.X = fixedCols_;
              if (++next.Y >= RowCount()) next.Y = fixedRows_;
            }
          } while (!TabStops(next.X) && next.X != current_.X);
          Shift = TShiftState();
        }
        break;
      case VK_F2: SetEditorMode(true); break;
      default: break;
    }
  }
  if (topLeft.X != topLeft_.X || topLeft.Y != topLeft_.Y) MoveTopLeft(topLeft.X, topLeft.Y);
  next.X = std::clamp(next.X, fixedCols_, ColCount() - 1);
  next.Y = std::clamp(next.Y, fixedRows_, RowCount() - 1);
  if (next.X != current_.X || next.Y != current_.Y) FocusCell(next.X, next.Y, !Shift.Contains(ssShift));
}

void TCustomGrid::KeyPress(WideChar& Key) {
  inherited::KeyPress(Key);
  if (!options_.Contains(goAlwaysShowEditor) && Key == 13) {
    if (editorMode_) HideEditor();
    else ShowEditor();
    Key = 0;
  }
}

void TCustomGrid::MouseDown(TMouseButton Button, TShiftState Shift, int X, int Y) {
  if (CanFocus() && !ComponentState().Contains(csDesigning)) {
    TWinControl* focused = Screen->ActiveControl();
    if (!focused || !ContainsControl(focused)) SetFocus();
  }
  if (Button == mbLeft && !Shift.Contains(ssDouble)) {
    TGridCoord hit = MouseCoord(X, Y);
    if (hit.X >= fixedCols_ && hit.Y >= fixedRows_) {
      if (options_.Contains(goEditing) && hit == current_) ShowEditor();
      else FocusCell(hit.X, hit.Y, !Shift.Contains(ssShift));
    }
  }
  inherited::MouseDown(Button, Shift, X, Y);
}

void TCustomGrid::Paint() {
  TWinControl* focused = Screen->ActiveControl();
  bool hasFocus = focused && ContainsControl(focused);
  TGridRect sel = Selection();
  auto paintCell = [&](int c, int r) {
    TRect rect = CellRect(c, r);
    if (rect.IsEmpty()) return;
    TGridDrawState state;
    bool fixed = c < fixedCols_ || r < fixedRows_;
    if (fixed) state << gdFixed;
    else if (c >= sel.Left && c <= sel.Right && r >= sel.Top && r <= sel.Bottom) state << gdSelected;
    if (!fixed && c == current_.X && r == current_.Y && hasFocus) state << gdFocused;
    if (defaultDrawing_) {
      TCanvas* cv = Canvas();
      cv->SetFont(Font());
      bool highlight = state.Contains(gdSelected) && (!state.Contains(gdFocused) || options_.Contains(goDrawFocusSelected) ||
                                                      options_.Contains(goRowSelect));
      cv->Brush()->SetColor(fixed ? fixedColor_ : highlight ? clHighlight : Color());
      if (highlight) cv->Font()->SetColor(clHighlightText);
      cv->FillRect(rect);
    }
    DrawCell(c, r, rect, state);
  };
  std::vector<int> rows, cols;
  for (int r = 0; r < fixedRows_; ++r) rows.push_back(r);
  for (int r = topLeft_.Y; r < RowCount() && r < topLeft_.Y + VisibleRowCount() + 1; ++r) rows.push_back(r);
  for (int c = 0; c < fixedCols_; ++c) cols.push_back(c);
  for (int c = topLeft_.X; c < ColCount() && c < topLeft_.X + VisibleColCount() + 1; ++c) cols.push_back(c);
  for (int r : rows)
    for (int c : cols) paintCell(c, r);
}

// ---- TDrawGrid ---------------------------------------------------------------------------

KELMAR_PUBLISH(TDrawGrid) {
  r.Prop(u"OnColumnMoved", &TDrawGrid::OnColumnMoved);
  r.Prop(u"OnDrawCell", &TDrawGrid::OnDrawCell);
  r.Prop(u"OnGetEditText", &TDrawGrid::OnGetEditText);
  r.Prop(u"OnRowMoved", &TDrawGrid::OnRowMoved);
  r.Prop(u"OnSelectCell", &TDrawGrid::OnSelectCell);
  r.Prop(u"OnSetEditText", &TDrawGrid::OnSetEditText);
  r.Prop(u"OnTopLeftChanged", &TDrawGrid::OnTopLeftChanged);
}

String TDrawGrid::GetEditText(int ACol, int ARow) {
  String value;
  OnGetEditText(this, ACol, ARow, value);
  return value;
}

void TDrawGrid::SetEditText(int ACol, int ARow, const String& Value) { OnSetEditText(this, ACol, ARow, Value); }

bool TDrawGrid::SelectCell(int ACol, int ARow) {
  bool can = true;
  OnSelectCell(this, ACol, ARow, can);
  return can;
}

void TDrawGrid::DrawCell(int ACol, int ARow, const TRect& ARect, TGridDrawState AState) {
  OnDrawCell(this, ACol, ARow, ARect, AState);
}

// ---- TStringGrid ---------------------------------------------------------------------------

KELMAR_PUBLISH(TStringGrid) {}

void TStringGrid::CheckCell(int ACol, int ARow) const {
  if (ACol < 0 || ARow < 0 || ACol >= ColCount() || ARow >= RowCount()) throw EListError(u"Grid index out of range");
}

String TStringGrid::Cells(int ACol, int ARow) const {
  auto it = cells_.find({ACol, ARow});
  return it == cells_.end() ? String() : it->second;
}

void TStringGrid::SetCells(int ACol, int ARow, const String& Value) {
  CheckCell(ACol, ARow);
  if (Value.IsEmpty()) cells_.erase({ACol, ARow});
  else cells_[{ACol, ARow}] = Value;
  if (ACol == Col() && ARow == Row()) InvalidateEditor();
  Invalidate();
}

TObject* TStringGrid::Objects(int ACol, int ARow) const {
  auto it = objects_.find({ACol, ARow});
  return it == objects_.end() ? nullptr : it->second;
}

void TStringGrid::SetObjects(int ACol, int ARow, TObject* Value) {
  CheckCell(ACol, ARow);
  if (Value) objects_[{ACol, ARow}] = Value;
  else objects_.erase({ACol, ARow});
}

String TStringGrid::GetEditText(int ACol, int ARow) {
  if (OnGetEditText) return TDrawGrid::GetEditText(ACol, ARow);
  return Cells(ACol, ARow);
}

void TStringGrid::SetEditText(int ACol, int ARow, const String& Value) {
  if (Value.IsEmpty()) cells_.erase({ACol, ARow});
  else cells_[{ACol, ARow}] = Value;
  TDrawGrid::SetEditText(ACol, ARow, Value);
}

void TStringGrid::DrawCell(int ACol, int ARow, const TRect& ARect, TGridDrawState AState) {
  if (DefaultDrawing()) Canvas()->TextRect(ARect, ARect.Left + 2, ARect.Top + 2, Cells(ACol, ARow));
  TDrawGrid::DrawCell(ACol, ARow, ARect, AState);
}

namespace {
// Moves entry `from` to `to` along one axis of a cell map, shifting the rest.
template <class V>
void MoveAxis(std::map<std::pair<int, int>, V>& cells, int from, int to, bool columns) {
  std::map<std::pair<int, int>, V> moved;
  for (auto& [key, value] : cells) {
    int i = columns ? key.first : key.second;
    int j = i;
    if (i == from) j = to;
    else if (from < to && i > from && i <= to) j = i - 1;
    else if (from > to && i >= to && i < from) j = i + 1;
    moved[columns ? std::make_pair(j, key.second) : std::make_pair(key.first, j)] = value;
  }
  cells.swap(moved);
}
template <class V>
void Crop(std::map<std::pair<int, int>, V>& cells, int cols, int rows) {
  for (auto it = cells.begin(); it != cells.end();)
    it = it->first.first >= cols || it->first.second >= rows ? cells.erase(it) : std::next(it);
}
}  // namespace

void TStringGrid::ColumnMoved(int FromIndex, int ToIndex) {
  MoveAxis(cells_, FromIndex, ToIndex, true);
  MoveAxis(objects_, FromIndex, ToIndex, true);
  TDrawGrid::ColumnMoved(FromIndex, ToIndex);
}

void TStringGrid::RowMoved(int FromIndex, int ToIndex) {
  MoveAxis(cells_, FromIndex, ToIndex, false);
  MoveAxis(objects_, FromIndex, ToIndex, false);
  TDrawGrid::RowMoved(FromIndex, ToIndex);
}

void TStringGrid::SizeChanged(int, int) {
  Crop(cells_, ColCount(), RowCount());
  Crop(objects_, ColCount(), RowCount());
}
