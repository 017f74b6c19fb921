// Reference counting of object values.
#include "values/object_ref.h"

namespace zobase {

object_destroy_hook destroy_object_hook = nullptr;

void object_ptr_acquire(const object_ptr_st& ptr) noexcept {
    object_control_st* control = ptr.control;
    if (!control) return;
    // A use count of 0 means the object is already being destroyed: the
    // reference then keeps only the record alive.
    uint64_t uses = control->use_count.load();
    while (uses != 0 && !control->use_count.compare_exchange_weak(uses, uses + 1)) {
    }
    control->record_count.fetch_add(1);
}

void object_ptr_release(VmStack* stack, object_ptr_st& ptr) {
    object_control_st* control = ptr.control;
    if (!control) return;
    if (control->use_count.fetch_sub(1) == 1 && destroy_object_hook)
        destroy_object_hook(stack, control->object);
    if (control->record_count.fetch_sub(1) == 1) delete control;
    ptr.control = nullptr;
}

}  // namespace zobase
