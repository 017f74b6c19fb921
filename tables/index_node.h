#pragma once
// The 512-byte nodes of an index tree and their encodings.
//
// Every node: attributes (0, 2 bytes; bit 0 root, bit 1 leaf, others kept),
// key count (2, 2), left sibling (4, 4), right sibling (8, 4), little-endian,
// 0xFFFFFFFF for none. Then by kind:
//
// Basic node (every interior node): from offset 12 entries of key length
// plus 8 bytes: the key, the record number and the child position, both
// big-endian. An interior entry holds the greatest key of its child with
// that key's record number.
//
// Compact leaf: free space (12, 2), record mask (14, 4), duplicate mask
// (18), trailing mask (19), record bits (20), duplicate bits (21), trailing
// bits (22), entry size (23), and a key area of 488 bytes from offset 24.
// Entries of E bytes grow up from the start of the area, one per key: a
// little-endian number holding the record number, then D (bytes shared with
// the key before) and T (trailing pad bytes dropped). The K - D - T bytes a
// key stores grow down from the end of the area, the first key's last.
// A key can only be expanded by walking forward from the first.
//
// Bitmap leaf (the leaves of a binary tag): the record number of its first
// bit (12, 4, big-endian) and 496 bytes of bits from offset 16, lowest bit
// first in each byte: bit n stands for record first + n, and is set when
// that record's key begins with the letter T. The count is the number of
// bits in use. Such a tag holds every record of the table, in record order;
// its interior nodes are basic nodes ordered by record number alone, each
// entry holding the last record of its child under a key of pad bytes.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tables/index_key.h"

namespace zobase {

constexpr uint32_t INDEX_NODE_SIZE = 512;
constexpr uint32_t INDEX_HEADER_SIZE = 1024;
constexpr uint32_t NO_NODE = 0xFFFFFFFFu;
constexpr uint32_t BASIC_AREA_START = 12;
constexpr uint32_t BASIC_AREA_SIZE = 500;
constexpr uint32_t COMPACT_AREA_START = 24;
constexpr uint32_t COMPACT_AREA_SIZE = 488;
constexpr uint32_t BITMAP_AREA_START = 16;
constexpr uint32_t BITMAP_AREA_SIZE = 496;
constexpr uint32_t BITMAP_CAPACITY = BITMAP_AREA_SIZE * 8;  // records per bitmap leaf

// What the leaves of a tag are; interior nodes are always basic.
enum LeafKind : uint8_t {
    LEAF_BASIC,
    LEAF_COMPACT,
    LEAF_BITMAP,
};

enum IndexNodeAttribute : uint16_t {
    NODE_ROOT = 1,
    NODE_LEAF = 2,
};

// The widths of the three numbers in a compact entry.
struct compact_geometry_st {
    uint8_t entry_size = 0;
    uint8_t record_bits = 0;
    uint8_t duplicate_bits = 0;
    uint8_t trailing_bits = 0;
    uint32_t record_mask = 0;
    uint8_t duplicate_mask = 0;
    uint8_t trailing_mask = 0;
};

// The narrowest entry for these largest values: each number gets the bits
// it needs, the record number then more until the entry is whole bytes.
// More than 32 record bits or 8 bits for a count raise dbf_error_not_impl.
compact_geometry_st calc_compact_node_geometry(uint64_t max_record, uint64_t max_duplicate, uint64_t max_trailing);

// The decoded header fields come before the bytes, so that a look at a
// cached node's kind and count and at its first entries reads one line.
struct index_node_st {
    uint32_t position = NO_NODE;
    uint16_t attributes = 0;
    uint16_t count = 0;
    uint32_t key_length = 0;
    uint32_t free_space = 0;
    uint32_t left = NO_NODE;
    uint32_t right = NO_NODE;
    bool leaf = false;
    bool root = false;
    bool compact = false;
    bool bitmap = false;
    compact_geometry_st geometry;
    uint32_t first_record = 0;  // of a bitmap leaf
    char bytes[INDEX_NODE_SIZE] = {};

    // The header fields from the bytes; a compact leaf's geometry or a
    // bitmap leaf's first record too. Raises dbf_index_file_corrupted for a
    // node that cannot be what it says.
    void decode(uint32_t key_length, LeafKind leaves);
    // The header fields into the bytes.
    void encode_header();
    uint32_t basic_capacity() const noexcept { return BASIC_AREA_SIZE / (key_length + 8); }
    // A bitmap leaf's bit for record first_record + n.
    bool bit(uint32_t n) const noexcept {
        return (static_cast<unsigned char>(bytes[BITMAP_AREA_START + n / 8]) >> (n % 8)) & 1;
    }
    void set_bit(uint32_t n, bool on) noexcept {
        char& byte = bytes[BITMAP_AREA_START + n / 8];
        byte = static_cast<char>(on ? byte | (1 << (n % 8)) : byte & ~(1 << (n % 8)));
    }
};

// Asks every line of `size` bytes from `at` into the processor's cache at
// once: a search that reads a few of them, one after another, then waits
// for memory once rather than once per line.
inline void prefetch_lines(const void* at, size_t size) noexcept {
    const char* p = static_cast<const char*>(at);
    for (size_t offset = 0; offset < size; offset += 64) __builtin_prefetch(p + offset);
}

// The keys of one node, expanded: full-length keys side by side, with the
// record number and (in an interior node) the child of each.
struct node_entries_st {
    uint32_t key_length = 0;
    std::vector<char> keys;
    std::vector<uint32_t> records;
    std::vector<uint32_t> children;

    size_t size() const noexcept { return records.size(); }
    const char* key(size_t i) const noexcept { return keys.data() + i * key_length; }
    void clear(uint32_t length) {
        key_length = length;
        keys.clear();
        records.clear();
        children.clear();
    }
    void push(const char* key, uint32_t record, uint32_t child) {
        keys.insert(keys.end(), key, key + key_length);
        records.push_back(record);
        children.push_back(child);
    }
    void insert(size_t at, const char* key, uint32_t record, uint32_t child);
    void erase(size_t at);
    // The first entry not below (key, record): key bytes first, then record.
    size_t lower_bound(const char* key, uint32_t record) const noexcept;
    // The first entry whose first `length` key bytes are not below `key`.
    size_t lower_bound_prefix(const char* key, uint64_t length) const noexcept;
};

// Walks the keys of a compact leaf from the first, expanding each from the
// one before: the stored bytes behind the D shared ones, then T pad bytes.
struct key_iterator_st {
    int32_t index = -1;             // the current entry; -1 before the first
    uint32_t key_position = COMPACT_AREA_SIZE;  // where the current key's bytes begin in the area
    uint32_t stored = 0;
    uint32_t duplicate = 0;
    uint32_t trailing = 0;
    uint32_t record = 0;
    char key[MAX_KEY_LENGTH] = {};
};

// The first key of a compact leaf into the iterator; false for an empty node.
bool goto_first_compact_key(const index_node_st& node, char pad, key_iterator_st* it);
// The next key; false at the end (the iterator stands). A key whose counts
// reach past the node raises dbf_index_file_corrupted.
bool goto_next_compact_key(const index_node_st& node, char pad, key_iterator_st* it);

// In a basic node, read in place: the first entry not below (key, record),
// or by the first `length` key bytes when record is null; count when none.
size_t basic_lower_bound(const index_node_st& node, const char* key, uint64_t length, const uint32_t* record) noexcept;
uint32_t basic_child(const index_node_st& node, size_t i) noexcept;
// In a basic node of a binary tag: the first entry whose record is not
// below `record`; count when none.
size_t basic_record_bound(const index_node_st& node, uint32_t record) noexcept;

// Where `record` stands in a bitmap leaf: its bit, or false when the leaf
// does not hold it.
bool goto_bitmap_entry(const index_node_st& node, uint32_t record, uint32_t* bit) noexcept;

// The keys of a node of any kind, in order. A bitmap leaf gives one entry
// per bit in use, its key the letter T or F padded.
void decode_entries(const index_node_st& node, char pad, node_entries_st* out);
// Writes the entries into a node of the node's kind, keeping its siblings
// and attributes. A compact leaf widens its geometry when a number no longer
// fits. False when they do not fit in 512 bytes (a bitmap leaf: when the
// records, ascending, span more than its bits); the node is then unchanged.
bool encode_entries(index_node_st* node, char pad, const node_entries_st& entries);
// Where a new entry goes in a compact leaf, and what putting it there in
// place needs to know of its neighbours.
struct compact_slot_st {
    size_t index = 0;                   // the first entry not below the new one
    bool found = false;                 // that entry is the new one already
    uint32_t start = COMPACT_AREA_SIZE; // where the stored bytes of the entries before it end
    uint32_t shared = 0;                // the new key's D behind entry index - 1 (0 for the first)
    char after[MAX_KEY_LENGTH] = {};    // the key of entry index, when index < count
};
// The slot of (key, record), found by walking the leaf's keys from the
// first. A key sharing fewer leading bytes with the one before than the
// wanted key does is below it unread: only the rest is compared.
void find_compact_slot(const index_node_st& node, char pad, const char* key, uint32_t record, compact_slot_st* slot);
// The slot behind the last entry, whose key the caller knows.
void last_compact_slot(const index_node_st& node, char pad, const char* last_key, const char* key,
                       compact_slot_st* slot);
// (key, record) put into a compact leaf's bytes at its slot without laying
// out the others again: the new entry is written, the next one's shared
// count changes, the rest only move. The bytes come out as encode_entries
// makes them. False, the node unchanged, when the geometry would have to
// widen or the entry does not fit.
bool insert_compact_key(index_node_st* node, char pad, const char* key, uint32_t record, const compact_slot_st& slot);
// The number of leading entries that go into the left half of a split:
// half the bytes for a compact leaf, half the entries for a basic node.
size_t split_point(const index_node_st& node, char pad, const node_entries_st& entries);

// An empty compact leaf or basic node at no position yet.
void init_compact_node(index_node_st* node, uint32_t key_length, const compact_geometry_st& geometry,
                       uint16_t attributes);
void init_basic_node(index_node_st* node, uint32_t key_length, uint16_t attributes);
void init_bitmap_node(index_node_st* node, uint32_t key_length, uint16_t attributes);

// D for `key` behind `before`: the leading bytes they share once trailing
// pad bytes are stripped from both.
uint32_t analyzePrefix(const char* before, const char* key, uint32_t length, char pad) noexcept;
uint32_t trailing_pad_count(const char* key, uint32_t length, char pad) noexcept;

}  // namespace zobase
