// The Oracle dialect shim: turns one statement of the kit's Oracle SQL into
// what SQLite runs, once per Prepare.
//
// What it rewrites: ":NAME" parameters (case-insensitive, one value per
// name) into numbered ones; "seq.NEXTVAL"/"seq.CURRVAL"; bare SYSDATE;
// MINUS; "FOR UPDATE [OF ...] [NOWAIT]" (dropped: SQLite locks the whole
// database anyway); "RETURNING ... INTO :x" (the INTO part is taken out
// and its targets kept); "pkg.func(" calls (the package is dropped);
// comparisons of a column with a 'DD.MM.YYYY' literal; binary + and - into
// calls that know dates, "/" into a division that keeps fractions and
// refuses zero, and the operands of products and signs into checks that
// refuse dates (Oracle's date and number arithmetic); COMMIT, ROLLBACK,
// CREATE/DROP SEQUENCE, CREATE/DROP SYNONYM; and the two PL/SQL block shapes
// the kit itself generates. Functions (NVL, DECODE, TO_DATE...) and the
// dictionary views are the engine's, not rewritten here.
//
// Anything it cannot run as Oracle means it fails with an ORA- status;
// it reads only inside the text and ends on any input.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/db/connection.h"

enum TShimVerb : uint8_t { svSelect, svInsert, svUpdate, svDelete, svOther };

// One statement as SQLite runs it.
struct TShimStep {
  std::string Sql;          // parameters written ?1..?n
  TShimVerb Verb = svOther;
  std::vector<int> Params;  // ?i+1 takes the value of program parameter Params[i]
  // RETURNING ... INTO or SELECT ... INTO: result column i goes to program
  // parameter Into[i]. A SELECT ... INTO must give exactly one row.
  std::vector<int> Into;
  bool SelectInto = false;
};

enum TShimKind : uint8_t {
  skStatement,       // Steps holds one statement
  skBlock,           // BEGIN ... END: Steps run in order, INTO values carried forward
  skCreateSequence,  // Object, Start, Increment
  skDropSequence,    // Object
  skCreateSynonym,   // Object for Target
  skDropSynonym,     // Object
  skCommit,
  skRollback,
};

struct TShimProgram {
  TShimKind Kind = skStatement;
  bool Autonomous = false;  // "declare PRAGMA AUTONOMOUS_TRANSACTION;begin ... commit;end;"
  // Parameter names as first written (UTF-8), each once, compared without case.
  std::vector<std::string> Params;
  std::vector<TShimStep> Steps;
  std::string Object;  // sequence or synonym name as Oracle keeps it (unquoted names in upper case)
  std::string TargetOwner, Target;
  int64_t Start = 1, Increment = 1;
  bool Replace = false;  // CREATE OR REPLACE
};

TDbStatus TranslateSql(std::string_view sql, TShimProgram& program);

// Upper-cases ASCII letters: how Oracle folds unquoted names.
std::string FoldName(std::string_view name);
// The text as an SQL string literal, quotes doubled.
std::string SqlLiteral(std::string_view text);
