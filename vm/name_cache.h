#pragma once
// What a by-name instruction found the last time it ran on this stack.
//
// A bare name means, in order: a field of the table whose expression runs or
// of the current work area; a LOCAL of the running frame (a slot of its
// program, or one that macro text declared); the visible PRIVATE or PUBLIC.
// Finding that costs hash probes; the answer is kept here, keyed by the
// instruction's address, and stands while nothing it depends on changed:
//   - the frame's program (a slot offset belongs to one program); whether
//     that slot is a LOCAL just now is read from the slot on every use;
//   - VmStack::names_version, which every change of the visible variables
//     moves: a variable made, hidden, declared LOCAL by name or PUBLIC, a
//     PARAMETERS slot, the end of a scope that undoes any of these;
//   - DataSessions::fields_version, which moves whenever a bare name may
//     find another field or none: a table opened, closed or selected, the
//     current session changed, an expression's table set or restored.
// A LOCAL that macro text declared outside the program's slots is never
// kept, since a recursive frame of the same program has none.
//
// The table is the stack's, not the instruction's: threads run the same
// programs on stacks of their own.
#include <cstdint>
#include <memory>

#include "vm/data_sessions.h"
#include "vm/memvar.h"

namespace zobase {

class VmOp;

// Whether an entry answers is told by its key, program and versions alone,
// never by the instruction's address, which a later program may reuse.
struct name_cache_entry_st {
    uint64_t key = 0;              // symbol and kind of look-up (name_key); 0: empty
    uint64_t program_id = 0;       // the frame's Program::id when found; 0 at rest
    uint64_t names_version = 0;
    uint64_t fields_version = 0;   // for the look-ups that fields or aliases can change
    uint64_t offset = 0;           // the frame slot of that name; 0 for none
    Memvar* variable = nullptr;    // the visible PRIVATE or PUBLIC, or null
    field_ref_st field{nullptr, 0};  // a null table: no field hides the name
};

class NameCache {
public:
    static constexpr size_t SIZE = 512;

    NameCache() : entries_(new name_cache_entry_st[SIZE]) {}

    // Instructions are heap objects at least 16 bytes apart.
    name_cache_entry_st& at(const VmOp* op) noexcept {
        auto key = reinterpret_cast<uintptr_t>(op);
        return entries_[((key >> 4) ^ (key >> 13)) & (SIZE - 1)];
    }

private:
    std::unique_ptr<name_cache_entry_st[]> entries_;
};

}  // namespace zobase
