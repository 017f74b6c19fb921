// Index keys: the byte forms sort as the values do.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tables/index_key.h"
#include "text/collation.h"
#include "values/error.h"
#include "values/variant.h"

namespace zobase {
namespace {

std::string key_of(const Variant& value, IndexKeyKind kind, bool nullable = false, uint64_t length = 0,
                   bool full = true) {
    char out[MAX_KEY_LENGTH];
    if (!length) length = fixed_key_length(kind) + (nullable ? 1 : 0);
    uint64_t n = key_operation_for(kind, nullable)(&value, full, out, length, Collation::unicode_machine_ci);
    return std::string(out, n);
}

std::string hex(const std::string& bytes) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : bytes) {
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

Variant integer(long long v) {
    Variant out;
    out.set_integer(v);
    return out;
}

Variant number(double v) {
    Variant out;
    out.set_float(v, 2);
    return out;
}

TEST(IndexKeys, IntegersAreBiasedBigEndian) {
    EXPECT_EQ(hex(key_of(integer(-1), KEY_INTEGER)), "7FFFFFFF");
    EXPECT_EQ(hex(key_of(integer(0), KEY_INTEGER)), "80000000");
    EXPECT_EQ(hex(key_of(integer(1), KEY_INTEGER)), "80000001");
    // A number of another kind is taken as the integer it holds.
    EXPECT_EQ(hex(key_of(number(2.0), KEY_INTEGER)), "80000002");
}

TEST(IndexKeys, DoublesSortWithTheZerosEqual) {
    std::string minus_one = key_of(number(-1.0), KEY_NUMERIC);
    std::string minus_zero = key_of(number(-0.0), KEY_NUMERIC);
    std::string zero = key_of(number(0.0), KEY_NUMERIC);
    std::string one = key_of(number(1.0), KEY_NUMERIC);
    EXPECT_LT(minus_one, minus_zero);
    EXPECT_EQ(minus_zero, zero);
    EXPECT_LT(zero, one);
    EXPECT_LT(key_of(number(-2.5), KEY_NUMERIC), minus_one);
    EXPECT_LT(one, key_of(number(1e300), KEY_NUMERIC));
    EXPECT_EQ(hex(zero), "8000000000000000");
    // An integer seeks a numeric tag.
    EXPECT_EQ(key_of(integer(1), KEY_NUMERIC), one);
}

TEST(IndexKeys, NullableKeysPutNullFirst) {
    Variant null_value;
    null_value.set_null();
    Variant yes;
    yes.set_true();
    EXPECT_EQ(hex(key_of(yes, KEY_LOGICAL, true)), "8054");
    EXPECT_EQ(hex(key_of(null_value, KEY_LOGICAL, true)), "0000");
    EXPECT_LT(key_of(null_value, KEY_INTEGER, true), key_of(integer(INT32_MIN), KEY_INTEGER, true));
}

TEST(IndexKeys, DatesAndMoney) {
    Variant empty_date;
    empty_date.set(date_st{0});
    EXPECT_EQ(key_of(empty_date, KEY_DATE), key_of(number(0.0), KEY_NUMERIC));
    Variant noon;
    noon.set(datetime_st{2451545, 43200000});
    Variant day;
    day.set(date_st{2451545});
    EXPECT_EQ(key_of(noon, KEY_DATETIME), key_of(number(2451545.5), KEY_NUMERIC));
    EXPECT_LT(key_of(day, KEY_DATETIME), key_of(noon, KEY_DATETIME));
    EXPECT_THROW(key_of(integer(3), KEY_DATE), RuntimeError);

    Variant minus, plus;
    minus.set(money_type_st{-1, 0xFFFFFFFFu, 0xFFFFFFFFu, 0});
    plus.set(money_type_st{0, 0, 1, 0});
    EXPECT_EQ(hex(key_of(minus, KEY_MONEY)), "7FFFFFFFFFFFFFFF");
    EXPECT_EQ(hex(key_of(plus, KEY_MONEY)), "8000000000000001");
}

TEST(IndexKeys, BinaryKeysPadOnlyAtFullLength) {
    Variant text;
    text.set_string(String("ab"));
    EXPECT_EQ(key_of(text, KEY_BINARY, false, 4), std::string("ab\0\0", 4));
    EXPECT_EQ(key_of(text, KEY_BINARY, false, 4, false), "ab");
    EXPECT_EQ(key_of(text, KEY_CHARACTER, true, 5), std::string("\x80" "ab  ", 5));
    EXPECT_THROW(key_of(integer(1), KEY_CHARACTER, false, 4), RuntimeError);
    text.release(nullptr);
}

TEST(IndexKeys, RawKeysStepWithCarry) {
    char key[3] = {'\x01', '\xFF', '\xFF'};
    EXPECT_TRUE(IncreaseRawKey(key, 3));
    EXPECT_EQ(std::string(key, 3), std::string("\x02\x00\x00", 3));
    EXPECT_TRUE(ShrinkRawKey(key, 3));
    EXPECT_EQ(std::string(key, 3), std::string("\x01\xFF\xFF", 3));
    char top[2] = {'\xFF', '\xFF'};
    EXPECT_FALSE(IncreaseRawKey(top, 2));
    EXPECT_EQ(std::string(top, 2), std::string("\0\0", 2));
    EXPECT_FALSE(ShrinkRawKey(top, 2));
    EXPECT_EQ(std::string(top, 2), "\xFF\xFF");
}

TEST(IndexKeys, SmallBufferForADoubleIsRefused) {
    char out[4];
    try {
        keyN8(1.0, out, 4);
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 1001);
    }
}

}  // namespace
}  // namespace zobase
