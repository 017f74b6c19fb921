// Setting up the record engine of an opened table: slots per field, the
// layout checks, the record buffers and the read-ahead block.
#include <algorithm>
#include <cstring>

#include "tables/dbf_file.h"
#include "tables/field_codecs.h"

namespace zobase {

namespace {

constexpr uint64_t READAHEAD_MIN_BYTES = 4096;
constexpr uint64_t READAHEAD_MIN_RECORDS = 10;

std::unique_ptr<char[]> new_record(uint64_t size) { return std::unique_ptr<char[]>(new char[size]()); }

std::unique_ptr<char[]> copy_record(const char* source, uint64_t size) {
    std::unique_ptr<char[]> copy(new char[size]);
    std::memcpy(copy.get(), source, size);
    return copy;
}

}  // namespace

void DbfFile::setup_record_engine() {
    nullflag_bits = 0;
    nullflags = nullptr;
    visible_fields.clear();
    system_fields.clear();
    memo_fields.clear();
    autoinc_fields.clear();
    for (DbfField& field : fields) {
        (field.system ? system_fields : visible_fields).push_back(&field);
        // Version 0x02 assigns no field types: a table of it with fields
        // cannot be used.
        if (!version_info->field_types) throw dbf_unsupported_version();
        field_setup_fn setup = version_info->field_types->find(field.type);
        if (!setup) throw dbf_error_field_name_dup_or_inv();
        reset_field_slots(&field);
        setup(this, &field);
    }
    check_layout();
    record1_position = header_length;
    allocate_record_buffers();
}

// The header length must be what the descriptors take, and the fields must
// follow each other from byte 1 without a gap up to the record length.
// Every bit handed out must lie inside the _NullFlags field.
void DbfFile::check_layout() {
    uint64_t trailer = version_info->has_backlink ? 1 + DBF_BACKLINK_SIZE : 1;
    if (header_length != DBF_HEADER_SIZE * (fields.size() + 1) + trailer)
        throw dbf_error_file_corruption();
    uint64_t end = 1;
    for (const DbfField& field : fields) {
        if (field.offset != end) throw dbf_error_file_corruption();
        end += field.length;
    }
    if (end != record_length) throw dbf_error_file_corruption();
    if (nullflag_bits > 0 && (!nullflags || nullflag_bits > nullflags->length * 8))
        throw dbf_error_file_corruption();
}

// The read-ahead block holds at least 4096 bytes and 10 records. Its
// capacity is the quotient plus the remainder of that size by the record
// length, as it always was; the block is that many whole records.
void DbfFile::allocate_record_buffers() {
    blank_record = new_record(record_length);
    blank_record[0] = ' ';
    for (DbfField& field : fields) field.fill(this, &field, blank_record.get());
    scratch_record = new_record(record_length);
    saved_record = copy_record(blank_record.get(), record_length);
    stored_record = copy_record(blank_record.get(), record_length);
    shown_record = stored_record.get();

    uint64_t block = std::max(READAHEAD_MIN_BYTES, READAHEAD_MIN_RECORDS * record_length);
    readahead_capacity = block / record_length + block % record_length;
    readahead.reset(new char[readahead_capacity * record_length]);
    readahead_first = 0;
    readahead_count = 0;
}

}  // namespace zobase
