#pragma once
// The charset of the machine's locale, for text that comes from outside
// (files, processes, the environment) without a charset of its own.
#include "text/charset.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

inline const Charset* machine_charset(VmStack* stack) {
    const Charset* machine = stack->services ? stack->services->default_charset() : nullptr;
    return machine ? machine : Charset::utf8;
}

}  // namespace zobase
