// The dialogues of the historical framework as free functions and
// components; each goes through the installed UserInterface port.
#pragma once

#include <memory>

#include "platform/rtl/classes.h"
#include "platform/rtl/stringlist.h"
#include "platform/ui/uiport.h"

// Returns the modal result of the button pressed (mrYes, mrNo, mrOk...).
int MessageDlg(const String& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons, int HelpCtx = 0);
void ShowMessage(const String& Msg);
// The text entered, or ADefault when cancelled.
String InputBox(const String& ACaption, const String& APrompt, const String& ADefault);
// False when cancelled; Value keeps what it held then.
bool InputQuery(const String& ACaption, const String& APrompt, String& Value);
bool SelectDirectory(const String& Caption, const String& Root, String& Directory);
bool MessageBeep(unsigned Type);

enum TOpenOption {
  ofReadOnly, ofOverwritePrompt, ofHideReadOnly, ofNoChangeDir, ofShowHelp, ofNoValidate, ofAllowMultiSelect,
  ofExtensionDifferent, ofPathMustExist, ofFileMustExist, ofCreatePrompt, ofShareAware, ofNoReadOnlyReturn,
  ofNoTestFileCreate, ofNoNetworkButton, ofNoLongNames, ofOldStyleDialog, ofNoDereferenceLinks, ofEnableIncludeNotify,
  ofEnableSizing, ofDontAddToRecent, ofForceShowHidden
};
KELMAR_ENUM(TOpenOption, u"ofReadOnly", u"ofOverwritePrompt", u"ofHideReadOnly", u"ofNoChangeDir", u"ofShowHelp",
            u"ofNoValidate", u"ofAllowMultiSelect", u"ofExtensionDifferent", u"ofPathMustExist", u"ofFileMustExist",
            u"ofCreatePrompt", u"ofShareAware", u"ofNoReadOnlyReturn", u"ofNoTestFileCreate", u"ofNoNetworkButton",
            u"ofNoLongNames", u"ofOldStyleDialog", u"ofNoDereferenceLinks", u"ofEnableIncludeNotify",
            u"ofEnableSizing", u"ofDontAddToRecent", u"ofForceShowHidden");
using TOpenOptions = Set<TOpenOption>;

class TOpenDialog : public TComponent {
  KELMAR_CLASS(TOpenDialog, TComponent)
 public:
  explicit TOpenDialog(TComponent* AOwner);
  ~TOpenDialog() override;

  const String& FileName() const { return fileName_; }
  void SetFileName(const String& v) { fileName_ = v; }
  const String& Filter() const { return filter_; }
  void SetFilter(const String& v) { filter_ = v; }
  int FilterIndex() const { return filterIndex_; }
  void SetFilterIndex(int v) { filterIndex_ = v; }
  const String& DefaultExt() const { return defaultExt_; }
  void SetDefaultExt(const String& v) { defaultExt_ = v; }
  const String& InitialDir() const { return initialDir_; }
  void SetInitialDir(const String& v) { initialDir_ = v; }
  const String& Title() const { return title_; }
  void SetTitle(const String& v) { title_ = v; }
  TOpenOptions Options() const { return options_; }
  void SetOptions(TOpenOptions v) { options_ = v; }
  // The files chosen with ofAllowMultiSelect (else the one FileName).
  TStrings* Files() const { return files_.get(); }

  // Asks through the port. On success FileName holds the choice, with
  // DefaultExt added when it has no extension.
  virtual bool Execute();

 protected:
  virtual TFileDialogKind Kind() const { return fdOpen; }

 private:
  String fileName_, filter_, defaultExt_, initialDir_, title_;
  int filterIndex_ = 1;
  TOpenOptions options_{ofHideReadOnly, ofEnableSizing};
  std::unique_ptr<TStrings> files_;
};

class TSaveDialog : public TOpenDialog {
  KELMAR_CLASS(TSaveDialog, TOpenDialog)
 public:
  explicit TSaveDialog(TComponent* AOwner) : TOpenDialog(AOwner) {}

 protected:
  TFileDialogKind Kind() const override { return fdSave; }
};

// The wait cursor for the life of the scope: Screen->Cursor is crHourGlass
// and goes back to what it was.
class TWaitCursor {
 public:
  explicit TWaitCursor(TCursor cursor = crHourGlass);
  ~TWaitCursor();
  TWaitCursor(const TWaitCursor&) = delete;
  TWaitCursor& operator=(const TWaitCursor&) = delete;

 private:
  TCursor previous_;
};
