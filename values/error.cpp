// RuntimeError: the language's error, its message formatted from the table.
#include "values/error.h"

#include "base/error_text.h"

namespace zobase {

const char* RuntimeError::name() const noexcept { return "zobase::RuntimeError"; }

String format_error_message(int code, const String& detail) {
    return String(error_text(code, detail.u8str()).c_str());
}

RuntimeError::RuntimeError() : message(""), parameter("") {}

RuntimeError::RuntimeError(int n) : number(n), parameter("") {
    const error_st* row = find_error_row(n);
    message = String(row ? row->message : "");
}

RuntimeError::RuntimeError(int n, const String& detail)
    : number(n), message(format_error_message(n, detail)), parameter(detail) {}

void raise_not_available(const char* feature) { throw RuntimeError(ERR_NOT_AVAILABLE, String(feature)); }

int TranslateErrorEx(int code, const String& detail, char* buffer, size_t size) {
    copy_error_text(error_text(code, detail.u8str()), buffer, size);
    return 0;
}

}  // namespace zobase
