#include "platform/ui/grids.h"

#include "platform/ui/input.h"
#include "tests/platform/ui/uifixture.h"

class GridTest : public UiTest {
 protected:
  void SetUp() override {
    UiTest::SetUp();
    grid = Add<TStringGrid>();
    grid->SetBounds(0, 0, 300, 130);  // 4 columns and 4 rows of 64 x 24 show fully
    grid->SetColCount(6);
    grid->SetRowCount(10);
    grid->SetFocus();
  }
  TStringGrid* grid = nullptr;
};

TEST_F(GridTest, ArrowsHomeEndAndPagesMoveTheCurrentCell) {
  EXPECT_EQ(grid->Col(), 1);
  EXPECT_EQ(grid->Row(), 1);
  PressKey(VK_RIGHT);
  PressKey(VK_DOWN);
  EXPECT_EQ(grid->Col(), 2);
  EXPECT_EQ(grid->Row(), 2);
  PressKey(VK_END);
  EXPECT_EQ(grid->Col(), 5);
  EXPECT_GT(grid->LeftCol(), 1);  // scrolled to show it
  PressKey(VK_HOME);
  EXPECT_EQ(grid->Col(), 1);
  EXPECT_EQ(grid->LeftCol(), 1);
  int page = grid->VisibleRowCount();
  EXPECT_EQ(page, 4);
  PressKey(VK_NEXT);
  EXPECT_EQ(grid->Row(), 2 + page);
  PressKey(VK_END, {ssCtrl});
  EXPECT_EQ(grid->Row(), 9);
  EXPECT_EQ(grid->TopRow(), 9 - page + 1);
  PressKey(VK_HOME, {ssCtrl});
  EXPECT_EQ(grid->Col(), 1);
  EXPECT_EQ(grid->Row(), 1);
  PressKey(VK_UP);  // the fixed row is never current
  EXPECT_EQ(grid->Row(), 1);
}

TEST_F(GridTest, TabWalksTheCellsWhenGridWantsIt) {
  grid->SetOptions(grid->Options() << goTabs);
  grid->SetCol(5);
  PressKey(VK_TAB);
  EXPECT_EQ(grid->Col(), 1);
  EXPECT_EQ(grid->Row(), 2);
  PressKey(VK_TAB, {ssShift});
  EXPECT_EQ(grid->Col(), 5);
  EXPECT_EQ(grid->Row(), 1);
  EXPECT_TRUE(grid->Focused());
}

TEST_F(GridTest, RowSelectMovesRowsWithLeftAndRight) {
  grid->SetOptions(grid->Options() << goRowSelect);
  PressKey(VK_RIGHT);
  EXPECT_EQ(grid->Row(), 2);
  EXPECT_EQ(grid->Col(), 1);
  EXPECT_EQ(grid->Selection(), (TGridRect{1, 2, 5, 2}));
}

TEST_F(GridTest, SelectCellCanRefuse) {
  grid->OnSelectCell = [](TObject*, int c, int, bool& can) { can = c != 2; };
  PressKey(VK_RIGHT);
  EXPECT_EQ(grid->Col(), 1);
}

TEST_F(GridTest, EditingCycleF2TypeEnterAndEscape) {
  grid->SetOptions(grid->Options() << goEditing);
  grid->SetCells(1, 1, u"old");
  PressKey(VK_F2);
  ASSERT_TRUE(grid->EditorMode());
  TInplaceEdit* ed = grid->InplaceEditor();
  ASSERT_NE(ed, nullptr);
  EXPECT_TRUE(ed->Focused());
  EXPECT_EQ(ed->Text(), u"old");
  EXPECT_EQ(ed->SelLength(), 3);
  TypeText(u"new");
  EXPECT_EQ(grid->Cells(1, 1), u"new");
  PressKey(VK_RETURN);  // hides the editor, the grid takes the focus back
  EXPECT_FALSE(grid->EditorMode());
  EXPECT_FALSE(ed->Visible());
  EXPECT_TRUE(grid->Focused());
  PressKey(VK_DOWN);
  TypeText(u"x");  // a typed character opens the editor and lands in it
  EXPECT_TRUE(grid->EditorMode());
  EXPECT_EQ(grid->Cells(1, 2), u"x");
  PressKey(VK_DOWN);  // moves on with the editor open
  EXPECT_EQ(grid->Row(), 3);
  EXPECT_TRUE(ed->Visible());
  EXPECT_TRUE(ed->Focused());
  PressKey(VK_ESCAPE);
  EXPECT_EQ(grid->Row(), 3);
}

TEST_F(GridTest, EditorNeedsGoEditingAndNoRowSelect) {
  PressKey(VK_F2);
  EXPECT_TRUE(grid->EditorMode());
  EXPECT_EQ(grid->InplaceEditor(), nullptr);
  grid->SetOptions(grid->Options() << goEditing << goRowSelect);
  grid->ShowEditor();
  EXPECT_EQ(grid->InplaceEditor(), nullptr);
}

TEST_F(GridTest, EditorTellsTheGridOfItsFocus) {
  std::vector<Word> codes;
  TWndMethod saved = grid->WindowProc;
  grid->WindowProc = [&](TMessage& m) {
    if (m.Msg == WM_COMMAND && m.WParamHi() != EN_CHANGE) codes.push_back(m.WParamHi());
    saved(m);
  };
  grid->SetOptions(grid->Options() << goEditing);
  grid->ShowEditor();
  grid->HideEditor();
  EXPECT_EQ(codes, (std::vector<Word>{EN_SETFOCUS, EN_KILLFOCUS}));
}

TEST_F(GridTest, MouseSelectsTheCellUnderIt) {
  TRect r = grid->CellRect(3, 2);
  EXPECT_EQ(r, Bounds(195, 50, 64, 24));
  EXPECT_EQ(grid->MouseCoord(196, 51), (TGridCoord{3, 2}));
  EXPECT_EQ(grid->MouseCoord(194, 51), (TGridCoord{2, 2}));
  EXPECT_EQ(grid->MouseCoord(10, 10), (TGridCoord{0, 0}));
  EXPECT_EQ(grid->MouseCoord(-1, 10).X, -1);
  MouseClick(grid, 200, 60);
  EXPECT_EQ(grid->Col(), 3);
  EXPECT_EQ(grid->Row(), 2);
}

TEST_F(GridTest, CellsAndTheirShape) {
  grid->SetCells(0, 0, u"Cod");
  EXPECT_EQ(grid->Cells(0, 0), u"Cod");
  EXPECT_EQ(grid->Cells(40, 40), u"");
  EXPECT_THROW(grid->SetCells(6, 0, u"x"), EListError);
  grid->SetCells(5, 9, u"corner");
  grid->SetColCount(3);
  grid->SetColCount(6);
  EXPECT_EQ(grid->Cells(5, 9), u"");
  grid->SetCells(1, 0, u"a");
  grid->SetCells(2, 0, u"b");
  grid->MoveColumn(1, 2);
  EXPECT_EQ(grid->Cells(1, 0), u"b");
  EXPECT_EQ(grid->Cells(2, 0), u"a");
  grid->SetColWidths(1, 100);
  EXPECT_EQ(grid->CellRect(2, 1).Left, 65 + 101);
  EXPECT_THROW(grid->ColWidths(99), EListError);
  EXPECT_THROW(grid->SetFixedCols(6), EInvalidOperation);
}

TEST_F(GridTest, PaintDrawsFixedAndSelectedCells) {
  grid->SetCells(0, 0, u"N");
  grid->SetCells(1, 1, u"A1");
  grid->Repaint();
  const TCanvasOp* title = grid->Canvas()->FindText(u"N");
  const TCanvasOp* cell = grid->Canvas()->FindText(u"A1");
  ASSERT_NE(title, nullptr);
  ASSERT_NE(cell, nullptr);
  EXPECT_EQ(title->BrushColor, clBtnFace);
  EXPECT_EQ(cell->Rect, grid->CellRect(1, 1));
  std::vector<TGridDrawState> states;
  grid->OnDrawCell = [&](TObject*, int c, int r, const TRect&, TGridDrawState s) {
    if (c == 1 && r == 1) states.push_back(s);
  };
  grid->Repaint();
  ASSERT_EQ(states.size(), 1u);
  EXPECT_TRUE(states[0].Contains(gdSelected));
  EXPECT_TRUE(states[0].Contains(gdFocused));
}
