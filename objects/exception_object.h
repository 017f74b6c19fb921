#pragma once
// The built-in class "Exception": what CATCH receives. Four properties,
// ErrorNo, Message, Detail and UserValue, all false until set.
#include "objects/class.h"
#include "vm/object.h"

namespace zobase {

class ExceptionObject : public Object {
public:
    explicit ExceptionObject(Class* object_class) : Object(object_class) {}
    ~ExceptionObject() override;
    void destroy(VmStack* stack) override;

    Variant error_no;
    Variant message;
    Variant detail;
    Variant user_value;
};

extern const builtin_class_data_st exception_class_data;
extern const library_class_member_row_st exception_members[];

// A new exception object as the value of dest, which must be clean; the
// returned object stays owned by dest.
ExceptionObject* create_exception_object(Class* exception_class, Variant* dest);
// The same, finding the class through the stack.
ExceptionObject* create_exception_object(VmStack* stack, Variant* dest);

}  // namespace zobase
