// A program run in its own frame. Errors are handled inside the frame; an
// exception leaves it only after the frame's variables are released.
#include <exception>
#include <utility>

#include "base/call_trace.h"
#include "vm/error_handling.h"
#include "vm/frames.h"
#include "vm/interrupt.h"
#include "vm/try_scope.h"
#include "vm/vm_run.h"

namespace zobase {

namespace {

// The stop path: the frame's ip goes to this one-element array, whose
// instruction leaves the loop.
VmOpUnwindFrame unwind_instruction;
VmOp* stop_code[1] = {&unwind_instruction};

// What leaves the frame once its variables are released.
enum DeferredAction {
    DEFER_NOTHING,
    DEFER_LAST_ERROR,     // an error nothing in this frame handles
    DEFER_PENDING_THROW,  // a handler in an outer frame
    DEFER_QUIT,
    DEFER_RETHROW,  // any other exception, passed on unchanged
};

struct deferred_st {
    DeferredAction action = DEFER_NOTHING;
    InterruptType quit_type = INTERRUPT_QUIT;
    std::exception_ptr exception;
};

void take_stop_path(VmFrame& frame) {
    frame.saved_ip = frame.ip;
    frame.ip = stop_code;
}

// What the running frame does with an error: the dialog's Retry and Ignore
// and a handler of its own go on in it; anything else leaves it.
bool on_runtime_error(VmStack* stack, VmFrame& frame, const RuntimeError& error,
                      deferred_st& deferred) {
    deferred.action = DEFER_LAST_ERROR;
    if (error.recovery) return false;
    stack->last_error = error;
    stack->last_error.recovery = 1;
    how_to_handle_st how;
    switch (stack->handle_exception(how)) {
    case RECOVERY_ABANDON_FRAME: return false;
    case RECOVERY_CONTINUE: deferred.action = DEFER_NOTHING; return true;
    case RECOVERY_HANDLER_FOUND:
        if (how.frame == &frame) {
            deferred.action = DEFER_NOTHING;
            enter_handler(stack, &frame, how.exception, how.symbol, how.position);
            return true;
        }
        stack->pending_throw = RuntimeThrow(how.exception, how.frame, how.symbol, how.position);
        deferred.action = DEFER_PENDING_THROW;
        return false;
    }
    return false;
}

bool on_runtime_throw(VmStack* stack, VmFrame& frame, const RuntimeThrow& thrown,
                      deferred_st& deferred) {
    if (&thrown != &stack->pending_throw) stack->pending_throw = thrown;
    const RuntimeThrow& pending = stack->pending_throw;
    if (pending.target != &frame) {
        deferred.action = DEFER_PENDING_THROW;
        return false;
    }
    deferred.action = DEFER_NOTHING;
    enter_handler(stack, &frame, pending.value, pending.symbol, pending.position);
    stack->pending_throw.value.release(stack);
    return true;
}

// Called inside a catch block: whether the running frame goes on after the
// exception being handled, or what leaves the frame with it. Handling an
// error runs CATCH filters, which may raise in turn: what they raise leaves
// this function for the caller to handle in the same frame.
bool goes_on_after(VmStack* stack, VmFrame& frame, deferred_st& deferred) {
    try {
        throw;
    } catch (const RuntimeQuit& quit) {
        deferred.action = DEFER_QUIT;
        deferred.quit_type = quit.type;
        return false;
    } catch (const RuntimeThrow& thrown) {
        return on_runtime_throw(stack, frame, thrown, deferred);
    } catch (const RuntimeError& error) {
        return on_runtime_error(stack, frame, error, deferred);
    } catch (...) {
        deferred.action = DEFER_RETHROW;
        deferred.exception = std::current_exception();
        return false;
    }
}

// Runs the frame's code; an exception the frame does not go on after takes
// the stop path, which ends the loop, and leaves the frame afterwards.
void run_frame(VmStack* stack, VmFrame& frame, Variant* ret, deferred_st& deferred) {
    std::exception_ptr raised_while_handling;
    for (;;) {
        try {
            if (raised_while_handling) std::rethrow_exception(std::exchange(raised_while_handling, nullptr));
            vm_run(stack, &frame.ip, ret);
            return;
        } catch (...) {
            try {
                if (!goes_on_after(stack, frame, deferred)) take_stop_path(frame);
            } catch (const Exception&) {
                raised_while_handling = std::current_exception();
            }
        }
    }
}

std::exception_ptr deferred_exception(VmStack* stack, const deferred_st& deferred) {
    switch (deferred.action) {
    case DEFER_LAST_ERROR: return std::make_exception_ptr(RuntimeError(stack->last_error));
    case DEFER_PENDING_THROW: return std::make_exception_ptr(RuntimeThrow(stack->pending_throw));
    case DEFER_QUIT: return std::make_exception_ptr(RuntimeQuit(deferred.quit_type));
    default: return deferred.exception;
    }
}

}  // namespace

void execute_program(VmStack* stack, size_t argc, bool has_this, const Program* program,
                     Variant* ret) {
    ZO_TRACE();
    // Recursion goes round through calls: Ctrl-C is answered here too.
    poll_interrupt(stack);
    // Deliberately "Must specify additional parameters." although there are too many.
    if (argc > program->parameter_count) throw RuntimeError(ERR_MISSING_PARAMETERS);
    VmFrame frame;
    enter_frame(stack, frame, next_frame_depth(stack), argc, has_this, program, ret);

    deferred_st deferred;
    try {
        run_frame(stack, frame, ret, deferred);
    } catch (...) {
        // Failures while handling one that are no language exception.
        frame.saved_ip = frame.ip;
        deferred.action = DEFER_RETHROW;
        deferred.exception = std::current_exception();
    }
    leave_frame(stack, frame);
    if (deferred.action != DEFER_NOTHING) std::rethrow_exception(deferred_exception(stack, deferred));
}

std::exception_ptr recover_in_called_frame(VmStack* stack) {
    VmFrame& frame = *stack->frame;
    deferred_st deferred;
    try {
        if (goes_on_after(stack, frame, deferred)) return nullptr;
    } catch (const Exception&) {
        // Raised while handling: the same frame handles it next.
        return std::current_exception();
    }
    leave_called_frame(stack, frame);
    return deferred_exception(stack, deferred);
}

}  // namespace zobase
