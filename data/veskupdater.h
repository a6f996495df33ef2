// The updater that the ODAC members of the dataset family install in place
// of their base's: write statements become autonomous transactions under
// TrnsVeskAutonomous, and record refreshes honour SkipRefreshRecord and
// take the record out of the summaries and back in.
//
// One class per member: TVeskODACQueryUpdater, TVeskODACSmartQueryUpdater,
// TVeskODACTableQueryUpdater, each TVeskUpdater over its member's body.
// The body makes its own in its constructor.
#pragma once

#include "data/veskbody.h"
#include "platform/rtl/sysutils.h"

// "declare PRAGMA AUTONOMOUS_TRANSACTION;begin " + Sql + "commit;end;", with
// a ";" put behind Sql when it has none; a blank Sql comes back as it is.
// Such a statement commits by itself, whatever the session's transaction
// does afterwards.
String MakeAutonomous(const String& Sql);

template <class Body>
class TVeskUpdater : public TOraDataSetUpdater {
  static_assert(Body::TTraits::SessionGroup, "the updater reads the session group's switches");

 public:
  explicit TVeskUpdater(Body* DataSet) : TOraDataSetUpdater(DataSet), owner_(DataSet) {}

  // The dataset that owns this updater.
  Body* Owner() const { return owner_; }

  // Insert and delete pass through HandStatement; an update that is not
  // blank is made autonomous under the switch; refresh and the other kinds
  // stand as the base gives them.
  String GetUpdateStatement(TStatementType StatementType) override {
    String sql = TOraDataSetUpdater::GetUpdateStatement(StatementType);
    switch (StatementType) {
      case stUpdate:
        if (Trim(sql).IsEmpty() || !owner_->TrnsVeskAutonomous()) return sql;
        return MakeAutonomous(TOraDataSetUpdater::GetUpdateStatement(StatementType));
      case stInsert:
      case stDelete:
        return HandStatement(sql);
      default:
        return sql;
    }
  }

  // With SkipRefreshRecord: false, and nothing read. Otherwise the record
  // leaves the summaries, is read again, and comes back into them.
  bool PerformRefreshRecord() override {
    if (owner_->SkipRefreshRecord()) return false;
    owner_->DoBeforeRefreshRecord();
    bool done = TOraDataSetUpdater::PerformRefreshRecord();
    owner_->DoAfterRefreshRecord();
    return done;
  }

  // The statement as it goes to the server: autonomous under
  // TrnsVeskAutonomous, otherwise unchanged.
  virtual String HandStatement(const String& Sql) const {
    return owner_->TrnsVeskAutonomous() ? MakeAutonomous(Sql) : Sql;
  }

 private:
  Body* owner_;
};

// The members' updaters. The table member shares the query's groups.
struct TVeskODACQueryTraits;
struct TVeskODACSmartQueryTraits;
using TVeskODACQueryUpdater = TVeskUpdater<TVeskBody<TOraQuery, TVeskODACQueryTraits>>;
using TVeskODACSmartQueryUpdater = TVeskUpdater<TVeskBody<TSmartQuery, TVeskODACSmartQueryTraits>>;
using TVeskODACTableQueryUpdater = TVeskUpdater<TVeskBody<TOraTable, TVeskODACQueryTraits>>;
