#pragma once
// The fields of a table as an expression compiled for it sees them: filters,
// FOR clauses and index keys read these before any variable of the same
// name, by position (VmOpReadFieldByIndex). The table engine describes its
// fields this way; the compiler reads the description.
#include <cstdint>
#include <vector>

namespace zobase {

// A field the compiler can read when an expression is compiled for a table.
struct compiler_field_st {
    unsigned symbol;
    uint8_t field_type;  // the DBF field type number
    uint32_t width;
    uint16_t index;
};

// The table whose field names resolve first (index keys, filters).
struct compiler_table_context_st {
    std::vector<compiler_field_st> fields;
};

}  // namespace zobase
