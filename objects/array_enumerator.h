#pragma once
// What FOR EACH walks over an array: a snapshot of the array value, which
// shares its storage copy-on-write, so writes to the array inside the loop
// leave the walk alone. Members: MoveNext, and the read-only KEY (the 1-based
// element number in storage order) and VALUE.
#include <cstdint>

#include "objects/object.h"
#include "values/variant.h"

namespace zobase {

class ArrayEnumerator : public Object {
public:
    explicit ArrayEnumerator(const Array& array);
    ~ArrayEnumerator() override;

    void virtual_call(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_access_ref(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) override;
    void virtual_assign(VmStack* stack, unsigned symbol, size_t argc) override;

private:
    // True while an element is left; the position then stops one past the end.
    bool move_next();
    // 1234 before the first MoveNext and after the last element.
    void require_current() const;

    Variant array_;
    uint64_t position_ = 0;  // 0 before the first MoveNext
};

// A new enumerator over a copy of `array` as the value of dest, which must be clean.
void create_array_enumerator(const Array& array, Variant* dest);

}  // namespace zobase
