#pragma once
// Tables for a host without the language. A handle stands for a table
// object (tables/table_object.h): OpenTable or CreateTable makes one,
// CloseTable ends it. Field numbers are 0-based visible field indexes, and
// so are index numbers (0 to GetIndexCount() - 1). Every function raises
// what the table's operation behind it raises (RuntimeError with the
// error's number); there are no status codes. Changes to a record stay in
// its buffer until TableUpdate writes them.
#include <cstdint>

#include "base/export.h"
#include "tables/seek_options.h"
#include "tables/table_definition.h"

namespace zobase {

class Charset;
class String;
class Variant;
class VmStack;

// Directions of Skip.
enum SkipDir : int {
    SKIP_FORWARD = 1,
    SKIP_BACKWARD = 2,
};

// What LockCurrentRecord found or did.
enum LockState : int {
    LOCK_STATE_NO_RECORD = 0,   // at the beginning or end of the table: nothing locked
    LOCK_STATE_TAKEN = 1,       // locked by this call
    LOCK_STATE_HELD = 2,        // this handle held the lock already
    LOCK_STATE_NOT_NEEDED = 3,  // a table opened exclusively or read-only takes no record locks
    LOCK_STATE_REFUSED = 4,     // the system refused the lock
};

// A tag: what CreateTable takes, and what GetIndexInfo gives (in one block
// that FreeIndexInfo frees). Texts are UTF-8; an empty or null filter means
// none, an empty or null collation the machine order.
struct indexdef_st {
    const char* tag;
    const char* key_expression;
    const char* filter_expression;
    const char* collation;
    bool defined;  // carried in the tag's header as given
    bool unique;
    bool descending;
    bool binary;
};

// ---- tables as files
ZO_API void* OpenTable(VmStack* stack, const String& name);
// A new table opened exclusively, with its tags built behind it; in file
// order on its first record. A name without extension gets ".dbf"; a table
// of that name that is open nowhere is replaced (error 3 while it is open).
// Null options are the defaults. Names the table had to change are written
// back into `fields`. When a tag cannot be made, the table is removed again.
ZO_API void* CreateTable(VmStack* stack, const String& name, const createopts_st* options, fielddef_st* fields,
                         uint64_t field_count, const indexdef_st* indexes, uint64_t index_count);
ZO_API void CloseTable(VmStack* stack, void* table);
// The table, its memo file and its index file, none of them open anywhere.
ZO_API void DropTable(VmStack* stack, const String& name);
ZO_API void RenameTable(VmStack* stack, const String& from, const String& to);
ZO_API const Charset* GetTableCharset(void* table);
// The table file's size in bytes, and its times of creation and last change
// in seconds since 1970 (0 where the file system keeps no creation time).
ZO_API uint64_t GetTableFileSize(void* table);
ZO_API int64_t TableCreateTime(void* table);
ZO_API int64_t TableLastModified(void* table);

// ---- fields of the current record
ZO_API uint64_t GetFieldCount(void* table);
// Error 12 for a name the table lacks.
ZO_API uint64_t GetFieldNum(void* table, const String& name);
// The field as CREATE TABLE would take it (widths of C and V in characters).
ZO_API void GetFieldInfo(void* table, uint64_t field, fielddef_st* out);
ZO_API void GetFieldVariant(void* table, uint64_t field, Variant* out);
ZO_API int GetFieldInt32(void* table, uint64_t field);
ZO_API double GetFieldDouble(void* table, uint64_t field);
ZO_API bool GetFieldLogical(void* table, uint64_t field);
// An empty date gives 0, 0, 0 and *empty true.
ZO_API void GetFieldDateYMD(void* table, uint64_t field, uint64_t* year, uint64_t* month, uint64_t* day, bool* empty);
// A date field reads as its midnight; an empty value gives zeros and *empty.
ZO_API void GetFieldDateTimeYMDHIS(void* table, uint64_t field, uint64_t* year, uint64_t* month, uint64_t* day,
                                   uint64_t* hour, uint64_t* minute, uint64_t* second, bool* empty);
// The buffer functions take the room in *length and leave there the bytes
// written; a value that does not fit is error 9902 and writes nothing.
// Text in *charset, the table's when null; *charset then tells the charset
// of the bytes (9011 for characters it lacks). A C field gives its whole
// width, padding included.
ZO_API void GetFieldText(void* table, uint64_t field, char* out, uint64_t* length, const Charset** charset);
// The value's bytes as stored, without charset translation: for Q, W, G,
// binary M and binary C fields.
ZO_API void GetFieldBinary(void* table, uint64_t field, char* out, uint64_t* length);
// A currency field as digits with four decimals (12345 units: "1.2345");
// any other field as its text.
ZO_API void GetFieldMoneyString(void* table, uint64_t field, char* out, uint64_t* length);
// The bytes of a memo body.
ZO_API uint64_t GetMemoSize(void* table, uint64_t field);
ZO_API bool IsFieldNull(void* table, uint64_t field);
ZO_API void SetFieldInt32(void* table, uint64_t field, int value);
ZO_API void SetFieldDouble(void* table, uint64_t field, double value);
ZO_API void SetFieldLogical(void* table, uint64_t field, bool value);
// `empty` writes the empty date whatever the numbers say.
ZO_API void SetFieldDateYMD(void* table, uint64_t field, int64_t year, uint64_t month, uint64_t day, bool empty);
// Year, month and day all 0 write the empty datetime. Error 11 for a time
// outside 0:00:00 to 23:59:59 or a month or day that cannot be.
ZO_API void SetFieldDateTimeYMDHIS(void* table, uint64_t field, int64_t year, int64_t month, int64_t day,
                                   int64_t hour, int64_t minute, int64_t second);
// Text in `charset`, the table's when null.
ZO_API void SetFieldText(void* table, uint64_t field, const char* text, uint64_t length, const Charset* charset);
ZO_API void SetFieldBinary(void* table, uint64_t field, const char* data, uint64_t length);
// A number as text: optional blanks and sign, digits with "," between
// groups, "." before at most four decimals. Error 11 for anything else.
ZO_API void SetFieldMoneyString(void* table, uint64_t field, char* text, uint64_t length);
ZO_API void SetFieldNull(void* table, uint64_t field);
// A read-only field refuses every write; autoincrement fields start so.
ZO_API void SetFieldReadonly(void* table, uint64_t field, bool readonly);
// A field's descriptor values: the step and the next value of an
// autoincrement field, 0 for any other.
ZO_API uint64_t GetAutoIncStep(void* table, uint64_t field);
ZO_API uint64_t GetNextAutoInc(void* table, uint64_t field);

// ---- the cursor. The moves pass over records that SET DELETED hides.
ZO_API void GotoTop(VmStack* stack, void* table);
ZO_API void GotoBottom(VmStack* stack, void* table);
ZO_API void GotoRecord(VmStack* stack, void* table, uint64_t number);
ZO_API void GotoEof(void* table);
// By `count` records; error 4 when already at the end, 38 when already at
// the beginning. A count of 0 stays.
ZO_API void Skip(VmStack* stack, void* table, SkipDir direction, uint64_t count);
ZO_API bool Bof(void* table);
ZO_API bool Eof(void* table);
ZO_API uint64_t RecordCount(void* table);
ZO_API uint64_t RecordNumber(void* table);
// SET DELETED of the stack's data session: deleted records are out of
// every range, for every table of the session.
ZO_API void SetDeleted(VmStack* stack, bool on);

// ---- changing records: the changes are written by TableUpdate
ZO_API void BeginAppendRecord(void* table, int mode);
ZO_API void TableUpdate(VmStack* stack, void* table, int mode);
ZO_API void TableRevert(void* table, int mode);
ZO_API void DeleteRecord(void* table);
ZO_API bool IsRecordDeleted(void* table);

// ---- locks. A lock waits while another holder has the record.
ZO_API bool LockCurrentRecord(VmStack* stack, void* table, LockState& state);
ZO_API bool IsCurrentRecordLocked(void* table);
ZO_API void UnlockCurrentRecord(void* table);
ZO_API void UnlockAll(void* table);

// ---- indexes. The order is file order until SelectIndex.
ZO_API uint64_t GetIndexCount(void* table);
// Error 1683 for a number past the last tag.
ZO_API indexdef_st* GetIndexInfo(void* table, uint64_t index);
ZO_API void FreeIndexInfo(indexdef_st* info);
ZO_API void SelectIndex(VmStack* stack, void* table, uint64_t index);
ZO_API void UnselectIndex(void* table);
// The key the order stands on (length 0 at the end), and the key the
// order's expression gives for the current record; error 26 without an
// order.
ZO_API void GetIndexKey(void* table, char* out, uint64_t* length);
ZO_API void EvalIndexKey(VmStack* stack, void* table, char* out, uint64_t* length);
// The first record in range whose key begins with `key` (or, with the
// strict range, lies behind it), in the direction given (0: the order's).
// True when found; otherwise at the end of the table, unless `near` leaves
// the cursor on the next greater key. Error 26 without an order.
ZO_API bool SeekRawKey(VmStack* stack, void* table, const char* key, uint64_t length, SeekRng range,
                       SeekDir direction, bool near);
// Where the cursor stands in the order: 0 on its first record, 1 at its
// end, and between them the share of keys before the record, estimated
// through the tree as if its nodes were evenly filled. Error 26 without an
// order.
ZO_API double GetIndexPos(void* table);
// Scopes on the order: SEEK_FORWARD sets the low bound, SEEK_BACKWARD the
// high one, compared over the bound's own length; SEEK_RANGE_INCLUSIVE takes
// the bound itself in. The moves keep to the scope; a new order clears it.
ZO_API void SetScope(VmStack* stack, void* table, const char* key, uint64_t length, SeekDir direction,
                     SeekRng range);
ZO_API void ClearScope(VmStack* stack, void* table);

}  // namespace zobase
