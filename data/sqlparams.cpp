#include "data/sqlparams.h"

#include <memory>

#include "platform/db/dadataset.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"

namespace {

// The query as an Oracle dataset, or the caller's message.
TOraDataSet* CheckQuery(const char16_t* function, TDataSet* query, TStrings* params) {
  const String prefix = String(function) + u": ";
  if (!query) throw Exception(prefix + u"Parameter AQuery is not specified");
  auto* ora = dynamic_cast<TOraDataSet*>(query);
  if (!ora) throw Exception(prefix + query->Name() + u" is not TOraDataSet");
  if (!params) throw Exception(prefix + u"Parameter AParams is not specified");
  return ora;
}

// The list's value of an input, or false after adding "NAME=" for a name
// the list lacks.
bool InputValue(TStrings* params, const String& name, String& value) {
  if (params->IndexOfName(name) < 0) {
    params->Add(name + u"=");
    return false;
  }
  value = params->Values(name);
  return true;
}

}  // namespace

void SetupParams(TDataSet* AQuery, TStrings* AParams) {
  TOraDataSet* query = CheckQuery(u"SetupParams", AQuery, AParams);
  for (int i = 0; i < query->ParamCount(); ++i) {
    TOraParam* param = query->Params()->Items(i);
    String value;
    if (param->ParamType() != ptInput) AParams->SetValues(param->Name(), param->AsString());
    else if (InputValue(AParams, param->Name(), value)) param->SetAsString(value);
  }
}

void SetupMacros(TDataSet* AQuery, TStrings* AParams) {
  TOraDataSet* query = CheckQuery(u"SetupMacros", AQuery, AParams);
  for (int i = 0; i < query->MacroCount(); ++i) {
    TMacro* macro = query->Macros()->Items(i);
    String value;
    if (InputValue(AParams, macro->Name(), value)) macro->SetAsString(value);
  }
}

void ReplaceMacros(TDataSet* AQuery, TStrings* AParams) {
  TOraDataSet* query = CheckQuery(u"ReplaceMacros", AQuery, AParams);
  String text = query->SQL()->Text();
  TStringList names;
  names.SetSorted(true);
  for (int i = 0; i < query->MacroCount(); ++i) names.Add(query->Macros()->Items(i)->Name());
  // Last first: of "A" and "AB" the longer must be replaced before the
  // shorter eats its prefix.
  for (int i = names.Count() - 1; i >= 0; --i) {
    const String name = names[i];
    String value;
    InputValue(AParams, name, value);
    text = StringReplace(text, u"&" + name, value, TReplaceFlags() << rfReplaceAll << rfIgnoreCase);
  }
  query->SQL()->SetText(text);
}
