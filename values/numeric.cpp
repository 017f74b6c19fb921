#include "values/numeric.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/call_trace.h"
#include "values/error.h"

namespace zobase {

namespace {

constexpr double TWO_POW_63 = 9223372036854775808.0;

// The digits and decimal exponent of a value rounded to 15 significant digits.
struct significant_digits_st {
    char digits[NUMBER_MAX_DIGITS + 1];
    int count;     // without trailing zeros, at least 1
    int exponent;  // of the first digit
};

significant_digits_st significant_digits(double magnitude) {
    char sci[40];
    auto written = std::to_chars(sci, sci + sizeof sci - 1, magnitude, std::chars_format::scientific,
                                 NUMBER_MAX_DIGITS - 1);
    *written.ptr = 0;
    significant_digits_st s{};
    int n = 0;
    const char* p = sci;
    for (; *p && *p != 'e'; ++p)
        if (*p >= '0' && *p <= '9') s.digits[n++] = *p;
    s.digits[n] = 0;
    s.exponent = *p == 'e' ? std::atoi(p + 1) : 0;
    while (n > 1 && s.digits[n - 1] == '0') --n;
    s.count = n;
    return s;
}

uint64_t decimals_to_show(const significant_digits_st& s, uint64_t decimals) {
    long long integer_digits = s.exponent + 1;
    if (decimals == DECIMALS_UNKNOWN) {
        long long shortest = s.count - integer_digits;
        return shortest > 0 ? static_cast<uint64_t>(shortest) : 0;
    }
    long long room = static_cast<long long>(NUMBER_MAX_DIGITS) - integer_digits;
    if (room < 0) return 0;
    return decimals < static_cast<uint64_t>(room) ? decimals : static_cast<uint64_t>(room);
}

// Whole digits beyond what a double shows: the significant digits, then zeros.
std::string format_wide_integer(bool negative, const significant_digits_st& s) {
    std::string text = negative ? "-" : "";
    text.append(s.digits, s.count);
    text.append(static_cast<size_t>(s.exponent + 1 - s.count), '0');
    return text;
}

// "%*.*lf" of the value, written by to_chars: the same digits, without
// printf's cost on the paths that print numbers by the million.
std::string format_fixed(double value, uint64_t decimals, uint64_t width) {
    char digits[400];
    auto written = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed,
                                 static_cast<int>(decimals));
    size_t length = static_cast<size_t>(written.ptr - digits);
    std::string text;
    if (length < width) text.assign(width - length, ' ');
    text.append(digits, length);
    return text;
}

// Keeps "-0.00" from showing for a negative value that rounds to zero.
double drop_negative_zero(double value, uint64_t decimals) {
    double scale = decimals < POWERS_OF_TEN_COUNT ? powers_of_ten[decimals]
                                                  : std::pow(10.0, static_cast<double>(decimals));
    return std::fabs(value) * scale <= 0.5 ? 0.0 : value;
}

void append_utf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

}  // namespace

const double powers_of_ten[POWERS_OF_TEN_COUNT] = {
    1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

int cmp_double_with_tollerance(double a, double b) noexcept {
    if (b == 0.0) {
        if (a < -DOUBLE_TOLERANCE) return -1;
        return a > DOUBLE_TOLERANCE ? 1 : 0;
    }
    if (std::isfinite(a) && std::isfinite(b)) {
        double r = 1.0 - a / b;
        if (r >= -DOUBLE_TOLERANCE && r <= DOUBLE_TOLERANCE) return 0;
    }
    if (a < b) return -1;
    return a > b ? 1 : 0;
}

bool double_to_integer(double whole, integer_type_st* out) noexcept {
    if (!(whole >= -TWO_POW_63 && whole < TWO_POW_63)) return false;
    *out = static_cast<integer_type_st>(whole);
    return true;
}

std::string format_number(double value, uint64_t decimals, uint64_t width) {
    ZO_TRACE();
    if (!std::isfinite(value)) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    significant_digits_st s = significant_digits(std::fabs(value));
    std::string text;
    if (value != 0.0 && s.exponent + 1 > static_cast<int>(NUMBER_MAX_DIGITS)) {
        text = format_wide_integer(value < 0, s);
        if (text.size() < width) text.insert(0, width - text.size(), ' ');
    } else {
        uint64_t shown = decimals_to_show(s, decimals);
        text = format_fixed(drop_negative_zero(value, shown), shown, width);
    }
    if (width > 0 && text.size() > width) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    return text;
}

String numeric_to_string(const numeric_type_st& n, bool padded, char32_t decimal_point) {
    std::string text = format_number(n.value, n.decimals, padded ? NUMBER_PADDED_WIDTH : 0);
    replace_decimal_point(text, decimal_point);
    return String(text.c_str());
}

void replace_decimal_point(std::string& text, char32_t decimal_point) {
    if (decimal_point == U'.') return;
    size_t at = text.find('.');
    if (at == std::string::npos) return;
    std::string point;
    append_utf8(point, decimal_point);
    text.replace(at, 1, point);
}

void Decimal::to_numeric(numeric_type_st* out) const {
    char format[32];
    std::snprintf(format, sizeof format, negative ? "-%%lld.%%0%dlld" : "%%lld.%%0%dlld", digits);
    char text[80];
    std::snprintf(text, sizeof text, format, integer, static_cast<long long>(fraction));
    out->value = std::strtod(text, nullptr);
    out->decimals = static_cast<uint64_t>(digits);
}

}  // namespace zobase
