#include <algorithm>
#include <cstring>

#include "base/call_trace.h"
#include "text/charset_classes.h"
#include "values/error.h"

namespace zobase {

CstranError Binary::calculate(const char* begin, const char* end, const Charset* target,
                              size_t& size, CstranRecovery recovery) const {
    size = static_cast<size_t>(end - begin);
    return 0;
}

CstranError Binary::convert(const char*& src, const char* src_end, char*& dst, char* dst_end,
                            const Charset* target, CstranRecovery recovery) const {
    size_t count = std::min(src_end - src, dst_end - dst);
    std::memcpy(dst, src, count);
    src += count;
    dst += count;
    return src < src_end ? -1 : 0;
}

// Sign extension puts bytes from 0x80 above the Unicode range, so binary
// data never compares equal to text and never reads as undecodable.
char32_t Binary::next(const char*& p, const char* end) const {
    ZO_ASSERT(p < end);
    return static_cast<char32_t>(static_cast<int32_t>(static_cast<signed char>(*p++)));
}

void Binary::verify(const char* bytes, size_t size, size_t& good_bytes, size_t& good_chars,
                    size_t& bad_count, size_t& first_bad) const {
    good_bytes += size;
    good_chars += size;
}

Charset* load_custom_charset(const charset_st* row, bool nocptrans) {
    return new Binary(*row, nocptrans);
}

Manual_SBCSCharset::Manual_SBCSCharset(const charset_st& r, bool variant, const char16_t* table,
                                       char substitute)
    : Charset(r, variant), table_(table), substitute_(substitute) {
    ZO_TRACE();
    reverse_.reserve(256);
    for (int byte = 0; byte < 256; ++byte) {
        if (table_[byte] != UNMAPPED_UNIT) reverse_.emplace(table_[byte], static_cast<char>(byte));
    }
}

char32_t Manual_SBCSCharset::next(const char*& p, const char* end) const {
    ZO_ASSERT(p < end);
    return table_[static_cast<unsigned char>(*p++)];
}

void Manual_SBCSCharset::verify(const char* bytes, size_t size, size_t& good_bytes,
                                size_t& good_chars, size_t& bad_count, size_t& first_bad) const {
    for (size_t i = 0; i < size; ++i) {
        if (table_[static_cast<unsigned char>(bytes[i])] != UNMAPPED_UNIT) {
            ++good_bytes;
            ++good_chars;
        } else {
            ++bad_count;
            if (first_bad == 0) first_bad = i + 1;
        }
    }
}

CstranError Manual_SBCSCharset::out(const char*& src, const char* src_end, char16_t*& utf16,
                                    char16_t* utf16_end) const {
    while (src < src_end) {
        if (utf16 == utf16_end) return -1;
        *utf16++ = table_[static_cast<unsigned char>(*src++)];
    }
    return 0;
}

CstranError Manual_SBCSCharset::in(const char16_t*& utf16, const char16_t* utf16_end, char*& dst,
                                   char* dst_end, CstranRecovery recovery) const {
    while (utf16 < utf16_end) {
        if (dst == dst_end) return -1;
        auto found = reverse_.find(*utf16);
        if (found != reverse_.end()) {
            *dst++ = found->second;
            ++utf16;
            continue;
        }
        if (recovery == CSTRAN_STRICT) return 1;
        // A surrogate pair is one character and earns one substitute.
        bool pair = utf16 + 1 < utf16_end && (utf16[0] & 0xFC00) == 0xD800 &&
                    (utf16[1] & 0xFC00) == 0xDC00;
        utf16 += pair ? 2 : 1;
        *dst++ = substitute_;
    }
    return 0;
}

}  // namespace zobase
