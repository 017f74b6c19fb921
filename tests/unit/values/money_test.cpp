#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "values/error.h"
#include "tests/unit/support/error_number.h"
#include "values/money.h"

using zobase::testing::error_number_of;

namespace zobase {
namespace {


constexpr long long MAX_UNITS = std::numeric_limits<long long>::max();
money_type_st units(long long u) { return money_from_i128(u); }
long long units_of(const money_type_st& m) { return static_cast<long long>(money_to_i128(m)); }

int parse(const char* text, money_type_st* out, char32_t point = U'.', char32_t group = U',') {
    return string_to_money(text, std::strlen(text), nullptr, out, point, group);
}

TEST(MoneyRange, WordsRoundTripAndMagnitudeIsHeldTo63Bits) {
    money_type_st m = units(-1);
    EXPECT_EQ(m.high, -1);
    EXPECT_EQ(m.mid, 0xFFFFFFFFu);
    EXPECT_EQ(units_of(units(-MAX_UNITS)), -MAX_UNITS);
    EXPECT_EQ(error_number_of([] { money_from_i128(static_cast<__int128>(MAX_UNITS) + 1); }), 1988);
    EXPECT_EQ(error_number_of([] { money_from_integer(1000000000000000LL); }), 1988);
    EXPECT_EQ(error_number_of([] { money_add(units(MAX_UNITS), units(1)); }), 1988);
    // Numeric converts truncated toward zero.
    EXPECT_EQ(units_of(money_from_double(-1.23459)), -12345);
    EXPECT_EQ(error_number_of([] { money_from_double(1e15); }), 1988);
}

TEST(MoneyArithmetic, ProductsAndQuotientsOn96Bits) {
    EXPECT_EQ(units_of(money_mul(units(12345), units(20000))), 24690);
    // The intermediate product needs more than 64 bits, the result does not.
    EXPECT_EQ(units_of(money_mul(units(9000000000000000000LL), units(10000))), 9000000000000000000LL);
    EXPECT_EQ(error_number_of([] { money_mul(units(5000000000000000000LL), units(20000)); }), 1988);
    EXPECT_EQ(units_of(money_div(units(-70000), units(20000))), -35000);
    EXPECT_EQ(units_of(money_integer_div(7, units(20000))), 35000);
    EXPECT_EQ(error_number_of([] { money_div(units(1), units(0)); }), 1988);
    EXPECT_EQ(error_number_of([] { money_integer_div(1, units(0)); }), 1988);
}

TEST(MoneyRounding, HalfAwayFromZeroFloorAndCeil) {
    EXPECT_EQ(units_of(money_round(units(12349), 2)), 12300);
    EXPECT_EQ(units_of(money_round(units(-12350), 2)), -12400);
    EXPECT_EQ(units_of(money_round(units(1250000), -2)), 1000000);
    EXPECT_EQ(units_of(money_round(units(12345), 9)), 12345);
    EXPECT_EQ(units_of(money_round(units(123456789), -40)), 0);
    EXPECT_EQ(units_of(money_round(units(10000), INT64_MIN)), 0);
    EXPECT_EQ(units_of(money_round(units(-10000), -15)), 0);
    EXPECT_EQ(units_of(money_floor(units(-15000))), -20000);
    EXPECT_EQ(units_of(money_ceil(units(-15000))), -10000);
}

TEST(MoneyCompare, WordOrderAndExactIntegerComparison) {
    EXPECT_EQ(money_cmp(units(-1), units(0)), -1);
    EXPECT_EQ(money_cmp(units(1LL << 32), units(0xFFFFFFFFLL)), 1);
    EXPECT_EQ(cmp_int_to_money_exact(3, units(30000)), 0);
    // As doubles these are equal; one unit apart must still count.
    EXPECT_EQ(cmp_int_to_money_exact(922337203685477LL, units(9223372036854770001LL)), -1);
    EXPECT_EQ(cmp_money_to_int_exact(units(-10000), std::numeric_limits<long long>::min()), 1);
}

TEST(MoneyText, FormatsAndParses) {
    EXPECT_EQ(money_to_string(units(24690)).u8str(), "2.4690");
    EXPECT_EQ(money_to_string(units(-5000)).u8str(), "-0.5000");
    EXPECT_EQ(money_to_string(units(15), U',').u8str(), "0,0015");
    money_type_st m{};
    ASSERT_EQ(parse(" -$1,234.56789 ", &m), 0);
    EXPECT_EQ(units_of(m), -12345678);
    ASSERT_EQ(parse("1.234,5", &m, U',', U'.'), 0);
    EXPECT_EQ(units_of(m), 12345000);
    ASSERT_EQ(parse("922337203685477.5807", &m), 0);
    EXPECT_EQ(units_of(m), MAX_UNITS);
    m = units(7);
    for (const char* bad : {"", "$", "12a", "1.2.3", "1.5,0"}) EXPECT_EQ(parse(bad, &m), 11) << bad;
    EXPECT_EQ(parse("922337203685478", &m), 1988);
    EXPECT_EQ(parse("99999999999999999999999999", &m), 1988);
    EXPECT_EQ(units_of(m), 7);
}

}  // namespace
}  // namespace zobase
