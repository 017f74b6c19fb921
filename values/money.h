#pragma once
// Money: 96-bit two's complement counting ten-thousandths. Arithmetic runs on
// __int128 so products and scaled dividends have room; every result is then
// held to 63 bits of magnitude (1988 otherwise).
#include <cstddef>

#include "values/number_types.h"
#include "values/string.h"

namespace zobase {

class Charset;

constexpr long long MONEY_SCALE = 10000;

__int128 money_to_i128(const money_type_st& m) noexcept;
// Raises 1988 when the magnitude needs more than 63 bits.
money_type_st money_from_i128(__int128 units);
bool money_units_fit(__int128 units) noexcept;

money_type_st money_from_integer(integer_type_st value);
// Times 10000.0, truncated toward zero, then split into words of 2^32.
money_type_st money_from_double(double value);
double money_to_double(const money_type_st& m) noexcept;
// The whole part, truncated toward zero.
integer_type_st money_to_integer(const money_type_st& m);
bool money_is_zero(const money_type_st& m) noexcept;

money_type_st money_add(const money_type_st& a, const money_type_st& b);
money_type_st money_sub(const money_type_st& a, const money_type_st& b);
money_type_st money_mul(const money_type_st& a, const money_type_st& b);
money_type_st money_mul_integer(const money_type_st& a, integer_type_st b);
// Y / Y, Y / I and I / Y; a zero divisor raises 1988.
money_type_st money_div(const money_type_st& a, const money_type_st& b);
money_type_st money_div_integer(const money_type_st& a, integer_type_st b);
money_type_st money_integer_div(integer_type_st a, const money_type_st& b);

// Half away from zero; decimals of 4 and above leave the value alone.
money_type_st money_round(const money_type_st& m, long long decimals);
money_type_st money_floor(const money_type_st& m);
money_type_st money_ceil(const money_type_st& m);

int money_cmp(const money_type_st& a, const money_type_st& b) noexcept;
int cmp_int_to_money_exact(long long a, const money_type_st& b) noexcept;
int cmp_money_to_int_exact(const money_type_st& a, long long b) noexcept;

// Reads optional blanks, sign and "$", digits with group separators, and at
// most one decimal point; fraction digits past the fourth are cut off. A null
// charset reads the bytes as ASCII. Returns 0, 11 for text that is not a
// number, or 1988 for a value out of range; *out is written only on 0.
int string_to_money(const char* text, size_t size, const Charset* charset, money_type_st* out,
                    char32_t decimal_point, char32_t group_separator);

// "%lld.%04lld" of the whole and fractional parts, the point replaced.
String money_to_string(const money_type_st& m, char32_t decimal_point = U'.');

}  // namespace zobase
