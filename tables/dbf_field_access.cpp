// Field access of a table by visible index, and the dispatch of a Variant
// to the setting slot of its kind.
#include "tables/dbf_file.h"
#include "values/variant.h"

namespace zobase {

namespace {

typedef void (*variant_writer_fn)(DbfFile* table, const DbfField* field, const Variant* value,
                                  char* record);

void write_false(DbfFile* t, const DbfField* f, const Variant*, char* r) {
    f->active.set_logical(t, f, false, r);
}
void write_null(DbfFile* t, const DbfField* f, const Variant*, char* r) { f->active.set_null(t, f, r); }
void write_true(DbfFile* t, const DbfField* f, const Variant*, char* r) {
    f->active.set_logical(t, f, true, r);
}
void write_integer(DbfFile* t, const DbfField* f, const Variant* v, char* r) {
    f->active.set_integer(t, f, v->integer, r);
}
void write_numeric(DbfFile* t, const DbfField* f, const Variant* v, char* r) {
    f->active.set_numeric(t, f, v->numeric, r);
}
void write_money(DbfFile* t, const DbfField* f, const Variant* v, char* r) {
    f->active.set_money(t, f, v->money, r);
}
void write_date(DbfFile* t, const DbfField* f, const Variant* v, char* r) {
    f->active.set_date(t, f, v->date, r);
}
void write_datetime(DbfFile* t, const DbfField* f, const Variant* v, char* r) {
    f->active.set_datetime(t, f, v->datetime, r);
}
void write_string(DbfFile* t, const DbfField* f, const Variant* v, char* r) {
    f->active.set_string(t, f, v->str(), r);
}
void write_refused(DbfFile*, const DbfField*, const Variant*, char*) { throw dbf_error_not_impl(); }

// Keyed by the Variant tag.
const variant_writer_fn variant_writers[VARIANT_TAG_COUNT] = {
    write_false,   write_null,     write_true,    write_integer, write_numeric,
    write_money,   write_date,     write_datetime, write_refused, write_refused,
    write_string,  write_refused,  write_refused, write_refused,
};

// A write of the shown record through one active setting slot, under the
// recursion guard.
template <auto Slot, typename Value>
void set_through(DbfFile* table, uint64_t index, const Value& value) {
    DbfRecursionGuard guard(table);
    const DbfField* field = table->get_field(index);
    if (!field) throw dbf_error_invalid_field_number();
    (field->active.*Slot)(table, field, value, table->shown_record);
}

}  // namespace

void DbfFile::write_field(const DbfField* field, const Variant* value, char* record) {
    const Variant* target = value->follow();
    if (target->tag >= VARIANT_TAG_COUNT) throw dbf_error_not_impl();
    variant_writers[target->tag](this, field, target, record);
}

const DbfField* DbfFile::visible(uint64_t index) const {
    if (index >= visible_fields.size()) throw dbf_error_invalid_field_number();
    return visible_fields[index];
}

void DbfFile::get_variant(uint64_t index, Variant* out) {
    const DbfField* field = visible(index);
    field->get_variant(this, field, shown_record, out);
}

void DbfFile::get_char(uint64_t index, char* out, uint64_t* length, const Charset** charset) {
    const DbfField* field = visible(index);
    field->get_chars(this, field, shown_record, out, length, charset);
}

uint64_t DbfFile::get_memo_size(uint64_t index) {
    const DbfField* field = visible(index);
    return field->get_memo_size(this, field, shown_record);
}

void DbfFile::get_old_value(uint64_t index, Variant* out) {
    const DbfField* field = visible(index);
    field->get_variant(this, field, saved_record.get(), out);
}

void DbfFile::get_blank_value(uint64_t index, Variant* out) {
    const DbfField* field = visible(index);
    field->get_variant(this, field, blank_record.get(), out);
}

void DbfFile::set_variant(uint64_t index, const Variant* value) {
    DbfRecursionGuard guard(this);
    write_field(visible(index), value, shown_record);
}

void DbfFile::set_logical(uint64_t index, bool value) {
    set_through<&field_setters_st::set_logical>(this, index, value);
}

void DbfFile::set_integer(uint64_t index, const integer_type_st& value) {
    set_through<&field_setters_st::set_integer>(this, index, value);
}

void DbfFile::set_numeric(uint64_t index, const numeric_type_st& value) {
    set_through<&field_setters_st::set_numeric>(this, index, value);
}

void DbfFile::set_money(uint64_t index, const money_type_st& value) {
    set_through<&field_setters_st::set_money>(this, index, value);
}

void DbfFile::set_string(uint64_t index, const String& value) {
    set_through<&field_setters_st::set_string>(this, index, value);
}

void DbfFile::set_date(uint64_t index, const date_st& value) {
    set_through<&field_setters_st::set_date>(this, index, value);
}

void DbfFile::set_datetime(uint64_t index, const datetime_st& value) {
    set_through<&field_setters_st::set_datetime>(this, index, value);
}

void DbfFile::set_null(uint64_t index) {
    DbfRecursionGuard guard(this);
    const DbfField* field = visible(index);
    field->active.set_null(this, field, shown_record);
}

}  // namespace zobase
