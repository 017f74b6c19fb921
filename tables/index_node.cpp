// Node encodings: the header fields, compact leaves with their geometry and
// incremental key expansion, basic nodes, and the split of a full node.
#include "tables/index_node.h"

#include <algorithm>
#include <cstring>

#include "tables/byte_order.h"
#include "values/error.h"

namespace zobase {

namespace {

uint8_t bits_for(uint64_t value) noexcept {
    uint8_t bits = 0;
    while (value >> bits) ++bits;
    return bits;
}

// A key's few trailing pad bytes, without the start-up cost of a string
// instruction.
void fill_pad(char* at, uint32_t count, char pad) noexcept {
    const uint64_t pattern = 0x0101010101010101ull * static_cast<unsigned char>(pad);
    for (; count >= 8; at += 8, count -= 8) std::memcpy(at, &pattern, 8);
    for (; count; --count) *at++ = pad;
}

// The number of leading bytes two keys share.
uint32_t common_prefix(const char* a, const char* b, uint32_t length) noexcept {
    uint32_t i = 0;
    for (; i + 8 <= length; i += 8) {
        uint64_t differ = read_le64(a + i) ^ read_le64(b + i);
        if (differ) return i + static_cast<uint32_t>(__builtin_ctzll(differ) / 8);
    }
    while (i < length && a[i] == b[i]) ++i;
    return i;
}

uint64_t mask_of(uint8_t bits) noexcept { return bits >= 64 ? ~0ull : (1ull << bits) - 1; }

// An entry of `size` bytes at `offset` in a compact leaf's area: one
// eight-byte read where the area holds eight bytes from there.
uint64_t read_area_entry(const char* area, uint32_t offset, uint8_t size) noexcept {
    if (offset + 8 > COMPACT_AREA_SIZE) {
        uint64_t value = 0;
        for (uint8_t i = 0; i < size; ++i)
            value |= static_cast<uint64_t>(static_cast<unsigned char>(area[offset + i])) << (8 * i);
        return value;
    }
    uint64_t value = read_le64(area + offset);
    return size >= 8 ? value : value & ((1ull << (8 * size)) - 1);
}

uint64_t read_entry(const char* at, uint8_t size) noexcept {
    uint64_t value = 0;
    for (uint8_t i = 0; i < size; ++i) value |= static_cast<uint64_t>(static_cast<unsigned char>(at[i])) << (8 * i);
    return value;
}

void write_leaf_key_prefix_octetLen(char* at, const compact_geometry_st& g, uint32_t record, uint32_t duplicate,
                                    uint32_t trailing) {
    if (record > g.record_mask || duplicate > g.duplicate_mask || trailing > g.trailing_mask)
        throw dbf_error_not_impl();
    uint64_t value = record | static_cast<uint64_t>(duplicate) << g.record_bits |
                     static_cast<uint64_t>(trailing) << (g.record_bits + g.duplicate_bits);
    for (uint8_t i = 0; i < g.entry_size; ++i) at[i] = static_cast<char>(value >> (8 * i));
}

[[noreturn]] void corrupted() { throw dbf_index_file_corrupted(); }

// What each key of a compact leaf stores, and the largest counts.
struct compact_layout_st {
    std::vector<uint32_t> duplicate, trailing;
    uint32_t stored_total = 0;
    uint32_t max_duplicate = 0, max_trailing = 0, max_record = 0;
};

// One layout per thread, reused, so that laying out a leaf allocates nothing
// once its vectors have grown.
compact_layout_st& lay_out(const node_entries_st& entries, char pad) {
    static thread_local compact_layout_st reused;
    compact_layout_st* layout = &reused;
    *layout = compact_layout_st{std::move(layout->duplicate), std::move(layout->trailing)};
    uint32_t k = entries.key_length;
    size_t n = entries.size();
    layout->duplicate.resize(n);
    layout->trailing.resize(n);
    for (size_t i = 0; i < n; ++i) {
        uint32_t t = trailing_pad_count(entries.key(i), k, pad);
        uint32_t d = i ? analyzePrefix(entries.key(i - 1), entries.key(i), k, pad) : 0;
        layout->duplicate[i] = d;
        layout->trailing[i] = t;
        layout->stored_total += k - d - t;
        layout->max_duplicate = std::max(layout->max_duplicate, d);
        layout->max_trailing = std::max(layout->max_trailing, t);
        layout->max_record = std::max(layout->max_record, entries.records[i]);
    }
    return *layout;
}

}  // namespace

compact_geometry_st calc_compact_node_geometry(uint64_t max_record, uint64_t max_duplicate, uint64_t max_trailing) {
    uint8_t record = bits_for(max_record), duplicate = bits_for(max_duplicate), trailing = bits_for(max_trailing);
    if (record > 32 || duplicate > 8 || trailing > 8) throw dbf_error_not_impl();
    while ((record + duplicate + trailing) % 8 && record < 32) ++record;
    compact_geometry_st g;
    g.record_bits = record;
    g.duplicate_bits = duplicate;
    g.trailing_bits = trailing;
    g.record_mask = static_cast<uint32_t>(mask_of(record));
    g.duplicate_mask = static_cast<uint8_t>(mask_of(duplicate));
    g.trailing_mask = static_cast<uint8_t>(mask_of(trailing));
    g.entry_size = static_cast<uint8_t>((record + duplicate + trailing + 7) / 8);
    return g;
}

void index_node_st::decode(uint32_t length, LeafKind leaves) {
    key_length = length;
    attributes = read_le16(bytes);
    count = read_le16(bytes + 2);
    left = read_le32(bytes + 4);
    right = read_le32(bytes + 8);
    root = attributes & NODE_ROOT;
    leaf = attributes & NODE_LEAF;
    compact = leaf && leaves == LEAF_COMPACT;
    bitmap = leaf && leaves == LEAF_BITMAP;
    if (bitmap) {
        first_record = read_be32(bytes + 12);
        if (count > BITMAP_CAPACITY || (count && first_record == 0) ||
            static_cast<uint64_t>(first_record) + count > 0xFFFFFFFFull)
            corrupted();
        return;
    }
    if (!compact) {
        if (count > basic_capacity()) corrupted();
        return;
    }
    free_space = read_le16(bytes + 12);
    geometry.record_mask = read_le32(bytes + 14);
    geometry.duplicate_mask = static_cast<uint8_t>(bytes[18]);
    geometry.trailing_mask = static_cast<uint8_t>(bytes[19]);
    geometry.record_bits = static_cast<uint8_t>(bytes[20]);
    geometry.duplicate_bits = static_cast<uint8_t>(bytes[21]);
    geometry.trailing_bits = static_cast<uint8_t>(bytes[22]);
    geometry.entry_size = static_cast<uint8_t>(bytes[23]);
    const compact_geometry_st& g = geometry;
    if (g.entry_size == 0 || g.entry_size > 8 || g.record_bits > 32 || g.duplicate_bits > 8 || g.trailing_bits > 8 ||
        g.record_bits + g.duplicate_bits + g.trailing_bits > g.entry_size * 8 ||
        static_cast<uint32_t>(count) * g.entry_size > COMPACT_AREA_SIZE || free_space > COMPACT_AREA_SIZE)
        corrupted();
}

void index_node_st::encode_header() {
    write_le16(bytes, attributes);
    write_le16(bytes + 2, count);
    write_le32(bytes + 4, left);
    write_le32(bytes + 8, right);
    if (bitmap) write_be32(bytes + 12, first_record);
    if (!compact) return;
    write_le16(bytes + 12, static_cast<uint16_t>(free_space));
    write_le32(bytes + 14, geometry.record_mask);
    bytes[18] = static_cast<char>(geometry.duplicate_mask);
    bytes[19] = static_cast<char>(geometry.trailing_mask);
    bytes[20] = static_cast<char>(geometry.record_bits);
    bytes[21] = static_cast<char>(geometry.duplicate_bits);
    bytes[22] = static_cast<char>(geometry.trailing_bits);
    bytes[23] = static_cast<char>(geometry.entry_size);
}

// Eight bytes at a time: in a little-endian word the last byte in memory
// is the highest, so the pads at a key's end are the word's leading bytes.
uint32_t trailing_pad_count(const char* key, uint32_t length, char pad) noexcept {
    const uint64_t pattern = 0x0101010101010101ull * static_cast<unsigned char>(pad);
    uint32_t t = 0;
    for (; t + 8 <= length; t += 8) {
        uint64_t differ = read_le64(key + length - t - 8) ^ pattern;
        if (differ) return t + static_cast<uint32_t>(__builtin_clzll(differ) / 8);
    }
    while (t < length && key[length - 1 - t] == pad) ++t;
    return t;
}

uint32_t analyzePrefix(const char* before, const char* key, uint32_t length, char pad) noexcept {
    uint32_t a = length - trailing_pad_count(before, length, pad);
    uint32_t b = length - trailing_pad_count(key, length, pad);
    return common_prefix(before, key, std::min(a, b));
}

// ---- the iterator

namespace {

// Reads entry it->index and expands its key behind the D bytes it shares.
bool expand_compact_entry(const index_node_st& node, char pad, key_iterator_st* it, bool first) {
    const compact_geometry_st& g = node.geometry;
    uint64_t value = read_entry(node.bytes + COMPACT_AREA_START + it->index * g.entry_size, g.entry_size);
    uint32_t k = node.key_length;
    it->record = static_cast<uint32_t>(value & g.record_mask);
    it->duplicate = static_cast<uint32_t>((value >> g.record_bits) & g.duplicate_mask);
    it->trailing = static_cast<uint32_t>((value >> (g.record_bits + g.duplicate_bits)) & g.trailing_mask);
    uint32_t shared = first ? 0 : it->duplicate;
    if (shared + it->trailing > k) corrupted();
    it->stored = k - shared - it->trailing;
    if (it->stored > it->key_position ||
        it->key_position - it->stored < static_cast<uint32_t>(node.count) * g.entry_size)
        corrupted();
    it->key_position -= it->stored;
    std::memcpy(it->key + shared, node.bytes + COMPACT_AREA_START + it->key_position, it->stored);
    fill_pad(it->key + k - it->trailing, it->trailing, pad);
    return true;
}

}  // namespace

bool goto_first_compact_key(const index_node_st& node, char pad, key_iterator_st* it) {
    *it = key_iterator_st();
    if (node.count == 0) return false;
    it->index = 0;
    return expand_compact_entry(node, pad, it, true);
}

bool goto_next_compact_key(const index_node_st& node, char pad, key_iterator_st* it) {
    if (it->index + 1 >= node.count) return false;
    ++it->index;
    return expand_compact_entry(node, pad, it, false);
}

// ---- whole nodes

void node_entries_st::insert(size_t at, const char* key, uint32_t record, uint32_t child) {
    keys.insert(keys.begin() + static_cast<ptrdiff_t>(at * key_length), key, key + key_length);
    records.insert(records.begin() + static_cast<ptrdiff_t>(at), record);
    children.insert(children.begin() + static_cast<ptrdiff_t>(at), child);
}

void node_entries_st::erase(size_t at) {
    auto from = keys.begin() + static_cast<ptrdiff_t>(at * key_length);
    keys.erase(from, from + key_length);
    records.erase(records.begin() + static_cast<ptrdiff_t>(at));
    children.erase(children.begin() + static_cast<ptrdiff_t>(at));
}

size_t node_entries_st::lower_bound(const char* wanted, uint32_t record) const noexcept {
    size_t low = 0, high = size();
    while (low < high) {
        size_t mid = (low + high) / 2;
        int c = compare_key_bytes(key(mid), wanted, key_length);
        if (c < 0 || (c == 0 && records[mid] < record)) low = mid + 1;
        else high = mid;
    }
    return low;
}

size_t node_entries_st::lower_bound_prefix(const char* wanted, uint64_t length) const noexcept {
    size_t low = 0, high = size();
    while (low < high) {
        size_t mid = (low + high) / 2;
        if (compare_key_bytes(key(mid), wanted, length) < 0) low = mid + 1;
        else high = mid;
    }
    return low;
}

size_t basic_lower_bound(const index_node_st& node, const char* wanted, uint64_t length,
                         const uint32_t* record) noexcept {
    uint32_t size = node.key_length + 8;
    const char* area = node.bytes + BASIC_AREA_START;
    size_t low = 0, high = node.count;
    while (low < high) {
        size_t mid = (low + high) / 2;
        const char* at = area + mid * size;
        int c = compare_key_bytes(at, wanted, length);
        if (c < 0 || (c == 0 && record && read_be32(at + node.key_length) < *record)) low = mid + 1;
        else high = mid;
    }
    return low;
}

uint32_t basic_child(const index_node_st& node, size_t i) noexcept {
    return read_be32(node.bytes + BASIC_AREA_START + i * (node.key_length + 8) + node.key_length + 4);
}

size_t basic_record_bound(const index_node_st& node, uint32_t record) noexcept {
    uint32_t size = node.key_length + 8;
    const char* area = node.bytes + BASIC_AREA_START + node.key_length;
    size_t low = 0, high = node.count;
    while (low < high) {
        size_t mid = (low + high) / 2;
        if (read_be32(area + mid * size) < record) low = mid + 1;
        else high = mid;
    }
    return low;
}

bool goto_bitmap_entry(const index_node_st& node, uint32_t record, uint32_t* bit) noexcept {
    if (!node.bitmap || record < node.first_record || record - node.first_record >= node.count) return false;
    *bit = record - node.first_record;
    return true;
}

void decode_entries(const index_node_st& node, char pad, node_entries_st* out) {
    out->clear(node.key_length);
    out->keys.reserve(static_cast<size_t>(node.count) * node.key_length);
    if (node.bitmap) {
        char key[MAX_KEY_LENGTH];
        std::memset(key, pad, node.key_length);
        for (uint32_t n = 0; n < node.count; ++n) {
            key[0] = node.bit(n) ? 'T' : 'F';
            out->push(key, node.first_record + n, NO_NODE);
        }
        return;
    }
    if (node.compact) {
        key_iterator_st it;
        for (bool more = goto_first_compact_key(node, pad, &it); more; more = goto_next_compact_key(node, pad, &it))
            out->push(it.key, it.record, NO_NODE);
        return;
    }
    uint32_t size = node.key_length + 8;
    for (uint16_t i = 0; i < node.count; ++i) {
        const char* at = node.bytes + BASIC_AREA_START + i * size;
        out->push(at, read_be32(at + node.key_length), read_be32(at + node.key_length + 4));
    }
}

namespace {

// Records ascending within the leaf's bits; each key's first byte gives its bit.
bool encode_bitmap(index_node_st* node, const node_entries_st& entries) {
    size_t n = entries.size();
    uint32_t first = n ? entries.records[0] : 0;
    for (size_t i = 0; i < n; ++i)
        if (entries.records[i] - first >= BITMAP_CAPACITY || (i && entries.records[i] <= entries.records[i - 1]))
            return false;
    std::memset(node->bytes + BITMAP_AREA_START, 0, BITMAP_AREA_SIZE);
    for (size_t i = 0; i < n; ++i) node->set_bit(entries.records[i] - first, entries.key(i)[0] == 'T');
    node->first_record = first;
    node->count = static_cast<uint16_t>(n ? entries.records[n - 1] - first + 1 : 0);
    node->encode_header();
    return true;
}

}  // namespace

bool encode_entries(index_node_st* node, char pad, const node_entries_st& entries) {
    uint32_t k = node->key_length;
    size_t n = entries.size();
    if (node->bitmap) return encode_bitmap(node, entries);
    if (!node->compact) {
        if (n > node->basic_capacity()) return false;
        std::memset(node->bytes + BASIC_AREA_START, 0, BASIC_AREA_SIZE);
        for (size_t i = 0; i < n; ++i) {
            char* at = node->bytes + BASIC_AREA_START + i * (k + 8);
            std::memcpy(at, entries.key(i), k);
            write_be32(at + k, entries.records[i]);
            write_be32(at + k + 4, entries.children[i]);
        }
        node->count = static_cast<uint16_t>(n);
        node->encode_header();
        return true;
    }
    const compact_layout_st& layout = lay_out(entries, pad);
    compact_geometry_st g = node->geometry;
    if (layout.max_record > g.record_mask || layout.max_duplicate > g.duplicate_mask ||
        layout.max_trailing > g.trailing_mask)
        g = calc_compact_node_geometry(std::max(layout.max_record, g.record_mask),
                                       std::max<uint32_t>(layout.max_duplicate, g.duplicate_mask),
                                       std::max<uint32_t>(layout.max_trailing, g.trailing_mask));
    if (g.entry_size > 8) throw dbf_error_not_impl();
    if (n * g.entry_size + layout.stored_total > COMPACT_AREA_SIZE) return false;
    node->geometry = g;
    char* area = node->bytes + COMPACT_AREA_START;
    std::memset(area, 0, COMPACT_AREA_SIZE);
    uint32_t position = COMPACT_AREA_SIZE;
    for (size_t i = 0; i < n; ++i) {
        uint32_t d = layout.duplicate[i], t = layout.trailing[i];
        uint32_t stored = k - d - t;
        position -= stored;
        std::memcpy(area + position, entries.key(i) + d, stored);
        write_leaf_key_prefix_octetLen(area + i * g.entry_size, g, entries.records[i], d, t);
    }
    node->count = static_cast<uint16_t>(n);
    node->free_space = static_cast<uint32_t>(COMPACT_AREA_SIZE - layout.stored_total - n * g.entry_size);
    node->encode_header();
    return true;
}

namespace {

struct compact_entry_st {
    uint32_t record, duplicate, trailing;
};

// Entry j of a compact leaf; the first entry shares nothing.
compact_entry_st read_compact_entry(const index_node_st& node, size_t j) {
    const compact_geometry_st& g = node.geometry;
    uint64_t v = read_entry(node.bytes + COMPACT_AREA_START + j * g.entry_size, g.entry_size);
    return {static_cast<uint32_t>(v & g.record_mask),
            j ? static_cast<uint32_t>((v >> g.record_bits) & g.duplicate_mask) : 0,
            static_cast<uint32_t>((v >> (g.record_bits + g.duplicate_bits)) & g.trailing_mask)};
}

}  // namespace

void find_compact_slot(const index_node_st& node, char pad, const char* key, uint32_t record, compact_slot_st* slot) {
    const compact_geometry_st& g = node.geometry;
    const uint32_t k = node.key_length, size = g.entry_size, n = node.count;
    const char* area = node.bytes + COMPACT_AREA_START;
    const uint32_t key_end = k - trailing_pad_count(key, k, pad);
    prefetch_lines(node.bytes, INDEX_NODE_SIZE);
    char* current = slot->after;  // each key is expanded over the one before
    uint32_t position = COMPACT_AREA_SIZE;
    uint32_t matched = 0;         // leading bytes the key before shares with the wanted one
    uint32_t before_end = 0;      // the key before without its trailing pads
    slot->found = false;
    for (uint32_t j = 0; j < n; ++j) {
        uint64_t value = read_area_entry(area, j * size, static_cast<uint8_t>(size));
        uint32_t record_j = static_cast<uint32_t>(value & g.record_mask);
        uint32_t duplicate = j ? static_cast<uint32_t>((value >> g.record_bits) & g.duplicate_mask) : 0;
        uint32_t trailing = static_cast<uint32_t>((value >> (g.record_bits + g.duplicate_bits)) & g.trailing_mask);
        if (duplicate + trailing > k) corrupted();
        uint32_t stored = k - duplicate - trailing;
        if (stored > position || position - stored < n * size) corrupted();
        position -= stored;
        std::memcpy(current + duplicate, area + position, stored);
        fill_pad(current + k - trailing, trailing, pad);
        uint32_t common = matched;
        bool below = true;
        // Sharing more with the key before than the wanted key does, this
        // key differs from the wanted one where that one did, the same way.
        if (j == 0 || duplicate <= matched) {
            common = duplicate + common_prefix(current + duplicate, key + duplicate, k - duplicate);
            below = common < k ? static_cast<unsigned char>(current[common]) < static_cast<unsigned char>(key[common])
                               : record_j < record;
        }
        if (!below) {
            slot->index = j;
            slot->found = common == k && record_j == record;
            slot->start = position + stored;
            slot->shared = j ? std::min({matched, before_end, key_end}) : 0;
            return;
        }
        matched = common;
        before_end = k - trailing;
    }
    slot->index = n;
    slot->start = position;
    slot->shared = n ? std::min({matched, before_end, key_end}) : 0;
}

void last_compact_slot(const index_node_st& node, char pad, const char* last_key, const char* key,
                       compact_slot_st* slot) {
    slot->index = node.count;
    slot->found = false;
    slot->start = static_cast<uint32_t>(node.count * node.geometry.entry_size + node.free_space);
    slot->shared = node.count ? analyzePrefix(last_key, key, node.key_length, pad) : 0;
}

bool insert_compact_key(index_node_st* node, char pad, const char* key, uint32_t record, const compact_slot_st& slot) {
    const compact_geometry_st& g = node->geometry;
    const uint32_t k = node->key_length, size = g.entry_size;
    const size_t n = node->count, i = slot.index;
    if (!node->compact || !node->leaf || i > n) return false;
    uint32_t t = trailing_pad_count(key, k, pad);
    uint32_t d = i ? slot.shared : 0;
    uint32_t stored = k - d - t;
    uint32_t low = static_cast<uint32_t>(n * size + node->free_space);  // the lowest stored key byte
    uint32_t start_of_i = slot.start;  // where entry i's stored bytes begin, from the top
    if (start_of_i > COMPACT_AREA_SIZE || start_of_i < low) return false;
    // The entry behind the new one shares its bytes with the new key now.
    compact_entry_st next{0, 0, 0};
    uint32_t next_stored_before = 0, next_stored = 0;
    if (i < n) {
        next = read_compact_entry(*node, i);
        if (next.duplicate + next.trailing > k) return false;
        next_stored_before = k - next.duplicate - next.trailing;
        next.duplicate = analyzePrefix(key, slot.after, k, pad);
        next_stored = k - next.duplicate - next.trailing;
    }
    if (record > g.record_mask || d > g.duplicate_mask || t > g.trailing_mask || next.duplicate > g.duplicate_mask)
        return false;
    int64_t shift = int64_t(stored) + next_stored - next_stored_before;  // how far the later keys move down
    if (size + shift > int64_t(node->free_space)) return false;
    char* area = node->bytes + COMPACT_AREA_START;
    if (start_of_i < next_stored_before) return false;
    uint32_t rest_end = start_of_i - next_stored_before;
    if (low > rest_end) return false;
    std::memmove(area + low - shift, area + low, rest_end - low);
    if (shift < 0) std::memset(area + low, 0, static_cast<size_t>(-shift));
    std::memcpy(area + start_of_i - stored, key + d, stored);
    if (i < n) std::memcpy(area + start_of_i - stored - next_stored, slot.after + next.duplicate, next_stored);
    std::memmove(area + (i + 1) * size, area + i * size, (n - i) * size);
    write_leaf_key_prefix_octetLen(area + i * size, g, record, d, t);
    if (i < n) write_leaf_key_prefix_octetLen(area + (i + 1) * size, g, next.record, next.duplicate, next.trailing);
    node->count = static_cast<uint16_t>(n + 1);
    node->free_space = static_cast<uint32_t>(node->free_space - size - shift);
    node->encode_header();
    return true;
}

size_t split_point(const index_node_st& node, char pad, const node_entries_st& entries) {
    size_t n = entries.size();
    if (!node.compact) return n / 2;
    const compact_layout_st& layout = lay_out(entries, pad);
    uint32_t used = 0;
    size_t i = 0;
    for (; i < n; ++i) {
        uint32_t size = node.geometry.entry_size + node.key_length - layout.duplicate[i] - layout.trailing[i];
        if (used + size >= COMPACT_AREA_SIZE / 2) break;
        used += size;
    }
    return std::clamp<size_t>(i, 1, n - 1);
}

void init_compact_node(index_node_st* node, uint32_t key_length, const compact_geometry_st& geometry,
                       uint16_t attributes) {
    std::memset(node->bytes, 0, INDEX_NODE_SIZE);
    node->key_length = key_length;
    node->attributes = attributes | NODE_LEAF;
    node->root = attributes & NODE_ROOT;
    node->leaf = node->compact = true;
    node->bitmap = false;
    node->count = 0;
    node->left = node->right = NO_NODE;
    node->geometry = geometry;
    node->free_space = COMPACT_AREA_SIZE;
    node->encode_header();
}

void init_basic_node(index_node_st* node, uint32_t key_length, uint16_t attributes) {
    std::memset(node->bytes, 0, INDEX_NODE_SIZE);
    node->key_length = key_length;
    node->attributes = attributes;
    node->root = attributes & NODE_ROOT;
    node->leaf = attributes & NODE_LEAF;
    node->compact = node->bitmap = false;
    node->count = 0;
    node->left = node->right = NO_NODE;
    node->encode_header();
}

void init_bitmap_node(index_node_st* node, uint32_t key_length, uint16_t attributes) {
    init_basic_node(node, key_length, attributes | NODE_LEAF);
    node->bitmap = true;
    node->first_record = 0;
    node->encode_header();
}

}  // namespace zobase
