// The built-ins behind STORE and DIMENSION. Each gets the target's current
// value (false for a variable that doesn't exist yet) and returns what the
// compiled assignment then stores into the target.
#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "vm/vm_stack.h"

namespace zobase {

// An array target takes the value in every element; anything else is replaced.
void stackcall_store(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    const Variant& target = argument(stack, 1);
    const Variant& value = argument(stack, 2);
    if (target.tag != TAG_ARRAY) {
        value.copy(result);
        return;
    }
    target.copy(result);
    Variant element;
    value.copy(&element);
    result->store_recursive(stack, &element);
    element.release(stack);
}

// Rows, columns (null for one dimension), the target; an array keeps what
// the old and new shapes share.
void stackcall_dimension(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    long long rows = argument(stack, 1).integer;
    const Variant& columns = argument(stack, 2);
    long long column_count = columns.tag == TAG_INTEGER ? columns.integer : 0;
    if (rows < 1 || column_count < 0) throw RuntimeError(ERR_ARRAY_DIMENSIONS_INVALID);
    const Variant& target = argument(stack, 3);
    if (target.tag == TAG_ARRAY) target.copy(result);
    result->dimension(stack, static_cast<uint64_t>(rows), static_cast<uint64_t>(column_count));
}

}  // namespace zobase
