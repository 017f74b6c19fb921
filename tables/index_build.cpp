// Building a tag bottom-up from all its entries: the entries are sorted
// (a binary tag's by record), leaves are filled left to right, and each interior level is made
// of basic nodes over the level below, until one node is left as the root.
// Far cheaper than inserting the entries one by one, which touches a leaf
// per entry and splits every leaf on the way.
#include <algorithm>
#include <array>
#include <cstring>

#include "tables/index_build.h"

#include "tables/dbf_file.h"
#include "tables/index.h"
#include "tables/key_reader.h"
#include "tables/index_file.h"
#include "values/error.h"

namespace zobase {

namespace {

// Eight key bytes as a number that orders as the bytes do (short keys
// padded with zero bytes), so that the sort compares and buckets numbers
// instead of reaching into the keys.
uint64_t key_prefix(const char* key, uint32_t length) noexcept {
    uint64_t prefix = 0;
    std::memcpy(&prefix, key, std::min<uint32_t>(length, 8));
    return __builtin_bswap64(prefix);
}

struct sort_item_st {
    uint64_t prefix;  // eight key bytes from the depth the item is sorted at
    uint32_t entry;
};

// Entries sorted by their key bytes from `depth` on, the prefix of each item
// holding the eight from there. The items start in record order and every
// step keeps the order of equal keys, so equal keys end in record order.
class EntrySorter {
public:
    explicit EntrySorter(const node_entries_st& entries)
        : keys_(entries.keys.data()),
          records_(entries.records.data()),
          k_(entries.key_length),
          items_(entries.size()),
          scratch_(entries.size()) {
        for (uint32_t i = 0; i < items_.size(); ++i) items_[i] = {prefix_at(i, 0), i};
        // A tag's build gathers them in record order; anyone else may not.
        if (!std::is_sorted(entries.records.begin(), entries.records.end()))
            std::stable_sort(items_.begin(), items_.end(), [&](const sort_item_st& a, const sort_item_st& b) {
                return records_[a.entry] < records_[b.entry];
            });
    }

    bool sorted() const {
        for (size_t i = 1; i < items_.size(); ++i)
            if (before(items_[i], items_[i - 1], 0)) return false;
        return true;
    }

    const std::vector<sort_item_st>& sort() {
        sort_run(0, items_.size(), 0);
        return items_;
    }

private:
    // Runs this short are sorted by insertion; longer ones by their bytes.
    static constexpr size_t SHORT_RUN = 32;
    const char* keys_;
    const uint32_t* records_;
    uint32_t k_;
    std::vector<sort_item_st> items_;
    std::vector<sort_item_st> scratch_;

    uint64_t prefix_at(uint32_t entry, uint32_t depth) const noexcept {
        return key_prefix(keys_ + size_t(entry) * k_ + depth, k_ - depth);
    }
    // Key bytes from `depth` on, then record number.
    bool before(const sort_item_st& a, const sort_item_st& b, uint32_t depth) const noexcept {
        if (a.prefix != b.prefix) return a.prefix < b.prefix;
        uint32_t rest = depth + 8;
        int c = k_ > rest ? compare_key_bytes(keys_ + size_t(a.entry) * k_ + rest, keys_ + size_t(b.entry) * k_ + rest,
                                              k_ - rest)
                          : 0;
        return c ? c < 0 : records_[a.entry] < records_[b.entry];
    }

    void sort_run(size_t begin, size_t end, uint32_t depth) {
        if (end - begin <= SHORT_RUN) {
            for (size_t i = begin + 1; i < end; ++i) {
                sort_item_st item = items_[i];
                size_t j = i;
                for (; j > begin && before(item, items_[j - 1], depth); --j) items_[j] = items_[j - 1];
                items_[j] = item;
            }
            return;
        }
        radix_sort(begin, end);
        if (depth + 8 >= k_) return;
        // Runs of equal prefixes go on with the next eight bytes.
        for (size_t i = begin; i < end;) {
            size_t j = i + 1;
            while (j < end && items_[j].prefix == items_[i].prefix) ++j;
            if (j - i > 1) {
                for (size_t m = i; m < j; ++m) items_[m].prefix = prefix_at(items_[m].entry, depth + 8);
                sort_run(i, j, depth + 8);
            }
            i = j;
        }
    }

    // A stable least-significant-byte-first sort of the prefixes, leaving
    // out the bytes every item shares.
    void radix_sort(size_t begin, size_t end) {
        size_t n = end - begin;
        std::vector<std::array<uint32_t, 256>> counts(8);
        for (auto& c : counts) c.fill(0);
        for (size_t i = begin; i < end; ++i)
            for (int b = 0; b < 8; ++b) ++counts[b][(items_[i].prefix >> (8 * b)) & 0xFF];
        sort_item_st* from = items_.data() + begin;
        sort_item_st* to = scratch_.data() + begin;
        for (int b = 0; b < 8; ++b) {
            std::array<uint32_t, 256>& count = counts[b];
            if (count[(from[0].prefix >> (8 * b)) & 0xFF] == n) continue;
            uint32_t place = 0;
            for (uint32_t& c : count) {
                uint32_t here = c;
                c = place;
                place += here;
            }
            for (size_t i = 0; i < n; ++i) to[count[(from[i].prefix >> (8 * b)) & 0xFF]++] = from[i];
            std::swap(from, to);
        }
        if (from != items_.data() + begin) std::copy(from, from + n, items_.data() + begin);
    }
};

}  // namespace

void sort_entries(node_entries_st* entries) {
    EntrySorter sorter(*entries);
    // Keys that grow with the record number (an ID) arrive sorted already.
    if (sorter.sorted()) return;
    const std::vector<sort_item_st>& order = sorter.sort();
    uint32_t k = entries->key_length;
    node_entries_st sorted;
    sorted.clear(k);
    sorted.keys.resize(entries->keys.size());
    sorted.records.reserve(order.size());
    sorted.children.reserve(order.size());
    char* out = sorted.keys.data();
    for (const sort_item_st& item : order) {
        std::memcpy(out, entries->key(item.entry), k);
        out += k;
        sorted.records.push_back(entries->records[item.entry]);
        sorted.children.push_back(entries->children[item.entry]);
    }
    *entries = std::move(sorted);
}

void build_tag_from_records(VmStack* stack, DbfFile* table, Index* tag) {
    KeyReader reader(table, tag);
    node_entries_st entries;
    uint32_t k = tag->key_length();
    entries.clear(k);
    entries.keys.reserve(table->record_count * k);
    entries.records.reserve(table->record_count);
    entries.children.reserve(table->record_count);
    for (uint64_t number = 1; number <= table->record_count; ++number) {
        if (!table->go(number, table->shown_record, READAHEAD_BLOCK)) break;
        table->recno = number;
        table->bof = table->eof = false;
        if (!tag->eval_filter(stack)) continue;
        if (!reader.usable() || !reader.read(table->shown_record, tag->new_key)) tag->eval_key(stack, tag->new_key);
        entries.push(tag->new_key, static_cast<uint32_t>(number), NO_NODE);
    }
    if (!tag->binary()) sort_entries(&entries);
    if (tag->unique())
        for (size_t i = 1; i < entries.size(); ++i)
            if (std::memcmp(entries.key(i - 1), entries.key(i), k) == 0) throw dbf_unique_key_violation(tag->name);
    tag->build(entries);
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
    auto leaf_fits = [&](const node_entries_st& all, size_t begin, size_t i) {
        if (binary()) return all.records[i] - all.records[begin] < BITMAP_CAPACITY;
        auto size = [&](size_t j) {
            uint32_t t = trailing_pad_count(all.key(j), k, pad);
            uint32_t d = j == begin ? 0 : analyzePrefix(all.key(j - 1), all.key(j), k, pad);
            return geometry.entry_size + k - d - t;
        };
        if (i == begin + 1) used = size(begin);
        uint32_t more = size(i);
        if (used + more > COMPACT_AREA_SIZE) return false;
        used += more;
        return true;
    };
    init_basic_node(&node, k, 0);
    const uint32_t interior_capacity = node.basic_capacity();
    auto interior_fits = [&](const node_entries_st&, size_t begin, size_t i) { return i - begin < interior_capacity; };
    // Each level is written left to right as it is cut, every node as full
    // as it goes; the next node's place is taken when a node has one, so the
    // nodes of a level lie in order in the file. The empty root leaf becomes
    // the first leaf; a level of one node is the root.
    node_entries_st part, up, below;
    const node_entries_st* level = &sorted;
    uint32_t position = header.root;
    for (bool leaves = true;; leaves = false) {
        up.clear(k);
        size_t begin = 0;
        uint32_t left = NO_NODE, first = position;
        while (begin < level->size()) {
            part.clear(k);
            size_t i = begin;
            for (; i < level->size() && (i == begin || (leaves ? leaf_fits(*level, begin, i)
                                                              : interior_fits(*level, begin, i)));
                 ++i)
                part.push(level->key(i), level->records[i], level->children[i]);
            uint16_t attributes = begin == 0 && i == level->size() ? NODE_ROOT : 0;
            uint32_t right = i < level->size() ? file->allocate(INDEX_NODE_SIZE) : NO_NODE;
            if (leaves && binary()) init_bitmap_node(&node, k, attributes);
            else if (leaves) init_compact_node(&node, k, geometry, attributes);
            else init_basic_node(&node, k, attributes);
            node.position = position;
            node.left = left;
            node.right = right;
            if (!encode_entries(&node, pad, part)) throw dbf_index_file_corrupted(file->file->name);
            file->write_node(node);
            if (node.bitmap) push_bitmap_entry(node, &up);
            else up.push(part.key(part.size() - 1), part.records.back(), node.position);
            left = position;
            position = right;
            begin = i;
        }
        if (up.size() == 1) {
            header.root = first;
            break;
        }
        std::swap(below, up);
        level = &below;
        position = file->allocate(INDEX_NODE_SIZE);
    }
    changed();
}

}  // namespace zobase
