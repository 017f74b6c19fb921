#pragma once
// What the macro forms of IF, DO WHILE and SCAN keep in their temporary: the
// condition's text compiled once, when the statement is first reached, and
// evaluated each time through the member "evaluate" without arguments.
#include <memory>

#include "objects/object.h"
#include "values/variant.h"
#include "vm/program.h"

namespace zobase {

class Operand_Object : public Object {
public:
    explicit Operand_Object(std::unique_ptr<Program> program);

    void virtual_call(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_access_ref(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_assign(VmStack* stack, unsigned symbol, size_t argc) override;

private:
    std::unique_ptr<Program> program_;
};

// Runs a program that ends in VmOpReturnValue on the calling stack, in the
// running frame, so that it sees the variables of the code around it.
// `ret` must be clean.
void evaluate_program(VmStack* stack, const Program* program, Variant* ret);

// A new operand object over `program` as the value of dest, which must be clean.
void create_operand_object(std::unique_ptr<Program> program, Variant* dest);

}  // namespace zobase
