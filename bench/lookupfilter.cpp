// search_filter_contains: a search field ("contains", case ignored) through
// VeskSetOnFilterRecord over fetched rows, against a loop doing the same
// upper-case contains test over a std::vector of the same strings.
// lookup_filter: a lookup filter against a second dataset, against the same
// loop over the texts that the lookup shows.
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/benchutil.h"
#include "data/veskodacquerylib.h"
#include "drivers/sqlite/sqlitedriver.h"

namespace {

using namespace bench;

int kRows = 1000000;
constexpr int kGoods = 10000;

std::string Note(int i) { return "Lot " + std::to_string(i) + (i % 10 == 0 ? " urgent" : " plain") + " delivery"; }
std::string GoodsName(int i) { return "Goods " + std::to_string(i) + (i % 4 == 0 ? " Apple" : " Pear"); }

void MakeTables(const std::string& path) {
  sqlite3* db = nullptr;
  CheckSqlite(sqlite3_open(path.c_str(), &db), db);
  CheckSqlite(sqlite3_exec(db,
                     "CREATE TABLE orders (id NUMBER(9), goods_id NUMBER(9), note VARCHAR2(60));"
                     "CREATE TABLE goods (id NUMBER(9), name VARCHAR2(40));"
                     "BEGIN;",
                     nullptr, nullptr, nullptr),
        db);
  sqlite3_stmt* ins = nullptr;
  CheckSqlite(sqlite3_prepare_v2(db, "INSERT INTO orders VALUES (?, ?, ?)", -1, &ins, nullptr), db);
  for (int i = 1; i <= kRows; ++i) {
    std::string note = Note(i);
    sqlite3_bind_int(ins, 1, i);
    sqlite3_bind_int(ins, 2, (i * 7919) % kGoods + 1);
    sqlite3_bind_text(ins, 3, note.c_str(), -1, SQLITE_TRANSIENT);
    CheckSqlite(sqlite3_step(ins), db);
    sqlite3_reset(ins);
  }
  sqlite3_finalize(ins);
  CheckSqlite(sqlite3_prepare_v2(db, "INSERT INTO goods VALUES (?, ?)", -1, &ins, nullptr), db);
  for (int i = 1; i <= kGoods; ++i) {
    std::string name = GoodsName(i);
    sqlite3_bind_int(ins, 1, i);
    sqlite3_bind_text(ins, 2, name.c_str(), -1, SQLITE_TRANSIENT);
    CheckSqlite(sqlite3_step(ins), db);
    sqlite3_reset(ins);
  }
  sqlite3_finalize(ins);
  CheckSqlite(sqlite3_exec(db, "COMMIT;", nullptr, nullptr, nullptr), db);
  sqlite3_close(db);
}

// The peer: how many of the texts hold Sought, case ignored.
int PlainContains(const std::vector<String>& Texts, const String& Sought) {
  const String upper = UpperCase(Sought);
  int kept = 0;
  for (const String& text : Texts)
    if (UpperCase(text).Pos(upper) > 0) ++kept;
  return kept;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) kRows = std::max(1000, std::atoi(argv[1]));
  RegisterSQLiteDriver();
  const std::string path = "bench_lookupfilter_" + std::to_string(kRows) + ".db";
  std::remove(path.c_str());
  MakeTables(path);

  TOraSession session(nullptr);
  session.SetServer(String::FromUtf8(path));
  session.Connect();

  TVeskODACQuery goods(nullptr);
  goods.SetSession(&session);
  goods.SQL()->SetText(u"SELECT id, name FROM goods ORDER BY id");
  goods.Open();

  TVeskODACQuery orders(nullptr);
  orders.SetSession(&session);
  orders.SQL()->SetText(u"SELECT id, goods_id, note FROM orders");
  auto add = [&](TField* field, const String& name, TFieldKind kind) {
    field->SetFieldName(name);
    field->SetFieldKind(kind);
    field->SetDataSet(&orders);
    return field;
  };
  add(new TIntegerField(&orders), u"ID", fkData);
  add(new TIntegerField(&orders), u"GOODS_ID", fkData);
  TField* note = add(new TStringField(&orders), u"NOTE", fkData);
  note->SetSize(60);
  TField* name = add(new TStringField(&orders), u"GOODS_NAME", fkLookup);
  name->SetSize(40);
  name->SetKeyFields(u"GOODS_ID");
  name->SetLookupDataSet(&goods);
  name->SetLookupKeyFields(u"ID");
  name->SetLookupResultField(u"NAME");
  orders.Open();
  if (orders.RecordCount() != kRows) return 1;

  std::vector<String> notes, names;
  notes.reserve(static_cast<size_t>(kRows));
  names.reserve(static_cast<size_t>(kRows));
  for (int i = 1; i <= kRows; ++i) {
    notes.push_back(String::FromUtf8(Note(i)));
    names.push_back(String::FromUtf8(GoodsName((i * 7919) % kGoods + 1)));
  }

  int peerKept = 0;
  double peer = Best(3, [&] { peerKept = PlainContains(notes, u"urgent"); });
  orders.addSF(note, u"urgent", 1, false);
  orders.EnabledLookUpFilter(true);
  double ours = Best(3, [&] {
    orders.SetFiltered(false);
    orders.SetFiltered(true);
  });
  if (orders.RecordCount() != peerKept) {
    std::fprintf(stderr, "search field kept %d rows, the loop %d\n", orders.RecordCount(), peerKept);
    return 1;
  }
  Report("search_filter_contains", ours / peer, "<=", 2.0);

  orders.removeSF(u"NOTE");
  double peerLookup = Best(3, [&] { peerKept = PlainContains(names, u"apple"); });
  orders.addLF(name, u"apple", 1, false);
  double oursLookup = Best(3, [&] {
    orders.SetFiltered(false);
    orders.SetFiltered(true);
  });
  if (orders.RecordCount() != peerKept) {
    std::fprintf(stderr, "lookup filter kept %d rows, the loop %d\n", orders.RecordCount(), peerKept);
    return 1;
  }
  Report("lookup_filter", oursLookup / peerLookup, "<=", 3.0);
  return 0;
}
