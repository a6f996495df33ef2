// TQuery and TTable: the local-database datasets of the older design
// store, over the same engine and sessions as the Oracle family.
#pragma once

#include "platform/db/dadataset.h"

class TQuery : public TCustomDADataSet {
  KELMAR_CLASS(TQuery, TCustomDADataSet)
 public:
  explicit TQuery(TComponent* AOwner) : TCustomDADataSet(AOwner) {}
  // The alias of the database; kept for the designs that store it.
  const String& DatabaseName() const { return databaseName_; }
  void SetDatabaseName(const String& value) { databaseName_ = value; }

 private:
  String databaseName_;
};

// Reads a whole table and writes to it with statements of its own.
class TTable : public TCustomDADataSet {
  KELMAR_CLASS(TTable, TCustomDADataSet)
 public:
  explicit TTable(TComponent* AOwner) : TCustomDADataSet(AOwner) {}
  const String& TableName() const { return tableName_; }
  void SetTableName(const String& value);
  // Opening for this process alone: the embedded engine has nothing to
  // share, so the flag is kept and has no effect.
  bool Exclusive() const { return exclusive_; }
  void SetExclusive(bool value) { exclusive_ = value; }
  const String& IndexFieldNames() const { return indexFieldNames_; }
  void SetIndexFieldNames(const String& value);
  const String& DatabaseName() const { return databaseName_; }
  void SetDatabaseName(const String& value) { databaseName_ = value; }
  String DefaultUpdateStatement(TStatementType StatementType) const override;

 protected:
  String BaseSQL() const override;

 private:
  String tableName_;
  String indexFieldNames_;
  String databaseName_;
  bool exclusive_ = false;
};
