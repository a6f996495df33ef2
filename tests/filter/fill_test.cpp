// The find/filter dialogue and the dataset's filter commands over the
// embedded engine: typed conditions become the query's VeskFilter, the
// query reopens, and the rows that come back are checked.
#include "filter/fill.h"

#include "data/veskodacquerylib.h"
#include "data/veskodacsmartquerylib.h"
#include "filter/veskcmp.h"
#include "platform/ui/scriptedui.h"
#include "tests/support/kitfixture.h"

namespace {

// The IDs of the rows, in order, joined by ",".
String Ids(TDataSet* q) {
  String ids;
  for (q->First(); !q->Eof(); q->Next()) ids += (ids.IsEmpty() ? u"" : u",") + q->FieldByName(u"ID")->AsString();
  return ids;
}

// What a person does in the dialogue: pick a field, choose the options,
// type the value, press OK.
struct TTyping {
  String Field;  // the Field column's text; empty keeps the one shown
  int Option = 1;
  bool CaseSensitive = false;
  String Value;
  int LookupMode = -1;  // -1 leaves rgLkpMode alone
};

TScriptedUserInterface::TFormScript Type(TTyping t) {
  return [t](TCustomForm& f) {
    if (!t.Field.IsEmpty()) Control<TComboBox>(f, u"Fields").SetText(t.Field);
    if (t.LookupMode >= 0) Control<TRadioGroup>(f, u"rgLkpMode").SetItemIndex(t.LookupMode);
    Control<TRadioGroup>(f, u"rgTxtOpts").SetItemIndex(t.Option);
    Control<TCheckBox>(f, u"cbCaseSen").SetChecked(t.CaseSensitive);
    Control<TEdit>(f, u"Value").SetText(t.Value);
    PressButton(f, u"BtnOK");
  };
}

class FindFilterTest : public KitDbTest {
 protected:

  TScriptedUserInterface ui;
  TUserInterfaceScope scope{ui};
};

TEST_F(FindFilterTest, SetExprFiltersNumbersAndTextThroughTheEngine) {
  TVeskODACQuery* q = ComposedGoods(u"G");
  q->SetFilterCmdSetExpr(u"PRICE=>=3,<10");
  EXPECT_EQ(Ids(q), u"2,3,5");
  EXPECT_NE(q->VeskFilter().Pos(u"((G.PRICE>=3) AND (G.PRICE<10))"), 0) << q->VeskFilter();
  // A second field joins by AND, a line per field in the fields' order;
  // text compares whole and ignores case.
  q->SetFilterCmdSetExpr(u"NAME=BUTTER");
  EXPECT_EQ(Ids(q), u"3");
  EXPECT_NE(q->VeskFilter().Pos(u"(( UPPER(G.NAME) = UPPER('BUTTER') ))\r\nAND((G.PRICE>=3) AND (G.PRICE<10))"), 0)
      << q->VeskFilter();
  // Only the first "=" divides: the condition itself is "=4".
  q->SetFilterCmdSetExpr(u"NAME=is not null");
  q->SetFilterCmdSetExpr(u"PRICE==4");
  EXPECT_EQ(Ids(q), u"2");
  q->SetFilterCmdSetExpr(u"QTY=is null");
  EXPECT_EQ(Ids(q), u"");
  EXPECT_EQ(ui.Verify(), u"");
}

TEST_F(FindFilterTest, SetExprIgnoresTextsWithoutAFieldAndUnknownFields) {
  TVeskODACQuery* q = ComposedGoods();
  q->SetFilterCmdSetExpr(u"QTY=>5");
  const String filter = q->VeskFilter();
  for (const char16_t* text : {u"=5", u"Q", u"", u"QTY", u"COLOUR=red"}) {
    q->SetFilterCmdSetExpr(text);
    EXPECT_EQ(q->VeskFilter(), filter) << String(text);
  }
  EXPECT_EQ(Ids(q), u"1,3");
}

TEST_F(FindFilterTest, ARejectedConditionRestoresTheEarlierFilter) {
  TVeskODACQuery* q = ComposedGoods();
  q->SetFilterCmdSetExpr(u"PRICE=>3");
  const String filter = q->VeskFilter();
  // The quote closes the literal early; the engine refuses the statement.
  EXPECT_THROW(q->SetFilterCmdSetExpr(u"NAME=it's"), Exception);
  EXPECT_EQ(q->VeskFilter(), filter);
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(Ids(q), u"2,3,5");
  EXPECT_EQ(q->ListFilts()->GetFieldExpr(u"NAME").Trim(), u"");
  EXPECT_EQ(q->ListFilts()->GetFieldExpr(u"PRICE"), u">3");
  // The list still generates the filter that stands.
  q->SetFilterCmdSetExpr(u"QTY=>1");
  EXPECT_EQ(Ids(q), u"2,3");
}

TEST_F(FindFilterTest, ARefusedDialogueConditionRestoresTheListAndTheQuery) {
  TVeskODACQuery* q = ComposedGoods();
  q->SetFilterCmdSetExpr(u"PRICE=>3");
  const String filter = q->VeskFilter();
  ui.ExpectForm(u"TFindFilterForm", Type({String(), 0, false, u"it's"}));
  EXPECT_THROW(q->SetFilterCmdShow(u"NAME"), Exception);
  EXPECT_EQ(q->VeskFilter(), filter);
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(Ids(q), u"2,3,5");
  EXPECT_EQ(q->ListFilts()->GetFieldExpr(u"NAME").Trim(), u"");
  EXPECT_EQ(q->ListFilts()->GetFieldExpr(u"PRICE"), u">3");
  // The restore brings back expressions only; a text row restored so has
  // no options, and generating it is the string range error.
  q->ListFilts()->SetFieldExpr(u"NAME", u"Apple");
  EXPECT_THROW(q->ListFilts()->GenerateFilter(), ERangeError);
  EXPECT_EQ(ui.Verify(), u"");
}

TEST_F(FindFilterTest, OneClickServerFiltersNestAndARefusalIsShown) {
  TVeskODACQuery* q = ComposedGoods();
  q->SetVeskSQLServer(true);
  EXPECT_TRUE(q->setFilter(q->FieldByName(u"NAME"), u"Apricot", false, nullptr));
  EXPECT_EQ(q->VeskFilter(), u"NAME='Apricot'");
  EXPECT_EQ(Ids(q), u"2");
  // The field's own row of the list stays unfiltered.
  EXPECT_FALSE(q->ListFilts()->GetIsFiltered(u"NAME"));
  EXPECT_TRUE(q->setFilter(q->FieldByName(u"QTY"), u"5", false, nullptr));
  EXPECT_EQ(q->VeskFilter(), u"(NAME='Apricot')AND QTY='5'");
  EXPECT_EQ(Ids(q), u"2");
  EXPECT_TRUE(q->setFilter(q->FieldByName(u"ID"), u"1,3", true, nullptr));
  EXPECT_EQ(q->VeskFilter(), u"((NAME='Apricot')AND QTY='5')AND ID IN(1,3)");
  EXPECT_EQ(Ids(q), u"");
  // A condition the engine refuses is shown; the one before comes back.
  q->SetFilterCmdClear(false);
  q->setFilter(q->FieldByName(u"QTY"), u"7", false, nullptr);
  ui.ExpectShowMessage();
  EXPECT_TRUE(q->setFilter(q->FieldByName(u"NAME"), u"it's", false, nullptr));
  EXPECT_EQ(q->VeskFilter(), u"QTY='7'");
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(Ids(q), u"3");
  EXPECT_EQ(ui.Verify(), u"");
}

TEST_F(FindFilterTest, OneClickWithoutValueOpensTheDialogueOnTheField) {
  TVeskODACQuery* q = ComposedGoods(u"G");
  q->SetVeskSQLServer(true);
  TComponent grid(nullptr);
  ui.ExpectForm(u"TFindFilterForm", [](TCustomForm& f) {
    EXPECT_EQ(Control<TComboBox>(f, u"Fields").Text(), u"QTY");
    EXPECT_EQ(f.Caption(), u"Filtru");
    Control<TEdit>(f, u"Value").SetText(u">5");
    PressButton(f, u"BtnOK");
  });
  EXPECT_TRUE(q->setFilter(q->FieldByName(u"QTY"), String(), false, &grid));
  EXPECT_EQ(Ids(q), u"1,3");
  EXPECT_EQ(q->ListFilts()->GetFieldExpr(u"QTY"), u">5");
  // The grid's text comes in once the form is up, as the value of a field
  // without one.
  q->Locate(u"ID", 3, TLocateOptions());
  ui.ExpectForm(u"TFindFilterForm", [](TCustomForm& f) {
    EXPECT_EQ(Control<TEdit>(f, u"Value").Text(), u"");
    Application->ProcessMessages();
    EXPECT_EQ(Control<TEdit>(f, u"Value").Text(), u"Butter");
    PressButton(f, u"BtnOK");
  });
  EXPECT_TRUE(q->setFilter(q->FieldByName(u"NAME"), String(), false, &grid));
  EXPECT_EQ(Ids(q), u"3");
  ui.ExpectForm(u"TFindFilterForm", [](TCustomForm& f) {
    Application->ProcessMessages();
    EXPECT_EQ(Control<TEdit>(f, u"Value").Text(), u">5");
    PressButton(f, u"BtnCancel");
  });
  EXPECT_FALSE(q->setFilter(q->FieldByName(u"QTY"), String(), false, &grid));
  // A cancel answers false and leaves the filter.
  ui.ExpectForm(u"TFindFilterForm", mrCancel);
  EXPECT_FALSE(q->setFilter(q->FieldByName(u"PRICE"), String(), false, &grid));
  EXPECT_EQ(Ids(q), u"3");
  EXPECT_EQ(ui.Verify(), u"");
}

TEST_F(FindFilterTest, TheDialogueAppliesEveryTextOption) {
  struct Case {
    int Option;
    bool CaseSensitive;
    const char16_t* Value;
    const char16_t* Rows;
  };
  const Case cases[] = {
      {1, false, u"AP", u"1,2"},     {1, true, u"AP", u""},          {1, false, u"ap re", u"1,2,4"},
      {2, false, u"b", u"3,4"},      {2, true, u"b", u""},           {0, true, u"Apple", u"1"},
      {0, true, u"apple", u""},      {0, false, u"apple", u"1"},     {1, false, u"e,r", u"3,4"},
  };
  TVeskODACQuery* q = ComposedGoods(u"G");
  for (const Case& c : cases) {
    ui.ExpectForm(u"TFindFilterForm", Type({String(), c.Option, c.CaseSensitive, c.Value}));
    q->SetFilterCmdShow(u"NAME");
    EXPECT_EQ(Ids(q), c.Rows) << c.Option << " " << String(c.Value) << " " << q->VeskFilter();
  }
  // The dialogue remembers the last options.
  EXPECT_EQ(q->ListFilts()->TextOption(), 1);
  EXPECT_FALSE(q->ListFilts()->CaseSensitive());
  EXPECT_EQ(ui.Verify(), u"");
}

TEST_F(FindFilterTest, CancelAndAnEmptyDialogue) {
  TVeskODACQuery* q = ComposedGoods();
  q->SetFilterCmdSetExpr(u"QTY=>5");
  const String filter = q->VeskFilter();
  ui.ExpectForm(u"TFindFilterForm", [](TCustomForm& f) {
    Control<TEdit>(f, u"Value").SetText(u"<3");
    PressButton(f, u"BtnCancel");
  });
  q->SetFilterCmdShow(u"PRICE");
  EXPECT_EQ(q->VeskFilter(), filter);
  EXPECT_EQ(q->ListFilts()->GetFieldExpr(u"PRICE").Trim(), u"");
  EXPECT_EQ(Ids(q), u"1,3");
  // Clearing every row and pressing OK takes the filter away.
  ui.ExpectForm(u"TFindFilterForm", [](TCustomForm& f) {
    Control<TPanel>(f, u"panBottom").SetVisible(true);
    PressButton(f, u"ClearButton");
    PressButton(f, u"BtnOK");
  });
  q->SetFilterCmdShow(u"QTY");
  EXPECT_EQ(q->VeskFilter(), u"");
  EXPECT_EQ(q->ListFilts()->FilterText(), u"");
  EXPECT_EQ(Ids(q), u"1,2,3,4,5");
  EXPECT_EQ(ui.Verify(), u"");
}

TEST_F(FindFilterTest, ABadNumberIsRefusedWithTheLanguagesMessage) {
  TVeskODACQuery* q = ComposedGoods();
  // The message comes while the form runs.
  ui.ExpectForm(u"TFindFilterForm", [this](TCustomForm& f) {
    ui.ExpectMessageDlg(u"Valoare filtru incorecta:1.5x", mrOk);
    Control<TEdit>(f, u"Value").SetText(u"1.5x");
    PressButton(f, u"BtnOK");
    EXPECT_EQ(f.ModalResult(), mrCancel);
    EXPECT_EQ(Control<TEdit>(f, u"Value").Text(), u"");
  });
  q->SetFilterCmdShow(u"PRICE");
  EXPECT_EQ(q->VeskFilter(), u"");
  EXPECT_EQ(Ids(q), u"1,2,3,4,5");
  ASSERT_EQ(ui.Shown().size(), 2u);
  EXPECT_EQ(ui.Shown()[1].DlgType, mtInformation);
  EXPECT_EQ(ui.Verify(), u"");
  // Several numbers and operators pass the check.
  ui.ExpectForm(u"TFindFilterForm", Type({String(), 1, false, u"<3 >9"}));
  q->SetFilterCmdShow(u"PRICE");
  EXPECT_EQ(Ids(q), u"1,4,5");
}

TEST_F(FindFilterTest, KeysOfNumberFieldsAreFiltered) {
  TVeskODACQuery* q = ComposedGoods();
  TFindFilterForm form(nullptr, q->ListFilts(), u"PRICE", 0);
  auto typed = [&](WideChar key) {
    form.ValueKeyPress(form.Value, key);
    return key;
  };
  EXPECT_EQ(typed(u'7'), u'7');
  EXPECT_EQ(typed(u','), u'.');
  EXPECT_EQ(typed(u'>'), u'>');
  EXPECT_EQ(typed(u'a'), 0);
  EXPECT_EQ(typed(u'-'), 0);
  form.Fields->SetText(u"QTY");
  EXPECT_EQ(typed(u'.'), 0);
  EXPECT_EQ(typed(22), 22);
  form.Fields->SetText(u"NAME");
  EXPECT_EQ(typed(u'-'), u'-');
}

TEST_F(FindFilterTest, DatesCompareAsQuotedLiterals) {
  Exec(u"CREATE TABLE DELIV (ID INTEGER PRIMARY KEY, DAY DATE)");
  Exec(u"INSERT INTO DELIV VALUES (1, '2015-01-10')");
  Exec(u"INSERT INTO DELIV VALUES (2, '2015-02-01')");
  Exec(u"INSERT INTO DELIV VALUES (3, '2015-03-05')");
  TVeskODACQuery* q = NewQuery(u"qDeliv");
  q->SetVeskTableLive(u"DELIV");
  q->Open();
  ASSERT_EQ(q->ListFilts()->Column(TListFilts::lfType)->Strings(1), u"D");
  q->SetFilterCmdSetExpr(u"DAY=>=2015-02-01");
  EXPECT_EQ(Ids(q), u"2,3");
  q->SetFilterCmdSetExpr(u"DAY=2015-01-10 2015-03-05");
  EXPECT_EQ(Ids(q), u"1,3");
}

TEST_F(FindFilterTest, LookupRowsSelectThroughTheirTable) {
  Exec(u"CREATE TABLE CATS (ID INTEGER, NAME VARCHAR2(20))");
  for (const char16_t* sql : {u"INSERT INTO CATS VALUES (1, 'Fruit')", u"INSERT INTO CATS VALUES (2, 'Fruit')",
                              u"INSERT INTO CATS VALUES (3, 'Dairy')", u"INSERT INTO CATS VALUES (5, 'Dairy')"})
    Exec(sql);
  TVeskODACQuery* q = ComposedGoods();
  q->ListFilts()->AddRecord(u"Category", u"S", u"CATEGORY", u"CATS", u"ID", u"NAME", u"ID", u"2");
  // "Cod": the condition goes to the lookup table's result column.
  ui.ExpectForm(u"TFindFilterForm", Type({u"Category", 1, false, u"fru", 0}));
  q->SetFilterCmdShow(u"PRICE");
  EXPECT_EQ(Ids(q), u"1,2");
  EXPECT_NE(q->VeskFilter().Pos(u"(ID IN (SELECT Z.ID FROM \"CATS\" Z WHERE (( UPPER(NAME) LIKE UPPER('%fru%')))))"),
            0)
      << q->VeskFilter();
  // "Text": the key is compared as a number.
  ui.ExpectForm(u"TFindFilterForm", Type({u"Category", 1, false, u"3 5", 1}));
  q->SetFilterCmdShow(u"CATEGORY");
  EXPECT_EQ(Ids(q), u"3,5");
  EXPECT_EQ(ui.Verify(), u"");
}

TEST_F(FindFilterTest, SmartCompareRunsOnTheEnginesSimilarityFunctions) {
  RegisterSimilarityFunctions(session_);
  auto* q = new TVeskODACSmartQuery(owner_.get());
  q->SetSession(session_);
  q->SetVeskTableLive(u"GOODS");
  q->SetVeskGroupField(u"ID");
  q->Open();
  ui.ExpectForm(u"TFindFilterForm", [](TCustomForm& f) {
    EXPECT_EQ(Control<TRadioGroup>(f, u"rgTxtOpts").Items()->Count(), 4);
    Control<TRadioGroup>(f, u"rgTxtOpts").SetItemIndex(3);
    EXPECT_TRUE(Control<TCheckBox>(f, u"cbNumber").Visible());
    Control<TUpDown>(f, u"udLimit").SetPosition(5);
    Control<TEdit>(f, u"Value").SetText(u"Aple");
    PressButton(f, u"BtnOK");
  });
  q->SetFilterCmdShow(u"NAME");
  EXPECT_NE(q->VeskFilter().Pos(u"ZE$G$CMP.INTEXT(ZE$G$CMP.PREP(NAME)"), 0) << q->VeskFilter();
  const String rows = Ids(q);
  EXPECT_NE(rows.Pos(u"1"), 0) << rows;
  EXPECT_EQ(rows.Pos(u"5"), 0) << rows;
  EXPECT_EQ(q->ListFilts()->Limit(), 5);
  EXPECT_EQ(ui.Verify(), u"");
}

// A main form that answers the language question.
class TLanguageForm : public TForm {
 public:
  explicit TLanguageForm(int answer) : TForm(nullptr), answer_(answer) {}
  void Dispatch(TMessage& Message) override {
    if (Message.Msg == WM_FINDFILTER_LANGUAGE &&
        std::string(reinterpret_cast<const char*>(Message.WParam)) == "GET_LANGUAGE") {
      ++asked;
      if (answer_ >= 0) *reinterpret_cast<int*>(Message.LParam) = answer_;
      return;
    }
    TForm::Dispatch(Message);
  }
  int asked = 0;

 private:
  int answer_;
};

TEST_F(FindFilterTest, CaptionsFollowTheMainFormsLanguage) {
  TVeskODACQuery* q = ComposedGoods();
  struct Case {
    int Answer;
    int Language;
    const char16_t* Caption;
    const char16_t* Option;
  };
  for (const Case& c : {Case{0, 0, u"Filter", u"Exact match"}, Case{2, 2, u"Фильтр", u"Полное совпадение"},
                        Case{-1, 1, u"Filtru", u"Coincidenta completa"}, Case{7, 1, u"Filtru", u"Coincidenta completa"}}) {
    TLanguageForm main(c.Answer);
    Application->SetMainForm(&main);
    TFindFilterForm form(nullptr, q->ListFilts(), u"NAME", 0);
    Application->SetMainForm(nullptr);
    EXPECT_EQ(main.asked, 1);
    EXPECT_EQ(form.Language(), c.Language);
    EXPECT_EQ(form.Caption(), c.Caption);
    EXPECT_EQ(form.rgTxtOpts->Items()->Strings(0), c.Option);
    // Only smart queries offer Smart compare.
    EXPECT_EQ(form.rgTxtOpts->Items()->Count(), 3);
    EXPECT_FALSE(form.cbNumber->Visible());
  }
  TFindFilterForm search(nullptr, q->ListFilts(), u"NAME", 1);
  EXPECT_EQ(search.Caption(), u"Cautarea");
  EXPECT_EQ(search.BtnAdvanced->Caption(), u"Cautarea Compusa");
  EXPECT_EQ(search.StringGrid1->Cells(3, 0), u"Adevarat nume a cimpului");
}

TEST_F(FindFilterTest, TheFormEditsItsGridAndWritesBackOnlyOnOk) {
  TVeskODACQuery* q = ComposedGoods();
  TListFilts* list = q->ListFilts();
  {
    TFindFilterForm form(nullptr, list, u"NAME", 0);
    EXPECT_EQ(form.Value, form.ActiveControl());
    form.rgTxtOpts->SetItemIndex(2);
    form.cbCaseSen->SetChecked(true);
    form.Value->SetText(u"Br");
    const int row = list->GetFieldIndex(u"NAME") + 1;
    EXPECT_EQ(form.StringGrid1->Cells(1, row), u"Br");
    EXPECT_EQ(form.StringGrid1->Cells(4, row), u"12");
    form.GenerateFilter();
    EXPECT_EQ(form.mFilter->Lines()->Strings(0), u"(( NAME LIKE 'Br%'))");
    // Switching fields reads the row's own options.
    form.Fields->SetText(u"PRICE");
    EXPECT_FALSE(form.rgTxtOpts->Enabled());
    form.Fields->SetText(u"NAME");
    EXPECT_EQ(form.Value->Text(), u"Br");
    EXPECT_EQ(form.rgTxtOpts->ItemIndex(), 2);
    form.SetModalResult(mrCancel);
    form.SetupFilter();
  }
  EXPECT_EQ(list->GetFieldExpr(u"NAME").Trim(), u"");
  EXPECT_EQ(list->TextOption(), 2);
  EXPECT_TRUE(list->CaseSensitive());
  // The silent generation takes the rows as they stand.
  list->SetFieldExpr(u"QTY", u"1 5");
  list->SetFieldExpr(u"PRICE", u"<4");
  list->GenerateFilter();
  TStringList lines;
  lines.SetText(list->FilterText());
  ASSERT_EQ(lines.Count(), 2);
  EXPECT_EQ(lines.Strings(0), u"((PRICE<4))");
  EXPECT_EQ(lines.Strings(1), u"AND((QTY = 1) OR  (QTY = 5))");
}

}  // namespace
