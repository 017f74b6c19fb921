// Name lookup and the LOCAL, PRIVATE, PUBLIC and PARAMETERS rules.
#include "base/call_trace.h"
#include "vm/call_resolver.h"
#include "vm/program.h"
#include "vm/vm_instructions.h"

namespace zobase {

namespace {

using memvar_map = std::unordered_map<uint32_t, Memvar*>;

bool find_in(const memvar_map* map, uint32_t symbol, Memvar** out) {
    if (!map) return false;
    auto found = map->find(symbol);
    if (found == map->end()) return false;
    *out = found->second;
    return true;
}

[[noreturn]] void raise_redefinition(VmStack* stack, uint32_t symbol) {
    raise_named(stack, ERR_VARIABLE_REDEFINITION, symbol);
}

void declare_local(VmStack* stack, Memvar* var, uint32_t symbol) {
    if (var->kind == MEMVAR_PRIVATE) raise_redefinition(stack, symbol);
    var->kind = MEMVAR_LOCAL;
}

// Takes the name out of the visible variables, remembering what it meant.
void shadow_name(VmStack* stack, uint32_t symbol) {
    auto found = stack->names.find(symbol);
    Memvar* previous = found == stack->names.end() ? nullptr : found->second;
    stack->names_changed();
    stack->alloc_undo_memvar(symbol, previous);
    if (previous) stack->names.erase(found);
}

}  // namespace

String VmStack::symbol_text(uint32_t symbol) const {
    return resolver ? resolver->symbol_text(symbol) : String();
}

bool VmStack::get_frame_memvar_pointer(uint32_t symbol, Memvar** out) {
    uint64_t offset;
    if (frame && frame->program->find_local(symbol, &offset)) {
        *out = locals - offset;
        return true;
    }
    return find_in(dynamic_locals, symbol, out);
}

bool VmStack::get_memvar(uint32_t symbol, Memvar** out) {
    Memvar* var;
    if (get_frame_memvar_pointer(symbol, &var) && var->kind == MEMVAR_LOCAL) {
        *out = var;
        return true;
    }
    return find_in(&names, symbol, out);
}

void VmStack::alloc_memvar(uint32_t symbol, Memvar** out) {
    if (get_frame_memvar_pointer(symbol, out)) return;
    if (!dynamic_locals) dynamic_locals = new memvar_map;
    Memvar* var = new Memvar;
    (*dynamic_locals)[symbol] = var;
    *out = var;
}

void VmStack::alloc_undefined_memvar(uint32_t symbol, Memvar** out) {
    alloc_memvar(symbol, out);
    define_undefined_memvar(symbol, out);
}

void VmStack::define_undefined_memvar(uint32_t symbol, Memvar** var) {
    if ((*var)->kind == MEMVAR_LOCAL) return;
    if (find_in(&names, symbol, var)) return;
    names_changed();
    alloc_undo_memvar(symbol, nullptr);
    (*var)->kind = MEMVAR_PRIVATE;
    names[symbol] = *var;
}

// A full undo stack is an error like any other, which a TRY can catch.
void VmStack::alloc_undo_memvar(uint32_t symbol, Memvar* previous) {
    UndoMemvar* floor = undo_reserve_open ? undo_base - UNDO_HANDLER_RESERVE : undo_base;
    if (undo_top == floor) throw RuntimeError(ERR_NESTING_TOO_DEEP);
    *--undo_top = UndoMemvar{symbol, previous};
}

// A LOCAL by name may be one macro text declared: it hides the visible variable.
void def_local(VmStack* stack, uint32_t symbol) {
    stack->names_changed();
    Memvar* var;
    stack->alloc_memvar(symbol, &var);
    declare_local(stack, var, symbol);
}

void def_local_offset(VmStack* stack, uint64_t offset, uint32_t symbol) {
    declare_local(stack, stack->locals - offset, symbol);
}

// The hidden variable comes back when the frame ends; the new one is made
// by the first assignment.
void def_private_symbol(VmStack* stack, uint32_t symbol) {
    if (stack->names.count(symbol)) shadow_name(stack, symbol);
}

// The frame slot stays behind only as a marker; lookups fall through it to
// the heap variable, which outlives the frame. Code without frame slots (the
// prompt, macro text) makes the public alone.
void def_public_offset(VmStack* stack, uint64_t offset, uint32_t symbol) {
    ZO_TRACE();
    Memvar* slot = offset == NO_FRAME_SLOT ? nullptr : stack->locals - offset;
    if (slot && slot->kind != MEMVAR_NONE && slot->kind != MEMVAR_PUBLIC)
        raise_redefinition(stack, symbol);
    Memvar* existing;
    if (find_in(&stack->names, symbol, &existing)) {
        if (existing->kind != MEMVAR_PUBLIC) raise_redefinition(stack, symbol);
    } else {
        Memvar* var = new Memvar;
        var->kind = MEMVAR_PUBLIC;
        stack->names_changed();
        stack->names[symbol] = var;
    }
    if (slot) slot->kind = MEMVAR_PUBLIC;
}

void init_lparameters(VmStack* stack, uint64_t n) {
    for (uint64_t offset = 1; offset <= n; ++offset) (stack->locals - offset)->kind = MEMVAR_LOCAL;
}

// Without frame slots there is no argument: the name becomes a private
// holding false, as a parameter the caller left out.
void init_parameter(VmStack* stack, uint64_t offset, uint32_t symbol) {
    shadow_name(stack, symbol);
    Memvar* var;
    if (offset == NO_FRAME_SLOT) {
        stack->alloc_memvar(symbol, &var);
        var->release(stack);
    } else {
        var = stack->locals - offset;
    }
    var->kind = MEMVAR_PRIVATE;
    stack->names[symbol] = var;
}

void raise_named(VmStack* stack, int number, uint32_t symbol) {
    if (!stack->resolver) throw RuntimeError(number);
    throw RuntimeError(number, stack->symbol_text(symbol));
}

// A LOCAL of the running frame is the common case: it is found here without
// the calls of the general look-up, which gives the same answer.
Memvar* find_memvar(VmStack* stack, uint32_t symbol) {
    if (const VmFrame* frame = stack->frame) {
        for (const local_name_st& name : frame->program->local_names) {
            if (name.symbol != symbol) continue;
            Memvar* slot = stack->locals - name.offset;
            if (slot->kind == MEMVAR_LOCAL) return slot;
            break;
        }
    }
    Memvar* var;
    if (!stack->get_memvar(symbol, &var)) raise_named(stack, ERR_VARIABLE_NOT_FOUND, symbol);
    return var;
}

}  // namespace zobase
