// CREATE TABLE and CREATE CURSOR, DROP TABLE, DISPLAY STRUCTURE.
#include <cstdio>
#include <string>
#include <vector>

#include "base/call_trace.h"
#include "builtins/column_arguments.h"
#include "builtins/handlers.h"
#include "builtins/work_area.h"
#include "tables/table_files.h"
#include "text/charset.h"
#include "vm/runtime_services.h"
#include "vm/screen.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// The flags the compiler gives each column.
enum ColumnFlag : long long {
    COLUMN_FLAG_NULL = 1,
    COLUMN_FLAG_NOT_NULL = 2,
    COLUMN_FLAG_NOCPTRANS = 4,
    COLUMN_FLAG_AUTOINC = 8,
};

// Arguments: cursor flag, name, codepage, engine, column count, then the
// columns (column_arguments.h).
constexpr unsigned long long FIRST_COLUMN_ARGUMENT = 6;

// A size of the definition: null leaves the default.
bool size_argument(VmStack* stack, unsigned long long i, uint64_t* out) {
    const Variant& value = argument(stack, i);
    if (is_null_argument(value)) return false;
    integer_type_st number;
    const_cast<Variant&>(value).cast(&number);
    if (number < 0) throw RuntimeError(ERR_FIELD_WIDTH_INVALID);
    *out = static_cast<uint64_t>(number);
    return true;
}

}  // namespace

fielddef_st column_definition(VmStack* stack, unsigned long long first) {
    fielddef_st def = {};
    std::string name = argument(stack, first).to_string().u8str();
    std::snprintf(def.name, sizeof def.name, "%s", name.c_str());
    std::string letter = string_argument(stack, first + 1).u8str();
    def.type = field_type_number(letter.empty() ? 0 : letter[0]);
    def.default_length = !size_argument(stack, first + 2, &def.length);
    def.default_decimals = !size_argument(stack, first + 3, &def.decimals);
    def.has_next_value = size_argument(stack, first + 4, &def.next_value);
    def.has_step = size_argument(stack, first + 5, &def.step);
    long long flags = argument(stack, first + 6).integer;
    def.nullable = (flags & COLUMN_FLAG_NULL) ? FIELD_NULLABLE : FIELD_NOT_NULLABLE;
    def.binary = (flags & COLUMN_FLAG_NOCPTRANS) != 0;
    def.autoincrement = (flags & COLUMN_FLAG_AUTOINC) != 0;
    if (def.autoincrement) {
        if (!def.has_next_value) def.next_value = 1;
        if (!def.has_step) def.step = 1;
        def.has_next_value = def.has_step = true;
    }
    return def;
}

namespace {

const char* type_name_of(char letter) {
    switch (letter) {
    case 'W': return "Blob";
    case 'C': return "Character";
    case 'I': return "Integer";
    case 'Y': return "Currency";
    case 'D': return "Date";
    case 'T': return "DateTime";
    case 'B': return "Double";
    case 'G': return "General";
    case 'L': return "Logical";
    case 'M': return "Memo";
    case 'N': return "Numeric";
    case 'F': return "Float";
    case 'Q': return "Varbinary";
    case 'V': return "Varchar";
    default: return "Unknown";
    }
}

bool character_like(char letter) { return letter == 'C' || letter == 'V' || letter == 'M'; }

std::string formatted(const char* format, auto... values) {
    int size = std::snprintf(nullptr, 0, format, values...);
    std::string text(static_cast<size_t>(size), '\0');
    std::snprintf(text.data(), text.size() + 1, format, values...);
    return text;
}

}  // namespace

void void_stackcall_create_table(VmStack* stack, unsigned long long argc) {
    ZO_TRACE();
    createopts_st options;
    options.temporary = argument(stack, 1).integer != 0;
    const Variant& codepage = argument(stack, 3);
    if (!is_null_argument(codepage)) options.codepage = codepage.integer;
    uint64_t count = static_cast<uint64_t>(argument(stack, 5).integer);
    if (argc < FIRST_COLUMN_ARGUMENT - 1 + count * COLUMN_ARGUMENTS) throw RuntimeError(ERR_ARGUMENT_INVALID);
    std::vector<fielddef_st> fields;
    for (uint64_t i = 0; i < count; ++i)
        fields.push_back(column_definition(stack, FIRST_COLUMN_ARGUMENT + i * COLUMN_ARGUMENTS));
    String name = argument(stack, 2).to_string();
    DataSession_Object& session = current_session(stack);
    // SET BLOCKSIZE: the memo block size of new tables.
    options.memo_block_size = static_cast<uint32_t>(session.settings.blocksize);
    session.create(stack, name, &options, fields.data(), fields.size());
}

void void_stackcall_drop_table(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    drop_table_files(string_argument(stack, 1));
}

void void_stackcall_display_structure(VmStack* stack, unsigned long long) {
    Table_Object* table = current_table(stack);
    int32_t updated = table->last_modified_yyyymmdd();
    const Charset* charset = table->charset;
    std::string text = formatted(
        "Structure for table:     %s\nNumber of data records:  %i\nDate of last update:     %04i-%02i-%02i\n"
        "DBF-Codepage:            %i (%s)\nDBF-Version:             %i (0x%02X)\n\n",
        table->filename().u8str().c_str(), static_cast<int>(table->reccount()), updated / 10000,
        updated / 100 % 100, updated % 100, table->codepage(), charset ? charset->name() : "",
        table->get_version(), table->get_version());
    text += "#   NAME                                         TYPE                PREC SCALE NULL       NEXT STEP\n";
    for (uint64_t i = 0; i < table->cnt_fields(); ++i) {
        table_field_info_st info = table->get_field_info(i);
        std::string type = type_name_of(info.letter);
        if (info.binary && character_like(info.letter)) type += " (binary)";
        std::string name = formatted("%-44s", info.name.u8str().c_str());
        std::string type_column = formatted("%-20s", type.c_str());
        text += formatted("%3hu %s %s %3llu   %3llu    %c %10llu %4llu\n", static_cast<unsigned short>(i + 1),
                          name.c_str(), type_column.c_str(), static_cast<unsigned long long>(info.width),
                          static_cast<unsigned long long>(info.decimals), info.nullable ? 'Y' : 'N',
                          static_cast<unsigned long long>(info.next_value),
                          static_cast<unsigned long long>(info.step));
    }
    text += "\n";
    Screen* screen = stack->services->screen();
    screen->lock_for_output();
    try {
        screen->out(String(text.c_str()));
    } catch (...) {
        screen->unlock_output();
        throw;
    }
    screen->unlock_output();
}

}  // namespace zobase
