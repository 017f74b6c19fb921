// DECLARE, RELEASE LIBRARY, CLEAR DLLS, and the commands of extension
// libraries run by DO.
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "builtins/native_extensions.h"
#include "values/error.h"
#include "vm/runtime_services.h"
#include "vm/vm_instructions.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr unsigned long long DECLARE_FIXED_ARGUMENTS = 5;  // result type, name, count, library, alias

struct declare_type_name_st {
    const char* name;
    DeclareType type;
};

// LONG is 32 bits, as the dialect has it.
constexpr declare_type_name_st DECLARE_TYPES[] = {
    {"", DECLARE_VOID},           {"SHORT", DECLARE_SHORT},   {"INTEGER", DECLARE_INTEGER},
    {"LONG", DECLARE_INTEGER},    {"LONG LONG", DECLARE_LONG_LONG}, {"SINGLE", DECLARE_SINGLE},
    {"DOUBLE", DECLARE_DOUBLE},   {"STRING", DECLARE_STRING}, {"BINARY", DECLARE_BINARY},
};

DeclareType declare_type(const String& name) {
    std::string text = name.u8str();
    for (const declare_type_name_st& row : DECLARE_TYPES)
        if (text == row.name) return row.type;
    raise_not_available(("DECLARE of type " + text).c_str());
}

// A parameter as the compiler passes it: its type name, "@" added for by reference.
declare_parameter_st declare_parameter(const String& text) {
    String type = text;
    bool by_reference = text.size() > 0 && text.read()[text.size() - 1] == '@';
    if (by_reference) type = String::fromBytes(text.read(), text.size() - 1, text.get_charset());
    DeclareType parsed = declare_type(type);
    if (parsed == DECLARE_VOID) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return {parsed, by_reference};
}

}  // namespace

void void_stackcall_declare(VmStack* stack, unsigned long long argc) {
    DeclareType result = declare_type(string_argument(stack, 1));
    const String& name = string_argument(stack, 2);
    const String& library = string_argument(stack, 4);
    const Variant& alias = argument(stack, 5);
    std::vector<declare_parameter_st> parameters;
    for (unsigned long long i = DECLARE_FIXED_ARGUMENTS + 1; i <= argc; ++i)
        parameters.push_back(declare_parameter(string_argument(stack, i)));
    stack->services->native_extensions().declare(stack, result, name, library,
                                                 is_null_argument(alias) ? String() : static_cast<String>(alias),
                                                 parameters);
}

void void_stackcall_release_library(VmStack* stack, unsigned long long) {
    stack->services->native_extensions().release_library(stack, string_argument(stack, 1));
}

// Arguments: the names to drop; none drops every declared function.
void void_stackcall_clear_dlls(VmStack* stack, unsigned long long argc) {
    NativeExtensions& extensions = stack->services->native_extensions();
    if (argc == 0) extensions.clear_declared();
    for (unsigned long long i = 1; i <= argc; ++i) extensions.clear_declared(string_argument(stack, i));
}

bool run_extension_command(VmStack* stack, const String& name, unsigned long long argc) {
    const library_command_def_st* command = stack->services->native_extensions().find_command(name);
    if (!command) return false;
    library_function_st form{nullptr, late_bound_parameters(command->parameters), command->parameters.required};
    convert_library_arguments(stack, form, argc);
    call_native_void(stack, command->handler, argc);
    return true;
}

}  // namespace zobase
