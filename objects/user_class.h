#pragma once
// Classes defined in source (DEFINE CLASS ... ENDDEFINE) and their objects.
// A UserClass's members carry the generic handlers below, which run the
// class's methods or read and write the object's property storage.
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "base/document_location.h"
#include "objects/class.h"
#include "vm/user_function.h"

namespace zobase {

class Symtable;

// One method as the class body gave it.
struct user_method_st {
    String name;
    uint32_t visibility;  // a MemberVisibility
    std::unique_ptr<UserFunction> function;
};

// The parent clause: AS name [OF file].
struct parent_clause_st {
    String name;
    uint32_t symbol = 0;
    String file;  // empty without OF
};

class UserClass : public Class {
public:
    UserClass(const String& name, uint32_t symbol, const parent_clause_st& parent);

    // A method of the body; a second one of the same name is dropped.
    void add_method(const String& name, uint32_t visibility, std::unique_ptr<UserFunction> function);
    const std::vector<user_method_st>& methods() const noexcept { return methods_; }

    // Turns the methods into members: "x_access" and "x_assign" serve the
    // property x, anything else is a method; properties get storage.
    void compile(Symtable& symbols) override;
    // The chain of the inheritance line, one link per class, this class first.
    void create_instance(VmStack* stack, Object** out) override;
    String base_class_name(VmStack* stack) override;
    String parent_class_name() const override;

    const parent_clause_st& parent_clause() const noexcept { return parent_; }
    // The parent as the linker found it in the module; null leaves it to be
    // looked up at the first instance. A parent that is Custom makes a root.
    void set_parent(Class* parent);
    // The classes of the inheritance line, this one first; resolves the
    // parents on first use (1733 with the name of one not found).
    const std::vector<Class*>& line(VmStack* stack);

    uint64_t stored_count = 0;  // properties with storage in each instance

private:
    Class* parent_class(VmStack* stack);

    parent_clause_st parent_;
    std::vector<user_method_st> methods_;
    uint64_t common_members_ = 0;  // the members every class has come first
    std::atomic<bool> parent_known_{false};
    Class* parent_found_ = nullptr;  // null for a root
    std::mutex line_mutex_;
    std::atomic<bool> line_ready_{false};
    std::vector<Class*> line_;
};

// An instance's link for one UserClass: its declared properties.
class UserObject : public Object {
public:
    UserObject(VmStack* stack, UserClass* object_class);
    ~UserObject() override;
    void destroy(VmStack* stack) override;

    std::unique_ptr<Variant[]> values;
    uint64_t count;
};

void user_class_generic_call(VmStack* stack, unsigned long long argc, Variant* ret);
void user_class_generic_access(VmStack* stack, unsigned long long argc, Variant* ret);
void user_class_generic_access_ref(VmStack* stack, unsigned long long argc, Variant* ret);
void user_class_generic_assign(VmStack* stack, unsigned long long argc);
void user_class_generic_read(VmStack* stack, unsigned long long argc, Variant* ret);
void user_class_generic_read_ref(VmStack* stack, unsigned long long argc, Variant* ret);
void user_class_generic_write(VmStack* stack, unsigned long long argc);

// The language's DODEFAULT: the same member of the next class up the line,
// in the mode the running member was entered in. Argument 1 is the slot the
// compiler reserved for the object, the real arguments follow.
void dodefault(VmStack* stack, unsigned long long argc, Variant* ret);

}  // namespace zobase
