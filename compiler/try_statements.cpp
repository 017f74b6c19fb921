// TRY / CATCH / FINALLY / ENDTRY. The region and the catch targets are
// labels until create_program turns them into positions; each WHEN filter is
// a program of its own, run by the error machinery with the caught value.
#include <memory>

#include "base/call_trace.h"
#include "compiler/build_input.h"
#include "compiler/expression.h"
#include "compiler/statements.h"
#include "vm/try_scope.h"

namespace zobase {

namespace {

bool at_type(const statement_iterator& end, const statement_iterator& it, StatementTypes type) {
    return it != end && (*it)->type == type;
}

bool accepts_everything(const Operand* filter) {
    return filter->kind == OPERAND_CONST && static_cast<const Const_Value*>(filter)->value.tag == TAG_TRUE;
}

// The filter's one local is the TO variable, so it can test the caught value.
Program* compile_catch_filter(const Stmt_Catch* clause, unsigned symbol, CodePath& path) {
    ZO_TRACE();
    if (accepts_everything(clause->when.get())) return nullptr;
    Compiler* owner = path.compiler;
    Compiler filter(owner->stack);
    filter.libraries = owner->libraries;
    filter.module = owner->module;
    filter.reset(COMPILER_FLAGS_FUNCTION, true);
    CodePath filter_path(&filter);
    unsigned long long offset;
    if (symbol && filter.compile_time_define_memvar(symbol, &offset)) filter_path.known_locals.insert(symbol);
    ++filter.statement_number;
    compile_value(clause->when.get(), &filter.code, filter_path);
    filter.code.push_back(new VmOpReturnValue());
    // Ignore in the error dialog goes on with the next statement: a filter
    // whose expression failed refuses the exception.
    ++filter.statement_number;
    filter.code.push_back(clause->location, new VmOpReadConstFalse());
    filter.code.push_back(clause->location, new VmOpReturnValue());
    owner->errors.insert(owner->errors.end(), filter.errors.begin(), filter.errors.end());
    uint64_t parameters = filter.locals.size();
    // Linked with the program holding the TRY, so that it belongs to its module.
    return filter.create_program(String("<catch filter>"), &filter.code, filter.locals, parameters,
                                 clause->location, &filter.unresolved);
}

void compile_catch(const statement_iterator& end, statement_iterator& it, VmOpTryEnter* enter,
                   AddressLabelRecord* endtry, CompiledCodeCollection* code, CodePath& path) {
    const auto* clause = static_cast<const Stmt_Catch*>((it++)->get());
    AddressLabelRecord* target = path.compiler->create_addresslabel(String("catch to"));
    unsigned symbol = clause->variable ? path.symbolize(clause->variable->name) : 0;
    enter->add_catch(label_placeholder(target), symbol, compile_catch_filter(clause, symbol, path));
    CodePath body(path);
    code->push_back(target);
    code->push_back(clause->location, new VmOpResetEsp());
    compile_statement_list(end, it, code, body);
    code->push_back(jump_to<VmOpJump>(endtry));
}

// FINALLY is plain code after the last handler: it runs on the normal way
// out and after a handled exception, not after one that nothing caught.
int compile_stmt_try(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                     CodePath& path) {
    ZO_TRACE();
    const Statement* statement = (it++)->get();
    Compiler* compiler = path.compiler;
    AddressLabelRecord* begin = compiler->create_addresslabel(String("try_code_begin"));
    AddressLabelRecord* code_end = compiler->create_addresslabel(String("try_code_end"));
    AddressLabelRecord* endtry = compiler->create_addresslabel(String("endtry"));
    code->push_back(begin);
    auto* enter = new VmOpTryEnter(label_placeholder(begin), label_placeholder(code_end));
    code->push_back(statement->location, enter);
    {
        CodePath body(path);
        compile_statement_list(end, it, code, body);
    }
    code->push_back(code_end);
    code->push_back(jump_to<VmOpJump>(endtry));
    while (at_type(end, it, STMT_CATCH)) compile_catch(end, it, enter, endtry, code, path);
    code->push_back(endtry);
    if (at_type(end, it, STMT_FINALLY)) {
        ++it;
        compile_statement_list(end, it, code, path);
    }
    if (at_type(end, it, STMT_ENDTRY)) ++it;
    return 0;
}

}  // namespace

void register_try_statements(StatementTable& table) { table.add(STMT_TRY, compile_stmt_try); }

}  // namespace zobase
