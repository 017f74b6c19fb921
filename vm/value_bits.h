#pragma once
// Copying a value between slots in the dispatch loop's hot paths.
//
// A value whose fields were just stored one by one (an integer sum, a pushed
// constant, a returned result) is read back from the store buffer only by
// loads no wider than those stores. One 16-byte load over a tag byte and an
// 8-byte payload store waits for both to reach the cache instead: a dozen
// cycles on every copy of a freshly made number. So the tag is copied as a
// byte and the payload word by word.
#include <cstdint>
#include <cstring>

#include "values/variant.h"

namespace zobase {

// dest takes source's tag and payload as they are: nothing is acquired, and
// nothing dest held is released.
[[gnu::always_inline]] inline void take_value_bits(Variant* dest, const Variant* source) noexcept {
    uint64_t w0, w1, w2, w3;
    std::memcpy(&w0, source->payload, 8);
    std::memcpy(&w1, source->payload + 8, 8);
    std::memcpy(&w2, source->payload + 16, 8);
    std::memcpy(&w3, source->payload + 24, 8);
    asm("" : "+r"(w0), "+r"(w1), "+r"(w2), "+r"(w3));  // four loads, each one word wide
    dest->tag = source->tag;
    std::memcpy(dest->payload, &w0, 8);
    std::memcpy(dest->payload + 8, &w1, 8);
    std::memcpy(dest->payload + 16, &w2, 8);
    std::memcpy(dest->payload + 24, &w3, 8);
}

// Variant::set_variant with word-sized loads: a new reference for what owns.
[[gnu::always_inline]] inline void copy_value(Variant* dest, const Variant* source) noexcept {
    take_value_bits(dest, source);
    if (dest->owns()) Variant::acquire_functions[dest->tag](dest);
}

}  // namespace zobase
