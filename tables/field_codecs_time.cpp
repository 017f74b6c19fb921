// Date, datetime and logical fields.
#include <cstring>

#include "tables/byte_order.h"
#include "tables/field_codecs.h"
#include "values/date.h"
#include "values/variant.h"

namespace zobase {

namespace {

constexpr uint64_t DATE_TEXT_SIZE = 8;
constexpr uint32_t MSECS_PER_SECOND = 1000;

// ---- D: eight ASCII digits, spaces when empty

// Each byte counts as its value minus 48, unchecked, so a space among the
// digits reads as -16 and the date still comes out; a date the digits
// cannot make reads as empty.
void get_variant_from_date_field(DbfFile*, const DbfField* field, const char* record,
                                 Variant* out) {
    const auto* text = reinterpret_cast<const unsigned char*>(record + field->offset);
    date_st date = {0};
    if (std::memcmp(text, "        ", DATE_TEXT_SIZE) != 0) {
        int d[DATE_TEXT_SIZE];
        for (uint64_t i = 0; i < DATE_TEXT_SIZE; ++i) d[i] = text[i] - '0';
        int year = d[0] * 1000 + d[1] * 100 + d[2] * 10 + d[3];
        int month = d[4] * 10 + d[5];
        int day = d[6] * 10 + d[7];
        if (serial_julian_date(year, static_cast<unsigned>(month), static_cast<unsigned>(day), &date))
            date.julian = 0;
    }
    out->set(date);
}

// The last `digits` decimal digits of the value, zero-padded.
void put_padded_digits(char* out, int value, int digits) {
    unsigned magnitude = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
    for (int i = digits - 1; i >= 0; --i, magnitude /= 10) out[i] = static_cast<char>('0' + magnitude % 10);
}

void store_date(const DbfField* field, char* record, uint32_t julian) {
    char* text = record + field->offset;
    if (julian == 0) {
        std::memset(text, ' ', DATE_TEXT_SIZE);
        return;
    }
    int year, month, day;
    unserial_julian_date(date_st{julian}, &year, &month, &day);
    put_padded_digits(text, year, 4);
    put_padded_digits(text + 4, month, 2);
    put_padded_digits(text + 6, day, 2);
}

void set_date_field_from_date(DbfFile*, const DbfField* field, const date_st& value,
                              char* record) {
    store_date(field, record, value.julian);
}

void set_date_field_from_datetime_with_loss(DbfFile*, const DbfField* field,
                                            const datetime_st& value, char* record) {
    store_date(field, record, value.julian);
}

// ---- T: Julian day and milliseconds, rounded to whole seconds on read
// only: a remainder of 500 or less rounds down, above 500 up.

void get_variant_from_datetime_field(DbfFile*, const DbfField* field, const char* record,
                                     Variant* out) {
    datetime_st value;
    value.julian = read_le32(record + field->offset);
    uint32_t msecs = read_le32(record + field->offset + 4);
    uint32_t rest = msecs % MSECS_PER_SECOND;
    value.msecs = msecs - rest;
    if (rest > 500) value.msecs += MSECS_PER_SECOND;
    if (value.msecs == MSECS_PER_DAY && msecs < MSECS_PER_DAY) {
        ++value.julian;  // rounded up into the next day
        value.msecs = 0;
    }
    out->set(value);
}

void store_datetime(const DbfField* field, char* record, uint32_t julian, uint32_t msecs) {
    write_le32(record + field->offset, julian);
    write_le32(record + field->offset + 4, msecs);
}

void set_datetime_field_from_datetime(DbfFile*, const DbfField* field, const datetime_st& value,
                                      char* record) {
    store_datetime(field, record, value.julian, value.msecs);
}

void set_datetime_field_from_date(DbfFile*, const DbfField* field, const date_st& value,
                                  char* record) {
    store_datetime(field, record, value.julian, 0);
}

// ---- L: "T" is written for true and a space for false; a space, "F" or a
// zero byte reads as false, any other byte as true.

void get_variant_from_logical_field(DbfFile*, const DbfField* field, const char* record,
                                    Variant* out) {
    char c = record[field->offset];
    if (c == ' ' || c == 'F' || c == 0) return;  // out is fresh, so already false
    out->set_true();
}

void set_logical_field_from_bool(DbfFile*, const DbfField* field, bool value, char* record) {
    record[field->offset] = value ? 'T' : ' ';
}

}  // namespace

void setup_date_field(DbfFile*, DbfField* field) {
    require_field_width(field->length == DATE_TEXT_SIZE);
    field->fill = fill_with_space;
    field->get_variant = get_variant_from_date_field;
    field->writable.set_date = set_date_field_from_date;
    field->writable.set_datetime = set_date_field_from_datetime_with_loss;
}

void setup_datetime_field(DbfFile*, DbfField* field) {
    require_field_width(field->length == 8);
    field->fill = fill_with_zero;
    field->get_variant = get_variant_from_datetime_field;
    field->writable.set_date = set_datetime_field_from_date;
    field->writable.set_datetime = set_datetime_field_from_datetime;
}

void setup_logical_field(DbfFile*, DbfField* field) {
    require_field_width(field->length >= 1);
    field->fill = fill_with_space;
    field->get_variant = get_variant_from_logical_field;
    field->writable.set_logical = set_logical_field_from_bool;
}

}  // namespace zobase
