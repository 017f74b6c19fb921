#include "vm/vm_stack.h"

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <new>

#include "base/call_trace.h"

namespace zobase {

namespace {

std::atomic<uint64_t> next_stamp{1};

// The slot arrays come from the system as zero pages that are only made
// real when first touched: a stack of 65,536 slots costs a process nothing
// until code runs that deep. All-zero bytes are exactly a clean slot and an
// empty undo entry, so nothing needs constructing.
static_assert(TAG_FALSE == 0 && MEMVAR_NONE == 0, "a clean slot is all zero bytes");

// A stack of no slots still gets its page: the system maps no empty range.
template <typename T>
size_t pages_size(uint64_t count) {
    return std::max<size_t>(count * sizeof(T), 1);
}

template <typename T>
T* zero_pages(uint64_t count) {
    void* memory = mmap(nullptr, pages_size<T>(count), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    return static_cast<T*>(memory);
}

template <typename T>
void free_pages(T* array, uint64_t count) {
    munmap(array, pages_size<T>(count));
}

void free_heap_memvar(VmStack* stack, Memvar* var) {
    var->clear(stack);
    delete var;
}

}  // namespace

VmStack::VmStack(Runtime* owner, uint64_t slots, uint64_t undo_slots)
    : id(0), stamp(next_stamp.fetch_add(1, std::memory_order_relaxed)), capacity(slots), undo_capacity(undo_slots), sessions(std::make_unique<PlainDataSessions>()),
      runtime(owner) {
    ZO_TRACE();
    call_frames.reset(new VmFrame[MAX_FRAME_DEPTH + 1]);
    base = zero_pages<Memvar>(slots);
    locals = frame_esp = esp = end();
    undo_base = zero_pages<UndoMemvar>(UNDO_HANDLER_RESERVE + undo_slots) + UNDO_HANDLER_RESERVE;
    undo_top = undo_end();
}

// Ending every scope first leaves only the publics in `names`: variables made
// at rest by assignment belong to the dynamic locals and are freed there.
VmStack::~VmStack() {
    __release_variables(this, undo_end(), end());
    for (auto& [symbol, var] : names) free_heap_memvar(this, var);
    names.clear();
    sessions.reset();
    free_pages(base, capacity);
    free_pages(undo_base - UNDO_HANDLER_RESERVE, UNDO_HANDLER_RESERVE + undo_capacity);
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
