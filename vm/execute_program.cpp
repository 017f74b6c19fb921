// A program run in its own frame. Errors are handled inside the frame; an
// exception leaves it only after the frame's variables are released.
#include <exception>
#include <utility>

#include "base/call_trace.h"
#include "vm/error_handling.h"
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

void take_stop_path(VmFrame& frame, deferred_st& deferred, DeferredAction action) {
    frame.saved_ip = frame.ip;
    frame.ip = stop_code;
    deferred.action = action;
}

void on_runtime_error(VmStack* stack, VmFrame& frame, const RuntimeError& error,
                      deferred_st& deferred) {
    if (error.recovery) {
        take_stop_path(frame, deferred, DEFER_LAST_ERROR);
        return;
    }
    stack->last_error = error;
    stack->last_error.recovery = 1;
    how_to_handle_st how;
    switch (stack->handle_exception(how)) {
    case RECOVERY_ABANDON_FRAME: take_stop_path(frame, deferred, DEFER_LAST_ERROR); break;
    case RECOVERY_CONTINUE: deferred.action = DEFER_NOTHING; break;
    case RECOVERY_HANDLER_FOUND:
        if (how.frame == &frame) {
            enter_handler(stack, &frame, how.exception, how.symbol, how.position);
        } else {
            stack->pending_throw = RuntimeThrow(how.exception, how.frame, how.symbol, how.position);
            take_stop_path(frame, deferred, DEFER_PENDING_THROW);
        }
        break;
    }
}

void on_runtime_throw(VmStack* stack, VmFrame& frame, const RuntimeThrow& thrown,
                      deferred_st& deferred) {
    if (&thrown != &stack->pending_throw) stack->pending_throw = thrown;
    const RuntimeThrow& pending = stack->pending_throw;
    if (pending.target != &frame) {
        take_stop_path(frame, deferred, DEFER_PENDING_THROW);
        return;
    }
    enter_handler(stack, &frame, pending.value, pending.symbol, pending.position);
    stack->pending_throw.value.release(stack);
}

// Runs the frame's code; the catch clauses set the frame's ip and what to do
// after the frame is gone, and the loop resumes. Handling an error runs CATCH
// filters, which may raise in turn: what they raise takes the same clauses.
void run_frame(VmStack* stack, VmFrame& frame, Variant* ret, deferred_st& deferred) {
    std::exception_ptr raised_while_handling;
    for (;;) {
        try {
            if (raised_while_handling) std::rethrow_exception(std::exchange(raised_while_handling, nullptr));
            vm_run(stack, &frame.ip, ret);
            return;
        } catch (const RuntimeQuit& quit) {
            deferred.quit_type = quit.type;
            take_stop_path(frame, deferred, DEFER_QUIT);
        } catch (const RuntimeThrow& thrown) {
            on_runtime_throw(stack, frame, thrown, deferred);
        } catch (const RuntimeError& error) {
            try {
                on_runtime_error(stack, frame, error, deferred);
            } catch (const Exception&) {
                raised_while_handling = std::current_exception();
            }
        }
    }
}

[[noreturn]] void run_deferred(VmStack* stack, const deferred_st& deferred) {
    switch (deferred.action) {
    case DEFER_LAST_ERROR: throw RuntimeError(stack->last_error);
    case DEFER_PENDING_THROW: throw RuntimeThrow(stack->pending_throw);
    case DEFER_QUIT: throw RuntimeQuit(deferred.quit_type);
    default: std::rethrow_exception(deferred.exception);
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
    size_t slot_count = argc + (has_this ? 1 : 0);

    // Every field is set one by one below: an empty-brace frame is cleared
    // with a string store, slow to start and slow to read back from.
    VmFrame frame;
    frame.depth = stack->frame ? stack->frame->depth + 1 : 1;
    if (frame.depth > MAX_FRAME_DEPTH) throw RuntimeError(ERR_NESTING_TOO_DEEP);
    Memvar* locals = stack->esp + slot_count;
    // Slots below esp are always clean, so lowering esp reserves clean slots.
    Memvar* frame_esp = stack->esp;
    if (program->frame_size() != slot_count) {
        Memvar* wanted = locals - program->frame_size();
        if (wanted < stack->base) throw RuntimeError(ERR_STACK_OVERFLOW);
        if (wanted < frame_esp) frame_esp = wanted;
    }

    frame.previous = stack->frame;
    frame.saved_ip = nullptr;
    frame.try_scopes = nullptr;
    frame.program = program;
    frame.stack = stack;
    frame.saved_locals = stack->locals;
    frame.saved_frame_esp = stack->frame_esp;
    frame.saved_esp = stack->esp;
    frame.saved_undo_top = stack->undo_top;
    frame.saved_argc = stack->argc;
    frame.saved_dynamic_locals = stack->dynamic_locals;

    // Kept here rather than read back through the previous frame on the way out.
    const uint64_t saved_program_id = stack->frame_program_id;
    stack->frame = &frame;
    stack->frame_program_id = program->id;
    stack->locals = locals;
    stack->esp = stack->frame_esp = frame_esp;
    stack->argc = argc;
    stack->dynamic_locals = nullptr;
    frame.ip = const_cast<VmOp**>(program->code());

    deferred_st deferred;
    try {
        run_frame(stack, frame, ret, deferred);
    } catch (...) {
        // Other exception types, and failures while handling one.
        frame.saved_ip = frame.ip;
        deferred.action = DEFER_RETHROW;
        deferred.exception = std::current_exception();
    }

    // A frame that hid no name and made no dynamic local only pops its slots.
    if (stack->undo_top < frame.saved_undo_top || stack->dynamic_locals)
        __release_variables(stack, frame.saved_undo_top, frame.saved_esp);
    else
        stack->pop_to(frame.saved_esp);
    stack->locals = frame.saved_locals;
    stack->frame_esp = frame.saved_frame_esp;
    stack->esp = frame.saved_esp;
    stack->undo_top = frame.saved_undo_top;
    stack->dynamic_locals = frame.saved_dynamic_locals;
    stack->frame = frame.previous;
    stack->frame_program_id = saved_program_id;
    stack->argc = frame.saved_argc;
    if (frame.try_scopes) free_try_scopes(&frame);
    if (deferred.action != DEFER_NOTHING) run_deferred(stack, deferred);
}

}  // namespace zobase
