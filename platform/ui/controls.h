// TControl and TWinControl: the visual component base, window handles,
// message dispatch, the posted-message queue, keyboard and mouse handling,
// and focus.
//
// Ownership: a control belongs to its Owner like any component. Its Parent
// only lists it, but a TWinControl deletes the controls it parents when it is
// deleted, as the historical framework does. Every windowed control gets a
// handle at birth and gives it back when deleted; messages posted to a
// handle that is gone by delivery time are dropped.
//
// Message flow: Perform and SendMessage call WindowProc (bound to WndProc by
// default; it may be replaced, and the old value kept and called). WndProc
// ends in Dispatch, which runs the handlers of the standard messages (the
// "message methods"), and what they leave goes to DefaultHandler, the place
// of the system's own window procedure.
#pragma once

#include <memory>
#include <vector>

#include "platform/rtl/classes.h"
#include "platform/db/dbtypes.h"  // TAlignment, shared with the fields
#include "platform/rtl/events.h"
#include "platform/ui/graphics.h"
#include "platform/ui/keyboard.h"
#include "platform/ui/messages.h"

class TWinControl;
class TCustomForm;
class TPopupMenu;

enum TAlign { alNone, alTop, alBottom, alLeft, alRight, alClient, alCustom };
KELMAR_ENUM(TAlign, u"alNone", u"alTop", u"alBottom", u"alLeft", u"alRight", u"alClient", u"alCustom");
enum TVerticalAlignment { taAlignTop, taAlignBottom, taVerticalCenter };
KELMAR_ENUM(TVerticalAlignment, u"taAlignTop", u"taAlignBottom", u"taVerticalCenter");

using TCursor = int;
constexpr TCursor crDefault = 0;
constexpr TCursor crNone = -1;
constexpr TCursor crArrow = -2;
constexpr TCursor crCross = -3;
constexpr TCursor crIBeam = -4;
constexpr TCursor crHourGlass = -11;
constexpr TCursor crDrag = -12;
constexpr TCursor crNoDrop = -13;
constexpr TCursor crHSplit = -14;
constexpr TCursor crVSplit = -15;
constexpr TCursor crSQLWait = -17;
constexpr TCursor crNo = -18;
constexpr TCursor crAppStart = -19;
constexpr TCursor crHelp = -20;
constexpr TCursor crHandPoint = -21;

using TWndMethod = TEvent<void(TMessage& Message)>;
using TKeyEvent = TEvent<void(TObject* Sender, Word& Key, TShiftState Shift)>;
using TKeyPressEvent = TEvent<void(TObject* Sender, WideChar& Key)>;
using TMouseEvent = TEvent<void(TObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y)>;
using TMouseMoveEvent = TEvent<void(TObject* Sender, TShiftState Shift, int X, int Y)>;

// ---- Handles and messages ----------------------------------------------------

// The windowed control behind a handle, or null. Main thread only.
TWinControl* FindControl(HWND handle);
// Synchronous: runs the receiver's WindowProc now and returns its result;
// 0 for an unknown handle. From another thread the call waits until the
// main thread has run it (in ProcessMessages), as a window's own thread
// answers a message sent to it.
LRESULT SendMessage(HWND handle, UINT msg, WPARAM wParam, LPARAM lParam);
// Queues the message; Application->ProcessMessages() delivers it. False for
// the null handle. Safe to call from any thread.
bool PostMessage(HWND handle, UINT msg, WPARAM wParam, LPARAM lParam);
// Delivers queued messages in order, those posted meanwhile included, up to
// `limit` of them; the rest wait for the next call. Returns how many were
// delivered (dropped ones not counted). Main thread only.
int DeliverPostedMessages(int limit);
int PostedMessageCount();

// ---- TControl ------------------------------------------------------------------

class TControl : public TComponent {
  KELMAR_CLASS(TControl, TComponent)
 public:
  explicit TControl(TComponent* AOwner);
  ~TControl() override;

  TWinControl* Parent() const { return parent_; }
  virtual void SetParent(TWinControl* AParent);

  bool Visible() const { return visible_; }
  void SetVisible(bool value);
  void Show() { SetVisible(true); }
  void Hide() { SetVisible(false); }
  // Visible itself and through every parent.
  bool Showing() const;
  bool Enabled() const { return enabled_; }
  virtual void SetEnabled(bool value);

  int Left() const { return left_; }
  int Top() const { return top_; }
  int Width() const { return width_; }
  int Height() const { return height_; }
  void SetLeft(int v) { SetBounds(v, top_, width_, height_); }
  void SetTop(int v) { SetBounds(left_, v, width_, height_); }
  void SetWidth(int v) { SetBounds(left_, top_, v, height_); }
  void SetHeight(int v) { SetBounds(left_, top_, width_, v); }
  virtual void SetBounds(int ALeft, int ATop, int AWidth, int AHeight);
  TRect BoundsRect() const { return Bounds(left_, top_, width_, height_); }
  virtual TRect ClientRect() const { return Rect(0, 0, width_, height_); }
  int ClientWidth() const { return ClientRect().Width(); }
  int ClientHeight() const { return ClientRect().Height(); }
  TPoint ClientToScreen(TPoint p) const;
  TPoint ScreenToClient(TPoint p) const;

  // Caption and Text are one value, as the window text was.
  String Caption() const { return GetText(); }
  void SetCaption(const String& value) { SetText(value); }
  String Text() const { return GetText(); }
  void SetText(const String& value);

  TAlign Align() const { return align_; }
  void SetAlign(TAlign v) { align_ = v; }
  TColor Color() const { return color_; }
  void SetColor(TColor v);
  TFont* Font() const { return font_.get(); }
  void SetFont(TFont* v) { font_->Assign(v); }
  TCursor Cursor() const { return cursor_; }
  void SetCursor(TCursor v) { cursor_ = v; }
  const String& Hint() const { return hint_; }
  void SetHint(const String& v) { hint_ = v; }
  bool ShowHint() const { return showHint_; }
  void SetShowHint(bool v) { showHint_ = v; }
  TPopupMenu* PopupMenu() const { return popupMenu_; }
  void SetPopupMenu(TPopupMenu* menu);

  // Runs WindowProc on a message and returns its result.
  LRESULT Perform(UINT Msg, WPARAM WParam = 0, LPARAM LParam = 0);
  // The window procedure: WndProc unless replaced.
  TWndMethod WindowProc;
  virtual void WndProc(TMessage& Message);
  // Handlers of the standard messages; the rest go to DefaultHandler.
  virtual void Dispatch(TMessage& Message);
  virtual void DefaultHandler(TMessage& Message);

  virtual void Click();
  virtual void DblClick();
  virtual void MouseDown(TMouseButton Button, TShiftState Shift, int X, int Y);
  virtual void MouseMove(TShiftState Shift, int X, int Y);
  virtual void MouseUp(TMouseButton Button, TShiftState Shift, int X, int Y);

  // Marks the control for repainting; Repaint paints it now.
  virtual void Invalidate() { needsPaint_ = true; }
  virtual void Repaint() { needsPaint_ = false; }
  void Refresh() { Repaint(); }
  bool NeedsPaint() const { return needsPaint_; }

  TNotifyEvent OnClick;
  TNotifyEvent OnDblClick;
  TMouseEvent OnMouseDown;
  TMouseEvent OnMouseUp;
  TMouseMoveEvent OnMouseMove;
  TNotifyEvent OnResize;

 protected:
  virtual String GetText() const { return text_; }
  // Stores the text; descendants that react to it override TextChanged.
  virtual void SetTextValue(const String& value) { text_ = value; }
  virtual void TextChanged() {}
  virtual void VisibleChanged() {}
  virtual void EnabledChanged() {}
  virtual void Resize() { OnResize(this); }
  virtual void FontChanged(TObject*) { Invalidate(); }
  // A click of the left button released over the control. Check boxes and
  // radio buttons change state here before their Click.
  virtual void MouseClicked() { Click(); }
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  friend class TWinControl;
  void MouseMessage(TMessage& Message);

  TWinControl* parent_ = nullptr;
  bool visible_ = true;
  bool enabled_ = true;
  int left_ = 0, top_ = 0, width_ = 0, height_ = 0;
  String text_;
  TAlign align_ = alNone;
  TColor color_ = clBtnFace;
  std::unique_ptr<TFont> font_;
  TCursor cursor_ = crDefault;
  String hint_;
  bool showHint_ = false;
  TPopupMenu* popupMenu_ = nullptr;
  bool needsPaint_ = true;
  bool leftPressed_ = false;
};

// ---- TWinControl ---------------------------------------------------------------

class TWinControl : public TControl {
  KELMAR_CLASS(TWinControl, TControl)
 public:
  explicit TWinControl(TComponent* AOwner);
  ~TWinControl() override;

  HWND Handle() const { return handle_; }
  bool HandleAllocated() const { return handle_ != 0; }

  int ControlCount() const { return static_cast<int>(controls_.size()); }
  TControl* Controls(int index) const;
  bool ContainsControl(const TControl* control) const;
  // The first child (any depth) with the name, or null.
  TControl* FindChildControl(const String& name) const;

  int TabOrder() const;
  void SetTabOrder(int value);
  bool TabStop() const { return tabStop_; }
  void SetTabStop(bool v) { tabStop_ = v; }

  // Visible and enabled, through every parent.
  virtual bool CanFocus() const;
  bool Focused() const;
  // Raises EInvalidOperation "Cannot focus a disabled or invisible window"
  // when the control cannot take the focus.
  virtual void SetFocus();
  // The windowed children in tab order; `list` gets them depth first.
  void GetTabOrderList(std::vector<TWinControl*>& list) const;
  // The next control after `current` that can take the focus.
  TWinControl* FindNextControl(TWinControl* current, bool goForward, bool checkTabStop, bool checkParent) const;
  void SelectNext(TWinControl* current, bool goForward, bool checkTabStop);
  void SelectFirst();

  // Keys the control keeps from the dialogue keys (DLGC_* flags).
  virtual LRESULT GetDlgCode() const { return 0; }

  void Dispatch(TMessage& Message) override;

  virtual void KeyDown(Word& Key, TShiftState Shift);
  virtual void KeyUp(Word& Key, TShiftState Shift);
  virtual void KeyPress(WideChar& Key);
  virtual void DoEnter();
  virtual void DoExit();

  TKeyEvent OnKeyDown;
  TKeyEvent OnKeyUp;
  TKeyPressEvent OnKeyPress;
  TNotifyEvent OnEnter;
  TNotifyEvent OnExit;

 protected:
  friend class TControl;
  friend class TScreen;
  // True when the key was eaten (a preview or a handler zeroed it).
  bool DoKeyDown(TMessage& Message);
  bool DoKeyUp(TMessage& Message);
  bool DoKeyPress(TMessage& Message);
  // WM_SETFOCUS and WM_KILLFOCUS, after the focus moved.
  virtual void FocusGained() {}
  virtual void FocusLost() {}
  // Tells the parent by WM_COMMAND with the code in the high word.
  void NotifyParent(Word code);
  void VisibleChanged() override;
  void EnabledChanged() override;

 private:
  void InsertControl(TControl* control);
  void RemoveControl(TControl* control);

  HWND handle_ = 0;
  std::vector<TControl*> controls_;
  bool tabStop_ = false;
};

// A control without a window that paints on its parent.
class TGraphicControl : public TControl {
  KELMAR_CLASS(TGraphicControl, TControl)
 public:
  explicit TGraphicControl(TComponent* AOwner);
  TCanvas* Canvas() const { return canvas_.get(); }
  void Repaint() override;

 protected:
  virtual void Paint() {}

 private:
  std::unique_ptr<TCanvas> canvas_;
};

// A windowed control that paints itself.
class TCustomControl : public TWinControl {
  KELMAR_CLASS(TCustomControl, TWinControl)
 public:
  explicit TCustomControl(TComponent* AOwner);
  TCanvas* Canvas() const { return canvas_.get(); }
  // Clears the recorded drawing and paints again.
  void Repaint() override;

 protected:
  virtual void Paint() {}

 private:
  std::unique_ptr<TCanvas> canvas_;
};

// The form a control stands on, or null.
TCustomForm* GetParentForm(const TControl* control);
