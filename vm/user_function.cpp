#include "vm/user_function.h"

#include "base/call_trace.h"
#include "vm/vm_run.h"

namespace zobase {

UserFunction::~UserFunction() { delete program_; }

void UserFunction::exec(VmStack* stack, unsigned long long argc, bool has_this,
                        Variant* ret) const {
    ZO_TRACE();
    stack->pending_args = argc;
    execute_program(stack, argc, has_this, program_, ret);
}

}  // namespace zobase
