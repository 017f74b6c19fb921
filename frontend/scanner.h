#pragma once
// The scanner: cuts source text into small tokens in one pass, and hands the
// tokens of one logical line to the parser, words turned into keywords.
#include <cstdint>
#include <vector>

#include "frontend/token.h"
#include "values/string.h"

namespace zobase {

class Charset;
struct MacroItem;

// Appends the tokens of [begin, end) to `tokens`. Never fails: undecodable
// bytes become word characters.
void tokenize(const char* begin, const char* end, const Charset* charset, token_vector& tokens);
void tokenize(const String& text, token_vector& tokens);

// The parser's token source for one parse over a range of tokens.
class Scanner {
public:
    typedef int (Scanner::*lex_function)(scan_string_st& value, document_location_st& location);

    // `start_token` carries the start token number (ParserToken::start_*) and the
    // location reported for it.
    Scanner(const token_st* begin, const token_st* end, const token_st& start_token) noexcept;

    // What the parser calls for each token: lex_bootstrap first, lex_token afterwards.
    int lex(scan_string_st& value, document_location_st& location) {
        return (this->*next_)(value, location);
    }
    int lex_bootstrap(scan_string_st& value, document_location_st& location);
    int lex_token(scan_string_st& value, document_location_st& location);

    // The keyword look-up of lex_token, for a word token.
    static bool is_keyword(const token_st& token, uint32_t& number);

    // Joins the pieces of a macro line that the grammar collected ('S' raw
    // text, 'V' a variable) so that runs of text become one item. Takes
    // `items`. Returns 0 with the list in `result`, or 10 with `result` null
    // when the line has no variable after all.
    static int parse_macro_endl(const document_location_st& location, std::vector<MacroItem>* items,
                                std::vector<MacroItem>*& result);

    // Prepares text for display in diagnostics: printable characters as they
    // are, anything else as "<XX>" per source byte. The result is UTF-32.
    static String canoncializeDocumentContent(String text);

    const token_st* position() const noexcept { return current_; }

private:
    lex_function next_;
    token_st start_token_;
    const token_st* current_;
    const token_st* end_;
};

}  // namespace zobase
