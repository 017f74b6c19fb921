// Calls, by-reference arguments and the library argument conversion.
#include <cmath>

#include "base/call_trace.h"
#include "values/money.h"
#include "vm/call_resolver.h"
#include "vm/param_window.h"
#include "vm/user_function.h"
#include "vm/vm_instructions.h"
#include "vm/vm_run.h"

namespace zobase {

namespace {

constexpr unsigned conversion_key(unsigned source_tag, unsigned target) {
    return source_tag * 32 + target;
}

// A money value holds 63 bits of ten-thousandths.
money_type_st checked_money(double value) {
    if (!(std::fabs(value * MONEY_SCALE) < 9223372036854775807.0)) throw RuntimeError(ERR_CURRENCY_OUT_OF_RANGE);
    return money_from_double(value);
}

bool is_logical_tag(uint8_t tag) { return tag == TAG_FALSE || tag == TAG_TRUE; }

void convert_value(Variant* value, uint8_t target, bool null_allowed) {
    if (value->tag == target || (value->tag == TAG_NULL && null_allowed)) return;
    if (target == LIBRARY_PARAMETER_ANY || (is_logical_tag(value->tag) && is_logical_tag(target))) return;
    switch (conversion_key(value->tag, target)) {
    case conversion_key(TAG_INTEGER, TAG_NUMERIC):
        value->set(numeric_type_st{static_cast<double>(value->integer), 0});
        break;
    case conversion_key(TAG_INTEGER, TAG_MONEY):
        value->set(money_from_i128(static_cast<__int128>(value->integer) * MONEY_SCALE));
        break;
    case conversion_key(TAG_NUMERIC, TAG_INTEGER):
        value->set_integer(static_cast<integer_type_st>(*value));
        break;
    case conversion_key(TAG_NUMERIC, TAG_MONEY): value->set(checked_money(value->numeric.value)); break;
    case conversion_key(TAG_MONEY, TAG_INTEGER): value->set_integer(money_to_integer(value->money)); break;
    case conversion_key(TAG_MONEY, TAG_NUMERIC):
        value->set(numeric_type_st{money_to_double(value->money), 4});
        break;
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
}

// An array parameter converts each element; a by-value array shares its
// storage with the caller's, so writing unshares it first.
void convert_argument(VmStack* stack, Variant* argument, const library_parameter_st& parameter) {
    if (!parameter.array) {
        convert_value(argument, parameter.type, parameter.null_allowed);
        return;
    }
    if (argument->tag == TAG_NULL && parameter.null_allowed) return;
    if (argument->tag != TAG_ARRAY) throw RuntimeError(ERR_ARGUMENT_INVALID);
    for (uint64_t i = 1; i <= argument->array.count; ++i)
        convert_value(argument->array.write(stack, i), parameter.type, parameter.null_allowed);
}

// Much xBase code reads arrays with parentheses: name(i) or name(i, j) with
// no function of that name reads the element of a variable holding an array.
bool read_array_by_call(VmStack* stack, uint32_t symbol, uint64_t n) {
    Memvar* var;
    if ((n != 1 && n != 2) || !stack->get_memvar(symbol, &var) || var->follow()->tag != TAG_ARRAY) return false;
    Memvar* result = stack->esp + n;
    read_array_item(stack, var, n, result);
    stack->pop_to(result);
    return true;
}

}  // namespace

void call_user_function(VmStack* stack, const VmOpCallUserFunction& op) {
    Memvar* result = stack->esp + op.n;
    stack->pending_args = op.n;
    execute_program(stack, op.n, false, op.function->program(), result);
    stack->pop_to(result);
}

void call_native(VmStack* stack, native_function handler, uint64_t n) {
    Memvar* result = stack->esp + n;
    {
        ParamWindow window(stack, result, n);
        handler(stack, n, result);
    }
    stack->pop_to(result);
}

void call_native_void(VmStack* stack, native_command handler, uint64_t n) {
    Memvar* above = stack->esp + n;
    {
        ParamWindow window(stack, above, n);
        handler(stack, n);
    }
    stack->pop_to(above);
}

void convert_library_arguments(VmStack* stack, const library_function_st& function, uint64_t n) {
    const auto& parameters = function.parameters;
    for (uint64_t i = 1; i <= n; ++i) {
        if (i > parameters.size()) throw RuntimeError(ERR_MISSING_PARAMETERS);
        convert_argument(stack, (stack->esp + n - i)->follow(), parameters[i - 1]);
    }
    if (n < std::min<uint64_t>(parameters.size(), function.required)) throw RuntimeError(ERR_ARGUMENT_INVALID);
}

void call_by_name(VmStack* stack, uint32_t symbol, uint64_t n) {
    ZO_TRACE();
    const CallResolver* resolver = stack->resolver;
    if (!resolver) raise_not_available("VmOpCallByName");
    String name = resolver->symbol_text(symbol);
    if (const library_function_st* function = resolver->find_library_function(name)) {
        convert_library_arguments(stack, *function, n);
        call_native(stack, function->handler, n);
        return;
    }
    const UserFunction* function = resolver->find_procedure(symbol);
    if (!function) function = resolver->find_loaded_program(symbol);
    if (!function && read_array_by_call(stack, symbol, n)) return;
    if (!function) throw RuntimeError(ERR_FILE_NOT_FOUND, name);
    Memvar* result = stack->esp + n;
    function->exec(stack, n, false, result);
    stack->pop_to(result);
}

// The two logical tags are one type to a check.
void check_argument(VmStack* stack, const VmOpCheckArgument& op) {
    const Variant* value = stack->esp;
    if (value->tag == TAG_POINTER) {
        if (!(op.flags & (ARGUMENT_BY_REFERENCE | ARGUMENT_MAY_BE_REFERENCE)))
            throw RuntimeError(ERR_ARGUMENT_INVALID);
        value = value->pointer.target;
    } else if (op.flags & ARGUMENT_BY_REFERENCE) {
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
    if (value->tag == op.type) return;
    if (is_logical_tag(value->tag) && is_logical_tag(op.type)) return;
    if (value->tag == TAG_NULL && (op.flags & ARGUMENT_NULL_ALLOWED)) return;
    throw RuntimeError(ERR_ARGUMENT_INVALID);
}

}  // namespace zobase
