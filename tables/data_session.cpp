// A data session: work areas by number, aliases, the current work area.
#include "tables/data_session.h"

#include <filesystem>

#include "base/call_trace.h"
#include "objects/native_members.h"
#include "tables/table_object_zodbf.h"
#include "tables/table_sessions.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/call_resolver.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

String alias_of_file(const String& name) {
    return String(std::filesystem::path(name.u8str()).stem().string().c_str());
}

DataSession_Object::DataSession_Object(Class* object_class, TableDataSessions* sessions,
                                       std::shared_ptr<session_registry_st> registry, int32_t session_id)
    : Object(object_class), id(session_id), owner(sessions), registry_(std::move(registry)) {}

// Tables close with their last reference; a table still held elsewhere
// stays open until that goes too. A session that never had a reference
// was never seen by another thread.
DataSession_Object::~DataSession_Object() {
    close_all(owner ? owner->stack() : nullptr);
    leave_owner();
}

// The releasing stack closes the work areas, whichever thread it runs.
void DataSession_Object::destroy(VmStack* stack) {
    leave_owner();
    close_all(stack);
    Object::destroy(stack);
}

void DataSession_Object::leave_owner() noexcept {
    std::lock_guard lock(registry_->mutex);
    registry_->sessions.erase(id);
    owner = nullptr;
}

void DataSession_Object::work_areas_changed() noexcept {
    if (owner) owner->work_areas_changed();
}

Table_Object* DataSession_Object::table_at(int32_t area) const {
    auto found = work_areas_.find(area);
    return found == work_areas_.end() ? nullptr : found->second.get();
}

int32_t DataSession_Object::select(int32_t area) {
    if (area != 0 && area == current_) return current_;
    if (area == 0) {
        area = 1;
        for (const auto& [used_area, table] : work_areas_) {
            if (used_area != area) break;
            ++area;
        }
        if (area > MAX_WORK_AREA) area = 0;
    }
    current_ = area;
    current_table_ = table_at(area);
    work_areas_changed();
    return current_;
}

int32_t DataSession_Object::select(VmStack* stack, const Variant* value) {
    const Variant* v = value->follow();
    int32_t area = 0;
    if (v->tag == TAG_STRING) {
        if (!resolve(v->str(), &stack->services->symbols(), &area)) throw RuntimeError(ERR_ALIAS_NOT_FOUND, v->str());
        return area;
    }
    integer_type_st number = static_cast<integer_type_st>(*v);
    if (number < 0 || number > MAX_WORK_AREA) throw RuntimeError(ERR_TABLE_NUMBER_INVALID);
    if (number != 0) return static_cast<int32_t>(number);
    for (area = 1; area <= MAX_WORK_AREA && work_areas_.count(area); ++area) {
    }
    return area > MAX_WORK_AREA ? 0 : area;
}

bool DataSession_Object::resolve(const String& alias, Symtable* symbols, int32_t* area) const {
    return resolve_symbol(symbols->symbolize(alias), area);
}

bool DataSession_Object::resolve(VmStack* stack, const Variant* value, int32_t* area) const {
    const Variant* v = value->follow();
    if (v->tag != TAG_STRING) return false;
    return resolve(v->str(), &stack->services->symbols(), area);
}

bool DataSession_Object::used(int32_t area) const {
    if (area < 1 || area > MAX_WORK_AREA) throw RuntimeError(ERR_TABLE_NUMBER_INVALID);
    return work_areas_.count(area) != 0;
}

Table_Object* DataSession_Object::select_file(VmStack* stack, const Variant* value) {
    int32_t area = select(stack, value);
    return area == 0 ? nullptr : table_at(area);
}

void DataSession_Object::assign(const ObjectHolder<Table_Object>& table, Symtable* symbols, const String& alias,
                                int32_t area, bool again) {
    uint32_t symbol = symbols->symbolize(alias);
    if (aliases_.count(symbol)) throw RuntimeError(ERR_ALIAS_IN_USE);
    if (area < 1 || area > MAX_WORK_AREA) throw RuntimeError(ERR_TABLE_NUMBER_INVALID);
    if (work_areas_.count(area)) throw RuntimeError(ERR_FILE_IN_USE);
    if (!again && !table->is_temporary()) {
        for (const auto& [other_area, other] : work_areas_)
            if (!other->is_temporary() && other->filename().u8str() == table->filename().u8str())
                throw RuntimeError(ERR_FILE_IN_USE);
    }
    table->alias = alias;
    if (in_transaction_) table->begin_transaction();
    work_areas_.emplace(area, table);
    aliases_.emplace(symbol, area);
    if (area == current_) current_table_ = table.get();
    work_areas_changed();
}

void DataSession_Object::close(VmStack* stack, int32_t area) {
    auto found = work_areas_.find(area);
    if (found == work_areas_.end()) return;
    ObjectHolder<Table_Object> table = found->second;
    work_areas_.erase(found);
    for (auto it = aliases_.begin(); it != aliases_.end(); ++it) {
        if (it->second != area) continue;
        aliases_.erase(it);
        break;
    }
    if (area == current_) current_table_ = nullptr;
    work_areas_changed();
    // A record changed under row buffering is written before the files close.
    try {
        table->leave_record(stack);
    } catch (...) {
        table->close();
        throw;
    }
    table->close();
}

void DataSession_Object::create(VmStack* stack, const String& name, const createopts_st* options,
                                fielddef_st* fields, uint64_t count) {
    ZO_TRACE();
    close(stack, current_);
    ObjectHolder<Table_Object> table = Table_Object_ZoDbf::create(stack, name, options, fields, count);
    assign(table, &stack->services->symbols(), alias_of_file(name), current_, false);
}

void DataSession_Object::close_all(VmStack* stack) {
    while (!work_areas_.empty()) {
        int32_t area = work_areas_.begin()->first;
        try {
            close(stack, area);
        } catch (const RuntimeError&) {
            // Torn down with its stack: there is no one left to tell.
            if (stack && find_table_sessions(stack)) throw;
        }
    }
}

// ---- transactions

void DataSession_Object::begin_transaction() {
    if (in_transaction_) throw RuntimeError(ERR_BEGIN_TRANSACTION_FAILED, String("Transactions do not nest."));
    for (auto& [area, table] : work_areas_) table->begin_transaction();
    in_transaction_ = true;
}

void DataSession_Object::end_transaction() {
    if (!in_transaction_) throw RuntimeError(ERR_END_TRANSACTION_WITHOUT_BEGIN);
    in_transaction_ = false;
    for (auto& [area, table] : work_areas_) table->end_transaction();
}

void DataSession_Object::rollback(VmStack* stack) {
    if (!in_transaction_) throw RuntimeError(ERR_ROLLBACK_WITHOUT_BEGIN);
    in_transaction_ = false;
    for (auto& [area, table] : work_areas_) table->rollback_transaction(stack);
}

// ---- the class

void DataSession_Object::datasessionid_access(VmStack* stack, unsigned long long argc, Variant* result) {
    refuse_subscripts(stack, argc);
    result->set_integer(current_object<DataSession_Object>(stack)->id);
}

const builtin_class_data_st session_class_data = {
    [](VmStack* stack, Class* object_class) -> Object* {
        return table_sessions(stack).new_session(object_class);
    },
    false};

const library_class_member_row_st session_members[] = {
    {"DataSessionId", nullptr, DataSession_Object::datasessionid_access, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace zobase
