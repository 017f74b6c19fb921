#pragma once
// Tokens as the scanner cuts them and as the parser receives them.
#include <cstdint>
#include <vector>

#include "base/document_location.h"
#include "values/string.h"

namespace zobase {

// Kinds that tokenize produces. Punctuation tokens carry their character's code.
enum TokenKind : uint32_t {
    TOKEN_LINE_END = 10,
    TOKEN_BLANK = 32,
    TOKEN_WORD = 1024,
    TOKEN_HEX_BINARY = 1025,
    TOKEN_OTHER_CHAR = 1026,
    TOKEN_DIGITS = 1028,
    TOKEN_HEX_INTEGER = 1029,
};

// Token numbers as the parser sees them. Scoped so that they never clash
// with the names the parser generator declares for the same numbers.
enum class ParserToken : int {
    end_of_range = 0,
    other_char = 258,
    start_statement = 259,
    start_macro = 260,
    start_text = 261,
    start_expression = 262,
    start_operand = 263,
    // Keyword tokens: keyword_first + the row of the keyword table
    // (keywords.h, same order as listed there), up to keyword_last.
    keyword_first = 264,
    keyword_last = 498,
    hex_binary = 499,
    hex_integer = 500,
    word = 501,
    digits = 502,
};

// The lexeme points into the source text, which must outlive the token.
struct token_st {
    uint32_t type;
    scan_string_st value;
    document_location_st location;
};

typedef std::vector<token_st> token_vector;

// Pieces of one literal as the grammar collected them (digit runs, the point);
// empty pieces are skipped when joined. Continued lines may join any number
// of digit runs. The parser's semantic value holds a pointer to it, which
// keeps that value, and so every parser stack entry, small.
struct scan_string_list_st {
    std::vector<scan_string_st> items;

    void add(const scan_string_st& piece) { items.push_back(piece); }
    void append(const scan_string_list_st& other) {
        items.insert(items.end(), other.items.begin(), other.items.end());
    }
};

}  // namespace zobase
