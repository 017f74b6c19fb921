// Reference counting of object values.
#include "values/object_ref.h"

namespace zobase {

object_destroy_hook destroy_object_hook = nullptr;

namespace {

// Adds a use unless the count is 0. True when it did.
bool add_use(object_control_st* control) noexcept {
    uint64_t uses = control->use_count.load();
    while (uses != 0 && !control->use_count.compare_exchange_weak(uses, uses + 1)) {
    }
    return uses != 0;
}

// Takes a use away; true when it was the last one. A count at 0 already
// stays there: the object is gone or going.
bool drop_use(object_control_st* control) noexcept {
    uint64_t uses = control->use_count.load();
    while (uses != 0 && !control->use_count.compare_exchange_weak(uses, uses - 1)) {
    }
    return uses == 1;
}

void drop_record(object_control_st* control) noexcept {
    if (control->record_count.fetch_sub(1) == 1) delete control;
}

}  // namespace

void object_ptr_acquire(const object_ptr_st& ptr) noexcept {
    object_control_st* control = ptr.control;
    if (!control) return;
    add_use(control);
    control->record_count.fetch_add(1);
}

bool object_ptr_try_acquire(const object_ptr_st& ptr) noexcept {
    object_control_st* control = ptr.control;
    if (!control || control->destroying.load() || !add_use(control)) return false;
    // The destruction may have begun between the two looks: it sets
    // `destroying` before it lends the count of 1 that the add saw.
    if (control->destroying.load()) {
        drop_use(control);
        return false;
    }
    control->record_count.fetch_add(1);
    return true;
}

// Code running in DESTROY may take and drop references: `destroying` keeps
// those from starting a second destruction.
void object_ptr_drop_use(VmStack* stack, const object_ptr_st& ptr) {
    object_control_st* control = ptr.control;
    if (!control || !drop_use(control) || control->destroying.exchange(true)) return;
    control->use_count.store(1);
    if (destroy_object_hook) destroy_object_hook(stack, ptr);
    else control->use_count.store(0);
}

bool object_ptr_add_use(const object_ptr_st& ptr) noexcept { return ptr.control && add_use(ptr.control); }

void object_ptr_release(VmStack* stack, object_ptr_st& ptr) {
    object_control_st* control = ptr.control;
    if (!control) return;
    ptr.control = nullptr;
    object_ptr_drop_use(stack, {control, ptr.object});
    drop_record(control);
}

}  // namespace zobase
