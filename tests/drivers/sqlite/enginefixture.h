// A fresh embedded database per test, reached through the driver port only.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "drivers/sqlite/sqlitedriver.h"
#include "platform/db/connection.h"

using TBinds = std::vector<std::pair<String, TDbValue>>;
using TRows = std::vector<std::vector<std::string>>;

class EngineTest : public ::testing::Test {
 public:

  static std::unique_ptr<TDbConnection> Connect(const String& server, const String& user = String()) {
    TDbConnectParams params;
    params.Server = server;
    params.Username = user;
    std::unique_ptr<TDbConnection> connection;
    TDbStatus status = ConnectDb(params, connection);
    EXPECT_TRUE(status) << status.Message();
    return connection;
  }

  // Runs a statement with binds; returns its status.
  static TDbStatus Run(TDbConnection& c, const String& sql, const TBinds& binds = {},
                       std::unique_ptr<TDbStatement>* kept = nullptr) {
    std::unique_ptr<TDbStatement> statement;
    TDbStatus status = c.Prepare(sql, statement);
    if (!status) return status;
    for (const auto& [name, value] : binds) {
      status = statement->Bind(name, value);
      if (!status) return status;
    }
    status = statement->Execute();
    if (kept) *kept = std::move(statement);
    return status;
  }

  void SetUp() override {
    RegisterSQLiteDriver();
    db = Connect(u":memory:");
    ASSERT_TRUE(db);
  }

  TDbStatus Run(const String& sql, const TBinds& binds = {}) { return Run(*db, sql, binds); }

  void Exec(const String& sql, const TBinds& binds = {}) {
    TDbStatus status = Run(sql, binds);
    EXPECT_TRUE(status) << status.Message() << "\n  in: " << sql;
  }

  // All rows as text, NULL as "<null>"; a failure comes back as one row
  // holding the ORA- message.
  static TRows Rows(TDbConnection& c, const String& sql, const TBinds& binds = {}) {
    std::unique_ptr<TDbStatement> statement;
    TDbStatus status = Run(c, sql, binds, &statement);
    TRows rows;
    bool row = true;
    while (status && statement->ReturnsRows()) {
      status = statement->Fetch(row);
      if (!status || !row) break;
      std::vector<std::string> values;
      for (int i = 0; i < statement->ColumnCount(); ++i)
        values.emplace_back(statement->Kind(i) == dkNull ? std::string("<null>") : std::string(statement->AsUtf8(i)));
      rows.push_back(std::move(values));
    }
    if (!status) return {{status.Message().ToUtf8()}};
    return rows;
  }

  TRows Rows(const String& sql, const TBinds& binds = {}) { return Rows(*db, sql, binds); }

  // The first value of the first row, or the error message.
  std::string Value(const String& sql, const TBinds& binds = {}) {
    TRows rows = Rows(sql, binds);
    return rows.empty() || rows[0].empty() ? std::string("<no row>") : rows[0][0];
  }

  // The Oracle number a statement fails with, 0 when it runs.
  int ErrorOf(const String& sql, const TBinds& binds = {}) { return Run(sql, binds).OraCode; }

  std::unique_ptr<TDbConnection> db;
};

// A database file in the temporary folder, removed with its WAL companions.
class TempDatabase {
 public:
  TempDatabase() {
    path_ = std::filesystem::temp_directory_path() /
            ("kelmar-test-" + std::to_string(reinterpret_cast<uintptr_t>(this)) + "-" +
             ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".db");
    Remove();
  }
  ~TempDatabase() { Remove(); }
  String Path() const { return String(path_.string()); }

 private:
  void Remove() {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) std::remove((path_.string() + suffix).c_str());
  }
  std::filesystem::path path_;
};
