#pragma once
// Payloads of the number and time types.
#include <cstdint>

namespace zobase {

typedef long long integer_type_st;

// Decimals are for display only; all ones means "not known".
struct numeric_type_st {
    double value;
    uint64_t decimals;
};
constexpr uint64_t DECIMALS_UNKNOWN = ~0ull;

// 96-bit two's complement counting ten-thousandths: signed high word, then
// the middle and low unsigned words. Kept in 16 bytes.
struct money_type_st {
    int32_t high;
    uint32_t mid;
    uint32_t low;
    uint32_t unused;
};

// Julian day number; 0 is the empty date.
struct date_st {
    uint32_t julian;
};

// Julian day and milliseconds since midnight; both 0 is the empty datetime.
struct datetime_st {
    uint32_t julian;
    uint32_t msecs;
};

}  // namespace zobase
