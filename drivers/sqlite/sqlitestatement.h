// A prepared statement of the embedded engine: the shim's translation, one
// sqlite3_stmt per step, the bound values by parameter, and the cursor of a
// query. Fetch and the As... readers go straight to sqlite3_step and
// sqlite3_column_*: no allocation per row; dates are read from their stored
// text only when asked. FetchBlock reads each value with a single call into
// the engine.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "drivers/sqlite/sqlshim.h"
#include "platform/db/connection.h"

struct sqlite3;
struct sqlite3_stmt;
class TSQLiteConnection;

class TSQLiteStatement final : public TDbStatement {
 public:
  TSQLiteStatement(TSQLiteConnection* connection, std::shared_ptr<const TShimProgram> program, std::string sql);
  ~TSQLiteStatement() override;

  // Prepares the steps with SQLite; the statement is usable only after it.
  TDbStatus Compile();
  // The connection is closing: drops the SQLite statements.
  void Disconnect();

  int ParamCount() const override;
  String ParamName(int index) const override;
  TDbStatus Bind(const String& name, const TDbValue& value) override;
  TDbStatus Execute() override;
  bool ReturnsRows() const override { return returnsRows_; }
  int64_t RowsAffected() const override { return rowsAffected_; }
  TDbValue OutValue(const String& name) const override;
  int ColumnCount() const override { return static_cast<int>(columns_.size()); }
  const TDbColumn& Column(int index) const override;
  TDbStatus Fetch(bool& row) override;
  TDbKind Kind(int column) const override;
  int64_t AsInteger(int column) const override;
  double AsFloat(int column) const override;
  std::string_view AsUtf8(int column) const override;
  std::string_view AsBytes(int column) const override;
  TDbStatus FetchBlock(TDbBlock& block, int maxRows) override;

 private:
  enum TCursorState : uint8_t { csClosed, csAhead, csOnRow, csEnd };

  int IndexOf(const String& name) const;
  sqlite3* Db() const;
  bool OnRow(int column) const { return state_ == csOnRow && column >= 0 && column < ColumnCount(); }
  void CloseCursor();
  TDbStatus BindStep(size_t step, const std::vector<TDbValue>& values);
  TDbStatus RunStep(size_t step, std::vector<TDbValue>& values);
  TDbStatus RunSteps();
  TDbStatus OpenCursor();
  void Describe(bool haveRow);
  String Label(int column) const;
  void ReadCell(int column, TDbColumnCells& cells) const;

  TSQLiteConnection* connection_;
  std::shared_ptr<const TShimProgram> program_;
  std::string sql_;
  std::vector<sqlite3_stmt*> steps_;
  std::unordered_map<std::string, int> keys_;  // folded parameter name -> index
  std::vector<TDbValue> values_, out_;
  std::vector<TDbColumn> columns_;
  std::vector<uint8_t> dates_;  // per column: holds dates as stored text
  sqlite3_stmt* cursor_ = nullptr;
  TCursorState state_ = csClosed;
  uint64_t rollbacks_ = 0;
  int64_t rowsAffected_ = 0;
  bool returnsRows_ = false;
};
