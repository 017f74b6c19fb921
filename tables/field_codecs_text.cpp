// Text fields: C (character), V (varchar) and Q (varbinary), and the
// get-chars forms that hand field values out as text.
#include <algorithm>
#include <cstring>

#include "tables/field_codecs.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/variant.h"

namespace zobase {

namespace {

// A Variant released on every way out.
struct variant_holder_st {
    Variant value;
    ~variant_holder_st() { value.release(nullptr); }
};

bool copies_into_table(const DbfFile* table, const String& value) {
    const Charset* from = value.get_charset();
    return from == Charset::binary || from == table->charset;
}

// Puts the value into the field's bytes: as they are when the value is
// binary or in the table's charset, converted otherwise; a value too long is
// cut. Returns the bytes written. A character the table's charset lacks
// raises dbf_error_cptrans_char_lost, leaving the field partly written.
uint64_t put_text(const DbfFile* table, const String& value, char* dst, uint64_t width) {
    if (copies_into_table(table, value)) {
        uint64_t n = std::min<uint64_t>(value.size(), width);
        if (n) std::memcpy(dst, value.read(), n);
        return n;
    }
    char* out = dst;
    CstranError result = value.get_charset()->convert(value.read(), value.end(), out, dst + width,
                                                      table->charset, CSTRAN_STRICT);
    if (result > 0) throw dbf_error_cptrans_char_lost();
    return static_cast<uint64_t>(out - dst);
}

uint64_t put_bytes(const String& value, char* dst, uint64_t width) {
    uint64_t n = std::min<uint64_t>(value.size(), width);
    if (n) std::memcpy(dst, value.read(), n);
    return n;
}

void pad_with(char* begin, char* end, char pad) {
    if (end > begin) std::memset(begin, pad, static_cast<size_t>(end - begin));
}

// ---- C

void get_variant_from_char_field(DbfFile* table, const DbfField* field, const char* record,
                                 Variant* out) {
    out->set_string(String::fromBytes(record + field->offset, field->length, table->charset));
}

void get_variant_from_char_field_nocptrans(DbfFile* table, const DbfField* field,
                                           const char* record, Variant* out) {
    out->set_string(
        String::fromBytes(record + field->offset, field->length, table->charset_nocptrans));
}

// Characters a field of this width holds in the table's charset.
uint64_t field_characters(const DbfFile* table, const DbfField* field) {
    return field->length / table->charset->max_char();
}

// The end of the first `count` characters from `begin`, never past `end`.
const char* step_characters(const Charset* charset, const char* begin, const char* end,
                            uint64_t count) {
    const char* p = begin;
    for (uint64_t i = 0; i < count && p < end; ++i) charset->next(p, end);
    return std::min(p, end);
}

// Whether the first `count` bytes are ASCII: in a charset that writes ASCII
// as itself, each is then one character.
bool ascii_prefix(const char* bytes, uint64_t count) {
    uint64_t i = 0, high = 0;
    for (; i + 8 <= count; i += 8) {
        uint64_t word;
        std::memcpy(&word, bytes + i, 8);
        high |= word;
    }
    for (; i < count; ++i) high |= static_cast<unsigned char>(bytes[i]);
    return (high & 0x8080808080808080ull) == 0;
}

// The bytes of as many characters as the field holds; padding past them is
// not part of the value.
void get_variant_from_multibyte_char_field(DbfFile* table, const DbfField* field,
                                           const char* record, Variant* out) {
    const char* begin = record + field->offset;
    uint64_t characters = field_characters(table, field);
    const char* end = ascii_transparent(table->charset) && ascii_prefix(begin, characters)
                          ? begin + characters
                          : step_characters(table->charset, begin, begin + field->length, characters);
    out->set_string(String::fromBytes(begin, static_cast<size_t>(end - begin), table->charset));
}

void set_char_field_from_string(DbfFile* table, const DbfField* field, const String& value,
                                char* record) {
    char* dst = record + field->offset;
    uint64_t n = put_text(table, value, dst, field->length);
    pad_with(dst + n, dst + field->length, ' ');
}

// Writes as above, then keeps only as many characters as the field holds,
// which also drops a character cut in half at the end.
void set_multibyte_char_field_from_string(DbfFile* table, const DbfField* field,
                                          const String& value, char* record) {
    char* dst = record + field->offset;
    char* end = dst + field->length;
    uint64_t n = put_text(table, value, dst, field->length);
    // n bytes hold at most n characters: only a longer text needs counting.
    uint64_t characters = field_characters(table, field);
    const char* kept = n <= characters ? dst + n : step_characters(table->charset, dst, dst + n, characters);
    pad_with(dst + (kept - dst), end, ' ');
}

void set_char_field_from_string_nocptrans(DbfFile*, const DbfField* field, const String& value,
                                          char* record) {
    char* dst = record + field->offset;
    uint64_t n = put_bytes(value, dst, field->length);
    pad_with(dst + n, dst + field->length, ' ');
}

// The table's own bytes unless another charset is asked for.
void get_chars_from_char_field(DbfFile* table, const DbfField* field, const char* record,
                               char* out, uint64_t* length, const Charset** charset) {
    const Charset* wanted = *charset ? *charset : table->charset;
    const char* src = record + field->offset;
    const char* src_end = src + field->length;
    if (wanted == table->charset) {
        if (*length < field->length) throw dbf_error_buffer_overflow();
        std::memcpy(out, src, field->length);
        *length = field->length;
    } else {
        char* dst = out;
        CstranError result =
            table->charset->convert_stream(src, src_end, dst, out + *length, wanted, CSTRAN_STRICT);
        if (result > 0) throw dbf_error_cptrans_char_lost();
        if (src != src_end) throw dbf_error_buffer_overflow();
        *length = static_cast<uint64_t>(dst - out);
    }
    *charset = wanted;
}

// ---- V and Q: the variable-length bit says whether the last byte holds
// the length.

uint64_t varlen_value_size(const DbfFile* table, const DbfField* field, const char* record) {
    if (!varlen_bit_set(table, field, record)) return field->length;
    auto size = static_cast<unsigned char>(record[field->offset + field->length - 1]);
    if (size >= field->length) throw dbf_error_file_corruption();
    return size;
}

void set_varlen_size(DbfFile* table, const DbfField* field, uint64_t written, char* record) {
    if (written < field->length) {
        set_varlen_bit(table, field, record);
        record[field->offset + field->length - 1] = static_cast<char>(written);
    } else {
        clear_varlen_bit(table, field, record);
    }
}

template <field_fill_fn Fill>
void set_varlen_field_empty(DbfFile* table, const DbfField* field, char* record) {
    Fill(table, field, record);
    set_varlen_size(table, field, 0, record);
}

void get_variant_from_varchar_field(DbfFile* table, const DbfField* field, const char* record,
                                    Variant* out) {
    out->set_string(String::fromBytes(record + field->offset,
                                      varlen_value_size(table, field, record), table->charset));
}

void get_variant_from_varchar_field_nocptrans(DbfFile* table, const DbfField* field,
                                              const char* record, Variant* out) {
    out->set_string(String::fromBytes(record + field->offset,
                                      varlen_value_size(table, field, record),
                                      table->charset_nocptrans));
}

void get_variant_from_varbinary_field(DbfFile* table, const DbfField* field, const char* record,
                                      Variant* out) {
    out->set_string(String::fromBytes(record + field->offset,
                                      varlen_value_size(table, field, record), Charset::binary));
}

void set_varchar_field_from_string(DbfFile* table, const DbfField* field, const String& value,
                                   char* record) {
    fill_with_space(table, field, record);
    set_varlen_size(table, field, put_text(table, value, record + field->offset, field->length),
                    record);
}

void set_varchar_field_from_string_nocptrans(DbfFile* table, const DbfField* field,
                                             const String& value, char* record) {
    fill_with_space(table, field, record);
    set_varlen_size(table, field, put_bytes(value, record + field->offset, field->length), record);
}

void set_varbinary_field_from_string(DbfFile* table, const DbfField* field, const String& value,
                                     char* record) {
    fill_with_zero(table, field, record);
    set_varlen_size(table, field, put_bytes(value, record + field->offset, field->length), record);
}

}  // namespace

void copy_chars_out(DbfFile* table, String text, char* out, uint64_t* length,
                    const Charset** charset) {
    const Charset* wanted = *charset ? *charset : table->charset;
    try {
        text.convert(wanted, 0, CSTRAN_STRICT);
    } catch (const cstran_chars_lost&) {
        throw dbf_error_cptrans_char_lost();
    }
    if (text.size() > *length) throw dbf_error_buffer_overflow();
    if (text.size()) std::memcpy(out, text.read(), text.size());
    *length = text.size();
    *charset = wanted;
}

void get_chars_from_variant(DbfFile* table, const DbfField* field, const char* record, char* out,
                            uint64_t* length, const Charset** charset) {
    variant_holder_st value;
    field->get_variant(table, field, record, &value.value);
    copy_chars_out(table, value.value.to_string(), out, length, charset);
}

void setup_character_field(DbfFile* table, DbfField* field) {
    field->fill = fill_with_space;
    if (field->binary) {
        field->get_variant = get_variant_from_char_field_nocptrans;
        field->writable.set_string = set_char_field_from_string_nocptrans;
    } else if (table->charset->min_char() != table->charset->max_char()) {
        field->get_variant = get_variant_from_multibyte_char_field;
        field->writable.set_string = set_multibyte_char_field_from_string;
    } else {
        field->get_variant = get_variant_from_char_field;
        field->writable.set_string = set_char_field_from_string;
        field->get_chars = get_chars_from_char_field;
    }
}

void setup_varchar_field(DbfFile* table, DbfField* field) {
    require_field_width(field->length >= 1);
    field->fill = set_varlen_field_empty<fill_with_space>;
    field->get_variant =
        field->binary ? get_variant_from_varchar_field_nocptrans : get_variant_from_varchar_field;
    field->writable.set_string =
        field->binary ? set_varchar_field_from_string_nocptrans : set_varchar_field_from_string;
}

void setup_varbinary_field(DbfFile* table, DbfField* field) {
    require_field_width(field->length >= 1);
    field->fill = set_varlen_field_empty<fill_with_zero>;
    field->get_variant = get_variant_from_varbinary_field;
    field->writable.set_string = set_varbinary_field_from_string;
}

}  // namespace zobase
