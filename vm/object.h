#pragma once
// The object protocol: the VM reaches every object, built-in or defined in
// source, through these virtual operations only. The object model (objects/)
// builds classes and built-in objects on it; tables and sessions are objects
// too. A Variant holds objects by an object_ptr_st (values/object_ref.h).
#include <cstddef>

#include "values/variant.h"

namespace zobase {

class VmStack;

class Object {
public:
    Object() = default;
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    // A method call: argc arguments lie above the object's slot, argument 1
    // the highest of them.
    virtual void virtual_call(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) = 0;
    // A property read, with argc array-style subscripts.
    virtual void virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) = 0;
    // A property read that must deliver a by-reference slot into ret.
    virtual void virtual_access_ref(VmStack* stack, unsigned symbol, size_t argc,
                                    Variant* ret) = 0;
    // A property write; the value is the top of the argc slots.
    virtual void virtual_assign(VmStack* stack, unsigned symbol, size_t argc) = 0;
};

}  // namespace zobase
