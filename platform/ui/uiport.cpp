#include "platform/ui/uiport.h"

#include "platform/rtl/exceptions.h"
#include "platform/ui/forms.h"

namespace {

// Nobody to ask: every dialogue is refused with a message that names it.
class THeadlessUserInterface final : public UserInterface {
 public:
  void ShowModal(TCustomForm& form) override { Refuse(u"form " + form.Name() + u" (" + form.ClassName() + u")"); }
  int MessageDlg(const String& Msg, TMsgDlgType, TMsgDlgButtons, int) override { Refuse(u"message \"" + Msg + u"\""); }
  void ShowMessage(const String& Msg) override { Refuse(u"message \"" + Msg + u"\""); }
  bool InputQuery(const String& Caption, const String& Prompt, String&) override {
    Refuse(u"input box \"" + Caption + u"\" (" + Prompt + u")");
  }
  bool FileDialog(TFileDialogRequest& r) override {
    Refuse(String(r.Kind == fdOpen ? u"open" : u"save") + u" dialogue \"" + r.Title + u"\"");
  }
  bool SelectDirectory(const String& Caption, const String&, String&) override {
    Refuse(u"folder dialogue \"" + Caption + u"\"");
  }
  TMenuItem* TrackPopupMenu(TPopupMenu&, int, int) override { Refuse(u"popup menu"); }

 private:
  [[noreturn]] static void Refuse(const String& what) {
    throw EInvalidOperation(u"No user interface is installed to show the " + what);
  }
};

THeadlessUserInterface& Headless() {
  static THeadlessUserInterface ui;
  return ui;
}

UserInterface* installed = nullptr;

}  // namespace

int ModalResultOfButton(TMsgDlgBtn button) {
  switch (button) {
    case mbYes: return mrYes;
    case mbNo: return mrNo;
    case mbOK: return mrOk;
    case mbCancel: return mrCancel;
    case mbAbort: return mrAbort;
    case mbRetry: return mrRetry;
    case mbIgnore: return mrIgnore;
    case mbAll: return mrAll;
    case mbNoToAll: return mrNoToAll;
    case mbYesToAll: return mrYesToAll;
    case mbClose: return mrClose;
    case mbHelp: return mrNone;
  }
  return mrNone;
}

UserInterface& CurrentUserInterface() { return installed ? *installed : Headless(); }

UserInterface* SetUserInterface(UserInterface* ui) {
  UserInterface* previous = installed;
  installed = ui;
  return previous;
}
