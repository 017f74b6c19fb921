// The byte forms of index keys, one operation per value kind.
#include "tables/index_key.h"

#include <cstring>

#include "base/error_numbers.h"
#include "tables/byte_order.h"
#include "text/collation.h"
#include "values/error.h"
#include "values/variant.h"

namespace zobase {

namespace {

[[noreturn]] void wrong_kind() { throw RuntimeError(ERR_ARGUMENT_INVALID); }

// A number of any kind as a double; number keys take each other's values,
// so that SEEK 5 finds 5.00 in a numeric tag.
double number_of(const Variant* value) {
    switch (value->tag) {
    case TAG_INTEGER: return static_cast<double>(value->integer);
    case TAG_NUMERIC: return value->numeric.value;
    case TAG_MONEY: {
        int64_t units = static_cast<int64_t>(static_cast<uint64_t>(value->money.mid) << 32 | value->money.low);
        return static_cast<double>(units) / 10000.0;
    }
    default: wrong_kind();
    }
}

uint64_t create_logical_key(const Variant* value, bool, char* out, uint64_t, const Collation*) {
    if (!value->is_logical()) wrong_kind();
    out[0] = value->tag == TAG_TRUE ? 'T' : 'F';
    return 1;
}

uint64_t create_int4_bigendian_key(const Variant* value, bool, char* out, uint64_t, const Collation*) {
    int64_t number = value->tag == TAG_INTEGER ? value->integer : static_cast<int64_t>(number_of(value));
    write_be32(out, static_cast<uint32_t>(number) + 0x80000000u);
    return 4;
}

uint64_t create_float8_bigendian_key(const Variant* value, bool, char* out, uint64_t length, const Collation*) {
    keyN8(number_of(value), out, length);
    return 8;
}

// The 64-bit count of ten-thousandths, moved up by 2^63 so that the
// smallest value is 0.
uint64_t create_currency8_bigendian_key(const Variant* value, bool, char* out, uint64_t, const Collation*) {
    uint64_t units;
    if (value->tag == TAG_MONEY) units = static_cast<uint64_t>(value->money.mid) << 32 | value->money.low;
    else units = static_cast<uint64_t>(static_cast<int64_t>(number_of(value) * 10000.0));
    write_be64(out, units + 0x8000000000000000ull);
    return 8;
}

uint64_t create_date_key(const Variant* value, bool, char* out, uint64_t length, const Collation*) {
    if (value->tag == TAG_DATE) keyN8(value->date.julian, out, length);
    else if (value->tag == TAG_DATETIME) keyN8(value->datetime.julian, out, length);
    else wrong_kind();
    return 8;
}

uint64_t create_datetime_key(const Variant* value, bool, char* out, uint64_t length, const Collation*) {
    double day;
    if (value->tag == TAG_DATE) day = value->date.julian;
    else if (value->tag == TAG_DATETIME) day = value->datetime.julian + value->datetime.msecs / 86400000.0;
    else wrong_kind();
    keyN8(day, out, length);
    return 8;
}

uint64_t create_char_key(const Variant* value, bool full_length, char* out, uint64_t length,
                         const Collation* collation) {
    if (value->tag != TAG_STRING) wrong_kind();
    return collation->create_char_key(value->str(), full_length, out, length);
}

// The bytes as they are, padded with `pad` under full length.
template <char pad>
uint64_t create_padded_key(const Variant* value, bool full_length, char* out, uint64_t length, const Collation*) {
    if (value->tag != TAG_STRING) wrong_kind();
    uint64_t n = value->str().size() < length ? value->str().size() : length;
    std::memcpy(out, value->str().read(), n);
    if (!full_length) return n;
    std::memset(out + n, pad, length - n);
    return length;
}

template <key_operation inner>
uint64_t create_nullable_key(const Variant* value, bool full_length, char* out, uint64_t length,
                             const Collation* collation) {
    if (value->is_null()) {
        std::memset(out, 0, length);
        return length;
    }
    out[0] = static_cast<char>(0x80);
    return 1 + inner(value, full_length, out + 1, length - 1, collation);
}

struct key_kind_row_st {
    key_operation plain;
    key_operation nullable;
    uint64_t length;
};

// Keyed by IndexKeyKind. A character key under a collation has no nullable
// form: the collation's keys use every byte value.
const key_kind_row_st key_kinds[KEY_KIND_COUNT] = {
    {create_logical_key, create_nullable_key<create_logical_key>, 1},
    {create_int4_bigendian_key, create_nullable_key<create_int4_bigendian_key>, 4},
    {create_float8_bigendian_key, create_nullable_key<create_float8_bigendian_key>, 8},
    {create_currency8_bigendian_key, create_nullable_key<create_currency8_bigendian_key>, 8},
    {create_date_key, create_nullable_key<create_date_key>, 8},
    {create_datetime_key, create_nullable_key<create_datetime_key>, 8},
    {create_char_key, create_nullable_key<create_padded_key<' '>>, 0},
    {create_padded_key<'\0'>, create_nullable_key<create_padded_key<'\0'>>, 0},
};

}  // namespace

key_operation key_operation_for(IndexKeyKind kind, bool nullable) noexcept {
    return nullable ? key_kinds[kind].nullable : key_kinds[kind].plain;
}

uint64_t fixed_key_length(IndexKeyKind kind) noexcept { return key_kinds[kind].length; }

void keyN8(double value, char* out, uint64_t length) {
    if (length < 8) raise_not_available("buffer too small.");
    if (value == 0.0) value = 0.0;  // minus zero sorts as zero
    uint64_t bits;
    std::memcpy(&bits, &value, 8);
    bits = value >= 0.0 ? bits ^ 0x8000000000000000ull : ~bits;
    write_be64(out, bits);
}

bool IncreaseRawKey(char* key, uint64_t length) noexcept {
    for (uint64_t i = length; i-- > 0;) {
        auto& byte = reinterpret_cast<unsigned char&>(key[i]);
        if (byte != 0xFF) {
            ++byte;
            return true;
        }
        byte = 0x00;
    }
    return false;
}

bool ShrinkRawKey(char* key, uint64_t length) noexcept {
    for (uint64_t i = length; i-- > 0;) {
        auto& byte = reinterpret_cast<unsigned char&>(key[i]);
        if (byte != 0x00) {
            --byte;
            return true;
        }
        byte = 0xFF;
    }
    return false;
}

}  // namespace zobase
