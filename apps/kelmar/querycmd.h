// kelmar query: opens a TVeskODACQuery composed from a table, conditions
// and a sort over a database file, and prints its rows and summaries.
//
//   kelmar query --db FILE --table T [--alias A] [--where TEXT]
//                [--sys-filter TEXT] [--order TEXT]
//                [--summary "FIELD=2,sum;..."] [--show-sql]
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

// The usage line of the command, for the application's help.
extern const char* const kQueryUsage;

// Runs the command with the arguments that follow "query". Output goes to
// `out`, errors to `err`; returns 0, 1 for a failure, 2 for bad arguments.
int RunQueryCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
