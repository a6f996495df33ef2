// vesk_sort: VeskSort of the kit's 1,000,000-record virtual table on a
// text field, with its editing guard on, against sorting the same values
// with std::sort and rebuilding a table of them (append and post of every
// record) in the same run. A row count can be named on the command line
// for a quick run.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "bench/benchutil.h"
#include "data/veskvirt.h"
#include "filter/vesksort.h"
#include "platform/db/fields.h"
#include "platform/db/memdataset.h"

namespace {

using namespace bench;

void MakeTable(TVirtualTable& t) {
  t.AddField(u"ID", ftInteger);
  t.AddField(u"NAME", ftString, 40);
  t.Open();
}

void Fill(TVirtualTable& t, const std::vector<String>& names) {
  t.Clear();
  TField* id = t.FieldByName(u"ID");
  TField* name = t.FieldByName(u"NAME");
  for (size_t i = 0; i < names.size(); ++i) {
    t.Append();
    id->SetAsInteger(static_cast<int>(i));
    name->SetAsString(names[i]);
    t.Post();
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int rows = argc > 1 ? std::atoi(argv[1]) : 1000000;
  std::mt19937 random(42);
  std::vector<String> names;
  names.reserve(static_cast<size_t>(rows));
  for (int i = 0; i < rows; ++i) {
    std::string s = "Item ";
    for (int k = 0; k < 12; ++k) s += static_cast<char>('a' + random() % 26);
    names.push_back(String(s));
  }

  TVeskVirt ours(nullptr);
  TVirtualTable peerTable(nullptr);
  MakeTable(ours);
  MakeTable(peerTable);
  Fill(ours, names);
  ours.SetVeskMode(true);

  const double oursTime = Seconds([&] { VeskSort(&ours, u"NAME", false); });
  String previous;
  for (ours.First(); !ours.Eof(); ours.Next()) {
    const String name = ours.FieldByName(u"NAME")->AsString();
    if (name < previous) return 1;
    previous = name;
  }
  if (ours.RecordCount() != rows || !ours.VeskMode()) return 1;

  const double peerTime = Seconds([&] {
    std::vector<String> sorted = names;
    std::sort(sorted.begin(), sorted.end());
    Fill(peerTable, sorted);
  });
  Report("vesk_sort", oursTime / peerTime, "<=", 3.0);
  return 0;
}
