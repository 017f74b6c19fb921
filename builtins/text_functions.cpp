// Text functions. Positions, lengths and counts are characters of the
// string's own charset. A null argument makes a null result before any check.
#include <unicode/uchar.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "text/charset.h"
#include "text/collation.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr size_t TO_THE_END = std::numeric_limits<size_t>::max();

String empty_in(const Charset* charset) { return String(0, charset); }

// Charsets once loaded live as long as the process: the pointer is kept.
const Charset* windows_1252() {
    static const Charset* const charset = GetCharsetByWindowsCodepage(1252);
    return charset;
}

// Serves the trim strings of ltrim and rtrim from the stack, one argument after another.
struct trim_list_st {
    VmStack* stack;
    unsigned long long first;
    unsigned long long argc;
    unsigned long long next;
};

const String* next_trim_string(void* context) {
    auto* list = static_cast<trim_list_st*>(context);
    if (list->next > list->argc) return nullptr;
    const Variant& value = argument(list->stack, list->next++);
    if (value.tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return &value.str();
}

const String* first_trim_string(void* context) {
    auto* list = static_cast<trim_list_st*>(context);
    list->next = list->first;
    return next_trim_string(context);
}

// Argument 2 as a number is the case flag, and the trim strings follow it.
struct trim_request_st {
    const Collation* collation;
    trim_list_st list;
};

trim_request_st trim_request(VmStack* stack, unsigned long long argc) {
    trim_request_st request{Collation::unicode_machine, {stack, 2, argc, 2}};
    if (argc >= 2 && argument(stack, 2).is_number()) {
        double flag = static_cast<double>(argument(stack, 2));
        if (flag == 1) request.collation = Collation::unicode_machine_ci;
        request.list.first = 3;
    }
    return request;
}

enum TrimSide { TRIM_LEFT = 1, TRIM_RIGHT = 2, TRIM_BOTH = 3 };

void trim_handler(VmStack* stack, unsigned long long argc, Variant* result, TrimSide side) {
    if (any_null_argument(stack, argc)) return result->set_null();
    String text = string_argument(stack, 1);
    if (argc == 1) {
        if (side & TRIM_LEFT) text.ltrim();
        if (side & TRIM_RIGHT) text.rtrim();
        return result->set_string(text);
    }
    trim_request_st request = trim_request(stack, argc);
    if (side & TRIM_LEFT)
        text.ltrim(request.collation, first_trim_string, next_trim_string, &request.list);
    if (side & TRIM_RIGHT)
        text.rtrim(request.collation, first_trim_string, next_trim_string, &request.list);
    result->set_string(text);
}

// `count` copies of a piece's bytes in one buffer.
String repeat_bytes(const String& piece, size_t count) {
    if (count == 0 || piece.size() == 0) return empty_in(piece.get_charset());
    String out(piece.size() * count, piece.get_charset());
    char* p = out.write();
    for (size_t i = 0; i < count; ++i, p += piece.size())
        std::memcpy(p, piece.read(), piece.size());
    return out;
}

// The padding of padl and padr: whole copies of the pad, the last one cut at its end.
String padding(const String& pad, size_t missing) {
    size_t pad_chars = pad.length();
    String whole = repeat_bytes(pad, missing / pad_chars);
    String rest = pad.substr(0, missing % pad_chars);
    Concat joined(pad.get_charset());
    joined.append(whole);
    joined.append(rest);
    return joined.to_string();
}

enum PadSide { PAD_LEFT, PAD_RIGHT };

void pad_handler(VmStack* stack, unsigned long long argc, Variant* result, PadSide side) {
    if (any_null_argument(stack, argc)) return result->set_null();
    const String& text = string_argument(stack, 1);
    long long wanted = std::max(0, integer_argument(stack, 2));
    size_t width = static_cast<size_t>(wanted);
    size_t length = text.length();
    if (length >= width) {
        size_t start = side == PAD_LEFT ? length - width : 0;
        return result->set_string(text.substr(start, width));
    }
    String pad = argc >= 3 ? string_argument(stack, 3) : String(" ");
    if (pad.get_charset() != text.get_charset())
        pad.convert(text.get_charset(), 0, CSTRAN_SUBSTITUTE);
    if (pad.size() == 0) return result->set_string(text);
    Concat joined(text.get_charset());
    if (side == PAD_RIGHT) joined.append(text);
    joined.append(padding(pad, width - length));
    if (side == PAD_LEFT) joined.append(text);
    result->set_string(joined.to_string());
}

// The default word separators; CR LF stands twice, as in the dialect's table.
const const_string_st* default_separators() {
    static const const_string_st separators[] = {
        {" ", " " + 1, Charset::ascii},       {"\t", "\t" + 1, Charset::ascii},
        {"\r\n", "\r\n" + 2, Charset::ascii}, {"\r\n", "\r\n" + 2, Charset::ascii},
        {"\n", "\n" + 1, Charset::ascii},     {"\r", "\r" + 1, Charset::ascii},
    };
    return separators;
}

// The words of argument 1, separated by argument `delimiter` when given.
std::vector<String> _getwordcount(VmStack* stack, unsigned long long argc,
                                  unsigned long long delimiter) {
    const String& text = string_argument(stack, 1);
    std::vector<String> pieces;
    if (argc >= delimiter) {
        const String& separator = string_argument(stack, delimiter);
        if (separator.size() == 0) {
            if (text.size()) pieces.push_back(text);
            return pieces;
        }
        const_string_st needle = separator.as_const();
        text.explode(&needle, 1, false, pieces);
    } else {
        text.explode(default_separators(), 6, false, pieces);
    }
    std::vector<String> words;
    for (const String& piece : pieces)
        if (piece.size()) words.push_back(piece);
    return words;
}

template <UBool (*Test)(UChar32)>
void classify_first_char(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_false();
    const String& text = string_argument(stack, 1);
    if (text.size() == 0) return result->set_false();
    const char* p = text.read();
    result->set_bool(Test(static_cast<UChar32>(text.get_charset()->next(p, text.end()))));
}

}  // namespace

void stackcall_len(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_integer(static_cast<long long>(string_argument(stack, 1).length()));
}

void stackcall_substr(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    const String& text = string_argument(stack, 1);
    int32_t start = integer_argument(stack, 2);
    int32_t count = argc >= 3 ? integer_argument(stack, 3) : 0;
    if (start < 0 || count < 0) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    if (start == 0) return result->set_string(empty_in(text.get_charset()));
    size_t chars = argc >= 3 ? static_cast<size_t>(count) : TO_THE_END;
    result->set_string(text.substr(static_cast<size_t>(start) - 1, chars));
}

void stackcall_left(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    int32_t count = std::max(0, integer_argument(stack, 2));
    result->set_string(string_argument(stack, 1).substr(0, static_cast<size_t>(count)));
}

void stackcall_right(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    const String& text = string_argument(stack, 1);
    long long count = integer_argument(stack, 2);
    long long length = static_cast<long long>(text.length());
    long long start = count >= length ? 0 : length - count;
    result->set_string(text.substr(static_cast<size_t>(start), TO_THE_END));
}

void stackcall_at(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    int32_t occurrence = argc >= 3 ? integer_argument(stack, 3) : 1;
    if (occurrence == 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const String& needle = string_argument(stack, 1);
    size_t index = 0, first = 0, last = 0;
    bool found = occurrence > 0 && needle.size() &&
                 string_argument(stack, 2).strstr(needle.as_const(), index, first, last,
                                                  static_cast<size_t>(occurrence) - 1);
    result->set_integer(found ? static_cast<long long>(index) + 1 : 0LL);
}

void stackcall_upper(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_string(string_argument(stack, 1).upper());
}

void stackcall_lower(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_string(string_argument(stack, 1).lower());
}

void stackcall_ltrim(VmStack* stack, unsigned long long argc, Variant* result) {
    trim_handler(stack, argc, result, TRIM_LEFT);
}

void stackcall_rtrim(VmStack* stack, unsigned long long argc, Variant* result) {
    trim_handler(stack, argc, result, TRIM_RIGHT);
}

void stackcall_alltrim(VmStack* stack, unsigned long long argc, Variant* result) {
    trim_handler(stack, argc, result, TRIM_BOTH);
}

void stackcall_space(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    int32_t count = std::max(0, integer_argument(stack, 1));
    const Charset* charset = default_charset(stack);
    if (argc >= 2) {
        charset = get_charset_by_name(string_argument(stack, 2));
        if (!charset) throw RuntimeError(ERR_CHARSET_NOT_SUPPORTED);
    }
    String blank(" ");
    try {
        blank.convert(charset, 0, CSTRAN_STRICT);
    } catch (const cstran_chars_lost&) {
        throw RuntimeError(ERR_CHARSET_TRANSLATION);
    }
    result->set_string(repeat_bytes(blank, static_cast<size_t>(count)));
}

void stackcall_replicate(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    int32_t count = std::max(0, integer_argument(stack, 2));
    result->set_string(repeat_bytes(string_argument(stack, 1), static_cast<size_t>(count)));
}

void stackcall_chr(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    long long code = argument(stack, 1).integer;
    if (code < 0 || code > 255) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    result->set_string(String::single_byte(static_cast<unsigned char>(code), windows_1252()));
}

void stackcall_asc(VmStack* stack, unsigned long long, Variant* result) {
    String text = string_argument(stack, 1);
    text.convert(windows_1252(), 0, CSTRAN_SUBSTITUTE);
    result->set_integer(text.size() ? static_cast<long long>(static_cast<uint8_t>(*text.read()))
                                    : 0LL);
}

void stackcall_concat(VmStack* stack, unsigned long long argc, Variant* result) {
    Concat joined;
    for (unsigned long long i = 1; i <= argc; ++i) {
        const Variant& piece = argument(stack, i);
        if (is_null_argument(piece)) return result->set_null();
        joined.append(piece.str());
    }
    result->set_string(joined.to_string());
}

void stackcall_padl(VmStack* stack, unsigned long long argc, Variant* result) {
    pad_handler(stack, argc, result, PAD_LEFT);
}

void stackcall_padr(VmStack* stack, unsigned long long argc, Variant* result) {
    pad_handler(stack, argc, result, PAD_RIGHT);
}

void stackcall_strtran(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    const String& text = string_argument(stack, 1);
    const String& find = string_argument(stack, 2);
    if (find.size() == 0) return result->set_string(text);
    String replacement = argc >= 3 ? string_argument(stack, 3) : empty_in(find.get_charset());
    result->set_string(text.strtran(find.as_const(), replacement.as_const()));
}

void stackcall_chrtran(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    if (any_null_argument(stack, argc)) return result->set_null();
    const String& text = string_argument(stack, 1);
    const String& from = string_argument(stack, 2);
    const String& to = string_argument(stack, 3);
    if (from.size() == 0) return result->set_string(text);
    std::vector<const_string_st> needles, replacements;
    const char* f = from.read();
    const char* t = to.read();
    while (f != from.end()) {
        const char* begin = f;
        from.get_charset()->next(f, from.end());
        needles.push_back({begin, f, from.get_charset()});
        const char* to_begin = t;
        if (t != to.end()) to.get_charset()->next(t, to.end());
        replacements.push_back({to_begin, t, to.get_charset()});
    }
    result->set_string(text.strmultitran(needles.data(), needles.size(), replacements.data()));
}

void stackcall_getwordcount(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_integer(static_cast<long long>(_getwordcount(stack, argc, 2).size()));
}

void stackcall_getwordnum(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    int32_t n = integer_argument(stack, 2);
    if (n <= 0) return result->set_string(empty_in(default_charset(stack)));
    std::vector<String> words = _getwordcount(stack, argc, 3);
    if (static_cast<size_t>(n) > words.size())
        return result->set_string(empty_in(string_argument(stack, 1).get_charset()));
    result->set_string(words[static_cast<size_t>(n) - 1]);
}

void stackcall_isalnum(VmStack* stack, unsigned long long argc, Variant* result) {
    classify_first_char<u_isalnum>(stack, argc, result);
}
void stackcall_isalpha(VmStack* stack, unsigned long long argc, Variant* result) {
    classify_first_char<u_isalpha>(stack, argc, result);
}
void stackcall_isdigit(VmStack* stack, unsigned long long argc, Variant* result) {
    classify_first_char<u_isdigit>(stack, argc, result);
}
void stackcall_islower(VmStack* stack, unsigned long long argc, Variant* result) {
    classify_first_char<u_islower>(stack, argc, result);
}
void stackcall_isupper(VmStack* stack, unsigned long long argc, Variant* result) {
    classify_first_char<u_isupper>(stack, argc, result);
}
void stackcall_isgraph(VmStack* stack, unsigned long long argc, Variant* result) {
    classify_first_char<u_isgraph>(stack, argc, result);
}

// Each word's first letter in upper case, the others in lower; words are
// separated by white space. Without a text, the empty string.
void stackcall_proper(VmStack* stack, unsigned long long argc, Variant* result) {
    if (argc == 0) return result->set_string(empty_in(default_charset(stack)));
    const String& text = string_argument(stack, 1);
    std::u32string chars;
    bool word_start = true;
    for (const char* p = text.read(); p != text.end();) {
        UChar32 c = static_cast<UChar32>(text.get_charset()->next(p, text.end()));
        chars += static_cast<char32_t>(word_start ? u_toupper(c) : u_tolower(c));
        word_start = u_isspace(c);
    }
    String out(chars.c_str());
    out.convert(text.get_charset(), 0, CSTRAN_SUBSTITUTE);
    result->set_string(out);
}

// Only mode 15, bytes to hexadecimal digits, exists.
void stackcall_strconv(VmStack* stack, unsigned long long, Variant* result) {
    if (argument(stack, 2).integer != 15) throw RuntimeError(ERR_NOT_AVAILABLE);
    const String& text = string_argument(stack, 1);
    String hex = stringToEncodedHexBinary(text);
    hex.convert(text.get_charset(), 0, CSTRAN_SUBSTITUTE);
    result->set_string(hex);
}

}  // namespace zobase
