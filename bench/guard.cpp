// guard_append_post: the cost of the family's guard. 100,000 rows are
// appended and posted through __APPEND/__POST on a TVeskODACQuery with the
// guard on and a handler that allows, against the same rows through a plain
// TOraQuery with the same statements, in the same run.
#include <algorithm>
#include <cstdio>
#include <functional>

#include "bench/benchutil.h"
#include "data/veskodacquerylib.h"
#include "data/veskutil.h"
#include "drivers/sqlite/sqlitedriver.h"
#include "grid/gridpropcmp.h"

namespace {

using namespace bench;

constexpr int kRows = 100000;
constexpr int kRuns = 3;

void Prepare(TOraDataSet& q, TOraSession& session) {
  q.SetSession(&session);
  q.SQL()->SetText(u"SELECT ID, NAME, AMOUNT FROM ROWS_OUT WHERE 1 = 0");
  q.SQLInsert()->SetText(u"INSERT INTO ROWS_OUT (ID, NAME, AMOUNT) VALUES (:ID, :NAME, :AMOUNT)");
  q.SQLUpdate()->SetText(u"UPDATE ROWS_OUT SET NAME = :NAME, AMOUNT = :AMOUNT WHERE ID = :OLD_ID");
  q.SQLDelete()->SetText(u"DELETE FROM ROWS_OUT WHERE ID = :OLD_ID");
}

void Fill(TDataSet& q, int i) {
  q.Fields()->Fields(0)->SetAsInteger(i);
  q.Fields()->Fields(1)->SetAsString(u"row");
  q.Fields()->Fields(2)->SetAsFloat(i * 0.5);
}

// One timed run: the table is emptied first, the rows go in one transaction.
double Run(TOraSession& session, const std::function<void(int)>& appendPost, TDataSet& q) {
  session.ExecSQL(u"DELETE FROM ROWS_OUT");
  q.Open();
  double t = Seconds([&] {
    session.StartTransaction();
    for (int i = 1; i <= kRows; ++i) appendPost(i);
    session.Commit();
  });
  q.Close();
  return t;
}

}  // namespace

int main() {
  RegisterSQLiteDriver();
  TOraSession session(nullptr);
  session.SetServer(u":memory:");
  session.Connect();
  session.ExecSQL(u"CREATE TABLE ROWS_OUT (ID INTEGER, NAME VARCHAR2(20), AMOUNT NUMBER)");

  TGridPropCmp store(nullptr);
  store.SetStartUpInit(true);
  store.OnStateChangeImplicit = [](TDataSet*, TVeskState, TVeskState, TDataSetState) { return true; };

  TOraQuery plain(nullptr);
  Prepare(plain, session);
  TVeskODACQuery guarded(nullptr);
  Prepare(guarded, session);
  guarded.SetVeskMode(true);

  double plainBest = 1e9, guardedBest = 1e9;
  for (int run = 0; run < kRuns; ++run) {
    plainBest = std::min(plainBest, Run(session, [&](int i) {
      plain.Append();
      Fill(plain, i);
      plain.Post();
    }, plain));
    guardedBest = std::min(guardedBest, Run(session, [&](int i) {
      __APPEND(&guarded);
      Fill(guarded, i);
      __POST(&guarded);
    }, guarded));
  }
  // The guarded run must have written every row, or it measured nothing.
  TOraQuery count(nullptr);
  count.SetSession(&session);
  count.SQL()->SetText(u"SELECT COUNT(*) FROM ROWS_OUT");
  count.Open();
  if (count.Fields()->Fields(0)->AsInteger() != kRows) {
    std::fprintf(stderr, "guard_append_post: %d rows written, %d expected\n", count.Fields()->Fields(0)->AsInteger(),
                 kRows);
    return 1;
  }
  Report("guard_append_post", guardedBest / plainBest, "<=", 1.3);
  return 0;
}
