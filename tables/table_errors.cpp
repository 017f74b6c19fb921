// The translation lists of the work-area operations, one per operation. In
// each list the more specific type stands first.
#include "tables/table_errors.h"

namespace zobase {

thread_local int TableOperationDepth::depth_ __attribute__((tls_model("initial-exec"))) = 0;

namespace {

[[noreturn]] void raise(int number, const String& detail) {
    if (detail.size()) throw RuntimeError(number, detail);
    throw RuntimeError(number);
}

void translate_use(const String& name) {
    try {
        throw;
    } catch (const file_sharing_violation&) {
        raise(ERR_FILE_ACCESS_DENIED, name);
    } catch (const dbf_unsupported_version&) {
        raise(ERR_NOT_A_TABLE, name);
    } catch (const dbf_error_codepage_not_supported&) {
        throw RuntimeError(ERR_NOT_AVAILABLE);
    } catch (const dbf_invalid_reccount_detected&) {
        raise(ERR_TABLE_CORRUPTED, name);
    } catch (const dbf_error_field_name_dup_or_inv&) {
        throw RuntimeError(ERR_FIELD_NAME_INVALID);
    } catch (const dbf_fpt_file_missing&) {
        raise(ERR_MEMO_FILE_INVALID, name);
    } catch (const dbf_error_file_corruption&) {
        raise(ERR_TABLE_CORRUPTED, name);
    } catch (const dbf_cdx_file_missing&) {
        throw RuntimeError(ERR_STRUCTURAL_CDX_NOT_FOUND);
    } catch (const dbf_index_file_corrupted&) {
        raise(ERR_INDEX_CORRUPTED, name);
    } catch (const file_error&) {
        throw RuntimeError(ERR_FILESYSTEM_GENERIC);
    } catch (const dbf_exception&) {
        throw RuntimeError(ERR_TABLE_GENERIC);
    } catch (...) {
    }
}

void translate_create(const String& name) {
    try {
        throw;
    } catch (const dbf_error_field_name_dup_or_inv&) {
        throw RuntimeError(ERR_FIELD_NAME_INVALID);
    } catch (const file_error_exists&) {
        raise(ERR_FILE_EXISTS, name);
    } catch (const file_sharing_violation&) {
        throw RuntimeError(ERR_FILE_IN_USE);
    } catch (const file_error&) {
        raise(ERR_FILE_ACCESS_DENIED, name);
    } catch (const dbf_exception&) {
        raise(ERR_TABLE_CORRUPTED, name);
    } catch (...) {
    }
}

void translate_field_read(const String&) {
    try {
        throw;
    } catch (const dbf_exception&) {
        throw RuntimeError(ERR_TABLE_GENERIC);
    } catch (...) {
    }
}

void translate_get_chars(const String&) {
    try {
        throw;
    } catch (const dbf_error_cptrans_char_lost&) {
        throw RuntimeError(ERR_CHARSET_TRANSLATION);
    } catch (const dbf_error_buffer_underrun&) {
        throw RuntimeError(ERR_NOT_AVAILABLE);
    } catch (const dbf_exception&) {
        throw RuntimeError(ERR_TABLE_GENERIC);
    } catch (...) {
    }
}

void translate_set_null(const String& field) {
    try {
        throw;
    } catch (const dbf_error_field_readonly&) {
        raise(ERR_FIELD_READ_ONLY, field);
    } catch (const dbf_error_field_no_null_support&) {
        raise(ERR_FIELD_NOT_NULLABLE, field);
    } catch (...) {
    }
}

// Logical, date and datetime; the number setters add the overflow of the
// conversions, the string setter the characters the charset lacks.
void translate_set_value(const String& field) {
    try {
        throw;
    } catch (const dbf_error_field_readonly&) {
        raise(ERR_FIELD_READ_ONLY, field);
    } catch (const dbf_error_field_type_conflict&) {
        throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    } catch (...) {
    }
}

void translate_set_number(const String& field) {
    try {
        throw;
    } catch (const overflow_error&) {
        throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    } catch (...) {
    }
    translate_set_value(field);
}

void translate_set_string(const String& field) {
    try {
        throw;
    } catch (const dbf_error_cptrans_char_lost&) {
        throw RuntimeError(ERR_CHARSET_TRANSLATION);
    } catch (...) {
    }
    translate_set_value(field);
}

void translate_go(const String&) {
    try {
        throw;
    } catch (const dbf_error_record_out_of_range&) {
        throw RuntimeError(ERR_RECORD_OUT_OF_RANGE);
    } catch (...) {
    }
}

void translate_update(const String& alias) {
    try {
        throw;
    } catch (const dbf_illegal_recursion&) {
        throw RuntimeError(ERR_ILLEGAL_RECURSION);
    } catch (const dbf_index_file_corrupted& e) {
        raise(ERR_INDEX_CORRUPTED, e.detail);
    } catch (const dbf_error_index_cannot_store_null&) {
        throw RuntimeError(ERR_INDEX_NULL);
    } catch (const dbf_invalid_index_key_len&) {
        throw RuntimeError(ERR_KEY_LENGTH_INVALID);
    } catch (const dbf_unique_key_violation& e) {
        raise(ERR_UNIQUENESS_VIOLATED, e.detail);
    } catch (const dbf_error_file_readonly&) {
        raise(ERR_CURSOR_READ_ONLY, alias);
    } catch (...) {
    }
}

// Seeks and moves in index order.
void translate_seek(const String&) {
    try {
        throw;
    } catch (const dbf_index_file_corrupted& e) {
        raise(ERR_INDEX_CORRUPTED, e.detail);
    } catch (const dbf_error_no_index_selected&) {
        throw RuntimeError(ERR_NO_INDEX_ORDER);
    } catch (...) {
    }
}

void translate_remove(const String& name) {
    try {
        throw;
    } catch (const file_sharing_violation&) {
        raise(ERR_FILE_ACCESS_DENIED, name);
    } catch (const file_error&) {
        raise(ERR_FILE_NOT_FOUND, name);
    } catch (...) {
    }
}

// ---- indexes

void translate_create_index(const String& name) {
    try {
        throw;
    } catch (const dbf_error_index_tag_name_duplicate& e) {
        raise(ERR_TAG_NAME_DUPLICATE, e.detail);
    } catch (const dbf_error_index_tag_name_invalid_characters& e) {
        raise(ERR_TAG_NAME_INVALID, e.detail);
    } catch (const dbf_error_index_tag_name_too_long& e) {
        raise(ERR_TAG_NAME_TOO_LONG, e.detail);
    } catch (const dbf_illegal_recursion&) {
        throw RuntimeError(ERR_ILLEGAL_RECURSION);
    } catch (const dbf_invalid_index_key_len&) {
        throw RuntimeError(ERR_KEY_LENGTH_INVALID);
    } catch (const dbf_unique_key_violation& e) {
        raise(ERR_UNIQUENESS_VIOLATED, e.detail);
    } catch (const dbf_index_filter_must_be_logical&) {
        throw RuntimeError(ERR_FOR_WHILE_NOT_LOGICAL);
    } catch (const dbf_error_type_index_expression&) {
        throw RuntimeError(ERR_MEMO_OPERATION_INVALID);
    } catch (const dbf_error_cannot_create_cdx&) {
        raise(ERR_FILE_EXISTS, name);
    } catch (const dbf_error_index_cannot_store_null&) {
        throw RuntimeError(ERR_INDEX_NULL);
    } catch (const dbf_index_file_corrupted&) {
        raise(ERR_INDEX_CORRUPTED, name);
    } catch (...) {
    }
}

void translate_select_index(const String&) {
    try {
        throw;
    } catch (const dbf_error_unknown_index_tag& e) {
        raise(ERR_TAG_NOT_FOUND, e.detail);
    } catch (const dbf_select_binary_index_not_supported&) {
        throw RuntimeError(ERR_NOT_AVAILABLE);
    } catch (const dbf_error_need_exclusive_access&) {
        throw RuntimeError(ERR_EXCLUSIVE_REQUIRED);
    } catch (...) {
    }
    translate_seek(String());
}

void translate_create_key(const String&) {
    try {
        throw;
    } catch (const dbf_error_field_type_conflict&) {
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    } catch (const dbf_error_no_index_selected&) {
        throw RuntimeError(ERR_NO_INDEX_ORDER);
    } catch (...) {
    }
}

typedef void (*translation_fn)(const String& detail);

// Keyed by TableOperation.
const translation_fn translations[] = {
    translate_use,       translate_create,     translate_field_read, translate_get_chars, translate_set_null,
    translate_set_value, translate_set_number, translate_set_string, translate_go,
    translate_update,    translate_remove,     nullptr,
    translate_create_index, translate_select_index, translate_create_key, translate_seek, translate_seek,
};

}  // namespace

void translate_table_exception(TableOperation operation, const String& detail) {
    if (translation_fn translate = translations[operation]) translate(detail);
}

void pass_table_exception() {
    if (!TableOperationDepth::outermost()) throw;
    try {
        throw;
    } catch (const Exception& unnamed) {
        throw RuntimeError(ERR_TABLE_ENGINE_NATIVE, String(unnamed.name()));
    }
}

}  // namespace zobase
