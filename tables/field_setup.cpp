// Slot states of a field: the refusing defaults, the null-bit wrappers that
// set-up puts around the plain codecs, read-only state, and the field type
// tables of the versions built from them.
#include <cstring>
#include <strings.h>

#include "tables/field_codecs.h"
#include "values/error.h"
#include "values/variant.h"

namespace zobase {

namespace {

// ---- refusing defaults

void fill_nothing(DbfFile*, const DbfField*, char*) {}

void set_null_impossible(DbfFile*, const DbfField*, char*) {
    throw dbf_error_field_no_null_support();
}
void get_variant_impossible(DbfFile*, const DbfField*, const char*, Variant*) {
    throw dbf_error_field_incompatible();
}
uint64_t get_memo_size_impossible(DbfFile*, const DbfField*, const char*) {
    throw dbf_error_field_type_conflict();
}
void set_logical_impossible(DbfFile*, const DbfField*, bool, char*) {
    throw dbf_error_field_type_conflict();
}
template <typename Refusal>
void set_integer_impossible(DbfFile*, const DbfField*, const integer_type_st&, char*) {
    throw Refusal();
}
template <typename Refusal>
void set_numeric_impossible(DbfFile*, const DbfField*, const numeric_type_st&, char*) {
    throw Refusal();
}
template <typename Refusal>
void set_money_impossible(DbfFile*, const DbfField*, const money_type_st&, char*) {
    throw Refusal();
}
void set_string_impossible(DbfFile*, const DbfField*, const String&, char*) {
    throw dbf_error_field_type_conflict();
}
void set_date_impossible(DbfFile*, const DbfField*, const date_st&, char*) {
    throw dbf_error_field_type_conflict();
}
void set_datetime_impossible(DbfFile*, const DbfField*, const datetime_st&, char*) {
    throw dbf_error_field_type_conflict();
}

const field_setters_st refusing_setters = {
    set_null_impossible,
    set_logical_impossible,
    set_integer_impossible<dbf_error_field_type_conflict>,
    set_numeric_impossible<dbf_error_field_type_conflict>,
    set_money_impossible<dbf_error_field_type_conflict>,
    set_string_impossible,
    set_date_impossible,
    set_datetime_impossible,
};

const field_setters_st readonly_setters = {
    set_null_impossible,
    set_logical_impossible,
    set_integer_impossible<dbf_error_field_readonly>,
    set_numeric_impossible<dbf_error_field_readonly>,
    set_money_impossible<dbf_error_field_readonly>,
    set_string_impossible,
    set_date_impossible,
    set_datetime_impossible,
};

// ---- nullable fields: a blank value is not null, reading a set bit gives
// null, every write clears the bit, and setting null leaves the bytes alone.

void fill_not_null(DbfFile* table, const DbfField* field, char* record) {
    field->plain_fill(table, field, record);
    clear_null_bit(table, field, record);
}

void get_variant_from_nullable(DbfFile* table, const DbfField* field, const char* record,
                               Variant* out) {
    if (null_bit_set(table, field, record))
        out->set_null();
    else
        field->plain_get_variant(table, field, record, out);
}

void set_null(DbfFile* table, const DbfField* field, char* record) {
    set_null_bit(table, field, record);
}

// Calls the plain setter in `Slot`, then clears the null bit.
template <auto Slot, typename Value>
void clear_null_impl(DbfFile* table, const DbfField* field, Value value, char* record) {
    (field->plain.*Slot)(table, field, value, record);
    clear_null_bit(table, field, record);
}

const field_setters_st nullable_setters = {
    set_null,
    clear_null_impl<&field_setters_st::set_logical, bool>,
    clear_null_impl<&field_setters_st::set_integer, const integer_type_st&>,
    clear_null_impl<&field_setters_st::set_numeric, const numeric_type_st&>,
    clear_null_impl<&field_setters_st::set_money, const money_type_st&>,
    clear_null_impl<&field_setters_st::set_string, const String&>,
    clear_null_impl<&field_setters_st::set_date, const date_st&>,
    clear_null_impl<&field_setters_st::set_datetime, const datetime_st&>,
};

// ---- set-up wrappers; bits are handed out in field order at open, never
// read from the file, so a table written in any field order finds its bits.

uint64_t next_null_flag_bit(DbfFile* table) { return table->nullflag_bits++; }

template <field_setup_fn Plain>
void setup_nullbit(DbfFile* table, DbfField* field) {
    Plain(table, field);
    if (!field->nullable) return;
    uint64_t bit = next_null_flag_bit(table);
    field->null_byte = bit / 8;
    field->null_mask = static_cast<uint8_t>(1u << bit % 8);
    field->plain_fill = field->fill;
    field->fill = fill_not_null;
    field->plain_get_variant = field->get_variant;
    field->get_variant = get_variant_from_nullable;
    field->plain = field->writable;
    field->writable = nullable_setters;
}

// The variable-length bit comes before the null bit of the same field.
template <field_setup_fn Inner>
void setup_varbit(DbfFile* table, DbfField* field) {
    uint64_t bit = next_null_flag_bit(table);
    field->varlen_byte = bit / 8;
    field->varlen_mask = static_cast<uint8_t>(1u << bit % 8);
    Inner(table, field);
}

template <field_setup_fn Plain>
void setup_autoinc(DbfFile* table, DbfField* field) {
    Plain(table, field);
    if (field->autoincrement) table->autoinc_fields.push_back(field);
}

struct letter_setup_st {
    char letter;
    field_setup_fn setup;
};

template <size_t N>
constexpr field_type_table_st make_field_types(const letter_setup_st (&rows)[N]) {
    field_type_table_st table = {};
    for (const letter_setup_st& row : rows) table.by_letter[static_cast<unsigned char>(row.letter)] = row.setup;
    return table;
}

constexpr letter_setup_st dbase_rows[] = {
    {'C', setup_character_field}, {'D', setup_date_field},    {'F', setup_numeric_field},
    {'L', setup_logical_field},   {'M', setup_memo_text_field}, {'N', setup_numeric_field},
};

constexpr letter_setup_st visual_rows[] = {
    {'0', setup_nullflags_field},
    {'B', setup_nullbit<setup_double_field>},
    {'C', setup_nullbit<setup_character_field>},
    {'D', setup_nullbit<setup_date_field>},
    {'F', setup_nullbit<setup_numeric_field>},
    {'G', setup_general_field},
    {'I', setup_nullbit<setup_autoinc<setup_integer_field>>},
    {'L', setup_nullbit<setup_logical_field>},
    {'M', setup_nullbit<setup_memo_text_field>},
    {'N', setup_nullbit<setup_numeric_field>},
    {'T', setup_nullbit<setup_datetime_field>},
    {'W', setup_blob_field},
    {'Y', setup_nullbit<setup_currency_field>},
};

constexpr letter_setup_st varlength_rows[] = {
    {'0', setup_nullflags_field},
    {'B', setup_nullbit<setup_double_field>},
    {'C', setup_nullbit<setup_character_field>},
    {'D', setup_nullbit<setup_date_field>},
    {'F', setup_nullbit<setup_numeric_field>},
    {'G', setup_nullbit<setup_general_field>},
    {'I', setup_nullbit<setup_autoinc<setup_integer_field>>},
    {'L', setup_nullbit<setup_logical_field>},
    {'M', setup_nullbit<setup_memo_text_field>},
    {'N', setup_nullbit<setup_numeric_field>},
    {'Q', setup_varbit<setup_nullbit<setup_varbinary_field>>},
    {'T', setup_nullbit<setup_datetime_field>},
    {'V', setup_varbit<setup_nullbit<setup_varchar_field>>},
    {'W', setup_nullbit<setup_blob_field>},
    {'Y', setup_nullbit<setup_currency_field>},
};

}  // namespace

constinit const field_type_table_st dbase_field_types = make_field_types(dbase_rows);
constinit const field_type_table_st visual_field_types = make_field_types(visual_rows);
constinit const field_type_table_st varlength_field_types = make_field_types(varlength_rows);

void reset_field_slots(DbfField* field) {
    field->fill = fill_nothing;
    field->get_chars = get_chars_from_variant;
    field->get_variant = get_variant_impossible;
    field->get_memo_size = get_memo_size_impossible;
    field->writable = refusing_setters;
    field->active = refusing_setters;
    field->memo_number_in = nullptr;
    field->memo_number_out = nullptr;
}

void set_field_readwrite(DbfField* field) { field->active = field->writable; }

void set_field_readonly(DbfField* field) { field->active = readonly_setters; }

void setup_nullflags_field(DbfFile* table, DbfField* field) {
    if (strcasecmp(field->name, "_NullFlags") != 0) throw dbf_error_file_corruption();
    table->nullflags = field;
    field->fill = fill_nothing;
}

void fill_with_space(DbfFile*, const DbfField* field, char* record) {
    std::memset(record + field->offset, field->binary ? 0 : ' ', field->length);
}

void fill_with_zero(DbfFile*, const DbfField* field, char* record) {
    std::memset(record + field->offset, 0, field->length);
}

void raise_overflow(bool positive) {
    throw overflow_error(String(positive ? "positive overflow" : "negative overflow"));
}

}  // namespace zobase
