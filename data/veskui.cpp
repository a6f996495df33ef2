#include "data/veskui.h"

#include "platform/ui/dialogs.h"
#include "platform/ui/extctrls.h"

bool ConfirmWarning(const String& Msg) { return MessageDlg(Msg, mtWarning, mbYesNo) == mrYes; }

bool AskText(const String& Caption, const String& Prompt, String& Value) {
  return InputQuery(Caption, Prompt, Value);
}

TClass StatusBarClass() { return TStatusBar::StaticClass(); }

TStatusBar* AsStatusBar(TComponent* Component) { return dynamic_cast<TStatusBar*>(Component); }

TComponent* StatusBarComponent(TStatusBar* Bar) { return Bar; }

void ClearStatusPanels(TStatusBar* Bar) {
  if (!Bar) return;
  for (int i = 0; i < Bar->Panels()->Count(); ++i) Bar->Panels()->Items(i)->SetText(String());
}
