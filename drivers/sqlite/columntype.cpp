#include "drivers/sqlite/columntype.h"

#include <cstdlib>

#include "drivers/sqlite/sqlshim.h"

namespace {

// "NAME ( a [, b] )" split into its upper-case name and numbers.
void Split(std::string_view decl, std::string& name, int& a, int& b) {
  const size_t open = decl.find('(');
  std::string_view head = decl.substr(0, open);
  while (!head.empty() && head.back() == ' ') head.remove_suffix(1);
  while (!head.empty() && head.front() == ' ') head.remove_prefix(1);
  name = FoldName(head);
  a = b = -1;
  if (open == std::string_view::npos) return;
  const std::string args(decl.substr(open + 1));
  char* end = nullptr;
  a = static_cast<int>(std::strtol(args.c_str(), &end, 10));
  while (*end == ' ') ++end;
  if (*end == ',') b = static_cast<int>(std::strtol(end + 1, nullptr, 10));
}

}  // namespace

TOraColumnType ParseColumnType(std::string_view declared) {
  TOraColumnType t;
  std::string name;
  int a = -1, b = -1;
  Split(declared, name, a, b);
  if (name.empty()) return t;
  if (name == "NUMBER" || name == "NUMERIC" || name == "DECIMAL") {
    t.Name = "NUMBER";
    t.Length = 22;
    if (a > 0) {
      t.Precision = a;
      t.Scale = b < 0 ? 0 : b;
      t.Kind = t.Scale == 0 ? dcInteger : dcNumber;
    } else {
      t.Kind = dcFloat;
    }
  } else if (name == "INTEGER" || name == "INT" || name == "SMALLINT" || name == "BIGINT") {
    t.Name = "NUMBER";
    t.Length = 22;
    t.Scale = 0;
    t.Kind = dcInteger;
  } else if (name == "FLOAT" || name == "REAL" || name == "DOUBLE" || name == "DOUBLE PRECISION" ||
             name == "BINARY_DOUBLE" || name == "BINARY_FLOAT") {
    t.Name = "FLOAT";
    t.Length = 22;
    t.Precision = a > 0 ? a : 126;
    t.Kind = dcFloat;
  } else if (name == "VARCHAR2" || name == "VARCHAR" || name == "NVARCHAR2" || name == "TEXT") {
    t.Name = "VARCHAR2";
    t.Length = a > 0 ? a : 4000;
    t.Kind = dcText;
  } else if (name == "CHAR" || name == "NCHAR" || name == "CHARACTER") {
    t.Name = "CHAR";
    t.Length = a > 0 ? a : 1;
    t.Kind = dcFixedText;
  } else if (name == "DATE" || name == "DATETIME" || name.rfind("TIMESTAMP", 0) == 0) {
    t.Name = "DATE";
    t.Length = 7;
    t.Kind = dcDateTime;
  } else if (name == "CLOB" || name == "NCLOB" || name == "LONG") {
    t.Name = "CLOB";
    t.Length = 4000;
    t.Kind = dcClob;
  } else if (name == "BLOB" || name == "RAW" || name == "LONG RAW") {
    t.Name = "BLOB";
    t.Length = a > 0 ? a : 4000;
    t.Kind = dcBlob;
  } else {
    t.Name = name;
  }
  return t;
}
