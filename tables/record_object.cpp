#include "tables/record_object.h"

#include <cstring>
#include <memory>

#include "objects/object.h"
#include "values/error.h"
#include "vm/param.h"
#include "vm/vm_stack.h"

namespace zobase {

RecordObject::~RecordObject() {
    for (property_st& property : properties_) property.value.release(nullptr);
}

Variant* RecordObject::property(VmStack* stack, uint32_t symbol) {
    for (property_st& property : properties_)
        if (property.symbol == symbol) return &property.value;
    throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
}

void RecordObject::set(VmStack* stack, uint32_t symbol, const Variant& value) {
    Variant copy(*value.follow());
    for (property_st& property : properties_) {
        if (property.symbol != symbol) continue;
        property.value.release(stack);
        std::memcpy(static_cast<void*>(&property.value), &copy, sizeof(Variant));
        return;
    }
    properties_.push_back({symbol, Variant()});
    std::memcpy(static_cast<void*>(&properties_.back().value), &copy, sizeof(Variant));
}

void RecordObject::virtual_call(VmStack* stack, unsigned symbol, size_t, Variant*) {
    throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
}

void RecordObject::virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    const Variant* value = property(stack, symbol);
    if (argc) throw RuntimeError(ERR_ARGUMENT_INVALID);
    ret->release(stack);
    value->copy(ret);
}

void RecordObject::virtual_access_ref(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    Variant* value = property(stack, symbol);
    if (argc) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const object_ptr_st owner = self();
    value->ref(stack, ret, &owner);
}

void RecordObject::virtual_assign(VmStack* stack, unsigned symbol, size_t argc) {
    property(stack, symbol);
    if (argc != 1) throw RuntimeError(ERR_ARGUMENT_INVALID);
    set(stack, symbol, *Param(stack, argc));
}

RecordObject* create_record_object(Variant* dest) {
    auto object = std::make_unique<RecordObject>();
    wrap_new_object(object.get(), dest);
    return object.release();
}

}  // namespace zobase
