#pragma once
// Operand trees to stack-machine code, with what is statically known about
// each value. Every operand kind, constant kind, operator and path item has
// its routine in a table keyed by its kind number; a kind with no row is
// error 1001 at compile time.
#include <cstddef>

#include "compiler/compiler.h"

namespace zobase {

// Static type codes beyond the formal types: null itself, and "nothing known".
constexpr uint8_t STATIC_TYPE_NULL = 4;
constexpr uint8_t STATIC_TYPE_UNKNOWN = FORMAL_NULLABLE;
// A string of unbounded width: every bit but the lowest.
constexpr uint64_t LENGTH_UNBOUNDED = ~uint64_t(1);

// The general entry. `by_value` makes `@x` read x; `stop_before_last` leaves
// out the last item of a path, for an assignment to it.
void compile_operand(const Operand* operand, bool stop_before_last, bool by_value, CompiledCodeCollection* code,
                     CodePath& path, compiler_type_info_st* type);
// The by-reference form: a variable or a path; anything else is 9004.
void compile_operand_ref(const Operand* operand, CompiledCodeCollection* code, CodePath& path,
                         compiler_type_info_st* type);
// Compiles with constant folding; what every statement uses for its expressions.
void __compiletime_compact_constexpr(const Operand* operand, CompiledCodeCollection* code, CodePath& path,
                                     compiler_type_info_st* type);
void compile_operand_list(const OperandList* operands, CompiledCodeCollection* code, CodePath& path);
// Arguments of a callee unknown at compile time.
void compile_pass_parameters(const OperandList* operands, CompiledCodeCollection* code, CodePath& path);

void compile_call(const document_location_st& location, const String& name, const OperandList* operands,
                  CompiledCodeCollection* code, CodePath& path, compiler_type_info_st* type);
// A built-in function: result slot, arguments against the signature, the call.
void compile_call_spec_do(const document_location_st& location, const library_func_def_st& function,
                          const OperandList* operands, CompiledCodeCollection* code, CodePath& path,
                          compiler_type_info_st* type);
// A built-in command called for its effect: arguments against the signature, the call.
void compile_call_spec_void_core(const document_location_st& location, const library_command_def_st& command,
                                 const OperandList* operands, CompiledCodeCollection* code, CodePath& path);
// Arguments of a known built-in: count and constant types checked (error 11),
// references, folding and the casts the static types do not spare.
void compile_call_pass_parameters(const document_location_st& location, const function_signature_st& signature,
                                  const OperandList* operands, CompiledCodeCollection* code, CodePath& path,
                                  std::vector<compiler_type_info_st>* argument_types,
                                  std::vector<Variant>* constant_values);

void compile_read_variable(const document_location_st& location, unsigned symbol, bool memvar_only, bool or_false,
                           CompiledCodeCollection* code, CodePath& path, compiler_type_info_st* type);
void compile_operand_variable_ref(const Operand_Variable* variable, bool create, CompiledCodeCollection* code,
                                  CodePath& path);
// The slot of THIS when a path starts with THIS.name in a method, which one
// instruction reads or writes; 0 otherwise.
unsigned long long this_member_root(const Path* path_operand, CodePath& path);
void compile_evaluate_path(const Path* path_operand, bool stop_before_last, CompiledCodeCollection* code,
                           CodePath& path, compiler_type_info_st* type);
void compile_evaluate_path_ref(const Path* path_operand, CompiledCodeCollection* code, CodePath& path,
                               compiler_type_info_st* type);
// One read instruction for a value; sets the type record.
void compile_const_generic(const document_location_st& location, const Variant& value,
                           CompiledCodeCollection* code, compiler_type_info_st* type);
// Pieces of a macro line: text as constants, variables read and cast to text.
void compile_eval_macro(const document_location_st& location, const MacroItem* items, size_t count,
                        CompiledCodeCollection* code, CodePath& path);

// Runs an expression once, at compile time, on a stack of its own (a class
// property's default). A failure is recorded at the operand and gives false.
bool evaluate_at_compile_time(const Operand* operand, CodePath& path, Variant* result);

// Emits the cast a formal asks for, unless the static type already fits.
void compile_cast_to_formal(const document_location_st& location, const formal_st& formal,
                            const compiler_type_info_st& actual, CompiledCodeCollection* code);

}  // namespace zobase
