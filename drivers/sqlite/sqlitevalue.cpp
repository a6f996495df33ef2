#include "drivers/sqlite/sqlitevalue.h"

#include <sqlite3.h>

#include <string>

#include "drivers/sqlite/datetext.h"

namespace {

// Reads one value through `source`, which offers Type, Int, Real, Text and
// Bytes of a column or a function argument; the type is asked first, before
// any accessor could convert the value.
template <typename Source>
TDbValue ReadValue(const Source& source) {
  switch (source.Type()) {
    case SQLITE_INTEGER:
      return TDbValue::Integer(source.Int());
    case SQLITE_FLOAT:
      return TDbValue::FloatValue(source.Real());
    case SQLITE_TEXT: {
      const std::string_view s = source.Text();
      double days = 0;
      if (LooksLikeStoredDate(s) && StoredDateToDays(s, days)) return TDbValue::Date(days);
      return TDbValue::TextValue(String::FromUtf8(s));
    }
    case SQLITE_BLOB:
      return TDbValue::Blob(std::string(source.Bytes()));
    default:
      return TDbValue::Null();
  }
}

struct TColumnSource {
  sqlite3_stmt* s;
  int c;
  int Type() const { return sqlite3_column_type(s, c); }
  int64_t Int() const { return sqlite3_column_int64(s, c); }
  double Real() const { return sqlite3_column_double(s, c); }
  std::string_view Text() const {
    const char* text = reinterpret_cast<const char*>(sqlite3_column_text(s, c));
    return std::string_view(text ? text : "", static_cast<size_t>(sqlite3_column_bytes(s, c)));
  }
  std::string_view Bytes() const {
    const char* bytes = static_cast<const char*>(sqlite3_column_blob(s, c));
    return std::string_view(bytes ? bytes : "", static_cast<size_t>(sqlite3_column_bytes(s, c)));
  }
};

struct TArgumentSource {
  sqlite3_value* v;
  int Type() const { return sqlite3_value_type(v); }
  int64_t Int() const { return sqlite3_value_int64(v); }
  double Real() const { return sqlite3_value_double(v); }
  std::string_view Text() const {
    const char* text = reinterpret_cast<const char*>(sqlite3_value_text(v));
    return std::string_view(text ? text : "", static_cast<size_t>(sqlite3_value_bytes(v)));
  }
  std::string_view Bytes() const {
    const char* bytes = static_cast<const char*>(sqlite3_value_blob(v));
    return std::string_view(bytes ? bytes : "", static_cast<size_t>(sqlite3_value_bytes(v)));
  }
};

}  // namespace

int BindDbValue(sqlite3_stmt* statement, int index, const TDbValue& value) {
  switch (value.Kind) {
    case dkInteger:
      return sqlite3_bind_int64(statement, index, value.Int);
    case dkFloat:
      return sqlite3_bind_double(statement, index, value.Float);
    case dkText:
      if (value.Text.IsEmpty()) return sqlite3_bind_null(statement, index);
      return sqlite3_bind_text16(statement, index, value.Text.c_str(), value.Text.Length() * 2, SQLITE_TRANSIENT);
    case dkDate: {
      const std::string text = FormatStoredDate(value.Float);
      return sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
    }
    case dkBlob:
      return sqlite3_bind_blob(statement, index, value.Bytes.data(), static_cast<int>(value.Bytes.size()),
                               SQLITE_TRANSIENT);
    default:
      return sqlite3_bind_null(statement, index);
  }
}

TDbValue DbValueFromColumn(sqlite3_stmt* statement, int column) { return ReadValue(TColumnSource{statement, column}); }

TDbValue DbValueFromSqlite(sqlite3_value* value) { return ReadValue(TArgumentSource{value}); }

void ResultDbValue(sqlite3_context* context, const TDbValue& value) {
  switch (value.Kind) {
    case dkInteger:
      return sqlite3_result_int64(context, value.Int);
    case dkFloat:
      return sqlite3_result_double(context, value.Float);
    case dkText:
      return sqlite3_result_text16(context, value.Text.c_str(), value.Text.Length() * 2, SQLITE_TRANSIENT);
    case dkDate: {
      const std::string text = FormatStoredDate(value.Float);
      return sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
    }
    case dkBlob:
      return sqlite3_result_blob(context, value.Bytes.data(), static_cast<int>(value.Bytes.size()), SQLITE_TRANSIENT);
    default:
      return sqlite3_result_null(context);
  }
}
