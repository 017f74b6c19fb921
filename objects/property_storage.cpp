// Stored property values under the object's lock.
#include "objects/property_storage.h"

#include <cstring>

#include "objects/class.h"
#include "objects/object.h"
#include "objects/user_class.h"
#include "values/error.h"
#include "vm/param.h"
#include "vm/vm_instructions.h"

namespace zobase {

namespace {

[[noreturn]] void raise_not_an_array(VmStack* stack) {
    const ClassMember* member = stack->context.member;
    throw RuntimeError(ERR_NOT_AN_ARRAY, member ? member->name : String(""));
}

// Subscripts on an object held in the property reach its default member,
// with the lock already dropped.
template <class Call>
void through_held_object(VmStack* stack, Variant& object, Call call) {
    try {
        call(&object);
    } catch (...) {
        object.release(stack);
        throw;
    }
    object.release(stack);
}

}  // namespace

void read_stored(VmStack* stack, Object* holder, const Variant* stored, unsigned long long argc, Variant* ret) {
    StorageReadGuard guard(holder);
    if (argc == 0) {
        stored->copy(ret);
        return;
    }
    if (stored->tag == TAG_ARRAY) {
        array_element(stored->array, Param(stack, 1), argc)->copy(ret);
        return;
    }
    if (stored->tag != TAG_OBJECT) raise_not_an_array(stack);
    Variant object(*stored);
    guard.unlock();
    through_held_object(stack, object, [&](Variant* held) { read_array_item(stack, held, argc, ret); });
}

// The pointer keeps the whole chain alive through its first link.
void read_stored_ref(VmStack* stack, Object* holder, Variant* stored, unsigned long long argc, Variant* ret) {
    object_ptr_st owner = stack->context.this_object->self();
    StorageWriteGuard guard(holder);
    if (argc == 0) {
        stored->ref(stack, ret, &owner);
        return;
    }
    if (stored->tag == TAG_OBJECT) throw RuntimeError(ERR_PROPERTY_POINTER);
    if (stored->tag != TAG_ARRAY) raise_not_an_array(stack);
    array_element_for_write(stack, stored->array, Param(stack, 1), argc)->ref(stack, ret, &owner);
}

void write_stored(VmStack* stack, Object* holder, Variant* stored, unsigned long long argc) {
    const Variant* value = stack->esp;
    Variant replaced;
    {
        StorageWriteGuard guard(holder);
        Variant* target = stored;
        if (argc >= 2) {
            if (stored->tag == TAG_OBJECT) {
                Variant object(*stored);
                guard.unlock();
                through_held_object(stack, object, [&](Variant* held) { write_array_item(stack, held, argc - 1); });
                return;
            }
            if (stored->tag != TAG_ARRAY) raise_not_an_array(stack);
            target = array_element_for_write(stack, stored->array, Param(stack, 1), argc - 1);
        }
        std::memcpy(static_cast<void*>(&replaced), target, sizeof(Variant));
        target->tag = TAG_FALSE;
        value->deliver(target);
    }
    replaced.release(stack);
}

Variant* plain_place(Object* holder, const ClassMember* member) {
    if (member->plain_storage == PLAIN_LINK_SLOT) return &static_cast<UserObject*>(holder)->values[member->slot];
    return const_cast<Variant*>(&member->value);
}

void read_plain_value(Object* holder, const ClassMember* member, Variant* ret) {
    const Variant* stored = plain_place(holder, member);
    StorageReadGuard guard(holder);
    stored->copy(ret);
}

}  // namespace zobase
