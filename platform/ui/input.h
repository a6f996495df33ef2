// The input driver: turns keystrokes and mouse actions into the messages a
// control receives, as Windows delivers them. Front ends and tests use it.
//
// One keystroke, in order:
//  1. the key (and its modifiers) go down in the keyboard state;
//  2. a shortcut of the focused control's popup menu (or a parent's), then
//     of its form's menu and action lists, runs its item and takes the key;
//  3. Tab, arrows, Enter and Escape that the control does not want
//     (WM_GETDLGCODE) go to the form as dialogue keys, when it acts on them;
//  4. WM_KEYDOWN (WM_SYSKEYDOWN with Alt): the form's KeyPreview, then
//     KeyDown;
//  5. WM_CHAR of the character the key gives (KeyToChar), unless a KeyDown
//     handler zeroed the key; Alt chords give WM_SYSCHAR, which no KeyPress
//     sees;
//  6. WM_KEYUP (WM_SYSKEYUP with Alt) to the control focused by then, and
//     the keys go up again.
#pragma once

#include "platform/ui/controls.h"

// A keystroke to the focused control; raises EInvalidOperation when no
// control has the focus.
void PressKey(Word key, TShiftState shift = TShiftState());
// A keystroke to a given control, focused or not.
void SendKeyStroke(TWinControl* target, Word key, TShiftState shift = TShiftState());
// Types text into the focused control, key by key; a character no key
// gives arrives as WM_CHAR alone.
void TypeText(const String& text);

// Mouse actions at client coordinates of the control.
void MouseClick(TControl* control, int x, int y, TMouseButton button = mbLeft, TShiftState shift = TShiftState());
// Down, up, double click, up: what Windows sends for a double click.
void MouseDoubleClick(TControl* control, int x, int y, TShiftState shift = TShiftState());
void MouseMoveTo(TControl* control, int x, int y, TShiftState shift = TShiftState());
