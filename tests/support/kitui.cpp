#include "tests/support/kitui.h"

#include "platform/ui/extctrls.h"
#include "platform/ui/scriptedui.h"

struct TKitScriptedUI::Impl {
  TScriptedUserInterface ui;
  TUserInterfaceScope scope{ui};
};

TKitScriptedUI::TKitScriptedUI() : impl_(std::make_unique<Impl>()) {}
TKitScriptedUI::~TKitScriptedUI() = default;

void TKitScriptedUI::ExpectYesNo(const String& pattern, bool yes) {
  impl_->ui.ExpectMessageDlg(pattern, yes ? mrYes : mrNo);
}

void TKitScriptedUI::ExpectInput(const String& pattern, const String& value, bool ok) {
  impl_->ui.ExpectInputQuery(pattern, value, ok);
}

String TKitScriptedUI::Verify() const { return impl_->ui.Verify(); }

String TKitScriptedUI::ShownTexts() const {
  String text;
  for (const TShownDialog& d : impl_->ui.Shown()) text += d.Text + u"\n";
  return text;
}

TStatusBar* NewStatusBar(TComponent* owner) { return new TStatusBar(owner); }

String PanelTexts(TStatusBar* bar) {
  String text;
  for (int i = 0; i < bar->Panels()->Count(); ++i) text += (i ? u"|" : u"") + bar->Panels()->Items(i)->Text();
  return text;
}

void SetPanelTexts(TStatusBar* bar, std::initializer_list<String> texts) {
  bar->Panels()->Clear();
  for (const String& t : texts) bar->Panels()->Add()->SetText(t);
}
