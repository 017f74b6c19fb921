#pragma once
// Tables for a host without the language. A handle stands for a table
// object (tables/table_object.h): OpenTable makes one, CloseTable ends it.
// Field numbers are 0-based visible field indexes. Every function raises
// what the table's operation behind it raises; there are no status codes.
#include <cstdint>

#include "base/export.h"

namespace zobase {

class Charset;
class String;
class Variant;
class VmStack;

// ---- opening and closing
ZO_API void* OpenTable(VmStack* stack, const String& name);
ZO_API void CloseTable(VmStack* stack, void* table);
ZO_API const Charset* GetTableCharset(void* table);

// ---- fields of the current record
ZO_API uint64_t GetFieldCount(void* table);
// Error 12 for a name the table lacks.
ZO_API uint64_t GetFieldNum(void* table, const String& name);
ZO_API void GetFieldVariant(void* table, uint64_t field, Variant* out);
ZO_API int GetFieldInt32(void* table, uint64_t field);
ZO_API double GetFieldDouble(void* table, uint64_t field);
ZO_API bool GetFieldLogical(void* table, uint64_t field);
// An empty date gives 0, 0, 0 and *empty true.
ZO_API void GetFieldDateYMD(void* table, uint64_t field, uint64_t* year, uint64_t* month, uint64_t* day, bool* empty);
ZO_API bool IsFieldNull(void* table, uint64_t field);
ZO_API void SetFieldInt32(void* table, uint64_t field, int value);
ZO_API void SetFieldDouble(void* table, uint64_t field, double value);
ZO_API void SetFieldLogical(void* table, uint64_t field, bool value);
// `empty` writes the empty date whatever the numbers say.
ZO_API void SetFieldDateYMD(void* table, uint64_t field, int64_t year, uint64_t month, uint64_t day, bool empty);
ZO_API void SetFieldNull(void* table, uint64_t field);
// A field's descriptor values: the step and the next value of an
// autoincrement field, 0 for any other.
ZO_API uint64_t GetAutoIncStep(void* table, uint64_t field);
ZO_API uint64_t GetNextAutoInc(void* table, uint64_t field);

// ---- the cursor
ZO_API void GotoTop(VmStack* stack, void* table);
ZO_API void GotoBottom(VmStack* stack, void* table);
ZO_API void GotoRecord(VmStack* stack, void* table, uint64_t number);
ZO_API void GotoEof(void* table);
ZO_API bool Bof(void* table);
ZO_API bool Eof(void* table);
ZO_API uint64_t RecordCount(void* table);
ZO_API uint64_t RecordNumber(void* table);

// ---- changing records: the changes are written by TableUpdate
ZO_API void BeginAppendRecord(void* table, int mode);
ZO_API void TableUpdate(VmStack* stack, void* table, int mode);
ZO_API void TableRevert(void* table, int mode);
ZO_API void DeleteRecord(void* table);
ZO_API bool IsRecordDeleted(void* table);

// ---- locks
ZO_API bool IsCurrentRecordLocked(void* table);
ZO_API void UnlockCurrentRecord(void* table);
ZO_API void UnlockAll(void* table);

// ---- indexes
ZO_API uint64_t GetIndexCount(void* table);
ZO_API void UnselectIndex(void* table);

}  // namespace zobase
