// The dataset family: the one body of data/veskbody.h over each platform
// base class, with the groups each member has.
//
//   member                base class        groups beyond the guard, lists,
//                                           summaries and commands
//   TVeskODACQuery        TOraQuery         all (data/veskodacquerylib.h)
//   TVeskODACTableQuery   TOraTable         all
//   TVeskODACNNTab        TOraNestedTable   none
//   TVeskODACProc         TOraStoredProc    none
//   TVeskQuery1           TQuery            SQL composition
//   TVeskTable1           TTable            sgCFunc, runLookUpSQL, setTDitto
//                                           (data/vesktable1.h)
//   TVeskVirt             TVirtualTable     Locate and Lookup events
//                                           (data/veskvirt.h)
//
// What a member lacks is not published, so a write to it by name does
// nothing. Also here: ManageNavigator, which binds the application's
// navigator to the data source in use.
#pragma once

#include "data/veskodacquerylib.h"
#include "data/vesktable1.h"
#include "data/veskvirt.h"

class TDataSource;

// ---- Members with no additions of their own ------------------------------------------

// An Oracle table: reads its TableName, writes without statements of its
// own, and composes like the query when given VeskTableLive instead.
using TVeskODACTableQueryTraits = TVeskODACQueryTraits;
using TVeskODACTableQueryBody = TVeskBody<TOraTable, TVeskODACTableQueryTraits>;
extern template class TVeskBody<TOraTable, TVeskODACTableQueryTraits>;

class TVeskODACTableQuery : public TVeskODACTableQueryBody {
  KELMAR_CLASS(TVeskODACTableQuery, TVeskODACTableQueryBody)
 public:
  explicit TVeskODACTableQuery(TComponent* AOwner) : TVeskODACTableQueryBody(AOwner) {}
};

// A nested table of a record: the guard, the lists and the commands.
using TVeskODACNNTabBody = TVeskBody<TOraNestedTable, TVeskNoGroups>;
extern template class TVeskBody<TOraNestedTable, TVeskNoGroups>;

class TVeskODACNNTab : public TVeskODACNNTabBody {
  KELMAR_CLASS(TVeskODACNNTab, TVeskODACNNTabBody)
 public:
  explicit TVeskODACNNTab(TComponent* AOwner) : TVeskODACNNTabBody(AOwner) {}
};

// A stored procedure's result: the guard, the lists and the commands.
using TVeskODACProcBody = TVeskBody<TOraStoredProc, TVeskNoGroups>;
extern template class TVeskBody<TOraStoredProc, TVeskNoGroups>;

class TVeskODACProc : public TVeskODACProcBody {
  KELMAR_CLASS(TVeskODACProc, TVeskODACProcBody)
 public:
  explicit TVeskODACProc(TComponent* AOwner) : TVeskODACProcBody(AOwner) {}
};

// A local-database query that composes its SQL; it has no session group.
struct TVeskQuery1Traits : TVeskNoGroups {
  static constexpr bool SqlComposition = true;
};
using TVeskQuery1Body = TVeskBody<TQuery, TVeskQuery1Traits>;
extern template class TVeskBody<TQuery, TVeskQuery1Traits>;

class TVeskQuery1 : public TVeskQuery1Body {
  KELMAR_CLASS(TVeskQuery1, TVeskQuery1Body)
 public:
  explicit TVeskQuery1(TComponent* AOwner) : TVeskQuery1Body(AOwner) {}
};

// ---- The family as a whole -------------------------------------------------------------

// Makes every member known by class name to readers of design streams.
// Runs when this unit is linked in; calling it again is harmless.
void RegisterVeskFamily();

// Binds navigators to the data source that comes into use (Active) or
// goes out of it. With an active TGridPropCmp that has an OraNavigator:
// Active gives it Source and remembers Owner; otherwise it lets go of
// Source only when it holds Source for the same Owner. Then the dataset's
// own VeskNav, read by name, gets Source when it is another navigator.
// Nothing for a null source or one without a dataset.
void ManageNavigator(TDataSource* Source, TComponent* Owner, bool Active);
inline void ManageNavigator(TDataSource* Source, bool Active) { ManageNavigator(Source, nullptr, Active); }
