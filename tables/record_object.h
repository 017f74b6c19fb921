#pragma once
// The object SCATTER NAME makes: one property per field, in field order,
// each a plain value the program may read and change; GATHER NAME takes
// them back. Properties can be added (SCATTER NAME ... ADDITIVE).
#include <cstdint>
#include <deque>

#include "values/variant.h"
#include "vm/object.h"

namespace zobase {

class RecordObject : public Object {
public:
    RecordObject() = default;
    ~RecordObject() override;

    // Sets the property of that symbol, adding it when it is new.
    void set(VmStack* stack, uint32_t symbol, const Variant& value);

    void virtual_call(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_access_ref(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_assign(VmStack* stack, unsigned symbol, size_t argc) override;

private:
    struct property_st {
        uint32_t symbol;
        Variant value;
    };
    // 1734 with the name when there is none.
    Variant* property(VmStack* stack, uint32_t symbol);

    // A deque never moves its elements: a Variant copied by a move of the
    // storage would take a second reference that nothing releases.
    std::deque<property_st> properties_;
};

// A new, empty record object as the value of dest, which must be clean.
RecordObject* create_record_object(Variant* dest);

}  // namespace zobase
