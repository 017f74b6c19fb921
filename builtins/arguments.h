#pragma once
// Reading the arguments of a native call. The compiler has cast each one to
// its formal's type, so readers trust the tag a signature promises.
#include <cstdint>

#include "text/charset.h"
#include "values/error.h"
#include "values/variant.h"
#include "vm/param.h"
#include "vm/runtime_services.h"

namespace zobase {

// Argument i from 1; a by-reference slot reads as its target.
inline const Variant& argument(VmStack* stack, unsigned long long i) {
    return *Param(stack, i)->follow();
}

// Null for the library: the null value or an object reference to nothing.
inline bool is_null_argument(const Variant& value) {
    return value.tag == TAG_NULL || (value.tag == TAG_OBJECT && !value.object.control);
}

// The null rule of the text functions: any null among the arguments received.
inline bool any_null_argument(VmStack* stack, unsigned long long argc) {
    for (unsigned long long i = 1; i <= argc; ++i)
        if (is_null_argument(argument(stack, i))) return true;
    return false;
}

// A count or position must fit a signed 32-bit integer: error 39 otherwise.
inline int32_t checked_count(long long value) {
    if (value < INT32_MIN || value > INT32_MAX) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    return static_cast<int32_t>(value);
}

inline int32_t integer_argument(VmStack* stack, unsigned long long i) {
    return checked_count(argument(stack, i).integer);
}

inline const String& string_argument(VmStack* stack, unsigned long long i) {
    return argument(stack, i).str();
}

// A date or datetime argument; a datetime gives its day, a date midnight.
inline date_st date_argument(VmStack* stack, unsigned long long i) {
    date_st date;
    argument(stack, i).cast(&date);
    return date;
}

inline datetime_st datetime_argument(VmStack* stack, unsigned long long i) {
    datetime_st datetime;
    argument(stack, i).cast(&datetime);
    return datetime;
}

// The charset of new text that takes none from an argument: the machine's,
// or UTF-8 on a stack without a runtime.
inline const Charset* default_charset(VmStack* stack) {
    const Charset* machine = stack->services ? stack->services->default_charset() : nullptr;
    return machine ? machine : Charset::utf8;
}

// Stores a copy of value as element `index` of a one-dimensional array.
inline void set_array_element(VmStack* stack, Array* array, uint64_t index, const Variant& value) {
    Variant* element = array->write(stack, index);
    element->release(stack);
    element->set_variant(&value);
}

// Stores a copy of value through a by-reference argument.
inline void set_reference_argument(VmStack* stack, unsigned long long i, const Variant& value) {
    Variant* target = Param(stack, i)->follow();
    target->release(stack);
    target->set_variant(&value);
}

}  // namespace zobase
