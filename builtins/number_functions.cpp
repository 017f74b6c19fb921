// Number functions. Formals marked "?" give a null result for a null argument;
// the arithmetic is Variant's own, so results follow its type rules.
#include <cmath>
#include <numbers>

#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "vm/variant_compare.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// A copy of argument 1 in the result, on which Variant's operations then work.
bool copy_first_unless_null(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) {
        result->set_null();
        return false;
    }
    argument(stack, 1).copy(result);
    return true;
}

void require_number(const Variant& value) {
    if (!value.is_number()) throw RuntimeError(ERR_ARGUMENT_INVALID);
}

template <double (*Function)(double)>
void numeric_function(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_float(Function(static_cast<double>(argument(stack, 1))), DECIMALS_UNKNOWN);
}

double checked_log(double x) {
    if (x <= 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return std::log(x);
}

double checked_log10(double x) {
    if (x <= 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return std::log10(x);
}

double degrees_to_radians(double x) { return x * std::numbers::pi / 180.0; }
double radians_to_degrees(double x) { return x * 180.0 / std::numbers::pi; }
double sine(double x) { return std::sin(x); }
double cosine(double x) { return std::cos(x); }
double tangent(double x) { return std::tan(x); }
double arc_sine(double x) { return std::asin(x); }
double arc_cosine(double x) { return std::acos(x); }
double arc_tangent(double x) { return std::atan(x); }
double exponential(double x) { return std::exp(x); }

long long bit_argument(VmStack* stack, unsigned long long i) { return argument(stack, i).integer; }

// A bit position must lie in the 64 bits of an integer.
unsigned bit_position(VmStack* stack, unsigned long long i) {
    long long position = bit_argument(stack, i);
    if (position < 0 || position > 63) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return static_cast<unsigned>(position);
}

template <class Op>
void fold_bits(VmStack* stack, unsigned long long argc, Variant* result, Op op) {
    if (any_null_argument(stack, argc)) return result->set_null();
    unsigned long long bits = static_cast<unsigned long long>(bit_argument(stack, 1));
    for (unsigned long long i = 2; i <= argc; ++i)
        bits = op(bits, static_cast<unsigned long long>(bit_argument(stack, i)));
    result->set_integer(static_cast<long long>(bits));
}

// max and min: the first argument that no later one beats; null gives null.
void extreme(VmStack* stack, unsigned long long argc, Variant* result, int sign) {
    if (any_null_argument(stack, argc)) return result->set_null();
    const Variant* best = &argument(stack, 1);
    for (unsigned long long i = 2; i <= argc; ++i) {
        const Variant& candidate = argument(stack, i);
        bool null_seen = false;
        if (variant_cmp(&candidate, best, &null_seen, nullptr) * sign > 0) best = &candidate;
    }
    best->copy(result);
}

}  // namespace

void stackcall_abs(VmStack* stack, unsigned long long argc, Variant* result) {
    if (!copy_first_unless_null(stack, argc, result)) return;
    require_number(*result);
    bool negative = result->tag == TAG_INTEGER   ? result->integer < 0
                    : result->tag == TAG_NUMERIC ? result->numeric.value < 0
                                                 : result->money.high < 0;
    if (!negative) return;
    Variant positive;  // numbers own nothing, so plain copies are safe
    result->val_negative(stack, &positive);
    result->set_variant(&positive);
}

// The compiler's cast to integer has already truncated the argument.
void stackcall_int(VmStack* stack, unsigned long long argc, Variant* result) {
    copy_first_unless_null(stack, argc, result);
}

void stackcall_round(VmStack* stack, unsigned long long argc, Variant* result) {
    if (!copy_first_unless_null(stack, argc, result)) return;
    result->round(stack, argument(stack, 2).integer);
}

void stackcall_floor(VmStack* stack, unsigned long long argc, Variant* result) {
    if (!copy_first_unless_null(stack, argc, result)) return;
    result->floor(stack);
}

void stackcall_ceiling(VmStack* stack, unsigned long long argc, Variant* result) {
    if (!copy_first_unless_null(stack, argc, result)) return;
    result->ceil(stack);
}

void stackcall_sqrt(VmStack* stack, unsigned long long argc, Variant* result) {
    if (!copy_first_unless_null(stack, argc, result)) return;
    result->sqrt(stack);
}

void stackcall_mod(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    variant_mod(stack, &argument(stack, 1), &argument(stack, 2), result);
}

void stackcall_max(VmStack* stack, unsigned long long argc, Variant* result) {
    extreme(stack, argc, result, 1);
}

void stackcall_min(VmStack* stack, unsigned long long argc, Variant* result) {
    extreme(stack, argc, result, -1);
}

void stackcall_pi(VmStack*, unsigned long long, Variant* result) {
    result->set_float(std::numbers::pi, DECIMALS_UNKNOWN);
}

void stackcall_exp(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<exponential>(stack, argc, result);
}
void stackcall_log(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<checked_log>(stack, argc, result);
}
void stackcall_log10(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<checked_log10>(stack, argc, result);
}
void stackcall_sin(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<sine>(stack, argc, result);
}
void stackcall_cos(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<cosine>(stack, argc, result);
}
void stackcall_tan(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<tangent>(stack, argc, result);
}
void stackcall_asin(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<arc_sine>(stack, argc, result);
}
void stackcall_acos(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<arc_cosine>(stack, argc, result);
}
void stackcall_atan(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<arc_tangent>(stack, argc, result);
}
void stackcall_dtor(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<degrees_to_radians>(stack, argc, result);
}
void stackcall_rtod(VmStack* stack, unsigned long long argc, Variant* result) {
    numeric_function<radians_to_degrees>(stack, argc, result);
}

void stackcall_atn2(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    double y = static_cast<double>(argument(stack, 1));
    double x = static_cast<double>(argument(stack, 2));
    result->set_float(std::atan2(y, x), DECIMALS_UNKNOWN);
}

void stackcall_mton(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set(static_cast<numeric_type_st>(argument(stack, 1)));
}

void stackcall_ntom(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set(static_cast<money_type_st>(argument(stack, 1)));
}

void stackcall_bitand(VmStack* stack, unsigned long long argc, Variant* result) {
    fold_bits(stack, argc, result, [](auto a, auto b) { return a & b; });
}
void stackcall_bitor(VmStack* stack, unsigned long long argc, Variant* result) {
    fold_bits(stack, argc, result, [](auto a, auto b) { return a | b; });
}
void stackcall_bitxor(VmStack* stack, unsigned long long argc, Variant* result) {
    fold_bits(stack, argc, result, [](auto a, auto b) { return a ^ b; });
}

void stackcall_bitnot(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_integer(~bit_argument(stack, 1));
}

void stackcall_bitset(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    unsigned long long bits = static_cast<unsigned long long>(bit_argument(stack, 1));
    result->set_integer(static_cast<long long>(bits | (1ULL << bit_position(stack, 2))));
}

void stackcall_bitclear(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    unsigned long long bits = static_cast<unsigned long long>(bit_argument(stack, 1));
    result->set_integer(static_cast<long long>(bits & ~(1ULL << bit_position(stack, 2))));
}

void stackcall_bittest(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    unsigned long long bits = static_cast<unsigned long long>(bit_argument(stack, 1));
    result->set_bool((bits >> bit_position(stack, 2)) & 1);
}

void stackcall_bitlshift(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    unsigned long long bits = static_cast<unsigned long long>(bit_argument(stack, 1));
    result->set_integer(static_cast<long long>(bits << bit_position(stack, 2)));
}

// An arithmetic shift: the sign stays, as it does for the dialect's 32-bit values.
void stackcall_bitrshift(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_integer(bit_argument(stack, 1) >> bit_position(stack, 2));
}

}  // namespace zobase
