// SET EXACT, SET SPACE, SET ASSERTS and the other one-word settings: one
// command whose first argument names the setting by a single bit.
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "builtins/native_extensions.h"
#include "values/error.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

enum SetFlag : long long {
    SET_STEP = 1,
    SET_EXACT = 2,
    SET_EXCLUSIVE = 4,
    SET_DELETED = 8,
    SET_SPACE = 16,
    SET_DECIMALS = 32,
    SET_BLOCKSIZE = 64,
    SET_ASSERTS = 128,
    SET_NEAR = 256,
};

bool logical_value(VmStack* stack) {
    const Variant& value = argument(stack, 2);
    if (value.tag != TAG_TRUE && value.tag != TAG_FALSE) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return value.tag == TAG_TRUE;
}

// SET BLOCKSIZE TO 0 to 32768: 0 is kept as 1, 1 to 32 count units of 512
// bytes, larger values are bytes. Anything else is error 10.
uint64_t blocksize_value(VmStack* stack) {
    constexpr integer_type_st BLOCK_UNITS = 32;
    constexpr integer_type_st MAX_BLOCKSIZE = 32768;
    const Variant& value = argument(stack, 2);
    if (value.tag != TAG_INTEGER && value.tag != TAG_NUMERIC) throw RuntimeError(ERR_SYNTAX);
    integer_type_st size = value.tag == TAG_INTEGER ? value.integer : static_cast<integer_type_st>(value.numeric.value);
    if (size < 0 || size > MAX_BLOCKSIZE) throw RuntimeError(ERR_SYNTAX);
    if (size == 0) return 1;
    return static_cast<uint64_t>(size <= BLOCK_UNITS ? size * 512 : size);
}

}  // namespace

void void_stackcall_set(VmStack* stack, unsigned long long argc) {
    switch (static_cast<integer_type_st>(argument(stack, 1))) {
    case SET_STEP: throw RuntimeError(ERR_DEBUGGER_NOT_AVAILABLE);  // no debugger is ever connected
    case SET_EXACT: stack->sessions->settings().exact = logical_value(stack); return;
    case SET_SPACE: stack->space = logical_value(stack); return;
    case SET_ASSERTS: stack->services->set_asserts(logical_value(stack)); return;
    case SET_DECIMALS: set_decimals(stack, argument(stack, 2)); return;
    // Settings of the data session that the table commands read.
    case SET_EXCLUSIVE: stack->sessions->settings().exclusive = logical_value(stack); return;
    case SET_DELETED: stack->sessions->settings().deleted = logical_value(stack); return;
    case SET_BLOCKSIZE: stack->sessions->settings().blocksize = blocksize_value(stack); return;
    case SET_NEAR: stack->sessions->settings().near = logical_value(stack); return;
    default: throw RuntimeError(ERR_NOT_AVAILABLE);
    }
}

namespace {

constexpr long long SET_LIST_ADDITIVE = 1;

// SET PATH and SET PROCEDURE: flags, then names. Without ADDITIVE, or with
// no names, the list is emptied first; each name is then added in turn.
template <typename Clear, typename Add>
void set_list(VmStack* stack, unsigned long long argc, Clear clear, Add add) {
    bool additive = (static_cast<integer_type_st>(argument(stack, 1)) & SET_LIST_ADDITIVE) != 0;
    if (!additive || argc < 2) clear();
    for (unsigned long long i = 2; i <= argc; ++i) add(string_argument(stack, i));
}

}  // namespace

void void_stackcall_set_path_to(VmStack* stack, unsigned long long argc) {
    RuntimeServices* services = stack->services;
    set_list(stack, argc, [services] { services->clear_search_path(); },
             [services](const String& paths) { services->add_search_path(paths); });
}

void void_stackcall_set_procedure_to(VmStack* stack, unsigned long long argc) {
    RuntimeServices* services = stack->services;
    set_list(stack, argc, [services] { services->clear_procedures(); },
             [services, stack](const String& file) { services->add_procedure(stack, file); });
}

void void_stackcall_set_library_to(VmStack* stack, unsigned long long argc) {
    NativeExtensions& extensions = stack->services->native_extensions();
    set_list(stack, argc, [&extensions] { extensions.clear_libraries(); },
             [&extensions, stack](const String& file) { extensions.add_library(stack, file); });
}

}  // namespace zobase
