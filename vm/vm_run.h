#pragma once
// The dispatch loop and the frame around it.
#include <cstddef>

#include "values/variant.h"
#include "vm/program.h"
#include "vm/vm_stack.h"

namespace zobase {

// Runs instructions from *ip until a return instruction; opens no frame.
// *ip stays on the failing instruction while an error propagates and on the
// return instruction that ended the run.
void vm_run(VmStack* stack, VmOp*** ip, Variant* ret);

// Runs a program in a new frame over the argc arguments already on the stack.
ZO_API void execute_program(VmStack* stack, size_t argc, bool has_this, const Program* program,
                     Variant* ret);

}  // namespace zobase
