#pragma once
// The runtime's answer to the VM's late-bound calls.
#include <memory>

#include "vm/call_resolver.h"

namespace zobase {

class Runtime;

std::unique_ptr<CallResolver> create_runtime_resolver(Runtime* runtime);

}  // namespace zobase
