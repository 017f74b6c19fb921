#pragma once
// A work area over a DBF table. Every operation translates the engine's
// dbf_ and file_ exceptions into numbered errors by its own list (see
// table_errors.h); nothing else in the system does.
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tables/dbf_file.h"
#include "tables/object_holder.h"
#include "tables/table_definition.h"
#include "tables/table_object.h"

namespace zobase {

class Table_Object_ZoDbf final : public Table_Object {
public:
    // Opens a table file; a name without extension gets ".dbf". Error 1 for a
    // missing file; the engine's failures by the list of `use`.
    static ObjectHolder<Table_Object> use(VmStack* stack, const String& name, bool shared, bool read_only);
    // Creates a table, unshared, or a cursor in memory when the options say
    // temporary (its name may then have no folder and no extension: error
    // 11). A table that failed half way is removed with its memo file.
    static ObjectHolder<Table_Object> create(VmStack* stack, const String& name, const createopts_st* options,
                                             fielddef_st* fields, uint64_t count);

    Table_Object_ZoDbf(Class* object_class, std::unique_ptr<DbfFile> table);
    ~Table_Object_ZoDbf() override;

    DbfFile* file() const noexcept { return table_.get(); }

    void get_field(VmStack* stack, uint64_t index, Variant* out) override;
    void get_old_value(VmStack* stack, uint64_t index, Variant* out) override;
    void get_blank(VmStack* stack, uint64_t index, Variant* out) override;
    void get_chars(uint64_t index, char* out, uint64_t* length, const Charset** charset) override;
    uint64_t get_memo_size(uint64_t index) override;
    uint64_t cnt_fields() const override { return table_->visible_fields.size(); }
    table_field_info_st get_field_info(uint64_t index) const override;
    bool deleted() override { return table_->deleted(); }
    void set_field_null(uint64_t index) override;
    void set_field_integer(uint64_t index, integer_type_st value) override;
    void set_field_numeric(uint64_t index, numeric_type_st value) override;
    void set_field_bool(uint64_t index, bool value) override;
    void set_field_string(uint64_t index, const String& value) override;
    void set_field_datetime(uint64_t index, datetime_st value) override;
    void set_field_date(uint64_t index, date_st value) override;
    void set_field_money(uint64_t index, money_type_st value) override;
    void set_field_readonly(uint64_t index, bool readonly) override;
    void go(VmStack* stack, uint64_t number) override;
    void movetoeof() override;
    bool bof_lowlevel() override { return table_->bof; }
    bool eof_lowlevel() override { return table_->eof; }
    void movefirst_lowlevel(VmStack* stack) override;
    void movenext_lowlevel(VmStack* stack) override;
    void moveprevious_lowlevel(VmStack* stack) override;
    void movelast_lowlevel(VmStack* stack) override;
    bool lock_lowlevel() override;
    bool isrlocked(uint64_t number) override { return table_->isrlocked(number); }
    bool isrlocked() override { return table_->isrlocked(table_->recno); }
    bool unlock() override;
    void unlock_all() override;
    void begin_append() override;
    void delete_record() override;
    void recall_record() override;
    uint64_t recno() override { return table_->recno; }
    uint64_t reccount() override;
    int32_t last_modified_yyyymmdd() override;
    String filename() const override { return table_->file->name; }
    int32_t get_version() const override { return table_->version; }
    int32_t codepage() const override;
    bool is_shared() const override { return table_->file->is_shared(); }
    bool is_temporary() const override { return table_->file->is_temporary(); }
    uint64_t file_size() override;
    int64_t created_time() override { return table_->file->created_time(); }
    int64_t modified_time() override;
    bool is_read_only() const override { return !table_->file->is_writable(); }
    void update(VmStack* stack) override;
    void revert() override { table_->revert(); }
    void close() override;
    // ---- indexes (table_object_index.cpp)
    void create_index(VmStack* stack, const internal_indexdef_st& definition) override;
    void select_index_tag(VmStack* stack, const String& name, int direction) override;
    void select_index(VmStack* stack, uint64_t number, int direction) override;
    void drop_index(const String& name) override;
    void drop_all_indizes() override;
    void reindex(VmStack* stack) override;
    uint64_t cnt_indizes() override { return table_->tags.size(); }
    bool get_index_info(uint64_t number, table_index_info_st* out) override;
    uint64_t current_index() override;
    bool descending() override { return table_->order.index && table_->order.descending; }
    int get_index_dir() override;
    uint64_t create_index_key(VmStack* stack, const Variant* value, bool full_length, char* out) override;
    const char* get_index_key() override;
    uint64_t get_index_key_length() override;
    uint64_t eval_index_key(VmStack* stack, char* out) override;
    double get_index_pos() override;
    bool seek_lowlevel(VmStack* stack, const char* key, uint64_t length, unsigned range, int direction) override;
    // Opens the structural index file with the table.
    void open_indexes(VmStack* stack);
    // ---- structure changes (table_rewrite.cpp)
    void pack(VmStack* stack) override;
    void zap(VmStack* stack) override;
    void copyto(VmStack* stack, const String& name, const copy_to_st& options) override;
    void alter(VmStack* stack, std::vector<fielddef_st> fields, const std::vector<int64_t>& sources) override;

    void begin_transaction() override;
    void end_transaction() override;
    void rollback_transaction(VmStack* stack) override;

private:
    // What a transaction keeps to undo its writes.
    struct journal_st {
        std::map<uint64_t, std::string> before;  // records as they stood, by number
        std::set<uint64_t> locked;               // record locks the transaction took
        bool appended = false;
        uint64_t count = 0;                      // the record count before the first append
    };
    // Notes what the coming update changes.
    void journal_update();
    // Error 110 unless the table is open exclusively, 111 when it is open
    // read-only; a cursor in memory is not rewritten (1001).
    void require_exclusive() const;
    // Writes the records `next_record` gives into a new table at `target`,
    // with its memo file and, when asked, its tags built anew; on failure
    // nothing of it stays.
    void write_copy(VmStack* stack, const std::filesystem::path& target, bool with_tags,
                    const std::function<bool(char*)>& next_record);
    void rebuild_copied_tags(VmStack* stack, const std::filesystem::path& copy);
    // Writes a new table of `fields` at `target`: a record for each that
    // `next` stands on, each column filled from the field at the position
    // `sources` gives (-1: blank), deleted marks kept. The caller removes
    // it on failure.
    void copy_columns(VmStack* stack, const std::filesystem::path& copy, const copy_to_st& options,
                      const std::function<bool()>& next);
    void write_columns(VmStack* stack, const std::filesystem::path& target, std::vector<fielddef_st> fields,
                       const std::vector<int64_t>& sources, const std::function<bool()>& next);
    // The table replaced by a copy of the records `next_record` gives.
    void rewrite(VmStack* stack, const std::function<bool(char*)>& next_record);
    void release_journal_locks();

    std::unique_ptr<DbfFile> table_;
    std::unique_ptr<journal_st> journal_;
    bool closed_ = false;
};

}  // namespace zobase
