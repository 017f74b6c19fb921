// Output buffering: ob_start, ob_get_content, ob_end_clean, ob_end_flush.
// The buffer is the Screen's: what ? and ?? print goes into it while it is
// active, error reports never do. Buffers don't nest: a second ob_start
// keeps the active one.
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "vm/runtime_services.h"
#include "vm/screen.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

Screen* screen_of(VmStack* stack, const char* function) {
    if (!stack->services) raise_not_available(function);
    return stack->services->screen();
}

}  // namespace

// .T. when a buffer was started, .F. when one was active already.
void stackcall_ob_start(VmStack* stack, unsigned long long, Variant* result) {
    Screen* screen = screen_of(stack, "ob_start");
    bool started = !screen->has_output_buffer();
    screen->ob_start();
    result->set_bool(started);
}

// What the buffer holds; "" without one.
void stackcall_ob_get_content(VmStack* stack, unsigned long long, Variant* result) {
    String text;
    screen_of(stack, "ob_get_content")->ob_get(&text);
    result->set_string(text);
}

// Both end the buffer and answer whether there was one.
void stackcall_ob_end_clean(VmStack* stack, unsigned long long, Variant* result) {
    Screen* screen = screen_of(stack, "ob_end_clean");
    result->set_bool(screen->has_output_buffer());
    screen->ob_end_clean();
}

void stackcall_ob_end_flush(VmStack* stack, unsigned long long, Variant* result) {
    Screen* screen = screen_of(stack, "ob_end_flush");
    result->set_bool(screen->has_output_buffer());
    screen->ob_end_flush();
}

}  // namespace zobase
