// The table interface for hosts: each function forwards to the table
// object's operation. A handle is a heap-held reference to the object.
#include "runtime/table_api.h"

#include <strings.h>

#include <cstring>
#include <string>

#include "tables/index.h"
#include "tables/object_holder.h"
#include "tables/table_errors.h"
#include "tables/table_files.h"
#include "tables/table_object_zodbf.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/error.h"
#include "values/money.h"
#include "vm/data_sessions.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

using TableHandle = ObjectHolder<Table_Object>;

Table_Object* object_of(void* table) {
    auto* handle = static_cast<TableHandle*>(table);
    if (!handle || !handle->get()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return handle->get();
}

// A field's value, released when it goes.
class FieldValue {
public:
    FieldValue(void* table, uint64_t field) { object_of(table)->get_field(nullptr, field, &value); }
    ~FieldValue() { value.release(nullptr); }
    FieldValue(const FieldValue&) = delete;
    FieldValue& operator=(const FieldValue&) = delete;

    Variant value;
};

// Bytes into a caller's buffer of *length bytes; too many fail as a
// field's text that does not fit.
void copy_out(const char* bytes, uint64_t size, char* out, uint64_t* length) {
    table_operation(TABLE_GET_CHARS, no_detail, [&] {
        if (size > *length) throw dbf_error_buffer_overflow();
    });
    if (size) std::memcpy(out, bytes, size);
    *length = size;
}

// A C string of the interface as a String; null is empty.
String utf8_of(const char* text) { return String(text ? text : ""); }

internal_indexdef_st internal_definition_of(const indexdef_st& tag) {
    internal_indexdef_st definition;
    definition.tag = utf8_of(tag.tag);
    definition.key_expression = utf8_of(tag.key_expression);
    definition.filter_expression = utf8_of(tag.filter_expression);
    definition.collation = utf8_of(tag.collation);
    definition.defined = tag.defined;
    definition.unique = tag.unique;
    definition.descending = tag.descending;
    definition.binary = tag.binary;
    return definition;
}

// The texts of a tag in one block behind the indexdef_st that points to
// them, so that FreeIndexInfo frees it all at once.
indexdef_st* allocated_definition_of(const table_index_info_st& info) {
    std::string texts[] = {info.name.u8str(), info.key_expression.u8str(), info.filter_expression.u8str(),
                           info.collation.u8str()};
    size_t size = sizeof(indexdef_st);
    for (const std::string& text : texts) size += text.size() + 1;
    char* block = new char[size];
    auto* definition = new (block) indexdef_st{};
    char* next = block + sizeof(indexdef_st);
    const char** targets[] = {&definition->tag, &definition->key_expression, &definition->filter_expression,
                              &definition->collation};
    for (size_t i = 0; i < 4; ++i) {
        std::memcpy(next, texts[i].c_str(), texts[i].size() + 1);
        *targets[i] = next;
        next += texts[i].size() + 1;
    }
    definition->unique = info.unique;
    definition->descending = info.descending;
    definition->binary = info.binary;
    return definition;
}

// A table whose making failed half way goes with its files; what fails in
// taking it away is dropped, so that the host learns the first failure.
void discard(VmStack* stack, TableHandle& created) {
    String file = created->filename();
    bool temporary = created->is_temporary();
    try {
        created->close();
    } catch (const Exception&) {
    }
    created.reset(stack);
    try {
        if (!temporary) drop_table_files(file);
    } catch (const Exception&) {
    }
}

}  // namespace

// ---- tables as files

void* CreateTable(VmStack* stack, const String& name, const createopts_st* options, fielddef_st* fields,
                  uint64_t field_count, const indexdef_st* indexes, uint64_t index_count) {
    createopts_st defaults;
    TableHandle created = Table_Object_ZoDbf::create(stack, name, options ? options : &defaults, fields, field_count);
    try {
        for (uint64_t i = 0; i < index_count; ++i) created->create_index(stack, internal_definition_of(indexes[i]));
        created->select_index(stack, 0, 0);
        created->movefirst(stack);
    } catch (...) {
        discard(stack, created);
        throw;
    }
    return new TableHandle(created);
}

void DropTable(VmStack*, const String& name) { drop_table_files(name); }

void RenameTable(VmStack*, const String& from, const String& to) { rename_table_files(from, to); }

uint64_t GetTableFileSize(void* table) { return object_of(table)->file_size(); }
int64_t TableCreateTime(void* table) { return object_of(table)->created_time(); }
int64_t TableLastModified(void* table) { return object_of(table)->modified_time(); }

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

void GetFieldInfo(void* table, uint64_t field, fielddef_st* out) {
    *out = object_of(table)->get_field_definition(field);
}

void GetFieldVariant(void* table, uint64_t field, Variant* out) { object_of(table)->get_field(nullptr, field, out); }

int GetFieldInt32(void* table, uint64_t field) {
    integer_type_st number = 0;
    FieldValue(table, field).value.cast(&number);
    return static_cast<int>(number);
}

double GetFieldDouble(void* table, uint64_t field) {
    numeric_type_st number = {};
    FieldValue(table, field).value.cast(&number);
    return number.value;
}

bool GetFieldLogical(void* table, uint64_t field) {
    FieldValue field_read(table, field);
    const Variant& value = field_read.value;
    if (!value.is_logical()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return value.tag == TAG_TRUE;
}

void GetFieldDateYMD(void* table, uint64_t field, uint64_t* year, uint64_t* month, uint64_t* day, bool* empty) {
    date_st date = {};
    FieldValue(table, field).value.cast(&date);
    *empty = date.julian == 0;
    int y = 0, m = 0, d = 0;
    if (!*empty) unserial_julian_date(date, &y, &m, &d);
    *year = static_cast<uint64_t>(y);
    *month = static_cast<uint64_t>(m);
    *day = static_cast<uint64_t>(d);
}

void GetFieldDateTimeYMDHIS(void* table, uint64_t field, uint64_t* year, uint64_t* month, uint64_t* day,
                            uint64_t* hour, uint64_t* minute, uint64_t* second, bool* empty) {
    datetime_st datetime = {};
    FieldValue(table, field).value.cast(&datetime);
    *empty = datetime.julian == 0;
    int parts[7] = {};
    if (!*empty) unserial_julian_date(datetime, &parts[0], &parts[1], &parts[2], &parts[3], &parts[4], &parts[5],
                                      &parts[6]);
    uint64_t* targets[] = {year, month, day, hour, minute, second};
    for (size_t i = 0; i < 6; ++i) *targets[i] = static_cast<uint64_t>(parts[i]);
}

void GetFieldText(void* table, uint64_t field, char* out, uint64_t* length, const Charset** charset) {
    const Charset* wanted = charset ? *charset : nullptr;
    object_of(table)->get_chars(field, out, length, &wanted);
    if (charset) *charset = wanted;
}

void GetFieldBinary(void* table, uint64_t field, char* out, uint64_t* length) {
    FieldValue field_read(table, field);
    const Variant& value = field_read.value;
    if (value.is_null()) {
        *length = 0;
        return;
    }
    if (value.tag != TAG_STRING) throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    copy_out(value.str().read(), value.str().size(), out, length);
}

void GetFieldMoneyString(void* table, uint64_t field, char* out, uint64_t* length) {
    const Charset* table_charset = nullptr;
    object_of(table)->get_chars(field, out, length, &table_charset);
}

uint64_t GetMemoSize(void* table, uint64_t field) { return object_of(table)->get_memo_size(field); }

bool IsFieldNull(void* table, uint64_t field) { return FieldValue(table, field).value.is_null(); }

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

void SetFieldDateTimeYMDHIS(void* table, uint64_t field, int64_t year, int64_t month, int64_t day, int64_t hour,
                            int64_t minute, int64_t second) {
    datetime_st datetime = {};
    bool empty = year == 0 && month == 0 && day == 0;
    if (!empty) {
        bool valid = month >= 1 && month <= 12 && day >= 1 && day <= 31 && hour >= 0 && hour < 24 && minute >= 0 &&
                     minute < 60 && second >= 0 && second < 60 && year >= INT32_MIN && year <= INT32_MAX;
        if (!valid || serial_julian_date(static_cast<int>(year), static_cast<unsigned>(month),
                                         static_cast<unsigned>(day), static_cast<unsigned>(hour),
                                         static_cast<unsigned>(minute), static_cast<unsigned>(second), &datetime))
            throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
    object_of(table)->set_field_datetime(field, datetime);
}

void SetFieldText(void* table, uint64_t field, const char* text, uint64_t length, const Charset* charset) {
    Table_Object* object = object_of(table);
    object->set_field_string(field, String::fromBytes(text, length, charset ? charset : object->charset));
}

void SetFieldBinary(void* table, uint64_t field, const char* data, uint64_t length) {
    object_of(table)->set_field_string(field, String::fromBytes(data, length, Charset::binary));
}

void SetFieldMoneyString(void* table, uint64_t field, char* text, uint64_t length) {
    money_type_st money = {};
    if (int error = string_to_money(text, length, nullptr, &money, U'.', U',')) throw RuntimeError(error);
    object_of(table)->set_field_money(field, money);
}

void SetFieldReadonly(void* table, uint64_t field, bool readonly) {
    object_of(table)->set_field_readonly(field, readonly);
}

void SetFieldNull(void* table, uint64_t field) { object_of(table)->set_field_null(field); }

uint64_t GetAutoIncStep(void* table, uint64_t field) { return object_of(table)->get_field_info(field).step; }

uint64_t GetNextAutoInc(void* table, uint64_t field) { return object_of(table)->get_field_info(field).next_value; }

void GotoTop(VmStack* stack, void* table) { object_of(table)->movefirst(stack); }
void GotoBottom(VmStack* stack, void* table) { object_of(table)->movelast(stack); }
void GotoRecord(VmStack* stack, void* table, uint64_t number) { object_of(table)->go_record(stack, number); }
void GotoEof(void* table) { object_of(table)->movetoeof(); }
void Skip(VmStack* stack, void* table, SkipDir direction, uint64_t count) {
    Table_Object* object = object_of(table);
    if (direction != SKIP_FORWARD && direction != SKIP_BACKWARD) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (count == 0) return;
    if (direction == SKIP_FORWARD) object->movenext(stack, count);
    else object->moveprevious(stack, count);
}

bool Bof(void* table) { return object_of(table)->bof(); }
bool Eof(void* table) { return object_of(table)->eof(); }
uint64_t RecordCount(void* table) { return object_of(table)->reccount(); }
uint64_t RecordNumber(void* table) { return object_of(table)->recno(); }

void SetDeleted(VmStack* stack, bool on) { stack->sessions->settings().deleted = on; }

void BeginAppendRecord(void* table, int) { object_of(table)->begin_append(); }
void TableUpdate(VmStack* stack, void* table, int) { object_of(table)->update(stack); }
void TableRevert(void* table, int) { object_of(table)->revert(); }
void DeleteRecord(void* table) { object_of(table)->delete_record(); }
bool IsRecordDeleted(void* table) { return object_of(table)->deleted(); }

bool LockCurrentRecord(VmStack*, void* table, LockState& state) {
    Table_Object* object = object_of(table);
    if (object->bof() || object->eof()) {
        state = LOCK_STATE_NO_RECORD;
        return false;
    }
    if (object->isrlocked()) {
        state = LOCK_STATE_HELD;
        return true;
    }
    if (!object->lock_lowlevel()) {
        state = LOCK_STATE_REFUSED;
        return false;
    }
    state = object->isrlocked() ? LOCK_STATE_TAKEN : LOCK_STATE_NOT_NEEDED;
    return true;
}

bool IsCurrentRecordLocked(void* table) { return object_of(table)->isrlocked(); }
void UnlockCurrentRecord(void* table) { object_of(table)->unlock(); }
void UnlockAll(void* table) { object_of(table)->unlock_all(); }

uint64_t GetIndexCount(void* table) { return object_of(table)->cnt_indizes(); }
void UnselectIndex(void* table) { object_of(table)->select_index(nullptr, 0, 0); }

indexdef_st* GetIndexInfo(void* table, uint64_t index) {
    table_index_info_st info;
    if (!object_of(table)->get_index_info(index + 1, &info))
        throw RuntimeError(ERR_TAG_NOT_FOUND, String(std::to_string(index).c_str()));
    return allocated_definition_of(info);
}

void FreeIndexInfo(indexdef_st* info) {
    if (!info) return;
    info->~indexdef_st();
    delete[] reinterpret_cast<char*>(info);
}

void SelectIndex(VmStack* stack, void* table, uint64_t index) { object_of(table)->select_index(stack, index + 1, 0); }

void GetIndexKey(void* table, char* out, uint64_t* length) {
    Table_Object* object = object_of(table);
    uint64_t key_length = object->get_index_key_length();
    const char* key = object->eof() ? nullptr : object->get_index_key();
    copy_out(key, key ? key_length : 0, out, length);
}

void EvalIndexKey(VmStack* stack, void* table, char* out, uint64_t* length) {
    char key[MAX_KEY_LENGTH];
    uint64_t key_length = object_of(table)->eval_index_key(stack, key);
    copy_out(key, key_length, out, length);
}

bool SeekRawKey(VmStack* stack, void* table, const char* key, uint64_t length, SeekRng range, SeekDir direction,
                bool near) {
    Table_Object* object = object_of(table);
    if (length > MAX_KEY_LENGTH || (length && !key)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return object->seek(stack, key, length, range, direction, near);
}

double GetIndexPos(void* table) { return object_of(table)->get_index_pos(); }

// One bound of the scope; the cursor stays where it is until the next move.
void SetScope(VmStack*, void* table, const char* key, uint64_t length, SeekDir direction, SeekRng range) {
    Table_Object* object = object_of(table);
    if (!key || length == 0 || length > MAX_SCOPE_KEY || (direction != SEEK_FORWARD && direction != SEEK_BACKWARD))
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    object->set_scope(direction, key, length, range);
}

void ClearScope(VmStack*, void* table) { object_of(table)->clear_scope(); }

}  // namespace zobase
