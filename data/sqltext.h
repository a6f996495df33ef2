// Text utilities on SQL statements and codes: comment removal, flattening,
// the successor of a document number, and formulas cut into tokens.
// None keeps state; all are exported for applications.
#pragma once

#include "platform/rtl/ustring.h"

class TStrings;

namespace Vesk {
// Removes "/* */" and "--" comments; with `flatten` the result goes through
// PlainText. The scanner does not know SQL literals: a "--" inside quotes
// starts a comment too, as it always did.
String RemoveComments(const String& text, bool flatten);
}  // namespace Vesk

// Trims every line, drops empty ones and joins the rest with one blank.
String PlainText(const String& text);

// Bits of TextIncrement's mode; 0 means 1.
enum : int { tiDigits = 1, tiLetters = 2, tiAlphanumeric = 4 };
// The successor of a code such as a document number: "A9" gives "A0" in
// digit mode, "1-9" gives "2-0"; a carry off the left end is dropped.
String TextIncrement(const String& text, int mode);

// Token classes of ParseFormula, kept as each line's object.
enum TFormulaTokenClass : int { tcWord = 1, tcQuoted = 2, tcOther = 3 };
// Cuts `text` into tokens; MakeFormula joins them back to the same text.
// Quotes do not make one token of a string: only "''" comes out whole.
void ParseFormula(TStrings* list, const String& text);
String MakeFormula(TStrings* list);
int FormulaTokenClass(TStrings* list, int index);

// Long texts kept in a name=value list: one line "K=text" for a one-line
// text, else "K0=...", "K1=..." for each non-blank line, trimmed.
void GetParamSQL(TStrings* params, TStrings* lines, const String& key);
void SetParamSQL(TStrings* params, TStrings* lines, const String& key);
// Removes "K" and every "K<n>" whose up to three digits print back the
// same; the key is compared as given, against names in upper case.
void ClearParamSQL(TStrings* params, const String& key);
String GetParamSQLText(TStrings* params, const String& key);
void SetParamSQLText(TStrings* params, const String& key, const String& text);
