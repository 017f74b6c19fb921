// Declarations and assignment: LOCAL, PUBLIC, PRIVATE, parameters,
// DIMENSION, STORE and DECLARE, and the store into any kind of target.
#include <functional>
#include <iterator>
#include <memory>
#include <string>

#include "base/call_trace.h"
#include "compiler/expression.h"
#include "compiler/statements.h"
#include "values/error.h"

namespace zobase {

namespace {

unsigned variable_symbol(const Operand* operand, CodePath& path) {
    return path.symbolize(static_cast<const Operand_Variable*>(operand)->name);
}

const Operand_Variable* indexed_variable(const Operand* target) {
    return static_cast<const Operand_VariableIndex*>(target)->variable.get();
}

// An array element is written by slot only where the name is certainly this
// frame's LOCAL; a PRIVATE with a slot still goes by name.
void compile_write_array(const Operand_Variable* variable, size_t count, CompiledCodeCollection* code,
                         CodePath& path) {
    unsigned symbol = path.symbolize(variable->name);
    unsigned long long offset;
    bool certain = false;
    if (path.variable_get(symbol, &offset, &certain) && certain)
        code->push_back(variable->location, new VmOpWriteArrayByOffset(offset, count));
    else
        code->push_back(variable->location, new VmOpWriteArrayByName(symbol, count));
}

// Whether the code emitted from item `first` on leaves the running frame's
// LOCALs as they were. A frame's own LOCAL changes only through a reference
// taken to it or through text compiled in the frame (a macro, a native such
// as EVALUATE); the instructions below do neither, and what they call runs
// in frames of its own.
bool leaves_locals_alone(const CompiledCodeCollection& code, size_t first) {
    auto item = code.items.begin();
    std::advance(item, first);
    for (; item != code.items.end(); ++item) {
        if (item->kind != 0) continue;
        uint8_t opcode = item->op->opcode;
        bool harmless = (opcode >= OP_BINARY_ADD && opcode <= OP_BINARY_EQEQ) || opcode == OP_CALL_USER_FUNCTION ||
                        (opcode >= OP_CAST_TO_BOOLEAN && opcode <= OP_CHECK_NOT_NULL) ||
                        (opcode >= OP_COND_TRUE_JUMP && opcode <= OP_COND_FALSE_OR_NULL_JUMP_KEEP_ESP) ||
                        opcode == OP_ESP_ALLOC || opcode == OP_JUMP || opcode == OP_OBJECT_CALL ||
                        (opcode >= OP_READ_BY_NAME && opcode <= OP_READ_CONST_NULL) || opcode == OP_OBJECT_READ ||
                        opcode == OP_UNARY_NOT || opcode == OP_UNARY_NEG || opcode == OP_READ_FIELD_BY_INDEX ||
                        opcode == OP_READ_THIS_MEMBER || opcode == OP_READ_BARE_LOCAL ||
                        opcode == OP_READ_NAME_MEMBER;
        if (!harmless) return false;
    }
    return true;
}

// THIS.name = value in a method: THIS is read after the value, in the write
// itself, when the value's code cannot have changed the slot; otherwise THIS
// goes in ahead of the value's code and the usual write follows.
bool compile_write_this_member(const Path* target, const value_emitter& emit_value, CompiledCodeCollection* code,
                               CodePath& path) {
    if (target->items.size() != 1 || target->items[0]->kind != PATH_ITEM_NAME) return false;
    unsigned long long offset = this_member_root(target, path);
    if (!offset) return false;
    const PathItem* item = target->items[0].get();
    unsigned symbol = path.symbolize(static_cast<const NamePathItem*>(item)->name);
    size_t first = code->size();
    emit_value();
    if (leaves_locals_alone(*code, first)) {
        code->push_back(item->location, new VmOpWriteThisMember(offset, symbol));
        return true;
    }
    code->push_back(target->root->location, new VmOpReadLocalMemvarByOffset(offset));
    code->items.splice(std::next(code->items.begin(), static_cast<std::ptrdiff_t>(first)), code->items,
                       std::prev(code->items.end()));
    code->push_back(item->location, new VmOpObjectWrite(symbol, 1));
    return true;
}

// A single name of THIS.name, or 0.
unsigned this_member_symbol(const Path* operand, CodePath& path) {
    if (operand->items.size() != 1 || operand->items[0]->kind != PATH_ITEM_NAME) return 0;
    return path.symbolize(static_cast<const NamePathItem*>(operand->items[0].get())->name);
}

// THIS.name = THIS.name + value in a method, the value a LOCAL or a
// constant: one instruction adds it. Reading such a value first changes
// nothing that THIS.name's access method could see.
bool compile_add_to_this_member(const Path* target, const Operand* value, CompiledCodeCollection* code,
                                CodePath& path) {
    if (value->kind != OPERAND_BINARY) return false;
    const auto* sum = static_cast<const BinaryOperator*>(value);
    if (sum->op != BINARY_ADD || sum->left->kind != OPERAND_PATH ||
        (sum->right->kind != OPERAND_VARIABLE && sum->right->kind != OPERAND_CONST))
        return false;
    const auto* left = static_cast<const Path*>(sum->left.get());
    unsigned symbol = this_member_symbol(target, path);
    if (!symbol || this_member_symbol(left, path) != symbol) return false;
    unsigned long long offset = this_member_root(target, path);
    if (!offset || this_member_root(left, path) != offset) return false;
    size_t before = code->size();
    compile_value(sum->right.get(), code, path);
    const VmOp* last = code->last_instruction();
    uint8_t opcode = last ? last->opcode : 0;
    bool plain_read = opcode == OP_READ_BARE_LOCAL || opcode == OP_READ_LOCAL_MEMVAR_BY_OFFSET ||
                      (opcode >= OP_READ_CONST_TRUE && opcode <= OP_READ_CONST_NULL);
    if (code->size() != before + 1 || !plain_read) {
        code->truncate(before);
        return false;
    }
    code->push_back(sum->location, new VmOpAddToThisMember(offset, symbol));
    return true;
}

// The VM takes the value last, above the object and any subscripts, and
// counts it among the arguments of the write.
void compile_write_property(const Path* target, const value_emitter& emit_value, CompiledCodeCollection* code,
                            CodePath& path) {
    if (target->items.empty()) throw assert_failed_exception("property assignment without a member");
    if (compile_write_this_member(target, emit_value, code, path)) return;
    compiler_type_info_st type{};
    compile_evaluate_path(target, true, code, path, &type);
    const PathItem* last = target->items.back().get();
    unsigned symbol = 0;
    const OperandList* subscripts = nullptr;
    switch (last->kind) {
    case PATH_ITEM_NAME: symbol = path.symbolize(static_cast<const NamePathItem*>(last)->name); break;
    case PATH_ITEM_NAME_INDEX: {
        const auto* item = static_cast<const NameIndexPathItem*>(last);
        symbol = path.symbolize(item->name);
        subscripts = item->subscripts.get();
        break;
    }
    case PATH_ITEM_INDEX:
        symbol = path.symbolize("[]");
        subscripts = static_cast<const IndexPathItem*>(last)->subscripts.get();
        break;
    case PATH_ITEM_FUNCTION: {
        // o.Item(k) = v: the arguments subscript an indexed property.
        const auto* item = static_cast<const FunctionPathItem*>(last);
        symbol = path.symbolize(item->name);
        subscripts = item->arguments.get();
        break;
    }
    default: throw assert_failed_exception("property assignment to another path item");
    }
    if (subscripts) compile_operand_list(subscripts, code, path);
    emit_value();
    code->push_back(last->location, new VmOpObjectWrite(symbol, (subscripts ? subscripts->size() : 0) + 1));
}

}  // namespace

// The subscripts go below the value: the VM's writes take the value from
// the top of the stack.
void compile_assign_with(const Operand* target, const value_emitter& emit_value, CompiledCodeCollection* code,
                            CodePath& path) {
    switch (target->kind) {
    case OPERAND_VARIABLE:
        emit_value();
        compile_assign_to_variable(variable_symbol(target, path), target->location, code, path);
        return;
    case OPERAND_VARIABLE_INDEX: {
        const OperandList* subscripts = static_cast<const Operand_VariableIndex*>(target)->subscripts.get();
        compile_operand_list(subscripts, code, path);
        emit_value();
        compile_write_array(indexed_variable(target), subscripts->size(), code, path);
        return;
    }
    case OPERAND_PATH: compile_write_property(static_cast<const Path*>(target), emit_value, code, path); return;
    default:
        // A constant or an expression cannot take a value; the value is still
        // computed and dropped so that the code around stays balanced.
        path.compiler->record_error(ERR_SYNTAX, target->location);
        emit_value();
        code->push_back(target->location, new VmOpEspFree());
    }
}

namespace {

// `x = x + y` adds in place, so appending to a string in a loop copies
// nothing. The x on the right is still a bare name: a field of that name
// gives the sum its left side, and the variable takes the result.
bool is_self_add(unsigned target, const Operand* value, CodePath& path) {
    if (value->kind != OPERAND_BINARY) return false;
    const auto* binary = static_cast<const BinaryOperator*>(value);
    if (binary->op != BINARY_ADD || binary->left->kind != OPERAND_VARIABLE) return false;
    return variable_symbol(binary->left.get(), path) == target;
}

// A right side that compiled to the read of one bare name joins the add:
// the read is taken back and AddBareToBare does both.
bool fuse_bare_source(CompiledCodeCollection* code, size_t before, const document_location_st& location,
                      unsigned symbol, unsigned long long offset) {
    const VmOp* last = code->last_instruction();
    if (code->size() != before + 1 || !last) return false;
    uint32_t source;
    uint64_t source_offset;
    if (!bare_read_of(last, &source, &source_offset)) return false;
    auto* add = new VmOpAddBareToBare();
    add->offset = offset;
    add->symbol = symbol;
    add->source = source;
    add->source_offset = source_offset;
    code->truncate(before);
    code->push_back(location, add);
    return true;
}

template <class Update, class Mul, class Add>
VmOp* mul_add_update(const VmOp* const* ops, uint32_t symbol, uint64_t offset) {
    auto* update = new Update();
    update->symbol = symbol;
    update->offset = offset;
    update->factor = static_cast<const Mul*>(ops[1])->value;
    update->addend = static_cast<const Add*>(ops[2])->value;
    return update;
}

// `x = x * a + b` with two constants of one number type: a value that
// compiled to the bare read of the target, MulConst and AddConst becomes
// one instruction that updates the variable itself. The read must find the
// slot the assignment writes; the instruction keeps the read's place, where
// a name not found is reported.
bool fuse_mul_add_update(CompiledCodeCollection* code, size_t before, unsigned symbol, CodePath& path) {
    if (code->size() != before + 3) return false;
    auto item = std::prev(code->items.end(), 3);
    const document_location_st location = item->location;
    const VmOp* ops[3];
    for (const VmOp*& op : ops) {
        if (item->kind != CODE_ITEM_INSTRUCTION) return false;
        op = (item++)->op;
    }
    uint32_t read_symbol;
    uint64_t offset;
    if (!bare_read_of(ops[0], &read_symbol, &offset) || read_symbol != symbol) return false;
    VmOp* update;
    if (ops[1]->opcode == OP_MUL_CONST_INTEGER && ops[2]->opcode == OP_ADD_CONST_INTEGER)
        update = mul_add_update<VmOpMulAddIntegerToBare, VmOpMulConstInteger, VmOpAddConstInteger>(ops, symbol, offset);
    else if (ops[1]->opcode == OP_MUL_CONST_NUMERIC && ops[2]->opcode == OP_ADD_CONST_NUMERIC)
        update = mul_add_update<VmOpMulAddNumericToBare, VmOpMulConstNumeric, VmOpAddConstNumeric>(ops, symbol, offset);
    else
        return false;
    if (assignment_slot(symbol, path) != offset) {
        delete update;
        return false;
    }
    code->truncate(before);
    code->push_back(location, update);
    return true;
}

bool compile_system_variable_write(const Operand_Variable* target, const Operand* value,
                                   CompiledCodeCollection* code, CodePath& path) {
    if (target->memvar_only) return false;
    const library_command_def_st* writer = path.compiler->find_variable_writer(target->name);
    if (!writer) return false;
    BorrowedOperands arguments;
    arguments.add(value);
    compile_call_spec_void_core(target->location, *writer, arguments.get(), code, path);
    return true;
}

void compile_assign_to_variable(const Operand_Variable* target, const Operand* value, CompiledCodeCollection* code,
                                CodePath& path) {
    if (compile_system_variable_write(target, value, code, path)) return;
    unsigned symbol = path.symbolize(target->name);
    if (!is_self_add(symbol, value, path)) {
        size_t before = code->size();
        compile_value(value, code, path);
        if (fuse_mul_add_update(code, before, symbol, path)) return;
        compile_assign_to_variable(symbol, target->location, code, path);
        return;
    }
    size_t before = code->size();
    compile_value(static_cast<const BinaryOperator*>(value)->right.get(), code, path);
    unsigned long long offset;
    bool certain = false;
    if (!(path.variable_get(symbol, &offset, &certain) && certain)) offset = 0;
    if (fuse_bare_source(code, before, target->location, symbol, offset)) return;
    if (offset)
        code->push_back(target->location, new VmOpAddToBareLocal(offset, symbol));
    else
        code->push_back(target->location, new VmOpAddToBareName(symbol));
}

// ---- LOCAL, PUBLIC, PRIVATE ----

int compile_stmt_local(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                       CodePath& path) {
    ZO_TRACE();
    const auto* statement = static_cast<const Stmt_Declaration*>((it++)->get());
    for (const declared_variable_st& variable : statement->variables) {
        const Operand* target = variable.target.get();
        unsigned symbol = variable_symbol(target, path);
        unsigned long long offset;
        if (path.compiler->compile_time_define_memvar(symbol, &offset)) {
            code->push_back(target->location, new VmOpDefLocalOffset(offset, symbol));
            path.known_locals.insert(symbol);
        } else {
            code->push_back(target->location, new VmOpDefLocal(symbol));
        }
        if (variable.bounds) compile_dimension(target->location, target, variable.bounds.get(), code, path);
    }
    return 0;
}

// Not entered in known_locals: later reads of the name go by name.
int compile_stmt_private(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                         CodePath& path) {
    const auto* statement = static_cast<const Stmt_Declaration*>((it++)->get());
    for (const declared_variable_st& variable : statement->variables) {
        unsigned symbol = variable_symbol(variable.target.get(), path);
        unsigned long long offset;
        path.compiler->compile_time_define_memvar(symbol, &offset);
        code->push_back(variable.target->location, new VmOpDefPrivateSymbol(symbol));
    }
    return 0;
}

int compile_stmt_public(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                        CodePath& path) {
    const auto* statement = static_cast<const Stmt_Declaration*>((it++)->get());
    for (const declared_variable_st& variable : statement->variables) {
        const Operand* target = variable.target.get();
        unsigned symbol = variable_symbol(target, path);
        unsigned long long offset = NO_FRAME_SLOT;
        path.compiler->compile_time_define_memvar(symbol, &offset);
        code->push_back(target->location, new VmOpDefPublicOffset(offset, symbol));
        if (variable.bounds) compile_dimension(target->location, target, variable.bounds.get(), code, path);
    }
    return 0;
}

int compile_stmt_private_pattern(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                                 CodePath& path) {
    const auto* statement = static_cast<const Stmt_PrivatePattern*>((it++)->get());
    BorrowedOperands arguments;
    arguments.own(new Const_String(String(compile_private_rx_pattern(statement->like).c_str())));
    arguments.own(new Const_String(String(compile_private_rx_pattern(statement->except).c_str())));
    compile_call_spec_void_core(statement->location, require_command(path, "private"), arguments.get(), code, path);
    return 0;
}

// ---- parameters ----

int compile_stmt_parameters(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                            CodePath& path) {
    const auto* statement = static_cast<const Stmt_Declaration*>((it++)->get());
    create_parameters_initalization_code(statement, PARAMETERS_PRIVATE, code, path);
    return 0;
}

int compile_stmt_lparameters(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                             CodePath& path) {
    const auto* statement = static_cast<const Stmt_Declaration*>((it++)->get());
    create_parameters_initalization_code(statement, PARAMETERS_LOCAL, code, path);
    return 0;
}

// ---- DIMENSION, STORE, DECLARE ----

int compile_stmt_dimension(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                           CodePath& path) {
    const auto* statement = static_cast<const Stmt_Declaration*>((it++)->get());
    for (const declared_variable_st& variable : statement->variables)
        compile_dimension(variable.target->location, variable.target.get(), variable.bounds.get(), code, path);
    return 0;
}

// The value goes to a temporary once; each target then takes it through
// "store", which fills an array target element by element.
int compile_stmt_store(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                       CodePath& path) {
    ZO_TRACE();
    const auto* statement = static_cast<const Stmt_Store*>((it++)->get());
    std::unique_ptr<Operand_Variable> temp(path.compile_create_temp_memvar(statement->location, "store", code));
    compile_assign(temp.get(), statement->value.get(), code, path);
    const library_func_def_st& store = require_function(path, "store");
    for (const operand_ptr& target : statement->targets->items) {
        compile_assign_with(
            target.get(),
            [&] {
                code->push_back(target->location, new VmOpEspAlloc());
                compile_target_argument(target.get(), code, path);
                compile_read_temp(temp.get(), code, path);
                code->push_back(target->location, new VmOpCallNative(store.handler, 2));
            },
            code, path);
    }
    return 0;
}

int compile_stmt_declare(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                         CodePath& path) {
    const auto* statement = static_cast<const Stmt_Declare*>((it++)->get());
    BorrowedOperands arguments;
    arguments.own(new Const_String(statement->result_type));
    arguments.own(new Const_String(statement->name));
    auto* count = new Const_Value();
    count->value.set_integer(static_cast<long long>(statement->parameters.size()));
    arguments.own(count);
    arguments.add(statement->library.get());
    if (statement->alias.size()) {
        arguments.own(new Const_String(statement->alias));
    } else {
        auto* alias = new Const_Value();
        alias->value.set_null();
        arguments.own(alias);
    }
    // Each parameter as its type name, "@" added when it is passed by reference.
    for (const declare_param_st& parameter : statement->parameters)
        arguments.own(new Const_String(parameter.by_reference ? String((parameter.type_name.u8str() + "@").c_str())
                                                              : parameter.type_name));
    compile_call_spec_void_core(statement->location, require_command(path, "declare"), arguments.get(), code, path);
    return 0;
}

}  // namespace

std::string compile_private_rx_pattern(const String& pattern) {
    std::string rx = "^";
    for (char c : pattern.u8str()) {
        if (c == '*') rx += ".*";
        else if (c == '?') rx += '.';
        else rx += c;
    }
    return rx + "$";
}

// "store" and "dimension" replace what a missing variable would have held.
void compile_target_argument(const Operand* target, CompiledCodeCollection* code, CodePath& path) {
    if (target->kind != OPERAND_VARIABLE) {
        compile_value(target, code, path);
        return;
    }
    compiler_type_info_st type{};
    compile_read_variable(target->location, variable_symbol(target, path), true, true, code, path, &type);
}

void compile_assign(const Operand* target, const Operand* value, CompiledCodeCollection* code, CodePath& path) {
    if (target->kind == OPERAND_VARIABLE) {
        compile_assign_to_variable(static_cast<const Operand_Variable*>(target), value, code, path);
        return;
    }
    if (target->kind == OPERAND_PATH &&
        compile_add_to_this_member(static_cast<const Path*>(target), value, code, path))
        return;
    compile_assign_with(target, [&] { compile_value(value, code, path); }, code, path);
}

// "dimension" reshapes the target's current value, so a second DIMENSION
// keeps what the two shapes share.
void compile_dimension(const document_location_st& location, const Operand* target, const OperandList* subscripts,
                       CompiledCodeCollection* code, CodePath& path) {
    const library_func_def_st& dimension = require_function(path, "dimension");
    size_t count = subscripts ? subscripts->size() : 0;
    if (count < 1 || count > 2) {
        path.compiler->record_error(ERR_ARGUMENT_INVALID, location);
        return;
    }
    const Operand* array = target->kind == OPERAND_VARIABLE_INDEX ? indexed_variable(target) : target;
    compile_assign_with(
        array,
        [&] {
            code->push_back(location, new VmOpEspAlloc());
            for (size_t i = 0; i < 2; ++i) {
                if (i >= count) {
                    code->push_back(location, new VmOpReadConstNull());
                    continue;
                }
                compiler_type_info_st type{};
                __compiletime_compact_constexpr(subscripts->at(i), code, path, &type);
                compile_cast_to_formal(subscripts->at(i)->location, dimension.parameters.formals[i], type, code);
            }
            compile_target_argument(array, code, path);
            code->push_back(location, new VmOpCallNative(dimension.handler, 3));
        },
        code, path);
}

void register_declaration_statements(StatementTable& table) {
    table.add(STMT_DECLARE, compile_stmt_declare);
    table.add(STMT_DIMENSION, compile_stmt_dimension);
    table.add(STMT_LOCAL, compile_stmt_local);
    table.add(STMT_LPARAMETERS, compile_stmt_lparameters);
    table.add(STMT_PARAMETERS, compile_stmt_parameters);
    table.add(STMT_PRIVATE, compile_stmt_private);
    table.add(STMT_PRIVATE_PATTERN, compile_stmt_private_pattern);
    table.add(STMT_PUBLIC, compile_stmt_public);
    table.add(STMT_STORE, compile_stmt_store);
}

}  // namespace zobase
