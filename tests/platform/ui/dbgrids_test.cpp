#include "platform/ui/dbgrids.h"

#include "platform/db/memdataset.h"
#include "platform/ui/input.h"
#include "tests/platform/ui/uifixture.h"

class DBGridTest : public UiTest {
 protected:
  void SetUp() override {
    UiTest::SetUp();
    table = new TVirtualTable(form);
    table->AddField(u"ID", ftInteger);
    table->AddField(u"NAME", ftString, 20);
    table->Open();
    for (int i = 1; i <= 30; ++i) {
      table->Append();
      table->FieldByName(u"ID")->SetAsInteger(i);
      table->FieldByName(u"NAME")->SetAsString(u"N" + IntToStr(i));
      table->Post();
    }
    table->First();
    source = new TDataSource(form);
    source->SetDataSet(table);
    grid = Add<TDBGrid>();
    grid->SetBounds(0, 0, 300, 18 * 11);  // titles and ten rows
    grid->SetDataSource(source);
    grid->SetFocus();
  }
  TField* Id() { return table->FieldByName(u"ID"); }
  TField* Name() { return table->FieldByName(u"NAME"); }

  TVirtualTable* table = nullptr;
  TDataSource* source = nullptr;
  TDBGrid* grid = nullptr;
};

TEST_F(DBGridTest, DefaultColumnsFollowTheFields) {
  ASSERT_EQ(grid->Columns()->Count(), 2);
  EXPECT_EQ(grid->Columns()->State(), csDefault);
  EXPECT_EQ(grid->FieldCount(), 2);
  EXPECT_EQ(grid->Fields(1), Name());
  EXPECT_EQ(grid->ColCount(), 3);  // the indicator and two columns
  EXPECT_EQ(grid->SelectedIndex(), 0);
  EXPECT_EQ(grid->SelectedField(), Id());
  EXPECT_EQ(grid->Columns()->Items(1)->Title()->Caption(), u"NAME");
  // The link's window is the visible rows.
  EXPECT_EQ(grid->DataLink()->BufferCount(), 10);
  EXPECT_EQ(grid->RowCount(), 11);
}

TEST_F(DBGridTest, ArrowsAndPagesMoveTheRecord) {
  PressKey(VK_DOWN);
  PressKey(VK_DOWN);
  EXPECT_EQ(Id()->AsInteger(), 3);
  EXPECT_EQ(grid->Row(), 3);
  PressKey(VK_NEXT);
  EXPECT_EQ(Id()->AsInteger(), 13);
  EXPECT_EQ(grid->Row(), 10);  // the window followed
  PressKey(VK_END, {ssCtrl});
  EXPECT_EQ(Id()->AsInteger(), 30);
  PressKey(VK_HOME, {ssCtrl});
  EXPECT_EQ(Id()->AsInteger(), 1);
  PressKey(VK_RIGHT);
  EXPECT_EQ(grid->SelectedField(), Name());
  PressKey(VK_HOME);
  EXPECT_EQ(grid->SelectedIndex(), 0);
  PressKey(VK_UP);  // at the first record nothing moves
  EXPECT_EQ(Id()->AsInteger(), 1);
}

TEST_F(DBGridTest, TabWalksColumnsAndRecords) {
  int enters = 0, exits = 0;
  grid->OnColEnter = [&](TObject*) { ++enters; };
  grid->OnColExit = [&](TObject*) { ++exits; };
  PressKey(VK_TAB);
  EXPECT_EQ(grid->SelectedIndex(), 1);
  PressKey(VK_TAB);  // from the last column to the next record
  EXPECT_EQ(grid->SelectedIndex(), 0);
  EXPECT_EQ(Id()->AsInteger(), 2);
  EXPECT_EQ(enters, 2);
  EXPECT_EQ(exits, 2);
}

TEST_F(DBGridTest, EditingCycleF2TypeEnterDownPosts) {
  PressKey(VK_RIGHT);
  PressKey(VK_F2);
  ASSERT_TRUE(grid->EditorMode());
  TInplaceEdit* ed = grid->InplaceEditor();
  ASSERT_NE(ed, nullptr);
  EXPECT_EQ(ed->Text(), u"N1");
  EXPECT_EQ(table->State(), dsBrowse);
  TypeText(u"Unu");  // typing puts the record in edit
  EXPECT_EQ(table->State(), dsEdit);
  EXPECT_EQ(Name()->AsString(), u"N1");  // not written yet
  PressKey(VK_RETURN);  // writes the text and hides the editor
  EXPECT_EQ(Name()->AsString(), u"Unu");
  EXPECT_FALSE(grid->EditorMode());
  PressKey(VK_DOWN);  // leaving the record posts it
  EXPECT_EQ(table->State(), dsBrowse);
  table->First();
  EXPECT_EQ(Name()->AsString(), u"Unu");
}

TEST_F(DBGridTest, TypingOpensTheEditorOnlyWithDgEditing) {
  PressKey(VK_RIGHT);
  TypeText(u"X");
  EXPECT_TRUE(grid->EditorMode());
  EXPECT_EQ(grid->InplaceEditor()->Text(), u"X");
  PressKey(VK_ESCAPE);  // takes the text back
  EXPECT_EQ(grid->InplaceEditor()->Text(), u"N1");
  PressKey(VK_ESCAPE);  // cancels the record
  EXPECT_EQ(table->State(), dsBrowse);
  EXPECT_EQ(Name()->AsString(), u"N1");
  grid->SetOptions(grid->Options() >> dgEditing);
  std::vector<WideChar> pressed;
  grid->OnKeyPress = [&](TObject*, WideChar& k) { pressed.push_back(k); };
  grid->SetFocus();
  TypeText(u"q");
  EXPECT_FALSE(grid->EditorMode());
  EXPECT_EQ(pressed, std::vector<WideChar>{u'q'});
  EXPECT_EQ(table->State(), dsBrowse);
}

TEST_F(DBGridTest, ReadOnlyColumnsAndGridsRefuseTyping) {
  grid->Columns()->Items(1)->SetReadOnly(true);
  PressKey(VK_RIGHT);
  TypeText(u"Z");
  EXPECT_EQ(table->State(), dsBrowse);
  EXPECT_EQ(Name()->AsString(), u"N1");
  grid->Columns()->Items(1)->SetReadOnly(false);
  grid->SetReadOnly(true);
  TypeText(u"Z");
  EXPECT_EQ(table->State(), dsBrowse);
}

TEST_F(DBGridTest, InsertAndDownPastTheEndAppend) {
  PressKey(VK_INSERT);
  EXPECT_EQ(table->State(), dsInsert);
  PressKey(VK_DOWN);  // an untouched new record is cancelled
  EXPECT_EQ(table->State(), dsBrowse);
  EXPECT_EQ(table->RecordCount(), 30);
  PressKey(VK_END, {ssCtrl});
  PressKey(VK_DOWN);
  EXPECT_EQ(table->State(), dsInsert);
  TypeText(u"31");
  PressKey(VK_UP);
  EXPECT_EQ(table->State(), dsBrowse);
  EXPECT_EQ(table->RecordCount(), 31);
}

TEST_F(DBGridTest, CtrlDeleteAsksWithDgConfirmDelete) {
  ui.ExpectMessageDlg(u"Delete record?", mrCancel);
  PressKey(VK_DELETE, {ssCtrl});
  EXPECT_EQ(table->RecordCount(), 30);
  ui.ExpectMessageDlg(u"Delete record?", mrOk);
  PressKey(VK_DELETE, {ssCtrl});
  EXPECT_EQ(table->RecordCount(), 29);
  EXPECT_EQ(Id()->AsInteger(), 2);
  grid->SetOptions(grid->Options() >> dgConfirmDelete);
  PressKey(VK_DELETE, {ssCtrl});
  EXPECT_EQ(table->RecordCount(), 28);
  EXPECT_EQ(ui.Shown()[0].DlgType, mtConfirmation);
}

TEST_F(DBGridTest, MouseSelectsCellsAndTitlesClick) {
  TRect cell = grid->CellRect(2, 4);
  TColumn* clicked = nullptr;
  TColumn* title = nullptr;
  grid->OnCellClick = [&](TColumn* c) { clicked = c; };
  grid->OnTitleClick = [&](TColumn* c) { title = c; };
  MouseClick(grid, cell.Left + 2, cell.Top + 2);
  EXPECT_EQ(Id()->AsInteger(), 4);
  EXPECT_EQ(grid->SelectedIndex(), 1);
  EXPECT_EQ(clicked, grid->Columns()->Items(1));
  EXPECT_EQ(title, nullptr);
  TRect head = grid->CellRect(1, 0);
  MouseClick(grid, head.Left + 3, head.Top + 3);
  EXPECT_EQ(title, grid->Columns()->Items(0));
  EXPECT_EQ(Id()->AsInteger(), 4);
}

TEST_F(DBGridTest, DrawsTitlesAndTheVisibleRecords) {
  grid->Columns()->Items(1)->Title()->SetCaption(u"Nume");
  grid->Columns()->Items(1)->SetColor(clYellow);
  grid->Repaint();
  TCanvas* cv = grid->Canvas();
  ASSERT_NE(cv->FindText(u"Nume"), nullptr);
  ASSERT_NE(cv->FindText(u"N10"), nullptr);
  EXPECT_EQ(cv->FindText(u"N11"), nullptr);  // below the window
  const TCanvasOp* n5 = cv->FindText(u"N5");
  ASSERT_NE(n5, nullptr);
  EXPECT_EQ(n5->BrushColor, clYellow);
  EXPECT_EQ(n5->Rect, grid->CellRect(2, 5));
  EXPECT_TRUE(cv->FindText(u"5")->Format.Contains(tfRight));  // numbers align right
  int calls = 0;
  grid->OnDrawColumnCell = [&](TObject*, const TRect&, int col, TColumn* c, TGridDrawState) {
    if (col == 1 && c == grid->Columns()->Items(1)) ++calls;
  };
  grid->SetDefaultDrawing(false);
  grid->Repaint();
  EXPECT_EQ(calls, 10);
  EXPECT_EQ(grid->Canvas()->FindText(u"N5"), nullptr);
}

TEST_F(DBGridTest, ColumnsKeepAssignedValuesOnly) {
  TColumn* c = grid->Columns()->Items(1);
  EXPECT_TRUE(c->AssignedValues().Empty());
  EXPECT_EQ(c->Color(), grid->Color());
  c->SetWidth(120);
  c->Title()->SetAlignment(taCenter);
  c->Font()->SetStyle({fsBold});
  EXPECT_EQ(c->AssignedValues(), (TColumnValues{cvWidth, cvTitleAlignment, cvFont}));
  EXPECT_EQ(grid->ColWidths(2), 120);
  c->RestoreDefaults();
  EXPECT_TRUE(c->AssignedValues().Empty());
  EXPECT_NE(grid->ColWidths(2), 120);
  EXPECT_EQ(c->Title()->Alignment(), taLeftJustify);
}

TEST_F(DBGridTest, ColumnsStreamAndComeBack) {
  grid->Columns()->RebuildColumns();
  EXPECT_EQ(grid->Columns()->State(), csCustomized);
  TColumn* c = grid->Columns()->Items(1);
  c->SetWidth(99);
  c->Title()->SetCaption(u"Denumire");
  c->SetButtonStyle(cbsEllipsis);
  c->PickList()->SetText(u"_KB=2\nCheckOnEdit=1");
  grid->Columns()->Items(0)->SetVisible(false);
  TMemoryStream stream;
  grid->Columns()->SaveToStream(&stream);
  EXPECT_EQ(std::string(static_cast<const char*>(stream.Memory()), 4), "TPF0");
  grid->Columns()->SetState(csDefault);
  EXPECT_TRUE(grid->Columns()->Items(1)->AssignedValues().Empty());
  stream.SetPosition(0);
  grid->Columns()->LoadFromStream(&stream);
  ASSERT_EQ(grid->Columns()->Count(), 2);
  TColumn* back = grid->Columns()->Items(1);
  EXPECT_EQ(back->Width(), 99);
  EXPECT_EQ(back->Title()->Caption(), u"Denumire");
  EXPECT_EQ(back->ButtonStyle(), cbsEllipsis);
  EXPECT_EQ(back->PickList()->Values(u"_KB"), u"2");
  EXPECT_EQ(back->Field(), Name());
  EXPECT_FALSE(grid->Columns()->Items(0)->Visible());
  EXPECT_EQ(back->AssignedValues(), (TColumnValues{cvWidth, cvTitleCaption}));
  // A damaged stream changes nothing.
  TMemoryStream bad;
  bad.WriteBuffer(stream.Memory(), stream.Size() / 2);
  bad.SetPosition(0);
  EXPECT_THROW(grid->Columns()->LoadFromStream(&bad), EReadError);
  EXPECT_EQ(grid->Columns()->Items(1)->Width(), 99);
}

TEST_F(DBGridTest, SelectedFieldAndLayoutBrackets) {
  grid->SetSelectedField(Name());
  EXPECT_EQ(grid->SelectedIndex(), 1);
  grid->BeginLayout();
  grid->Columns()->Items(0)->SetWidth(10);
  EXPECT_NE(grid->ColWidths(1), 10);  // held until EndLayout
  grid->EndLayout();
  EXPECT_EQ(grid->ColWidths(1), 10);
  grid->SetOptions(grid->Options() >> dgIndicator >> dgTitles);
  EXPECT_EQ(grid->ColCount(), 2);
  EXPECT_EQ(grid->FixedRows(), 0);
  EXPECT_EQ(grid->SelectedField(), Name());
}

TEST_F(DBGridTest, ClosingTheDatasetEmptiesTheGrid) {
  table->Close();
  EXPECT_EQ(grid->RowCount(), 2);
  EXPECT_EQ(grid->SelectedField(), nullptr);
  grid->Repaint();
  EXPECT_EQ(grid->Canvas()->FindText(u"N1"), nullptr);
  table->Open();
  EXPECT_EQ(grid->RowCount(), 11);
  delete source;
  EXPECT_EQ(grid->DataSource(), nullptr);
  grid->Repaint();
}

TEST_F(DBGridTest, CancelOnExitDropsAnUntouchedNewRecord) {
  auto* other = Add<TEdit>();
  PressKey(VK_INSERT);
  other->SetFocus();
  EXPECT_EQ(table->State(), dsBrowse);
  EXPECT_EQ(table->RecordCount(), 30);
}

TEST_F(DBGridTest, PickListColumnsDropDownAndEllipsisColumnsRunTheButton) {
  TColumn* names = grid->Columns()->Items(1);
  names->PickList()->SetText(u"Alfa\nBeta\nGama");
  PressKey(VK_RIGHT);
  PressKey(VK_F2);
  TInplaceEdit* ed = grid->InplaceEditor();
  ASSERT_EQ(ed->EditStyle(), esPickList);
  // The message the kit dispatches to open the list: Alt+Down.
  TMessage open{WM_KEYDOWN, VK_DOWN, 0x20000000, 0};
  ed->Dispatch(open);
  EXPECT_TRUE(ed->ListVisible());
  PressKey(VK_DOWN);
  PressKey(VK_DOWN);
  PressKey(VK_RETURN);
  EXPECT_FALSE(ed->ListVisible());
  EXPECT_EQ(ed->Text(), u"Beta");
  EXPECT_EQ(table->State(), dsEdit);
  PressKey(VK_DOWN);
  table->First();
  EXPECT_EQ(Name()->AsString(), u"Beta");
  int clicks = 0;
  grid->OnEditButtonClick = [&](TObject*) { ++clicks; };
  names->SetButtonStyle(cbsEllipsis);
  grid->SetFocus();
  PressKey(VK_F2);
  EXPECT_EQ(grid->InplaceEditor()->EditStyle(), esEllipsis);
  PressKey(VK_RETURN, {ssCtrl});
  grid->InplaceEditor()->ButtonClick();
  EXPECT_EQ(clicks, 2);
}

TEST_F(DBGridTest, MultiSelectMarksRowsWithShiftAndCtrl) {
  grid->SetOptions(grid->Options() << dgMultiSelect);
  PressKey(VK_DOWN, {ssShift});
  PressKey(VK_DOWN, {ssShift});
  EXPECT_EQ(grid->SelectedRows()->Count(), 3);
  EXPECT_TRUE(grid->SelectedRows()->CurrentRowSelected());
  PressKey(VK_DOWN);  // a plain move clears the marks
  EXPECT_EQ(grid->SelectedRows()->Count(), 0);
  TRect r6 = grid->CellRect(1, 6);
  MouseClick(grid, r6.Left + 2, r6.Top + 2, mbLeft, {ssCtrl});
  TRect r8 = grid->CellRect(1, 8);
  MouseClick(grid, r8.Left + 2, r8.Top + 2, mbLeft, {ssCtrl});
  EXPECT_EQ(grid->SelectedRows()->Count(), 2);
  grid->Repaint();
  const TCanvasOp* marked = grid->Canvas()->FindText(u"N6");
  const TCanvasOp* plain = grid->Canvas()->FindText(u"N7");
  ASSERT_NE(marked, nullptr);
  ASSERT_NE(plain, nullptr);
  EXPECT_EQ(marked->BrushColor, clHighlight);
  EXPECT_NE(plain->BrushColor, clHighlight);
  grid->SelectedRows()->Delete();
  EXPECT_EQ(table->RecordCount(), 28);
  EXPECT_EQ(grid->SelectedRows()->Count(), 0);
  EXPECT_FALSE(table->Locate(u"ID", 6, {}));
  EXPECT_TRUE(table->Locate(u"ID", 7, {}));
}

TEST_F(DBGridTest, TheWindowFollowsTheSizeAndRowHeight) {
  EXPECT_EQ(grid->DataLink()->BufferCount(), 10);
  grid->SetDefaultRowHeight(35);  // the title row too: 198 pixels hold 1 + 4 rows
  EXPECT_EQ(grid->DataLink()->BufferCount(), 4);
  EXPECT_EQ(grid->RowCount(), 5);
  grid->SetHeight(36 * 3);
  EXPECT_EQ(grid->DataLink()->BufferCount(), 2);
  PressKey(VK_NEXT);
  EXPECT_EQ(Id()->AsInteger(), 3);
}
