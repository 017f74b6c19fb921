// KeyReader: tag keys from record bytes without running the key program.
#include "tables/key_reader.h"

#include <cctype>
#include <cstring>
#include <string>

#include "tables/dbf_file.h"
#include "tables/index.h"
#include "text/charset.h"
#include "text/collation.h"
#include "values/variant.h"
#include "vm/program.h"
#include "vm/vm_op.h"

namespace zobase {

namespace {

std::string trimmed(const std::string& text) {
    size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string::npos) return std::string();
    return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

bool same_letters(const std::string& a, const char* b) {
    size_t n = std::strlen(b);
    if (a.size() != n) return false;
    for (size_t i = 0; i < n; ++i)
        if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

// "NAME" or "UPPER(NAME)", in any case and with blanks around the parts:
// the field's name, and whether UPPER() wraps it. False for anything else.
bool parse_key_text(const std::string& text, std::string* name, bool* upper) {
    std::string t = trimmed(text);
    *upper = false;
    if (t.size() > 5 && same_letters(t.substr(0, 5), "UPPER")) {
        std::string rest = trimmed(t.substr(5));
        if (rest.size() < 2 || rest.front() != '(' || rest.back() != ')') return false;
        t = trimmed(rest.substr(1, rest.size() - 2));
        *upper = true;
    }
    if (t.empty() || !(std::isalpha(static_cast<unsigned char>(t[0])) || t[0] == '_')) return false;
    for (char c : t)
        if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_')) return false;
    *name = t;
    return true;
}

// The program is what the text says: the field by position, or the call of
// the built-in UPPER() with its result place and one argument, and nothing
// more.
bool program_reads_field(const Program* program, uint16_t index, bool upper) {
    if (!program || program->instruction_count() != (upper ? 4u : 2u)) return false;
    VmOp* const* code = program->code();
    size_t at = 0;
    if (upper && code[at++]->opcode != OP_ESP_ALLOC) return false;
    const VmOp* read = code[at++];
    if (read->opcode != OP_READ_FIELD_BY_INDEX || static_cast<const VmOpReadFieldByIndex*>(read)->value != index)
        return false;
    if (upper && (code[at]->opcode != OP_CALL_NATIVE || static_cast<const VmOpCallNative*>(code[at])->n != 1))
        return false;
    return code[upper ? 3 : 1]->opcode == OP_RETURN_VALUE;
}

bool has_value_reader(char type) { return std::strchr("IYDTLNFB", type) != nullptr; }

// A Variant released on every way out.
struct held_value_st {
    Variant value;
    ~held_value_st() { value.release(nullptr); }
};

}  // namespace

KeyReader::KeyReader(DbfFile* table, const Index* tag) : table_(table), tag_(tag) {
    std::string name;
    bool upper = false;
    if (tag->binary() || tag->header.has(INDEX_OPTION_NULLABLE)) return;
    if (!parse_key_text(tag->header.key_expression, &name, &upper)) return;
    uint16_t index = 0;
    for (; index < table->visible_fields.size(); ++index)
        if (same_letters(name, table->visible_fields[index]->name)) break;
    if (index == table->visible_fields.size() || !program_reads_field(tag->key_program.get(), index, upper)) return;
    const DbfField* field = table->visible_fields[index];
    if (field->nullable || field->binary) return;
    const Charset* charset = table->charset;
    bool character = field->type == 'C' && tag->kind == KEY_CHARACTER &&
                     tag->create_key_op == key_operation_for(KEY_CHARACTER, false) &&
                     (!tag->collation->charset || tag->collation->charset == charset);
    multibyte_ = charset->min_char() != charset->max_char();
    if (character && (upper || multibyte_) && !ascii_transparent(charset)) return;
    field_ = field;
    value_bytes_ = multibyte_ ? field->length / charset->max_char() : field->length;
    if (character) way_ = upper ? UPPER_CHARACTER : CHARACTER;
    else if (!upper && has_value_reader(field->type)) way_ = VALUE;
}

// The value's bytes, upper-cased into `upper_out` when given. False when
// they are not all ASCII and that matters: UPPER() maps other characters
// through the charset, and a multibyte charset counts characters.
bool KeyReader::text_bytes(const char* record, char* upper_out) const {
    const auto* bytes = reinterpret_cast<const unsigned char*>(record + field_->offset);
    if (!upper_out) {
        if (multibyte_)
            for (uint64_t i = 0; i < value_bytes_; ++i)
                if (bytes[i] >= 0x80) return false;
        return true;
    }
    for (uint64_t i = 0; i < value_bytes_; ++i) {
        unsigned char c = bytes[i];
        if (c >= 0x80) return false;
        upper_out[i] = static_cast<char>(c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c);
    }
    return true;
}

bool KeyReader::read(const char* record, char* out) const {
    uint64_t length = tag_->key_length();
    switch (way_) {
    case CHARACTER:
        if (!text_bytes(record, nullptr)) return false;
        tag_->collation->create_char_key(record + field_->offset, value_bytes_, true, out, length);
        return true;
    case UPPER_CHARACTER: {
        char upper[MAX_KEY_LENGTH * 4];
        if (value_bytes_ > sizeof upper || !text_bytes(record, upper)) return false;
        tag_->collation->create_char_key(upper, value_bytes_, true, out, length);
        return true;
    }
    case VALUE: {
        // A field the codec refuses goes to the program, which reports it
        // as any other read of that field does.
        held_value_st held;
        try {
            field_->get_variant(table_, field_, record, &held.value);
        } catch (...) {
            return false;
        }
        if (held.value.is_null()) return false;
        tag_->create_key(&held.value, out, length, true);
        return true;
    }
    case NONE: break;
    }
    return false;
}

}  // namespace zobase
