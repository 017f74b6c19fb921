#pragma once
// The data sessions of one stack, behind the VM's door (vm/data_sessions.h):
// session 1, made with the stack, and every session made on it since; the
// current one; and the table whose filter or FOR expression is running,
// whose fields a bare name reads first. The runtime installs one on every
// stack it makes.
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "tables/data_session.h"
#include "tables/object_holder.h"
#include "vm/data_sessions.h"

namespace zobase {

class Table_Object;

// The sessions made on one stack that still live, by id, not counted: the
// stack and its sessions share it, since a session's last reference may go
// on another thread, or after the stack's sessions are gone.
struct session_registry_st {
    std::mutex mutex;
    std::map<int32_t, DataSession_Object*> sessions;
};

class TableDataSessions final : public DataSessions {
public:
    explicit TableDataSessions(VmStack* stack);
    ~TableDataSessions() override;

    VmStack* stack() const noexcept { return stack_; }

    DataSession_Object& current() const noexcept { return *current_.get(); }
    int32_t session_id() const override { return current_->id; }

    // SET DATASESSION TO id: error 1540 when this stack has no such session.
    void select_session(int32_t id);
    // A new session of this stack, as a value of the language, into a clean dest.
    void create_session(Variant* dest);
    // A new session of this stack, not yet referenced, for CREATEOBJECT.
    DataSession_Object* new_session(Class* session_class);

    // The table whose filter, FOR clause or index expression is running.
    Table_Object* expression_table() const noexcept { return expression_table_; }
    void set_expression_table(Table_Object* table) noexcept {
        expression_table_ = table;
        fields_changed();
    }
    // A session's work areas tell: a table opened, closed or selected.
    void work_areas_changed() noexcept { fields_changed(); }

    bool find_field(VmStack* stack, uint32_t symbol, field_ref_st* out) override;
    void read_field(VmStack* stack, const field_ref_st& field, Variant* dest) override;
    void write_field(VmStack* stack, const field_ref_st& field, const Variant& value) override;
    bool find_work_area(VmStack* stack, uint32_t alias, Variant* dest) override;
    void read_expression_field(VmStack* stack, uint16_t index, Variant* dest) override;
    void close_work_areas(VmStack* stack) override;

private:
    void make_current(const ObjectHolder<DataSession_Object>& session);
    // References to the sessions still alive, taken under the lock, so
    // that their work areas can close outside it.
    std::vector<ObjectHolder<DataSession_Object>> live_sessions();

    VmStack* stack_;
    Table_Object* expression_table_ = nullptr;
    ObjectHolder<DataSession_Object> first_;
    ObjectHolder<DataSession_Object> current_;
    std::shared_ptr<session_registry_st> registry_;
    int32_t next_id_ = 1;
};

// The sessions of a stack the runtime made; error 1001 on a stack that has
// none (made without a runtime).
TableDataSessions& table_sessions(VmStack* stack);
// The same, or null.
TableDataSessions* find_table_sessions(VmStack* stack) noexcept;
// The current data session of a stack.
inline DataSession_Object& current_session(VmStack* stack) { return table_sessions(stack).current(); }

// While a filter or a FOR clause runs, its table's fields come first. A
// stack being torn down has no sessions left, and runs no expression.
class ExpressionTableScope {
public:
    ExpressionTableScope(VmStack* stack, Table_Object* table) : sessions_(find_table_sessions(stack)) {
        if (!sessions_) return;
        previous_ = sessions_->expression_table();
        sessions_->set_expression_table(table);
    }
    ~ExpressionTableScope() {
        if (sessions_) sessions_->set_expression_table(previous_);
    }
    ExpressionTableScope(const ExpressionTableScope&) = delete;
    ExpressionTableScope& operator=(const ExpressionTableScope&) = delete;

private:
    TableDataSessions* sessions_;
    Table_Object* previous_ = nullptr;
};

}  // namespace zobase
