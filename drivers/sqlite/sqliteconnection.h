// A session on an SQLite database. It owns the session's sqlite3 handle
// and, once an autonomous block has run, a second handle on the same
// database for autonomous transactions. Statements hold a plain pointer to
// it; when the connection goes first it disconnects them, and they answer
// ORA-03114 from then on.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "drivers/sqlite/orafuncs.h"
#include "drivers/sqlite/sqlshim.h"
#include "platform/db/connection.h"

struct sqlite3;
class TSQLiteStatement;

class TSQLiteConnection final : public TDbConnection {
 public:
  static TDbStatus Open(const TDbConnectParams& params, std::unique_ptr<TDbConnection>& connection);
  ~TSQLiteConnection() override;

  TDbStatus Prepare(const String& sql, std::unique_ptr<TDbStatement>& statement) override;
  TDbStatus StartTransaction() override;
  TDbStatus Commit() override;
  TDbStatus Rollback() override;
  bool InTransaction() const override;
  TDbStatus RegisterFunction(const String& name, int argCount, TDbFunction function) override;
  String ServerVersion() const override;

  // ---- for statements ----
  sqlite3* SessionDb() const { return db_; }
  // The handle for autonomous transactions, opened on first use.
  TDbStatus AutonomousDb(sqlite3*& db);
  // Fails with ORA-00054 while the session holds uncommitted changes: SQLite
  // has one writer at a time, so an autonomous writer would wait forever.
  TDbStatus CheckAutonomousCanWrite() const;
  // Counts rollbacks: a cursor opened before one is out of sequence.
  uint64_t Rollbacks() const { return rollbacks_; }
  // Sequences and synonyms.
  TDbStatus RunDdl(const TShimProgram& program);
  void Forget(TSQLiteStatement* statement) { statements_.erase(statement); }

 private:
  TSQLiteConnection() = default;
  TDbStatus OpenHandle(sqlite3*& db, bool session);
  std::shared_ptr<const TShimProgram> Translate(const std::string& sql, TDbStatus& status);

  std::string uri_;
  bool memory_ = false;
  sqlite3* db_ = nullptr;
  sqlite3* autonomous_ = nullptr;
  TShimSession session_;
  std::vector<std::pair<String, std::pair<int, TDbFunction>>> functions_;  // to repeat on the autonomous handle
  std::set<TSQLiteStatement*> statements_;
  std::unordered_map<std::string, std::shared_ptr<const TShimProgram>> translations_;
  uint64_t rollbacks_ = 0;
};
