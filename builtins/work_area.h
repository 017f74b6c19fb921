#pragma once
// The work area a table command or function works on: the current one, or
// the one its IN clause (or alias argument) names.
#include "builtins/arguments.h"
#include "tables/data_session.h"
#include "tables/table_object.h"
#include "tables/table_sessions.h"

namespace zobase {

// A null value (or an empty object reference) stands for the current work
// area, anything else is an alias or a number. With `required`, a work area
// without a table is error 52; otherwise the result may be null.
inline Table_Object* work_area_table(VmStack* stack, const Variant& in, bool required) {
    DataSession_Object& session = current_session(stack);
    Table_Object* table = is_null_argument(in) ? session.current_table() : session.select_file(stack, &in);
    if (!table && required) throw RuntimeError(ERR_NO_TABLE_OPEN);
    return table;
}

// The table of argument i, or of the current work area when the call has
// fewer arguments.
inline Table_Object* work_area_argument(VmStack* stack, unsigned long long argc, unsigned long long i,
                                        bool required) {
    static const Variant none = [] {
        Variant v;
        v.set_null();
        return v;
    }();
    return work_area_table(stack, argc >= i ? argument(stack, i) : none, required);
}

// The current work area's table; error 52 without one.
inline Table_Object* current_table(VmStack* stack) {
    Table_Object* table = current_session(stack).current_table();
    if (!table) throw RuntimeError(ERR_NO_TABLE_OPEN);
    return table;
}

}  // namespace zobase
