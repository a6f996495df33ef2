// Fuzz target of TMemIniFile: any bytes, read as text, make an INI that
// answers every question about what it holds, and that comes back the same
// through its own lines.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "platform/rtl/inifiles.h"
#include "platform/rtl/stringlist.h"

namespace {

// No stored value can hold a line break.
const String kAbsent = u"\r";

void Check(bool condition) {
  if (!condition) std::abort();
}

void Lines(const TMemIniFile& ini, TStringList& out) {
  out.Clear();
  ini.GetStrings(&out);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TBytesStream bytes(std::vector<uint8_t>(data, data + size));
  TStringList text;
  text.LoadFromStream(&bytes);
  TMemIniFile ini;
  ini.SetStrings(&text);

  TStringList sections, keys, values;
  ini.ReadSections(&sections);
  for (int i = 0; i < sections.Count(); ++i) {
    const String section = sections.Strings(i);
    ini.ReadSection(section, &keys);
    ini.ReadSectionValues(section, &values);
    Check(keys.Count() == values.Count());
    for (int k = 0; k < keys.Count(); ++k) {
      Check(ini.ValueExists(section, keys.Strings(k)));
      Check(ini.ReadString(section, keys.Strings(k), kAbsent) != kAbsent);
    }
    ini.ReadString(section, String(), kAbsent);
  }

  // The lines it gives read back as the same INI.
  TStringList first, second;
  Lines(ini, first);
  TMemIniFile again;
  again.SetStrings(&first);
  Lines(again, second);
  Check(first.Equals(&second));
  return 0;
}
