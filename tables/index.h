#pragma once
// Index: one tag of a CDX file, a B-tree of 512-byte nodes under a
// 1024-byte header. Every level of the tree is a doubly linked chain of
// nodes; keys are ordered by their bytes and, among equal keys, by record
// number, so that (key, record) names one entry.
//
// Tag header: root (0, 4), free list (4, 4; kept as read, never used),
// version (8, 4; grows with every change), key length (12, 2), option bits
// (14, 2), collation name (494, 8), descending (502, 2), filter offset and
// length (504, 506), key offset and length (508, 510; lengths count the
// NUL), and the expression pool from 512: key, NUL, filter, NUL.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tables/index_key.h"
#include "tables/index_node.h"
#include "tables/seek_options.h"
#include "values/string.h"

namespace zobase {

class Charset;
class Collation;
class DbfFile;
class IndexFile;
class Program;
class Variant;
class VmStack;

enum IndexOption : uint16_t {
    INDEX_OPTION_DEFINED = 0x0001,  // kept as the definition gave it
    INDEX_OPTION_NULLABLE = 0x0002,
    INDEX_OPTION_UNIQUE = 0x0004,
    INDEX_OPTION_FILTER = 0x0008,
    INDEX_OPTION_UNKNOWN = 0x0010,  // refused on open
    INDEX_OPTION_COMPACT = 0x0020,
    INDEX_OPTION_COMPOUND = 0x0040,
    INDEX_OPTION_DIRECTORY = 0x0080,
    INDEX_OPTION_SINGLE_BYTE = 0x0100,  // keys under a single-byte collation, and the directory
    INDEX_OPTION_OTHER_CHARSET = 0x0200,
    INDEX_OPTION_BINARY = 0x0400,
};
constexpr uint16_t INDEX_OPTIONS_DIRECTORY = 0x01E0;
constexpr uint32_t EXPRESSION_POOL_SIZE = 512;

enum SeekResult : int {
    SEEK_RESULT_FOUND = 0,
    SEEK_RESULT_GREATER = 1,  // on the next greater key
    SEEK_RESULT_END = 2,      // beyond the end
};

// What INDEX ON asks for.
struct internal_indexdef_st {
    String tag;
    String key_expression;
    String filter_expression;  // empty: none
    String collation;          // empty: the machine order
    bool defined = false;      // option bit 0, carried as given
    bool unique = false;       // refuses a second record with the same key
    bool descending = false;
    bool binary = false;
};

// What a key expression turned out to be.
struct IndexExpressionInfo {
    IndexKeyKind kind = KEY_CHARACTER;
    uint64_t length = 0;
    bool nullable = false;
};

struct index_header_st {
    uint32_t root = NO_NODE;
    uint32_t free_list = NO_NODE;
    uint32_t version = 0;
    uint16_t key_length = 0;
    uint16_t options = 0;
    std::string collation;  // upper case, no NULs
    bool descending = false;
    std::string key_expression;     // bytes in the table's charset
    std::string filter_expression;

    bool has(IndexOption bit) const noexcept { return (options & bit) != 0; }
};

// A position in a tag: the keys of one leaf, expanded, and the entry within
// (-1 before the first, the count behind the last). The tag's version at
// the time tells whether the tree has changed under it since. A seek
// copies only the entry it finds (`partial`, the entry's place in its leaf
// in `leaf_index`); a step from there loads the whole leaf (Index::expand).
struct index_cursor_st {
    uint32_t leaf = NO_NODE;
    uint32_t left = NO_NODE;
    uint32_t right = NO_NODE;
    node_entries_st entries;
    int64_t index = -1;
    uint32_t version = 0;
    bool partial = false;
    int64_t leaf_index = -1;

    bool on_key() const noexcept { return index >= 0 && index < static_cast<int64_t>(entries.size()); }
    const char* key() const noexcept { return entries.key(static_cast<size_t>(index)); }
    uint32_t record() const noexcept { return entries.records[static_cast<size_t>(index)]; }
};

// Orders entries by (key, record) for Index::build.
void sort_entries(node_entries_st* entries);

class Index {
public:
    IndexFile* file = nullptr;
    uint32_t header_position = 0;
    index_header_st header;
    String name;  // empty for the directory
    char pad = ' ';

    // ---- what the table layer fills in
    Collation* collation = nullptr;
    IndexKeyKind kind = KEY_CHARACTER;
    key_operation create_key_op = nullptr;
    std::unique_ptr<Program> key_program;
    std::unique_ptr<Program> filter_program;
    uint64_t last_seen_lock = ~0ull;
    // Key buffers of update_keys: the key of the new and of the old record.
    char new_key[MAX_KEY_LENGTH] = {};
    char old_key[MAX_KEY_LENGTH] = {};
    bool new_marked = false;
    bool old_marked = false;

    Index(IndexFile* file, uint32_t header_position);
    ~Index();
    Index(const Index&) = delete;
    Index& operator=(const Index&) = delete;

    uint32_t key_length() const noexcept { return header.key_length; }
    bool binary() const noexcept { return header.has(INDEX_OPTION_BINARY); }
    LeafKind leaf_kind() const noexcept {
        return binary() ? LEAF_BITMAP : header.has(INDEX_OPTION_COMPACT) ? LEAF_COMPACT : LEAF_BASIC;
    }
    bool unique() const noexcept { return header.has(INDEX_OPTION_UNIQUE); }

    // ---- the header. Reading refuses the unknown bit 4 with error 1001.
    void read_header();
    void write_header();
    // A new tag: header and an empty root leaf, a bitmap for a binary tag,
    // else compact with entries holding record numbers up to `record_hint`.
    // Both are allocated at the end.
    static std::unique_ptr<Index> create(IndexFile* file, const index_header_st& header, char pad,
                                         uint64_t record_hint);
    // In a shared file, the header is read again unless the lock is held
    // still since this tag last looked; a changed version empties the cache.
    void check_version();

    // ---- expressions (index_expression.cpp)
    // Compiles the key (and filter) of the header and takes the kind of the
    // key from a run on the shown record; the collation by the header's name.
    void open(VmStack* stack, DbfFile* table);
    // Compiles `text` and classifies its value on the shown record. Raises
    // dbf_invalid_index_key_len, dbf_error_type_index_expression.
    static std::unique_ptr<Program> analze_expression(VmStack* stack, DbfFile* table, const String& text,
                                                      const Collation* collation, IndexExpressionInfo* info);
    // The key of a value: full length for storing, else as long as the
    // value makes it (a search key).
    uint64_t create_key(const Variant* value, char* out, uint64_t length, bool full_length) const;
    // The key of the shown record; null in a tag that is not nullable
    // raises dbf_error_index_cannot_store_null.
    uint64_t eval_key(VmStack* stack, char* out) const;
    // True without a filter; false or null give false; any other kind is
    // error 11.
    bool eval_filter(VmStack* stack) const;
    String key_text(const Charset* charset) const;
    String filter_text(const Charset* charset) const;
    // What REINDEX would make this tag again from.
    internal_indexdef_st definition(const Charset* charset) const;

    // ---- finding keys. A search key may be shorter than the tag's keys:
    // it then matches every key it begins.
    SeekResult seek(const char* key, uint64_t length, index_cursor_st* cursor, SeekDir direction, unsigned range);
    // The first key not below `key`.
    SeekResult internal_seek(const char* key, uint64_t length, index_cursor_st* cursor);
    // The entry (key, record) exactly; false leaves the cursor on the entry
    // that would follow it.
    bool seek_record(const char* key, uint32_t record, index_cursor_st* cursor);
    // False for an empty tag.
    bool go_top(index_cursor_st* cursor);
    bool go_bottom(index_cursor_st* cursor);
    // False at the end (the cursor stands behind the last key) or the
    // beginning (before the first). A tree changed meanwhile is found again
    // by the cursor's entry.
    bool go_next(index_cursor_st* cursor);
    bool go_prev(index_cursor_st* cursor);
    // A partial cursor takes its whole leaf.
    void expand(index_cursor_st* cursor);
    // The share of the tag's entries before the cursor's entry, or with
    // `from_end` behind it (index_position.cpp).
    double position(const index_cursor_st& cursor, bool from_end);

    // ---- changing the tree; the file's lock must be held
    // (dbf_error_index_file_not_locked). An entry that exists already
    // raises dbf_index_file_corrupted.
    void insert_key(const char* key, uint32_t record);
    // False when there is no such entry.
    bool delete_key(const char* key, uint32_t record);
    // A binary tag: the bit of a record it holds already, set when the key
    // begins with T. A record it does not hold raises dbf_index_file_corrupted.
    void update_bit(const char* key, uint32_t record);
    // Fills a new, empty tag with entries sorted by (key, record), a binary
    // tag's by record alone, building the tree bottom-up with full nodes
    // (index_build.cpp).
    void build(const node_entries_st& sorted);

    // ---- the whole tree checked: keys ordered in every node (a binary
    // tag's records), each interior entry equal to its child's last key,
    // sibling chains consistent at every level. Returns the leaf entries in
    // order; raises dbf_index_file_corrupted naming what is wrong.
    std::vector<std::pair<std::string, uint32_t>> check_structure();

private:
    struct waypoint_st {
        uint32_t position;
        size_t index;
    };
    // The leaf where (key, record) is or would go, with the way down to it
    // and the position of the first entry not less than it.
    struct leaf_place_st {
        std::vector<waypoint_st> path;
        node_entries_st entries;
        uint32_t leaf = NO_NODE;
        size_t index = 0;
        bool found = false;  // the entry is there
    };
    // Fills place_, whose vectors are kept from change to change so that a
    // change allocates nothing.
    leaf_place_st& find_leaf_place(const char* key, uint32_t record);
    leaf_place_st place_;
    node_entries_st up_;  // a leaf's new greatest entry for its parent
    compact_slot_st slot_;
    // The last entry of a leaf as this tag's last insert left it, true while
    // the tag's version is the one noted: a key behind it goes to the
    // leaf's end without walking its keys. When that leaf is the tag's
    // last, a key behind it needs no descent either: the way down is noted.
    struct tail_st {
        uint32_t leaf = NO_NODE;
        bool last_leaf = false;
        uint32_t version = 0;
        uint32_t record = 0;
        char key[MAX_KEY_LENGTH] = {};
        std::vector<waypoint_st> path;
    } tail_;
    void read_node(uint32_t position, index_node_st* node);
    // Down to the leaf for (key, record), or by key prefix when record is
    // null; the interior levels are noted in `path` when given. Returns the
    // leaf's position.
    uint32_t descend(const char* key, uint64_t length, const uint32_t* record, std::vector<waypoint_st>* path);
    // The leaf's entries into the cursor, from the cache's expanded copy.
    void load_leaf(uint32_t position, index_cursor_st* cursor);
    bool go_edge(index_cursor_st* cursor, bool last);
    // Writes a changed node and carries the change to its parent: the new
    // greatest key, the halves of a split, or the node's removal.
    // `appended`: the change added an entry behind the last of the last
    // node of its level, as records appended in key order do. A split then
    // leaves the node full and starts the next with the new entry, so that
    // such a tag gets full nodes rather than half-full ones. `encoded`: the
    // node's bytes hold the entries already.
    void store_node(std::vector<waypoint_st>& path, index_node_st& node, node_entries_st& entries,
                    bool appended = false, bool encoded = false);
    // A root over the nodes `up` names, which were the tree's top level.
    void new_root(node_entries_st& up);
    // The parent at the end of `path` takes `up` for its entry of `child`.
    void carry_up(std::vector<waypoint_st>& path, uint32_t child, node_entries_st& up, bool appended);
    void replace_entry(std::vector<waypoint_st>& path, uint32_t parent, size_t i, uint32_t child,
                       node_entries_st& up);
    std::vector<index_node_st> split_entries(index_node_st& node, const node_entries_st& entries, bool appended,
                                             std::vector<node_entries_st>* parts);
    void unlink_node(const index_node_st& node);
    // A binary tag's changes: a record behind the last one held takes its
    // bit in the last leaf, or in a new leaf chained behind it when that is
    // full.
    void insert_bit(const char* key, uint32_t record);
    // The leaf holding `record` and its bit, with the way down; false when
    // no leaf holds it.
    bool find_bit(uint32_t record, std::vector<waypoint_st>* path, index_node_st* leaf, uint32_t* bit);
    // What the parent of a bitmap leaf holds for it: its last record under
    // a key of pad bytes.
    void push_bitmap_entry(const index_node_st& leaf, node_entries_st* up) const;
    // Finds the cursor's entry again after the tree changed; true when it
    // still exists, else the cursor stands on the entry that follows it.
    bool revalidate(index_cursor_st* cursor);
    void changed();
};

}  // namespace zobase
