#include "platform/ui/keyboard.h"

#include <gtest/gtest.h>

TEST(KeyToChar, LettersFollowShiftAndCtrlGivesControlCodes) {
  EXPECT_EQ(KeyToChar('A', {}), u'a');
  EXPECT_EQ(KeyToChar('A', {ssShift}), u'A');
  EXPECT_EQ(KeyToChar('C', {ssCtrl}), WideChar(3));
  EXPECT_EQ(KeyToChar('Z', {ssCtrl, ssShift}), WideChar(26));
  EXPECT_EQ(KeyToChar('A', {ssCtrl, ssAlt}), WideChar(0));
}

TEST(KeyToChar, DigitsPunctuationAndNumberPad) {
  EXPECT_EQ(KeyToChar('5', {}), u'5');
  EXPECT_EQ(KeyToChar('5', {ssShift}), u'%');
  EXPECT_EQ(KeyToChar('0', {ssShift}), u')');
  EXPECT_EQ(KeyToChar(VK_OEM_MINUS, {}), u'-');
  EXPECT_EQ(KeyToChar(VK_OEM_PLUS, {ssShift}), u'+');
  EXPECT_EQ(KeyToChar(VK_NUMPAD4, {}), u'4');
  EXPECT_EQ(KeyToChar(VK_ADD, {}), u'+');
  EXPECT_EQ(KeyToChar(VK_SUBTRACT, {}), u'-');
  EXPECT_EQ(KeyToChar('5', {ssCtrl}), WideChar(0));
}

TEST(KeyToChar, EditingAndFunctionKeys) {
  EXPECT_EQ(KeyToChar(VK_RETURN, {}), WideChar(13));
  EXPECT_EQ(KeyToChar(VK_RETURN, {ssCtrl}), WideChar(10));
  EXPECT_EQ(KeyToChar(VK_ESCAPE, {}), WideChar(27));
  EXPECT_EQ(KeyToChar(VK_BACK, {}), WideChar(8));
  EXPECT_EQ(KeyToChar(VK_TAB, {}), WideChar(9));
  EXPECT_EQ(KeyToChar(VK_SPACE, {}), u' ');
  for (Word k : {VK_F1, VK_F2, VK_F12, VK_INSERT, VK_DELETE, VK_LEFT, VK_HOME, VK_PRIOR})
    EXPECT_EQ(KeyToChar(k, {}), WideChar(0)) << k;
}

TEST(CharToKey, InvertsKeyToChar) {
  for (char16_t c : std::u16string(u"aZ09 !%-_=+;:'\"/?")) {
    Word key = 0;
    TShiftState shift;
    ASSERT_TRUE(CharToKey(c, key, shift)) << static_cast<int>(c);
    EXPECT_EQ(KeyToChar(key, shift), c);
  }
  Word key;
  TShiftState shift;
  EXPECT_FALSE(CharToKey(u'ж', key, shift));
}

TEST(ShortCut, NumbersAndTextBothWays) {
  EXPECT_EQ(ShortCut('F', {ssCtrl}), 0x4046);
  EXPECT_EQ(ShortCut('F', {ssCtrl, ssShift}), 0x6046);
  EXPECT_EQ(ShortCut(VK_F4, {ssAlt}), 0x8073);
  EXPECT_EQ(TextToShortCut(u"Ctrl+F"), ShortCut('F', {ssCtrl}));
  EXPECT_EQ(TextToShortCut(u"ctrl+shift+q"), ShortCut('Q', {ssCtrl, ssShift}));
  EXPECT_EQ(TextToShortCut(u"Ctrl+Alt+Q"), ShortCut('Q', {ssCtrl, ssAlt}));
  EXPECT_EQ(TextToShortCut(u"Del"), VK_DELETE);
  EXPECT_EQ(TextToShortCut(u"Shift+Ins"), ShortCut(VK_INSERT, {ssShift}));
  EXPECT_EQ(TextToShortCut(u"F12"), VK_F12);
  EXPECT_EQ(TextToShortCut(u"Ctrl+"), 0);
  EXPECT_EQ(TextToShortCut(u"Hyper+X"), 0);
  EXPECT_EQ(ShortCutToText(ShortCut('F', {ssCtrl, ssShift})), u"Shift+Ctrl+F");
  EXPECT_EQ(ShortCutToText(ShortCut(VK_F4, {ssAlt})), u"Alt+F4");
  EXPECT_EQ(ShortCutToText(VK_NEXT), u"PgDn");
  Word key;
  TShiftState shift;
  ShortCutToKey(0x6046, key, shift);
  EXPECT_EQ(key, 'F');
  EXPECT_EQ(shift, (TShiftState{ssCtrl, ssShift}));
}

TEST(KeyState, DownKeysReadNegative) {
  ResetKeyboardState();
  EXPECT_EQ(GetKeyState(VK_SHIFT), 0);
  SetKeyDown(VK_SHIFT, true);
  SetKeyDown(VK_CONTROL, true);
  EXPECT_LT(GetKeyState(VK_SHIFT), 0);
  EXPECT_EQ(KeyboardStateToShiftState(), (TShiftState{ssShift, ssCtrl}));
  ResetKeyboardState();
  EXPECT_EQ(GetKeyState(VK_SHIFT), 0);
  EXPECT_EQ(GetKeyState(1000), 0);
}

TEST(KeyState, MouseFlagsRoundTrip) {
  TShiftState s{ssShift, ssCtrl, ssLeft};
  EXPECT_EQ(ShiftStateToMouseKeys(s), MK_SHIFT | MK_CONTROL | MK_LBUTTON);
  EXPECT_EQ(MouseKeysToShiftState(ShiftStateToMouseKeys(s)), s);
}
