#pragma once
// The version of the runtime as programs and reports show it.

namespace zobase {

constexpr const char ZOBASE_VERSION[] = "0.9.2700";
constexpr const char ZOBASE_ARCH[] = "x86_64";

}  // namespace zobase
