// The roads of a file and of a command line from the host into the VM.
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "values/call_trace.h"
#include "values/error.h"

namespace zobase {

// Source files need the compiler; until it exists a run reports so honestly.
int Runtime::run_program(const String& file, int, const char* const*) {
    ZO_TRACE();
    try {
        raise_not_available("run_program");
    } catch (const RuntimeError& error) {
        screen->errendl(error.message);
        return error.number;
    }
}

int Runtime::run_command(const String& text) {
    ZO_TRACE();
    try {
        raise_not_available("run_command");
    } catch (const RuntimeError& error) {
        screen->errendl(error.message);
        return error.number;
    }
}

void RunProgram(Runtime* runtime, const String& file) { runtime->run_program(file, 0, nullptr); }
void RunCommand(Runtime* runtime, const String& text) { runtime->run_command(String(text)); }
void RunScript(Runtime* runtime, const String& text) { runtime->run_command(String(text)); }

}  // namespace zobase
