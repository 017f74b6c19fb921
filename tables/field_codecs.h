#pragma once
// Field codecs: the byte form of every field type in a record, and the
// set-up operations that give a field the slots for its type letter.
//
// Byte forms, at the field's offset and width:
//   C      text in the table's charset, padded with spaces
//   V, Q   as C (V) or raw bytes padded with zeros (Q); when the field's
//          variable-length bit in _NullFlags is set, the last byte holds the
//          length and the value stands at the start, else the field is full
//   D      eight ASCII digits YYYYMMDD, spaces when empty
//   T      32-bit Julian day, then 32-bit milliseconds since midnight
//   L      "T" for true, a space for false
//   I      32-bit signed integer;  Y  64-bit integer of 1/10000;  B  double
//   N, F   ASCII number, right-aligned, with the field's decimals
//   M W G  memo block number: 32 bits if the width is 4, else ASCII digits
//   0      the _NullFlags bits
#include <cstdint>

#include "tables/dbf_field.h"
#include "tables/dbf_file.h"
#include "tables/dbf_version.h"

namespace zobase {

// ---- _NullFlags bits: the field's null bit and its variable-length bit.
// Only valid once the table has passed its open checks, which make sure a
// field with a bit has a _NullFlags field wide enough for it.

inline char& null_flags_byte(const DbfFile* table, char* record, uint64_t byte) {
    return record[table->nullflags->offset + byte];
}
inline bool null_bit_set(const DbfFile* table, const DbfField* field, const char* record) {
    return (record[table->nullflags->offset + field->null_byte] & field->null_mask) != 0;
}
inline void set_null_bit(const DbfFile* table, const DbfField* field, char* record) {
    null_flags_byte(table, record, field->null_byte) |= static_cast<char>(field->null_mask);
}
inline void clear_null_bit(const DbfFile* table, const DbfField* field, char* record) {
    null_flags_byte(table, record, field->null_byte) &= static_cast<char>(~field->null_mask);
}
inline bool varlen_bit_set(const DbfFile* table, const DbfField* field, const char* record) {
    return (record[table->nullflags->offset + field->varlen_byte] & field->varlen_mask) != 0;
}
inline void set_varlen_bit(const DbfFile* table, const DbfField* field, char* record) {
    null_flags_byte(table, record, field->varlen_byte) |= static_cast<char>(field->varlen_mask);
}
inline void clear_varlen_bit(const DbfFile* table, const DbfField* field, char* record) {
    null_flags_byte(table, record, field->varlen_byte) &= static_cast<char>(~field->varlen_mask);
}

// ---- slot states

// Every slot at its refusing default: reads raise
// dbf_error_field_incompatible, memo sizes and setters
// dbf_error_field_type_conflict, null dbf_error_field_no_null_support.
void reset_field_slots(DbfField* field);
// The active setters take the writable values set-up made.
void set_field_readwrite(DbfField* field);
// Integer, numeric and money refuse with dbf_error_field_readonly; null,
// logical, string, date and datetime with their refusing defaults, so a
// read-only text field reports a type conflict and not a read-only error.
void set_field_readonly(DbfField* field);

// ---- field type tables of the versions
extern const field_type_table_st dbase_field_types;      // 0x03, 0xF5
extern const field_type_table_st visual_field_types;     // 0x30, 0x31
extern const field_type_table_st varlength_field_types;  // 0x32

// ---- plain set-up operations by type letter; the tables wrap them with
// the null bit, the variable-length bit and the autoincrement list.
// Each raises dbf_error_file_corruption for a width its byte form cannot
// have, so that no slot ever reaches outside its field.
void setup_character_field(DbfFile* table, DbfField* field);  // C
void setup_varchar_field(DbfFile* table, DbfField* field);    // V
void setup_varbinary_field(DbfFile* table, DbfField* field);  // Q
void setup_date_field(DbfFile* table, DbfField* field);       // D
void setup_datetime_field(DbfFile* table, DbfField* field);   // T
void setup_logical_field(DbfFile* table, DbfField* field);    // L
void setup_integer_field(DbfFile* table, DbfField* field);    // I
void setup_currency_field(DbfFile* table, DbfField* field);   // Y
void setup_double_field(DbfFile* table, DbfField* field);     // B
void setup_numeric_field(DbfFile* table, DbfField* field);    // N, F
void setup_memo_text_field(DbfFile* table, DbfField* field);  // M
void setup_blob_field(DbfFile* table, DbfField* field);       // W
void setup_general_field(DbfFile* table, DbfField* field);    // G
// Type 0: requires the name _NullFlags, without regard to case, and
// remembers the field; its fill does nothing, since the fields that own its
// bits set or clear them.
void setup_nullflags_field(DbfFile* table, DbfField* field);

// For the set-up operations: a width the field's byte form cannot have.
inline void require_field_width(bool valid) {
    if (!valid) throw dbf_error_file_corruption();
}

// ---- codecs shared between the families
void fill_with_space(DbfFile* table, const DbfField* field, char* record);  // zeros if binary
void fill_with_zero(DbfFile* table, const DbfField* field, char* record);
void set_integer4_from_integer(DbfFile* table, const DbfField* field, const integer_type_st& value,
                               char* record);
void set_numeric_from_integer(DbfFile* table, const DbfField* field, const integer_type_st& value,
                              char* record);
void get_integer_from_integer4(DbfFile* table, const DbfField* field, const char* record,
                               integer_type_st* out);
void get_integer_from_numeric(DbfFile* table, const DbfField* field, const char* record,
                              integer_type_st* out);
// Text into a get-chars buffer: converted to *charset (the table's if
// null), dbf_error_buffer_overflow if it does not fit.
void copy_chars_out(DbfFile* table, String text, char* out, uint64_t* length,
                    const Charset** charset);
// The default get chars: the value by get variant, as text.
void get_chars_from_variant(DbfFile* table, const DbfField* field, const char* record, char* out,
                            uint64_t* length, const Charset** charset);

// Writes a number as the text form of an N or F field: right-aligned with
// the field's decimals. Digits after the point may be lost, whole digits
// never: a value too wide raises RuntimeError 39. With round_whole set, a
// text cut at or before its point is made again from the value rounded to
// a whole number, so the last whole digit is rounded rather than cut.
void write_numeric_text(double value, char* field_bytes, uint64_t width, uint64_t decimals,
                        bool round_whole);

// Raises overflow_error with "positive overflow" or "negative overflow".
[[noreturn]] void raise_overflow(bool positive);

}  // namespace zobase
