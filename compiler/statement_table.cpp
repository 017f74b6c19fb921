// The families of statement routines. Each family registers its rows from
// its own file; adding a family is one line here.
#include "compiler/compiler.h"
#include "compiler/statements.h"

namespace zobase {

void register_statement_families(StatementTable& table) {
    register_expression_statements(table);
    register_control_flow_statements(table);
    register_try_statements(table);
    register_declaration_statements(table);
    register_text_merge_statements(table);
    register_native_command_statements(table);
}

}  // namespace zobase
