// get_enumerator and get_kesobject_enumerator: what FOR EACH walks.
#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "objects/array_enumerator.h"
#include "objects/object.h"
#include "values/symtable.h"
#include "vm/param_window.h"

namespace zobase {

namespace {

// The object's own get_enumerator member, called as a method without
// arguments on a copy of the reference in a slot of its own.
void object_enumerator(VmStack* stack, const Variant& object, Variant* result) {
    Memvar* mark = stack->esp;
    stack->push()->set_variant(&object);
    Memvar* object_slot = stack->esp;
    try {
        ParamWindow window(stack, object_slot, 0);
        object.object.object->virtual_call(stack, SYMBOL_GET_ENUMERATOR, 0, result);
    } catch (...) {
        stack->pop_to(mark);
        throw;
    }
    stack->pop_to(mark);
}

}  // namespace

void stackcall_get_enumerator(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    const Variant& source = argument(stack, 1);
    if (source.tag == TAG_ARRAY) return create_array_enumerator(stack, source.array, result);
    if (source.tag == TAG_OBJECT && source.object.control)
        return object_enumerator(stack, source, result);
    throw RuntimeError(ERR_ARGUMENT_INVALID);
}

}  // namespace zobase
