// Prints a dataset as an aligned text table: a header of field names, a
// rule, one line per record with each field's DisplayText, numbers to the
// right, and the count of rows.
#pragma once

#include <string>

class TDataSet;

// The whole table as UTF-8; the dataset is read from its first record to
// its end and left on its last.
std::string FormatTable(TDataSet* dataSet);
