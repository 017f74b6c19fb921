// Changing records: appends, rewrites, revert, the merge after a record lock,
// and the deletion flag. A field write changes the shown record only; the
// record, its index keys and the header reach the disk in update().
#include <cstring>
#include <vector>

#include "tables/dbf_file.h"
#include "tables/field_codecs.h"
#include "values/variant.h"

namespace zobase {

namespace {

// The value of an autoincrement field in a record; 0 when it holds none.
integer_type_st autoincrement_value(DbfFile* table, const DbfField* field, const char* record) {
    Variant value;
    table->read_field(field, record, &value);
    return value.tag == TAG_INTEGER ? value.integer : 0;
}

// The record count, and with it the cursor, as they were before an append
// that failed: the header on disk still holds the old count.
class AppendRollback {
public:
    explicit AppendRollback(DbfFile* table)
        : table_(table), count_(table->record_count), recno_(table->recno) {}
    ~AppendRollback() {
        if (armed_) {
            table_->record_count = count_;
            table_->recno = recno_;
        }
    }
    void disarm() noexcept { armed_ = false; }

private:
    DbfFile* table_;
    uint64_t count_;
    uint64_t recno_;
    bool armed_ = true;
};

}  // namespace

void DbfFile::begin_append() {
    recno = record_count + 1;
    bof = eof = false;
    appending = true;
    show_blank();
    std::memcpy(saved_record.get(), blank_record.get(), record_length);
}

// A change made while the cursor stands at the beginning of the file is a
// change of the first record, which is shown there, and is written like any.
void DbfFile::update(VmStack* stack) {
    DbfRecursionGuard guard(this);
    if (eof) return;
    if (!appending && std::memcmp(shown_record, saved_record.get(), record_length) == 0) return;
    if (!file->is_writable()) throw dbf_error_file_readonly();
    if (appending) append_record(stack);
    else rewrite_record(stack);
}

void DbfFile::append_record(VmStack* stack) {
    DbfAppendLock append_lock(this);
    refresh_dbf_header();
    take_next_values();
    AppendRollback rollback(this);
    recno = ++record_count;
    {
        LockAllIndizes index_locks(this);
        update_keys(stack);
        write_record();
    }
    write_header_after_append();
    rollback.disarm();
    appending = false;
}

// The caller may supply an autoincrement value; the next value then moves
// past it. Otherwise the field takes the next value.
void DbfFile::take_next_values() {
    for (DbfField* field : autoinc_fields) {
        integer_type_st value = autoincrement_value(this, field, shown_record);
        // Another process may have taken values since this one read them.
        if (file->is_shared()) read_dbf_field_header(field);
        if (value != 0) {
            if (field->autoinc_next > value) continue;
            field->autoinc_next = static_cast<uint32_t>(value + 1);
        } else {
            field->writable.set_integer(this, field, field->autoinc_next, shown_record);
            field->autoinc_next += field->autoinc_step;
        }
        store_descriptor(field);
    }
}

// A value changed to one at or above the next value moves the next value past it.
void DbfFile::move_next_values_past_new_ones() {
    for (DbfField* field : autoinc_fields) {
        integer_type_st now = autoincrement_value(this, field, shown_record);
        integer_type_st before = autoincrement_value(this, field, saved_record.get());
        if (now <= before) continue;
        if (file->is_shared()) read_dbf_field_header(field);
        if (field->autoinc_next > now) continue;
        field->autoinc_next = static_cast<uint32_t>(now + 1);
        store_descriptor(field);
    }
}

void DbfFile::store_descriptor(DbfField* field) {
    if (pending_capacity) descriptors_dirty = true;
    else write_dbf_field_header(field);
}

// The moment the record count on disk grows. An unshared table lets the
// appended records collect and writes them with the header in flush().
void DbfFile::write_header_after_append() {
    if (pending_capacity) {
        if (record_count - stored_count == pending_capacity) flush();
        return;
    }
    if (!file->is_temporary()) write_dbf_header();
}

void DbfFile::rewrite_record(VmStack* stack) {
    bool was_locked = isrlocked(recno);
    if (!was_locked && shared_writable() && !internal_lock()) throw dbf_error_record_in_use();
    move_next_values_past_new_ones();
    update_keys(stack);
    write_record();
    if (!was_locked && isrlocked(recno)) internal_unlock();
}

void DbfFile::write_record() {
    if (recno == 0) throw dbf_error_record_out_of_range();
    if (in_pending(recno))
        std::memcpy(pending_record(recno), shown_record, record_length);
    else
        file->writeex(static_cast<std::streamoff>(record_position(recno)), shown_record, record_length);
    std::memcpy(saved_record.get(), shown_record, record_length);
    update_buffer(recno, shown_record);
    last_update = runtime_load_time();
}

void DbfFile::flush() {
    if (!pending_capacity || stored_count == record_count) return;
    uint64_t count = record_count - stored_count;
    if (count > pending_capacity) throw assert_failed_exception("more records pending than the table holds");
    file->writeex(static_cast<std::streamoff>(record_position(stored_count + 1)), pending.get(),
                  count * record_length);
    if (descriptors_dirty) {
        for (DbfField* field : autoinc_fields) write_dbf_field_header(field);
        descriptors_dirty = false;
    }
    stored_count = record_count;
    if (!file->is_temporary()) write_dbf_header();
}

void DbfFile::restore_record(uint64_t number, const char* record) {
    if (in_pending(number)) std::memcpy(pending_record(number), record, record_length);
    else file->writeex(static_cast<std::streamoff>(record_position(number)), record, record_length);
    update_buffer(number, record);
}

void DbfFile::truncate_records(uint64_t count) {
    if (count >= record_count) return;
    readahead_count = 0;
    record_count = count;
    if (pending_capacity && count >= stored_count) return;
    // The header goes first: it must never count a record the file lacks.
    if (!file->is_temporary()) write_dbf_header();
    file->truncate(record_position(count + 1));
    stored_count = count;
}

void DbfFile::revert() {
    std::memcpy(shown_record, saved_record.get(), record_length);
    if (appending) {
        eof = true;
        appending = false;
    }
}

// Field by field: a field changed elsewhere and not here takes the value
// from the file. Both records are compared with what this object last read.
void DbfFile::refresh() {
    char* fresh = scratch_record.get();
    char* saved = saved_record.get();
    if (!go(recno, fresh, READAHEAD_DIRECT)) throw assert_failed_exception("refresh of a record that is gone");
    if (fresh[0] != saved[0] && saved[0] == shown_record[0]) shown_record[0] = fresh[0];
    for (DbfField* field : visible_fields) {
        uint64_t at = field->offset;
        bool elsewhere = std::memcmp(fresh + at, saved + at, field->length) != 0;
        bool here = std::memcmp(shown_record + at, saved + at, field->length) != 0;
        if (field->nullable) {
            elsewhere |= null_bit_set(this, field, fresh) != null_bit_set(this, field, saved);
            here |= null_bit_set(this, field, shown_record) != null_bit_set(this, field, saved);
        }
        if (field->varlen_mask) {
            elsewhere |= varlen_bit_set(this, field, fresh) != varlen_bit_set(this, field, saved);
            here |= varlen_bit_set(this, field, shown_record) != varlen_bit_set(this, field, saved);
        }
        if (!elsewhere || here) continue;
        std::memcpy(shown_record + at, fresh + at, field->length);
        if (field->nullable) {
            if (null_bit_set(this, field, fresh)) set_null_bit(this, field, shown_record);
            else clear_null_bit(this, field, shown_record);
        }
        if (field->varlen_mask) {
            if (varlen_bit_set(this, field, fresh)) set_varlen_bit(this, field, shown_record);
            else clear_varlen_bit(this, field, shown_record);
        }
    }
    std::memcpy(saved, fresh, record_length);
}

void DbfFile::delete_record() {
    DbfRecursionGuard guard(this);
    shown_record[0] = '*';
}

void DbfFile::recall_record() {
    DbfRecursionGuard guard(this);
    shown_record[0] = ' ';
}

}  // namespace zobase
