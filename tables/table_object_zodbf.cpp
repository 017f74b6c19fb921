// A work area over a DBF table: opening and creating, and each operation
// with the translation list it owns.
#include "tables/table_object_zodbf.h"

#include <cstring>
#include <ctime>
#include <filesystem>
#include <optional>
#include <system_error>

#include "base/call_trace.h"
#include "tables/dbf_codepages.h"
#include "tables/field_codecs.h"
#include "tables/table_errors.h"
#include "tables/table_files.h"
#include "tables/table_sessions.h"
#include "tables/table_swap.h"
#include "text/charset.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace fs = std::filesystem;

namespace {

// A rewrite of the table that a crash cut short is finished before it opens.
void finish_swap(const fs::path& table) {
    try {
        finish_interrupted_swap(table);
    } catch (const fs::filesystem_error&) {
        throw RuntimeError(ERR_FILESYSTEM_GENERIC, String("rename"));
    }
}

std::unique_ptr<DbfFile> open_dbf(const String& path, uint32_t flags) {
    std::unique_ptr<File> file(open_file(path, flags));
    std::unique_ptr<DbfFile> table(DbfFile::open(file.get()));
    file.release();
    return table;
}

std::unique_ptr<DbfFile> create_dbf(const String& path, uint32_t flags, createopts_st* options,
                                    fielddef_st* fields, uint64_t count) {
    std::unique_ptr<File> file(create_file(path, flags));
    std::unique_ptr<DbfFile> table(DbfFile::create(file.get(), options, fields, count));
    file.release();
    return table;
}

// The path a new table gets: absolute, with an extension.
fs::path table_path_for(const String& name) {
    fs::path path = with_table_extension(name);
    return path.is_absolute() ? path : fs::current_path() / path;
}

}  // namespace

ObjectHolder<Table_Object> Table_Object_ZoDbf::use(VmStack* stack, const String& name, bool shared,
                                                   bool read_only) {
    ZO_TRACE();
    fs::path found;
    finish_swap(with_table_extension(name));
    if (!exists_ci(with_table_extension(name), &found)) throw RuntimeError(ERR_FILE_NOT_FOUND, name);
    if (found != with_table_extension(name)) finish_swap(found);
    std::error_code error;
    fs::path canonical = fs::canonical(found, error);
    if (error) throw RuntimeError(ERR_FILESYSTEM_GENERIC, String("canonical"));
    String path(canonical);
    uint32_t flags = FILE_OPEN_READ;
    if (!read_only) flags |= FILE_OPEN_WRITE;
    if (shared) flags |= FILE_OPEN_SHARED;
    auto table = table_operation(TABLE_USE, [&] { return path; }, [&] { return open_dbf(path, flags); });
    auto* object = new Table_Object_ZoDbf(builtin_class(stack, TABLE_CLASS_NAME), std::move(table));
    ObjectHolder<Table_Object> holder = ObjectHolder<Table_Object>::adopt(object);
    object->internal_open(stack);
    if (object->table_->is_in_database()) raise_not_available("kestro database container support");
    object->open_indexes(stack);
    object->movefirst(stack);
    return holder;
}

ObjectHolder<Table_Object> Table_Object_ZoDbf::create(VmStack* stack, const String& name,
                                                      const createopts_st* options, fielddef_st* fields,
                                                      uint64_t count) {
    ZO_TRACE();
    createopts_st settings = *options;
    if (settings.codepage == 0) settings.codepage = GetCharsetCPID(stack->services->default_charset());
    String path;
    uint32_t flags = 0;
    if (settings.temporary) {
        fs::path plain(name.u8str());
        if (plain.has_parent_path() || plain.has_extension()) throw RuntimeError(ERR_ARGUMENT_INVALID);
        path = String("memory:///table.dbf");
        flags = FILE_OPEN_TEMPORARY;
    } else {
        path = String(table_path_for(name));
    }
    std::unique_ptr<DbfFile> table;
    try {
        table = table_operation(TABLE_CREATE, [&] { return path; },
                                [&] { return create_dbf(path, flags, &settings, fields, count); });
    } catch (const RuntimeError& failure) {
        // A file that exists already was never ours to remove.
        if (!settings.temporary && failure.number != ERR_FILE_EXISTS && failure.number != ERR_FILE_IN_USE)
            remove_table_files(fs::path(path.u8str()));
        throw;
    }
    auto* object = new Table_Object_ZoDbf(builtin_class(stack, TABLE_CLASS_NAME), std::move(table));
    ObjectHolder<Table_Object> holder = ObjectHolder<Table_Object>::adopt(object);
    object->internal_open(stack);
    object->table_->expression_fields = &object->expression_fields();
    object->movefirst(stack);
    return holder;
}

Table_Object_ZoDbf::Table_Object_ZoDbf(Class* object_class, std::unique_ptr<DbfFile> table)
    : Table_Object(object_class), table_(std::move(table)) {
    charset = table_->charset;
}

// Closed already when its work area closed it; a failure to write what was
// pending can only be dropped here.
Table_Object_ZoDbf::~Table_Object_ZoDbf() {
    try {
        close();
    } catch (const Exception&) {
    }
}

void Table_Object_ZoDbf::close() {
    if (closed_) return;
    closed_ = true;
    table_operation(TABLE_OTHER, no_detail, [&] { table_->close(); });
}

// ---- fields

void Table_Object_ZoDbf::get_field(VmStack*, uint64_t index, Variant* out) {
    table_operation(TABLE_FIELD_READ, no_detail, [&] { table_->get_variant(index, out); });
}

void Table_Object_ZoDbf::get_old_value(VmStack*, uint64_t index, Variant* out) {
    table_operation(TABLE_FIELD_READ, no_detail, [&] { table_->get_old_value(index, out); });
}

void Table_Object_ZoDbf::get_blank(VmStack*, uint64_t index, Variant* out) {
    table_operation(TABLE_FIELD_READ, no_detail, [&] { table_->get_blank_value(index, out); });
}

void Table_Object_ZoDbf::get_chars(uint64_t index, char* out, uint64_t* length, const Charset** charset) {
    table_operation(TABLE_GET_CHARS, no_detail, [&] { table_->get_char(index, out, length, charset); });
}

uint64_t Table_Object_ZoDbf::get_memo_size(uint64_t index) {
    return table_operation(TABLE_GET_CHARS, no_detail, [&] { return table_->get_memo_size(index); });
}

table_field_info_st Table_Object_ZoDbf::get_field_info(uint64_t index) const {
    const DbfField* field = table_->get_field(index);
    if (!field) throw RuntimeError(ERR_ARGUMENT_INVALID);
    table_field_info_st info;
    info.name = table_->field_name(field);
    info.letter = field->type;
    info.type = field_type_number(field->type);
    info.width = field->length;
    info.decimals = field->decimals;
    info.nullable = field->nullable;
    info.binary = field->binary;
    info.autoincrement = field->autoincrement;
    info.next_value = field->autoinc_next;
    info.step = field->autoinc_step;
    return info;
}

namespace {

// The name of a field for the messages that name it.
auto field_name_of(const DbfFile* table, uint64_t index) {
    return [table, index] {
        const DbfField* field = table->get_field(index);
        return field ? table->field_name(field) : String();
    };
}

}  // namespace

void Table_Object_ZoDbf::set_field_null(uint64_t index) {
    table_operation(TABLE_SET_NULL, field_name_of(table_.get(), index), [&] { table_->set_null(index); });
}

void Table_Object_ZoDbf::set_field_integer(uint64_t index, integer_type_st value) {
    table_operation(TABLE_SET_NUMBER, field_name_of(table_.get(), index),
                    [&] { table_->set_integer(index, value); });
}

void Table_Object_ZoDbf::set_field_numeric(uint64_t index, numeric_type_st value) {
    table_operation(TABLE_SET_NUMBER, field_name_of(table_.get(), index),
                    [&] { table_->set_numeric(index, value); });
}

void Table_Object_ZoDbf::set_field_money(uint64_t index, money_type_st value) {
    table_operation(TABLE_SET_NUMBER, field_name_of(table_.get(), index),
                    [&] { table_->set_money(index, value); });
}

void Table_Object_ZoDbf::set_field_bool(uint64_t index, bool value) {
    table_operation(TABLE_SET_VALUE, field_name_of(table_.get(), index),
                    [&] { table_->set_logical(index, value); });
}

void Table_Object_ZoDbf::set_field_date(uint64_t index, date_st value) {
    table_operation(TABLE_SET_VALUE, field_name_of(table_.get(), index), [&] { table_->set_date(index, value); });
}

void Table_Object_ZoDbf::set_field_datetime(uint64_t index, datetime_st value) {
    table_operation(TABLE_SET_VALUE, field_name_of(table_.get(), index),
                    [&] { table_->set_datetime(index, value); });
}

void Table_Object_ZoDbf::set_field_string(uint64_t index, const String& value) {
    table_operation(TABLE_SET_STRING, field_name_of(table_.get(), index),
                    [&] { table_->set_string(index, value); });
}

void Table_Object_ZoDbf::set_field_readonly(uint64_t index, bool readonly) {
    if (index >= table_->visible_fields.size()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    DbfField* field = table_->visible_fields[index];
    if (readonly) zobase::set_field_readonly(field);
    else set_field_readwrite(field);
}

// ---- the cursor

// In index order the key of the record finds its place in the order. In
// file order no expression runs, and the scope is left out: entering one
// makes every bare name of the running code look itself up again.
void Table_Object_ZoDbf::go(VmStack* stack, uint64_t number) {
    std::optional<ExpressionTableScope> scope;
    if (table_->order.index) scope.emplace(stack, this);
    table_operation(TABLE_GO, no_detail, [&] { table_->go_to(stack, number); });
}

void Table_Object_ZoDbf::movetoeof() { table_->go_eof(); }

void Table_Object_ZoDbf::movefirst_lowlevel(VmStack*) {
    table_operation(TABLE_MOVE, no_detail, [&] { table_->go_top(); });
}

void Table_Object_ZoDbf::movenext_lowlevel(VmStack*) {
    table_operation(TABLE_MOVE, no_detail, [&] { table_->go_next(); });
}

// Before record 1 the engine sets bof and refuses the move; bof is what the
// moves above look at.
void Table_Object_ZoDbf::moveprevious_lowlevel(VmStack*) {
    table_operation(TABLE_MOVE, no_detail, [&] {
        try {
            table_->go_prev();
        } catch (const dbf_error_record_out_of_range&) {
            if (!table_->bof) throw;
        }
    });
}

void Table_Object_ZoDbf::movelast_lowlevel(VmStack*) {
    table_operation(TABLE_MOVE, no_detail, [&] { table_->go_bottom(); });
}

uint64_t Table_Object_ZoDbf::reccount() {
    return table_operation(TABLE_OTHER, no_detail, [&] { return table_->reccount(); });
}

int32_t Table_Object_ZoDbf::last_modified_yyyymmdd() {
    std::time_t seconds = static_cast<std::time_t>(table_->last_update / TIME_UNITS_PER_SECOND);
    std::tm broken = {};
    localtime_r(&seconds, &broken);
    return (broken.tm_year + 1900) * 10000 + (broken.tm_mon + 1) * 100 + broken.tm_mday;
}

// Appended records still held back are written first, so that the file
// holds the whole table.
uint64_t Table_Object_ZoDbf::file_size() {
    table_operation(TABLE_OTHER, no_detail, [&] { table_->flush(); });
    return static_cast<uint64_t>(table_->file->size());
}

int64_t Table_Object_ZoDbf::modified_time() {
    table_operation(TABLE_OTHER, no_detail, [&] { table_->flush(); });
    return table_->file->modified_time();
}

int32_t Table_Object_ZoDbf::codepage() const { return codepage_of_dbf_byte(table_->codepage_byte); }

// ---- locks and changes

bool Table_Object_ZoDbf::lock_lowlevel() {
    return table_operation(TABLE_OTHER, no_detail, [&] { return table_->lock(); });
}

bool Table_Object_ZoDbf::unlock() {
    return table_operation(TABLE_OTHER, no_detail, [&] { return table_->unlock_record(); });
}

void Table_Object_ZoDbf::unlock_all() {
    table_operation(TABLE_OTHER, no_detail, [&] { table_->unlock_all_records(); });
}

void Table_Object_ZoDbf::begin_append() { table_->begin_append(); }

void Table_Object_ZoDbf::delete_record() {
    table_operation(TABLE_OTHER, no_detail, [&] { table_->delete_record(); });
}

void Table_Object_ZoDbf::recall_record() {
    table_operation(TABLE_OTHER, no_detail, [&] { table_->recall_record(); });
}

// Key and filter expressions of the indexes see this table's fields. A
// table without tags runs none (tags come only with opening and INDEX ON),
// and then the scope is left out, as in go().
void Table_Object_ZoDbf::update(VmStack* stack) {
    std::optional<ExpressionTableScope> scope;
    if (!table_->tags.empty()) scope.emplace(stack, this);
    table_operation(TABLE_UPDATE, [&] { return alias; }, [&] {
        if (journal_) journal_update();
        table_->update(stack);
    });
}

// ---- transactions

void Table_Object_ZoDbf::begin_transaction() { journal_ = std::make_unique<journal_st>(); }

// The first append takes the append lock for the whole transaction, so that
// nobody appends behind records that a rollback may take away. A rewritten
// record is locked before its old bytes are kept, so that they are the
// bytes on disk.
void Table_Object_ZoDbf::journal_update() {
    DbfFile* table = table_.get();
    if (table->eof) return;
    if (table->appending) {
        if (journal_->appended) return;
        table->hold_append_lock();
        journal_->count = table->reccount();
        journal_->appended = true;
        return;
    }
    if (journal_->before.count(table->recno)) return;
    if (std::memcmp(table->shown_record, table->saved_record.get(), table->record_length) == 0) return;
    bool was_locked = table->isrlocked(table->recno);
    if (!was_locked && table->file->is_shared() && table->file->is_writable()) {
        if (!table->internal_lock()) throw dbf_error_record_in_use();
        journal_->locked.insert(table->recno);
    }
    journal_->before.emplace(table->recno, std::string(table->saved_record.get(), table->record_length));
}

void Table_Object_ZoDbf::release_journal_locks() {
    for (uint64_t number : journal_->locked) table_->unlock_record_number(number);
    table_->release_append_lock();
}

void Table_Object_ZoDbf::end_transaction() {
    if (!journal_) return;
    table_operation(TABLE_OTHER, no_detail, [&] { release_journal_locks(); });
    journal_.reset();
}

// Afterwards the cursor shows its record as it now stands, or the end of
// file when that record was taken away.
void Table_Object_ZoDbf::rollback_transaction(VmStack* stack) {
    if (!journal_) return;
    std::unique_ptr<journal_st> journal = std::move(journal_);
    table_operation(TABLE_OTHER, no_detail, [&] {
        table_->revert();
        for (const auto& [number, record] : journal->before) table_->restore_record(number, record.data());
        if (journal->appended) table_->truncate_records(journal->count);
        journal_ = std::move(journal);
        release_journal_locks();
        journal_.reset();
        uint64_t recno = table_->recno;
        if (table_->eof || recno > table_->record_count) table_->go_eof();
        else table_->go_to(stack, recno);
    });
}

}  // namespace zobase
