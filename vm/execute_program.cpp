// A program run in its own frame.
#include <exception>

#include "values/call_trace.h"
#include "vm/vm_run.h"

namespace zobase {

namespace {

// Reserves the frame's own variables below its arguments.
void reserve_frame(VmStack* stack, const Program* program, size_t slot_count) {
    uint64_t frame_size = program->frame_size();
    if (frame_size == slot_count) return;
    Memvar* wanted = stack->locals - frame_size;
    if (wanted < stack->base) throw RuntimeError(9010);
    // Slots below esp are always clean, so lowering esp reserves clean slots.
    if (wanted < stack->esp) stack->esp = wanted;
}

}  // namespace

void execute_program(VmStack* stack, size_t argc, bool has_this, const Program* program,
                     Variant* ret) {
    ZO_TRACE();
    // Deliberately "Must specify additional parameters." although there are too many.
    if (argc > program->parameter_count) throw RuntimeError(94);
    size_t slot_count = argc + (has_this ? 1 : 0);

    VmFrame frame{};
    frame.depth = stack->frame ? stack->frame->depth + 1 : 1;
    if (frame.depth > MAX_FRAME_DEPTH) throw RuntimeError(103);
    frame.previous = stack->frame;
    frame.program = program;
    frame.stack = stack;
    frame.saved_locals = stack->locals;
    frame.saved_frame_esp = stack->frame_esp;
    frame.saved_esp = stack->esp;
    frame.saved_undo_top = stack->undo_top;
    frame.saved_argc = stack->argc;
    frame.saved_dynamic_locals = stack->dynamic_locals;

    stack->frame = &frame;
    stack->locals = stack->esp + slot_count;
    stack->argc = argc;
    stack->dynamic_locals = nullptr;

    std::exception_ptr deferred;
    try {
        reserve_frame(stack, program, slot_count);
        stack->frame_esp = stack->esp;
        frame.ip = const_cast<VmOp**>(program->code());
        vm_run(stack, &frame.ip, ret);
    } catch (...) {
        // The exception leaves only after this frame's variables are gone.
        frame.saved_ip = frame.ip;
        deferred = std::current_exception();
    }

    __release_variables(stack, frame.saved_undo_top, frame.saved_esp);
    stack->locals = frame.saved_locals;
    stack->frame_esp = frame.saved_frame_esp;
    stack->esp = frame.saved_esp;
    stack->undo_top = frame.saved_undo_top;
    stack->dynamic_locals = frame.saved_dynamic_locals;
    stack->frame = frame.previous;
    stack->argc = frame.saved_argc;
    if (deferred) std::rethrow_exception(deferred);
}

}  // namespace zobase
