// TMemDataSet and TVirtualTable: datasets whose records live in memory.
//
// Field definitions and records both survive Close: reopening shows the
// same table. Clear drops the records and keeps the definitions.
#pragma once

#include "platform/db/dataset.h"

class TMemDataSet : public TDataSet {
  KELMAR_CLASS(TMemDataSet, TDataSet)
 public:
  explicit TMemDataSet(TComponent* AOwner);
  ~TMemDataSet() override;

  // Drops every record; an open dataset stays open and empty.
  void Clear();
  // Copies the records of Source (fields matched by name). With no field
  // definitions yet they are taken from Source first. Source keeps its
  // position. Returns the number of records copied.
  int LoadFromDataSet(TDataSet* Source);

 protected:
  void InternalOpen(bool InfoQuery) override;
  bool RetainsRecords() const override { return true; }
};

class TVirtualTable : public TMemDataSet {
  KELMAR_CLASS(TVirtualTable, TMemDataSet)
 public:
  explicit TVirtualTable(TComponent* AOwner);

  // Adds a field definition; the table must be closed.
  void AddField(const String& Name, TFieldType FieldType, int Size = 0, bool Required = false);
  // Drops the definitions, the fields made from them, and the records.
  void DeleteFields();
};
