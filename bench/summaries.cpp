// summaries_scan: RealCalcSummaries with five items over fetched rows,
// against a plain loop that reads the same five fields and folds them the
// same way, on the same open dataset in the same run.
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/benchutil.h"
#include "drivers/sqlite/sqlitedriver.h"
#include "filter/xttsum.h"
#include "platform/db/dadataset.h"

namespace {

using namespace bench;

int kRows = 1000000;

// Five numeric columns, every seventh D null; written once, reused after.
void MakeTable(const std::string& path) {
  sqlite3* db = nullptr;
  CheckSqlite(sqlite3_open(path.c_str(), &db), db);
  sqlite3_stmt* count = nullptr;
  int have = -1;
  if (sqlite3_prepare_v2(db, "SELECT COUNT(*) FROM summary_rows", -1, &count, nullptr) == SQLITE_OK &&
      sqlite3_step(count) == SQLITE_ROW)
    have = sqlite3_column_int(count, 0);
  sqlite3_finalize(count);
  if (have != kRows) {
    CheckSqlite(sqlite3_exec(db,
                       "DROP TABLE IF EXISTS summary_rows;"
                       "CREATE TABLE summary_rows (a FLOAT, b NUMBER(12,2), c NUMBER(9), d FLOAT, e NUMBER(5));"
                       "BEGIN;",
                       nullptr, nullptr, nullptr),
          db);
    sqlite3_stmt* ins = nullptr;
    CheckSqlite(sqlite3_prepare_v2(db, "INSERT INTO summary_rows VALUES (?, ?, ?, ?, ?)", -1, &ins, nullptr), db);
    for (int i = 1; i <= kRows; ++i) {
      sqlite3_bind_double(ins, 1, i * 0.5);
      sqlite3_bind_double(ins, 2, (i % 997) * 1.25);
      sqlite3_bind_int(ins, 3, i % 100003);
      if (i % 7 == 0) sqlite3_bind_null(ins, 4);
      else sqlite3_bind_double(ins, 4, (i % 31) * 0.1);
      sqlite3_bind_int(ins, 5, i % 10);
      CheckSqlite(sqlite3_step(ins), db);
      sqlite3_reset(ins);
    }
    sqlite3_finalize(ins);
    CheckSqlite(sqlite3_exec(db, "COMMIT;", nullptr, nullptr, nullptr), db);
  }
  sqlite3_close(db);
}

struct Totals {
  double Sum = 0, Min = 0, Max = 0, Avg = 0, Count = 0;
};

// The peer: the same fields read by their typed accessor, folded in a loop.
Totals PlainLoop(TDataSet& ds) {
  TField* a = ds.FieldByName(u"A");
  TField* b = ds.FieldByName(u"B");
  TField* c = ds.FieldByName(u"C");
  TField* d = ds.FieldByName(u"D");
  Totals t;
  ds.First();
  t.Min = b->AsFloat();
  t.Max = c->AsFloat();
  int n = 0;
  for (; !ds.Eof(); ds.Next(), ++n) {
    t.Sum += a->AsFloat();
    t.Min = std::min(t.Min, b->AsFloat());
    t.Max = std::max(t.Max, c->AsFloat());
    t.Avg += d->AsFloat();
    t.Count += 1;
  }
  if (n) t.Avg /= n;
  return t;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) kRows = std::max(1000, std::atoi(argv[1]));
  RegisterSQLiteDriver();
  std::string path = "summary_rows_" + std::to_string(kRows) + ".db";
  std::fprintf(stderr, "bench: preparing %d rows in %s\n", kRows, path.c_str());
  MakeTable(path);

  TOraSession session(nullptr);
  session.SetServer(String::FromUtf8(path));
  session.Connect();
  TOraQuery q(nullptr);
  q.SetSession(&session);
  q.SQL()->SetText(u"SELECT a, b, c, d, e FROM summary_rows");
  q.Open();
  if (q.RecordCount() != kRows) return 1;  // every row fetched before timing

  XTTTSummaryCollection summaries(&q);
  summaries.SetAsText(u"A\nB=,min\nC=,max\nD=,avg\nE=,count");
  Totals plain;
  double peer = Best(3, [&] { plain = PlainLoop(q); });
  double ours = Best(3, [&] {
    summaries.CalcSummaries();
    summaries.CheckSummaries();
  });
  const double got[] = {summaries.GetItem(0)->Value(), summaries.GetItem(1)->Value(), summaries.GetItem(2)->Value(),
                        summaries.GetItem(3)->Value(), summaries.GetItem(4)->Value()};
  const double want[] = {plain.Sum, plain.Min, plain.Max, plain.Avg, plain.Count};
  for (int i = 0; i < 5; ++i)
    if (got[i] != want[i]) {
      std::fprintf(stderr, "bench: item %d gave %.17g, the loop %.17g\n", i, got[i], want[i]);
      return 1;
    }
  Report("summaries_scan", ours / peer, "<=", 2.0);
  return 0;
}
