#include "platform/ui/scriptedui.h"

#include "platform/rtl/sysutils.h"
#include "platform/ui/menus.h"

String DialogKindName(TDialogKind kind) {
  switch (kind) {
    case dkForm: return u"form";
    case dkMessageDlg: return u"MessageDlg";
    case dkShowMessage: return u"ShowMessage";
    case dkInputQuery: return u"InputQuery";
    case dkOpenFile: return u"open dialogue";
    case dkSaveFile: return u"save dialogue";
    case dkSelectDirectory: return u"folder dialogue";
    case dkPopupMenu: return u"popup menu";
  }
  return u"dialogue";
}

namespace {

bool Matches(const String& pattern, const std::vector<String>& texts) {
  if (pattern.IsEmpty()) return true;
  String p = LowerCase(pattern);
  for (const String& t : texts)
    if (LowerCase(t).Pos(p) > 0) return true;
  return false;
}

TShownDialog Record(TDialogKind kind, const String& text, TMsgDlgType type = mtCustom,
                    TMsgDlgButtons buttons = TMsgDlgButtons()) {
  TShownDialog d;
  d.Kind = kind;
  d.Text = text;
  d.DlgType = type;
  d.Buttons = buttons;
  return d;
}

String Describe(TDialogKind kind, const String& pattern) {
  return DialogKindName(kind) + (pattern.IsEmpty() ? String() : u" \"" + pattern + u"\"");
}

TMenuItem* FindItem(TMenuItem* parent, const String& name) {
  for (int i = 0; i < parent->Count(); ++i) {
    TMenuItem* item = parent->Items(i);
    if (SameText(item->Name(), name) || SameText(StripHotkey(item->Caption()), StripHotkey(name))) return item;
    if (TMenuItem* found = FindItem(item, name)) return found;
  }
  return nullptr;
}

}  // namespace

TScriptedUserInterface& TScriptedUserInterface::Add(Expectation e) {
  script_.push_back(std::move(e));
  return *this;
}

TScriptedUserInterface& TScriptedUserInterface::ExpectForm(const String& pattern, TFormScript script) {
  return Add({dkForm, pattern, std::move(script), nullptr, String(), true});
}

TScriptedUserInterface& TScriptedUserInterface::ExpectForm(const String& pattern, TModalResult result) {
  return ExpectForm(pattern, [result](TCustomForm& form) { form.SetModalResult(result); });
}

TScriptedUserInterface& TScriptedUserInterface::ExpectMessageDlg(const String& pattern, int result) {
  return ExpectMessageDlg(pattern, [result](const String&, TMsgDlgType, TMsgDlgButtons) { return result; });
}

TScriptedUserInterface& TScriptedUserInterface::ExpectMessageDlg(const String& pattern, TMessageScript script) {
  return Add({dkMessageDlg, pattern, nullptr, std::move(script), String(), true});
}

TScriptedUserInterface& TScriptedUserInterface::ExpectShowMessage(const String& pattern) {
  return Add({dkShowMessage, pattern, nullptr, nullptr, String(), true});
}

TScriptedUserInterface& TScriptedUserInterface::ExpectInputQuery(const String& pattern, const String& value, bool ok) {
  return Add({dkInputQuery, pattern, nullptr, nullptr, value, ok});
}

TScriptedUserInterface& TScriptedUserInterface::ExpectOpenFile(const String& pattern, const String& fileName, bool ok) {
  return Add({dkOpenFile, pattern, nullptr, nullptr, fileName, ok});
}

TScriptedUserInterface& TScriptedUserInterface::ExpectSaveFile(const String& pattern, const String& fileName, bool ok) {
  return Add({dkSaveFile, pattern, nullptr, nullptr, fileName, ok});
}

TScriptedUserInterface& TScriptedUserInterface::ExpectSelectDirectory(const String& pattern, const String& directory,
                                                                      bool ok) {
  return Add({dkSelectDirectory, pattern, nullptr, nullptr, directory, ok});
}

TScriptedUserInterface& TScriptedUserInterface::ExpectPopup(const String& item) {
  return Add({dkPopupMenu, String(), nullptr, nullptr, item, true});
}

TScriptedUserInterface::Expectation TScriptedUserInterface::Take(TDialogKind kind, const std::vector<String>& texts,
                                                                 const String& shownText) {
  if (!script_.empty() && script_.front().Kind == kind && Matches(script_.front().Pattern, texts)) {
    Expectation e = std::move(script_.front());
    script_.pop_front();
    return e;
  }
  String expected = script_.empty() ? String(u"no dialogue")
                                    : Describe(script_.front().Kind, script_.front().Pattern);
  String failure = u"Unexpected " + DialogKindName(kind) + u" \"" + shownText + u"\"; the script expected " + expected;
  failures_.push_back(failure);
  throw EUnexpectedDialog(failure.ToUtf8());
}

void TScriptedUserInterface::ShowModal(TCustomForm& form) {
  shown_.push_back(Record(dkForm, form.Name()));
  Expectation e = Take(dkForm, {form.Name(), form.ClassName(), form.Caption()}, form.Name());
  if (e.Form) e.Form(form);
  if (form.ModalResult() == mrNone) {
    failures_.push_back(u"The script left form " + form.Name() + u" open: no button gave a modal result");
    form.SetModalResult(mrCancel);
  }
  form.CloseModal();
}

int TScriptedUserInterface::MessageDlg(const String& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons, int) {
  shown_.push_back(Record(dkMessageDlg, Msg, DlgType, Buttons));
  Expectation e = Take(dkMessageDlg, {Msg}, Msg);
  return e.Message ? e.Message(Msg, DlgType, Buttons) : mrOk;
}

void TScriptedUserInterface::ShowMessage(const String& Msg) {
  shown_.push_back(Record(dkShowMessage, Msg));
  Take(dkShowMessage, {Msg}, Msg);
}

bool TScriptedUserInterface::InputQuery(const String& Caption, const String& Prompt, String& Value) {
  shown_.push_back(Record(dkInputQuery, Caption));
  Expectation e = Take(dkInputQuery, {Caption, Prompt}, Caption + u": " + Prompt);
  if (e.Ok) Value = e.Value;
  return e.Ok;
}

bool TScriptedUserInterface::FileDialog(TFileDialogRequest& Request) {
  TDialogKind kind = Request.Kind == fdOpen ? dkOpenFile : dkSaveFile;
  shown_.push_back(Record(kind, Request.Title));
  Expectation e = Take(kind, {Request.Title, Request.Filter}, Request.Title);
  if (e.Ok) Request.FileName = e.Value;
  return e.Ok;
}

bool TScriptedUserInterface::SelectDirectory(const String& Caption, const String&, String& Directory) {
  shown_.push_back(Record(dkSelectDirectory, Caption));
  Expectation e = Take(dkSelectDirectory, {Caption}, Caption);
  if (e.Ok) Directory = e.Value;
  return e.Ok;
}

TMenuItem* TScriptedUserInterface::TrackPopupMenu(TPopupMenu& Menu, int, int) {
  shown_.push_back(Record(dkPopupMenu, Menu.Name()));
  Expectation e = Take(dkPopupMenu, {Menu.Name()}, Menu.Name());
  if (e.Value.IsEmpty()) return nullptr;
  TMenuItem* item = FindItem(Menu.Items(), e.Value);
  if (!item) {
    String failure = u"Popup menu " + Menu.Name() + u" has no item \"" + e.Value + u"\"";
    failures_.push_back(failure);
    throw EUnexpectedDialog(failure.ToUtf8());
  }
  return item;
}

String TScriptedUserInterface::Verify() const {
  String report;
  for (const String& f : failures_) report += f + u"\n";
  for (const Expectation& e : script_) report += u"Expected " + Describe(e.Kind, e.Pattern) + u" never came\n";
  return report;
}

TScriptedUserInterface& TScriptedUserInterface::InputPendingAfter(int quietQuestions) {
  inputQuietQuestions_ = quietQuestions;
  return *this;
}

bool TScriptedUserInterface::InputPending() {
  ++inputQuestions_;
  return inputQuietQuestions_ >= 0 && inputQuestions_ > inputQuietQuestions_;
}

void TScriptedUserInterface::Reset() {
  script_.clear();
  shown_.clear();
  failures_.clear();
  cursors_.clear();
  beeps_ = 0;
  inputQuietQuestions_ = -1;
  inputQuestions_ = 0;
  inputDiscards_ = 0;
}

void PressButton(TCustomForm& form, const String& name) {
  TControl& button = Control<TControl>(form, name);
  if (!button.Showing() || !button.Enabled())
    throw EUnexpectedDialog("button " + name.ToUtf8() + " of form " + form.Name().ToUtf8() +
                            " cannot be pressed: it is hidden or disabled");
  button.Click();
}
