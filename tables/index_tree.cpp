// The operations of an index tree: seeking, walking both ways, inserting and
// deleting with splits, parent fix-ups and the removal of emptied nodes.
//
// An insert into a compact leaf puts the entry into the leaf's bytes in
// place. Other changes work on the expanded keys of the node they touch:
// the node is decoded, changed and encoded again. What a parent must learn
// (its child's new greatest key, the halves of a split, or that the child
// is gone) climbs the path noted on the way down. Emptied nodes leave their sibling chain;
// their space stays unused.
#include <cstring>

#include "tables/byte_order.h"
#include "tables/index.h"
#include "tables/index_file.h"
#include "values/error.h"

namespace zobase {

namespace {

// Deeper than this, a tree of 512-byte nodes cannot be: the file loops.
constexpr size_t MAX_TREE_DEPTH = 32;

int compare_entry(const char* a, uint32_t ra, const char* b, uint32_t rb, uint32_t length) noexcept {
    int c = compare_key_bytes(a, b, length);
    if (c) return c;
    return ra < rb ? -1 : ra > rb ? 1 : 0;
}

}  // namespace

void Index::read_node(uint32_t position, index_node_st* node) {
    file->read_node(position, key_length(), leaf_kind(), node);
}

uint32_t Index::descend(const char* key, uint64_t length, const uint32_t* record, std::vector<waypoint_st>* path) {
    if (path) path->clear();
    uint32_t position = header.root;
    // Interior nodes are searched in place, never expanded.
    for (size_t depth = 0;; ++depth) {
        const index_node_st& node = file->node(position, key_length(), leaf_kind());
        if (node.leaf) return position;
        if (depth > MAX_TREE_DEPTH || node.count == 0) throw dbf_index_file_corrupted(file->file->name);
        prefetch_lines(node.bytes + BASIC_AREA_START, size_t(node.count) * (key_length() + 8));
        size_t i = binary() && record ? basic_record_bound(node, *record)
                                      : basic_lower_bound(node, key, record ? key_length() : length, record);
        if (i == node.count) --i;
        if (path) path->push_back({position, i});
        position = basic_child(node, i);
    }
}

void Index::load_leaf(uint32_t position, index_cursor_st* cursor) {
    const node_entries_st& entries = file->entries(position, key_length(), leaf_kind(), pad);
    const index_node_st& leaf = file->node(position, key_length(), leaf_kind());
    // A leaf's entries have no children: keys and records are all a cursor reads.
    cursor->entries.key_length = entries.key_length;
    cursor->entries.keys.assign(entries.keys.begin(), entries.keys.end());
    cursor->entries.records.assign(entries.records.begin(), entries.records.end());
    cursor->entries.children.clear();
    cursor->leaf = position;
    cursor->left = leaf.left;
    cursor->right = leaf.right;
    cursor->version = header.version;
    cursor->partial = false;
}

void Index::expand(index_cursor_st* cursor) {
    if (!cursor->partial) return;
    int64_t i = cursor->leaf_index;
    load_leaf(cursor->leaf, cursor);
    cursor->index = i;
}

// ---- finding

SeekResult Index::internal_seek(const char* key, uint64_t length, index_cursor_st* cursor) {
    check_version();
    uint32_t position = descend(key, length, nullptr, nullptr);
    const node_entries_st& entries = file->entries(position, key_length(), leaf_kind(), pad);
    prefetch_lines(entries.keys.data(), entries.keys.size());
    prefetch_lines(entries.records.data(), entries.records.size() * sizeof(uint32_t));
    size_t i = entries.lower_bound_prefix(key, length);
    if (i == entries.size()) {
        load_leaf(position, cursor);
        cursor->index = static_cast<int64_t>(i);
        return SEEK_RESULT_END;
    }
    // Only the entry found is copied: most seeks read one record and go.
    const index_node_st& leaf = file->node(position, key_length(), leaf_kind());
    cursor->entries.clear(key_length());
    cursor->entries.push(entries.key(i), entries.records[i], NO_NODE);
    cursor->leaf = position;
    cursor->left = leaf.left;
    cursor->right = leaf.right;
    cursor->version = header.version;
    cursor->partial = true;
    cursor->leaf_index = static_cast<int64_t>(i);
    cursor->index = 0;
    return std::memcmp(cursor->key(), key, length) == 0 ? SEEK_RESULT_FOUND : SEEK_RESULT_GREATER;
}

SeekResult Index::seek(const char* key, uint64_t length, index_cursor_st* cursor, SeekDir direction,
                       unsigned range) {
    char wanted[MAX_KEY_LENGTH];
    if (length > MAX_KEY_LENGTH) length = MAX_KEY_LENGTH;
    std::memcpy(wanted, key, length);
    if ((range & 3) == SEEK_RANGE_STRICT) {
        bool inside = direction == SEEK_BACKWARD ? ShrinkRawKey(wanted, length) : IncreaseRawKey(wanted, length);
        if (!inside) {
            if (direction == SEEK_BACKWARD) cursor->index = -1;
            else go_bottom(cursor), cursor->index = static_cast<int64_t>(cursor->entries.size());
            return SEEK_RESULT_END;
        }
    }
    if (direction != SEEK_BACKWARD) return internal_seek(wanted, length, cursor);
    // Backward: the last key not above the wanted one, found as the key
    // before the first key above it.
    char above[MAX_KEY_LENGTH];
    std::memcpy(above, wanted, length);
    bool positioned;
    if (IncreaseRawKey(above, length) && internal_seek(above, length, cursor) != SEEK_RESULT_END)
        positioned = go_prev(cursor);
    else
        positioned = go_bottom(cursor);
    if (!positioned) {
        cursor->index = -1;
        return SEEK_RESULT_END;
    }
    int c = std::memcmp(cursor->key(), wanted, length);
    return c < 0 ? SEEK_RESULT_GREATER : c == 0 ? SEEK_RESULT_FOUND : SEEK_RESULT_END;
}

bool Index::seek_record(const char* key, uint32_t record, index_cursor_st* cursor) {
    check_version();
    load_leaf(descend(key, key_length(), &record, nullptr), cursor);
    size_t i = cursor->entries.lower_bound(key, record);
    cursor->index = static_cast<int64_t>(i);
    if (i == cursor->entries.size()) {
        // Behind the last key of this leaf: the next entry begins the next leaf.
        if (cursor->right != NO_NODE) go_next(cursor);
        return false;
    }
    return compare_entry(cursor->key(), cursor->record(), key, record, key_length()) == 0;
}

// ---- walking

// Down the first or the last child of every level to a leaf.
bool Index::go_edge(index_cursor_st* cursor, bool last) {
    check_version();
    uint32_t position = header.root;
    for (size_t depth = 0;; ++depth) {
        const index_node_st& node = file->node(position, key_length(), leaf_kind());
        if (node.leaf) break;
        if (node.count == 0 || depth > MAX_TREE_DEPTH) throw dbf_index_file_corrupted(file->file->name);
        position = basic_child(node, last ? node.count - 1u : 0u);
    }
    load_leaf(position, cursor);
    cursor->index = last ? static_cast<int64_t>(cursor->entries.size()) - 1 : 0;
    return cursor->on_key();
}

bool Index::go_top(index_cursor_st* cursor) { return go_edge(cursor, false); }
bool Index::go_bottom(index_cursor_st* cursor) { return go_edge(cursor, true); }

bool Index::revalidate(index_cursor_st* cursor) {
    char key[MAX_KEY_LENGTH];
    std::memcpy(key, cursor->key(), key_length());
    return seek_record(key, cursor->record(), cursor);
}

// A walk only ever moves to greater entries: a sibling chain that leads
// back, as a damaged file's may, is found out and never loops.
bool Index::go_next(index_cursor_st* cursor) {
    check_version();
    if (cursor->version != header.version && cursor->on_key() && !revalidate(cursor)) return cursor->on_key();
    expand(cursor);
    if (cursor->index + 1 < static_cast<int64_t>(cursor->entries.size())) {
        ++cursor->index;
        return true;
    }
    if (cursor->right == NO_NODE || cursor->entries.size() == 0) {
        cursor->index = static_cast<int64_t>(cursor->entries.size());
        return false;
    }
    char last[MAX_KEY_LENGTH];
    uint32_t last_record = cursor->entries.records.back();
    std::memcpy(last, cursor->entries.key(cursor->entries.size() - 1), key_length());
    uint32_t from = cursor->leaf;
    uint32_t next = cursor->right;
    const index_node_st& node = file->node(next, key_length(), leaf_kind());
    if (!node.leaf || node.left != from) throw dbf_index_file_corrupted(file->file->name);
    load_leaf(next, cursor);
    if (cursor->entries.size() == 0 ||
        compare_entry(cursor->entries.key(0), cursor->entries.records[0], last, last_record, key_length()) <= 0)
        throw dbf_index_file_corrupted(file->file->name);
    cursor->index = 0;
    return true;
}

bool Index::go_prev(index_cursor_st* cursor) {
    check_version();
    if (cursor->version != header.version && cursor->on_key()) revalidate(cursor);
    expand(cursor);
    if (cursor->index > 0 && cursor->index <= static_cast<int64_t>(cursor->entries.size())) {
        --cursor->index;
        return true;
    }
    if (cursor->left == NO_NODE || cursor->entries.size() == 0) {
        cursor->index = -1;
        return false;
    }
    char first[MAX_KEY_LENGTH];
    uint32_t first_record = cursor->entries.records.front();
    std::memcpy(first, cursor->entries.key(0), key_length());
    uint32_t from = cursor->leaf;
    uint32_t next = cursor->left;
    const index_node_st& node = file->node(next, key_length(), leaf_kind());
    if (!node.leaf || node.right != from) throw dbf_index_file_corrupted(file->file->name);
    load_leaf(next, cursor);
    size_t n = cursor->entries.size();
    if (n == 0 || compare_entry(cursor->entries.key(n - 1), cursor->entries.records[n - 1], first, first_record,
                                key_length()) >= 0)
        throw dbf_index_file_corrupted(file->file->name);
    cursor->index = static_cast<int64_t>(n) - 1;
    return true;
}

// ---- changing

Index::leaf_place_st& Index::find_leaf_place(const char* key, uint32_t record) {
    if (!file->locked) throw dbf_error_index_file_not_locked();
    check_version();
    leaf_place_st& place = place_;
    uint32_t position = descend(key, key_length(), &record, &place.path);
    file->take_entries(position, key_length(), leaf_kind(), pad, &place.entries);
    place.leaf = position;
    place.index = place.entries.lower_bound(key, record);
    place.found = place.index < place.entries.size() &&
                  compare_entry(place.entries.key(place.index), place.entries.records[place.index], key, record,
                                key_length()) == 0;
    return place;
}

// A compact leaf takes the entry in place where it can: the leaf's keys are
// walked to its slot, or, for a key behind the last one this tag put into
// that leaf (records appended in key order), the slot is the end.
void Index::insert_key(const char* key, uint32_t record) {
    if (binary()) return insert_bit(key, record);
    if (!file->locked) throw dbf_error_index_file_not_locked();
    check_version();
    const uint32_t k = key_length();
    std::vector<waypoint_st>& path = place_.path;
    bool behind_tail = tail_.leaf != NO_NODE && header.version == tail_.version &&
                       compare_entry(key, record, tail_.key, tail_.record, k) > 0;
    // Behind the greatest key of the tag, the way down is the one to that key.
    uint32_t position;
    if (behind_tail && tail_.last_leaf) {
        path = tail_.path;
        position = tail_.leaf;
    } else {
        position = descend(key, k, &record, &path);
    }
    index_node_st& leaf = file->node_to_change(position, k, leaf_kind());
    if (leaf.compact) {
        compact_slot_st& slot = slot_;
        if (behind_tail && position == tail_.leaf)
            last_compact_slot(leaf, pad, tail_.key, key, &slot);
        else
            find_compact_slot(leaf, pad, key, record, &slot);
        if (slot.found) throw dbf_index_file_corrupted(file->file->name);
        if (insert_compact_key(&leaf, pad, key, record, slot)) {
            bool greatest = slot.index + 1 == leaf.count;
            bool appended = greatest && leaf.right == NO_NODE;
            if (greatest) tail_.path = path;  // before the way up uses it
            file->write_node(leaf);
            // The parent learns of a new greatest key, in place where it can.
            if (greatest && !path.empty()) {
                up_.clear(k);
                up_.push(key, record, position);
                carry_up(path, position, up_, appended);
            }
            changed();
            if (greatest) {
                tail_.leaf = position;
                tail_.last_leaf = appended;
                tail_.version = header.version;
                tail_.record = record;
                std::memcpy(tail_.key, key, k);
            }
            return;
        }
    }
    // The leaf is laid out anew, split when it is full.
    leaf_place_st& place = place_;
    file->take_entries(position, k, leaf_kind(), pad, &place.entries);
    place.leaf = position;
    place.index = place.entries.lower_bound(key, record);
    if (place.index < place.entries.size() &&
        compare_entry(place.entries.key(place.index), place.entries.records[place.index], key, record, k) == 0)
        throw dbf_index_file_corrupted(file->file->name);
    place.entries.insert(place.index, key, record, NO_NODE);
    // A copy: the nodes read on the way up may take the cache's place of this one.
    index_node_st changed_leaf = file->node(position, k, leaf_kind());
    bool appended = place.index + 1 == place.entries.size() && changed_leaf.right == NO_NODE;
    store_node(place.path, changed_leaf, place.entries, appended);
    changed();
}

bool Index::delete_key(const char* key, uint32_t record) {
    if (binary()) throw assert_failed_exception("a binary tag holds every record");
    leaf_place_st& place = find_leaf_place(key, record);
    if (!place.found) return false;
    place.entries.erase(place.index);
    index_node_st leaf;
    read_node(place.leaf, &leaf);
    store_node(place.path, leaf, place.entries);
    changed();
    return true;
}

void Index::store_node(std::vector<waypoint_st>& path, index_node_st& node, node_entries_st& entries,
                       bool appended, bool encoded) {
    node_entries_st up;  // what replaces the node's entry in its parent
    up.clear(key_length());
    if (entries.size() == 0 && node.root) {
        // The last key of the tag is gone: the root becomes an empty leaf.
        if (!node.leaf) {
            uint32_t position = node.position;
            init_compact_node(&node, key_length(), calc_compact_node_geometry(1, key_length(), key_length()),
                              NODE_ROOT);
            node.position = position;
        }
        encode_entries(&node, pad, entries);
        file->write_node(node);
        return;
    }
    if (entries.size() == 0) {
        unlink_node(node);
    } else if (encoded || encode_entries(&node, pad, entries)) {
        up.push(entries.key(entries.size() - 1), entries.records.back(), node.position);
        file->write_node(node, &entries);
    } else {
        bool was_root = node.root;
        std::vector<node_entries_st> parts;
        std::vector<index_node_st> nodes = split_entries(node, entries, appended, &parts);
        for (size_t i = 0; i < nodes.size(); ++i)
            up.push(parts[i].key(parts[i].size() - 1), parts[i].records.back(), nodes[i].position);
        if (was_root) return new_root(up);
    }
    if (path.empty()) return;
    carry_up(path, node.position, up, appended);
}

void Index::new_root(node_entries_st& up) {
    index_node_st root;
    init_basic_node(&root, key_length(), NODE_ROOT);
    root.position = file->allocate(INDEX_NODE_SIZE);
    header.root = root.position;
    std::vector<waypoint_st> none;
    store_node(none, root, up);
}

void Index::carry_up(std::vector<waypoint_st>& path, uint32_t child, node_entries_st& up, bool appended) {
    waypoint_st at = path.back();
    path.pop_back();
    if (up.size() == 1 && !file->node(at.position, key_length(), leaf_kind()).leaf)
        return replace_entry(path, at.position, at.index, child, up);
    index_node_st parent;
    read_node(at.position, &parent);
    node_entries_st siblings;
    file->take_entries(at.position, key_length(), leaf_kind(), pad, &siblings);
    if (at.index >= siblings.size() || siblings.children[at.index] != child)
        throw dbf_index_file_corrupted(file->file->name);
    if (up.size() == 1 && compare_entry(siblings.key(at.index), siblings.records[at.index], up.key(0), up.records[0],
                                        key_length()) == 0)
        return;
    appended = appended && up.size() > 1 && at.index + 1 == siblings.size() && parent.right == NO_NODE;
    siblings.erase(at.index);
    for (size_t i = 0; i < up.size(); ++i) siblings.insert(at.index + i, up.key(i), up.records[i], up.children[i]);
    store_node(path, parent, siblings, appended);
}

// An interior entry takes the key and record of `up` in place, its child
// unchanged; the level above hears of it only when it was the node's last.
void Index::replace_entry(std::vector<waypoint_st>& path, uint32_t position, size_t i, uint32_t child,
                          node_entries_st& up) {
    const uint32_t k = key_length();
    // Changed where the cache holds it, and written before any other node is read.
    index_node_st& parent = file->node_to_change(position, k, leaf_kind());
    if (i >= parent.count || basic_child(parent, i) != child) throw dbf_index_file_corrupted(file->file->name);
    char* entry = parent.bytes + BASIC_AREA_START + i * (k + 8);
    if (compare_entry(entry, read_be32(entry + k), up.key(0), up.records[0], k) == 0) return;
    std::memcpy(entry, up.key(0), k);
    write_be32(entry + k, up.records[0]);
    bool last = i + 1 == parent.count;
    file->write_node(parent);
    if (!last || path.empty()) return;
    up.children[0] = position;
    carry_up(path, position, up, false);
}

// The node keeps the first part; each further part gets a new node, linked
// into the chain behind it. Parts are halved until each fits; the whole
// never does (that is why it splits), and each part is encoded once.
std::vector<index_node_st> Index::split_entries(index_node_st& node, const node_entries_st& entries, bool appended,
                                                std::vector<node_entries_st>* parts) {
    index_node_st blank = node;
    blank.attributes &= static_cast<uint16_t>(~NODE_ROOT);
    blank.root = false;
    parts->assign(1, entries);
    std::vector<index_node_st> nodes;
    for (size_t i = 0; i < parts->size();) {
        if (i > 0 || parts->size() > 1) {
            nodes.push_back(blank);
            if (encode_entries(&nodes.back(), pad, (*parts)[i])) {
                ++i;
                continue;
            }
            nodes.pop_back();
        }
        node_entries_st& whole = (*parts)[i];
        if (whole.size() < 2) throw dbf_index_file_corrupted(file->file->name);
        // The first cut of an appended entry keeps everything before it.
        size_t cut = appended && i == 0 && parts->size() == 1 ? whole.size() - 1 : split_point(node, pad, whole);
        node_entries_st right;
        right.clear(key_length());
        for (size_t j = cut; j < whole.size(); ++j) right.push(whole.key(j), whole.records[j], whole.children[j]);
        whole.keys.resize(cut * key_length());
        whole.records.resize(cut);
        whole.children.resize(cut);
        parts->insert(parts->begin() + static_cast<ptrdiff_t>(i) + 1, std::move(right));
    }
    uint32_t after = node.right;
    for (size_t i = 1; i < nodes.size(); ++i) nodes[i].position = file->allocate(INDEX_NODE_SIZE);
    for (size_t i = 0; i < nodes.size(); ++i) {
        nodes[i].left = i ? nodes[i - 1].position : node.left;
        nodes[i].right = i + 1 < nodes.size() ? nodes[i + 1].position : after;
        nodes[i].encode_header();
        file->write_node(nodes[i]);
    }
    if (after != NO_NODE) {
        index_node_st next;
        read_node(after, &next);
        next.left = nodes.back().position;
        next.encode_header();
        file->write_node(next);
    }
    node = nodes.front();
    return nodes;
}

void Index::unlink_node(const index_node_st& node) {
    index_node_st neighbour;
    if (node.left != NO_NODE) {
        read_node(node.left, &neighbour);
        neighbour.right = node.right;
        neighbour.encode_header();
        file->write_node(neighbour);
    }
    if (node.right != NO_NODE) {
        read_node(node.right, &neighbour);
        neighbour.left = node.left;
        neighbour.encode_header();
        file->write_node(neighbour);
    }
}

// ---- binary tags

void Index::push_bitmap_entry(const index_node_st& leaf, node_entries_st* up) const {
    char key[MAX_KEY_LENGTH];
    std::memset(key, pad, key_length());
    up->push(key, leaf.first_record + leaf.count - 1u, leaf.position);
}

bool Index::find_bit(uint32_t record, std::vector<waypoint_st>* path, index_node_st* leaf, uint32_t* bit) {
    if (!file->locked) throw dbf_error_index_file_not_locked();
    check_version();
    read_node(descend(nullptr, 0, &record, path), leaf);
    if (!leaf->bitmap) throw dbf_index_file_corrupted(file->file->name);
    return goto_bitmap_entry(*leaf, record, bit);
}

void Index::insert_bit(const char* key, uint32_t record) {
    std::vector<waypoint_st> path;
    index_node_st leaf;
    uint32_t bit = 0;
    // Records arrive in their order: one held already, or one before the
    // end of the tag, means the file and the table disagree.
    if (record == 0 || find_bit(record, &path, &leaf, &bit) ||
        (leaf.count && (record < leaf.first_record || leaf.right != NO_NODE)))
        throw dbf_index_file_corrupted(file->file->name);
    node_entries_st up;
    up.clear(key_length());
    if (leaf.count == 0) leaf.first_record = record;
    if (record - leaf.first_record < BITMAP_CAPACITY) {
        // Records skipped on the way (none, as appends come) stay clear.
        bit = record - leaf.first_record;
        leaf.count = static_cast<uint16_t>(bit + 1);
        leaf.set_bit(bit, key[0] == 'T');
        leaf.encode_header();
        file->write_node(leaf);
        push_bitmap_entry(leaf, &up);
        if (!path.empty()) carry_up(path, leaf.position, up, false);
        return changed();
    }
    index_node_st next;
    init_bitmap_node(&next, key_length(), 0);
    next.position = file->allocate(INDEX_NODE_SIZE);
    next.first_record = record;
    next.count = 1;
    next.set_bit(0, key[0] == 'T');
    next.left = leaf.position;
    next.encode_header();
    bool was_root = leaf.root;
    leaf.right = next.position;
    leaf.attributes &= static_cast<uint16_t>(~NODE_ROOT);
    leaf.root = false;
    leaf.encode_header();
    file->write_node(leaf);
    file->write_node(next);
    push_bitmap_entry(leaf, &up);
    push_bitmap_entry(next, &up);
    if (was_root) new_root(up);
    else carry_up(path, leaf.position, up, true);
    changed();
}

void Index::update_bit(const char* key, uint32_t record) {
    index_node_st leaf;
    uint32_t bit = 0;
    if (!find_bit(record, nullptr, &leaf, &bit)) throw dbf_index_file_corrupted(file->file->name);
    if (leaf.bit(bit) == (key[0] == 'T')) return;
    leaf.set_bit(bit, key[0] == 'T');
    file->write_node(leaf);
    changed();
}

// ---- the structure check

std::vector<std::pair<std::string, uint32_t>> Index::check_structure() {
    check_version();
    auto fail = [&](const char* what, uint32_t position) {
        throw dbf_index_file_corrupted(String((std::string(what) + " at " + std::to_string(position)).c_str()));
    };
    std::vector<std::pair<std::string, uint32_t>> keys;
    std::vector<uint32_t> level{header.root};
    uint32_t k = key_length();
    // A binary tag orders by record alone; its leaves must be bitmaps.
    auto order = [&](const char* a, uint32_t ra, const char* b, uint32_t rb) {
        return binary() ? (ra < rb ? -1 : ra > rb ? 1 : 0) : compare_entry(a, ra, b, rb, k);
    };
    for (size_t depth = 0; !level.empty(); ++depth) {
        if (depth > MAX_TREE_DEPTH) fail("tree too deep", header.root);
        std::vector<uint32_t> below;
        uint32_t previous = NO_NODE;
        std::string last_key;
        uint32_t last_record = 0;
        bool leaves = false;
        for (size_t i = 0; i < level.size(); ++i) {
            index_node_st node;
            read_node(level[i], &node);
            if (node.left != previous) fail("left sibling wrong", node.position);
            if (i + 1 < level.size() && node.right != level[i + 1]) fail("right sibling wrong", node.position);
            if (i + 1 == level.size() && node.right != NO_NODE) fail("chain goes on", node.position);
            if ((depth == 0) != node.root) fail("root flag wrong", node.position);
            if (depth > 0 && node.count == 0) fail("empty node", node.position);
            leaves = node.leaf;
            if (node.leaf && binary() != node.bitmap) fail("leaf of the wrong kind", node.position);
            node_entries_st entries;
            decode_entries(node, pad, &entries);
            for (size_t j = 0; j < entries.size(); ++j) {
                std::string key(entries.key(j), k);
                if (!last_key.empty() || j || i)
                    if (order(last_key.data(), last_record, key.data(), entries.records[j]) >= 0)
                        fail("keys out of order", node.position);
                last_key = key;
                last_record = entries.records[j];
                if (node.leaf) {
                    keys.emplace_back(key, entries.records[j]);
                    continue;
                }
                index_node_st child;
                read_node(entries.children[j], &child);
                node_entries_st child_entries;
                decode_entries(child, pad, &child_entries);
                size_t n = child_entries.size();
                if (n == 0 ||
                    order(child_entries.key(n - 1), child_entries.records[n - 1], key.data(), entries.records[j]))
                    fail("parent entry differs from the child's last key", child.position);
                below.push_back(entries.children[j]);
            }
            previous = node.position;
        }
        if (leaves && !below.empty()) fail("leaf with children", header.root);
        level = std::move(below);
    }
    return keys;
}

}  // namespace zobase
