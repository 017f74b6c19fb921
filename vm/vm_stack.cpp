#include "vm/vm_stack.h"

#include <atomic>

#include "base/call_trace.h"

namespace zobase {

namespace {

std::atomic<uint64_t> next_stamp{1};

void free_heap_memvar(VmStack* stack, Memvar* var) {
    var->clear(stack);
    delete var;
}

}  // namespace

VmStack::VmStack(Runtime* owner, uint64_t slots, uint64_t undo_slots)
    : id(0), stamp(next_stamp.fetch_add(1, std::memory_order_relaxed)), capacity(slots), undo_capacity(undo_slots), sessions(std::make_unique<PlainDataSessions>()),
      runtime(owner) {
    ZO_TRACE();
    base = new Memvar[slots];
    locals = frame_esp = esp = end();
    undo_base = new UndoMemvar[UNDO_HANDLER_RESERVE + undo_slots]() + UNDO_HANDLER_RESERVE;
    undo_top = undo_end();
}

// Ending every scope first leaves only the publics in `names`: variables made
// at rest by assignment belong to the dynamic locals and are freed there.
VmStack::~VmStack() {
    __release_variables(this, undo_end(), end());
    for (auto& [symbol, var] : names) free_heap_memvar(this, var);
    names.clear();
    sessions.reset();
    delete[] base;
    delete[] (undo_base - UNDO_HANDLER_RESERVE);
}

EvaluationLevel::EvaluationLevel(VmStack* stack) : stack_(stack) {
    if (stack->evaluation_depth >= MAX_EVALUATION_DEPTH) throw RuntimeError(ERR_NESTING_TOO_DEEP);
    ++stack->evaluation_depth;
}

void __release_variables(VmStack* stack, UndoMemvar* undo_mark, Memvar* esp_mark) {
    stack->pop_to(esp_mark);
    if (stack->undo_top < undo_mark || stack->dynamic_locals) stack->names_changed();
    for (; stack->undo_top < undo_mark; ++stack->undo_top) {
        UndoMemvar& entry = *stack->undo_top;
        auto found = stack->names.find(entry.symbol);
        if (found != stack->names.end()) {
            Memvar* var = found->second;
            bool heap = var->kind == MEMVAR_PUBLIC;
            var->clear(stack);
            if (heap) delete var;
            stack->names.erase(found);
        }
        if (entry.previous) stack->names[entry.symbol] = entry.previous;
        entry = {0, nullptr};
    }
    if (auto* dynamic = stack->dynamic_locals) {
        for (auto& [symbol, var] : *dynamic) free_heap_memvar(stack, var);
        delete dynamic;
        stack->dynamic_locals = nullptr;
    }
}

}  // namespace zobase
