#pragma once
// The keyword table: words that the scanner hands to the parser as keyword
// tokens instead of plain words. Look-up is case-insensitive by Unicode.
#include <cstddef>
#include <cstdint>

#include "frontend/token.h"

namespace zobase {

struct keyword_st {
    const char32_t* name;
    uint32_t abbreviation;  // shortest accepted prefix in characters, 0 for none
};

constexpr size_t KEYWORD_COUNT = 234;

// The rows in table order; row i has the token ParserToken::keyword_first + i.
const keyword_st* keyword_rows() noexcept;

// Token number of a keyword row's name, e.g. keyword_token(U"ZAP").
uint32_t keyword_token(const char32_t* name);

// True with the token number when the text is a keyword or an accepted abbreviation.
bool lookup_keyword(const char* begin, const char* end, const Charset* charset, uint32_t& token);

}  // namespace zobase
