#pragma once
// Checks of UTF-8 byte sequences, for text that arrives as bytes (JSON,
// URLs) and must be well-formed before it becomes a string.
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zobase {

// The length of the well-formed UTF-8 sequence that starts at p, 0 when
// there is none (p < end).
inline size_t utf8_sequence_length(const char* p, const char* end) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(p);
    size_t available = static_cast<size_t>(end - p);
    auto continuation = [&](size_t i) { return i < available && (s[i] & 0xC0) == 0x80; };
    if (s[0] < 0x80) return 1;
    if (s[0] >= 0xC2 && s[0] <= 0xDF && continuation(1)) return 2;
    if (s[0] >= 0xE0 && s[0] <= 0xEF && continuation(1) && continuation(2)) {
        if ((s[0] == 0xE0 && s[1] < 0xA0) || (s[0] == 0xED && s[1] > 0x9F)) return 0;
        return 3;
    }
    if (s[0] >= 0xF0 && s[0] <= 0xF4 && continuation(1) && continuation(2) && continuation(3)) {
        if ((s[0] == 0xF0 && s[1] < 0x90) || (s[0] == 0xF4 && s[1] > 0x8F)) return 0;
        return 4;
    }
    return 0;
}

// How many bytes from the start are well-formed UTF-8; ASCII goes eight
// bytes at a time.
inline size_t utf8_valid_prefix(const char* text, size_t size) {
    size_t i = 0;
    while (i < size) {
        uint64_t word;
        if (i + 8 <= size && (std::memcpy(&word, text + i, 8), !(word & 0x8080808080808080ull))) {
            i += 8;
            continue;
        }
        size_t length = utf8_sequence_length(text + i, text + size);
        if (!length) return i;
        i += length;
    }
    return size;
}

}  // namespace zobase
