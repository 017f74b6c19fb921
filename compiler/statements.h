#pragma once
// What the statement families share: assignment to any target, native
// command calls, and the small helpers every statement routine needs.
#include <cstddef>
#include <functional>
#include <string>

#include "compiler/compiler.h"

namespace zobase {

void register_control_flow_statements(StatementTable& table);
void register_try_statements(StatementTable& table);
void register_declaration_statements(StatementTable& table);
void register_native_command_statements(StatementTable& table);
void register_text_merge_statements(StatementTable& table);

// Stores `value` into a variable, array element or property.
void compile_assign(const Operand* target, const Operand* value, CompiledCodeCollection* code, CodePath& path);
typedef std::function<void()> value_emitter;
// Stores what `emit_value` leaves on the stack, compiled where the target's
// shape wants the value.
void compile_assign_with(const Operand* target, const value_emitter& emit_value, CompiledCodeCollection* code,
                         CodePath& path);
void compile_dimension(const document_location_st& location, const Operand* target, const OperandList* subscripts,
                       CompiledCodeCollection* code, CodePath& path);

// PRIVATE ALL LIKE / EXCEPT: "*" any run, "?" one character, the rest as is.
std::string compile_private_rx_pattern(const String& pattern);

// A native command by its statement type and its clauses.
void compile_basic_command(const BasicCommand* command, CompiledCodeCollection* code, CodePath& path);

// Built-ins the compiler itself calls; a missing one is error 1001.
const library_func_def_st& require_function(CodePath& path, const char* name);
const library_command_def_st& require_command(CodePath& path, const char* name);
// A folding compile whose static type nobody asks for.
void compile_value(const Operand* operand, CompiledCodeCollection* code, CodePath& path);
// The current value of a target that may not exist yet; a missing variable reads as false.
void compile_target_argument(const Operand* target, CompiledCodeCollection* code, CodePath& path);
// A read of a compiler-made variable.
void compile_read_temp(const Operand_Variable* temp, CompiledCodeCollection* code, CodePath& path);

// Constants that statement routines pass to the built-ins they call.
inline Const_Value* new_integer_constant(long long value) {
    auto* constant = new Const_Value();
    constant->value.set_integer(value);
    return constant;
}
// The absent placeholder: a handler sees a clause that wasn't given as null.
inline Const_Value* new_null_constant() {
    auto* constant = new Const_Value();
    constant->value.set_null();
    return constant;
}

// An argument list that lends its operands: it never deletes them.
class BorrowedOperands {
public:
    BorrowedOperands() = default;
    BorrowedOperands(const BorrowedOperands&) = delete;
    BorrowedOperands& operator=(const BorrowedOperands&) = delete;
    ~BorrowedOperands() {
        for (operand_ptr& item : list.items) static_cast<void>(item.release());
    }
    void add(const Operand* operand) { list.items.emplace_back(const_cast<Operand*>(operand)); }
    // Takes ownership; for operands made by the compiler itself.
    void own(Operand* operand) { owned.emplace_back(operand), add(operand); }
    const OperandList* get() const noexcept { return &list; }
    size_t size() const noexcept { return list.size(); }

private:
    std::vector<operand_ptr> owned;
    OperandList list;
};

// Where each line of a merged text begins in the source, the first line first.
typedef std::vector<document_position_st> text_line_starts;

// Splits text at "<<" and ">>" into pairs: 0 and a literal, 1 and a field's
// expression, whose locations are its place in the source. A field that
// fails to parse is error 10.
void create_merge_list(CodePath& path, const String& text, const text_line_starts& lines,
                       BorrowedOperands& list);

}  // namespace zobase
