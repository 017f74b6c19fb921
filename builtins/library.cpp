// The core library's description and the row counts of its tables.
#include "builtins/library.h"

namespace zobase {

namespace {

template <class Row>
size_t count_rows(const Row* rows) {
    size_t n = 0;
    while (rows[n].name) ++n;
    return n;
}

}  // namespace

size_t row_count(const library_function_row_st* rows) { return count_rows(rows); }
size_t row_count(const library_command_row_st* rows) { return count_rows(rows); }
size_t row_count(const library_variable_row_st* rows) { return count_rows(rows); }

const module_description_st* core_module_description() {
    // attach_runtime and deattach_runtime belong to the SQL layer, not built yet.
    static const module_description_st core = {
        nullptr,
        nullptr,
        core_function_rows,
        core_command_rows,
        core_class_rows,
        core_compile_hook_rows,
        core_system_variable_rows,
    };
    return &core;
}

}  // namespace zobase
