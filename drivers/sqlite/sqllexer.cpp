#include "drivers/sqlite/sqllexer.h"

namespace {

bool IsBlank(unsigned char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }
bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }
bool IsWordStart(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c >= 0x80; }
bool IsWordChar(unsigned char c) { return IsWordStart(c) || IsDigit(c) || c == '$' || c == '#'; }

constexpr std::string_view kPairs[] = {"<=", ">=", "<>", "!=", "^=", "||", ":=", "=>"};
constexpr std::string_view kSingles = "(),.;+-*/=<>%";

TDbStatus Invalid(std::string_view sql, size_t at) {
  return TDbStatus::Error(911, u"invalid character at offset " + String(std::to_string(at)) + u" (\"" +
                                   String::FromUtf8(sql.substr(at, 1)) + u"\")");
}

// Scans a run closed by `quote`, where a doubled quote stands for one.
// Returns the offset behind the closing quote, or npos.
size_t ScanQuoted(std::string_view sql, size_t at, char quote, bool doubling) {
  for (size_t i = at + 1; i < sql.size(); ++i) {
    if (sql[i] != quote) continue;
    if (doubling && i + 1 < sql.size() && sql[i + 1] == quote) {
      ++i;
      continue;
    }
    return i + 1;
  }
  return std::string_view::npos;
}

size_t ScanWord(std::string_view sql, size_t at) {
  while (at < sql.size() && IsWordChar(static_cast<unsigned char>(sql[at]))) ++at;
  return at;
}

size_t ScanDigits(std::string_view sql, size_t at) {
  while (at < sql.size() && IsDigit(static_cast<unsigned char>(sql[at]))) ++at;
  return at;
}

size_t ScanNumber(std::string_view sql, size_t at) {
  size_t i = ScanDigits(sql, at);
  if (i < sql.size() && sql[i] == '.') i = ScanDigits(sql, i + 1);
  if (i < sql.size() && (sql[i] == 'e' || sql[i] == 'E')) {
    size_t j = i + 1;
    if (j < sql.size() && (sql[j] == '+' || sql[j] == '-')) ++j;
    if (j < sql.size() && IsDigit(static_cast<unsigned char>(sql[j]))) i = ScanDigits(sql, j);
  }
  return i;
}

}  // namespace

TDbStatus LexSql(std::string_view sql, std::vector<TToken>& tokens) {
  tokens.clear();
  bool space = false;
  size_t i = 0;
  while (i < sql.size()) {
    const unsigned char c = static_cast<unsigned char>(sql[i]);
    const char next = i + 1 < sql.size() ? sql[i + 1] : '\0';
    if (IsBlank(c)) {
      space = true;
      ++i;
      continue;
    }
    if (c == '-' && next == '-') {
      while (i < sql.size() && sql[i] != '\n' && sql[i] != '\r') ++i;
      space = true;
      continue;
    }
    if (c == '/' && next == '*') {
      const size_t close = sql.find("*/", i + 2);
      if (close == std::string_view::npos) return TDbStatus::Error(1742, u"comment not properly terminated");
      i = close + 2;
      space = true;
      continue;
    }
    TToken token;
    token.SpaceBefore = space;
    space = false;
    size_t end = i + 1;
    if (c == '\'') {
      end = ScanQuoted(sql, i, '\'', true);
      if (end == std::string_view::npos) return TDbStatus::Error(1756, u"quoted string not properly terminated");
      token.Kind = tkString;
      token.Name = sql.substr(i + 1, end - i - 2);
    } else if (c == '"') {
      end = ScanQuoted(sql, i, '"', false);
      if (end == std::string_view::npos) return TDbStatus::Error(1740, u"missing double quote in identifier");
      if (end == i + 2) return TDbStatus::Error(1741, u"illegal zero-length identifier");
      token.Kind = tkQuoted;
      token.Name = sql.substr(i + 1, end - i - 2);
    } else if (IsWordStart(c)) {
      end = ScanWord(sql, i);
      token.Kind = tkWord;
      token.Name = sql.substr(i, end - i);
    } else if (IsDigit(c) || (c == '.' && IsDigit(static_cast<unsigned char>(next)))) {
      end = ScanNumber(sql, i);
      token.Kind = tkNumber;
      token.Name = sql.substr(i, end - i);
    } else if (c == ':' && next == '"') {
      end = ScanQuoted(sql, i + 1, '"', false);
      if (end == std::string_view::npos) return TDbStatus::Error(1740, u"missing double quote in identifier");
      if (end == i + 3) return TDbStatus::Error(1741, u"illegal zero-length identifier");
      token.Kind = tkParam;
      token.Name = sql.substr(i + 2, end - i - 3);
    } else if (c == ':' && IsWordChar(static_cast<unsigned char>(next))) {
      end = ScanWord(sql, i + 1);
      token.Kind = tkParam;
      token.Name = sql.substr(i + 1, end - i - 1);
    } else {
      token.Kind = tkSymbol;
      end = 0;
      for (std::string_view pair : kPairs)
        if (sql.substr(i, 2) == pair) end = i + 2;
      if (end == 0) {
        if (kSingles.find(static_cast<char>(c)) == std::string_view::npos) return Invalid(sql, i);
        end = i + 1;
      }
      token.Name = sql.substr(i, end - i);
    }
    token.Text = sql.substr(i, end - i);
    tokens.push_back(token);
    i = end;
  }
  return TDbStatus::Ok();
}

bool IsKeyword(const TToken& token, std::string_view keyword) {
  if (token.Kind != tkWord || token.Name.size() != keyword.size()) return false;
  for (size_t i = 0; i < keyword.size(); ++i) {
    char c = token.Name[i];
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (c != keyword[i]) return false;
  }
  return true;
}

bool IsSymbol(const TToken& token, std::string_view symbol) { return token.Kind == tkSymbol && token.Name == symbol; }
