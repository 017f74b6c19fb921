#include "values/money.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "base/call_trace.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/numeric.h"

namespace zobase {

namespace {

constexpr __int128 MONEY_MAX_UNITS = std::numeric_limits<long long>::max();
constexpr double TWO_POW_32 = 4294967296.0;
constexpr double TWO_POW_63 = 9223372036854775808.0;

[[noreturn]] void raise_money_range() { throw RuntimeError(ERR_CURRENCY_OUT_OF_RANGE); }

__int128 checked_units(__int128 units) {
    if (!money_units_fit(units)) raise_money_range();
    return units;
}

__int128 power_of_ten_i128(int exponent) noexcept {
    __int128 p = 1;
    for (int i = 0; i < exponent; ++i) p *= 10;
    return p;
}

// Rounds to a multiple of unit, half away from zero.
__int128 round_units(__int128 v, __int128 unit) noexcept {
    __int128 rest = v % unit;
    v -= rest;
    if (rest >= 0 && 2 * rest >= unit) v += unit;
    if (rest < 0 && -2 * rest >= unit) v -= unit;
    return v;
}

__int128 floor_units(__int128 v, __int128 unit) noexcept {
    __int128 rest = v % unit;
    return rest < 0 ? v - rest - unit : v - rest;
}

__int128 ceil_units(__int128 v, __int128 unit) noexcept {
    __int128 rest = v % unit;
    return rest > 0 ? v - rest + unit : v - rest;
}

template <typename T>
int three_way(T a, T b) noexcept {
    return a < b ? -1 : (a > b ? 1 : 0);
}

// Decodes characters of the text one by one, as bytes when no charset is given.
struct money_text_reader_st {
    const char* p;
    const char* end;
    const Charset* charset;

    bool done() const noexcept { return p >= end; }
    char32_t peek() const {
        const char* q = p;
        return charset ? charset->next(q, end) : static_cast<unsigned char>(*q);
    }
    void skip() {
        if (charset)
            charset->next(p, end);
        else
            ++p;
    }
    void skip_blanks() {
        while (!done() && (peek() == U' ' || peek() == U'\t')) skip();
    }
};

}  // namespace

__int128 money_to_i128(const money_type_st& m) noexcept {
    __int128 high = static_cast<__int128>(m.high) << 64;
    return high | (static_cast<__int128>(m.mid) << 32) | m.low;
}

bool money_units_fit(__int128 units) noexcept {
    return units <= MONEY_MAX_UNITS && units >= -MONEY_MAX_UNITS;
}

money_type_st money_from_i128(__int128 units) {
    checked_units(units);
    money_type_st m;
    m.high = static_cast<int32_t>(units >> 64);
    m.mid = static_cast<uint32_t>(units >> 32);
    m.low = static_cast<uint32_t>(units);
    m.unused = 0;
    return m;
}

money_type_st money_from_integer(integer_type_st value) {
    return money_from_i128(static_cast<__int128>(value) * MONEY_SCALE);
}

money_type_st money_from_double(double value) {
    double scaled = std::trunc(value * 10000.0);
    if (!(std::fabs(scaled) < TWO_POW_63)) raise_money_range();
    double magnitude = std::fabs(scaled);
    double low = std::fmod(magnitude, TWO_POW_32);
    magnitude = (magnitude - low) / TWO_POW_32;
    double mid = std::fmod(magnitude, TWO_POW_32);
    double high = (magnitude - mid) / TWO_POW_32;
    __int128 units = (static_cast<__int128>(high) << 64) |
                     (static_cast<__int128>(static_cast<uint32_t>(mid)) << 32) |
                     static_cast<uint32_t>(low);
    return money_from_i128(scaled < 0 ? -units : units);
}

double money_to_double(const money_type_st& m) noexcept {
    return static_cast<double>(money_to_i128(m)) / 10000.0;
}

integer_type_st money_to_integer(const money_type_st& m) {
    return static_cast<integer_type_st>(checked_units(money_to_i128(m)) / MONEY_SCALE);
}

bool money_is_zero(const money_type_st& m) noexcept {
    return m.high == 0 && m.mid == 0 && m.low == 0;
}

money_type_st money_add(const money_type_st& a, const money_type_st& b) {
    return money_from_i128(money_to_i128(a) + money_to_i128(b));
}

money_type_st money_sub(const money_type_st& a, const money_type_st& b) {
    return money_from_i128(money_to_i128(a) - money_to_i128(b));
}

money_type_st money_mul(const money_type_st& a, const money_type_st& b) {
    return money_from_i128(money_to_i128(a) * money_to_i128(b) / MONEY_SCALE);
}

money_type_st money_mul_integer(const money_type_st& a, integer_type_st b) {
    return money_from_i128(money_to_i128(a) * b);
}

money_type_st money_div(const money_type_st& a, const money_type_st& b) {
    __int128 divisor = money_to_i128(b);
    if (divisor == 0) raise_money_range();
    return money_from_i128(money_to_i128(a) * MONEY_SCALE / divisor);
}

money_type_st money_div_integer(const money_type_st& a, integer_type_st b) {
    if (b == 0) raise_money_range();
    return money_from_i128(money_to_i128(a) / b);
}

money_type_st money_integer_div(integer_type_st a, const money_type_st& b) {
    __int128 divisor = money_to_i128(b);
    if (divisor == 0) raise_money_range();
    return money_from_i128(static_cast<__int128>(a) * (MONEY_SCALE * MONEY_SCALE) / divisor);
}

money_type_st money_round(const money_type_st& m, long long decimals) {
    if (decimals >= 4) return m;
    // Past 10^19 units every money value rounds to zero (compared without
    // computing 4 - decimals, which overflows for the lowest decimals).
    if (decimals < 4 - 19) return money_from_i128(0);
    __int128 unit = power_of_ten_i128(static_cast<int>(4 - decimals));
    return money_from_i128(round_units(money_to_i128(m), unit));
}

money_type_st money_floor(const money_type_st& m) {
    return money_from_i128(floor_units(money_to_i128(m), MONEY_SCALE));
}

money_type_st money_ceil(const money_type_st& m) {
    return money_from_i128(ceil_units(money_to_i128(m), MONEY_SCALE));
}

int money_cmp(const money_type_st& a, const money_type_st& b) noexcept {
    if (a.high != b.high) return three_way(a.high, b.high);
    if (a.mid != b.mid) return three_way(a.mid, b.mid);
    return three_way(a.low, b.low);
}

int cmp_int_to_money_exact(long long a, const money_type_st& b) noexcept {
    return three_way(static_cast<__int128>(a) * MONEY_SCALE, money_to_i128(b));
}

int cmp_money_to_int_exact(const money_type_st& a, long long b) noexcept {
    return three_way(money_to_i128(a), static_cast<__int128>(b) * MONEY_SCALE);
}

int string_to_money(const char* text, size_t size, const Charset* charset, money_type_st* out,
                    char32_t decimal_point, char32_t group_separator) {
    ZO_TRACE();
    money_text_reader_st reader{text, text + size, charset};
    reader.skip_blanks();
    bool negative = false;
    if (!reader.done() && (reader.peek() == U'-' || reader.peek() == U'+')) {
        negative = reader.peek() == U'-';
        reader.skip();
    }
    if (!reader.done() && reader.peek() == U'$') reader.skip();

    __int128 units = 0;
    bool overflow = false, seen_point = false, seen_digit = false;
    int fraction_digits = 0;
    while (!reader.done()) {
        char32_t c = reader.peek();
        if (c >= U'0' && c <= U'9') {
            seen_digit = true;
            if (seen_point && fraction_digits == 4) {
                reader.skip();
                continue;
            }
            if (seen_point) ++fraction_digits;
            units = units * 10 + (c - U'0');
            if (units > MONEY_MAX_UNITS) overflow = true, units = MONEY_MAX_UNITS;
        } else if (c == decimal_point && !seen_point) {
            seen_point = true;
        } else if (!(c == group_separator && !seen_point)) {
            break;
        }
        reader.skip();
    }
    reader.skip_blanks();
    if (!seen_digit || !reader.done()) return ERR_ARGUMENT_INVALID;
    if (overflow) return ERR_CURRENCY_OUT_OF_RANGE;
    for (; fraction_digits < 4; ++fraction_digits) units *= 10;
    if (!money_units_fit(units)) return ERR_CURRENCY_OUT_OF_RANGE;
    *out = money_from_i128(negative ? -units : units);
    return 0;
}

String money_to_string(const money_type_st& m, char32_t decimal_point) {
    __int128 units = money_to_i128(m);
    bool negative = units < 0;
    if (negative) units = -units;
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%lld.%04lld", static_cast<long long>(units / MONEY_SCALE),
                  static_cast<long long>(units % MONEY_SCALE));
    std::string text = negative ? std::string("-") + buffer : std::string(buffer);
    replace_decimal_point(text, decimal_point);
    return String(text.c_str());
}

}  // namespace zobase
