// TVeskTable1: the family's member over the local-database TTable. It has
// the guard, the lists, the commands and the server aggregate sgCFunc, but
// no SQL composition and no session group; in addition it searches a
// lookup field's table by text (runLookUpSQL) and copies the previous
// record's value into a field (setTDitto).
#pragma once

#include "data/veskbody.h"

struct TVeskTable1Traits : TVeskNoGroups {
  static constexpr bool CFunc = true;
};
using TVeskTable1Body = TVeskBody<TTable, TVeskTable1Traits>;
extern template class TVeskBody<TTable, TVeskTable1Traits>;

class TVeskTable1 : public TVeskTable1Body {
  KELMAR_CLASS(TVeskTable1, TVeskTable1Body)
 public:
  explicit TVeskTable1(TComponent* AOwner) : TVeskTable1Body(AOwner) {}

  // The statement that finds the rows of a lookup field's table whose
  // result or key column begins with Text:
  //   SELECT * FROM <table>
  //   WHERE (UPPER(<result>) LIKE 'TEXT%'OR UPPER(<key>) LIKE 'TEXT%')
  //   ORDER BY <LookupKeyFields>
  // With CaseSens the columns and the text stand as they are. Quotes in
  // the text are doubled. Empty for a field that is not a lookup or whose
  // lookup dataset has no table.
  static String LookUpSQL(TField* Field, const String& Text, bool CaseSens);
  // Runs LookUpSQL on a temporary query and puts the lookup dataset on the
  // first row found, so that the user can pick it; Key gets that row's key
  // value. False, with Key null, when nothing begins with the text.
  bool runLookUpSQL(TField* Field, const String& Text, bool CaseSens, Variant& Key);

  // In edit or insert: the field (and its companion) takes the value of
  // the record before, through Source or else the table's own data source.
  void setTDitto(TField* Field, TDataSource* Source = nullptr) { getDitto(Field, Source); }
};
