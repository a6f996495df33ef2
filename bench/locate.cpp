// locate_partial: the general Locate with the case and partial options
// over 1,000,000 in-memory records, for a value only the last record
// matches, against a plain loop doing the same compare over the same
// strings in the same run. A row count can be named on the command line.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/benchutil.h"
#include "filter/vesklocate.h"
#include "platform/db/fields.h"
#include "platform/db/memdataset.h"

namespace {

using namespace bench;

}  // namespace

int main(int argc, char** argv) {
  const int rows = argc > 1 ? std::atoi(argv[1]) : 1000000;
  std::vector<String> names;
  names.reserve(static_cast<size_t>(rows));
  for (int i = 0; i < rows; ++i) names.push_back(String("Customer " + std::to_string(i) + " Ltd"));

  TVirtualTable table(nullptr);
  table.AddField(u"ID", ftInteger);
  table.AddField(u"NAME", ftString, 40);
  table.Open();
  TField* id = table.FieldByName(u"ID");
  TField* name = table.FieldByName(u"NAME");
  for (int i = 0; i < rows; ++i) {
    table.Append();
    id->SetAsInteger(i);
    name->SetAsString(names[static_cast<size_t>(i)]);
    table.Post();
  }

  const String value = String("customer " + std::to_string(rows - 1) + " l");
  const String upper = value.UpperCase();
  size_t peerAt = 0;
  const double peer = Best(3, [&] {
    peerAt = names.size();
    for (size_t i = 0; i < names.size(); ++i) {
      String text = names[i];
      if (upper.Length() < text.Length()) text.SetLength(upper.Length());
      if (text.UpperCase() == upper) {
        peerAt = i;
        break;
      }
    }
  });
  bool found = false;
  const double ours = Best(3, [&] {
    table.First();
    found = Locate(&table, u"NAME", value, TVeskLocateOption{vloCaseInsensitive, vloPartialKey});
  });
  if (!found || peerAt != names.size() - 1 || id->AsInteger() != rows - 1) return 1;
  Report("locate_partial", ours / peer, "<=", 2.0);
  return 0;
}
