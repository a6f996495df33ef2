#include "platform/ui/textlines.h"

#include "platform/rtl/sysutils.h"

namespace {
void CheckIndex(int index, int count) {
  if (index < 0 || index >= count) throw EStringListError(u"List index out of bounds (" + IntToStr(index) + u")");
}
}  // namespace

std::vector<String> TTextLines::SplitText(const String& text) {
  std::vector<String> lines;
  if (text.IsEmpty()) return lines;
  String line;
  for (int i = 1; i <= text.Length(); ++i) {
    WideChar c = text[i];
    if (c == u'\r' || c == u'\n') {
      lines.push_back(line);
      line = String();
      if (c == u'\r' && i < text.Length() && text[i + 1] == u'\n') ++i;
    } else {
      line += c;
    }
  }
  WideChar last = text[text.Length()];
  if (!line.IsEmpty() || (last != u'\r' && last != u'\n')) lines.push_back(line);
  return lines;
}

String TTextLines::Get(int Index) const {
  auto lines = Split();
  CheckIndex(Index, static_cast<int>(lines.size()));
  return lines[static_cast<size_t>(Index)];
}

void TTextLines::Put(int Index, const String& S) {
  auto lines = Split();
  CheckIndex(Index, static_cast<int>(lines.size()));
  lines[static_cast<size_t>(Index)] = S;
  Join(lines);
}

void TTextLines::Insert(int Index, const String& S) {
  auto lines = Split();
  CheckIndex(Index, static_cast<int>(lines.size()) + 1);
  lines.insert(lines.begin() + Index, S);
  Join(lines);
}

void TTextLines::Delete(int Index) {
  auto lines = Split();
  CheckIndex(Index, static_cast<int>(lines.size()));
  lines.erase(lines.begin() + Index);
  Join(lines);
}

void TTextLines::Join(const std::vector<String>& lines) {
  String text;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (i) text += u"\r\n";
    text += lines[i];
  }
  setText_(text);
}
