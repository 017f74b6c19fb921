// Reading and raising errors from language code: error(), message(),
// aerror(), alistallerrors(), and the commands ERROR, ASSERT and THROW.
#include <algorithm>
#include <cmath>
#include <vector>

#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "objects/exception_object.h"
#include "values/money.h"
#include "vm/runtime_services.h"
#include "vm/screen.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr uint64_t ERROR_COLUMNS = 7;

void write_element(VmStack* stack, Array* array, uint64_t row, uint64_t column,
                   const Variant& value) {
    Variant* element = array->write(stack, row, column);
    element->release(stack);
    element->set_variant(&value);
}

bool asserts_on(VmStack* stack) { return stack->services && stack->services->asserts(); }

// A number of any numeric type, which must fit 32 bits (39 otherwise).
int32_t error_number(const Variant& value) {
    double number;
    switch (value.tag) {
    case TAG_INTEGER: number = static_cast<double>(value.integer); break;
    case TAG_NUMERIC: number = value.numeric.value; break;
    case TAG_MONEY: number = money_to_double(value.money); break;
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
    if (!(number >= INT32_MIN && number <= INT32_MAX)) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    return static_cast<int32_t>(number);
}

}  // namespace

void stackcall_error(VmStack* stack, unsigned long long, Variant* result) {
    result->set_integer(stack->errors.empty() ? 0 : stack->last_error.number);
}

void stackcall_message(VmStack* stack, unsigned long long, Variant* result) {
    if (stack->errors.empty()) return result->set_string(String(""));
    stack->errors.back().values[1].copy(result);
}

void stackcall_aerror(VmStack* stack, unsigned long long, Variant* result) {
    uint64_t rows = stack->errors.size();
    if (rows) {
        Array* array = Param(stack, 1)->dimension(stack, rows, ERROR_COLUMNS);
        uint64_t row = 1;
        for (const Error& record : stack->errors) {
            for (uint64_t column = 1; column <= ERROR_COLUMNS; ++column)
                write_element(stack, array, row, column, record.values[column - 1]);
            ++row;
        }
    }
    result->set_integer(static_cast<long long>(rows));
}

void stackcall_alistallerrors(VmStack* stack, unsigned long long, Variant* result) {
    const error_st* table;
    int count = get_list_of_errors(&table);
    std::vector<const error_st*> rows;
    for (int i = 0; i < count; ++i) rows.push_back(&table[i]);
    std::stable_sort(rows.begin(), rows.end(),
                     [](const error_st* a, const error_st* b) { return a->code < b->code; });
    Array* array = Param(stack, 1)->dimension(stack, rows.size(), 2);
    for (uint64_t row = 1; row <= rows.size(); ++row) {
        Variant code, message;
        code.set_integer(rows[row - 1]->code);
        message.set_string(String(rows[row - 1]->message));
        write_element(stack, array, row, 1, code);
        write_element(stack, array, row, 2, message);
        message.release(stack);
    }
    result->set_integer(count);
}

void stackcall_test_asserts_on(VmStack* stack, unsigned long long, Variant* result) {
    result->set_bool(asserts_on(stack));
}

// ERROR text, or ERROR number [, message].
void void_stackcall_error(VmStack* stack, unsigned long long argc) {
    const Variant& code = argument(stack, 1);
    if (code.tag == TAG_STRING) throw RuntimeError(ERR_USER_DEFINED, code.str());
    int32_t number = error_number(code);
    if (argc < 2 || is_null_argument(argument(stack, 2))) throw RuntimeError(number);
    throw RuntimeError(number, argument(stack, 2).to_string());
}

// ASSERT expression; the compiler passes the expression's text as argument 2.
void void_stackcall_assert(VmStack* stack, unsigned long long) {
    if (!asserts_on(stack) || argument(stack, 1).tag != TAG_FALSE) return;
    Screen* screen = stack->services->screen();
    screen->err(String("ASSERT FAILED: "));
    screen->errendl(string_argument(stack, 2));
    throw RuntimeError(ERR_USER_DEFINED);
}

void void_stackcall_throw(VmStack* stack, unsigned long long) {
    RuntimeThrow thrown;
    ExceptionObject* object = create_exception_object(stack, &thrown.value);
    object->user_value.set_variant(&argument(stack, 1));
    if (!stack->find_handler(&thrown.value, &thrown.target, &thrown.position, &thrown.symbol))
        throw RuntimeError(ERR_UNHANDLED_STRUCTURED_EXCEPTION);
    throw thrown;
}

}  // namespace zobase
