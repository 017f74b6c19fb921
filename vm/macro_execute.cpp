#include "vm/macro_execute.h"

#include <cstring>
#include <memory>

#include "base/call_trace.h"
#include "values/error.h"
#include "vm/call_resolver.h"
#include "vm/program.h"
#include "vm/scoped_flag.h"
#include "vm/vm_run.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

String pop_macro_text(VmStack* stack) {
    if (stack->esp->tag != TAG_STRING) throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    String text = stack->esp->str();
    stack->pop();
    return text;
}

// Where the macro statement stands in its frame's source. An ip outside the
// frame's own code (a macro inside a macro) has no entry either.
document_location_st written_location(const VmFrame* frame, VmOp* const* ip) {
    const Program* program = frame->program;
    VmOp* const* code = program->code();
    document_location_st location{};
    bool inside = ip >= code && ip < code + program->size();
    if (!inside || !program->location_of(static_cast<size_t>(ip - code), &location))
        throw RuntimeError(ERR_RECURSIVE_MACRO);
    return location;
}

// The program of the text, compiled once per text, charset, frame program
// and place (see vm/macro_cache.h).
std::shared_ptr<Program> compiled_macro(VmStack* stack, const String& text,
                                        const document_location_st* written_at, VmOp* const* ip) {
    const VmFrame* frame = stack->frame;
    macro_key_st key{std::string(text.read(), text.size()), text.get_charset(),
                     frame ? frame->program->id : 0,
                     frame ? static_cast<uint64_t>(ip - frame->program->code()) : 0};
    if (std::shared_ptr<Program> kept = stack->macro_cache.find(key)) return kept;
    std::shared_ptr<Program> program = stack->resolver->compile_macro(stack, text, written_at);
    stack->macro_cache.keep(std::move(key), program);
    return program;
}

}  // namespace

bool macro_execute(VmStack* stack, VmOp** const* ip, Variant* ret) {
    ZO_TRACE();
    String text = pop_macro_text(stack);
    document_location_st location{};
    const document_location_st* written_at = nullptr;
    if (stack->frame) {
        location = written_location(stack->frame, *ip);
        written_at = &location;
    } else if (stack->macro_at_rest) {
        // Macro text that holds a macro statement, run at the prompt: the
        // same text in a program stands outside its frame's code.
        throw RuntimeError(ERR_RECURSIVE_MACRO);
    }
    std::shared_ptr<Program> program = compiled_macro(stack, text, written_at, *ip);
    VmOp** macro_ip = program->code();
    Variant result;
    try {
        EvaluationLevel level(stack);
        // A macro with no frame around it marks the time it runs; nested in
        // a frame it leaves the mark as it found it, since the frame's own
        // check applies there.
        ScopedFlag at_rest(&stack->macro_at_rest, stack->frame == nullptr);
        vm_run(stack, &macro_ip, &result);
    } catch (...) {
        result.release(stack);
        throw;
    }
    if ((*macro_ip)->opcode == OP_RETURN) {
        result.release(stack);
        return false;
    }
    ret->release(stack);
    std::memcpy(static_cast<void*>(ret), static_cast<const void*>(&result), sizeof(Variant));
    result.tag = TAG_FALSE;
    return true;
}

}  // namespace zobase
