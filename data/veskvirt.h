// TVeskVirt: an in-memory table with the family's editing guard, searches,
// defaults, client filters and summaries, for data with no server behind
// it. It is the body over TVirtualTable with the Locate and Lookup events
// and nothing that speaks SQL: no composition, no session group and no
// filter list, so the find/filter dialogue never opens on it, and
// FilterCmd..., VeskFilter and the other SQL and session properties do not
// exist on it; a write to them by name vanishes.
//
// What differs from a query member:
// - setFilter takes the client route only (the search-field list for text,
//   the Filter text for other data fields, VeskExtFilter for calculated
//   fields, the lookup-filter list for lookups);
// - freeFilters gives the dataset its own Filter back and recomposes
//   nothing;
// - Locate is false on an empty table; OnVESKLocateEvent and
//   OnVESKLookupEvent decide when assigned, else the table searches itself;
// - VeskSort (filter/vesksort.h) empties it with Clear and writes the rows
//   back with VeskMode off.
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
