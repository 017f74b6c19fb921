// The host's view of a stack's last error.
#include "runtime/error_api.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "values/error.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// Copies count bytes, refusing when they exceed the destination's limit.
void guarded_copy(char* dest, size_t limit, const char* source, size_t count) {
    if (count > limit) throw copy_buffer_too_small();
    std::memcpy(dest, source, count);
}

std::string last_error_text(const VmStack* stack) {
    const RuntimeError& error = stack->last_error;
    if (error.number == 0) return "";
    if (error.parameter.size()) return format_error_message(error.number, error.parameter).u8str();
    const error_st* row = find_error_row(error.number);
    return row ? row->message : "";
}

}  // namespace

uint64_t GetLastError(VmStack* stack) {
    return static_cast<uint64_t>(static_cast<int64_t>(stack->last_error.number));
}

// The limit is one less than the count, so every copy that isn't empty is
// refused: hosts read the text with TranslateErrorEx and GetLastError.
int GetLastErrorMessage(VmStack* stack, char* buffer, size_t size) {
    std::string text = last_error_text(stack);
    size_t count = std::max(size, text.size());
    guarded_copy(buffer, count - 1, text.c_str(), count);
    return 0;
}

}  // namespace zobase
