#pragma once
// A reader-writer lock for critical sections of a few dozen instructions
// (an object's property storage): one atomic operation to enter and one to
// leave when nobody else holds it, spinning and then yielding when somebody
// does. Meets the SharedMutex requirements, so std::shared_lock and
// std::unique_lock take it. Not fair: a steady stream of readers can hold a
// writer off.
#include <atomic>
#include <cstdint>
#include <thread>

namespace zobase {

class RwSpinLock {
public:
    void lock_shared() noexcept {
        for (unsigned round = 0;; ++round) {
            if (!(state_.fetch_add(1, std::memory_order_acquire) & WRITER)) return;
            state_.fetch_sub(1, std::memory_order_relaxed);
            while (state_.load(std::memory_order_relaxed) & WRITER) pause(round++);
        }
    }
    void unlock_shared() noexcept { state_.fetch_sub(1, std::memory_order_release); }

    void lock() noexcept {
        for (unsigned round = 0;; ++round) {
            uint32_t expected = 0;
            if (state_.compare_exchange_weak(expected, WRITER, std::memory_order_acquire, std::memory_order_relaxed))
                return;
            pause(round);
        }
    }
    // Readers that looked in while the writer held it have their count in
    // the state still: only the writer's bit goes.
    void unlock() noexcept { state_.fetch_sub(WRITER, std::memory_order_release); }

private:
    static constexpr uint32_t WRITER = uint32_t(1) << 31;

    static void pause(unsigned round) noexcept {
        if (round < 64) __builtin_ia32_pause();
        else std::this_thread::yield();
    }

    std::atomic<uint32_t> state_{0};
};

}  // namespace zobase
