// The members every class has: Class, BaseClass and ParentClass, read-only,
// and the methods AddProperty and RemoveProperty.
#include <cctype>
#include <string>

#include "objects/object.h"
#include "values/error.h"
#include "vm/call_resolver.h"
#include "vm/param.h"

namespace zobase {

namespace {

const String& name_argument(VmStack* stack, unsigned long long argc) {
    if (argc < 1) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const Variant* name = Param(stack, 1)->follow();
    if (name->tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return name->str();
}

void class_access(VmStack* stack, unsigned long long, Variant* ret) {
    ret->set_string(current_object<Object>(stack)->object_class->name);
}

void base_class_access(VmStack* stack, unsigned long long, Variant* ret) {
    ret->set_string(current_object<Object>(stack)->object_class->base_class_name(stack));
}

void parent_class_access(VmStack* stack, unsigned long long, Variant* ret) {
    ret->set_string(current_object<Object>(stack)->object_class->parent_class_name());
}

void add_property_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    const Variant* value = argc >= 2 ? Param(stack, 2)->follow() : nullptr;
    add_property_by_name(stack, stack->context.this_object, name_argument(stack, argc), value);
    ret->set_true();
}

void remove_property_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    stack->context.this_object->removeproperty(stack, name_argument(stack, argc));
    ret->set_true();
}

bool is_name_start(unsigned char c) { return std::isalpha(c) || c == '_' || c >= 0x80; }
bool is_name_char(unsigned char c) { return is_name_start(c) || std::isdigit(c); }

// "name", "name[rows]" or "name[rows, columns]" (also with parentheses).
struct property_name_st {
    std::string name;
    uint64_t rows = 0;
    uint64_t columns = 0;
};

uint64_t read_bound(const std::string& text, size_t& at) {
    while (at < text.size() && text[at] == ' ') ++at;
    size_t start = at;
    while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at]))) ++at;
    if (start == at || at - start > 9) throw RuntimeError(ERR_ARGUMENT_INVALID);
    uint64_t bound = std::stoull(text.substr(start, at - start));
    while (at < text.size() && text[at] == ' ') ++at;
    if (bound == 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return bound;
}

property_name_st parse_property_name(const String& text) {
    std::string raw = text.u8str();
    size_t first = raw.find_first_not_of(' ');
    size_t last = raw.find_last_not_of(' ');
    if (first == std::string::npos) throw RuntimeError(ERR_ARGUMENT_INVALID);
    raw = raw.substr(first, last - first + 1);
    property_name_st parsed;
    size_t at = 0;
    if (!is_name_start(static_cast<unsigned char>(raw[0]))) throw RuntimeError(ERR_ARGUMENT_INVALID);
    while (at < raw.size() && is_name_char(static_cast<unsigned char>(raw[at]))) ++at;
    parsed.name = raw.substr(0, at);
    if (at == raw.size()) return parsed;
    char close = raw[at] == '[' ? ']' : raw[at] == '(' ? ')' : 0;
    if (!close) throw RuntimeError(ERR_ARGUMENT_INVALID);
    parsed.rows = read_bound(raw, ++at);
    if (at < raw.size() && raw[at] == ',') parsed.columns = read_bound(raw, ++at);
    if (at + 1 != raw.size() || raw[at] != close) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return parsed;
}

const library_class_member_row_st common_member_rows[] = {
    {"AddProperty", add_property_call, nullptr, nullptr, nullptr},
    {"BaseClass", nullptr, base_class_access, nullptr, nullptr},
    {"Class", nullptr, class_access, nullptr, nullptr},
    {"ParentClass", nullptr, parent_class_access, nullptr, nullptr},
    {"RemoveProperty", remove_property_call, nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace

void define_common_members(Class* object_class) {
    for (const library_class_member_row_st* row = common_member_rows; row->name; ++row) {
        ClassMember* member = object_class->define(String(row->name));
        member->type = row->call ? MEMBER_METHOD : MEMBER_PROPERTY;
        member->call = row->call;
        member->access = row->access;
    }
}

bool is_class_name_member(const ClassMember* member) {
    return member->access == class_access || member->access == base_class_access ||
           member->access == parent_class_access;
}

// An array property takes the value in every element.
void add_property_by_name(VmStack* stack, Object* object, const String& text, const Variant* value) {
    property_name_st parsed = parse_property_name(text);
    if (!stack->resolver) throw RuntimeError(ERR_ARGUMENT_INVALID);
    unsigned symbol = stack->resolver->symbolize(String(parsed.name.c_str()));
    if (!parsed.rows) return object->addproperty(stack, symbol, value);
    Variant array;
    Array* elements = array.dimension(stack, parsed.rows, parsed.columns);
    if (value)
        for (uint64_t i = 1; i <= elements->count; ++i) value->copy(elements->write(stack, i));
    try {
        object->addproperty(stack, symbol, &array);
    } catch (...) {
        array.release(stack);
        throw;
    }
    array.release(stack);
}

}  // namespace zobase
