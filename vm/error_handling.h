#pragma once
// Run-time error handling: what happens between a failing instruction and
// the moment the program goes on or the host gets control.
#include <cstdint>

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

}  // namespace zobase
