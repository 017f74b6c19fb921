// Objects and reflection: createobject, newobject, dodefault, addproperty,
// removeproperty, amembers, pemstatus, getpem, ainstance, incrementref and
// decrementref.
#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "objects/object.h"
#include "objects/user_class.h"
#include "vm/call_resolver.h"
#include "vm/variant_compare.h"

namespace zobase {

namespace {

String trimmed(const String& text) {
    String copy = text;
    copy.alltrim();
    return copy;
}

Object* object_argument(VmStack* stack, unsigned long long i) { return static_cast<Object*>(argument(stack, i)); }

const String& name_argument(VmStack* stack, unsigned long long i) {
    const Variant& name = argument(stack, i);
    if (name.tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return name.str();
}

unsigned symbol_of(VmStack* stack, const String& name) {
    if (!stack->resolver) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return stack->resolver->symbolize(trimmed(name));
}

// The member a caller at this point may see, or null; with `protected_too`
// also a protected one: reflection tells that it is there.
const ClassMember* visible(VmStack* stack, Object* object, const String& name, Object** holder,
                           bool protected_too = false) {
    const ClassMember* member;
    if (!object->get_member(symbol_of(stack, name), &member, holder)) return nullptr;
    if (protected_too && member->visibility == MEMBER_PROTECTED) return member;
    return member_visible(stack, object, *holder, member) ? member : nullptr;
}

bool is_added(const Object* holder, const ClassMember* member) {
    return holder->added && holder->added->by_symbol.find(member->symbol) == member;
}

// Arrays compare element by element, text as whole strings.
bool differs(const Variant& value, const Variant& default_value) {
    if (value.tag != default_value.tag) return true;
    if (value.tag == TAG_OBJECT) return value.object.object != default_value.object.object;
    if (value.tag == TAG_ARRAY) {
        const Array& a = value.array;
        const Array& b = default_value.array;
        if (a.count != b.count || a.columns != b.columns) return true;
        for (uint64_t i = 1; i <= a.count; ++i)
            if (differs(*a.read(i), *b.read(i))) return true;
        return false;
    }
    bool null_seen = false;
    return inline_variant_cmp(&value, &default_value, &null_seen, nullptr) != 0;
}

// ---- amembers ----

struct member_listing_st {
    VmStack* stack;
    Object* object;
    bool methods;
    std::map<String, const ClassMember*, MemberNameLess> found;
};

// A member counts once, as the look-up along the chain finds it.
int list_member(void* context, Object* holder, unsigned symbol, const ClassMember* member) {
    auto* listing = static_cast<member_listing_st*>(context);
    const ClassMember* effective;
    Object* effective_holder;
    if (!listing->object->get_member(symbol, &effective, &effective_holder) || effective != member) return 0;
    if (!member_visible(listing->stack, listing->object, holder, member)) return 0;
    if (member->type == MEMBER_METHOD && !listing->methods) return 0;
    listing->found.emplace(member->name.upper(), member);
    return 0;
}

// An element of an array that was dimensioned over an older one may still
// hold a value of it.
Variant* emptied(VmStack* stack, Variant* element) {
    element->release(stack);
    return element;
}

const char* member_kind(const ClassMember* member) {
    return member->type == MEMBER_METHOD ? "Method" : "Property";
}

}  // namespace

void stackcall_createobject(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    if (argc < 1 || argument(stack, 1).tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    Class* object_class = find_class(stack, trimmed(string_argument(stack, 1)));
    create_object(stack, object_class, 2, argc - 1, result);
}

// NEWOBJECT(class, file, application, arguments...): without a file, as
// CREATEOBJECT; there are no application containers.
void stackcall_newobject(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    if (argc < 1 || argument(stack, 1).tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    String file;
    if (argc >= 2 && argument(stack, 2).tag == TAG_STRING) file = trimmed(string_argument(stack, 2));
    if (argc >= 3 && argument(stack, 3).tag == TAG_STRING && trimmed(string_argument(stack, 3)).size())
        raise_not_available("NEWOBJECT application");
    Class* object_class = find_class(stack, trimmed(string_argument(stack, 1)), file.size() ? &file : nullptr);
    unsigned long long leading = std::min<unsigned long long>(argc, 3);
    create_object(stack, object_class, leading + 1, argc - leading, result);
}

void stackcall_dodefault(VmStack* stack, unsigned long long argc, Variant* result) {
    if (argc < 1) throw assert_failed_exception("DODEFAULT without its object's slot");
    dodefault(stack, argc, result);
}

void stackcall_addproperty(VmStack* stack, unsigned long long argc, Variant* result) {
    const Variant* value = argc >= 3 ? &argument(stack, 3) : nullptr;
    add_property_by_name(stack, object_argument(stack, 1), name_argument(stack, 2), value);
    result->set_true();
}

void stackcall_removeproperty(VmStack* stack, unsigned long long, Variant* result) {
    object_argument(stack, 1)->removeproperty(stack, trimmed(name_argument(stack, 2)));
    result->set_true();
}

// AMEMBERS(array, object [, 0|1|2|3]): 0 the property names; 1 names and
// kinds; 2 contained objects, of which there are none; 3 name, kind and two
// empty columns for signature and help text. Names upper case, sorted.
void stackcall_amembers(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    long long flag = argc >= 3 ? argument(stack, 3).integer : 0;
    if (flag < 0 || flag > 3) throw RuntimeError(ERR_ARGUMENT_INVALID);
    member_listing_st listing{stack, object_argument(stack, 2), flag != 0, {}};
    if (flag != 2) listing.object->virtual_enum_properties(list_member, &listing);
    result->set_integer(static_cast<long long>(listing.found.size()));
    if (listing.found.empty()) return;
    uint64_t columns = flag == 0 ? 0 : flag == 1 ? 2 : 4;
    Array* array = Pointer(stack, 1)->dimension(stack, listing.found.size(), columns);
    uint64_t row = 1;
    for (const auto& [name, member] : listing.found) {
        if (!columns) {
            emptied(stack, array->write(stack, row++))->set_string(name);
            continue;
        }
        emptied(stack, array->write(stack, row, 1))->set_string(name);
        emptied(stack, array->write(stack, row, 2))->set_string(String(member_kind(member)));
        for (uint64_t column = 3; column <= columns; ++column)
            emptied(stack, array->write(stack, row, column))->set_string(String(""));
        ++row;
    }
}

// PEMSTATUS(object, name, attribute): 0 changed from its default, 1
// read-only, 2 protected or hidden, 4 user-defined, 5 defined, 6 inherited.
// Protected members are seen from anywhere, hidden ones as access sees them.
// The kind (3) is text, which this logical function can't give: 11.
void stackcall_pemstatus(VmStack* stack, unsigned long long, Variant* result) {
    Object* object = object_argument(stack, 1);
    long long attribute = argument(stack, 3).integer;
    Object* holder;
    const ClassMember* member = visible(stack, object, name_argument(stack, 2), &holder, true);
    if (attribute == 5) return result->set_bool(member != nullptr);
    if (attribute < 0 || attribute > 6 || attribute == 3) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (!member) raise_member_not_found(stack, symbol_of(stack, name_argument(stack, 2)));
    switch (attribute) {
    case 0: {
        if (is_added(holder, member)) return result->set_true();
        if (!member->stored) return result->set_false();
        std::shared_lock guard(holder->lock);
        return result->set_bool(differs(static_cast<UserObject*>(holder)->values[member->slot], member->default_value));
    }
    case 1: return result->set_bool(member->type == MEMBER_PROPERTY && !member->assign);
    case 2: return result->set_bool(member->visibility != MEMBER_PUBLIC);
    case 4: return result->set_bool(member->stored || member->method || is_added(holder, member));
    default: return result->set_bool(holder != object);
    }
}

// GETPEM(object, name): a property's value, read as the language reads it.
// A method's source text isn't kept.
void stackcall_getpem(VmStack* stack, unsigned long long, Variant* result) {
    Object* object = object_argument(stack, 1);
    Object* holder;
    const ClassMember* member = visible(stack, object, name_argument(stack, 2), &holder);
    if (!member) raise_member_not_found(stack, symbol_of(stack, name_argument(stack, 2)));
    if (member->type != MEMBER_PROPERTY) raise_not_available("GETPEM of a method");
    read_property(stack, object, member->symbol, result);
}

// AINSTANCE(array, class): the live objects of the class (not of its
// subclasses), as references; 0 leaves the array alone.
void stackcall_ainstance(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    Class* object_class = nullptr;
    if (stack->resolver)
        object_class = stack->resolver->find_class(stack, symbol_of(stack, name_argument(stack, 2)), nullptr);
    std::vector<object_ptr_st> held;
    if (object_class)
        object_class->for_each_instance([&](Object* object) {
            if (object_ptr_try_acquire(object->self())) held.push_back(object->self());
        });
    result->set_integer(static_cast<long long>(held.size()));
    if (held.empty()) return;
    Array* array = Pointer(stack, 1)->dimension(stack, held.size(), 0);
    for (size_t i = 0; i < held.size(); ++i) {
        Variant* element = emptied(stack, array->write(stack, i + 1));
        element->tag = TAG_OBJECT;
        element->object = held[i];
    }
}

// The uses counted afterwards, less the one the argument itself holds.
void stackcall_incrementref(VmStack* stack, unsigned long long, Variant* result) {
    const object_ptr_st& ptr = argument(stack, 1).object;
    object_argument(stack, 1);
    object_ptr_add_use(ptr);
    result->set_integer(static_cast<long long>(ptr.control->use_count()) - 1);
}

void stackcall_decrementref(VmStack* stack, unsigned long long, Variant* result) {
    const object_ptr_st& ptr = argument(stack, 1).object;
    object_argument(stack, 1);
    object_ptr_drop_use(stack, ptr);
    uint64_t uses = ptr.control->use_count();
    result->set_integer(uses ? static_cast<long long>(uses) - 1 : 0LL);
}

}  // namespace zobase
