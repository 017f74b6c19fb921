// The index family: INDEX ON, SET ORDER TO, SEEK, REINDEX, DELETE TAG, and
// the functions that tell of the order (order, tagno, descending, ataginfo).
#include <cstdlib>
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
    const Variant& tag = argument(stack, 1);
    int direction = flags & ORDER_FLAG_DESCENDING ? SEEK_BACKWARD : flags & ORDER_FLAG_ASCENDING ? SEEK_FORWARD : 0;
    uint64_t number = 0;
    if (is_null_argument(tag)) table->select_index(stack, 0, 0);
    else if (tag_number(tag.str(), &number)) table->select_index(stack, number, direction);
    else table->select_index_tag(stack, tag.str(), direction);
}

void void_stackcall_seek(VmStack* stack, unsigned long long) {
    long long flags = flags_of(stack, 1);
    if ((flags & SEEK_FLAG_ASCENDING) && (flags & SEEK_FLAG_DESCENDING)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if ((flags & SEEK_FLAG_PREFIX) && (flags & SEEK_FLAG_EXACT)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const session_settings_st& settings = stack->sessions->settings();
    int key_option = flags & SEEK_FLAG_PREFIX ? KEY_PREFIX
                     : flags & SEEK_FLAG_EXACT ? KEY_WHOLE
                     : settings.exact          ? KEY_WHOLE
                                               : KEY_PREFIX;
    unsigned range = SEEK_RANGE_INCLUSIVE;
    if (flags & SEEK_FLAG_AFTER) range = flags & SEEK_FLAG_SAME ? 3 : SEEK_RANGE_STRICT;
    const Variant& near_value = argument(stack, 5);
    bool near = is_null_argument(near_value) ? settings.near : near_value.tag == TAG_TRUE;
    int direction = flags & SEEK_FLAG_DESCENDING ? SEEK_BACKWARD : flags & SEEK_FLAG_ASCENDING ? SEEK_FORWARD : 0;
    Table_Object* table = work_area_table(stack, argument(stack, 3), true);
    const Variant& record = argument(stack, 4);
    if (!is_null_argument(record)) table->go_record(stack, static_cast<uint64_t>(record.integer));
    table->seek(stack, argument(stack, 2).follow(), key_option, range, direction, near);
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

// One row per tag: name, "REGULAR" or "CANDIDATE", key, filter,
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
        put_text(stack, array, row, 2, String(info.unique ? "CANDIDATE" : "REGULAR"));
        put_text(stack, array, row, 3, info.key_expression);
        put_text(stack, array, row, 4, info.filter_expression);
        put_text(stack, array, row, 5, String(info.descending ? "DESCENDING" : "ASCENDING"));
        put_text(stack, array, row, 6, info.collation);
    }
}

}  // namespace zobase
