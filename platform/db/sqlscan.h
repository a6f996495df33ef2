// Scanning SQL text for ":name" parameters and "&name" macros.
//
// Quoted literals ('...'), quoted identifiers ("..."), line comments (--)
// and block comments (/* */) are skipped; "::" (a cast) and ":=" (a PL/SQL
// assignment) are not parameters. A parameter name is a run of letters,
// digits, "_", "$" and "#", or a quoted name (:"Name"). Names are compared
// without regard to case.
#pragma once

#include <functional>
#include <vector>

#include "platform/rtl/ustring.h"

struct TSqlPlace {
  enum TKind { Param, Macro } Kind;
  String Name;
  int Start;   // 1-based position of the ':' or '&'
  int Length;  // of the whole place, marker included
};

// Every parameter and macro place in order of appearance.
std::vector<TSqlPlace> ScanSqlPlaces(const String& sql);

// Names of the places of one kind, each once, in order of first appearance.
std::vector<String> SqlPlaceNames(const std::vector<TSqlPlace>& places, TSqlPlace::TKind kind);

// The text with each macro place replaced by what `value` gives for its
// name; parameters and everything else stay as written.
String ExpandSqlMacros(const String& sql, const std::function<String(const String& name)>& value);

// True when the trimmed text begins with "WHERE" as a word: a refresh
// statement written as a condition of the base query.
bool IsWhereClauseOnly(const String& sql);
