#include "platform/ui/texteditor.h"

#include "platform/ui/input.h"
#include "tests/platform/ui/uifixture.h"

class TextEditorTest : public UiTest {
 protected:
  void SetUp() override {
    UiTest::SetUp();
    ed = Add<TSynEdit>();
    ed->SetFocus();
  }
  TSynEdit* ed = nullptr;
};

TEST_F(TextEditorTest, PositionsAndLines) {
  ed->SetText(u"select 1\r\nfrom dual;\nx");
  EXPECT_EQ(ed->LineCount(), 3);
  EXPECT_EQ(ed->LineText(2), u"from dual;");
  EXPECT_EQ(ed->LineText(9), u"");
  EXPECT_EQ(ed->CharIndexToRowCol(0), (TBufferCoord{1, 1}));
  EXPECT_EQ(ed->CharIndexToRowCol(10), (TBufferCoord{1, 2}));
  EXPECT_EQ(ed->CharIndexToRowCol(21), (TBufferCoord{1, 3}));
  EXPECT_EQ(ed->RowColToCharIndex({5, 2}), 14);
  EXPECT_EQ(ed->RowColToCharIndex({99, 1}), 8);  // clamped to the line's end
  ed->SetCaretXY({6, 2});
  EXPECT_EQ(ed->SelStart(), 15);
  EXPECT_EQ(ed->CaretY(), 2);
  EXPECT_EQ(ed->Lines()->Count(), 3);
}

TEST_F(TextEditorTest, SelectionIsOneBasedPlusOne) {
  ed->SetText(u"abc def");
  ed->SetSelStart(4);
  ed->SetSelLength(3);
  EXPECT_EQ(ed->SelText(), u"def");
  EXPECT_EQ(ed->BlockBegin(), (TBufferCoord{5, 1}));
  ed->SetSelText(u"xyz!");
  EXPECT_EQ(ed->Text(), u"abc xyz!");
  EXPECT_TRUE(ed->Modified());
}

TEST_F(TextEditorTest, TypingAndCaretKeys) {
  TypeText(u"ab");
  PressKey(VK_RETURN);
  TypeText(u"cd");
  EXPECT_EQ(ed->Text(), u"ab\r\ncd");
  PressKey(VK_UP);
  EXPECT_EQ(ed->CaretXY(), (TBufferCoord{3, 1}));
  PressKey(VK_HOME);
  PressKey(VK_END, {ssShift});
  EXPECT_EQ(ed->SelText(), u"ab");
  PressKey(VK_DELETE);
  PressKey(VK_DELETE);  // joins the lines
  EXPECT_EQ(ed->Text(), u"\ncd");
  PressKey(VK_END, {ssCtrl});
  PressKey(VK_BACK);
  EXPECT_EQ(ed->Text(), u"\nc");
}

TEST_F(TextEditorTest, SearchFindsForwardBackwardAndWholeWords) {
  ed->SetText(u"select id, idx from t where id = 1");
  ed->SetSelStart(0);
  EXPECT_EQ(ed->SearchReplace(u"ID", u"", {}), 1);
  EXPECT_EQ(ed->SelStart(), 7);
  EXPECT_EQ(ed->SearchReplace(u"id", u"", {}), 1);  // from behind the selection
  EXPECT_EQ(ed->SelStart(), 11);
  EXPECT_EQ(ed->SearchReplace(u"id", u"", {ssoWholeWord}), 1);
  EXPECT_EQ(ed->SelStart(), 28);
  EXPECT_EQ(ed->SearchReplace(u"id", u"", {ssoWholeWord}), 0);
  EXPECT_EQ(ed->SearchReplace(u"ID", u"", {ssoMatchCase, ssoEntireScope}), 0);
  ed->SetSelStart(20);
  EXPECT_EQ(ed->SearchReplace(u"id", u"", {ssoBackwards}), 1);
  EXPECT_EQ(ed->SelStart(), 11);
}

TEST_F(TextEditorTest, ReplaceOneAllAndPrompted) {
  ed->SetText(u"a+a+a+a");
  ed->SetSelStart(0);
  EXPECT_EQ(ed->SearchReplace(u"a", u"bb", {ssoReplace}), 1);
  EXPECT_EQ(ed->Text(), u"bb+a+a+a");
  EXPECT_EQ(ed->SearchReplace(u"a", u"c", {ssoReplaceAll, ssoEntireScope}), 3);
  EXPECT_EQ(ed->Text(), u"bb+c+c+c");
  int asked = 0;
  ed->OnReplaceText = [&](TObject*, const String&, const String&, int line, int col, TSynReplaceAction& a) {
    ++asked;
    a = asked == 1 ? raSkip : raReplace;
  };
  EXPECT_EQ(ed->SearchReplace(u"c", u"d", {ssoReplaceAll, ssoEntireScope, ssoPrompt}), 2);
  EXPECT_EQ(ed->Text(), u"bb+c+d+d");
  ed->SetSelStart(3);
  ed->SetSelLength(3);  // "c+d"
  EXPECT_EQ(ed->SearchReplace(u"+", u"-", {ssoReplaceAll, ssoSelectedOnly}), 1);
  EXPECT_EQ(ed->Text(), u"bb+c-d+d");
}

TEST(SynEditSearch, FindsAllHitsWithTheirPositions) {
  TSynEditSearch s(nullptr);
  s.SetPattern(u"ab");
  EXPECT_EQ(s.FindAll(u"abab_ab xab"), 4);
  EXPECT_EQ(s.Results(3), 10);
  EXPECT_EQ(s.Lengths(0), 2);
  s.SetWhole(true);
  EXPECT_EQ(s.FindAll(u"abab_ab xab ab"), 1);
  EXPECT_EQ(s.Results(0), 13);
  EXPECT_THROW(s.Results(1), EListError);
  s.SetPattern(u"");
  EXPECT_EQ(s.FindAll(u"anything"), 0);
}
