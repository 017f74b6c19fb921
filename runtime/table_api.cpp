// The table interface for hosts: each function forwards to the table
// object's operation. A handle is a heap-held reference to the object.
#include "runtime/table_api.h"

#include <strings.h>

#include <string>

#include "tables/object_holder.h"
#include "tables/table_object_zodbf.h"
#include "values/date.h"
#include "values/error.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

using TableHandle = ObjectHolder<Table_Object>;

Table_Object* object_of(void* table) {
    auto* handle = static_cast<TableHandle*>(table);
    if (!handle || !handle->get()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return handle->get();
}

Variant field_value(void* table, uint64_t field) {
    Variant value;
    object_of(table)->get_field(nullptr, field, &value);
    return value;
}

}  // namespace

void* OpenTable(VmStack* stack, const String& name) {
    TableHandle opened = Table_Object_ZoDbf::use(stack, name, true, false);
    return new TableHandle(opened);
}

void CloseTable(VmStack* stack, void* table) {
    auto* handle = static_cast<TableHandle*>(table);
    if (!handle) return;
    try {
        if (handle->get()) handle->get()->close();
    } catch (...) {
        handle->reset(stack);
        delete handle;
        throw;
    }
    handle->reset(stack);
    delete handle;
}

const Charset* GetTableCharset(void* table) { return object_of(table)->charset; }

uint64_t GetFieldCount(void* table) { return object_of(table)->cnt_fields(); }

// Field names are ASCII and compared without case, as the language does.
uint64_t GetFieldNum(void* table, const String& name) {
    Table_Object* object = object_of(table);
    std::string wanted = name.u8str();
    for (uint64_t i = 0; i < object->cnt_fields(); ++i)
        if (strcasecmp(object->get_field_info(i).name.u8str().c_str(), wanted.c_str()) == 0) return i;
    throw RuntimeError(ERR_VARIABLE_NOT_FOUND, name);
}

void GetFieldVariant(void* table, uint64_t field, Variant* out) { object_of(table)->get_field(nullptr, field, out); }

int GetFieldInt32(void* table, uint64_t field) {
    integer_type_st number = 0;
    field_value(table, field).cast(&number);
    return static_cast<int>(number);
}

double GetFieldDouble(void* table, uint64_t field) {
    numeric_type_st number = {};
    field_value(table, field).cast(&number);
    return number.value;
}

bool GetFieldLogical(void* table, uint64_t field) {
    Variant value = field_value(table, field);
    if (!value.is_logical()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return value.tag == TAG_TRUE;
}

void GetFieldDateYMD(void* table, uint64_t field, uint64_t* year, uint64_t* month, uint64_t* day, bool* empty) {
    date_st date = {};
    field_value(table, field).cast(&date);
    *empty = date.julian == 0;
    int y = 0, m = 0, d = 0;
    if (!*empty) unserial_julian_date(date, &y, &m, &d);
    *year = static_cast<uint64_t>(y);
    *month = static_cast<uint64_t>(m);
    *day = static_cast<uint64_t>(d);
}

bool IsFieldNull(void* table, uint64_t field) { return field_value(table, field).is_null(); }

void SetFieldInt32(void* table, uint64_t field, int value) { object_of(table)->set_field_integer(field, value); }

void SetFieldDouble(void* table, uint64_t field, double value) {
    object_of(table)->set_field_numeric(field, numeric_type_st{value, DECIMALS_UNKNOWN});
}

void SetFieldLogical(void* table, uint64_t field, bool value) { object_of(table)->set_field_bool(field, value); }

void SetFieldDateYMD(void* table, uint64_t field, int64_t year, uint64_t month, uint64_t day, bool empty) {
    date_st date = {};
    // The day is not checked against its month: February 31 lands in March.
    if (!empty && (month < 1 || month > 12 || day < 1 || day > 31)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (!empty && serial_julian_date(static_cast<int>(year), static_cast<unsigned>(month), static_cast<unsigned>(day),
                                     &date) != 0)
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    object_of(table)->set_field_date(field, date);
}

void SetFieldNull(void* table, uint64_t field) { object_of(table)->set_field_null(field); }

uint64_t GetAutoIncStep(void* table, uint64_t field) { return object_of(table)->get_field_info(field).step; }

uint64_t GetNextAutoInc(void* table, uint64_t field) { return object_of(table)->get_field_info(field).next_value; }

void GotoTop(VmStack* stack, void* table) { object_of(table)->movefirst(stack); }
void GotoBottom(VmStack* stack, void* table) { object_of(table)->movelast(stack); }
void GotoRecord(VmStack* stack, void* table, uint64_t number) { object_of(table)->go_record(stack, number); }
void GotoEof(void* table) { object_of(table)->movetoeof(); }
bool Bof(void* table) { return object_of(table)->bof(); }
bool Eof(void* table) { return object_of(table)->eof(); }
uint64_t RecordCount(void* table) { return object_of(table)->reccount(); }
uint64_t RecordNumber(void* table) { return object_of(table)->recno(); }

void BeginAppendRecord(void* table, int) { object_of(table)->begin_append(); }
void TableUpdate(VmStack* stack, void* table, int) { object_of(table)->update(stack); }
void TableRevert(void* table, int) { object_of(table)->revert(); }
void DeleteRecord(void* table) { object_of(table)->delete_record(); }
bool IsRecordDeleted(void* table) { return object_of(table)->deleted(); }

bool IsCurrentRecordLocked(void* table) { return object_of(table)->isrlocked(); }
void UnlockCurrentRecord(void* table) { object_of(table)->unlock(); }
void UnlockAll(void* table) { object_of(table)->unlock_all(); }

uint64_t GetIndexCount(void* table) { return object_of(table)->cnt_indizes(); }
void UnselectIndex(void* table) { object_of(table)->select_index(nullptr, 0, 0); }

}  // namespace zobase
