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
#include <set>
#include <vector>

#include "tables/dbf_field.h"
#include "tables/dbf_version.h"
#include "tables/file.h"
#include "tables/file_lock.h"
#include "tables/fpt_file.h"
#include "tables/index.h"
#include "tables/index_file.h"
#include "tables/table_definition.h"
#include "values/number_types.h"
#include "values/string.h"

namespace zobase {

class Charset;
class DbfFile;
class Index;
class IndexFile;
class Variant;
class VmStack;
struct compiler_table_context_st;
struct index_cursor_st;
struct internal_indexdef_st;

// How go() reads a record; a set of bits.
enum Readahead : unsigned {
    READAHEAD_DROP = 1,    // empty the read-ahead block first
    READAHEAD_DIRECT = 2,  // read straight into the target
    READAHEAD_BLOCK = 4,   // read through the read-ahead block
};

// The order the cursor moves in. Without an index it is file order; the
// index layer selects an Index and sets the four moves, which walk the tag
// backwards in a descending order: next always heads for the end of the
// order, where eof is set.
struct dbf_order_st {
    Index* index = nullptr;
    bool descending = false;
    void (DbfFile::*to_top)() = nullptr;
    void (DbfFile::*next)() = nullptr;
    void (DbfFile::*previous)() = nullptr;
    void (DbfFile::*to_bottom)() = nullptr;
};

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

    // ---- records appended to an unshared table that are not on disk yet.
    // Nobody else can read such a file, so whole runs of appended records go
    // out in one write, followed by the header: the header on disk counts
    // stored_count records, every one of them fully written, and records
    // stored_count + 1 to record_count live in `pending`. A shared table
    // writes each record and then its header at once (stored_count unused).
    uint64_t stored_count = 0;
    uint64_t pending_capacity = 0;  // in records; 0: the table writes through
    std::unique_ptr<char[]> pending;
    bool descriptors_dirty = false;  // autoincrement values wait for the flush

    dbf_order_st order;
    // ---- indexes (dbf_indexes.cpp): the structural CDX, its directory and
    // its tags in directory order, and the position of the order in its tag.
    std::unique_ptr<IndexFile> cdx;
    std::unique_ptr<Index> directory;
    std::vector<std::unique_ptr<Index>> tags;
    std::unique_ptr<index_cursor_st> order_cursor;
    // A write moves the order's record to its new key; the cursor is found
    // there again only when something reads it (settle_order), so that a
    // run of appends does not seek after each.
    bool order_unsettled = false;
    uint32_t unsettled_record = 0;
    char unsettled_key[MAX_KEY_LENGTH] = {};
    // The fields that key and filter expressions read, by the table object.
    const compiler_table_context_st* expression_fields = nullptr;
    // The records this object holds locked, in a shared writable table.
    std::set<uint64_t> locked_records;
    // A transaction holds the append lock from its first append to its end.
    bool append_lock_held = false;

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

    // Writes what is pending, then closes the table file and the memo file;
    // frees nothing.
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

    // ---- the cursor (dbf_cursor.cpp). Movements never write: a changed
    // record left without update() loses its changes.

    // Record `number` into `target` as the Readahead bits say. False when
    // the file holds no such record (nothing, or the end-of-file byte);
    // raises dbf_error_file_corruption for a partial record.
    bool go(uint64_t number, char* target, unsigned bits);
    void go_top();
    void go_bottom();
    void go_next();
    void go_prev();
    void go_eof();
    // To a record by number; with an order, the order's position follows.
    void go_to(VmStack* stack, uint64_t number);
    void go_to_in_file(uint64_t number);
    void go_top_in_file();
    void go_next_in_file();
    // The moves of an index order; the index layer builds them. While no
    // index is selected they raise dbf_error_no_index_selected.
    void go_to_in_index(VmStack* stack);
    void go_top_in_index();
    void go_next_in_index();
    void go_prev_in_index();
    void go_bottom_in_index();
    // Overwrites record `number` in the read-ahead block, if the block holds it.
    void update_buffer(uint64_t number, const char* record);
    // In shared mode, reads the header for the current record count.
    uint64_t reccount();
    void refresh_dbf_header();
    bool deleted() const noexcept { return shown_record[0] != ' '; }

    // ---- changing records (dbf_update.cpp)

    // A blank record to be appended by the next update().
    void begin_append();
    // Writes the shown record when it differs from the saved one, or when it
    // is being appended: the record, then its index keys, then the header.
    void update(VmStack* stack);
    void update_keys(VmStack* stack);
    void write_record();
    // The shown record takes the saved one; an append is dropped.
    void revert();
    // After taking a record lock in shared mode: what another process wrote
    // to fields this one has not changed is taken over.
    void refresh();
    void delete_record();
    void recall_record();
    // Writes the pending appended records and then the header.
    void flush();
    // What a rolled back transaction puts back: a record as it stood, and
    // the record count before its appends, the file cut after it.
    void restore_record(uint64_t number, const char* record);
    void truncate_records(uint64_t count);

    // ---- locks (dbf_locks.cpp); only a shared writable table takes them.
    bool lock();
    bool unlock_record();
    bool internal_lock();
    bool internal_unlock();
    void unlock_all_records();
    bool isrlocked(uint64_t number) const { return locked_records.count(number) != 0; }
    // Releases the lock of one record by number, wherever the cursor stands.
    bool unlock_record_number(uint64_t number);
    // The append lock for longer than one append (see DbfAppendLock).
    void hold_append_lock();
    void release_append_lock();
    // The locks of the index files, in their order; none while the table
    // has no index file.
    void lock_indizes();
    void unlock_indizes();

    // ---- indexes (dbf_indexes.cpp). Key and filter expressions run on the
    // shown record, with this table's object current for the expressions.
    void create_compound_auto_open_index_file(VmStack* stack);
    void open_compound_auto_open_index_file(VmStack* stack);
    void create_index_tag(VmStack* stack, const createopts_st* options, const internal_indexdef_st* definition);
    // Needs exclusive use (dbf_error_need_exclusive_access).
    void delete_index_tag(const String& name);
    void delete_all_index_tags();
    // Builds every tag again from the records.
    void reindex(VmStack* stack);
    // Null for an unknown name.
    Index* find_tag(const String& name) const;
    // Direction 0 is the tag's own, 1 ascending, 2 descending.
    void select_index(VmStack* stack, const String& name, int direction);
    // By number from 1; 0 selects file order.
    void select_index(VmStack* stack, uint64_t number, int direction);
    void unselect_index();
    // The order's key of the shown record; the bytes written.
    uint64_t eval_key(VmStack* stack, char* out, uint64_t length) const;
    // Positions on the key (see Index::seek) and reads its record, or goes
    // to the end of the file. True when the cursor stands on a key.
    bool seek(const char* key, uint64_t length, unsigned range, int direction);
    // The key the order stands on, null when it stands on none.
    const char* current_key();
    // The order's cursor onto the record written last, if it is not there yet.
    void settle_order();
    // Where the cursor stands in the order, from 0 at its first record to 1
    // at its end (index_position.cpp).
    double index_position();

private:
    bool shared_writable() const noexcept { return file->is_shared() && file->is_writable(); }
    bool in_pending(uint64_t number) const noexcept {
        return pending_capacity && number > stored_count && number <= record_count;
    }
    char* pending_record(uint64_t number) const noexcept {
        return pending.get() + (number - stored_count - 1) * record_length;
    }
    void show_blank();
    void go_last_in_file();
    void append_record(VmStack* stack);
    void rewrite_record(VmStack* stack);
    void take_next_values();
    void move_next_values_past_new_ones();
    void store_descriptor(DbfField* field);
    void write_header_after_append();
    void create_table(const createopts_st& options, fielddef_st* definitions, uint64_t count);
    void create_memo_file(uint32_t block_size);
    void run_open_sequence();
    void setup_pending_appends();
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

// Holds the locks of all index files of a table for a scope, in their
// order: the structural file first, then the file of each tag by name.
class LockAllIndizes {
public:
    explicit LockAllIndizes(DbfFile* table) : table_(table) {
        table->lock_indizes();
        locked_ = true;
    }
    ~LockAllIndizes() {
        if (locked_) table_->unlock_indizes();
    }
    LockAllIndizes(const LockAllIndizes&) = delete;
    LockAllIndizes& operator=(const LockAllIndizes&) = delete;

private:
    DbfFile* table_;
    bool locked_ = false;
};

// The append lock of a shared table: serialises appends and the next
// autoincrement values between processes. Raises
// dbf_error_lock_for_append_failed when the lock is refused.
// The release raises dbf_error_release_append_lock_failed when refused.
// While a transaction holds the lock for its whole length, this takes nothing.
class DbfAppendLock
    : public ScopedFileLock<dbf_error_lock_for_append_failed, dbf_error_release_append_lock_failed> {
public:
    explicit DbfAppendLock(DbfFile* table)
        : ScopedFileLock(table->append_lock_held ? nullptr : table->file.get(), table->append_lock_position()) {}
};

}  // namespace zobase
