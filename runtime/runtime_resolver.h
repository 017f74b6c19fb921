#pragma once
// The runtime's side of the doors the lower layers declare: its answer to
// the VM's late-bound calls (vm/call_resolver.h) and the services that code
// on a stack asks of it (vm/runtime_services.h). Both are installed on every
// stack the runtime makes.
#include <memory>

#include "vm/call_resolver.h"
#include "vm/runtime_services.h"

namespace zobase {

class Runtime;

std::unique_ptr<CallResolver> create_runtime_resolver(Runtime* runtime);
std::unique_ptr<RuntimeServices> create_runtime_services(Runtime* runtime);

}  // namespace zobase
