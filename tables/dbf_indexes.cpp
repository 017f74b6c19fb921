// A table's indexes: the structural CDX that opens with the table, creating
// and dropping tags, the order the cursor walks in, seeking, and the keys
// that follow every written record.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <optional>

#include "base/error_numbers.h"
#include "tables/dbf_file.h"
#include "tables/index.h"
#include "tables/index_build.h"
#include "tables/index_file.h"
#include "text/charset.h"
#include "text/collation.h"
#include "values/error.h"
#include "vm/program.h"

namespace zobase {

namespace {

constexpr uint32_t DIRECTORY_KEY_LENGTH = 10;
constexpr size_t TAG_NAME_LIMIT = 10;
// Geometry of a new tag's first leaf covers at least this many records.
constexpr uint64_t MINIMAL_RECORD_HINT = 0xFF;

std::string upper_ascii(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

// The directory's key of a tag name: upper case, padded with spaces.
std::string directory_key(const String& name) {
    std::string key = upper_ascii(name.u8str());
    key.resize(DIRECTORY_KEY_LENGTH, ' ');
    return key;
}

String cdx_name_of(const File& table) {
    if (is_memory_file_name(table.name)) return String("memory:///index.cdx");
    return String(std::filesystem::path(table.name).replace_extension("cdx"));
}

// A tag name as INDEX ON must store it: letters, digits and underscores,
// not beginning with a digit, at most ten characters.
std::string checked_tag_name(const String& requested) {
    std::string name = upper_ascii(requested.u8str());
    if (name.empty() || std::isdigit(static_cast<unsigned char>(name[0])))
        throw dbf_error_index_tag_name_invalid_characters(requested);
    for (char c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_')
            throw dbf_error_index_tag_name_invalid_characters(requested);
    if (name.size() > TAG_NAME_LIMIT) throw dbf_error_index_tag_name_too_long(requested);
    return name;
}

// The cursor's position in file order is kept across a walk of the table.
class CursorKeeper {
public:
    explicit CursorKeeper(DbfFile* table)
        : table_(table), recno_(table->recno), bof_(table->bof), eof_(table->eof),
          record_(table->shown_record, table->shown_record + table->record_length),
          saved_(table->saved_record.get(), table->saved_record.get() + table->record_length) {}
    ~CursorKeeper() {
        table_->recno = recno_;
        table_->bof = bof_;
        table_->eof = eof_;
        std::memcpy(table_->shown_record, record_.data(), record_.size());
        std::memcpy(table_->saved_record.get(), saved_.data(), saved_.size());
        table_->readahead_count = 0;
    }

private:
    DbfFile* table_;
    uint64_t recno_;
    bool bof_, eof_;
    std::vector<char> record_, saved_;
};

}  // namespace

// ---- the structural file

void DbfFile::create_compound_auto_open_index_file(VmStack* stack) {
    String name = cdx_name_of(*file);
    std::error_code error;
    if (!is_memory_file_name(name) && std::filesystem::exists(std::filesystem::path(name), error) &&
        !std::filesystem::remove(std::filesystem::path(name), error))
        throw dbf_error_cannot_create_cdx(name);
    uint32_t flags = file->is_temporary() ? uint32_t(FILE_OPEN_TEMPORARY) : (file->flags & FILE_OPEN_SHARED);
    cdx = std::make_unique<IndexFile>(create_file(name, flags), charset);
    index_header_st header;
    header.key_length = DIRECTORY_KEY_LENGTH;
    header.options = INDEX_OPTIONS_DIRECTORY;
    directory = Index::create(cdx.get(), header, ' ', 0xFFFFFFFFu);
    cdx->flush();
    directory->open(stack, this);
    has_structural_cdx = true;
    flush();
    if (!file->is_temporary()) write_dbf_header();
}

void DbfFile::open_compound_auto_open_index_file(VmStack* stack) {
    if (!has_structural_cdx || cdx) return;
    DbfRecursionGuard guard(this);
    std::filesystem::path found;
    if (!exists_ci(std::filesystem::path(cdx_name_of(*file)), &found)) throw dbf_cdx_file_missing();
    cdx = std::make_unique<IndexFile>(open_file(String(found), file->flags), charset);
    directory = std::make_unique<Index>(cdx.get(), 0);
    directory->read_header();
    directory->open(stack, this);
    index_cursor_st cursor;
    for (bool on = directory->go_top(&cursor); on; on = directory->go_next(&cursor)) {
        std::string name(cursor.key(), DIRECTORY_KEY_LENGTH);
        name.erase(name.find_last_not_of(' ') + 1);
        auto tag = std::make_unique<Index>(cdx.get(), cursor.record());
        tag->name = String(name.c_str());
        tag->read_header();
        tag->open(stack, this);
        tags.push_back(std::move(tag));
    }
}

Index* DbfFile::find_tag(const String& name) const {
    std::string wanted = upper_ascii(name.u8str());
    for (const auto& tag : tags)
        if (tag->name.u8str() == wanted) return tag.get();
    return nullptr;
}

void DbfFile::lock_indizes() {
    if (cdx && !cdx->lock()) throw file_lock_failed(cdx->file->name);
}

void DbfFile::unlock_indizes() {
    if (cdx) cdx->unlock();
}

// ---- creating and dropping tags

void DbfFile::create_index_tag(VmStack* stack, const createopts_st* options, const internal_indexdef_st* definition) {
    DbfRecursionGuard guard(this);
    Collation* collation = collation_for_group(charset, definition->collation);
    IndexExpressionInfo info;
    std::unique_ptr<Program> key_program;
    std::unique_ptr<Program> filter_program;
    {
        CursorKeeper keep(this);
        if (eof || bof) std::memcpy(shown_record, blank_record.get(), record_length);
        key_program = Index::analze_expression(stack, this, definition->key_expression, collation, &info);
        if (info.length < 1 + (info.nullable ? 1 : 0) || info.length > MAX_KEY_LENGTH) throw dbf_invalid_index_key_len();
        if (definition->filter_expression.size()) {
            IndexExpressionInfo filter;
            filter_program = Index::analze_expression(stack, this, definition->filter_expression, collation, &filter);
            if (filter.kind != KEY_LOGICAL) throw dbf_index_filter_must_be_logical();
        }
    }
    if (definition->binary) {
        // A bitmap holds one bit per record: a logical key, every record.
        if (info.kind != KEY_LOGICAL) throw RuntimeError(ERR_BINARY_INDEX_EXPRESSION);
        if (filter_program) raise_not_available("Binary index with filter");
        if (definition->unique) raise_not_available("Binary index with unique keys");
    }
    std::string name;
    try {
        name = checked_tag_name(definition->tag);
    } catch (const dbf_exception&) {
        if (!options || !options->rename_allowed) throw;
        name = checked_tag_name(String("TAG"));
    }
    if (find_tag(String(name.c_str()))) {
        if (!options || !options->rename_allowed) throw dbf_error_index_tag_name_duplicate(definition->tag);
        std::string base = name.substr(0, TAG_NAME_LIMIT - 3);
        for (int n = 1; find_tag(String(name.c_str())); ++n) name = base + std::to_string(n);
    }
    if (!cdx) create_compound_auto_open_index_file(stack);

    index_header_st header;
    header.key_length = static_cast<uint16_t>(info.length);
    header.options = INDEX_OPTION_COMPACT | INDEX_OPTION_COMPOUND |
                     (collation->charset && collation->charset->fixed_width && collation->charset->row.max_char == 1
                          ? INDEX_OPTION_SINGLE_BYTE
                          : INDEX_OPTION_OTHER_CHARSET);
    if (definition->defined) header.options |= INDEX_OPTION_DEFINED;
    if (info.nullable) header.options |= INDEX_OPTION_NULLABLE;
    if (definition->unique) header.options |= INDEX_OPTION_UNIQUE;
    if (filter_program) header.options |= INDEX_OPTION_FILTER;
    if (definition->binary) header.options |= INDEX_OPTION_BINARY;
    header.collation = collation_group_name(collation->group());
    if (header.collation == "MACHINE") header.collation.clear();
    header.descending = definition->descending;
    auto table_bytes = [&](const String& text) {
        String converted = text;
        converted.convert(charset, 0, CSTRAN_SUBSTITUTE);
        return std::string(converted.read(), converted.size());
    };
    header.key_expression = table_bytes(definition->key_expression);
    header.filter_expression = filter_program ? table_bytes(definition->filter_expression) : std::string();
    if (header.key_expression.size() + header.filter_expression.size() + 2 > EXPRESSION_POOL_SIZE)
        throw dbf_invalid_index_key_len();

    LockAllIndizes locks(this);
    std::unique_ptr<Index> tag =
        Index::create(cdx.get(), header, collation->pad, std::max<uint64_t>(record_count, MINIMAL_RECORD_HINT));
    tag->name = String(name.c_str());
    tag->collation = collation;
    tag->kind = info.kind;
    tag->create_key_op = key_operation_for(info.kind, info.nullable);
    tag->key_program = std::move(key_program);
    tag->filter_program = std::move(filter_program);
    std::string entry = directory_key(tag->name);
    directory->insert_key(entry.data(), tag->header_position);
    Index* made = tag.get();
    tags.push_back(std::move(tag));
    try {
        CursorKeeper keep(this);
        build_tag_from_records(stack, this, made);
    } catch (...) {
        // The half-built tag leaves the directory again.
        directory->delete_key(entry.data(), made->header_position);
        tags.pop_back();
        throw;
    }
}

void DbfFile::delete_index_tag(const String& name) {
    if (file->is_shared()) throw dbf_error_need_exclusive_access();
    DbfRecursionGuard guard(this);
    Index* tag = find_tag(name);
    if (!tag) throw dbf_error_unknown_index_tag(name);
    std::string entry = directory_key(tag->name);
    LockAllIndizes locks(this);
    if (!directory->delete_key(entry.data(), tag->header_position)) throw dbf_error_file_corruption();
    if (order.index == tag) unselect_index();
    tags.erase(std::find_if(tags.begin(), tags.end(), [&](const auto& t) { return t.get() == tag; }));
}

void DbfFile::delete_all_index_tags() {
    if (file->is_shared()) throw dbf_error_need_exclusive_access();
    DbfRecursionGuard guard(this);
    if (!has_structural_cdx) return;
    unselect_index();
    tags.clear();
    directory.reset();
    if (cdx) {
        cdx->close();
        cdx->file->remove();
        cdx.reset();
    }
    has_structural_cdx = false;
    flush();
    if (!file->is_temporary()) write_dbf_header();
}

// Each tag is dropped and made again from its own definition.
void DbfFile::reindex(VmStack* stack) {
    if (file->is_shared()) throw dbf_error_need_exclusive_access();
    std::vector<internal_indexdef_st> definitions;
    String selected = order.index ? order.index->name : String();
    int direction = order.descending ? SEEK_BACKWARD : SEEK_FORWARD;
    for (const auto& tag : tags) definitions.push_back(tag->definition(charset));
    delete_all_index_tags();
    for (const internal_indexdef_st& d : definitions) create_index_tag(stack, nullptr, &d);
    if (selected.size()) select_index(stack, selected, direction);
}

// ---- the order

void DbfFile::select_index(VmStack* stack, const String& name, int direction) {
    Index* tag = find_tag(name);
    if (!tag) throw dbf_error_unknown_index_tag(name);
    if (tag->binary()) throw dbf_select_binary_index_not_supported();
    bool descending = direction == 0 ? tag->header.descending : direction == SEEK_BACKWARD;
    order.index = tag;
    order.descending = descending;
    if (!order_cursor) order_cursor = std::make_unique<index_cursor_st>();
    *order_cursor = index_cursor_st();
    // The moves take the direction from the order: next is always towards
    // the end of the order, and reaching it sets eof, also when descending.
    order.to_top = &DbfFile::go_top_in_index;
    order.next = &DbfFile::go_next_in_index;
    order.previous = &DbfFile::go_prev_in_index;
    order.to_bottom = &DbfFile::go_bottom_in_index;
    order_unsettled = false;
    if (!eof && recno <= record_count && !appending) go_to_in_index(stack);
}

void DbfFile::select_index(VmStack* stack, uint64_t number, int direction) {
    if (number == 0) return unselect_index();
    if (number > tags.size()) throw dbf_error_unknown_index_tag(String(std::to_string(number).c_str()));
    select_index(stack, tags[number - 1]->name, direction);
}

void DbfFile::unselect_index() {
    order = dbf_order_st();
    order_unsettled = false;
}

uint64_t DbfFile::eval_key(VmStack* stack, char* out, uint64_t) const {
    if (!order.index) throw dbf_error_no_index_selected();
    return order.index->eval_key(stack, out);
}

void DbfFile::settle_order() {
    if (!order_unsettled) return;
    order_unsettled = false;
    if (order.index) order.index->seek_record(unsettled_key, unsettled_record, order_cursor.get());
}

const char* DbfFile::current_key() {
    settle_order();
    return order.index && order_cursor && order_cursor->on_key() ? order_cursor->key() : nullptr;
}

// ---- moves in index order

void DbfFile::go_to_in_index(VmStack* stack) {
    Index* tag = order.index;
    if (!tag) throw dbf_error_no_index_selected();
    order_unsettled = false;
    if (!tag->eval_filter(stack)) {
        tag->go_bottom(order_cursor.get());
        return;
    }
    char key[MAX_KEY_LENGTH];
    tag->eval_key(stack, key);
    if (!tag->seek_record(key, static_cast<uint32_t>(recno), order_cursor.get())) tag->go_bottom(order_cursor.get());
}

// The cursor stands on a key: its record becomes the current one. Otherwise
// the blank record shows at the end.
namespace {

void show_end(DbfFile* table, bool also_bof) {
    table->go_eof();
    table->bof = also_bof;
}

// The record of the key the order stands on; a key naming a record the
// table lacks is a damaged index.
void show_key_record(DbfFile* table) {
    try {
        table->go_to_in_file(table->order_cursor->record());
    } catch (const dbf_error_record_out_of_range&) {
        throw dbf_index_file_corrupted(table->order.index->name);
    }
}

// A walk in key order reads records all over the file: the record a few
// keys ahead is asked into the processor's cache while this one is used.
constexpr int64_t PREFETCH_DISTANCE = 6;

void prefetch_ahead(DbfFile* table) {
    if (table->file->is_shared()) return;
    const index_cursor_st& cursor = *table->order_cursor;
    int64_t ahead = table->order.descending ? cursor.index - PREFETCH_DISTANCE : cursor.index + PREFETCH_DISTANCE;
    if (ahead < 0 || ahead >= static_cast<int64_t>(cursor.entries.size())) return;
    uint64_t position = table->record_position(cursor.entries.records[static_cast<size_t>(ahead)]);
    if (const char* record = table->file->view(position, table->record_length, false)) {
        __builtin_prefetch(record);
        __builtin_prefetch(record + table->record_length - 1);
    }
}

}  // namespace

void DbfFile::go_top_in_index() {
    if (!order.index) throw dbf_error_no_index_selected();
    bof = eof = false;
    order_unsettled = false;
    index_cursor_st* cursor = order_cursor.get();
    if (order.descending ? order.index->go_bottom(cursor) : order.index->go_top(cursor))
        return show_key_record(this);
    show_end(this, true);
}

void DbfFile::go_bottom_in_index() {
    if (!order.index) throw dbf_error_no_index_selected();
    bof = eof = false;
    order_unsettled = false;
    index_cursor_st* cursor = order_cursor.get();
    if (order.descending ? order.index->go_top(cursor) : order.index->go_bottom(cursor))
        return show_key_record(this);
    show_end(this, false);
}

void DbfFile::go_next_in_index() {
    if (!order.index) throw dbf_error_no_index_selected();
    if (eof) return;
    bof = false;
    settle_order();
    index_cursor_st* cursor = order_cursor.get();
    if (order.descending ? order.index->go_prev(cursor) : order.index->go_next(cursor)) {
        prefetch_ahead(this);
        return show_key_record(this);
    }
    show_end(this, false);
}

// Before the first key the record stays and bof is set.
void DbfFile::go_prev_in_index() {
    if (!order.index) throw dbf_error_no_index_selected();
    bof = eof = false;
    settle_order();
    index_cursor_st* cursor = order_cursor.get();
    if (order.descending ? order.index->go_next(cursor) : order.index->go_prev(cursor))
        return show_key_record(this);
    if (recno >= 1 && recno <= record_count) go_to_in_file(recno);
    bof = true;
}

bool DbfFile::seek(const char* key, uint64_t length, unsigned range, int direction) {
    Index* tag = order.index;
    if (!tag) throw dbf_error_no_index_selected();
    SeekDir dir = direction == SEEK_BACKWARD ? SEEK_BACKWARD : SEEK_FORWARD;
    order_unsettled = false;
    SeekResult result = tag->seek(key, length, order_cursor.get(), dir, range);
    if (result == SEEK_RESULT_END || !order_cursor->on_key()) {
        go_eof();
        return false;
    }
    show_key_record(this);
    return true;
}

// ---- keys that follow the records

// Every expression runs, and every unique key is checked, before any tag
// changes: a failing key or a refused unique key leaves all tags as they were.
void DbfFile::update_keys(VmStack* stack) {
    if (tags.empty()) return;
    for (const auto& tag : tags) {
        Index* t = tag.get();
        t->new_marked = t->eval_filter(stack) && (t->eval_key(stack, t->new_key), true);
        t->old_marked = false;
        if (!appending) {
            char* shown = shown_record;
            shown_record = saved_record.get();
            try {
                t->old_marked = t->eval_filter(stack) && (t->eval_key(stack, t->old_key), true);
            } catch (...) {
                shown_record = shown;
                throw;
            }
            shown_record = shown;
        }
        if (t->new_marked && t->old_marked && std::memcmp(t->new_key, t->old_key, t->key_length()) == 0)
            t->new_marked = t->old_marked = false;
    }
    // An append holds the locks already. A unique key is looked for under
    // the lock, so that another process cannot insert the same key between
    // the look and the insert.
    std::optional<LockAllIndizes> locks;
    if (!cdx->locked) locks.emplace(this);
    index_cursor_st probe;
    for (const auto& tag : tags)
        if (tag->new_marked && tag->unique() &&
            tag->internal_seek(tag->new_key, tag->key_length(), &probe) == SEEK_RESULT_FOUND)
            throw dbf_unique_key_violation(tag->name);
    for (const auto& tag : tags) {
        uint32_t record = static_cast<uint32_t>(recno);
        // A binary tag holds every record: an append adds its bit, a
        // changed key sets or clears it.
        if (tag->binary() && tag->old_marked) {
            tag->update_bit(tag->new_key, record);
            continue;
        }
        if (tag->old_marked && !tag->delete_key(tag->old_key, record)) throw dbf_index_file_corrupted(tag->name);
        if (tag->new_marked) tag->insert_key(tag->new_key, record);
    }
    // The order follows its record to where its key now stands.
    if (order.index && order.index->new_marked) {
        order_unsettled = true;
        unsettled_record = static_cast<uint32_t>(recno);
        std::memcpy(unsettled_key, order.index->new_key, order.index->key_length());
    }
}

}  // namespace zobase
