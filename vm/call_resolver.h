#pragma once
// How the VM reaches what the runtime owns: symbol texts, opened libraries,
// SET PROCEDURE modules and loaded programs. The runtime installs one on each
// stack; the VM never includes the runtime itself.
#include <cstdint>
#include <vector>

#include "values/string.h"
#include "vm/vm_op.h"

namespace zobase {

class UserFunction;

// A declared parameter of a library function: the tag the argument is
// converted to, whether it is an array of such values, and whether null passes.
struct library_parameter_st {
    uint8_t type;
    bool array;
    bool null_allowed;
};

struct library_function_st {
    native_function handler;
    std::vector<library_parameter_st> parameters;
};

class CallResolver {
public:
    virtual ~CallResolver() = default;
    virtual String symbol_text(uint32_t symbol) const = 0;
    // The opened libraries in list order, the name compared without case.
    virtual const library_function_st* find_library_function(const String& name) const = 0;
    // The SET PROCEDURE modules in the order of their canonical paths.
    virtual const UserFunction* find_procedure(uint32_t symbol) const = 0;
    // The runtime's table of loaded programs.
    virtual const UserFunction* find_loaded_program(uint32_t symbol) const = 0;
};

}  // namespace zobase
