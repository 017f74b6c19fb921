#pragma once
// IndexFile: one CDX file, holding the tag directory and any number of tags.
// Layout: the directory's 1024-byte header at 0, its root node at 1024, then
// tag headers and nodes in the order they were allocated. Positions are
// absolute and 32-bit; 0xFFFFFFFF is none. Space is never reclaimed.
//
// Nodes pass through a cache of 64 (more in a file not shared); when it is
// full a clock hand picks a node not used since it last came by. A node
// written stays in the cache as changed until the file is flushed: at the
// release of the index lock in a shared file (so that nobody reads a file
// without what the lock holder wrote), and when the table writes its
// pending records or closes in an unshared one. A changed node pushed out
// of the cache is written then.
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tables/file.h"
#include "tables/index_node.h"

namespace zobase {

class Charset;

class IndexFile {
public:
    // The byte the index lock takes.
    static constexpr uint64_t LOCK_POSITION = 0x7FFFFFFE;
    static constexpr size_t CACHE_CAPACITY = 64;
    // Nobody else changes a file this process holds alone, so its cache
    // may hold far more (about 9 MB of nodes): enough for a tree of a few
    // million keys to stay in memory while records arrive in random key order.
    static constexpr size_t UNSHARED_CACHE_CAPACITY = 16384;

    std::unique_ptr<File> file;
    uint64_t allocation_position = 0;  // the file's end when last locked; where the next node lands
    bool locked = false;
    size_t cache_capacity = CACHE_CAPACITY;
    uint64_t lock_counter = 0;  // grows with every lock taken
    const Charset* charset = nullptr;

    IndexFile(File* file, const Charset* charset);
    ~IndexFile();
    IndexFile(const IndexFile&) = delete;
    IndexFile& operator=(const IndexFile&) = delete;

    bool shared() const noexcept { return file->is_shared(); }

    // A header of 1024 bytes, or its first `size` bytes, at a position;
    // raises dbf_index_file_corrupted when the file ends before it.
    void read_header(uint64_t position, char* bytes, uint64_t size = INDEX_HEADER_SIZE);
    // Held until the next flush, as a changed node is.
    void write_header(uint64_t position, const char* bytes, uint64_t size);
    // A node through the cache, decoded for a tag of that key length.
    void read_node(uint32_t position, uint32_t key_length, LeafKind leaves, index_node_st* out);
    // The same without a copy: valid until the next call that reads or
    // writes a node.
    const index_node_st& node(uint32_t position, uint32_t key_length, LeafKind leaves);
    // The cached node itself, to change in place and hand to write_node
    // before any other node is read or written (which may take its place).
    index_node_st& node_to_change(uint32_t position, uint32_t key_length, LeafKind leaves);
    // A node's entries expanded, kept in the cache beside its bytes until
    // the node changes or leaves the cache; valid as long as `node` is.
    const node_entries_st& entries(uint32_t position, uint32_t key_length, LeafKind leaves, char pad);
    // The node's entries expanded, moved out of the cache into `out` for a
    // change that write_node brings back: no copy, and the cache forgets
    // them until then.
    void take_entries(uint32_t position, uint32_t key_length, LeafKind leaves, char pad, node_entries_st* out);
    // With `entries`, the node's keys expanded are taken into the cache
    // (the vector is left empty), sparing the next reader their expansion.
    void write_node(const index_node_st& node, node_entries_st* entries = nullptr);
    // `size` bytes at the end of the file.
    uint32_t allocate(uint32_t size);

    // The index lock: a no-op that succeeds in an unshared file. On taking
    // it, the file's size becomes the allocation position.
    bool lock();
    // Writes what is changed, then releases the lock.
    void unlock();
    // Writes every changed node and header.
    void flush();
    // Forgets every cached node (another process has changed the file).
    void empty_cache();
    uint64_t cached_nodes() const noexcept { return slots_.size(); }
    void close();

private:
    // Line-aligned, the flags and the node's decoded header first: a look-up
    // that finds its node touches one line before it reads the bytes.
    struct alignas(64) cache_entry_st {
        bool changed = false;
        bool expanded = false;  // `entries` holds the node's keys
        bool used = true;       // touched since the clock hand last passed
        index_node_st node;
        node_entries_st entries;
    };
    cache_entry_st& fetch(uint32_t position, uint32_t key_length, LeafKind leaves);
    // The entry of a position, or null.
    cache_entry_st* find(uint32_t position) noexcept;
    // A slot for a node not cached yet, entered under its position.
    cache_entry_st& claim(uint32_t position);
    void write_out(const cache_entry_st& entry);
    // Where each cached node's slot is, by the node's position over 512:
    // the slot's index plus one, 0 for none. Grows with the positions
    // cached; a look-up reads one small number, no probe run.
    void enter(uint32_t position, uint32_t slot);
    void remove(uint32_t position, uint32_t slot) noexcept;
    static_assert(UNSHARED_CACHE_CAPACITY < 0xFFFF, "a slot's number must fit the position table");

    std::vector<cache_entry_st> slots_;  // up to cache_capacity, never moved once full
    std::vector<uint16_t> where_;
    size_t hand_ = 0;
    std::map<uint64_t, std::string> pending_headers_;
};

}  // namespace zobase
