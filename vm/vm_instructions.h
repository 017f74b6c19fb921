#pragma once
// The work of the instructions that the dispatch loop hands off: naming
// variables, calls, subscripts and object members. Each leaves `esp` as the
// instruction table says.
#include <cstdint>

#include "vm/program.h"
#include "vm/value_bits.h"
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

// ---- by-name instructions, through the stack's NameCache (vm/name_cache.h)

// What a name is looked up as: the part of an entry's key above the symbol.
enum NameLookup : uint64_t { NAME_VARIABLE = 1, NAME_FIELD_OR_VARIABLE = 2, NAME_ALIAS_OR_VARIABLE = 3 };

constexpr uint64_t name_key(uint32_t symbol, NameLookup lookup) { return static_cast<uint64_t>(lookup) << 32 | symbol; }

// The full look-ups, which keep their answer for the look-up place.
Memvar* lookup_memvar(VmStack* stack, name_site_st& site, uint32_t symbol);
Memvar* lookup_assignable_memvar(VmStack* stack, name_site_st& site, uint32_t symbol);
void lookup_by_name(VmStack* stack, name_site_st& site, uint32_t symbol);
void lookup_file_object_or_memvar(VmStack* stack, name_site_st& site, uint32_t symbol);

inline uint64_t frame_program_id(const VmStack* stack) { return stack->frame_program_id; }

// What an entry kept for the running frame itself carries in place of a
// program id: the frame's slots, whose address lies far above any id.
inline uint64_t frame_slots_key(const VmStack* stack) { return reinterpret_cast<uintptr_t>(stack->locals); }

// Whether an entry answers for the stack now: kept by this stack (its epoch
// says so), in this frame program or this very frame, with nothing changed
// since.
[[gnu::always_inline]] inline bool entry_answers(const VmStack* stack, const name_cache_entry_st& entry) {
    if (entry.kept_epoch() != stack->sessions.names_epoch()) return false;
    uint64_t kept_for = entry.kept_program();
    return kept_for == frame_program_id(stack) || kept_for == frame_slots_key(stack);
}

// The answer this stack keeps for a look-up place that it did not claim, in
// its NameCache; null when none answers.
[[gnu::cold]] const name_cache_entry_st* kept_elsewhere(VmStack* stack, name_site_st& site, uint64_t key);

// The entry while it answers: same look-up, same frame program, nothing
// changed since. A place holds the answer of the stack that claimed it;
// other stacks keep theirs in their NameCache.
[[gnu::always_inline]] inline const name_cache_entry_st* kept_entry(VmStack* stack, name_site_st& site,
                                                                    uint64_t key) {
    if (entry_answers(stack, site.entry)) [[likely]]
        return &site.entry;
    return kept_elsewhere(stack, site, key);
}

// The kept answer as a variable, its epoch checked: the frame slot while it
// is a LOCAL, else the visible variable; null: look up again.
[[gnu::always_inline]] inline Memvar* kept_variable(VmStack* stack, const name_cache_entry_st& entry) {
    if (entry.slot_bytes) {
        auto* slot = reinterpret_cast<Memvar*>(reinterpret_cast<char*>(stack->locals) - entry.slot_bytes);
        if (slot->kind == MEMVAR_LOCAL) return slot;
    }
    return entry.variable;
}

// The variable a look-up place's kept answer stands for, as kept_entry and
// kept_variable give it, the running frame's own private first (it needs
// no slot test); null: look up again. An entry that found a field keeps
// neither slot nor variable.
[[gnu::always_inline]] inline Memvar* kept_variable(VmStack* stack, name_site_st& site, uint64_t key) {
    const name_cache_entry_st& entry = site.entry;
    if (entry.kept_epoch() == stack->sessions.names_epoch()) [[likely]] {
        uint64_t kept_for = entry.kept_program();
        if (kept_for == frame_slots_key(stack)) return entry.variable;
        if (kept_for == frame_program_id(stack)) return kept_variable(stack, entry);
    }
    const name_cache_entry_st* elsewhere = kept_elsewhere(stack, site, key);
    return elsewhere ? kept_variable(stack, *elsewhere) : nullptr;
}

// find_memvar for the look-up place.
[[gnu::always_inline]] inline Memvar* find_memvar(VmStack* stack, name_site_st& site, uint32_t symbol) {
    if (Memvar* var = kept_variable(stack, site, name_key(symbol, NAME_VARIABLE))) return var;
    return lookup_memvar(stack, site, symbol);
}

// What assigning to the name finds or creates (alloc_undefined_memvar).
[[gnu::always_inline]] inline Memvar* assignable_memvar(VmStack* stack, name_site_st& site,
                                                        uint32_t symbol) {
    if (Memvar* var = kept_variable(stack, site, name_key(symbol, NAME_VARIABLE))) return var;
    return lookup_assignable_memvar(stack, site, symbol);
}

// What the bare name means while it is kept as a variable no field hides;
// null: not known without a look-up.
[[gnu::always_inline]] inline Memvar* kept_bare_variable(VmStack* stack, name_site_st& site,
                                                         uint32_t symbol) {
    return kept_variable(stack, site, name_key(symbol, NAME_FIELD_OR_VARIABLE));
}

// A bare name: a field of the expression table or of the current work area
// hides a variable. Pushes the value.
[[gnu::always_inline]] inline void read_by_name(VmStack* stack, name_site_st& site, uint32_t symbol) {
    const name_cache_entry_st* entry = kept_entry(stack, site, name_key(symbol, NAME_FIELD_OR_VARIABLE));
    if (entry) {
        if (const Memvar* var = kept_variable(stack, *entry)) return copy_value(stack->push(), var);
        if (entry->field.table) return stack->sessions->read_field(stack, entry->field, stack->push());
    }
    lookup_by_name(stack, site, symbol);
}

// An alias of an open work area pushes the work area's object, else the variable.
inline void read_file_object_or_memvar(VmStack* stack, name_site_st& site, uint32_t symbol) {
    const name_cache_entry_st* entry = kept_entry(stack, site, name_key(symbol, NAME_ALIAS_OR_VARIABLE));
    if (entry)
        if (const Memvar* var = kept_variable(stack, *entry)) return copy_value(stack->push(), var);
    lookup_file_object_or_memvar(stack, site, symbol);
}
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

// A method call and a property read; the member found is kept at the
// instruction's look-up place.
void object_call(VmStack* stack, member_site_st& site, uint32_t symbol, uint64_t n);
void object_call_pointer(VmStack* stack, uint32_t symbol, uint64_t n);
void object_read(VmStack* stack, member_site_st& site, uint32_t symbol, uint64_t n);
void object_read_pointer(VmStack* stack, uint32_t symbol, uint64_t n);
void object_write(VmStack* stack, uint32_t symbol, uint64_t n);
// A property of a method's THIS, pushed: as ObjectRead without subscripts on
// a copy of the slot, which is made only when a handler must run. The slot
// keeps the object alive meanwhile: only the method's own code could change it.
void read_this_member(VmStack* stack, member_site_st& site, const Memvar* slot, uint32_t symbol);
// `name.member` pushed (ReadNameMember): while the name is kept as a
// variable holding an object, a plain property is read through the
// variable with no copy of the object; else as the two instructions.
void read_name_member(VmStack* stack, name_site_st& site, member_site_st& member_site, uint32_t root,
                      uint32_t symbol);
// The top into a property of a method's THIS, popped: as ObjectWrite with
// the object under the value, which the compiler emits only where the
// value's code could not have changed the slot.
void write_this_member(VmStack* stack, member_site_st& site, const Memvar* slot, uint32_t symbol);

}  // namespace zobase
