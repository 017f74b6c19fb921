#pragma once
// Argument access for native handlers: argument i (from 1) of the running
// native call lies i slots below the call's params_top.
#include "base/export.h"
#include "vm/vm_stack.h"

namespace zobase {

// The argument's slot itself, which may be a by-reference pointer.
inline Memvar* Param(VmStack* stack, unsigned long long i) { return stack->params_top - i; }

// The target of a by-reference argument, read without a check.
inline Variant* Pointer(VmStack* stack, unsigned long long i) {
    return Param(stack, i)->pointer.target;
}

}  // namespace zobase
