#pragma once
// Errors of the language as values carry them: RuntimeError is what language
// code sees, with its message as a String; RuntimeThrow carries a thrown
// value. The dbf_, file_ and fpt_ families are raised by the table engine and
// translated to numbers by the work-area layer. The numbers themselves, the
// table and the text-free roots are in base/.
#include <cstddef>
#include <cstdint>

#include "base/error_numbers.h"
#include "base/exception.h"
#include "base/export.h"
#include "values/string.h"
#include "values/variant.h"

namespace zobase {

struct VmFrame;

class ZO_API RuntimeError : public Exception {
public:
    int32_t number = 0;
    String message;    // already formatted
    String parameter;  // the detail as given
    int32_t recovery = 0;  // not 0 once a frame has handled it: outer frames only unwind
    // The diagnostics of source compiled at run time (a macro, evaluate(), a
    // program loaded by DO): shown with the error when nothing catches it,
    // then cleared so that it shows once.
    String compile_report;

    RuntimeError();
    explicit RuntimeError(int number);
    RuntimeError(int number, const String& detail);
    RuntimeError(const RuntimeError&) = default;
    RuntimeError& operator=(const RuntimeError&) = default;
    const char* name() const noexcept override;
};

// Carries a thrown exception object from the frame that found the handler
// to the handler's frame; `position` indexes that frame's code array. Owns
// one reference to `value`.
class ZO_API RuntimeThrow : public RuntimeInterrupt {
public:
    Variant value;
    const VmFrame* target = nullptr;
    uint32_t symbol = 0;  // the CATCH variable, 0 for none
    long long position = 0;

    RuntimeThrow() : RuntimeInterrupt(INTERRUPT_THROW) {}
    RuntimeThrow(const Variant& thrown, const VmFrame* frame, uint32_t catch_symbol,
                 long long code_position);
    RuntimeThrow(const RuntimeThrow& other);
    RuntimeThrow& operator=(const RuntimeThrow& other);
    ~RuntimeThrow() override;
    const char* name() const noexcept override;
};

// A plain exception type with an optional detail text.
#define ZO_DECLARE_EXCEPTION(type, base)                                   \
    class ZO_API type : public base {                                      \
    public:                                                                \
        type() = default;                                                  \
        explicit type(const String& d) : base(d) {}                        \
        const char* name() const noexcept override { return #type; }       \
    };

class ZO_API DetailedException : public Exception {
public:
    String detail;
    DetailedException() = default;
    explicit DetailedException(const String& d) : detail(d) {}
};

ZO_DECLARE_EXCEPTION(dbf_exception, DetailedException)
ZO_DECLARE_EXCEPTION(dbf_illegal_recursion, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_field_no_null_support, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_file_corruption, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_buffer_underrun, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_field_incompatible, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_buffer_overflow, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_cptrans_char_lost, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_field_type_conflict, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_invalid_reccount_detected, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_fpt_file_missing, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_cdx_file_missing, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_need_exclusive_access, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_unknown_index_tag, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_cannot_create_cdx, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_collation_not_supported, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_invalid_index_key_len, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_index_filter_must_be_logical, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_index_tag_name_invalid_characters, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_index_tag_name_too_long, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_index_tag_name_duplicate, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_unique_key_violation, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_select_binary_index_not_supported, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_field_name_dup_or_inv, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_file_exists, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_codepage_not_supported, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_cannot_create_fpt, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_unsupported_version, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_lock_for_append_failed, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_release_append_lock_failed, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_record_out_of_range, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_not_impl, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_no_index_selected, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_eof, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_bof, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_file_readonly, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_record_in_use, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_index_cannot_store_null, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_invalid_field_number, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_type_index_expression, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_index_file_corrupted, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_index_file_not_locked, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_error_field_readonly, dbf_exception)
ZO_DECLARE_EXCEPTION(dbf_index_deadlock_detected, dbf_exception)
ZO_DECLARE_EXCEPTION(fpt_error_file_exists, dbf_exception)
ZO_DECLARE_EXCEPTION(idx_error_compact_node_geometry_missmatch, dbf_exception)

ZO_DECLARE_EXCEPTION(file_error, DetailedException)
ZO_DECLARE_EXCEPTION(file_access_denied, file_error)
ZO_DECLARE_EXCEPTION(file_write_failed, file_error)
ZO_DECLARE_EXCEPTION(file_read_failed, file_error)
ZO_DECLARE_EXCEPTION(file_sharing_violation, file_error)
ZO_DECLARE_EXCEPTION(file_error_exists, file_error)
ZO_DECLARE_EXCEPTION(file_lock_failed, file_error)
ZO_DECLARE_EXCEPTION(file_unlock_failed, file_error)

ZO_DECLARE_EXCEPTION(collation_not_impl, DetailedException)
ZO_DECLARE_EXCEPTION(str_overflow_exception, DetailedException)
ZO_DECLARE_EXCEPTION(duplicate_keyword_exception, DetailedException)
ZO_DECLARE_EXCEPTION(tokenizer_returned_unsupported_token_type_exception, DetailedException)
ZO_DECLARE_EXCEPTION(cstran_chars_lost, DetailedException)
ZO_DECLARE_EXCEPTION(copy_buffer_too_small, DetailedException)
ZO_DECLARE_EXCEPTION(overflow_error, DetailedException)

// The row's format filled with the detail, or the plain message; empty for no row.
String format_error_message(int code, const String& detail);

// Raises 1001 "Feature '%s' is not available." for something not built yet.
[[noreturn]] void raise_not_available(const char* feature);

// TranslateError with the detail filled into the format.
ZO_API int TranslateErrorEx(int code, const String& detail, char* buffer, size_t size);

}  // namespace zobase
