#include "frontend/scanner.h"

#include <memory>

#include <unicode/uchar.h>

#include "base/call_trace.h"
#include "frontend/keywords.h"
#include "frontend/syntax_tree.h"
#include "text/charset.h"
#include "values/error.h"

namespace zobase {

namespace {

constexpr char32_t REPLACEMENT_CHARACTER = 0xFFFD;

// Walks the text one character at a time and keeps the position of the
// character about to be read.
class TextCursor {
public:
    TextCursor(const char* begin, const char* end, const Charset* charset)
        : p_(begin), begin_(begin), end_(end), charset_(charset),
          ascii_fast_(charset == Charset::utf8 || charset == Charset::ascii) {
        position_ = {0, 0, 1, 1};
    }

    bool at_end() const noexcept { return p_ >= end_; }
    const char* pointer() const noexcept { return p_; }
    const document_position_st& position() const noexcept { return position_; }

    char32_t peek() const {
        const char* q = p_;
        return decode(q);
    }

    char32_t take() {
        char32_t c = decode(p_);
        position_.offset_chars++;
        position_.column++;
        position_.offset_bytes = static_cast<uint32_t>(p_ - begin_);
        return c;
    }

    void new_line() noexcept {
        position_.line++;
        position_.column = 1;
    }

private:
    char32_t decode(const char*& q) const {
        if (q >= end_) return 0;
        if (ascii_fast_ && static_cast<unsigned char>(*q) < 0x80) return static_cast<char32_t>(*q++);
        return charset_->next(q, end_);
    }

    const char* p_;
    const char* begin_;
    const char* end_;
    const Charset* charset_;
    bool ascii_fast_;
    document_position_st position_;
};

bool is_hex_digit(char32_t c) noexcept {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool is_word_start(char32_t c) noexcept {
    return c == '_' || c == REPLACEMENT_CHARACTER || u_isalpha(static_cast<UChar32>(c));
}

bool is_word_part(char32_t c) noexcept {
    return c == '_' || c == REPLACEMENT_CHARACTER || u_isalnum(static_cast<UChar32>(c));
}

bool is_punctuation(char32_t c) noexcept {
    return (c >= 0x21 && c <= 0x2F) || (c >= 0x3A && c <= 0x40) || (c >= 0x5B && c <= 0x5E) ||
           c == 0x7B || c == 0x7D;
}

void take_while(TextCursor& cursor, bool (*predicate)(char32_t)) {
    while (!cursor.at_end() && predicate(cursor.peek())) cursor.take();
}

bool is_blank(char32_t c) noexcept { return u_isblank(static_cast<UChar32>(c)); }
bool is_digit(char32_t c) noexcept { return u_isdigit(static_cast<UChar32>(c)); }

// The pairs CR LF and LF CR are one line end; CR CR is two.
void take_line_end(TextCursor& cursor, char32_t first) {
    char32_t partner = first == '\r' ? '\n' : '\r';
    if (!cursor.at_end() && cursor.peek() == partner) cursor.take();
    cursor.new_line();
}

// Reads the token that starts with `c`, already taken, and returns its kind.
uint32_t scan_token(TextCursor& cursor, char32_t c) {
    if (c == '\r' || c == '\n') {
        take_line_end(cursor, c);
        return TOKEN_LINE_END;
    }
    if (c == '\t' || c == ' ') {
        take_while(cursor, is_blank);
        return TOKEN_BLANK;
    }
    if (c == '0' && !cursor.at_end()) {
        char32_t marker = cursor.peek();
        if (marker == 'h' || marker == 'H' || marker == 'x' || marker == 'X') {
            cursor.take();
            take_while(cursor, is_hex_digit);
            return (marker == 'h' || marker == 'H') ? TOKEN_HEX_BINARY : TOKEN_HEX_INTEGER;
        }
    }
    if (c >= '0' && c <= '9') {
        take_while(cursor, is_digit);
        return TOKEN_DIGITS;
    }
    if (is_word_start(c)) {
        take_while(cursor, is_word_part);
        return TOKEN_WORD;
    }
    if (is_punctuation(c)) return c;
    return TOKEN_OTHER_CHAR;
}

}  // namespace

void tokenize(const char* begin, const char* end, const Charset* charset, token_vector& tokens) {
    ZO_TRACE();
    size_t unit = charset->min_char() ? charset->min_char() : 1;
    tokens.reserve(tokens.size() + static_cast<size_t>(end - begin) / unit / 2);
    TextCursor cursor(begin, end, charset);
    while (!cursor.at_end()) {
        token_st token;
        token.location.start = cursor.position();
        const char* lexeme = cursor.pointer();
        token.type = scan_token(cursor, cursor.take());
        token.location.end = cursor.position();
        token.value = {lexeme, 0, charset, static_cast<size_t>(cursor.pointer() - lexeme)};
        tokens.push_back(token);
    }
}

void tokenize(const String& text, token_vector& tokens) {
    tokenize(text.read(), text.end(), text.get_charset(), tokens);
}

Scanner::Scanner(const token_st* begin, const token_st* end, const token_st& start_token) noexcept
    : next_(&Scanner::lex_bootstrap), start_token_(start_token), current_(begin), end_(end) {}

int Scanner::lex_bootstrap(scan_string_st& value, document_location_st& location) {
    next_ = &Scanner::lex_token;
    value = start_token_.value;
    location = start_token_.location;
    return static_cast<int>(start_token_.type);
}

int Scanner::lex_token(scan_string_st& value, document_location_st& location) {
    if (current_ == end_) return static_cast<int>(ParserToken::end_of_range);
    const token_st& token = *current_++;
    value = token.value;
    location = token.location;
    switch (token.type) {
        case TOKEN_WORD: {
            uint32_t number;
            return is_keyword(token, number) ? static_cast<int>(number)
                                             : static_cast<int>(ParserToken::word);
        }
        case TOKEN_HEX_BINARY: return static_cast<int>(ParserToken::hex_binary);
        case TOKEN_OTHER_CHAR: return static_cast<int>(ParserToken::other_char);
        case TOKEN_DIGITS: return static_cast<int>(ParserToken::digits);
        case TOKEN_HEX_INTEGER: return static_cast<int>(ParserToken::hex_integer);
        default:
            if (token.type < 1024) return static_cast<int>(token.type);
            throw tokenizer_returned_unsupported_token_type_exception();
    }
}

bool Scanner::is_keyword(const token_st& token, uint32_t& number) {
    const scan_string_st& v = token.value;
    return lookup_keyword(v.begin, v.begin + v.size, v.charset, number);
}

int Scanner::parse_macro_endl(const document_location_st&, std::vector<MacroItem>* items,
                              std::vector<MacroItem>*& result) {
    ZO_TRACE();
    std::unique_ptr<std::vector<MacroItem>> pieces(items);
    auto joined = std::make_unique<std::vector<MacroItem>>();
    bool has_variable = false;
    size_t i = 0;
    while (i < pieces->size()) {
        const MacroItem& first = (*pieces)[i];
        if (first.kind == 'V') {
            joined->push_back(first);
            has_variable = true;
            ++i;
            continue;
        }
        Concat text(first.text.get_charset());
        document_location_st location = first.location;
        for (; i < pieces->size() && (*pieces)[i].kind != 'V'; ++i) {
            text.append((*pieces)[i].text);
            location.end = (*pieces)[i].location.end;
        }
        joined->push_back(MacroItem{'S', text.to_string(), location});
    }
    if (!has_variable) {
        result = nullptr;
        return 10;
    }
    result = joined.release();
    return 0;
}

}  // namespace zobase
