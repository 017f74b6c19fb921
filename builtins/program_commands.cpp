// Commands that run or end programs: DO, QUIT and CANCEL.
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "values/error.h"
#include "vm/call_resolver.h"
#include "vm/user_function.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr unsigned long long DO_FIXED_ARGUMENTS = 3;  // name, IN file, return value

const CallResolver& resolver_of(VmStack* stack) {
    if (!stack->resolver) raise_not_available("do");
    return *stack->resolver;
}

// The procedure DO runs: from the IN file, else from the running program's
// module, else the file of that name, else from the SET PROCEDURE modules.
const UserFunction* find_do_target(VmStack* stack, const String& name, const Variant& in_file) {
    const CallResolver& resolver = resolver_of(stack);
    uint32_t symbol = resolver.symbolize(name);
    if (!is_null_argument(in_file)) {
        const UserFunction* target =
            resolver.load_from_file(stack, static_cast<String>(in_file), symbol);
        if (!target) throw RuntimeError(ERR_FILE_NOT_FOUND, name);
        return target;
    }
    const Program* running = stack->frame ? stack->frame->program : nullptr;
    if (const UserFunction* target = resolver.find_in_module_of(running, symbol)) return target;
    if (!resolver.has_program_file(name))
        if (const UserFunction* target = resolver.find_procedure(symbol)) return target;
    const UserFunction* target = resolver.load_from_file(stack, name, 0);
    if (!target) throw RuntimeError(ERR_FILE_NOT_FOUND, name);
    return target;
}

}  // namespace

// The WITH values are the top slots of the call, so the procedure takes them
// as its arguments where they lie; its result is dropped.
void void_stackcall_do(VmStack* stack, unsigned long long argc) {
    const String& name = string_argument(stack, 1);
    unsigned long long passed = argc > DO_FIXED_ARGUMENTS ? argc - DO_FIXED_ARGUMENTS : 0;
    // A command of an extension library (SET LIBRARY) comes before programs.
    if (is_null_argument(argument(stack, 2)) && run_extension_command(stack, name, passed)) return;
    const UserFunction* target = find_do_target(stack, name, argument(stack, 2));
    Variant result;
    stack->pending_args = passed;
    target->exec(stack, passed, false, &result);
    result.release(stack);
}

void void_stackcall_quit(VmStack*, unsigned long long) { throw RuntimeQuit(INTERRUPT_QUIT); }

void void_stackcall_cancel(VmStack*, unsigned long long) { throw RuntimeQuit(INTERRUPT_CANCEL); }

}  // namespace zobase
