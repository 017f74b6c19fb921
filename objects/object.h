#pragma once
// The object model's side of Object (vm/object.h): references to objects,
// creating them, and the call context every member handler runs in.
//
// The recipe for a built-in class written in C++ (Collection, Thread, the
// exception; tables and sessions the same way):
//   1. derive the object from Object, constructed with its Class*;
//   2. write each member as a handler of the native form, finding the object
//      with current_object<T>(stack) and the arguments with Param;
//   3. list the handlers in a library_class_member_row_st table and give a
//      factory `Object* f(VmStack*, Class*)` in a builtin_class_data_st;
//   4. add a row for the class to the core's class table (builtins/);
//   5. C++ code that makes one finds its class with builtin_class(stack, name)
//      and hands the new object to a value with wrap_new_object.
// See docs/ARCHITECTURE.md.
#include <cstddef>
#include <memory>
#include <vector>

#include "objects/class.h"
#include "values/variant.h"
#include "vm/object.h"
#include "vm/vm_stack.h"

namespace zobase {

// The members one instance added, and the tables that show them. Added
// members live as long as the object, also after removeproperty, since a
// member handler may be running on one; tables replaced by a later change
// stay alive for the same reason.
struct object_added_st {
    std::vector<std::unique_ptr<ClassMember>> members;
    SymbolMap<ClassMember*> by_symbol;  // the members added and not removed
    std::vector<std::unique_ptr<member_tables_st>> tables;  // the newest last
};

// The running member handler's object: the link of the chain that holds it.
template <class T>
T* current_object(VmStack* stack) {
    return static_cast<T*>(stack->context.class_object);
}

// Takes a fresh object (the head of its chain) into dest, which must be
// clean, as the first reference to it; the object joins its class's instances.
void wrap_new_object(Object* object, Variant* dest);

// A built-in class by name (through the stack's resolver); 1733 when there is none.
Class* builtin_class(VmStack* stack, const char* name);
Class* builtin_class(VmStack* stack, unsigned symbol);
// A new object of the class Empty, which has no members until some are
// added (SCATTER NAME, Json.Decode), into dest, which must be clean.
Object* create_empty_object(VmStack* stack, Variant* dest);

// A class by name as CREATEOBJECT finds it; 1733 with the name when there is none.
Class* find_class(VmStack* stack, const String& name, const String* file = nullptr);

// A new instance of the class into dest (clean): created, referenced, and its
// INIT (when the chain has one) called with the argc arguments of the
// running native call from `first` on (Param numbering). INIT returning .F.
// releases the object without its DESTROY and leaves dest null.
void create_object(VmStack* stack, Class* object_class, unsigned long long first, unsigned long long argc,
                   Variant* dest);
// The same with arguments given as values, for C++ callers.
void CreateObject(VmStack* stack, const String& class_name, const Variant* args, size_t argc, Variant* dest);

// Calls a member's call handler as the VM would, without the visibility
// check: for INIT and DESTROY. The object's slot and argc arguments must lie
// on the stack with the argument window set on them.
void call_member_directly(VmStack* stack, Object* object, const ClassMember* member, Object* holder,
                          size_t argc, Variant* ret);

// One property for add_properties: its symbol, the name it shows (null: the
// symbol's text) and its value (null: .F.).
struct new_property_st {
    unsigned symbol;
    const String* name;
    const Variant* value;
};

// Object::addproperty for many names at once, as SCATTER NAME and
// Json.Decode make objects: a name the chain has with an assign handler is
// assigned, the others become members of the instance, all entered with one
// copy of the member tables. A name given twice keeps the later value.
void add_properties(VmStack* stack, Object* object, const new_property_st* items, size_t count);

// AddProperty by a name as users write it: "name", or "name[rows]" and
// "name[rows, columns]" for an array whose elements all take the value. A
// malformed name is 11.
void add_property_by_name(VmStack* stack, Object* object, const String& name, const Variant* value);

// A property's value as the language reads it (an access method runs),
// into dest, which must be clean.
void read_property(VmStack* stack, Object* object, unsigned symbol, Variant* dest);

// Whether the running code may see the member: public always, protected
// from a method of the same object, hidden from a method of the class that
// holds it.
bool member_visible(VmStack* stack, const Object* object, const Object* holder, const ClassMember* member);

// 1734 "Property %s not found" with the symbol's name.
[[noreturn]] void raise_member_not_found(VmStack* stack, unsigned symbol);

// Sets the call context for one member and restores it at the end. The
// caller's own reference keeps the object alive meanwhile: the VM's is the
// object's slot under the arguments, and every C++ caller holds a value of
// it. Entering the same member of the same
// link in the same access or assign mode moves to the inside mode instead,
// so that a property's own access method reaches the stored value.
class MemberScope {
public:
    MemberScope(VmStack* stack, Object* object, Object* holder, const ClassMember* member, uint32_t mode);
    ~MemberScope();
    MemberScope(const MemberScope&) = delete;
    MemberScope& operator=(const MemberScope&) = delete;

private:
    VmStack* stack_;
    member_context_st saved_;
};

// Makes released objects go through DESTROY and their virtual destructor;
// the runtime calls it at start.
void install_object_destruction();

// A typed owning reference, for C++ code that keeps an object outside a value.
template <class T>
class object_ptr {
public:
    object_ptr() = default;
    object_ptr(const object_ptr&) = delete;
    object_ptr& operator=(const object_ptr&) = delete;
    object_ptr(object_ptr&& other) noexcept : ptr_(other.ptr_) { other.ptr_ = {nullptr, nullptr}; }
    // Without a stack: DESTROY doesn't run. Release explicitly where it should.
    ~object_ptr() { release_internal(nullptr); }

    // Holds a second reference to the object of a live reference.
    void add_ref_internal(const object_ptr_st& other) {
        release_internal(nullptr);
        object_ptr_acquire(other);
        ptr_ = other;
    }
    T* get_internal() const noexcept { return static_cast<T*>(ptr_.object); }
    const object_ptr_st& raw() const noexcept { return ptr_; }
    void release_internal(VmStack* stack) { object_ptr_release(stack, ptr_); }

private:
    object_ptr_st ptr_{nullptr, nullptr};
};

}  // namespace zobase
