#include "objects/exception_object.h"

#include <cctype>
#include <cstring>

#include "values/error.h"
#include "values/symtable.h"
#include "vm/param.h"

namespace zobase {

namespace {

bool names_equal(const String& name, const char* lower) {
    std::string text = name.u8str();
    if (text.size() != std::strlen(lower)) return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(text[i])) != lower[i]) return false;
    return true;
}

void replace_value(VmStack* stack, Variant* property, const Variant* value) {
    Variant copy(*value->follow());
    property->release(stack);
    std::memcpy(static_cast<void*>(property), &copy, sizeof(Variant));
}

}  // namespace

ExceptionObject::~ExceptionObject() {
    error_no.release(nullptr);
    message.release(nullptr);
    detail.release(nullptr);
    user_value.release(nullptr);
}

// ErrorNo and Message have fixed symbols; the other two are found by name.
Variant* ExceptionObject::property(VmStack* stack, unsigned symbol) {
    if (symbol == SYMBOL_ERRORNO) return &error_no;
    if (symbol == SYMBOL_MESSAGE) return &message;
    String name = stack->symbol_text(symbol);
    if (names_equal(name, "detail")) return &detail;
    if (names_equal(name, "uservalue")) return &user_value;
    throw RuntimeError(ERR_PROPERTY_NOT_FOUND, name);
}

void ExceptionObject::virtual_call(VmStack* stack, unsigned symbol, size_t, Variant*) {
    throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
}

void ExceptionObject::virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    if (argc) throw RuntimeError(ERR_NOT_AN_ARRAY, stack->symbol_text(symbol));
    property(stack, symbol)->copy(ret);
}

void ExceptionObject::virtual_access_ref(VmStack* stack, unsigned symbol, size_t argc,
                                         Variant* ret) {
    if (argc) throw RuntimeError(ERR_NOT_AN_ARRAY, stack->symbol_text(symbol));
    property(stack, symbol)->ref(stack, ret, this);
}

void ExceptionObject::virtual_assign(VmStack* stack, unsigned symbol, size_t argc) {
    if (argc != 1) throw RuntimeError(ERR_NOT_AN_ARRAY, stack->symbol_text(symbol));
    replace_value(stack, property(stack, symbol), Param(stack, argc));
}

ExceptionObject* create_exception_object(Variant* dest) {
    auto* object = new ExceptionObject;
    dest->tag = TAG_OBJECT;
    dest->object = {new object_control_st{{1}, {1}, object}, object};
    return object;
}

}  // namespace zobase
