#include "text/charset.h"

#include <algorithm>

#include "base/call_trace.h"
#include "text/charset_classes.h"
#include "values/error.h"

namespace zobase {

namespace {

// On the stack, so that no conversion allocates. The scratch output of
// calculate holds a whole pivot in any encoding, so that it is handed the
// same pieces as convert and sizes stateful encodings exactly.
constexpr size_t PIVOT_UNITS = 2048;
constexpr size_t SCRATCH_BYTES = PIVOT_UNITS * 4 + 256;

}  // namespace

const Charset* Charset::ascii = nullptr;
const Charset* Charset::binary = nullptr;
const Charset* Charset::utf8 = nullptr;
const Charset* Charset::utf16le = nullptr;
const Charset* Charset::utf32le = nullptr;

Charset::Charset(const charset_st& r, bool variant)
    : row(r),
      csid(static_cast<uint32_t>(r.csid & 0xFFFF) | (variant ? CSID_NOCPTRANS : 0)),
      fixed_width(r.min_char == r.max_char),
      nocptrans(variant) {}

Charset::~Charset() = default;

CstranError Charset::calculate(const char* begin, const char* end, const Charset* target,
                               size_t& size, CstranRecovery recovery) const {
    ZO_TRACE();
    size = 0;
    char16_t pivot[PIVOT_UNITS];
    char scratch[SCRATCH_BYTES];
    const char* src = begin;
    while (src < end) {
        const char* before = src;
        char16_t* filled = pivot;
        CstranError result = out(src, end, filled, pivot + PIVOT_UNITS);
        if (result > 0) return result;
        ZO_ASSERT(src > before);
        const char16_t* drained = pivot;
        while (drained < filled) {
            const char16_t* pending = drained;
            char* written = scratch;
            result = target->in(drained, filled, written, scratch + SCRATCH_BYTES, recovery);
            size += static_cast<size_t>(written - scratch);
            if (result > 0) return result;
            ZO_ASSERT(drained > pending);
        }
    }
    return 0;
}

CstranError Charset::convert(const char*& src, const char* src_end, char*& dst, char* dst_end,
                             const Charset* target, CstranRecovery recovery) const {
    ZO_TRACE();
    char16_t pivot[PIVOT_UNITS];
    CstranError result = 0;
    while (src < src_end) {
        const char* before = src;
        char16_t* filled = pivot;
        result = out(src, src_end, filled, pivot + PIVOT_UNITS);
        if (result > 0) return result;
        ZO_ASSERT(src > before);
        const char16_t* drained = pivot;
        result = target->in(drained, filled, dst, dst_end, recovery);
        if (result > 0) return result;
        // Whatever stayed in the pivot had no room in the output.
        if (drained < filled) return -1;
    }
    return result;
}

void Charset::verify(const char* bytes, size_t size, size_t& good_bytes, size_t& good_chars,
                     size_t& bad_count, size_t& first_bad) const {
    if (size == 0) return;
    bad_count += size;
    if (first_bad == 0) first_bad = 1;
}

CstranError Charset::out(const char*& src, const char* src_end, char16_t*& utf16,
                         char16_t* utf16_end) const {
    return 1;
}

CstranError Charset::in(const char16_t*& utf16, const char16_t* utf16_end, char*& dst,
                        char* dst_end, CstranRecovery recovery) const {
    return 1;
}

bool Charset::scan(const char*& p, const char* end) const {
    return next(p, end) != UNDECODABLE;
}

char32_t Charset::peek_next(const char* p, const char* end) const {
    return next(p, end);
}

char32_t Charset::prev(const char*& p, const char* begin) const {
    ZO_ASSERT(p > begin);
    const char* stop = p;
    if (fixed_width) {
        size_t width = std::min<size_t>(row.min_char, static_cast<size_t>(p - begin));
        p -= width;
        return peek_next(p, stop);
    }
    // The longest character that ends exactly here wins: a trail byte of a
    // double-byte code page can read as a character of its own.
    const size_t step = row.min_char;
    const size_t reach = std::min<size_t>(row.max_char, static_cast<size_t>(p - begin));
    for (const char* q = p - reach; q + step <= stop; q += step) {
        const char* after = q;
        char32_t c = next(after, stop);
        if (c != UNDECODABLE && after == stop) {
            p = q;
            return c;
        }
    }
    // Undecodable bytes: walk back until something decodes, or to the start.
    for (const char* q = p;;) {
        q = static_cast<size_t>(q - begin) > step ? q - step : begin;
        char32_t c = peek_next(q, stop);
        if (c != UNDECODABLE || q == begin) {
            p = q;
            return c;
        }
    }
}

size_t Charset::count_chars(const char* begin, const char* end) const {
    if (fixed_width) return static_cast<size_t>(end - begin) / row.min_char;
    size_t count = 0;
    for (const char* p = begin; p < end; ++count) next(p, end);
    return count;
}

CstranError Charset::convert(const char* begin, const char* end, char*& out, char* out_end,
                             const Charset* target, CstranRecovery recovery) const {
    return convert_stream(begin, end, out, out_end, target, recovery);
}

CstranError Charset::convert_stream(const char*& src, const char* src_end, char*& dst,
                                    char* dst_end, const Charset* target,
                                    CstranRecovery recovery) const {
    using advancing = CstranError (Charset::*)(const char*&, const char*, char*&, char*,
                                               const Charset*, CstranRecovery) const;
    advancing virtual_convert = &Charset::convert;
    return (this->*virtual_convert)(src, src_end, dst, dst_end, target, recovery);
}

}  // namespace zobase
