// Benchmarks of the data framework against plain loops in the same run:
// a full scan through TOraQuery against sqlite3_step, the cost of opening,
// the memory of fetched rows against their raw bytes, Locate and a filter
// pass against loops over std::vector.
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "bench/benchutil.h"
#include "drivers/sqlite/sqlitedriver.h"
#include "platform/db/dadataset.h"

namespace {

using namespace bench;

// The table's size; a smaller one can be named on the command line for a
// quick run.
int kRows = 1000000;

size_t ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  size_t pages = 0, resident = 0;
  statm >> pages >> resident;
  return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

std::string Note(int i) {
  char buf[48];
  std::snprintf(buf, sizeof buf, "note %08d of the benchmark table....", i);
  return std::string(buf, 40);
}

// Writes the table once; later runs reuse the file.
void MakeTable(const std::string& path) {
  sqlite3* db = nullptr;
  CheckSqlite(sqlite3_open(path.c_str(), &db), db);
  sqlite3_stmt* count = nullptr;
  int have = -1;
  if (sqlite3_prepare_v2(db, "SELECT COUNT(*) FROM bench_rows", -1, &count, nullptr) == SQLITE_OK &&
      sqlite3_step(count) == SQLITE_ROW)
    have = sqlite3_column_int(count, 0);
  sqlite3_finalize(count);
  if (have == kRows) {
    sqlite3_close(db);
    return;
  }
  CheckSqlite(sqlite3_exec(db,
                     "DROP TABLE IF EXISTS bench_rows;"
                     "CREATE TABLE bench_rows (id NUMBER(10) PRIMARY KEY, code VARCHAR2(10), name VARCHAR2(30), "
                     "amount FLOAT, qty NUMBER(10), made DATE, note VARCHAR2(40));"
                     "BEGIN;",
                     nullptr, nullptr, nullptr),
        db);
  sqlite3_stmt* ins = nullptr;
  CheckSqlite(sqlite3_prepare_v2(db, "INSERT INTO bench_rows VALUES (?, ?, ?, ?, ?, ?, ?)", -1, &ins, nullptr), db);
  for (int i = 1; i <= kRows; ++i) {
    char code[16], name[32], made[24];
    std::snprintf(code, sizeof code, "C%06d", i % 1000000);
    std::snprintf(name, sizeof name, "Partner %d", i % 5000);
    std::snprintf(made, sizeof made, "20%02d-%02d-%02d 00:00:00", 10 + i % 15, 1 + i % 12, 1 + i % 28);
    std::string note = Note(i);
    sqlite3_bind_int(ins, 1, i);
    sqlite3_bind_text(ins, 2, code, -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(ins, 3, name, -1, SQLITE_TRANSIENT);
    sqlite3_bind_double(ins, 4, i * 0.25);
    sqlite3_bind_int(ins, 5, i % 1000);
    sqlite3_bind_text(ins, 6, made, -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(ins, 7, note.c_str(), static_cast<int>(note.size()), SQLITE_TRANSIENT);
    CheckSqlite(sqlite3_step(ins), db);
    sqlite3_reset(ins);
  }
  sqlite3_finalize(ins);
  CheckSqlite(sqlite3_exec(db, "COMMIT;", nullptr, nullptr, nullptr), db);
  sqlite3_close(db);
}

struct Row {
  int64_t id;
  std::string code, name;
  double amount;
  int64_t qty;
  std::string made;
  std::string note;
};

// The peer: every column of every row through sqlite3_step; returns the
// raw bytes of the values (numbers and dates as 8 bytes).
size_t PeerScan(const std::string& path, std::vector<Row>* keep) {
  sqlite3* db = nullptr;
  CheckSqlite(sqlite3_open(path.c_str(), &db), db);
  sqlite3_stmt* st = nullptr;
  CheckSqlite(sqlite3_prepare_v2(db, "SELECT id, code, name, amount, qty, made, note FROM bench_rows", -1, &st, nullptr), db);
  size_t bytes = 0;
  int64_t sum = 0;
  while (sqlite3_step(st) == SQLITE_ROW) {
    int64_t id = sqlite3_column_int64(st, 0);
    const unsigned char* code = sqlite3_column_text(st, 1);
    int codeLen = sqlite3_column_bytes(st, 1);
    const unsigned char* name = sqlite3_column_text(st, 2);
    int nameLen = sqlite3_column_bytes(st, 2);
    double amount = sqlite3_column_double(st, 3);
    int64_t qty = sqlite3_column_int64(st, 4);
    const unsigned char* made = sqlite3_column_text(st, 5);
    int madeLen = sqlite3_column_bytes(st, 5);
    const unsigned char* note = sqlite3_column_text(st, 6);
    int noteLen = sqlite3_column_bytes(st, 6);
    sum += id + qty + codeLen + nameLen + madeLen + noteLen + static_cast<int64_t>(amount);
    bytes += 8 + static_cast<size_t>(codeLen) + static_cast<size_t>(nameLen) + 8 + 8 + 8 + static_cast<size_t>(noteLen);
    if (keep)
      keep->push_back({id, std::string(reinterpret_cast<const char*>(code), static_cast<size_t>(codeLen)),
                       std::string(reinterpret_cast<const char*>(name), static_cast<size_t>(nameLen)), amount, qty,
                       std::string(reinterpret_cast<const char*>(made), static_cast<size_t>(madeLen)),
                       std::string(reinterpret_cast<const char*>(note), static_cast<size_t>(noteLen))});
  }
  sqlite3_finalize(st);
  sqlite3_close(db);
  if (sum == 42) std::puts("");  // keeps the reads
  return bytes;
}

// The same scan through the framework: every field read by its type.
void FrameworkScan(TOraSession* session) {
  TOraQuery q(nullptr);
  q.SetSession(session);
  q.SQL()->SetText(u"SELECT id, code, name, amount, qty, made, note FROM bench_rows");
  q.Open();
  TField* id = q.FieldByName(u"ID");
  TField* code = q.FieldByName(u"CODE");
  TField* name = q.FieldByName(u"NAME");
  TField* amount = q.FieldByName(u"AMOUNT");
  TField* qty = q.FieldByName(u"QTY");
  TField* made = q.FieldByName(u"MADE");
  TField* note = q.FieldByName(u"NOTE");
  int64_t sum = 0;
  for (; !q.Eof(); q.Next()) {
    sum += id->AsLargeInt() + qty->AsLargeInt() + code->AsString().Length() + name->AsString().Length() +
           note->AsString().Length() + static_cast<int64_t>(amount->AsFloat()) + static_cast<int64_t>(made->AsDateTime().Val);
  }
  if (sum == 42) std::puts("");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) kRows = std::max(1000, std::atoi(argv[1]));
  RegisterSQLiteDriver();
  std::string path = "bench_rows_" + std::to_string(kRows) + ".db";
  std::fprintf(stderr, "bench: preparing %d rows in %s\n", kRows, path.c_str());
  MakeTable(path);

  TOraSession session(nullptr);
  session.SetServer(String::FromUtf8(path));
  session.Connect();

  // fetch_scan: the framework against sqlite3_step.
  PeerScan(path, nullptr);
  size_t rawBytes = 0;
  // Alternated, best of four each, so that a burst of page-zeroing in the
  // kernel or of neighbours on the machine does not fall on one side only.
  double peer = 1e300, ours = 1e300;
  for (int run = 0; run < 4; ++run) {
    peer = std::min(peer, Seconds([&] { rawBytes = PeerScan(path, nullptr); }));
    ours = std::min(ours, Seconds([&] { FrameworkScan(&session); }));
  }
  Report("fetch_scan", ours / peer, "<=", 1.5);

  // open_first_row: Open up to the first record, against the full scan.
  double open = Best(3, [&] {
    TOraQuery q(nullptr);
    q.SetSession(&session);
    q.SQL()->SetText(u"SELECT id, code, name, amount, qty, made, note FROM bench_rows");
    q.Open();
    if (q.FieldByName(u"ID")->AsInteger() != 1) std::exit(1);
  });
  Report("open_first_row", open / ours, "<=", 0.01);

  // fetch_memory: resident growth with every row fetched, against raw bytes.
  TOraQuery all(nullptr);
  all.SetSession(&session);
  all.SQL()->SetText(u"SELECT id, code, name, amount, qty, made, note FROM bench_rows");
  size_t before = ResidentBytes();
  all.Open();
  if (all.RecordCount() != kRows) return 1;
  size_t after = ResidentBytes();
  Report("fetch_memory", static_cast<double>(after - before) / static_cast<double>(rawBytes), "<=", 2.0);

  // locate_last: the last row by its text key, against std::find.
  std::vector<Row> rows;
  rows.reserve(kRows);
  PeerScan(path, &rows);
  std::vector<std::string> notes;
  notes.reserve(rows.size());
  for (const Row& r : rows) notes.push_back(r.note);
  std::string key = Note(kRows);
  size_t found = 0;
  double peerLocate = Best(5, [&] { found = static_cast<size_t>(std::find(notes.begin(), notes.end(), key) - notes.begin()); });
  bool located = false;
  String keyText = String::FromUtf8(key);
  double oursLocate = Best(5, [&] {
    all.First();
    located = all.Locate(u"NOTE", Variant(keyText), TLocateOptions());
  });
  if (!located || found != rows.size() - 1 || all.FieldByName(u"ID")->AsInteger() != kRows) return 1;
  Report("locate_last", oursLocate / peerLocate, "<=", 2.0);

  // filter_pass: a filter through OnFilterRecord, against a loop that keeps
  // the indexes of the rows a predicate accepts.
  std::function<bool(const Row&)> predicate = [](const Row& r) { return r.qty % 3 == 0; };
  std::vector<uint32_t> kept;
  double peerFilter = Best(3, [&] {
    kept.clear();
    for (size_t i = 0; i < rows.size(); ++i)
      if (predicate(rows[i])) kept.push_back(static_cast<uint32_t>(i));
  });
  TField* qty = all.FieldByName(u"QTY");
  all.OnFilterRecord = [qty](TDataSet*, bool& accept) { accept = qty->AsLargeInt() % 3 == 0; };
  double oursFilter = Best(3, [&] {
    all.SetFiltered(false);
    all.SetFiltered(true);
  });
  if (all.RecordCount() != static_cast<int>(kept.size())) return 1;
  Report("filter_pass", oursFilter / peerFilter, "<=", 2.0);
  return 0;
}
