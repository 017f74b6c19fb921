// The built-ins behind macro text at run time: the one-time compile of a
// macro condition of IF and DO WHILE, and evaluate().
#include <strings.h>

#include <cstring>

#include <string>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "compiler/discard_screen.h"
#include "objects/operand_object.h"
#include "vm/call_resolver.h"
#include "vm/error_handling.h"
#include "vm/param.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// The assembled text is the statement's keyword followed by the condition.
String condition_after_keyword(const String& text, const char* keyword) {
    std::string whole = text.u8str();
    size_t length = std::strlen(keyword);
    if (whole.size() < length || strncasecmp(whole.c_str(), keyword, length) != 0) throw RuntimeError(ERR_SYNTAX);
    return String(whole.c_str() + length);
}

// Compiles the condition once and leaves the object in the by-reference temporary.
void init_condition_from_macro(VmStack* stack, const char* keyword, Variant* result) {
    ZO_TRACE();
    String condition = condition_after_keyword(string_argument(stack, 1), keyword);
    std::unique_ptr<Program> program = stack->resolver->compile_expression(stack, condition);
    Variant* temporary = Param(stack, 2)->follow();
    temporary->release(stack);
    create_operand_object(stack, std::move(program), temporary);
    result->set_true();
}

}  // namespace

void stackcall___init_if_from_macro(VmStack* stack, unsigned long long, Variant* result) {
    init_condition_from_macro(stack, "IF", result);
}

void stackcall___init_do_while_from_macro(VmStack* stack, unsigned long long, Variant* result) {
    init_condition_from_macro(stack, "DO WHILE", result);
}

// SCAN's FOR and WHILE clauses need the table engine's scope parsing.
void stackcall___init_scan_from_macro(VmStack*, unsigned long long, Variant*) {
    raise_not_available("scan");
}

void stackcall_evaluate(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    std::unique_ptr<Program> program = stack->resolver->compile_expression(stack, string_argument(stack, 1));
    evaluate_program(stack, program.get(), result);
}

// The type letter of the value of an expression's text: "U" when the text
// doesn't compile or its evaluation fails. Neither the compiler's
// diagnostics nor the error dialog are shown, and no outer TRY sees the error.
void stackcall_type(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    const Variant& text = argument(stack, 1);
    if (text.tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    NativeErrorCatch catching(stack);
    try {
        std::unique_ptr<Program> program;
        {
            DiscardScreen quiet;
            ScreenSwap swap(stack->services, &quiet);
            program = stack->resolver->compile_expression(stack, text.str());
        }
        Variant value;
        evaluate_program(stack, program.get(), &value);
        result->set_string(value.vartype());
        value.release(stack);
    } catch (const RuntimeError&) {
        result->set_string(String("U"));
    }
}

}  // namespace zobase
