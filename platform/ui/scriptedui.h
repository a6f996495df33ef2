// The scripted UserInterface port, for tests of the platform and the kit.
//
// A test lists the dialogues it expects, in order, each with its answer: a
// result, a value, or a callback that fills a form's controls and presses a
// button. A dialogue that arrives when the script expects another one, or
// nothing, is recorded as a failure and raises EUnexpectedDialog, which is
// not an Exception, so that the code under test cannot swallow it as one
// of its own errors. At the end Verify() lists every failure and every
// expectation left unmet:
//
//   TScriptedUserInterface ui;
//   TUserInterfaceScope scope(ui);
//   ui.ExpectMessageDlg(u"modificati", mrNo);
//   ui.ExpectForm(u"TFindFilterForm", [](TCustomForm& f) {
//     Control<TEdit>(f, u"Value").SetText(u"12");
//     PressButton(f, u"BtnOK");
//   });
//   ... run the code ...
//   EXPECT_EQ(ui.Verify(), u"");
//
// Matching: a non-empty pattern must occur, ignoring case, in the
// dialogue's text (message, caption or title), or for a form in its Name,
// class name or Caption.
#pragma once

#include <deque>
#include <functional>
#include <stdexcept>
#include <vector>

#include "platform/rtl/exceptions.h"
#include "platform/ui/forms.h"
#include "platform/ui/uiport.h"

class EUnexpectedDialog : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

enum TDialogKind {
  dkForm, dkMessageDlg, dkShowMessage, dkInputQuery, dkOpenFile, dkSaveFile, dkSelectDirectory, dkPopupMenu
};

String DialogKindName(TDialogKind kind);

// A dialogue that was shown, for tests that look at what the person saw.
struct TShownDialog {
  TDialogKind Kind;
  String Text;  // message, caption or title; a form's Name
  TMsgDlgType DlgType = mtCustom;
  TMsgDlgButtons Buttons;
};

class TScriptedUserInterface : public UserInterface {
 public:
  using TFormScript = std::function<void(TCustomForm& form)>;
  using TMessageScript = std::function<int(const String& msg, TMsgDlgType type, TMsgDlgButtons buttons)>;

  // A modal form: the script fills it and presses a button (or sets
  // ModalResult); the form then closes through its OnCloseQuery/OnClose.
  TScriptedUserInterface& ExpectForm(const String& pattern, TFormScript script);
  // A modal form closed at once with a result.
  TScriptedUserInterface& ExpectForm(const String& pattern, TModalResult result);
  TScriptedUserInterface& ExpectMessageDlg(const String& pattern, int result);
  TScriptedUserInterface& ExpectMessageDlg(const String& pattern, TMessageScript script);
  TScriptedUserInterface& ExpectShowMessage(const String& pattern = String());
  // An input box answered with `value`, or cancelled when `ok` is false.
  TScriptedUserInterface& ExpectInputQuery(const String& pattern, const String& value, bool ok = true);
  // A file dialogue (pattern on the title) answered with a file name, or
  // cancelled when `ok` is false.
  TScriptedUserInterface& ExpectOpenFile(const String& pattern, const String& fileName, bool ok = true);
  TScriptedUserInterface& ExpectSaveFile(const String& pattern, const String& fileName, bool ok = true);
  TScriptedUserInterface& ExpectSelectDirectory(const String& pattern, const String& directory, bool ok = true);
  // A popup menu: the item with that Name or caption is picked (searched
  // through the submenus); an empty name dismisses the menu.
  TScriptedUserInterface& ExpectPopup(const String& item);
  // Input turns up after `quietQuestions` questions of InputPending and
  // stays there; discarding is only counted, as a key pressed in the middle
  // of a scan arrives after the discard before it.
  TScriptedUserInterface& InputPendingAfter(int quietQuestions);

  // Every dialogue shown, expected or not, in order.
  const std::vector<TShownDialog>& Shown() const { return shown_; }
  const std::vector<String>& Failures() const { return failures_; }
  int PendingCount() const { return static_cast<int>(script_.size()); }
  int BeepCount() const { return beeps_; }
  int InputQuestions() const { return inputQuestions_; }
  int InputDiscards() const { return inputDiscards_; }
  const std::vector<TCursor>& Cursors() const { return cursors_; }
  // Empty when all went to plan; else one line per failure and per
  // expectation never met.
  String Verify() const;
  // Drops the remaining expectations and the record.
  void Reset();

  // UserInterface
  void ShowModal(TCustomForm& form) override;
  int MessageDlg(const String& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons, int HelpCtx) override;
  void ShowMessage(const String& Msg) override;
  bool InputQuery(const String& Caption, const String& Prompt, String& Value) override;
  bool FileDialog(TFileDialogRequest& Request) override;
  bool SelectDirectory(const String& Caption, const String& Root, String& Directory) override;
  TMenuItem* TrackPopupMenu(TPopupMenu& Menu, int X, int Y) override;
  void MessageBeep(unsigned Type) override { ++beeps_; }
  void CursorChanged(TCursor Cursor) override { cursors_.push_back(Cursor); }
  bool InputPending() override;
  void DiscardPendingInput() override { ++inputDiscards_; }

 private:
  struct Expectation {
    TDialogKind Kind;
    String Pattern;
    TFormScript Form;
    TMessageScript Message;
    String Value;
    bool Ok = true;
  };
  TScriptedUserInterface& Add(Expectation e);
  // The next expectation when it is of this kind and matches; otherwise a
  // failure is recorded and EUnexpectedDialog raised.
  Expectation Take(TDialogKind kind, const std::vector<String>& texts, const String& shownText);

  std::deque<Expectation> script_;
  std::vector<TShownDialog> shown_;
  std::vector<String> failures_;
  std::vector<TCursor> cursors_;
  int beeps_ = 0;
  int inputQuietQuestions_ = -1;  // never pending
  int inputQuestions_ = 0;
  int inputDiscards_ = 0;
};

// ---- Helpers for form scripts ----------------------------------------------------

// The form's component with the name, of class T; raises EUnexpectedDialog
// naming the form when it is missing or of another class.
template <class T = TControl>
T& Control(TCustomForm& form, const String& name) {
  TComponent* c = form.FindComponent(name);
  if (!c) c = form.FindChildControl(name);
  T* typed = dynamic_cast<T*>(c);
  if (!typed)
    throw EUnexpectedDialog(("form " + form.Name().ToUtf8() + " has no " + T::StaticClass()->ClassName().ToUtf8() +
                             " named " + name.ToUtf8()));
  return *typed;
}

// Clicks the named button as the person would; raises EUnexpectedDialog
// when it is missing, hidden or disabled.
void PressButton(TCustomForm& form, const String& name);
