// Control flow. The parser hands over a flat list, so each opener compiles
// its body by running the statement loop on the same list; a closing keyword
// with no row of its own ends that inner loop and is read by its opener.
#include <memory>

#include "base/call_trace.h"
#include "compiler/expression.h"
#include "compiler/statements.h"
#include "values/error.h"

namespace zobase {

namespace {

typedef std::unique_ptr<Operand_Variable> temp_ptr;

AddressLabelRecord* new_label(CodePath& path, const char* name) {
    return path.compiler->create_addresslabel(String(name));
}

bool at_type(const statement_iterator& end, const statement_iterator& it, StatementTypes type) {
    return it != end && (*it)->type == type;
}

CodePath* find_loop(CodePath& path, bool (*wanted)(int kind)) {
    for (CodePath* at = &path; at; at = at->parent)
        if (wanted(at->loop_kind)) return at;
    return nullptr;
}

bool any_loop(int kind) { return kind != LOOP_NONE; }
bool dowhile_loop(int kind) { return kind == LOOP_DO_WHILE; }
bool for_loop(int kind) { return kind == LOOP_FOR || kind == LOOP_FOR_EACH; }
bool scan_loop(int kind) { return kind == LOOP_SCAN; }

AddressLabelRecord* loop_end(const CodePath& loop) {
    switch (loop.loop_kind) {
    case LOOP_DO_WHILE: return loop.dowhile.end;
    case LOOP_FOR: return loop.for_loop.end;
    case LOOP_FOR_EACH: return loop.for_each.end;
    default: return loop.scan.end;
    }
}

// ---- the macro form of a condition ----

// The condition's text is known only at run time: the init function
// compiles "IF <text>" once into an object kept in the temporary.
temp_ptr compile_macro_condition_init(const document_location_st& location, const char* keyword,
                                      const char* init_name, const char* prefix, const std::vector<MacroItem>& macro,
                                      CompiledCodeCollection* code, CodePath& path) {
    const library_func_def_st& concat = require_function(path, "concat");
    const library_func_def_st& init = require_function(path, init_name);
    temp_ptr temp(path.compile_create_temp_memvar(location, prefix, code));
    code->push_back(location, new VmOpEspAlloc());
    code->push_back(location, new VmOpEspAlloc());
    code->push_back(location, new VmOpReadConstString(String(keyword)));
    compile_eval_macro(location, macro.data(), macro.size(), code, path);
    code->push_back(location, new VmOpCallNative(concat.handler, macro.size() + 1));
    compile_operand_variable_ref(temp.get(), false, code, path);
    code->push_back(location, new VmOpCallNative(init.handler, 2));
    code->push_back(location, new VmOpEspFree());
    return temp;
}

void compile_macro_condition(const Operand_Variable* temp, CompiledCodeCollection* code, CodePath& path) {
    code->push_back(temp->location, new VmOpEspAlloc());
    compile_read_temp(temp, code, path);
    code->push_back(temp->location, new VmOpObjectCall(path.symbolize("evaluate"), 0));
}

// ---- IF ----

int compile_branch(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                   CodePath& path) {
    CodePath branch(path);
    branch.in_if = true;
    return compile_statement_list(end, it, code, branch);
}

int compile_stmt_if(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                    CodePath& path) {
    ZO_TRACE();
    const auto* statement = static_cast<const Stmt_Condition*>((it++)->get());
    AddressLabelRecord* pending = new_label(path, "skip_if_target");
    if (statement->condition) {
        compile_value(statement->condition.get(), code, path);
    } else {
        temp_ptr temp = compile_macro_condition_init(statement->location, "IF", "__init_if_from_macro", "if",
                                                     statement->macro, code, path);
        compile_macro_condition(temp.get(), code, path);
    }
    code->push_back(statement->location, jump_to<VmOpCondFalseOrNullJump>(pending));
    compile_branch(end, it, code, path);
    if (at_type(end, it, STMT_ELSE)) {
        ++it;
        AddressLabelRecord* skip_else = new_label(path, "skip_else_target");
        code->push_back(jump_to<VmOpJump>(skip_else));
        code->push_back(pending);
        pending = skip_else;
        compile_branch(end, it, code, path);
    }
    code->push_back(pending);
    if (at_type(end, it, STMT_ENDIF)) ++it;
    else path.compiler->record_error(ERR_IF_ELSE_ENDIF_MISSING, statement->location);
    return 0;
}

// Inside an IF branch these end the branch and go back to the IF; anywhere
// else they are stray, and compilation goes on after them.
int compile_stmt_else_or_endif(const statement_iterator&, statement_iterator& it, CompiledCodeCollection*,
                               CodePath& path) {
    if (path.in_if) return -1;
    path.compiler->record_error(ERR_IF_ELSE_ENDIF_MISSING, (*it)->location);
    ++it;
    return 0;
}

// ---- DO CASE ----

int compile_stmt_docase(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                        CodePath& path) {
    ZO_TRACE();
    const Statement* statement = (it++)->get();
    AddressLabelRecord* endcase = new_label(path, "label endcase");
    AddressLabelRecord* next_case = nullptr;
    while (at_type(end, it, STMT_CASE)) {
        const auto* branch = static_cast<const Stmt_Condition*>((it++)->get());
        if (next_case) code->push_back(next_case);
        compile_value(branch->condition.get(), code, path);
        next_case = new_label(path, "label next case");
        code->push_back(branch->location, jump_to<VmOpCondFalseOrNullJump>(next_case));
        CodePath body(path);
        compile_statement_list(end, it, code, body);
        code->push_back(jump_to<VmOpJump>(endcase));
    }
    if (next_case) code->push_back(next_case);
    if (at_type(end, it, STMT_OTHERWISE)) {
        ++it;
        CodePath body(path);
        compile_statement_list(end, it, code, body);
    }
    code->push_back(endcase);
    if (at_type(end, it, STMT_ENDCASE)) ++it;
    else path.compiler->record_error(ERR_SYNTAX, statement->location);
    return 0;
}

// ---- DO WHILE ----

int compile_stmt_dowhile(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                         CodePath& path) {
    ZO_TRACE();
    const auto* statement = static_cast<const Stmt_Condition*>((it++)->get());
    temp_ptr temp;
    if (!statement->condition)
        temp = compile_macro_condition_init(statement->location, "DO WHILE", "__init_do_while_from_macro", "dowhile",
                                            statement->macro, code, path);
    CodePath loop(path);
    loop.loop_kind = LOOP_DO_WHILE;
    loop.dowhile.condition = new_label(path, "do while condition");
    loop.dowhile.body = new_label(path, "do while body");
    loop.dowhile.end = new_label(path, "enddo");
    code->push_back(loop.dowhile.condition);
    if (temp) compile_macro_condition(temp.get(), code, loop);
    else compile_value(statement->condition.get(), code, loop);
    code->push_back(statement->location, jump_to<VmOpCondFalseOrNullJump>(loop.dowhile.end));
    code->push_back(loop.dowhile.body);
    compile_statement_list(end, it, code, loop);
    if (loop.loop_kind != LOOP_NONE) {
        code->push_back(loop.dowhile.end);
        path.compiler->record_error(ERR_NESTING, statement->location);
    }
    return 0;
}

// A wrongly nested ENDDO still jumps back, but ends only its own loop's block.
int compile_stmt_enddo(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                       CodePath& path) {
    const Statement* statement = (it++)->get();
    CodePath* loop = find_loop(path, dowhile_loop);
    if (!loop) {
        path.compiler->record_error(ERR_NESTING, statement->location);
        return 0;
    }
    code->push_back(jump_to<VmOpJump>(loop->dowhile.condition));
    if (loop != &path) return 0;
    path.loop_kind = LOOP_NONE;
    code->push_back(path.dowhile.end);
    return -1;
}

// ---- FOR ----

unsigned loop_variable_symbol(const CodePath& loop) {
    return loop.symbolize(static_cast<const Stmt_For*>(loop.for_loop.statement)->variable->name);
}

// A frame slot the compiler is sure of, else 0.
unsigned long long certain_slot(CodePath& path, unsigned symbol) {
    unsigned long long offset;
    bool certain = false;
    return path.variable_get(symbol, &offset, &certain) && certain ? offset : 0;
}

// The end of one round: the step added in place and the test in one
// instruction when limit and step have frame slots, else the step and a
// jump back to the test at the head.
void compile_for_step(const document_location_st& location, CompiledCodeCollection* code, CodePath& path,
                      CodePath& loop) {
    unsigned symbol = loop_variable_symbol(loop);
    unsigned long long variable = certain_slot(path, symbol);
    unsigned long long limit = certain_slot(path, loop.for_loop.to_symbol);
    unsigned long long step = certain_slot(path, loop.for_loop.step_symbol);
    if (limit && step) {
        auto* next = jump_to<VmOpForNextJump>(loop.for_loop.body);
        next->variable = variable;
        next->symbol = symbol;
        next->limit = limit;
        next->step = step;
        code->push_back(location, next);
        return;
    }
    compiler_type_info_st type{};
    compile_read_variable(location, loop.for_loop.step_symbol, true, false, code, path, &type);
    if (variable)
        code->push_back(location, new VmOpReadAddWriteLocal(variable));
    else
        code->push_back(location, new VmOpReadAddWrite(symbol));
    code->push_back(jump_to<VmOpJump>(loop.for_loop.condition));
}

int compile_for_loop(const document_location_st& location, CompiledCodeCollection* code, CodePath& path,
                     CodePath& loop, bool closing) {
    compile_for_step(location, code, path, loop);
    if (!closing || &loop != &path) return 0;
    path.loop_kind = LOOP_NONE;
    code->push_back(path.for_loop.end);
    return -1;
}

// Limit and step go to temporaries first, so each is evaluated once.
unsigned compile_for_temp(const Stmt_For* statement, const char* prefix, const Operand* value,
                          CompiledCodeCollection* code, CodePath& loop) {
    temp_ptr temp(loop.compile_create_temp_memvar(statement->location, prefix, code));
    compile_assign(temp.get(), value, code, loop);
    return loop.symbolize(temp->name);
}

int compile_stmt_for(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                     CodePath& path) {
    ZO_TRACE();
    const auto* statement = static_cast<const Stmt_For*>((it++)->get());
    CodePath loop(path);
    loop.loop_kind = LOOP_FOR;
    loop.for_loop.condition = new_label(path, "for condition");
    loop.for_loop.end = new_label(path, "endfor");
    loop.for_loop.body = new_label(path, "for body");
    loop.for_loop.statement = statement;
    compile_assign(statement->variable.get(), statement->from.get(), code, loop);
    loop.for_loop.to_symbol = compile_for_temp(statement, "forto", statement->to.get(), code, loop);
    loop.for_loop.step_symbol = compile_for_temp(statement, "forstep", statement->step.get(), code, loop);
    code->push_back(loop.for_loop.condition);
    compiler_type_info_st type{};
    compile_read_variable(statement->location, loop.for_loop.step_symbol, true, false, code, loop, &type);
    compile_read_variable(statement->location, loop.for_loop.to_symbol, true, false, code, loop, &type);
    compile_value(statement->variable.get(), code, loop);
    code->push_back(statement->location, jump_to<VmOpForCondFalseJump>(loop.for_loop.end));
    code->push_back(loop.for_loop.body);
    compile_statement_list(end, it, code, loop);
    if (loop.loop_kind != LOOP_NONE) {
        code->push_back(loop.for_loop.end);
        path.compiler->record_error(ERR_NESTING, statement->location);
    }
    return 0;
}

// ---- FOR EACH ----

int compile_for_each_loop(CompiledCodeCollection* code, CodePath& path, CodePath& loop, bool closing) {
    code->push_back(jump_to<VmOpJump>(loop.for_each.next));
    if (!closing || &loop != &path) return 0;
    path.loop_kind = LOOP_NONE;
    code->push_back(path.for_each.end);
    return -1;
}

// Reads a member of the enumerator into a loop variable.
void compile_enumerator_item(const Operand* target, unsigned member, unsigned enumerator,
                             CompiledCodeCollection* code, CodePath& loop) {
    const auto* variable = static_cast<const Operand_Variable*>(target);
    code->push_back(target->location, new VmOpEspAlloc());
    code->push_back(target->location, new VmOpReadMemvarByName(enumerator));
    code->push_back(target->location, new VmOpObjectRead(member, 0));
    code->push_back(target->location, new VmOpWriteMemarByName(loop.symbolize(variable->name)));
}

constexpr unsigned SYMBOL_KEY = 98;
constexpr unsigned SYMBOL_VALUE = 99;

int compile_stmt_for_each(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                          CodePath& path) {
    ZO_TRACE();
    const auto* statement = static_cast<const BasicCommand*>((it++)->get());
    const document_location_st& location = statement->location;
    CodePath loop(path);
    loop.loop_kind = LOOP_FOR_EACH;
    loop.for_each.next = new_label(path, "for each next");
    loop.for_each.body = new_label(path, "for each body");
    loop.for_each.end = new_label(path, "endfor");
    temp_ptr temp(loop.compile_create_temp_memvar(location, "for_each", code));
    unsigned enumerator = loop.symbolize(temp->name);
    const char* factory = statement->options.has("KESOBJECT") ? "get_kesobject_enumerator" : "get_enumerator";
    BorrowedOperands arguments;
    arguments.add(statement->options.find("IN")->value.get());
    compiler_type_info_st type{};
    compile_call_spec_do(location, require_function(loop, factory), arguments.get(), code, loop, &type);
    code->push_back(location, new VmOpWriteMemarByName(enumerator));
    code->push_back(loop.for_each.next);
    code->push_back(location, new VmOpEspAlloc());
    code->push_back(location, new VmOpReadMemvarByName(enumerator));
    code->push_back(location, new VmOpObjectCall(loop.symbolize("movenext"), 0));
    code->push_back(location, jump_to<VmOpCondFalseOrNullJump>(loop.for_each.end));
    if (const Option* key = statement->options.find("KEY"))
        compile_enumerator_item(key->value.get(), SYMBOL_KEY, enumerator, code, loop);
    if (const Option* value = statement->options.find("VALUE"))
        compile_enumerator_item(value->value.get(), SYMBOL_VALUE, enumerator, code, loop);
    code->push_back(loop.for_each.body);
    compile_statement_list(end, it, code, loop);
    if (loop.loop_kind != LOOP_NONE) {
        code->push_back(loop.for_each.end);
        path.compiler->record_error(ERR_NESTING, location);
    }
    return 0;
}

int compile_stmt_endfor(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                        CodePath& path) {
    const Statement* statement = (it++)->get();
    CodePath* loop = find_loop(path, for_loop);
    if (!loop) {
        path.compiler->record_error(ERR_NESTING, statement->location);
        return 0;
    }
    if (loop->loop_kind == LOOP_FOR) return compile_for_loop(statement->location, code, path, *loop, true);
    return compile_for_each_loop(code, path, *loop, true);
}

// ---- SCAN ----

void compile_select_loop_area(const document_location_st& location, const CodePath& loop,
                              CompiledCodeCollection* code, CodePath& path) {
    compiler_type_info_st type{};
    compile_read_variable(location, loop.scan.work_area_symbol, true, false, code, path, &type);
    code->push_back(location, new VmOpCallNativeVoid(require_command(path, "select").handler, 1));
}

void compile_plain_command(StatementTypes type, const document_location_st& location,
                           CompiledCodeCollection* code, CodePath& path) {
    BasicCommand command(type);
    command.location = location;
    compile_basic_command(&command, code, path);
}

// Every round skips in the loop's own work area, whatever the body selected.
int compile_scan_loop(const document_location_st& location, CompiledCodeCollection* code, CodePath& path,
                      CodePath& loop, bool closing) {
    compile_select_loop_area(location, loop, code, path);
    if (closing) code->push_back(loop.scan.end_of_body);
    compile_plain_command(STMT_SKIP, location, code, path);
    code->push_back(jump_to<VmOpJump>(loop.scan.condition));
    if (!closing || &loop != &path) return 0;
    path.loop_kind = LOOP_NONE;
    code->push_back(path.scan.end);
    return -1;
}

void compile_scan_clause(const Operand* condition, const Operand_Variable* macro_temp,
                         AddressLabelRecord* on_false, CompiledCodeCollection* code, CodePath& loop) {
    if (macro_temp) compile_macro_condition(macro_temp, code, loop);
    else compile_value(condition, code, loop);
    code->push_back(condition ? condition->location : macro_temp->location,
                    jump_to<VmOpCondFalseOrNullJump>(on_false));
}

int compile_stmt_scan(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                      CodePath& path) {
    ZO_TRACE();
    const auto* statement = static_cast<const BasicCommand*>((it++)->get());
    const document_location_st& location = statement->location;
    CodePath loop(path);
    loop.loop_kind = LOOP_SCAN;
    loop.scan.condition = new_label(path, "scan condition");
    loop.scan.end_of_body = new_label(path, "scan end of body");
    loop.scan.end = new_label(path, "endscan");
    temp_ptr area(loop.compile_create_temp_memvar(location, "scan", code));
    loop.scan.work_area_symbol = loop.symbolize(area->name);
    BorrowedOperands none;
    compiler_type_info_st type{};
    compile_call_spec_do(location, require_function(loop, "select"), none.get(), code, loop, &type);
    compile_assign_to_variable(loop.scan.work_area_symbol, location, code, loop);

    temp_ptr for_temp, while_temp;
    if (!statement->macro.empty()) {
        for_temp.reset(loop.compile_create_temp_memvar(location, "scanfor", code));
        while_temp.reset(loop.compile_create_temp_memvar(location, "scanwhile", code));
        const library_func_def_st& concat = require_function(loop, "concat");
        code->push_back(location, new VmOpEspAlloc());
        code->push_back(location, new VmOpEspAlloc());
        code->push_back(location, new VmOpReadConstString(String("SCAN")));
        compile_eval_macro(location, statement->macro.data(), statement->macro.size(), code, loop);
        code->push_back(location, new VmOpCallNative(concat.handler, statement->macro.size() + 1));
        compile_operand_variable_ref(for_temp.get(), false, code, loop);
        compile_operand_variable_ref(while_temp.get(), false, code, loop);
        code->push_back(location,
                        new VmOpCallNative(require_function(loop, "__init_scan_from_macro").handler, 3));
        code->push_back(location, new VmOpEspFree());
    }
    const Option* for_clause = statement->options.find("FOR");
    const Option* while_clause = statement->options.find("WHILE");
    if (!statement->options.has("REST") && !while_clause) compile_plain_command(STMT_GO_TOP, location, code, loop);
    code->push_back(loop.scan.condition);
    compile_select_loop_area(location, loop, code, loop);
    compile_call_spec_do(location, require_function(loop, "eof"), none.get(), code, loop, &type);
    code->push_back(location, jump_to<VmOpCondTrueJump>(loop.scan.end));
    if (for_clause || for_temp)
        compile_scan_clause(for_clause ? for_clause->value.get() : nullptr, for_temp.get(), loop.scan.end_of_body,
                            code, loop);
    if (while_clause || while_temp)
        compile_scan_clause(while_clause ? while_clause->value.get() : nullptr, while_temp.get(), loop.scan.end,
                            code, loop);
    compile_statement_list(end, it, code, loop);
    if (loop.loop_kind != LOOP_NONE) {
        code->push_back(loop.scan.end_of_body);
        code->push_back(loop.scan.end);
        path.compiler->record_error(ERR_NESTING, location);
    }
    return 0;
}

int compile_stmt_endscan(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                         CodePath& path) {
    const Statement* statement = (it++)->get();
    CodePath* loop = find_loop(path, scan_loop);
    if (!loop) {
        path.compiler->record_error(ERR_NESTING, statement->location);
        return 0;
    }
    return compile_scan_loop(statement->location, code, path, *loop, true);
}

// ---- EXIT and LOOP ----

// Plain jumps: a TRY left this way needs nothing, its region simply ends.
int compile_stmt_exit(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                      CodePath& path) {
    const Statement* statement = (it++)->get();
    CodePath* loop = find_loop(path, any_loop);
    if (!loop) path.compiler->record_error(ERR_NESTING, statement->location);
    else code->push_back(statement->location, jump_to<VmOpJump>(loop_end(*loop)));
    return 0;
}

int compile_stmt_loop(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                      CodePath& path) {
    const Statement* statement = (it++)->get();
    CodePath* loop = find_loop(path, any_loop);
    if (!loop) {
        path.compiler->record_error(ERR_NESTING, statement->location);
        return 0;
    }
    switch (loop->loop_kind) {
    case LOOP_DO_WHILE: code->push_back(statement->location, jump_to<VmOpJump>(loop->dowhile.condition)); break;
    case LOOP_FOR: compile_for_loop(statement->location, code, path, *loop, false); break;
    case LOOP_FOR_EACH: compile_for_each_loop(code, path, *loop, false); break;
    default: compile_scan_loop(statement->location, code, path, *loop, false); break;
    }
    return 0;
}

// ---- RETURN, WITH, ASSERT ----

int compile_stmt_return(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                        CodePath& path) {
    const auto* statement = static_cast<const Stmt_Return*>((it++)->get());
    const Operand* value = statement->value.get();
    if (value->kind == OPERAND_REFERENCE) {
        compiler_type_info_st type{};
        compile_operand_ref(static_cast<const Operand_Reference*>(value)->inner.get(), code, path, &type);
        code->push_back(statement->location, new VmOpReturnPointer());
        return 0;
    }
    compile_value(value, code, path);
    code->push_back(statement->location, new VmOpReturnValue());
    return 0;
}

// WITH is a stack of temporaries, not a block: the statement list runs on.
int compile_stmt_with(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                      CodePath& path) {
    const auto* statement = static_cast<const Stmt_Condition*>((it++)->get());
    temp_ptr temp(path.compile_create_temp_memvar(statement->location, "with", code));
    path.with_stack.push_back(path.symbolize(temp->name));
    compile_assign(temp.get(), statement->condition.get(), code, path);
    return 0;
}

// Overwriting the temporary releases the object at once.
int compile_stmt_endwith(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                         CodePath& path) {
    const Statement* statement = (it++)->get();
    if (path.with_stack.empty()) {
        path.compiler->record_error(ERR_OUTSIDE_WITH, statement->location);
        return 0;
    }
    unsigned symbol = path.with_stack.back();
    path.with_stack.pop_back();
    code->push_back(statement->location, new VmOpReadConstFalse());
    compile_assign_to_variable(symbol, statement->location, code, path);
    return 0;
}

// With asserts off an ASSERT costs one native call.
int compile_stmt_assert(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                        CodePath& path) {
    const auto* statement = static_cast<const BasicCommand*>((it++)->get());
    AddressLabelRecord* skip = new_label(path, "skip_if_target");
    BorrowedOperands none;
    compiler_type_info_st type{};
    compile_call_spec_do(statement->location, require_function(path, "test_asserts_on"), none.get(), code, path,
                         &type);
    code->push_back(statement->location, jump_to<VmOpCondFalseOrNullJump>(skip));
    compile_basic_command(statement, code, path);
    code->push_back(skip);
    return 0;
}

// ---- lines that emit nothing, and macro lines ----

int compile_stmt_nothing(const statement_iterator&, statement_iterator& it, CompiledCodeCollection*, CodePath&) {
    ++it;
    return 0;
}

int compile_stmt_incomplete(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                            CodePath& path) {
    const auto* statement = static_cast<const Stmt_Macro*>((it++)->get());
    code->push_back(statement->location, new VmOpEspAlloc());
    compile_eval_macro(statement->location, statement->items.data(), statement->items.size(), code, path);
    code->push_back(statement->location,
                    new VmOpCallNative(require_function(path, "concat").handler, statement->items.size()));
    code->push_back(statement->location, new VmOpMacroExecute());
    return 0;
}

}  // namespace

const library_func_def_st& require_function(CodePath& path, const char* name) {
    const library_func_def_st* function = path.compiler->find_function(String(name));
    if (!function) raise_not_available(name);
    return *function;
}

const library_command_def_st& require_command(CodePath& path, const char* name) {
    const library_command_def_st* command = path.compiler->find_command(String(name));
    if (!command) raise_not_available(name);
    return *command;
}

void compile_value(const Operand* operand, CompiledCodeCollection* code, CodePath& path) {
    compiler_type_info_st type{};
    __compiletime_compact_constexpr(operand, code, path, &type);
}

void compile_read_temp(const Operand_Variable* temp, CompiledCodeCollection* code, CodePath& path) {
    compiler_type_info_st type{};
    compile_read_variable(temp->location, path.symbolize(temp->name), true, false, code, path, &type);
}

void register_control_flow_statements(StatementTable& table) {
    table.add(STMT_INVALID, compile_stmt_nothing);
    table.add(STMT_PRAGMA, compile_stmt_nothing);
    table.add(STMT_DUMMY, compile_stmt_nothing);
    table.add(STMT_ASSERT, compile_stmt_assert);
    table.add(STMT_DO_CASE, compile_stmt_docase);
    table.add(STMT_DO_WHILE, compile_stmt_dowhile);
    table.add(STMT_ELSE, compile_stmt_else_or_endif);
    table.add(STMT_ENDIF, compile_stmt_else_or_endif);
    table.add(STMT_ENDDO, compile_stmt_enddo);
    table.add(STMT_ENDFOR, compile_stmt_endfor);
    table.add(STMT_ENDSCAN, compile_stmt_endscan);
    table.add(STMT_ENDWITH, compile_stmt_endwith);
    table.add(STMT_EXIT, compile_stmt_exit);
    table.add(STMT_FOR, compile_stmt_for);
    table.add(STMT_FOR_EACH, compile_stmt_for_each);
    table.add(STMT_IF, compile_stmt_if);
    table.add(STMT_INCOMPLETE, compile_stmt_incomplete);
    table.add(STMT_LOOP, compile_stmt_loop);
    table.add(STMT_RETURN, compile_stmt_return);
    table.add(STMT_SCAN, compile_stmt_scan);
    table.add(STMT_WITH, compile_stmt_with);
}

}  // namespace zobase
