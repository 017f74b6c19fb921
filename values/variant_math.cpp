// Multiplication, division, power, rounding and roots of Variants. Each
// operation switches on the pair key so that scalar pairs stay a jump table.
#include <cmath>
#include <limits>

#include "base/call_trace.h"
#include "values/error.h"
#include "values/money.h"
#include "values/numeric.h"
#include "values/variant.h"

namespace zobase {

namespace {

constexpr double TWO_POW_52 = 4503599627370496.0;

constexpr unsigned KEY_II = pair_key(TAG_INTEGER, TAG_INTEGER);
constexpr unsigned KEY_IN = pair_key(TAG_INTEGER, TAG_NUMERIC);
constexpr unsigned KEY_IY = pair_key(TAG_INTEGER, TAG_MONEY);
constexpr unsigned KEY_NI = pair_key(TAG_NUMERIC, TAG_INTEGER);
constexpr unsigned KEY_NN = pair_key(TAG_NUMERIC, TAG_NUMERIC);
constexpr unsigned KEY_NY = pair_key(TAG_NUMERIC, TAG_MONEY);
constexpr unsigned KEY_YI = pair_key(TAG_MONEY, TAG_INTEGER);
constexpr unsigned KEY_YN = pair_key(TAG_MONEY, TAG_NUMERIC);
constexpr unsigned KEY_YY = pair_key(TAG_MONEY, TAG_MONEY);

// A whole-valued double becomes an integer when it fits, else numeric with 0 decimals.
void set_whole(Variant* v, double whole) {
    integer_type_st value;
    if (double_to_integer(whole, &value))
        v->set_integer(value);
    else
        v->set_float(whole, 0);
}

// A quotient that is whole under the tolerance and fits 64 bits is an integer.
// A quotient farther from its whole neighbour than a few tolerances is a
// fraction for certain: the tolerance test's own division is left out then.
void set_quotient(Variant* v, double quotient) {
    double rounded = std::round(quotient);
    double distance = std::fabs(quotient - rounded);
    if (distance > DOUBLE_TOLERANCE * (4 * std::fabs(rounded) + 1)) {
        v->set_float(quotient, DECIMALS_UNKNOWN);
        return;
    }
    integer_type_st value;
    if (cmp_double_with_tollerance(quotient, rounded) == 0 && double_to_integer(rounded, &value))
        v->set_integer(value);
    else
        v->set_float(quotient, DECIMALS_UNKNOWN);
}

// I, N and Y as doubles, money in whole units.
double number_as_double(const Variant& v, int error) {
    switch (v.tag) {
    case TAG_INTEGER: return static_cast<double>(v.integer);
    case TAG_NUMERIC: return v.numeric.value;
    case TAG_MONEY: return money_to_double(v.money);
    default: throw RuntimeError(error);
    }
}

void divide_integers(Variant* left, integer_type_st divisor) {
    integer_type_st dividend = left->integer;
    bool exact = divisor != 0 && !(divisor == -1 && dividend == std::numeric_limits<long long>::min()) &&
                 dividend % divisor == 0;
    if (exact)
        left->integer = dividend / divisor;
    else
        left->set_float(static_cast<double>(dividend) / static_cast<double>(divisor), DECIMALS_UNKNOWN);
}

}  // namespace

void Variant::mul(VmStack*, const Variant& right) {
    switch (pair_key(tag, right.tag)) {
    case KEY_II: {
        integer_type_st product;
        if (__builtin_mul_overflow(integer, right.integer, &product))
            set_float(static_cast<double>(integer) * static_cast<double>(right.integer), 0);
        else
            integer = product;
        return;
    }
    case KEY_IN:
        set_float(static_cast<double>(integer) * right.numeric.value,
                  product_decimals(0, right.numeric.decimals));
        return;
    case KEY_NI:
        numeric = {numeric.value * static_cast<double>(right.integer), product_decimals(numeric.decimals, 0)};
        return;
    case KEY_NN:
        numeric = {numeric.value * right.numeric.value,
                   product_decimals(numeric.decimals, right.numeric.decimals)};
        return;
    case KEY_IY: set(money_mul_integer(right.money, integer)); return;
    case KEY_YI: money = money_mul_integer(money, right.integer); return;
    case KEY_YY: money = money_mul(money, right.money); return;
    case KEY_NY: set(money_mul(money_from_double(numeric.value), right.money)); return;
    case KEY_YN: money = money_mul(money, money_from_double(right.numeric.value)); return;
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
}

void Variant::div(VmStack*, const Variant& right) {
    switch (pair_key(tag, right.tag)) {
    case KEY_II: divide_integers(this, right.integer); return;
    case KEY_IN: set_quotient(this, static_cast<double>(integer) / right.numeric.value); return;
    case KEY_NI: set_quotient(this, numeric.value / static_cast<double>(right.integer)); return;
    case KEY_NN: set_quotient(this, numeric.value / right.numeric.value); return;
    case KEY_IY: set(money_integer_div(integer, right.money)); return;
    case KEY_YI: money = money_div_integer(money, right.integer); return;
    case KEY_YY: money = money_div(money, right.money); return;
    case KEY_NY: set(money_div(money_from_double(numeric.value), right.money)); return;
    case KEY_YN: money = money_div(money, money_from_double(right.numeric.value)); return;
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
}

void Variant::pow(VmStack*, const Variant& right) {
    ZO_TRACE();
    double base = number_as_double(*this, ERR_OPERAND_TYPE_MISMATCH);
    double exponent = number_as_double(right, ERR_OPERAND_TYPE_MISMATCH);
    double result = std::pow(base, exponent);
    if (std::isnan(result) && !std::isnan(base) && !std::isnan(exponent))
        throw RuntimeError(ERR_POWER_DOMAIN);
    set_float(result, DECIMALS_UNKNOWN);
}

void Variant::round(VmStack*, long long decimals) {
    switch (tag) {
    case TAG_INTEGER: return;
    case TAG_MONEY: money = money_round(money, decimals); return;
    case TAG_NUMERIC: break;
    default: throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    }
    double value = numeric.value;
    if (decimals == 0) {
        set_whole(this, std::round(value));
    } else if (decimals < 0) {
        // Negated as a double: the lowest decimals have no 64-bit negation.
        // Past 10^308 the scale is infinite, and every value rounds to zero.
        double scale = decimals > -POWERS_OF_TEN_COUNT ? powers_of_ten[-decimals]
                                                       : std::pow(10.0, -static_cast<double>(decimals));
        set_whole(this, std::isinf(scale) ? 0.0 : std::round(value / scale) * scale);
    } else {
        // From 2^52 up a scaled double has no fraction left, and scaling back
        // would only add error.
        if (decimals < POWERS_OF_TEN_COUNT) {
            double scaled = value * powers_of_ten[decimals];
            if (std::fabs(scaled) < TWO_POW_52) value = std::round(scaled) / powers_of_ten[decimals];
        }
        numeric = {value, static_cast<uint64_t>(decimals)};
    }
}

void Variant::floor(VmStack*) {
    switch (tag) {
    case TAG_INTEGER: return;
    case TAG_NUMERIC: set_whole(this, std::floor(numeric.value)); return;
    case TAG_MONEY: money = money_floor(money); return;
    default: throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    }
}

void Variant::ceil(VmStack*) {
    switch (tag) {
    case TAG_INTEGER: return;
    case TAG_NUMERIC: set_whole(this, std::ceil(numeric.value)); return;
    case TAG_MONEY: money = money_ceil(money); return;
    default: throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    }
}

void Variant::sqrt(VmStack*) {
    double value = number_as_double(*this, ERR_OPERAND_TYPE_MISMATCH);
    if (value < 0) throw RuntimeError(ERR_SQRT_NEGATIVE);
    set_float(std::sqrt(value), DECIMALS_UNKNOWN);
}

void variant_mod(VmStack* stack, const Variant* a, const Variant* b, Variant* dest) {
    ZO_TRACE();
    // Checked first so that no owning value is copied into the temporary.
    if (!a->is_number() || !b->is_number()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    Variant whole_quotients(*a);
    whole_quotients.div(stack, *b);
    whole_quotients.floor(stack);
    whole_quotients.mul(stack, *b);
    dest->set_variant(a);
    dest->sub(stack, whole_quotients);
}

}  // namespace zobase
