#include "platform/db/memdataset.h"

KELMAR_PUBLISH(TMemDataSet) {}

TMemDataSet::TMemDataSet(TComponent* AOwner) : TDataSet(AOwner) {}

TMemDataSet::~TMemDataSet() {
  try {
    Close();
  } catch (...) {
    // A handler failing while the table goes away changes nothing.
  }
}

void TMemDataSet::InternalOpen(bool) {
  // Persistent fields alone describe the table.
  if (FieldDefs()->Count() == 0)
    for (TField* f : *Fields())
      if (f->FieldKind() == fkData) FieldDefs()->Add(f->FieldName(), f->DataType(), f->Size(), f->Required());
  if (FieldDefs()->Count() == 0) DatabaseError(u"Cannot open a table with no field definitions", this);
}

void TMemDataSet::Clear() {
  if (Active()) CheckBrowseMode();
  ClearRecords();
  if (Active()) Resync(TResyncMode());
}

int TMemDataSet::LoadFromDataSet(TDataSet* Source) {
  if (!Source) DatabaseError(u"No source dataset", this);
  bool wasActive = Source->Active();
  if (!wasActive) Source->Open();
  if (FieldDefs()->Count() == 0 && Fields()->Count() == 0) {
    CheckInactive();
    for (TField* f : *Source->Fields())
      if (f->FieldKind() == fkData) FieldDefs()->Add(f->FieldName(), f->DataType(), f->Size(), f->Required());
  }
  if (!Active()) Open();
  std::vector<std::pair<TField*, TField*>> pairs;
  for (TField* f : *Fields())
    if (f->FieldKind() == fkData)
      if (TField* s = Source->FindField(f->FieldName())) pairs.emplace_back(s, f);
  TBookmark mark = Source->GetBookmark();
  Source->DisableControls();
  DisableControls();
  int count = 0;
  try {
    for (Source->First(); !Source->Eof(); Source->Next()) {
      Append();
      for (auto& [from, to] : pairs) to->SetValue(from->Value());
      Post();
      ++count;
    }
  } catch (...) {
    if (State() == dsInsert) Cancel();
    EnableControls();
    Source->EnableControls();
    throw;
  }
  if (mark && Source->BookmarkValid(mark)) Source->GotoBookmark(mark);
  EnableControls();
  Source->EnableControls();
  if (!wasActive) Source->Close();
  First();
  return count;
}

KELMAR_PUBLISH(TVirtualTable) {}

TVirtualTable::TVirtualTable(TComponent* AOwner) : TMemDataSet(AOwner) {}

void TVirtualTable::AddField(const String& Name, TFieldType FieldType, int Size, bool Required) {
  CheckInactive();
  FieldDefs()->Add(Name, FieldType, Size, Required);
}

void TVirtualTable::DeleteFields() {
  CheckInactive();
  ClearRecords();
  Store().Reset({});
  FieldDefs()->Clear();
  DestroyDefaultFields();
}
