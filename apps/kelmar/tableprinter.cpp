#include "apps/kelmar/tableprinter.h"

#include <algorithm>
#include <vector>

#include "platform/db/dataset.h"

namespace {

// Columns on a terminal: one per character, control characters shown as
// a blank, so that a value with a line break cannot tear the table.
String Printable(const String& s) {
  std::u16string out(s.view());
  for (char16_t& c : out)
    if (c < 0x20) c = u' ';
  return String(std::move(out));
}

int Width(const String& s) {
  int n = 0;
  for (char16_t c : s.view())
    if (c < 0xDC00 || c > 0xDFFF) ++n;  // the second half of a pair adds nothing
  return n;
}

void Pad(std::string& line, const String& text, int width, bool right) {
  std::string pad(static_cast<size_t>(std::max(0, width - Width(text))), ' ');
  if (right) line += pad;
  line += text.ToUtf8();
  if (!right) line += pad;
}

}  // namespace

std::string FormatTable(TDataSet* dataSet) {
  std::vector<TField*> fields;
  for (TField* f : *dataSet->Fields())
    if (f->Visible()) fields.push_back(f);
  std::vector<std::vector<String>> rows;
  std::vector<int> widths;
  for (TField* f : fields) widths.push_back(Width(f->DisplayLabel()));
  for (dataSet->First(); !dataSet->Eof(); dataSet->Next()) {
    std::vector<String> row;
    for (size_t i = 0; i < fields.size(); ++i) {
      row.push_back(Printable(fields[i]->DisplayText()));
      widths[i] = std::max(widths[i], Width(row.back()));
    }
    rows.push_back(std::move(row));
  }
  std::string out, rule;
  for (size_t i = 0; i < fields.size(); ++i) {
    if (i > 0) {
      out += " | ";
      rule += "-+-";
    }
    bool right = fields[i]->Alignment() == taRightJustify;
    Pad(out, fields[i]->DisplayLabel(), widths[i], right);
    rule += std::string(static_cast<size_t>(widths[i]), '-');
  }
  out += '\n';
  out += rule;
  out += '\n';
  for (const auto& row : rows) {
    std::string line;
    for (size_t i = 0; i < fields.size(); ++i) {
      if (i > 0) line += " | ";
      Pad(line, row[i], widths[i], fields[i]->Alignment() == taRightJustify);
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out += line;
    out += '\n';
  }
  out += '(';
  out += std::to_string(rows.size());
  out += rows.size() == 1 ? " row)\n" : " rows)\n";
  return out;
}
