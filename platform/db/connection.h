// The driver port: what the data framework needs of a database engine.
//
// A driver implements TDbConnection and TDbStatement and registers a factory
// under its name. Drivers report failures as a TDbStatus carrying the Oracle
// error number that means the same (the kit tells errors apart by their
// "ORA-nnnnn" prefix) and never throw; the data framework turns a failed
// status into an exception.
//
// Ownership: TOraSession owns its TDbConnection; a statement is owned by the
// dataset that prepared it and must not outlive its connection.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/rtl/ustring.h"

// ---- Values ----------------------------------------------------------------

enum TDbKind : uint8_t { dkNull, dkInteger, dkFloat, dkText, dkDate, dkBlob };

// A value crossing the port: a bind value, an output value, a function
// argument. Dates are TDateTime days (since 1899-12-30) in Float.
struct TDbValue {
  TDbKind Kind = dkNull;
  int64_t Int = 0;
  double Float = 0;
  String Text;
  std::string Bytes;

  static TDbValue Null() { return {}; }
  static TDbValue Integer(int64_t v) { TDbValue r; r.Kind = dkInteger; r.Int = v; return r; }
  static TDbValue FloatValue(double v) { TDbValue r; r.Kind = dkFloat; r.Float = v; return r; }
  static TDbValue TextValue(const String& v) { TDbValue r; r.Kind = dkText; r.Text = v; return r; }
  static TDbValue Date(double days) { TDbValue r; r.Kind = dkDate; r.Float = days; return r; }
  static TDbValue Blob(std::string bytes) { TDbValue r; r.Kind = dkBlob; r.Bytes = std::move(bytes); return r; }
  bool IsNull() const { return Kind == dkNull; }
};

// ---- Status ----------------------------------------------------------------

struct TDbStatus {
  int OraCode = 0;     // 0 when all went well; otherwise the Oracle error number
  int NativeCode = 0;  // the engine's own code
  String Text;         // the engine's text, without the "ORA-" prefix

  static TDbStatus Ok() { return {}; }
  static TDbStatus Error(int oraCode, const String& text, int nativeCode = 0) { return {oraCode, nativeCode, text}; }
  bool IsOk() const { return OraCode == 0; }
  explicit operator bool() const { return IsOk(); }
  // "ORA-00942: table or view does not exist ..." for the user.
  String Message() const;
};

// ---- Columns ---------------------------------------------------------------

// The declared type of a result column, from which the framework chooses
// the field class.
enum TDbColumnType : uint8_t {
  dcUnknown, dcInteger, dcFloat, dcNumber, dcText, dcFixedText, dcDate, dcDateTime, dcTime,
  dcBoolean, dcBlob, dcClob
};

struct TDbColumn {
  String Name;        // as the statement labels it
  TDbColumnType Type = dcUnknown;
  int Size = 0;       // characters for text, 0 when unknown
  int Precision = 0;  // digits for dcNumber, 0 when unknown
  int Scale = 0;
  bool Nullable = true;
  String TableName;   // source table, when the engine knows it
  String OriginName;  // source column, when the engine knows it
};

// ---- Blocks of rows --------------------------------------------------------

// Rows fetched together and laid out column by column, so that a reader
// makes one call per block rather than several per value and then copies
// each column in a tight loop. A block is reused from call to call.
struct TDbCell {
  TDbKind Kind = dkNull;
  uint32_t Length = 0;  // dkText, dkBlob: bytes in the column's Bytes
  union {
    int64_t Int;        // dkInteger
    double Float;       // dkFloat, dkDate (TDateTime days)
    uint64_t Offset;    // dkText, dkBlob: where the bytes start
  };
  TDbCell() : Int(0) {}
};

struct TDbColumnCells {
  std::vector<TDbCell> Cells;  // one per row of the block
  std::string Bytes;           // text (UTF-8) and blob bytes of the cells

  std::string_view View(const TDbCell& cell) const { return std::string_view(Bytes).substr(cell.Offset, cell.Length); }
  void AddNull() { Cells.emplace_back(); }
  void AddInteger(int64_t v) {
    TDbCell& cell = Cells.emplace_back();
    cell.Kind = dkInteger;
    cell.Int = v;
  }
  // dkFloat or dkDate.
  void AddFloat(TDbKind kind, double v) {
    TDbCell& cell = Cells.emplace_back();
    cell.Kind = kind;
    cell.Float = v;
  }
  // dkText or dkBlob.
  void AddBytes(TDbKind kind, std::string_view v) {
    TDbCell& cell = Cells.emplace_back();
    cell.Kind = kind;
    cell.Offset = Bytes.size();
    cell.Length = static_cast<uint32_t>(v.size());
    Bytes.append(v);
  }
};

struct TDbBlock {
  int Rows = 0;
  std::vector<TDbColumnCells> Columns;

  // Empties the block for `columns` columns, keeping its memory.
  void Reset(int columns);
};

// ---- Statements ------------------------------------------------------------

class TDbStatement {
 public:
  virtual ~TDbStatement() = default;

  // Parameters as written in the text (":NAME" gives "NAME"), each once,
  // in order of first appearance.
  virtual int ParamCount() const = 0;
  virtual String ParamName(int index) const = 0;
  // Binding a name the statement does not have is an error.
  virtual TDbStatus Bind(const String& name, const TDbValue& value) = 0;

  // Runs the statement; a query then stands before its first row. Running
  // again starts over with the values bound at that moment.
  virtual TDbStatus Execute() = 0;
  virtual bool ReturnsRows() const = 0;
  virtual int64_t RowsAffected() const = 0;
  // Values handed back by RETURNING ... INTO :name or by a block's
  // "INTO :name"; Null when the statement gave none.
  virtual TDbValue OutValue(const String& name) const = 0;

  virtual int ColumnCount() const = 0;
  virtual const TDbColumn& Column(int index) const = 0;

  // Moves to the next row; `row` is false at the end.
  virtual TDbStatus Fetch(bool& row) = 0;
  // The current row's values. Views stay valid until the next Fetch.
  virtual TDbKind Kind(int column) const = 0;
  virtual int64_t AsInteger(int column) const = 0;
  virtual double AsFloat(int column) const = 0;  // dates as TDateTime days
  virtual std::string_view AsUtf8(int column) const = 0;
  virtual std::string_view AsBytes(int column) const = 0;

  // Moves through up to `maxRows` rows, as many Fetch calls would, and
  // puts their values into `block`. Fewer rows than asked means the end
  // was reached. The values are those the row readers give: Kind, then
  // AsInteger, AsFloat, AsUtf8 or AsBytes. The default goes through the
  // row readers; a driver overrides it to save the calls per value.
  virtual TDbStatus FetchBlock(TDbBlock& block, int maxRows);

 protected:
  // The loop of FetchBlock with a driver's own reader of one value,
  // `read(column, cells)`, inlined into it.
  template <class ReadCell>
  TDbStatus FetchRowsInto(TDbBlock& block, int maxRows, ReadCell&& read) {
    const int columns = ColumnCount();
    block.Reset(columns);
    while (block.Rows < maxRows) {
      bool row = false;
      TDbStatus status = Fetch(row);
      if (!status) return status;
      if (!row) break;
      for (int c = 0; c < columns; ++c) read(c, block.Columns[static_cast<size_t>(c)]);
      ++block.Rows;
    }
    return TDbStatus::Ok();
  }
};

// ---- Connections -----------------------------------------------------------

struct TDbConnectParams {
  String Driver = u"sqlite";
  String Server;    // for the embedded engine: a file name or ":memory:"
  String Username;
  String Password;
  std::map<String, String> Options;
};

// A function the application or the kit adds to the engine's SQL.
using TDbFunction = std::function<TDbValue(std::span<const TDbValue> args)>;

class TDbConnection {
 public:
  virtual ~TDbConnection() = default;

  virtual TDbStatus Prepare(const String& sql, std::unique_ptr<TDbStatement>& statement) = 0;
  // Runs a statement without parameters and ignores its rows.
  virtual TDbStatus ExecuteDirect(const String& sql);

  virtual TDbStatus StartTransaction() = 0;
  virtual TDbStatus Commit() = 0;
  virtual TDbStatus Rollback() = 0;
  virtual bool InTransaction() const = 0;

  // Makes `name(args...)` callable from SQL; argCount -1 takes any number.
  virtual TDbStatus RegisterFunction(const String& name, int argCount, TDbFunction function) = 0;
  virtual String ServerVersion() const = 0;
};

// Drivers register a factory under their name ("sqlite"); TOraSession
// picks one by TDbConnectParams::Driver.
using TDbDriverFactory = std::function<TDbStatus(const TDbConnectParams&, std::unique_ptr<TDbConnection>&)>;
void RegisterDbDriver(const String& name, TDbDriverFactory factory);
TDbStatus ConnectDb(const TDbConnectParams& params, std::unique_ptr<TDbConnection>& connection);
