// The road of a file: load its module, bind the host's arguments, run the entry.
#include <algorithm>

#include "base/call_trace.h"
#include "compiler/module.h"
#include "runtime/debug_hook.h"
#include "runtime/module_cache.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "values/array.h"
#include "values/error.h"
#include "values/symtable.h"
#include "values/variant.h"
#include "vm/error_handling.h"
#include "vm/program.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// The slot offset of a declared parameter of that name; 0 when there is none.
uint64_t parameter_offset(Runtime* runtime, const Program* program, const char* name) {
    uint64_t offset = 0;
    if (!program->find_local(runtime->symbols().symbolize(name), &offset)) return 0;
    return offset <= program->parameter_count ? offset : 0;
}

void fill_argv(VmStack* stack, Variant* slot, int argc, const char* const* argv) {
    Array rows = Array::create(static_cast<uint64_t>(argc), 0);
    for (int i = 1; i <= argc; ++i) rows.write(stack, static_cast<uint64_t>(i))->set_string(String(argv[i - 1]));
    slot->tag = TAG_ARRAY;
    slot->array = rows;
}

// Pushes clean slots down to the deepest of the two parameters, fills them,
// and returns how many arguments the call passes.
uint64_t bind_arguments(Runtime* runtime, VmStack* stack, const Program* program, int argc,
                        const char* const* argv) {
    uint64_t argc_offset = parameter_offset(runtime, program, "argc");
    uint64_t argv_offset = parameter_offset(runtime, program, "argv");
    uint64_t count = std::max(argc_offset, argv_offset);
    Memvar* top = stack->esp;
    while (static_cast<uint64_t>(top - stack->esp) < count) stack->push();
    if (argc_offset) (top - argc_offset)->set_integer(static_cast<long long>(argc));
    if (argv_offset) fill_argv(stack, top - argv_offset, argc, argv);
    return count;
}

// The hook lives on this call's frame and is cleared from the stack on every way out.
class DebugHookScope {
public:
    explicit DebugHookScope(VmStack* stack) : stack_(stack) {
        stack_->debug_hook = &hook_;
        hook_.begin(stack_);
    }
    ~DebugHookScope() {
        hook_.end(stack_);
        stack_->debug_hook = nullptr;
    }
    DebugHookScope(const DebugHookScope&) = delete;
    DebugHookScope& operator=(const DebugHookScope&) = delete;

private:
    VmStack* stack_;
    DebugHook hook_;
};

void run_entry(Runtime* runtime, VmStack* stack, const UserFunction* entry, int argc, const char* const* argv) {
    Memvar* top = stack->esp;
    try {
        uint64_t count = bind_arguments(runtime, stack, entry->program(), argc, argv);
        Variant result;
        entry->exec(stack, count, false, &result);
        result.release(stack);
    } catch (...) {
        stack->pop_to(top);
        throw;
    }
    stack->pop_to(top);
}

}  // namespace

void Runtime::load_module(const String& file, VmStack* stack, const Module** out) {
    *out = module_cache().load_from_disk(stack, file, CACHE_CHECK_TIME);
}

int Runtime::run_program(const String& file, int argc, const char* const* argv) {
    ZO_TRACE();
    VmStack* stack = get_main_stack();
    DebugHookScope hook(stack);
    try {
        const Module* module = nullptr;
        load_module(file, stack, &module);
        if (module->entry) run_entry(this, stack, module->entry, argc, argv);
        return 0;
    } catch (const RuntimeQuit&) {
        return 0;
    } catch (const RuntimeError& error) {
        report_final_error(screen, error);
        return error.number;
    }
}

void Runtime::set_procedure_to(VmStack* stack, const String& file, bool additive) {
    if (!additive) set_procedure_to_null();
    module_cache().add_procedure(stack, file);
}

void Runtime::set_procedure_to_null() { module_cache().clear_procedures(); }

}  // namespace zobase
