#include "platform/ui/dialogs.h"

#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"
#include "platform/ui/forms.h"

int MessageDlg(const String& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons, int HelpCtx) {
  return CurrentUserInterface().MessageDlg(Msg, DlgType, Buttons, HelpCtx);
}

void ShowMessage(const String& Msg) { CurrentUserInterface().ShowMessage(Msg); }

String InputBox(const String& ACaption, const String& APrompt, const String& ADefault) {
  String value = ADefault;
  return InputQuery(ACaption, APrompt, value) ? value : ADefault;
}

bool InputQuery(const String& ACaption, const String& APrompt, String& Value) {
  String value = Value;
  if (!CurrentUserInterface().InputQuery(ACaption, APrompt, value)) return false;
  Value = value;
  return true;
}

bool SelectDirectory(const String& Caption, const String& Root, String& Directory) {
  String dir = Directory;
  if (!CurrentUserInterface().SelectDirectory(Caption, Root, dir)) return false;
  Directory = dir;
  return true;
}

bool MessageBeep(unsigned Type) {
  CurrentUserInterface().MessageBeep(Type);
  return true;
}

KELMAR_PUBLISH(TOpenDialog) {
  r.Prop(u"DefaultExt", &TOpenDialog::DefaultExt, &TOpenDialog::SetDefaultExt);
  r.Prop(u"FileName", &TOpenDialog::FileName, &TOpenDialog::SetFileName);
  r.Prop(u"Filter", &TOpenDialog::Filter, &TOpenDialog::SetFilter);
  r.Prop(u"FilterIndex", &TOpenDialog::FilterIndex, &TOpenDialog::SetFilterIndex).Default = 1;
  r.Prop(u"InitialDir", &TOpenDialog::InitialDir, &TOpenDialog::SetInitialDir);
  r.Prop(u"Options", &TOpenDialog::Options, &TOpenDialog::SetOptions);
  r.Prop(u"Title", &TOpenDialog::Title, &TOpenDialog::SetTitle);
}

TOpenDialog::TOpenDialog(TComponent* AOwner) : TComponent(AOwner), files_(std::make_unique<TStringList>()) {}

TOpenDialog::~TOpenDialog() = default;

bool TOpenDialog::Execute() {
  TFileDialogRequest request;
  request.Kind = Kind();
  request.Title = title_;
  request.Filter = filter_;
  request.FilterIndex = filterIndex_;
  request.DefaultExt = defaultExt_;
  request.InitialDir = initialDir_;
  request.FileName = fileName_;
  request.MultiSelect = options_.Contains(ofAllowMultiSelect);
  if (!CurrentUserInterface().FileDialog(request)) return false;
  fileName_ = request.FileName;
  if (!defaultExt_.IsEmpty() && !fileName_.IsEmpty() && ExtractFileExt(fileName_).IsEmpty())
    fileName_ += u"." + defaultExt_;
  filterIndex_ = request.FilterIndex;
  files_->Clear();
  if (request.Files.empty()) files_->Add(fileName_);
  for (const String& f : request.Files) files_->Add(f);
  return true;
}

KELMAR_PUBLISH(TSaveDialog) {}

TWaitCursor::TWaitCursor(TCursor cursor) : previous_(Screen->Cursor()) { Screen->SetCursor(cursor); }

TWaitCursor::~TWaitCursor() { Screen->SetCursor(previous_); }
