// The grid's question before a client filter or a search, end to end: the
// dataset's setFilter and locate ask through TGridInputForm, the scripted
// person answers, and the rows that remain or the record found are checked
// on the embedded engine.
#include "filter/gridinput.h"

#include "data/lookupfilters.h"
#include "data/veskvirt.h"
#include "filter/filterstate.h"
#include "platform/ui/scriptedui.h"
#include "tests/support/kitfixture.h"

namespace {

String Ids(TDataSet* q) {
  String ids;
  for (q->First(); !q->Eof(); q->Next()) ids += (ids.IsEmpty() ? u"" : u",") + q->FieldByName(u"ID")->AsString();
  return ids;
}

struct TAnswer {
  String Text;
  bool Partial = true;
  bool Code = false;
  bool CaseSens = false;
};

TScriptedUserInterface::TFormScript Answer(TAnswer a) {
  return [a](TCustomForm& f) {
    Control<TEdit>(f, u"Value").SetText(a.Text);
    Control<TRadioGroup>(f, u"rgMatch").SetItemIndex(a.Partial ? TGridInputForm::miPartial : TGridInputForm::miWhole);
    Control<TRadioGroup>(f, u"rgColumn").SetItemIndex(a.Code ? TGridInputForm::ccCode : TGridInputForm::ccText);
    Control<TCheckBox>(f, u"cbCaseSen").SetChecked(a.CaseSens);
    PressButton(f, u"BtnOK");
  };
}

// ORDERS(ID, GOODS_ID, NOTE) with the lookup column GOODS_NAME showing the
// goods' NAME:  10 -> 1 Apple "first lot", 20 -> 2 Apricot "Second LOT",
// 30 -> 3 Butter "apple pie", 40 -> 4 Bread NULL.
class GridInputTest : public KitDbTest {
 protected:
  void SetUp() override {
    KitDbTest::SetUp();
    previous_ = InstallClientFilterDialogue();
    Exec(u"CREATE TABLE ORDERS (ID NUMBER(9), GOODS_ID NUMBER(9), NOTE VARCHAR2(40))");
    Exec(u"INSERT INTO ORDERS VALUES (10, 1, 'first lot'), (20, 2, 'Second LOT'), (30, 3, 'apple pie'), "
         u"(40, 4, NULL)");
    TVeskODACQuery* goods = OpenGoods(u"qLk");
    q_ = NewQuery(u"qOrders");
    q_->SQL()->SetText(u"SELECT ID, GOODS_ID, NOTE FROM ORDERS ORDER BY ID");
    Add(new TIntegerField(q_), u"ID", fkData);
    Add(new TIntegerField(q_), u"GOODS_ID", fkData);
    Add(new TStringField(q_), u"NOTE", fkData);
    name_ = AddLookupField(q_, u"GOODS_NAME", u"GOODS_ID", goods, u"ID", u"NAME");
    q_->Open();
  }
  void TearDown() override {
    RegisterClientFilterDialogue(previous_);
    EXPECT_EQ(ui_.Verify(), u"");
    KitDbTest::TearDown();
  }
  TField* Add(TField* field, const char16_t* name, TFieldKind kind) {
    return AddPersistentField(q_, field, name, kind);
  }

  TScriptedUserInterface ui_;
  TUserInterfaceScope scope_{ui_};
  TClientFilterDialogue previous_ = nullptr;
  TComponent grid_{nullptr};
  TVeskODACQuery* q_ = nullptr;
  TField* name_ = nullptr;
};

TEST_F(GridInputTest, TheFormOffersTheCodeOnlyForAColumnFedByAKeyField) {
  EXPECT_EQ(GridInputCodeField(name_), q_->FieldByName(u"GOODS_ID"));
  EXPECT_EQ(GridInputCodeField(q_->FieldByName(u"NOTE")), nullptr);
  EXPECT_EQ(GridInputCodeField(nullptr), nullptr);
  for (TField* field : {name_, q_->FieldByName(u"NOTE")}) {
    TGridInputRequest request;
    request.Field = field;
    request.Caption = u"Search";
    request.Text = u"old";
    request.Partial = false;
    TGridInputForm form(nullptr, request);
    EXPECT_EQ(form.Caption(), u"Search");
    EXPECT_EQ(form.Value->Text(), u"old");
    EXPECT_EQ(form.rgMatch->ItemIndex(), TGridInputForm::miWhole);
    EXPECT_FALSE(form.cbCaseSen->Visible());
    form.rgColumn->SetItemIndex(TGridInputForm::ccCode);
    form.Value->SetText(u"new");
    form.ReadAnswer(request);
    EXPECT_EQ(request.Text, u"new");
    EXPECT_EQ(request.ByCode, field == name_) << field->FieldName().ToUtf8();
  }
}

TEST_F(GridInputTest, AListFilterWithoutValueAsksTheFormAndFiltersByItsAnswer) {
  TField* note = q_->FieldByName(u"NOTE");
  ui_.ExpectForm(u"TGridInputForm", [](TCustomForm& f) {
    EXPECT_EQ(f.Caption(), u"Filter");
    EXPECT_EQ(Control<TLabel>(f, u"lbPrompt").Caption(), u"NOTE:");
    // A plain column has no code to choose.
    EXPECT_FALSE(Control<TRadioGroup>(f, u"rgColumn").Enabled());
    EXPECT_TRUE(Control<TCheckBox>(f, u"cbCaseSen").Visible());
    Answer({u"LOT"})(f);
  });
  EXPECT_TRUE(q_->setFilter(note, String(), true, &grid_));
  EXPECT_EQ(q_->getSF(u"NOTE"), u"LOT");
  EXPECT_EQ(Ids(q_), u"10,20");
  EXPECT_TRUE(GetFiltered(note));
  // Case counts when the person says so.
  ui_.ExpectForm(u"TGridInputForm", Answer({u"LOT", true, false, true}));
  q_->freeFilters(false);
  EXPECT_TRUE(q_->setFilter(note, String(), true, &grid_));
  EXPECT_EQ(Ids(q_), u"20");
}

TEST_F(GridInputTest, AWholeMatchOnANumberTakesAList) {
  ui_.ExpectForm(u"TGridInputForm", Answer({u"1,3", false}));
  EXPECT_TRUE(q_->setFilter(q_->FieldByName(u"GOODS_ID"), String(), true, &grid_));
  EXPECT_EQ(Ids(q_), u"10,30");
  EXPECT_TRUE(GetFiltered(q_));
}

TEST_F(GridInputTest, ACancelChangesNothing) {
  q_->setFilter(q_->FieldByName(u"GOODS_ID"), u"1,2", true, nullptr);
  const String filter = q_->Filter();
  ui_.ExpectForm(u"TGridInputForm", mrCancel);
  EXPECT_TRUE(q_->setFilter(q_->FieldByName(u"NOTE"), String(), true, &grid_));
  EXPECT_EQ(q_->Filter(), filter);
  EXPECT_EQ(q_->FilterLists().CountSF(), 0);
  EXPECT_EQ(Ids(q_), u"10,20");
}

TEST_F(GridInputTest, ALookupColumnFiltersByItsTextOrByItsCode) {
  ui_.ExpectForm(u"TGridInputForm", [](TCustomForm& f) {
    EXPECT_TRUE(Control<TRadioGroup>(f, u"rgColumn").Enabled());
    Answer({u"ap"})(f);
  });
  EXPECT_TRUE(q_->setFilter(name_, String(), true, &grid_));
  EXPECT_EQ(q_->getLF(u"GOODS_ID"), u"ap");
  EXPECT_EQ(Ids(q_), u"10,20");
  q_->freeFilters(false);
  // "Code": the key column that feeds the lookup, compared whole.
  ui_.ExpectForm(u"TGridInputForm", Answer({u"2,4", false, true}));
  EXPECT_TRUE(q_->setFilter(name_, String(), true, &grid_));
  EXPECT_EQ(q_->FilterLists().CountLF(), 0);
  EXPECT_EQ(Ids(q_), u"20,40");
}

TEST_F(GridInputTest, TheInMemoryMemberFiltersOnTheClientOnly) {
  auto* v = new TVeskVirt(owner_.get());
  v->AddField(u"ID", ftInteger);
  v->AddField(u"NAME", ftString, 20);
  v->Open();
  for (auto [id, name] : {std::pair{1, u"Apple"}, std::pair{2, u"Bread"}, std::pair{3, u"Butter"}}) {
    v->Append();
    v->FieldByName(u"ID")->SetValue(id);
    v->FieldByName(u"NAME")->SetValue(String(name));
    v->Post();
  }
  // Even under VeskSQLServer there is no server to ask.
  v->SetVeskSQLServer(true);
  ui_.ExpectForm(u"TGridInputForm", Answer({u"B"}));
  EXPECT_TRUE(v->setFilter(v->FieldByName(u"NAME"), String(), true, &grid_));
  EXPECT_EQ(Ids(v), u"2,3");
  ui_.ExpectForm(u"TGridInputForm", Answer({u"3", false}));
  EXPECT_TRUE(v->setFilter(v->FieldByName(u"ID"), String(), true, &grid_));
  EXPECT_EQ(Ids(v), u"3");
  v->freeFilters(false);
  EXPECT_EQ(Ids(v), u"1,2,3");
  EXPECT_FALSE(GetFiltered(v));
}

TEST(GridInputLoad, TheKitsFormIsInstalledWithoutSetup) {
  const TClientFilterDialogueFn atLoad = ClientFilterDialogue();
  ASSERT_NE(atLoad, nullptr);
  const TClientFilterDialogueFn before = InstallClientFilterDialogue();
  EXPECT_EQ(before, atLoad);
  EXPECT_EQ(ClientFilterDialogue(), atLoad);
}

TEST_F(GridInputTest, WithNothingInstalledTheQuestionIsCancelled) {
  RegisterClientFilterDialogue(nullptr);
  EXPECT_TRUE(q_->setFilter(q_->FieldByName(u"NOTE"), String(), true, &grid_));
  EXPECT_EQ(q_->Filter(), u"");
  EXPECT_EQ(Ids(q_), u"10,20,30,40");
}

TEST_F(GridInputTest, AGridSearchAsksTheFormForTextMatchAndColumn) {
  ui_.ExpectForm(u"TGridInputForm", [](TCustomForm& f) {
    EXPECT_EQ(f.Caption(), u"Search");
    EXPECT_FALSE(Control<TCheckBox>(f, u"cbCaseSen").Visible());
    Answer({u"second"})(f);
  });
  EXPECT_TRUE(q_->locate(q_->FieldByName(u"NOTE"), String(), false, &grid_));
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 20);
  EXPECT_TRUE(GetSearched(q_));
  // The code of a lookup column: the key field is searched.
  ui_.ExpectForm(u"TGridInputForm", Answer({u"4", false, true}));
  EXPECT_TRUE(q_->locate(name_, String(), false, &grid_));
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 40);
  EXPECT_EQ(q_->LastSearchField(), u"GOODS_ID");
  // A miss leaves its text for the next insert; a cancel ends with true.
  ui_.ExpectForm(u"TGridInputForm", Answer({u"none such", false}));
  EXPECT_FALSE(q_->locate(q_->FieldByName(u"NOTE"), String(), false, &grid_));
  EXPECT_EQ(q_->SearchMiss().Name, u"NOTE");
  EXPECT_EQ(q_->SearchMiss().Value, u"none such");
  ui_.ExpectForm(u"TGridInputForm", mrCancel);
  EXPECT_TRUE(q_->locate(q_->FieldByName(u"NOTE"), String(), false, &grid_));
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 40);
}

}  // namespace
