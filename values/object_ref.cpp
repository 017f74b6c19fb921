// Reference counting of object values.
#include "values/object_ref.h"

namespace zobase {

object_destroy_hook destroy_object_hook = nullptr;
std::atomic<bool> objects_shared_between_threads{false};

namespace {

using control_st = object_control_st;

// Replaces the counts as one compare-and-swap would; with one thread a
// plain write does.
bool exchange_counts(control_st* control, uint64_t& counts, uint64_t wanted) noexcept {
    if (!objects_may_be_shared()) {
        control->counts.store(wanted, std::memory_order_relaxed);
        return true;
    }
    return control->counts.compare_exchange_weak(counts, wanted, std::memory_order_acq_rel);
}

// The counts before `delta` was added to them.
uint64_t add_counts(control_st* control, uint64_t delta) noexcept {
    if (!objects_may_be_shared()) {
        uint64_t before = control->counts.load(std::memory_order_relaxed);
        control->counts.store(before + delta, std::memory_order_relaxed);
        return before;
    }
    return control->counts.fetch_add(delta, std::memory_order_acq_rel);
}

// Adds `records` holders and, while there is a use, a use. True when it did.
bool add(control_st* control, uint64_t records, bool use) noexcept {
    uint64_t counts = control->counts.load(std::memory_order_relaxed);
    for (;;) {
        bool alive = (counts & control_st::USES) != 0;
        uint64_t wanted = counts + records + (use && alive ? control_st::ONE_USE : 0);
        if (exchange_counts(control, counts, wanted)) return alive;
    }
}

// Takes `records` holders and, while there is one, a use away. Returns the
// counts as they were.
uint64_t drop(control_st* control, uint64_t records, bool use) noexcept {
    uint64_t counts = control->counts.load(std::memory_order_relaxed);
    for (;;) {
        bool alive = (counts & control_st::USES) != 0;
        uint64_t wanted = counts - records - (use && alive ? control_st::ONE_USE : 0);
        if (exchange_counts(control, counts, wanted)) return counts;
    }
}

bool last_use(uint64_t before) { return (before & control_st::USES) == control_st::ONE_USE; }

// Code running in DESTROY may take and drop references: `destroying` keeps
// those from starting a second destruction. The destruction is lent a use,
// so that DESTROY can hold the object, and holds the record itself: the
// record goes when its word of counts comes to 0, whoever brings it there.
void destroy(VmStack* stack, const object_ptr_st& ptr) {
    control_st* control = ptr.control;
    if (control->destroying.exchange(true)) return;
    control->counts.fetch_add(control_st::ONE_USE | control_st::ONE_RECORD);
    if (destroy_object_hook) destroy_object_hook(stack, ptr);
    else object_ptr_end_destruction(ptr);
    if (control->counts.fetch_sub(control_st::ONE_RECORD) == control_st::ONE_RECORD) delete control;
}

}  // namespace

// One addition for both counts; a dead object gets its use taken back. The
// moment's extra use can't revive it: its `destroying` stays set.
void object_ptr_acquire(const object_ptr_st& ptr) noexcept {
    control_st* control = ptr.control;
    if (!control) return;
    uint64_t before = add_counts(control, control_st::ONE_RECORD | control_st::ONE_USE);
    if ((before & control_st::USES) == 0) add_counts(control, -control_st::ONE_USE);
}

bool object_ptr_try_acquire(const object_ptr_st& ptr) noexcept {
    control_st* control = ptr.control;
    if (!control || control->destroying.load() || !add(control, 0, true)) return false;
    // The destruction may have begun between the two looks: it sets
    // `destroying` before it lends itself the use that the add saw.
    if (control->destroying.load()) {
        drop(control, 0, true);
        return false;
    }
    control->counts.fetch_add(control_st::ONE_RECORD);
    return true;
}

bool object_ptr_add_use(const object_ptr_st& ptr) noexcept { return ptr.control && add(ptr.control, 0, true); }

void object_ptr_drop_use(VmStack* stack, const object_ptr_st& ptr) {
    if (ptr.control && last_use(drop(ptr.control, 0, true))) destroy(stack, ptr);
}

void object_ptr_end_destruction(const object_ptr_st& ptr) noexcept {
    ptr.control->counts.fetch_and(~control_st::USES);
}

// One atomic operation drops the use and the record together.
void object_ptr_release(VmStack* stack, object_ptr_st& ptr) {
    control_st* control = ptr.control;
    if (!control) return;
    ptr.control = nullptr;
    uint64_t before = drop(control, control_st::ONE_RECORD, true);
    if (last_use(before)) destroy(stack, {control, ptr.object});
    else if (before == control_st::ONE_RECORD) delete control;
}

}  // namespace zobase
