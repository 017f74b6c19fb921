#pragma once
// Numeric values: the tolerant comparison, conversions to integers and the
// text form shared by the value printers.
#include <cstdint>
#include <string>

#include "values/number_types.h"
#include "values/string.h"

namespace zobase {

// 2^-51: relative difference below which two doubles count as equal.
constexpr double DOUBLE_TOLERANCE = 4.440892098500626e-16;
// Significant digits that the text form shows at most.
constexpr unsigned NUMBER_MAX_DIGITS = 15;
// Decimals above this make a product's decimals unknown.
constexpr uint64_t NUMERIC_MAX_DECIMALS = 15;

int cmp_double_with_tollerance(double a, double b) noexcept;

// Powers of ten that a double holds exactly: 10^0 to 10^22.
constexpr int POWERS_OF_TEN_COUNT = 23;
extern const double powers_of_ten[POWERS_OF_TEN_COUNT];

// Converts a double that is already whole when it fits 64 signed bits; NaN
// and infinities never fit.
bool double_to_integer(double whole, integer_type_st* out) noexcept;

// Decimals of a product: the sum, or unknown past 15 or when either is unknown.
inline uint64_t product_decimals(uint64_t a, uint64_t b) noexcept {
    if (a == DECIMALS_UNKNOWN || b == DECIMALS_UNKNOWN) return DECIMALS_UNKNOWN;
    if (a > NUMERIC_MAX_DECIMALS || b > NUMERIC_MAX_DECIMALS) return DECIMALS_UNKNOWN;
    return a + b > NUMERIC_MAX_DECIMALS ? DECIMALS_UNKNOWN : a + b;
}

// Text of a number with at most 15 significant digits, built with the format
// "%%%llu.%llulf". Unknown decimals take the shortest form that shows the
// value. With a width above 0 the text is right-aligned in it, and a text
// longer than the width raises 39; so does a value that is not finite.
// The flag asks for the padded form in the widest numeric field's width.
constexpr uint64_t NUMBER_PADDED_WIDTH = 20;
String numeric_to_string(const numeric_type_st& n, bool padded, char32_t decimal_point);
std::string format_number(double value, uint64_t decimals, uint64_t width);

// Replaces the "." of a formatted number by the session's decimal point.
void replace_decimal_point(std::string& text, char32_t decimal_point);

// The scanner's exact form of a numeric literal. The integer part is the
// magnitude; the sign is the flag.
struct Decimal {
    long long integer = 0;
    unsigned long long fraction = 0;
    int digits = 0;
    bool negative = false;

    void to_numeric(numeric_type_st* out) const;
};

}  // namespace zobase
