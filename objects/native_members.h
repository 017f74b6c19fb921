#pragma once
// Handlers for the members of built-in classes written in C++, for the rows
// of their member tables: a Variant field of the object served as a stored
// property (read, by reference, written; under the object's lock), and a
// read-only one computed by a function of the object.
#include "objects/object.h"
#include "objects/property_storage.h"

namespace zobase {

template <class T, Variant T::*field>
void field_access(VmStack* stack, unsigned long long argc, Variant* ret) {
    T* self = current_object<T>(stack);
    read_stored(stack, self, &(self->*field), argc, ret);
}

template <class T, Variant T::*field>
void field_access_ref(VmStack* stack, unsigned long long argc, Variant* ret) {
    T* self = current_object<T>(stack);
    read_stored_ref(stack, self, &(self->*field), argc, ret);
}

template <class T, Variant T::*field>
void field_assign(VmStack* stack, unsigned long long argc) {
    T* self = current_object<T>(stack);
    write_stored(stack, self, &(self->*field), argc);
}

// The row of a Variant field served as a read-write property.
#define ZO_FIELD_MEMBER(name, type, field) \
    { name, nullptr, field_access<type, &type::field>, field_access_ref<type, &type::field>, field_assign<type, &type::field> }

// Subscripts on a member that has none: 232 with its name.
void refuse_subscripts(VmStack* stack, unsigned long long argc);
// Arguments to a method that takes none, or more than it takes: 11.
void require_arguments(unsigned long long argc, unsigned long long least, unsigned long long most);

}  // namespace zobase
