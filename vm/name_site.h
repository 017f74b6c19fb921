#pragma once
// The place inside a by-name instruction where what its look-up found is
// kept (vm/name_cache.h says what an answer depends on).
//
// Several stacks may run the same program at once, one per thread, so a
// place is claimed by the first stack that keeps an answer there and is
// read and written by that stack alone; every other stack keeps its answers
// for the instruction in its own NameCache, as before. A stack's stamp is
// never reused, so a place claimed by a stack that is gone stays unused.
#include <atomic>
#include <cstdint>

#include "vm/data_sessions.h"
#include "vm/memvar.h"

namespace zobase {

// Whether an entry answers is told by its epoch and program (and, in a
// NameCache, where entries of several places meet, its key) alone.
//
// Every stack's names epochs are its own (DataSessions::names_epoch), so an
// entry at a look-up place answers only the stack that kept it there: a
// stack reading a place another stack claimed finds an epoch that is never
// its, and reads nothing more of the entry. That read may meet the owner's
// write, hence the two relaxed atomic fields.
//
// A look-up place serves one way of looking up one name, fixed by its
// instruction; its key is kept for the NameCache.
struct name_cache_entry_st {
    uint64_t epoch = 0;            // DataSessions::names_epoch when found; 0: empty (never an epoch)
    uint64_t program_id = 0;       // the frame's Program::id when found, 0 at rest; or its frame_slots_key
    uint64_t key = 0;              // symbol and kind of look-up (name_key)
    uint64_t slot_bytes = 0;       // the frame slot of that name, as bytes below `locals`; 0 for none
    Memvar* variable = nullptr;    // the visible PRIVATE or PUBLIC, or null
    field_ref_st field{nullptr, 0};  // a null table: no field hides the name

    uint64_t kept_epoch() const noexcept { return shared(epoch).load(std::memory_order_relaxed); }
    uint64_t kept_program() const noexcept { return shared(program_id).load(std::memory_order_relaxed); }
    // What the look-up found, for this epoch and frame program.
    void keep(uint64_t new_epoch, uint64_t program, uint64_t new_key, uint64_t slot, Memvar* found,
              field_ref_st found_field) noexcept {
        key = new_key;
        slot_bytes = slot * sizeof(Memvar);
        variable = found;
        field = found_field;
        shared(program_id).store(program, std::memory_order_relaxed);
        shared(epoch).store(new_epoch, std::memory_order_relaxed);
    }
    // Answers nothing any more.
    void forget() noexcept { shared(epoch).store(0, std::memory_order_relaxed); }

private:
    static std::atomic_ref<uint64_t> shared(const uint64_t& field) noexcept {
        return std::atomic_ref<uint64_t>(const_cast<uint64_t&>(field));
    }
};

struct name_site_st {
    std::atomic<uint64_t> owner{0};  // the stamp of the stack that keeps its answer here; 0: free
    name_cache_entry_st entry;
};

// The look-up places of an instruction: one per way it looks a name up.
template <int N>
struct NameSites {
    mutable name_site_st sites[N];
};

template <>
struct NameSites<0> {};

}  // namespace zobase
