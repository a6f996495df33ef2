#include "data/veskodacquerylib.h"

#include "data/veskbodyimpl.h"

template class TVeskBody<TOraQuery, TVeskODACQueryTraits>;

KELMAR_PUBLISH(TVeskODACQuery) { PublishVeskBody(r); }

String VeskLookupTableName(TDataSet* LookupDataSet) {
  if (auto* query = dynamic_cast<TVeskODACQuery*>(LookupDataSet)) return query->VeskTableLive();
  if (auto* table = dynamic_cast<TOraTable*>(LookupDataSet)) return table->TableName();
  if (auto* table = dynamic_cast<TTable*>(LookupDataSet)) return table->TableName();
  return String();
}
