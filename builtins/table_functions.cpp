// The functions that read the state of a work area: alias(), used(),
// select(), recno(), reccount(), eof(), bof(), deleted(), found(), dbf(),
// lock(), isrlocked(), lupdate(), cursorgetprop(), cursorsetprop() and
// afields(). Without an argument they look at the current work area; a work
// area without a table answers with the empty value, not an error, except
// where a table is needed to answer at all.
#include <strings.h>

#include <string>

#include "builtins/handlers.h"
#include "builtins/work_area.h"
#include "values/date.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// The optional last argument naming the work area.
Table_Object* optional_table(VmStack* stack, unsigned long long argc, unsigned long long i) {
    return work_area_argument(stack, argc, i, false);
}

}  // namespace

void stackcall_alias(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 1);
    result->set_string(table ? table->alias : String(""));
}

// A number outside 1 to 32767 is error 17; an unknown alias is not used.
void stackcall_used(VmStack* stack, unsigned long long, Variant* result) {
    DataSession_Object& session = current_session(stack);
    const Variant& value = argument(stack, 1);
    int32_t area = 0;
    if (value.tag == TAG_STRING) {
        result->set_bool(session.resolve(stack, &value, &area));
        return;
    }
    integer_type_st number = static_cast<integer_type_st>(value);
    if (number < 1 || number > MAX_WORK_AREA) throw RuntimeError(ERR_TABLE_NUMBER_INVALID);
    result->set_bool(session.used(static_cast<int32_t>(number)));
}

// No argument: the current work area. An alias: its work area, 0 when
// unknown. A number: that number, 0 standing for the lowest free one.
void stackcall_select(VmStack* stack, unsigned long long argc, Variant* result) {
    DataSession_Object& session = current_session(stack);
    if (argc == 0) {
        result->set_integer(session.current_area());
        return;
    }
    const Variant& value = argument(stack, 1);
    int32_t area = 0;
    if (value.tag == TAG_STRING) {
        session.resolve(stack, &value, &area);
        result->set_integer(area);
        return;
    }
    result->set_integer(session.select(stack, &value));
}

void stackcall_recno(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 1);
    result->set_integer(table ? static_cast<long long>(table->recno()) : 0LL);
}

void stackcall_reccount(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 1);
    result->set_integer(table ? static_cast<long long>(table->reccount()) : 0LL);
}

void stackcall_eof(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 1);
    result->set_bool(table && table->eof());
}

void stackcall_bof(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 1);
    result->set_bool(table && table->bof());
}

void stackcall_deleted(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 1);
    result->set_bool(table && table->deleted());
}

void stackcall_found(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 1);
    result->set_bool(table && table->found);
}

void stackcall_dbf(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 1);
    result->set_string(table ? table->filename() : String(""));
}

// The current record; in a shared table this waits until the lock is free.
void stackcall_lock(VmStack* stack, unsigned long long, Variant* result) {
    result->set_bool(current_table(stack)->lock_lowlevel());
}

// No record number: the current record.
void stackcall_isrlocked(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 2);
    if (!table) {
        result->set_false();
        return;
    }
    if (argc >= 1) result->set_bool(table->isrlocked(static_cast<uint64_t>(argument(stack, 1).integer)));
    else result->set_bool(table->isrlocked());
}

void stackcall_lupdate(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 1);
    if (!table) {
        result->set(date_st{0});
        return;
    }
    int32_t day = table->last_modified_yyyymmdd();
    date_st date{0};
    serial_julian_date(day / 10000, static_cast<unsigned>(day / 100 % 100), static_cast<unsigned>(day % 100), &date);
    result->set(date);
}

namespace {

bool property_is(const String& name, const char* wanted) { return strcasecmp(name.u8str().c_str(), wanted) == 0; }

constexpr int32_t SOURCE_TYPE_TABLE = 3;

}  // namespace

// Buffering, SourceName (the alias), SourceType (3, a table) and Database
// (none); any other property is error 11.
void stackcall_cursorgetprop(VmStack* stack, unsigned long long argc, Variant* result) {
    const String& name = string_argument(stack, 1);
    Table_Object* table = work_area_argument(stack, argc, 2, true);
    if (property_is(name, "Buffering")) result->set_integer(table->buffering);
    else if (property_is(name, "SourceName")) result->set_string(table->alias);
    else if (property_is(name, "SourceType")) result->set_integer(SOURCE_TYPE_TABLE);
    else if (property_is(name, "Database")) result->set_string(String(""));
    else throw RuntimeError(ERR_ARGUMENT_INVALID);
}

// Buffering takes 1 (none) or 3 (optimistic row buffering): a changed
// record is written when the cursor leaves it. Pessimistic and table
// buffering are not built.
void stackcall_cursorsetprop(VmStack* stack, unsigned long long argc, Variant* result) {
    const String& name = string_argument(stack, 1);
    Table_Object* table = work_area_argument(stack, argc, 3, true);
    if (!property_is(name, "Buffering")) throw RuntimeError(ERR_ARGUMENT_INVALID);
    integer_type_st mode = static_cast<integer_type_st>(argument(stack, 2));
    if (mode == 2 || mode == 4 || mode == 5) raise_not_available("pessimistic and table buffering");
    if (mode != BUFFERING_NONE && mode != BUFFERING_ROW) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (mode == BUFFERING_NONE) table->leave_record(stack);
    table->buffering = static_cast<int32_t>(mode);
    result->set_true();
}

namespace {

// The columns of afields(): name, type, width, decimals, null, nocptrans,
// six texts of rules and triggers that tables here do not have, the long
// table name and three more texts, the next autoincrement value and its step.
constexpr uint64_t AFIELDS_COLUMNS = 18;

void put(VmStack* stack, Array* array, uint64_t row, uint64_t column, const Variant& value) {
    Variant* element = array->write(stack, row, column);
    element->release(stack);
    element->set_variant(&value);
}

}  // namespace

void stackcall_afields(VmStack* stack, unsigned long long argc, Variant* result) {
    Table_Object* table = optional_table(stack, argc, 2);
    if (!table) {
        result->set_integer(0LL);
        return;
    }
    uint64_t count = table->cnt_fields();
    Array* array = Param(stack, 1)->dimension(stack, count, AFIELDS_COLUMNS);
    Variant empty;
    empty.set_string(String(""));
    for (uint64_t i = 0; i < count; ++i) {
        table_field_info_st info = table->get_field_info(i);
        uint64_t row = i + 1;
        Variant value;
        value.set_string(info.name);
        put(stack, array, row, 1, value);
        value.release(stack);
        char letter[2] = {info.letter, 0};
        value.set_string(String(letter));
        put(stack, array, row, 2, value);
        value.release(stack);
        value.set_integer(static_cast<long long>(info.width));
        put(stack, array, row, 3, value);
        value.set_integer(static_cast<long long>(info.decimals));
        put(stack, array, row, 4, value);
        value.set_bool(info.nullable);
        put(stack, array, row, 5, value);
        value.set_bool(info.binary);
        put(stack, array, row, 6, value);
        for (uint64_t column = 7; column <= 16; ++column) put(stack, array, row, column, empty);
        value.set_integer(static_cast<long long>(info.autoincrement ? info.next_value : 0));
        put(stack, array, row, 17, value);
        value.set_integer(static_cast<long long>(info.autoincrement ? info.step : 0));
        put(stack, array, row, 18, value);
    }
    empty.release(stack);
    result->set_integer(static_cast<long long>(count));
}

}  // namespace zobase
