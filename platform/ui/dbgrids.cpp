#include "platform/ui/dbgrids.h"

#include <algorithm>

#include "platform/rtl/sysutils.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/forms.h"

namespace {
constexpr int kIndicatorWidth = 11;
}

// ---- TGridDataLink -------------------------------------------------------------------

KELMAR_PUBLISH(TGridDataLink) {}

void TGridDataLink::ActiveChanged() {
  modified_ = false;
  grid_->LinkActive(Active());
}

void TGridDataLink::DataSetChanged() {
  grid_->DataChanged();
  modified_ = false;
}

void TGridDataLink::DataSetScrolled(int Distance) { grid_->Scroll(Distance); }

void TGridDataLink::EditingChanged() { grid_->EditingChanged(); }

void TGridDataLink::LayoutChanged() {
  grid_->LayoutChanged();
  grid_->DataChanged();
}

void TGridDataLink::RecordChanged(TField* Field) {
  grid_->RecordChanged(Field);
  modified_ = false;
}

void TGridDataLink::UpdateData() {
  if (!modified_) return;
  grid_->UpdateData();
  modified_ = false;
}

void TGridDataLink::FocusControl(TField* Field) {
  if (!Field) return;
  for (int i = 0; i < grid_->Columns()->Count(); ++i)
    if (grid_->Columns()->Items(i)->Field() == Field) {
      grid_->SetSelectedIndex(i);
      if (grid_->CanFocus()) grid_->SetFocus();
      return;
    }
}

void TGridDataLink::Reset() {
  if (modified_) {
    modified_ = false;
    grid_->RecordChanged(nullptr);
  } else if (TDataSet* ds = DataSet()) {
    ds->Cancel();
  }
}

// ---- TBookmarkList ----------------------------------------------------------------------

TBookmark TBookmarkList::Items(int index) const {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return items_[static_cast<size_t>(index)];
}

TBookmark TBookmarkList::Current() const {
  TDataSet* ds = grid_->DataLink()->DataSet();
  TRecordStore::RowId row;
  if (!ds || !ds->Active() || !ds->ActiveRow(row)) return TBookmark();
  return TBookmark{static_cast<int64_t>(row)};
}

int TBookmarkList::IndexOf(const TBookmark& bookmark) const {
  auto it = std::lower_bound(items_.begin(), items_.end(), bookmark);
  return it != items_.end() && *it == bookmark ? static_cast<int>(it - items_.begin()) : -1;
}

bool TBookmarkList::CurrentRowSelected() const {
  TBookmark b = Current();
  return b.Assigned() && IndexOf(b) >= 0;
}

void TBookmarkList::SetCurrentRowSelected(bool v) {
  TBookmark b = Current();
  if (!b.Assigned()) return;
  auto it = std::lower_bound(items_.begin(), items_.end(), b);
  bool present = it != items_.end() && *it == b;
  if (v && !present) items_.insert(it, b);
  else if (!v && present) items_.erase(it);
  grid_->Invalidate();
}

void TBookmarkList::Clear() {
  if (items_.empty()) return;
  items_.clear();
  grid_->Invalidate();
}

void TBookmarkList::Delete() {
  TDataSet* ds = grid_->DataLink()->DataSet();
  if (!ds) return;
  ds->DisableControls();
  try {
    while (!items_.empty()) {
      TBookmark b = items_.back();
      if (ds->BookmarkValid(b)) {
        ds->GotoBookmark(b);
        ds->Delete();
      }
      items_.pop_back();
    }
  } catch (...) {
    ds->EnableControls();
    throw;
  }
  ds->EnableControls();
}

bool TBookmarkList::Refresh() {
  TDataSet* ds = grid_->DataLink()->DataSet();
  size_t before = items_.size();
  std::erase_if(items_, [ds](const TBookmark& b) { return !ds || !ds->BookmarkValid(b); });
  return items_.size() != before;
}

// ---- TCustomDBGrid --------------------------------------------------------------------

KELMAR_PUBLISH(TCustomDBGrid) {
  r.Prop(u"Columns", &TCustomDBGrid::Columns, &TCustomDBGrid::SetColumns);
  r.Prop(u"DataSource", &TCustomDBGrid::DataSource, &TCustomDBGrid::SetDataSource);
  r.Prop(u"Options", &TCustomDBGrid::Options, &TCustomDBGrid::SetOptions);
  r.Prop(u"ReadOnly", &TCustomDBGrid::ReadOnly, &TCustomDBGrid::SetReadOnly).Default = 0;
  r.Prop(u"TitleFont", &TCustomDBGrid::TitleFont, &TCustomDBGrid::SetTitleFont);
  r.Prop(u"OnCellClick", &TCustomDBGrid::OnCellClick);
  r.Prop(u"OnColEnter", &TCustomDBGrid::OnColEnter);
  r.Prop(u"OnColExit", &TCustomDBGrid::OnColExit);
  r.Prop(u"OnDrawColumnCell", &TCustomDBGrid::OnDrawColumnCell);
  r.Prop(u"OnEditButtonClick", &TCustomDBGrid::OnEditButtonClick);
  r.Prop(u"OnTitleClick", &TCustomDBGrid::OnTitleClick);
}

TCustomDBGrid::TCustomDBGrid(TComponent* AOwner)
    : TCustomGrid(AOwner),
      dataLink_(std::make_unique<TGridDataLink>(this)),
      columns_(std::make_unique<TDBGridColumns>(this)),
      titleFont_(std::make_unique<TFont>()),
      selectedRows_(std::make_unique<TBookmarkList>(this)) {
  titleFont_->OnChange = [this](TObject*) { LayoutChanged(); };
  SetDefaultRowHeight(17);
  SyncGridOptions();
  LayoutChanged();
}

TCustomDBGrid::~TCustomDBGrid() {
  // The link must not call back into a grid that is going away.
  dataLink_->SetDataSource(nullptr);
  titleFont_->OnChange = nullptr;
}

void TCustomDBGrid::SetDataSource(TDataSource* v) {
  if (v == DataSource()) return;
  if (DataSource()) DataSource()->RemoveFreeNotification(this);
  dataLink_->SetDataSource(v);
  if (v) v->FreeNotification(this);
  LinkActive(dataLink_->Active());
}

void TCustomDBGrid::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == DataSource()) {
    dataLink_->SetDataSource(nullptr);
    LinkActive(false);
  }
}

void TCustomDBGrid::SyncGridOptions() {
  TGridOptions go{goFixedVertLine, goFixedHorzLine};
  if (dbOptions_.Contains(dgEditing)) go << goEditing;
  if (dbOptions_.Contains(dgAlwaysShowEditor)) go << goAlwaysShowEditor;
  if (dbOptions_.Contains(dgColLines)) go << goVertLine;
  if (dbOptions_.Contains(dgRowLines)) go << goHorzLine;
  if (dbOptions_.Contains(dgColumnResize)) go << goColSizing << goColMoving;
  if (dbOptions_.Contains(dgTabs)) go << goTabs;
  if (dbOptions_.Contains(dgRowSelect)) go << goRowSelect;
  TCustomGrid::SetOptions(go);
}

void TCustomDBGrid::SetOptions(TDBGridOptions v) {
  if (v == dbOptions_) return;
  // Row selection and always showing the editor do not go together.
  if (v.Contains(dgRowSelect)) v >> dgAlwaysShowEditor >> dgEditing;
  bool layout = v.Contains(dgIndicator) != dbOptions_.Contains(dgIndicator) ||
                v.Contains(dgTitles) != dbOptions_.Contains(dgTitles);
  dbOptions_ = v;
  SyncGridOptions();
  if (layout) LayoutChanged();
  Invalidate();
}

// ---- Layout ------------------------------------------------------------------------------

void TCustomDBGrid::EndLayout() {
  if (layoutLock_ > 0 && --layoutLock_ == 0) LayoutChanged();
}

int TCustomDBGrid::DataRowsThatFit() const {
  int title = TitleOffset() ? RowHeights(0) + GridLineWidth() : 0;
  int row = DefaultRowHeight() + GridLineWidth();
  return std::max(1, (ClientHeight() - title) / std::max(1, row));
}

void TCustomDBGrid::LayoutChanged() {
  if (layoutLock_ > 0) return;
  ++layoutLock_;
  try {
    if (columns_->State() == csDefault && !columns_->MatchesFields()) columns_->BuildDefault();
    int indicator = IndicatorOffset();
    SetColCount(std::max(1, columns_->Count() + indicator));
    if (ColCount() > indicator) SetFixedCols(indicator);
    if (indicator) SetColWidths(0, kIndicatorWidth);
    for (int i = 0; i < columns_->Count(); ++i) {
      TColumn* c = columns_->Items(i);
      SetColWidths(i + indicator, c->Showing() ? c->Width() : 0);
    }
    if (RowCount() < TitleOffset() + 1) SetRowCount(TitleOffset() + 1);
    SetFixedRows(TitleOffset());
    dataLink_->SetBufferCount(DataRowsThatFit());
    UpdateRowCount();
    UpdateActive();
  } catch (...) {
    --layoutLock_;
    throw;
  }
  --layoutLock_;
  Invalidate();
}

void TCustomDBGrid::UpdateBuffer() {
  if (layoutLock_ > 0 || !dataLink_->Active()) return;
  dataLink_->SetBufferCount(DataRowsThatFit());
  UpdateRowCount();
  UpdateActive();
}

void TCustomDBGrid::Resize() {
  inherited::Resize();
  UpdateBuffer();
}

void TCustomDBGrid::RowHeightsChanged() {
  inherited::RowHeightsChanged();
  UpdateBuffer();
}

void TCustomDBGrid::UpdateRowCount() {
  int rows = dataLink_->Active() ? std::max(1, dataLink_->RecordCount()) : 1;
  SetRowCount(TitleOffset() + rows);
}

void TCustomDBGrid::UpdateActive() {
  if (!dataLink_->Active()) return;
  int row = TitleOffset() + dataLink_->ActiveRecord();
  if (row >= RowCount()) row = RowCount() - 1;
  SetCurrent({std::max(Col(), IndicatorOffset()), row});
  MoveTopLeft(LeftCol(), TitleOffset());
}

void TCustomDBGrid::LinkActive(bool) {
  LayoutChanged();
  DataChanged();
}

void TCustomDBGrid::DataChanged() {
  if (layoutLock_ > 0) return;
  UpdateRowCount();
  UpdateActive();
  InvalidateEditor();
  Invalidate();
}

void TCustomDBGrid::Scroll(int) {
  UpdateRowCount();
  UpdateActive();
  InvalidateEditor();
  Invalidate();
}

void TCustomDBGrid::RecordChanged(TField* Field) {
  if ((!Field || Field == SelectedField()) && InplaceEditor()) {
    InplaceEditor()->Deselect();
    InvalidateEditor();
  }
  Invalidate();
}

void TCustomDBGrid::UpdateData() {
  if (TField* f = SelectedField()) f->SetText(editText_);
}

// ---- Columns and fields ----------------------------------------------------------------

int TCustomDBGrid::SelectedIndex() const { return RawToDataColumn(Col()); }

void TCustomDBGrid::SetSelectedIndex(int v) { MoveCol(DataToRawColumn(v), 0); }

TField* TCustomDBGrid::SelectedField() const {
  int i = SelectedIndex();
  return i >= 0 && i < columns_->Count() ? columns_->Items(i)->Field() : nullptr;
}

void TCustomDBGrid::SetSelectedField(TField* v) {
  if (!v) return;
  for (int i = 0; i < columns_->Count(); ++i)
    if (columns_->Items(i)->Field() == v) {
      SetSelectedIndex(i);
      return;
    }
}

TField* TCustomDBGrid::Fields(int index) const {
  if (index < 0 || index >= FieldCount()) return nullptr;
  return columns_->Items(index)->Field();
}

bool TCustomDBGrid::TabStops(int ACol) const {
  int i = RawToDataColumn(ACol);
  return i >= 0 && i < columns_->Count() && columns_->Items(i)->Showing();
}

void TCustomDBGrid::MoveCol(int RawCol, int Direction) {
  dataLink_->UpdateRecord();
  int indicator = IndicatorOffset();
  RawCol = std::clamp(RawCol, indicator, std::max(indicator, ColCount() - 1));
  if (Direction != 0) {
    while (RawCol < ColCount() && RawCol >= indicator && !TabStops(RawCol)) RawCol += Direction;
    if (RawCol >= ColCount() || RawCol < indicator || !TabStops(RawCol)) return;
  }
  if (RawCol == Col()) return;
  if (!inColExit_) {
    int oldCol = Col();
    inColExit_ = true;
    try {
      ColExit();
    } catch (...) {
      inColExit_ = false;
      throw;
    }
    inColExit_ = false;
    if (Col() != oldCol) return;  // the handler moved on by itself
  }
  FocusCell(RawCol, Row(), true);
  ColEnter();
}

// ---- Keyboard and mouse ----------------------------------------------------------------

void TCustomDBGrid::ClearSelection() {
  if (dbOptions_.Contains(dgMultiSelect)) selectedRows_->Clear();
}

void TCustomDBGrid::NextRow(bool select) {
  TDataSet* ds = dataLink_->DataSet();
  bool marking = select && dbOptions_.Contains(dgMultiSelect);
  if (marking) selectedRows_->SetCurrentRowSelected(true);
  else ClearSelection();
  if (ds->State() == dsInsert && !ds->Modified() && !dataLink_->Modified()) {
    if (dataLink_->Eof()) return;
    ds->Cancel();
  } else {
    dataLink_->MoveBy(1);
  }
  if (marking) selectedRows_->SetCurrentRowSelected(true);
  if (dataLink_->Eof() && ds->CanModify() && !readOnly_ && dbOptions_.Contains(dgEditing)) ds->Append();
}

void TCustomDBGrid::PriorRow(bool select) {
  TDataSet* ds = dataLink_->DataSet();
  bool marking = select && dbOptions_.Contains(dgMultiSelect);
  if (marking) selectedRows_->SetCurrentRowSelected(true);
  else ClearSelection();
  if (ds->State() == dsInsert && !ds->Modified() && dataLink_->Eof() && !dataLink_->Modified()) ds->Cancel();
  else dataLink_->MoveBy(-1);
  if (marking) selectedRows_->SetCurrentRowSelected(true);
}

void TCustomDBGrid::Tab(bool goForward) {
  int col = Col();
  while (true) {
    col += goForward ? 1 : -1;
    if (col >= ColCount()) {
      NextRow();
      col = IndicatorOffset() - 1;
      goForward = true;
      if (dataLink_->Eof() && dataLink_->DataSet()->State() != dsInsert) return;
      continue;
    }
    if (col < IndicatorOffset()) {
      if (dataLink_->Bof()) return;
      PriorRow();
      col = ColCount();
      continue;
    }
    if (TabStops(col)) break;
  }
  MoveCol(col, 0);
}

void TCustomDBGrid::KeyDown(Word& Key, TShiftState Shift) {
  OnKeyDown(this, Key, Shift);
  if (Key == 0 || !dataLink_->Active() || !CanGridAcceptKey(Key, Shift)) return;
  TDataSet* ds = dataLink_->DataSet();
  if (Shift.Contains(ssCtrl)) {
    switch (Key) {
      case VK_UP: case VK_PRIOR: dataLink_->MoveBy(-dataLink_->ActiveRecord()); break;
      case VK_DOWN: case VK_NEXT:
        dataLink_->MoveBy(dataLink_->BufferCount() - dataLink_->ActiveRecord() - 1);
        break;
      case VK_LEFT: MoveCol(IndicatorOffset(), 1); break;
      case VK_RIGHT: MoveCol(ColCount() - 1, -1); break;
      case VK_HOME: ds->First(); break;
      case VK_END: ds->Last(); break;
      case VK_DELETE:
        if (!readOnly_ && !ds->IsEmpty() && ds->CanModify() &&
            (!dbOptions_.Contains(dgConfirmDelete) ||
             MessageDlg(u"Delete record?", mtConfirmation, mbOKCancel) != mrCancel))
          ds->Delete();
        break;
      default: break;
    }
    return;
  }
  switch (Key) {
    case VK_UP: PriorRow(Shift.Contains(ssShift)); break;
    case VK_DOWN: NextRow(Shift.Contains(ssShift)); break;
    case VK_LEFT:
      if (dbOptions_.Contains(dgRowSelect)) PriorRow();
      else MoveCol(Col() - 1, -1);
      break;
    case VK_RIGHT:
      if (dbOptions_.Contains(dgRowSelect)) NextRow();
      else MoveCol(Col() + 1, 1);
      break;
    case VK_HOME: MoveCol(IndicatorOffset(), 1); break;
    case VK_END: MoveCol(ColCount() - 1, -1); break;
    case VK_NEXT: dataLink_->MoveBy(VisibleRowCount()); break;
    case VK_PRIOR: dataLink_->MoveBy(-VisibleRowCount()); break;
    case VK_INSERT:
      if (ds->CanModify() && !readOnly_ && dbOptions_.Contains(dgEditing)) ds->Insert();
      break;
    case VK_TAB:
      if (!Shift.Contains(ssAlt)) Tab(!Shift.Contains(ssShift));
      break;
    case VK_ESCAPE:
      dataLink_->Reset();
      if (!dbOptions_.Contains(dgAlwaysShowEditor)) HideEditor();
      break;
    case VK_F2: SetEditorMode(true); break;
    default: break;
  }
}

void TCustomDBGrid::KeyPress(WideChar& Key) {
  if (!dbOptions_.Contains(dgAlwaysShowEditor) && Key == 13) dataLink_->UpdateRecord();
  inherited::KeyPress(Key);
}

void TCustomDBGrid::MouseDown(TMouseButton Button, TShiftState Shift, int X, int Y) {
  if (CanFocus() && !ComponentState().Contains(csDesigning)) {
    TWinControl* focused = Screen->ActiveControl();
    if (!focused || !ContainsControl(focused)) SetFocus();
  }
  TControl::MouseDown(Button, Shift, X, Y);
  if (Shift.Contains(ssDouble) || Button != mbLeft) return;
  TGridCoord cell = MouseCoord(X, Y);
  titleDown_ = {-1, -1};
  if (cell.X < 0 || cell.Y < 0) return;
  if (cell.Y < TitleOffset()) {
    dataLink_->UpdateRecord();
    titleDown_ = cell;
    return;
  }
  if (!dataLink_->Active()) return;
  if (cell.X == Col() && cell.Y == Row() && !Shift.Contains(ssCtrl)) {
    if (dbOptions_.Contains(dgEditing)) ShowEditor();
  } else {
    dataLink_->UpdateRecord();
    if (!Shift.Contains(ssCtrl)) ClearSelection();
    if (cell.Y - Row() != 0) dataLink_->MoveBy(cell.Y - Row());
    if (cell.X >= IndicatorOffset()) MoveCol(cell.X, 0);
  }
  if (Shift.Contains(ssCtrl) && dbOptions_.Contains(dgMultiSelect))
    selectedRows_->SetCurrentRowSelected(!selectedRows_->CurrentRowSelected());
  int i = SelectedIndex();
  if (i >= 0 && i < columns_->Count()) CellClick(columns_->Items(i));
}

void TCustomDBGrid::MouseUp(TMouseButton Button, TShiftState Shift, int X, int Y) {
  TGridCoord cell = MouseCoord(X, Y);
  TGridCoord down = titleDown_;
  titleDown_ = {-1, -1};
  inherited::MouseUp(Button, Shift, X, Y);
  if (Button == mbLeft && dbOptions_.Contains(dgTitles) && cell.Y >= 0 && cell.Y < TitleOffset() && cell == down) {
    int i = RawToDataColumn(cell.X);
    if (i >= 0 && i < columns_->Count()) TitleClick(columns_->Items(i));
  }
}

void TCustomDBGrid::DoExit() {
  TDataSet* ds = dataLink_->DataSet();
  if (dbOptions_.Contains(dgCancelOnExit) && ds && ds->State() == dsInsert && !ds->Modified() &&
      !dataLink_->Modified())
    ds->Cancel();
  inherited::DoExit();
}

// ---- Editing --------------------------------------------------------------------------

String TCustomDBGrid::GetEditText(int ACol, int) {
  TField* f = Fields(RawToDataColumn(ACol));
  editText_ = f ? f->EditText() : String();
  return editText_;
}

void TCustomDBGrid::SetEditText(int, int, const String& Value) { editText_ = Value; }

String TCustomDBGrid::GetEditMask(int ACol, int) {
  TField* f = Fields(RawToDataColumn(ACol));
  return f ? f->EditMask() : String();
}

TEditStyle TCustomDBGrid::GetEditStyle(int ACol, int) {
  int i = RawToDataColumn(ACol);
  if (i < 0 || i >= columns_->Count()) return esSimple;
  TColumn* c = columns_->Items(i);
  if (c->ButtonStyle() == cbsEllipsis) return esEllipsis;
  if (c->ButtonStyle() == cbsAuto && c->PickList()->Count() > 0) return esPickList;
  return esSimple;
}

void TCustomDBGrid::GetPickList(int ACol, int, TStrings* List) {
  int i = RawToDataColumn(ACol);
  if (i >= 0 && i < columns_->Count()) List->Assign(columns_->Items(i)->PickList());
}

int TCustomDBGrid::GetEditLimit() {
  TField* f = SelectedField();
  if (!f) return 0;
  TFieldType t = f->DataType();
  return t == ftString || t == ftWideString || t == ftFixedChar || t == ftFixedWideChar ? f->Size() : 0;
}

bool TCustomDBGrid::CanEditShow() {
  return layoutLock_ == 0 && dataLink_->Active() && SelectedField() && inherited::CanEditShow();
}

bool TCustomDBGrid::CanEditModify() {
  if (readOnly_ || !dataLink_->Active() || dataLink_->ReadOnly()) return false;
  int i = SelectedIndex();
  if (i < 0 || i >= columns_->Count()) return false;
  TColumn* column = columns_->Items(i);
  TField* f = column->Field();
  if (column->ReadOnly() || !f || !f->CanModify() || f->IsBlob()) return false;
  dataLink_->Edit();
  if (!dataLink_->Editing()) return false;
  dataLink_->SetModified();
  return true;
}

// ---- Drawing --------------------------------------------------------------------------

void TCustomDBGrid::DrawColumnCell(const TRect& Rect, int DataCol, TColumn* Column, TGridDrawState State) {
  OnDrawColumnCell(this, Rect, DataCol, Column, State);
}

void TCustomDBGrid::DefaultDrawColumnCell(const TRect& Rect, int, TColumn* Column, TGridDrawState) {
  TField* f = Column ? Column->Field() : nullptr;
  String text = f ? f->DisplayText() : String();
  TTextFormat format{tfSingleLine, tfVerticalCenter};
  TAlignment a = Column ? Column->Alignment() : taLeftJustify;
  format << (a == taRightJustify ? tfRight : a == taCenter ? tfCenter : tfLeft);
  Canvas()->TextRect(Rect, text, format);
}

void TCustomDBGrid::DrawCell(int ACol, int ARow, const TRect& ARect, TGridDrawState AState) {
  TCanvas* cv = Canvas();
  bool indicator = ACol < IndicatorOffset();
  if (ARow < TitleOffset()) {
    int i = RawToDataColumn(ACol);
    if (indicator || i >= columns_->Count()) return;
    TColumnTitle* title = columns_->Items(i)->Title();
    cv->SetFont(title->Font());
    cv->Brush()->SetColor(title->Color());
    cv->FillRect(ARect);
    TTextFormat format{tfSingleLine, tfVerticalCenter};
    TAlignment a = title->Alignment();
    format << (a == taRightJustify ? tfRight : a == taCenter ? tfCenter : tfLeft);
    cv->TextRect(ARect, title->Caption(), format);
    return;
  }
  if (!dataLink_->Active()) return;
  int record = ARow - TitleOffset();
  if (record >= dataLink_->RecordCount()) return;
  if (indicator) {
    if (record != dataLink_->ActiveRecord()) return;
    TDataSetState s = dataLink_->DataSet()->State();
    cv->TextRect(ARect, s == dsInsert ? u"*" : s == dsEdit ? u"I" : u"\u25B6", TTextFormat{tfCenter, tfSingleLine});
    return;
  }
  int i = RawToDataColumn(ACol);
  if (i < 0 || i >= columns_->Count()) return;
  TColumn* column = columns_->Items(i);
  if (!column->Showing()) return;
  int oldActive = dataLink_->ActiveRecord();
  dataLink_->SetActiveRecord(record);
  try {
    cv->SetFont(column->Font());
    cv->Brush()->SetColor(column->Color());
    TWinControl* focused = Screen->ActiveControl();
    bool hasFocus = focused && ContainsControl(focused);
    bool marked = dbOptions_.Contains(dgMultiSelect) && selectedRows_->CurrentRowSelected();
    bool highlight = marked || (AState.Contains(gdSelected) &&
                                (dbOptions_.Contains(dgAlwaysShowSelection) || hasFocus) &&
                                (dbOptions_.Contains(dgRowSelect) || !AState.Contains(gdFocused)));
    if (highlight) {
      cv->Brush()->SetColor(clHighlight);
      cv->Font()->SetColor(clHighlightText);
    }
    if (DefaultDrawing()) {
      cv->FillRect(ARect);
      DefaultDrawColumnCell(ARect, i, column, AState);
    }
    DrawColumnCell(ARect, i, column, AState);
  } catch (...) {
    dataLink_->SetActiveRecord(oldActive);
    throw;
  }
  dataLink_->SetActiveRecord(oldActive);
}

KELMAR_PUBLISH(TDBGrid) {}

