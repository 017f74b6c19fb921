// Expressions: operands, constants, operators, variables, paths and calls.
#include "compiler/expression.h"

#include <type_traits>
#include <unordered_map>

#include "base/call_trace.h"
#include "compiler/build_input.h"
#include "compiler/discard_screen.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/vm_run.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

typedef void (*operand_fn)(const Operand*, bool stop_before_last, bool by_value, CompiledCodeCollection*,
                           CodePath&, compiler_type_info_st*);
typedef void (*const_fn)(const Const_Value*, CompiledCodeCollection*, compiler_type_info_st*);
typedef void (*binary_fn)(const BinaryOperator*, CompiledCodeCollection*, CodePath&, compiler_type_info_st*);
typedef void (*root_fn)(const Path*, const PathItem*, CompiledCodeCollection*, CodePath&, compiler_type_info_st*);
typedef void (*item_fn)(const PathItem*, CompiledCodeCollection*, CodePath&, compiler_type_info_st*);
typedef void (*intrinsic_fn)(const document_location_st&, const OperandList*, CompiledCodeCollection*, CodePath&,
                             compiler_type_info_st*);

template <class Table, class Key>
auto find_row(const Table& table, Key key) {
    auto found = table.find(key);
    if (found == table.end()) raise_not_available("compile table row");
    return found->second;
}

compiler_type_info_st fresh_type() { return compiler_type_info_st{}; }

uint8_t null_bit(const compiler_type_info_st& type) { return type.type & FORMAL_NULLABLE; }

// ---- constants ----

enum ConstantKinds : int { CONST_BOOLEAN = 1, CONST_NULL = 4, CONST_INTEGER = 5, CONST_NUMERIC = 6,
                           CONST_MONEY = 7, CONST_DATE = 8, CONST_DATETIME = 9, CONST_STRING = 10 };

int constant_kind(uint8_t tag) {
    switch (tag) {
    case TAG_FALSE:
    case TAG_TRUE: return CONST_BOOLEAN;
    case TAG_NULL: return CONST_NULL;
    case TAG_INTEGER: return CONST_INTEGER;
    case TAG_NUMERIC: return CONST_NUMERIC;
    case TAG_MONEY: return CONST_MONEY;
    case TAG_DATE: return CONST_DATE;
    case TAG_DATETIME: return CONST_DATETIME;
    case TAG_STRING: return CONST_STRING;
    default: return 0;
    }
}

void set_constant(compiler_type_info_st* type, uint8_t code) {
    *type = fresh_type();
    type->type = code;
    type->is_constant = true;
}

void compile_const_boolean(const Const_Value* value, CompiledCodeCollection* code, compiler_type_info_st* type) {
    if (value->value.tag == TAG_TRUE) code->push_back(value->location, new VmOpReadConstTrue());
    else code->push_back(value->location, new VmOpReadConstFalse());
    set_constant(type, FORMAL_LOGICAL);
}

void compile_const_null(const Const_Value* value, CompiledCodeCollection* code, compiler_type_info_st* type) {
    code->push_back(value->location, new VmOpReadConstNull());
    set_constant(type, STATIC_TYPE_NULL | FORMAL_NULLABLE);
}

void compile_const_string(const Const_Value* value, CompiledCodeCollection* code, compiler_type_info_st* type) {
    String text = static_cast<String>(value->value);
    code->push_back(value->location, new VmOpReadConstString(text));
    set_constant(type, FORMAL_STRING);
    type->length = text.length();
}

void compile_const_value_generic(const Const_Value* value, CompiledCodeCollection* code,
                                 compiler_type_info_st* type) {
    compile_const_generic(value->location, value->value, code, type);
}

const std::unordered_map<int, const_fn> const_table = {
    {CONST_BOOLEAN, compile_const_boolean},       {CONST_NULL, compile_const_null},
    {CONST_INTEGER, compile_const_value_generic}, {CONST_NUMERIC, compile_const_value_generic},
    {CONST_MONEY, compile_const_value_generic},   {CONST_DATE, compile_const_value_generic},
    {CONST_DATETIME, compile_const_value_generic}, {CONST_STRING, compile_const_string},
};

// The value of a read-constant instruction, for compile hooks.
bool constant_of(const VmOp* op, Variant* out) {
    switch (op->opcode) {
    case OP_READ_CONST_TRUE: out->set_true(); return true;
    case OP_READ_CONST_FALSE: out->set_false(); return true;
    case OP_READ_CONST_NULL: out->set_null(); return true;
    case OP_READ_CONST_INTEGER:
        out->set_integer(static_cast<long long>(static_cast<const VmOpReadConstInteger*>(op)->value));
        return true;
    case OP_READ_CONST_NUMERIC: out->set(static_cast<const VmOpReadConstNumeric*>(op)->value); return true;
    case OP_READ_CONST_MONEY: out->set(static_cast<const VmOpReadConstMoney*>(op)->value); return true;
    case OP_READ_CONST_DATE: out->set(static_cast<const VmOpReadConstDate*>(op)->value); return true;
    case OP_READ_CONST_DATETIME: out->set(static_cast<const VmOpReadConstDatetime*>(op)->value); return true;
    case OP_READ_CONST_STRING: out->set_string(static_cast<const VmOpReadConstString*>(op)->value); return true;
    default: return false;
    }
}

// ---- operand kinds ----

void compile_operand_name(const Operand* operand, bool, bool, CompiledCodeCollection* code, CodePath&,
                          compiler_type_info_st* type) {
    const auto* name = static_cast<const Operand_Name*>(operand);
    code->push_back(operand->location, new VmOpReadConstString(name->name));
    set_constant(type, FORMAL_STRING);
    type->length = name->name.length();
}

void compile_operand_const_value(const Operand* operand, bool, bool, CompiledCodeCollection* code, CodePath&,
                                 compiler_type_info_st* type) {
    const auto* value = static_cast<const Const_Value*>(operand);
    find_row(const_table, constant_kind(value->value.tag))(value, code, type);
}

void compile_operand_variable(const Operand* operand, bool, bool, CompiledCodeCollection* code, CodePath& path,
                              compiler_type_info_st* type) {
    const auto* variable = static_cast<const Operand_Variable*>(operand);
    compile_read_variable(operand->location, path.symbolize(variable->name), variable->memvar_only, false, code,
                          path, type);
}

void compile_variable_with_index(const Operand* operand, bool, bool, CompiledCodeCollection* code, CodePath& path,
                                 compiler_type_info_st* type) {
    const auto* element = static_cast<const Operand_VariableIndex*>(operand);
    unsigned symbol = path.symbolize(element->variable->name);
    code->push_back(operand->location, new VmOpEspAlloc());
    compile_operand_list(element->subscripts.get(), code, path);
    uint64_t count = element->subscripts->size();
    unsigned long long offset;
    bool certain;
    if (path.variable_get(symbol, &offset, &certain))
        code->push_back(operand->location, new VmOpReadArrayByOffset(offset, count));
    else
        code->push_back(operand->location, new VmOpReadArrayByName(symbol, count));
    *type = fresh_type();
    type->type = STATIC_TYPE_UNKNOWN;
}

void compile_operand_path(const Operand* operand, bool stop_before_last, bool, CompiledCodeCollection* code,
                          CodePath& path, compiler_type_info_st* type) {
    compile_evaluate_path(static_cast<const Path*>(operand), stop_before_last, code, path, type);
}

void compile_operand_reference(const Operand* operand, bool stop_before_last, bool by_value,
                               CompiledCodeCollection* code, CodePath& path, compiler_type_info_st* type) {
    const auto* reference = static_cast<const Operand_Reference*>(operand);
    if (by_value) compile_operand(reference->inner.get(), stop_before_last, true, code, path, type);
    else compile_operand_ref(reference->inner.get(), code, path, type);
}

void compile_operand_unary(const Operand* operand, bool, bool, CompiledCodeCollection* code, CodePath& path,
                           compiler_type_info_st* type) {
    const auto* unary = static_cast<const Operand_Unary*>(operand);
    compile_operand(unary->inner.get(), false, true, code, path, type);
    switch (unary->op) {
    case UNARY_NOT:
        code->push_back(operand->location, new VmOpUnaryNot());
        type->type = FORMAL_LOGICAL | null_bit(*type);
        break;
    case UNARY_NEG: code->push_back(operand->location, new VmOpUnaryNeg()); break;
    case UNARY_PLUS: break;
    default: raise_not_available("unary operator");
    }
}

// ---- binary operators ----

// The operator with a number constant on its right as one instruction: the
// constant's push is taken back. Other operators have no such form.
template <class Op>
VmOp* with_constant_right(const VmOp* constant) {
    constexpr bool add = std::is_same_v<Op, VmOpBinaryAdd>;
    constexpr bool mul = std::is_same_v<Op, VmOpBinaryMul>;
    if constexpr (add || mul) {
        if (constant->opcode == OP_READ_CONST_INTEGER) {
            integer_type_st value = static_cast<const VmOpReadConstInteger*>(constant)->value;
            if (add) return new VmOpAddConstInteger(value);
            return new VmOpMulConstInteger(value);
        }
        if (constant->opcode == OP_READ_CONST_NUMERIC) {
            numeric_type_st value = static_cast<const VmOpReadConstNumeric*>(constant)->value;
            if (add) return new VmOpAddConstNumeric(value);
            return new VmOpMulConstNumeric(value);
        }
    }
    return nullptr;
}

}  // namespace

bool bare_read_of(const VmOp* op, uint32_t* symbol, uint64_t* offset) {
    if (op->opcode == OP_READ_BY_NAME) {
        *symbol = static_cast<const VmOpReadByName*>(op)->symbol;
        *offset = 0;
        return true;
    }
    if (op->opcode == OP_READ_BARE_LOCAL) {
        *symbol = static_cast<const VmOpReadBareLocal*>(op)->symbol;
        *offset = static_cast<const VmOpReadBareLocal*>(op)->offset;
        return true;
    }
    return false;
}

namespace {

// The operator with a bare name on its right as one instruction: the read
// is taken back and the instruction reads the name itself.
template <class Op>
VmOp* with_bare_right(uint32_t symbol, uint64_t offset) {
    if constexpr (std::is_same_v<Op, VmOpBinaryAdd>) return new VmOpAddByBare(offset, symbol);
    if constexpr (std::is_same_v<Op, VmOpBinaryMul>) return new VmOpMulByBare(offset, symbol);
    if constexpr (std::is_same_v<Op, VmOpBinaryDiv>) return new VmOpDivByBare(offset, symbol);
    return nullptr;
}

template <class Binary>
VmOp* bare_by_bare(uint32_t left, uint64_t left_offset, uint32_t right, uint64_t right_offset) {
    auto* binary = new Binary();
    binary->left = left;
    binary->left_offset = left_offset;
    binary->symbol = right;
    binary->offset = right_offset;
    return binary;
}

// Both operands bare names: both reads go into the operator.
template <class Op>
VmOp* with_bare_operands(uint32_t left, uint64_t left_offset, uint32_t right, uint64_t right_offset) {
    if constexpr (std::is_same_v<Op, VmOpBinaryAdd>)
        return bare_by_bare<VmOpAddBareByBare>(left, left_offset, right, right_offset);
    if constexpr (std::is_same_v<Op, VmOpBinaryMul>)
        return bare_by_bare<VmOpMulBareByBare>(left, left_offset, right, right_offset);
    if constexpr (std::is_same_v<Op, VmOpBinaryDiv>)
        return bare_by_bare<VmOpDivBareByBare>(left, left_offset, right, right_offset);
    return nullptr;
}

// The operator, with a right operand that compiled to one constant or one
// bare read folded into it, and then a left operand that is one bare read.
// A folded read keeps the read's place: a name not found is reported there.
template <class Op>
void emit_binary(const BinaryOperator* binary, CompiledCodeCollection* code, size_t start, size_t before) {
    const VmOp* last = code->last_instruction();
    if (code->size() != before + 1 || !last) return code->push_back(binary->location, new Op());
    if (VmOp* fused = with_constant_right<Op>(last)) {
        code->truncate(before);
        return code->push_back(binary->location, fused);
    }
    uint32_t right, left;
    uint64_t right_offset, left_offset;
    VmOp* fused = bare_read_of(last, &right, &right_offset) ? with_bare_right<Op>(right, right_offset) : nullptr;
    if (!fused) return code->push_back(binary->location, new Op());
    code_item_st read = code->items.back();
    code->truncate(before);
    const VmOp* left_read = before == start + 1 ? code->last_instruction() : nullptr;
    if (left_read && bare_read_of(left_read, &left, &left_offset)) {
        delete fused;
        fused = with_bare_operands<Op>(left, left_offset, right, right_offset);
        read = code->items.back();
        code->truncate(start);
    }
    code->push_back(read.has_location ? read.location : binary->location, fused);
}

template <class Op, bool Text>
void compile_constexpr_binary_default(const BinaryOperator* binary, CompiledCodeCollection* code, CodePath& path,
                                      compiler_type_info_st* type) {
    compiler_type_info_st left = fresh_type(), right = fresh_type();
    size_t start = code->size();
    compile_operand(binary->left.get(), false, true, code, path, &left);
    size_t before = code->size();
    compile_operand(binary->right.get(), false, true, code, path, &right);
    emit_binary<Op>(binary, code, start, before);
    *type = fresh_type();
    type->is_constant = left.is_constant && right.is_constant;
    if (Text && (left.type & 15) == FORMAL_STRING && (right.type & 15) == FORMAL_STRING) {
        type->type = FORMAL_STRING;
        if (left.length != LENGTH_UNKNOWN && right.length != LENGTH_UNKNOWN) type->length = left.length + right.length;
    }
    type->type |= null_bit(left) | null_bit(right);
}

template <class Op>
void compile_binary_default(const BinaryOperator* binary, CompiledCodeCollection* code, CodePath& path,
                            compiler_type_info_st* type) {
    compiler_type_info_st left = fresh_type(), right = fresh_type();
    compile_operand(binary->left.get(), false, true, code, path, &left);
    compile_operand(binary->right.get(), false, true, code, path, &right);
    code->push_back(binary->location, new Op());
    *type = fresh_type();
    type->type = FORMAL_LOGICAL | null_bit(left) | null_bit(right);
}

// The tested value stays on the stack when it decides the result.
template <class Jump, bool Or>
void compile_short_circuit(const BinaryOperator* binary, const char* label_name, CompiledCodeCollection* code,
                           CodePath& path, compiler_type_info_st* type) {
    AddressLabelRecord* label = path.compiler->create_addresslabel(String(label_name));
    compiler_type_info_st left = fresh_type(), right = fresh_type();
    compile_operand(binary->left.get(), false, true, code, path, &left);
    code->push_back(binary->location, jump_to<Jump>(label));
    compile_operand(binary->right.get(), false, true, code, path, &right);
    if (Or) code->push_back(binary->location, new VmOpCondTrueOrNullMerge2P());
    code->push_back(label);
    *type = fresh_type();
    type->type = FORMAL_LOGICAL | null_bit(left) | null_bit(right);
    type->is_constant = left.is_constant && right.is_constant;
}

void compile_constexpr_binary_and(const BinaryOperator* binary, CompiledCodeCollection* code, CodePath& path,
                                  compiler_type_info_st* type) {
    compile_short_circuit<VmOpCondFalseOrNullJumpKeepEsp, false>(binary, "and<a> false or null", code, path, type);
}

void compile_constexpr_binary_or(const BinaryOperator* binary, CompiledCodeCollection* code, CodePath& path,
                                 compiler_type_info_st* type) {
    compile_short_circuit<VmOpCondTrueJumpKeepEsp, true>(binary, "or<a> true", code, path, type);
}

// `a $ b` is `at(a, b) > 0`, so null follows the rule of `at`.
void compile_binary_in_str(const BinaryOperator* binary, CompiledCodeCollection* code, CodePath& path,
                           compiler_type_info_st* type) {
    OperandList arguments;
    // The list borrows the two sides for the call and gives them back after.
    arguments.items.emplace_back(const_cast<Operand*>(binary->left.get()));
    arguments.items.emplace_back(const_cast<Operand*>(binary->right.get()));
    compiler_type_info_st call = fresh_type();
    try {
        compile_call(binary->location, String("at"), &arguments, code, path, &call);
    } catch (...) {
        for (operand_ptr& item : arguments.items) item.release();
        throw;
    }
    for (operand_ptr& item : arguments.items) item.release();
    integer_type_st zero{};
    code->push_back(binary->location, new VmOpReadConstInteger(zero));
    code->push_back(binary->location, new VmOpBinaryGt());
    *type = fresh_type();
    type->type = FORMAL_LOGICAL | null_bit(call);
}

const std::unordered_map<int, binary_fn> binary_table = {
    {BINARY_ADD, compile_constexpr_binary_default<VmOpBinaryAdd, true>},
    {BINARY_SUB, compile_constexpr_binary_default<VmOpBinarySub, true>},
    {BINARY_MUL, compile_constexpr_binary_default<VmOpBinaryMul, false>},
    {BINARY_DIV, compile_constexpr_binary_default<VmOpBinaryDiv, false>},
    {BINARY_MOD, compile_constexpr_binary_default<VmOpBinaryMod, false>},
    {BINARY_POW, compile_constexpr_binary_default<VmOpBinaryPow, false>},
    {BINARY_EQ, compile_binary_default<VmOpBinaryEq>},
    {BINARY_LT, compile_binary_default<VmOpBinaryLt>},
    {BINARY_LTEQ, compile_binary_default<VmOpBinaryLtEq>},
    {BINARY_GT, compile_binary_default<VmOpBinaryGt>},
    {BINARY_GTEQ, compile_binary_default<VmOpBinaryGtEq>},
    {BINARY_LTGT, compile_binary_default<VmOpBinaryLtGt>},
    {BINARY_EQEQ, compile_binary_default<VmOpBinaryEqEq>},
    {BINARY_AND, compile_constexpr_binary_and},
    {BINARY_OR, compile_constexpr_binary_or},
    {BINARY_IN_STR, compile_binary_in_str},
};

void compile_binary_operator(const Operand* operand, bool, bool, CompiledCodeCollection* code, CodePath& path,
                             compiler_type_info_st* type) {
    const auto* binary = static_cast<const BinaryOperator*>(operand);
    find_row(binary_table, binary->op)(binary, code, path, type);
}

void compile_operand_call(const Operand* operand, bool, bool, CompiledCodeCollection* code, CodePath& path,
                          compiler_type_info_st* type) {
    const auto* call = static_cast<const Operand_Call*>(operand);
    compile_call(operand->location, call->name, call->arguments.get(), code, path, type);
}

const std::unordered_map<int, operand_fn> operand_table = {
    {OPERAND_NAME, compile_operand_name},
    {OPERAND_CONST, compile_operand_const_value},
    {OPERAND_VARIABLE, compile_operand_variable},
    {OPERAND_VARIABLE_INDEX, compile_variable_with_index},
    {OPERAND_PATH, compile_operand_path},
    {OPERAND_REFERENCE, compile_operand_reference},
    {OPERAND_UNARY, compile_operand_unary},
    {OPERAND_BINARY, compile_binary_operator},
    {OPERAND_CALL, compile_operand_call},
};

// ---- paths ----

// THIS in a method is its first slot: no work area is looked for under that name.
bool is_method_this(unsigned symbol, const CodePath& path) {
    unsigned long long offset;
    bool certain = false;
    return symbol == SYMBOL_THIS && (path.compiler->flags & COMPILER_METHOD) &&
           path.variable_get(symbol, &offset, &certain) && certain;
}

const String& item_name(const PathItem* item) {
    switch (item->kind) {
    case PATH_ITEM_NAME: return static_cast<const NamePathItem*>(item)->name;
    case PATH_ITEM_NAME_INDEX: return static_cast<const NameIndexPathItem*>(item)->name;
    case PATH_ITEM_FUNCTION: return static_cast<const FunctionPathItem*>(item)->name;
    default: throw assert_failed_exception("path item without a name");
    }
}

void compile_path_root_name(const Path* path_operand, const PathItem* item, CompiledCodeCollection* code,
                            CodePath& path, compiler_type_info_st* type) {
    unsigned symbol = path.symbolize(item_name(item));
    unsigned long long offset;
    bool certain = false;
    if (path_operand->memvar_root || is_method_this(symbol, path)) {
        if (path.variable_get(symbol, &offset, &certain) && certain)
            code->push_back(item->location, new VmOpReadLocalMemvarByOffset(offset));
        else
            code->push_back(item->location, new VmOpReadMemvarByName(symbol));
    } else {
        code->push_back(item->location, new VmOpReadFileObjectOrMemvarByName(symbol));
    }
    type->type = STATIC_TYPE_UNKNOWN;
}

void compile_path_root_name_with_index(const Path* path_operand, const PathItem* item, CompiledCodeCollection* code,
                                       CodePath& path, compiler_type_info_st* type) {
    const auto* indexed = static_cast<const NameIndexPathItem*>(item);
    Operand_VariableIndex element(new Operand_Variable(indexed->name, path_operand->memvar_root), nullptr);
    element.location = item->location;
    // The element borrows the subscripts of the item.
    element.subscripts.reset(indexed->subscripts.get());
    try {
        compile_variable_with_index(&element, false, true, code, path, type);
    } catch (...) {
        element.subscripts.release();
        throw;
    }
    element.subscripts.release();
}

void compile_path_root_function(const Path*, const PathItem* item, CompiledCodeCollection* code, CodePath& path,
                                compiler_type_info_st* type) {
    const auto* function = static_cast<const FunctionPathItem*>(item);
    compile_call(item->location, function->name, function->arguments.get(), code, path, type);
}

void compile_path_root_with(const Path*, const PathItem* item, CompiledCodeCollection* code, CodePath& path,
                            compiler_type_info_st* type) {
    if (path.with_stack.empty()) {
        path.compiler->record_error(ERR_OUTSIDE_WITH, item->location);
        code->push_back(item->location, new VmOpReadConstNull());
        return;
    }
    compile_read_variable(item->location, path.with_stack.back(), true, false, code, path, type);
}

const std::unordered_map<int, root_fn> root_table = {
    {PATH_ITEM_NAME, compile_path_root_name},
    {PATH_ITEM_NAME_INDEX, compile_path_root_name_with_index},
    {PATH_ITEM_FUNCTION, compile_path_root_function},
    {PATH_ITEM_WITH, compile_path_root_with},
};

const std::unordered_map<int, root_fn> root_ref_table = {
    {PATH_ITEM_NAME, compile_path_root_name},
    {PATH_ITEM_WITH, compile_path_root_with},
};

void compile_name_path_item(const PathItem* item, CompiledCodeCollection* code, CodePath& path,
                            compiler_type_info_st*) {
    code->push_back(item->location, new VmOpObjectRead(path.symbolize(item_name(item)), 0));
}

void compile_path_name_with_index(const PathItem* item, CompiledCodeCollection* code, CodePath& path,
                                  compiler_type_info_st*) {
    const auto* indexed = static_cast<const NameIndexPathItem*>(item);
    compile_operand_list(indexed->subscripts.get(), code, path);
    code->push_back(item->location, new VmOpObjectRead(path.symbolize(indexed->name), indexed->subscripts->size()));
}

void compile_function_path_item(const PathItem* item, CompiledCodeCollection* code, CodePath& path,
                                compiler_type_info_st*) {
    const auto* function = static_cast<const FunctionPathItem*>(item);
    compile_pass_parameters(function->arguments.get(), code, path);
    code->push_back(item->location,
                    new VmOpObjectCall(path.symbolize(function->name), function->arguments->size()));
}

void compile_path_index(const PathItem* item, CompiledCodeCollection* code, CodePath& path, compiler_type_info_st*) {
    const auto* index = static_cast<const IndexPathItem*>(item);
    compile_operand_list(index->subscripts.get(), code, path);
    code->push_back(item->location, new VmOpObjectRead(path.symbolize("[]"), index->subscripts->size()));
}

const std::unordered_map<int, item_fn> item_table = {
    {PATH_ITEM_NAME, compile_name_path_item},
    {PATH_ITEM_NAME_INDEX, compile_path_name_with_index},
    {PATH_ITEM_FUNCTION, compile_function_path_item},
    {PATH_ITEM_INDEX, compile_path_index},
};

void compile_name_path_item_ref(const PathItem* item, CompiledCodeCollection* code, CodePath& path,
                                compiler_type_info_st*) {
    code->push_back(item->location, new VmOpObjectReadPointer(path.symbolize(item_name(item)), 0));
}

void compile_function_path_item_ref(const PathItem* item, CompiledCodeCollection* code, CodePath& path,
                                    compiler_type_info_st*) {
    const auto* function = static_cast<const FunctionPathItem*>(item);
    compile_pass_parameters(function->arguments.get(), code, path);
    code->push_back(item->location,
                    new VmOpObjectCallPointer(path.symbolize(function->name), function->arguments->size()));
}

const std::unordered_map<int, item_fn> item_ref_table = {
    {PATH_ITEM_NAME, compile_name_path_item_ref},
    {PATH_ITEM_FUNCTION, compile_function_path_item_ref},
};

// `http.urlencode(x)` and its kin: dotted names of built-in functions.
bool compile_dotted_builtin(const Path* path_operand, CompiledCodeCollection* code, CodePath& path,
                            compiler_type_info_st* type) {
    if (path_operand->items.empty() || path_operand->root->kind != PATH_ITEM_NAME) return false;
    const PathItem* last = path_operand->items.back().get();
    if (last->kind != PATH_ITEM_FUNCTION) return false;
    std::string joined = item_name(path_operand->root.get()).u8str();
    for (size_t i = 0; i + 1 < path_operand->items.size(); ++i) {
        if (path_operand->items[i]->kind != PATH_ITEM_NAME) return false;
        joined += "." + item_name(path_operand->items[i].get()).u8str();
    }
    const auto* call = static_cast<const FunctionPathItem*>(last);
    joined += "." + call->name.u8str();
    const library_func_def_st* function = path.compiler->find_function(String(joined.c_str()));
    if (!function) return false;
    compile_call_spec_do(path_operand->location, *function, call->arguments.get(), code, path, type);
    return true;
}

// ---- intrinsics ----

void compile_intrinsic_iif(const document_location_st& location, const OperandList* arguments,
                           CompiledCodeCollection* code, CodePath& path, compiler_type_info_st* type) {
    if (arguments->size() != 3) {
        code->push_back(location, new VmOpReadConstNull());
        path.compiler->record_error(ERR_ARGUMENT_INVALID, location);
        *type = fresh_type();
        type->type = STATIC_TYPE_NULL | FORMAL_NULLABLE;
        return;
    }
    Compiler* compiler = path.compiler;
    AddressLabelRecord* else_label = compiler->create_addresslabel(String("iif else branch label"));
    AddressLabelRecord* end_label = compiler->create_addresslabel(String("iif end label"));
    __compiletime_compact_constexpr(arguments->at(0), code, path, type);
    code->push_back(location, jump_to<VmOpCondFalseOrNullJump>(else_label));
    __compiletime_compact_constexpr(arguments->at(1), code, path, type);
    code->push_back(location, jump_to<VmOpJump>(end_label));
    code->push_back(else_label);
    __compiletime_compact_constexpr(arguments->at(2), code, path, type);
    code->push_back(end_label);
    type->is_constant = false;
}

native_function native_handler(CodePath& path, const char* name) {
    const library_func_def_st* function = path.compiler->find_function(String(name));
    if (!function) raise_not_available(name);
    return function->handler;
}

// Leading arguments cast to text, the rest as they are, then the built-in.
void compile_object_factory(const document_location_st& location, const OperandList* arguments, size_t text_count,
                            const char* name, CompiledCodeCollection* code, CodePath& path,
                            compiler_type_info_st* type) {
    native_function handler = native_handler(path, name);
    code->push_back(location, new VmOpEspAlloc());
    for (size_t i = 0; i < arguments->size(); ++i) {
        compiler_type_info_st argument = fresh_type();
        __compiletime_compact_constexpr(arguments->at(i), code, path, &argument);
        if (i < text_count) code->push_back(location, new VmOpCastToStringImplicitly(false));
    }
    code->push_back(location, new VmOpCallNative(handler, arguments->size()));
    *type = fresh_type();
    type->type = FORMAL_OBJECT | FORMAL_NULLABLE;  // null when INIT refuses
}

void compile_intrinsic_createobject(const document_location_st& location, const OperandList* arguments,
                                    CompiledCodeCollection* code, CodePath& path, compiler_type_info_st* type) {
    compile_object_factory(location, arguments, 1, "createobject", code, path, type);
}

void compile_intrinsic_newobject(const document_location_st& location, const OperandList* arguments,
                                 CompiledCodeCollection* code, CodePath& path, compiler_type_info_st* type) {
    compile_object_factory(location, arguments, 3, "newobject", code, path, type);
}

void compile_intrinsic_dodefault(const document_location_st& location, const OperandList* arguments,
                                 CompiledCodeCollection* code, CodePath& path, compiler_type_info_st* type) {
    native_function handler = native_handler(path, "dodefault");
    code->push_back(location, new VmOpEspAlloc());
    code->push_back(location, new VmOpEspAlloc());
    compile_pass_parameters(arguments, code, path);
    // The second slot is argument 1, where the handler puts the object.
    code->push_back(location, new VmOpCallNative(handler, arguments->size() + 1));
    *type = fresh_type();
    type->type = STATIC_TYPE_UNKNOWN;
}

const std::unordered_map<unsigned, intrinsic_fn> intrinsic_table = {
    {SYMBOL_IIF, compile_intrinsic_iif},
    {SYMBOL_NEWOBJECT, compile_intrinsic_newobject},
    {SYMBOL_DODEFAULT, compile_intrinsic_dodefault},
    {SYMBOL_CREATEOBJECT, compile_intrinsic_createobject},
};

// ---- parameters against a signature ----

bool is_numeric_type(uint8_t code) {
    return code == FORMAL_INTEGER || code == FORMAL_NUMERIC || code == FORMAL_MONEY;
}

// A constant the cast could never accept.
bool constant_fits(const formal_st& formal, const compiler_type_info_st& actual) {
    uint8_t wanted = formal.type & 15, have = actual.type & 15;
    if (wanted == FORMAL_ANY) return (formal.type & FORMAL_NULLABLE) || have != STATIC_TYPE_NULL;
    if (have == STATIC_TYPE_NULL) return formal.type & FORMAL_NULLABLE;
    if (have == FORMAL_ANY || have == wanted) return true;
    if (is_numeric_type(wanted) && is_numeric_type(have)) return true;
    return (wanted == FORMAL_DATE || wanted == FORMAL_DATETIME) && (have == FORMAL_DATE || have == FORMAL_DATETIME);
}

// A variable or path can pass by reference; parentheses make it a value.
bool addressable(const Operand* operand) {
    if (operand->kind == OPERAND_REFERENCE) operand = static_cast<const Operand_Reference*>(operand)->inner.get();
    else if (operand->parenthesized) return false;
    return operand->kind == OPERAND_VARIABLE || operand->kind == OPERAND_PATH;
}

// ---- folding ----

// Runs constant code once, at compile time, on a stack of its own.
bool ____compiletime_eval_constexpr(const document_location_st& location, CompiledCodeCollection* scratch,
                                    CodePath& path, Variant* result) {
    ZO_TRACE();
    Compiler* compiler = path.compiler;
    scratch->push_back(new VmOpReturnValue());
    std::unique_ptr<Program> program(compiler->create_program(String("<____compiletime_eval_constexpr>"), scratch,
                                                              {}, 0, location, nullptr));
    LinkerInfo info{&compiler->symbols()};
    link_anonymous_program(info, program.get());
    VmStack* compiling = compiler->stack;
    DiscardScreen quiet;
    ScreenSwap swap(compiling->services, &quiet);
    VmStack stack(compiling->runtime, 1024, 64);
    stack.resolver = compiling->resolver;
    stack.services = compiling->services;
    try {
        execute_program(&stack, 0, false, program.get(), result);
    } catch (const RuntimeError& error) {
        compiler->record_error(error.number, location, error.parameter);
        return false;
    }
    return true;
}

}  // namespace

// ---- public entries ----

void compile_operand(const Operand* operand, bool stop_before_last, bool by_value, CompiledCodeCollection* code,
                     CodePath& path, compiler_type_info_st* type) {
    CompileDepth level(&path.compiler->expression_depth);
    if (path.compiler->expression_depth > MAX_EXPRESSION_DEPTH) throw RuntimeError(ERR_PARSER_STACK_EXHAUSTED);
    find_row(operand_table, operand->kind)(operand, stop_before_last, by_value, code, path, type);
}

void compile_operand_ref(const Operand* operand, CompiledCodeCollection* code, CodePath& path,
                         compiler_type_info_st* type) {
    *type = fresh_type();
    type->type = STATIC_TYPE_UNKNOWN;
    // Parentheses make a value, which falls to the case of no address.
    switch (operand->parenthesized ? OPERAND_CONST : operand->kind) {
    case OPERAND_REFERENCE:
        compile_operand_ref(static_cast<const Operand_Reference*>(operand)->inner.get(), code, path, type);
        return;
    case OPERAND_VARIABLE:
        compile_operand_variable_ref(static_cast<const Operand_Variable*>(operand), false, code, path);
        return;
    case OPERAND_PATH: compile_evaluate_path_ref(static_cast<const Path*>(operand), code, path, type); return;
    default:
        // A value has no address; the slot it would fill stays, so the code around it balances.
        path.compiler->record_error(ERR_RVALUE_BY_REFERENCE, operand->location);
        code->push_back(operand->location, new VmOpReadConstNull());
    }
}

void __compiletime_compact_constexpr(const Operand* operand, CompiledCodeCollection* code, CodePath& path,
                                     compiler_type_info_st* type) {
    CompiledCodeCollection scratch(path.compiler);
    *type = fresh_type();
    compile_operand(operand, false, true, &scratch, path, type);
    if (!type->is_constant || scratch.size() <= 1) {
        code->splice_back(scratch);
        return;
    }
    Variant value;
    if (!____compiletime_eval_constexpr(operand->location, &scratch, path, &value)) {
        value.release(path.compiler->stack);
        code->push_back(operand->location, new VmOpReadConstNull());
        return;
    }
    compile_const_generic(operand->location, value, code, type);
    value.release(path.compiler->stack);
}

bool evaluate_at_compile_time(const Operand* operand, CodePath& path, Variant* result) {
    CompiledCodeCollection scratch(path.compiler);
    compiler_type_info_st type = fresh_type();
    size_t errors = path.compiler->errors.size();
    compile_operand(operand, false, true, &scratch, path, &type);
    if (path.compiler->errors.size() != errors) return false;
    return ____compiletime_eval_constexpr(operand->location, &scratch, path, result);
}

void compile_operand_list(const OperandList* operands, CompiledCodeCollection* code, CodePath& path) {
    for (const operand_ptr& operand : operands->items) {
        compiler_type_info_st type = fresh_type();
        compile_operand(operand.get(), false, true, code, path, &type);
    }
}

void compile_pass_parameters(const OperandList* operands, CompiledCodeCollection* code, CodePath& path) {
    for (const operand_ptr& operand : operands->items) {
        compiler_type_info_st type = fresh_type();
        if (operand->kind == OPERAND_REFERENCE) compile_operand_ref(operand.get(), code, path, &type);
        else __compiletime_compact_constexpr(operand.get(), code, path, &type);
    }
}

void compile_const_generic(const document_location_st& location, const Variant& value,
                           CompiledCodeCollection* code, compiler_type_info_st* type) {
    switch (value.tag) {
    case TAG_FALSE: code->push_back(location, new VmOpReadConstFalse()); set_constant(type, FORMAL_LOGICAL); return;
    case TAG_TRUE: code->push_back(location, new VmOpReadConstTrue()); set_constant(type, FORMAL_LOGICAL); return;
    case TAG_NULL:
        code->push_back(location, new VmOpReadConstNull());
        set_constant(type, STATIC_TYPE_NULL | FORMAL_NULLABLE);
        return;
    case TAG_INTEGER:
        code->push_back(location, new VmOpReadConstInteger(value.integer));
        set_constant(type, FORMAL_INTEGER);
        return;
    case TAG_NUMERIC:
        code->push_back(location, new VmOpReadConstNumeric(value.numeric));
        set_constant(type, FORMAL_NUMERIC);
        return;
    case TAG_MONEY:
        code->push_back(location, new VmOpReadConstMoney(value.money));
        set_constant(type, FORMAL_MONEY);
        return;
    case TAG_DATE:
        code->push_back(location, new VmOpReadConstDate(value.date));
        set_constant(type, FORMAL_DATE);
        return;
    case TAG_DATETIME:
        code->push_back(location, new VmOpReadConstDatetime(value.datetime));
        set_constant(type, FORMAL_DATETIME);
        return;
    case TAG_STRING: {
        String text = static_cast<String>(value);
        code->push_back(location, new VmOpReadConstString(text));
        set_constant(type, FORMAL_STRING);
        type->length = text.length();
        return;
    }
    default: raise_not_available("constant of this type");
    }
}

void compile_read_variable(const document_location_st& location, unsigned symbol, bool memvar_only, bool or_false,
                           CompiledCodeCollection* code, CodePath& path, compiler_type_info_st* type) {
    *type = fresh_type();
    type->type = STATIC_TYPE_UNKNOWN;
    if (memvar_only || is_method_this(symbol, path)) {
        unsigned long long offset;
        bool certain = false;
        if (path.variable_get(symbol, &offset, &certain) && certain)
            code->push_back(location, new VmOpReadLocalMemvarByOffset(offset));
        else if (or_false)
            code->push_back(location, new VmOpReadMemvarOrFalse(symbol));
        else
            code->push_back(location, new VmOpReadMemvarByName(symbol));
        return;
    }
    Compiler* compiler = path.compiler;
    if (compiler->table) {
        for (const compiler_field_st& field : compiler->table->fields) {
            if (field.symbol != symbol) continue;
            switch (field.field_type) {
            case 1:
            case 10: type->type = FORMAL_STRING; type->length = LENGTH_UNBOUNDED; break;
            case 2:
            case 13:
            case 14: type->type = FORMAL_STRING; type->length = field.width; break;
            case 3: type->type = FORMAL_INTEGER; break;
            case 4: type->type = FORMAL_MONEY; break;
            case 5: type->type = FORMAL_DATE; break;
            case 6: type->type = FORMAL_DATETIME; break;
            case 7:
            case 11:
            case 12: type->type = FORMAL_NUMERIC; break;
            case 9: type->type = FORMAL_LOGICAL; break;
            default: throw assert_failed_exception("field type without a static type");
            }
            code->push_back(location, new VmOpReadFieldByIndex(field.index));
            return;
        }
    }
    String name = compiler->symbols().resolve(symbol);
    if (const library_func_def_st* reader = compiler->find_variable_reader(name)) {
        OperandList none;
        compile_call_spec_do(location, *reader, &none, code, path, type);
        return;
    }
    unsigned long long offset;
    bool certain = false;
    if (path.variable_get(symbol, &offset, &certain) && certain)
        code->push_back(location, new VmOpReadBareLocal(offset, symbol));
    else
        code->push_back(location, new VmOpReadByName(symbol));
}

void compile_operand_variable_ref(const Operand_Variable* variable, bool create, CompiledCodeCollection* code,
                                  CodePath& path) {
    unsigned symbol = path.symbolize(variable->name);
    if (create) code->push_back(variable->location, new VmOpReadMemvarPointerCreate(symbol));
    else code->push_back(variable->location, new VmOpReadMemvarPointerByName(symbol));
}

unsigned long long this_member_root(const Path* path_operand, CodePath& path) {
    const PathItem* root = path_operand->root.get();
    if (root->kind != PATH_ITEM_NAME || path_operand->items.empty() ||
        path_operand->items[0]->kind != PATH_ITEM_NAME)
        return 0;
    unsigned symbol = path.symbolize(item_name(root));
    unsigned long long offset = 0;
    bool certain = false;
    if (!is_method_this(symbol, path) || !path.variable_get(symbol, &offset, &certain) || !certain) return 0;
    return offset;
}

// The symbol of a path's root name when the root and the first member read
// go as one ReadNameMember: a name read as an alias or else a variable,
// then a property without subscripts; 0 otherwise.
unsigned name_member_root(const Path* path_operand, CodePath& path) {
    const PathItem* root = path_operand->root.get();
    if (root->kind != PATH_ITEM_NAME || path_operand->memvar_root || path_operand->items[0]->kind != PATH_ITEM_NAME)
        return 0;
    unsigned symbol = path.symbolize(item_name(root));
    return is_method_this(symbol, path) ? 0 : symbol;
}

void compile_evaluate_path(const Path* path_operand, bool stop_before_last, CompiledCodeCollection* code,
                           CodePath& path, compiler_type_info_st* type) {
    *type = fresh_type();
    type->type = STATIC_TYPE_UNKNOWN;
    if (!stop_before_last && compile_dotted_builtin(path_operand, code, path, type)) return;
    size_t count = path_operand->items.size() - (stop_before_last && !path_operand->items.empty() ? 1 : 0);
    unsigned long long this_offset = count ? this_member_root(path_operand, path) : 0;
    unsigned name_root = count && !this_offset ? name_member_root(path_operand, path) : 0;
    size_t first = this_offset || name_root ? 1 : 0;
    for (size_t i = first; i < count; ++i) code->push_back(path_operand->location, new VmOpEspAlloc());
    if (this_offset) {
        const PathItem* item = path_operand->items[0].get();
        code->push_back(item->location, new VmOpReadThisMember(this_offset, path.symbolize(item_name(item))));
    } else if (name_root) {
        const PathItem* item = path_operand->items[0].get();
        code->push_back(item->location, new VmOpReadNameMember(name_root, path.symbolize(item_name(item))));
    } else {
        find_row(root_table, path_operand->root->kind)(path_operand, path_operand->root.get(), code, path, type);
    }
    for (size_t i = first; i < count; ++i) {
        const PathItem* item = path_operand->items[i].get();
        find_row(item_table, item->kind)(item, code, path, type);
    }
    *type = fresh_type();
    type->type = STATIC_TYPE_UNKNOWN;
}

void compile_evaluate_path_ref(const Path* path_operand, CompiledCodeCollection* code, CodePath& path,
                               compiler_type_info_st* type) {
    *type = fresh_type();
    type->type = STATIC_TYPE_UNKNOWN;
    size_t count = path_operand->items.size();
    if (count == 0) {
        // A lone root: the variable itself by reference.
        const PathItem* root = path_operand->root.get();
        find_row(root_ref_table, root->kind);
        unsigned symbol = root->kind == PATH_ITEM_WITH ? (path.with_stack.empty() ? 0 : path.with_stack.back())
                                                       : path.symbolize(item_name(root));
        if (!symbol) {
            path.compiler->record_error(ERR_OUTSIDE_WITH, root->location);
            code->push_back(root->location, new VmOpReadConstNull());
            return;
        }
        code->push_back(root->location, new VmOpReadMemvarPointerByName(symbol));
        return;
    }
    const PathItem* last = path_operand->items.back().get();
    auto ref_row = item_ref_table.find(last->kind);
    if (ref_row == item_ref_table.end()) {
        path.compiler->record_error(ERR_RVALUE_BY_REFERENCE, last->location);
        code->push_back(path_operand->location, new VmOpReadConstNull());
        return;
    }
    for (size_t i = 0; i < count; ++i) code->push_back(path_operand->location, new VmOpEspAlloc());
    find_row(root_table, path_operand->root->kind)(path_operand, path_operand->root.get(), code, path, type);
    for (size_t i = 0; i + 1 < count; ++i) {
        const PathItem* item = path_operand->items[i].get();
        find_row(item_table, item->kind)(item, code, path, type);
    }
    ref_row->second(last, code, path, type);
}

void compile_cast_to_formal(const document_location_st& location, const formal_st& formal,
                            const compiler_type_info_st& actual, CompiledCodeCollection* code) {
    uint8_t wanted = formal.type & 15;
    bool allow_null = formal.type & FORMAL_NULLABLE;
    bool known = actual.type != 0 && (actual.type & 15) != 0 && (actual.type & 15) != STATIC_TYPE_NULL;
    bool fits = known && (actual.type & 15) == wanted && (allow_null || !(actual.type & FORMAL_NULLABLE));
    switch (wanted) {
    case FORMAL_ANY:
        if (!allow_null && !(known && !(actual.type & FORMAL_NULLABLE)))
            code->push_back(location, new VmOpCheckNotNull());
        return;
    case FORMAL_OBJECT: code->push_back(location, new VmOpCastToObjectImplicitly(allow_null)); return;
    case FORMAL_ARRAY: {
        uint8_t flags = (formal.by_reference ? ARGUMENT_BY_REFERENCE : 0) |
                        (formal.reference_if_possible ? ARGUMENT_MAY_BE_REFERENCE : 0) |
                        (allow_null ? ARGUMENT_NULL_ALLOWED : 0);
        code->push_back(location, new VmOpCheckArgument(TAG_ARRAY, flags));
        return;
    }
    default: break;
    }
    if (fits) return;
    switch (wanted) {
    case FORMAL_LOGICAL: code->push_back(location, new VmOpCastToBooleanImplicitly(allow_null)); return;
    case FORMAL_INTEGER: code->push_back(location, new VmOpCastToIntegerImplicitly(allow_null)); return;
    case FORMAL_NUMERIC: code->push_back(location, new VmOpCastToNumericImplicitly(allow_null)); return;
    case FORMAL_MONEY: code->push_back(location, new VmOpCastToMoneyImplicitly(allow_null)); return;
    case FORMAL_DATE: code->push_back(location, new VmOpCastToDateImplicitly(allow_null)); return;
    case FORMAL_DATETIME: code->push_back(location, new VmOpCastToDatetimeImplicitly(allow_null)); return;
    case FORMAL_STRING: code->push_back(location, new VmOpCastToStringImplicitly(allow_null)); return;
    default: throw assert_failed_exception("formal type without a cast");
    }
}

void compile_call_pass_parameters(const document_location_st& location, const function_signature_st& signature,
                                  const OperandList* operands, CompiledCodeCollection* code, CodePath& path,
                                  std::vector<compiler_type_info_st>* argument_types,
                                  std::vector<Variant>* constant_values) {
    size_t count = operands->size();
    if (count < signature.required || (count > signature.formals.size() && !signature.variadic))
        path.compiler->record_error(ERR_ARGUMENT_INVALID, location);
    // Sized once: copying a Variant takes a reference that nothing would give back.
    if (argument_types) argument_types->assign(count, fresh_type());
    if (constant_values) constant_values->resize(count);
    for (size_t i = 0; i < count; ++i) {
        const Operand* operand = operands->at(i);
        const formal_st& formal = i < signature.formals.size() ? signature.formals[i] : signature.variadic_formal;
        compiler_type_info_st actual = fresh_type();
        Variant unused;
        Variant& constant = constant_values ? (*constant_values)[i] : unused;
        bool by_reference = formal.by_reference || (formal.reference_if_possible && addressable(operand));
        if (by_reference) {
            if (formal.may_create && operand->kind == OPERAND_VARIABLE)
                compile_operand_variable_ref(static_cast<const Operand_Variable*>(operand), true, code, path);
            else
                compile_operand_ref(operand, code, path, &actual);
            // An array passed by reference is checked like one passed by value.
            if ((formal.type & 15) == FORMAL_ARRAY) compile_cast_to_formal(operand->location, formal, actual, code);
        } else {
            __compiletime_compact_constexpr(operand, code, path, &actual);
            if (actual.is_constant) {
                if (!constant_fits(formal, actual)) path.compiler->record_error(ERR_ARGUMENT_INVALID, operand->location);
                constant_of(code->last_instruction(), &constant);
            }
            compile_cast_to_formal(operand->location, formal, actual, code);
        }
        if (argument_types) (*argument_types)[i] = actual;
        unused.release(path.compiler->stack);
    }
}

void compile_call_spec_do(const document_location_st& location, const library_func_def_st& function,
                          const OperandList* operands, CompiledCodeCollection* code, CodePath& path,
                          compiler_type_info_st* type) {
    code->push_back(location, new VmOpEspAlloc());
    std::vector<compiler_type_info_st> argument_types;
    std::vector<Variant> constant_values;
    size_t errors_before = path.compiler->errors.size();
    compile_call_pass_parameters(location, function.parameters, operands, code, path, &argument_types,
                                 &constant_values);
    // Hooks rely on arguments that match the signature.
    bool arguments_fit = path.compiler->errors.size() == errors_before;
    *type = fresh_type();
    if (!function.result.formals.empty()) type->type = function.result.formals[0].type;
    compile_hook_fn hook = nullptr;
    for (const Library* library : path.compiler->libraries)
        if ((hook = library->find_compile_hook(function.name))) break;
    if (hook && arguments_fit) hook(argument_types.size(), argument_types.data(), constant_values.data(), type);
    for (Variant& value : constant_values) value.release(path.compiler->stack);
    code->push_back(location, new VmOpCallNative(function.handler, operands->size()));
}

void compile_call_spec_void_core(const document_location_st& location, const library_command_def_st& command,
                                 const OperandList* operands, CompiledCodeCollection* code, CodePath& path) {
    compile_call_pass_parameters(location, command.parameters, operands, code, path, nullptr, nullptr);
    code->push_back(location, new VmOpCallNativeVoid(command.handler, operands->size()));
}

void compile_call(const document_location_st& location, const String& name, const OperandList* operands,
                  CompiledCodeCollection* code, CodePath& path, compiler_type_info_st* type) {
    auto intrinsic = intrinsic_table.find(path.symbolize(name));
    if (intrinsic != intrinsic_table.end()) {
        intrinsic->second(location, operands, code, path, type);
        return;
    }
    if (const library_func_def_st* function = path.compiler->find_function(name)) {
        compile_call_spec_do(location, *function, operands, code, path, type);
        return;
    }
    *type = fresh_type();
    type->type = STATIC_TYPE_UNKNOWN;
    code->push_back(location, new VmOpEspAlloc());
    compile_pass_parameters(operands, code, path);
    code->push_back(location, new VmOpUnresolvedCall(name, operands->size()));
}

void compile_eval_macro(const document_location_st&, const MacroItem* items, size_t count,
                        CompiledCodeCollection* code, CodePath& path) {
    for (size_t i = 0; i < count; ++i) {
        const MacroItem& item = items[i];
        if (item.kind == 'S') {
            code->push_back(item.location, new VmOpReadConstString(item.text));
        } else if (item.kind == 'V') {
            compiler_type_info_st type = fresh_type();
            compile_read_variable(item.location, path.symbolize(item.text), false, false, code, path, &type);
            code->push_back(item.location, new VmOpCastToStringImplicitly(false));
        } else {
            throw assert_failed_exception("macro item of unknown kind");
        }
    }
}

}  // namespace zobase
