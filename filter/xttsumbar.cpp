// Summaries on a status bar: the one place where they meet the controls.
#include "filter/xttsum.h"
#include "platform/ui/extctrls.h"

void XTTTSummaryCollection::DisplaySummaries(TStatusBar* Bar) {
  if (!Bar) return;
  TStatusPanels* panels = Bar->Panels();
  while (panels->Count() < Count()) panels->Add();
  while (panels->Count() > Count()) panels->Delete(panels->Count() - 1);
  CheckSummaries();
  for (int i = 0; i < Count(); ++i) {
    panels->Items(i)->SetWidth(Items(i)->Width());
    panels->Items(i)->SetText(Items(i)->GetText());
  }
}
