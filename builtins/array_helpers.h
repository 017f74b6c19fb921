#pragma once
// Filling arrays from native functions: the functions that answer with an
// array (adir, alines, astackinfo, parseargs ...) write through these.
#include <cstdint>
#include <vector>

#include "values/variant.h"

namespace zobase {

// Replaces the element's value with a copy of `value`.
inline void store_element(VmStack* stack, Array* array, uint64_t index, const Variant& value) {
    Variant* element = array->write(stack, index);
    element->release(stack);
    element->set_variant(&value);
}

inline void store_string(VmStack* stack, Array* array, uint64_t index, const String& text) {
    Variant* element = array->write(stack, index);
    element->release(stack);
    element->set_string(text);
}

inline void store_integer(VmStack* stack, Array* array, uint64_t index, long long value) {
    Variant* element = array->write(stack, index);
    element->release(stack);
    element->set_integer(value);
}

// Makes the array hold at least `needed` elements, keeping its contents; a
// two-dimensional array grows by whole rows.
inline void grow_to_hold(VmStack* stack, Variant* target, uint64_t needed) {
    const Array& array = target->array;
    if (array.count >= needed) return;
    if (array.columns) target->dimension(stack, (needed + array.columns - 1) / array.columns, array.columns);
    else target->dimension(stack, needed, 0);
}

// The variable becomes a one-dimensional array of the texts.
inline void fill_column(VmStack* stack, Variant* variable, const std::vector<String>& texts) {
    Array* array = variable->dimension(stack, texts.size(), 0);
    for (uint64_t i = 0; i < texts.size(); ++i) store_string(stack, array, i + 1, texts[i]);
}

}  // namespace zobase
