#pragma once
// The shared control record behind an object value, and its counts. The
// object model (objects/) decides what destroying an object means; values
// only count references and call it when the last use ends.
#include <atomic>
#include <cstdint>

namespace zobase {

class Object;
class VmStack;

// Two counts: the uses count the owners of the object; the records count the
// holders of this record, which therefore outlives the object. A holder adds
// a use only while there is one, so that a reference to a dying object can't
// revive it. Both live in one word, records in the high half, so that taking
// or dropping a reference is one atomic operation.
struct object_control_st {
    static constexpr uint64_t ONE_USE = 1;
    static constexpr uint64_t ONE_RECORD = uint64_t(1) << 32;
    static constexpr uint64_t USES = ONE_RECORD - 1;

    std::atomic<uint64_t> counts{ONE_RECORD | ONE_USE};
    std::atomic<bool> destroying{false};  // set once, when the last use ended
    bool no_destroy_call = false;         // the object goes without its DESTROY

    uint64_t use_count() const noexcept { return counts.load(std::memory_order_relaxed) & USES; }
    uint64_t record_count() const noexcept { return counts.load(std::memory_order_relaxed) >> 32; }
};

// Whether objects may be reached from more than one thread. It stays false
// while the process runs the language on one stack per runtime, and is set
// for good when a runtime attaches a second stack (a Thread object, a
// host's CreateStack): stacks then exist that can hand objects to each
// other. Until then reference counts and an object's storage are touched by
// one thread only, and plain reads and writes stand in for the atomic
// operations and the object's lock.
extern std::atomic<bool> objects_shared_between_threads;
inline bool objects_may_be_shared() noexcept { return objects_shared_between_threads.load(std::memory_order_relaxed); }
// Called before the second stack can run: the stack that made it, or the
// host, is the only one running code at that moment.
inline void note_objects_shared() noexcept { objects_shared_between_threads.store(true); }

struct object_ptr_st {
    object_control_st* control;  // null: the empty object
    Object* object;
};

// Installed by the object model: runs DESTROY (with a stack), destroys the
// object and frees it. Called once, with one use lent to it and `destroying`
// set; it leaves no use behind and never throws.
typedef void (*object_destroy_hook)(VmStack* stack, const object_ptr_st& ptr);
extern object_destroy_hook destroy_object_hook;

// A second holder of a live reference.
void object_ptr_acquire(const object_ptr_st& ptr) noexcept;
// Drops the reference and clears ptr.control; the last use destroys the object.
void object_ptr_release(VmStack* stack, object_ptr_st& ptr);
// A new holder of an object known only by its record, as the instance set of
// a class knows it: fails (and takes nothing) once the object's last use
// ended or its destruction began.
bool object_ptr_try_acquire(const object_ptr_st& ptr) noexcept;
// A use more or less without a holder of its own (INCREMENTREF and
// DECREMENTREF): the record's holders stay as they are.
bool object_ptr_add_use(const object_ptr_st& ptr) noexcept;
void object_ptr_drop_use(VmStack* stack, const object_ptr_st& ptr);
// Ends the use that the destruction was lent.
void object_ptr_end_destruction(const object_ptr_st& ptr) noexcept;
// Whether the object behind a reference still lives.
inline bool object_alive(const object_ptr_st& ptr) noexcept {
    return ptr.control && ptr.control->use_count() != 0;
}

}  // namespace zobase
