// The statements of the road of one command: `?`, `??`, assignment and a
// bare expression.
#include "compiler/compiler.h"
#include "compiler/expression.h"
#include "compiler/statements.h"
#include "values/error.h"

namespace zobase {

int compile_stmt_echo(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                      CodePath& path) {
    const auto* echo = static_cast<const Stmt_Echo*>((it++)->get());
    const char* name = echo->linefeed ? "echo_linefeed" : "echo";
    const library_command_def_st* command = path.compiler->find_command(String(name));
    if (!command) raise_not_available(name);
    compile_call_spec_void_core(echo->location, *command, echo->values.get(), code, path);
    return 0;
}

// A name not declared LOCAL on this path goes by name, even when it has a slot.
uint64_t assignment_slot(const unsigned& symbol, CodePath& path) {
    unsigned long long offset;
    if (path.compiler->compile_time_define_memvar(symbol, &offset) && path.known_locals.count(symbol)) return offset;
    return 0;
}

void compile_assign_to_variable(const unsigned& symbol, const document_location_st& location,
                                CompiledCodeCollection* code, CodePath& path) {
    if (uint64_t offset = assignment_slot(symbol, path))
        code->push_back(location, new VmOpWriteMemvarByOffset(offset));
    else
        code->push_back(location, new VmOpWriteMemarByName(symbol));
}

int compile_stmt_assign(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                        CodePath& path) {
    const auto* assign = static_cast<const Stmt_Assign*>((it++)->get());
    if (assign->target) {
        compile_assign(assign->target.get(), assign->value.get(), code, path);
        return 0;
    }
    compiler_type_info_st type{};
    __compiletime_compact_constexpr(assign->value.get(), code, path, &type);
    code->push_back(assign->location, new VmOpEspFree());
    return 0;
}

void register_expression_statements(StatementTable& table) {
    table.add(STMT_ECHO, compile_stmt_echo);
    table.add(STMT_ASSIGN, compile_stmt_assign);
}

}  // namespace zobase
