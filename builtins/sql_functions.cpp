// SQL pass-through: sqlconnect, sqlstringconnect, sqldisconnect, sqlprepare,
// sqlexec, sqlmoreresults, sqlgetprop, sqlsetprop, asqlhandles. ODBC
// failures answer -1 with their diagnostics in aerror(); misuse raises.
#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "sql/sql_execute.h"
#include "values/symtable.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

int64_t handle_argument(VmStack* stack, unsigned long long i) { return argument(stack, i).integer; }

// An optional text argument: null when absent or null.
const String* optional_text(VmStack* stack, unsigned long long argc, unsigned long long i) {
    if (argc < i) return nullptr;
    const Variant& value = argument(stack, i);
    return value.tag == TAG_STRING ? &value.str() : nullptr;
}

void write_element(VmStack* stack, Array* array, uint64_t row, uint64_t column, const Variant& value) {
    Variant* element = column ? array->write(stack, row, column) : array->write(stack, row);
    element->release(stack);
    element->set_variant(&value);
}

// The info array: one row per result set, its cursor name and row count.
void fill_passes(VmStack* stack, unsigned long long i, const std::vector<sql_pass_st>& passes) {
    if (passes.empty()) return;
    Array* array = Param(stack, i)->dimension(stack, passes.size(), 2);
    for (uint64_t row = 1; row <= passes.size(); ++row) {
        Variant name, rows;
        name.set_string(passes[row - 1].cursor);
        rows.set_integer(static_cast<long long>(passes[row - 1].rows));
        write_element(stack, array, row, 1, name);
        write_element(stack, array, row, 2, rows);
        name.release(stack);
    }
}

bool shared_argument(VmStack* stack, unsigned long long argc) {
    return argc >= 2 && argument(stack, 2).tag == TAG_TRUE;
}

enum SqlProperty : int { PROPERTY_SHARED, PROPERTY_BATCHMODE, PROPERTY_ODBCHDBC, PROPERTY_ODBCHSTMT };

SqlProperty property_argument(VmStack* stack, unsigned long long i) {
    const String& name = string_argument(stack, i);
    Symtable& symbols = stack->services->symbols();
    unsigned symbol = symbols.symbolize(name);
    if (symbol == symbols.symbolize("SHARED")) return PROPERTY_SHARED;
    if (symbol == symbols.symbolize("BATCHMODE")) return PROPERTY_BATCHMODE;
    if (symbol == symbols.symbolize("ODBCHDBC")) return PROPERTY_ODBCHDBC;
    if (symbol == symbols.symbolize("ODBCHSTMT")) return PROPERTY_ODBCHSTMT;
    throw RuntimeError(ERR_NOT_AVAILABLE, name);
}

}  // namespace

void stackcall_sqlconnect(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    const Variant& source = argument(stack, 1);
    SqlSingleton& singleton = SqlSingleton::of(stack);
    if (source.tag == TAG_STRING)
        return result->set_integer(static_cast<long long>(singleton.connect(stack, source.str(), false, shared_argument(stack, argc))));
    if (!source.is_number()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    integer_type_st handle;
    source.cast(&handle);
    result->set_integer(static_cast<long long>(singleton.add_statement(stack, handle)));
}

void stackcall_sqlstringconnect(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    SqlSingleton& singleton = SqlSingleton::of(stack);
    result->set_integer(static_cast<long long>(singleton.connect(stack, string_argument(stack, 1), true, shared_argument(stack, argc))));
}

void stackcall_sqldisconnect(VmStack* stack, unsigned long long, Variant* result) {
    SqlSingleton::of(stack).disconnect(stack, handle_argument(stack, 1));
    result->set_integer(0);
}

void stackcall_sqlprepare(VmStack* stack, unsigned long long argc, Variant* result) {
    SqlStatementAccess statement = SqlSingleton::of(stack).get_handle_by_id(handle_argument(stack, 1));
    result->set_integer(static_cast<long long>(sql_prepare(stack, *statement.statement, string_argument(stack, 2))));
    const String* cursor = optional_text(stack, argc, 3);
    statement->cursor_base = cursor ? *cursor : String();
}

void stackcall_sqlexec(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    SqlStatementAccess statement = SqlSingleton::of(stack).get_handle_by_id(handle_argument(stack, 1));
    const String* cursor = optional_text(stack, argc, 3);
    const String* sql = optional_text(stack, argc, 2);
    // A prepared statement run without a name takes the one sqlprepare gave.
    String prepared_name = statement->cursor_base;
    if (!sql && !cursor && !prepared_name.is_empty()) cursor = &prepared_name;
    std::vector<sql_pass_st> passes;
    int64_t count = sql_execute(stack, *statement.statement, sql, cursor, &passes);
    if (argc >= 4) fill_passes(stack, 4, passes);
    result->set_integer(static_cast<long long>(count));
}

void stackcall_sqlmoreresults(VmStack* stack, unsigned long long argc, Variant* result) {
    SqlStatementAccess statement = SqlSingleton::of(stack).get_handle_by_id(handle_argument(stack, 1));
    result->set_integer(static_cast<long long>(sql_more_results(stack, *statement.statement, optional_text(stack, argc, 2), nullptr)));
}

void stackcall_sqlgetprop(VmStack* stack, unsigned long long, Variant* result) {
    SqlStatementAccess statement = SqlSingleton::of(stack).get_handle_by_id(handle_argument(stack, 1));
    switch (property_argument(stack, 2)) {
    case PROPERTY_SHARED: return result->set_bool(statement->connection->shared);
    case PROPERTY_BATCHMODE: return result->set_bool(statement->connection->batch_mode.load());
    case PROPERTY_ODBCHDBC:
        return result->set_integer(static_cast<long long>(reinterpret_cast<intptr_t>(statement->connection->dbc)));
    case PROPERTY_ODBCHSTMT:
        return result->set_integer(static_cast<long long>(reinterpret_cast<intptr_t>(statement->hstmt)));
    }
}

void stackcall_sqlsetprop(VmStack* stack, unsigned long long, Variant* result) {
    SqlStatementAccess statement = SqlSingleton::of(stack).get_handle_by_id(handle_argument(stack, 1));
    switch (property_argument(stack, 2)) {
    case PROPERTY_SHARED: throw RuntimeError(ERR_THIS_PROPERTY_READ_ONLY);
    case PROPERTY_BATCHMODE: {
        const Variant& value = argument(stack, 3);
        if (!value.is_logical()) throw RuntimeError(ERR_ARGUMENT_INVALID);
        statement->connection->batch_mode.store(value.tag == TAG_TRUE);
        return result->set_bool(true);
    }
    default: throw RuntimeError(ERR_NOT_AVAILABLE, string_argument(stack, 2));
    }
}

// With a handle: only the handles on that handle's connection.
void stackcall_asqlhandles(VmStack* stack, unsigned long long argc, Variant* result) {
    SqlSingleton& singleton = SqlSingleton::of(stack);
    std::vector<int64_t> numbers;
    if (argc >= 2) {
        SqlStatementAccess statement = singleton.get_handle_by_id(handle_argument(stack, 2));
        std::shared_lock guard(statement->connection->lock);
        for (auto& [id, other] : statement->connection->statements) numbers.push_back(id);
    } else {
        numbers = singleton.handle_numbers();
    }
    if (!numbers.empty()) {
        Array* array = Param(stack, 1)->dimension(stack, numbers.size(), 0);
        for (uint64_t row = 1; row <= numbers.size(); ++row) {
            Variant number;
            number.set_integer(static_cast<long long>(numbers[row - 1]));
            write_element(stack, array, row, 0, number);
        }
    }
    result->set_integer(static_cast<long long>(numbers.size()));
}

}  // namespace zobase
