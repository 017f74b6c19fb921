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

// Whether an entry answers is told by its key, program and versions alone.
struct name_cache_entry_st {
    uint64_t key = 0;              // symbol and kind of look-up (name_key); 0: empty
    uint64_t program_id = 0;       // the frame's Program::id when found; 0 at rest
    uint64_t epoch = 0;            // DataSessions::names_epoch when found
    uint64_t offset = 0;           // the frame slot of that name; 0 for none
    Memvar* variable = nullptr;    // the visible PRIVATE or PUBLIC, or null
    field_ref_st field{nullptr, 0};  // a null table: no field hides the name
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
