// The UserInterface port: everything that needs a person.
//
// Modal forms, message boxes, input boxes, file and folder dialogues, popup
// menus, the beep and the wait cursor all go through the one installed
// port. A front end installs its own; tests install the scripted port
// (scriptedui.h). With none installed, the headless default refuses every
// dialogue with an EInvalidOperation that names it, and ignores the beep and
// the cursor.
//
// Ownership: SetUserInterface borrows the port; it must outlive its
// installation. The pointer is process-wide and read on the main thread.
#pragma once

#include <vector>

#include "platform/rtl/sets.h"
#include "platform/rtl/typinfo.h"
#include "platform/rtl/ustring.h"
#include "platform/ui/controls.h"

class TCustomForm;
class TPopupMenu;
class TMenuItem;

enum TMsgDlgType { mtWarning, mtError, mtInformation, mtConfirmation, mtCustom };
KELMAR_ENUM(TMsgDlgType, u"mtWarning", u"mtError", u"mtInformation", u"mtConfirmation", u"mtCustom");
enum TMsgDlgBtn { mbYes, mbNo, mbOK, mbCancel, mbAbort, mbRetry, mbIgnore, mbAll, mbNoToAll, mbYesToAll, mbHelp, mbClose };
KELMAR_ENUM(TMsgDlgBtn, u"mbYes", u"mbNo", u"mbOK", u"mbCancel", u"mbAbort", u"mbRetry", u"mbIgnore", u"mbAll",
            u"mbNoToAll", u"mbYesToAll", u"mbHelp", u"mbClose");
using TMsgDlgButtons = Set<TMsgDlgBtn>;
inline constexpr TMsgDlgButtons mbYesNo{mbYes, mbNo};
inline constexpr TMsgDlgButtons mbYesNoCancel{mbYes, mbNo, mbCancel};
inline constexpr TMsgDlgButtons mbOKCancel{mbOK, mbCancel};
inline constexpr TMsgDlgButtons mbAbortRetryIgnore{mbAbort, mbRetry, mbIgnore};

// The modal result a button gives.
int ModalResultOfButton(TMsgDlgBtn button);

enum TFileDialogKind { fdOpen, fdSave };

// What a file dialogue asks and, on success, what the person chose.
struct TFileDialogRequest {
  TFileDialogKind Kind = fdOpen;
  String Title;
  // "Text files (*.txt)|*.txt|All files (*.*)|*.*"
  String Filter;
  int FilterIndex = 1;
  String DefaultExt;
  String InitialDir;
  String FileName;
  bool MultiSelect = false;
  std::vector<String> Files;  // filled for MultiSelect
};

class UserInterface {
 public:
  virtual ~UserInterface() = default;

  // Runs the interaction of a form that TCustomForm::ShowModal has shown,
  // and ends it with form.CloseModal(); the form's ModalResult is then
  // what ShowModal returns.
  virtual void ShowModal(TCustomForm& form) = 0;
  // Returns the modal result of the button pressed (mrYes, mrOk...).
  virtual int MessageDlg(const String& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons, int HelpCtx) = 0;
  virtual void ShowMessage(const String& Msg) = 0;
  // False when cancelled; Value holds the default on entry.
  virtual bool InputQuery(const String& Caption, const String& Prompt, String& Value) = 0;
  // False when cancelled; on success FileName (and Files) hold the choice.
  virtual bool FileDialog(TFileDialogRequest& Request) = 0;
  virtual bool SelectDirectory(const String& Caption, const String& Root, String& Directory) = 0;
  // The item the person picks from a popup menu at screen point (X, Y),
  // or null when the menu is dismissed.
  virtual TMenuItem* TrackPopupMenu(TPopupMenu& Menu, int X, int Y) = 0;
  virtual void MessageBeep(unsigned Type) {}
  virtual void CursorChanged(TCursor Cursor) {}
  // Key or mouse input waiting in the front end's queue: long scans ask
  // on every record and stop when the person acts.
  virtual bool InputPending() { return false; }
  // Drops the key and mouse input already queued, so that a key pressed
  // before a scan does not stop it.
  virtual void DiscardPendingInput() {}
};

// The installed port, or the headless default.
UserInterface& CurrentUserInterface();
// Installs a port (null: the default) and returns the one it replaces.
UserInterface* SetUserInterface(UserInterface* ui);

// Installs a port for the life of the scope.
class TUserInterfaceScope {
 public:
  explicit TUserInterfaceScope(UserInterface& ui) : previous_(SetUserInterface(&ui)) {}
  ~TUserInterfaceScope() { SetUserInterface(previous_); }
  TUserInterfaceScope(const TUserInterfaceScope&) = delete;
  TUserInterfaceScope& operator=(const TUserInterfaceScope&) = delete;

 private:
  UserInterface* previous_;
};
