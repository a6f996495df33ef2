// Window messages: the message record, handles and the WM_* numbers.
//
// Numbers follow Windows, since the kit sends and compares them (WM_USER
// markers, WM_COMMAND notifications of the in-place editor, message 1024).
// Handles are plain integers that the framework hands out; 0 is no window.
#pragma once

#include <cstdint>

using Word = uint16_t;
using UINT = uint32_t;
using HWND = uintptr_t;
using WPARAM = uintptr_t;
using LPARAM = intptr_t;
using LRESULT = intptr_t;

// The message record handed to WndProc and Dispatch. Result is what
// SendMessage and Perform return.
struct TMessage {
  UINT Msg = 0;
  WPARAM WParam = 0;
  LPARAM LParam = 0;
  LRESULT Result = 0;

  Word WParamLo() const { return static_cast<Word>(WParam & 0xFFFF); }
  Word WParamHi() const { return static_cast<Word>((WParam >> 16) & 0xFFFF); }
  Word LParamLo() const { return static_cast<Word>(static_cast<uintptr_t>(LParam) & 0xFFFF); }
  Word LParamHi() const { return static_cast<Word>((static_cast<uintptr_t>(LParam) >> 16) & 0xFFFF); }
};

constexpr Word LOWORD(uintptr_t v) { return static_cast<Word>(v & 0xFFFF); }
constexpr Word HIWORD(uintptr_t v) { return static_cast<Word>((v >> 16) & 0xFFFF); }
constexpr WPARAM MAKEWPARAM(Word lo, Word hi) { return static_cast<WPARAM>(lo) | (static_cast<WPARAM>(hi) << 16); }
// Mouse coordinates travel as signed 16-bit halves.
constexpr LPARAM MAKELPARAM(int lo, int hi) {
  return static_cast<LPARAM>((static_cast<uint32_t>(static_cast<uint16_t>(lo))) |
                             (static_cast<uint32_t>(static_cast<uint16_t>(hi)) << 16));
}
constexpr int GET_X_LPARAM(LPARAM l) { return static_cast<int16_t>(static_cast<uint16_t>(l & 0xFFFF)); }
constexpr int GET_Y_LPARAM(LPARAM l) { return static_cast<int16_t>(static_cast<uint16_t>((l >> 16) & 0xFFFF)); }

// ---- Messages --------------------------------------------------------------

constexpr UINT WM_NULL = 0x0000;
constexpr UINT WM_CREATE = 0x0001;
constexpr UINT WM_DESTROY = 0x0002;
constexpr UINT WM_MOVE = 0x0003;
constexpr UINT WM_SIZE = 0x0005;
constexpr UINT WM_ACTIVATE = 0x0006;
constexpr UINT WM_SETFOCUS = 0x0007;
constexpr UINT WM_KILLFOCUS = 0x0008;
constexpr UINT WM_ENABLE = 0x000A;
constexpr UINT WM_SETTEXT = 0x000C;
constexpr UINT WM_GETTEXT = 0x000D;
constexpr UINT WM_GETTEXTLENGTH = 0x000E;
constexpr UINT WM_PAINT = 0x000F;
constexpr UINT WM_CLOSE = 0x0010;
constexpr UINT WM_QUIT = 0x0012;
constexpr UINT WM_SHOWWINDOW = 0x0018;
constexpr UINT WM_SETCURSOR = 0x0020;
constexpr UINT WM_COPYDATA = 0x004A;
constexpr UINT WM_NOTIFY = 0x004E;
constexpr UINT WM_CONTEXTMENU = 0x007B;
constexpr UINT WM_GETDLGCODE = 0x0087;
constexpr UINT WM_KEYDOWN = 0x0100;
constexpr UINT WM_KEYUP = 0x0101;
constexpr UINT WM_CHAR = 0x0102;
constexpr UINT WM_DEADCHAR = 0x0103;
constexpr UINT WM_SYSKEYDOWN = 0x0104;
constexpr UINT WM_SYSKEYUP = 0x0105;
constexpr UINT WM_SYSCHAR = 0x0106;
constexpr UINT WM_COMMAND = 0x0111;
constexpr UINT WM_SYSCOMMAND = 0x0112;
constexpr UINT WM_TIMER = 0x0113;
constexpr UINT WM_HSCROLL = 0x0114;
constexpr UINT WM_VSCROLL = 0x0115;
constexpr UINT WM_INITMENUPOPUP = 0x0117;
constexpr UINT WM_MOUSEMOVE = 0x0200;
constexpr UINT WM_LBUTTONDOWN = 0x0201;
constexpr UINT WM_LBUTTONUP = 0x0202;
constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
constexpr UINT WM_RBUTTONDOWN = 0x0204;
constexpr UINT WM_RBUTTONUP = 0x0205;
constexpr UINT WM_RBUTTONDBLCLK = 0x0206;
constexpr UINT WM_MBUTTONDOWN = 0x0207;
constexpr UINT WM_MBUTTONUP = 0x0208;
constexpr UINT WM_MBUTTONDBLCLK = 0x0209;
constexpr UINT WM_MOUSEWHEEL = 0x020A;
constexpr UINT WM_CUT = 0x0300;
constexpr UINT WM_COPY = 0x0301;
constexpr UINT WM_PASTE = 0x0302;
constexpr UINT WM_CLEAR = 0x0303;
constexpr UINT WM_UNDO = 0x0304;
constexpr UINT WM_USER = 0x0400;

// The framework's own messages, above the range Windows uses for controls.
constexpr UINT CM_BASE = 0xB000;
// wParam the key, lParam the key data; a control that acts on a dialogue
// key (a default or cancel button) answers 1.
constexpr UINT CM_DIALOGKEY = CM_BASE + 5;
// Posted by TCustomForm::Release: the form deletes itself on delivery.
constexpr UINT CM_RELEASE = CM_BASE + 33;

// Notification codes carried in the high word of WM_COMMAND's wParam; the
// low word is the control's id, lParam its handle.
constexpr Word BN_CLICKED = 0;
constexpr Word EN_SETFOCUS = 0x0100;
constexpr Word EN_KILLFOCUS = 0x0200;
constexpr Word EN_CHANGE = 0x0300;
constexpr Word EN_UPDATE = 0x0400;
constexpr Word EN_MAXTEXT = 0x0501;
constexpr Word CBN_SELCHANGE = 1;
constexpr Word CBN_SETFOCUS = 3;
constexpr Word CBN_KILLFOCUS = 4;
constexpr Word CBN_EDITCHANGE = 5;
constexpr Word CBN_DROPDOWN = 7;
constexpr Word CBN_CLOSEUP = 8;

// WM_GETDLGCODE answers: the keys a control keeps from the dialogue keys.
constexpr LRESULT DLGC_WANTARROWS = 0x0001;
constexpr LRESULT DLGC_WANTTAB = 0x0002;
constexpr LRESULT DLGC_WANTALLKEYS = 0x0004;
constexpr LRESULT DLGC_WANTCHARS = 0x0080;

// Mouse-message wParam flags.
constexpr WPARAM MK_LBUTTON = 0x0001;
constexpr WPARAM MK_RBUTTON = 0x0002;
constexpr WPARAM MK_SHIFT = 0x0004;
constexpr WPARAM MK_CONTROL = 0x0008;
constexpr WPARAM MK_MBUTTON = 0x0010;

// MessageBeep values.
constexpr unsigned MB_OK = 0x00000000;
constexpr unsigned MB_ICONHAND = 0x00000010;
constexpr unsigned MB_ICONQUESTION = 0x00000020;
constexpr unsigned MB_ICONEXCLAMATION = 0x00000030;
constexpr unsigned MB_ICONASTERISK = 0x00000040;
constexpr unsigned MB_SIMPLEBEEP = 0xFFFFFFFF;
