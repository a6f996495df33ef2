#include "data/vesktable1.h"

#include "data/veskbodyimpl.h"

template class TVeskBody<TTable, TVeskTable1Traits>;

KELMAR_PUBLISH(TVeskTable1) { PublishVeskBody(r); }

String TVeskTable1::LookUpSQL(TField* Field, const String& Text, bool CaseSens) {
  if (!Field || !Field->LookupDataSet()) return String();
  const String table = VeskLookupTableName(Field->LookupDataSet());
  if (table.IsEmpty()) return String();
  auto column = [CaseSens](const String& name) { return CaseSens ? name : u"UPPER(" + name + u")"; };
  // The text goes into a literal: its quotes are doubled so that it stays one.
  const String value = StringReplace(CaseSens ? Text : AnsiUpperCase(Text), u"'", u"''", TReplaceFlags{rfReplaceAll});
  return u"SELECT * FROM " + table + u"\n" + u"WHERE (" + column(Field->LookupResultField()) + u" LIKE '" + value +
         u"%'OR " + column(Field->LookupKeyFields()) + u" LIKE '" + value + u"%')\nORDER BY " +
         Field->LookupKeyFields();
}

bool TVeskTable1::runLookUpSQL(TField* Field, const String& Text, bool CaseSens, Variant& Key) {
  Key = Null();
  const String sql = LookUpSQL(Field, Text, CaseSens);
  if (sql.IsEmpty()) return false;
  TDataSet* lookup = Field->LookupDataSet();
  auto* server = dynamic_cast<TCustomDADataSet*>(lookup);
  TQuery query(nullptr);
  query.SetSession(server ? server->UsedSession() : UsedSession());
  query.SQL()->SetText(sql);
  query.Open();
  if (query.IsEmpty()) return false;
  Key = query.FieldValues(Field->LookupKeyFields());
  if (lookup->Active()) lookup->Locate(Field->LookupKeyFields(), Key, TLocateOptions());
  return true;
}
