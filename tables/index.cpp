// A tag's header: reading, writing, creating, and the version check that
// keeps the node cache true to what other processes wrote.
#include "tables/index.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "tables/byte_order.h"
#include "tables/index_file.h"
#include "values/error.h"
#include "vm/program.h"

namespace zobase {

namespace {

constexpr uint32_t HEADER_COLLATION = 494;
constexpr uint32_t HEADER_COLLATION_SIZE = 8;
constexpr uint32_t HEADER_DESCENDING = 502;
constexpr uint32_t HEADER_FILTER_OFFSET = 504;
constexpr uint32_t HEADER_FILTER_LENGTH = 506;
constexpr uint32_t HEADER_KEY_OFFSET = 508;
constexpr uint32_t HEADER_KEY_LENGTH = 510;
constexpr uint32_t HEADER_POOL = 512;
// Root, free list and version: what a change of the tree rewrites.
constexpr uint32_t HEADER_CHANGING_FIELDS = 12;

// An expression from the pool; its stored length counts the NUL.
std::string pool_text(const char* bytes, uint16_t offset, uint16_t length, const String& file) {
    if (length == 0) return std::string();
    if (static_cast<uint32_t>(offset) + length > EXPRESSION_POOL_SIZE) throw dbf_index_file_corrupted(file);
    const char* begin = bytes + HEADER_POOL + offset;
    return std::string(begin, strnlen(begin, length));
}

}  // namespace

Index::Index(IndexFile* index_file, uint32_t position) : file(index_file), header_position(position) {}

Index::~Index() = default;

void Index::read_header() {
    char bytes[INDEX_HEADER_SIZE];
    file->read_header(header_position, bytes);
    header.root = read_le32(bytes);
    header.free_list = read_le32(bytes + 4);
    header.version = read_le32(bytes + 8);
    header.key_length = read_le16(bytes + 12);
    header.options = read_le16(bytes + 14);
    if (header.options & INDEX_OPTION_UNKNOWN) raise_not_available("Index header unknown bit 5 is set");
    if (header.key_length == 0 || header.key_length > MAX_KEY_LENGTH) throw dbf_index_file_corrupted(file->file->name);
    const char* collation = bytes + HEADER_COLLATION;
    header.collation.assign(collation, strnlen(collation, HEADER_COLLATION_SIZE));
    for (char& c : header.collation) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    header.descending = read_le16(bytes + HEADER_DESCENDING) != 0;
    header.key_expression =
        pool_text(bytes, read_le16(bytes + HEADER_KEY_OFFSET), read_le16(bytes + HEADER_KEY_LENGTH), file->file->name);
    header.filter_expression = pool_text(bytes, read_le16(bytes + HEADER_FILTER_OFFSET),
                                         read_le16(bytes + HEADER_FILTER_LENGTH), file->file->name);
}

void Index::write_header() {
    char bytes[INDEX_HEADER_SIZE] = {};
    write_le32(bytes, header.root);
    write_le32(bytes + 4, header.free_list);
    write_le32(bytes + 8, header.version);
    write_le16(bytes + 12, header.key_length);
    write_le16(bytes + 14, header.options);
    std::memcpy(bytes + HEADER_COLLATION, header.collation.data(),
                std::min<size_t>(header.collation.size(), HEADER_COLLATION_SIZE));
    write_le16(bytes + HEADER_DESCENDING, header.descending ? 1 : 0);
    const std::string& key = header.key_expression;
    const std::string& filter = header.filter_expression;
    if (key.size() + filter.size() + 2 > EXPRESSION_POOL_SIZE)
        throw assert_failed_exception("index expressions do not fit the header");
    std::memcpy(bytes + HEADER_POOL, key.data(), key.size());
    write_le16(bytes + HEADER_KEY_OFFSET, 0);
    write_le16(bytes + HEADER_KEY_LENGTH, static_cast<uint16_t>(key.size() + 1));
    write_le16(bytes + HEADER_FILTER_OFFSET, static_cast<uint16_t>(key.size() + 1));
    if (!filter.empty()) {
        std::memcpy(bytes + HEADER_POOL + key.size() + 1, filter.data(), filter.size());
        write_le16(bytes + HEADER_FILTER_LENGTH, static_cast<uint16_t>(filter.size() + 1));
    }
    file->write_header(header_position, bytes, INDEX_HEADER_SIZE);
}

std::unique_ptr<Index> Index::create(IndexFile* file, const index_header_st& header, char pad,
                                     uint64_t record_hint) {
    auto index = std::make_unique<Index>(file, file->allocate(INDEX_HEADER_SIZE));
    index->header = header;
    index->pad = pad;
    index_node_st root;
    uint32_t k = header.key_length;
    if (index->binary())
        init_bitmap_node(&root, k, NODE_ROOT);
    else
        init_compact_node(&root, k, calc_compact_node_geometry(std::min<uint64_t>(record_hint, 0xFFFFFFFFu), k, k),
                          NODE_ROOT);
    root.position = file->allocate(INDEX_NODE_SIZE);
    index->header.root = root.position;
    index->write_header();
    file->write_node(root);
    return index;
}

void Index::check_version() {
    if (!file->shared()) return;
    if (file->locked && file->lock_counter == last_seen_lock) return;
    char bytes[HEADER_CHANGING_FIELDS];
    file->read_header(header_position, bytes, sizeof bytes);
    uint32_t version = read_le32(bytes + 8);
    if (version != header.version) {
        file->empty_cache();
        header.root = read_le32(bytes);
        header.version = version;
    }
    last_seen_lock = file->locked ? file->lock_counter : ~0ull;
}

// Every change of the tree counts in the version, which tells other
// processes that their cached nodes are stale.
void Index::changed() {
    ++header.version;
    char bytes[HEADER_CHANGING_FIELDS];
    write_le32(bytes, header.root);
    write_le32(bytes + 4, header.free_list);
    write_le32(bytes + 8, header.version);
    file->write_header(header_position, bytes, sizeof bytes);
}

}  // namespace zobase
