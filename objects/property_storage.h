#pragma once
// A property's stored value inside an object, read and written under the
// object's reader-writer lock: the work of the default property handlers of
// user classes and of members added at run time. Nothing of the language
// runs while the lock is held: a value an assignment replaces is released
// after it, and an object held in the property is called after it.
#include "vm/object.h"
#include "vm/vm_stack.h"

namespace zobase {

// With no subscripts a copy of the value; with subscripts an element of an
// array (at most 2 subscripts, else 11) or the default member of an object;
// on anything else 232 with the member's name.
void read_stored(VmStack* stack, Object* holder, const Variant* stored, unsigned long long argc, Variant* ret);
// A by-reference slot into the stored value, or one of its elements, that
// keeps the object alive.
void read_stored_ref(VmStack* stack, Object* holder, Variant* stored, unsigned long long argc, Variant* ret);
// The value is the last of the argc slots; below 2 it replaces the whole
// property, otherwise an element or the default member as read_stored has it.
void write_stored(VmStack* stack, Object* holder, Variant* stored, unsigned long long argc);

// Plain properties (ClassMember::plain_read, plain_write): no handler runs
// for a read without subscripts or a write of the whole value, and nothing
// of the language can run meanwhile, so the call context is left alone.
// The place of the value in the link that holds the member:
Variant* plain_place(Object* holder, const ClassMember* member);
// A copy of the value, as the access handler would give it.
void read_plain_value(Object* holder, const ClassMember* member, Variant* ret);

}  // namespace zobase
