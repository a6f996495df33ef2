// TVeskVirt: an in-memory table with the family's editing guard, searches,
// defaults and summaries, for data with no server behind it. It is the
// body over TVirtualTable with the Locate and Lookup events and nothing
// that speaks SQL: no composition, no session group, no filter list, so
// FilterCmd... and the other SQL properties do not exist on it.
#pragma once

#include "data/veskbody.h"

struct TVeskVirtTraits : TVeskNoGroups {
  static constexpr bool LocateLookup = true;
};
using TVeskVirtBody = TVeskBody<TVirtualTable, TVeskVirtTraits>;
extern template class TVeskBody<TVirtualTable, TVeskVirtTraits>;

class TVeskVirt : public TVeskVirtBody {
  KELMAR_CLASS(TVeskVirt, TVeskVirtBody)
 public:
  explicit TVeskVirt(TComponent* AOwner) : TVeskVirtBody(AOwner) {}
};
