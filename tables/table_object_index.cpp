// A work area's indexes: tags made, dropped and selected, search keys, and
// SEEK with what it leaves in found() and eof().
#include <cstring>

#include "base/call_trace.h"
#include "tables/table_errors.h"
#include "tables/table_object_zodbf.h"
#include "tables/table_sessions.h"
#include "text/collation.h"
#include "values/error.h"
#include "vm/vm_stack.h"

namespace zobase {

// ---- SEEK, whatever the format

bool Table_Object::seek(VmStack* stack, const Variant* value, int key_option, unsigned range, int direction,
                        bool near) {
    leave_record(stack);
    char key[MAX_KEY_LENGTH];
    uint64_t length = create_index_key(stack, value, key_option == 1, key);
    return seek(stack, key, length, range, direction, near);
}

// Records out of range (deleted under SET DELETED, outside the scope, or
// hidden by the filter) are passed over while the key still matches.
bool Table_Object::seek(VmStack* stack, const char* key, uint64_t length, unsigned range, int direction, bool near) {
    int order_direction = get_index_dir();
    if (direction == 0) direction = order_direction;
    found = false;
    seek_lowlevel(stack, key, length, range, direction);
    bool strict = (range & 3) == SEEK_RANGE_STRICT;
    auto matches = [&] {
        const char* current = get_index_key();
        return !eof_lowlevel() && !bof_lowlevel() && current && (strict || std::memcmp(current, key, length) == 0);
    };
    while (matches()) {
        if (record_in_range(stack)) return found = true;
        if (direction == order_direction) movenext_lowlevel(stack);
        else moveprevious_lowlevel(stack);
    }
    if (!near) movetoeof();
    else if (!eof() && !record_in_range(stack)) movenext(stack, 1);
    else end_outside_scope();
    return false;
}

// ---- the DBF work area

namespace {

String tag_detail(const String& name) { return name; }

}  // namespace

void Table_Object_ZoDbf::open_indexes(VmStack* stack) {
    ExpressionTableScope scope(stack, this);
    table_->expression_fields = &expression_fields();
    table_operation(TABLE_USE, [&] { return filename(); },
                    [&] { table_->open_compound_auto_open_index_file(stack); });
}

// The new tag becomes the order, unless it is a binary one, which cannot.
void Table_Object_ZoDbf::create_index(VmStack* stack, const internal_indexdef_st& definition) {
    ZO_TRACE();
    leave_record(stack);
    clear_scope();
    ExpressionTableScope scope(stack, this);
    table_->expression_fields = &expression_fields();
    table_operation(TABLE_CREATE_INDEX, [&] { return filename(); }, [&] {
        table_->create_index_tag(stack, nullptr, &definition);
        if (!definition.binary) table_->select_index(stack, table_->tags.back()->name, 0);
    });
}

void Table_Object_ZoDbf::select_index_tag(VmStack* stack, const String& name, int direction) {
    leave_record(stack);
    clear_scope();
    ExpressionTableScope scope(stack, this);
    table_operation(TABLE_SELECT_INDEX, [&] { return tag_detail(name); },
                    [&] { table_->select_index(stack, name, direction); });
}

void Table_Object_ZoDbf::select_index(VmStack* stack, uint64_t number, int direction) {
    leave_record(stack);
    clear_scope();
    ExpressionTableScope scope(stack, this);
    table_operation(TABLE_SELECT_INDEX, no_detail, [&] { table_->select_index(stack, number, direction); });
}

void Table_Object_ZoDbf::drop_index(const String& name) {
    clear_scope();
    table_operation(TABLE_SELECT_INDEX, [&] { return tag_detail(name); }, [&] { table_->delete_index_tag(name); });
}

void Table_Object_ZoDbf::drop_all_indizes() {
    clear_scope();
    table_operation(TABLE_SELECT_INDEX, no_detail, [&] { table_->delete_all_index_tags(); });
}

void Table_Object_ZoDbf::reindex(VmStack* stack) {
    leave_record(stack);
    ExpressionTableScope scope(stack, this);
    table_operation(TABLE_CREATE_INDEX, [&] { return filename(); }, [&] { table_->reindex(stack); });
}

bool Table_Object_ZoDbf::get_index_info(uint64_t number, table_index_info_st* out) {
    if (number == 0 || number > table_->tags.size()) return false;
    const Index* tag = table_->tags[number - 1].get();
    out->name = tag->name;
    out->key_expression = tag->key_text(charset);
    out->filter_expression = tag->filter_text(charset);
    out->collation = String(tag->header.collation.empty() ? "MACHINE" : tag->header.collation.c_str());
    out->unique = tag->unique();
    out->descending = tag->header.descending;
    out->binary = tag->binary();
    return true;
}

uint64_t Table_Object_ZoDbf::current_index() {
    for (size_t i = 0; i < table_->tags.size(); ++i)
        if (table_->tags[i].get() == table_->order.index) return i + 1;
    return 0;
}

int Table_Object_ZoDbf::get_index_dir() {
    if (!table_->order.index) throw RuntimeError(ERR_NO_INDEX_ORDER);
    return table_->order.descending ? SEEK_BACKWARD : SEEK_FORWARD;
}

uint64_t Table_Object_ZoDbf::create_index_key(VmStack*, const Variant* value, bool full_length, char* out) {
    return table_operation(TABLE_CREATE_KEY, no_detail, [&] {
        Index* tag = table_->order.index;
        if (!tag) throw dbf_error_no_index_selected();
        return tag->create_key(value, out, tag->key_length(), full_length);
    });
}

const char* Table_Object_ZoDbf::get_index_key() {
    return table_operation(TABLE_SEEK, no_detail, [&] { return table_->current_key(); });
}

uint64_t Table_Object_ZoDbf::get_index_key_length() {
    if (!table_->order.index) throw RuntimeError(ERR_NO_INDEX_ORDER);
    return table_->order.index->key_length();
}

uint64_t Table_Object_ZoDbf::eval_index_key(VmStack* stack, char* out) {
    if (!table_->order.index) throw RuntimeError(ERR_NO_INDEX_ORDER);
    ExpressionTableScope scope(stack, this);
    return table_operation(TABLE_UPDATE, [&] { return alias; },
                           [&] { return table_->eval_key(stack, out, MAX_KEY_LENGTH); });
}

double Table_Object_ZoDbf::get_index_pos() {
    if (!table_->order.index) throw RuntimeError(ERR_NO_INDEX_ORDER);
    return table_operation(TABLE_SEEK, no_detail, [&] { return table_->index_position(); });
}

bool Table_Object_ZoDbf::seek_lowlevel(VmStack*, const char* key, uint64_t length, unsigned range, int direction) {
    return table_operation(TABLE_SEEK, no_detail, [&] { return table_->seek(key, length, range, direction); });
}

}  // namespace zobase
