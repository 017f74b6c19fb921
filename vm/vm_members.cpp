// Subscripts, object members and the names that work areas can hide.
#include <cstring>

#include "base/call_trace.h"
#include "values/symtable.h"
#include "vm/object.h"
#include "vm/param_window.h"
#include "vm/vm_instructions.h"

namespace zobase {

namespace {

// Subscript k (from 1) lies k - 1 slots below the first. A negative or
// too large value is outside the range, and is caught here before the
// element arithmetic could wrap; row 0 is left to the array, which raises 11.
uint64_t subscript(const Array& array, const Memvar* first, uint64_t k) {
    integer_type_st value = static_cast<integer_type_st>(*(first - (k - 1))->follow());
    if (value < 0 || static_cast<uint64_t>(value) > array.count) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
    return static_cast<uint64_t>(value);
}

Object* object_in(const Memvar* slot) { return static_cast<Object*>(*slot->follow()); }

void move_into(VmStack* stack, Variant* dest, Variant* source) {
    dest->release(stack);
    std::memcpy(static_cast<void*>(dest), static_cast<const void*>(source), sizeof(Variant));
    source->tag = TAG_FALSE;
}

// Lays out a call of the default member: the object, then copies of the
// `count` slots from `first` downward, so that the first stays argument 1.
Memvar* push_default_member_call(VmStack* stack, const Variant* object, const Memvar* first,
                                 uint64_t count) {
    stack->push()->set_variant(object);
    Memvar* object_slot = stack->esp;
    for (uint64_t k = 0; k < count; ++k) stack->push()->set_variant(first - k);
    return object_slot;
}

void read_default_member(VmStack* stack, const Variant* object, uint64_t n, Variant* dest) {
    Memvar* mark = stack->esp;
    Memvar* object_slot = push_default_member_call(stack, object, stack->esp + n - 1, n);
    Variant temporary;
    {
        ParamWindow window(stack, object_slot, n);
        object_in(object_slot)->virtual_access(stack, SYMBOL_INDEX, n, &temporary);
    }
    stack->pop_to(mark);
    move_into(stack, dest, &temporary);
}

// The value goes along as the last argument, as a property assignment has it.
void write_default_member(VmStack* stack, const Variant* object, uint64_t n) {
    Memvar* mark = stack->esp;
    Memvar* object_slot = push_default_member_call(stack, object, stack->esp + n, n + 1);
    {
        ParamWindow window(stack, object_slot, n + 1);
        object_in(object_slot)->virtual_assign(stack, SYMBOL_INDEX, n + 1);
    }
    stack->pop_to(mark);
}

}  // namespace

const Variant* array_element(const Array& array, const Memvar* first, uint64_t n) {
    if (n == 1) return array.read(subscript(array, first, 1));
    if (n == 2) return array.read(subscript(array, first, 1), subscript(array, first, 2));
    throw RuntimeError(ERR_ARGUMENT_INVALID);
}

Variant* array_element_for_write(VmStack* stack, Array& array, const Memvar* first, uint64_t n) {
    if (n == 1) return array.write(stack, subscript(array, first, 1));
    if (n == 2) return array.write(stack, subscript(array, first, 1), subscript(array, first, 2));
    throw RuntimeError(ERR_ARGUMENT_INVALID);
}

void read_array_item(VmStack* stack, Variant* array, uint64_t n, Variant* dest) {
    const Variant* target = array->follow();
    if (target->tag == TAG_OBJECT) return read_default_member(stack, target, n, dest);
    if (target->tag != TAG_ARRAY) throw RuntimeError(ERR_NOT_AN_ARRAY);
    const Variant* element = array_element(target->array, stack->esp + n - 1, n);
    Variant copy(*element);
    move_into(stack, dest, &copy);
}

void write_array_item(VmStack* stack, Variant* array, uint64_t n) {
    Variant* target = array->follow();
    if (target->tag == TAG_OBJECT) return write_default_member(stack, target, n);
    if (target->tag != TAG_ARRAY) throw RuntimeError(ERR_NOT_AN_ARRAY);
    Variant* element = array_element_for_write(stack, target->array, stack->esp + n, n);
    element->release(stack);
    stack->esp->deliver(element);
}

void read_expression_field(VmStack* stack, uint16_t index) {
    stack->sessions->read_expression_field(stack, index, stack->push());
}

namespace {

typedef void (Object::*object_member_fn)(VmStack*, unsigned, size_t, Variant*);

// A member whose result comes back in a temporary and moves into the result slot.
void member_through_temporary(VmStack* stack, uint32_t symbol, uint64_t n, object_member_fn member) {
    Memvar* object_slot = stack->esp + n;
    Object* object = object_in(object_slot);
    Variant temporary;
    {
        ParamWindow window(stack, object_slot, n);
        (object->*member)(stack, symbol, n, &temporary);
    }
    move_into(stack, object_slot + 1, &temporary);
    stack->pop_to(object_slot + 1);
}

// A member that writes the result slot directly, which must then hold a reference.
void member_by_reference(VmStack* stack, uint32_t symbol, uint64_t n, object_member_fn member,
                         int error_when_no_reference) {
    Memvar* object_slot = stack->esp + n;
    Memvar* result = object_slot + 1;
    {
        ParamWindow window(stack, object_slot, n);
        (object_in(object_slot)->*member)(stack, symbol, n, result);
    }
    if (result->tag != TAG_POINTER) throw RuntimeError(error_when_no_reference);
    stack->pop_to(result);
}

}  // namespace

void object_call(VmStack* stack, member_site_st& site, uint32_t symbol, uint64_t n) {
    ZO_TRACE();
    Memvar* object_slot = stack->esp + n;
    Variant temporary;
    {
        ParamWindow window(stack, object_slot, n);
        object_in(object_slot)->call_member(stack, site, symbol, n, &temporary);
    }
    move_into(stack, object_slot + 1, &temporary);
    stack->pop_to(object_slot + 1);
}

void object_call_pointer(VmStack* stack, uint32_t symbol, uint64_t n) {
    ZO_TRACE();
    member_by_reference(stack, symbol, n, &Object::virtual_call, ERR_RVALUE_BY_REFERENCE);
}

void object_read(VmStack* stack, member_site_st& site, uint32_t symbol, uint64_t n) {
    ZO_TRACE();
    if (n == 0) {
        Memvar* object_slot = stack->esp;
        Memvar* result = object_slot + 1;
        if (result->tag == TAG_FALSE && object_in(object_slot)->read_plain(stack, site, symbol, result))
            return stack->pop();
    }
    member_through_temporary(stack, symbol, n, &Object::virtual_access);
}

void object_read_pointer(VmStack* stack, uint32_t symbol, uint64_t n) {
    ZO_TRACE();
    member_by_reference(stack, symbol, n, &Object::virtual_access_ref, ERR_UNSAFE_POINTER);
}

void read_this_member(VmStack* stack, member_site_st& site, const Memvar* slot, uint32_t symbol) {
    Memvar* result = stack->push();
    if (object_in(slot)->read_plain(stack, site, symbol, result)) return;
    stack->push()->set_variant(slot);
    member_through_temporary(stack, symbol, 0, &Object::virtual_access);
}

void read_name_member(VmStack* stack, name_site_st& site, member_site_st& member_site, uint32_t root,
                      uint32_t symbol) {
    if (const name_cache_entry_st* entry = kept_entry(stack, site, name_key(root, NAME_ALIAS_OR_VARIABLE)))
        if (const Memvar* variable = kept_variable(stack, *entry))
            if (variable->follow()->tag == TAG_OBJECT) {
                // Nothing of the language runs in a plain read: the variable keeps the object alive.
                Memvar* result = stack->push();
                if (object_in(variable)->read_plain(stack, member_site, symbol, result)) return;
                stack->pop();
            }
    stack->push();
    read_file_object_or_memvar(stack, site, root);
    object_read(stack, member_site, symbol, 0);
}

void write_this_member(VmStack* stack, member_site_st& site, const Memvar* slot, uint32_t symbol) {
    if (object_in(slot)->write_plain(stack, site, symbol)) return stack->pop();
    // The usual write wants the object under the value.
    stack->push()->set_variant(slot);
    alignas(Memvar) unsigned char object[sizeof(Memvar)];
    std::memcpy(object, static_cast<void*>(stack->esp), sizeof(Memvar));
    std::memcpy(static_cast<void*>(stack->esp), static_cast<void*>(stack->esp + 1), sizeof(Memvar));
    std::memcpy(static_cast<void*>(stack->esp + 1), object, sizeof(Memvar));
    object_write(stack, symbol, 1);
}

void object_write(VmStack* stack, uint32_t symbol, uint64_t n) {
    ZO_TRACE();
    Memvar* object_slot = stack->esp + n;
    {
        ParamWindow window(stack, object_slot, n);
        object_in(object_slot)->virtual_assign(stack, symbol, n);
    }
    stack->pop_to(object_slot + 1);
}

}  // namespace zobase
