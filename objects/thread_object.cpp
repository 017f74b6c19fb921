// Threads of the language.
#include "objects/thread_object.h"

#include <system_error>

#include "base/call_trace.h"
#include "objects/native_members.h"
#include "values/error.h"
#include "vm/call_resolver.h"
#include "vm/param_window.h"
#include "vm/runtime_services.h"
#include "vm/screen.h"

namespace zobase {

namespace {

// What reaches the top of a thread has been through the frames' handlers;
// the message is shown once more there, as a program's end shows it.
void report_thread_error(VmStack* stack, const RuntimeError& error) {
    if (Screen* screen = stack->services ? stack->services->screen() : nullptr) screen->errendl(error.message);
}

void run_method(VmStack* stack, const object_ptr<Object>& object) {
    Memvar* mark = stack->esp;
    try {
        stack->push()->set(object.raw());
        ParamWindow window(stack, stack->esp, 0);
        Variant result;
        object.get_internal()->virtual_call(stack, stack->resolver->symbolize(String("run")), 0, &result);
        result.release(stack);
    } catch (...) {
        stack->pop_to(mark);
        throw;
    }
    stack->pop_to(mark);
}

// The thread's body: `run` of the object, on the thread's own stack, which
// starts with data sessions of its own; the work areas it opened close
// when it ends.
void run_thread(std::shared_ptr<VmThread> thread, object_ptr<Object> object) {
    VmStack* stack = thread->stack.get();
    try {
        run_method(stack, object);
    } catch (const RuntimeError& error) {
        report_thread_error(stack, error);
    } catch (const Exception&) {
        // QUIT and a THROW nobody caught end the thread's run quietly.
    } catch (const std::exception&) {
    }
    try {
        stack->sessions->close_work_areas(stack);
    } catch (const RuntimeError& error) {
        report_thread_error(stack, error);
    }
    object.release_internal(stack);
    thread->running.store(false);
}

void start_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    ZO_TRACE();
    require_arguments(argc, 0, 0);
    VmThread& thread = *current_object<Thread_Object>(stack)->thread;
    std::lock_guard guard(thread.mutex);
    if (thread.handle.joinable()) {
        if (thread.running.load()) throw RuntimeError(ERR_ARGUMENT_INVALID);
        thread.handle.join();
    }
    object_ptr<Object> object;
    object.add_ref_internal(stack->context.this_object->self());
    thread.running.store(true);
    try {
        thread.handle = std::thread(run_thread, current_object<Thread_Object>(stack)->thread, std::move(object));
    } catch (const std::system_error&) {
        thread.running.store(false);
        raise_not_available("thread");
    }
    ret->set_true();
}

void join_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    require_arguments(argc, 0, 0);
    current_object<Thread_Object>(stack)->thread->join();
    ret->set_true();
}

void thread_id_access(VmStack* stack, unsigned long long argc, Variant* ret) {
    refuse_subscripts(stack, argc);
    ret->set_integer(static_cast<long long>(current_object<Thread_Object>(stack)->thread->id));
}

Object* create_thread(VmStack* stack, Class* object_class) {
    ZO_TRACE();
    if (!stack->services) raise_not_available("thread");
    auto thread = std::make_shared<VmThread>();
    stack->services->register_thread(thread);
    return new Thread_Object(object_class, std::move(thread));
}

}  // namespace

void VmThread::join() {
    std::thread ended;
    {
        std::lock_guard guard(mutex);
        if (!handle.joinable()) return;
        if (handle.get_id() == std::this_thread::get_id()) throw RuntimeError(ERR_ARGUMENT_INVALID);
        ended = std::move(handle);
    }
    ended.join();
}

VmThread::~VmThread() {
    if (!handle.joinable()) return;
    if (handle.get_id() == std::this_thread::get_id()) handle.detach();
    else handle.join();
}

const builtin_class_data_st thread_class_data = {create_thread, false};

const library_class_member_row_st thread_members[] = {
    {"join", join_call, nullptr, nullptr, nullptr},
    {"start", start_call, nullptr, nullptr, nullptr},
    {"ThreadId", nullptr, thread_id_access, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace zobase
