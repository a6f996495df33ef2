// Oracle column declarations (NUMBER(12,2), VARCHAR2(40), DATE...) as the
// dictionary views report them and as result columns are typed.
#pragma once

#include <string>
#include <string_view>

#include "platform/db/connection.h"

struct TOraColumnType {
  std::string Name;         // DATA_TYPE: NUMBER, VARCHAR2, CHAR, DATE, CLOB, BLOB, FLOAT; empty when undeclared
  TDbColumnType Kind = dcUnknown;
  int Length = 0;           // DATA_LENGTH
  int Precision = -1;       // DATA_PRECISION, -1 when none
  int Scale = -1;           // DATA_SCALE, -1 when none
};

TOraColumnType ParseColumnType(std::string_view declared);
