#pragma once
// Error numbers to text, for the layers that format messages.
#include <cstddef>
#include <string>

namespace zobase {

// The row's format filled with the detail, or its plain message when it has
// no format; empty for a number the table lacks.
std::string error_text(int code, const std::string& detail);
// Copies text into a C buffer of `size` bytes, cut to fit and terminated.
void copy_error_text(const std::string& text, char* buffer, size_t size);

}  // namespace zobase
