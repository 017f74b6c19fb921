#pragma once
// How the VM reaches what the runtime owns: symbol texts, opened libraries,
// SET PROCEDURE modules and loaded programs. The runtime installs one on each
// stack; the VM never includes the runtime itself.
#include <cstdint>
#include <memory>
#include <vector>

#include "base/document_location.h"
#include "values/string.h"
#include "vm/program.h"
#include "vm/table_context.h"
#include "vm/vm_op.h"

namespace zobase {

class Class;
class Program;
class UserFunction;
class VmStack;

// A declared parameter of a library function: the tag the argument is
// converted to, whether it is an array of such values, and whether null passes.
// The type of a parameter that takes any value as it is.
constexpr uint8_t LIBRARY_PARAMETER_ANY = 0xFF;

struct library_parameter_st {
    uint8_t type;
    bool array;
    bool null_allowed;
};

struct library_function_st {
    native_function handler;
    std::vector<library_parameter_st> parameters;
    // Fewer arguments than this raise 11; the parameters beyond it are optional.
    size_t required = SIZE_MAX;
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
    virtual uint32_t symbolize(const String& name) const = 0;
    // A function of the module that `program` belongs to; null when none.
    virtual const UserFunction* find_in_module_of(const Program* program, uint32_t symbol) const = 0;
    // Whether a source file of that name is there to load: as written, along
    // SET PATH, or with ".prg" added.
    virtual bool has_program_file(const String& file) const = 0;
    // Loads a source file through the module cache: the named function of it,
    // or what running the file runs when `symbol` is 0. Raises error 1 for a missing file.
    virtual const UserFunction* load_from_file(VmStack* stack, const String& file,
                                               uint32_t symbol) const = 0;
    // The statements of a macro's text, compiled in the module of the stack's
    // running frame; `written_at`, when given, is the location every
    // instruction reports. Compile errors are raised as the first, carrying
    // the report of them all (RuntimeError::compile_report).
    virtual std::unique_ptr<Program> compile_macro(VmStack* stack, const String& text,
                                                   const document_location_st* written_at) const = 0;
    // A script's text as a whole program of its own, FUNCTIONs included:
    // running the result runs its main code with the arguments as its
    // PARAMETERS. It owns all that was compiled. Compile errors are shown,
    // then raised as the first.
    virtual std::unique_ptr<UserFunction> compile_script(VmStack* stack, const String& text) const = 0;
    // One expression, as a program ending in VmOpReturnValue. With a table,
    // its field names resolve first, by position.
    virtual std::unique_ptr<Program> compile_expression(VmStack* stack, const String& text,
                                                        const compiler_table_context_st* table) const = 0;
    std::unique_ptr<Program> compile_expression(VmStack* stack, const String& text) const {
        return compile_expression(stack, text, nullptr);
    }
    // A class by name: with a file, the classes of that source file (loaded
    // through the module cache); without, the module of the running frame
    // and its imports, the built-in classes, the SET PROCEDURE modules and
    // the loaded programs, in this order. Null when there is none.
    virtual Class* find_class(VmStack* stack, uint32_t symbol, const String* file) const = 0;
    // A class of the built-in library; null when there is none.
    virtual Class* find_builtin_class(uint32_t symbol) const = 0;
};

}  // namespace zobase
