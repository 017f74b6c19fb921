#include "objects/exception_object.h"

#include "objects/native_members.h"
#include "values/symtable.h"

namespace zobase {

namespace {

Object* create_exception(VmStack*, Class* object_class) { return new ExceptionObject(object_class); }

}  // namespace

const builtin_class_data_st exception_class_data = {create_exception, false};

const library_class_member_row_st exception_members[] = {
    ZO_FIELD_MEMBER("Detail", ExceptionObject, detail),
    ZO_FIELD_MEMBER("ErrorNo", ExceptionObject, error_no),
    ZO_FIELD_MEMBER("Message", ExceptionObject, message),
    ZO_FIELD_MEMBER("UserValue", ExceptionObject, user_value),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

ExceptionObject::~ExceptionObject() {
    error_no.release(nullptr);
    message.release(nullptr);
    detail.release(nullptr);
    user_value.release(nullptr);
}

void ExceptionObject::destroy(VmStack* stack) {
    user_value.release(stack);
    Object::destroy(stack);
}

ExceptionObject* create_exception_object(Class* exception_class, Variant* dest) {
    auto* object = new ExceptionObject(exception_class);
    wrap_new_object(object, dest);
    return object;
}

ExceptionObject* create_exception_object(VmStack* stack, Variant* dest) {
    return create_exception_object(builtin_class(stack, SYMBOL_EXCEPTION), dest);
}

}  // namespace zobase
