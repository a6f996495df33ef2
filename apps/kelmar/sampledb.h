// The sample business database of the demo and the benchmarks, written
// through the driver port in the kit's Oracle SQL, so that it runs on any
// engine: goods, partners, a chart of accounts with six-digit codes,
// documents (DOCS) with their lines (DOC_LINES.DOC_ID), and the sequence
// ID_TMDB_CM for new keys. Names are Romanian and Russian. Every value comes
// from a fixed generator: two runs give the same database.
#pragma once

#include "platform/db/connection.h"

// The benchmark table: ID, CODE, NAME, AMOUNT (float), QTY (integer), MADE
// (date) and NOTE (40 characters).
inline constexpr const char16_t* kRowsTable = u"BENCH_ROWS";

// Creates the sample tables that are missing, and, when `rows` is above 0,
// BENCH_ROWS with exactly that many rows (rebuilt when it holds another
// number). Returns the first failure.
TDbStatus CreateSampleDatabase(TDbConnection& db, int rows = 0);
