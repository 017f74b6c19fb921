// The CDX file: headers, the node cache, allocation and the index lock.
#include "tables/index_file.h"

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

IndexFile::cache_entry_st& IndexFile::fetch(uint32_t position, uint32_t key_length, bool compact_tag) {
    auto found = by_position_.find(position);
    if (found != by_position_.end()) {
        cache_.splice(cache_.begin(), cache_, found->second);
        return *found->second;
    }
    if (position < INDEX_HEADER_SIZE || position % INDEX_NODE_SIZE != 0 || key_length == 0 ||
        key_length > MAX_KEY_LENGTH)
        throw dbf_index_file_corrupted(file->name);
    cache_entry_st read;
    read.node.position = position;
    if (file->readex(static_cast<std::streamoff>(position), read.node.bytes, INDEX_NODE_SIZE) != INDEX_NODE_SIZE)
        throw dbf_index_file_corrupted(file->name);
    read.node.decode(key_length, compact_tag);
    make_room();
    cache_.push_front(std::move(read));
    by_position_[position] = cache_.begin();
    return cache_.front();
}

void IndexFile::read_node(uint32_t position, uint32_t key_length, bool compact_tag, index_node_st* out) {
    *out = fetch(position, key_length, compact_tag).node;
}

const index_node_st& IndexFile::node(uint32_t position, uint32_t key_length, bool compact_tag) {
    return fetch(position, key_length, compact_tag).node;
}

const node_entries_st& IndexFile::entries(uint32_t position, uint32_t key_length, bool compact_tag, char pad) {
    cache_entry_st& entry = fetch(position, key_length, compact_tag);
    if (!entry.expanded) {
        decode_entries(entry.node, pad, &entry.entries);
        entry.expanded = true;
    }
    return entry.entries;
}

void IndexFile::write_node(const index_node_st& node, node_entries_st* entries) {
    auto found = by_position_.find(node.position);
    if (found != by_position_.end()) {
        cache_.splice(cache_.begin(), cache_, found->second);
    } else {
        make_room();
        cache_.emplace_front();
        by_position_[node.position] = cache_.begin();
    }
    cache_entry_st& entry = cache_.front();
    entry.node = node;
    entry.changed = true;
    entry.expanded = entries != nullptr;
    if (entries) {
        entry.entries.clear(node.key_length);
        std::swap(entry.entries, *entries);
    }
}

void IndexFile::make_room() {
    while (cache_.size() >= cache_capacity) {
        cache_entry_st& last = cache_.back();
        if (last.changed) write_out(last);
        by_position_.erase(last.node.position);
        cache_.pop_back();
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
    for (cache_entry_st& entry : cache_) {
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
    for (cache_entry_st& entry : cache_)
        if (entry.changed) write_out(entry);
    cache_.clear();
    by_position_.clear();
}

void IndexFile::close() {
    flush();
    file->close();
}

}  // namespace zobase
