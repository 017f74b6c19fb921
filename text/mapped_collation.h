#pragma once
// Mapped collations: national sort orders for single-byte charsets. A table
// of the collation's own turns text into an index key whose plain byte order
// is the national order: case and accents fold into primary weights, and
// secondary weights behind all the primaries settle ties between accents.
// Comparison of strings stays that of Collation; only keys follow the table.
#include <cstdint>
#include <unordered_map>

#include "text/collation.h"

namespace zobase {

// What one row of a table does with its source.
enum CollationEntryKind : uint32_t {
    COLLATION_ENTRY_PRIMARY = 0,                    // one primary weight
    COLLATION_ENTRY_PRIMARY_SECONDARY = 1,          // one primary, one secondary
    COLLATION_ENTRY_REPLACEMENT = 2,                // two bytes, each mapped in its turn
    COLLATION_ENTRY_TWO_PRIMARIES = 3,              // two primaries
    COLLATION_ENTRY_TWO_PRIMARIES_SECONDARY = 4,    // two primaries, one secondary
    COLLATION_ENTRY_TWO_PRIMARIES_SECONDARIES = 5,  // two primaries, two secondaries
    COLLATION_ENTRY_PAIR = 6,                       // a two-byte sequence, one primary
    COLLATION_ENTRY_PAIR_SECONDARY = 7,             // a two-byte sequence, primary and secondary
    COLLATION_ENTRY_TRIPLE = 8,                     // a three-byte sequence, one primary
};

// Flags of the collation's copy of a single-byte row: a sequence of two or
// of three bytes may begin with this byte.
constexpr uint32_t COLLATION_BEGINS_PAIR = 1;
constexpr uint32_t COLLATION_BEGINS_TRIPLE = 2;

// One row of a table, 16 bytes in a fixed layout. For a replacement the
// primary bytes are the two replacement bytes.
struct collation_entry_st {
    uint32_t kind;
    uint8_t source[3];
    uint8_t primary[2];
    uint8_t unused;
    uint8_t secondary[2];
    uint32_t flags;  // zero in the tables; the collation's copy keeps COLLATION_BEGINS_*
};
static_assert(sizeof(collation_entry_st) == 16);

class ZO_API Mapped_Collation : public Collation {
public:
    // `count` rows: one for each single byte, then or among them the sequences.
    Mapped_Collation(const collation_st* row, const Charset* charset,
                     const collation_entry_st* table, uint64_t count);

    using Collation::create_char_key;
    // Keys of `key_length` bytes from at most half as many source bytes:
    // primaries first, then the secondaries that fit, then pad bytes (0).
    // Without full length a source shorter than half the key gives a search
    // key of its primaries only, which every longer key it begins matches.
    uint64_t create_char_key(const char* bytes, uint64_t size, bool full_length, char* key,
                             uint64_t key_length) const override;

    // Maps the character at `position` (a byte or a sequence that may reach
    // up to `end`) and advances past it; primaries and secondaries are
    // appended to the two outputs.
    void __map_single_character(const char* source, uint64_t& position, uint64_t end, char* primary,
                                uint64_t& primary_count, char* secondary,
                                uint64_t& secondary_count) const;

private:
    collation_entry_st single_[256];
    std::unordered_map<uint32_t, collation_entry_st> pairs_;    // first byte high
    std::unordered_map<uint32_t, collation_entry_st> triples_;  // first byte highest
};

}  // namespace zobase
