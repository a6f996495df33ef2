#include "platform/ui/dbctrls.h"

#include "platform/db/memdataset.h"
#include "platform/ui/input.h"
#include "tests/platform/ui/uifixture.h"

class DBCtrlsTest : public UiTest {
 protected:
  void SetUp() override {
    UiTest::SetUp();
    table = new TVirtualTable(form);
    table->AddField(u"NAME", ftString, 10);
    table->AddField(u"ACTIVE", ftString, 1);
    table->Open();
    for (const char16_t* n : {u"Ana", u"Ion"}) {
      table->Append();
      table->FieldByName(u"NAME")->SetAsString(n);
      table->FieldByName(u"ACTIVE")->SetAsString(u"Y");
      table->Post();
    }
    table->First();
    source = new TDataSource(form);
    source->SetDataSet(table);
  }
  TVirtualTable* table = nullptr;
  TDataSource* source = nullptr;
};

TEST_F(DBCtrlsTest, EditShowsTheFieldAndWritesOnExit) {
  auto* edit = Add<TDBEdit>();
  edit->SetDataSource(source);
  edit->SetDataField(u"NAME");
  auto* other = Add<TEdit>();
  EXPECT_EQ(edit->Text(), u"Ana");
  EXPECT_EQ(edit->MaxLength(), 10);
  EXPECT_EQ(edit->Field(), table->FieldByName(u"NAME"));
  table->Next();
  EXPECT_EQ(edit->Text(), u"Ion");
  edit->SetFocus();
  TypeText(u"Dan");
  EXPECT_EQ(table->State(), dsEdit);
  EXPECT_EQ(table->FieldByName(u"NAME")->AsString(), u"Ion");
  other->SetFocus();
  EXPECT_EQ(table->FieldByName(u"NAME")->AsString(), u"Dan");
  table->Post();
  EXPECT_EQ(edit->Text(), u"Dan");
}

TEST_F(DBCtrlsTest, EscapeTakesTheFieldBackAndReadOnlyRefuses) {
  auto* edit = Add<TDBEdit>();
  edit->SetDataSource(source);
  edit->SetDataField(u"NAME");
  edit->SetFocus();
  TypeText(u"X");
  EXPECT_EQ(edit->Text(), u"X");
  PressKey(VK_ESCAPE);
  EXPECT_EQ(edit->Text(), u"Ana");
  table->Cancel();
  edit->DataLink()->SetReadOnly(true);
  TypeText(u"Y");
  EXPECT_EQ(edit->Text(), u"Ana");
  EXPECT_EQ(table->State(), dsBrowse);
}

TEST_F(DBCtrlsTest, TextFollowsAndCheckBoxWritesItsValues) {
  auto* label = Add<TDBText>();
  label->SetDataSource(source);
  label->SetDataField(u"NAME");
  EXPECT_EQ(label->Caption(), u"Ana");
  auto* cb = Add<TDBCheckBox>();
  cb->SetValueChecked(u"Y;1");
  cb->SetValueUnchecked(u"N");
  int clicks = 0;
  cb->OnClick = [&](TObject*) { ++clicks; };
  cb->SetDataSource(source);
  cb->SetDataField(u"ACTIVE");
  EXPECT_TRUE(cb->Checked());
  EXPECT_EQ(clicks, 0);  // loading a value is no click
  MouseClick(cb, 1, 1);
  EXPECT_FALSE(cb->Checked());
  EXPECT_EQ(table->FieldByName(u"ACTIVE")->AsString(), u"N");
  EXPECT_EQ(clicks, 1);
  table->Post();
  table->Next();
  EXPECT_EQ(label->Caption(), u"Ion");
  EXPECT_TRUE(cb->Checked());
  table->Close();
  EXPECT_EQ(label->Caption(), u"");
  EXPECT_EQ(cb->State(), cbGrayed);
}

TEST_F(DBCtrlsTest, NavigatorRunsTheDatasetCommands) {
  auto* nav = Add<TDBNavigator>();
  nav->SetDataSource(source);
  EXPECT_FALSE(nav->ButtonEnabled(nbPost));
  EXPECT_TRUE(nav->ButtonEnabled(nbNext));
  std::vector<TNavigateBtn> clicked;
  nav->OnClick = [&](TObject*, TNavigateBtn b) { clicked.push_back(b); };
  nav->BtnClick(nbLast);
  EXPECT_EQ(table->FieldByName(u"NAME")->AsString(), u"Ion");
  EXPECT_FALSE(nav->ButtonEnabled(nbNext));
  nav->BtnClick(nbEdit);
  EXPECT_TRUE(nav->ButtonEnabled(nbPost));
  nav->BtnClick(nbCancel);
  ui.ExpectMessageDlg(u"Delete record?", mrCancel);
  nav->BtnClick(nbDelete);
  EXPECT_EQ(table->RecordCount(), 2);
  nav->BeforeAction = [](TObject*, TNavigateBtn) { Abort(); };
  EXPECT_THROW(nav->BtnClick(nbFirst), EAbort);
  EXPECT_EQ(clicked, (std::vector<TNavigateBtn>{nbLast, nbEdit, nbCancel, nbDelete}));
}

TEST_F(DBCtrlsTest, ControlsPublishDataSourceAndField) {
  auto* memo = Add<TDBMemo>();
  SetPropObject(memo, u"DataSource", source);
  SetPropString(memo, u"DataField", u"NAME");
  EXPECT_EQ(memo->Text(), u"Ana");
  EXPECT_EQ(GetPropString(memo, u"DataField"), u"NAME");
  auto* combo = Add<TDBComboBox>();
  combo->SetDataSource(source);
  combo->SetDataField(u"NAME");
  combo->Items()->SetText(u"Ana\nIon\nDan");
  combo->SetFocus();
  PressKey(VK_DOWN);  // no item was selected: the first one comes
  PressKey(VK_DOWN);
  EXPECT_EQ(table->State(), dsEdit);
  memo->SetFocus();
  EXPECT_EQ(table->FieldByName(u"NAME")->AsString(), u"Ion");
}
