// Keyboard: virtual-key codes (Windows values), shift states, shortcuts and
// the keyboard state that the input driver keeps for GetKeyState.
#pragma once

#include <cstdint>

#include "platform/rtl/sets.h"
#include "platform/rtl/typinfo.h"
#include "platform/ui/messages.h"

// ---- Virtual keys ----------------------------------------------------------

constexpr Word VK_LBUTTON = 0x01;
constexpr Word VK_RBUTTON = 0x02;
constexpr Word VK_CANCEL = 0x03;
constexpr Word VK_MBUTTON = 0x04;
constexpr Word VK_BACK = 0x08;
constexpr Word VK_TAB = 0x09;
constexpr Word VK_CLEAR = 0x0C;
constexpr Word VK_RETURN = 0x0D;
constexpr Word VK_SHIFT = 0x10;
constexpr Word VK_CONTROL = 0x11;
constexpr Word VK_MENU = 0x12;
constexpr Word VK_PAUSE = 0x13;
constexpr Word VK_CAPITAL = 0x14;
constexpr Word VK_ESCAPE = 0x1B;
constexpr Word VK_SPACE = 0x20;
constexpr Word VK_PRIOR = 0x21;
constexpr Word VK_NEXT = 0x22;
constexpr Word VK_END = 0x23;
constexpr Word VK_HOME = 0x24;
constexpr Word VK_LEFT = 0x25;
constexpr Word VK_UP = 0x26;
constexpr Word VK_RIGHT = 0x27;
constexpr Word VK_DOWN = 0x28;
constexpr Word VK_SELECT = 0x29;
constexpr Word VK_PRINT = 0x2A;
constexpr Word VK_EXECUTE = 0x2B;
constexpr Word VK_SNAPSHOT = 0x2C;
constexpr Word VK_INSERT = 0x2D;
constexpr Word VK_DELETE = 0x2E;
constexpr Word VK_HELP = 0x2F;
// '0'..'9' and 'A'..'Z' are their own codes.
constexpr Word VK_LWIN = 0x5B;
constexpr Word VK_RWIN = 0x5C;
constexpr Word VK_APPS = 0x5D;
constexpr Word VK_NUMPAD0 = 0x60;
constexpr Word VK_NUMPAD1 = 0x61;
constexpr Word VK_NUMPAD2 = 0x62;
constexpr Word VK_NUMPAD3 = 0x63;
constexpr Word VK_NUMPAD4 = 0x64;
constexpr Word VK_NUMPAD5 = 0x65;
constexpr Word VK_NUMPAD6 = 0x66;
constexpr Word VK_NUMPAD7 = 0x67;
constexpr Word VK_NUMPAD8 = 0x68;
constexpr Word VK_NUMPAD9 = 0x69;
constexpr Word VK_MULTIPLY = 0x6A;
constexpr Word VK_ADD = 0x6B;
constexpr Word VK_SEPARATOR = 0x6C;
constexpr Word VK_SUBTRACT = 0x6D;
constexpr Word VK_DECIMAL = 0x6E;
constexpr Word VK_DIVIDE = 0x6F;
constexpr Word VK_F1 = 0x70;
constexpr Word VK_F2 = 0x71;
constexpr Word VK_F3 = 0x72;
constexpr Word VK_F4 = 0x73;
constexpr Word VK_F5 = 0x74;
constexpr Word VK_F6 = 0x75;
constexpr Word VK_F7 = 0x76;
constexpr Word VK_F8 = 0x77;
constexpr Word VK_F9 = 0x78;
constexpr Word VK_F10 = 0x79;
constexpr Word VK_F11 = 0x7A;
constexpr Word VK_F12 = 0x7B;
constexpr Word VK_NUMLOCK = 0x90;
constexpr Word VK_SCROLL = 0x91;
constexpr Word VK_LSHIFT = 0xA0;
constexpr Word VK_RSHIFT = 0xA1;
constexpr Word VK_LCONTROL = 0xA2;
constexpr Word VK_RCONTROL = 0xA3;
constexpr Word VK_LMENU = 0xA4;
constexpr Word VK_RMENU = 0xA5;
constexpr Word VK_OEM_1 = 0xBA;       // ;:
constexpr Word VK_OEM_PLUS = 0xBB;    // =+
constexpr Word VK_OEM_COMMA = 0xBC;   // ,<
constexpr Word VK_OEM_MINUS = 0xBD;   // -_
constexpr Word VK_OEM_PERIOD = 0xBE;  // .>
constexpr Word VK_OEM_2 = 0xBF;       // /?
constexpr Word VK_OEM_3 = 0xC0;       // `~
constexpr Word VK_OEM_4 = 0xDB;       // [{
constexpr Word VK_OEM_5 = 0xDC;       // \|
constexpr Word VK_OEM_6 = 0xDD;       // ]}
constexpr Word VK_OEM_7 = 0xDE;       // '"

// ---- Shift state -----------------------------------------------------------

enum TShiftStateItem { ssShift, ssAlt, ssCtrl, ssLeft, ssRight, ssMiddle, ssDouble };
KELMAR_ENUM(TShiftStateItem, u"ssShift", u"ssAlt", u"ssCtrl", u"ssLeft", u"ssRight", u"ssMiddle", u"ssDouble");
using TShiftState = Set<TShiftStateItem>;

enum TMouseButton { mbLeft, mbRight, mbMiddle };
KELMAR_ENUM(TMouseButton, u"mbLeft", u"mbRight", u"mbMiddle");

// ---- Keyboard state ----------------------------------------------------------

// What GetKeyState reads. The input driver presses and releases keys here;
// a front end or a test may hold a key (Shift while clicking a title).
void SetKeyDown(Word key, bool down);
// Releases every key.
void ResetKeyboardState();
// High bit set (a negative value) while the key is down, as Windows has it.
int16_t GetKeyState(int key);
// The modifiers and mouse buttons held now.
TShiftState KeyboardStateToShiftState();
// The wParam flags of a mouse message for a shift state, and back.
WPARAM ShiftStateToMouseKeys(TShiftState shift);
TShiftState MouseKeysToShiftState(WPARAM keys);
// The key-data flags of WM_KEYDOWN: bit 29 is set while Alt is held.
LPARAM KeyDataFor(TShiftState shift);
TShiftState KeyDataToShiftState(LPARAM keyData);

// ---- Characters --------------------------------------------------------------

// The character a keystroke produces on a US layout, or 0 when it produces
// none: letters by Shift, Ctrl+letter the control code (Ctrl+A is 1),
// Enter CR and Ctrl+Enter LF, Escape 27, Backspace 8, Tab 9, digits and
// punctuation of the main keyboard and the number pad. Ctrl+Alt chords and
// function, cursor and editing keys give none.
WideChar KeyToChar(Word key, TShiftState shift);
// The key and shift that type a character, for drivers that type text;
// false for a character no key of the layout gives.
bool CharToKey(WideChar c, Word& key, TShiftState& shift);

// ---- Shortcuts ----------------------------------------------------------------

using TShortCut = Word;
constexpr TShortCut scShift = 0x2000;
constexpr TShortCut scCtrl = 0x4000;
constexpr TShortCut scAlt = 0x8000;
constexpr TShortCut scNone = 0;

TShortCut ShortCut(Word key, TShiftState shift);
void ShortCutToKey(TShortCut shortCut, Word& key, TShiftState& shift);
// "Ctrl+Shift+F", "Alt+F4", "Del", "Ctrl+Ins"; unknown text gives 0.
TShortCut TextToShortCut(const String& text);
String ShortCutToText(TShortCut shortCut);
