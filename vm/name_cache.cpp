// The by-name instructions' look-ups through the stack's NameCache: the
// full look-up when nothing is kept, recording its answer when it may be kept.
#include "vm/name_cache.h"

#include "vm/program.h"
#include "vm/vm_instructions.h"

namespace zobase {

namespace {

// A LOCAL that macro text declared outside the program's slots.
bool has_dynamic_local(const VmStack* stack, uint32_t symbol) {
    if (!stack->dynamic_locals) return false;
    auto found = stack->dynamic_locals->find(symbol);
    return found != stack->dynamic_locals->end() && found->second->kind == MEMVAR_LOCAL;
}

Memvar* visible_variable(const VmStack* stack, uint32_t symbol) {
    auto found = stack->names.find(symbol);
    return found == stack->names.end() ? nullptr : found->second;
}

// Keeps what a name means as a variable now: the frame slot of that name,
// if the program has one, and the visible variable, if any.
// `epoch` is the names epoch from before the look-up began.
//
// A PRIVATE that lives in the running frame's own slot is kept for that
// frame alone, with no slot to test: while the epoch stands the frame
// lives (its end releases the private, which moves the epoch), no other
// live frame has its slots, and the slot cannot turn LOCAL (a LOCAL
// declared over a private is an error; LPARAMETERS keeps the same slot).
void keep_variable(VmStack* stack, name_cache_entry_st& entry, uint64_t key, uint64_t epoch) {
    uint32_t symbol = static_cast<uint32_t>(key);
    const Program* program = stack->frame ? stack->frame->program : nullptr;
    uint64_t offset = 0;
    if (!program || !program->find_local(symbol, &offset)) offset = 0;
    if (!offset && has_dynamic_local(stack, symbol)) return entry.forget();
    Memvar* variable = visible_variable(stack, symbol);
    if (offset && variable == stack->locals - offset && variable->kind == MEMVAR_PRIVATE)
        return entry.keep(epoch, frame_slots_key(stack), key, 0, variable, {nullptr, 0});
    entry.keep(epoch, program ? program->id : 0, key, offset, variable, {nullptr, 0});
}


// Where this stack keeps the look-up place's answer: the place itself when
// no stack claimed it yet or this one did, else the stack's NameCache.
name_cache_entry_st& claim_entry(VmStack* stack, name_site_st& site) {
    uint64_t owner = site.owner.load(std::memory_order_relaxed);
    if (owner == 0 && site.owner.compare_exchange_strong(owner, stack->stamp, std::memory_order_relaxed))
        owner = stack->stamp;
    return owner == stack->stamp ? site.entry : stack->name_cache.at(&site);
}

}  // namespace

const name_cache_entry_st* kept_elsewhere(VmStack* stack, name_site_st& site, uint64_t key) {
    if (site.owner.load(std::memory_order_relaxed) == stack->stamp) return nullptr;
    const name_cache_entry_st& entry = stack->name_cache.at(&site);
    return entry.key == key && entry_answers(stack, entry) ? &entry : nullptr;
}

Memvar* lookup_memvar(VmStack* stack, name_site_st& site, uint32_t symbol) {
    name_cache_entry_st& entry = claim_entry(stack, site);
    keep_variable(stack, entry, name_key(symbol, NAME_VARIABLE), stack->sessions->names_epoch());
    return find_memvar(stack, symbol);
}

Memvar* lookup_assignable_memvar(VmStack* stack, name_site_st& site, uint32_t symbol) {
    Memvar* var;
    stack->alloc_undefined_memvar(symbol, &var);
    keep_variable(stack, claim_entry(stack, site), name_key(symbol, NAME_VARIABLE),
                  stack->sessions->names_epoch());
    return var;
}

void lookup_by_name(VmStack* stack, name_site_st& site, uint32_t symbol) {
    name_cache_entry_st& entry = claim_entry(stack, site);
    DataSessions* sessions = stack->sessions.get();
    uint64_t epoch = sessions->names_epoch();
    uint64_t key = name_key(symbol, NAME_FIELD_OR_VARIABLE);
    field_ref_st field;
    if (sessions->find_field(stack, symbol, &field)) {
        entry.keep(epoch, stack->frame ? stack->frame->program->id : 0, key, 0, nullptr, field);
        sessions->read_field(stack, field, stack->push());
        return;
    }
    keep_variable(stack, entry, key, epoch);
    const Memvar* var = find_memvar(stack, symbol);
    stack->push()->set_variant(var);
}

void lookup_file_object_or_memvar(VmStack* stack, name_site_st& site, uint32_t symbol) {
    name_cache_entry_st& entry = claim_entry(stack, site);
    uint64_t epoch = stack->sessions->names_epoch();
    Memvar* slot = stack->push();
    if (stack->sessions->find_work_area(stack, symbol, slot)) return entry.forget();
    stack->pop();
    keep_variable(stack, entry, name_key(symbol, NAME_ALIAS_OR_VARIABLE), epoch);
    const Memvar* var = find_memvar(stack, symbol);
    stack->push()->set_variant(var);
}

}  // namespace zobase
