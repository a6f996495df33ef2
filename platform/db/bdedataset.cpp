#include "platform/db/bdedataset.h"

KELMAR_PUBLISH(TQuery) { r.Prop(u"DatabaseName", &TQuery::DatabaseName, &TQuery::SetDatabaseName); }

KELMAR_PUBLISH(TTable) {
  r.Prop(u"TableName", &TTable::TableName, &TTable::SetTableName);
  r.Prop(u"Exclusive", &TTable::Exclusive, &TTable::SetExclusive).Default = 0;
  r.Prop(u"IndexFieldNames", &TTable::IndexFieldNames, &TTable::SetIndexFieldNames);
  r.Prop(u"DatabaseName", &TTable::DatabaseName, &TTable::SetDatabaseName);
}

void TTable::SetTableName(const String& value) {
  if (value == tableName_) return;
  if (Active()) Close();
  tableName_ = value;
  FieldDefs()->Clear();
}

void TTable::SetIndexFieldNames(const String& value) {
  if (value == indexFieldNames_) return;
  if (Active()) Close();
  indexFieldNames_ = value;
}

String TTable::BaseSQL() const {
  if (Trim(tableName_).IsEmpty()) return TCustomDADataSet::BaseSQL();
  String sql = u"SELECT * FROM " + tableName_;
  if (!Trim(indexFieldNames_).IsEmpty())
    sql += u" ORDER BY " + StringReplace(indexFieldNames_, u";", u", ", TReplaceFlags() << rfReplaceAll);
  return sql;
}

String TTable::DefaultUpdateStatement(TStatementType StatementType) const {
  if (Trim(tableName_).IsEmpty()) return String();
  String keys = KeyFields().IsEmpty() ? indexFieldNames_ : KeyFields();
  return MakeTableStatement(this, tableName_, keys, StatementType);
}
