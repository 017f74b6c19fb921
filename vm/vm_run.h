#pragma once
// The dispatch loop and the frame around it.
#include <cstddef>

#include "values/variant.h"
#include "vm/program.h"
#include "vm/vm_stack.h"

namespace zobase {

// The checked mode: after each instruction that completes, the dispatch loop
// verifies that the stack moved as the instruction table (vm/instructions.def)
// says, and raises assert_failed_exception naming the instruction when it did
// not. The unit tests turn it on; otherwise it costs one test per vm_run.
extern bool vm_check_stack_effects;

// Runs instructions from *ip until a return instruction; opens no frame.
// *ip stays on the failing instruction while an error propagates and on the
// return instruction that ended the run.
void vm_run(VmStack* stack, VmOp*** ip, Variant* ret);

// Runs a compiled expression in the caller's frame into a clean result. On
// an error the result is released and the stack is back where it was.
void vm_run_expression(VmStack* stack, const Program* program, Variant* result);

// Runs a program in a new frame over the argc arguments already on the stack.
ZO_API void execute_program(VmStack* stack, size_t argc, bool has_this, const Program* program,
                     Variant* ret);

}  // namespace zobase
