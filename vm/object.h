#pragma once
// The object protocol and an object's shape. The VM reaches every object,
// built-in or defined in source, only through the five virtual operations
// below (`destroy` when the last use ends; `virtual_call`, `virtual_access`,
// `virtual_access_ref`, `virtual_assign` for members). What they do, the
// classes and their member tables, is the object model's (objects/), which
// defines every function declared here; the VM itself never looks inside.
//
// An object is a chain with one link per class of its inheritance line,
// derived first: `parent` is the next link. Only the first link is ever
// referenced from a value; it owns the links behind it.
#include <atomic>
#include <cstddef>
#include <memory>

#include "base/rw_spin_lock.h"
#include "values/object_ref.h"
#include "values/string.h"

namespace zobase {

class Class;
class Program;
class Variant;
class VmStack;
struct ClassMember;
struct member_tables_st;
struct member_site_st;
struct object_added_st;

// How a member handler was entered; kept in the stack's call context. The
// inside modes are a property's own access or assign method reaching the
// stored value.
enum MemberMode : uint32_t {
    MEMBER_MODE_NONE = 0,
    MEMBER_MODE_ACCESS = 1,
    MEMBER_MODE_ACCESS_INSIDE = 2,
    MEMBER_MODE_ASSIGN = 3,
    MEMBER_MODE_ASSIGN_INSIDE = 4,
    MEMBER_MODE_CALL = 5,
};

// Called for each member by enum_properties; a result other than 0 stops the walk.
typedef int (*enum_properties_fn)(void* context, Object* holder, unsigned symbol, const ClassMember* member);

class Object {
public:
    explicit Object(Class* object_class = nullptr);
    // Deletes the links behind this one.
    virtual ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    // The last use ended: release what the object holds (the values of
    // added members) and leave the class's instance set. Called on every
    // link, first link first, before the chain is deleted.
    virtual void destroy(VmStack* stack);
    // A method call: argc arguments lie above the object's slot, argument 1
    // the highest of them (the stack's argument window is set on them).
    virtual void virtual_call(VmStack* stack, unsigned symbol, size_t argc, Variant* ret);
    // A property read, with argc array-style subscripts.
    virtual void virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret);
    // A property read that must deliver a by-reference slot into ret.
    virtual void virtual_access_ref(VmStack* stack, unsigned symbol, size_t argc, Variant* ret);
    // A property write; the value is the last of the argc slots, above any subscripts.
    virtual void virtual_assign(VmStack* stack, unsigned symbol, size_t argc);
    // A method call as virtual_call makes it; the member found is kept at
    // the instruction's look-up place for the next call.
    void call_member(VmStack* stack, member_site_st& site, unsigned symbol, size_t argc, Variant* ret);
    // For a call that compiled code runs in place: the program of a method
    // a user class wrote in the language, with the member and the link that
    // holds it, found and kept as call_member finds them; null when the
    // call must go through call_member (a built-in class or handler, a
    // member that is no method, which call_member reports).
    const Program* method_program(VmStack* stack, member_site_st& site, unsigned symbol, Object** holder,
                                  const ClassMember** member);
    // A read without subscripts that needs no handler: a plain stored
    // property the caller may see, of an object whose operations are the
    // default ones. Copies it into ret (clean) and answers true; otherwise
    // answers false having changed nothing, and the read goes the usual way.
    // The member found is kept at the look-up place, as by call_member.
    bool read_plain(VmStack* stack, member_site_st& site, unsigned symbol, Variant* ret);
    // A write of the whole value that needs no handler, as read_plain has
    // it: the value is the top of the stack, which stays to be popped.
    bool write_plain(VmStack* stack, member_site_st& site, unsigned symbol);
    // Changes a plain stored property that may be read and written so in
    // place: update(stored, operand) runs on it under the storage guard and
    // must run nothing of the language. False when the property isn't plain
    // or update answered false (having changed nothing).
    typedef bool (*plain_update_fn)(Variant* stored, const Variant* operand);
    bool update_plain(VmStack* stack, member_site_st& site, unsigned symbol, plain_update_fn update,
                      const Variant* operand);
    // This link's members in the order of its member vector.
    virtual int enum_properties(enum_properties_fn callback, void* context);

    // The member of that symbol, looked up from this link along `parent`,
    // and the link that holds it.
    bool get_member(unsigned symbol, const ClassMember** member, Object** holder) const;
    // enum_properties along the chain.
    int virtual_enum_properties(enum_properties_fn callback, void* context);
    // A property of this instance alone; assigns instead when the chain has
    // the name with an assign handler.
    void addproperty(VmStack* stack, unsigned symbol, const Variant* value);
    // Removes a member that addproperty made: 1734 for an unknown name, 1760
    // for a member of the class.
    void removeproperty(VmStack* stack, const String& name);
    // A reference to this object, which must be alive and be a first link.
    object_ptr_st self() const noexcept { return {control, const_cast<Object*>(this)}; }

    object_control_st* control = nullptr;  // set when a value first holds the object
    RwSpinLock lock;                       // guards the property storage
    Class* const object_class;
    Object* parent = nullptr;  // the next link of the chain; owned
    // The members added to this instance, and the private copies of the
    // member tables that hold them; none until the first addproperty.
    std::unique_ptr<object_added_st> added;
    // The member tables: the class's own until the first addproperty.
    std::atomic<const member_tables_st*> tables{nullptr};

private:
    // The member a call at the look-up place reaches, kept there; null for
    // an object of a class not written in the language (its virtual_call
    // answers).
    const ClassMember* call_target(VmStack* stack, member_site_st& site, unsigned symbol, Object** holder);
};

// Holds an object's lock over its storage, shared for reading or exclusive
// for writing, while objects may be shared between threads; with one thread
// it takes nothing. It remembers whether it locked, so a switch to shared
// objects between its start and end leaves the lock as it found it.
template <bool Exclusive>
class StorageGuard {
public:
    explicit StorageGuard(const Object* object) noexcept
        : lock_(objects_may_be_shared() ? &const_cast<Object*>(object)->lock : nullptr) {
        if (!lock_) return;
        if constexpr (Exclusive) lock_->lock();
        else lock_->lock_shared();
    }
    ~StorageGuard() { unlock(); }
    StorageGuard(const StorageGuard&) = delete;
    StorageGuard& operator=(const StorageGuard&) = delete;
    // Ends the guard early.
    void unlock() noexcept {
        if (!lock_) return;
        if constexpr (Exclusive) lock_->unlock();
        else lock_->unlock_shared();
        lock_ = nullptr;
    }

private:
    RwSpinLock* lock_;
};
using StorageReadGuard = StorageGuard<false>;
using StorageWriteGuard = StorageGuard<true>;

}  // namespace zobase
