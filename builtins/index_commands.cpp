// The index family: INDEX ON, SET ORDER TO, SET KEY TO, SEEK, REINDEX, DELETE TAG, and
// the functions that tell of the order (order, tagno, descending, ataginfo).
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <cstring>

#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "builtins/work_area.h"
#include "tables/index.h"
#include "text/charset.h"
#include "values/array.h"
#include "vm/param.h"
#include "vm/session_settings.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

enum IndexFlags : long long {
    INDEX_ADDITIVE = 1,
    INDEX_UNIQUE = 2,
    INDEX_CANDIDATE = 4,
    INDEX_ASCENDING = 8,
    INDEX_DESCENDING = 16,
    INDEX_BINARY = 32,
};

enum OrderFlags : long long {
    ORDER_FLAG_ASCENDING = 1,
    ORDER_FLAG_DESCENDING = 2,
};

enum SeekFlags : long long {
    SEEK_FLAG_ASCENDING = 1,
    SEEK_FLAG_DESCENDING = 2,
    SEEK_FLAG_PREFIX = 4,
    SEEK_FLAG_EXACT = 8,
    SEEK_FLAG_SAME = 16,
    SEEK_FLAG_AFTER = 32,
};

// Key options of a seek: the whole key, or a key that only begins it.
constexpr int KEY_WHOLE = 1;
constexpr int KEY_PREFIX = 2;

// The columns of ataginfo(): name, type, key, filter, order, collation.
constexpr uint64_t ATAGINFO_COLUMNS = 6;

long long flags_of(VmStack* stack, unsigned long long i) {
    const Variant& value = argument(stack, i);
    return is_null_argument(value) ? 0 : value.integer;
}

String optional_string(VmStack* stack, unsigned long long i) {
    const Variant& value = argument(stack, i);
    return is_null_argument(value) ? String() : value.str();
}

// A tag by name, or by its number when the text is one.
bool tag_number(const String& text, uint64_t* number) {
    std::string digits = text.u8str();
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) return false;
    *number = std::strtoull(digits.c_str(), nullptr, 10);
    return true;
}

// The tag argument of seek(), tag() and key(): a number from 1, or a name.
// 0 when it names no tag.
uint64_t number_of(const Variant& value) {
    integer_type_st number = 0;
    value.cast(&number);
    return number < 0 ? 0 : static_cast<uint64_t>(number);
}

uint64_t tag_of(Table_Object* table, const Variant& value) {
    uint64_t number = 0;
    if (value.tag != TAG_STRING) {
        number = number_of(value);
        return number <= table->cnt_indizes() ? number : 0;
    }
    if (tag_number(value.str(), &number)) return number <= table->cnt_indizes() ? number : 0;
    std::string wanted = value.str().u8str();
    for (char& c : wanted) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    table_index_info_st info;
    for (uint64_t n = 1; table->get_index_info(n, &info); ++n)
        if (info.name.u8str() == wanted) return n;
    return 0;
}

// Whether an index file name is the table's structural one: the table's
// own name with any extension, letter case aside.
bool names_structural_index(Table_Object* table, const String& file) {
    auto stem = [](const std::string& path) {
        std::string text = std::filesystem::path(path).stem().string();
        for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return text;
    };
    return stem(file.u8str()) == stem(table->filename().u8str());
}

// The order by a tag's name or number; null or 0 is file order.
void select_tag(VmStack* stack, Table_Object* table, const Variant& tag, int direction) {
    uint64_t number = 0;
    if (is_null_argument(tag)) table->select_index(stack, 0, 0);
    else if (tag.tag != TAG_STRING) table->select_index(stack, number_of(tag), direction);
    else if (tag_number(tag.str(), &number)) table->select_index(stack, number, direction);
    else table->select_index_tag(stack, tag.str(), direction);
}

// SEEK's key option from SET EXACT when the command names none.
int default_key_option(VmStack* stack) { return stack->sessions->settings().exact ? KEY_WHOLE : KEY_PREFIX; }

// The order to put back after a look in another tag: its number and direction.
struct saved_order_st {
    uint64_t number;
    int direction;
    Table_Object::scopes_st scopes;
};

saved_order_st save_order(Table_Object* table) {
    return {table->current_index(), table->descending() ? SEEK_BACKWARD : SEEK_FORWARD, table->scopes()};
}

void restore_order(VmStack* stack, Table_Object* table, const saved_order_st& saved) {
    table->select_index(stack, saved.number, saved.direction);
    table->restore_scopes(saved.scopes);
}

void put_text(VmStack* stack, Array* array, uint64_t row, uint64_t column, const String& text) {
    Variant* element = array->write(stack, row, column);
    element->release(stack);
    element->set_string(text);
}

}  // namespace

void void_stackcall_index(VmStack* stack, unsigned long long) {
    long long flags = flags_of(stack, 1);
    if ((flags & INDEX_ASCENDING) && (flags & INDEX_DESCENDING)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if ((flags & INDEX_UNIQUE) && (flags & INDEX_CANDIDATE)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    internal_indexdef_st definition;
    definition.key_expression = string_argument(stack, 2);
    definition.tag = string_argument(stack, 3);
    definition.filter_expression = optional_string(stack, 4);
    definition.collation = optional_string(stack, 5);
    definition.unique = flags & (INDEX_UNIQUE | INDEX_CANDIDATE);
    definition.descending = flags & INDEX_DESCENDING;
    definition.binary = flags & INDEX_BINARY;
    current_table(stack)->create_index(stack, definition);
}

void void_stackcall_set_order_to(VmStack* stack, unsigned long long) {
    long long flags = flags_of(stack, 3);
    if ((flags & ORDER_FLAG_ASCENDING) && (flags & ORDER_FLAG_DESCENDING)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    Table_Object* table = work_area_table(stack, argument(stack, 2), true);
    int direction = flags & ORDER_FLAG_DESCENDING ? SEEK_BACKWARD : flags & ORDER_FLAG_ASCENDING ? SEEK_FORWARD : 0;
    select_tag(stack, table, argument(stack, 1), direction);
}

void void_stackcall_seek(VmStack* stack, unsigned long long) {
    long long flags = flags_of(stack, 1);
    if ((flags & SEEK_FLAG_ASCENDING) && (flags & SEEK_FLAG_DESCENDING)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if ((flags & SEEK_FLAG_PREFIX) && (flags & SEEK_FLAG_EXACT)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const session_settings_st& settings = stack->sessions->settings();
    int key_option = flags & SEEK_FLAG_PREFIX ? KEY_PREFIX : flags & SEEK_FLAG_EXACT ? KEY_WHOLE : default_key_option(stack);
    unsigned range = SEEK_RANGE_INCLUSIVE;
    if (flags & SEEK_FLAG_AFTER) range = SEEK_RANGE_STRICT | (flags & SEEK_FLAG_SAME ? SEEK_RANGE_INCLUSIVE : 0u);
    const Variant& near_value = argument(stack, 5);
    bool near = is_null_argument(near_value) ? settings.near : near_value.tag == TAG_TRUE;
    int direction = flags & SEEK_FLAG_DESCENDING ? SEEK_BACKWARD : flags & SEEK_FLAG_ASCENDING ? SEEK_FORWARD : 0;
    Table_Object* table = work_area_table(stack, argument(stack, 3), true);
    const Variant& record = argument(stack, 4);
    if (!is_null_argument(record)) table->go_record(stack, static_cast<uint64_t>(record.integer));
    table->seek(stack, argument(stack, 2).follow(), key_option, range, direction, near);
}

// SET KEY TO: the scope of the order. One value bounds both ends, RANGE
// low, high each end on its own; the keys are made as SEEK makes them. The
// cursor goes to the first record of the new scope. Without a value the
// scope ends and the cursor stays.
void void_stackcall_set_key_to(VmStack* stack, unsigned long long) {
    Table_Object* table = work_area_table(stack, argument(stack, 4), true);
    bool full_length = stack->sessions->settings().exact;
    const Variant& both = argument(stack, 1);
    const Variant* bounds[2] = {is_null_argument(both) ? &argument(stack, 2) : &both,
                                is_null_argument(both) ? &argument(stack, 3) : &both};
    char keys[2][MAX_KEY_LENGTH];
    uint64_t lengths[2] = {0, 0};
    for (int i = 0; i < 2; ++i)
        if (!is_null_argument(*bounds[i]))
            lengths[i] = table->create_index_key(stack, bounds[i]->follow(), full_length, keys[i]);
    table->leave_record(stack);
    table->clear_scope();
    if (is_null_argument(*bounds[0]) && is_null_argument(*bounds[1])) return;
    const int ends[2] = {SEEK_FORWARD, SEEK_BACKWARD};
    for (int i = 0; i < 2; ++i)
        if (!is_null_argument(*bounds[i])) table->set_scope(ends[i], keys[i], lengths[i], SEEK_RANGE_INCLUSIVE);
    table->movefirst(stack);
}

void void_stackcall_reindex(VmStack* stack, unsigned long long) { current_table(stack)->reindex(stack); }

void void_stackcall_delete_tag(VmStack* stack, unsigned long long) {
    current_table(stack)->drop_index(string_argument(stack, 1));
}

void void_stackcall_delete_all_tags(VmStack* stack, unsigned long long) {
    current_table(stack)->drop_all_indizes();
}

// The order's tag name, empty in file order or without a table.
void stackcall_order(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = work_area_argument(stack, argc, 1, false);
    table_index_info_st info;
    if (table && table->get_index_info(table->current_index(), &info)) result->set_string(info.name);
    else result->set_string(String(""));
}

void stackcall_tagno(VmStack* stack, unsigned long long, Variant* result) {
    Table_Object* table = work_area_argument(stack, 0, 1, false);
    result->set_integer(static_cast<long long>(table ? table->current_index() : 0));
}

void stackcall_descending(VmStack* stack, unsigned long long, Variant* result) {
    Table_Object* table = work_area_argument(stack, 0, 1, false);
    result->set_bool(table && table->descending());
}

// One row per tag: name, "REGULAR", "CANDIDATE" or "BINARY", key, filter,
// "ASCENDING" or "DESCENDING", collation. The count of tags.
void stackcall_ataginfo(VmStack* stack, unsigned long long, Variant* result) {
    Table_Object* table = work_area_argument(stack, 0, 1, false);
    uint64_t count = table ? table->cnt_indizes() : 0;
    result->set_integer(static_cast<long long>(count));
    if (!count) return;
    Array* array = Param(stack, 1)->dimension(stack, count, ATAGINFO_COLUMNS);
    table_index_info_st info;
    for (uint64_t row = 1; row <= count && table->get_index_info(row, &info); ++row) {
        put_text(stack, array, row, 1, info.name);
        put_text(stack, array, row, 2, String(info.binary ? "BINARY" : info.unique ? "CANDIDATE" : "REGULAR"));
        put_text(stack, array, row, 3, info.key_expression);
        put_text(stack, array, row, 4, info.filter_expression);
        put_text(stack, array, row, 5, String(info.descending ? "DESCENDING" : "ASCENDING"));
        put_text(stack, array, row, 6, info.collation);
    }
}

}  // namespace zobase

namespace zobase {

// seek(value [, area [, tag]]): SEEK as a function, true when found. With a
// tag other than the order's the look goes through that tag and the order
// (with its scope) comes back afterwards, standing on the record found.
void stackcall_seek(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = work_area_argument(stack, argc, 2, true);
    const Variant* key = argument(stack, 1).follow();
    bool near = stack->sessions->settings().near;
    if (argc < 3 || is_null_argument(argument(stack, 3))) {
        result->set_bool(table->seek(stack, key, default_key_option(stack), SEEK_RANGE_INCLUSIVE, 0, near));
        return;
    }
    const Variant& tag = argument(stack, 3);
    saved_order_st saved = save_order(table);
    bool found;
    try {
        select_tag(stack, table, tag, 0);
        found = table->seek(stack, key, default_key_option(stack), SEEK_RANGE_INCLUSIVE, 0, near);
    } catch (...) {
        restore_order(stack, table, saved);
        throw;
    }
    restore_order(stack, table, saved);
    table->found = found;
    result->set_bool(found);
}

namespace {

// The arguments of tag() and key(): [index file,] [number [, area]]. The
// file, when given, must be the table's own structural one. Null when the
// call names no tag of the table; the order's tag without a number.
bool tag_info_argument(VmStack* stack, unsigned long long argc, table_index_info_st* info) {
    unsigned long long i = 1;
    String file;
    if (argc >= 1 && argument(stack, 1).tag == TAG_STRING) {
        file = argument(stack, 1).str();
        i = 2;
    }
    Table_Object* table = work_area_argument(stack, argc, i + 1, false);
    if (!table) return false;
    if (file.size() && !names_structural_index(table, file)) return false;
    uint64_t number = argc >= i && !is_null_argument(argument(stack, i)) ? tag_of(table, argument(stack, i))
                                                                          : table->current_index();
    return number && table->get_index_info(number, info);
}

}  // namespace

// tag([file,] [number [, area]]): a tag's name, "" for none.
void stackcall_tag(VmStack* stack, unsigned long long argc, Variant* result) {
    table_index_info_st info;
    result->set_string(tag_info_argument(stack, argc, &info) ? info.name : String(""));
}

// key([file,] [number [, area]]): a tag's key expression, "" for none.
void stackcall_key(VmStack* stack, unsigned long long argc, Variant* result) {
    table_index_info_st info;
    result->set_string(tag_info_argument(stack, argc, &info) ? info.key_expression : String(""));
}

}  // namespace zobase
