#pragma once
// Internal helpers shared by the String sources: buffer records, character
// stepping with an ASCII shortcut for UTF-8, and byte transcoding that treats
// binary text as already being in whatever charset it meets.
#include <cstddef>

#include "text/charset.h"
#include "values/string.h"

namespace zobase::string_detail {

// Charset constants may be read before anyone started the registry.
inline void require_charsets() {
    if (!Charset::binary) __init_character_sets();
}

string_buffer_st* new_buffer(size_t capacity);
// A buffer whose first `size` bytes are used, the rest free for appends.
string_buffer_st* new_growing_buffer(size_t size, size_t capacity);
// How many of the n bytes from p, from the first, are ASCII.
size_t ascii_prefix(const char* p, size_t n);
// Raises an atomic mark to value unless it is there already.
void raise_to(std::atomic<uint64_t>& mark, uint64_t value);

// An ASCII byte in UTF-8 is always a whole character, which spares the
// virtual decoder on the common case.
inline char32_t next_char(const Charset* cs, const char*& p, const char* end) {
    if (cs == Charset::utf8 && static_cast<unsigned char>(*p) < 0x80) return static_cast<char32_t>(*p++);
    return cs->next(p, end);
}

inline char32_t prev_char(const Charset* cs, const char*& p, const char* begin) {
    if (cs == Charset::utf8 && p > begin && static_cast<unsigned char>(p[-1]) < 0x80)
        return static_cast<char32_t>(*--p);
    return cs->prev(p, begin);
}

// Raw byte copy is right when the charsets agree or either side is binary.
inline bool copies_raw(const Charset* from, const Charset* to) {
    return from == to || from == Charset::binary || to == Charset::binary;
}

// Bytes that [begin, end) in `from` takes in `to`; non-zero when it cannot.
CstranError transcoded_size(const char* begin, const char* end, const Charset* from,
                            const Charset* to, CstranRecovery recovery, size_t& size);

// Writes [begin, end) converted to `to` at out, advancing out.
CstranError transcode(const char* begin, const char* end, const Charset* from, char*& out,
                      char* out_end, const Charset* to, CstranRecovery recovery);

inline bool is_code_point(char32_t c) { return c <= 0x10FFFF; }

}  // namespace zobase::string_detail
