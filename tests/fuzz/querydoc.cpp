// Fuzz target of the query document and the property list: any bytes, read
// as text, are taken by both readers without harm, and what a dataset
// writes after reading is a fixed point: read again and written again, it
// comes back the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "data/querydoc.h"
#include "data/veskodacquerylib.h"
#include "platform/rtl/stringlist.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

// A dataset with no session: readers never open it.
struct TFreshQuery {
  TVeskODACQuery Query{nullptr};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TBytesStream bytes(std::vector<uint8_t>(data, data + size));
  TStringList lines;
  lines.LoadFromStream(&bytes);
  const String text = lines.Text();

  TFreshQuery fromDoc, docAgain;
  SetVeskQueryText(&fromDoc.Query, u"Q", text);
  const String doc = GetVeskQueryText(&fromDoc.Query, u"Q");
  SetVeskQueryText(&docAgain.Query, u"Q", doc);
  Check(GetVeskQueryText(&docAgain.Query, u"Q") == doc);

  TFreshQuery fromList, listAgain;
  SetPropText(&fromList.Query, text);
  const String list = GetPropText(&fromList.Query);
  SetPropText(&listAgain.Query, list);
  Check(GetPropText(&listAgain.Query) == list);
  return 0;
}
