#include "platform/ui/input.h"

#include "platform/rtl/exceptions.h"
#include "platform/ui/forms.h"
#include "platform/ui/menus.h"

namespace {

// Holds the modifiers of a chord down in the keyboard state for its life.
class THeldModifiers {
 public:
  explicit THeldModifiers(TShiftState shift) : shift_(shift) { Set(true); }
  ~THeldModifiers() { Set(false); }
  THeldModifiers(const THeldModifiers&) = delete;
  THeldModifiers& operator=(const THeldModifiers&) = delete;

 private:
  void Set(bool down) {
    if (shift_.Contains(ssShift)) SetKeyDown(VK_SHIFT, down);
    if (shift_.Contains(ssCtrl)) SetKeyDown(VK_CONTROL, down);
    if (shift_.Contains(ssAlt)) SetKeyDown(VK_MENU, down);
  }
  TShiftState shift_;
};

bool Alive(TWinControl* control, HWND handle) { return handle && FindControl(handle) == control; }

bool IsMenuKey(TWinControl* target, Word key, TShiftState shift) {
  for (TControl* c = target; c; c = c->Parent())
    if (TPopupMenu* menu = c->PopupMenu(); menu && menu->IsShortCut(key, shift)) return true;
  TCustomForm* form = GetParentForm(target);
  return form && form->IsShortCut(key, shift);
}

LRESULT DialogMask(Word key) {
  switch (key) {
    case VK_TAB: return DLGC_WANTTAB;
    case VK_LEFT: case VK_RIGHT: case VK_UP: case VK_DOWN: return DLGC_WANTARROWS;
    case VK_RETURN: case VK_ESCAPE: case VK_EXECUTE: case VK_CANCEL: return DLGC_WANTALLKEYS;
    default: return 0;
  }
}

bool IsDialogKey(TWinControl* target, Word key, TShiftState shift) {
  LRESULT mask = DialogMask(key);
  if (!mask) return false;
  LRESULT wants = target->Perform(WM_GETDLGCODE, 0, 0);
  if (wants & (mask | DLGC_WANTALLKEYS)) return false;
  TCustomForm* form = GetParentForm(target);
  return form && form->DialogKey(key, shift);
}

// The control that gets what follows: the focused one, else the target.
TWinControl* Receiver(TWinControl* target, HWND targetHandle) {
  if (TWinControl* focused = Screen->ActiveControl()) return focused;
  return Alive(target, targetHandle) ? target : nullptr;
}

TWinControl* Focused() {
  TWinControl* c = Screen->ActiveControl();
  if (!c) throw EInvalidOperation(u"No control has the keyboard focus");
  return c;
}

void SendMouse(TControl* control, UINT msg, int x, int y, TShiftState shift) {
  control->Perform(msg, ShiftStateToMouseKeys(shift), MAKELPARAM(x, y));
}

}  // namespace

void SendKeyStroke(TWinControl* target, Word key, TShiftState shift) {
  THeldModifiers held(shift);
  SetKeyDown(key, true);
  HWND handle = target->Handle();
  bool alt = shift.Contains(ssAlt);
  bool handled = IsMenuKey(target, key, shift) || (Alive(target, handle) && IsDialogKey(target, key, shift));
  if (!handled && Alive(target, handle)) {
    TMessage down{alt ? WM_SYSKEYDOWN : WM_KEYDOWN, key, KeyDataFor(shift), 0};
    target->WindowProc(down);
    bool eaten = down.WParam == 0;
    WideChar ch = KeyToChar(key, shift);
    if (ch && !eaten && Alive(target, handle)) {
      TMessage chr{alt ? WM_SYSCHAR : WM_CHAR, ch, KeyDataFor(shift), 0};
      target->WindowProc(chr);
    }
  }
  SetKeyDown(key, false);
  if (TWinControl* receiver = Receiver(target, handle)) {
    TMessage up{alt ? WM_SYSKEYUP : WM_KEYUP, key, KeyDataFor(shift), 0};
    receiver->WindowProc(up);
  }
}

void PressKey(Word key, TShiftState shift) { SendKeyStroke(Focused(), key, shift); }

void TypeText(const String& text) {
  for (int i = 1; i <= text.Length(); ++i) {
    Word key = 0;
    TShiftState shift;
    if (CharToKey(text[i], key, shift)) {
      PressKey(key, shift);
    } else {
      TMessage chr{WM_CHAR, text[i], 1, 0};
      Focused()->WindowProc(chr);
    }
  }
}

void MouseClick(TControl* control, int x, int y, TMouseButton button, TShiftState shift) {
  THeldModifiers held(shift);
  UINT downMsg = button == mbLeft ? WM_LBUTTONDOWN : button == mbRight ? WM_RBUTTONDOWN : WM_MBUTTONDOWN;
  UINT upMsg = button == mbLeft ? WM_LBUTTONUP : button == mbRight ? WM_RBUTTONUP : WM_MBUTTONUP;
  TShiftState pressed = shift;
  pressed << (button == mbLeft ? ssLeft : button == mbRight ? ssRight : ssMiddle);
  Word vk = button == mbLeft ? VK_LBUTTON : button == mbRight ? VK_RBUTTON : VK_MBUTTON;
  SetKeyDown(vk, true);
  SendMouse(control, downMsg, x, y, pressed);
  SetKeyDown(vk, false);
  SendMouse(control, upMsg, x, y, shift);
}

void MouseDoubleClick(TControl* control, int x, int y, TShiftState shift) {
  MouseClick(control, x, y, mbLeft, shift);
  THeldModifiers held(shift);
  SetKeyDown(VK_LBUTTON, true);
  SendMouse(control, WM_LBUTTONDBLCLK, x, y, shift + TShiftState{ssLeft});
  SetKeyDown(VK_LBUTTON, false);
  SendMouse(control, WM_LBUTTONUP, x, y, shift);
}

void MouseMoveTo(TControl* control, int x, int y, TShiftState shift) {
  THeldModifiers held(shift);
  SendMouse(control, WM_MOUSEMOVE, x, y, shift);
}
