// Addition and subtraction: one switch over the pair key, which the compiler
// turns into a jump table, so scalar pairs cost no indirect call.
#include <cmath>
#include <limits>

#include "values/date.h"
#include "values/error.h"
#include "values/money.h"
#include "values/variant.h"

namespace zobase {

namespace {

constexpr long long MS_PER_DAY = 86400000;

uint64_t larger_decimals(uint64_t a, uint64_t b) { return a > b ? a : b; }

void add_integers(Variant* left, long long a, long long b) {
    long long sum;
    if (__builtin_add_overflow(a, b, &sum))
        left->set_float(static_cast<double>(a) + static_cast<double>(b), 0);
    else
        left->set_integer(sum);
}

void sub_integers(Variant* left, long long a, long long b) {
    long long difference;
    if (__builtin_sub_overflow(a, b, &difference))
        left->set_float(static_cast<double>(a) - static_cast<double>(b), 0);
    else
        left->set_integer(difference);
}

void set_money(Variant* left, __int128 units) { left->set(money_from_i128(units)); }

__int128 money_units(const Variant* v) {
    return money_to_i128(static_cast<money_type_st>(*v));
}

// Days move a date; an empty date stays empty and a day outside the
// calendar's range is an invalid date.
void shift_date(Variant* left, long long days) {
    if (left->date.julian == 0) return;
    long long julian = static_cast<long long>(left->date.julian) + days;
    if (julian < 1 || julian > std::numeric_limits<uint32_t>::max()) throw RuntimeError(2034);
    left->date.julian = static_cast<uint32_t>(julian);
}

void shift_datetime(Variant* left, long long seconds) {
    datetime_st& t = left->datetime;
    if (t.julian == 0 && t.msecs == 0) return;
    __int128 ms = static_cast<__int128>(t.julian) * MS_PER_DAY + t.msecs +
                  static_cast<__int128>(seconds) * 1000;
    __int128 julian = ms / MS_PER_DAY;
    if (ms < MS_PER_DAY || julian > std::numeric_limits<uint32_t>::max()) throw RuntimeError(2034);
    t.julian = static_cast<uint32_t>(julian);
    t.msecs = static_cast<uint32_t>(ms % MS_PER_DAY);
}

long long whole_days(double value) {
    double days = std::trunc(value);
    if (!(std::fabs(days) < 9.0e18)) throw RuntimeError(2034);
    return static_cast<long long>(days);
}

long long rounded_seconds(double value) {
    double seconds = std::round(value);
    if (!(std::fabs(seconds) < 9.0e15)) throw RuntimeError(2034);
    return static_cast<long long>(seconds);
}

void make_null(Variant* left) {
    left->release(nullptr);
    left->set_null();
}

// Null absorbs numbers, dates and text on either side; anything else is a type error.
bool null_pair(Variant* left, const Variant* right) {
    uint8_t other = left->tag == TAG_NULL ? right->tag : left->tag;
    bool absorbs = other == TAG_NULL || (other >= TAG_INTEGER && other <= TAG_DATETIME) ||
                   other == TAG_STRING;
    if (!absorbs) throw RuntimeError(107);
    make_null(left);
    return true;
}

}  // namespace

void inline_variant_add(Variant* left, const Variant* right) {
    if (left->tag == TAG_POINTER) left = left->pointer.target;
    right = right->follow();
    switch (pair_key(left->tag, right->tag)) {
    case pair_key(TAG_INTEGER, TAG_INTEGER):
        add_integers(left, left->integer, right->integer);
        return;
    case pair_key(TAG_INTEGER, TAG_NUMERIC):
        left->set_float(static_cast<double>(left->integer) + right->numeric.value,
                        right->numeric.decimals);
        return;
    case pair_key(TAG_NUMERIC, TAG_INTEGER):
        left->numeric.value += static_cast<double>(right->integer);
        return;
    case pair_key(TAG_NUMERIC, TAG_NUMERIC):
        left->numeric.value += right->numeric.value;
        left->numeric.decimals = larger_decimals(left->numeric.decimals, right->numeric.decimals);
        return;
    case pair_key(TAG_INTEGER, TAG_MONEY):
    case pair_key(TAG_NUMERIC, TAG_MONEY):
    case pair_key(TAG_MONEY, TAG_INTEGER):
    case pair_key(TAG_MONEY, TAG_NUMERIC):
    case pair_key(TAG_MONEY, TAG_MONEY):
        set_money(left, money_units(left) + money_units(right));
        return;
    case pair_key(TAG_DATE, TAG_INTEGER):
        shift_date(left, right->integer);
        return;
    case pair_key(TAG_DATE, TAG_NUMERIC):
        shift_date(left, whole_days(right->numeric.value));
        return;
    case pair_key(TAG_DATETIME, TAG_INTEGER):
        shift_datetime(left, right->integer);
        return;
    case pair_key(TAG_DATETIME, TAG_NUMERIC):
        shift_datetime(left, rounded_seconds(right->numeric.value));
        return;
    case pair_key(TAG_STRING, TAG_STRING):
        left->str().add(right->str());
        return;
    case pair_key(TAG_NULL, TAG_NULL):
    case pair_key(TAG_NULL, TAG_INTEGER):
    case pair_key(TAG_NULL, TAG_NUMERIC):
    case pair_key(TAG_NULL, TAG_MONEY):
    case pair_key(TAG_NULL, TAG_DATE):
    case pair_key(TAG_NULL, TAG_DATETIME):
    case pair_key(TAG_NULL, TAG_STRING):
    case pair_key(TAG_INTEGER, TAG_NULL):
    case pair_key(TAG_NUMERIC, TAG_NULL):
    case pair_key(TAG_MONEY, TAG_NULL):
    case pair_key(TAG_DATE, TAG_NULL):
    case pair_key(TAG_DATETIME, TAG_NULL):
    case pair_key(TAG_STRING, TAG_NULL):
        null_pair(left, right);
        return;
    default:
        throw RuntimeError(107);
    }
}

void Variant::add(VmStack*, const Variant& right) { inline_variant_add(this, &right); }

void Variant::sub(VmStack* stack, const Variant& right_value) {
    Variant* left = follow();
    const Variant* right = right_value.follow();
    switch (pair_key(left->tag, right->tag)) {
    case pair_key(TAG_INTEGER, TAG_INTEGER):
        sub_integers(left, left->integer, right->integer);
        return;
    case pair_key(TAG_INTEGER, TAG_NUMERIC):
        left->set_float(static_cast<double>(left->integer) - right->numeric.value,
                        right->numeric.decimals);
        return;
    case pair_key(TAG_NUMERIC, TAG_INTEGER):
        left->numeric.value -= static_cast<double>(right->integer);
        return;
    case pair_key(TAG_NUMERIC, TAG_NUMERIC):
        left->numeric.value -= right->numeric.value;
        left->numeric.decimals = larger_decimals(left->numeric.decimals, right->numeric.decimals);
        return;
    case pair_key(TAG_INTEGER, TAG_MONEY):
    case pair_key(TAG_NUMERIC, TAG_MONEY):
    case pair_key(TAG_MONEY, TAG_INTEGER):
    case pair_key(TAG_MONEY, TAG_NUMERIC):
    case pair_key(TAG_MONEY, TAG_MONEY):
        set_money(left, money_units(left) - money_units(right));
        return;
    case pair_key(TAG_DATE, TAG_DATE): {
        long long days = 0;
        if (left->date.julian && right->date.julian)
            days = static_cast<long long>(left->date.julian) - right->date.julian;
        left->set_integer(days);
        return;
    }
    case pair_key(TAG_DATE, TAG_INTEGER):
        if (right->integer == std::numeric_limits<long long>::min()) throw RuntimeError(2034);
        shift_date(left, -right->integer);
        return;
    case pair_key(TAG_DATE, TAG_NUMERIC):
        shift_date(left, -whole_days(right->numeric.value));
        return;
    case pair_key(TAG_DATETIME, TAG_INTEGER):
        if (right->integer == std::numeric_limits<long long>::min()) throw RuntimeError(2034);
        shift_datetime(left, -right->integer);
        return;
    case pair_key(TAG_DATETIME, TAG_NUMERIC):
        shift_datetime(left, -rounded_seconds(right->numeric.value));
        return;
    case pair_key(TAG_STRING, TAG_STRING):
        left->str().rtrim();
        left->str().add(right->str());
        return;
    case pair_key(TAG_NULL, TAG_NULL):
    case pair_key(TAG_NULL, TAG_INTEGER):
    case pair_key(TAG_NULL, TAG_NUMERIC):
    case pair_key(TAG_NULL, TAG_MONEY):
    case pair_key(TAG_NULL, TAG_DATE):
    case pair_key(TAG_NULL, TAG_DATETIME):
    case pair_key(TAG_NULL, TAG_STRING):
    case pair_key(TAG_INTEGER, TAG_NULL):
    case pair_key(TAG_NUMERIC, TAG_NULL):
    case pair_key(TAG_MONEY, TAG_NULL):
    case pair_key(TAG_DATE, TAG_NULL):
    case pair_key(TAG_DATETIME, TAG_NULL):
    case pair_key(TAG_STRING, TAG_NULL):
        null_pair(left, right);
        return;
    default:
        (void)stack;
        throw RuntimeError(107);
    }
}

void Variant::val_negative(VmStack*, Variant* dest) const {
    const Variant* v = follow();
    switch (v->tag) {
    case TAG_NULL: dest->set_null(); return;
    case TAG_INTEGER:
        if (v->integer == std::numeric_limits<long long>::min())
            dest->set_float(-static_cast<double>(v->integer), 0);
        else
            dest->set_integer(-v->integer);
        return;
    case TAG_NUMERIC: dest->set_float(-v->numeric.value, v->numeric.decimals); return;
    case TAG_MONEY: dest->set(money_from_i128(-money_to_i128(v->money))); return;
    default: throw RuntimeError(107);
    }
}

}  // namespace zobase
