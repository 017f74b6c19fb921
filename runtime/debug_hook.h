#pragma once
// Where a debugger joins a run. The default hook does nothing and knows no
// breakpoints; a debugger overrides begin and end.
#include <cstdint>
#include <map>

namespace zobase {

class Program;
class VmStack;

class DebugHook {
public:
    virtual ~DebugHook() = default;
    virtual void begin(VmStack* stack) {}
    virtual void end(VmStack* stack) {}

    std::multimap<const Program*, uint64_t> breakpoints;  // program to statement number
};

}  // namespace zobase
