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

// The smallest integer has no negation; as days or seconds it is out of range anyway.
long long negated_days(long long n) {
    if (n == std::numeric_limits<long long>::min()) throw RuntimeError(ERR_DATE_INVALID);
    return -n;
}

void make_null(Variant* left) {
    left->release(nullptr);
    left->set_null();
}

// Null absorbs numbers, dates and text on either side; anything else is a
// type error. Returns false when neither side is null.
bool null_pair(Variant* left, const Variant* right) {
    if (left->tag != TAG_NULL && right->tag != TAG_NULL) return false;
    uint8_t other = left->tag == TAG_NULL ? right->tag : left->tag;
    bool absorbs = other == TAG_NULL || (other >= TAG_INTEGER && other <= TAG_DATETIME) ||
                   other == TAG_STRING;
    if (!absorbs) throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    make_null(left);
    return true;
}

}  // namespace

void inline_variant_add(Variant* left, const Variant* right) {
    if (left->tag == TAG_POINTER) left = left->pointer.target;
    right = right->follow();
    if (null_pair(left, right)) return;
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
        left->date = date_add_days(left->date, right->integer);
        return;
    case pair_key(TAG_DATE, TAG_NUMERIC):
        left->date = date_add_days(left->date, right->numeric.value);
        return;
    case pair_key(TAG_DATETIME, TAG_INTEGER):
        left->datetime = datetime_add_seconds(left->datetime, right->integer);
        return;
    case pair_key(TAG_DATETIME, TAG_NUMERIC):
        left->datetime = datetime_add_seconds(left->datetime, right->numeric.value);
        return;
    case pair_key(TAG_STRING, TAG_STRING):
        left->str().add(right->str());
        return;
    default:
        throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    }
}

void Variant::add(VmStack*, const Variant& right) { inline_variant_add(this, &right); }

void Variant::sub(VmStack* stack, const Variant& right_value) {
    Variant* left = follow();
    const Variant* right = right_value.follow();
    if (null_pair(left, right)) return;
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
    case pair_key(TAG_DATE, TAG_DATE):
        left->set_integer(date_diff_days(left->date, right->date));
        return;
    case pair_key(TAG_DATE, TAG_INTEGER):
        left->date = date_add_days(left->date, negated_days(right->integer));
        return;
    case pair_key(TAG_DATE, TAG_NUMERIC):
        left->date = date_add_days(left->date, -std::trunc(right->numeric.value));
        return;
    case pair_key(TAG_DATETIME, TAG_INTEGER):
        left->datetime = datetime_add_seconds(left->datetime, negated_days(right->integer));
        return;
    case pair_key(TAG_DATETIME, TAG_NUMERIC):
        left->datetime = datetime_add_seconds(left->datetime, -std::round(right->numeric.value));
        return;
    case pair_key(TAG_STRING, TAG_STRING):
        left->str().rtrim();
        left->str().add(right->str());
        return;
    default:
        (void)stack;
        throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
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
    default: throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    }
}

}  // namespace zobase
