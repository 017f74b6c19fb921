#pragma once
// Constants from lexemes: the grammar collects the pieces of a literal and
// these routines turn them into values. They report bad text by returning false.
#include "frontend/token.h"
#include "values/number_types.h"
#include "values/string.h"

namespace zobase {

// Decimal digits; false when the digits do not fit 64 bits (a round trip
// through text shows it).
bool create_integer(const scan_string_list_st& pieces, integer_type_st& value);

// "0x" and hexadecimal digits; false for no digits, trailing text or overflow.
bool create_integer_from_hex(const scan_string_list_st& pieces, integer_type_st& value);

// Digits with a point; the digits after the point become the decimals.
bool create_numeric(const scan_string_list_st& pieces, numeric_type_st& value);

// The digits of a money literal, without its "$".
bool create_money(const scan_string_list_st& pieces, money_type_st& value);
bool create_money(const String& text, money_type_st& value);

// "0h" and hexadecimal digits to a binary string; an odd count makes the
// first digit a byte of its own.
String create_binary_const_string(const document_location_st& location, const scan_string_st& lexeme);

}  // namespace zobase
