#pragma once
// What the macro forms of IF, DO WHILE and SCAN keep in their temporary: the
// condition's text compiled once, when the statement is first reached, and
// evaluated each time through the member "evaluate" without arguments. The
// built-in class "Operand", which can't be created by name.
#include <memory>

#include "objects/class.h"
#include "values/variant.h"
#include "vm/object.h"
#include "vm/program.h"

namespace zobase {

class Operand_Object : public Object {
public:
    Operand_Object(Class* object_class, std::unique_ptr<Program> program);

    std::unique_ptr<Program> program;
};

extern const builtin_class_data_st operand_class_data;
extern const library_class_member_row_st operand_members[];

// Runs a program that ends in VmOpReturnValue on the calling stack, in the
// running frame, so that it sees the variables of the code around it.
// `ret` must be clean.
void evaluate_program(VmStack* stack, const Program* program, Variant* ret);

// A new operand object over `program` as the value of dest, which must be clean.
void create_operand_object(VmStack* stack, std::unique_ptr<Program> program, Variant* dest);

}  // namespace zobase
