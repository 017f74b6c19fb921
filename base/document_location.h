#pragma once
// Where something stands in source text. Every layer that reports a place
// (the front end, the compiler's diagnostics, the VM's error reports) uses it.
#include <cstdint>

namespace zobase {

// One end of a span; line and column count from 1, the column in characters.
struct document_position_st {
    uint32_t offset_chars;
    uint32_t offset_bytes;
    uint32_t line;
    uint32_t column;
};

// `end` is the position just after the span.
struct document_location_st {
    document_position_st start;
    document_position_st end;
};

}  // namespace zobase
