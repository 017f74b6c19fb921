#include "compiler/library.h"

#include <cstring>
#include <memory>

#include "base/call_trace.h"
#include "objects/class.h"
#include "text/charset.h"
#include "text/collation.h"

namespace zobase {

bool NameLess::operator()(const String& a, const String& b) const {
    return Collation::unicode_machine_ci->compare(a, b) < 0;
}

namespace {

// The type code of a signature letter; 0xFF for a byte that is none.
uint8_t formal_type_of(char letter) {
    switch (letter) {
    case '.': return FORMAL_ANY;
    case 'L': return FORMAL_LOGICAL;
    case 'I': return FORMAL_INTEGER;
    case 'N': return FORMAL_NUMERIC;
    case 'Y': return FORMAL_MONEY;
    case 'D': return FORMAL_DATE;
    case 'T': return FORMAL_DATETIME;
    case 'C': return FORMAL_STRING;
    case 'O': return FORMAL_OBJECT;
    case 'A': return FORMAL_ARRAY;
    default: return 0xFF;
    }
}

// Applies one modifier to the formal just read; false when the byte is none.
bool apply_modifier(char modifier, formal_st& formal, function_signature_st& signature) {
    switch (modifier) {
    case '?': formal.type |= FORMAL_NULLABLE; return true;
    case '@': formal.by_reference = true; return true;
    case '$': formal.reference_if_possible = true; return true;
    case '*': formal.may_create = true; return true;
    case '+': signature.variadic = true; return true;
    default: return false;
    }
}

}  // namespace

function_signature_st parse_function_signature(const char* text) {
    function_signature_st signature;
    bool optional_seen = false;
    for (const char* p = text; *p;) {
        if (*p == '|') {
            if (!optional_seen) signature.required = signature.formals.size();
            optional_seen = true;
            ++p;
            continue;
        }
        uint8_t type = formal_type_of(*p++);
        if (type == 0xFF) throw assert_failed_exception("unknown letter in a function signature");
        formal_st formal;
        formal.type = type;
        bool was_variadic = signature.variadic;
        while (*p && apply_modifier(*p, formal, signature)) ++p;
        if (signature.variadic && !was_variadic) signature.variadic_formal = formal;
        signature.formals.push_back(formal);
    }
    if (!optional_seen) signature.required = signature.formals.size();
    return signature;
}

namespace {

void register_function(Library* library, const library_function_row_st& row) {
    library_func_def_st def;
    def.name = String(row.name);
    def.handler = row.handler;
    def.parameters = parse_function_signature(row.parameters);
    def.result = parse_function_signature(row.result);
    library->functions.emplace(def.name, def);
    library->function_names.emplace(def.name, def.name);
    if (row.abbreviate_to == 0) return;
    size_t full = std::strlen(row.name);
    for (size_t n = static_cast<size_t>(row.abbreviate_to); n < full; ++n)
        library->function_names.emplace(String::fromBytes(row.name, n, Charset::utf8), def.name);
}

void register_command(Library* library, const library_command_row_st& row) {
    library_command_def_st def;
    def.name = String(row.name);
    def.handler = row.handler;
    def.parameters = parse_function_signature(row.parameters);
    library->commands.emplace(def.name, def);
}

void register_variable(Library* library, const library_variable_row_st& row) {
    library_func_def_st reader;
    reader.name = String(row.name);
    reader.handler = row.read;
    reader.parameters = parse_function_signature(row.read_parameters);
    reader.result = parse_function_signature(row.read_result);
    library->variable_readers.emplace(reader.name, reader);

    library_command_def_st writer;
    writer.name = reader.name;
    writer.handler = row.write;
    writer.parameters = parse_function_signature(row.write_parameters);
    library->variable_writers.emplace(writer.name, writer);
}

// A class whose name is taken already stays with the first row.
void register_class(Library* library, const library_class_row_st& row) {
    if (!library->symbols) throw assert_failed_exception("class rows need a symbol table");
    std::unique_ptr<Class> made(create_builtin_class(
        *library->symbols, row.name, static_cast<const builtin_class_data_st*>(row.constructor_data), row.members));
    if (library->classes.emplace(made->symbol, made.get()).second) made.release();
}

}  // namespace

Library::~Library() {
    for (auto& [symbol, made] : classes) delete made;
}

Class* Library::find_class(uint32_t symbol) const {
    auto found = classes.find(symbol);
    return found == classes.end() ? nullptr : found->second;
}

void load_library_tables(Library* library, const module_description_st* description) {
    ZO_TRACE();
    library->description = description;
    if (const library_function_row_st* row = description->functions)
        for (; row->name; ++row) register_function(library, *row);
    if (const library_compile_hook_row_st* row = description->compile_hooks)
        for (; row->name; ++row) library->compile_hooks.emplace(String(row->name), row->hook);
    if (const library_command_row_st* row = description->commands)
        for (; row->name; ++row) register_command(library, *row);
    if (const library_class_row_st* row = description->classes)
        for (; row->name; ++row) register_class(library, *row);
    if (const library_variable_row_st* row = description->system_variables)
        for (; row->name; ++row) register_variable(library, *row);
    if (description->attach) description->attach(library->runtime);
}

void unload_library_tables(Library* library) {
    ZO_TRACE();
    if (library->description && library->description->detach)
        library->description->detach(library->runtime);
}

namespace {

template <class Map>
auto find_in(const Map& map, const String& name) -> const typename Map::mapped_type* {
    auto it = map.find(name);
    return it == map.end() ? nullptr : &it->second;
}

}  // namespace

const library_func_def_st* Library::find_function(const String& spelling) const {
    const String* full_name = find_in(function_names, spelling);
    return full_name ? find_in(functions, *full_name) : nullptr;
}

compile_hook_fn Library::find_compile_hook(const String& full_name) const {
    const compile_hook_fn* hook = find_in(compile_hooks, full_name);
    return hook ? *hook : nullptr;
}

const library_command_def_st* Library::find_command(const String& name) const {
    return find_in(commands, name);
}

const library_func_def_st* Library::find_variable_reader(const String& name) const {
    return find_in(variable_readers, name);
}

const library_command_def_st* Library::find_variable_writer(const String& name) const {
    return find_in(variable_writers, name);
}

namespace {

bool is_name_char(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

void skip_blanks(const char*& p) {
    while (*p == ' ' || *p == '\t') ++p;
}

String read_option_name(const char*& p) {
    skip_blanks(p);
    const char* begin = p;
    while (is_name_char(*p)) ++p;
    if (p == begin) throw assert_failed_exception("option name expected in an option list");
    String name = String::fromBytes(begin, static_cast<size_t>(p - begin), Charset::utf8);
    skip_blanks(p);
    return name;
}

option_item_st read_flag_group(const char*& p) {
    option_item_st item;
    item.kind = OPTION_FLAGS;
    ++p;  // the "("
    for (uint32_t position = 0;; ++position) {
        item.flags.emplace(read_option_name(p), position);
        if (*p == ')') break;
        if (*p != ',') throw assert_failed_exception("unclosed flag group in an option list");
        ++p;
    }
    ++p;
    skip_blanks(p);
    return item;
}

option_item_st read_named_option(const char*& p) {
    option_item_st item;
    item.name = read_option_name(p);
    if (*p == '+') {
        item.kind = OPTION_LIST;
        ++p;
        skip_blanks(p);
    }
    return item;
}

}  // namespace

std::vector<option_item_st> parse_command_options(const char* options) {
    std::vector<option_item_st> items;
    const char* p = options;
    skip_blanks(p);
    if (!*p) return items;
    for (;;) {
        skip_blanks(p);
        items.push_back(*p == '(' ? read_flag_group(p) : read_named_option(p));
        if (!*p) return items;
        if (*p != ',') throw assert_failed_exception("unexpected character in an option list");
        ++p;
    }
}

const command_options_row_st* find_command_options(int32_t id) {
    for (const command_options_row_st* row = core_command_options; row->name; ++row)
        if (row->id == id) return row;
    return nullptr;
}

basic_command_st parse_basic_command(const command_options_row_st& row) {
    basic_command_st command;
    command.id = row.id;
    command.name = String(row.name);
    command.items = parse_command_options(row.options);
    return command;
}

}  // namespace zobase
