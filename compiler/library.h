#pragma once
// Built-in vocabulary as data. A library (the core or an extension) is a
// module_description_st of static row tables; load_library_tables turns it
// into the name-keyed maps of a Library, which the compiler searches. The
// core library's tables themselves are in builtins/library.h.
//
// Look-ups for the compiler, all without regard to case:
//   library.find_function("subs")        -> the `substr` definition (any accepted spelling)
//   library.find_compile_hook("substr")  -> the hook refining the result's static type
//   library.find_command("use")          -> the `use` command definition
//   library.find_variable_reader("_unix"), find_variable_writer(...)
//   find_command_options(113)            -> the option row of a command id
//   parse_basic_command(row)             -> its option list as a basic_command_st
// Each answers null (or false) for an unknown name.
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "values/error.h"
#include "values/string.h"
#include "vm/vm_op.h"

namespace zobase {

class Runtime;
class Class;
class Symtable;
class Variant;
class VmStack;

// Type codes of a formal; bit 16 says that null is accepted.
enum FormalType : uint8_t {
    FORMAL_ANY = 0,
    FORMAL_LOGICAL = 1,
    FORMAL_INTEGER = 5,
    FORMAL_NUMERIC = 6,
    FORMAL_MONEY = 7,
    FORMAL_DATE = 8,
    FORMAL_DATETIME = 9,
    FORMAL_STRING = 10,
    FORMAL_OBJECT = 11,
    FORMAL_ARRAY = 13,
};
constexpr uint8_t FORMAL_NULLABLE = 16;

struct formal_st {
    uint8_t type = FORMAL_ANY;  // FormalType, possibly with FORMAL_NULLABLE
    bool by_reference = false;
    bool reference_if_possible = false;
    bool may_create = false;
};

struct function_signature_st {
    std::vector<formal_st> formals;
    size_t required = 0;
    bool variadic = false;
    formal_st variadic_formal;
};

// The compiler's static knowledge of one expression.
struct compiler_type_info_st {
    uint8_t type = 0;  // a formal type code; FORMAL_NULLABLE when it may be null
    bool is_constant = false;
    uint64_t length = ~uint64_t(0);  // all bits set: unknown
};
constexpr uint64_t LENGTH_UNKNOWN = ~uint64_t(0);

// Refines the static result of a call; arguments[i] and constant_values[i]
// describe argument i + 1, the value being meaningful only when constant.
typedef void (*compile_hook_fn)(unsigned long long argc, compiler_type_info_st* arguments,
                                Variant* constant_values, compiler_type_info_st* result);
typedef void (*library_attach_fn)(Runtime* runtime);

struct library_function_row_st {
    const char* name;
    const char* parameters;
    native_function handler;
    const char* result;
    int32_t abbreviate_to;  // shortest accepted prefix; 0 for none
};

struct library_command_row_st {
    const char* name;
    const char* parameters;
    native_command handler;
};

struct library_compile_hook_row_st {
    const char* name;
    compile_hook_fn hook;
};

struct library_variable_row_st {
    const char* name;
    const char* read_parameters;
    native_function read;
    const char* read_result;
    const char* write_parameters;
    native_command write;
};

struct library_class_member_row_st;
struct library_class_row_st {
    const char* name;
    const void* constructor_data;
    const library_class_member_row_st* members;
};

// What a library offers. Each table ends with a row whose name is null; any
// table pointer may be null.
struct module_description_st {
    library_attach_fn attach;
    library_attach_fn detach;
    const library_function_row_st* functions;
    const library_command_row_st* commands;
    const library_class_row_st* classes;
    const library_compile_hook_row_st* compile_hooks;
    const library_variable_row_st* system_variables;
};

struct library_func_def_st {
    String name;
    native_function handler = nullptr;
    function_signature_st parameters;
    function_signature_st result;
};

struct library_command_def_st {
    String name;
    native_command handler = nullptr;
    function_signature_st parameters;
};

// Names compare under the name collation: case does not count.
struct NameLess {
    bool operator()(const String& a, const String& b) const;
};

class Library {
public:
    explicit Library(Runtime* runtime = nullptr, Symtable* symbols = nullptr) : runtime(runtime), symbols(symbols) {}
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    Runtime* runtime;
    Symtable* symbols;  // names the classes' members; needed for class rows
    const module_description_st* description = nullptr;
    std::map<String, library_func_def_st, NameLess> functions;
    std::map<String, compile_hook_fn, NameLess> compile_hooks;
    std::map<String, String, NameLess> function_names;  // each accepted spelling -> full name
    std::map<String, library_command_def_st, NameLess> commands;
    std::map<String, library_func_def_st, NameLess> variable_readers;
    std::map<String, library_command_def_st, NameLess> variable_writers;
    std::map<uint32_t, Class*> classes;  // owned, by the symbol of the class name

    const library_func_def_st* find_function(const String& spelling) const;
    compile_hook_fn find_compile_hook(const String& full_name) const;
    const library_command_def_st* find_command(const String& name) const;
    const library_func_def_st* find_variable_reader(const String& name) const;
    const library_command_def_st* find_variable_writer(const String& name) const;
    Class* find_class(uint32_t symbol) const;
};

// Reads a signature; an unknown byte raises assert_failed_exception.
function_signature_st parse_function_signature(const char* text);

// Registers every table of the description, then calls its attach.
void load_library_tables(Library* library, const module_description_st* description);
// Calls the description's detach, when the runtime drops the library.
void unload_library_tables(Library* library);

// The command option language: items of kind "N" (named option), "+" (named
// option taking a list) and "B" (group of flags, bit 1 << position).
enum OptionItemKind : char {
    OPTION_NAMED = 'N',
    OPTION_LIST = '+',
    OPTION_FLAGS = 'B',
};

struct option_item_st {
    char kind = OPTION_NAMED;
    bool optional = true;  // an option list never makes an option compulsory
    String name;           // empty for a group
    std::map<String, uint32_t, NameLess> flags;  // flag name -> bit position, groups only
};

struct basic_command_st {
    int32_t id = 0;
    String name;
    std::vector<option_item_st> items;
};

// One row of the option table, keyed by the grammar's command id.
struct command_options_row_st {
    int32_t id;
    const char* name;
    const char* options;
};

// Parses an option list; a malformed one raises assert_failed_exception.
std::vector<option_item_st> parse_command_options(const char* options);
// The option lists of the grammar's native commands, by command id; the row
// of id 0 ends it.
extern const command_options_row_st core_command_options[];
// The option row of a command id, or null: eight commands assemble their own arguments.
const command_options_row_st* find_command_options(int32_t id);
basic_command_st parse_basic_command(const command_options_row_st& row);

}  // namespace zobase
