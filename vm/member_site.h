#pragma once
// The place inside a member instruction (`o.Add()`, `o.nStep`, `THIS.x`)
// where the member its last look-up found is kept, so that the next run on
// an object of the same shape skips the walk through the member tables.
//
// As with the name look-up places (vm/name_site.h), the first stack that
// keeps an answer claims the place and alone reads and writes it; other
// stacks look the member up each time.
//
// An entry answers for an object whose first link shows the member tables
// of that id (ids are never reused, and a link gets new tables whenever a
// member is added to it or removed), and whose links up to the holder
// still show their classes' own tables. Visibility is not kept: a member
// that is not PUBLIC is checked against the caller on every use.
#include <atomic>
#include <cstdint>

namespace zobase {

struct ClassMember;

struct member_site_entry_st {
    uint64_t tables_id = 0;  // the first link's member tables when found; 0: empty
    const ClassMember* member = nullptr;
    uint32_t depth = 0;  // links from the first to the holder
    bool is_public = false;
    bool plain_read = false;   // the member's flags, kept beside it
    bool plain_write = false;
};

struct member_site_st {
    std::atomic<uint64_t> owner{0};  // the stamp of the stack that keeps its answer here; 0: free
    member_site_entry_st entry;
};

// An instruction's member look-up place, or none.
template <int N>
struct MemberSites {
    mutable member_site_st member_site;
};

template <>
struct MemberSites<0> {};

}  // namespace zobase
