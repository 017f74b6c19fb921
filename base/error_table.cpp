// The error table and the conversions of error numbers to text.
#include <cstring>
#include <string>

#include "base/error_numbers.h"
#include "base/error_text.h"
#include "base/exception.h"

namespace zobase {

namespace {

// Historical order, not numeric; the row of code 0 ends the table.
const error_st error_table[] = {
#define ZO_ERROR(number, name, message, format) {number, message, format},
#include "base/error_table.def"
#undef ZO_ERROR
    {0, nullptr, nullptr},
};

constexpr int ERROR_ROW_COUNT = sizeof(error_table) / sizeof(error_table[0]) - 1;
static_assert(ERROR_ROW_COUNT == 107);

// Formatting happens in a buffer of this size; longer results are cut.
constexpr size_t FORMAT_BUFFER_SIZE = 4096;

// Fills the format's %s with the detail. Only %s is a placeholder: the one
// format with another directive is never given a detail.
std::string fill_format(const char* format, const std::string& detail) {
    std::string out;
    const char* hole = std::strstr(format, "%s");
    if (!hole) {
        out = format;
    } else {
        out.append(format, hole);
        out += detail;
        out += hole + 2;
    }
    if (out.size() > FORMAT_BUFFER_SIZE - 1) out.resize(FORMAT_BUFFER_SIZE - 1);
    return out;
}

}  // namespace

Exception::~Exception() = default;
const char* Exception::name() const noexcept { return "zobase::Exception"; }
const char* assert_failed_exception::name() const noexcept {
    return "zobase::assert_failed_exception";
}

const error_st* find_error_row(int code) noexcept {
    for (const error_st* row = error_table; row->code != 0; ++row)
        if (row->code == code) return row;
    return nullptr;
}

std::string error_text(int code, const std::string& detail) {
    const error_st* row = find_error_row(code);
    if (!row) return "";
    return row->format ? fill_format(row->format, detail) : row->message;
}

void copy_error_text(const std::string& text, char* buffer, size_t size) {
    // A zero size wraps to the largest count, as callers of the C API expect.
    size_t limit = size - 1;
    size_t n = text.size() < limit ? text.size() : limit;
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
}

int TranslateError(int code, char* buffer, size_t size) {
    const error_st* row = find_error_row(code);
    copy_error_text(row ? row->message : "", buffer, size);
    return 0;
}

int get_list_of_errors(const error_st** rows) {
    *rows = error_table;
    return ERROR_ROW_COUNT;
}

}  // namespace zobase
