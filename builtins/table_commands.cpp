// The table commands: USE and SELECT, the moves, APPEND, REPLACE, DELETE
// and RECALL, LOCATE and CONTINUE, UNLOCK, SET FILTER, SET ORDER and SET
// DATASESSION. Each picks its work area and calls the table object; a write
// is committed at once unless the table buffers its rows.
#include <climits>
#include <cstring>
#include <string>

#include "base/call_trace.h"
#include "builtins/handlers.h"
#include "builtins/work_area.h"
#include "tables/table_object_zodbf.h"
#include "vm/call_resolver.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

enum UseFlags : long long {
    USE_ONLINE = 1,
    USE_ADMIN = 2,
    USE_AGAIN = 4,
    USE_NODATA = 8,
    USE_EXCLUSIVE = 16,
    USE_SHARED = 32,
    USE_NOUPDATE = 64,
};

constexpr long long APPEND_BLANK = 1;
constexpr long long LOCATE_REST = 1;
constexpr long long UNLOCK_ALL = 1;

long long flags_argument(VmStack* stack, unsigned long long i) { return argument(stack, i).integer; }

Symtable* symbols_of(VmStack* stack) { return &stack->services->symbols(); }

// "alias.field" and "alias->field" name the work area with the field.
bool qualified_field_name(const String& text, std::string* alias, std::string* field) {
    if (!std::memchr(text.read(), '.', text.size()) && !std::memchr(text.read(), '>', text.size())) return false;
    std::string name = text.u8str();
    size_t arrow = name.find("->");
    size_t dot = name.find('.');
    if (arrow != std::string::npos) {
        *alias = name.substr(0, arrow);
        *field = name.substr(arrow + 2);
        return true;
    }
    if (dot == std::string::npos) return false;
    *alias = name.substr(0, dot);
    *field = name.substr(dot + 1);
    return true;
}

}  // namespace

void void_stackcall_use(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    long long flags = flags_argument(stack, 1);
    if (flags & (USE_ONLINE | USE_ADMIN | USE_NODATA)) throw RuntimeError(ERR_NOT_AVAILABLE);
    if ((flags & USE_EXCLUSIVE) && (flags & USE_SHARED)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    DataSession_Object& session = current_session(stack);
    const Variant& in = argument(stack, 3);
    int32_t area = is_null_argument(in) ? session.current_area() : session.select(stack, &in);
    session.close(stack, area);
    const Variant& name = argument(stack, 2);
    if (name.tag != TAG_STRING) return;
    bool exclusive = (flags & USE_EXCLUSIVE) || (!(flags & USE_SHARED) && session.settings.exclusive);
    ObjectHolder<Table_Object> table =
        Table_Object_ZoDbf::use(stack, name.str(), !exclusive, (flags & USE_NOUPDATE) != 0);
    const Variant& alias = argument(stack, 4);
    String alias_text = alias.tag == TAG_STRING ? alias.str() : alias_of_file(name.str());
    session.assign(table, symbols_of(stack), alias_text, area, (flags & USE_AGAIN) != 0);
}

void void_stackcall_select(VmStack* stack, unsigned long long) {
    DataSession_Object& session = current_session(stack);
    session.select(session.select(stack, Param(stack, 1)));
}

void void_stackcall_go_top(VmStack* stack, unsigned long long) {
    work_area_table(stack, argument(stack, 2), true)->movefirst(stack);
}

void void_stackcall_go_bottom(VmStack* stack, unsigned long long) {
    work_area_table(stack, argument(stack, 2), true)->movelast(stack);
}

void void_stackcall_go_record(VmStack* stack, unsigned long long) {
    Table_Object* table = work_area_table(stack, argument(stack, 1), true);
    long long number = argument(stack, 2).integer;
    if (number < 1) throw RuntimeError(ERR_RECORD_OUT_OF_RANGE);
    table->go_record(stack, static_cast<uint64_t>(number));
}

// A count of 0 is refused on purpose.
void void_stackcall_skip(VmStack* stack, unsigned long long) {
    const Variant& records = argument(stack, 1);
    long long count = is_null_argument(records) ? 1 : records.integer;
    if (count < INT32_MIN || count > INT32_MAX) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    if (count == 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    Table_Object* table = work_area_table(stack, argument(stack, 2), true);
    if (count > 0) table->movenext(stack, static_cast<uint64_t>(count));
    else table->moveprevious(stack, static_cast<uint64_t>(-count));
}

void void_stackcall_append(VmStack* stack, unsigned long long) {
    if (flags_argument(stack, 1) != APPEND_BLANK) raise_not_available("blank option only");
    work_area_table(stack, argument(stack, 2), true)->append_blank(stack);
}

void void_stackcall_replace(VmStack* stack, unsigned long long) {
    const String& name = string_argument(stack, 1);
    const Variant& in = argument(stack, 3);
    std::string alias, field;
    if (is_null_argument(in) && qualified_field_name(name, &alias, &field)) {
        Variant alias_value;
        alias_value.set_string(String(alias.c_str()));
        Table_Object* table = work_area_table(stack, alias_value, true);
        alias_value.release(stack);
        table->set_field_by_symbol(stack, stack->resolver->symbolize(String(field.c_str())), Param(stack, 2));
        table->commit(stack);
        return;
    }
    Table_Object* table = work_area_table(stack, in, true);
    table->set_field(stack, table->field_by_name(stack, name), Param(stack, 2));
    table->commit(stack);
}

// At the end of the file there is no record to mark.
void void_stackcall_delete_record(VmStack* stack, unsigned long long) {
    Table_Object* table = current_table(stack);
    if (table->eof()) return;
    table->delete_record();
    table->commit(stack);
}

void void_stackcall_recall_record(VmStack* stack, unsigned long long) {
    Table_Object* table = current_table(stack);
    if (table->eof()) return;
    table->recall_record();
    table->commit(stack);
}

void void_stackcall_locate(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    Table_Object* table = current_table(stack);
    bool rest = (flags_argument(stack, 3) & LOCATE_REST) != 0;
    const Variant& while_condition = argument(stack, 2);
    if (is_null_argument(while_condition)) table->locate_for(stack, string_argument(stack, 1), rest);
    else table->locate_for_while(stack, string_argument(stack, 1), while_condition.str(), rest);
}

void void_stackcall_continue(VmStack* stack, unsigned long long) { current_table(stack)->locate_continue(stack); }

void void_stackcall_unlock(VmStack* stack, unsigned long long) {
    if ((flags_argument(stack, 1) & UNLOCK_ALL) || !is_null_argument(argument(stack, 2)))
        raise_not_available("Unlocking all records");
    work_area_table(stack, argument(stack, 3), true)->unlock_all();
}

void void_stackcall_set_filter_to(VmStack* stack, unsigned long long) {
    Table_Object* table = work_area_table(stack, argument(stack, 2), true);
    const Variant& condition = argument(stack, 1);
    if (is_null_argument(condition)) table->set_filter_to();
    else table->set_filter_to(stack, condition.str());
}

// Tags come with index files; until a table has one, every tag is unknown.
void void_stackcall_set_datasession_to(VmStack* stack, unsigned long long) {
    const Variant& id = argument(stack, 1);
    long long number = is_null_argument(id) ? 1 : id.integer;
    if (number < INT32_MIN || number > INT32_MAX) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    table_sessions(stack).select_session(static_cast<int32_t>(number));
}

}  // namespace zobase

namespace zobase {

void void_stackcall_begin_transaction(VmStack* stack, unsigned long long) {
    current_session(stack).begin_transaction();
}

void void_stackcall_end_transaction(VmStack* stack, unsigned long long) {
    current_session(stack).end_transaction();
}

void void_stackcall_rollback(VmStack* stack, unsigned long long) { current_session(stack).rollback(stack); }

}  // namespace zobase
