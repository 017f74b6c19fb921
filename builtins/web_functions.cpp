// Helpers of web-facing programs: http.urlencode, http.urldecode,
// http.parsequery, http.header, html.escape and mime.header. Text goes out as UTF-8.
#include <cctype>
#include <map>
#include <string>
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/base64.h"
#include "builtins/handlers.h"
#include "builtins/utf8_text.h"
#include "objects/object.h"
#include "text/charset.h"
#include "vm/call_resolver.h"
#include "vm/runtime_services.h"
#include "vm/screen.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr char HEX_DIGITS[] = "0123456789ABCDEF";
constexpr char REPLACEMENT_CHARACTER[] = "\xEF\xBF\xBD";
// RFC 2047: an encoded word is at most 75 characters; "=?UTF-8?B?" and "?="
// leave 63 for base64, which carries 45 bytes in 60 characters.
constexpr size_t MIME_WORD_BYTES = 45;

std::string utf8_argument(VmStack* stack, unsigned long long i) {
    String text = string_argument(stack, i);
    if (text.get_charset() != Charset::utf8 && text.get_charset() != Charset::binary)
        text.convert(Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    return std::string(text.read(), text.size());
}

void set_utf8(Variant* result, const std::string& text) {
    result->set_string(String::fromBytes(text.data(), text.size(), Charset::utf8));
}

bool is_unreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
           c == '.' || c == '~';
}

int hex_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Bytes that aren't well-formed UTF-8 become U+FFFD, one for each.
std::string well_formed(const std::string& bytes) {
    std::string text;
    const char* end = bytes.data() + bytes.size();
    for (const char* p = bytes.data(); p < end;) {
        size_t length = utf8_sequence_length(p, end);
        if (length) text.append(p, length);
        else text += REPLACEMENT_CHARACTER;
        p += length ? length : 1;
    }
    return text;
}

// A header field name is a token: letters, digits and !#$%&'*+-.^_`|~.
bool is_token(const std::string& name) {
    static const std::string extra = "!#$%&'*+-.^_`|~";
    if (name.empty()) return false;
    for (unsigned char c : name)
        if (!std::isalnum(c) && extra.find(static_cast<char>(c)) == std::string::npos) return false;
    return true;
}

// A field value: visible characters, blanks and tabs; never a line end,
// which would let the text start a header of its own.
bool is_field_value(const std::string& value) {
    for (unsigned char c : value)
        if ((c < 0x20 && c != '\t') || c == 0x7F) return false;
    return true;
}

bool needs_mime_encoding(const std::string& text) {
    for (unsigned char c : text)
        if (c < 0x20 || c > 0x7E) return true;
    return text.find("=?") != std::string::npos;
}

std::string url_decoded(const std::string& text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '+') {
            bytes += ' ';
        } else if (text[i] == '%' && i + 2 < text.size() && hex_value(text[i + 1]) >= 0 && hex_value(text[i + 2]) >= 0) {
            bytes += static_cast<char>(hex_value(text[i + 1]) * 16 + hex_value(text[i + 2]));
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return well_formed(bytes);
}

// A name of a query with its values, in the order names first appear.
struct query_pair_st {
    std::string name;
    std::vector<std::string> values;
    bool is_list = false;  // written "name[]"
};

std::vector<query_pair_st> query_pairs(const std::string& query) {
    std::vector<query_pair_st> pairs;
    std::map<std::string, size_t> known;
    size_t start = !query.empty() && query[0] == '?' ? 1 : 0;
    while (start <= query.size()) {
        size_t end = query.find('&', start);
        if (end == std::string::npos) end = query.size();
        std::string pair = query.substr(start, end - start);
        start = end + 1;
        size_t equals = pair.find('=');
        std::string name = url_decoded(pair.substr(0, equals));
        std::string value = equals == std::string::npos ? std::string() : url_decoded(pair.substr(equals + 1));
        bool is_list = name.size() > 2 && name.compare(name.size() - 2, 2, "[]") == 0;
        if (is_list) name.resize(name.size() - 2);
        if (name.empty()) continue;
        auto [found, fresh] = known.emplace(name, pairs.size());
        if (fresh) pairs.push_back({name, {}, is_list});
        query_pair_st& entry = pairs[found->second];
        if (is_list != entry.is_list || !is_list) entry.values.clear();
        entry.is_list = is_list;
        entry.values.push_back(value);
    }
    return pairs;
}

}  // namespace

// http.urlencode(text): every byte of the UTF-8 text but A-Z a-z 0-9 - _ . ~
// as %XX, so the result fits a path or a query alike (a blank is %20).
void stackcall_http_urlencode(VmStack* stack, unsigned long long, Variant* result) {
    std::string encoded;
    for (unsigned char c : utf8_argument(stack, 1)) {
        if (is_unreserved(c)) {
            encoded += static_cast<char>(c);
        } else {
            encoded += '%';
            encoded += HEX_DIGITS[c >> 4];
            encoded += HEX_DIGITS[c & 15];
        }
    }
    set_utf8(result, encoded);
}

// http.urldecode(text): %XX to its byte and "+" to a blank; a "%" without
// two hex digits stays as it is.
void stackcall_http_urldecode(VmStack* stack, unsigned long long, Variant* result) {
    set_utf8(result, url_decoded(utf8_argument(stack, 1)));
}

// http.parsequery(text): the pairs of a query ("a=1&b=x+y", a leading "?"
// skipped) as an Empty object with one property per name, its value the
// decoded text ("" for a pair without "="). A name given again keeps the
// later value; "name[]" gathers its values, in order, in an array property
// "name". Pairs with an empty name are skipped.
void stackcall_http_parsequery(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    std::vector<query_pair_st> pairs = query_pairs(utf8_argument(stack, 1));
    std::vector<String> names;
    std::vector<Variant> values;
    names.reserve(pairs.size());
    values.reserve(pairs.size());
    std::vector<new_property_st> properties;
    try {
        for (const query_pair_st& pair : pairs) {
            names.push_back(String::fromBytes(pair.name.data(), pair.name.size(), Charset::utf8));
            values.emplace_back();
            if (!pair.is_list) {
                set_utf8(&values.back(), pair.values.back());
            } else {
                Array* array = values.back().dimension(stack, pair.values.size(), 0);
                for (size_t i = 0; i < pair.values.size(); ++i) set_utf8(array->write(stack, i + 1), pair.values[i]);
            }
            if (!stack->resolver) raise_not_available("http.parsequery");
            properties.push_back({stack->resolver->symbolize(names.back()), &names.back(), &values.back()});
        }
        Object* object = create_empty_object(stack, result);
        add_properties(stack, object, properties.data(), properties.size());
    } catch (...) {
        for (Variant& value : values) value.release(stack);
        throw;
    }
    for (Variant& value : values) value.release(stack);
}

// http.header("Name: value" [, last]): writes the header line to the output;
// with `last` the empty line that ends the headers follows. A line that is
// no header field (a bad name, a line end in the value) is 11.
void stackcall_http_header(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    std::string line = utf8_argument(stack, 1);
    size_t colon = line.find(':');
    if (colon == std::string::npos || !is_token(line.substr(0, colon)) || !is_field_value(line.substr(colon + 1)))
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    bool last = argc >= 2 && argument(stack, 2).tag == TAG_TRUE;
    if (!stack->services) raise_not_available("http.header");
    stack->services->screen()->out(String((line + (last ? "\r\n\r\n" : "\r\n")).c_str()));
    result->set_true();
}

// html.escape(text): & < > " ' as entities, for text placed in HTML.
void stackcall_html_escape(VmStack* stack, unsigned long long, Variant* result) {
    std::string escaped;
    for (char c : utf8_argument(stack, 1)) {
        switch (c) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '"': escaped += "&quot;"; break;
        case '\'': escaped += "&#39;"; break;
        default: escaped += c;
        }
    }
    set_utf8(result, escaped);
}

// mime.header(text): printable ASCII as it is; other text as RFC 2047
// encoded words (UTF-8, base64), each of at most 75 characters, never
// splitting a character, folded onto lines of their own.
void stackcall_mime_header(VmStack* stack, unsigned long long, Variant* result) {
    std::string text = utf8_argument(stack, 1);
    if (!needs_mime_encoding(text)) return set_utf8(result, text);
    text = well_formed(text);
    std::string encoded;
    const char* end = text.data() + text.size();
    for (const char* p = text.data(); p < end;) {
        const char* word_end = p;
        while (word_end < end) {
            size_t length = utf8_sequence_length(word_end, end);
            if (static_cast<size_t>(word_end + length - p) > MIME_WORD_BYTES) break;
            word_end += length;
        }
        if (!encoded.empty()) encoded += "\r\n ";
        encoded += "=?UTF-8?B?" + base64_encode(p, static_cast<size_t>(word_end - p)) + "?=";
        p = word_end;
    }
    set_utf8(result, encoded);
}

}  // namespace zobase
