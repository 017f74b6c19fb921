// Objects: member look-up along the chain, the visibility rules, the call
// context, members added at run time, and what happens when the last
// reference goes.
#include "objects/object.h"

#include <cstring>
#include <mutex>

#include "base/call_trace.h"
#include "objects/property_storage.h"
#include "objects/user_class.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/call_resolver.h"
#include "vm/member_site.h"
#include "vm/param.h"
#include "vm/param_window.h"
#include "vm/runtime_services.h"

namespace zobase {

namespace {

void check_visible(VmStack* stack, const Object* object, const Object* holder, const ClassMember* member) {
    if (!member_visible(stack, object, holder, member)) raise_member_not_found(stack, member->symbol);
}

// get_member, with the look-up in the first link, where most members are,
// made here directly.
inline bool find_member(const Object* object, unsigned symbol, const ClassMember** member, Object** holder) {
    const member_tables_st* table = object->tables.load(std::memory_order_acquire);
    *member = table ? table->by_symbol.find(symbol) : nullptr;
    if (!*member) return object->get_member(symbol, member, holder);
    *holder = const_cast<Object*>(object);
    return true;
}

// The member and its link, visible to the caller; 1734 otherwise.
inline const ClassMember* visible_member(VmStack* stack, const Object* object, unsigned symbol, Object** holder) {
    const ClassMember* member;
    if (!find_member(object, symbol, &member, holder)) raise_member_not_found(stack, symbol);
    if (member->visibility != MEMBER_PUBLIC) check_visible(stack, object, *holder, member);
    return member;
}

// ---- member look-up places ----

// Whether a link behind the first shows its class's own member tables.
inline bool shows_class_tables(const Object* link) {
    return link->object_class && link->tables.load(std::memory_order_acquire) == link->object_class->member_tables();
}

inline uint64_t tables_id_of(const Object* object) {
    const member_tables_st* table = object->tables.load(std::memory_order_acquire);
    return table ? table->id : 0;
}

// What the look-up place keeps for this object, with the member's link, when
// the entry answers for it and the caller may see the member; else null.
inline const member_site_entry_st* kept_member(VmStack* stack, member_site_st& site, const Object* object,
                                               Object** holder) {
    if (site.owner.load(std::memory_order_relaxed) != stack->stamp) return nullptr;
    const member_site_entry_st& entry = site.entry;
    if (tables_id_of(object) != entry.tables_id || !entry.tables_id) return nullptr;
    const Object* link = object;
    for (uint32_t depth = entry.depth; depth; --depth) {
        link = link->parent;
        if (!shows_class_tables(link)) return nullptr;
    }
    if (!entry.is_public && !member_visible(stack, object, link, entry.member)) return nullptr;
    *holder = const_cast<Object*>(link);
    return &entry;
}

// Keeps a member of a user class's link found for the object whose first
// link showed the tables `tables_id` before the look-up began (a change
// since then only makes the entry miss). The place is claimed by the first
// stack that keeps something there.
void keep_member(VmStack* stack, member_site_st& site, uint64_t tables_id, const Object* object,
                 const Object* holder, const ClassMember* member) {
    if (!tables_id || !holder->object_class || !holder->object_class->user_defined) return;
    uint32_t depth = 0;
    for (const Object* link = object; link != holder;) {
        link = link->parent;
        ++depth;
        if (!shows_class_tables(link)) return;
    }
    uint64_t owner = site.owner.load(std::memory_order_relaxed);
    if (owner == 0 && site.owner.compare_exchange_strong(owner, stack->stamp, std::memory_order_relaxed))
        owner = stack->stamp;
    if (owner != stack->stamp) return;
    site.entry = {tables_id, member, depth, member->visibility == MEMBER_PUBLIC, member->plain_read,
                  member->plain_write};
}

void added_property_access(VmStack* stack, unsigned long long argc, Variant* ret) {
    auto* member = const_cast<ClassMember*>(stack->context.member);
    read_stored(stack, stack->context.class_object, &member->value, argc, ret);
}

void added_property_access_ref(VmStack* stack, unsigned long long argc, Variant* ret) {
    auto* member = const_cast<ClassMember*>(stack->context.member);
    read_stored_ref(stack, stack->context.class_object, &member->value, argc, ret);
}

void added_property_assign(VmStack* stack, unsigned long long argc) {
    auto* member = const_cast<ClassMember*>(stack->context.member);
    write_stored(stack, stack->context.class_object, &member->value, argc);
}

// The tables the object shows from now on; earlier ones stay alive.
void publish_tables(Object* object, std::unique_ptr<member_tables_st> tables) {
    object->tables.store(tables.get(), std::memory_order_release);
    object->added->tables.push_back(std::move(tables));
}

// An object's value of a call of its own: its slot on the stack, with the
// argument window over the argc values pushed above it afterwards.
class ObjectSlot {
public:
    ObjectSlot(VmStack* stack, Object* object) : stack_(stack), mark_(stack->esp) {
        stack->push()->set(object->self());
        slot_ = stack->esp;
    }
    ~ObjectSlot() { stack_->pop_to(mark_); }
    ObjectSlot(const ObjectSlot&) = delete;
    ObjectSlot& operator=(const ObjectSlot&) = delete;
    Memvar* slot() const noexcept { return slot_; }

private:
    VmStack* stack_;
    Memvar* mark_;
    Memvar* slot_;
};

// Runs DESTROY with a stack, then destroys and deletes the chain. Nothing
// may escape: releases happen in destructors and during unwinding. An error
// inside DESTROY was already reported by the frame that ran it.
void destroy_object(VmStack* stack, const object_ptr_st& ptr) {
    Object* object = ptr.object;
    const ClassMember* member;
    Object* holder;
    if (stack && !ptr.control->no_destroy_call && object->get_member(SYMBOL_DESTROY, &member, &holder) &&
        member->call) {
        try {
            ObjectSlot slot(stack, object);
            ParamWindow window(stack, slot.slot(), 0);
            Variant result;
            call_member_directly(stack, object, member, holder, 0, &result);
            result.release(stack);
        } catch (const RuntimeError&) {
        } catch (const RuntimeInterrupt&) {
        }
    }
    for (Object* link = object; link; link = link->parent) link->destroy(stack);
    object_ptr_end_destruction(ptr);
    delete object;
}

}  // namespace

// The caller's rights: 1 from outside, 3 from a method of the same object,
// and bit 4 from a method of the link that holds the member.
bool member_visible(VmStack* stack, const Object* object, const Object* holder, const ClassMember* member) {
    if (member->visibility == MEMBER_PUBLIC) return true;
    uint32_t level = MEMBER_PUBLIC;
    if (stack->context.this_object == object) level = MEMBER_PROTECTED;
    if (stack->context.class_object == holder) level |= 4;
    return (member->visibility & ~level) == 0;
}

// ---- Object ----

Object::Object(Class* c) : object_class(c) {
    if (c) tables.store(c->member_tables(), std::memory_order_relaxed);
}

Object::~Object() { delete parent; }

void Object::destroy(VmStack* stack) {
    if (added)
        for (auto& member : added->members) member->value.release(stack);
    if (control && object_class) object_class->remove_instance(this);
}

bool Object::get_member(unsigned symbol, const ClassMember** member, Object** holder) const {
    for (const Object* link = this; link; link = link->parent) {
        const member_tables_st* table = link->tables.load(std::memory_order_acquire);
        if (!table) continue;
        if (ClassMember* found = table->by_symbol.find(symbol)) {
            *member = found;
            *holder = const_cast<Object*>(link);
            return true;
        }
    }
    return false;
}

void Object::virtual_call(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    Object* holder;
    const ClassMember* member = visible_member(stack, this, symbol, &holder);
    if (!member->call) raise_member_not_found(stack, symbol);
    MemberScope scope(stack, this, holder, member, MEMBER_MODE_CALL);
    member->call(stack, argc, ret);
}

namespace {

// The member for a read or write without a handler, or null when it needs one.
// Only user classes' objects are sure to keep Object's operations.
const ClassMember* plain_member(VmStack* stack, member_site_st& site, const Object* object, unsigned symbol,
                               bool write, Object** holder) {
    if (const member_site_entry_st* kept = kept_member(stack, site, object, holder))
        return (write ? kept->plain_write : kept->plain_read) ? kept->member : nullptr;
    if (!object->object_class || !object->object_class->user_defined) return nullptr;
    uint64_t tables_id = tables_id_of(object);
    const ClassMember* member;
    if (!find_member(object, symbol, &member, holder)) return nullptr;
    if (member->visibility != MEMBER_PUBLIC && !member_visible(stack, object, *holder, member)) return nullptr;
    keep_member(stack, site, tables_id, object, *holder, member);
    return (write ? member->plain_write : member->plain_read) ? member : nullptr;
}

}  // namespace

const ClassMember* Object::call_target(VmStack* stack, member_site_st& site, unsigned symbol, Object** holder) {
    if (const member_site_entry_st* kept = kept_member(stack, site, this, holder)) return kept->member;
    if (!object_class || !object_class->user_defined) return nullptr;
    uint64_t tables_id = tables_id_of(this);
    const ClassMember* member = visible_member(stack, this, symbol, holder);
    keep_member(stack, site, tables_id, this, *holder, member);
    return member;
}

void Object::call_member(VmStack* stack, member_site_st& site, unsigned symbol, size_t argc, Variant* ret) {
    Object* holder;
    const ClassMember* member = call_target(stack, site, symbol, &holder);
    if (!member) return virtual_call(stack, symbol, argc, ret);
    if (!member->call) raise_member_not_found(stack, symbol);
    MemberScope scope(stack, this, holder, member, MEMBER_MODE_CALL);
    member->call(stack, argc, ret);
}

const Program* Object::method_program(VmStack* stack, member_site_st& site, unsigned symbol, Object** holder,
                                      const ClassMember** member) {
    *member = call_target(stack, site, symbol, holder);
    if (!*member || (*member)->call != user_class_generic_call) return nullptr;
    return (*member)->method->program();
}

bool Object::read_plain(VmStack* stack, member_site_st& site, unsigned symbol, Variant* ret) {
    Object* holder;
    const ClassMember* member = plain_member(stack, site, this, symbol, false, &holder);
    if (member) read_plain_value(holder, member, ret);
    return member;
}

bool Object::write_plain(VmStack* stack, member_site_st& site, unsigned symbol) {
    Object* holder;
    const ClassMember* member = plain_member(stack, site, this, symbol, true, &holder);
    if (member) write_stored(stack, holder, plain_place(holder, member), 1);
    return member;
}

bool Object::update_plain(VmStack* stack, member_site_st& site, unsigned symbol, plain_update_fn update,
                          const Variant* operand) {
    Object* holder;
    const ClassMember* member = plain_member(stack, site, this, symbol, true, &holder);
    if (!member || !member->plain_read) return false;
    Variant* stored = plain_place(holder, member);
    StorageWriteGuard guard(holder);
    return update(stored, operand);
}

void Object::virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    Object* holder;
    const ClassMember* member = visible_member(stack, this, symbol, &holder);
    if (argc == 0 && member->plain_read) return read_plain_value(holder, member, ret);
    if (!member->access) raise_member_not_found(stack, symbol);
    MemberScope scope(stack, this, holder, member, MEMBER_MODE_ACCESS);
    member->access(stack, argc, ret);
}

// A property without storage to point into (a computed one) answers 9008.
void Object::virtual_access_ref(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    Object* holder;
    const ClassMember* member = visible_member(stack, this, symbol, &holder);
    if (!member->access_ref) {
        if (member->type != MEMBER_PROPERTY) raise_member_not_found(stack, symbol);
        throw RuntimeError(ERR_PROPERTY_POINTER);
    }
    MemberScope scope(stack, this, holder, member, MEMBER_MODE_ACCESS);
    member->access_ref(stack, argc, ret);
}

// A property without an assign handler is read-only: 1743.
void Object::virtual_assign(VmStack* stack, unsigned symbol, size_t argc) {
    Object* holder;
    const ClassMember* member = visible_member(stack, this, symbol, &holder);
    if (argc == 1 && member->plain_write) return write_stored(stack, holder, plain_place(holder, member), 1);
    if (!member->assign) {
        if (member->type != MEMBER_PROPERTY) raise_member_not_found(stack, symbol);
        throw RuntimeError(ERR_PROPERTY_READ_ONLY, member->name);
    }
    MemberScope scope(stack, this, holder, member, MEMBER_MODE_ASSIGN);
    member->assign(stack, argc);
}

int Object::enum_properties(enum_properties_fn callback, void* context) {
    const member_tables_st* table = tables.load(std::memory_order_acquire);
    if (!table) return 0;
    for (const ClassMember* member : table->members)
        if (int result = callback(context, this, member->symbol, member)) return result;
    return 0;
}

int Object::virtual_enum_properties(enum_properties_fn callback, void* context) {
    for (Object* link = this; link; link = link->parent)
        if (int result = link->enum_properties(callback, context)) return result;
    return 0;
}

void Object::addproperty(VmStack* stack, unsigned symbol, const Variant* value) {
    new_property_st item{symbol, nullptr, value};
    add_properties(stack, this, &item, 1);
}

void Object::removeproperty(VmStack* stack, const String& name) {
    ZO_TRACE();
    unsigned symbol = stack->resolver ? stack->resolver->symbolize(name) : 0;
    ClassMember* removed = added ? added->by_symbol.find(symbol) : nullptr;
    if (!removed) {
        const ClassMember* member;
        Object* holder;
        if (get_member(symbol, &member, &holder)) throw RuntimeError(ERR_PROPERTY_IS_CLASS_MEMBER, name);
        throw RuntimeError(ERR_PROPERTY_NOT_FOUND, name);
    }
    Variant value;
    {
        std::unique_lock guard(lock);
        auto table = std::make_unique<member_tables_st>();
        SymbolMap<ClassMember*> still_added;
        const member_tables_st* shown = tables.load(std::memory_order_relaxed);
        for (ClassMember* member : shown->members) {
            if (member == removed) continue;
            table->members.push_back(member);
            table->by_symbol.insert(member->symbol, member);
            if (added->by_symbol.find(member->symbol) == member) still_added.insert(member->symbol, member);
        }
        // A removed member may have hidden one of the class: it shows again.
        for (ClassMember* member : object_class->member_tables()->members)
            if (member->symbol == symbol) table->by_symbol.insert(symbol, member);
        added->by_symbol = std::move(still_added);
        std::memcpy(static_cast<void*>(&value), &removed->value, sizeof(Variant));
        removed->value.tag = TAG_FALSE;
        publish_tables(this, std::move(table));
    }
    value.release(stack);
}

namespace {

// Assigns through the member's handler, as the language would.
void assign_member(VmStack* stack, Object* object, unsigned symbol, const Variant* value) {
    ObjectSlot slot(stack, object);
    Variant* pushed = stack->push();
    if (value) value->follow()->copy(pushed);
    ParamWindow window(stack, slot.slot(), 1);
    object->virtual_assign(stack, symbol, 1);
}

std::unique_ptr<ClassMember> added_member(VmStack* stack, const new_property_st& item) {
    auto member = std::make_unique<ClassMember>();
    member->type = MEMBER_PROPERTY;
    member->name = item.name ? *item.name : stack->symbol_text(item.symbol);
    member->symbol = item.symbol;
    member->access = added_property_access;
    member->access_ref = added_property_access_ref;
    member->assign = added_property_assign;
    member->plain_storage = PLAIN_MEMBER_VALUE;
    member->plain_read = member->plain_write = true;
    if (item.value) item.value->follow()->copy(&member->value);
    return member;
}

}  // namespace

void add_properties(VmStack* stack, Object* object, const new_property_st* items, size_t count) {
    ZO_TRACE();
    std::vector<std::unique_ptr<ClassMember>> made;
    SymbolMap<ClassMember*> made_by_symbol;
    for (size_t i = 0; i < count; ++i) {
        const new_property_st& item = items[i];
        if (ClassMember* again = made_by_symbol.find(item.symbol)) {
            again->value.release(stack);
            if (item.value) item.value->follow()->copy(&again->value);
            continue;
        }
        const ClassMember* existing;
        Object* holder;
        if (object->get_member(item.symbol, &existing, &holder) && existing->assign) {
            assign_member(stack, object, item.symbol, item.value);
            continue;
        }
        made.push_back(added_member(stack, item));
        made_by_symbol.insert(item.symbol, made.back().get());
    }
    if (made.empty()) return;
    std::unique_lock guard(object->lock);
    if (!object->added) object->added = std::make_unique<object_added_st>();
    const member_tables_st* shown = object->tables.load(std::memory_order_relaxed);
    auto table = shown ? std::make_unique<member_tables_st>(*shown) : std::make_unique<member_tables_st>();
    for (auto& member : made) {
        member->index = table->members.size();
        table->members.push_back(member.get());
        table->by_symbol.insert(member->symbol, member.get());
        object->added->by_symbol.insert(member->symbol, member.get());
        object->added->members.push_back(std::move(member));
    }
    publish_tables(object, std::move(table));
}

// ---- the call context ----

MemberScope::MemberScope(VmStack* stack, Object* object, Object* holder, const ClassMember* member,
                         uint32_t mode)
    : stack_(stack), saved_(stack->context) {
    member_context_st& context = stack->context;
    bool re_entered = (mode == MEMBER_MODE_ACCESS || mode == MEMBER_MODE_ASSIGN) && context.mode == mode &&
                      context.class_object == holder && context.symbol == member->symbol;
    if (re_entered) {
        context.mode = mode + 1;
        return;
    }
    context = {object, holder, member, member->symbol, mode};
}

MemberScope::~MemberScope() { stack_->context = saved_; }

void call_member_directly(VmStack* stack, Object* object, const ClassMember* member, Object* holder,
                          size_t argc, Variant* ret) {
    MemberScope scope(stack, object, holder, member, MEMBER_MODE_CALL);
    member->call(stack, argc, ret);
}

void read_property(VmStack* stack, Object* object, unsigned symbol, Variant* dest) {
    Variant value;
    try {
        ObjectSlot slot(stack, object);
        ParamWindow window(stack, slot.slot(), 0);
        object->virtual_access(stack, symbol, 0, &value);
    } catch (...) {
        value.release(stack);
        throw;
    }
    std::memcpy(static_cast<void*>(dest), &value, sizeof(Variant));
}

[[noreturn]] void raise_member_not_found(VmStack* stack, unsigned symbol) {
    throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
}

// ---- references and creation ----

void wrap_new_object(Object* object, Variant* dest) {
    auto* control = new object_control_st;
    object->control = control;
    dest->tag = TAG_OBJECT;
    dest->object = {control, object};
    if (object->object_class) object->object_class->add_instance(object);
}

Class* builtin_class(VmStack* stack, unsigned symbol) {
    Class* found = stack->resolver ? stack->resolver->find_builtin_class(symbol) : nullptr;
    if (!found) throw RuntimeError(ERR_CLASS_NOT_FOUND, stack->symbol_text(symbol));
    return found;
}

Class* builtin_class(VmStack* stack, const char* name) {
    if (!stack->resolver) throw RuntimeError(ERR_CLASS_NOT_FOUND, String(name));
    return builtin_class(stack, stack->resolver->symbolize(String(name)));
}

Object* create_empty_object(VmStack* stack, Variant* dest) {
    Object* object = nullptr;
    builtin_class(stack, "Empty")->create_instance(stack, &object);
    wrap_new_object(object, dest);
    return object;
}

Class* find_class(VmStack* stack, const String& name, const String* file) {
    Class* found = nullptr;
    if (stack->resolver) found = stack->resolver->find_class(stack, stack->resolver->symbolize(name), file);
    if (!found) throw RuntimeError(ERR_CLASS_NOT_FOUND, name);
    return found;
}

void create_object(VmStack* stack, Class* object_class, unsigned long long first, unsigned long long argc,
                   Variant* dest) {
    ZO_TRACE();
    Object* object = nullptr;
    object_class->create_instance(stack, &object);
    Variant made;
    wrap_new_object(object, &made);
    const ClassMember* init;
    Object* holder;
    if (object->get_member(SYMBOL_INIT, &init, &holder) && init->call) {
        // INIT's object goes in the slot just under its arguments.
        Memvar* object_slot = Param(stack, first - 1);
        Variant result;
        try {
            object_slot->release(stack);
            made.copy(object_slot);
            ParamWindow window(stack, object_slot, argc);
            call_member_directly(stack, object, init, holder, argc, &result);
        } catch (...) {
            made.object.control->no_destroy_call = true;
            made.release(stack);
            throw;
        }
        if (result.tag == TAG_FALSE) {
            made.object.control->no_destroy_call = true;
            made.release(stack);
            made.set_null();
        }
        result.release(stack);
    }
    std::memcpy(static_cast<void*>(dest), &made, sizeof(Variant));
}

void CreateObject(VmStack* stack, const String& class_name, const Variant* args, size_t argc, Variant* dest) {
    ZO_TRACE();
    Class* object_class = find_class(stack, class_name);
    Memvar* mark = stack->esp;
    try {
        stack->push();  // INIT's object goes here
        Memvar* window_top = stack->esp;
        for (size_t i = 0; i < argc; ++i) args[i].copy(stack->push());
        ParamWindow window(stack, window_top + 1, argc + 1);
        create_object(stack, object_class, 2, argc, dest);
    } catch (...) {
        stack->pop_to(mark);
        throw;
    }
    stack->pop_to(mark);
}

void install_object_destruction() {
    if (!destroy_object_hook) destroy_object_hook = destroy_object;
}

}  // namespace zobase
