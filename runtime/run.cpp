// The roads of a file and of a command line from the host into the VM.
#include <memory>
#include <string>

#include "base/call_trace.h"
#include "builtins/library.h"
#include "compiler/build_input.h"
#include "runtime/run_edge.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "values/error.h"
#include "vm/error_handling.h"
#include "vm/vm_run.h"
#include "vm/vm_stack.h"

namespace zobase {

// Runs in the caller's state without a frame of its own, so a command typed
// at a prompt sees and makes variables of whatever frame is active.
int Runtime::run_command(const String& text) {
    ZO_TRACE();
    VmStack* stack = get_main_stack();
    BuildInput build(stack);
    build.import_library(library());
    Memvar* top = stack->esp;
    Variant result;
    try {
        std::unique_ptr<Program> program(build.build_command(text));
        VmOp** ip = program->code();
        vm_run(stack, &ip, &result);
    } catch (const RuntimeError& error) {
        report_final_error(screen, error);
        stack->pop_to(top);
        result.release(stack);
        return error.number;
    } catch (...) {
        // QUIT and Ctrl-C pass on to the caller with the stack as it was.
        stack->pop_to(top);
        result.release(stack);
        throw;
    }
    result.release(stack);
    return 0;
}

int report_internal_error(Screen* screen, const assert_failed_exception& failure) {
    screen->errendl(String((std::string("(Internal error) ") + failure.what).c_str()));
    return INTERNAL_ERROR_STATUS;
}

namespace {

// The exported calls end here whatever happened inside: errors were reported
// on the way, and QUIT or Ctrl-C end the run.
template <typename Run>
void at_the_edge(Runtime* runtime, Run run) {
    try {
        run();
    } catch (const RuntimeInterrupt&) {
    } catch (const assert_failed_exception& failure) {
        report_internal_error(runtime->screen, failure);
    }
}

}  // namespace

void RunProgram(Runtime* runtime, const String& file) {
    at_the_edge(runtime, [&] { runtime->run_program(file, 0, nullptr); });
}
void RunCommand(Runtime* runtime, const String& text) {
    at_the_edge(runtime, [&] { runtime->run_command(String(text)); });
}
void RunScript(Runtime* runtime, const String& text) { RunCommand(runtime, text); }

}  // namespace zobase
