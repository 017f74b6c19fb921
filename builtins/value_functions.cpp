// Functions on values of any type.
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "vm/variant_compare.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// Three-way comparison for inlist and between; null_seen reports a null operand.
int compare_values(VmStack* stack, const Variant& a, const Variant& b, bool* null_seen) {
    return variant_cmp(&a, &b, null_seen, stack);
}

}  // namespace

void stackcall_empty(VmStack* stack, unsigned long long, Variant* result) {
    result->set_bool(argument(stack, 1).is_empty());
}

void stackcall_isnull(VmStack* stack, unsigned long long, Variant* result) {
    result->set_bool(is_null_argument(argument(stack, 1)));
}

void stackcall_nvl(VmStack* stack, unsigned long long, Variant* result) {
    const Variant& value = argument(stack, 1);
    (is_null_argument(value) ? argument(stack, 2) : value).copy(result);
}

void stackcall_evl(VmStack* stack, unsigned long long, Variant* result) {
    const Variant& value = argument(stack, 1);
    if (is_null_argument(value)) return result->set_null();
    (value.is_empty() ? argument(stack, 2) : value).copy(result);
}

// Both branches are already evaluated: the compiler's own iif skips one.
void stackcall_iif(VmStack* stack, unsigned long long, Variant* result) {
    bool condition = argument(stack, 1).tag == TAG_TRUE;
    argument(stack, condition ? 2 : 3).copy(result);
}

void stackcall_vartype(VmStack* stack, unsigned long long, Variant* result) {
    result->set_string(argument(stack, 1).vartype());
}

void stackcall_between(VmStack* stack, unsigned long long, Variant* result) {
    const Variant& value = argument(stack, 1);
    bool null_seen = false;
    int low = compare_values(stack, value, argument(stack, 2), &null_seen);
    if (null_seen) return result->set_null();
    int high = compare_values(stack, value, argument(stack, 3), &null_seen);
    if (null_seen) return result->set_null();
    result->set_bool(low >= 0 && high <= 0);
}

// An equal candidate wins even after a null comparison; otherwise a null seen gives null.
void stackcall_inlist(VmStack* stack, unsigned long long argc, Variant* result) {
    const Variant& value = argument(stack, 1);
    if (is_null_argument(value)) return result->set_null();
    if (argc < 2) return result->set_false();
    bool any_null = false;
    for (unsigned long long i = 2; i <= argc; ++i) {
        bool null_seen = false;
        int order = compare_values(stack, value, argument(stack, i), &null_seen);
        if (null_seen) {
            any_null = true;
            continue;
        }
        if (order == 0) return result->set_true();
    }
    if (any_null) return result->set_null();
    result->set_false();
}

}  // namespace zobase
