// Forms, the screen (focus and cursor) and the application object.
//
// Showing a form modally goes through the UserInterface port (uiport.h):
// the port runs the interaction and closes the form with CloseModal; no call
// here waits for a person.
#pragma once

#include <cstdint>
#include <functional>
#include <type_traits>
#include <vector>

#include "platform/ui/controls.h"

class TMainMenu;

enum TFormStyle { fsNormal, fsMDIChild, fsMDIForm, fsStayOnTop };
KELMAR_ENUM(TFormStyle, u"fsNormal", u"fsMDIChild", u"fsMDIForm", u"fsStayOnTop");
enum TCloseAction { caNone, caHide, caFree, caMinimize };
KELMAR_ENUM(TCloseAction, u"caNone", u"caHide", u"caFree", u"caMinimize");
enum TFormBorderStyle { bsNone, bsSingle, bsSizeable, bsDialog, bsToolWindow, bsSizeToolWin };
KELMAR_ENUM(TFormBorderStyle, u"bsNone", u"bsSingle", u"bsSizeable", u"bsDialog", u"bsToolWindow", u"bsSizeToolWin");
enum TPosition {
  poDesigned, poDefault, poDefaultPosOnly, poDefaultSizeOnly, poScreenCenter, poDesktopCenter, poMainFormCenter,
  poOwnerFormCenter
};
KELMAR_ENUM(TPosition, u"poDesigned", u"poDefault", u"poDefaultPosOnly", u"poDefaultSizeOnly", u"poScreenCenter",
            u"poDesktopCenter", u"poMainFormCenter", u"poOwnerFormCenter");
enum TWindowState { wsNormal, wsMinimized, wsMaximized };
KELMAR_ENUM(TWindowState, u"wsNormal", u"wsMinimized", u"wsMaximized");

using TModalResult = int;
constexpr TModalResult mrNone = 0;
constexpr TModalResult mrOk = 1;
constexpr TModalResult mrCancel = 2;
constexpr TModalResult mrAbort = 3;
constexpr TModalResult mrRetry = 4;
constexpr TModalResult mrIgnore = 5;
constexpr TModalResult mrYes = 6;
constexpr TModalResult mrNo = 7;
constexpr TModalResult mrClose = 8;
constexpr TModalResult mrHelp = 9;
constexpr TModalResult mrTryAgain = 10;
constexpr TModalResult mrContinue = 11;
constexpr TModalResult mrAll = 12;
constexpr TModalResult mrNoToAll = 13;
constexpr TModalResult mrYesToAll = 14;

using TCloseEvent = TEvent<void(TObject* Sender, TCloseAction& Action)>;
using TCloseQueryEvent = TEvent<void(TObject* Sender, bool& CanClose)>;

class TCustomForm : public TWinControl {
  KELMAR_CLASS(TCustomForm, TWinControl)
 public:
  explicit TCustomForm(TComponent* AOwner);
  ~TCustomForm() override;

  TModalResult ModalResult() const { return modalResult_; }
  void SetModalResult(TModalResult v) { modalResult_ = v; }
  // Shows the form through the UserInterface port and returns ModalResult.
  // Raises EInvalidOperation for a form that is already visible.
  virtual TModalResult ShowModal();
  bool Modal() const { return modal_; }
  // For ports: asks OnCloseQuery and OnClose; a refusal sets ModalResult
  // back to mrNone and gives false. A close without a result is mrCancel.
  bool CloseModal();
  // A modal form gets mrCancel; another asks, then hides or frees itself.
  void Close();
  bool CloseQuery();
  // Deletes the form once the messages posted before are delivered.
  void Release();

  TWinControl* ActiveControl() const { return activeControl_; }
  // Focuses the control when the form is showing, else remembers it.
  void SetActiveControl(TWinControl* control);
  bool Active() const;

  TFormStyle FormStyle() const { return formStyle_; }
  void SetFormStyle(TFormStyle v) { formStyle_ = v; }
  bool KeyPreview() const { return keyPreview_; }
  void SetKeyPreview(bool v) { keyPreview_ = v; }
  TFormBorderStyle BorderStyle() const { return borderStyle_; }
  void SetBorderStyle(TFormBorderStyle v) { borderStyle_ = v; }
  TPosition Position() const { return position_; }
  void SetPosition(TPosition v) { position_ = v; }
  TWindowState WindowState() const { return windowState_; }
  void SetWindowState(TWindowState v) { windowState_ = v; }
  TMainMenu* Menu() const { return menu_; }
  void SetMenu(TMainMenu* menu);

  // Menu and action shortcuts of the form; runs the one that matches.
  virtual bool IsShortCut(Word Key, TShiftState Shift);
  // Tab, arrows, Enter and Escape when the focused control leaves them:
  // tabbing, the default and the cancel button. True when acted on.
  virtual bool DialogKey(Word Key, TShiftState Shift);

  void Dispatch(TMessage& Message) override;

  TNotifyEvent OnShow;
  TNotifyEvent OnHide;
  TNotifyEvent OnActivate;
  TNotifyEvent OnDeactivate;
  TNotifyEvent OnCreate;
  TNotifyEvent OnDestroy;
  TCloseEvent OnClose;
  TCloseQueryEvent OnCloseQuery;
  TKeyEvent OnShortCut;

 protected:
  friend class TScreen;
  virtual void DoShow() { OnShow(this); }
  virtual void DoHide() { OnHide(this); }
  virtual void DoClose(TCloseAction& Action) { OnClose(this, Action); }
  void VisibleChanged() override;
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  TModalResult modalResult_ = mrNone;
  bool modal_ = false;
  TWinControl* activeControl_ = nullptr;
  TFormStyle formStyle_ = fsNormal;
  bool keyPreview_ = false;
  TFormBorderStyle borderStyle_ = bsSizeable;
  TPosition position_ = poDefaultPosOnly;
  TWindowState windowState_ = wsNormal;
  TMainMenu* menu_ = nullptr;
};

class TForm : public TCustomForm {
  KELMAR_CLASS(TForm, TCustomForm)
 public:
  explicit TForm(TComponent* AOwner) : TCustomForm(AOwner) {}
};

// A container of non-visual components (menus, dialogues, datasets) that
// several forms share.
class TDataModule : public TComponent {
  KELMAR_CLASS(TDataModule, TComponent)
 public:
  explicit TDataModule(TComponent* AOwner) : TComponent(AOwner) {}
  ~TDataModule() override { OnDestroy(this); }

  TNotifyEvent OnCreate;
  TNotifyEvent OnDestroy;
};

// ---- Screen --------------------------------------------------------------------

class TScreen : public TComponent {
  KELMAR_CLASS(TScreen, TComponent)
 public:
  explicit TScreen(TComponent* AOwner);

  // The control with the keyboard focus, and its form.
  TWinControl* ActiveControl() const { return activeControl_; }
  TCustomForm* ActiveForm() const { return activeForm_; }
  TCursor Cursor() const { return cursor_; }
  // Tells the UserInterface port, which shows the wait cursor.
  void SetCursor(TCursor value);
  int FormCount() const { return static_cast<int>(forms_.size()); }
  TCustomForm* Forms(int index) const;
  int Width() const { return 1280; }
  int Height() const { return 1024; }
  int PixelsPerInch() const { return 96; }

  // Moves the focus: DoExit from the old control up to the common parent
  // (innermost first), WM_KILLFOCUS, WM_SETFOCUS, then DoEnter down to the
  // new one (outermost first). A handler that moves the focus elsewhere
  // ends the move where it stands. Null takes the focus from everyone.
  void FocusControl(TWinControl* control);
  // Takes the focus from a control being hidden or disabled, or from one
  // of its children.
  void DefocusControl(TWinControl* control);
  // Forgets a control being deleted, silently.
  void ControlDestroying(TWinControl* control);

  TNotifyEvent OnActiveControlChange;
  TNotifyEvent OnActiveFormChange;

 private:
  friend class TCustomForm;
  void AddForm(TCustomForm* form);
  void RemoveForm(TCustomForm* form);
  void SetActiveForm(TCustomForm* form);

  TWinControl* activeControl_ = nullptr;
  TCustomForm* activeForm_ = nullptr;
  TCursor cursor_ = crDefault;
  std::vector<TCustomForm*> forms_;
  unsigned focusSerial_ = 0;
};

// ---- Application ------------------------------------------------------------------

// Something that wants the time each time messages are processed (timers).
class TTickClient {
 public:
  virtual void Tick(int64_t nowMs) = 0;

 protected:
  ~TTickClient() = default;
};

using TExceptionEvent = TEvent<void(TObject* Sender, Exception* E)>;

class TApplication : public TComponent {
  KELMAR_CLASS(TApplication, TComponent)
 public:
  explicit TApplication(TComponent* AOwner);

  const String& Title() const { return title_; }
  void SetTitle(const String& v) { title_ = v; }
  TCustomForm* MainForm() const { return mainForm_; }
  void SetMainForm(TCustomForm* form);
  // Makes a form or data module owned by the application; the first form
  // made so becomes the main form.
  template <class T>
  void CreateForm(T*& reference) {
    reference = new T(this);
    if constexpr (std::is_base_of_v<TCustomForm, T>)
      if (!mainForm_) SetMainForm(reference);
  }

  // Runs the requests of worker threads (TThread::Synchronize), delivers
  // the posted messages, and fires the timers that are due.
  void ProcessMessages();
  // Reports the exception being handled: EAbort silently, the others to
  // OnException or, unassigned, in an error box through the port.
  void HandleException(TObject* Sender);
  void ShowException(const Exception& E);
  void Terminate() { terminated_ = true; }
  bool Terminated() const { return terminated_; }

  // Milliseconds of a steady clock; a test may replace the clock.
  int64_t TickCount() const;
  void SetClock(std::function<int64_t()> clock) { clock_ = std::move(clock); }
  void AddTickClient(TTickClient* client);
  void RemoveTickClient(TTickClient* client);

  TExceptionEvent OnException;
  TNotifyEvent OnIdle;

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  String title_;
  TCustomForm* mainForm_ = nullptr;
  bool terminated_ = false;
  std::function<int64_t()> clock_;
  std::vector<TTickClient*> tickClients_;
};

// The process-wide objects, made when the library loads and never deleted.
extern TApplication* const Application;
extern TScreen* const Screen;
