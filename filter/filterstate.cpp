#include "filter/filterstate.h"

#include "data/lookupfilters.h"
#include "filter/listfilts.h"
#include "platform/rtl/typinfo.h"

namespace {

const TVeskStateHost* StateHost(const TDataSet* DataSet) { return dynamic_cast<const TVeskStateHost*>(DataSet); }

TVeskFilterLists* ListsOf(TDataSet* DataSet) {
  auto* host = dynamic_cast<TVeskFilterHost*>(DataSet);
  return host ? &host->FilterLists() : nullptr;
}

}  // namespace

bool GetFiltered(TDataSet* DataSet) {
  if (!DataSet) return false;
  if (!DataSet->Filter().IsEmpty()) return true;
  if (TVeskFilterLists* lists = ListsOf(DataSet); lists && (lists->CountLF() > 0 || lists->CountSF() > 0))
    return true;
  // Members without SQL composition publish no VeskFilter and read empty.
  if (!GetPropString(DataSet, u"VeskFilter").IsEmpty()) return true;
  const TVeskStateHost* host = StateHost(DataSet);
  const TListFilts* list = host ? host->FindFilterList() : nullptr;
  return list && !list->FilterText().IsEmpty();
}

bool GetFiltered(TField* Field) {
  if (!Field || !Field->DataSet() || !Field->DataSet()->Active()) return false;
  TDataSet* dataSet = Field->DataSet();
  const String name = Field->FieldName();
  if (TVeskFilterLists* lists = ListsOf(dataSet)) {
    if (lists->GetIndexSF(name) >= 0 || lists->GetIndexLF(name) >= 0) return true;
    if (Field->FieldKind() == fkLookup && lists->GetIndexLF(Field->KeyFields()) >= 0) return true;
  }
  const TVeskStateHost* host = StateHost(dataSet);
  const TListFilts* list = host ? host->FindFilterList() : nullptr;
  return list && list->GetIsFiltered(name);
}

bool GetSearched(TDataSet* DataSet) {
  const TVeskStateHost* host = StateHost(DataSet);
  return host && !host->SearchState().LastField.IsEmpty();
}

String GetDefValue(TDataSet* DataSet) {
  const TVeskStateHost* host = StateHost(DataSet);
  return host ? host->DefaultValuesText() : String();
}

void SetVeskFilter(TDataSet* DataSet, const String& Text) {
  if (!DataSet) return;
  DataSet->SetFilter(Text);
  if (auto* host = dynamic_cast<TVeskStateHost*>(DataSet)) host->RememberFilter(Text);
}
