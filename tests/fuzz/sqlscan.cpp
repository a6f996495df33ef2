// Fuzz target of the SQL parameter and macro scanner and of the parameter
// and macro lists it feeds: every place found lies inside the text and
// starts with its marker, macro expansion keeps everything else, and the
// lists rebuilt from the names keep the values of names that stay.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/db/params.h"
#include "platform/db/sqlscan.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const String sql = String::FromUtf8(std::string(reinterpret_cast<const char*>(data), size));
  const std::vector<TSqlPlace> places = ScanSqlPlaces(sql);
  int end = 0;
  int macroLength = 0, macroCount = 0;
  for (const TSqlPlace& p : places) {
    if (p.Start <= end || p.Length < 2 || p.Start + p.Length - 1 > sql.Length()) std::abort();
    if (p.Name.IsEmpty() || sql[p.Start] != (p.Kind == TSqlPlace::Param ? u':' : u'&')) std::abort();
    end = p.Start + p.Length - 1;
    if (p.Kind == TSqlPlace::Macro) {
      macroLength += p.Length;
      ++macroCount;
    }
  }
  // Expanding every macro to one character shortens the text by exactly
  // the macro places; with nothing to expand the text stays as it is.
  const String expanded = ExpandSqlMacros(sql, [](const String&) { return String(u"X"); });
  if (expanded.Length() != sql.Length() - macroLength + macroCount) std::abort();
  if (macroCount == 0 && expanded != sql) std::abort();

  const std::vector<String> names = SqlPlaceNames(places, TSqlPlace::Param);
  TOraParams params;
  params.Update(names);
  if (params.Count() != static_cast<int>(names.size())) std::abort();
  for (int i = 0; i < params.Count(); ++i) params[i]->SetAsInteger(i);
  // The text again, with its first parameter gone: the others keep values.
  params.Update(std::vector<String>(names.empty() ? names.begin() : names.begin() + 1, names.end()));
  for (int i = 0; i < params.Count(); ++i)
    if (params.ParamByName(params[i]->Name())->AsInteger() != i + 1) std::abort();
  try {
    params.ParamByName(u"no such parameter name");
    std::abort();
  } catch (const EDatabaseError&) {
  }

  TMacros macros;
  const std::vector<String> macroNames = SqlPlaceNames(places, TSqlPlace::Macro);
  macros.Update(macroNames);
  for (const String& name : macroNames)
    if (!macros.FindMacro(name) || macros.MacroByName(name) != macros.FindMacro(name)) std::abort();
  return 0;
}
