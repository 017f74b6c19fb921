#pragma once
// The run-time half of a macro statement: the text on top of the stack is
// compiled and run in place, on the frame of the code around it.
#include "values/variant.h"
#include "vm/vm_op.h"

namespace zobase {

class VmStack;

// Runs the macro text at *ip. Returns true when the text executed a RETURN
// with a value, which is then in `ret` and ends the running loop too; false
// when the text simply ended, with *ip still on the macro instruction.
bool macro_execute(VmStack* stack, VmOp** const* ip, Variant* ret);

}  // namespace zobase
