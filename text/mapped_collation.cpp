// Index keys of the national sort orders.
#include "text/mapped_collation.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "base/call_trace.h"
#include "values/error.h"

namespace zobase {

namespace {

// Secondaries never outnumber the key's bytes; keys of index tags stay far
// below this, so the side buffer lives on the stack.
constexpr uint64_t SECONDARY_STACK_BUFFER = 256;

// The kind of a byte that no row names: beyond every kind a row may have, so
// that the byte weighs nothing.
constexpr uint32_t KIND_WITHOUT_WEIGHT = 0xFF;

uint32_t pair_source(const uint8_t* s) noexcept { return uint32_t(s[0]) << 8 | s[1]; }

uint32_t triple_source(const uint8_t* s) noexcept {
    return uint32_t(s[0]) << 16 | uint32_t(s[1]) << 8 | s[2];
}

uint32_t pair_at(const char* p) noexcept {
    return pair_source(reinterpret_cast<const uint8_t*>(p));
}

uint32_t triple_at(const char* p) noexcept {
    return triple_source(reinterpret_cast<const uint8_t*>(p));
}

bool single_primary(const collation_entry_st& e) noexcept {
    return e.kind == COLLATION_ENTRY_PRIMARY || e.kind == COLLATION_ENTRY_PRIMARY_SECONDARY;
}

}  // namespace

Mapped_Collation::Mapped_Collation(const collation_st* row, const Charset* charset,
                                   const collation_entry_st* table, uint64_t count)
    : Collation(row, charset, 0, 2) {
    ZO_TRACE();
    // A byte without a row of its own weighs nothing.
    for (collation_entry_st& e : single_)
        e = collation_entry_st{KIND_WITHOUT_WEIGHT, {}, {}, 0, {}, 0};
    for (uint64_t i = 0; i < count; ++i)
        if (table[i].kind <= COLLATION_ENTRY_TWO_PRIMARIES_SECONDARIES) {
            single_[table[i].source[0]] = table[i];
            single_[table[i].source[0]].flags = 0;
        }
    for (uint64_t i = 0; i < count; ++i) {
        const collation_entry_st& e = table[i];
        if (e.kind == COLLATION_ENTRY_PAIR || e.kind == COLLATION_ENTRY_PAIR_SECONDARY) {
            single_[e.source[0]].flags |= COLLATION_BEGINS_PAIR;
            pairs_[pair_source(e.source)] = e;
        } else if (e.kind == COLLATION_ENTRY_TRIPLE) {
            single_[e.source[0]].flags |= COLLATION_BEGINS_TRIPLE;
            triples_[triple_source(e.source)] = e;
        }
    }
    // A replacement maps its two bytes with their own single weights, so no
    // byte ever yields more than two primaries: the key bound rests on it.
    for (const collation_entry_st& e : single_)
        if (e.kind == COLLATION_ENTRY_REPLACEMENT)
            ZO_ASSERT(single_primary(single_[e.primary[0]]) &&
                      single_primary(single_[e.primary[1]]));
}

void Mapped_Collation::__map_single_character(const char* source, uint64_t& position, uint64_t end,
                                              char* primary, uint64_t& primary_count,
                                              char* secondary, uint64_t& secondary_count) const {
    const collation_entry_st& e = single_[static_cast<uint8_t>(source[position])];
    if (e.flags) {
        if ((e.flags & COLLATION_BEGINS_TRIPLE) && end - position >= 3) {
            auto found = triples_.find(triple_at(source + position));
            if (found != triples_.end()) {
                primary[primary_count++] = static_cast<char>(found->second.primary[0]);
                position += 3;
                return;
            }
        }
        if ((e.flags & COLLATION_BEGINS_PAIR) && end - position >= 2) {
            auto found = pairs_.find(pair_at(source + position));
            if (found != pairs_.end()) {
                primary[primary_count++] = static_cast<char>(found->second.primary[0]);
                if (found->second.kind == COLLATION_ENTRY_PAIR_SECONDARY)
                    secondary[secondary_count++] = static_cast<char>(found->second.secondary[0]);
                position += 2;
                return;
            }
        }
    }
    position += 1;
    switch (e.kind) {
        case COLLATION_ENTRY_PRIMARY_SECONDARY:
            secondary[secondary_count++] = static_cast<char>(e.secondary[0]);
            [[fallthrough]];
        case COLLATION_ENTRY_PRIMARY:
            primary[primary_count++] = static_cast<char>(e.primary[0]);
            return;
        case COLLATION_ENTRY_REPLACEMENT: {
            const char replacement[2] = {static_cast<char>(e.primary[0]),
                                         static_cast<char>(e.primary[1])};
            uint64_t at = 0;
            __map_single_character(replacement, at, 2, primary, primary_count, secondary,
                                   secondary_count);
            if (at < 2)
                __map_single_character(replacement, at, 2, primary, primary_count, secondary,
                                       secondary_count);
            return;
        }
        case COLLATION_ENTRY_TWO_PRIMARIES_SECONDARIES:
            secondary[secondary_count++] = static_cast<char>(e.secondary[0]);
            secondary[secondary_count++] = static_cast<char>(e.secondary[1]);
            break;
        case COLLATION_ENTRY_TWO_PRIMARIES_SECONDARY:
            secondary[secondary_count++] = static_cast<char>(e.secondary[0]);
            break;
        case COLLATION_ENTRY_TWO_PRIMARIES:
            break;
        default:  // a byte that no row names
            return;
    }
    primary[primary_count++] = static_cast<char>(e.primary[0]);
    primary[primary_count++] = static_cast<char>(e.primary[1]);
}

uint64_t Mapped_Collation::create_char_key(const char* bytes, uint64_t size, bool full_length,
                                           char* key, uint64_t key_length) const {
    while (size > 0 && bytes[size - 1] == ' ') --size;
    const uint64_t half = key_length / 2;
    const uint64_t limit = std::min(half, size);

    // Each step consumes at least one byte below the limit and yields at
    // most two weights of either level, so neither outruns the key length.
    char stack_secondaries[SECONDARY_STACK_BUFFER];
    std::unique_ptr<char[]> heap_secondaries;
    char* secondaries = stack_secondaries;
    if (key_length > SECONDARY_STACK_BUFFER) {
        heap_secondaries = std::make_unique<char[]>(key_length);
        secondaries = heap_secondaries.get();
    }
    uint64_t position = 0, primary_count = 0, secondary_count = 0;
    while (position < limit) {
        // Most bytes are plain letters: one array step. The counters stay in
        // registers because only copies of them reach the general path.
        const collation_entry_st& e = single_[static_cast<uint8_t>(bytes[position])];
        if (e.kind <= COLLATION_ENTRY_PRIMARY_SECONDARY && !e.flags) {
            // Written always, kept only for kind 1: letters with and without
            // accents alternate too freely for a branch to guess.
            key[primary_count++] = static_cast<char>(e.primary[0]);
            secondaries[secondary_count] = static_cast<char>(e.secondary[0]);
            secondary_count += e.kind;
            ++position;
            continue;
        }
        uint64_t at = position, primaries_now = primary_count, secondaries_now = secondary_count;
        __map_single_character(bytes, at, size, key, primaries_now, secondaries,
                               secondaries_now);
        position = at;
        primary_count = primaries_now;
        secondary_count = secondaries_now;
    }

    // A search key: its primaries alone, so that it matches every stored key
    // it begins whatever accents those carry.
    if (!full_length && limit < half) return primary_count;

    uint64_t kept = std::min(secondary_count, key_length - primary_count);
    memcpy(key + primary_count, secondaries, kept);
    memset(key + primary_count + kept, static_cast<unsigned char>(pad),
           key_length - primary_count - kept);
    return key_length;
}

}  // namespace zobase
