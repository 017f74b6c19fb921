#pragma once
// DbfFile: one open DBF table, its header image, its fields, its record
// buffers and the memo file that belongs to it.
//
// File layout: a 32-byte header; one 32-byte descriptor per field; the
// terminator byte 0x0D; for versions 0x30 to 0x32 a backlink area of 263
// bytes; then the records, each of the record length, from the header
// length on. Nothing follows the last record. Integers are little-endian.
//
// Header: version (0), year modulo 100 (1), month counted from 0 (2), day
// (3), record count (4-7), header length (8-9), record length (10-11), zero
// (12-19), eight bytes kept as read (20-27), flags: bit 0 structural CDX,
// bit 1 memo file (28), codepage byte (29), zero (30-31). The month byte is
// 0-based in both directions on purpose; correcting it on one side only
// would shift every date by a month.
//
// A DbfFile belongs to one thread at a time and takes no in-process lock.
#include <cstdint>
#include <memory>
#include <vector>

#include "tables/dbf_field.h"
#include "tables/dbf_version.h"
#include "tables/file.h"
#include "tables/file_lock.h"
#include "tables/fpt_file.h"
#include "tables/table_definition.h"
#include "values/number_types.h"
#include "values/string.h"

namespace zobase {

class Charset;
class Variant;

// The time the runtime was loaded, in units of 100 nanoseconds since
// 1970-01-01 (whole seconds times 10,000,000). Written records stamp the
// header with it, so the date in a header is the date of the process start.
int64_t runtime_load_time() noexcept;
constexpr int64_t TIME_UNITS_PER_SECOND = 10000000;

class DbfFile {
public:
    // ---- header image
    uint8_t version = 0;
    uint8_t codepage_byte = 0;
    const dbf_version_st* version_info = nullptr;
    bool has_memo = false;
    bool has_structural_cdx = false;
    uint64_t field_count = 0;
    std::vector<DbfField> fields;  // in file order, system fields included
    std::vector<DbfField*> visible_fields;
    DbfField* nullflags = nullptr;  // the _NullFlags field, if any
    uint64_t terminator_position = 0;
    uint64_t backlink_position = 0;
    uint64_t record1_position = 0;
    uint64_t header_length = 0;
    uint64_t record_length = 0;
    uint64_t nullflag_bits = 0;  // bits handed out in _NullFlags
    uint64_t max_record_count = 0;
    uint64_t record_count = 0;
    char backlink[DBF_BACKLINK_SIZE] = {};
    int64_t last_update = 0;  // 100-ns units since 1970
    char kept_header_bytes[8] = {};

    std::vector<DbfField*> memo_fields;
    std::vector<DbfField*> autoinc_fields;
    std::vector<DbfField*> system_fields;

    // ---- cursor; moved by the record layer
    bool bof = false;
    bool eof = false;
    bool appending = false;
    uint64_t recno = 0;

    // ---- read-ahead block: consecutive records from readahead_first on
    uint64_t readahead_first = 0;
    uint64_t readahead_count = 0;
    uint64_t readahead_capacity = 0;  // in records
    std::unique_ptr<char[]> readahead;

    std::unique_ptr<File> file;
    std::unique_ptr<FptFile> fpt;

    // ---- record buffers, each of the record length
    std::unique_ptr<char[]> blank_record;    // every field empty; fixed after open
    std::unique_ptr<char[]> scratch_record;  // target of fresh reads
    std::unique_ptr<char[]> saved_record;    // the record as it stands on disk
    std::unique_ptr<char[]> stored_record;   // the working record
    char* shown_record = nullptr;            // normally the stored record

    const Charset* charset = nullptr;
    const Charset* charset_nocptrans = nullptr;

    // Set while the table is busy; index expressions may run code that comes
    // back to the same table (see DbfRecursionGuard).
    bool busy = false;

    // Builds the table around a file that is open and runs the open
    // sequence. On success the table owns the file; on failure the
    // exception passes on and the file stays the caller's to close.
    static DbfFile* open(File* file);
    // Writes a new table into an empty file, then opens it again, so that
    // every created table has passed the checks of an opened one. Names the
    // table had to change are written back into the definitions. On failure
    // what was written stays on disk and the file stays the caller's.
    static DbfFile* create(File* file, createopts_st* options, fielddef_st* definitions,
                           uint64_t count);

    DbfFile() = default;
    ~DbfFile();
    DbfFile(const DbfFile&) = delete;
    DbfFile& operator=(const DbfFile&) = delete;

    // Closes the table file, then the memo file; frees nothing.
    void close();
    // Drops the field lists and clears the header image; the object can then
    // run the open sequence again.
    void free();

    void read_dbf_header();
    void write_dbf_header();
    void read_dbf_field_header(DbfField* field);
    void write_dbf_field_header(DbfField* field);
    // Sorts the fields, gives them their slots, checks the layout against the
    // header and allocates the record buffers and the read-ahead block.
    void setup_record_engine();

    // True if the backlink area names a database container.
    bool is_in_database() const noexcept { return backlink[0] != 0; }
    // A visible field by 0-based index, or null.
    const DbfField* get_field(uint64_t index) const noexcept {
        return index < visible_fields.size() ? visible_fields[index] : nullptr;
    }
    // The field's name as a string in the table's charset.
    String field_name(const DbfField* field) const;

    uint64_t record_position(uint64_t recno) const noexcept {
        return record1_position + (recno - 1) * record_length;
    }
    uint64_t append_lock_position() const noexcept { return version_info->append_lock_position(); }
    uint64_t record_lock_position(uint64_t recno) const noexcept {
        return version_info->record_lock_position(recno);
    }

    // ---- field access on the shown record, by visible 0-based index.
    // Reads raise what the field's slots raise; writes hold the recursion
    // guard and raise dbf_illegal_recursion while it is held, and every
    // access raises dbf_error_invalid_field_number past the visible fields.
    void get_variant(uint64_t index, Variant* out);
    void get_char(uint64_t index, char* out, uint64_t* length, const Charset** charset);
    uint64_t get_memo_size(uint64_t index);
    void get_old_value(uint64_t index, Variant* out);    // from the saved record
    void get_blank_value(uint64_t index, Variant* out);  // from the blank record
    void set_variant(uint64_t index, const Variant* value);
    void set_logical(uint64_t index, bool value);
    void set_integer(uint64_t index, const integer_type_st& value);
    void set_numeric(uint64_t index, const numeric_type_st& value);
    void set_money(uint64_t index, const money_type_st& value);
    void set_string(uint64_t index, const String& value);
    void set_date(uint64_t index, const date_st& value);
    void set_datetime(uint64_t index, const datetime_st& value);
    void set_null(uint64_t index);

    // ---- the same on any record buffer, without guard or index check
    void read_field(const DbfField* field, const char* record, Variant* out) {
        field->get_variant(this, field, record, out);
    }
    // Dispatches on the value's kind, a reference followed first; a kind
    // with no slot raises dbf_error_not_impl.
    void write_field(const DbfField* field, const Variant* value, char* record);

    // Reads the header again and compares the record count with what the
    // file size holds (a partial last record tolerated). Raises
    // dbf_invalid_reccount_detected.
    void check_record_count();

private:
    void create_table(const createopts_st& options, fielddef_st* definitions, uint64_t count);
    void create_memo_file(uint32_t block_size);
    void run_open_sequence();
    void read_field_descriptors();
    void open_memo_file();
    void check_layout();
    void allocate_record_buffers();
    const DbfField* visible(uint64_t index) const;
};

// Holds a table's recursion guard for a scope; raises dbf_illegal_recursion
// if it is held already. Cleared on every way out.
class DbfRecursionGuard {
public:
    explicit DbfRecursionGuard(DbfFile* table) : table_(table) {
        if (table->busy) throw dbf_illegal_recursion();
        table->busy = true;
    }
    ~DbfRecursionGuard() { table_->busy = false; }
    DbfRecursionGuard(const DbfRecursionGuard&) = delete;
    DbfRecursionGuard& operator=(const DbfRecursionGuard&) = delete;

private:
    DbfFile* table_;
};

// The append lock of a shared table: serialises appends and the next
// autoincrement values between processes. Raises
// dbf_error_lock_for_append_failed when the lock is refused.
// The release raises dbf_error_release_append_lock_failed when refused.
class DbfAppendLock
    : public ScopedFileLock<dbf_error_lock_for_append_failed, dbf_error_release_append_lock_failed> {
public:
    explicit DbfAppendLock(DbfFile* table)
        : ScopedFileLock(table->file.get(), table->append_lock_position()) {}
};

}  // namespace zobase
