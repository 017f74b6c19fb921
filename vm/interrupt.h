#pragma once
// Ctrl-C: a signal handler only asks; the dispatch loop answers at its next
// jump or call by raising RuntimeInterrupt(INTERRUPT_BREAK), which no TRY
// catches and which unwinds every frame, releasing its variables.
#include <atomic>

namespace zobase {

class VmStack;

// Lock-free, so a signal handler may set it.
extern std::atomic<bool> vm_interrupt_requested;

inline void request_interrupt() noexcept { vm_interrupt_requested.store(true, std::memory_order_relaxed); }
inline void clear_interrupt() noexcept { vm_interrupt_requested.store(false, std::memory_order_relaxed); }

// Takes the request, reports where the stack stands and raises the interrupt;
// returns when another stack took the request first.
void take_interrupt(VmStack* stack);

// One load and one branch: cheap enough for every jump and call.
inline void poll_interrupt(VmStack* stack) {
    if (vm_interrupt_requested.load(std::memory_order_relaxed)) [[unlikely]]
        take_interrupt(stack);
}

}  // namespace zobase
