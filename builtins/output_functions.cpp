// The ? and ?? statements.
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "vm/runtime_services.h"
#include "vm/screen.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// The texts are made before the lock is taken, so that a failing conversion
// can't leave the screen locked; the writes themselves happen under it.
void echo_values(VmStack* stack, unsigned long long argc, bool linefeed) {
    std::vector<String> texts;
    texts.reserve(argc);
    for (unsigned long long i = 1; i <= argc; ++i)
        texts.push_back(argument(stack, i).to_string_regional(stack, false));
    Screen* screen = stack->services->screen();
    String blank(" ");
    screen->lock_for_output();
    for (size_t i = 0; i < texts.size(); ++i) {
        if (i > 0 && stack->space) screen->out(blank);
        screen->out(texts[i]);
    }
    if (linefeed) screen->outendl();
    screen->unlock_output();
}

}  // namespace

void void_stackcall_echo(VmStack* stack, unsigned long long argc) {
    ZO_TRACE();
    echo_values(stack, argc, false);
}

// Unlike the ? of older dialects, the line ends after the values.
void void_stackcall_echo_linefeed(VmStack* stack, unsigned long long argc) {
    ZO_TRACE();
    echo_values(stack, argc, true);
}

}  // namespace zobase
