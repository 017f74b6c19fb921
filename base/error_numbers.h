#pragma once
// The error numbers of the language, named from the error table
// (base/error_table.def): ERR_<NAME> for each row, so code says
// RuntimeError(ERR_ARGUMENT_INVALID) and never RuntimeError(11).
#include <cstddef>
#include <cstdint>

#include "base/export.h"

namespace zobase {

enum ErrorNumber : int32_t {
#define ZO_ERROR(number, name, message, format) ERR_##name = number,
#include "base/error_table.def"
#undef ZO_ERROR
};

// A duplicate tag name: a number the error table has no row for, so its
// text is empty.
constexpr int32_t ERR_TAG_NAME_DUPLICATE = 1898;

struct error_st {
    int32_t code;
    const char* message;
    const char* format;  // one %s for the detail, or null
};

// The row of an error number; null for a number the table lacks.
const error_st* find_error_row(int code) noexcept;

// The rows in their historical order, ending with a row of code 0; the
// result is the count of rows before it.
ZO_API int get_list_of_errors(const error_st** rows);
// The message of the number, cut to the buffer; empty for an unknown number.
ZO_API int TranslateError(int code, char* buffer, size_t size);

}  // namespace zobase
