#pragma once
// A data session: the work areas a running program sees, numbered from 1 to
// 32767, their aliases, the current work area, and the settings the session
// holds (SET EXACT, SET DELETED, SET EXCLUSIVE and their kin). An object of
// the built-in class "Session"; its read-only property DataSessionId tells
// its id. CREATEOBJECT("Session") makes a new session of the running stack,
// which SET DATASESSION TO its id then selects; it closes its work areas
// when its last reference goes.
#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>

#include "objects/class.h"
#include "tables/object_holder.h"
#include "tables/table_definition.h"
#include "tables/table_object.h"
#include "values/string.h"
#include "vm/object.h"
#include "vm/session_settings.h"

namespace zobase {

class Symtable;
class TableDataSessions;
struct session_registry_st;

constexpr int32_t MAX_WORK_AREA = 32767;

extern const builtin_class_data_st session_class_data;
extern const library_class_member_row_st session_members[];
constexpr const char* SESSION_CLASS_NAME = "Session";

class DataSession_Object : public Object {
public:
    DataSession_Object(Class* object_class, TableDataSessions* owner, std::shared_ptr<session_registry_st> registry,
                       int32_t id);
    ~DataSession_Object() override;

    const int32_t id;
    // The stack's sessions while they exist and this session is theirs;
    // null once either is gone. Changed only under the registry's lock.
    TableDataSessions* owner;
    session_settings_st settings;

    int32_t current_area() const noexcept { return current_; }
    // The table of the current work area, or null.
    Table_Object* current_table() const noexcept { return current_table_; }
    Table_Object* table_at(int32_t area) const;

    // Makes a work area current, used or not; 0 selects the lowest free one
    // (0 itself when none is free). Returns the number now current.
    int32_t select(int32_t area);
    // The work area a value names: an alias (error 13 when unknown) or a
    // number, 0 standing for the lowest free one; above 32767 error 17.
    // Selects nothing.
    int32_t select(VmStack* stack, const Variant* value);
    bool resolve(const String& alias, Symtable* symbols, int32_t* area) const;
    bool resolve(VmStack* stack, const Variant* value, int32_t* area) const;
    bool resolve_symbol(uint32_t alias, int32_t* area) const {
        auto found = aliases_.find(alias);
        if (found == aliases_.end()) return false;
        *area = found->second;
        return true;
    }
    // Error 17 outside 1 to 32767.
    bool used(int32_t area) const;
    // The table of an alias or a work area number, or null.
    Table_Object* select_file(VmStack* stack, const Variant* value);
    // Puts a table in a work area under an alias: error 24 for an alias in
    // use, 3 for a work area in use or, unless `again`, a file open in
    // another work area.
    void assign(const ObjectHolder<Table_Object>& table, Symtable* symbols, const String& alias, int32_t area,
                bool again);
    // Closes one work area: its alias goes, and the table with its last reference.
    void close(VmStack* stack, int32_t area);
    // A new table in the current work area, under the name's stem as alias.
    void create(VmStack* stack, const String& name, const createopts_st* options, fielddef_st* fields,
                uint64_t count);
    // Closes every work area.
    void close_all(VmStack* stack);
    // The last reference went: the work areas close.
    void destroy(VmStack* stack) override;
    // The work areas in use, by number.
    const std::map<int32_t, ObjectHolder<Table_Object>>& work_areas() const noexcept { return work_areas_; }

    // BEGIN TRANSACTION, END TRANSACTION and ROLLBACK over every work area of
    // the session, those opened meanwhile included. Transactions do not nest.
    bool in_transaction() const noexcept { return in_transaction_; }
    void begin_transaction();
    void end_transaction();
    void rollback(VmStack* stack);

    static void datasessionid_access(VmStack* stack, unsigned long long argc, Variant* result);

private:
    // Every change of the current table or of the aliases goes through here.
    void work_areas_changed() noexcept;
    // Leaves the stack's list of sessions: the last reference may go on
    // another thread than the stack's, which goes on using its list.
    void leave_owner() noexcept;

    std::shared_ptr<session_registry_st> registry_;
    int32_t current_ = 1;
    bool in_transaction_ = false;
    Table_Object* current_table_ = nullptr;
    std::map<int32_t, ObjectHolder<Table_Object>> work_areas_;
    std::unordered_map<uint32_t, int32_t> aliases_;  // alias symbol to work area
};

// The alias a table gets from its file name: the name without folder and
// extension.
String alias_of_file(const String& name);

}  // namespace zobase
