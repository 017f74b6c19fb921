#pragma once
// A work area: one open table as the language sees it, an object of the
// class "File". Table_Object holds what does not depend on the file format:
// the field names as symbols, the filter, the state of LOCATE, and the moves
// that skip what SET DELETED and the filter hide. Table_Object_ZoDbf
// (table_object_zodbf.h) wraps a DbfFile and is the one place where the
// engine's dbf_ and file_ exceptions become numbered errors.
//
// Writes to fields change the record buffer only; the command that wrote
// calls commit() afterwards. Without buffering (the default) that writes the
// record at once; with row buffering the record is written before the
// cursor next moves, and when the work area closes.
#include <cstdint>
#include <memory>
#include <vector>

#include "objects/class.h"
#include "tables/table_definition.h"
#include "values/string.h"
#include "values/variant.h"
#include "vm/object.h"
#include "vm/program.h"
#include "vm/table_context.h"

namespace zobase {

// The records a command takes: its scope, and its FOR and WHILE conditions
// as source text (empty: none).
enum RecordScopeKind : uint8_t { SCOPE_ALL, SCOPE_REST, SCOPE_NEXT, SCOPE_RECORD };
struct record_scope_st {
    RecordScopeKind kind = SCOPE_ALL;
    uint64_t count = 0;  // NEXT's count of records, RECORD's record number
    String for_condition;
    String while_condition;
};

// COPY TO's clauses besides the file name.
struct copy_to_st {
    record_scope_st scope;
    bool with_tags = false;
    // FIELDS: the copy's columns, each filled from the field at the position
    // `sources` gives. Empty: every field, the records copied as they are.
    std::vector<fielddef_st> fields;
    std::vector<uint64_t> sources;
};

class Charset;

// The longest key a scope bound holds.
constexpr uint64_t MAX_SCOPE_KEY = 256;
class VmStack;
struct internal_indexdef_st;

// What ataginfo() and the order functions tell of a tag.
struct table_index_info_st {
    String name;
    String key_expression;
    String filter_expression;
    String collation;
    bool unique = false;
    bool descending = false;
    bool binary = false;
};

// Buffering modes of cursorsetprop("Buffering").
enum TableBuffering : int32_t {
    BUFFERING_NONE = 1,        // every write is committed at once
    BUFFERING_ROW = 3,         // a changed record is committed when the cursor leaves it
};

// What afields() and DISPLAY STRUCTURE tell of a field.
struct table_field_info_st {
    String name;
    char letter;
    int32_t type;  // FieldTypeNumber
    uint64_t width;
    uint64_t decimals;
    bool nullable;
    bool binary;
    bool autoincrement;
    uint64_t next_value;
    uint64_t step;
};

// Field positions by symbol, looked up for every bare name a program reads:
// open addressing over a power-of-two table. Symbol 0 marks a free slot.
class FieldSymbolMap {
public:
    void insert(uint32_t symbol, uint16_t index);
    int find(uint32_t symbol) const noexcept {
        if (slots_.empty()) return -1;
        for (size_t i = hash(symbol) & mask_;; i = (i + 1) & mask_) {
            if (slots_[i].symbol == symbol) return slots_[i].index;
            if (slots_[i].symbol == 0) return -1;
        }
    }

private:
    struct slot_st {
        uint32_t symbol;
        uint16_t index;
    };
    static size_t hash(uint32_t symbol) noexcept { return (symbol * 0x9E3779B1u) >> 7; }
    void grow();

    std::vector<slot_st> slots_;
    size_t mask_ = 0;
    size_t count_ = 0;
};

// The class of work areas as the language sees them: abstract, since only
// USE and CREATE make one; its instances show their fields as properties.
extern const builtin_class_data_st table_class_data;
constexpr const char* TABLE_CLASS_NAME = "File";

class Table_Object : public Object {
public:
    explicit Table_Object(Class* object_class) : Object(object_class) {}
    ~Table_Object() override;

    // ---- the language's protocol: every field is a public property that
    // reads the current record and writes it as REPLACE does; the members of
    // the class come after the fields. A field is found here without the
    // member look-up, since programs read fields in their inner loops.
    void virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    // An unknown name is 12 here, as in REPLACE.
    void virtual_assign(VmStack* stack, unsigned symbol, size_t argc) override;

    // ---- field names: position from 0 to symbol and back
    int get_field_by_symbol_id(uint32_t symbol) const { return field_by_symbol_.find(symbol); }
    // The field of a name as REPLACE gives it; error 12 when there is none.
    // The names a program repeats are found again without hashing their text.
    uint64_t field_by_name(VmStack* stack, const String& name);
    uint32_t get_symbol_id_by_field(uint64_t index) const { return symbol_by_field_.at(index); }
    const compiler_table_context_st& expression_fields() const noexcept { return expression_fields_; }

    // ---- moves that skip records out of range
    void movefirst(VmStack* stack);
    void movelast(VmStack* stack);
    // Error 4 when already at the end; the move that reaches it is no error.
    void movenext(VmStack* stack, uint64_t count);
    // Error 38 when already at the beginning.
    void moveprevious(VmStack* stack, uint64_t count);
    // Also true when the order's key has left the scope towards that end.
    bool bof();
    bool eof();
    // Not deleted while SET DELETED is on, inside the scope, and passing
    // the filter.
    bool record_in_range(VmStack* stack);
    // To a record by number (GO); the record need not be in range.
    void go_record(VmStack* stack, uint64_t number);
    // APPEND BLANK: a blank record at the end, committed as a write is.
    void append_blank(VmStack* stack);

    // ---- walking a scope: each next() stands on the following record that
    // the scope takes and FOR accepts, in the work area's order; false once
    // the scope ends or WHILE fails (1127 for a condition not logical).
    class ScopeWalk {
    public:
        ScopeWalk(VmStack* stack, Table_Object* table, const record_scope_st& scope);
        bool next();

    private:
        bool holds(const std::unique_ptr<Program>& condition);
        VmStack* stack_;
        Table_Object* table_;
        const record_scope_st& scope_;
        std::unique_ptr<Program> for_;
        std::unique_ptr<Program> while_;
        bool started_ = false;
        bool done_ = false;
        uint64_t taken_ = 0;  // records of the scope passed so far, FOR or not
    };
    // ---- the scope: the keys of the order that the moves keep to, as a
    // low and a high bound compared over their own length (a shorter key
    // bounds by its prefix). SEEK_FORWARD names the low bound, SEEK_BACKWARD
    // the high one; range bit 0 set takes the bound itself in. A new order
    // clears the scope.
    void set_scope(int bound, const char* key, uint64_t length, unsigned range);
    void clear_scope() noexcept { low_.set = high_.set = false; }
    struct scope_st {
        bool set = false;
        unsigned range = 0;
        uint64_t length = 0;
        char key[MAX_SCOPE_KEY];
    };
    struct scopes_st {
        scope_st low, high;
    };
    scopes_st scopes() const { return {low_, high_}; }
    void restore_scopes(const scopes_st& saved) {
        low_ = saved.low;
        high_ = saved.high;
    }

    // ---- LOCATE and CONTINUE
    bool found = false;
    void locate_for(VmStack* stack, const String& condition, bool rest);
    void locate_for_while(VmStack* stack, const String& condition, const String& while_condition, bool rest);
    void locate_continue(VmStack* stack);

    // ---- the filter: compiled for this table, evaluated on every move
    void set_filter_to(VmStack* stack, const String& condition);
    void set_filter_to();
    const String& filter_text() const noexcept { return filter_text_; }

    // ---- writing fields; commit() after the command
    void set_field(VmStack* stack, uint64_t index, const Variant* value);
    // Error 12 for a symbol that names no field.
    void set_field_by_symbol(VmStack* stack, uint32_t symbol, const Variant* value);
    void commit(VmStack* stack);
    // Before the cursor moves: a record changed under row buffering is written.
    void leave_record(VmStack* stack);
    int32_t buffering = BUFFERING_NONE;

    // ---- the format's operations
    virtual void get_field(VmStack* stack, uint64_t index, Variant* out) = 0;
    virtual void get_old_value(VmStack* stack, uint64_t index, Variant* out) = 0;
    virtual void get_blank(VmStack* stack, uint64_t index, Variant* out) = 0;
    // The value as text in *charset (the table's when null), which then
    // tells the charset written. *length holds the room and becomes the
    // bytes written; a value that does not fit is error 9902.
    virtual void get_chars(uint64_t index, char* out, uint64_t* length, const Charset** charset) = 0;
    // The bytes of a memo body; error 9902 for a field without one.
    virtual uint64_t get_memo_size(uint64_t index) = 0;
    virtual uint64_t cnt_fields() const = 0;
    virtual table_field_info_st get_field_info(uint64_t index) const = 0;
    // The field as a definition CREATE TABLE takes: widths of C and V in
    // characters, the autoincrement values as they stand.
    fielddef_st get_field_definition(uint64_t index) const;
    virtual bool deleted() = 0;
    virtual void set_field_null(uint64_t index) = 0;
    virtual void set_field_integer(uint64_t index, integer_type_st value) = 0;
    virtual void set_field_numeric(uint64_t index, numeric_type_st value) = 0;
    virtual void set_field_bool(uint64_t index, bool value) = 0;
    virtual void set_field_string(uint64_t index, const String& value) = 0;
    virtual void set_field_datetime(uint64_t index, datetime_st value) = 0;
    virtual void set_field_date(uint64_t index, date_st value) = 0;
    virtual void set_field_money(uint64_t index, money_type_st value) = 0;
    // A read-only field refuses every write (2088 for numbers, 107 for the
    // rest); autoincrement fields start read-only.
    virtual void set_field_readonly(uint64_t index, bool readonly) = 0;
    virtual void go(VmStack* stack, uint64_t number) = 0;
    virtual void movetoeof() = 0;
    virtual bool bof_lowlevel() = 0;
    virtual bool eof_lowlevel() = 0;
    virtual void movefirst_lowlevel(VmStack* stack) = 0;
    virtual void movenext_lowlevel(VmStack* stack) = 0;
    virtual void moveprevious_lowlevel(VmStack* stack) = 0;
    virtual void movelast_lowlevel(VmStack* stack) = 0;
    virtual bool lock_lowlevel() = 0;
    virtual bool isrlocked(uint64_t number) = 0;
    virtual bool isrlocked() = 0;
    virtual bool unlock() = 0;
    virtual void unlock_all() = 0;
    virtual void begin_append() = 0;
    virtual void delete_record() = 0;
    virtual void recall_record() = 0;
    virtual uint64_t recno() = 0;
    virtual uint64_t reccount() = 0;
    virtual int32_t last_modified_yyyymmdd() = 0;
    virtual String filename() const = 0;
    virtual int32_t get_version() const = 0;
    virtual int32_t codepage() const = 0;
    virtual bool is_shared() const = 0;
    virtual bool is_temporary() const = 0;
    // The table file: its size in bytes with every appended record written,
    // and its times of creation and last change in seconds since 1970 (0
    // when the file system does not tell).
    virtual uint64_t file_size() = 0;
    virtual int64_t created_time() = 0;
    virtual int64_t modified_time() = 0;
    // Opened NOUPDATE: nothing may be written.
    virtual bool is_read_only() const = 0;
    virtual void update(VmStack* stack) = 0;
    virtual void revert() = 0;
    // Writes what is pending and closes the files; the object stays, closed.
    virtual void close() = 0;

    // ---- indexes (table_object_index.cpp). An order walks the table by a
    // tag; SEEK looks a key up in it.
    virtual void create_index(VmStack* stack, const internal_indexdef_st& definition) = 0;
    // Direction 0 is the tag's own, 1 ascending, 2 descending.
    virtual void select_index_tag(VmStack* stack, const String& name, int direction) = 0;
    // By number from 1; 0 is file order.
    virtual void select_index(VmStack* stack, uint64_t number, int direction) = 0;
    virtual void drop_index(const String& name) = 0;
    virtual void drop_all_indizes() = 0;
    virtual void reindex(VmStack* stack) = 0;
    virtual uint64_t cnt_indizes() = 0;
    // By number from 1; false past the last tag.
    virtual bool get_index_info(uint64_t number, table_index_info_st* out) = 0;
    // The number of the order's tag; 0 in file order.
    virtual uint64_t current_index() = 0;
    virtual bool descending() = 0;
    // 1 ascending, 2 descending; error 26 without an order.
    virtual int get_index_dir() = 0;
    // The order's key of a value: full length, or a search key as long as
    // the value makes it. Error 26 without an order, 11 for a value of
    // another kind.
    virtual uint64_t create_index_key(VmStack* stack, const Variant* value, bool full_length, char* out) = 0;
    // The key the order stands on; null when it stands on none.
    virtual const char* get_index_key() = 0;
    // The byte length of the order's keys; error 26 without an order.
    virtual uint64_t get_index_key_length() = 0;
    // The order's key of the current record, into MAX_KEY_LENGTH bytes;
    // error 26 without an order.
    virtual uint64_t eval_index_key(VmStack* stack, char* out) = 0;
    // Where the cursor stands in the order: 0 at its first record, 1 at its
    // end. Error 26 without an order.
    virtual double get_index_pos() = 0;
    // Positions on the key as the range and direction say (see Index::seek).
    virtual bool seek_lowlevel(VmStack* stack, const char* key, uint64_t length, unsigned range, int direction) = 0;
    // SEEK: the first record in range whose key begins with (or, for an
    // exact key, equals) the value's. Sets `found`; without it the cursor
    // goes to the end, unless `near` leaves it on the next greater key.
    bool seek(VmStack* stack, const Variant* value, int key_option, unsigned range, int direction, bool near);
    bool seek(VmStack* stack, const char* key, uint64_t length, unsigned range, int direction, bool near);

    // ---- structure changes; PACK and ZAP need the table open exclusively
    // (error 110). COPY TO writes the records of the scope, in the order of
    // the work area, to a table that must not exist yet (error 7); the
    // cursor ends where it stood.
    virtual void pack(VmStack* stack) = 0;
    virtual void zap(VmStack* stack) = 0;
    virtual void copyto(VmStack* stack, const String& name, const copy_to_st& options) = 0;
    // ALTER TABLE: the table rewritten with `fields`, each filled from the
    // old field whose position `sources` gives (-1: blank), and its tags
    // built anew (error 1531 naming a tag whose expression no longer
    // compiles). The object is closed afterwards; the caller opens the
    // table again.
    virtual void alter(VmStack* stack, std::vector<fielddef_st> fields, const std::vector<int64_t>& sources) = 0;

    // ---- transactions of the data session (BEGIN TRANSACTION). Records are
    // written as ever, but each first keeps the record as it stood and stays
    // locked, and the first append holds the append lock, until the end.
    virtual void begin_transaction() = 0;
    // Releases what the transaction locked.
    virtual void end_transaction() = 0;
    // Puts every record back as it stood and drops the appended ones.
    virtual void rollback_transaction(VmStack* stack) = 0;

    // The alias its work area knows it by.
    String alias;
    const Charset* charset = nullptr;

protected:
    // Enters every visible field under the symbol of its name, and shows
    // the fields as members.
    void internal_open(VmStack* stack);

private:
    // The program's value on this table's record, with its fields first.
    void evaluate(VmStack* stack, const Program* program, Variant* result);
    // Runs the FOR condition (and WHILE) from the current record on.
    void locate_continue_for(VmStack* stack);
    bool locate_stops_here(VmStack* stack);
    std::unique_ptr<Program> compile(VmStack* stack, const String& text);
    void add_field_member(const String& name, uint32_t symbol, uint64_t index);
    static void field_member_access(VmStack* stack, unsigned long long argc, Variant* ret);
    static void field_member_assign(VmStack* stack, unsigned long long argc);
    void publish_field_members();

    // Whether the order's current key lies below the low bound (or above
    // the high one); false off any key.
    bool below_scope();
    bool above_scope();
    // Most walks have no scope; they don't ask the order's direction.
    bool scoped() const noexcept { return low_.set || high_.set; }
    bool before_scope() { return scoped() && (descending() ? above_scope() : below_scope()); }
    bool after_scope() { return scoped() && (descending() ? below_scope() : above_scope()); }
    void end_outside_scope();
    scope_st low_, high_;

    FieldSymbolMap field_by_symbol_;
    struct named_field_st {
        String name;
        uint64_t index;
    };
    std::vector<named_field_st> named_fields_;
    size_t next_named_field_ = 0;
    std::vector<uint32_t> symbol_by_field_;
    compiler_table_context_st expression_fields_;
    std::unique_ptr<Program> filter_;
    String filter_text_;
    std::unique_ptr<Program> locate_for_;
    std::unique_ptr<Program> locate_while_;
    // The fields as members, before the class's own; what `tables` shows.
    std::vector<std::unique_ptr<ClassMember>> field_members_;
    member_tables_st field_tables_;
};

}  // namespace zobase
