#pragma once
// What FOR EACH walks over an array: a snapshot of the array value, which
// shares its storage copy-on-write, so writes to the array inside the loop
// leave the walk alone. The built-in class "Array.Iterator": MoveNext, and
// the read-only Key (the 1-based element number in storage order) and Value.
#include <cstdint>

#include "objects/class.h"
#include "values/variant.h"
#include "vm/object.h"

namespace zobase {

class ArrayEnumerator : public Object {
public:
    ArrayEnumerator(Class* object_class, const Array& array);
    ~ArrayEnumerator() override;

    // True while an element is left; the position then stops one past the end.
    bool move_next();
    // 1234 before the first MoveNext and after the last element.
    void require_current() const;

    Variant array;
    uint64_t position = 0;  // 0 before the first MoveNext
};

extern const builtin_class_data_st array_enumerator_class_data;
extern const library_class_member_row_st array_enumerator_members[];

// A new enumerator over a copy of `array` as the value of dest, which must be clean.
void create_array_enumerator(VmStack* stack, const Array& array, Variant* dest);

}  // namespace zobase
