// Failures of SQLite as the Oracle errors that mean the same: Oracle's text
// first, the engine's detail after. The shim's own functions raise errors
// whose text already starts with "ORA-nnnnn: "; those keep their number.
#pragma once

#include <string_view>

#include "drivers/sqlite/sqlshim.h"
#include "platform/db/connection.h"

struct sqlite3;

// `verb` tells a foreign-key failure of a child (insert) from one of a
// parent (delete).
TDbStatus MapSqliteError(int code, std::string_view message, TShimVerb verb = svOther);
TDbStatus MapSqliteError(sqlite3* db, int code, TShimVerb verb = svOther);

// "ORA-nnnnn: text" for a function's sqlite3_result_error.
std::string OraText(int oraCode, std::string_view text);

constexpr int kOraGeneric = 600;  // no closer Oracle error: the engine's full text follows
