#include "platform/ui/forms.h"

#include <algorithm>
#include <chrono>

#include "platform/rtl/sysutils.h"
#include "platform/ui/menus.h"
#include "platform/ui/thread.h"
#include "platform/ui/uiport.h"

TApplication* const Application = new TApplication(nullptr);
TScreen* const Screen = new TScreen(nullptr);

TCustomForm* GetParentForm(const TControl* control) {
  while (control && control->Parent()) control = control->Parent();
  return const_cast<TCustomForm*>(dynamic_cast<const TCustomForm*>(control));
}

// ---- TCustomForm -----------------------------------------------------------------

KELMAR_PUBLISH(TCustomForm) {
  r.Prop(u"ActiveControl", &TCustomForm::ActiveControl, &TCustomForm::SetActiveControl);
  r.Prop(u"BorderStyle", &TCustomForm::BorderStyle, &TCustomForm::SetBorderStyle).Default = bsSizeable;
  r.Prop(u"Caption", &TCustomForm::Caption, &TCustomForm::SetCaption);
  r.Prop(u"FormStyle", &TCustomForm::FormStyle, &TCustomForm::SetFormStyle).Default = fsNormal;
  r.Prop(u"KeyPreview", &TCustomForm::KeyPreview, &TCustomForm::SetKeyPreview).Default = 0;
  r.Prop(u"Menu", &TCustomForm::Menu, &TCustomForm::SetMenu);
  r.Prop(u"ModalResult", &TCustomForm::ModalResult, &TCustomForm::SetModalResult);
  r.Prop(u"Position", &TCustomForm::Position, &TCustomForm::SetPosition).Default = poDefaultPosOnly;
  r.Prop(u"WindowState", &TCustomForm::WindowState, &TCustomForm::SetWindowState).Default = wsNormal;
  r.Prop(u"OnActivate", &TCustomForm::OnActivate);
  r.Prop(u"OnClose", &TCustomForm::OnClose);
  r.Prop(u"OnCloseQuery", &TCustomForm::OnCloseQuery);
  r.Prop(u"OnCreate", &TCustomForm::OnCreate);
  r.Prop(u"OnDeactivate", &TCustomForm::OnDeactivate);
  r.Prop(u"OnDestroy", &TCustomForm::OnDestroy);
  r.Prop(u"OnHide", &TCustomForm::OnHide);
  r.Prop(u"OnShow", &TCustomForm::OnShow);
}

TCustomForm::TCustomForm(TComponent* AOwner) : TWinControl(AOwner) {
  SetVisible(false);
  SetBounds(0, 0, 640, 480);
  Screen->AddForm(this);
}

TCustomForm::~TCustomForm() {
  OnDestroy(this);
  Screen->RemoveForm(this);
}

TModalResult TCustomForm::ShowModal() {
  if (Visible() || modal_) throw EInvalidOperation(u"Cannot make a visible window modal");
  TWinControl* previousFocus = Screen->ActiveControl();
  HWND previousHandle = previousFocus ? previousFocus->Handle() : 0;
  modalResult_ = mrNone;
  modal_ = true;
  auto finish = [&] {
    modal_ = false;
    Hide();
    // Back to where the person was, when that control still exists.
    if (previousHandle && FindControl(previousHandle) == previousFocus && previousFocus->CanFocus())
      previousFocus->SetFocus();
  };
  try {
    Show();
    CurrentUserInterface().ShowModal(*this);
  } catch (...) {
    finish();
    throw;
  }
  finish();
  return modalResult_;
}

bool TCustomForm::CloseQuery() {
  bool canClose = true;
  OnCloseQuery(this, canClose);
  return canClose;
}

bool TCustomForm::CloseModal() {
  if (modalResult_ == mrNone) modalResult_ = mrCancel;
  TCloseAction action = caNone;
  if (CloseQuery()) {
    action = caHide;
    DoClose(action);
  }
  if (action == caNone) {
    modalResult_ = mrNone;
    return false;
  }
  if (action == caFree) Release();
  return true;
}

void TCustomForm::Close() {
  if (modal_) {
    modalResult_ = mrCancel;
    return;
  }
  if (!CloseQuery()) return;
  TCloseAction action = formStyle_ == fsMDIChild ? caMinimize : caHide;
  DoClose(action);
  switch (action) {
    case caNone: return;
    case caHide: Hide(); break;
    case caMinimize: windowState_ = wsMinimized; break;
    case caFree: Release(); break;
  }
  if (Application->MainForm() == this) Application->Terminate();
}

void TCustomForm::Release() { PostMessage(Handle(), CM_RELEASE, 0, 0); }

void TCustomForm::Dispatch(TMessage& Message) {
  if (Message.Msg == CM_RELEASE) {
    delete this;
    return;
  }
  inherited::Dispatch(Message);
}

void TCustomForm::SetActiveControl(TWinControl* control) {
  if (control == activeControl_) return;
  if (control && (control == this || !ContainsControl(control)))
    throw EInvalidOperation(u"Invalid ActiveControl: the control is not on this form");
  if (control && Showing() && control->CanFocus()) control->SetFocus();
  else activeControl_ = control;
}

bool TCustomForm::Active() const { return Screen->ActiveForm() == this; }

void TCustomForm::SetMenu(TMainMenu* menu) {
  if (menu_) menu_->RemoveFreeNotification(this);
  menu_ = menu;
  if (menu) menu->FreeNotification(this);
}

void TCustomForm::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == menu_) menu_ = nullptr;
}

bool TCustomForm::IsShortCut(Word Key, TShiftState Shift) {
  Word key = Key;
  OnShortCut(this, key, Shift);
  if (key == 0) return true;
  if (menu_ && menu_->IsShortCut(Key, Shift)) return true;
  for (int i = 0; i < ComponentCount(); ++i)
    if (auto* list = dynamic_cast<TActionList*>(Components(i)); list && list->IsShortCut(Key, Shift)) return true;
  return false;
}

namespace {
// Offers a dialogue key to every control of a tree; true when one acted.
bool BroadcastDialogKey(TWinControl* parent, Word key) {
  for (int i = 0; i < parent->ControlCount(); ++i) {
    TControl* c = parent->Controls(i);
    if (!c->Visible()) continue;
    if (c->Perform(CM_DIALOGKEY, key, 0) != 0) return true;
    if (auto* w = dynamic_cast<TWinControl*>(c); w && BroadcastDialogKey(w, key)) return true;
  }
  return false;
}
}  // namespace

bool TCustomForm::DialogKey(Word Key, TShiftState Shift) {
  if (Shift.Contains(ssAlt) || Shift.Contains(ssCtrl)) return false;
  switch (Key) {
    case VK_TAB:
      SelectNext(Screen->ActiveControl(), !Shift.Contains(ssShift), true);
      return true;
    case VK_LEFT: case VK_UP:
      SelectNext(Screen->ActiveControl(), false, false);
      return true;
    case VK_RIGHT: case VK_DOWN:
      SelectNext(Screen->ActiveControl(), true, false);
      return true;
    case VK_RETURN: case VK_ESCAPE:
      return BroadcastDialogKey(this, Key);
    default:
      return false;
  }
}

void TCustomForm::VisibleChanged() {
  if (Visible()) {
    DoShow();
    Screen->SetActiveForm(this);
    if (activeControl_ && activeControl_->CanFocus()) activeControl_->SetFocus();
    else SelectFirst();
  } else {
    inherited::VisibleChanged();
    DoHide();
    if (Screen->ActiveForm() == this) Screen->SetActiveForm(nullptr);
  }
}

KELMAR_PUBLISH(TForm) {}

KELMAR_PUBLISH(TDataModule) {
  r.Prop(u"OnCreate", &TDataModule::OnCreate);
  r.Prop(u"OnDestroy", &TDataModule::OnDestroy);
}

// ---- TScreen -----------------------------------------------------------------------

KELMAR_PUBLISH(TScreen) {}

TScreen::TScreen(TComponent* AOwner) : TComponent(AOwner) {}

void TScreen::SetCursor(TCursor value) {
  if (cursor_ == value) return;
  cursor_ = value;
  CurrentUserInterface().CursorChanged(value);
}

TCustomForm* TScreen::Forms(int index) const {
  if (index < 0 || index >= FormCount()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return forms_[static_cast<size_t>(index)];
}

void TScreen::AddForm(TCustomForm* form) { forms_.push_back(form); }

void TScreen::RemoveForm(TCustomForm* form) {
  forms_.erase(std::remove(forms_.begin(), forms_.end(), form), forms_.end());
  if (activeForm_ == form) activeForm_ = nullptr;
}

void TScreen::SetActiveForm(TCustomForm* form) {
  if (activeForm_ == form) return;
  if (activeForm_) activeForm_->OnDeactivate(activeForm_);
  activeForm_ = form;
  if (form) form->OnActivate(form);
  OnActiveFormChange(this);
}

namespace {
// The control and its parents up to (not including) its form, innermost first.
std::vector<TWinControl*> FocusChain(TWinControl* c) {
  std::vector<TWinControl*> chain;
  for (; c && !dynamic_cast<TCustomForm*>(c); c = c->Parent()) chain.push_back(c);
  return chain;
}
bool Contains(const std::vector<TWinControl*>& v, TWinControl* c) { return std::find(v.begin(), v.end(), c) != v.end(); }
}  // namespace

void TScreen::FocusControl(TWinControl* control) {
  unsigned serial = ++focusSerial_;
  TWinControl* old = activeControl_;
  if (old == control) return;
  HWND oldHandle = old ? old->Handle() : 0;
  std::vector<TWinControl*> oldChain = FocusChain(old), newChain = FocusChain(control);
  for (TWinControl* w : oldChain) {
    if (Contains(newChain, w)) break;
    w->DoExit();
    if (serial != focusSerial_) return;  // a handler sent the focus elsewhere
  }
  if (old && FindControl(oldHandle) == old) old->Perform(WM_KILLFOCUS, control ? control->Handle() : 0, 0);
  if (serial != focusSerial_) return;
  activeControl_ = control;
  if (control) {
    TCustomForm* form = GetParentForm(control);
    if (form && form != control) form->activeControl_ = control;
    if (form) SetActiveForm(form);
    control->Perform(WM_SETFOCUS, oldHandle, 0);
    if (serial != focusSerial_) return;
    for (auto it = newChain.rbegin(); it != newChain.rend(); ++it) {
      if (Contains(oldChain, *it)) continue;
      (*it)->DoEnter();
      if (serial != focusSerial_) return;
    }
  }
  OnActiveControlChange(this);
}

void TScreen::DefocusControl(TWinControl* control) {
  if (activeControl_ && control->ContainsControl(activeControl_)) FocusControl(nullptr);
}

void TScreen::ControlDestroying(TWinControl* control) {
  if (activeControl_ && control->ContainsControl(activeControl_)) activeControl_ = nullptr;
  for (TCustomForm* form : forms_)
    if (form != control && form->activeControl_ && control->ContainsControl(form->activeControl_))
      form->activeControl_ = nullptr;
}

// ---- TApplication ------------------------------------------------------------------

KELMAR_PUBLISH(TApplication) { r.Prop(u"Title", &TApplication::Title, &TApplication::SetTitle); }

TApplication::TApplication(TComponent* AOwner) : TComponent(AOwner) {}

void TApplication::SetMainForm(TCustomForm* form) {
  if (mainForm_) mainForm_->RemoveFreeNotification(this);
  mainForm_ = form;
  if (form) form->FreeNotification(this);
}

void TApplication::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == mainForm_) mainForm_ = nullptr;
}

namespace {
// Enough for any real burst; a handler that posts to itself on every
// delivery cannot hold the caller forever, its messages wait for the next call.
constexpr int kMessagesPerCall = 100000;
}  // namespace

void TApplication::ProcessMessages() {
  CheckSynchronize();
  DeliverPostedMessages(kMessagesPerCall);
  int64_t now = TickCount();
  std::vector<TTickClient*> clients = tickClients_;
  for (TTickClient* c : clients)
    if (std::find(tickClients_.begin(), tickClients_.end(), c) != tickClients_.end()) c->Tick(now);
  CheckSynchronize();
}

void TApplication::HandleException(TObject* Sender) {
  std::exception_ptr current = std::current_exception();
  if (!current) return;
  try {
    std::rethrow_exception(current);
  } catch (const EAbort&) {
  } catch (Exception& e) {
    if (OnException) OnException(Sender, &e);
    else ShowException(e);
  } catch (const std::exception& e) {
    Exception wrapped(String::FromUtf8(e.what()));
    if (OnException) OnException(Sender, &wrapped);
    else ShowException(wrapped);
  }
}

void TApplication::ShowException(const Exception& E) {
  String msg = E.Message;
  if (!msg.IsEmpty() && msg[msg.Length()] > u'.') msg += u'.';
  CurrentUserInterface().MessageDlg(msg, mtError, TMsgDlgButtons{mbOK}, 0);
}

int64_t TApplication::TickCount() const {
  if (clock_) return clock_();
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void TApplication::AddTickClient(TTickClient* client) {
  if (std::find(tickClients_.begin(), tickClients_.end(), client) == tickClients_.end()) tickClients_.push_back(client);
}

void TApplication::RemoveTickClient(TTickClient* client) {
  tickClients_.erase(std::remove(tickClients_.begin(), tickClients_.end(), client), tickClients_.end());
}
