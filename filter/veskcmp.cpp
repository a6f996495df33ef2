#include "filter/veskcmp.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/db/orasession.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"

namespace {

bool InAlphabet(char16_t c) {
  return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z') || (c >= u'\u0430' && c <= u'\u044F') ||
         c == u'\u0451';
}

void RemoveStopWord(std::u16string& text, std::u16string_view word) {
  size_t from = 0;
  size_t at;
  while ((at = text.find(word, from)) != std::u16string::npos) {
    const size_t end = at + word.size();
    const bool wordStart = at == 0 || text[at - 1] == u' ';
    const bool wordEnd = end == text.size() || text[end] == u' ';
    if (!wordStart || !wordEnd) {
      from = end + 1;
      continue;
    }
    text.erase(at, std::min(word.size() + 1, text.size() - at));
    const size_t first = text.find_first_not_of(u' ');
    if (first == std::u16string::npos) {
      text.clear();
    } else {
      text.erase(text.find_last_not_of(u' ') + 1);
      text.erase(0, first);
    }
  }
}

// The w-character runs of a text packed 16 bits a character and sorted, so
// that two lists meet in one merge walk. Short texts stay on the stack.
class TGrams {
 public:
  TGrams(std::u16string_view s, size_t w) {
    count_ = s.size() >= w ? s.size() - w + 1 : 0;
    if (count_ > inline_.size()) {
      heap_.resize(count_);
      data_ = heap_.data();
    }
    const uint64_t mask = w >= 4 ? ~uint64_t(0) : (uint64_t(1) << (16 * w)) - 1;
    uint64_t gram = 0;
    for (size_t i = 0; i < s.size(); ++i) {
      gram = ((gram << 16) | s[i]) & mask;
      if (i + 1 >= w) data_[i + 1 - w] = gram;
    }
    std::sort(data_, data_ + count_);
  }
  TGrams(const TGrams&) = delete;
  TGrams& operator=(const TGrams&) = delete;

  std::span<const uint64_t> Items() const { return {data_, count_}; }

 private:
  std::array<uint64_t, 96> inline_;
  std::vector<uint64_t> heap_;
  uint64_t* data_ = inline_.data();
  size_t count_ = 0;
};

struct TTally {
  size_t Hits = 0;
  size_t Total = 0;
  double Share() const { return Total == 0 ? 0.0 : static_cast<double>(Hits) / static_cast<double>(Total); }
};

// Every gram of `from` counts once towards the total, and once towards the
// hits when it occurs anywhere in `in`; repeats count each time.
void CountFound(const TGrams& from, const TGrams& in, TTally& tally) {
  std::span<const uint64_t> x = from.Items(), y = in.Items();
  tally.Total += x.size();
  size_t j = 0;
  for (uint64_t gram : x) {
    while (j < y.size() && y[j] < gram) ++j;
    if (j == y.size()) break;
    if (y[j] == gram) ++tally.Hits;
  }
}

void CountBothWays(std::u16string_view a, std::u16string_view b, size_t w, TTally& tally) {
  TGrams ga(a, w), gb(b, w);
  CountFound(ga, gb, tally);
  CountFound(gb, ga, tally);
}

void CountOneWay(std::u16string_view pattern, std::u16string_view text, size_t w, TTally& tally) {
  CountFound(TGrams(pattern, w), TGrams(text, w), tally);
}

String ArgText(std::span<const TDbValue> args, size_t i) {
  if (i >= args.size() || args[i].IsNull()) return String();
  const TDbValue& v = args[i];
  switch (v.Kind) {
    case dkText: return v.Text;
    case dkInteger: return String(std::to_string(v.Int));
    case dkFloat: return DbValueToVariant(v).AsString();
    default: return String();
  }
}

// The engine's empty text is null, as the server's is.
TDbValue TextResult(const String& s) { return s.IsEmpty() ? TDbValue::Null() : TDbValue::TextValue(s); }

}  // namespace

String VeskCmpPrep(const String& text, TStrings* stopWords) {
  // The full case mapping: a few letters outside the alphabet (the Kelvin
  // sign, the dotted capital I) become members by it.
  const String lower = LowerCase(text);
  std::u16string out;
  out.reserve(lower.u16().size());
  bool separated = false;
  for (char16_t c : lower.u16()) {
    if (!InAlphabet(c)) {
      separated = true;
      continue;
    }
    if (separated && !out.empty()) out += u' ';
    separated = false;
    out += c;
  }
  if (stopWords) {
    for (int i = 0; i < stopWords->Count() && !out.empty(); ++i) {
      const String word = stopWords->Strings(i);
      if (!word.IsEmpty()) RemoveStopWord(out, word.view());
    }
  }
  return String(std::move(out));
}

String VeskCmpNum(const String& text) {
  std::u16string digits;
  for (char16_t c : text.u16())
    if (c >= u'0' && c <= u'9') digits += c;
  return String(std::move(digits));
}

double VeskCmpValue(const String& a, const String& b) {
  const std::u16string_view x = a.view(), y = b.view();
  const size_t shorter = std::min(x.size(), y.size());
  if (shorter == 0) return 0.0;
  TTally tally;
  if (shorter > 2) CountBothWays(x, y, 3, tally);
  if (shorter > 1) CountBothWays(x, y, 2, tally);
  CountBothWays(x, y, 1, tally);
  return tally.Share();
}

double VeskCmpIn(const String& text, const String& pattern, const String& number) {
  if (text.IsEmpty() || pattern.IsEmpty()) return 0.0;
  if (!number.IsEmpty() && VeskCmpNum(text).Pos(number) == 0) return 0.0;
  const std::u16string_view t = text.view(), p = pattern.view();
  TTally tally;
  CountOneWay(p, t, 1, tally);
  if (t.size() >= 2 && p.size() >= 3) {
    CountOneWay(p, t, 2, tally);
    if (t.size() > 2) CountOneWay(p, t, 3, tally);
  }
  return tally.Share();
}

void RegisterSimilarityFunctions(TOraSession* session) {
  if (!session) throw EDatabaseError(u"RegisterSimilarityFunctions: no session");
  session->RegisterFunction(u"PREP", 1, [](std::span<const TDbValue> args) {
    return TextResult(VeskCmpPrep(ArgText(args, 0)));
  });
  session->RegisterFunction(u"NUM", 1, [](std::span<const TDbValue> args) {
    return TextResult(VeskCmpNum(ArgText(args, 0)));
  });
  const TDbFunction inText = [](std::span<const TDbValue> args) {
    return TDbValue::FloatValue(VeskCmpIn(ArgText(args, 0), ArgText(args, 1), ArgText(args, 2)));
  };
  session->RegisterFunction(u"INTEXT", 2, inText);
  session->RegisterFunction(u"INTEXT", 3, inText);
}
