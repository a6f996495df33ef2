#include "platform/ui/input.h"

#include "platform/ui/stdctrls.h"
#include "tests/platform/ui/uifixture.h"

using Log = std::vector<std::string>;

class InputTest : public UiTest {
 protected:
  void SetUp() override {
    UiTest::SetUp();
    rec = Add<TRecorder>(&log);
    rec->SetFocus();
    log.clear();
  }
  TRecorder* rec = nullptr;
};

TEST_F(InputTest, LetterGivesDownPressUp) {
  PressKey('A');
  EXPECT_EQ(log, (Log{"down 41", "press a", "up 41"}));
  log.clear();
  PressKey('A', {ssShift});
  EXPECT_EQ(log, (Log{"down 41 S", "press A", "up 41 S"}));
}

TEST_F(InputTest, DigitsAndShiftedDigits) {
  PressKey('7');
  PressKey('7', {ssShift});
  EXPECT_EQ(log, (Log{"down 37", "press 7", "up 37", "down 37 S", "press &", "up 37 S"}));
}

TEST_F(InputTest, CtrlLetterGivesTheControlCode) {
  PressKey('C', {ssCtrl});
  EXPECT_EQ(log, (Log{"down 43 C", "press #3", "up 43 C"}));
}

TEST_F(InputTest, AltChordHasNoKeyPress) {
  PressKey('X', {ssAlt});
  EXPECT_EQ(log, (Log{"down 58 A", "up 58 A"}));
}

TEST_F(InputTest, FunctionKeysHaveNoCharacter) {
  PressKey(VK_F5);
  PressKey(VK_F2, {ssCtrl});
  EXPECT_EQ(log, (Log{"down 74", "up 74", "down 71 C", "up 71 C"}));
}

TEST_F(InputTest, EnterAndEscapeGiveTheirCodes) {
  PressKey(VK_RETURN);
  PressKey(VK_ESCAPE);
  EXPECT_EQ(log, (Log{"down D", "press #13", "up D", "down 1B", "press #27", "up 1B"}));
}

TEST_F(InputTest, ZeroedKeyStopsTheCharacterButNotKeyUp) {
  rec->zeroKeyDown = 'Q';
  PressKey('Q');
  EXPECT_EQ(log, (Log{"down 51", "up 51"}));
}

TEST_F(InputTest, ModifiersAreDownDuringTheStrokeOnly) {
  bool shiftSeen = false;
  rec->OnKeyDown = [&](TObject*, Word&, TShiftState) { shiftSeen = GetKeyState(VK_SHIFT) < 0; };
  PressKey('B', {ssShift});
  EXPECT_TRUE(shiftSeen);
  EXPECT_EQ(GetKeyState(VK_SHIFT), 0);
  EXPECT_EQ(GetKeyState('B'), 0);
}

TEST_F(InputTest, KeyPreviewLetsTheFormSeeAndStopKeysFirst) {
  form->SetKeyPreview(true);
  form->OnKeyDown = [&](TObject*, Word& key, TShiftState) {
    log.push_back("form down");
    if (key == VK_F9) key = 0;
  };
  form->OnKeyPress = [&](TObject*, WideChar&) { log.push_back("form press"); };
  PressKey('K');
  PressKey(VK_F9);
  EXPECT_EQ(log, (Log{"form down", "down 4B", "form press", "press k", "up 4B", "form down", "up 78"}));
}

TEST_F(InputTest, NoFocusIsAClearError) {
  Screen->FocusControl(nullptr);
  EXPECT_THROW(PressKey('A'), EInvalidOperation);
}

TEST_F(InputTest, TabMovesTheFocusWhenTheControlDoesNotWantIt) {
  auto* second = Add<TRecorder>(&log, "2");
  rec->dlgCode = DLGC_WANTCHARS;
  log.clear();
  PressKey(VK_TAB);
  EXPECT_TRUE(second->Focused());
  // Key up arrives at the control that has the focus by then.
  EXPECT_EQ(log, (Log{"exit", "2:enter", "2:up 9"}));
  log.clear();
  second->dlgCode = DLGC_WANTCHARS;
  PressKey(VK_TAB, {ssShift});
  EXPECT_TRUE(rec->Focused());
}

TEST_F(InputTest, EnterAndEscapeReachDefaultAndCancelButtons) {
  rec->dlgCode = DLGC_WANTCHARS;
  auto* ok = Add<TButton>();
  ok->SetDefault(true);
  ok->SetModalResult(mrOk);
  auto* cancel = Add<TButton>();
  cancel->SetCancel(true);
  cancel->SetModalResult(mrCancel);
  int clicks = 0;
  ok->OnClick = [&](TObject*) { ++clicks; };
  rec->SetFocus();
  log.clear();
  PressKey(VK_RETURN);
  EXPECT_EQ(clicks, 1);
  EXPECT_EQ(form->ModalResult(), mrOk);
  PressKey(VK_ESCAPE);
  EXPECT_EQ(form->ModalResult(), mrCancel);
  // The recorder saw only the key-ups: the form took the keys.
  EXPECT_EQ(log, (Log{"up D", "up 1B"}));
}

TEST_F(InputTest, TypingIntoAnEditChangesItsText) {
  auto* edit = Add<TEdit>();
  int changes = 0;
  edit->OnChange = [&](TObject*) { ++changes; };
  edit->SetFocus();
  TypeText(u"Hallo");
  EXPECT_EQ(edit->Text(), u"Hallo");
  EXPECT_EQ(changes, 5);
  PressKey(VK_BACK);
  PressKey(VK_HOME);
  PressKey(VK_DELETE);
  EXPECT_EQ(edit->Text(), u"all");
  PressKey(VK_END);
  PressKey(VK_LEFT, {ssShift});
  PressKey(VK_LEFT, {ssShift});
  EXPECT_EQ(edit->SelText(), u"ll");
  TypeText(u"so");
  EXPECT_EQ(edit->Text(), u"aso");
  EXPECT_TRUE(edit->Modified());
}

TEST_F(InputTest, EditLimitsAndReadOnly) {
  auto* edit = Add<TEdit>();
  edit->SetMaxLength(3);
  edit->SetCharCase(ecUpperCase);
  edit->SetFocus();
  TypeText(u"abcd");
  EXPECT_EQ(edit->Text(), u"ABC");
  edit->SetReadOnly(true);
  PressKey(VK_BACK);
  EXPECT_EQ(edit->Text(), u"ABC");
}

TEST_F(InputTest, EditClipboardKeys) {
  auto* edit = Add<TEdit>();
  edit->SetText(u"copy me");
  edit->SetFocus();  // AutoSelect selects all on entry
  PressKey('C', {ssCtrl});
  PressKey(VK_END);
  PressKey('V', {ssCtrl});
  EXPECT_EQ(edit->Text(), u"copy mecopy me");
}
