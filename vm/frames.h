#pragma once
// Entering and leaving a frame. A program run by execute_program has an
// activation of the dispatch loop of its own; a call of a user function from
// compiled code runs in the caller's activation, its frame in the stack's
// call_frames. Both set up and end their frames here.
#include <cstddef>
#include <exception>

#include "vm/program.h"
#include "vm/try_scope.h"
#include "vm/vm_stack.h"

namespace zobase {

// Makes `frame` the running frame of `program` over the argc arguments on
// top of the stack (with THIS beneath them when has_this); the arguments
// become its first slots where they lie. Raises before changing anything.
[[gnu::always_inline]] inline void enter_frame(VmStack* stack, VmFrame& frame, uint64_t depth, size_t argc,
                                               bool has_this, const Program* program, Variant* ret) {
    size_t slot_count = argc + (has_this ? 1 : 0);
    Memvar* locals = stack->esp + slot_count;
    // Slots below esp are always clean, so lowering esp reserves clean slots.
    Memvar* frame_esp = stack->esp;
    if (program->frame_size() != slot_count) {
        Memvar* wanted = locals - program->frame_size();
        if (wanted < stack->base) throw RuntimeError(ERR_STACK_OVERFLOW);
        if (wanted < frame_esp) frame_esp = wanted;
    }
    // Every field is set one by one: an empty-brace frame is cleared with a
    // string store, slow to start and slow to read back from.
    frame.depth = depth;
    frame.previous = stack->frame;
    frame.try_scopes = nullptr;
    frame.program = program;
    frame.saved_locals = stack->locals;
    frame.saved_frame_esp = stack->frame_esp;
    frame.saved_esp = stack->esp;
    frame.saved_undo_top = stack->undo_top;
    frame.saved_argc = stack->argc;
    frame.saved_dynamic_locals = stack->dynamic_locals;
    frame.saved_program_id = stack->frame_program_id;
    frame.ret = ret;
    frame.member_call = false;

    stack->frame = &frame;
    stack->frame_program_id = program->id;
    stack->locals = locals;
    stack->esp = stack->frame_esp = frame_esp;
    stack->argc = argc;
    stack->dynamic_locals = nullptr;
    VmOp** entry = const_cast<VmOp**>(program->code());
    // The parameters of FUNCTION f(a, b) open the body: they are done here,
    // sparing the body's first instruction.
    if ((*entry)->opcode == OP_INIT_LPARAMETERS) {
        uint64_t n = static_cast<const VmOpInitLparameters*>(*entry)->n;
        for (uint64_t offset = 1; offset <= n; ++offset) (locals - offset)->kind = MEMVAR_LOCAL;
        ++entry;
    }
    frame.ip = entry;
}

// The depth a new frame takes; past MAX_FRAME_DEPTH raises 103.
inline uint64_t next_frame_depth(const VmStack* stack) {
    uint64_t depth = stack->frame ? stack->frame->depth + 1 : 1;
    if (depth > MAX_FRAME_DEPTH) throw RuntimeError(ERR_NESTING_TOO_DEEP);
    return depth;
}

// Ends the running frame: its variables are released (a frame that hid no
// name and made no dynamic local only pops its slots) and the caller's
// state comes back. The arguments stay on the stack for the caller to pop.
inline void leave_frame(VmStack* stack, VmFrame& frame) {
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
    stack->frame_program_id = frame.saved_program_id;
    stack->argc = frame.saved_argc;
    if (frame.try_scopes) free_try_scopes(&frame);
}

// Ends a frame the dispatch loop entered in place; a method's frame also
// gives back the caller's member context and argument window.
inline void leave_called_frame(VmStack* stack, VmFrame& frame) {
    leave_frame(stack, frame);
    if (frame.member_call) {
        stack->context = frame.saved_context;
        stack->params_top = frame.saved_params_top;
        stack->param_count = frame.saved_param_count;
    }
}

// Called inside a catch block while stack->frame is a frame the dispatch
// loop entered in place: handles the exception in that frame as a frame of
// its own activation would. Returns null when the frame goes on (a handler
// of its own, Retry, Ignore); otherwise the frame is left and the returned
// exception is what its caller must handle next.
std::exception_ptr recover_in_called_frame(VmStack* stack);

}  // namespace zobase
