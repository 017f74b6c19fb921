// PACK, ZAP, COPY TO and ALTER TABLE: a table written anew. Every rewrite
// goes into new files beside the target under a temporary name, memo and
// index files included, and replaces the target only once it is complete
// (tables/table_swap.h): a process killed at any moment leaves the old table
// or the new one, whole.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <unistd.h>

#include "base/call_trace.h"
#include "frontend/scanner.h"
#include "tables/index.h"
#include "tables/table_errors.h"
#include "tables/table_object_zodbf.h"
#include "tables/table_swap.h"

namespace zobase {

namespace fs = std::filesystem;

namespace {

constexpr uint64_t HEADER_COUNT_OFFSET = 4;
constexpr uint64_t HEADER_FLAGS_OFFSET = 28;
constexpr char HEADER_FLAG_STRUCTURAL_CDX = 1;
constexpr size_t WRITE_BATCH_BYTES = 1 << 20;

// A name beside `target` that no other process picks: the memo and index
// files of the temporary table follow it by extension.
fs::path temporary_beside(const fs::path& target, const char* purpose) {
    std::string stem = target.stem().string() + "~" + purpose + std::to_string(getpid());
    return target.parent_path() / (stem + ".dbf");
}

// Writes the records that `next_record` hands out, in its order, under the
// header of `source` into a new table at `target`; each memo body a record
// points to is copied into a new memo file, so dead bodies stay behind.
class TableCopy {
public:
    TableCopy(DbfFile* source, const fs::path& target, bool structural_cdx) : source_(source) {
        header_.resize(source->header_length);
        source->file->readex(0, header_.data(), header_.size());
        if (structural_cdx) header_[HEADER_FLAGS_OFFSET] |= HEADER_FLAG_STRUCTURAL_CDX;
        else header_[HEADER_FLAGS_OFFSET] &= ~HEADER_FLAG_STRUCTURAL_CDX;
        out_.reset(create_file(String(target), 0));
        if (source->has_memo) {
            memo_.reset(FptFile::create(create_file(String(fs::path(target).replace_extension("fpt")), 0),
                                        static_cast<int>(source->fpt->block_size)));
            next_block_ = memo_->next_free_block;
        }
    }

    void write(const std::function<bool(char*)>& next_record) {
        std::string record(source_->record_length, '\0');
        std::string batch;
        uint64_t position = source_->header_length;
        while (next_record(record.data())) {
            for (DbfField* field : source_->memo_fields) copy_memo(field, record.data());
            batch += record;
            ++count_;
            if (batch.size() >= WRITE_BATCH_BYTES) {
                out_->writeex(position, batch.data(), batch.size());
                position += batch.size();
                batch.clear();
            }
        }
        if (!batch.empty()) out_->writeex(position, batch.data(), batch.size());
        uint32_t count = static_cast<uint32_t>(count_);
        for (int i = 0; i < 4; ++i) header_[HEADER_COUNT_OFFSET + i] = static_cast<char>(count >> (8 * i));
        out_->writeex(0, header_.data(), header_.size());
        if (memo_) {
            memo_->next_free_block = next_block_;
            memo_->write_fpt_header();
            memo_->close();
        }
        out_->close();
    }

private:
    // A body is copied as it is stored, type word and length included; one
    // cut short by the end of the old file keeps what it had.
    void copy_memo(DbfField* field, char* record) {
        integer_type_st block = 0;
        field->memo_number_out(source_, field, record, &block);
        if (block <= 0) return;
        FptFile* old_memo = source_->fpt.get();
        uint64_t position = static_cast<uint64_t>(block) * old_memo->block_size;
        int64_t file_size = old_memo->file->size();
        if (position >= static_cast<uint64_t>(file_size)) {
            field->memo_number_in(source_, field, 0, record);
            return;
        }
        uint64_t length = FPT_BODY_HEADER_SIZE + old_memo->body_length(static_cast<unsigned>(block));
        length = std::min<uint64_t>(length, static_cast<uint64_t>(file_size) - position);
        std::string body(length, '\0');
        body.resize(old_memo->file->readex(position, body.data(), length));
        memo_->file->writeex(next_block_ * memo_->block_size, body.data(), body.size());
        field->memo_number_in(source_, field, static_cast<integer_type_st>(next_block_), record);
        next_block_ += (body.size() + memo_->block_size - 1) / memo_->block_size;
    }

    DbfFile* source_;
    std::string header_;
    std::unique_ptr<File> out_;
    std::unique_ptr<FptFile> memo_;
    uint64_t next_block_ = 0;
    uint64_t count_ = 0;
};

// What REINDEX would build again of each tag.
std::vector<internal_indexdef_st> tag_definitions(const DbfFile& table) {
    std::vector<internal_indexdef_st> definitions;
    for (const auto& tag : table.tags) definitions.push_back(tag->definition(table.charset));
    return definitions;
}

// True when a word of the expression, outside quotes, is one of `names`:
// a tag that reads a field the copy leaves out.
bool names_any(const String& expression, const std::vector<String>& names) {
    token_vector tokens;
    tokenize(expression, tokens);
    uint32_t quote = 0;
    for (const token_st& token : tokens) {
        if (quote) {
            if (token.type == quote) quote = 0;
            continue;
        }
        if (token.type == '"' || token.type == '\'') quote = token.type;
        if (token.type != TOKEN_WORD) continue;
        String word = String::create_from_scan_string(token.value).upper();
        for (const String& name : names)
            if (word.u8str() == name.upper().u8str()) return true;
    }
    return false;
}

// A tag whose key or filter reads one of `names`: a tag that a table
// without those fields can't keep. A variable of the same name is no
// stand-in for the field.
bool reads_any(const internal_indexdef_st& definition, const std::vector<String>& names) {
    return names_any(definition.key_expression, names) || names_any(definition.filter_expression, names);
}

// The names of the table's fields that no column takes its value from.
std::vector<String> fields_left_out(const Table_Object& table, const std::vector<int64_t>& sources) {
    std::vector<String> names;
    for (uint64_t i = 0; i < table.cnt_fields(); ++i)
        if (std::find(sources.begin(), sources.end(), static_cast<int64_t>(i)) == sources.end())
            names.push_back(table.get_field_info(i).name);
    return names;
}

}  // namespace

void Table_Object_ZoDbf::require_exclusive() const {
    if (is_temporary()) raise_not_available("structure changes of a cursor");
    if (is_shared()) throw RuntimeError(ERR_EXCLUSIVE_REQUIRED);
    if (!table_->file->is_writable()) throw RuntimeError(ERR_CURSOR_READ_ONLY, alias);
}

// The new table's index file starts as a copy of the old one, whose tags
// are then built again from the new records.
void Table_Object_ZoDbf::rebuild_copied_tags(VmStack* stack, const fs::path& copy) {
    table_operation(TABLE_OTHER, no_detail, [&] { table_->cdx->flush(); });
    fs::copy_file(fs::path(filename().u8str()).replace_extension("cdx"), fs::path(copy).replace_extension("cdx"),
                  fs::copy_options::overwrite_existing);
    ObjectHolder<Table_Object> opened = use(stack, String(copy), false, false);
    opened->reindex(stack);
    opened->close();
}

void Table_Object_ZoDbf::write_copy(VmStack* stack, const fs::path& target, bool with_tags,
                                    const std::function<bool(char*)>& next_record) {
    bool tags = with_tags && table_->has_structural_cdx && table_->cdx;
    try {
        table_operation(TABLE_CREATE, [&] { return String(target); }, [&] {
            table_->flush();
            TableCopy copy(table_.get(), target, tags);
            copy.write(next_record);
        });
        if (tags) rebuild_copied_tags(stack, target);
    } catch (...) {
        remove_table_files(target);
        throw;
    }
}

// The table and its order as they were, over the files now under its name.
void Table_Object_ZoDbf::rewrite(VmStack* stack, const std::function<bool(char*)>& next_record) {
    ZO_TRACE();
    require_exclusive();
    leave_record(stack);
    fs::path path(filename().u8str());
    fs::path copy = temporary_beside(path, "new");
    write_copy(stack, copy, true, next_record);
    uint64_t order = current_index();
    try {
        swap_table_into_place(copy, path, [&] { table_operation(TABLE_OTHER, no_detail, [&] { table_->close(); }); });
    } catch (const fs::filesystem_error&) {
        throw RuntimeError(ERR_FILESYSTEM_GENERIC, String("rename"));
    }
    String name(path);
    table_ = table_operation(TABLE_USE, [&] { return name; }, [&] {
        std::unique_ptr<File> file(open_file(name, FILE_OPEN_READ | FILE_OPEN_WRITE));
        std::unique_ptr<DbfFile> table(DbfFile::open(file.get()));
        file.release();
        return table;
    });
    charset = table_->charset;
    open_indexes(stack);
    if (order) select_index(stack, order, 0);
    movefirst(stack);
}

void Table_Object_ZoDbf::pack(VmStack* stack) {
    uint64_t number = 0;
    rewrite(stack, [&](char* record) {
        while (++number <= table_->record_count) {
            if (!table_->go(number, record, READAHEAD_BLOCK)) return false;
            if (record[0] == ' ') return true;
        }
        return false;
    });
}

void Table_Object_ZoDbf::zap(VmStack* stack) {
    rewrite(stack, [](char*) { return false; });
}

// The records of the scope, in the order of the work area. With FIELDS the
// copy has those columns, and WITH CDX keeps the tags whose expressions name
// none of the fields left out.
void Table_Object_ZoDbf::copyto(VmStack* stack, const String& name, const copy_to_st& options) {
    ZO_TRACE();
    fs::path target(name.u8str());
    if (!target.has_extension()) target += ".dbf";
    if (!target.is_absolute()) target = fs::current_path() / target;
    if (fs::exists(target)) throw RuntimeError(ERR_FILE_EXISTS, String(target));
    leave_record(stack);
    uint64_t position = recno();
    fs::path copy = temporary_beside(target, "copy");
    try {
        ScopeWalk walk(stack, this, options.scope);
        if (options.fields.empty()) {
            write_copy(stack, copy, options.with_tags, [&](char* record) {
                if (!walk.next()) return false;
                std::memcpy(record, table_->shown_record, table_->record_length);
                return true;
            });
        } else {
            copy_columns(stack, copy, options, [&] { return walk.next(); });
        }
        swap_table_into_place(copy, target);
    } catch (const fs::filesystem_error&) {
        go_record(stack, position);
        throw RuntimeError(ERR_FILESYSTEM_GENERIC, String("rename"));
    } catch (...) {
        go_record(stack, position);
        throw;
    }
    go_record(stack, position);
}

void Table_Object_ZoDbf::copy_columns(VmStack* stack, const fs::path& copy, const copy_to_st& options,
                                      const std::function<bool()>& next) {
    std::vector<int64_t> sources(options.sources.begin(), options.sources.end());
    std::vector<internal_indexdef_st> definitions;
    if (options.with_tags) {
        std::vector<String> left_out = fields_left_out(*this, sources);
        for (const internal_indexdef_st& definition : tag_definitions(*table_))
            if (!reads_any(definition, left_out)) definitions.push_back(definition);
    }
    try {
        write_columns(stack, copy, options.fields, sources, next);
        if (definitions.empty()) return;
        ObjectHolder<Table_Object> opened = use(stack, String(copy), false, false);
        for (const internal_indexdef_st& definition : definitions) opened->create_index(stack, definition);
        opened->close();
    } catch (...) {
        remove_table_files(copy);
        throw;
    }
}

void Table_Object_ZoDbf::write_columns(VmStack* stack, const fs::path& copy, std::vector<fielddef_st> fields,
                                       const std::vector<int64_t>& sources, const std::function<bool()>& next) {
    table_operation(TABLE_CREATE, [&] { return String(copy); }, [&] {
        table_->flush();
        createopts_st options;
        options.codepage = codepage();
        if (table_->fpt) options.memo_block_size = static_cast<uint32_t>(table_->fpt->block_size);
        std::unique_ptr<File> file(create_file(String(copy), 0));
        std::unique_ptr<DbfFile> target(DbfFile::create(file.get(), &options, fields.data(), fields.size()));
        file.release();
        while (next()) {
            target->begin_append();
            for (size_t i = 0; i < sources.size(); ++i) {
                if (sources[i] < 0) continue;
                const DbfField* from = table_->visible_fields[static_cast<size_t>(sources[i])];
                const DbfField* to = target->visible_fields[i];
                // An autoincrement value is read-only to writes: its bytes move as they are.
                if (to->autoincrement) {
                    std::memcpy(target->shown_record + to->offset, table_->shown_record + from->offset,
                                std::min(from->length, to->length));
                    continue;
                }
                Variant value;
                table_->get_variant(static_cast<uint64_t>(sources[i]), &value);
                try {
                    target->write_field(to, &value, target->shown_record);
                } catch (...) {
                    value.release(stack);
                    throw;
                }
                value.release(stack);
            }
            if (table_->deleted()) target->shown_record[0] = '*';
            target->update(stack);
        }
        target->close();
    });
}

void Table_Object_ZoDbf::alter(VmStack* stack, std::vector<fielddef_st> fields, const std::vector<int64_t>& sources) {
    ZO_TRACE();
    require_exclusive();
    leave_record(stack);
    fs::path path(filename().u8str());
    fs::path copy = temporary_beside(path, "alter");
    std::vector<internal_indexdef_st> definitions = tag_definitions(*table_);
    std::vector<String> dropped = fields_left_out(*this, sources);
    for (const internal_indexdef_st& definition : definitions)
        if (reads_any(definition, dropped)) throw RuntimeError(ERR_TABLE_CHANGE_INVALID, definition.tag);
    try {
        uint64_t number = 0;
        write_columns(stack, copy, fields, sources, [&] {
            if (++number > table_->record_count) return false;
            table_->go_to_in_file(number);
            return true;
        });
        if (!definitions.empty()) {
            ObjectHolder<Table_Object> opened = use(stack, String(copy), false, false);
            for (const internal_indexdef_st& definition : definitions) {
                try {
                    opened->create_index(stack, definition);
                } catch (const RuntimeError&) {
                    throw RuntimeError(ERR_TABLE_CHANGE_INVALID, definition.tag);
                }
            }
            opened->close();
        }
    } catch (...) {
        remove_table_files(copy);
        throw;
    }
    try {
        swap_table_into_place(copy, path, [this] { close(); });
    } catch (const fs::filesystem_error&) {
        throw RuntimeError(ERR_FILESYSTEM_GENERIC, String("rename"));
    }
}

}  // namespace zobase
