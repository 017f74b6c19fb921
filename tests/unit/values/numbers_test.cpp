#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "values/error.h"
#include "tests/unit/support/error_number.h"
#include "values/money.h"
#include "values/numeric.h"
#include "values/variant.h"

using zobase::testing::error_number_of;

namespace zobase {
namespace {


constexpr long long MAX_INT = std::numeric_limits<long long>::max();
constexpr uint64_t UNKNOWN = DECIMALS_UNKNOWN;

Variant I(long long v) { Variant r; r.set_integer(v); return r; }
Variant N(double v, uint64_t decimals = UNKNOWN) { Variant r; r.set_float(v, decimals); return r; }
Variant Y(long long units) { Variant r; r.set(money_from_i128(units)); return r; }

typedef void (Variant::*binary_op)(VmStack*, const Variant&);
Variant apply(Variant left, binary_op op, const Variant& right) {
    (left.*op)(nullptr, right);
    return left;
}
Variant mod(const Variant& a, const Variant& b) {
    Variant r;
    variant_mod(nullptr, &a, &b, &r);
    return r;
}
Variant rounded(Variant v, long long decimals) {
    v.round(nullptr, decimals);
    return v;
}

void expect_integer(const Variant& v, long long value) {
    ASSERT_EQ(v.tag, TAG_INTEGER);
    EXPECT_EQ(v.integer, value);
}
void expect_numeric(const Variant& v, double value, uint64_t decimals) {
    ASSERT_EQ(v.tag, TAG_NUMERIC);
    EXPECT_DOUBLE_EQ(v.numeric.value, value);
    EXPECT_EQ(v.numeric.decimals, decimals);
}
void expect_money(const Variant& v, long long units) {
    ASSERT_EQ(v.tag, TAG_MONEY);
    EXPECT_EQ(static_cast<long long>(money_to_i128(v.money)), units);
}

std::string shown(double value, uint64_t decimals = UNKNOWN, bool padded = false) {
    return numeric_to_string(numeric_type_st{value, decimals}, padded, U'.').u8str();
}

TEST(DoubleTolerance, RelativeTestAndZeroAndNonFinite) {
    EXPECT_EQ(cmp_double_with_tollerance(0.1 + 0.2, 0.3), 0);
    EXPECT_EQ(cmp_double_with_tollerance(1.0, 1.000000000000001), -1);
    EXPECT_EQ(cmp_double_with_tollerance(1e-16, 0.0), 0);
    EXPECT_EQ(cmp_double_with_tollerance(0.0, 1e-300), -1);
    double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(cmp_double_with_tollerance(inf, inf), 0);
    EXPECT_EQ(cmp_double_with_tollerance(1.0, inf), -1);
}

TEST(VariantMul, TypesDecimalsAndOverflow) {
    expect_numeric(apply(I(MAX_INT), &Variant::mul, I(2)), 2.0 * static_cast<double>(MAX_INT), 0);
    expect_integer(apply(I(3037000499LL), &Variant::mul, I(-3037000499LL)), -9223372030926249001LL);
    EXPECT_EQ(apply(I(-3037000500LL), &Variant::mul, I(3037000500LL)).tag, TAG_NUMERIC);
    expect_numeric(apply(N(1.25, 2), &Variant::mul, N(1.5, 1)), 1.875, 3);
    expect_numeric(apply(N(1, 8), &Variant::mul, N(1, 7)), 1, 15);
    expect_numeric(apply(N(1, 10), &Variant::mul, N(1, 6)), 1, UNKNOWN);
    expect_numeric(apply(N(1, 2), &Variant::mul, N(1)), 1, UNKNOWN);
}

TEST(VariantMul, MoneyProductsStayExact) {
    Variant v = apply(Y(12345), &Variant::mul, I(2));
    expect_money(v, 24690);
    EXPECT_EQ(v.to_string().u8str(), "2.4690");
    expect_money(apply(Y(12345), &Variant::mul, Y(20000)), 24690);
    expect_money(apply(N(2.0, 1), &Variant::mul, Y(12345)), 24690);
    EXPECT_EQ(error_number_of([] { apply(Y(MAX_INT / 2), &Variant::mul, I(3)); }), 1988);
}

TEST(VariantDiv, TheDivisionTable) {
    expect_numeric(apply(I(7), &Variant::div, I(2)), 3.5, UNKNOWN);
    expect_integer(apply(N(6.0, 1), &Variant::div, I(2)), 3);
    expect_integer(apply(N(0.3, 1), &Variant::div, N(0.1, 1)), 3);
    expect_numeric(apply(I(1), &Variant::div, N(4.0, 1)), 0.25, UNKNOWN);
    expect_numeric(apply(I(std::numeric_limits<long long>::min()), &Variant::div, I(-1)),
                   9223372036854775808.0, UNKNOWN);
    Variant v = apply(I(1), &Variant::div, I(0));
    ASSERT_EQ(v.tag, TAG_NUMERIC);
    EXPECT_TRUE(std::isinf(v.numeric.value));
    EXPECT_TRUE(std::isnan(apply(I(0), &Variant::div, I(0)).numeric.value));
}

TEST(VariantDiv, MoneyPairsAndZeroDivisor) {
    expect_money(apply(Y(70000), &Variant::div, Y(20000)), 35000);
    expect_money(apply(I(1), &Variant::div, Y(40000)), 2500);
    expect_money(apply(Y(70000), &Variant::div, N(2.0)), 35000);
    EXPECT_EQ(error_number_of([] { apply(Y(1), &Variant::div, Y(0)); }), 1988);
    EXPECT_EQ(error_number_of([] { apply(Y(1), &Variant::div, N(0.00001)); }), 1988);
}

TEST(VariantArithmetic, OtherPairsAreRefused) {
    Variant s;
    s.set_string(String("x"));
    EXPECT_EQ(error_number_of([&] { apply(I(1), &Variant::mul, s); }), 11);
    EXPECT_EQ(error_number_of([&] { apply(I(1), &Variant::div, s); }), 11);
    EXPECT_EQ(error_number_of([&] { apply(I(1), &Variant::pow, s); }), 107);
    EXPECT_EQ(error_number_of([&] { mod(I(1), s); }), 11);
    s.release(nullptr);
    Variant d;
    d.set(date_st{2440588});
    EXPECT_EQ(error_number_of([&] { d.sqrt(nullptr); }), 107);
    EXPECT_EQ(error_number_of([&] { d.round(nullptr, 2); }), 107);
    EXPECT_EQ(error_number_of([&] { d.floor(nullptr); }), 107);
}

TEST(VariantPowSqrt, DoublesAndDomainErrors) {
    expect_numeric(apply(I(2), &Variant::pow, I(10)), 1024.0, UNKNOWN);
    expect_numeric(apply(Y(20000), &Variant::pow, Y(30000)), 8.0, UNKNOWN);
    EXPECT_EQ(error_number_of([] { apply(I(-8), &Variant::pow, N(1.0 / 3.0)); }), 78);
    EXPECT_TRUE(std::isinf(apply(I(0), &Variant::pow, I(-1)).numeric.value));
    Variant v = I(16);
    v.sqrt(nullptr);
    expect_numeric(v, 4.0, UNKNOWN);
    v = Y(-1);
    EXPECT_EQ(error_number_of([&] { v.sqrt(nullptr); }), 61);
}

TEST(VariantRound, RoundingTable) {
    expect_integer(rounded(N(2.5, 1), 0), 3);
    expect_integer(rounded(N(1250.0, 0), -2), 1300);
    expect_numeric(rounded(N(1e300, 0), 0), 1e300, 0);
    expect_numeric(rounded(N(1.2345, 4), 2), 1.23, 2);
    expect_numeric(rounded(N(-1.25, 2), 1), -1.3, 1);
    EXPECT_EQ(rounded(N(1e300, 0), 5).numeric.value, 1e300);
    expect_integer(rounded(I(1234), -2), 1234);
    expect_money(rounded(Y(12350), 2), 12400);
    // Decimals past any double's exponent, down to the lowest integer.
    expect_integer(rounded(N(1.5, 1), -400), 0);
    expect_integer(rounded(N(1e300, 0), INT64_MIN), 0);
    expect_money(rounded(Y(10000), INT64_MIN), 0);
}

TEST(VariantRound, FloorAndCeil) {
    Variant v = N(-1.5, 1);
    v.floor(nullptr);
    expect_integer(v, -2);
    v = N(-1.5, 1);
    v.ceil(nullptr);
    expect_integer(v, -1);
    v = N(1e20, 0);
    v.floor(nullptr);
    EXPECT_EQ(v.tag, TAG_NUMERIC);
    v = Y(-15000);
    v.floor(nullptr);
    expect_money(v, -20000);
}

TEST(VariantMod, SignOfTheDivisorAndZeroDivisors) {
    expect_integer(mod(I(7), I(-2)), -1);
    expect_integer(mod(I(-7), I(2)), 1);
    expect_numeric(mod(N(7.5, 1), I(2)), 1.5, 1);
    expect_money(mod(Y(70000), Y(20000)), 10000);
    EXPECT_TRUE(std::isnan(mod(I(7), I(0)).numeric.value));
    EXPECT_EQ(error_number_of([] { mod(Y(70000), Y(0)); }), 1988);
}

TEST(NumberText, KnownAndUnknownDecimals) {
    EXPECT_EQ(shown(2.5, 2), "2.50");
    EXPECT_EQ(shown(-0.001, 2), "0.00");
    EXPECT_EQ(shown(-0.006, 2), "-0.01");
    EXPECT_EQ(shown(123456789012.345678, 6), "123456789012.346");
    EXPECT_EQ(shown(0.000123456789, 20), "0.000123456789000000");
    EXPECT_EQ(shown(0.1 + 0.2), "0.3");
    EXPECT_EQ(shown(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(shown(-1e-5), "-0.00001");
}

TEST(NumberText, WideValuesWidthsAndPoint) {
    EXPECT_EQ(shown(2.0 * static_cast<double>(MAX_INT), 0), "18446744073709600000");
    EXPECT_EQ(shown(3.5, UNKNOWN, true), std::string(17, ' ') + "3.5");
    EXPECT_EQ(error_number_of([] { shown(1e25, 0, true); }), 39);
    EXPECT_EQ(error_number_of([] { shown(std::numeric_limits<double>::infinity()); }), 39);
    EXPECT_EQ(numeric_to_string(numeric_type_st{3.25, 2}, false, U'\u00B7').u8str(), "3\u00B725");
}

TEST(DecimalLiteral, ExactTextBackToDouble) {
    numeric_type_st n{};
    Decimal{12, 34, 3, false}.to_numeric(&n);
    EXPECT_DOUBLE_EQ(n.value, 12.034);
    EXPECT_EQ(n.decimals, 3u);
    Decimal{0, 5, 1, true}.to_numeric(&n);
    EXPECT_DOUBLE_EQ(n.value, -0.5);
}

}  // namespace
}  // namespace zobase
