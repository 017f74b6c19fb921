#pragma once
// How a caller describes a new table: options and one fixed record per
// field. fielddef_st is part of the exported interface, 160 bytes.
#include <cstddef>
#include <cstdint>

namespace zobase {

// The type numbers of fielddef_st, one per field type letter.
enum FieldTypeNumber : int32_t {
    FIELD_TYPE_NONE = 0,  // the sentinel for a letter without a number
    FIELD_TYPE_BLOB = 1,       // W
    FIELD_TYPE_CHARACTER = 2,  // C
    FIELD_TYPE_INTEGER = 3,    // I
    FIELD_TYPE_CURRENCY = 4,   // Y
    FIELD_TYPE_DATE = 5,       // D
    FIELD_TYPE_DATETIME = 6,   // T
    FIELD_TYPE_DOUBLE = 7,     // B
    FIELD_TYPE_GENERAL = 8,    // G
    FIELD_TYPE_LOGICAL = 9,    // L
    FIELD_TYPE_MEMO = 10,      // M
    FIELD_TYPE_NUMERIC = 11,   // N
    FIELD_TYPE_FLOAT = 12,     // F
    FIELD_TYPE_VARBINARY = 13, // Q
    FIELD_TYPE_VARCHAR = 14,   // V
};

// Both directions of the letter table; 0 and FIELD_TYPE_NONE for no match.
char field_type_letter(int32_t type) noexcept;
int32_t field_type_number(char letter) noexcept;

// The nullable values of fielddef_st.
constexpr int32_t FIELD_NULLABLE = 1;
constexpr int32_t FIELD_NOT_NULLABLE = 2;

constexpr size_t FIELDDEF_NAME_SIZE = 88;

struct createopts_st {
    int64_t codepage = 0;           // 0: the runtime's default
    uint32_t memo_block_size = 0;   // 0: 64
    bool temporary = false;         // a cursor that lives in a memory file
    bool rename_allowed = false;    // a name that had to be changed is accepted
    bool clamp_allowed = false;     // an excessive width is cut down, not refused
};

struct fielddef_st {
    int32_t type;
    char name[FIELDDEF_NAME_SIZE];  // NUL-terminated UTF-8
    bool default_length;
    uint64_t length;  // characters for C and V, bytes otherwise
    bool default_decimals;
    uint64_t decimals;
    int32_t nullable;  // FIELD_NULLABLE or FIELD_NOT_NULLABLE
    bool autoincrement;
    bool binary;
    uint64_t next_value;
    bool has_next_value;
    uint64_t step;
    bool has_step;
};
static_assert(sizeof(fielddef_st) == 160, "fielddef_st is 160 bytes in the exported interface");

}  // namespace zobase
