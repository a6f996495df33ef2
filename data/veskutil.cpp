#include "data/veskutil.h"

#include <vector>

#include "platform/db/dadataset.h"
#include "platform/db/datasource.h"

void SetVeskCom(TDataSet* DataSet, TVeskState Value) { SetPropEnum(DataSet, u"VeskCom", Value); }

namespace {

bool Editing(const TDataSet* DataSet) { return DataSet->State() == dsEdit || DataSet->State() == dsInsert; }

}  // namespace

void __EDIT(TDataSet* DataSet) {
  if (Editing(DataSet)) return;
  if (DataSet->RecordCount() != 0) {
    SetVeskCom(DataSet, dsgEdit);
    DataSet->Edit();
  } else {
    SetVeskCom(DataSet, dsgInsert);
    DataSet->Insert();
  }
}

void __POST(TDataSet* DataSet) {
  if (!Editing(DataSet)) return;
  SetVeskCom(DataSet, dsgPost);
  DataSet->Post();
}

void __CANCEL(TDataSet* DataSet) {
  if (!Editing(DataSet)) return;
  SetVeskCom(DataSet, dsgCancel);
  DataSet->Cancel();
}

void __DELETE(TDataSet* DataSet) {
  SetVeskCom(DataSet, dsgDelete);
  DataSet->Delete();
}

void __INSERT(TDataSet* DataSet) {
  SetVeskCom(DataSet, dsgInsert);
  DataSet->Insert();
}

void __APPEND(TDataSet* DataSet) {
  SetVeskCom(DataSet, dsgInsert);
  DataSet->Append();
}

void MasterRefresh(TDataSet* DataSet) {
  // Walks upward instead of recursing: a chain of masters can be long.
  while (DataSet && DataSet->DataSource()) {
    auto* master = dynamic_cast<TOraDataSet*>(DataSet->DataSource()->DataSet());
    if (!master || master->State() != dsBrowse) return;
    master->RefreshRecord();
    if (!GetPropBool(master, u"VeskMasterRefresh")) return;
    DataSet = master;
  }
}

String GetDataSetName(const TComponent* DataSet) {
  String name = DataSet->Name().IsEmpty() ? String(u"<no name>") : DataSet->Name();
  const TComponent* owner = DataSet->Owner();
  if (owner && !owner->Name().IsEmpty()) name = owner->Name() + u"." + name;
  return name;
}

TField* FindFieldIgnoreAlias(TDataSet* DataSet, const String& Name) {
  if (!DataSet || Name.IsEmpty()) return nullptr;
  if (TField* field = DataSet->FindField(Name)) return field;
  int dot = Name.Pos(u".");
  if (dot <= 1) return nullptr;
  String alias = GetPropString(DataSet, u"VeskAlias");
  if (alias.IsEmpty() || !SameText(alias, Name.SubString(1, dot - 1))) return nullptr;
  return DataSet->FindField(Name.SubString(dot + 1, 30));
}

void DataSourceOpen(TDataSource* Source) {
  if (!Source) return;
  // A link may detach itself while it loads: walk a copy.
  std::vector<TDataLink*> links = Source->DataLinks();
  for (TDataLink* link : links)
    if (auto* aware = dynamic_cast<TVeskOpenAware*>(link)) aware->DataSourceOpened();
}
