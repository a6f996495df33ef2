// TVeskODACQuery: the reference member of the dataset family, a TOraQuery
// that composes its SQL from a table, conditions and a sort, guards every
// implicit change of record state, keeps the transaction in step with the
// record, and takes commands by property writes. Everything it does is the
// shared body of data/veskbody.h; it has every group.
#pragma once

#include "data/veskbody.h"

struct TVeskODACQueryTraits : TVeskNoGroups {
  static constexpr bool SqlComposition = true;
  static constexpr bool SessionGroup = true;
  static constexpr bool LocateLookup = true;
  static constexpr bool CFunc = true;
  static constexpr bool Updater = true;
};

using TVeskODACQueryBody = TVeskBody<TOraQuery, TVeskODACQueryTraits>;
extern template class TVeskBody<TOraQuery, TVeskODACQueryTraits>;

class TVeskODACQuery : public TVeskODACQueryBody {
  KELMAR_CLASS(TVeskODACQuery, TVeskODACQueryBody)
 public:
  explicit TVeskODACQuery(TComponent* AOwner) : TVeskODACQueryBody(AOwner) {}
};
