// The dispatch loop's short path for a quotient of two numbers must give
// exactly what the general division gives: type, value and decimals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "values/numeric.h"
#include "vm/vm_run.h"

using namespace zobase;

namespace {

class Quotient : public ::testing::Test {
protected:
    VmStack stack{nullptr, 64, 16};

    // The dividend a numeric; the divisor numeric, or an integer when whole.
    static Variant operand(double value, bool as_integer) {
        Variant v;
        if (as_integer) v.set_integer(static_cast<integer_type_st>(value));
        else v.set_float(value, DECIMALS_UNKNOWN);
        return v;
    }

    Variant by_loop(double a, const Variant& divisor) {
        Program program;
        program.emit(new VmOpReadConstNumeric({a, 2}));
        if (divisor.tag == TAG_INTEGER) program.emit(new VmOpReadConstInteger(divisor.integer));
        else program.emit(new VmOpReadConstNumeric(divisor.numeric));
        program.emit(new VmOpBinaryDiv());
        program.emit(new VmOpReturnValue());
        Variant result;
        execute_program(&stack, 0, false, &program, &result);
        return result;
    }

    static Variant by_general(double a, const Variant& divisor) {
        Variant left;
        left.set_float(a, 2);
        left.div(nullptr, divisor);
        return left;
    }

    void expect_same(double a, const Variant& divisor) {
        Variant fast = by_loop(a, divisor);
        Variant general = by_general(a, divisor);
        ASSERT_EQ(fast.tag, general.tag) << a << " / " << static_cast<double>(divisor);
        if (general.tag == TAG_INTEGER) {
            EXPECT_EQ(fast.integer, general.integer) << a;
            return;
        }
        EXPECT_EQ(std::memcmp(&fast.numeric.value, &general.numeric.value, sizeof(double)), 0)
            << a << " / " << static_cast<double>(divisor);
        EXPECT_EQ(fast.numeric.decimals, general.numeric.decimals);
    }
};

}  // namespace

// Quotients at, next to and a few tolerances from whole numbers, at every
// magnitude the short path takes and past it.
TEST_F(Quotient, NearWholeNumbersAgreeWithTheGeneralRule) {
    std::vector<double> wholes{0, 1, 2, 3, 7, 10, 1e3, 12345, 1e6, 4503599627370.0, 1e12, 1e14, 9.99e14, 1e15, 1e16};
    for (double whole : wholes)
        for (double divisor : {1.0, 3.0, 0.1, 7.0, -4.0})
            for (int steps = -40; steps <= 40; ++steps) {
                double q = whole;
                for (int k = 0; k < std::abs(steps); ++k)
                    q = std::nextafter(q, steps < 0 ? -std::numeric_limits<double>::infinity()
                                                    : std::numeric_limits<double>::infinity());
                double a = q * divisor;
                expect_same(a, operand(divisor, false));
                expect_same(-a, operand(divisor, false));
                if (divisor == std::floor(divisor)) expect_same(a, operand(divisor, true));
            }
}

TEST_F(Quotient, SpreadOfMagnitudesAgrees) {
    std::mt19937_64 random(18);
    std::uniform_real_distribution<double> mantissa(-1, 1);
    std::uniform_int_distribution<int> exponent(-300, 300);
    for (int n = 0; n < 20000; ++n) {
        double a = std::ldexp(mantissa(random), exponent(random) / 4);
        double b = std::ldexp(mantissa(random), exponent(random) / 4);
        expect_same(a, operand(b, false));
        expect_same(a, operand(std::round(b * 1000), true));
    }
}

// Just above zero and just below one the nearest whole number is 0 or 1.
TEST_F(Quotient, SmallAndJustBelowOneAgree) {
    for (int j = 30; j <= 60; ++j)
        for (double scale : {1.0, 1.25, 1.5, 1.75})
            for (double q : {std::ldexp(scale, -j), 1.0 - std::ldexp(scale, -j), 1.0 + std::ldexp(scale, -j)}) {
                expect_same(q, operand(1.0, false));
                expect_same(-q * 3, operand(3, true));
            }
}

// Zero, negative zero, infinities and a NaN go the general way and keep its answer.
TEST_F(Quotient, EdgeValuesAgree) {
    double inf = std::numeric_limits<double>::infinity();
    double nan = std::numeric_limits<double>::quiet_NaN();
    for (double a : {0.0, -0.0, 2.5, -2.5, inf, -inf, 1e308, 5e-324})
        for (double b : {0.0, -0.0, 3.0, inf, -inf, 1e-308}) expect_same(a, operand(b, false));
    Variant fast = by_loop(nan, operand(2.0, false));
    ASSERT_EQ(fast.tag, TAG_NUMERIC);
    EXPECT_TRUE(std::isnan(fast.numeric.value));
    expect_same(2.5, operand(0, true));
}
