#pragma once
// The core library: the built-in functions, commands, compile hooks and
// system variables as static rows (function_table.cpp, command_table.cpp,
// compile_hooks.cpp, system_variables.cpp). The shape of the rows and the
// Library the runtime loads them into are in compiler/library.h.
#include <algorithm>
#include <cstddef>

#include "compiler/library.h"
#include "values/error.h"

namespace zobase {

// The core library's static description and its tables.
const module_description_st* core_module_description();
extern const library_function_row_st core_function_rows[];
extern const library_command_row_st core_command_rows[];
extern const library_compile_hook_row_st core_compile_hook_rows[];
extern const library_variable_row_st core_system_variable_rows[];
extern const library_class_row_st core_class_rows[];
size_t row_count(const library_function_row_st* rows);
size_t row_count(const library_command_row_st* rows);
size_t row_count(const library_variable_row_st* rows);

// A function name as a template argument, so that one definition gives each
// not yet built row a handler that names it in error 1001.
template <size_t N>
struct handler_name_st {
    char text[N];
    constexpr handler_name_st(const char (&name)[N]) { std::copy_n(name, N, text); }
};

template <handler_name_st Name>
void function_not_available(VmStack*, unsigned long long, Variant*) {
    raise_not_available(Name.text);
}

template <handler_name_st Name>
void command_not_available(VmStack*, unsigned long long) {
    raise_not_available(Name.text);
}

}  // namespace zobase
