#include "builtins/library.h"
#include "values/variant.h"

namespace zobase {

namespace {

uint8_t nullable_bit(const compiler_type_info_st& info) { return info.type & FORMAL_NULLABLE; }

// A string that may be null when any argument may be, and constant when all are.
void string_of_all_arguments(unsigned long long argc, const compiler_type_info_st* arguments,
                             compiler_type_info_st* result) {
    uint8_t nullable = 0;
    bool constant = true;
    for (unsigned long long i = 0; i < argc; ++i) {
        nullable |= nullable_bit(arguments[i]);
        constant = constant && arguments[i].is_constant;
    }
    result->type = FORMAL_STRING | nullable;
    result->is_constant = constant;
}

// A constant count argument as a length; a non-number leaves the length unknown.
bool constant_count(const Variant& value, uint64_t* count) {
    if (value.tag == TAG_INTEGER) {
        *count = value.integer < 0 ? 0 : static_cast<uint64_t>(value.integer);
        return true;
    }
    if (value.tag == TAG_NUMERIC) {
        *count = value.numeric.value < 0 ? 0 : static_cast<uint64_t>(value.numeric.value);
        return true;
    }
    return false;
}

// The trims look at argument 1 alone, once per argument: a constant first
// argument makes a constant result whatever the trim lists are.
void hook_trim(unsigned long long argc, compiler_type_info_st* arguments, Variant*,
               compiler_type_info_st* result) {
    result->type = FORMAL_STRING | nullable_bit(arguments[0]);
    result->length = arguments[0].length;
    result->is_constant = true;
    for (unsigned long long i = 0; i < argc; ++i)
        result->is_constant = result->is_constant && arguments[0].is_constant;
}

void hook_left(unsigned long long, compiler_type_info_st* arguments, Variant* values,
               compiler_type_info_st* result) {
    result->type = FORMAL_STRING | nullable_bit(arguments[0]) | nullable_bit(arguments[1]);
    result->is_constant = arguments[0].is_constant && arguments[1].is_constant;
    uint64_t count;
    if (arguments[1].is_constant && constant_count(values[1], &count))
        result->length = count;
    else
        result->length = arguments[0].length;
}

// With two arguments the stated length is the length less the start, one
// short of the remainder; it only feeds the result's static width.
void hook_substr(unsigned long long argc, compiler_type_info_st* arguments, Variant* values,
                 compiler_type_info_st* result) {
    string_of_all_arguments(argc, arguments, result);
    uint64_t count;
    if (argc == 2) {
        uint64_t length = arguments[0].length;
        if (arguments[1].is_constant && length != LENGTH_UNKNOWN &&
            constant_count(values[1], &count))
            result->length = length - std::min(length, count);
    } else if (argc >= 3) {
        if (arguments[2].is_constant && constant_count(values[2], &count))
            result->length = count;
        else
            result->length = arguments[0].length;
    }
}

void hook_bintoc(unsigned long long argc, compiler_type_info_st* arguments, Variant*,
                 compiler_type_info_st* result) {
    string_of_all_arguments(argc, arguments, result);
}

}  // namespace

const library_compile_hook_row_st core_compile_hook_rows[] = {
    {"alltrim", hook_trim}, {"ltrim", hook_trim},   {"rtrim", hook_trim},   {"trim", hook_trim},
    {"left", hook_left},    {"substr", hook_substr}, {"bintoc", hook_bintoc}, {nullptr, nullptr},
};

}  // namespace zobase
