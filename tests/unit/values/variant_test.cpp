#include <gtest/gtest.h>

#include <limits>

#include "tests/unit/support/error_number.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/variant.h"
#include "vm/variant_compare.h"

using namespace zobase;
using zobase::testing::error_number_of;

namespace {

Variant integer(long long v) {
    Variant x;
    x.set_integer(v);
    return x;
}

Variant numeric(double v, uint64_t decimals = DECIMALS_UNKNOWN) {
    Variant x;
    x.set_float(v, decimals);
    return x;
}

Variant text(const char* s) {
    Variant x;
    x.set_string(String(s));
    return x;
}

Variant date(uint32_t julian) {
    Variant x;
    x.set(date_st{julian});
    return x;
}


int compare(const Variant& a, const Variant& b, bool* null_seen) {
    return inline_variant_cmp(&a, &b, null_seen, nullptr);
}

}  // namespace

TEST(VariantLayout, FortyBytesTagFirstPayloadAtEight) {
    Variant v;
    EXPECT_EQ(sizeof(Variant), 40u);
    EXPECT_EQ(reinterpret_cast<char*>(&v.integer) - reinterpret_cast<char*>(&v), 8);
    EXPECT_EQ(v.tag, TAG_FALSE);
}

TEST(VariantAdd, IntegerOverflowFallsToNumericWithoutError) {
    Variant a = integer(std::numeric_limits<long long>::max());
    Variant one = integer(1);
    inline_variant_add(&a, &one);
    EXPECT_EQ(a.tag, TAG_NUMERIC);
    EXPECT_EQ(a.numeric.decimals, 0u);
    EXPECT_DOUBLE_EQ(a.numeric.value, 9223372036854775808.0);

    Variant b = integer(std::numeric_limits<long long>::min());
    b.sub(nullptr, one);
    EXPECT_EQ(b.tag, TAG_NUMERIC);
}

TEST(VariantAdd, MixedNumberTypesFollowTheMatrix) {
    Variant a = integer(2);
    Variant n = numeric(0.25, 2);
    inline_variant_add(&a, &n);
    EXPECT_EQ(a.tag, TAG_NUMERIC);
    EXPECT_EQ(a.numeric.decimals, 2u);

    Variant left = numeric(1.5, 1), right = numeric(1.125, 3);
    inline_variant_add(&left, &right);
    EXPECT_EQ(left.numeric.decimals, 3u);
    EXPECT_DOUBLE_EQ(left.numeric.value, 2.625);

    Variant money;
    money.set(money_type_st{0, 0, 12345, 0});  // 1.2345
    Variant i = integer(1);
    inline_variant_add(&i, &money);
    EXPECT_EQ(i.tag, TAG_MONEY);
    EXPECT_EQ(i.money.low, 22345u);
}

TEST(VariantAdd, NullAbsorbsNumbersDatesAndTextButNotLogicals) {
    Variant null;
    null.set_null();
    Variant t = text("abc");
    inline_variant_add(&t, &null);
    EXPECT_EQ(t.tag, TAG_NULL);

    Variant n;
    n.set_null();
    Variant five = integer(5);
    inline_variant_add(&n, &five);
    EXPECT_EQ(n.tag, TAG_NULL);

    Variant logical;
    logical.set_true();
    EXPECT_EQ(error_number_of([&] { inline_variant_add(&logical, &null); }), 107);
}

TEST(VariantAdd, DatesMoveByDaysAndEmptyDatesStay) {
    Variant d = date(2440588);
    Variant thirty = integer(30);
    inline_variant_add(&d, &thirty);
    EXPECT_EQ(d.date.julian, 2440618u);

    Variant empty = date(0);
    Variant one = integer(1);
    inline_variant_add(&empty, &one);
    EXPECT_EQ(empty.date.julian, 0u);

    Variant half = numeric(1.9);
    Variant d2 = date(100);
    inline_variant_add(&d2, &half);
    EXPECT_EQ(d2.date.julian, 101u);  // truncated days

    Variant right_date = date(5);
    Variant i = integer(1);
    EXPECT_EQ(error_number_of([&] { inline_variant_add(&i, &right_date); }), 107);
    Variant low = date(3);
    Variant minus = integer(-10);
    EXPECT_EQ(error_number_of([&] { inline_variant_add(&low, &minus); }), 2034);
}

TEST(VariantSub, DateDifferencesAndDatetimeRules) {
    Variant a = date(2440600), b = date(2440588);
    a.sub(nullptr, b);
    EXPECT_EQ(a.tag, TAG_INTEGER);
    EXPECT_EQ(a.integer, 12);

    Variant e = date(0), f = date(2440588);
    e.sub(nullptr, f);
    EXPECT_EQ(e.integer, 0);

    Variant t1, t2;
    t1.set(datetime_st{2440588, 0});
    t2.set(datetime_st{2440588, 0});
    EXPECT_EQ(error_number_of([&] { t1.sub(nullptr, t2); }), 107);

    Variant t;
    t.set(datetime_st{2440588, 1000});
    Variant seconds = numeric(1.6);
    t.sub(nullptr, seconds);  // rounded to two seconds, crossing midnight
    EXPECT_EQ(t.datetime.julian, 2440587u);
    EXPECT_EQ(t.datetime.msecs, 86400000u - 1000u);
}

TEST(VariantSub, TextMinusTextMovesTrailingBlanksAway) {
    Variant a = text("ab  ");
    Variant b = text("cd");
    a.sub(nullptr, b);
    EXPECT_EQ(a.str().u8str(), "abcd");
    a.release(nullptr);
    b.release(nullptr);
}

TEST(VariantCompare, MatrixOfTypes) {
    bool null_seen = false;
    EXPECT_EQ(compare(integer(10), numeric(10.0), &null_seen), 0);
    EXPECT_EQ(compare(integer(1), numeric(1.0000000000000001), &null_seen), 0);
    Variant t, f;
    t.set_true();
    EXPECT_EQ(compare(t, f, &null_seen), 1);
    EXPECT_FALSE(null_seen);

    Variant null;
    null.set_null();
    Variant arr;
    Variant x = text("x");
    EXPECT_EQ(compare(x, null, &null_seen), 0);
    x.release(nullptr);
    EXPECT_TRUE(null_seen);

    Variant dt;
    dt.set(datetime_st{1, 0});
    EXPECT_EQ(error_number_of([&] { bool n; compare(date(1), dt, &n); }), 107);
    Variant one = text("1");
    EXPECT_EQ(error_number_of([&] { bool n; compare(integer(1), one, &n); }), 107);
    one.release(nullptr);
}

TEST(VariantCompare, ExactMoneyAgainstIntegers) {
    Variant m;
    m.set(money_type_st{0, 0, 30000, 0});  // 3.0000
    bool null_seen = false;
    EXPECT_EQ(compare(integer(3), m, &null_seen), 0);
    EXPECT_EQ(compare(m, integer(2), &null_seen), 1);
}

TEST(VariantCompare, TextWithoutStackComparesWholeStrings) {
    bool null_seen = false;
    Variant abc = text("ABC"), ab = text("AB");
    EXPECT_EQ(compare(abc, ab, &null_seen), 1);
    EXPECT_EQ(compare(ab, abc, &null_seen), -1);
    abc.release(nullptr);
    ab.release(nullptr);
}

TEST(VariantReaders, OperatorsAndCastsReportTheirNumbers) {
    Variant s = text("x");
    EXPECT_EQ(error_number_of([&] { (void)static_cast<integer_type_st>(s); }), 107);
    EXPECT_EQ(error_number_of([&] { (void)static_cast<Object*>(s); }), 1924);
    EXPECT_EQ(error_number_of([&] { (void)static_cast<Array*>(s); }), 232);
    date_st d;
    EXPECT_EQ(error_number_of([&] { s.cast(&d); }), 11);
    EXPECT_EQ(static_cast<integer_type_st>(numeric(-2.7)), -2);

    Variant dt;
    dt.set(datetime_st{77, 5});
    dt.cast(&d);
    EXPECT_EQ(d.julian, 77u);
    s.release(nullptr);
}

TEST(VariantText, ToStringAndVartype) {
    EXPECT_EQ(integer(-42).to_string().u8str(), "-42");
    Variant f, n;
    n.set_null();
    EXPECT_EQ(f.to_string().u8str(), "false");
    EXPECT_EQ(n.to_string().u8str(), "null");
    EXPECT_EQ(date(2440588).to_string().u8str(), "1970-01-01");
    EXPECT_EQ(date(0).to_string().u8str(), "0000-00-00");
    Variant t;
    t.set(datetime_st{2440588, 3723000});
    EXPECT_EQ(t.to_string().u8str(), "1970-01-01 01:02:03");

    Variant binary;
    binary.set_string(String::fromBytes("\x01\x02", 2, Charset::binary));
    EXPECT_EQ(binary.vartype().u8str(), "Q");
    Variant empty_object;
    empty_object.set(object_ptr_st{nullptr, nullptr});
    EXPECT_EQ(empty_object.vartype().u8str(), "X");
    EXPECT_EQ(n.vartype().u8str(), "X");
    binary.release(nullptr);
}

TEST(VariantEmpty, EmptinessPerType) {
    EXPECT_TRUE(Variant().is_empty());
    EXPECT_TRUE(integer(0).is_empty());
    EXPECT_TRUE(numeric(1e-17).is_empty());
    EXPECT_FALSE(numeric(0.5).is_empty());
    Variant blank = text("  \t");
    EXPECT_TRUE(blank.is_empty());
    blank.release(nullptr);
    Variant t;
    t.set_true();
    EXPECT_FALSE(t.is_empty());
}

TEST(VariantPointer, CopyOfAReferenceIsAValue) {
    Variant target = integer(1);
    Variant pointer;
    target.ref(nullptr, &pointer, nullptr);
    EXPECT_EQ(pointer.tag, TAG_POINTER);

    Variant copy(pointer);
    EXPECT_EQ(copy.tag, TAG_INTEGER);
    target.integer = 2;
    EXPECT_EQ(copy.integer, 1);

    Variant value = integer(9);
    value.copy_follow_pointer(nullptr, &pointer);  // writes through to the target
    EXPECT_EQ(target.integer, 9);
}

TEST(VariantStore, StoreRecursiveFillsEveryElementAndKeepsShape) {
    Variant a;
    a.dimension(nullptr, 2, 3);
    Variant s = text("old");
    a.array.write(nullptr, 2, 2)->set_variant(&s);
    Variant seven = integer(7);
    a.store_recursive(nullptr, &seven);
    EXPECT_EQ(a.tag, TAG_ARRAY);
    EXPECT_EQ(a.array.count, 6u);
    for (uint64_t i = 1; i <= 6; ++i) EXPECT_EQ(a.array.read(i)->integer, 7);
    s.release(nullptr);
    a.release(nullptr);
}

TEST(VariantHostCalls, VarFamilyReleasesBeforeSetting) {
    Variant v;
    VarSetUtf8(&v, "hello");
    size_t len = 0;
    const char* bytes = VarReadString(&v, &len);
    EXPECT_EQ(std::string(bytes, len), "hello");
    VarSetInt(&v, 5);
    EXPECT_EQ(VarGetInt64(&v), 5);
    VarDimArray(nullptr, &v, 3);
    EXPECT_EQ(ArrayNumElements(&v), 3u);
    ReleaseVar(nullptr, &v);
    EXPECT_EQ(v.tag, TAG_FALSE);
}
