// Free text and number routines of the runtime, with the names and edge
// behaviour of the historical framework, and the process-wide format
// settings they read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/rtl/exceptions.h"
#include "platform/rtl/sets.h"
#include "platform/rtl/ustring.h"

// ---- Format settings -------------------------------------------------------

struct TFormatSettings {
  WideChar DecimalSeparator = u'.';
  WideChar ThousandSeparator = u',';
  WideChar DateSeparator = u'.';
  WideChar TimeSeparator = u':';
  String ShortDateFormat = u"dd.mm.yyyy";
  String LongDateFormat = u"d mmmm yyyy";
  String ShortTimeFormat = u"hh:nn";
  String LongTimeFormat = u"hh:nn:ss";
  String TimeAMString = u"AM";
  String TimePMString = u"PM";
  String CurrencyString = u"$";
  int CurrencyDecimals = 2;
  String ShortMonthNames[12] = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
  String LongMonthNames[12] = {u"January", u"February", u"March",     u"April",   u"May",      u"June",
                               u"July",    u"August",   u"September", u"October", u"November", u"December"};
  String ShortDayNames[7] = {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"};
  String LongDayNames[7] = {u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday", u"Saturday"};
  int TwoDigitYearCenturyWindow = 50;
};

// The process-wide settings; the kit runs on one thread.
extern TFormatSettings FormatSettings;

// ---- Text ------------------------------------------------------------------

int Pos(const String& sub, const String& s);
// Searches from `offset` (1-based); 0 when absent or offset out of range.
int PosEx(const String& sub, const String& s, int offset = 1);
String Copy(const String& s, int index, int count);
String Trim(const String& s);
String TrimLeft(const String& s);
String TrimRight(const String& s);
// Unicode-aware case mapping (Latin, Romanian, Cyrillic...).
String UpperCase(const String& s);
String LowerCase(const String& s);
inline String AnsiUpperCase(const String& s) { return UpperCase(s); }
inline String AnsiLowerCase(const String& s) { return LowerCase(s); }
WideChar UpCase(WideChar c);

// Case-insensitive comparison: < 0, 0 or > 0.
int CompareText(const String& a, const String& b);
bool SameText(const String& a, const String& b);
inline int AnsiCompareText(const String& a, const String& b) { return CompareText(a, b); }
inline bool AnsiSameText(const String& a, const String& b) { return SameText(a, b); }
// Ordinal comparison: < 0, 0 or > 0.
int CompareStr(const String& a, const String& b);
inline int AnsiCompareStr(const String& a, const String& b) { return CompareStr(a, b); }
bool SameStr(const String& a, const String& b);

enum TReplaceFlag { rfReplaceAll, rfIgnoreCase };
using TReplaceFlags = Set<TReplaceFlag>;
String StringReplace(const String& s, const String& oldPattern, const String& newPattern, TReplaceFlags flags);

String QuotedStr(const String& s, WideChar quote = u'\'');
// Removes the quotes QuotedStr added; text without them comes back as is.
String AnsiDequotedStr(const String& s, WideChar quote);
String StringOfChar(WideChar c, int count);
int LastDelimiter(const String& delimiters, const String& s);
bool IsDelimiter(const String& delimiters, const String& s, int index);
String IncludeTrailingPathDelimiter(const String& path);
String ExtractFileName(const String& path);
String ExtractFilePath(const String& path);
String ExtractFileExt(const String& path);
String ChangeFileExt(const String& path, const String& ext);

// ---- Numbers ---------------------------------------------------------------

String IntToStr(int value);
String IntToStr(int64_t value);
String UIntToStr(uint64_t value);
String IntToHex(int64_t value, int digits);
// Accepts blanks before the number, a sign, decimal digits, or hexadecimal
// after "$" or "0x"; raises EConvertError "'x' is not a valid integer value".
int StrToInt(const String& s);
int StrToIntDef(const String& s, int def);
bool TryStrToInt(const String& s, int& value);
int64_t StrToInt64(const String& s);
int64_t StrToInt64Def(const String& s, int64_t def);
bool TryStrToInt64(const String& s, int64_t& value);

// Reads a float with FormatSettings.DecimalSeparator (surrounding blanks
// allowed, no thousand separators).
bool TryStrToFloat(const String& s, double& value);
bool TryStrToFloat(const String& s, double& value, const TFormatSettings& settings);
double StrToFloat(const String& s);
double StrToFloatDef(const String& s, double def);

// General format with 15 significant digits: "0.1", "1E20", "1.5E-7".
String FloatToStr(double value);
String FloatToStr(double value, const TFormatSettings& settings);

enum TFloatFormat { ffGeneral, ffExponent, ffFixed, ffNumber, ffCurrency };
String FloatToStrF(double value, TFloatFormat format, int precision, int digits);
String FloatToStrF(double value, TFloatFormat format, int precision, int digits, const TFormatSettings& settings);

// The decimal digits of a value, rounded half away from zero as the
// historical formatting routines do (0.125 at two decimals is 0.13).
// Value = 0.Digits x 10^Exponent; Digits has no leading or trailing zeros
// and is empty for zero.
struct TFloatRec {
  bool Negative = false;
  int Exponent = 0;
  std::string Digits;
  bool Special = false;  // NaN or infinity; Digits then holds "NAN" or "INF"
};
// Rounds to `precision` significant digits.
TFloatRec FloatToDecimal(double value, int precision);
// Rounds to `decimals` digits after the decimal point.
TFloatRec FloatToDecimalFixed(double value, int decimals);

bool StrToBool(const String& s);
bool TryStrToBool(const String& s, bool& value);
String BoolToStr(bool value, bool useBoolStrs = false);

// ---- 8-bit text in the system code page ------------------------------------

// Windows code page numbers: 65001 UTF-8, 1250, 1251, 1252 ... 866, 20866.
int SystemCodePage();
// Raises EEncodingError for a code page this build does not know.
void SetSystemCodePage(int codePage);
String AnsiToString(std::string_view bytes);
std::string StringToAnsi(const String& s);
// Conversions through any code page; unmappable characters become '?'.
String DecodeCodePage(std::string_view bytes, int codePage);
std::string EncodeCodePage(const String& s, int codePage);
