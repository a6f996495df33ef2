// kelmar query: opens a TVeskODACQuery composed from a table, conditions
// and a sort over a database file, and prints its rows and summaries.
//
//   kelmar query --db FILE --table T [--alias A] [--where TEXT]
//                [--sys-filter TEXT] [--order TEXT]
//                [--summary "FIELD=2,sum;..."] [--filter "FIELD=condition"]...
//                [--show-sql]
//
// Each --filter puts a condition on one field in the filter value language
// (">3", "1 2", ">=5,<=9", "ap"), as a person types it into the find/filter
// dialogue: text compares whole, ignoring case. A bad number or date is
// told on the error stream as the dialogue's message box would tell it.
// --show-sql prints the statement as the filters left it.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

// The usage line of the command, for the application's help.
extern const char* const kQueryUsage;

// Runs the command with the arguments that follow "query". Output goes to
// `out`, errors to `err`; returns 0, 1 for a failure, 2 for bad arguments.
int RunQueryCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
