// Fuzz target of the filter value language: any typed value, under any
// dialogue state, either gives a condition or raises one of the two errors
// the language has, each exactly where it belongs, and always ends.
//
// Input: byte 1 the state (bits 0-2 the text option, bit 3 ignore case,
// bit 4 cbNumber), byte 2 the udLimit position (modulo 11), then the value,
// one character per byte. Values are cut at 4096 characters, which bounds
// the work per input: every generator is linear in its value.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>

#include "filter/filterlang.h"
#include "platform/rtl/exceptions.h"
#include "platform/ui/uiport.h"

namespace {

constexpr size_t kMaxValue = 4096;
const String kField = u"T.F";

void Check(bool condition) {
  if (!condition) std::abort();
}

// Counts the message boxes; any other dialogue is a fault.
class TCountingUserInterface : public UserInterface {
 public:
  int Messages = 0;
  void ShowModal(TCustomForm&) override { std::abort(); }
  int MessageDlg(const String&, TMsgDlgType, TMsgDlgButtons, int) override { std::abort(); }
  void ShowMessage(const String&) override { ++Messages; }
  bool InputQuery(const String&, const String&, String&) override { std::abort(); }
  bool FileDialog(TFileDialogRequest&) override { std::abort(); }
  bool SelectDirectory(const String&, const String&, String&) override { std::abort(); }
  TMenuItem* TrackPopupMenu(TPopupMenu&, int, int) override { std::abort(); }
};

enum TEnd { endCondition, endRangeError, endTwoCommas };

// How a call ended; any other exception is a fault.
TEnd Run(const std::function<String()>& call, String& result) {
  try {
    result = call();
    return endCondition;
  } catch (const ERangeError&) {
    return endRangeError;
  } catch (const Exception& e) {
    Check(e.Message.Pos(u"Two commas in a row") > 0);
    return endTwoCommas;
  }
}

int Count(const String& text, std::u16string_view what) {
  int n = 0;
  for (size_t at = text.view().find(what); at != std::u16string_view::npos; at = text.view().find(what, at + 1)) ++n;
  return n;
}

// Checks a number or date generator on a value that normalises to s.
void CheckScan(TCountingUserInterface& ui, const std::function<String()>& call, const String& s, bool subSelects) {
  ui.Messages = 0;
  String result;
  const TEnd end = Run(call, result);
  const String upper = s.UpperCase();
  if (subSelects && upper.SubString(1, 6) == u"SELECT") {
    Check(end == endCondition && result == kField + u" IN(" + s + u")");
  } else if (upper == u"IS NULL" || upper == u"IS NOT NULL") {
    Check(end == endCondition && result == u"(" + kField + u" " + upper + u")");
  } else if (!TFilterValueLanguage::IsValidFloat(s)) {
    // Refused: shown once and passed on as it is.
    Check(end == endCondition && result == s && ui.Messages == 1);
    return;
  } else {
    Check((end == endTwoCommas) == (s.Pos(u",,") > 0));
    if (end == endCondition) Check(Count(result, u"(") == Count(result, u")"));
  }
  Check(ui.Messages == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  TCountingUserInterface ui;
  TUserInterfaceScope scope(ui);
  TFilterValueLanguage language;
  language.TextOption = data[0] & 7;
  language.SetUpper((data[0] & 8) != 0);
  language.NumberChecked = (data[0] & 16) != 0;
  language.LimitPosition = data[1] % 11;
  String value;
  for (size_t i = 2; i < size && i - 2 < kMaxValue; ++i) value += static_cast<WideChar>(data[i]);
  auto number = [&] { return language.ReFloat(value, kField); };
  auto date = [&] { return language.ReDate(value, kField); };
  auto text = [&] { return language.ReString(value, kField); };

  // Normalising, which every generator does first, raises exactly for a
  // value that ends in a comma or an operator.
  const String trimmed = value.Trim();
  const bool endsInSymbol = !trimmed.IsEmpty() && TFilterValueLanguage::IsSimbol(trimmed[trimmed.Length()]);
  String s, result;
  if (endsInSymbol) {
    Check(Run([&] { return TFilterValueLanguage::RemoveUnused(value); }, s) == endRangeError);
    Check(Run(number, result) == endRangeError && Run(date, result) == endRangeError &&
          Run(text, result) == endRangeError && ui.Messages == 0);
    return 0;
  }
  s = TFilterValueLanguage::RemoveUnused(value);
  Check(s == s.Trim() && s.Pos(u" ,") == 0);
  for (int i = 1; i < s.Length(); ++i) Check(!(TFilterValueLanguage::IsSimbol(s[i]) && s[i + 1] == u' '));

  CheckScan(ui, number, s, true);
  CheckScan(ui, date, s, false);

  // Text never refuses a value; inside and begins give a condition per word.
  ui.Messages = 0;
  Check(Run(text, result) == endCondition && ui.Messages == 0);
  const String upper = s.UpperCase();
  const bool nullTest = upper == u"IS NULL" || upper == u"IS NOT NULL";
  if (!nullTest && !s.IsEmpty() && (language.TextOption == 1 || language.TextOption == 2))
    Check(Count(result, u" LIKE ") == Count(s, u" ") + Count(s, u",") + 1);
  return 0;
}
