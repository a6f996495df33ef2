#include "data/sqltext.h"

#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"

namespace Vesk {

String RemoveComments(const String& text, bool flatten) {
  const int length = text.Length();
  String result;
  int p = 1;
  while (p <= length) {
    const int block = PosEx(u"/*", text, p);
    const int line = PosEx(u"--", text, p);
    if (block == 0 && line == 0) break;
    const bool isLine = line > 0 && (block == 0 || line < block);
    const int start = isLine ? line : block;
    result += text.SubString(p, start - p);
    const int closer = PosEx(isLine ? u"\n" : u"*/", text, start);
    if (closer == 0) {
      p = length + 1;  // an unclosed comment swallows the rest
      break;
    }
    if (!isLine) {
      p = closer + 2;
    } else {
      // Stay on the line feed so that the line break survives, with its
      // carriage return when there is one.
      p = closer;
      if (text[closer - 1] == u'\r') p = closer - 1;
    }
  }
  if (p <= length) result += text.SubString(p, length - p + 1);
  return flatten ? PlainText(result) : result;
}

}  // namespace Vesk

String PlainText(const String& text) {
  std::u16string out;
  std::u16string_view v = text.view();
  size_t begin = 0;
  while (begin <= v.size()) {
    size_t end = v.find_first_of(u"\r\n", begin);
    if (end == std::u16string_view::npos) end = v.size();
    String line = Trim(String(v.substr(begin, end - begin)));
    if (!line.IsEmpty()) {
      if (!out.empty()) out += u' ';
      out += line.u16();
    }
    if (end < v.size() && v[end] == u'\r' && end + 1 < v.size() && v[end + 1] == u'\n') ++end;
    begin = end + 1;
  }
  return String(std::move(out));
}

String TextIncrement(const String& text, int mode) {
  if (mode == 0) mode = tiDigits;
  const bool sequence = mode & tiAlphanumeric;
  const bool digits = sequence || (mode & tiDigits);
  const bool letters = sequence || (mode & tiLetters);
  String result = text;
  for (int i = result.Length(); i >= 1; --i) {
    WideChar& c = result[i];
    const bool upper = c >= u'A' && c <= u'Z';
    const bool lower = c >= u'a' && c <= u'z';
    if (digits && c >= u'0' && c <= u'8') {
      ++c;
      break;
    }
    if (digits && c == u'9') {
      if (sequence) {
        c = u'A';  // no carry: after "9" comes "A"
        break;
      }
      c = u'0';
      continue;
    }
    if (letters && (upper || lower)) {
      if (c != u'Z' && c != u'z') {
        ++c;
        break;
      }
      c = sequence ? u'0' : (upper ? u'A' : u'a');
      continue;
    }
    // Anything else is skipped on the way left.
  }
  return result;
}

namespace {

bool IsWordChar(WideChar c) {
  return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'_' || c == u'$';
}

TObject* ClassTag(int cls) { return reinterpret_cast<TObject*>(static_cast<intptr_t>(cls)); }

}  // namespace

void ParseFormula(TStrings* list, const String& text) {
  list->BeginUpdate();
  list->Clear();
  int cls = 0;
  int start = 1;
  WideChar quote = 0;
  auto flush = [&](int upTo) {
    if (cls != 0) list->AddObject(text.SubString(start, upTo - start), ClassTag(cls));
    start = upTo;
  };
  const int length = text.Length();
  for (int i = 1; i <= length + 1; ++i) {
    if (i > length) {
      flush(i);
      break;
    }
    const WideChar c = text[i];
    if (cls == tcQuoted && c == quote) {
      flush(i + 1);
      cls = 0;
      quote = 0;
    } else if (c == u'"' || c == u'\'') {
      flush(i);
      cls = tcQuoted;
      quote = c;
    } else if (!IsWordChar(c)) {
      if (cls != tcOther) flush(i);
      cls = tcOther;
    } else {
      if (cls != tcWord) flush(i);
      cls = tcWord;
    }
  }
  list->EndUpdate();
}

String MakeFormula(TStrings* list) {
  String result;
  for (int i = 0; i < list->Count(); ++i) result += list->Strings(i);
  return result;
}

int FormulaTokenClass(TStrings* list, int index) {
  return static_cast<int>(reinterpret_cast<intptr_t>(list->Objects(index)));
}

void GetParamSQL(TStrings* params, TStrings* lines, const String& key) {
  lines->BeginUpdate();
  lines->Clear();
  const String single = Trim(params->Values(key));
  if (!single.IsEmpty()) {
    lines->Add(single);
  } else {
    for (int i = 0;; ++i) {
      const String line = params->Values(key + IntToStr(i));
      if (line.IsEmpty()) break;
      lines->Add(line);
    }
  }
  lines->EndUpdate();
}

void SetParamSQL(TStrings* params, TStrings* lines, const String& key) {
  ClearParamSQL(params, key);
  if (lines->Count() == 1) {
    params->SetValues(key, Trim(lines->Strings(0)));
    return;
  }
  int next = 0;
  for (int i = 0; i < lines->Count(); ++i) {
    const String line = Trim(lines->Strings(i));
    if (!line.IsEmpty()) params->SetValues(key + IntToStr(next++), line);
  }
}

void ClearParamSQL(TStrings* params, const String& key) {
  const int own = params->IndexOfName(key);
  if (own >= 0) params->Delete(own);
  const int keyLength = key.Length();
  for (int i = params->Count() - 1; i >= 0; --i) {
    const String name = UpperCase(params->Names(i));
    if (name.SubString(1, keyLength) != key) continue;
    const String digits = name.SubString(keyLength + 1, 3);
    int number;
    if (TryStrToInt(digits, number) && IntToStr(number) == digits) params->Delete(i);
  }
}

String GetParamSQLText(TStrings* params, const String& key) {
  TStringList lines;
  GetParamSQL(params, &lines, key);
  return lines.Text();
}

void SetParamSQLText(TStrings* params, const String& key, const String& text) {
  TStringList lines;
  lines.SetText(text);
  SetParamSQL(params, &lines, key);
}
