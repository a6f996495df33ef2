// The windowing side of the kit's dataset tests. Units that include the
// data framework cannot include the windowing headers (both declare
// TAlignment), so these tests script the user interface and look at status
// bars through this header, which names no windowing type.
#pragma once

#include <memory>

#include "platform/rtl/classes.h"

class TStatusBar;

// Installs a scripted user interface for its lifetime.
class TKitScriptedUI {
 public:
  TKitScriptedUI();
  ~TKitScriptedUI();
  TKitScriptedUI(const TKitScriptedUI&) = delete;
  TKitScriptedUI& operator=(const TKitScriptedUI&) = delete;

  // A message dialogue whose text holds `pattern`, answered Yes or No.
  void ExpectYesNo(const String& pattern, bool yes);
  // An input box whose caption or prompt holds `pattern`, answered with
  // `value`, or cancelled.
  void ExpectInput(const String& pattern, const String& value, bool ok = true);
  // Empty when every dialogue came as expected.
  String Verify() const;
  // The texts of the dialogues shown, in order, one per line.
  String ShownTexts() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// A status bar owned by `owner`.
TStatusBar* NewStatusBar(TComponent* owner);
// The panels' texts joined by "|".
String PanelTexts(TStatusBar* bar);
// Puts panels with the texts into the bar.
void SetPanelTexts(TStatusBar* bar, std::initializer_list<String> texts);
