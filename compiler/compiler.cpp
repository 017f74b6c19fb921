// Code containers, per-function and per-block compiler state, and the step
// that turns a list of instructions and labels into a Program.
#include "compiler/compiler.h"

#include <cstdio>

#include "base/call_trace.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/runtime_services.h"
#include "vm/try_scope.h"
#include "vm/vm_stack.h"

namespace zobase {

// ---- CompiledCodeCollection ----

CompiledCodeCollection::~CompiledCodeCollection() { clear(); }

void CompiledCodeCollection::clear() {
    for (code_item_st& item : items)
        if (item.kind == CODE_ITEM_INSTRUCTION) delete item.op;
    items.clear();
}

void CompiledCodeCollection::push_back(const document_location_st& location, VmOp* op) {
    op->statement = compiler->statement_number;
    ++compiler->instruction_count;
    const document_location_st& used = compiler->has_forced_location ? compiler->forced_location : location;
    items.push_back({CODE_ITEM_INSTRUCTION, op, nullptr, used, true});
}

void CompiledCodeCollection::push_back(VmOp* op) {
    op->statement = compiler->statement_number;
    ++compiler->instruction_count;
    if (compiler->has_forced_location) {
        items.push_back({CODE_ITEM_INSTRUCTION, op, nullptr, compiler->forced_location, true});
        return;
    }
    items.push_back({CODE_ITEM_INSTRUCTION, op, nullptr, {}, false});
}

void CompiledCodeCollection::push_back(AddressLabelRecord* label) {
    items.push_back({CODE_ITEM_LABEL, nullptr, label, {}, false});
}

void CompiledCodeCollection::push_front(VmOp* op) {
    op->statement = 0;
    ++compiler->instruction_count;
    items.push_front({CODE_ITEM_INSTRUCTION, op, nullptr, {}, false});
}

void CompiledCodeCollection::truncate(size_t count) {
    while (items.size() > count) {
        if (items.back().kind == CODE_ITEM_INSTRUCTION) delete items.back().op;
        items.pop_back();
    }
}

void CompiledCodeCollection::splice_back(CompiledCodeCollection& other) { items.splice(items.end(), other.items); }

VmOp* CompiledCodeCollection::last_instruction() const noexcept {
    if (items.empty() || items.back().kind != CODE_ITEM_INSTRUCTION) return nullptr;
    return items.back().op;
}

// ---- Compiler ----

Compiler::Compiler(VmStack* s) : code(this), stack(s) {}

Symtable& Compiler::symbols() const { return stack->services->symbols(); }

void Compiler::reset(int new_flags, bool full) {
    labels.clear();
    locals.clear();
    parameter_count = 0;
    statement_number = 0;
    instruction_count = 0;
    flags = new_flags;
    parameter_mode = PARAMETERS_NONE;
    blocks_exhausted = false;
    if (full) unresolved.clear();
}

AddressLabelRecord* Compiler::create_addresslabel(const String& name) {
    labels.push_back(std::make_unique<AddressLabelRecord>());
    labels.back()->name = name;
    return labels.back().get();
}

bool Compiler::compile_time_define_memvar(const unsigned& symbol, unsigned long long* offset) {
    if (!(flags & COMPILER_LOCAL_SLOTS)) return false;
    auto found = locals.find(symbol);
    if (found == locals.end()) found = locals.emplace(symbol, locals.size() + 1).first;
    *offset = found->second;
    return true;
}

void Compiler::record_error(int32_t number, const document_location_st& location, const String& detail) {
    if (blocks_exhausted) return;
    errors.push_back({number, location, detail});
}

const library_func_def_st* Compiler::find_function(const String& spelling, const Library** owner) const {
    for (const Library* library : libraries) {
        if (const library_func_def_st* found = library->find_function(spelling)) {
            if (owner) *owner = library;
            return found;
        }
    }
    return nullptr;
}

const library_command_def_st* Compiler::find_command(const String& name) const {
    for (const Library* library : libraries)
        if (const library_command_def_st* found = library->find_command(name)) return found;
    return nullptr;
}

const library_func_def_st* Compiler::find_variable_reader(const String& name) const {
    for (const Library* library : libraries)
        if (const library_func_def_st* found = library->find_variable_reader(name)) return found;
    return nullptr;
}

const library_command_def_st* Compiler::find_variable_writer(const String& name) const {
    for (const Library* library : libraries)
        if (const library_command_def_st* found = library->find_variable_writer(name)) return found;
    return nullptr;
}

// ---- create_program ----

namespace {

bool is_jump(uint8_t opcode) {
    switch (opcode) {
    case OP_COND_TRUE_JUMP:
    case OP_COND_TRUE_JUMP_KEEP_ESP:
    case OP_COND_FALSE_OR_NULL_JUMP:
    case OP_COND_FALSE_OR_NULL_JUMP_KEEP_ESP:
    case OP_FOR_COND_FALSE_JUMP:
    case OP_FOR_NEXT_JUMP:
    case OP_JUMP: return true;
    default: return false;
    }
}

// While the compiler works, a jump's target holds its label record.
AddressLabelRecord* label_of(const VmOpJumpBase* jump) {
    return reinterpret_cast<AddressLabelRecord*>(jump->target);
}

void resolve_jump(VmOpJumpBase* jump, VmOp** array) {
    AddressLabelRecord* label = label_of(jump);
    if (!label || label->position < 0) throw assert_failed_exception("jump to a label never placed");
    jump->target = array + label->position;
}

uint64_t resolve_position(uint64_t placeholder) {
    auto* label = reinterpret_cast<AddressLabelRecord*>(placeholder);
    if (!label || label->position < 0) throw assert_failed_exception("try region at a label never placed");
    return static_cast<uint64_t>(label->position);
}

void resolve_try(VmOpTryEnter* scope) {
    scope->region_start = resolve_position(scope->region_start);
    scope->region_end = resolve_position(scope->region_end);
    for (catch_record_st& record : scope->catches) record.target = resolve_position(record.target);
}

// A value that is false or null takes the same way again at a second
// false-or-null test, and never takes a true jump: skip straight past both.
void thread_short_circuit(VmOpJumpBase* jump) {
    for (;;) {
        VmOp* at = *jump->target;
        if (!at) return;
        if (at->opcode == OP_COND_FALSE_OR_NULL_JUMP_KEEP_ESP) {
            VmOp** next = static_cast<VmOpJumpBase*>(at)->target;
            if (next == jump->target) return;
            jump->target = next;
            continue;
        }
        if (at->opcode == OP_COND_TRUE_JUMP_KEEP_ESP) jump->target += 1;
        return;
    }
}

}  // namespace

Program* Compiler::create_program(const String& name, CompiledCodeCollection* list,
                                  const compiler_locals_map& frame_locals, uint64_t parameters,
                                  const document_location_st& start, std::vector<size_t>* unresolved_calls) {
    ZO_TRACE();
    size_t count = 0;
    for (const code_item_st& item : list->items) count += item.kind == CODE_ITEM_INSTRUCTION;

    auto program = std::make_unique<Program>();
    program->name = name;
    program->parameter_count = parameters;
    program->last_location = start;
    std::vector<VmOp*> array;
    array.reserve(count + 1);
    uint32_t last_line = start.start.line;
    for (code_item_st& item : list->items) {
        if (item.kind == CODE_ITEM_LABEL) {
            item.label->position = static_cast<int64_t>(array.size());
            continue;
        }
        size_t position = array.size();
        array.push_back(item.op);
        if (item.op->opcode == OP_UNRESOLVED_CALL && unresolved_calls) unresolved_calls->push_back(position);
        if (item.has_location) {
            program->locations.emplace_back(position, item.location);
            if (item.location.start.line >= last_line) {
                last_line = item.location.start.line;
                program->last_location = item.location;
            }
        }
        if (item.op->statement != 0) program->statement_positions.emplace(item.op->statement, position);
    }
    array.push_back(nullptr);
    // The program owns the instructions from here on, also if a jump fails below.
    list->items.clear();
    program->adopt_code(std::move(array));

    VmOp** code = program->code();
    size_t instructions = program->instruction_count();
    for (size_t i = 0; i < instructions; ++i) {
        if (is_jump(code[i]->opcode)) resolve_jump(static_cast<VmOpJumpBase*>(code[i]), code);
        else if (code[i]->opcode == OP_TRY_ENTER) resolve_try(static_cast<VmOpTryEnter*>(code[i]));
    }
    for (size_t i = 0; i < instructions; ++i)
        if (code[i]->opcode == OP_COND_FALSE_OR_NULL_JUMP_KEEP_ESP)
            thread_short_circuit(static_cast<VmOpJumpBase*>(code[i]));

    for (const auto& [symbol, offset] : frame_locals) program->local_names.push_back({symbol, offset});
    return program.release();
}

// ---- CodePath ----

CodePath::CodePath(CodePath& parent_path) : CodePath(parent_path.compiler) {
    parent = &parent_path;
    known_locals = parent_path.known_locals;
    dowhile = parent_path.dowhile;
    for_loop = parent_path.for_loop;
    for_each = parent_path.for_each;
    scan = parent_path.scan;
    with_stack = parent_path.with_stack;
}

bool CodePath::variable_get(const unsigned& symbol, unsigned long long* offset, bool* certain) const {
    if (!(compiler->flags & COMPILER_LOCAL_SLOTS)) return false;
    auto found = compiler->locals.find(symbol);
    if (found == compiler->locals.end()) return false;
    *offset = found->second;
    *certain = known_locals.count(symbol) != 0;
    return true;
}

unsigned CodePath::symbolize(const String& name) const { return compiler->symbols().symbolize(name); }

unsigned CodePath::symbolize(const char* name) const { return compiler->symbols().symbolize(name); }

Operand_Variable* CodePath::compile_create_temp_memvar(const document_location_st& location, const char* prefix,
                                                       CompiledCodeCollection* code) {
    char name[32];
    std::snprintf(name, sizeof name, ".local~%s~%lld", prefix, static_cast<long long>(compiler->locals.size()));
    unsigned symbol = symbolize(name);
    unsigned long long offset;
    if (compiler->compile_time_define_memvar(symbol, &offset)) {
        known_locals.insert(symbol);
        code->push_back(location, new VmOpDefLocalOffset(offset, symbol));
    } else {
        code->push_back(location, new VmOpDefLocal(symbol));
    }
    auto* variable = new Operand_Variable(String(name), true);
    variable->location = location;
    return variable;
}

// ---- statement lists ----

compile_statement_fn StatementTable::find(int32_t type) const noexcept {
    auto found = routines_.find(type);
    return found == routines_.end() ? nullptr : found->second;
}

const StatementTable& statement_table() {
    static const StatementTable table = [] {
        StatementTable built;
        register_statement_families(built);
        return built;
    }();
    return table;
}

bool ends_statement_list(int32_t type) noexcept {
    switch (type) {
    case STMT_CASE:
    case STMT_CATCH:
    case STMT_ELSE:
    case STMT_ENDCASE:
    case STMT_ENDDEFINE:
    case STMT_ENDDO:
    case STMT_ENDFOR:
    case STMT_ENDIF:
    case STMT_ENDSCAN:
    case STMT_ENDTRY:
    case STMT_ENDWITH:
    case STMT_FINALLY:
    case STMT_OTHERWISE:
    case STMT_DEFINE_CLASS:
    case STMT_ENDFUNC:
    case STMT_FUNCTION:
    case STMT_IMPORT: return true;
    default: return false;
    }
}

namespace {

// The code of a statement whose routine raised is dropped, so that no jump
// is left pointing at a label it never placed.
int compile_one_statement(compile_statement_fn routine, const statement_iterator& end, statement_iterator& it,
                          CompiledCodeCollection* code, CodePath& path) {
    const statement_iterator start = it;
    const Statement* statement = start->get();
    const size_t mark = code->size();
    try {
        return routine(end, it, code, path);
    } catch (const RuntimeError& error) {
        code->truncate(mark);
        path.compiler->record_error(error.number, statement->location, error.parameter);
        if (it == start) ++it;
        return 0;
    }
}

bool opens_module_section(int32_t type) {
    return type == STMT_FUNCTION || type == STMT_ENDFUNC || type == STMT_DEFINE_CLASS || type == STMT_IMPORT;
}

// Reports the block that opened one level too many and passes over the rest
// of the body, up to the next function or class of the module.
void pass_over_deep_blocks(const statement_iterator& end, statement_iterator& it, Compiler* compiler) {
    if (it != end) compiler->record_error(ERR_PARSER_STACK_EXHAUSTED, (*it)->location);
    compiler->blocks_exhausted = true;
    while (it != end && !opens_module_section((*it)->type)) ++it;
}

}  // namespace

int compile_statement_list(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                           CodePath& path) {
    ZO_TRACE();
    CompileDepth level(&path.compiler->block_depth);
    // The body itself is the first level.
    if (path.compiler->block_depth > MAX_BLOCK_DEPTH + 1) {
        pass_over_deep_blocks(end, it, path.compiler);
        return 0;
    }
    const StatementTable& table = statement_table();
    int result = 0;
    while (it != end && result == 0) {
        const Statement* statement = it->get();
        compile_statement_fn routine = table.find(statement->type);
        if (!routine) {
            if (ends_statement_list(statement->type)) return 0;
            path.compiler->record_error(ERR_NOT_AVAILABLE, statement->location, String("statement"));
            ++it;
            continue;
        }
        ++path.compiler->statement_number;
        result = compile_one_statement(routine, end, it, code, path);
    }
    return 0;
}

void create_parameters_initalization_code(const Stmt_Declaration* parameters, int mode,
                                          CompiledCodeCollection* code, CodePath& path) {
    Compiler* compiler = path.compiler;
    compiler->parameter_count = parameters->variables.size();
    compiler->parameter_mode = mode;
    bool slots = compiler->flags & COMPILER_LOCAL_SLOTS;
    for (const declared_variable_st& parameter : parameters->variables) {
        const auto* variable = static_cast<const Operand_Variable*>(parameter.target.get());
        unsigned symbol = path.symbolize(variable->name);
        unsigned long long offset = NO_FRAME_SLOT;
        compiler->compile_time_define_memvar(symbol, &offset);
        if (mode != PARAMETERS_LOCAL) code->push_back(new VmOpInitParameter(offset, symbol));
        else if (slots) path.known_locals.insert(symbol);
        // Code without frame slots (the prompt, macro text) gets no arguments:
        // each name is a new local holding false.
        else code->push_back(parameter.target->location, new VmOpDefLocal(symbol));
    }
    if (mode == PARAMETERS_LOCAL && slots) {
        uint64_t count = compiler->parameter_count + ((compiler->flags & COMPILER_METHOD) ? 1 : 0);
        code->push_back(parameters->location, new VmOpInitLparameters(count));
    }
}

void compile_program(const statement_iterator& end, statement_iterator& it, const Stmt_Declaration* parameters,
                     CodePath& path) {
    ZO_TRACE();
    Compiler* compiler = path.compiler;
    CompiledCodeCollection* code = &compiler->code;
    if (parameters) create_parameters_initalization_code(parameters, PARAMETERS_LOCAL, code, path);
    compile_statement_list(end, it, code, path);
    if (compiler->flags & COMPILER_MUST_RETURN) {
        VmOp* last = code->last_instruction();
        bool returns = last && (last->opcode == OP_RETURN_VALUE || last->opcode == OP_RETURN_POINTER);
        if (!returns) code->push_back(new VmOpReturn());
    }
    if ((compiler->flags & COMPILER_METHOD) && compiler->parameter_mode != PARAMETERS_LOCAL)
        code->push_front(new VmOpInitLparameters(1));
}

}  // namespace zobase
