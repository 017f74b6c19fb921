#include "objects/operand_object.h"

#include <cstring>

#include "base/call_trace.h"
#include "text/collation.h"
#include "values/error.h"
#include "vm/vm_run.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// "evaluate" has no fixed symbol: the text is compared instead.
bool is_evaluate(VmStack* stack, unsigned symbol) {
    static const String evaluate("evaluate");
    return StringEqual_Unicode_Machine_CI{}(stack->symbol_text(symbol), evaluate);
}

}  // namespace

Operand_Object::Operand_Object(std::unique_ptr<Program> program) : program_(std::move(program)) {}

void Operand_Object::virtual_call(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    if (!is_evaluate(stack, symbol)) throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
    if (argc) throw RuntimeError(ERR_ARGUMENT_INVALID);
    evaluate_program(stack, program_.get(), ret);
}

void Operand_Object::virtual_access(VmStack* stack, unsigned symbol, size_t, Variant*) {
    throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
}

void Operand_Object::virtual_access_ref(VmStack* stack, unsigned symbol, size_t, Variant*) {
    throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
}

void Operand_Object::virtual_assign(VmStack* stack, unsigned symbol, size_t) {
    throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
}

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

void create_operand_object(std::unique_ptr<Program> program, Variant* dest) {
    ZO_TRACE();
    auto object = std::make_unique<Operand_Object>(std::move(program));
    dest->set_new_object(object.get());
    object.release();
}

}  // namespace zobase
