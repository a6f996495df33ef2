// The commands of the terminal application. Each writes its output to
// `out`, its errors to `err`, and returns the process exit code.
#pragma once

#include <iosfwd>
#include <string>

// Creates the sample business database in `file` when it is missing (or
// lacks tables) and lists its tables with their row counts.
int RunDemo(const std::string& file, int rows, std::ostream& out, std::ostream& err);

// Runs one statement on the database in `file`: a query prints its rows as
// a table, anything else the number of rows it changed. The file must
// exist.
int RunSql(const std::string& file, const std::string& sql, std::ostream& out, std::ostream& err);
