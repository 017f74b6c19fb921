#pragma once
// What a by-name instruction found the last time it ran on this stack.
//
// A bare name means, in order: a field of the table whose expression runs or
// of the current work area; a LOCAL of the running frame (a slot of its
// program, or one that macro text declared); the visible PRIVATE or PUBLIC.
// Finding that costs hash probes; the answer is kept in the instruction
// (vm/name_site.h) or here, and stands while nothing it depends on changed:
//   - the frame's program (a slot offset belongs to one program); whether
//     that slot is a LOCAL just now is read from the slot on every use;
//   - DataSessions::names_epoch, which every change of the visible
//     variables moves (a variable made, hidden, declared LOCAL by name or
//     PUBLIC, a PARAMETERS slot, the end of a scope that undoes any of
//     these), and every move of the fields version: a bare name may find
//     another field or none once a table is opened, closed or selected, the
//     current session changed, an expression's table set or restored.
// A LOCAL that macro text declared outside the program's slots is never
// kept, since a recursive frame of the same program has none.
//
// This table holds the answers of the look-up places another stack claimed
// first: threads run the same programs on stacks of their own.
#include <cstdint>
#include <memory>

#include "vm/name_site.h"

namespace zobase {

class NameCache {
public:
    static constexpr size_t SIZE = 512;

    NameCache() : entries_(new name_cache_entry_st[SIZE]) {}

    // Look-up places lie at least 16 bytes apart.
    name_cache_entry_st& at(const name_site_st* site) noexcept {
        auto key = reinterpret_cast<uintptr_t>(site);
        return entries_[((key >> 4) ^ (key >> 13)) & (SIZE - 1)];
    }

private:
    std::unique_ptr<name_cache_entry_st[]> entries_;
};

}  // namespace zobase
