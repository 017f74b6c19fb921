#pragma once
// The host's view of a stack's last error. The texts of numbers come from
// TranslateError (base/error_numbers.h) and TranslateErrorEx (values/error.h).
#include <cstddef>
#include <cstdint>

#include "base/export.h"

namespace zobase {

class VmStack;

// The stack's last error number, sign-extended.
ZO_API uint64_t GetLastError(VmStack* stack);
// Refuses with copy_buffer_too_small unless both size and text are empty.
ZO_API int GetLastErrorMessage(VmStack* stack, char* buffer, size_t size);

}  // namespace zobase
