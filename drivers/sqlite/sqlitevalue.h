// TDbValue to and from SQLite's values: binds, function arguments and
// results, and values handed back through INTO.
#pragma once

#include "platform/db/connection.h"

struct sqlite3_stmt;
struct sqlite3_value;
struct sqlite3_context;

// Empty text binds as NULL, as Oracle has it; a date binds as stored text.
int BindDbValue(sqlite3_stmt* statement, int index, const TDbValue& value);
// Text in the stored date form comes back as dkDate.
TDbValue DbValueFromColumn(sqlite3_stmt* statement, int column);
TDbValue DbValueFromSqlite(sqlite3_value* value);
void ResultDbValue(sqlite3_context* context, const TDbValue& value);
