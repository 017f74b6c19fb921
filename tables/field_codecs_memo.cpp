// Memo, blob and general fields: the record holds a block number of the
// memo file, and the bodies live there. Block 0 is the empty value.
#include <limits>

#include "tables/field_codecs.h"
#include "tables/fpt_file.h"
#include "text/charset.h"
#include "values/variant.h"

namespace zobase {

namespace {

constexpr uint64_t MEMO_NUMBER_BINARY_WIDTH = 4;

FptFile* memo_file_of(const DbfFile* table) {
    if (!table->fpt) throw dbf_fpt_file_missing();
    return table->fpt.get();
}

// The block number in the record; one that no memo file can hold means the
// record is damaged.
unsigned int memo_block(DbfFile* table, const DbfField* field, const char* record) {
    integer_type_st block = 0;
    field->memo_number_out(table, field, record, &block);
    if (block < 0 || block > std::numeric_limits<unsigned int>::max())
        throw dbf_error_file_corruption();
    return static_cast<unsigned int>(block);
}

void read_memo(DbfFile* table, const DbfField* field, const char* record, Variant* out,
               const Charset* charset) {
    unsigned int block = memo_block(table, field, record);
    int type = 0;
    out->set_string(block == 0 ? String(0, charset)
                               : memo_file_of(table)->load(block, charset, &type));
}

void write_memo(DbfFile* table, const DbfField* field, const String& value, char* record,
                const Charset* charset) {
    // The old body stays in the memo file: the store only grows.
    unsigned int block = memo_file_of(table)->store(value, charset, FPT_TYPE_TEXT);
    field->memo_number_in(table, field, block, record);
}

void get_variant_from_memo_field(DbfFile* table, const DbfField* field, const char* record,
                                 Variant* out) {
    read_memo(table, field, record, out, table->charset);
}

void get_variant_from_memo_field_nocptrans(DbfFile* table, const DbfField* field,
                                           const char* record, Variant* out) {
    read_memo(table, field, record, out, table->charset_nocptrans);
}

void get_variant_from_blob_field(DbfFile* table, const DbfField* field, const char* record,
                                 Variant* out) {
    read_memo(table, field, record, out, Charset::binary);
}

void set_memo_field_from_string(DbfFile* table, const DbfField* field, const String& value,
                                char* record) {
    write_memo(table, field, value, record, table->charset);
}

void set_memo_field_from_string_nocptrans(DbfFile* table, const DbfField* field,
                                          const String& value, char* record) {
    write_memo(table, field, value, record, table->charset_nocptrans);
}

void set_blob_field_from_string(DbfFile* table, const DbfField* field, const String& value,
                                char* record) {
    write_memo(table, field, value, record, Charset::binary);
}

uint64_t get_fpt_memo_size(DbfFile* table, const DbfField* field, const char* record) {
    unsigned int block = memo_block(table, field, record);
    return block == 0 ? 0 : memo_file_of(table)->body_length(block);
}

// What M, W and G share: the memo list, the memo size, and the block number
// form by width.
void setup_memo_field(DbfFile* table, DbfField* field) {
    require_field_width(field->length >= 1);
    table->memo_fields.push_back(field);
    field->get_memo_size = get_fpt_memo_size;
    if (field->length == MEMO_NUMBER_BINARY_WIDTH) {
        field->fill = fill_with_zero;
        field->memo_number_in = set_integer4_from_integer;
        field->memo_number_out = get_integer_from_integer4;
    } else {
        field->fill = fill_with_space;
        field->memo_number_in = set_numeric_from_integer;
        field->memo_number_out = get_integer_from_numeric;
    }
}

}  // namespace

void setup_memo_text_field(DbfFile* table, DbfField* field) {
    setup_memo_field(table, field);
    field->get_variant =
        field->binary ? get_variant_from_memo_field_nocptrans : get_variant_from_memo_field;
    field->writable.set_string =
        field->binary ? set_memo_field_from_string_nocptrans : set_memo_field_from_string;
}

void setup_blob_field(DbfFile* table, DbfField* field) {
    setup_memo_field(table, field);
    field->get_variant = get_variant_from_blob_field;
    field->writable.set_string = set_blob_field_from_string;
}

// Without the binary flag a general field is a blob. With it, it cannot be
// written, and reads as a blob in versions 0x30 and 0x31 and as a memo in
// version 0x32.
void setup_general_field(DbfFile* table, DbfField* field) {
    setup_memo_field(table, field);
    if (!field->binary) {
        field->get_variant = get_variant_from_blob_field;
        field->writable.set_string = set_blob_field_from_string;
        return;
    }
    field->get_variant =
        table->version == 0x32 ? get_variant_from_memo_field : get_variant_from_blob_field;
}

}  // namespace zobase
