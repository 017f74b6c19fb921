#pragma once
// The argument window of a native call or member handler. Saved and
// restored around each call, also when it throws, so natives nest.
#include "vm/vm_stack.h"

namespace zobase {

class ParamWindow {
public:
    ParamWindow(VmStack* stack, Memvar* top, uint64_t count) noexcept
        : stack_(stack), saved_top_(stack->params_top), saved_count_(stack->param_count) {
        stack->params_top = top;
        stack->param_count = count;
    }
    ~ParamWindow() {
        stack_->params_top = saved_top_;
        stack_->param_count = saved_count_;
    }
    ParamWindow(const ParamWindow&) = delete;
    ParamWindow& operator=(const ParamWindow&) = delete;

private:
    VmStack* stack_;
    Memvar* saved_top_;
    uint64_t saved_count_;
};

}  // namespace zobase
