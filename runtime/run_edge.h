#pragma once
// The edge of the exported calls: nothing raised inside passes it. What
// ends a run there without an error number gets an exit status of its own.
#include "base/exception.h"

namespace zobase {

class Screen;

// A state the runtime believes impossible was reached: the user gets the
// failed condition instead of a crash, and the shell's status says so.
constexpr int INTERNAL_ERROR_STATUS = 70;
// The status a shell reports for a program that Ctrl-C ended (128 + SIGINT).
constexpr int INTERRUPTED_STATUS = 130;

// Prints "(Internal error)" and the condition; returns INTERNAL_ERROR_STATUS.
int report_internal_error(Screen* screen, const assert_failed_exception& failure);

}  // namespace zobase
