#pragma once
// Index keys: byte strings whose plain unsigned byte order is the order of
// the values they stand for. Each value kind has its operation; a nullable
// key puts one byte in front (0x80 for a value, the whole key zero for null,
// so that null sorts first). Character keys come from the tag's collation.
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zobase {

class Collation;
class Variant;

// No key is longer; every key buffer has this size.
constexpr uint64_t MAX_KEY_LENGTH = 240;

// The kinds of key, after the field types behind them.
enum IndexKeyKind : uint8_t {
    KEY_LOGICAL,
    KEY_INTEGER,
    KEY_NUMERIC,
    KEY_MONEY,
    KEY_DATE,
    KEY_DATETIME,
    KEY_CHARACTER,
    KEY_BINARY,
    KEY_KIND_COUNT,
};

// Writes the key of `value` into `out` (room for `length` bytes) and returns
// the bytes written. With full_length off (a search key) a character or
// binary key may be shorter than the tag's. A value of another kind than the
// operation's raises RuntimeError 11.
typedef uint64_t (*key_operation)(const Variant* value, bool full_length, char* out, uint64_t length,
                                  const Collation* collation);

// The operation for a kind, in its nullable form or not.
key_operation key_operation_for(IndexKeyKind kind, bool nullable) noexcept;
// The key length of the fixed-size kinds; 0 for character and binary.
uint64_t fixed_key_length(IndexKeyKind kind) noexcept;

// The order-preserving bytes of a double: minus zero is zero, the sign bit
// is flipped for values not negative and all bits for negative ones (NaN
// counts as negative). Big-endian, 8 bytes; a smaller buffer is error 1001.
void keyN8(double value, char* out, uint64_t length);

// Keys compared as unsigned bytes, as memcmp does, eight bytes at a time:
// keys are short, and a call of memcmp costs more than the compare on them.
inline int compare_key_bytes(const char* a, const char* b, size_t n) noexcept {
    for (; n >= 8; a += 8, b += 8, n -= 8) {
        uint64_t x, y;
        std::memcpy(&x, a, 8);
        std::memcpy(&y, b, 8);
        if (x != y) return __builtin_bswap64(x) < __builtin_bswap64(y) ? -1 : 1;
    }
    if (n >= 4) {
        uint32_t x, y;
        std::memcpy(&x, a, 4);
        std::memcpy(&y, b, 4);
        if (x != y) return __builtin_bswap32(x) < __builtin_bswap32(y) ? -1 : 1;
        a += 4, b += 4, n -= 4;
    }
    for (; n; ++a, ++b, --n)
        if (*a != *b) return static_cast<unsigned char>(*a) < static_cast<unsigned char>(*b) ? -1 : 1;
    return 0;
}

// The next key up, as an unsigned number of `length` bytes: false when the
// carry falls off the front (all 0xFF becomes all 0x00).
bool IncreaseRawKey(char* key, uint64_t length) noexcept;
// The next key down; false when the borrow falls off (all 0x00 becomes 0xFF).
bool ShrinkRawKey(char* key, uint64_t length) noexcept;

}  // namespace zobase
