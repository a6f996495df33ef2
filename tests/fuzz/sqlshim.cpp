// Fuzz target of the SQL dialect shim: any bytes as SQL text must translate
// or fail with an ORA- status, never crash, hang or read out of bounds, and
// what it hands on must be consistent.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "drivers/sqlite/sqlshim.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TShimProgram program;
  const TDbStatus status = TranslateSql(std::string_view(reinterpret_cast<const char*>(data), size), program);
  if (!status) {
    if (status.OraCode <= 0) std::abort();
    return 0;
  }
  for (const TShimStep& step : program.Steps) {
    for (int index : step.Params)
      if (index < 0 || static_cast<size_t>(index) >= program.Params.size()) std::abort();
    for (int index : step.Into)
      if (index < 0 || static_cast<size_t>(index) >= program.Params.size()) std::abort();
    if (step.Sql.empty()) std::abort();
  }
  return 0;
}
