// Classes defined in source: compiling their members, building instances
// along the inheritance line, and the generic member handlers.
#include "objects/user_class.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "base/call_trace.h"
#include "objects/object.h"
#include "objects/property_storage.h"
#include "values/error.h"
#include "vm/param.h"
#include "vm/param_window.h"
#include "vm/vm_run.h"

namespace zobase {

namespace {

Object* create_user_object(VmStack* stack, Class* object_class) {
    return new UserObject(stack, static_cast<UserClass*>(object_class));
}

// The part of a method name before "_access" or "_assign" (any case); empty
// when the name doesn't end so or is no longer than the ending.
String property_of(const String& method_name, const char* ending) {
    std::string text = method_name.u8str();
    size_t length = std::strlen(ending);
    if (text.size() <= length) return String();
    for (size_t i = 0; i < length; ++i)
        if (std::tolower(static_cast<unsigned char>(text[text.size() - length + i])) != ending[i]) return String();
    return String(text.substr(0, text.size() - length).c_str());
}

const ClassMember& running_member(VmStack* stack) { return *stack->context.member; }

// An array default is copied element by element: instances made on two
// threads at once must not share its storage, whose counts aren't atomic.
void copy_default(const Variant& value, Variant* dest) {
    if (value.tag != TAG_ARRAY) return value.copy(dest);
    Array fresh = Array::create(value.array.rows(), value.array.columns);
    for (uint64_t i = 1; i <= value.array.count; ++i) value.array.read(i)->copy(fresh.write(nullptr, i));
    dest->tag = TAG_ARRAY;
    dest->array = fresh;
}

Variant* stored_value(VmStack* stack, UserObject** link) {
    *link = current_object<UserObject>(stack);
    return &(*link)->values[running_member(stack).slot];
}

// An assign method takes the new value first, then the subscripts: the value
// moves from the top below them.
void value_first(VmStack* stack, unsigned long long argc) {
    if (argc < 2) return;
    alignas(Memvar) unsigned char value[sizeof(Memvar)];
    std::memcpy(value, static_cast<void*>(stack->esp), sizeof(Memvar));
    std::memmove(static_cast<void*>(stack->esp), static_cast<void*>(stack->esp + 1), (argc - 1) * sizeof(Memvar));
    std::memcpy(static_cast<void*>(stack->esp + argc - 1), value, sizeof(Memvar));
}

}  // namespace

// ---- UserClass ----

UserClass::UserClass(const String& class_name, uint32_t class_symbol, const parent_clause_st& parent)
    : Class(class_name, class_symbol, create_user_object), parent_(parent) {
    user_defined = true;
    define_common_members(this);
    common_members_ = member_tables()->members.size();
}

void UserClass::add_method(const String& method_name, uint32_t visibility, std::unique_ptr<UserFunction> function) {
    MemberNameLess less;
    for (const user_method_st& method : methods_)
        if (!less(method.name, method_name) && !less(method_name, method.name)) return;
    methods_.push_back({method_name, visibility, std::move(function)});
}

void UserClass::compile(Symtable& symbols) {
    ZO_TRACE();
    for (const user_method_st& method : methods_) {
        String property = property_of(method.name, "_access");
        if (property.size()) {
            ClassMember* member = define(property);
            member->type = MEMBER_PROPERTY;
            member->access = user_class_generic_access;
            member->access_ref = user_class_generic_access_ref;
            member->access_method = method.function.get();
            member->stored = true;
            continue;
        }
        property = property_of(method.name, "_assign");
        if (property.size()) {
            ClassMember* member = define(property);
            member->type = MEMBER_PROPERTY;
            member->assign = user_class_generic_assign;
            member->assign_method = method.function.get();
            member->stored = true;
            continue;
        }
        ClassMember* member = define(method.name);
        member->type = MEMBER_METHOD;
        member->visibility = method.visibility;
        member->call = user_class_generic_call;
        member->access = member->access_ref = nullptr;
        member->assign = nullptr;
        member->method = method.function.get();
        member->stored = false;
    }
    for (ClassMember* member : member_tables()->members) {
        if (member->index < common_members_) continue;
        if (member->type == MEMBER_UNDEFINED) member->type = MEMBER_PROPERTY;
        if (member->type != MEMBER_PROPERTY) continue;
        if (!member->access) member->access = user_class_generic_read;
        if (!member->access_ref) member->access_ref = user_class_generic_read_ref;
        if (!member->assign) member->assign = user_class_generic_write;
        member->stored = true;
        member->plain_storage = PLAIN_LINK_SLOT;
        member->plain_read = member->access == user_class_generic_read;
        member->plain_write = member->assign == user_class_generic_write;
    }
    for (const auto& [name, index] : members_by_name()) {
        ClassMember* member = member_tables()->members[index];
        if (member->stored) member->slot = stored_count++;
    }
    Class::compile(symbols);
}

void UserClass::set_parent(Class* parent) {
    std::lock_guard guard(line_mutex_);
    parent_found_ = parent && !parent->is_custom ? parent : nullptr;
    parent_known_.store(true, std::memory_order_release);
}

Class* UserClass::parent_class(VmStack* stack) {
    if (!parent_known_.load(std::memory_order_acquire))
        set_parent(find_class(stack, parent_.name, parent_.file.size() ? &parent_.file : nullptr));
    return parent_found_;
}

const std::vector<Class*>& UserClass::line(VmStack* stack) {
    if (line_ready_.load(std::memory_order_acquire)) return line_;
    std::vector<Class*> computed{this};
    for (Class* current = this;;) {
        auto* user = dynamic_cast<UserClass*>(current);
        if (!user) break;
        Class* parent = user->parent_class(stack);
        if (!parent) break;
        // A line that comes back to itself has no root.
        if (std::find(computed.begin(), computed.end(), parent) != computed.end())
            throw RuntimeError(ERR_CLASS_NOT_FOUND, user->parent_.name);
        computed.push_back(parent);
        current = parent;
    }
    std::lock_guard guard(line_mutex_);
    if (!line_ready_.load(std::memory_order_relaxed)) {
        line_ = std::move(computed);
        line_ready_.store(true, std::memory_order_release);
    }
    return line_;
}

void UserClass::create_instance(VmStack* stack, Object** out) {
    ZO_TRACE();
    const std::vector<Class*>& classes = line(stack);
    Object* head = nullptr;
    Object* last = nullptr;
    try {
        for (Class* link_class : classes) {
            if (!link_class->factory) throw RuntimeError(ERR_CLASS_ABSTRACT, link_class->name);
            Object* link = link_class->factory(stack, link_class);
            if (last) last->parent = link;
            else head = link;
            last = link;
        }
    } catch (...) {
        delete head;
        throw;
    }
    *out = head;
}

// A line ends in a built-in class, or in a user class whose parent is Custom.
String UserClass::base_class_name(VmStack* stack) {
    Class* root = line(stack).back();
    return dynamic_cast<UserClass*>(root) ? String("Custom") : root->base_class_name(stack);
}

String UserClass::parent_class_name() const { return parent_.name; }

// ---- UserObject ----

UserObject::UserObject(VmStack*, UserClass* object_class)
    : Object(object_class), values(new Variant[object_class->stored_count]), count(object_class->stored_count) {
    for (const ClassMember* member : object_class->member_tables()->members)
        if (member->stored) copy_default(member->default_value, &values[member->slot]);
}

UserObject::~UserObject() {
    for (uint64_t i = 0; i < count; ++i) values[i].release(nullptr);
}

void UserObject::destroy(VmStack* stack) {
    Object::destroy(stack);
    for (uint64_t i = 0; i < count; ++i) values[i].release(stack);
}

// ---- generic handlers ----

// A method's function is the class's own: no derived exec to go through.
void user_class_generic_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    stack->pending_args = argc;
    execute_program(stack, argc, true, running_member(stack).method->program(), ret);
}

void user_class_generic_access(VmStack* stack, unsigned long long argc, Variant* ret) {
    switch (stack->context.mode) {
    case MEMBER_MODE_ACCESS: return running_member(stack).access_method->exec(stack, argc, true, ret);
    case MEMBER_MODE_ACCESS_INSIDE: return user_class_generic_read(stack, argc, ret);
    default: throw assert_failed_exception("property access in another mode");
    }
}

// A value an access method computes has no place to point at.
void user_class_generic_access_ref(VmStack* stack, unsigned long long argc, Variant* ret) {
    switch (stack->context.mode) {
    case MEMBER_MODE_ACCESS: throw RuntimeError(ERR_PROPERTY_POINTER);
    case MEMBER_MODE_ACCESS_INSIDE: return user_class_generic_read_ref(stack, argc, ret);
    default: throw assert_failed_exception("property access in another mode");
    }
}

void user_class_generic_assign(VmStack* stack, unsigned long long argc) {
    switch (stack->context.mode) {
    case MEMBER_MODE_ASSIGN: {
        value_first(stack, argc);
        Variant result;
        try {
            running_member(stack).assign_method->exec(stack, argc, true, &result);
        } catch (...) {
            result.release(stack);
            throw;
        }
        result.release(stack);
        return;
    }
    case MEMBER_MODE_ASSIGN_INSIDE: return user_class_generic_write(stack, argc);
    default: throw assert_failed_exception("property assignment in another mode");
    }
}

void user_class_generic_read(VmStack* stack, unsigned long long argc, Variant* ret) {
    UserObject* link;
    Variant* stored = stored_value(stack, &link);
    read_stored(stack, link, stored, argc, ret);
}

void user_class_generic_read_ref(VmStack* stack, unsigned long long argc, Variant* ret) {
    UserObject* link;
    Variant* stored = stored_value(stack, &link);
    read_stored_ref(stack, link, stored, argc, ret);
}

void user_class_generic_write(VmStack* stack, unsigned long long argc) {
    UserObject* link;
    Variant* stored = stored_value(stack, &link);
    write_stored(stack, link, stored, argc);
}

// ---- DODEFAULT ----

namespace {

class ContextRestore {
public:
    explicit ContextRestore(VmStack* stack) : stack_(stack), saved_(stack->context) {}
    ~ContextRestore() { stack_->context = saved_; }
    ContextRestore(const ContextRestore&) = delete;
    ContextRestore& operator=(const ContextRestore&) = delete;

private:
    VmStack* stack_;
    member_context_st saved_;
};

}  // namespace

// Without a class up the line that has the member, nothing happens and the
// result is .T., as for a method that falls off its end.
void dodefault(VmStack* stack, unsigned long long argc, Variant* ret) {
    ZO_TRACE();
    const member_context_st& running = stack->context;
    const ClassMember* member;
    Object* holder;
    if (!running.class_object || !running.class_object->parent ||
        !running.class_object->parent->get_member(running.symbol, &member, &holder)) {
        ret->set_true();
        return;
    }
    if ((member->visibility & ~uint32_t(MEMBER_PROTECTED)) != 0) raise_member_not_found(stack, running.symbol);
    Memvar* object_slot = Param(stack, 1);
    object_slot->release(stack);
    object_slot->set(running.this_object->self());
    ParamWindow window(stack, object_slot, argc - 1);
    ContextRestore restore(stack);
    stack->context.class_object = holder;
    stack->context.member = member;
    switch (stack->context.mode) {
    case MEMBER_MODE_ACCESS:
        if (!member->access) raise_member_not_found(stack, running.symbol);
        return member->access(stack, argc - 1, ret);
    case MEMBER_MODE_ASSIGN:
        if (!member->assign) raise_member_not_found(stack, running.symbol);
        member->assign(stack, argc - 1);
        ret->set_true();
        return;
    case MEMBER_MODE_CALL:
        if (!member->call) raise_member_not_found(stack, running.symbol);
        return member->call(stack, argc - 1, ret);
    default: raise_not_available("DODEFAULT");
    }
}

}  // namespace zobase
