#pragma once
// The built-in class "Thread": a subclass gives the method `run`, and
// `start` runs it on a VmStack and operating-system thread of its own, which
// share the runtime, the classes and the symbol table. `join` waits for it.
#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

#include "objects/class.h"
#include "vm/object.h"
#include "vm/vm_stack.h"

namespace zobase {

// One thread of the language, shared by its Thread object, the runtime's
// thread map and, while it runs, the thread itself.
struct VmThread {
    uint64_t id = 0;
    std::unique_ptr<VmStack> stack;
    std::mutex mutex;  // guards handle
    std::thread handle;
    std::atomic<bool> running{false};

    // Waits for the run to end; does nothing when none was started or it
    // was joined already. From the thread itself: 11.
    void join();
    ~VmThread();
};

class Thread_Object : public Object {
public:
    Thread_Object(Class* object_class, std::shared_ptr<VmThread> thread)
        : Object(object_class), thread(std::move(thread)) {}

    std::shared_ptr<VmThread> thread;
};

extern const builtin_class_data_st thread_class_data;
extern const library_class_member_row_st thread_members[];

}  // namespace zobase
