#include "platform/db/connection.h"

#include <cstdio>

#include "platform/rtl/sysutils.h"

String TDbStatus::Message() const {
  if (IsOk()) return String();
  char code[16];
  std::snprintf(code, sizeof code, "ORA-%05d: ", OraCode);
  return String(code) + Text;
}

TDbStatus TDbConnection::ExecuteDirect(const String& sql) {
  std::unique_ptr<TDbStatement> statement;
  TDbStatus status = Prepare(sql, statement);
  if (!status) return status;
  status = statement->Execute();
  if (!status || !statement->ReturnsRows()) return status;
  bool row = true;
  while (status && row) status = statement->Fetch(row);
  return status;
}

void TDbBlock::Reset(int columns) {
  Rows = 0;
  Columns.resize(static_cast<size_t>(columns));
  for (TDbColumnCells& c : Columns) {
    c.Cells.clear();
    c.Bytes.clear();
  }
}

TDbStatus TDbStatement::FetchBlock(TDbBlock& block, int maxRows) {
  return FetchRowsInto(block, maxRows, [this](int c, TDbColumnCells& cells) {
    switch (const TDbKind kind = Kind(c)) {
      case dkNull: cells.AddNull(); break;
      case dkInteger: cells.AddInteger(AsInteger(c)); break;
      case dkFloat:
      case dkDate: cells.AddFloat(kind, AsFloat(c)); break;
      case dkText: cells.AddBytes(kind, AsUtf8(c)); break;
      case dkBlob: cells.AddBytes(kind, AsBytes(c)); break;
    }
  });
}

namespace {
std::map<String, TDbDriverFactory>& Drivers() {
  static std::map<String, TDbDriverFactory> drivers;
  return drivers;
}
}  // namespace

void RegisterDbDriver(const String& name, TDbDriverFactory factory) { Drivers()[LowerCase(name)] = std::move(factory); }

TDbStatus ConnectDb(const TDbConnectParams& params, std::unique_ptr<TDbConnection>& connection) {
  auto it = Drivers().find(LowerCase(params.Driver));
  if (it == Drivers().end())
    return TDbStatus::Error(12154, u"TNS:could not resolve the connect identifier specified (no driver \"" +
                                       params.Driver + u"\")");
  return it->second(params, connection);
}
