#include "frontend/literals.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <unicode/uchar.h>

#include "base/call_trace.h"
#include "frontend/scanner.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/money.h"

namespace zobase {

namespace {

// The pieces as ASCII text; anything outside ASCII cannot be part of a
// number and becomes '?', which the conversions then reject.
std::string join_ascii(const scan_string_list_st& pieces) {
    std::string text;
    for (const scan_string_st& piece : pieces.items) {
        const char* p = piece.begin;
        const char* end = piece.begin + piece.size;
        while (p < end) {
            char32_t c = piece.charset->next(p, end);
            text.push_back(c < 0x80 ? static_cast<char>(c) : '?');
        }
    }
    return text;
}

// Bytes of the pieces as they are, for parsers that read the charset themselves.
std::string join_bytes(const scan_string_list_st& pieces) {
    std::string text;
    for (const scan_string_st& piece : pieces.items) text.append(piece.begin, piece.size);
    return text;
}

const char* skip_leading_zeros(const char* p) {
    while (*p == '0') ++p;
    return p;
}

unsigned hex_value(char32_t c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c - 'A' + 10;
}

void put_utf32(char*& out, char32_t c) {
    std::memcpy(out, &c, sizeof c);
    out += sizeof c;
}

void put_byte_escape(char*& out, unsigned char byte) {
    static const char digits[] = "0123456789ABCDEF";
    put_utf32(out, U'<');
    put_utf32(out, static_cast<char32_t>(digits[byte >> 4]));
    put_utf32(out, static_cast<char32_t>(digits[byte & 15]));
    put_utf32(out, U'>');
}

}  // namespace

bool create_integer(const scan_string_list_st& pieces, integer_type_st& value) {
    ZO_TRACE();
    std::string joined = join_ascii(pieces);
    const char* text = skip_leading_zeros(joined.c_str());
    char* stop = nullptr;
    errno = 0;
    long long number = std::strtoll(text, &stop, 10);
    size_t number_chars = 0;
    if (stop == text) {
        number = 0;
    } else if (*stop == '\0' || *stop == '.') {
        number_chars = static_cast<size_t>(stop - text);
    } else {
        number = 0;
    }
    value = number;
    char printed[32];
    std::snprintf(printed, sizeof printed, "%lld", number);
    return std::strncmp(printed, text, number_chars) == 0;
}

bool create_integer_from_hex(const scan_string_list_st& pieces, integer_type_st& value) {
    ZO_TRACE();
    std::string joined = join_ascii(pieces);
    const char* text = joined.c_str();
    char* stop = nullptr;
    errno = 0;
    unsigned long long number = std::strtoull(text, &stop, 16);
    if (stop == text || *stop != '\0' || errno == ERANGE) return false;
    value = static_cast<integer_type_st>(number);
    return true;
}

bool create_numeric(const scan_string_list_st& pieces, numeric_type_st& value) {
    ZO_TRACE();
    std::string joined = join_ascii(pieces);
    char buffer[256];
    if (joined.size() >= sizeof buffer) throw copy_buffer_too_small(String(joined.c_str()));
    std::memcpy(buffer, joined.c_str(), joined.size() + 1);
    const char* text = skip_leading_zeros(buffer);
    const char* point = std::strchr(text, '.');
    value.decimals = point ? std::strlen(point + 1) : 0;
    value.value = std::strtod(text, nullptr);
    return true;
}

bool create_money(const scan_string_list_st& pieces, money_type_st& value) {
    if (pieces.items.empty()) return false;
    std::string text = join_bytes(pieces);
    return string_to_money(text.data(), text.size(), pieces.items[0].charset, &value, U'.', 0) == 0;
}

bool create_money(const String& text, money_type_st& value) {
    return string_to_money(text.read(), text.size(), text.get_charset(), &value, U'.', 0) == 0;
}

String create_binary_const_string(const document_location_st&, const scan_string_st& lexeme) {
    ZO_TRACE();
    const char* begin = lexeme.begin;
    const char* end = lexeme.begin + lexeme.size;
    lexeme.charset->next(begin, end);
    lexeme.charset->next(begin, end);
    size_t count = lexeme.charset->count_chars(begin, end);
    String result((count + 1) / 2, Charset::binary);
    if (count == 0) return result;
    char* out = result.write();
    bool high = count % 2 == 0;
    unsigned byte = 0;
    while (begin < end) {
        unsigned nibble = hex_value(lexeme.charset->next(begin, end));
        byte = high ? nibble << 4 : byte | nibble;
        if (!high) *out++ = static_cast<char>(byte);
        high = !high;
    }
    return result;
}

String Scanner::canoncializeDocumentContent(String text) {
    ZO_TRACE();
    String result(text.size() * 16, Charset::utf32le);
    if (text.size() == 0) return result;
    char* out = result.write();
    char* const out_begin = out;
    const Charset* charset = text.get_charset();
    const char* p = text.read();
    const char* end = text.end();
    while (p < end) {
        const char* char_begin = p;
        char32_t c = charset->next(p, end);
        if (c != 0xFFFD && u_isprint(static_cast<UChar32>(c))) {
            put_utf32(out, c);
            continue;
        }
        for (const char* b = char_begin; b < p; ++b) put_byte_escape(out, static_cast<unsigned char>(*b));
    }
    result.resize(static_cast<size_t>(out - out_begin));
    return result;
}

}  // namespace zobase
