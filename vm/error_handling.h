#pragma once
// Run-time error handling: what happens between a failing instruction and
// the moment the program goes on or the host gets control.
#include <cstdint>
#include <string>

#include "values/variant.h"
#include "vm/screen.h"
#include "vm/vm_stack.h"

namespace zobase {

// Filled by VmStack::handle_exception. Owns one reference to `exception`.
struct how_to_handle_st {
    Variant exception;
    long long position = 0;  // index into the handler frame's code array
    const VmFrame* frame = nullptr;
    unsigned symbol = 0;  // the CATCH variable, 0 for none

    how_to_handle_st() = default;
    how_to_handle_st(const how_to_handle_st&) = delete;
    how_to_handle_st& operator=(const how_to_handle_st&) = delete;
    ~how_to_handle_st() { exception.release(nullptr); }
};

// The error dialog offers Abort, Retry and Ignore; Abort is the default.
constexpr int ERROR_DIALOG_BUTTONS = MSGBOX_ABORT | MSGBOX_RETRY | MSGBOX_IGNORE;

// An error that ended a run, as the host shows it: the compile report it
// still carries, then its message.
void report_final_error(Screen* screen, const RuntimeError& error);

// The caught value goes into the CATCH variable of the running frame, and
// the frame goes on at the handler.
void enter_handler(VmStack* stack, VmFrame* frame, const Variant& value, unsigned symbol,
                   long long position);

// Where a frame stands in its source: the file of its module (empty for a
// command line), the line and column of its current instruction (0 when
// unknown) and the program's name.
struct frame_place_st {
    std::string module;
    uint32_t line = 0;
    uint32_t column = 0;
    std::string program;
};

frame_place_st place_of(const VmFrame* frame);

// While it lives, an error raised in code the native function runs is handled
// only by that code's own TRY scopes: no outer TRY catches it and no dialog is
// offered; it leaves as an exception for the native function to catch.
class NativeErrorCatch {
public:
    explicit NativeErrorCatch(VmStack* stack)
        : stack_(stack), saved_catches_(stack->native_catches), saved_boundary_(stack->catch_boundary) {
        stack->native_catches = true;
        stack->catch_boundary = stack->frame;
    }
    ~NativeErrorCatch() {
        stack_->native_catches = saved_catches_;
        stack_->catch_boundary = saved_boundary_;
    }
    NativeErrorCatch(const NativeErrorCatch&) = delete;
    NativeErrorCatch& operator=(const NativeErrorCatch&) = delete;

private:
    VmStack* stack_;
    bool saved_catches_;
    const VmFrame* saved_boundary_;
};

}  // namespace zobase
