#pragma once
// DbfField: one column of a DBF table, with its descriptor values and the
// operation slots that read and write its bytes in a record buffer.
//
// A field does not test its type on access. At open the set-up operation of
// its type letter (field_codecs.h) fills the slots; from then on a read or a
// write is one indirect call, with nullability and read-only state folded
// into which function sits in the slot. Every slot works on a record buffer
// passed to it, so the same field serves the shown, saved and blank records.
#include <cstdint>

#include "values/number_types.h"
#include "values/string.h"

namespace zobase {

class Charset;
class DbfFile;
class DbfField;
class Variant;

typedef void (*field_fill_fn)(DbfFile* table, const DbfField* field, char* record);
typedef void (*field_set_null_fn)(DbfFile* table, const DbfField* field, char* record);
// In: *length is the capacity of `out`, *charset the wanted charset or null
// for the table's. Out: the bytes written and their charset.
typedef void (*field_get_chars_fn)(DbfFile* table, const DbfField* field, const char* record,
                                   char* out, uint64_t* length, const Charset** charset);
// `out` must be clean (logical false): a false logical field leaves it alone.
typedef void (*field_get_variant_fn)(DbfFile* table, const DbfField* field, const char* record,
                                     Variant* out);
typedef uint64_t (*field_get_memo_size_fn)(DbfFile* table, const DbfField* field,
                                           const char* record);
typedef void (*field_set_logical_fn)(DbfFile* table, const DbfField* field, bool value,
                                     char* record);
typedef void (*field_set_integer_fn)(DbfFile* table, const DbfField* field,
                                     const integer_type_st& value, char* record);
typedef void (*field_set_numeric_fn)(DbfFile* table, const DbfField* field,
                                     const numeric_type_st& value, char* record);
typedef void (*field_set_money_fn)(DbfFile* table, const DbfField* field,
                                   const money_type_st& value, char* record);
typedef void (*field_set_string_fn)(DbfFile* table, const DbfField* field, const String& value,
                                    char* record);
typedef void (*field_set_date_fn)(DbfFile* table, const DbfField* field, const date_st& value,
                                  char* record);
typedef void (*field_set_datetime_fn)(DbfFile* table, const DbfField* field,
                                      const datetime_st& value, char* record);
typedef void (*field_memo_number_out_fn)(DbfFile* table, const DbfField* field,
                                         const char* record, integer_type_st* block);

// The eight setting slots. A field holds them three times: as set-up made
// them (writable), as calls go through them (active, which read-only state
// replaces), and the plain forms that the null-bit wrappers call.
struct field_setters_st {
    field_set_null_fn set_null;
    field_set_logical_fn set_logical;
    field_set_integer_fn set_integer;
    field_set_numeric_fn set_numeric;
    field_set_money_fn set_money;
    field_set_string_fn set_string;
    field_set_date_fn set_date;
    field_set_datetime_fn set_datetime;
};

// Descriptor flag bits; the high four bits are kept as read.
enum DbfFieldFlags : uint8_t {
    DBF_FIELD_SYSTEM = 0x01,    // hidden from the language
    DBF_FIELD_NULLABLE = 0x02,
    DBF_FIELD_BINARY = 0x04,    // no charset translation
    DBF_FIELD_AUTOINC = 0x08,
};

constexpr size_t DBF_FIELD_NAME_CAPACITY = 88;  // 87 bytes and a NUL
constexpr size_t DBF_DESCRIPTOR_SIZE = 32;

class DbfField {
public:
    // In the table's charset. The file keeps 10 bytes; longer names exist
    // in memory only, for temporary tables.
    char name[DBF_FIELD_NAME_CAPACITY] = {};
    char type = 0;
    uint64_t descriptor_position = 0;
    uint64_t offset = 0;  // in the record; byte 0 is the deletion flag
    uint64_t length = 0;
    uint64_t decimals = 0;
    uint32_t autoinc_next = 0;
    uint8_t autoinc_step = 0;

    field_fill_fn fill = nullptr;
    field_get_chars_fn get_chars = nullptr;
    field_get_variant_fn get_variant = nullptr;
    field_get_memo_size_fn get_memo_size = nullptr;
    field_setters_st writable = {};
    field_setters_st active = {};
    field_set_integer_fn memo_number_in = nullptr;
    field_memo_number_out_fn memo_number_out = nullptr;
    // What the null-bit wrappers call; set only for nullable fields.
    field_fill_fn plain_fill = nullptr;
    field_get_variant_fn plain_get_variant = nullptr;
    field_setters_st plain = {};

    bool binary = false;
    bool nullable = false;
    bool system = false;
    bool autoincrement = false;
    // Positions inside the _NullFlags field, handed out in field order at open.
    uint64_t null_byte = 0;
    uint8_t null_mask = 0;
    uint64_t varlen_byte = 0;
    uint8_t varlen_mask = 0;
    // The descriptor as read, so that reserved bytes survive a rewrite.
    char descriptor[DBF_DESCRIPTOR_SIZE] = {};

    // Whether the field's value lives in the memo file.
    bool is_memo() const noexcept { return type == 'M' || type == 'W' || type == 'G'; }
};

}  // namespace zobase
