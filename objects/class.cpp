// Classes, their members, and the built-in classes made from rows.
#include "objects/class.h"

#include <atomic>

#include "base/call_trace.h"
#include "text/collation.h"
#include "values/error.h"
#include "values/symtable.h"

namespace zobase {

uint64_t member_tables_st::new_id() noexcept {
    static std::atomic<uint64_t> last{0};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

bool MemberNameLess::operator()(const String& a, const String& b) const {
    return Collation::unicode_machine_ci->compare(a, b) < 0;
}

ClassMember::~ClassMember() {
    default_value.release(nullptr);
    value.release(nullptr);
}

Class::Class(const String& class_name, uint32_t class_symbol, object_factory_fn object_factory)
    : name(class_name), symbol(class_symbol), factory(object_factory) {}

Class::~Class() {
    for (ClassMember* member : tables_.members) delete member;
}

void Class::compile(Symtable& symbols) {
    for (ClassMember* member : tables_.members) {
        member->symbol = symbols.symbolize(member->name);
        tables_.by_symbol.insert(member->symbol, member);
    }
}

void Class::create_instance(VmStack* stack, Object** out) {
    ZO_TRACE();
    if (!factory) throw RuntimeError(ERR_CLASS_ABSTRACT, name);
    *out = factory(stack, this);
}

String Class::base_class_name(VmStack*) { return name; }

String Class::parent_class_name() const { return String(""); }

ClassMember* Class::find(const String& member_name) const {
    auto found = by_name_.find(member_name);
    return found == by_name_.end() ? nullptr : tables_.members[found->second];
}

ClassMember* Class::define(const String& member_name) {
    if (ClassMember* existing = find(member_name)) return existing;
    auto* member = new ClassMember;
    member->index = tables_.members.size();
    member->name = member_name;
    tables_.members.push_back(member);
    by_name_.emplace(member_name, member->index);
    return member;
}

void Class::add_instance(Object* object) {
    std::lock_guard guard(mutex_);
    instances_.emplace(object, next_serial_++);
}

void Class::remove_instance(Object* object) {
    std::lock_guard guard(mutex_);
    instances_.erase(object);
}

Class* create_builtin_class(Symtable& symbols, const char* name, const builtin_class_data_st* data,
                            const library_class_member_row_st* members) {
    ZO_TRACE();
    String class_name(name);
    auto* made = new Class(class_name, symbols.symbolize(class_name), data ? data->factory : nullptr);
    made->is_custom = data && data->is_custom;
    if (!data || !data->bare) define_common_members(made);
    for (const library_class_member_row_st* row = members; row && row->name; ++row) {
        ClassMember* member = made->define(String(row->name));
        member->type = row->call ? MEMBER_METHOD : MEMBER_PROPERTY;
        member->call = row->call;
        member->access = row->access;
        member->access_ref = row->access_ref;
        member->assign = row->assign;
    }
    made->compile(symbols);
    return made;
}

}  // namespace zobase
