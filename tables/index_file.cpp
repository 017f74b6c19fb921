// The CDX file: headers, the node cache, allocation and the index lock.
#include "tables/index_file.h"

#include <algorithm>
#include <cstring>

#include "values/error.h"

namespace zobase {

IndexFile::IndexFile(File* opened, const Charset* table_charset) : file(opened), charset(table_charset) {
    int64_t size = file->size();
    allocation_position = size > 0 ? static_cast<uint64_t>(size) : 0;
    cache_capacity = file->is_shared() ? CACHE_CAPACITY : UNSHARED_CACHE_CAPACITY;
}

IndexFile::~IndexFile() = default;

void IndexFile::read_header(uint64_t position, char* bytes, uint64_t size) {
    auto pending = pending_headers_.find(position);
    if (pending != pending_headers_.end() && pending->second.size() >= size) {
        std::memcpy(bytes, pending->second.data(), size);
        return;
    }
    if (file->readex(static_cast<std::streamoff>(position), bytes, size) != size)
        throw dbf_index_file_corrupted(file->name);
    // A change of the leading fields waits to be written.
    if (pending != pending_headers_.end()) std::memcpy(bytes, pending->second.data(), pending->second.size());
}

void IndexFile::write_header(uint64_t position, const char* bytes, uint64_t size) {
    std::string& pending = pending_headers_[position];
    if (pending.size() < size) pending.resize(size);
    std::memcpy(pending.data(), bytes, size);
}

IndexFile::cache_entry_st* IndexFile::find(uint32_t position) noexcept {
    size_t at = position / INDEX_NODE_SIZE;
    if (at >= where_.size() || where_[at] == 0) return nullptr;
    cache_entry_st* entry = &slots_[where_[at] - 1u];
    // Nodes at positions that are no multiple of 512 (a damaged file) may share a number.
    return entry->node.position == position ? entry : nullptr;
}

void IndexFile::enter(uint32_t position, uint32_t slot) {
    size_t at = position / INDEX_NODE_SIZE;
    if (at >= where_.size()) where_.resize(std::max(at + 1, where_.size() + where_.size() / 2), 0);
    where_[at] = static_cast<uint16_t>(slot + 1);
}

void IndexFile::remove(uint32_t position, uint32_t slot) noexcept {
    size_t at = position / INDEX_NODE_SIZE;
    if (at < where_.size() && where_[at] == slot + 1) where_[at] = 0;
}

IndexFile::cache_entry_st& IndexFile::claim(uint32_t position) {
    if (slots_.capacity() == 0) slots_.reserve(cache_capacity);
    if (slots_.size() < cache_capacity && slots_.size() < slots_.capacity()) {
        slots_.emplace_back();
        enter(position, static_cast<uint32_t>(slots_.size() - 1));
        return slots_.back();
    }
    for (;; hand_ = (hand_ + 1) % slots_.size()) {
        cache_entry_st& entry = slots_[hand_];
        if (entry.used) {
            entry.used = false;
            continue;
        }
        if (entry.changed) write_out(entry);
        remove(entry.node.position, static_cast<uint32_t>(hand_));
        entry.node.position = position;
        entry.changed = entry.expanded = false;
        entry.used = true;
        enter(position, static_cast<uint32_t>(hand_));
        hand_ = (hand_ + 1) % slots_.size();
        return entry;
    }
}

IndexFile::cache_entry_st& IndexFile::fetch(uint32_t position, uint32_t key_length, LeafKind leaves) {
    if (cache_entry_st* found = find(position)) {
        // A node read for a tag of another key length or kind of leaf: a
        // damaged file whose tags share nodes.
        const index_node_st& node = found->node;
        if (node.key_length != key_length ||
            (node.leaf && (node.bitmap != (leaves == LEAF_BITMAP) || node.compact != (leaves == LEAF_COMPACT))))
            throw dbf_index_file_corrupted(file->name);
        found->used = true;
        return *found;
    }
    if (position < INDEX_HEADER_SIZE || position % INDEX_NODE_SIZE != 0 || key_length == 0 ||
        key_length > MAX_KEY_LENGTH)
        throw dbf_index_file_corrupted(file->name);
    index_node_st read;
    read.position = position;
    if (file->readex(static_cast<std::streamoff>(position), read.bytes, INDEX_NODE_SIZE) != INDEX_NODE_SIZE)
        throw dbf_index_file_corrupted(file->name);
    read.decode(key_length, leaves);
    cache_entry_st& entry = claim(position);
    entry.node = read;
    return entry;
}

void IndexFile::read_node(uint32_t position, uint32_t key_length, LeafKind leaves, index_node_st* out) {
    *out = fetch(position, key_length, leaves).node;
}

const index_node_st& IndexFile::node(uint32_t position, uint32_t key_length, LeafKind leaves) {
    return fetch(position, key_length, leaves).node;
}

index_node_st& IndexFile::node_to_change(uint32_t position, uint32_t key_length, LeafKind leaves) {
    return fetch(position, key_length, leaves).node;
}

const node_entries_st& IndexFile::entries(uint32_t position, uint32_t key_length, LeafKind leaves, char pad) {
    cache_entry_st& entry = fetch(position, key_length, leaves);
    if (!entry.expanded) {
        decode_entries(entry.node, pad, &entry.entries);
        entry.expanded = true;
    }
    return entry.entries;
}

void IndexFile::take_entries(uint32_t position, uint32_t key_length, LeafKind leaves, char pad,
                             node_entries_st* out) {
    cache_entry_st& entry = fetch(position, key_length, leaves);
    if (!entry.expanded) decode_entries(entry.node, pad, &entry.entries);
    std::swap(entry.entries, *out);
    entry.expanded = false;
}

void IndexFile::write_node(const index_node_st& node, node_entries_st* entries) {
    cache_entry_st* found = find(node.position);
    cache_entry_st& entry = found ? *found : claim(node.position);
    if (&entry.node != &node) entry.node = node;
    entry.changed = true;
    entry.used = true;
    entry.expanded = entries != nullptr;
    if (entries) {
        entry.entries.clear(node.key_length);
        std::swap(entry.entries, *entries);
    }
}

void IndexFile::write_out(const cache_entry_st& entry) {
    file->writeex(static_cast<std::streamoff>(entry.node.position), entry.node.bytes, INDEX_NODE_SIZE);
}

uint32_t IndexFile::allocate(uint32_t size) {
    if (allocation_position + size > 0xFFFFFFFEull) throw dbf_index_file_corrupted(file->name);
    uint32_t position = static_cast<uint32_t>(allocation_position);
    allocation_position += size;
    return position;
}

bool IndexFile::lock() {
    if (locked) return true;
    if (shared()) {
        if (!file->lock(static_cast<std::streamoff>(LOCK_POSITION), 1)) return false;
        int64_t size = file->size();
        allocation_position = size > 0 ? static_cast<uint64_t>(size) : 0;
    }
    locked = true;
    ++lock_counter;
    return true;
}

void IndexFile::unlock() {
    if (!locked) return;
    if (!shared()) {
        locked = false;
        return;
    }
    // The lock goes even when a write fails, so that other processes go on.
    try {
        flush();
    } catch (...) {
        locked = false;
        file->unlock(static_cast<std::streamoff>(LOCK_POSITION), 1);
        throw;
    }
    locked = false;
    file->unlock(static_cast<std::streamoff>(LOCK_POSITION), 1);
}

// Nodes first, headers last: a header never names a root not yet written.
void IndexFile::flush() {
    for (cache_entry_st& entry : slots_) {
        if (!entry.changed) continue;
        write_out(entry);
        entry.changed = false;
    }
    for (const auto& [position, bytes] : pending_headers_)
        file->writeex(static_cast<std::streamoff>(position), bytes.data(), bytes.size());
    pending_headers_.clear();
}

// What this process changed under its lock is written, not lost.
void IndexFile::empty_cache() {
    for (cache_entry_st& entry : slots_)
        if (entry.changed) write_out(entry);
    slots_.clear();
    std::fill(where_.begin(), where_.end(), uint16_t{0});
    hand_ = 0;
}

void IndexFile::close() {
    flush();
    file->close();
}

}  // namespace zobase
