// Creating a DBF table: names, widths and null bits from the definitions,
// the header and descriptors on disk, the memo file, and a fresh open.
#include <unicode/utf8.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <system_error>

#include "base/error_numbers.h"
#include "tables/dbf_codepages.h"
#include "tables/dbf_file.h"
#include "tables/field_names.h"
#include "text/charset.h"
#include "base/call_trace.h"

namespace zobase {

namespace {

constexpr uint64_t MAX_NUMERIC_DECIMALS = 255;
constexpr uint64_t MAX_DOUBLE_DECIMALS = 18;
constexpr uint64_t DEFAULT_DOUBLE_DECIMALS = 2;
constexpr uint64_t CURRENCY_DECIMALS = 4;
constexpr uint64_t MAX_HEADER_FIELD = 0xFFFF;
constexpr uint64_t DESCRIPTOR_NAME_SIZE = 11;

enum WidthRule : uint8_t {
    WIDTH_NONE,        // the type cannot be created
    WIDTH_FIXED,       // `size` bytes, whatever is asked
    WIDTH_CHARACTERS,  // characters times the charset's widest character
    WIDTH_BYTES,
};
enum BinaryRule : uint8_t { BINARY_NEVER, BINARY_REQUESTED, BINARY_ALWAYS };
enum DecimalsRule : uint8_t { DECIMALS_NONE, DECIMALS_NUMERIC, DECIMALS_DOUBLE, DECIMALS_CURRENCY };

struct creation_rule_st {
    int32_t type;
    char letter;
    WidthRule width;
    uint64_t size;   // the fixed width, or the default length
    uint64_t limit;  // the largest width in bytes
    BinaryRule binary;
    DecimalsRule decimals;
    bool counts_as_memo;
    bool variable_length;  // takes a bit in _NullFlags
};

constexpr creation_rule_st creation_rules[] = {
    {FIELD_TYPE_BLOB, 'W', WIDTH_FIXED, 4, 4, BINARY_NEVER, DECIMALS_NONE, true, false},
    {FIELD_TYPE_CHARACTER, 'C', WIDTH_CHARACTERS, 1, 254, BINARY_REQUESTED, DECIMALS_NONE, false, false},
    {FIELD_TYPE_INTEGER, 'I', WIDTH_FIXED, 4, 4, BINARY_ALWAYS, DECIMALS_NONE, false, false},
    {FIELD_TYPE_CURRENCY, 'Y', WIDTH_FIXED, 8, 8, BINARY_NEVER, DECIMALS_CURRENCY, false, false},
    {FIELD_TYPE_DATE, 'D', WIDTH_FIXED, 8, 8, BINARY_NEVER, DECIMALS_NONE, false, false},
    {FIELD_TYPE_DATETIME, 'T', WIDTH_FIXED, 8, 8, BINARY_ALWAYS, DECIMALS_NONE, false, false},
    {FIELD_TYPE_DOUBLE, 'B', WIDTH_FIXED, 8, 8, BINARY_ALWAYS, DECIMALS_DOUBLE, false, false},
    {FIELD_TYPE_LOGICAL, 'L', WIDTH_FIXED, 1, 1, BINARY_NEVER, DECIMALS_NONE, false, false},
    {FIELD_TYPE_MEMO, 'M', WIDTH_FIXED, 4, 4, BINARY_REQUESTED, DECIMALS_NONE, true, false},
    {FIELD_TYPE_NUMERIC, 'N', WIDTH_BYTES, 10, 20, BINARY_NEVER, DECIMALS_NUMERIC, false, false},
    {FIELD_TYPE_FLOAT, 'F', WIDTH_BYTES, 10, 20, BINARY_NEVER, DECIMALS_NUMERIC, false, false},
    {FIELD_TYPE_VARBINARY, 'Q', WIDTH_BYTES, 1, 254, BINARY_NEVER, DECIMALS_NONE, false, true},
    {FIELD_TYPE_VARCHAR, 'V', WIDTH_CHARACTERS, 1, 254, BINARY_REQUESTED, DECIMALS_NONE, false, true},
};

// General fields, and type numbers that name nothing, make a field without
// a letter: the open at the end of creation refuses it.
constexpr creation_rule_st no_creation_rule = {FIELD_TYPE_GENERAL, 0,     WIDTH_NONE,
                                               0, 0, BINARY_NEVER, DECIMALS_NONE, false, false};

const creation_rule_st& creation_rule_of(int32_t type) {
    for (const creation_rule_st& rule : creation_rules)
        if (rule.type == type) return rule;
    return no_creation_rule;
}

// ---- names: definitions hold UTF-8, descriptors the table's charset

std::u32string decode_utf8(const char* text, size_t size) {
    std::u32string decoded;
    for (int32_t i = 0; i < static_cast<int32_t>(size);) {
        UChar32 c;
        U8_NEXT(text, i, static_cast<int32_t>(size), c);
        decoded.push_back(c < 0 ? 0xFFFD : static_cast<char32_t>(c));
    }
    return decoded;
}

std::string encode_utf8(const std::u32string& text) {
    std::string encoded;
    for (char32_t c : text) {
        char unit[U8_MAX_LENGTH];
        int32_t n = 0;
        U8_APPEND_UNSAFE(unit, n, c);
        encoded.append(unit, static_cast<size_t>(n));
    }
    return encoded;
}

// Whole characters only, and room for the terminator.
void write_back_name(fielddef_st* definition, const std::u32string& name) {
    std::string encoded = encode_utf8(name);
    size_t size = 0;
    for (int32_t i = 0; i < static_cast<int32_t>(encoded.size());) {
        int32_t next = i;
        U8_FWD_1(encoded.data(), next, static_cast<int32_t>(encoded.size()));
        if (static_cast<size_t>(next) >= FIELDDEF_NAME_SIZE) break;
        size = static_cast<size_t>(i = next);
    }
    std::memset(definition->name, 0, FIELDDEF_NAME_SIZE);
    std::memcpy(definition->name, encoded.data(), size);
}

// The name's bytes in the table's charset; uniqify has made sure it holds them.
void set_field_name(DbfField* field, const std::u32string& name, const Charset* charset) {
    std::string encoded = encode_utf8(name);
    String text = String::fromBytes(encoded.data(), encoded.size(), Charset::utf8);
    text.convert(charset, 0, CSTRAN_STRICT);
    std::memset(field->name, 0, sizeof field->name);
    std::memcpy(field->name, text.read(), std::min<size_t>(text.size(), sizeof field->name - 1));
}

// ---- widths and decimals

uint64_t field_width(const creation_rule_st& rule, const fielddef_st& definition,
                     const Charset* charset, bool clamp) {
    if (rule.width == WIDTH_NONE) return 0;
    if (rule.width == WIDTH_FIXED) return rule.size;
    uint64_t length = definition.default_length ? rule.size : definition.length;
    uint64_t unit = rule.width == WIDTH_CHARACTERS ? charset->max_char() : 1;
    if (length == 0) throw RuntimeError(ERR_FIELD_WIDTH_INVALID_1731);
    if (length > rule.limit / unit) {
        if (!clamp) throw RuntimeError(ERR_FIELD_WIDTH_INVALID_1731);
        return rule.limit;
    }
    return length * unit;
}

// B takes its stated decimals from the first definition of the list, not
// from its own: a fixed peculiarity of creation.
uint64_t field_decimals(const creation_rule_st& rule, const fielddef_st& definition,
                        const fielddef_st& first, uint64_t width, bool clamp) {
    switch (rule.decimals) {
    case DECIMALS_NONE: return 0;
    case DECIMALS_CURRENCY: return CURRENCY_DECIMALS;
    case DECIMALS_DOUBLE:
        if (definition.default_decimals) return DEFAULT_DOUBLE_DECIMALS;
        if (definition.decimals > MAX_DOUBLE_DECIMALS) {
            if (!clamp) throw RuntimeError(ERR_FIELD_WIDTH_INVALID_1731);
            return MAX_DOUBLE_DECIMALS;
        }
        return first.decimals;
    case DECIMALS_NUMERIC: {
        uint64_t decimals = definition.default_decimals ? 0 : definition.decimals;
        if (decimals > MAX_NUMERIC_DECIMALS) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
        if (decimals >= width) {
            if (!clamp) throw RuntimeError(ERR_FIELD_WIDTH_INVALID_1731);
            return width;
        }
        return decimals;
    }
    }
    return 0;
}

DbfField field_of_definition(const fielddef_st& definition, const fielddef_st& first,
                             const Charset* charset, bool clamp) {
    const creation_rule_st& rule = creation_rule_of(definition.type);
    DbfField field;
    field.type = rule.letter;
    field.length = field_width(rule, definition, charset, clamp);
    field.decimals = field_decimals(rule, definition, first, field.length, clamp);
    field.binary = rule.binary == BINARY_ALWAYS || (rule.binary == BINARY_REQUESTED && definition.binary);
    field.nullable = definition.nullable == FIELD_NULLABLE;
    if (definition.type == FIELD_TYPE_INTEGER && definition.autoincrement) {
        field.autoincrement = true;
        field.autoinc_next = static_cast<uint32_t>(definition.has_next_value ? definition.next_value : 1);
        field.autoinc_step = static_cast<uint8_t>(definition.has_step ? definition.step : 1);
    }
    return field;
}

int64_t present_time_units() {
    return static_cast<int64_t>(std::time(nullptr)) * TIME_UNITS_PER_SECOND;
}

// Unique names and widths for every definition, then the null bits, each
// field placed after the last in the header and in the record.
class DbfLayoutBuilder {
public:
    explicit DbfLayoutBuilder(DbfFile* table) : table_(table) {}

    void add(fielddef_st* definition, const fielddef_st& first, const createopts_st& options) {
        const Charset* charset = table_->charset;
        size_t terminator = charset->min_char();
        uniqify_report_st long_report, short_report;
        std::u32string name = decode_utf8(definition->name, strnlen(definition->name, FIELDDEF_NAME_SIZE));
        std::u32string long_name =
            uniqify(name, FIELDDEF_NAME_SIZE - terminator, charset, long_names_, &long_report);
        std::u32string short_name =
            uniqify(name, DESCRIPTOR_NAME_SIZE - terminator, charset, short_names_, &short_report);
        if ((long_report.any() || short_report.any()) && !options.rename_allowed)
            throw dbf_error_field_name_dup_or_inv();
        write_back_name(definition, long_name);
        DbfField field = field_of_definition(*definition, first, charset, options.clamp_allowed);
        set_field_name(&field, short_name, charset);
        if (creation_rule_of(definition->type).variable_length) ++bits_;
        if (field.nullable) ++bits_;
        if (creation_rule_of(definition->type).counts_as_memo) has_memo_ = true;
        place(std::move(field));
        long_names.push_back(long_name);
    }

    // The _NullFlags field comes last, if any bit was handed out.
    void finish() {
        if (bits_ > 0) {
            DbfField flags;
            std::strcpy(flags.name, "_NullFlags");
            flags.type = '0';
            flags.length = (bits_ - 1) / 8 + 1;
            flags.binary = flags.system = true;
            place(std::move(flags));
        }
        if (table_->header_length + 1 + DBF_BACKLINK_SIZE > MAX_HEADER_FIELD ||
            table_->record_length > MAX_HEADER_FIELD)
            throw RuntimeError(ERR_FIELD_WIDTH_INVALID_1731);
    }

    bool has_memo() const noexcept { return has_memo_; }

    std::vector<DbfField> fields;
    std::vector<std::u32string> long_names;

private:
    void place(DbfField field) {
        field.descriptor_position = table_->header_length;
        field.offset = table_->record_length;
        table_->header_length += DBF_DESCRIPTOR_SIZE;
        table_->record_length += field.length;
        fields.push_back(std::move(field));
    }

    DbfFile* table_;
    FieldNameSet long_names_;
    FieldNameSet short_names_;
    uint64_t bits_ = 0;
    bool has_memo_ = false;
};

}  // namespace

DbfFile* DbfFile::create(File* file, createopts_st* options, fielddef_st* definitions,
                         uint64_t count) {
    ZO_TRACE();
    std::unique_ptr<DbfFile> table(new DbfFile);
    table->file.reset(file);
    try {
        table->create_table(*options, definitions, count);
    } catch (...) {
        table->file.release();
        throw;
    }
    return table.release();
}

void DbfFile::create_table(const createopts_st& options, fielddef_st* definitions, uint64_t count) {
    if (version != 0) throw dbf_error_file_exists();
    codepage_byte = dbf_byte_of_codepage(options.codepage);
    if (codepage_byte == 0) throw dbf_error_codepage_not_supported();
    charset = get_charset_by_codepage(static_cast<int>(options.codepage), false);
    charset_nocptrans = get_charset_by_codepage(static_cast<int>(options.codepage), true);
    if (!charset || !charset_nocptrans) throw dbf_error_codepage_not_supported();
    version = DBF_VERSION_CREATED;
    version_info = find_dbf_version(version);
    max_record_count = version_info->max_record_count;
    last_update = present_time_units();
    header_length = DBF_HEADER_SIZE;
    record_length = 1;

    DbfLayoutBuilder layout(this);
    for (uint64_t i = 0; i < count; ++i) layout.add(&definitions[i], definitions[0], options);
    layout.finish();

    if (file_offset(file->seek(0, FILE_SEEK_END)) != 0) throw dbf_error_file_exists();
    const char terminator = DBF_TERMINATOR;
    file->writeex(static_cast<std::streamoff>(header_length), &terminator, 1);
    header_length += 1;
    const char no_backlink[DBF_BACKLINK_SIZE] = {};
    file->writeex(static_cast<std::streamoff>(header_length), no_backlink, sizeof no_backlink);
    header_length += DBF_BACKLINK_SIZE;
    if (layout.has_memo()) create_memo_file(options.memo_block_size);

    fields = std::move(layout.fields);
    field_count = fields.size();
    write_dbf_header();
    for (DbfField& field : fields) write_dbf_field_header(&field);
    free();
    run_open_sequence();
    // Long names live in memory only, for temporary tables.
    if (options.temporary)
        for (size_t i = 0; i < layout.long_names.size(); ++i)
            set_field_name(&fields[i], layout.long_names[i], charset);
}

void DbfFile::create_memo_file(uint32_t block_size) {
    String name(std::filesystem::path(file->name).replace_extension("fpt"));
    if (!is_memory_file_name(name)) {
        std::error_code error;
        std::filesystem::remove(std::filesystem::path(name), error);
        if (error) throw dbf_error_cannot_create_fpt();
    }
    File* memo = create_file(name, file->flags);
    fpt.reset(FptFile::create(memo, static_cast<int>(std::min(block_size, FPT_MAX_BLOCK_SIZE))));
    has_memo = true;
}

}  // namespace zobase
