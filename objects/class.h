#pragma once
// Classes and their members. Every object is an Object of a Class; members
// are found by symbol id through the class's tables, and each member carries
// the native handlers that do its work. A built-in class written in C++ is a
// row of handlers (library_class_member_row_st) and a factory; a class
// defined in source is a UserClass (objects/user_class.h), whose handlers are
// generic and run its methods.
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "objects/symbol_map.h"
#include "values/string.h"
#include "values/variant.h"
#include "vm/object.h"
#include "vm/vm_op.h"

namespace zobase {

class Symtable;
class UserFunction;

enum MemberType : uint32_t { MEMBER_UNDEFINED = 0, MEMBER_PROPERTY = 1, MEMBER_METHOD = 2 };

// Visibility is a mask: the caller's level must contain it (see objects/object.cpp).
enum MemberVisibility : uint32_t { MEMBER_PUBLIC = 1, MEMBER_PROTECTED = 3, MEMBER_HIDDEN = 7 };

// Where a plain property keeps its value: in the storage of the link that
// holds it (a user class's declared property), or in the member record (a
// member added to one instance).
enum PlainStorage : uint8_t { PLAIN_NONE = 0, PLAIN_LINK_SLOT = 1, PLAIN_MEMBER_VALUE = 2 };

// Handlers take their object from the stack's call context and their
// arguments through Param (vm/param.h): call, access and access_ref have the
// form of a native function, assign that of a native command, whose value is
// the last argument.
struct ClassMember {
    uint64_t index = 0;  // position in the member vector
    uint32_t type = MEMBER_UNDEFINED;
    String name;
    uint32_t symbol = 0;
    uint32_t visibility = MEMBER_PUBLIC;
    Variant default_value;  // a property's initial value
    native_function call = nullptr;
    native_function access = nullptr;
    native_function access_ref = nullptr;
    native_command assign = nullptr;
    // A member added to one instance: its value, under the object's lock.
    Variant value;
    // Where a user class's generic handlers find their work: the property's
    // place in the link's storage, and the methods that serve the member.
    uint64_t slot = 0;
    bool stored = false;
    // Where the value of a property whose handler would only copy it lies:
    // the VM's member operations reach it without entering the handler.
    uint8_t plain_storage = PLAIN_NONE;
    bool plain_read = false;   // access only copies the stored value out
    bool plain_write = false;  // assign only replaces it
    const UserFunction* method = nullptr;
    const UserFunction* access_method = nullptr;
    const UserFunction* assign_method = nullptr;

    ClassMember() = default;
    ClassMember(const ClassMember&) = delete;
    ClassMember& operator=(const ClassMember&) = delete;
    ~ClassMember();
};

// A member vector and the symbol map over it; shared by a class and its
// objects until an object adds members of its own. The id is unique in the
// process, a copy included: what member look-up places key on
// (vm/member_site.h).
struct member_tables_st {
    member_tables_st() : id(new_id()) {}
    member_tables_st(const member_tables_st& other)
        : id(new_id()), members(other.members), by_symbol(other.by_symbol) {}
    member_tables_st& operator=(const member_tables_st&) = delete;

    const uint64_t id;
    std::vector<ClassMember*> members;
    SymbolMap<ClassMember*> by_symbol;

private:
    static uint64_t new_id() noexcept;
};

typedef Object* (*object_factory_fn)(VmStack* stack, Class* object_class);

// Member names compare without regard to case.
struct MemberNameLess {
    bool operator()(const String& a, const String& b) const;
};

class Class {
public:
    Class(const String& name, uint32_t symbol, object_factory_fn factory);
    virtual ~Class();
    Class(const Class&) = delete;
    Class& operator=(const Class&) = delete;

    // Makes the class ready to create instances; the common step enters
    // every member in the symbol map by its interned name.
    virtual void compile(Symtable& symbols);
    // A new object of the class, the head of its chain, not yet referenced.
    // No factory: 9005 with the class's name.
    virtual void create_instance(VmStack* stack, Object** out);
    // The name the BaseClass member answers: the built-in class at the root
    // of the inheritance line.
    virtual String base_class_name(VmStack* stack);
    // The parent class's name, empty for a root.
    virtual String parent_class_name() const;

    // The member of that name, appended (public, type 0) when new.
    ClassMember* define(const String& name);
    ClassMember* find(const String& name) const;
    const member_tables_st* member_tables() const noexcept { return &tables_; }
    // The members in the order of their names.
    const std::map<String, uint64_t, MemberNameLess>& members_by_name() const noexcept { return by_name_; }

    void add_instance(Object* object);
    void remove_instance(Object* object);
    // Calls visit(object) for each live instance in the order they were
    // made, under the class's mutex.
    template <class Visit>
    void for_each_instance(Visit visit) {
        std::lock_guard guard(mutex_);
        std::map<uint64_t, Object*> in_order;
        for (const auto& [object, serial] : instances_) in_order.emplace(serial, object);
        for (const auto& [serial, object] : in_order) visit(object);
    }

    const String name;
    const uint32_t symbol;
    object_factory_fn factory;  // null for an abstract class
    bool is_custom = false;     // the root of user classes: its subclasses are roots
    bool user_defined = false;  // a UserClass: its objects keep Object's member operations

private:
    std::mutex mutex_;
    std::unordered_map<Object*, uint64_t> instances_;  // to the order of making
    uint64_t next_serial_ = 0;
    member_tables_st tables_;  // owns the members
    std::map<String, uint64_t, MemberNameLess> by_name_;
};

// ---- built-in classes as rows ----

// One member of a built-in class: its name and handlers; a call handler makes
// it a method, otherwise it is a property.
struct library_class_member_row_st {
    const char* name;
    native_function call;
    native_function access;
    native_function access_ref;
    native_command assign;
};

// What a class row's constructor data points at.
struct builtin_class_data_st {
    object_factory_fn factory;  // null: the class is abstract
    bool is_custom;
    // Without the members every class has (Empty): only what is added shows.
    bool bare = false;
};

// A built-in class from its rows; the members end with a row whose name is null.
Class* create_builtin_class(Symtable& symbols, const char* name, const builtin_class_data_st* data,
                            const library_class_member_row_st* members);

// The members every class has: Class, BaseClass and ParentClass (read-only),
// AddProperty and RemoveProperty.
void define_common_members(Class* object_class);
// Whether the member is one of the read-only three (Class, BaseClass,
// ParentClass), which tell of the class rather than the object.
bool is_class_name_member(const ClassMember* member);

}  // namespace zobase
