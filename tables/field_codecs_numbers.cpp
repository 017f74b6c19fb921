// Number fields: I (4-byte integer), Y (currency), B (double), and N and F,
// which keep their numbers as right-aligned text.
#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale.h>

#include "base/error_numbers.h"
#include "tables/byte_order.h"
#include "tables/field_codecs.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/money.h"
#include "values/variant.h"

namespace zobase {

namespace {

// Numeric text longer than this is not read.
constexpr size_t NUMERIC_TEXT_LIMIT = 99;
constexpr size_t MEMO_NUMBER_TEXT_LIMIT = 50;
// "%.255f" of the largest double, with room for a sign and the padding.
constexpr size_t NUMBER_TEXT_CAPACITY = 1024;

int32_t checked_int32(__int128 value) {
    if (value > std::numeric_limits<int32_t>::max()) raise_overflow(true);
    if (value < std::numeric_limits<int32_t>::min()) raise_overflow(false);
    return static_cast<int32_t>(value);
}

int64_t checked_int64(__int128 value) {
    if (value > std::numeric_limits<int64_t>::max()) raise_overflow(true);
    if (value < std::numeric_limits<int64_t>::min()) raise_overflow(false);
    return static_cast<int64_t>(value);
}

// Half away from zero, in whole units of 10000.
__int128 round_money_to_whole(__int128 units) {
    __int128 whole = units / MONEY_SCALE;
    __int128 rest = units % MONEY_SCALE;
    if (2 * rest >= MONEY_SCALE) ++whole;
    if (-2 * rest >= MONEY_SCALE) --whole;
    return whole;
}

// The 64-bit value widened to money as it is: no range check, so a stored
// value outside the money range still reads, and only arithmetic refuses it.
money_type_st money_of_int64(int64_t units) {
    money_type_st m;
    m.high = units < 0 ? -1 : 0;
    m.mid = static_cast<uint32_t>(static_cast<uint64_t>(units) >> 32);
    m.low = static_cast<uint32_t>(units);
    m.unused = 0;
    return m;
}

void store_int32(const DbfField* field, char* record, int32_t value) {
    write_le32(record + field->offset, static_cast<uint32_t>(value));
}

// ---- I

void get_variant_from_integer4_field(DbfFile*, const DbfField* field, const char* record,
                                     Variant* out) {
    out->set_integer(static_cast<int32_t>(read_le32(record + field->offset)));
}

// Rounded, and converted without a range check: a value outside 32 bits
// keeps its low 32 bits, one that is not finite gives the lowest integer.
void set_integer4_from_numeric_rnd(DbfFile*, const DbfField* field, const numeric_type_st& value,
                                   char* record) {
    double whole = std::round(value.value);
    int64_t wide = std::isfinite(whole) && std::fabs(whole) < 9.2e18 ? static_cast<int64_t>(whole)
                                                                       : INT32_MIN;
    store_int32(field, record, static_cast<int32_t>(static_cast<uint32_t>(wide)));
}

void set_integer4_from_money_rnd(DbfFile*, const DbfField* field, const money_type_st& value,
                                 char* record) {
    store_int32(field, record, checked_int32(round_money_to_whole(money_to_i128(value))));
}

// ---- Y

int64_t currency_units(const DbfField* field, const char* record) {
    return static_cast<int64_t>(read_le64(record + field->offset));
}

void store_currency(const DbfField* field, char* record, __int128 units) {
    write_le64(record + field->offset, static_cast<uint64_t>(checked_int64(units)));
}

void get_variant_from_currency_field(DbfFile*, const DbfField* field, const char* record,
                                     Variant* out) {
    out->set(money_of_int64(currency_units(field, record)));
}

// The digits least significant first, four of them, the point, the rest,
// a sign for any value that is not positive, all reversed: 12345 gives
// "1.2345", 5000 ".5000", and 0 "-.0000".
void get_chars_from_currency_field(DbfFile* table, const DbfField* field, const char* record,
                                   char* out, uint64_t* length, const Charset** charset) {
    int64_t units = currency_units(field, record);
    uint64_t magnitude = units < 0 ? 0 - static_cast<uint64_t>(units) : static_cast<uint64_t>(units);
    char text[32];
    size_t n = 0;
    for (int i = 0; i < 4; ++i, magnitude /= 10) text[n++] = static_cast<char>('0' + magnitude % 10);
    text[n++] = '.';
    for (; magnitude; magnitude /= 10) text[n++] = static_cast<char>('0' + magnitude % 10);
    if (units <= 0) text[n++] = '-';
    std::reverse(text, text + n);
    copy_chars_out(table, String::fromBytes(text, n, Charset::utf8), out, length, charset);
}

void set_money_from_integer(DbfFile*, const DbfField* field, const integer_type_st& value,
                            char* record) {
    store_currency(field, record, static_cast<__int128>(value) * MONEY_SCALE);
}

void set_money_from_numeric(DbfFile*, const DbfField* field, const numeric_type_st& value,
                            char* record) {
    store_currency(field, record, money_to_i128(money_from_double(value.value)));
}

void set_money_from_money(DbfFile*, const DbfField* field, const money_type_st& value,
                          char* record) {
    store_currency(field, record, money_to_i128(value));
}

// ---- B

void store_double(const DbfField* field, char* record, double value) {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    write_le64(record + field->offset, bits);
}

void get_variant_from_double_field(DbfFile*, const DbfField* field, const char* record,
                                   Variant* out) {
    uint64_t bits = read_le64(record + field->offset);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    out->set_float(value, field->decimals);
}

void set_double_from_integer(DbfFile*, const DbfField* field, const integer_type_st& value,
                             char* record) {
    store_double(field, record, static_cast<double>(value));
}

void set_double_from_numeric(DbfFile*, const DbfField* field, const numeric_type_st& value,
                             char* record) {
    store_double(field, record, value.value);
}

void set_double_from_money(DbfFile*, const DbfField* field, const money_type_st& value,
                           char* record) {
    store_double(field, record, money_to_double(value));
}

// ---- N and F

// The common form of a numeric field, digits with an optional sign and
// point up to the end of the field, read without the general parser: up to
// 15 digits are exact as an integer, and one division by an exact power of
// ten rounds correctly, so the result is the one from_chars gives.
bool parse_plain_decimal(const char* p, const char* end, double* out) {
    static const double powers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8,
                                    1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    bool negative = p < end && *p == '-';
    if (negative) ++p;
    uint64_t mantissa = 0;
    int digits = 0, decimals = -1;
    for (; p < end; ++p) {
        if (*p >= '0' && *p <= '9') {
            mantissa = mantissa * 10 + static_cast<uint64_t>(*p - '0');
            if (++digits > 15) return false;
            if (decimals >= 0) ++decimals;
        } else if (*p == '.' && decimals < 0) {
            decimals = 0;
        } else {
            return false;
        }
    }
    if (digits == 0) return false;
    double value = static_cast<double>(mantissa) / powers[decimals < 0 ? 0 : decimals];
    *out = negative ? -value : value;
    return true;
}

// Reads like strtod in the C locale, whatever locale the host set: blanks
// first, then the longest number; text that is no number reads as 0.
double parse_number_text(const char* text, size_t size) {
    const char* p = text;
    const char* end = text + size;
    while (p < end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) ++p;
    if (p < end && *p == '+') {
        ++p;
        if (p < end && *p == '-') return 0;
    }
    double value = 0;
    if (parse_plain_decimal(p, end, &value)) return value;
    std::from_chars_result read = std::from_chars(p, end, value);
    if (read.ec == std::errc()) return value;
    if (read.ec != std::errc::result_out_of_range) return 0;
    // Beyond the range of double: strtod's infinity or zero.
    static locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
    std::string copy(p, end);
    return strtod_l(copy.c_str(), nullptr, c_locale);
}

void get_variant_from_numeric_field(DbfFile*, const DbfField* field, const char* record,
                                    Variant* out) {
    size_t size = std::min<size_t>(field->length, NUMERIC_TEXT_LIMIT);
    out->set_float(parse_number_text(record + field->offset, size), field->decimals);
}

void set_numeric_from_numeric(DbfFile*, const DbfField* field, const numeric_type_st& value,
                              char* record) {
    write_numeric_text(value.value, record + field->offset, field->length, field->decimals, true);
}

void set_numeric_from_money(DbfFile*, const DbfField* field, const money_type_st& value,
                            char* record) {
    write_numeric_text(money_to_double(value), record + field->offset, field->length,
                       field->decimals, true);
}

}  // namespace

void set_integer4_from_integer(DbfFile*, const DbfField* field, const integer_type_st& value,
                               char* record) {
    store_int32(field, record, checked_int32(value));
}

void get_integer_from_integer4(DbfFile*, const DbfField* field, const char* record,
                               integer_type_st* out) {
    *out = read_le32(record + field->offset);
}

void set_numeric_from_integer(DbfFile*, const DbfField* field, const integer_type_st& value,
                              char* record) {
    write_numeric_text(static_cast<double>(value), record + field->offset, field->length,
                       field->decimals, false);
}

void get_integer_from_numeric(DbfFile*, const DbfField* field, const char* record,
                              integer_type_st* out) {
    if (field->length > MEMO_NUMBER_TEXT_LIMIT) throw dbf_error_buffer_underrun();
    char text[MEMO_NUMBER_TEXT_LIMIT + 1];
    std::memcpy(text, record + field->offset, field->length);
    text[field->length] = 0;
    *out = std::strtoll(text, nullptr, 10);
}

// As "%W.Df" would: the text of the value with D decimals, right-aligned in
// W. A leading "0" before the point is dropped, which frees a position for
// values below 1. With E the characters beyond the width: E above 0 without
// decimals, or E above D + 1 with them, is an overflow. E is compared
// without sign when there are decimals, so a value below 1 that fills the
// width exactly (E of -1 once its "0" is dropped) counts as too large too:
// 0.50 does not go into N(4,2).
void write_numeric_text(double value, char* field_bytes, uint64_t width, uint64_t decimals,
                        bool round_whole) {
    if (!std::isfinite(value)) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    char digits[NUMBER_TEXT_CAPACITY];
    std::to_chars_result made = std::to_chars(digits, digits + sizeof digits, value,
                                              std::chars_format::fixed, static_cast<int>(decimals));
    if (made.ec != std::errc()) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    uint64_t count = static_cast<uint64_t>(made.ptr - digits);
    uint64_t padding = width > count ? width - count : 0;
    char text[NUMBER_TEXT_CAPACITY + 256];
    std::memset(text, ' ', padding);
    std::memcpy(text + padding, digits, count);
    const char* shown = text;
    uint64_t length = padding + count;
    if (length >= 2 && shown[0] == '0' && shown[1] == '.') {
        ++shown;
        --length;
    }
    int64_t beyond = static_cast<int64_t>(length) - static_cast<int64_t>(width);
    bool too_wide = decimals == 0 ? beyond > 0 : static_cast<uint64_t>(beyond) > decimals + 1;
    if (too_wide) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    if (round_whole) {
        const char* point = static_cast<const char*>(std::memchr(shown, '.', width));
        if (!point || point == shown + width - 1) {
            write_numeric_text(std::round(value), field_bytes, width, decimals, false);
            return;
        }
    }
    std::memcpy(field_bytes, shown, width);
}

namespace {

// The slots of a number type; a width of 0 takes any width.
struct number_codec_st {
    uint64_t width;
    field_fill_fn fill;
    field_get_variant_fn get_variant;
    field_set_integer_fn set_integer;
    field_set_numeric_fn set_numeric;
    field_set_money_fn set_money;
};

const number_codec_st integer_codec = {4, fill_with_zero, get_variant_from_integer4_field,
                                       set_integer4_from_integer, set_integer4_from_numeric_rnd,
                                       set_integer4_from_money_rnd};
const number_codec_st currency_codec = {8, fill_with_zero, get_variant_from_currency_field,
                                        set_money_from_integer, set_money_from_numeric,
                                        set_money_from_money};
const number_codec_st double_codec = {8, fill_with_zero, get_variant_from_double_field,
                                      set_double_from_integer, set_double_from_numeric,
                                      set_double_from_money};
const number_codec_st numeric_codec = {0, fill_with_space, get_variant_from_numeric_field,
                                       set_numeric_from_integer, set_numeric_from_numeric,
                                       set_numeric_from_money};

void setup_number_field(DbfField* field, const number_codec_st& codec) {
    require_field_width(codec.width == 0 || field->length == codec.width);
    field->fill = codec.fill;
    field->get_variant = codec.get_variant;
    field->writable.set_integer = codec.set_integer;
    field->writable.set_numeric = codec.set_numeric;
    field->writable.set_money = codec.set_money;
}

}  // namespace

void setup_integer_field(DbfFile*, DbfField* field) { setup_number_field(field, integer_codec); }

void setup_currency_field(DbfFile*, DbfField* field) {
    setup_number_field(field, currency_codec);
    field->get_chars = get_chars_from_currency_field;
}

void setup_double_field(DbfFile*, DbfField* field) { setup_number_field(field, double_codec); }

void setup_numeric_field(DbfFile*, DbfField* field) { setup_number_field(field, numeric_codec); }

}  // namespace zobase
