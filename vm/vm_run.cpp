// The dispatch loop: one switch over the opcode byte.
#include "vm/vm_run.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <exception>
#include <string>
#include <utility>

#include "values/numeric.h"
#include "vm/frames.h"
#include "vm/interrupt.h"
#include "vm/macro_execute.h"
#include "vm/object.h"
#include "vm/try_scope.h"
#include "vm/user_function.h"
#include "vm/variant_compare.h"
#include "vm/vm_instructions.h"

namespace zobase {

namespace {

template <typename T>
const T& op_as(const VmOp* op) {
    return *static_cast<const T*>(op);
}

Memvar* local_slot(VmStack* stack, uint64_t offset) { return stack->locals - offset; }

// ---- short paths: the integer and number pairs of the hot loops, with the
// results the general operations give them.

bool both_integers(const Variant* a, const Variant* b) { return a->tag == TAG_INTEGER && b->tag == TAG_INTEGER; }

int three_way(long long a, long long b) { return (a > b) - (a < b); }

// An integer loop goes round again while its value has not passed the
// limit in the step's direction; a step of 0 ends on reaching the limit.
bool integer_loop_continues(long long value, long long limit, long long step) {
    if (step > 0) return value <= limit;
    if (step < 0) return value >= limit;
    return value != limit;
}

// Pops a top that owns nothing: there is nothing to release.
void pop_scalar(VmStack* stack) {
    stack->esp->tag = TAG_FALSE;
    ++stack->esp;
}

// left += right for two integers that do not overflow, or two numerics.
[[gnu::always_inline]] inline bool add_in_place(Variant* left, const Variant* right) {
    long long sum;
    if (both_integers(left, right)) {
        if (__builtin_add_overflow(left->integer, right->integer, &sum)) return false;
        left->integer = sum;
        return true;
    }
    if (left->tag == TAG_NUMERIC && right->tag == TAG_NUMERIC) {
        left->numeric.value += right->numeric.value;
        if (right->numeric.decimals > left->numeric.decimals) left->numeric.decimals = right->numeric.decimals;
        return true;
    }
    return false;
}

// left *= right for two integers whose product fits, or two numerics, as
// the general product gives it.
bool multiply_in_place(Variant* left, const Variant* right) {
    if (both_integers(left, right)) {
        long long product;
        if (__builtin_mul_overflow(left->integer, right->integer, &product)) return false;
        left->integer = product;
        return true;
    }
    if (left->tag != TAG_NUMERIC || right->tag != TAG_NUMERIC) return false;
    left->numeric = {left->numeric.value * right->numeric.value,
                     product_decimals(left->numeric.decimals, right->numeric.decimals)};
    return true;
}

// A quotient plainly not a whole number, told from its bits alone: between
// 2^-46 and 1 - 2^-46, or from 1 up more than 26 units of its last place
// from the nearest whole number. The general rule's tolerance at that size is
// below 2^-46 in the first range and at most 26 units in the second, so it
// agrees that the quotient is a fraction. Anything else is left to it.
[[gnu::always_inline]] inline bool plainly_fractional(double quotient) {
    constexpr uint64_t LOW = std::bit_cast<uint64_t>(0x1p-46);
    constexpr uint64_t HIGH = std::bit_cast<uint64_t>(1.0 - 0x1p-46);
    uint64_t bits = std::bit_cast<uint64_t>(quotient) & ~(1ull << 63);
    if (bits - (LOW + 1) < HIGH - (LOW + 1)) return true;
    int exponent = static_cast<int>(bits >> 52) - 1023;
    if (exponent < 0 || exponent > 47) return false;
    uint64_t one = 1ull << (52 - exponent);  // 1.0 in units of the last place
    uint64_t fraction = bits & (one - 1);
    return std::min(fraction, one - fraction) > 26;
}

// left / right for a numeric left and a numeric or integer right, when the
// quotient is plainly not a whole number: the general quotient then gives
// that double with unknown decimals. Near a whole number it decides itself.
[[gnu::always_inline]] inline bool plain_quotient(const Variant* left, const Variant* right, double* quotient) {
    if (left->tag != TAG_NUMERIC) return false;
    double divisor;
    if (right->tag == TAG_NUMERIC) divisor = right->numeric.value;
    else if (right->tag == TAG_INTEGER) divisor = static_cast<double>(right->integer);
    else return false;
    *quotient = left->numeric.value / divisor;
    return plainly_fractional(*quotient);
}

bool divide_in_place(Variant* left, const Variant* right) {
    double quotient;
    if (!plain_quotient(left, right, &quotient)) return false;
    left->set_float(quotient, DECIMALS_UNKNOWN);
    return true;
}

// left %= right for two integers small enough that the general rule's double
// quotient is exact: the remainder of the floored quotient, an integer,
// taking the divisor's sign, as that rule gives it.
bool modulo_in_place(Variant* left, const Variant* right) {
    if (!both_integers(left, right)) return false;
    constexpr long long LIMIT = 1ll << 31;
    long long dividend = left->integer;
    long long divisor = right->integer;
    if (divisor == 0 || dividend <= -LIMIT || dividend >= LIMIT || divisor <= -LIMIT || divisor >= LIMIT)
        return false;
    long long remainder = dividend % divisor;
    if (remainder != 0 && (remainder < 0) != (divisor < 0)) remainder += divisor;
    left->integer = remainder;
    return true;
}

// Sub, mul, div, pow and mod: a null on either side makes the result null.
template <typename Operation>
void binary_with_null_rule(VmStack* stack, Operation operation) {
    Memvar* right = stack->esp;
    Memvar* left = stack->esp + 1;
    if (right->tag == TAG_NULL) {
        left->release(stack);
        left->set_null();
    } else if (left->tag != TAG_NULL) {
        operation(left, right);
    }
    stack->pop();
}

// The general add, product and quotient of the top two slots, out of the
// dispatch loop.
[[gnu::noinline]] void general_add(VmStack* stack) {
    inline_variant_add(stack->esp + 1, stack->esp);
    stack->pop();
}

[[gnu::noinline]] void general_mul(VmStack* stack) {
    binary_with_null_rule(stack, [stack](Variant* l, Variant* r) { l->mul(stack, *r); });
}

[[gnu::noinline]] void general_div(VmStack* stack) {
    binary_with_null_rule(stack, [stack](Variant* l, Variant* r) { l->div(stack, *r); });
}

enum CompareTest { TEST_EQ, TEST_LT, TEST_LTEQ, TEST_GT, TEST_GTEQ, TEST_LTGT };

bool passes(CompareTest test, int result) {
    switch (test) {
    case TEST_EQ: return result == 0;
    case TEST_LT: return result < 0;
    case TEST_LTEQ: return result <= 0;
    case TEST_GT: return result > 0;
    case TEST_GTEQ: return result >= 0;
    case TEST_LTGT: return result != 0;
    }
    return false;
}

void compare(VmStack* stack, CompareTest test, bool whole_strings) {
    Memvar* right = stack->esp;
    Memvar* left = stack->esp + 1;
    if (both_integers(left, right)) {
        bool passed = passes(test, three_way(left->integer, right->integer));
        pop_scalar(stack);
        left->set_bool(passed);
        return;
    }
    bool null_seen = false;
    int result = inline_variant_cmp(left, right, &null_seen, whole_strings ? nullptr : stack);
    stack->pop();
    left->release(stack);
    if (null_seen) left->set_null();
    else left->set_bool(passes(test, result));
}

int sign_of(int value) { return (value > 0) - (value < 0); }

// The loop's end test: from the top, the value, the limit and the step.
bool for_loop_ends(VmStack* stack) {
    const Memvar* value = stack->esp;
    const Memvar* limit = stack->esp + 1;
    const Memvar* step = stack->esp + 2;
    if (both_integers(value, limit) && step->tag == TAG_INTEGER) {
        bool ends = !integer_loop_continues(value->integer, limit->integer, step->integer);
        pop_scalar(stack);
        pop_scalar(stack);
        pop_scalar(stack);
        return ends;
    }
    bool null_seen = false;
    int position = inline_variant_cmp(value, limit, &null_seen, stack);
    bool ends = null_seen;
    if (!ends) {
        if (step->tag == TAG_NULL) ends = true;
        else ends = sign_of(position) == cmp_double_with_tollerance(static_cast<double>(*step), 0.0);
    }
    stack->pop();
    stack->pop();
    stack->pop();
    return ends;
}

[[gnu::always_inline]] inline void write_slot(VmStack* stack, Memvar* slot);

// Exchanges the top two slots, temporaries both, without touching what they own.
void swap_top_slots(VmStack* stack) {
    alignas(Memvar) unsigned char held[sizeof(Memvar)];
    std::memcpy(held, static_cast<void*>(stack->esp), sizeof(Memvar));
    std::memcpy(static_cast<void*>(stack->esp), static_cast<void*>(stack->esp + 1), sizeof(Memvar));
    std::memcpy(static_cast<void*>(stack->esp + 1), held, sizeof(Memvar));
}

// The value read last goes beneath top, and top is added to it and popped.
void add_to_value_beneath(VmStack* stack) {
    swap_top_slots(stack);
    if (add_in_place(stack->esp + 1, stack->esp)) pop_scalar(stack);
    else {
        inline_variant_add(stack->esp + 1, stack->esp);
        stack->pop();
    }
}

// `x = x + top`: in place while the bare name x means the variable; when a
// field hides it, the field's value plus top goes to the target, which is
// the slot, or found as assigning to the name finds it. sites[0] is the
// look-up place of the bare read, sites[1] of the assignment.
void add_to_bare_name(VmStack* stack, name_site_st* sites, uint32_t symbol, uint64_t offset) {
    if (Memvar* variable = kept_bare_variable(stack, sites[0], symbol)) {
        if (add_in_place(variable, stack->esp)) pop_scalar(stack);
        else {
            inline_variant_add(variable, stack->esp);
            stack->pop();
        }
        return;
    }
    read_by_name(stack, sites[0], symbol);
    add_to_value_beneath(stack);
    write_slot(stack, offset ? local_slot(stack, offset) : assignable_memvar(stack, sites[1], symbol));
}

bool add_numbers_in_place(Variant* stored, const Variant* addend) { return add_in_place(stored, addend); }

// THIS.name = THIS.name + top: a plain stored number takes a number in
// place; anything else is read, added and written as the three
// instructions would (access and assign methods run).
void add_to_this_member(VmStack* stack, member_site_st& site, const Memvar* slot, uint32_t symbol) {
    if (static_cast<Object*>(*slot->follow())->update_plain(stack, site, symbol, add_numbers_in_place, stack->esp))
        return pop_scalar(stack);
    read_this_member(stack, site, slot, symbol);
    add_to_value_beneath(stack);
    write_this_member(stack, site, slot, symbol);
}

// The variable a bare name stands for now, or null when that is not known
// without a look-up (a field may hide it, or nothing is kept).
[[gnu::always_inline]] inline Memvar* bare_variable(VmStack* stack, name_site_st& site, uint32_t symbol,
                                                    uint64_t offset) {
    if (offset && stack->sessions->bare_names_free()) return local_slot(stack, offset);
    return kept_bare_variable(stack, site, symbol);
}

// Pushes the bare name's value as ReadByName (ReadBareLocal) pushes it: the
// variable kept for it, else found by a look-up.
void push_bare(VmStack* stack, name_site_st& site, uint32_t symbol, const Memvar* kept) {
    if (kept) copy_value(stack->push(), kept);
    else read_by_name(stack, site, symbol);
}

// top <operator> a bare name: while the name is known as a variable and the
// pair takes the short path, the variable is read in place and nothing is
// pushed; else the name is read as ReadByName (ReadBareLocal) reads it and
// the operator runs as its own instruction would.
[[gnu::noinline]] void operate_by_bare_generally(VmStack* stack, name_site_st& site, uint32_t symbol,
                                                 const Memvar* kept, void (*general)(VmStack*)) {
    push_bare(stack, site, symbol, kept);
    general(stack);
}

template <typename Op>
[[gnu::always_inline]] inline void operate_by_bare(VmStack* stack, const Op& op,
                                                   bool (*in_place)(Variant*, const Variant*),
                                                   void (*general)(VmStack*)) {
    const Memvar* right = bare_variable(stack, op.sites[0], op.symbol, op.offset);
    if (right && in_place(stack->esp, right)) return;
    operate_by_bare_generally(stack, op.sites[0], op.symbol, right, general);
}

// left <operator> right, both bare names: the left pushed as its read would
// push it, then as the operator by a bare name.
template <uint8_t OP>
[[gnu::noinline]] void operate_bare_by_bare(VmStack* stack, const VmOpBareByBare<OP>& op,
                                            bool (*in_place)(Variant*, const Variant*),
                                            void (*general)(VmStack*)) {
    push_bare(stack, op.sites[0], op.left, bare_variable(stack, op.sites[0], op.left, op.left_offset));
    const Memvar* right = bare_variable(stack, op.sites[1], op.symbol, op.offset);
    if (right && in_place(stack->esp, right)) return;
    operate_by_bare_generally(stack, op.sites[1], op.symbol, right, general);
}

// Two numbers add in place with nothing pushed: true. The loop's own short path.
[[gnu::always_inline]] inline bool add_bare_numbers(VmStack* stack, const VmOpAddBareToBare& add) {
    const Memvar* source = bare_variable(stack, add.sites[2], add.source, add.source_offset);
    if (!source) return false;
    Memvar* target = bare_variable(stack, add.sites[0], add.symbol, add.offset);
    return target && add_in_place(target, source);
}

// Anything but two numbers goes as the read of the source and then
// AddToBareName would.
void add_bare_to_bare(VmStack* stack, const VmOpAddBareToBare& add) {
    const Memvar* source = bare_variable(stack, add.sites[2], add.source, add.source_offset);
    Memvar* target = bare_variable(stack, add.sites[0], add.symbol, add.offset);
    if (source && target && add_in_place(target, source)) return;
    push_bare(stack, add.sites[2], add.source, source);
    add_to_bare_name(stack, add.sites, add.symbol, add.offset);
}

// The quotient of two bare names goes straight to the pushed slot, with no
// copy of the left operand to read back.
[[gnu::always_inline]] inline void divide_bare_by_bare(VmStack* stack, const VmOpDivBareByBare& op) {
    const Memvar* left = bare_variable(stack, op.sites[0], op.left, op.left_offset);
    const Memvar* right = left ? bare_variable(stack, op.sites[1], op.symbol, op.offset) : nullptr;
    double quotient;
    if (right && plain_quotient(left, right, &quotient)) return stack->push()->set_float(quotient, DECIMALS_UNKNOWN);
    operate_bare_by_bare(stack, op, divide_in_place, general_div);
}

// The loop's variable while it is known without a look-up: the frame slot
// the compiler gave it, or the variable the bare name stands for; null
// when a look-up must decide.
[[gnu::always_inline]] inline Memvar* known_loop_variable(VmStack* stack, const VmOpForNextJump& next) {
    if (!next.variable) return kept_bare_variable(stack, next.sites[1], next.symbol);
    Memvar* slot = local_slot(stack, next.variable);
    if (stack->sessions->bare_names_free() || kept_bare_variable(stack, next.sites[1], next.symbol) == slot)
        return slot;
    return nullptr;
}

// The round of an integer loop whose variable is known without a look-up:
// true with `again` set when decided; false when the general round must
// decide (another type, an overflow to a double, a name to look up).
[[gnu::always_inline]] inline bool integer_round(VmStack* stack, const VmOpForNextJump& next, bool* again) {
    Memvar* value = known_loop_variable(stack, next);
    if (!value || value->tag != TAG_INTEGER) return false;
    const Memvar* step = local_slot(stack, next.step);
    const Memvar* limit = local_slot(stack, next.limit);
    if (step->tag != TAG_INTEGER || limit->tag != TAG_INTEGER) return false;
    long long sum;
    if (__builtin_add_overflow(value->integer, step->integer, &sum)) return false;
    value->integer = sum;
    *again = integer_loop_continues(sum, limit->integer, step->integer);
    return true;
}

// The step in place, then the test of the loop's head on value, limit and
// step; true: go round again.
// While no field hides the bare name, it is the variable the step goes to.
bool for_next_continues(VmStack* stack, const VmOpForNextJump& next) {
    name_site_st& site = next.sites[1];
    Memvar* value = bare_variable(stack, site, next.symbol, next.variable);
    Memvar* variable = next.variable ? local_slot(stack, next.variable)
                       : value       ? value
                                     : find_memvar(stack, next.sites[0], next.symbol);
    const Memvar* step = local_slot(stack, next.step);
    const Memvar* limit = local_slot(stack, next.limit);
    if (!add_in_place(variable, step)) inline_variant_add(variable, step);
    if (value && both_integers(value, limit) && step->tag == TAG_INTEGER)
        return integer_loop_continues(value->integer, limit->integer, step->integer);
    stack->push()->set_variant(step);
    stack->push()->set_variant(limit);
    if (value) stack->push()->set_variant(value);
    else read_by_name(stack, site, next.symbol);
    return !for_loop_ends(stack);
}

void cast_top(VmStack* stack, const VmOp* op, uint8_t wanted) {
    Memvar* top = stack->esp;
    if (top->tag == wanted) return;
    if (top->tag == TAG_NULL) {
        if (op_as<VmOpCastBase>(op).allow_null) return;
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
    Variant converted;
    switch (wanted) {
    case TAG_INTEGER: converted.set_integer(static_cast<integer_type_st>(*top)); break;
    case TAG_NUMERIC: converted.set(static_cast<numeric_type_st>(*top)); break;
    case TAG_MONEY: converted.set(static_cast<money_type_st>(*top)); break;
    case TAG_DATE: {
        date_st d;
        top->cast(&d);
        converted.set(d);
        break;
    }
    case TAG_DATETIME: {
        datetime_st t;
        top->cast(&t);
        converted.set(t);
        break;
    }
    case TAG_STRING: {
        String s;
        top->cast(&s);
        converted.set_string(s);
        break;
    }
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
    top->release(stack);
    std::memcpy(static_cast<void*>(top), &converted, sizeof(Variant));
}

void cast_logical_or_object(VmStack* stack, const VmOp* op, bool object) {
    uint8_t tag = stack->esp->tag;
    bool passes_as_is = object ? tag == TAG_OBJECT : (tag == TAG_FALSE || tag == TAG_TRUE);
    if (passes_as_is) return;
    if (tag == TAG_NULL && op_as<VmOpCastBase>(op).allow_null) return;
    throw RuntimeError(ERR_ARGUMENT_INVALID);
}

// Assigning to a whole array fills every element and keeps the array; an
// array assigned to it (DIMENSION, STORE, a function's result) replaces it.
[[gnu::always_inline]] inline void write_slot(VmStack* stack, Memvar* slot) {
    Variant* target = slot->follow();
    if (target->tag == TAG_ARRAY && stack->esp->tag != TAG_ARRAY) [[unlikely]] {
        target->store_recursive(stack, stack->esp);
        stack->pop();
        return;
    }
    target->release(stack);
    // The value moves: what top owns becomes the target's, and top is left
    // clean. A pointer delivers a copy of its target instead.
    if (stack->esp->tag != TAG_POINTER) {
        take_value_bits(target, stack->esp);
        pop_scalar(stack);
        return;
    }
    stack->esp->deliver(target);
    stack->pop();
}

void push_copy(VmStack* stack, const Memvar* var) { copy_value(stack->push(), var); }

void push_pointer(VmStack* stack, Memvar* var) { var->ref(stack, stack->push(), nullptr); }

void pop_slots(VmStack* stack, uint64_t count) { stack->pop_to(stack->esp + count); }

// The element of a one-subscript array at an integer subscript in range;
// null: the general way decides (objects, two subscripts, errors).
[[gnu::always_inline]] inline Variant* plain_element(Variant* var, uint64_t n, const Memvar* subscript) {
    Variant* target = var->follow();
    if (n != 1 || target->tag != TAG_ARRAY || subscript->tag != TAG_INTEGER) return nullptr;
    uint64_t index = static_cast<uint64_t>(subscript->integer);
    // Wraps for 0 and negative subscripts, which then fail the range test too.
    if (index - 1 >= target->array.count) return nullptr;
    return &target->array.storage->elements[index - 1];
}

void read_array(VmStack* stack, Memvar* var, uint64_t n) {
    if (const Variant* element = plain_element(var, n, stack->esp)) {
        Variant copy;
        copy_value(&copy, element);
        Memvar* dest = stack->esp + 1;
        dest->release(stack);
        take_value_bits(dest, &copy);
        pop_scalar(stack);
        return;
    }
    read_array_item(stack, var, n, stack->esp + n);
    pop_slots(stack, n);
}

// An array held by this value alone takes the value in place; a shared one
// is copied first, the general way.
void write_array(VmStack* stack, Memvar* var, uint64_t n) {
    Variant* element = plain_element(var, n, stack->esp + 1);
    if (element && stack->esp->tag != TAG_POINTER &&
        var->follow()->array.storage->shares.load(std::memory_order_acquire) == 1) {
        element->release(stack);
        take_value_bits(element, stack->esp);
        pop_scalar(stack);
        pop_scalar(stack);
        return;
    }
    write_array_item(stack, var, n);
    pop_slots(stack, n + 1);
}

void set_constant(Variant* dest, integer_type_st value) { dest->set_integer(value); }
void set_constant(Variant* dest, const numeric_type_st& value) { dest->set(value); }

// top + constant and top * constant: in place for the pairs the short path
// takes, else the constant is pushed and `general` runs the operator as
// BinaryAdd or BinaryMul would.
template <typename Constant, typename General>
void operate_with_constant(VmStack* stack, const Constant& value, bool (*in_place)(Variant*, const Variant*),
                           General general) {
    Variant right;
    set_constant(&right, value);
    if (in_place(stack->esp, &right)) return;
    set_constant(stack->push(), value);
    general();
}

template <typename Constant>
void add_constant(VmStack* stack, const Constant& value) {
    operate_with_constant(stack, value, add_in_place, [stack] { general_add(stack); });
}

template <typename Constant>
void multiply_constant(VmStack* stack, const Constant& value) {
    operate_with_constant(stack, value, multiply_in_place, [stack] { general_mul(stack); });
}

// x * factor + addend in place: two integers when neither step overflows,
// or two numerics, with the decimals MulConst and AddConst give them.
bool mul_add_in_place(Variant* x, integer_type_st factor, integer_type_st addend) {
    long long product, sum;
    if (x->tag != TAG_INTEGER || __builtin_mul_overflow(x->integer, factor, &product) ||
        __builtin_add_overflow(product, addend, &sum))
        return false;
    x->integer = sum;
    return true;
}

[[gnu::always_inline]] inline bool mul_add_in_place(Variant* x, const numeric_type_st& factor,
                                                   const numeric_type_st& addend) {
    if (x->tag != TAG_NUMERIC) return false;
    double product = x->numeric.value * factor.value;
    // Rounded on its own, as the product of MulConst is: never one fused step.
    asm("" : "+x"(product));
    x->numeric = {product + addend.value,
                  std::max(product_decimals(x->numeric.decimals, factor.decimals), addend.decimals)};
    return true;
}

// Anything but the pairs above: the name read, multiplied, added and
// assigned as the four instructions would.
template <typename Op>
[[gnu::noinline]] void mul_add_to_bare_generally(VmStack* stack, const Op& op, const Memvar* variable) {
    push_bare(stack, op.sites[0], op.symbol, variable);
    multiply_constant(stack, op.factor);
    add_constant(stack, op.addend);
    write_slot(stack, op.offset ? local_slot(stack, op.offset) : assignable_memvar(stack, op.sites[1], op.symbol));
}

// `x = x * factor + addend`: in the variable itself while the bare name is
// known as the variable (the variable assigning finds as well).
template <typename Op>
[[gnu::always_inline]] inline void mul_add_to_bare(VmStack* stack, const Op& op) {
    Memvar* variable = bare_variable(stack, op.sites[0], op.symbol, op.offset);
    if (variable && mul_add_in_place(variable, op.factor, op.addend)) return;
    mul_add_to_bare_generally(stack, op, variable);
}

// The target is a by-reference slot; the value stays as top.
void store(VmStack* stack) {
    Memvar* target = stack->esp;
    ZO_ASSERT(target->tag == TAG_POINTER);
    target->store_recursive(stack, stack->esp + 1);
    stack->pop();
}

Memvar* undefined_memvar(VmStack* stack, uint32_t symbol) {
    Memvar* var;
    stack->alloc_undefined_memvar(symbol, &var);
    return var;
}

void read_memvar_or_false(VmStack* stack, uint32_t symbol) {
    Memvar* var;
    if (stack->get_memvar(symbol, &var)) push_copy(stack, var);
    else stack->push();
}

[[noreturn]] void not_built(const VmOp* op) { raise_not_available(opcode_class_name(op->opcode)); }

long long resolve_count(StackCount count, const VmOp* op, bool taken) {
    switch (count) {
    case STACK_N: return static_cast<long long>(count_operand(op));
    case STACK_N1: return static_cast<long long>(count_operand(op)) + 1;
    case STACK_TAKEN: return taken ? 1 : 0;
    default: return count;
    }
}

[[noreturn]] void stack_effect_failed(const VmOp* op, uint64_t before, uint64_t after, const char* expected) {
    thread_local std::string text;
    text = std::string("stack effect of ") + opcode_class_name(op->opcode) + ": depth " + std::to_string(before) +
           " became " + std::to_string(after) + ", the instruction table says " + expected;
    throw assert_failed_exception(text.c_str());
}

// The checked mode's test after an instruction that completed.
void verify_stack_effect(const VmStack* stack, const VmOp* op, uint64_t before, bool taken) {
    const instruction_info_st& row = instruction_info(op->opcode);
    if (row.pops == STACK_FRAME) {
        if (stack->esp != stack->frame_esp)
            stack_effect_failed(op, before, stack->depth(), "the frame's own slots");
        return;
    }
    long long expected =
        static_cast<long long>(before) - resolve_count(row.pops, op, taken) + resolve_count(row.pushes, op, taken);
    if (static_cast<long long>(stack->depth()) != expected)
        stack_effect_failed(op, before, stack->depth(), std::to_string(expected).c_str());
}

// A call of a user function from compiled code runs in the caller's
// activation: the callee's frame is entered (at call_frames[depth]) and the
// loop goes on at its first instruction.
[[gnu::always_inline]] inline VmFrame* enter_in_place(VmStack* stack, const Program* program, uint64_t n,
                                                      bool has_this, Variant* ret) {
    stack->pending_args = n;
    // Recursion goes round through calls: Ctrl-C is answered here too.
    poll_interrupt(stack);
    // Deliberately "Must specify additional parameters." although there are too many.
    if (n > program->parameter_count) throw RuntimeError(ERR_MISSING_PARAMETERS);
    uint64_t depth = next_frame_depth(stack);
    VmFrame* frame = &stack->call_frames[depth];
    enter_frame(stack, *frame, depth, n, has_this, program, ret);
    return frame;
}

[[gnu::always_inline]] inline VmFrame* enter_called_frame(VmStack* stack, const VmOpCallUserFunction& call) {
    return enter_in_place(stack, call.function->program(), call.n, false, stack->esp + call.n);
}

// A call of a method that a user class wrote in the language runs in place
// too: THIS is the object's slot beneath the arguments, and the frame keeps
// the caller's member context and argument window, which its end gives
// back. Null when the call goes the general way (object_call).
[[gnu::always_inline]] inline VmFrame* enter_called_method(VmStack* stack, const VmOpObjectCall& call) {
    Memvar* object_slot = stack->esp + call.n;
    const Variant* target = object_slot->follow();
    if (target->tag != TAG_OBJECT || !object_alive(target->object)) return nullptr;
    Object* object = target->object.object;
    Object* holder;
    const ClassMember* member;
    const Program* program = object->method_program(stack, call.member_site, call.symbol, &holder, &member);
    if (!program) return nullptr;
    VmFrame* frame = enter_in_place(stack, program, call.n, true, object_slot + 1);
    frame->member_call = true;
    frame->saved_context = stack->context;
    frame->saved_params_top = stack->params_top;
    frame->saved_param_count = stack->param_count;
    stack->context = {object, holder, member, call.symbol, MEMBER_MODE_CALL};
    stack->params_top = object_slot;
    stack->param_count = call.n;
    return frame;
}

// The RETURN of a frame entered in place: the frame ends and its arguments
// (and a method's object) are popped, leaving the value in the caller's
// result slot.
[[gnu::always_inline]] inline void return_to_caller(VmStack* stack) {
    VmFrame& frame = *stack->frame;
    Memvar* result = static_cast<Memvar*>(frame.ret);
    leave_called_frame(stack, frame);
    stack->pop_to(result);
}

// The dispatch loop, compiled twice: Checked verifies every instruction's
// stack effect against the instruction table.
// *ip stays the machine's position: it is written before each instruction
// runs, so the exception paths and everything an instruction calls find
// the instruction running. The copy in `pc` only spares reading it back;
// nothing else moves the position of a running loop.
// `floor` is the frame running when the activation began: its position is
// *floor_ip and its RETURN ends the loop. Frames entered in place above it
// keep their position in their own ip and return into the loop. Checked
// runs every call in an activation of its own, so each call completes as
// one instruction.
#pragma GCC diagnostic push
#pragma GCC diagnostic error "-Wswitch-enum"
template <bool Checked>
void run_loop(VmStack* stack, const VmFrame* floor, VmOp*** floor_ip, Variant* floor_ret) {
    VmOp*** ip = floor_ip;
    Variant* ret = floor_ret;
    auto follow_running_frame = [&] {
        if (stack->frame == floor) {
            ip = floor_ip;
            ret = floor_ret;
        } else {
            ip = &stack->frame->ip;
            ret = stack->frame->ret;
        }
    };
    follow_running_frame();
    VmOp** pc = *ip;
    for (;;) {
        *ip = pc;
        const VmOp* op = *pc;
        const uint64_t depth_before = Checked ? stack->depth() : 0;
        // Inlined always: a closure the compiler keeps out of line is rebuilt
        // in memory before every instruction.
        auto completed = [&](bool taken) __attribute__((always_inline)) {
            if constexpr (Checked) verify_stack_effect(stack, op, depth_before, taken);
        };
        // Every opcode has its case (a missing one does not compile) and
        // no instruction holds another byte: the switch needs no range test.
        switch (static_cast<Opcode>(op->opcode)) {
        case OP_UNWIND_FRAME:
            *ip = stack->frame->saved_ip;
            stack->pop_to(stack->frame_esp);
            completed(false);
            return;
        case OP_RESET_ESP:
            stack->pop_to(stack->frame_esp);
            break;
        case OP_BINARY_ADD:
            if (add_in_place(stack->esp + 1, stack->esp)) {
                pop_scalar(stack);
                break;
            }
            inline_variant_add(stack->esp + 1, stack->esp);
            stack->pop();
            break;
        case OP_BINARY_SUB:
            binary_with_null_rule(stack, [stack](Variant* l, Variant* r) { l->sub(stack, *r); });
            break;
        case OP_BINARY_MUL:
            if (multiply_in_place(stack->esp + 1, stack->esp)) {
                pop_scalar(stack);
                break;
            }
            general_mul(stack);
            break;
        case OP_BINARY_DIV:
            if (divide_in_place(stack->esp + 1, stack->esp)) {
                pop_scalar(stack);
                break;
            }
            general_div(stack);
            break;
        case OP_ADD_BY_BARE: operate_by_bare(stack, op_as<VmOpAddByBare>(op), add_in_place, general_add); break;
        case OP_MUL_BY_BARE:
            operate_by_bare(stack, op_as<VmOpMulByBare>(op), multiply_in_place, general_mul);
            break;
        case OP_ADD_BARE_BY_BARE:
            operate_bare_by_bare(stack, op_as<VmOpAddBareByBare>(op), add_in_place, general_add);
            break;
        case OP_MUL_BARE_BY_BARE:
            operate_bare_by_bare(stack, op_as<VmOpMulBareByBare>(op), multiply_in_place, general_mul);
            break;
        case OP_DIV_BARE_BY_BARE: divide_bare_by_bare(stack, op_as<VmOpDivBareByBare>(op)); break;
        case OP_MUL_ADD_INTEGER_TO_BARE: mul_add_to_bare(stack, op_as<VmOpMulAddIntegerToBare>(op)); break;
        case OP_MUL_ADD_NUMERIC_TO_BARE: mul_add_to_bare(stack, op_as<VmOpMulAddNumericToBare>(op)); break;
        case OP_DIV_BY_BARE: operate_by_bare(stack, op_as<VmOpDivByBare>(op), divide_in_place, general_div); break;
        case OP_BINARY_POW:
            binary_with_null_rule(stack, [stack](Variant* l, Variant* r) { l->pow(stack, *r); });
            break;
        case OP_BINARY_MOD:
            if (modulo_in_place(stack->esp + 1, stack->esp)) {
                pop_scalar(stack);
                break;
            }
            binary_with_null_rule(stack, [stack](Variant* l, Variant* r) {
                Variant result;
                variant_mod(stack, l, r, &result);
                l->release(stack);
                std::memcpy(static_cast<void*>(l), &result, sizeof(Variant));
            });
            break;
        case OP_BINARY_EQ: compare(stack, TEST_EQ, false); break;
        case OP_BINARY_LT: compare(stack, TEST_LT, false); break;
        case OP_BINARY_LTEQ: compare(stack, TEST_LTEQ, false); break;
        case OP_BINARY_GT: compare(stack, TEST_GT, false); break;
        case OP_BINARY_GTEQ: compare(stack, TEST_GTEQ, false); break;
        case OP_BINARY_LTGT: compare(stack, TEST_LTGT, false); break;
        case OP_BINARY_EQEQ: compare(stack, TEST_EQ, true); break;
        case OP_CALL_USER_FUNCTION:
            if constexpr (Checked) {
                call_user_function(stack, op_as<VmOpCallUserFunction>(op));
                break;
            } else {
                VmFrame* frame = enter_called_frame(stack, op_as<VmOpCallUserFunction>(op));
                ip = &frame->ip;
                ret = frame->ret;
                pc = frame->ip;
                continue;
            }
        case OP_CALL_BY_NAME: {
            const auto& call = op_as<VmOpCallByName>(op);
            call_by_name(stack, call.symbol, call.n);
            break;
        }
        case OP_CALL_NATIVE: {
            const auto& call = op_as<VmOpCallNative>(op);
            call_native(stack, call.handler, call.n);
            break;
        }
        case OP_CALL_NATIVE_VOID: {
            const auto& call = op_as<VmOpCallNativeVoid>(op);
            call_native_void(stack, call.handler, call.n);
            break;
        }
        case OP_CAST_TO_BOOLEAN: cast_logical_or_object(stack, op, false); break;
        case OP_CAST_TO_INTEGER: cast_top(stack, op, TAG_INTEGER); break;
        case OP_CAST_TO_NUMERIC: cast_top(stack, op, TAG_NUMERIC); break;
        case OP_CAST_TO_MONEY: cast_top(stack, op, TAG_MONEY); break;
        case OP_CAST_TO_DATE: cast_top(stack, op, TAG_DATE); break;
        case OP_CAST_TO_DATETIME: cast_top(stack, op, TAG_DATETIME); break;
        case OP_CAST_TO_STRING: cast_top(stack, op, TAG_STRING); break;
        case OP_CAST_TO_OBJECT: cast_logical_or_object(stack, op, true); break;
        case OP_CHECK_NOT_NULL:
            if (stack->esp->tag == TAG_NULL) throw RuntimeError(ERR_ARGUMENT_INVALID);
            break;
        case OP_CHECK_ARGUMENT: check_argument(stack, op_as<VmOpCheckArgument>(op)); break;
        case OP_COND_TRUE_JUMP: {
            uint8_t tag = stack->esp->tag;
            if (tag > TAG_TRUE) throw RuntimeError(ERR_ARGUMENT_INVALID);
            stack->pop();
            if (tag == TAG_TRUE) {
                pc = op_as<VmOpCondTrueJump>(op).target;
                completed(true);
                continue;
            }
            break;
        }
        case OP_COND_TRUE_JUMP_KEEP_ESP: {
            uint8_t tag = stack->esp->tag;
            if (tag > TAG_TRUE) throw RuntimeError(ERR_ARGUMENT_INVALID);
            if (tag == TAG_TRUE) {
                pc = op_as<VmOpCondTrueJumpKeepEsp>(op).target;
                completed(true);
                continue;
            }
            break;
        }
        case OP_COND_FALSE_OR_NULL_JUMP: {
            uint8_t tag = stack->esp->tag;
            if (tag > TAG_TRUE) throw RuntimeError(ERR_ARGUMENT_INVALID);
            stack->pop();
            if (tag <= TAG_NULL) {
                pc = op_as<VmOpCondFalseOrNullJump>(op).target;
                completed(true);
                continue;
            }
            break;
        }
        case OP_COND_FALSE_OR_NULL_JUMP_KEEP_ESP: {
            uint8_t tag = stack->esp->tag;
            if (tag > TAG_TRUE) throw RuntimeError(ERR_ARGUMENT_INVALID);
            if (tag <= TAG_NULL) {
                pc = op_as<VmOpCondFalseOrNullJumpKeepEsp>(op).target;
                completed(true);
                continue;
            }
            stack->pop();
            break;
        }
        case OP_COND_TRUE_OR_NULL_MERGE_2P: {
            Memvar* top = stack->esp;
            Memvar* next = stack->esp + 1;
            if (!(next->tag == TAG_NULL && top->tag == TAG_FALSE)) {
                next->release(stack);
                std::memcpy(static_cast<void*>(next), static_cast<const Variant*>(top),
                            sizeof(Variant));
                top->tag = TAG_FALSE;
            }
            stack->pop();
            break;
        }
        case OP_READ_MEMVAR_POINTER_CREATE:
            push_pointer(stack, undefined_memvar(stack, op_as<VmOpReadMemvarPointerCreate>(op).symbol));
            break;
        case OP_DEF_LOCAL: def_local(stack, op_as<VmOpDefLocal>(op).symbol); break;
        case OP_DEF_LOCAL_OFFSET: {
            const auto& def = op_as<VmOpDefLocalOffset>(op);
            def_local_offset(stack, def.offset, def.symbol);
            break;
        }
        case OP_DEF_PRIVATE_SYMBOL: def_private_symbol(stack, op_as<VmOpDefPrivateSymbol>(op).symbol); break;
        case OP_DEF_PUBLIC_OFFSET: {
            const auto& def = op_as<VmOpDefPublicOffset>(op);
            def_public_offset(stack, def.offset, def.symbol);
            break;
        }
        case OP_ESP_ALLOC: stack->push(); break;
        case OP_ESP_FREE: stack->pop(); break;
        case OP_FOR_COND_FALSE_JUMP:
            if (for_loop_ends(stack)) {
                pc = op_as<VmOpForCondFalseJump>(op).target;
                completed(true);
                continue;
            }
            break;
        case OP_FOR_NEXT_JUMP: {
            const auto& next = op_as<VmOpForNextJump>(op);
            bool again;
            if (!integer_round(stack, next, &again)) again = for_next_continues(stack, next);
            if (again) {
                // A loop's way round: Ctrl-C is answered here, as at a jump.
                poll_interrupt(stack);
                pc = next.target;
                completed(true);
                continue;
            }
            break;
        }
        case OP_INIT_LPARAMETERS: init_lparameters(stack, op_as<VmOpInitLparameters>(op).n); break;
        case OP_INIT_PARAMETER: {
            const auto& init = op_as<VmOpInitParameter>(op);
            init_parameter(stack, init.offset, init.symbol);
            break;
        }
        case OP_OBJECT_CALL: {
            const auto& call = op_as<VmOpObjectCall>(op);
            if constexpr (!Checked) {
                if (VmFrame* frame = enter_called_method(stack, call)) {
                    ip = &frame->ip;
                    ret = frame->ret;
                    pc = frame->ip;
                    continue;
                }
            }
            object_call(stack, call.member_site, call.symbol, call.n);
            break;
        }
        case OP_OBJECT_CALL_POINTER: {
            const auto& call = op_as<VmOpObjectCallPointer>(op);
            object_call_pointer(stack, call.symbol, call.n);
            break;
        }
        case OP_OBJECT_READ: {
            const auto& read = op_as<VmOpObjectRead>(op);
            object_read(stack, read.member_site, read.symbol, read.n);
            break;
        }
        case OP_OBJECT_READ_POINTER: {
            const auto& read = op_as<VmOpObjectReadPointer>(op);
            object_read_pointer(stack, read.symbol, read.n);
            break;
        }
        case OP_OBJECT_WRITE: {
            const auto& write = op_as<VmOpObjectWrite>(op);
            object_write(stack, write.symbol, write.n);
            break;
        }
        case OP_JUMP:
            // Every loop goes round through a jump: Ctrl-C is answered here.
            poll_interrupt(stack);
            pc = op_as<VmOpJump>(op).target;
            completed(true);
            continue;
        case OP_RETURN_VALUE:
            ret->release(stack);
            take_value_bits(ret, stack->esp);
            stack->esp->tag = TAG_FALSE;
            stack->pop();
            if (stack->frame != floor) goto return_in_place;
            completed(false);
            return;
        case OP_RETURN_POINTER:
            stack->esp->ref(stack, ret, nullptr);
            stack->pop();
            if (stack->frame != floor) goto return_in_place;
            completed(false);
            return;
        case OP_RETURN:
            ret->release(stack);
            ret->set_true();
            if (stack->frame != floor) goto return_in_place;
            completed(false);
            return;
        case OP_MACRO_EXECUTE:
            if (macro_execute(stack, ip, ret)) {
                if (stack->frame != floor) goto return_in_place;
                completed(false);
                return;
            }
            break;
        case OP_READ_BY_NAME: {
            const auto& read = op_as<VmOpReadByName>(op);
            read_by_name(stack, read.sites[0], read.symbol);
            break;
        }
        case OP_READ_BARE_LOCAL: {
            const auto& read = op_as<VmOpReadBareLocal>(op);
            if (stack->sessions->bare_names_free()) copy_value(stack->push(), local_slot(stack, read.offset));
            else read_by_name(stack, read.sites[0], read.symbol);
            break;
        }
        case OP_READ_MEMVAR_BY_NAME: {
            const auto& read = op_as<VmOpReadMemvarByName>(op);
            push_copy(stack, find_memvar(stack, read.sites[0], read.symbol));
            break;
        }
        case OP_READ_MEMVAR_OR_FALSE:
            read_memvar_or_false(stack, op_as<VmOpReadMemvarOrFalse>(op).symbol);
            break;
        case OP_READ_FILE_OBJECT_OR_MEMVAR_BY_NAME: {
            const auto& read = op_as<VmOpReadFileObjectOrMemvarByName>(op);
            read_file_object_or_memvar(stack, read.sites[0], read.symbol);
            break;
        }
        case OP_READ_ARRAY_BY_NAME: {
            const auto& read = op_as<VmOpReadArrayByName>(op);
            read_array(stack, find_memvar(stack, read.sites[0], read.symbol), read.n);
            break;
        }
        case OP_READ_ARRAY_BY_OFFSET: {
            const auto& read = op_as<VmOpReadArrayByOffset>(op);
            read_array(stack, local_slot(stack, read.offset), read.n);
            break;
        }
        case OP_READ_MEMVAR_POINTER_BY_NAME: {
            const auto& read = op_as<VmOpReadMemvarPointerByName>(op);
            push_pointer(stack, find_memvar(stack, read.sites[0], read.symbol));
            break;
        }
        case OP_READ_ADD_WRITE: {
            const auto& add = op_as<VmOpReadAddWrite>(op);
            Memvar* var = find_memvar(stack, add.sites[0], add.symbol);
            if (add_in_place(var, stack->esp)) {
                pop_scalar(stack);
                break;
            }
            inline_variant_add(var, stack->esp);
            stack->pop();
            break;
        }
        case OP_ADD_TO_BARE_NAME: {
            const auto& add = op_as<VmOpAddToBareName>(op);
            if (Memvar* variable = kept_bare_variable(stack, add.sites[0], add.symbol);
                variable && add_in_place(variable, stack->esp)) {
                pop_scalar(stack);
                break;
            }
            add_to_bare_name(stack, add.sites, add.symbol, 0);
            break;
        }
        case OP_ADD_TO_BARE_LOCAL: {
            const auto& add = op_as<VmOpAddToBareLocal>(op);
            add_to_bare_name(stack, add.sites, add.symbol, add.offset);
            break;
        }
        case OP_ADD_BARE_TO_BARE: {
            const auto& add = op_as<VmOpAddBareToBare>(op);
            if (!add_bare_numbers(stack, add)) add_bare_to_bare(stack, add);
            break;
        }
        case OP_READ_THIS_MEMBER: {
            const auto& read = op_as<VmOpReadThisMember>(op);
            read_this_member(stack, read.member_site, local_slot(stack, read.offset), read.symbol);
            break;
        }
        case OP_WRITE_THIS_MEMBER: {
            const auto& write = op_as<VmOpWriteThisMember>(op);
            write_this_member(stack, write.member_site, local_slot(stack, write.offset), write.symbol);
            break;
        }
        case OP_ADD_TO_THIS_MEMBER: {
            const auto& add = op_as<VmOpAddToThisMember>(op);
            add_to_this_member(stack, add.member_site, local_slot(stack, add.offset), add.symbol);
            break;
        }
        case OP_READ_NAME_MEMBER: {
            const auto& read = op_as<VmOpReadNameMember>(op);
            read_name_member(stack, read.sites[0], read.member_site, read.root, read.symbol);
            break;
        }
        case OP_STORE: store(stack); break;
        case OP_WRITE_MEMVAR_BY_NAME: {
            const auto& write = op_as<VmOpWriteMemarByName>(op);
            write_slot(stack, assignable_memvar(stack, write.sites[0], write.symbol));
            break;
        }
        case OP_WRITE_ARRAY_BY_NAME: {
            const auto& write = op_as<VmOpWriteArrayByName>(op);
            write_array(stack, find_memvar(stack, write.sites[0], write.symbol), write.n);
            break;
        }
        case OP_WRITE_ARRAY_BY_OFFSET: {
            const auto& write = op_as<VmOpWriteArrayByOffset>(op);
            write_array(stack, local_slot(stack, write.offset), write.n);
            break;
        }
        case OP_UNRESOLVED_CALL: throw assert_failed_exception("VmOpUnresolvedCall");
        case OP_READ_LOCAL_MEMVAR_BY_OFFSET: {
            const Memvar* slot = local_slot(stack, op_as<VmOpReadLocalMemvarByOffset>(op).offset);
            copy_value(stack->push(), slot);
            break;
        }
        case OP_READ_LOCAL_MEMVAR_POINTER_BY_OFFSET: {
            Memvar* slot =
                local_slot(stack, op_as<VmOpReadLocalMemvarPointerByOffset>(op).offset);
            slot->ref(stack, stack->push(), nullptr);
            break;
        }
        case OP_READ_ADD_WRITE_LOCAL: {
            Memvar* slot = local_slot(stack, op_as<VmOpReadAddWriteLocal>(op).offset);
            if (add_in_place(slot, stack->esp)) {
                pop_scalar(stack);
                break;
            }
            inline_variant_add(slot, stack->esp);
            stack->pop();
            break;
        }
        case OP_WRITE_MEMVAR_BY_OFFSET:
            write_slot(stack, local_slot(stack, op_as<VmOpWriteMemvarByOffset>(op).offset));
            break;
        case OP_READ_CONST_TRUE: stack->push()->set_true(); break;
        case OP_READ_CONST_FALSE: stack->push(); break;
        case OP_READ_CONST_NULL: stack->push()->set_null(); break;
        case OP_READ_CONST_INTEGER:
            stack->push()->set_integer(op_as<VmOpReadConstInteger>(op).value);
            break;
        case OP_READ_CONST_NUMERIC: stack->push()->set(op_as<VmOpReadConstNumeric>(op).value); break;
        case OP_READ_CONST_MONEY: stack->push()->set(op_as<VmOpReadConstMoney>(op).value); break;
        case OP_READ_CONST_STRING:
            stack->push()->set_string(op_as<VmOpReadConstString>(op).value);
            break;
        case OP_ADD_CONST_INTEGER: add_constant(stack, op_as<VmOpAddConstInteger>(op).value); break;
        case OP_ADD_CONST_NUMERIC: add_constant(stack, op_as<VmOpAddConstNumeric>(op).value); break;
        case OP_MUL_CONST_INTEGER: multiply_constant(stack, op_as<VmOpMulConstInteger>(op).value); break;
        case OP_MUL_CONST_NUMERIC: multiply_constant(stack, op_as<VmOpMulConstNumeric>(op).value); break;
        case OP_READ_CONST_DATE: stack->push()->set(op_as<VmOpReadConstDate>(op).value); break;
        case OP_READ_CONST_DATETIME:
            stack->push()->set(op_as<VmOpReadConstDatetime>(op).value);
            break;
        case OP_UNARY_NOT: {
            Memvar* top = stack->esp;
            if (top->tag == TAG_FALSE) top->tag = TAG_TRUE;
            else if (top->tag == TAG_TRUE) top->tag = TAG_FALSE;
            else if (top->tag != TAG_NULL) throw RuntimeError(ERR_ARGUMENT_INVALID);
            break;
        }
        case OP_UNARY_NEG: {
            Memvar* top = stack->esp;
            if (top->follow()->tag == TAG_NULL) break;
            Variant negated;
            top->val_negative(stack, &negated);
            top->release(stack);
            std::memcpy(static_cast<void*>(top), &negated, sizeof(Variant));
            break;
        }
        case OP_TEST_TEXTMERGE_ON: stack->push()->set_bool(stack->textmerge); break;
        case OP_READ_FIELD_BY_INDEX:
            read_expression_field(stack, op_as<VmOpReadFieldByIndex>(op).value);
            break;
        case OP_TRY_ENTER:
            // At rest there is no frame to hold the scope, and no frame to catch in.
            if (stack->frame) enter_try_scope(stack->frame, &op_as<VmOpTryEnter>(op));
            break;
        case OP_UNUSED_67: not_built(op);
        default: __builtin_unreachable();
        }
        completed(false);
        ++pc;
        continue;
    return_in_place:
        // Back in the caller, after its call instruction.
        return_to_caller(stack);
        follow_running_frame();
        pc = *ip;
        ++pc;
    }
}
#pragma GCC diagnostic pop

}  // namespace

bool vm_check_stack_effects = false;

// An exception raised in a frame entered in place is handled in that frame,
// as an activation of its own would: the frame goes on, or it is left and
// what it passes on is raised again in its caller. Once the floor frame is
// running again, the exception leaves for whoever started this activation.
void vm_run(VmStack* stack, VmOp*** ip, Variant* ret) {
    const VmFrame* floor = stack->frame;
    std::exception_ptr passed_on;
    for (;;) {
        try {
            if (passed_on) std::rethrow_exception(std::exchange(passed_on, nullptr));
            if (vm_check_stack_effects) run_loop<true>(stack, floor, ip, ret);
            else run_loop<false>(stack, floor, ip, ret);
            return;
        } catch (...) {
            if (stack->frame == floor) throw;
            passed_on = recover_in_called_frame(stack);
        }
    }
}

void vm_run_expression(VmStack* stack, const Program* program, Variant* result) {
    Memvar* mark = stack->esp;
    VmOp** ip = const_cast<VmOp**>(program->code());
    try {
        vm_run(stack, &ip, result);
    } catch (...) {
        result->release(stack);
        stack->pop_to(mark);
        throw;
    }
}

}  // namespace zobase
