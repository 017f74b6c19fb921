// Building a tag bottom-up from all its entries: the entries are sorted
// (a binary tag's by record), leaves are filled left to right, and each interior level is made
// of basic nodes over the level below, until one node is left as the root.
// Far cheaper than inserting the entries one by one, which touches a leaf
// per entry and splits every leaf on the way.
#include <algorithm>
#include <cstring>

#include "tables/index.h"
#include "tables/index_file.h"
#include "values/error.h"

namespace zobase {

namespace {

// One node of a level: its entries and where it goes.
struct level_node_st {
    node_entries_st entries;
    uint32_t position = NO_NODE;
};

// Cuts `all` into runs, each as long as `fits` allows one more entry.
template <typename Fits>
std::vector<level_node_st> cut_level(const node_entries_st& all, Fits fits) {
    std::vector<level_node_st> nodes;
    size_t i = 0;
    while (i < all.size()) {
        level_node_st& node = nodes.emplace_back();
        node.entries.clear(all.key_length);
        size_t begin = i;
        while (i < all.size() && (i == begin || fits(begin, i))) {
            node.entries.push(all.key(i), all.records[i], all.children[i]);
            ++i;
        }
    }
    return nodes;
}

// A key's first eight bytes as a number that orders as the bytes do (short
// keys padded with zero bytes), so that most comparisons of a sort stay in
// the array being sorted instead of reaching into the keys.
uint64_t key_prefix(const char* key, uint32_t length) noexcept {
    uint64_t prefix = 0;
    std::memcpy(&prefix, key, std::min<uint32_t>(length, 8));
    return __builtin_bswap64(prefix);
}

struct sort_item_st {
    uint64_t prefix;
    uint32_t entry;
};

}  // namespace

void sort_entries(node_entries_st* entries) {
    uint32_t k = entries->key_length;
    const char* keys = entries->keys.data();
    const uint32_t* records = entries->records.data();
    std::vector<sort_item_st> order(entries->size());
    for (uint32_t i = 0; i < order.size(); ++i) order[i] = {key_prefix(keys + size_t(i) * k, k), i};
    auto before = [&](const sort_item_st& a, const sort_item_st& b) {
        if (a.prefix != b.prefix) return a.prefix < b.prefix;
        int c = k > 8 ? compare_key_bytes(keys + size_t(a.entry) * k + 8, keys + size_t(b.entry) * k + 8, k - 8) : 0;
        return c ? c < 0 : records[a.entry] < records[b.entry];
    };
    // Keys that grow with the record number (an ID) arrive sorted already.
    if (std::is_sorted(order.begin(), order.end(), before)) return;
    std::sort(order.begin(), order.end(), before);
    node_entries_st sorted;
    sorted.clear(k);
    sorted.keys.reserve(entries->keys.size());
    sorted.records.reserve(order.size());
    sorted.children.reserve(order.size());
    for (const sort_item_st& item : order)
        sorted.push(keys + size_t(item.entry) * k, records[item.entry], entries->children[item.entry]);
    *entries = std::move(sorted);
}

void Index::build(const node_entries_st& sorted) {
    if (!file->locked) throw dbf_error_index_file_not_locked();
    check_version();
    if (sorted.size() == 0) return;
    index_node_st node;
    read_node(header.root, &node);
    if (node.count || (binary() ? !node.bitmap : !node.compact)) throw dbf_index_file_corrupted(file->file->name);
    const compact_geometry_st geometry = node.geometry;
    uint32_t k = key_length();
    // A leaf takes entries while their numbers and stored bytes fit its area.
    uint32_t used = 0;
    auto leaf_fits = [&](size_t begin, size_t i) {
        if (binary()) return sorted.records[i] - sorted.records[begin] < BITMAP_CAPACITY;
        auto size = [&](size_t j) {
            uint32_t t = trailing_pad_count(sorted.key(j), k, pad);
            uint32_t d = j == begin ? 0 : analyzePrefix(sorted.key(j - 1), sorted.key(j), k, pad);
            return geometry.entry_size + k - d - t;
        };
        if (i == begin + 1) used = size(begin);
        uint32_t more = size(i);
        if (used + more > COMPACT_AREA_SIZE) return false;
        used += more;
        return true;
    };
    std::vector<level_node_st> level = cut_level(sorted, leaf_fits);
    // The empty root leaf becomes the first leaf.
    level.front().position = header.root;
    bool leaves = true;
    for (;;) {
        for (level_node_st& n : level)
            if (n.position == NO_NODE) n.position = file->allocate(INDEX_NODE_SIZE);
        bool top = level.size() == 1;
        node_entries_st up;
        up.clear(k);
        for (size_t i = 0; i < level.size(); ++i) {
            uint16_t attributes = top ? NODE_ROOT : 0;
            if (leaves && binary()) init_bitmap_node(&node, k, attributes);
            else if (leaves) init_compact_node(&node, k, geometry, attributes);
            else init_basic_node(&node, k, attributes);
            node.position = level[i].position;
            node.left = i ? level[i - 1].position : NO_NODE;
            node.right = i + 1 < level.size() ? level[i + 1].position : NO_NODE;
            const node_entries_st& entries = level[i].entries;
            if (!encode_entries(&node, pad, entries)) throw dbf_index_file_corrupted(file->file->name);
            file->write_node(node);
            if (node.bitmap) push_bitmap_entry(node, &up);
            else up.push(entries.key(entries.size() - 1), entries.records.back(), node.position);
        }
        if (top) break;
        level = cut_level(up, [&](size_t begin, size_t i) { return i - begin < node.basic_capacity(); });
        leaves = false;
    }
    header.root = level.front().position;
    changed();
}

}  // namespace zobase
