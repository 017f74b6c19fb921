// The data sessions of a stack, and the names the VM asks them about.
#include "tables/table_sessions.h"

#include <exception>
#include <typeinfo>

#include "tables/table_object.h"
#include "objects/object.h"
#include "values/error.h"
#include "vm/vm_stack.h"

namespace zobase {

TableDataSessions::TableDataSessions(VmStack* stack)
    : DataSessions(nullptr), stack_(stack), registry_(std::make_shared<session_registry_st>()) {
    Variant first;
    create_session(&first);
    first_ = ObjectHolder<DataSession_Object>::of(first.object);
    first.release(nullptr);
    make_current(first_);
}

// The work areas close while the stack still stands; sessions that the
// language holds elsewhere outlive it, closed, and no longer know it.
TableDataSessions::~TableDataSessions() {
    std::vector<ObjectHolder<DataSession_Object>> sessions = live_sessions();
    {
        std::lock_guard lock(registry_->mutex);
        for (auto& [id, session] : registry_->sessions) session->owner = nullptr;
        registry_->sessions.clear();
    }
    for (auto& session : sessions) {
        try {
            session->close_all(stack_);
        } catch (const Exception&) {
        }
        session.reset(stack_);
    }
    current_.reset(nullptr);
    first_.reset(nullptr);
}

std::vector<ObjectHolder<DataSession_Object>> TableDataSessions::live_sessions() {
    std::vector<ObjectHolder<DataSession_Object>> live;
    std::lock_guard lock(registry_->mutex);
    for (auto& [id, session] : registry_->sessions)
        if (auto holder = ObjectHolder<DataSession_Object>::if_alive(session->self())) live.push_back(std::move(holder));
    return live;
}

void TableDataSessions::make_current(const ObjectHolder<DataSession_Object>& session) {
    current_ = session;
    use_settings_of(&session->settings);
    fields_changed();
}

DataSession_Object* TableDataSessions::new_session(Class* session_class) {
    auto* session = new DataSession_Object(session_class, this, registry_, next_id_++);
    std::lock_guard lock(registry_->mutex);
    registry_->sessions.emplace(session->id, session);
    return session;
}

void TableDataSessions::create_session(Variant* dest) {
    wrap_new_object(new_session(builtin_class(stack_, SESSION_CLASS_NAME)), dest);
}

// Every session is tried; the first failure is raised after the others closed.
void TableDataSessions::close_work_areas(VmStack* stack) {
    std::exception_ptr failure;
    for (auto& session : live_sessions()) {
        try {
            session->close_all(stack);
        } catch (const RuntimeError&) {
            if (!failure) failure = std::current_exception();
        }
    }
    make_current(first_);
    if (failure) std::rethrow_exception(failure);
}

// A session whose last reference is going on another thread is no longer there.
void TableDataSessions::select_session(int32_t id) {
    ObjectHolder<DataSession_Object> session;
    {
        std::lock_guard lock(registry_->mutex);
        auto found = registry_->sessions.find(id);
        if (found != registry_->sessions.end()) session = ObjectHolder<DataSession_Object>::if_alive(found->second->self());
    }
    if (!session) throw RuntimeError(ERR_SESSION_INVALID);
    make_current(session);
}

}  // namespace zobase

namespace zobase {

// Every table command asks this; the type test of a final class is a
// comparison, where a dynamic_cast walks the hierarchy.
TableDataSessions* find_table_sessions(VmStack* stack) noexcept {
    DataSessions* sessions = stack ? stack->sessions.get() : nullptr;
    if (!sessions || typeid(*sessions) != typeid(TableDataSessions)) return nullptr;
    return static_cast<TableDataSessions*>(sessions);
}

TableDataSessions& table_sessions(VmStack* stack) {
    TableDataSessions* sessions = find_table_sessions(stack);
    if (!sessions) raise_not_available("work areas");
    return *sessions;
}

// A bare name reads a field of the table whose expression runs, else of the
// current work area.
bool TableDataSessions::find_field(VmStack*, uint32_t symbol, field_ref_st* out) {
    Table_Object* table = expression_table_ ? expression_table_ : current_->current_table();
    if (!table) {
        note_bare_names_free();
        return false;
    }
    int index = table->get_field_by_symbol_id(symbol);
    if (index < 0) return false;
    *out = {table, static_cast<uint32_t>(index)};
    return true;
}

void TableDataSessions::read_field(VmStack* stack, const field_ref_st& field, Variant* dest) {
    auto* table = static_cast<Table_Object*>(const_cast<void*>(field.table));
    table->get_field(stack, field.index, dest);
}

void TableDataSessions::write_field(VmStack* stack, const field_ref_st& field, const Variant& value) {
    auto* table = static_cast<Table_Object*>(const_cast<void*>(field.table));
    table->set_field(stack, field.index, &value);
    table->commit(stack);
}

bool TableDataSessions::find_work_area(VmStack* stack, uint32_t alias, Variant* dest) {
    int32_t area = 0;
    if (!current_->resolve_symbol(alias, &area)) return false;
    current_->work_areas().at(area).copy_to(dest);
    return true;
}

void TableDataSessions::read_expression_field(VmStack* stack, uint16_t index, Variant* dest) {
    if (!expression_table_) throw assert_failed_exception("a field by position without a table");
    expression_table_->get_field(stack, index, dest);
}

}  // namespace zobase
