#include "drivers/sqlite/oraerrors.h"

#include <sqlite3.h>

#include <cstdio>
#include <string>

namespace {

bool StartsWith(std::string_view s, std::string_view prefix) { return s.substr(0, prefix.size()) == prefix; }

// The part behind "failed: " of a constraint message, in upper case.
std::string ConstraintName(std::string_view message) {
  const size_t at = message.find("failed: ");
  return at == std::string_view::npos ? std::string() : FoldName(message.substr(at + 8));
}

TDbStatus Make(int ora, const std::string& oracle, std::string_view detail, int native) {
  return TDbStatus::Error(ora, String(oracle) + u" (" + String::FromUtf8(detail) + u")", native);
}

// "near "FROM": syntax error": a missing expression when the parser stopped
// where an expression should have stood.
int SyntaxCode(std::string_view message) {
  if (message.find("incomplete input") != std::string_view::npos) return 936;
  const size_t near = message.find("near \"");
  if (near == std::string_view::npos) return 900;
  std::string word;
  for (size_t i = near + 6; i < message.size() && message[i] != '"'; ++i) word += message[i];
  word = FoldName(word);
  return word == "FROM" || word == "WHERE" || word == ")" || word == "," || word == "ORDER" || word == "GROUP" ? 936
                                                                                                                : 933;
}

}  // namespace

std::string OraText(int oraCode, std::string_view text) {
  char code[16];
  std::snprintf(code, sizeof code, "ORA-%05d: ", oraCode);
  return code + std::string(text);
}

TDbStatus MapSqliteError(int code, std::string_view m, TShimVerb verb) {
  // An error raised by the shim's own functions carries its number.
  if (m.size() > 11 && StartsWith(m, "ORA-") && m[9] == ':') {
    int ora = 0;
    for (size_t i = 4; i < 9; ++i) ora = ora * 10 + (m[i] >= '0' && m[i] <= '9' ? m[i] - '0' : 0);
    return TDbStatus::Error(ora, String::FromUtf8(m.substr(11)), code);
  }
  switch (code) {
    case SQLITE_CONSTRAINT_UNIQUE:
    case SQLITE_CONSTRAINT_PRIMARYKEY:
      return Make(1, "unique constraint (" + ConstraintName(m) + ") violated", m, code);
    case SQLITE_CONSTRAINT_NOTNULL: {
      std::string column = ConstraintName(m);
      const size_t dot = column.find('.');
      if (dot != std::string::npos) column = column.substr(0, dot) + "\".\"" + column.substr(dot + 1);
      return Make(1400, "cannot insert NULL into (\"" + column + "\")", m, code);
    }
    case SQLITE_CONSTRAINT_CHECK:
      return Make(2290, "check constraint (" + ConstraintName(m) + ") violated", m, code);
    case SQLITE_CONSTRAINT_FOREIGNKEY:
      return verb == svDelete ? Make(2292, "integrity constraint violated - child record found", m, code)
                              : Make(2291, "integrity constraint violated - parent key not found", m, code);
    case SQLITE_ABORT_ROLLBACK:
      return Make(1002, "fetch out of sequence", m, code);
    case SQLITE_READONLY:
      return Make(16000, "database open for read-only access", m, code);
    case SQLITE_CANTOPEN:
      return Make(1157, "cannot identify/lock data file", m, code);
    case SQLITE_FULL:
      return Make(1653, "unable to extend table", m, code);
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
      return Make(1578, "data block corrupted", m, code);
    default:
      break;
  }
  switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Make(54, "resource busy and acquire with NOWAIT specified or timeout expired", m, code);
    case SQLITE_CONSTRAINT:
      return Make(1, "unique constraint violated", m, code);
    case SQLITE_INTERRUPT:
      return Make(1013, "user requested cancel of current operation", m, code);
    default:
      break;
  }
  if (StartsWith(m, "no such table") || StartsWith(m, "no such view"))
    return Make(942, "table or view does not exist", m, code);
  if (StartsWith(m, "no such column") || StartsWith(m, "no such function")) {
    const size_t colon = m.find(": ");
    const std::string name = colon == std::string_view::npos ? std::string() : FoldName(m.substr(colon + 2));
    return Make(904, "\"" + name + "\": invalid identifier", m, code);
  }
  if (m.find("syntax error") != std::string_view::npos || m.find("incomplete input") != std::string_view::npos) {
    const int ora = SyntaxCode(m);
    return Make(ora, ora == 936 ? "missing expression" : ora == 933 ? "SQL command not properly ended"
                                                                    : "invalid SQL statement",
                m, code);
  }
  if (m.find("already exists") != std::string_view::npos)
    return Make(955, "name is already used by an existing object", m, code);
  if (StartsWith(m, "wrong number of arguments")) return Make(909, "invalid number of arguments", m, code);
  if (m.find("ambiguous column name") != std::string_view::npos)
    return Make(918, "column ambiguously defined", m, code);
  int values = 0, columns = 0;
  if (std::sscanf(std::string(m).c_str(), "%d values for %d columns", &values, &columns) == 2)
    return values > columns ? Make(913, "too many values", m, code) : Make(947, "not enough values", m, code);
  char prefix[64];
  std::snprintf(prefix, sizeof prefix, "internal error code, arguments: [sqlite %d]", code);
  return Make(kOraGeneric, prefix, m, code);
}

TDbStatus MapSqliteError(sqlite3* db, int code, TShimVerb verb) {
  return MapSqliteError(code, db ? sqlite3_errmsg(db) : sqlite3_errstr(code), verb);
}
