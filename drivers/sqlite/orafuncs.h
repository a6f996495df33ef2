// The Oracle functions the shim adds to every SQLite connection: NVL, NVL2,
// DECODE, TO_DATE, TO_CHAR, TO_NUMBER, Unicode UPPER/LOWER, TRUNC, ROUND,
// ADD_MONTHS, LPAD, RPAD, INSTR, SUBSTR, MOD, GREATEST, LEAST, CHR, SIGN,
// FLOOR, CEIL, POWER, sys_context, and the shim's own helpers for
// sequences, date literals, date arithmetic and the dictionary
// views.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "platform/db/connection.h"

struct sqlite3;

// What one session shares between its connections (the session's own and
// the one that runs its autonomous transactions).
struct TShimSession {
  std::string User;                         // upper case, "KELMAR" when none was given
  std::map<std::string, int64_t> CurrVal;   // sequence -> last NEXTVAL of this session
};

// `session` must outlive the connection.
void RegisterOracleFunctions(sqlite3* db, TShimSession* session);
// A function of the application; "pkg.name" registers as "name", since the
// shim drops package prefixes from calls.
TDbStatus RegisterDbFunction(sqlite3* db, const String& name, int argCount, const TDbFunction& function);

// Where the shim keeps sequences: one row per sequence, the next value to hand out.
constexpr const char* kSequenceTable = "kelmar_sequences";
