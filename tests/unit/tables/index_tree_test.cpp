// The index tree on raw keys: compact leaves, splits and fix-ups, seeks, and
// a model-checked run of random changes against a sorted set in memory.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tables/byte_order.h"
#include "tables/file.h"
#include "tables/index.h"
#include "tables/index_file.h"
#include "values/error.h"

namespace zobase {
namespace {

typedef std::pair<std::string, uint32_t> entry_t;

class Tree {
public:
    std::unique_ptr<IndexFile> file;
    std::unique_ptr<Index> index;

    explicit Tree(uint16_t key_length, uint64_t record_hint = 1000, uint16_t options = 0) {
        file = std::make_unique<IndexFile>(create_file(String("memory:///tree.cdx"), FILE_OPEN_TEMPORARY), nullptr);
        file->allocate(INDEX_HEADER_SIZE + INDEX_NODE_SIZE);  // where the directory stands
        index_header_st header;
        header.key_length = key_length;
        header.options = INDEX_OPTION_COMPACT | INDEX_OPTION_COMPOUND | options;
        index = Index::create(file.get(), header, ' ', record_hint);
        file->lock();
    }
    std::string key(const std::string& text) const {
        std::string k = text;
        k.resize(index->key_length(), ' ');
        return k;
    }
    void insert(const std::string& text, uint32_t record) { index->insert_key(key(text).data(), record); }
    bool remove(const std::string& text, uint32_t record) { return index->delete_key(key(text).data(), record); }
    index_node_st root() {
        index_node_st node;
        file->read_node(index->header.root, index->key_length(), index->leaf_kind(), &node);
        return node;
    }
    std::vector<entry_t> forward() {
        std::vector<entry_t> out;
        index_cursor_st cursor;
        for (bool on = index->go_top(&cursor); on; on = index->go_next(&cursor))
            out.emplace_back(std::string(cursor.key(), index->key_length()), cursor.record());
        return out;
    }
    std::vector<entry_t> backward() {
        std::vector<entry_t> out;
        index_cursor_st cursor;
        for (bool on = index->go_bottom(&cursor); on; on = index->go_prev(&cursor))
            out.emplace_back(std::string(cursor.key(), index->key_length()), cursor.record());
        return {out.rbegin(), out.rend()};
    }
    size_t leaf_count() {
        size_t n = 0;
        index_cursor_st cursor;
        uint32_t leaf = NO_NODE;
        for (bool on = index->go_top(&cursor); on; on = index->go_next(&cursor))
            if (cursor.leaf != leaf) ++n, leaf = cursor.leaf;
        return n;
    }
};

TEST(IndexNodes, CompactLeafWidensForRecord1024WithoutASplit) {
    // 10 record bits and 7 bits for each count fill 3 bytes exactly.
    Tree tree(127, 1000);
    EXPECT_EQ(tree.root().geometry.entry_size, 3);
    tree.insert("apple", 5);
    tree.insert("banana", 1000);
    tree.insert("cherry", 1024);
    index_node_st root = tree.root();
    EXPECT_TRUE(root.leaf);
    EXPECT_EQ(root.count, 3);
    EXPECT_EQ(root.geometry.entry_size, 4);
    EXPECT_GE(root.geometry.record_mask, 1024u);
    std::vector<entry_t> keys = tree.forward();
    ASSERT_EQ(keys.size(), 3u);
    EXPECT_EQ(keys[2], entry_t(tree.key("cherry"), 1024));
}

TEST(IndexNodes, KeysShareLeadingBytesAndDropPadding) {
    Tree tree(10);
    tree.insert("", 1);  // only pad bytes: stores nothing
    index_node_st root = tree.root();
    EXPECT_EQ(root.free_space, COMPACT_AREA_SIZE - root.geometry.entry_size);
    tree.insert("abcd", 2);
    tree.insert("abce", 3);
    // Before the former first non-blank key: its shared count changes.
    tree.insert("abc", 4);
    root = tree.root();
    // Stored: "", "abc", "d" behind "abc", "e" behind "abcd".
    EXPECT_EQ(root.free_space, COMPACT_AREA_SIZE - 4 * root.geometry.entry_size - 5);
    std::vector<entry_t> expected = {{tree.key(""), 1}, {tree.key("abc"), 4}, {tree.key("abcd"), 2},
                                     {tree.key("abce"), 3}};
    EXPECT_EQ(tree.forward(), expected);
    EXPECT_TRUE(tree.remove("abc", 4));
    EXPECT_FALSE(tree.remove("abc", 4));
    expected.erase(expected.begin() + 1);
    EXPECT_EQ(tree.forward(), expected);
}

// An entry put into a compact leaf in place gives the bytes that laying out
// the whole leaf again gives: keys with shared heads, pad tails, a key of
// pads only, inserts before the first and behind the last key; a record
// number or count too wide for the geometry is left to the full layout.
// The slot found by walking the leaf's bytes is the one the expanded keys
// give, also for equal keys told apart by their records.
TEST(IndexNodes, InsertInPlaceMatchesTheWholeLayout) {
    const uint32_t k = 6;
    const char pad = ' ';
    std::mt19937 random(7);
    for (int round = 0; round < 40; ++round) {
        index_node_st node;
        init_compact_node(&node, k, calc_compact_node_geometry(255, 3, 3), NODE_ROOT);
        node_entries_st entries;
        entries.clear(k);
        int in_place = 0;
        for (int step = 0; step < 400; ++step) {
            char key[k];
            for (uint32_t j = 0; j < k; ++j) key[j] = "ab  "[random() % 4];
            uint32_t record = 1 + random() % (round % 4 == 0 ? 4000 : 200);
            size_t at = entries.lower_bound(key, record);
            // The walk over the leaf's bytes finds the slot the expanded keys give.
            compact_slot_st slot;
            find_compact_slot(node, pad, key, record, &slot);
            ASSERT_EQ(slot.index, at) << round << " " << step;
            bool present = at < entries.size() && std::memcmp(entries.key(at), key, k) == 0 &&
                           entries.records[at] == record;
            ASSERT_EQ(slot.found, present);
            if (present) continue;
            if (at == entries.size() && at > 0) {
                compact_slot_st last;
                last_compact_slot(node, pad, entries.key(at - 1), key, &last);
                EXPECT_EQ(last.start, slot.start);
                EXPECT_EQ(last.shared, slot.shared);
            }
            node_entries_st grown = entries;
            grown.insert(at, key, record, NO_NODE);
            index_node_st whole = node;
            bool fits = encode_entries(&whole, pad, grown);
            index_node_st placed = node;
            if (insert_compact_key(&placed, pad, key, record, slot)) {
                ASSERT_TRUE(fits);
                ASSERT_EQ(std::memcmp(placed.bytes, whole.bytes, INDEX_NODE_SIZE), 0) << round << " " << step;
                ++in_place;
            } else {
                ASSERT_EQ(std::memcmp(placed.bytes, node.bytes, INDEX_NODE_SIZE), 0);  // left unchanged
            }
            if (!fits) break;
            node = whole;
            entries = grown;
        }
        EXPECT_GT(in_place, 10) << round;
    }
}

// Keys arriving in order go behind the last key this tag put into the leaf
// without walking it; a delete or an insert elsewhere in between (the tag's
// version moves on) must not leave that shortcut reading a stale last key.
TEST(IndexNodes, InOrderKeysAfterOtherChangesStayRight) {
    Tree tree(12);
    std::set<entry_t> model;
    auto insert = [&](const std::string& text, uint32_t record) {
        tree.insert(text, record);
        model.emplace(tree.key(text), record);
    };
    auto remove = [&](const std::string& text, uint32_t record) {
        ASSERT_TRUE(tree.remove(text, record));
        model.erase(entry_t(tree.key(text), record));
    };
    char text[16];
    uint32_t record = 0;
    for (int i = 1; i <= 2000; ++i) {
        std::snprintf(text, sizeof text, "key%05d", i);
        insert(text, ++record);
        // The last key goes; the next one shares less with the key now last.
        if (i % 7 == 0) remove(text, record);
        // A key before the last one, then the order goes on.
        if (i % 11 == 0) insert(std::string(text).substr(0, 7), ++record);
        // An equal key behind: told apart by its record alone.
        if (i % 13 == 0) insert(text, ++record);
    }
    std::vector<entry_t> expected(model.begin(), model.end());
    EXPECT_EQ(tree.index->check_structure(), expected);
    EXPECT_EQ(tree.forward(), expected);
    EXPECT_EQ(tree.backward(), expected);
}

TEST(IndexNodes, SplitsKeepParentsAndSiblingsRight) {
    Tree tree(20);
    for (uint32_t i = 1; i <= 3000; ++i) tree.insert("k" + std::to_string(i * 7919 % 3001), i);
    EXPECT_FALSE(tree.root().leaf);
    std::vector<entry_t> walked = tree.index->check_structure();
    EXPECT_EQ(walked.size(), 3000u);
    EXPECT_EQ(tree.forward(), walked);
    EXPECT_EQ(tree.backward(), walked);

    // The greatest key of a leaf goes: the parent's entry follows.
    index_cursor_st cursor;
    tree.index->go_top(&cursor);
    entry_t last(std::string(cursor.entries.key(cursor.entries.size() - 1), 20), cursor.entries.records.back());
    EXPECT_TRUE(tree.index->delete_key(last.first.data(), last.second));
    tree.index->check_structure();

    // A leaf whose keys all go leaves the chain.
    size_t leaves = tree.leaf_count();
    tree.index->go_top(&cursor);
    tree.index->go_next(&cursor);
    while (cursor.index + 1 < static_cast<int64_t>(cursor.entries.size())) tree.index->go_next(&cursor);
    tree.index->go_next(&cursor);  // the first key of the second leaf
    node_entries_st second = cursor.entries;
    for (size_t i = 0; i < second.size(); ++i) EXPECT_TRUE(tree.index->delete_key(second.key(i), second.records[i]));
    EXPECT_EQ(tree.leaf_count(), leaves - 1);
    EXPECT_EQ(tree.index->check_structure().size(), 3000u - 1 - second.size());

    // Emptied completely, the tag is an empty root leaf and takes keys again.
    for (const entry_t& e : tree.forward()) EXPECT_TRUE(tree.index->delete_key(e.first.data(), e.second));
    EXPECT_TRUE(tree.root().leaf);
    EXPECT_TRUE(tree.forward().empty());
    tree.insert("again", 1);
    EXPECT_EQ(tree.forward().size(), 1u);
}

TEST(IndexNodes, SeeksFindPrefixesAndBothDirections) {
    Tree tree(8);
    const char* words[] = {"ant", "bee", "bear", "cat", "cow", "dog"};
    uint32_t record = 0;
    for (const char* w : words) tree.insert(w, ++record);
    index_cursor_st cursor;
    EXPECT_EQ(tree.index->seek("be", 2, &cursor, SEEK_FORWARD, SEEK_RANGE_INCLUSIVE), SEEK_RESULT_FOUND);
    EXPECT_EQ(std::string(cursor.key(), 4), "bear");
    EXPECT_EQ(tree.index->seek("bz", 2, &cursor, SEEK_FORWARD, SEEK_RANGE_INCLUSIVE), SEEK_RESULT_GREATER);
    EXPECT_EQ(std::string(cursor.key(), 3), "cat");
    EXPECT_EQ(tree.index->seek("e", 1, &cursor, SEEK_FORWARD, SEEK_RANGE_INCLUSIVE), SEEK_RESULT_END);
    // Strict: behind every key that begins "c", where the next one up begins.
    EXPECT_EQ(tree.index->seek("c", 1, &cursor, SEEK_FORWARD, SEEK_RANGE_STRICT), SEEK_RESULT_FOUND);
    EXPECT_EQ(std::string(cursor.key(), 3), "dog");
    // Backward: the last key that begins "c", then the last before "c".
    EXPECT_EQ(tree.index->seek("c", 1, &cursor, SEEK_BACKWARD, SEEK_RANGE_INCLUSIVE), SEEK_RESULT_FOUND);
    EXPECT_EQ(std::string(cursor.key(), 3), "cow");
    EXPECT_EQ(tree.index->seek("c", 1, &cursor, SEEK_BACKWARD, SEEK_RANGE_STRICT), SEEK_RESULT_FOUND);
    EXPECT_EQ(std::string(cursor.key(), 3), "bee");
    EXPECT_EQ(tree.index->seek("a", 1, &cursor, SEEK_BACKWARD, SEEK_RANGE_STRICT), SEEK_RESULT_END);
}

TEST(IndexNodes, ChangesNeedTheLockAndDuplicatesAreRefused) {
    Tree tree(4);
    tree.insert("x", 1);
    EXPECT_THROW(tree.insert("x", 1), dbf_index_file_corrupted);
    tree.file->unlock();
    EXPECT_THROW(tree.insert("y", 2), dbf_error_index_file_not_locked);
}

// Keys in random order go to leaves pushed out of the cache and read again;
// emptied, the cache finds every node anew by its position.
TEST(IndexNodes, TheCacheHoldsSixtyFourNodesWhenShared) {
    Tree tree(40);
    EXPECT_GT(tree.file->cache_capacity, IndexFile::CACHE_CAPACITY);  // this file is not shared
    tree.file->cache_capacity = IndexFile::CACHE_CAPACITY;
    for (uint32_t i = 1; i <= 5000; ++i) tree.insert(std::to_string(i * 7919 % 5003), i);
    std::vector<entry_t> walked = tree.index->check_structure();
    EXPECT_EQ(walked.size(), 5000u);
    EXPECT_EQ(tree.file->cached_nodes(), IndexFile::CACHE_CAPACITY);
    tree.file->empty_cache();
    EXPECT_EQ(tree.file->cached_nodes(), 0u);
    EXPECT_EQ(tree.forward(), walked);
    EXPECT_EQ(tree.backward(), walked);
}

TEST(IndexNodes, AWalkSurvivesChangesBehindIt) {
    Tree tree(6);
    for (uint32_t i = 0; i < 2000; ++i) tree.insert(std::to_string(100000 + i), i + 1);
    index_cursor_st cursor;
    tree.index->go_top(&cursor);
    uint32_t seen = 1;
    std::string previous(cursor.key(), 6);
    // Deleting the key the cursor stands on and every second one ahead.
    for (uint32_t i = 0; i < 2000; i += 2) tree.remove(std::to_string(100000 + i), i + 1);
    while (tree.index->go_next(&cursor)) {
        std::string key(cursor.key(), 6);
        EXPECT_LT(previous, key);
        previous = key;
        ++seen;
    }
    EXPECT_EQ(seen, 1u + 1000u);
}

// Random inserts, deletes and changes of keys of two kinds, checked against
// a sorted set: the walks both ways and the structure, every 1,000 changes;
// beside them a binary tag whose bits follow the same records.
// ZOBASE_INDEX_MODEL_OPS sets the number of changes (200,000 for a long run).
TEST(IndexModel, RandomChangesKeepTheTreeEqualToASortedSet) {
    const char* setting = std::getenv("ZOBASE_INDEX_MODEL_OPS");
    const uint64_t operations = setting ? std::strtoull(setting, nullptr, 10) : 20000;
    std::mt19937 random(20240611);
    Tree text(12, 100), number(8, 100), flag(1, 100, INDEX_OPTION_BINARY);
    std::set<entry_t> text_model, number_model;
    // The binary tag holds every record ever added, by record number.
    std::vector<entry_t> flag_model;
    std::vector<std::string> text_of(1);  // by record number; empty: no record
    std::vector<double> number_of(1);
    auto random_text = [&] {
        static const char letters[] = "aab  cxyz";
        std::string s(random() % 12, ' ');
        for (char& c : s) c = letters[random() % (sizeof letters - 1)];
        return text.key(s);
    };
    auto number_key = [](double v) {
        char out[8];
        keyN8(v, out, 8);
        return std::string(out, 8);
    };
    auto put = [&](uint32_t record) {
        text_of[record] = random_text();
        number_of[record] = static_cast<double>(static_cast<int>(random() % 2000) - 1000) / 4;
        text.index->insert_key(text_of[record].data(), record);
        text_model.emplace(text_of[record], record);
        std::string n = number_key(number_of[record]);
        number.index->insert_key(n.data(), record);
        number_model.emplace(n, record);
        std::string f(1, random() % 3 ? 'F' : 'T');
        if (record == flag_model.size() + 1) {
            flag.index->insert_key(f.data(), record);
            flag_model.emplace_back(f, record);
        } else {
            flag.index->update_bit(f.data(), record);
            flag_model[record - 1].first = f;
        }
    };
    auto take = [&](uint32_t record) {
        ASSERT_TRUE(text.index->delete_key(text_of[record].data(), record));
        text_model.erase({text_of[record], record});
        std::string n = number_key(number_of[record]);
        ASSERT_TRUE(number.index->delete_key(n.data(), record));
        number_model.erase({n, record});
        text_of[record].clear();
    };
    std::vector<uint32_t> live;
    for (uint64_t op = 1; op <= operations; ++op) {
        unsigned choice = random() % 10;
        if (live.empty() || choice < 5) {
            text_of.emplace_back();
            number_of.emplace_back();
            uint32_t record = static_cast<uint32_t>(text_of.size() - 1);
            put(record);
            live.push_back(record);
        } else {
            size_t at = random() % live.size();
            uint32_t record = live[at];
            take(record);
            if (choice < 8) put(record);  // an update: old key out, new key in
            else live.erase(live.begin() + static_cast<ptrdiff_t>(at));
        }
        if (op % 1000 == 0 || op == operations) {
            for (Tree* tree : {&text, &number}) {
                const std::set<entry_t>& model = tree == &text ? text_model : number_model;
                std::vector<entry_t> expected(model.begin(), model.end());
                ASSERT_EQ(tree->index->check_structure(), expected) << "after " << op;
                ASSERT_EQ(tree->forward(), expected) << "after " << op;
                ASSERT_EQ(tree->backward(), expected) << "after " << op;
            }
            ASSERT_EQ(flag.index->check_structure(), flag_model) << "after " << op;
        }
    }
}

// ---- binary tags: one bit per record in bitmap leaves

std::vector<entry_t> bits_of(uint32_t count, uint32_t every) {
    std::vector<entry_t> bits;
    for (uint32_t record = 1; record <= count; ++record) bits.emplace_back(record % every ? "F" : "T", record);
    return bits;
}

TEST(BitmapTags, RecordsFillALeafThenChainTheNext) {
    Tree tree(1, 100, INDEX_OPTION_BINARY);
    EXPECT_TRUE(tree.root().bitmap);
    for (uint32_t record = 1; record <= BITMAP_CAPACITY; ++record)
        tree.index->insert_key(record % 5 ? "F" : "T", record);
    index_node_st root = tree.root();
    ASSERT_TRUE(root.bitmap);
    EXPECT_EQ(root.count, BITMAP_CAPACITY);
    EXPECT_EQ(root.first_record, 1u);
    // Record 3968 is the last bit of the leaf, lowest bit first: byte 495, bit 7.
    EXPECT_EQ(static_cast<unsigned char>(root.bytes[BITMAP_AREA_START + 495]) >> 7, 0u);
    EXPECT_EQ(static_cast<unsigned char>(root.bytes[BITMAP_AREA_START]), 0x10u);  // record 5
    EXPECT_EQ(read_be32(root.bytes + 12), 1u);  // the first record, big-endian

    // Record 3969 begins a second leaf under a new interior root.
    tree.index->insert_key("T", BITMAP_CAPACITY + 1);
    root = tree.root();
    EXPECT_FALSE(root.leaf);
    ASSERT_EQ(root.count, 2);
    index_node_st second;
    tree.file->read_node(basic_child(root, 1), 1, LEAF_BITMAP, &second);
    EXPECT_EQ(second.first_record, BITMAP_CAPACITY + 1);
    EXPECT_EQ(second.count, 1);
    EXPECT_TRUE(second.bit(0));
    EXPECT_NE(second.left, NO_NODE);
    std::vector<entry_t> expected = bits_of(BITMAP_CAPACITY, 5);
    expected.emplace_back("T", BITMAP_CAPACITY + 1);
    EXPECT_EQ(tree.index->check_structure(), expected);
}

TEST(BitmapTags, UpdatesSetAndClearBitsOfHeldRecordsOnly) {
    Tree tree(1, 100, INDEX_OPTION_BINARY);
    for (uint32_t record = 1; record <= 5000; ++record) tree.index->insert_key("T", record);
    uint32_t version = tree.index->header.version;
    tree.index->update_bit("F", 3968);
    tree.index->update_bit("F", 3969);
    tree.index->update_bit("F", 1);
    tree.index->update_bit("T", 2);  // unchanged: no new version
    EXPECT_EQ(tree.index->header.version, version + 3);
    std::vector<entry_t> bits = tree.index->check_structure();
    ASSERT_EQ(bits.size(), 5000u);
    for (uint32_t record : {1u, 3968u, 3969u}) EXPECT_EQ(bits[record - 1].first, "F") << record;
    EXPECT_EQ(bits[1].first, "T");
    EXPECT_EQ(bits[3969].first, "T");
    // A record the tag does not hold, one held already, and a change without the lock.
    EXPECT_THROW(tree.index->update_bit("T", 5001), dbf_index_file_corrupted);
    EXPECT_THROW(tree.index->insert_key("T", 4000), dbf_index_file_corrupted);
    EXPECT_THROW(tree.index->insert_key("T", 0), dbf_index_file_corrupted);
    tree.file->unlock();
    EXPECT_THROW(tree.index->update_bit("T", 1), dbf_error_index_file_not_locked);
}

// Past one interior node of leaves (55 entries of 9 bytes) the tree grows
// another level; a bulk-built tag holds the same bits in the same shape.
TEST(BitmapTags, GrowthPastManyLeavesMatchesABulkBuild) {
    const uint32_t count = 60 * BITMAP_CAPACITY + 17;
    Tree appended(1, 100, INDEX_OPTION_BINARY), built(1, 100, INDEX_OPTION_BINARY);
    node_entries_st entries;
    entries.clear(1);
    for (const entry_t& e : bits_of(count, 7)) {
        appended.index->insert_key(e.first.data(), e.second);
        entries.push(e.first.data(), e.second, NO_NODE);
    }
    built.index->build(entries);
    std::vector<entry_t> expected = bits_of(count, 7);
    EXPECT_EQ(appended.index->check_structure(), expected);
    EXPECT_EQ(built.index->check_structure(), expected);
    index_node_st root = appended.root();
    EXPECT_FALSE(root.leaf);
    EXPECT_FALSE(appended.file->node(basic_child(root, 0), 1, LEAF_BITMAP).leaf);  // three levels
    for (uint32_t record = count + 1; record <= count + 100; ++record) built.index->insert_key("T", record);
    built.index->update_bit("T", 1);
    EXPECT_EQ(built.index->check_structure().size(), count + 100);
}

}  // namespace
}  // namespace zobase

namespace zobase {
namespace {

// A tag built bottom-up from sorted entries walks exactly as one built by
// inserts, at one leaf, several leaves and several interior levels (long
// keys make interior nodes narrow), and keeps taking changes afterwards.
TEST(IndexBuild, BulkBuiltTagWalksAsAnInsertBuiltOne) {
    std::mt19937 random(14);
    for (uint16_t key_length : {12, 100}) {
        for (uint32_t count : {0u, 1u, 30u, 5000u}) {
            Tree inserted(key_length, count), built(key_length, count);
            node_entries_st entries;
            entries.clear(key_length);
            for (uint32_t record = 1; record <= count; ++record) {
                // Shared prefixes, pad-only tails and equal keys of different records.
                std::string text = "k" + std::to_string(random() % (count / 3 + 1)) + std::string(random() % 4, 'x');
                inserted.insert(text, record);
                entries.push(built.key(text).data(), record, NO_NODE);
            }
            sort_entries(&entries);
            built.index->build(entries);
            std::vector<entry_t> walked = built.index->check_structure();
            ASSERT_EQ(walked, inserted.index->check_structure()) << key_length << " " << count;
            EXPECT_EQ(built.forward(), walked);
            EXPECT_EQ(built.backward(), walked);
            if (count < 5000) continue;
            EXPECT_FALSE(built.root().leaf);
            EXPECT_LT(built.leaf_count(), inserted.leaf_count());  // full leaves
            for (uint32_t record = count + 1; record <= count + 500; ++record) built.insert("k7", record);
            for (size_t i = 0; i < walked.size(); i += 3)
                EXPECT_TRUE(built.index->delete_key(walked[i].first.data(), walked[i].second));
            EXPECT_EQ(built.index->check_structure().size(), count + 500 - (count + 2) / 3);
            index_cursor_st cursor;
            EXPECT_EQ(built.index->seek(built.key("k7").data(), key_length, &cursor, SEEK_FORWARD, SEEK_RANGE_INCLUSIVE),
                      SEEK_RESULT_FOUND);
        }
    }
}

// Records appended in key order fill their leaves as a bulk build does,
// where halving every split would leave them half empty.
TEST(IndexBuild, KeysAppendedInOrderFillTheirNodes) {
    Tree appended(40, 20000), built(40, 20000);
    node_entries_st entries;
    entries.clear(40);
    for (uint32_t record = 1; record <= 20000; ++record) {
        char text[16];
        std::snprintf(text, sizeof text, "%08u", record * 3);
        appended.insert(text, record);
        entries.push(built.key(text).data(), record, NO_NODE);
    }
    built.index->build(entries);
    EXPECT_EQ(appended.index->check_structure(), built.index->check_structure());
    EXPECT_LE(appended.leaf_count(), built.leaf_count() + 1);
    EXPECT_LE(appended.file->allocation_position, built.file->allocation_position + 8 * INDEX_NODE_SIZE);
}

}  // namespace
}  // namespace zobase
