// Native commands: one call of a built-in handler whose arguments come from
// the statement's clauses, matched against the command's option list.
#include <strings.h>

#include <string>

#include "base/call_trace.h"
#include "compiler/expression.h"
#include "compiler/statements.h"
#include "values/error.h"

namespace zobase {

namespace {

Const_Value* new_true() {
    auto* constant = new Const_Value();
    constant->value.set_bool(true);
    return constant;
}

// Option keys are upper case in the tree, lower case in the option table.
const Option* find_option(const option_ptr_list& options, const String& name) {
    std::string wanted = name.u8str();
    for (const auto& option : options.items)
        if (strcasecmp(option->key, wanted.c_str()) == 0) return option.get();
    return nullptr;
}

long long flag_group_value(const option_item_st& item, const option_ptr_list& options) {
    long long bits = 0;
    for (const auto& [flag, position] : item.flags)
        if (find_option(options, flag)) bits |= 1LL << position;
    return bits;
}

void add_named_option(const option_item_st& item, const option_ptr_list& options, BorrowedOperands& arguments) {
    const Option* option = find_option(options, item.name);
    if (!option) arguments.own(new_null_constant());
    else if (option->value) arguments.add(option->value.get());
    else if (option->list) arguments.own(new_null_constant());
    else arguments.own(new_true());
}

void add_list_option(const option_item_st& item, const option_ptr_list& options, BorrowedOperands& arguments) {
    const Option* option = find_option(options, item.name);
    if (!option) return;
    if (option->list) {
        for (const operand_ptr& value : option->list->items) arguments.add(value.get());
    } else if (option->value) {
        arguments.add(option->value.get());
    }
}

void compile_native_command_call(const document_location_st& location, const basic_command_st& row,
                                 const option_ptr_list& options, CompiledCodeCollection* code, CodePath& path) {
    BorrowedOperands arguments;
    for (const option_item_st& item : row.items) {
        switch (item.kind) {
        case OPTION_FLAGS: arguments.own(new_integer_constant(flag_group_value(item, options))); break;
        case OPTION_LIST: add_list_option(item, options, arguments); break;
        default: add_named_option(item, options, arguments); break;
        }
    }
    std::string name = row.name.u8str();
    compile_call_spec_void_core(location, require_command(path, name.c_str()), arguments.get(), code, path);
}

int compile_stmt_basic_command(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                               CodePath& path) {
    compile_basic_command(static_cast<const BasicCommand*>((it++)->get()), code, path);
    return 0;
}

// ---- table definitions ----

void borrowed_or_null(const operand_ptr& operand, BorrowedOperands& arguments) {
    if (operand) arguments.add(operand.get());
    else arguments.own(new_null_constant());
}

// Each column: name, type letter, width, decimals, NEXTVALUE, STEP, flags.
void add_column_arguments(const column_st& column, BorrowedOperands& arguments) {
    arguments.add(column.name.get());
    char letter[2] = {column.type_letter, 0};
    arguments.own(new Const_String(String(letter)));
    borrowed_or_null(column.width, arguments);
    borrowed_or_null(column.decimals, arguments);
    borrowed_or_null(column.nextvalue, arguments);
    borrowed_or_null(column.step, arguments);
    arguments.own(new_integer_constant(column.flags));
}

int compile_stmt_create_table(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                              CodePath& path) {
    const auto* statement = static_cast<const Stmt_Table*>((it++)->get());
    BorrowedOperands arguments;
    arguments.own(new_integer_constant(statement->cursor ? 1 : 0));
    arguments.add(statement->table.get());
    borrowed_or_null(statement->codepage, arguments);
    borrowed_or_null(statement->engine, arguments);
    arguments.own(new_integer_constant(static_cast<long long>(statement->columns.size())));
    for (const auto& column : statement->columns) add_column_arguments(*column, arguments);
    compile_call_spec_void_core(statement->location, require_command(path, "create_table"), arguments.get(), code,
                                path);
    return 0;
}

int compile_stmt_add_column(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                            CodePath& path) {
    const auto* statement = static_cast<const Stmt_Table*>((it++)->get());
    BorrowedOperands arguments;
    arguments.add(statement->table.get());
    arguments.own(new_integer_constant(static_cast<long long>(statement->columns.size())));
    for (const auto& column : statement->columns) add_column_arguments(*column, arguments);
    compile_call_spec_void_core(statement->location, require_command(path, "add_columns"), arguments.get(), code,
                                path);
    return 0;
}

int compile_stmt_drop_column(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                             CodePath& path) {
    const auto* statement = static_cast<const Stmt_Table*>((it++)->get());
    BorrowedOperands arguments;
    arguments.add(statement->table.get());
    arguments.add(statement->drop_column.get());
    compile_call_spec_void_core(statement->location, require_command(path, "drop_columns"), arguments.get(), code,
                                path);
    return 0;
}

}  // namespace

void compile_basic_command(const BasicCommand* command, CompiledCodeCollection* code, CodePath& path) {
    const command_options_row_st* row = find_command_options(command->type);
    if (!row) throw assert_failed_exception("native command without an option list");
    compile_native_command_call(command->location, parse_basic_command(*row), command->options, code, path);
}

// Every command with an option list, unless a family compiles it itself;
// so this family registers last.
void register_native_command_statements(StatementTable& table) {
    for (const command_options_row_st* row = core_command_options; row->name; ++row)
        if (!table.find(row->id)) table.add(static_cast<StatementTypes>(row->id), compile_stmt_basic_command);
    table.add(STMT_CREATE_TABLE, compile_stmt_create_table);
    table.add(STMT_ADD_COLUMN, compile_stmt_add_column);
    table.add(STMT_DROP_COLUMN, compile_stmt_drop_column);
}

}  // namespace zobase
