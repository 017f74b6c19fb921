#pragma once
// The work of the instructions that the dispatch loop hands off: naming
// variables, calls, subscripts and object members. Each leaves `esp` as the
// instruction table says.
#include <cstdint>

#include "vm/vm_op.h"
#include "vm/vm_stack.h"

namespace zobase {

class Program;
struct library_function_st;

// Raises `number` with the symbol's text as the detail.
[[noreturn]] void raise_named(VmStack* stack, int number, uint32_t symbol);
// get_memvar, raising 12 with the name when nothing is visible.
Memvar* find_memvar(VmStack* stack, uint32_t symbol);

void def_local(VmStack* stack, uint32_t symbol);
void def_local_offset(VmStack* stack, uint64_t offset, uint32_t symbol);
void def_private_symbol(VmStack* stack, uint32_t symbol);
void def_public_offset(VmStack* stack, uint64_t offset, uint32_t symbol);
void init_lparameters(VmStack* stack, uint64_t n);
void init_parameter(VmStack* stack, uint64_t offset, uint32_t symbol);

// A bare name: a field of the expression table or of the current work area
// hides a variable. Pushes the value. Both ask the stack's DataSessions.
void read_by_name(VmStack* stack, uint32_t symbol);
// An alias of an open work area pushes the work area's object, else the variable.
void read_file_object_or_memvar(VmStack* stack, uint32_t symbol);
// Pushes a field of the expression table by its position.
void read_expression_field(VmStack* stack, uint16_t index);

// The element at the n subscripts that lie from `first` downward: 1 or 2 of
// them, else 11; outside the array 1234. Writing unshares the array first.
const Variant* array_element(const Array& array, const Memvar* first, uint64_t n);
Variant* array_element_for_write(VmStack* stack, Array& array, const Memvar* first, uint64_t n);

// The n subscripts are the n slots from esp up, subscript 1 the highest.
// An object in place of the array answers through its default member.
void read_array_item(VmStack* stack, Variant* array, uint64_t n, Variant* dest);
// The value is at esp, the n subscripts above it.
void write_array_item(VmStack* stack, Variant* array, uint64_t n);

void call_user_function(VmStack* stack, const VmOpCallUserFunction& op);
void call_native(VmStack* stack, native_function handler, uint64_t n);
void call_native_void(VmStack* stack, native_command handler, uint64_t n);
void call_by_name(VmStack* stack, uint32_t symbol, uint64_t n);
void check_argument(VmStack* stack, const VmOpCheckArgument& op);
// Converts the n arguments to the declared parameter types (94 for too
// many, 11 for too few or a pair with no conversion).
void convert_library_arguments(VmStack* stack, const library_function_st& function, uint64_t n);

void object_call(VmStack* stack, uint32_t symbol, uint64_t n);
void object_call_pointer(VmStack* stack, uint32_t symbol, uint64_t n);
void object_read(VmStack* stack, uint32_t symbol, uint64_t n);
void object_read_pointer(VmStack* stack, uint32_t symbol, uint64_t n);
void object_write(VmStack* stack, uint32_t symbol, uint64_t n);

}  // namespace zobase
