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
