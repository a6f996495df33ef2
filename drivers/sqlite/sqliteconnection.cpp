#include "drivers/sqlite/sqliteconnection.h"

#include <sqlite3.h>

#include <atomic>

#include "drivers/sqlite/oraerrors.h"
#include "drivers/sqlite/sqlitestatement.h"
#include "platform/rtl/sysutils.h"

namespace {

constexpr int kBusyTimeoutMs = 5000;
constexpr size_t kTranslationCacheSize = 512;

// The views and settings every handle gets. DUAL and the dictionary are
// temporary views, so they never land in the database file.
constexpr const char* kSetup = R"sql(
PRAGMA foreign_keys = ON;
PRAGMA case_sensitive_like = ON;
CREATE TEMP VIEW dual AS SELECT 'X' AS DUMMY;
CREATE TEMP VIEW all_tab_columns AS
  SELECT sys_context('USERENV', 'SESSION_USER') AS OWNER, upper(m.name) AS TABLE_NAME,
         upper(c.name) AS COLUMN_NAME, kelmar_coltype(c.type, 'TYPE') AS DATA_TYPE,
         kelmar_coltype(c.type, 'LENGTH') AS DATA_LENGTH, kelmar_coltype(c.type, 'PRECISION') AS DATA_PRECISION,
         kelmar_coltype(c.type, 'SCALE') AS DATA_SCALE,
         CASE WHEN c."notnull" OR c.pk > 0 THEN 'N' ELSE 'Y' END AS NULLABLE, c.cid + 1 AS COLUMN_ID
  FROM main.sqlite_schema AS m JOIN pragma_table_info(m.name, 'main') AS c
  WHERE m.type IN ('table', 'view') AND m.name NOT LIKE 'sqlite%' AND m.name <> 'kelmar_sequences';
CREATE TEMP VIEW user_synonyms AS
  SELECT upper(name) AS SYNONYM_NAME, kelmar_synonym(sql, 1) AS TABLE_OWNER, kelmar_synonym(sql, 2) AS TABLE_NAME,
         NULL AS DB_LINK
  FROM main.sqlite_schema WHERE type = 'view' AND sql LIKE '%/* synonym %';
)sql";

TDbStatus Exec(sqlite3* db, const std::string& sql) {
  char* message = nullptr;
  const int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message);
  TDbStatus status = rc == SQLITE_OK ? TDbStatus::Ok() : MapSqliteError(rc, message ? message : sqlite3_errstr(rc));
  sqlite3_free(message);
  return status;
}

std::string QuoteName(const std::string& name) {
  std::string out = "\"";
  for (char c : name) {
    out += c;
    if (c == '"') out += '"';
  }
  return out + "\"";
}

// Runs one statement with text parameters; `changes` gets the rows it touched.
TDbStatus Run(sqlite3* db, const std::string& sql, const std::vector<std::string>& args, int64_t* changes = nullptr,
              bool* row = nullptr) {
  sqlite3_stmt* s = nullptr;
  int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &s, nullptr);
  if (rc != SQLITE_OK) return MapSqliteError(db, rc);
  for (size_t i = 0; i < args.size(); ++i)
    sqlite3_bind_text(s, static_cast<int>(i + 1), args[i].data(), static_cast<int>(args[i].size()), SQLITE_STATIC);
  rc = sqlite3_step(s);
  if (row) *row = rc == SQLITE_ROW;
  while (rc == SQLITE_ROW) rc = sqlite3_step(s);
  TDbStatus status = rc == SQLITE_DONE ? TDbStatus::Ok() : MapSqliteError(db, rc);
  if (changes) *changes = sqlite3_changes64(db);
  sqlite3_finalize(s);
  return status;
}

}  // namespace

TDbStatus TSQLiteConnection::Open(const TDbConnectParams& params, std::unique_ptr<TDbConnection>& connection) {
  static std::atomic<uint64_t> memoryDatabases{0};
  std::unique_ptr<TSQLiteConnection> c(new TSQLiteConnection());
  const std::string server = params.Server.ToUtf8();
  if (server.empty()) return TDbStatus::Error(12162, u"TNS:net service name is incorrectly specified (no database file)");
  c->memory_ = server == ":memory:";
  // A named shared-cache database, so that the autonomous handle sees the
  // same data as the session.
  c->uri_ = c->memory_ ? "file:kelmar-memory-" + std::to_string(++memoryDatabases) + "?mode=memory&cache=shared" : server;
  const std::string user = UpperCase(params.Username).ToUtf8();
  c->session_.User = user.empty() ? "KELMAR" : user;
  TDbStatus status = c->OpenHandle(c->db_, true);
  if (!status) return status;
  connection = std::move(c);
  return TDbStatus::Ok();
}

TDbStatus TSQLiteConnection::OpenHandle(sqlite3*& db, bool session) {
  int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  if (memory_) flags |= SQLITE_OPEN_URI | SQLITE_OPEN_SHAREDCACHE;
  int rc = sqlite3_open_v2(uri_.c_str(), &db, flags, nullptr);
  if (rc != SQLITE_OK) {
    TDbStatus status = MapSqliteError(db, rc);
    sqlite3_close_v2(db);
    db = nullptr;
    return status;
  }
  sqlite3_extended_result_codes(db, 1);
  // "name" is always an identifier, never a string that happens to fit.
  sqlite3_db_config(db, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(db, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  sqlite3_busy_timeout(db, kBusyTimeoutMs);
  RegisterOracleFunctions(db, &session_);
  for (const auto& [name, function] : functions_) RegisterDbFunction(db, name, function.first, function.second);
  std::string setup = kSetup;
  if (memory_ && session) setup += "PRAGMA read_uncommitted = 1;";  // its reads must not lock out the autonomous writer
  TDbStatus status = Exec(db, setup);
  if (status && !memory_) {
    Exec(db, "PRAGMA journal_mode = WAL");  // readers and one writer at a time; fails harmlessly on read-only files
    Exec(db, "PRAGMA synchronous = NORMAL");
    // Pages read through a mapping of the file rather than copied by a
    // system call each: large scans spend much less in the kernel. (The
    // known cost: an I/O error on a mapped page arrives as a signal.)
    Exec(db, "PRAGMA mmap_size = 1073741824");
  }
  if (!status) {
    sqlite3_close_v2(db);
    db = nullptr;
  }
  return status;
}

TSQLiteConnection::~TSQLiteConnection() {
  for (TSQLiteStatement* statement : statements_) statement->Disconnect();
  sqlite3_close_v2(autonomous_);
  sqlite3_close_v2(db_);
}

std::shared_ptr<const TShimProgram> TSQLiteConnection::Translate(const std::string& sql, TDbStatus& status) {
  const auto it = translations_.find(sql);
  if (it != translations_.end()) return it->second;
  auto program = std::make_shared<TShimProgram>();
  status = TranslateSql(sql, *program);
  if (!status) return nullptr;
  if (translations_.size() >= kTranslationCacheSize) translations_.clear();
  translations_.emplace(sql, program);
  return program;
}

TDbStatus TSQLiteConnection::Prepare(const String& sql, std::unique_ptr<TDbStatement>& statement) {
  TDbStatus status;
  std::string text = sql.ToUtf8();
  std::shared_ptr<const TShimProgram> program = Translate(text, status);
  if (!program) return status;
  auto prepared = std::make_unique<TSQLiteStatement>(this, std::move(program), std::move(text));
  statements_.insert(prepared.get());
  status = prepared->Compile();
  if (!status) return status;
  statement = std::move(prepared);
  return TDbStatus::Ok();
}

TDbStatus TSQLiteConnection::AutonomousDb(sqlite3*& db) {
  if (!autonomous_) {
    TDbStatus status = OpenHandle(autonomous_, false);
    if (!status) return status;
  }
  db = autonomous_;
  return TDbStatus::Ok();
}

TDbStatus TSQLiteConnection::CheckAutonomousCanWrite() const {
  if (sqlite3_txn_state(db_, nullptr) != SQLITE_TXN_WRITE) return TDbStatus::Ok();
  return TDbStatus::Error(54, u"resource busy and acquire with NOWAIT specified or timeout expired (the session "
                              u"holds uncommitted changes; the embedded engine has one writer at a time, so an "
                              u"autonomous transaction cannot write until the session commits or rolls back)");
}

TDbStatus TSQLiteConnection::StartTransaction() {
  if (InTransaction()) return TDbStatus::Ok();
  return Exec(db_, "BEGIN");
}

TDbStatus TSQLiteConnection::Commit() { return InTransaction() ? Exec(db_, "COMMIT") : TDbStatus::Ok(); }

TDbStatus TSQLiteConnection::Rollback() {
  ++rollbacks_;
  return InTransaction() ? Exec(db_, "ROLLBACK") : TDbStatus::Ok();
}

bool TSQLiteConnection::InTransaction() const { return sqlite3_get_autocommit(db_) == 0; }

TDbStatus TSQLiteConnection::RegisterFunction(const String& name, int argCount, TDbFunction function) {
  TDbStatus status = RegisterDbFunction(db_, name, argCount, function);
  if (status && autonomous_) status = RegisterDbFunction(autonomous_, name, argCount, function);
  if (status) functions_.push_back({name, {argCount, std::move(function)}});
  return status;
}

String TSQLiteConnection::ServerVersion() const { return String(std::string("SQLite ") + sqlite3_libversion()); }

TDbStatus TSQLiteConnection::RunDdl(const TShimProgram& p) {
  const std::string table = kSequenceTable;
  switch (p.Kind) {
    case skCreateSequence: {
      TDbStatus status = Exec(db_, "CREATE TABLE IF NOT EXISTS " + table +
                                       " (name TEXT PRIMARY KEY, next_value INTEGER NOT NULL, increment INTEGER NOT NULL)");
      if (status)
        status = Run(db_, "INSERT INTO " + table + " VALUES (?1, ?2, ?3)",
                     {p.Object, std::to_string(p.Start), std::to_string(p.Increment)});
      if (status.OraCode == 1) return TDbStatus::Error(955, u"name is already used by an existing object");
      return status;
    }
    case skDropSequence: {
      int64_t changes = 0;
      TDbStatus status = Run(db_, "DELETE FROM " + table + " WHERE name = ?1", {p.Object}, &changes);
      if (status.OraCode == 942 || (status && changes == 0))
        return TDbStatus::Error(2289, u"sequence does not exist (" + String(p.Object) + u")");
      return status;
    }
    case skCreateSynonym: {
      bool exists = false;
      TDbStatus status = Run(db_, "SELECT 1 FROM user_synonyms WHERE SYNONYM_NAME = upper(?1)", {p.Object}, nullptr, &exists);
      if (status && exists && p.Replace) status = Exec(db_, "DROP VIEW " + QuoteName(p.Object));
      if (!status) return status;
      const std::string owner = p.TargetOwner.empty() ? session_.User : p.TargetOwner;
      for (const std::string& name : {p.Object, owner, p.Target})
        if (name.find('|') != std::string::npos || name.find("*/") != std::string::npos)
          return TDbStatus::Error(903, u"invalid object name");
      return Exec(db_, "CREATE VIEW " + QuoteName(p.Object) + " AS SELECT * FROM " + QuoteName(p.Target) +
                           " /* synonym " + owner + "|" + p.Target + " */");
    }
    case skDropSynonym: {
      bool exists = false;
      TDbStatus status = Run(db_, "SELECT 1 FROM user_synonyms WHERE SYNONYM_NAME = upper(?1)", {p.Object}, nullptr, &exists);
      if (status && !exists) return TDbStatus::Error(1434, u"private synonym to be dropped does not exist");
      return status ? Exec(db_, "DROP VIEW " + QuoteName(p.Object)) : status;
    }
    default:
      return TDbStatus::Error(900, u"invalid SQL statement");
  }
}
