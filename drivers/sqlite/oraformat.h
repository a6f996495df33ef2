// Oracle's format models for TO_DATE, TO_CHAR and TO_NUMBER, as far as the
// kit and its applications write them: DD.MM.YYYY, YYYY-MM-DD, HH24:MI:SS,
// MON, DY, AM/PM, and number masks of 9, 0, the decimal point and group
// separators. Functions return 0 or the Oracle error number.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "drivers/sqlite/datetext.h"

// An empty format reads the stored form or the session's DD.MM.YYYY with
// an optional HH24:MI[:SS].
int ParseOraDate(std::string_view text, std::string_view format, TCivilTime& t);
// An empty format writes the session's DD.MM.YYYY.
int FormatOraDate(const TCivilTime& t, std::string_view format, std::string& out);
int FormatOraNumber(double value, std::string_view format, std::string& out);
// ROUND and TRUNC of a number to `decimals` places (negative: left of the
// point) in decimal, as Oracle's NUMBER does: 1.005 rounds to 1.01.
double DecimalRound(double value, int decimals, bool truncate);
// TO_CHAR of a number without a format: "12", "-1.5", ".25".
std::string OraNumberText(double value);

struct TOraNumber {
  bool IsInteger = false;
  int64_t Int = 0;
  double Float = 0;
};
// Blanks around, a sign, digits with an optional decimal point and exponent;
// with `groups` the ',' separators are skipped.
bool ParseOraNumber(std::string_view text, TOraNumber& number, bool groups = false);
