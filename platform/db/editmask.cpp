#include "platform/db/editmask.h"

#include "platform/rtl/sysutils.h"

namespace {

bool IsMaskChar(char16_t c) {
  switch (c) {
    case u'0': case u'9': case u'#': case u'L': case u'l': case u'A': case u'a': case u'C': case u'c':
      return true;
    default:
      return false;
  }
}

}  // namespace

String FormatMaskText(const String& mask, const String& value) {
  // The mask proper ends at the first unescaped ';'.
  std::u16string_view m = mask.view();
  size_t end = 0;
  for (; end < m.size(); ++end) {
    if (m[end] == u'\\') ++end;
    else if (m[end] == u';') break;
  }
  char16_t blank = u' ';
  if (end < m.size()) {
    size_t second = m.find(u';', end + 1);
    if (second != std::u16string_view::npos && second + 1 < m.size()) blank = m[second + 1];
  }
  if (blank == u'_') blank = u' ';

  std::u16string_view v = value.view();
  std::u16string out;
  size_t vi = 0;
  int caseMode = 0;  // 1 upper, -1 lower
  for (size_t i = 0; i < end; ++i) {
    char16_t c = m[i];
    if (c == u'<' && i + 1 < end && m[i + 1] == u'>') {
      caseMode = 0;
      ++i;
    } else if (c == u'>') {
      caseMode = 1;
    } else if (c == u'<') {
      caseMode = -1;
    } else if (c == u'!') {
      // Leading blanks are trimmed elsewhere; the marker itself shows nothing.
    } else if (c == u'\\' && i + 1 < end) {
      out += m[++i];
      if (vi < v.size() && v[vi] == m[i]) ++vi;
    } else if (IsMaskChar(c)) {
      if (vi < v.size()) {
        String ch(v[vi++]);
        if (caseMode > 0) ch = UpperCase(ch);
        else if (caseMode < 0) ch = LowerCase(ch);
        out += ch.view();
      } else {
        out += blank;
      }
    } else {
      out += c;
      if (vi < v.size() && v[vi] == c) ++vi;
    }
  }
  return String(std::move(out));
}
