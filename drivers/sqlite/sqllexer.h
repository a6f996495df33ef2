// Tokens of the Oracle SQL the kit writes, as the dialect shim reads them.
// Blanks and comments are dropped (a token remembers whether any stood
// before it), so line ends of any kind and "--" comments closed by a lone
// "\r" read the same.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/db/connection.h"

enum TTokenKind : uint8_t {
  tkWord,    // identifier or keyword
  tkQuoted,  // "identifier"
  tkString,  // 'literal'
  tkNumber,
  tkParam,   // :NAME or :"NAME"
  tkSymbol,  // operators and punctuation
};

struct TToken {
  TTokenKind Kind = tkSymbol;
  bool SpaceBefore = false;
  std::string_view Text;  // as written, quotes included
  std::string_view Name;  // word, quoted identifier or parameter without its marks; literal's inside
};

// Fails with ORA-01756 / ORA-01740 for an unterminated literal or quoted
// name, ORA-00911 for a character the dialect does not have.
TDbStatus LexSql(std::string_view sql, std::vector<TToken>& tokens);

// Case-insensitive test of a word token against an upper-case keyword.
bool IsKeyword(const TToken& token, std::string_view keyword);
bool IsSymbol(const TToken& token, std::string_view symbol);
