#include "platform/db/sqlscan.h"

#include "platform/rtl/sysutils.h"

namespace {

bool IsNameChar(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_' ||
         c == u'$' || c == u'#' || c > 127;
}

// Index just past a quoted run that opens at `i` with `quote`; an
// unterminated run ends the text. A doubled quote stays inside.
size_t SkipQuoted(std::u16string_view s, size_t i, char16_t quote) {
  for (++i; i < s.size(); ++i) {
    if (s[i] != quote) continue;
    if (i + 1 < s.size() && s[i + 1] == quote) {
      ++i;
      continue;
    }
    return i + 1;
  }
  return s.size();
}

}  // namespace

std::vector<TSqlPlace> ScanSqlPlaces(const String& sql) {
  std::vector<TSqlPlace> places;
  std::u16string_view s = sql.view();
  size_t i = 0;
  while (i < s.size()) {
    char16_t c = s[i];
    char16_t next = i + 1 < s.size() ? s[i + 1] : u'\0';
    if (c == u'\'' || c == u'"') {
      i = SkipQuoted(s, i, c);
    } else if (c == u'-' && next == u'-') {
      while (i < s.size() && s[i] != u'\n') ++i;
    } else if (c == u'/' && next == u'*') {
      size_t end = s.find(u"*/", i + 2);
      i = end == std::u16string_view::npos ? s.size() : end + 2;
    } else if (c == u':' && (next == u':' || next == u'=')) {
      i += 2;
      while (i < s.size() && s[i] == u':') ++i;
    } else if (c == u':' && next == u'"') {
      size_t end = SkipQuoted(s, i + 1, u'"');
      bool closed = end > i + 2 && s[end - 1] == u'"';
      String name(s.substr(i + 2, end - i - 2 - (closed ? 1 : 0)));
      if (!name.IsEmpty())
        places.push_back({TSqlPlace::Param, name, static_cast<int>(i) + 1, static_cast<int>(end - i)});
      i = end;
    } else if ((c == u':' || c == u'&') && IsNameChar(next)) {
      size_t end = i + 1;
      while (end < s.size() && IsNameChar(s[end])) ++end;
      places.push_back({c == u':' ? TSqlPlace::Param : TSqlPlace::Macro, String(s.substr(i + 1, end - i - 1)),
                        static_cast<int>(i) + 1, static_cast<int>(end - i)});
      i = end;
    } else {
      ++i;
    }
  }
  return places;
}

std::vector<String> SqlPlaceNames(const std::vector<TSqlPlace>& places, TSqlPlace::TKind kind) {
  std::vector<String> names;
  for (const TSqlPlace& p : places) {
    if (p.Kind != kind) continue;
    bool seen = false;
    for (const String& n : names) seen = seen || SameText(n, p.Name);
    if (!seen) names.push_back(p.Name);
  }
  return names;
}

String ExpandSqlMacros(const String& sql, const std::function<String(const String& name)>& value) {
  std::vector<TSqlPlace> places = ScanSqlPlaces(sql);
  String out;
  int from = 1;
  for (const TSqlPlace& p : places) {
    if (p.Kind != TSqlPlace::Macro) continue;
    out += sql.SubString(from, p.Start - from);
    out += value(p.Name);
    from = p.Start + p.Length;
  }
  out += sql.SubString(from, sql.Length() - from + 1);
  return out;
}

bool IsWhereClauseOnly(const String& sql) {
  String t = Trim(sql);
  if (t.Length() < 5 || !SameText(t.SubString(1, 5), u"WHERE")) return false;
  return t.Length() == 5 || !IsNameChar(t[6]);
}
