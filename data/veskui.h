// What the dataset family asks of the windowing framework: a confirmation,
// a typed value, and the panels of a status bar.
//
// The windowing headers and the data framework headers cannot meet in one
// unit (both declare TAlignment), so the datasets reach the user interface
// only through these functions, which name no windowing type but
// TStatusBar, forward-declared.
#pragma once

#include "platform/rtl/object.h"
#include "platform/rtl/ustring.h"

class TComponent;
class TStatusBar;

// A warning with Yes and No; true only for Yes.
bool ConfirmWarning(const String& Msg);
// An input box; false when cancelled, and Value keeps what it held.
bool AskText(const String& Caption, const String& Prompt, String& Value);

// TStatusBar's class information, for the published references to a bar.
TClass StatusBarClass();
// The component as a status bar; null when it is none.
TStatusBar* AsStatusBar(TComponent* Component);
TComponent* StatusBarComponent(TStatusBar* Bar);
// Blanks the text of every panel; nothing for a null bar.
void ClearStatusPanels(TStatusBar* Bar);
