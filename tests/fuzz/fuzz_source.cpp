// libFuzzer target: the front end and the compiler on source text, as a
// program file and as a command line. Every input must end in compiled code
// or a RuntimeError; a crash, a sanitizer report, a hang or any other
// exception is a finding. Nothing is run: the compiler's constant folding is
// the only code executed.
#include <cstddef>
#include <cstdint>

#include "compiler/build_input.h"
#include "compiler/module.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "text/charset.h"
#include "values/error.h"
#include "vm/program.h"

using namespace zobase;

namespace {

class SilentScreen : public Screen {
public:
    void internal_out(const String&) override {}
    void internal_err(const String&) override {}
};

// One runtime for the whole run: making one per input would time the
// start-up, not the compiler.
Runtime* shared_runtime() {
    static SilentScreen screen;
    static Runtime* runtime = Runtime::create_instance(&screen);
    return runtime;
}

template <typename Build>
void compile_quietly(Build build) {
    BuildInput input(shared_runtime()->get_main_stack());
    input.import_library(shared_runtime()->library());
    try {
        build(input);
    } catch (const RuntimeError&) {
        // A numbered error is a proper end for any input.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    shared_runtime();  // loads the charsets first
    String text = String::fromBytes(reinterpret_cast<const char*>(data), size, Charset::utf8);
    compile_quietly([&](BuildInput& input) { delete input.build_module(String("fuzz.prg"), text); });
    compile_quietly([&](BuildInput& input) { delete input.build_command(text); });
    return 0;
}
