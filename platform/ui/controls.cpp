#include "platform/ui/controls.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <unordered_map>

#include "platform/rtl/sysutils.h"
#include "platform/ui/forms.h"
#include "platform/ui/menus.h"
#include "platform/ui/thread.h"

// ---- Handles and the posted-message queue -----------------------------------

namespace {

struct TWindowRegistry {
  std::unordered_map<HWND, TWinControl*> Windows;
  HWND Next = 0x10000;
};

TWindowRegistry& Registry() {
  static TWindowRegistry registry;
  return registry;
}

struct TPostedMessage {
  HWND Handle;
  UINT Msg;
  WPARAM WParam;
  LPARAM LParam;
};

struct TPostedQueue {
  std::mutex Lock;
  std::deque<TPostedMessage> Messages;
};

TPostedQueue& Queue() {
  static TPostedQueue queue;
  return queue;
}

}  // namespace

TWinControl* FindControl(HWND handle) {
  auto& map = Registry().Windows;
  auto it = map.find(handle);
  return it == map.end() ? nullptr : it->second;
}

LRESULT SendMessage(HWND handle, UINT msg, WPARAM wParam, LPARAM lParam) {
  if (!IsMainThread()) {
    LRESULT result = 0;
    TThread::Synchronize(nullptr, [&] { result = SendMessage(handle, msg, wParam, lParam); });
    return result;
  }
  TWinControl* c = FindControl(handle);
  return c ? c->Perform(msg, wParam, lParam) : 0;
}

bool PostMessage(HWND handle, UINT msg, WPARAM wParam, LPARAM lParam) {
  if (!handle) return false;
  std::lock_guard<std::mutex> lock(Queue().Lock);
  Queue().Messages.push_back({handle, msg, wParam, lParam});
  return true;
}

int DeliverPostedMessages(int limit) {
  int delivered = 0;
  for (int taken = 0; taken < limit; ++taken) {
    TPostedMessage m;
    {
      std::lock_guard<std::mutex> lock(Queue().Lock);
      if (Queue().Messages.empty()) break;
      m = Queue().Messages.front();
      Queue().Messages.pop_front();
    }
    // The receiver may be gone since the post: the message is dropped.
    if (TWinControl* c = FindControl(m.Handle)) {
      c->Perform(m.Msg, m.WParam, m.LParam);
      ++delivered;
    }
  }
  return delivered;
}

int PostedMessageCount() {
  std::lock_guard<std::mutex> lock(Queue().Lock);
  return static_cast<int>(Queue().Messages.size());
}

// ---- TControl ------------------------------------------------------------------

KELMAR_PUBLISH(TControl) {
  r.Prop(u"Align", &TControl::Align, &TControl::SetAlign).Default = alNone;
  r.Prop(u"Color", &TControl::Color, &TControl::SetColor);
  r.Prop(u"Cursor", &TControl::Cursor, &TControl::SetCursor).Default = crDefault;
  r.Prop(u"Enabled", &TControl::Enabled, &TControl::SetEnabled).Default = 1;
  r.Prop(u"Font", &TControl::Font, &TControl::SetFont);
  r.Prop(u"Height", &TControl::Height, &TControl::SetHeight);
  r.Prop(u"Hint", &TControl::Hint, &TControl::SetHint);
  r.Prop(u"Left", &TControl::Left, &TControl::SetLeft);
  r.Prop(u"PopupMenu", &TControl::PopupMenu, &TControl::SetPopupMenu);
  r.Prop(u"ShowHint", &TControl::ShowHint, &TControl::SetShowHint).Default = 0;
  r.Prop(u"Top", &TControl::Top, &TControl::SetTop);
  r.Prop(u"Visible", &TControl::Visible, &TControl::SetVisible).Default = 1;
  r.Prop(u"Width", &TControl::Width, &TControl::SetWidth);
  r.Prop(u"OnClick", &TControl::OnClick);
  r.Prop(u"OnDblClick", &TControl::OnDblClick);
  r.Prop(u"OnMouseDown", &TControl::OnMouseDown);
  r.Prop(u"OnMouseMove", &TControl::OnMouseMove);
  r.Prop(u"OnMouseUp", &TControl::OnMouseUp);
  r.Prop(u"OnResize", &TControl::OnResize);
}

TControl::TControl(TComponent* AOwner) : TComponent(AOwner), font_(std::make_unique<TFont>()) {
  WindowProc = Closure(this, &TControl::WndProc);
  font_->OnChange = Closure(this, &TControl::FontChanged);
}

TControl::~TControl() {
  SetState(csDestroying, true);
  if (parent_) parent_->RemoveControl(this);
}

void TControl::SetParent(TWinControl* AParent) {
  if (parent_ == AParent) return;
  if (AParent == this) throw EInvalidOperation(u"A control cannot have itself as its parent");
  if (parent_) parent_->RemoveControl(this);
  if (AParent) AParent->InsertControl(this);
}

void TControl::SetVisible(bool value) {
  if (visible_ == value) return;
  visible_ = value;
  VisibleChanged();
  Invalidate();
}

bool TControl::Showing() const {
  for (const TControl* c = this; c; c = c->parent_)
    if (!c->visible_) return false;
  return true;
}

void TControl::SetEnabled(bool value) {
  if (enabled_ == value) return;
  enabled_ = value;
  EnabledChanged();
  Invalidate();
}

void TControl::SetBounds(int ALeft, int ATop, int AWidth, int AHeight) {
  bool resized = AWidth != width_ || AHeight != height_;
  left_ = ALeft;
  top_ = ATop;
  width_ = AWidth;
  height_ = AHeight;
  if (resized) Resize();
  Invalidate();
}

TPoint TControl::ClientToScreen(TPoint p) const {
  for (const TControl* c = this; c; c = c->parent_) {
    p.X += c->left_;
    p.Y += c->top_;
  }
  return p;
}

TPoint TControl::ScreenToClient(TPoint p) const {
  TPoint origin = ClientToScreen({0, 0});
  return {p.X - origin.X, p.Y - origin.Y};
}

void TControl::SetText(const String& value) {
  if (GetText() == value) return;
  SetTextValue(value);
  TextChanged();
  Invalidate();
}

void TControl::SetColor(TColor v) {
  if (color_ == v) return;
  color_ = v;
  Invalidate();
}

void TControl::SetPopupMenu(TPopupMenu* menu) {
  if (popupMenu_ == menu) return;
  if (popupMenu_) popupMenu_->RemoveFreeNotification(this);
  popupMenu_ = menu;
  if (menu) menu->FreeNotification(this);
}

void TControl::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == popupMenu_) popupMenu_ = nullptr;
}

LRESULT TControl::Perform(UINT Msg, WPARAM WParam, LPARAM LParam) {
  TMessage m{Msg, WParam, LParam, 0};
  if (WindowProc) WindowProc(m);
  else WndProc(m);
  return m.Result;
}

void TControl::WndProc(TMessage& Message) { Dispatch(Message); }

void TControl::Dispatch(TMessage& Message) {
  switch (Message.Msg) {
    case WM_LBUTTONDOWN: case WM_LBUTTONUP: case WM_LBUTTONDBLCLK:
    case WM_RBUTTONDOWN: case WM_RBUTTONUP: case WM_RBUTTONDBLCLK:
    case WM_MBUTTONDOWN: case WM_MBUTTONUP: case WM_MBUTTONDBLCLK:
    case WM_MOUSEMOVE:
      MouseMessage(Message);
      break;
    default:
      DefaultHandler(Message);
  }
}

void TControl::DefaultHandler(TMessage&) {}

void TControl::MouseMessage(TMessage& m) {
  int x = GET_X_LPARAM(m.LParam), y = GET_Y_LPARAM(m.LParam);
  TShiftState shift = MouseKeysToShiftState(m.WParam);
  switch (m.Msg) {
    case WM_LBUTTONDOWN:
      leftPressed_ = true;
      MouseDown(mbLeft, shift, x, y);
      break;
    case WM_LBUTTONDBLCLK:
      MouseDown(mbLeft, shift + TShiftState{ssDouble}, x, y);
      DblClick();
      break;
    case WM_LBUTTONUP: {
      bool wasPressed = leftPressed_;
      leftPressed_ = false;
      MouseUp(mbLeft, shift, x, y);
      if (wasPressed && ClientRect().Contains({x, y})) MouseClicked();
      break;
    }
    case WM_RBUTTONDOWN: MouseDown(mbRight, shift, x, y); break;
    case WM_RBUTTONDBLCLK: MouseDown(mbRight, shift + TShiftState{ssDouble}, x, y); break;
    case WM_RBUTTONUP:
      MouseUp(mbRight, shift, x, y);
      // The context menu of the control, or of the nearest parent that has one.
      for (TControl* c = this; c; c = c->parent_) {
        if (TPopupMenu* menu = c->popupMenu_; menu && menu->AutoPopup()) {
          TPoint at = ClientToScreen({x, y});
          menu->SetPopupComponent(this);
          menu->Popup(at.X, at.Y);
          break;
        }
      }
      break;
    case WM_MBUTTONDOWN: MouseDown(mbMiddle, shift, x, y); break;
    case WM_MBUTTONDBLCLK: MouseDown(mbMiddle, shift + TShiftState{ssDouble}, x, y); break;
    case WM_MBUTTONUP: MouseUp(mbMiddle, shift, x, y); break;
    case WM_MOUSEMOVE: MouseMove(shift, x, y); break;
    default: break;
  }
}

void TControl::Click() { OnClick(this); }
void TControl::DblClick() { OnDblClick(this); }
void TControl::MouseDown(TMouseButton Button, TShiftState Shift, int X, int Y) { OnMouseDown(this, Button, Shift, X, Y); }
void TControl::MouseMove(TShiftState Shift, int X, int Y) { OnMouseMove(this, Shift, X, Y); }
void TControl::MouseUp(TMouseButton Button, TShiftState Shift, int X, int Y) { OnMouseUp(this, Button, Shift, X, Y); }

// ---- TWinControl ---------------------------------------------------------------

KELMAR_PUBLISH(TWinControl) {
  r.Prop(u"TabOrder", &TWinControl::TabOrder, &TWinControl::SetTabOrder);
  r.Prop(u"TabStop", &TWinControl::TabStop, &TWinControl::SetTabStop).Default = 0;
  r.Prop(u"OnEnter", &TWinControl::OnEnter);
  r.Prop(u"OnExit", &TWinControl::OnExit);
  r.Prop(u"OnKeyDown", &TWinControl::OnKeyDown);
  r.Prop(u"OnKeyPress", &TWinControl::OnKeyPress);
  r.Prop(u"OnKeyUp", &TWinControl::OnKeyUp);
}

TWinControl::TWinControl(TComponent* AOwner) : TControl(AOwner) {
  TWindowRegistry& reg = Registry();
  handle_ = reg.Next++;
  reg.Windows[handle_] = this;
}

TWinControl::~TWinControl() {
  SetState(csDestroying, true);
  Screen->ControlDestroying(this);
  while (!controls_.empty()) delete controls_.back();
  Registry().Windows.erase(handle_);
}

TControl* TWinControl::Controls(int index) const {
  if (index < 0 || index >= ControlCount()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return controls_[static_cast<size_t>(index)];
}

bool TWinControl::ContainsControl(const TControl* control) const {
  for (; control; control = control->Parent())
    if (control == this) return true;
  return false;
}

TControl* TWinControl::FindChildControl(const String& name) const {
  for (TControl* c : controls_) {
    if (SameText(c->Name(), name)) return c;
    if (auto* w = dynamic_cast<TWinControl*>(c))
      if (TControl* found = w->FindChildControl(name)) return found;
  }
  return nullptr;
}

void TWinControl::InsertControl(TControl* control) {
  controls_.push_back(control);
  control->parent_ = this;
  Invalidate();
}

void TWinControl::RemoveControl(TControl* control) {
  controls_.erase(std::remove(controls_.begin(), controls_.end(), control), controls_.end());
  control->parent_ = nullptr;
  Invalidate();
}

int TWinControl::TabOrder() const {
  if (!Parent()) return -1;
  int order = 0;
  for (TControl* c : Parent()->controls_) {
    if (c == this) return order;
    if (dynamic_cast<TWinControl*>(c)) ++order;
  }
  return -1;
}

void TWinControl::SetTabOrder(int value) {
  TWinControl* p = Parent();
  if (!p || value < 0) return;
  // The tab order is the order of the windowed children in the parent's list.
  auto& list = p->controls_;
  list.erase(std::find(list.begin(), list.end(), this));
  int order = 0;
  auto it = list.begin();
  for (; it != list.end(); ++it) {
    if (!dynamic_cast<TWinControl*>(*it)) continue;
    if (order == value) break;
    ++order;
  }
  list.insert(it, this);
}

bool TWinControl::CanFocus() const {
  for (const TControl* c = this; c; c = c->Parent())
    if (!c->Visible() || !c->Enabled()) return false;
  return true;
}

bool TWinControl::Focused() const { return Screen->ActiveControl() == this; }

void TWinControl::SetFocus() {
  if (!CanFocus()) throw EInvalidOperation(u"Cannot focus a disabled or invisible window");
  Screen->FocusControl(this);
}

void TWinControl::GetTabOrderList(std::vector<TWinControl*>& list) const {
  for (TControl* c : controls_) {
    if (auto* w = dynamic_cast<TWinControl*>(c)) {
      list.push_back(w);
      w->GetTabOrderList(list);
    }
  }
}

TWinControl* TWinControl::FindNextControl(TWinControl* current, bool goForward, bool checkTabStop,
                                          bool checkParent) const {
  std::vector<TWinControl*> list;
  GetTabOrderList(list);
  if (list.empty()) return nullptr;
  int count = static_cast<int>(list.size());
  auto found = std::find(list.begin(), list.end(), current);
  int start = found == list.end() ? (goForward ? count - 1 : 0) : static_cast<int>(found - list.begin());
  int i = start;
  do {
    if (goForward) i = (i + 1) % count;
    else i = (i == 0 ? count : i) - 1;
    TWinControl* c = list[static_cast<size_t>(i)];
    if (c != current && c->CanFocus() && (!checkTabStop || c->TabStop()) && (!checkParent || c->Parent() == this))
      return c;
  } while (i != start);
  return nullptr;
}

void TWinControl::SelectNext(TWinControl* current, bool goForward, bool checkTabStop) {
  if (TWinControl* next = FindNextControl(current, goForward, checkTabStop, !checkTabStop)) next->SetFocus();
}

void TWinControl::SelectFirst() {
  if (TWinControl* first = FindNextControl(nullptr, true, true, false)) first->SetFocus();
}

void TWinControl::Dispatch(TMessage& Message) {
  switch (Message.Msg) {
    case WM_KEYDOWN: case WM_SYSKEYDOWN:
      if (!DoKeyDown(Message)) DefaultHandler(Message);
      break;
    case WM_KEYUP: case WM_SYSKEYUP:
      if (!DoKeyUp(Message)) DefaultHandler(Message);
      break;
    case WM_CHAR:
      if (!DoKeyPress(Message)) DefaultHandler(Message);
      break;
    case WM_SETFOCUS:
      FocusGained();
      DefaultHandler(Message);
      break;
    case WM_KILLFOCUS:
      FocusLost();
      DefaultHandler(Message);
      break;
    case WM_GETDLGCODE:
      Message.Result = GetDlgCode();
      break;
    case WM_LBUTTONDOWN: case WM_RBUTTONDOWN: case WM_LBUTTONDBLCLK:
      // A click focuses a control that takes part in tabbing.
      if (TabStop() && CanFocus() && !Focused()) SetFocus();
      TControl::Dispatch(Message);
      break;
    default:
      TControl::Dispatch(Message);
  }
}

bool TWinControl::DoKeyDown(TMessage& Message) {
  TShiftState shift = KeyDataToShiftState(Message.LParam);
  TCustomForm* form = GetParentForm(this);
  if (form && form != this && form->KeyPreview() && static_cast<TWinControl*>(form)->DoKeyDown(Message)) return true;
  Word key = static_cast<Word>(Message.WParam);
  if (key == 0) return true;
  KeyDown(key, shift);
  Message.WParam = key;
  return key == 0;
}

bool TWinControl::DoKeyUp(TMessage& Message) {
  TShiftState shift = KeyDataToShiftState(Message.LParam);
  TCustomForm* form = GetParentForm(this);
  if (form && form != this && form->KeyPreview() && static_cast<TWinControl*>(form)->DoKeyUp(Message)) return true;
  Word key = static_cast<Word>(Message.WParam);
  if (key == 0) return true;
  KeyUp(key, shift);
  Message.WParam = key;
  return key == 0;
}

bool TWinControl::DoKeyPress(TMessage& Message) {
  TCustomForm* form = GetParentForm(this);
  if (form && form != this && form->KeyPreview() && static_cast<TWinControl*>(form)->DoKeyPress(Message)) return true;
  WideChar ch = static_cast<WideChar>(Message.WParam);
  if (ch == 0) return true;
  KeyPress(ch);
  Message.WParam = ch;
  return ch == 0;
}

void TWinControl::KeyDown(Word& Key, TShiftState Shift) { OnKeyDown(this, Key, Shift); }
void TWinControl::KeyUp(Word& Key, TShiftState Shift) { OnKeyUp(this, Key, Shift); }
void TWinControl::KeyPress(WideChar& Key) { OnKeyPress(this, Key); }
void TWinControl::DoEnter() { OnEnter(this); }
void TWinControl::DoExit() { OnExit(this); }

void TWinControl::NotifyParent(Word code) {
  if (Parent()) Parent()->Perform(WM_COMMAND, MAKEWPARAM(0, code), static_cast<LPARAM>(handle_));
}

void TWinControl::VisibleChanged() {
  if (!Visible()) Screen->DefocusControl(this);
}

void TWinControl::EnabledChanged() {
  if (!Enabled()) Screen->DefocusControl(this);
}

// ---- Painting controls -------------------------------------------------------------

KELMAR_PUBLISH(TGraphicControl) {}

TGraphicControl::TGraphicControl(TComponent* AOwner) : TControl(AOwner), canvas_(std::make_unique<TCanvas>()) {}

void TGraphicControl::Repaint() {
  TControl::Repaint();
  canvas_->ClearOps();
  canvas_->SetFont(Font());
  Paint();
}

KELMAR_PUBLISH(TCustomControl) {}

TCustomControl::TCustomControl(TComponent* AOwner) : TWinControl(AOwner), canvas_(std::make_unique<TCanvas>()) {}

void TCustomControl::Repaint() {
  TControl::Repaint();
  canvas_->ClearOps();
  canvas_->SetFont(Font());
  Paint();
}
