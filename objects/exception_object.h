#pragma once
// The built-in class "exception": what CATCH receives. Four properties,
// ErrorNo, Message, Detail and UserValue, all false until set.
#include "objects/object.h"
#include "values/variant.h"

namespace zobase {

class ExceptionObject : public Object {
public:
    Variant error_no;
    Variant message;
    Variant detail;
    Variant user_value;

    ExceptionObject() = default;
    ~ExceptionObject() override;

    void virtual_call(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_access_ref(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_assign(VmStack* stack, unsigned symbol, size_t argc) override;

private:
    // The property of that symbol; 1734 with the name when there is none.
    Variant* property(VmStack* stack, unsigned symbol);
};

// A new exception object as the value of dest, which must be clean; the
// returned object stays owned by dest.
ExceptionObject* create_exception_object(Variant* dest);

}  // namespace zobase
