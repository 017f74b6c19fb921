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
    keyword_last = 495,
    hex_binary = 496,
    hex_integer = 497,
    word = 498,
    digits = 499,
};

// The lexeme points into the source text, which must outlive the token.
struct token_st {
    uint32_t type;
    scan_string_st value;
    document_location_st location;
};

typedef std::vector<token_st> token_vector;

// Pieces of one literal as the grammar collected them (digit runs, the point);
// empty pieces are skipped when joined. Plain data so that it can live in the
// parser's semantic value; a literal never has more than a handful of pieces.
struct scan_string_list_st {
    static constexpr uint32_t capacity = 6;
    uint32_t count;
    scan_string_st items[capacity];

    void add(const scan_string_st& piece);
};

}  // namespace zobase
