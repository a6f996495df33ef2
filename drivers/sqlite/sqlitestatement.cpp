#include "drivers/sqlite/sqlitestatement.h"

#include <sqlite3.h>

#include "drivers/sqlite/columntype.h"
#include "drivers/sqlite/datetext.h"
#include "drivers/sqlite/oraerrors.h"
#include "drivers/sqlite/oraformat.h"
#include "drivers/sqlite/sqliteconnection.h"
#include "drivers/sqlite/sqlitevalue.h"
#include "platform/rtl/sysutils.h"

namespace {

TDbStatus NotConnected() { return TDbStatus::Error(3114, u"not connected to ORACLE"); }
TDbStatus OutOfSequence() { return TDbStatus::Error(1002, u"fetch out of sequence"); }

TDbStatus Exec(sqlite3* db, const char* sql) {
  const int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
  return rc == SQLITE_OK ? TDbStatus::Ok() : MapSqliteError(db, rc);
}

// Runs `body` so that it takes effect whole or not at all.
template <typename Body>
TDbStatus Atomically(sqlite3* db, bool ownTransaction, Body body) {
  TDbStatus status = Exec(db, ownTransaction ? "BEGIN IMMEDIATE" : "SAVEPOINT kelmar_atomic");
  if (!status) return status;
  status = body();
  if (status) {
    TDbStatus done = Exec(db, ownTransaction ? "COMMIT" : "RELEASE kelmar_atomic");
    if (done) return status;
    status = done;
  }
  Exec(db, ownTransaction ? "ROLLBACK" : "ROLLBACK TO kelmar_atomic; RELEASE kelmar_atomic");
  return status;
}

// Text in a date column: the stored form, or a literal written in the
// session's format; 0 when it is neither.
double TextToDays(std::string_view text) {
  double days = 0;
  if (StoredDateToDays(text, days)) return days;
  TCivilTime t;
  return ParseOraDate(text, std::string_view(), t) == 0 ? CivilToDays(t) : 0;
}

String UpperLabel(const char* name) { return UpperCase(String::FromUtf8(name ? name : "")); }

}  // namespace

TSQLiteStatement::TSQLiteStatement(TSQLiteConnection* connection, std::shared_ptr<const TShimProgram> program,
                                   std::string sql)
    : connection_(connection), program_(std::move(program)), sql_(std::move(sql)) {
  for (size_t i = 0; i < program_->Params.size(); ++i) keys_.emplace(FoldName(program_->Params[i]), static_cast<int>(i));
  values_.resize(program_->Params.size());
  out_.resize(program_->Params.size());
}

TSQLiteStatement::~TSQLiteStatement() {
  if (connection_) connection_->Forget(this);
  Disconnect();
}

void TSQLiteStatement::Disconnect() {
  for (sqlite3_stmt* step : steps_) sqlite3_finalize(step);
  steps_.clear();
  cursor_ = nullptr;
  state_ = csClosed;
  connection_ = nullptr;
}

sqlite3* TSQLiteStatement::Db() const { return steps_.empty() ? connection_->SessionDb() : sqlite3_db_handle(steps_[0]); }

TDbStatus TSQLiteStatement::Compile() {
  sqlite3* db = connection_->SessionDb();
  if (program_->Autonomous) {
    TDbStatus status = connection_->AutonomousDb(db);
    if (!status) return status;
  }
  for (const TShimStep& step : program_->Steps) {
    sqlite3_stmt* s = nullptr;
    const char* tail = nullptr;
    const int rc = sqlite3_prepare_v2(db, step.Sql.c_str(), static_cast<int>(step.Sql.size()), &s, &tail);
    if (rc != SQLITE_OK) return MapSqliteError(db, rc, step.Verb);
    if (!s) return TDbStatus::Error(900, u"invalid SQL statement");
    steps_.push_back(s);
    const size_t columns = static_cast<size_t>(sqlite3_column_count(s));
    if (!step.Into.empty() && columns != step.Into.size())
      return columns < step.Into.size() ? TDbStatus::Error(947, u"not enough values")
                                        : TDbStatus::Error(913, u"too many values");
  }
  if (program_->Kind == skStatement && program_->Steps[0].Into.empty() && sqlite3_column_count(steps_[0]) > 0) {
    cursor_ = steps_[0];
    Describe(false);
  }
  return TDbStatus::Ok();
}

int TSQLiteStatement::ParamCount() const { return static_cast<int>(program_->Params.size()); }

String TSQLiteStatement::ParamName(int index) const {
  if (index < 0 || index >= ParamCount()) return String();
  return String::FromUtf8(program_->Params[static_cast<size_t>(index)]);
}

int TSQLiteStatement::IndexOf(const String& name) const {
  const auto it = keys_.find(FoldName(name.ToUtf8()));
  return it == keys_.end() ? -1 : it->second;
}

TDbStatus TSQLiteStatement::Bind(const String& name, const TDbValue& value) {
  const int index = IndexOf(name);
  if (index < 0) return TDbStatus::Error(1036, u"illegal variable name/number (" + name + u")");
  values_[static_cast<size_t>(index)] = value;
  return TDbStatus::Ok();
}

TDbValue TSQLiteStatement::OutValue(const String& name) const {
  const int index = IndexOf(name);
  return index < 0 ? TDbValue::Null() : out_[static_cast<size_t>(index)];
}

const TDbColumn& TSQLiteStatement::Column(int index) const {
  static const TDbColumn none;
  return index >= 0 && index < ColumnCount() ? columns_[static_cast<size_t>(index)] : none;
}

TDbStatus TSQLiteStatement::BindStep(size_t step, const std::vector<TDbValue>& values) {
  sqlite3_stmt* s = steps_[step];
  sqlite3_reset(s);
  const std::vector<int>& params = program_->Steps[step].Params;
  for (size_t i = 0; i < params.size(); ++i) {
    const int rc = BindDbValue(s, static_cast<int>(i + 1), values[static_cast<size_t>(params[i])]);
    if (rc != SQLITE_OK) return MapSqliteError(sqlite3_db_handle(s), rc);
  }
  return TDbStatus::Ok();
}

void TSQLiteStatement::CloseCursor() {
  if (cursor_ && state_ != csClosed) sqlite3_reset(cursor_);
  state_ = csClosed;
}

TDbStatus TSQLiteStatement::Execute() {
  if (!connection_) return NotConnected();
  CloseCursor();
  rowsAffected_ = 0;
  returnsRows_ = false;
  for (TDbValue& value : out_) value = TDbValue::Null();
  switch (program_->Kind) {
    case skCommit:
      return connection_->Commit();
    case skRollback:
      return connection_->Rollback();
    case skStatement:
      if (cursor_) return OpenCursor();
      if (program_->Steps[0].Into.empty()) return RunSteps();
      return Atomically(Db(), false, [this] { return RunSteps(); });
    case skBlock:
      if (program_->Autonomous) {
        TDbStatus status = connection_->CheckAutonomousCanWrite();
        if (!status) return status;
      }
      return Atomically(Db(), program_->Autonomous, [this] { return RunSteps(); });
    default:
      return connection_->RunDdl(*program_);
  }
}

TDbStatus TSQLiteStatement::OpenCursor() {
  TDbStatus status = BindStep(0, values_);
  if (!status) return status;
  rollbacks_ = connection_->Rollbacks();
  const int rc = sqlite3_step(cursor_);
  if (rc != SQLITE_ROW && rc != SQLITE_DONE) {
    status = MapSqliteError(Db(), rc, program_->Steps[0].Verb);
    sqlite3_reset(cursor_);
    return status;
  }
  Describe(rc == SQLITE_ROW);
  state_ = rc == SQLITE_ROW ? csAhead : csEnd;
  if (rc == SQLITE_DONE) sqlite3_reset(cursor_);
  returnsRows_ = true;
  return TDbStatus::Ok();
}

// Steps run in order; what one selects INTO a parameter is bound into the
// steps after it.
TDbStatus TSQLiteStatement::RunSteps() {
  std::vector<TDbValue> values = values_;
  for (size_t i = 0; i < steps_.size(); ++i) {
    TDbStatus status = RunStep(i, values);
    if (!status) return status;
  }
  return TDbStatus::Ok();
}

TDbStatus TSQLiteStatement::RunStep(size_t index, std::vector<TDbValue>& values) {
  const TShimStep& step = program_->Steps[index];
  sqlite3_stmt* s = steps_[index];
  TDbStatus status = BindStep(index, values);
  if (!status) return status;
  int rows = 0, rc;
  while ((rc = sqlite3_step(s)) == SQLITE_ROW) {
    if (++rows > 1) {
      if (step.SelectInto) break;
      continue;
    }
    for (size_t c = 0; c < step.Into.size(); ++c) {
      const size_t target = static_cast<size_t>(step.Into[c]);
      values[target] = out_[target] = DbValueFromColumn(s, static_cast<int>(c));
    }
  }
  if (rc != SQLITE_ROW && rc != SQLITE_DONE) status = MapSqliteError(sqlite3_db_handle(s), rc, step.Verb);
  else if (step.SelectInto && rows == 0) status = TDbStatus::Error(1403, u"no data found");
  else if (!step.Into.empty() && rows > 1)
    status = TDbStatus::Error(1422, u"exact fetch returns more than requested number of rows");
  else if (step.Verb == svInsert || step.Verb == svUpdate || step.Verb == svDelete)
    rowsAffected_ += sqlite3_changes64(sqlite3_db_handle(s));
  sqlite3_reset(s);
  return status;
}

String TSQLiteStatement::Label(int column) const {
  const char* name = sqlite3_column_name(cursor_, column);
  if (!name) return String();
  // A quoted alias keeps its case, as in Oracle; other names are upper case.
  std::string quoted(1, '"');
  quoted.append(name).push_back('"');
  if (sql_.find(quoted) != std::string::npos) return String::FromUtf8(name);
  return UpperLabel(name);
}

void TSQLiteStatement::Describe(bool haveRow) {
  const int count = sqlite3_column_count(cursor_);
  columns_.assign(static_cast<size_t>(count), TDbColumn());
  dates_.assign(static_cast<size_t>(count), 0);
  sqlite3* db = Db();
  for (int i = 0; i < count; ++i) {
    TDbColumn& c = columns_[static_cast<size_t>(i)];
    c.Name = Label(i);
    const char* declared = sqlite3_column_decltype(cursor_, i);
    const TOraColumnType type = ParseColumnType(declared ? declared : "");
    c.Type = type.Kind;
    if (c.Type == dcText || c.Type == dcFixedText) c.Size = type.Length;
    if (c.Type == dcNumber || c.Type == dcInteger) {
      c.Precision = type.Precision < 0 ? 0 : type.Precision;
      c.Scale = type.Scale < 0 ? 0 : type.Scale;
    }
    if (c.Type == dcUnknown) {  // an expression: the first row's value tells
      switch (haveRow ? sqlite3_column_type(cursor_, i) : SQLITE_NULL) {
        case SQLITE_INTEGER: c.Type = dcInteger; break;
        case SQLITE_FLOAT: c.Type = dcFloat; break;
        case SQLITE_BLOB: c.Type = dcBlob; break;
        case SQLITE_TEXT: {
          const char* text = reinterpret_cast<const char*>(sqlite3_column_text(cursor_, i));
          c.Type = LooksLikeStoredDate(std::string_view(text, static_cast<size_t>(sqlite3_column_bytes(cursor_, i))))
                       ? dcDateTime
                       : dcText;
          break;
        }
        default: c.Type = dcText; break;
      }
    }
    const char* table = sqlite3_column_table_name(cursor_, i);
    const char* origin = sqlite3_column_origin_name(cursor_, i);
    if (table && origin) {
      c.TableName = UpperLabel(table);
      c.OriginName = UpperLabel(origin);
      int notNull = 0, primaryKey = 0;
      if (sqlite3_table_column_metadata(db, sqlite3_column_database_name(cursor_, i), table, origin, nullptr, nullptr,
                                        &notNull, &primaryKey, nullptr) == SQLITE_OK)
        c.Nullable = !notNull && !primaryKey;
    }
    dates_[static_cast<size_t>(i)] = c.Type == dcDateTime;
  }
}

TDbStatus TSQLiteStatement::Fetch(bool& row) {
  row = false;
  if (!connection_) return NotConnected();
  if (state_ == csClosed) return OutOfSequence();
  if (state_ == csEnd) return TDbStatus::Ok();
  if (rollbacks_ != connection_->Rollbacks()) {
    CloseCursor();
    return OutOfSequence();
  }
  if (state_ == csAhead) {
    state_ = csOnRow;
    row = true;
    return TDbStatus::Ok();
  }
  const int rc = sqlite3_step(cursor_);
  if (rc == SQLITE_ROW) {
    row = true;
    return TDbStatus::Ok();
  }
  if (rc == SQLITE_DONE) {
    sqlite3_reset(cursor_);
    state_ = csEnd;
    return TDbStatus::Ok();
  }
  TDbStatus status = MapSqliteError(Db(), rc, program_->Steps[0].Verb);
  CloseCursor();
  return status;
}

TDbKind TSQLiteStatement::Kind(int column) const {
  if (!OnRow(column)) return dkNull;
  switch (sqlite3_column_type(cursor_, column)) {
    case SQLITE_INTEGER: return dkInteger;
    case SQLITE_FLOAT: return dkFloat;
    case SQLITE_TEXT: return dates_[static_cast<size_t>(column)] ? dkDate : dkText;
    case SQLITE_BLOB: return dkBlob;
    default: return dkNull;
  }
}

double TSQLiteStatement::AsFloat(int column) const {
  if (!OnRow(column)) return 0;
  if (dates_[static_cast<size_t>(column)] && sqlite3_column_type(cursor_, column) == SQLITE_TEXT)
    return TextToDays(AsUtf8(column));
  return sqlite3_column_double(cursor_, column);
}

int64_t TSQLiteStatement::AsInteger(int column) const {
  if (!OnRow(column)) return 0;
  if (dates_[static_cast<size_t>(column)]) return static_cast<int64_t>(AsFloat(column));
  return sqlite3_column_int64(cursor_, column);
}

std::string_view TSQLiteStatement::AsUtf8(int column) const {
  if (!OnRow(column)) return {};
  const char* text = reinterpret_cast<const char*>(sqlite3_column_text(cursor_, column));
  return text ? std::string_view(text, static_cast<size_t>(sqlite3_column_bytes(cursor_, column))) : std::string_view();
}

std::string_view TSQLiteStatement::AsBytes(int column) const {
  if (!OnRow(column)) return {};
  const char* bytes = static_cast<const char*>(sqlite3_column_blob(cursor_, column));
  return bytes ? std::string_view(bytes, static_cast<size_t>(sqlite3_column_bytes(cursor_, column))) : std::string_view();
}

TDbStatus TSQLiteStatement::FetchBlock(TDbBlock& block, int maxRows) {
  return FetchRowsInto(block, maxRows, [this](int c, TDbColumnCells& cells) { ReadCell(c, cells); });
}

// The same values as Kind and the As... readers, through one
// sqlite3_column_value call per value instead of two or three sqlite3_column_*
// calls. That value is "unprotected" in SQLite's terms, which matters only to
// a handle shared between threads; the session's handle is opened for one
// thread at a time (SQLITE_OPEN_NOMUTEX) in any case.
void TSQLiteStatement::ReadCell(int column, TDbColumnCells& cells) const {
  sqlite3_value* v = sqlite3_column_value(cursor_, column);
  switch (sqlite3_value_type(v)) {
    case SQLITE_INTEGER:
      return cells.AddInteger(sqlite3_value_int64(v));
    case SQLITE_FLOAT:
      return cells.AddFloat(dkFloat, sqlite3_value_double(v));
    case SQLITE_TEXT: {
      const char* text = reinterpret_cast<const char*>(sqlite3_value_text(v));
      const std::string_view view(text ? text : "", static_cast<size_t>(sqlite3_value_bytes(v)));
      if (dates_[static_cast<size_t>(column)]) return cells.AddFloat(dkDate, TextToDays(view));
      return cells.AddBytes(dkText, view);
    }
    case SQLITE_BLOB: {
      const char* bytes = static_cast<const char*>(sqlite3_value_blob(v));
      return cells.AddBytes(dkBlob, std::string_view(bytes ? bytes : "", static_cast<size_t>(sqlite3_value_bytes(v))));
    }
    default:
      return cells.AddNull();
  }
}
