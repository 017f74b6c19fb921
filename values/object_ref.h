#pragma once
// The shared control record behind an object value. The object model fills in
// how an object is destroyed; values only count references.
#include <atomic>
#include <cstdint>

namespace zobase {

class Object;
class VmStack;

struct object_control_st {
    std::atomic<uint64_t> use_count;     // references that keep the object alive
    std::atomic<uint64_t> record_count;  // references that keep this record alive
    Object* object;
};

struct object_ptr_st {
    object_control_st* control;  // null: the empty object
    Object* object;
};

// Installed by the object model: destroys an object whose last use ended.
typedef void (*object_destroy_hook)(VmStack* stack, Object* object);
extern object_destroy_hook destroy_object_hook;

void object_ptr_acquire(const object_ptr_st& ptr) noexcept;
void object_ptr_release(VmStack* stack, object_ptr_st& ptr);

}  // namespace zobase
