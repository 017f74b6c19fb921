#include "objects/operand_object.h"

#include <cstring>

#include "base/call_trace.h"
#include "objects/native_members.h"
#include "values/error.h"
#include "vm/vm_run.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

void evaluate_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    require_arguments(argc, 0, 0);
    evaluate_program(stack, current_object<Operand_Object>(stack)->program.get(), ret);
}

}  // namespace

const builtin_class_data_st operand_class_data = {nullptr, false};

const library_class_member_row_st operand_members[] = {
    {"evaluate", evaluate_call, nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

Operand_Object::Operand_Object(Class* object_class, std::unique_ptr<Program> compiled)
    : Object(object_class), program(std::move(compiled)) {}

void evaluate_program(VmStack* stack, const Program* program, Variant* ret) {
    VmOp** ip = const_cast<VmOp**>(program->code());
    Variant result;
    try {
        EvaluationLevel level(stack);
        vm_run(stack, &ip, &result);
    } catch (...) {
        result.release(stack);
        throw;
    }
    std::memcpy(static_cast<void*>(ret), static_cast<const void*>(&result), sizeof(Variant));
}

void create_operand_object(VmStack* stack, std::unique_ptr<Program> program, Variant* dest) {
    ZO_TRACE();
    wrap_new_object(new Operand_Object(builtin_class(stack, "Operand"), std::move(program)), dest);
}

}  // namespace zobase
