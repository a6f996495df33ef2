// TFilterValueLanguage: the small language in which users type a condition
// for one field (">100", "12 15 20", ">=5,<=9", "IS NULL", "ab cd"), and the
// three generators that turn it into a parenthesised SQL condition.
//
// A blank between items means OR, a comma AND; an item may start with an
// operator (>, <, =, >=, <=, <>...). Numbers go out bare, dates as quoted
// literals, text as = or LIKE by the text option. Typed quotes and
// wildcards are not escaped: the user may write SQL into a value.
//
// The find/filter dialogue holds this state and sets it per field before
// it calls a generator. The generators touch no dataset; the only side
// effect is the message box that a bad number or date shows.
//
// Errors that reach the caller:
// - ERangeError for a value that ends, after trimming, in a comma or one of
//   "<", "=", ">": normalising reads one character past it.
// - Exception for a number or date value with two commas in a row, whose
//   scan would otherwise never end.
#pragma once

#include "platform/rtl/ustring.h"

class TFilterValueLanguage {
 public:
  // Text options of a text field.
  enum { toExact = 0, toInside = 1, toBegins = 2, toSmart = 3 };

  TFilterValueLanguage();
  virtual ~TFilterValueLanguage() = default;

  // ---- State the generators read ----
  // "UPPER(" and ")" when the compare ignores case, else both empty.
  String UpperPrefix;
  String UpperSuffix;
  // One of the text options above; any other value gives the upper-cased
  // value itself as the condition.
  int TextOption = toInside;
  // The dialogue's cbNumber: Smart compare also passes the digits-aware
  // argument.
  bool NumberChecked = true;
  // The dialogue's udLimit position, 0 to 10: the Smart compare threshold
  // in tenths.
  int LimitPosition = 7;

  // Ignoring case (true) or not.
  void SetUpper(bool upper);

  // ---- The language ----
  // Trimmed, with the blanks behind a blank, comma or operator removed and
  // " ," turned into ",": "5  ,  7" is "5,7", ">  10" is ">10".
  static String RemoveUnused(const String& value);
  // One of "1234567890.+-".
  static bool IsNumber(WideChar c);
  // One of " ><=,".
  static bool IsSimbol(WideChar c);
  // Every character a number or a symbol character; true for "".
  static bool IsValidFloat(const String& value);

  // ---- Generators: value as typed, field expression copied as it stands ----
  // Numbers; also "select ..." as a sub-select: field IN(select ...).
  String ReFloat(const String& value, const String& field) const;
  // Dates and times, compared as quoted literals.
  String ReDate(const String& value, const String& field) const;
  // Text, by TextOption and the upper prefix and suffix.
  String ReString(const String& value, const String& field) const;
};
