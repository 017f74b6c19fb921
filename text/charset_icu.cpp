#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>

#include "base/call_trace.h"
#include "text/charset_classes.h"
#include "values/error.h"

namespace zobase {

namespace {

// One thread's clone of a master converter. Decoding may leave a partial
// character or shift state inside the converter; `resume_to_unicode` and
// `resume_end` say which call continues that state instead of resetting it.
struct thread_converter_st {
    uint64_t serial = 0;
    UConverter* converter = nullptr;
    const char* resume_to_unicode = nullptr;
    const char* resume_end = nullptr;
};

struct thread_converters_st {
    std::map<const Charset*, thread_converter_st> clones;
    ~thread_converters_st() {
        for (auto& [charset, clone] : clones) ucnv_close(clone.converter);
    }
};

thread_local thread_converters_st thread_converters;
std::atomic<uint64_t> next_serial{1};

thread_converter_st& thread_clone(const Charset* charset, UConverter* master, uint64_t serial) {
    thread_converter_st& clone = thread_converters.clones[charset];
    if (clone.serial == serial) return clone;
    if (clone.converter) ucnv_close(clone.converter);
    UErrorCode status = U_ZERO_ERROR;
    clone = thread_converter_st{serial, ucnv_clone(master, &status), nullptr, nullptr};
    ZO_ASSERT(U_SUCCESS(status) && clone.converter);
    return clone;
}

// Decoding a character at a time must see bad input as an error, not as
// the converter's substitute (which is U+001A for many single-byte pages).
UConverter* prepare_stepwise_decoding(thread_converter_st& clone) {
    UErrorCode status = U_ZERO_ERROR;
    ucnv_resetToUnicode(clone.converter);
    ucnv_setToUCallBack(clone.converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
    clone.resume_to_unicode = nullptr;
    return clone.converter;
}

// No character of the registry's encodings, substitutes and shift
// sequences included, takes more than this per UTF-16 unit.
constexpr size_t MAX_BYTES_PER_UNIT = 4;
constexpr size_t ENCODE_SLACK = 8;
constexpr size_t SPAN_UNITS = 256;
// Nor does any byte decode to more than this many UTF-16 units.
constexpr size_t MAX_UNITS_PER_BYTE = 2;

// Encodes the next character into a local buffer and copies it when it fits;
// one that does not fit stays unconsumed for a caller with more room.
CstranError encode_one_character(UConverter* converter, const char16_t*& utf16,
                                 const char16_t* utf16_end, char*& dst, char* dst_end) {
    const char16_t* source = utf16;
    const char16_t* char_end = source + (U16_IS_LEAD(source[0]) && source + 1 < utf16_end ? 2 : 1);
    char buffer[MAX_BYTES_PER_UNIT * 2 + ENCODE_SLACK];
    char* written = buffer;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_fromUnicode(converter, &written, buffer + sizeof buffer, &source, char_end, nullptr, true,
                     &status);
    ZO_ASSERT(status != U_BUFFER_OVERFLOW_ERROR);
    if (U_FAILURE(status)) return 1;
    size_t size = static_cast<size_t>(written - buffer);
    if (size > static_cast<size_t>(dst_end - dst)) return 0;
    std::memcpy(dst, buffer, size);
    dst += size;
    utf16 = char_end;
    return 0;
}

}  // namespace

_ICUConverterCharset::_ICUConverterCharset(const charset_st& r, bool variant)
    : Charset(r, variant), master_(nullptr), serial_(next_serial++) {
    ZO_TRACE();
    UErrorCode status = U_ZERO_ERROR;
    master_ = ucnv_open(r.icu_name, &status);
}

_ICUConverterCharset::~_ICUConverterCharset() {
    auto found = thread_converters.clones.find(this);
    if (found != thread_converters.clones.end()) {
        ucnv_close(found->second.converter);
        thread_converters.clones.erase(found);
    }
    if (master_) ucnv_close(master_);
}

UConverter* _ICUConverterCharset::get_thread_local_converter() const {
    return thread_clone(this, master_, serial_).converter;
}

char32_t _ICUConverterCharset::next(const char*& p, const char* end) const {
    ZO_ASSERT(p < end);
    UConverter* converter = prepare_stepwise_decoding(thread_clone(this, master_, serial_));
    const char* start = p;
    UErrorCode status = U_ZERO_ERROR;
    UChar32 c = ucnv_getNextUChar(converter, &p, end, &status);
    if (U_SUCCESS(status)) return static_cast<char32_t>(c);
    if (p == start) ++p;
    return UNDECODABLE;
}

void _ICUConverterCharset::verify(const char* bytes, size_t size, size_t& good_bytes,
                                  size_t& good_chars, size_t& bad_count,
                                  size_t& first_bad) const {
    ZO_TRACE();
    UConverter* converter = prepare_stepwise_decoding(thread_clone(this, master_, serial_));
    const char* p = bytes;
    const char* end = bytes + size;
    while (p < end) {
        const char* start = p;
        UErrorCode status = U_ZERO_ERROR;
        UChar32 c = ucnv_getNextUChar(converter, &p, end, &status);
        if (status == U_INDEX_OUTOFBOUNDS_ERROR) break;
        if (U_SUCCESS(status) && c != 0xFFFD) {
            good_bytes += static_cast<size_t>(p - start);
            ++good_chars;
            continue;
        }
        ++bad_count;
        if (first_bad == 0) first_bad = static_cast<size_t>(start - bytes) + 1;
        if (p == start) ++p;
        ucnv_resetToUnicode(converter);
    }
}

// Spans are sized so that their output fits; only the last one is flushed.
// A character cut at a span's end, or UTF-7's shift state, stays in the
// converter, to be continued by the call that resumes at the same place.
CstranError _ICUConverterCharset::out(const char*& src, const char* src_end, char16_t*& utf16,
                                      char16_t* utf16_end) const {
    thread_converter_st& clone = thread_clone(this, master_, serial_);
    bool resuming = src == clone.resume_to_unicode && src_end == clone.resume_end;
    if (!resuming) ucnv_resetToUnicode(clone.converter);
    clone.resume_to_unicode = nullptr;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(clone.converter, UCNV_TO_U_CALLBACK_SUBSTITUTE, nullptr, nullptr,
                        nullptr, &status);
    while (src < src_end && utf16 < utf16_end) {
        size_t room = static_cast<size_t>(utf16_end - utf16);
        size_t span = std::min<size_t>(src_end - src, std::max<size_t>(room / MAX_UNITS_PER_BYTE, 1));
        const char* span_end = src + span;
        status = U_ZERO_ERROR;
        ucnv_toUnicode(clone.converter, &utf16, utf16_end, &src, span_end, nullptr,
                       span_end == src_end, &status);
        if (status == U_BUFFER_OVERFLOW_ERROR) break;
        if (U_FAILURE(status)) return 1;
    }
    if (src == src_end && status != U_BUFFER_OVERFLOW_ERROR) return 0;
    clone.resume_to_unicode = src;
    clone.resume_end = src_end;
    return -1;
}

// ICU would keep output that does not fit inside the converter, out of the
// caller's sight, so spans of fixed size are encoded into a local buffer and
// copied when they fit; a span that does not fit goes a character at a time.
// Spans start at fixed places, so a stateful encoding (UTF-7) gives the same
// bytes to calculate and to convert.
CstranError _ICUConverterCharset::in(const char16_t*& utf16, const char16_t* utf16_end,
                                     char*& dst, char* dst_end, CstranRecovery recovery) const {
    UConverter* converter = get_thread_local_converter();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_resetFromUnicode(converter);
    ucnv_setFromUCallBack(converter,
                          recovery == CSTRAN_STRICT ? UCNV_FROM_U_CALLBACK_STOP
                                                    : UCNV_FROM_U_CALLBACK_SUBSTITUTE,
                          nullptr, nullptr, nullptr, &status);
    while (utf16 < utf16_end) {
        const char16_t* span_end = utf16 + std::min<size_t>(SPAN_UNITS, utf16_end - utf16);
        if (span_end < utf16_end && U16_IS_LEAD(span_end[-1])) --span_end;
        char buffer[SPAN_UNITS * MAX_BYTES_PER_UNIT + ENCODE_SLACK];
        char* written = buffer;
        const char16_t* source = utf16;
        status = U_ZERO_ERROR;
        ucnv_fromUnicode(converter, &written, buffer + sizeof buffer, &source, span_end, nullptr,
                         true, &status);
        ZO_ASSERT(status != U_BUFFER_OVERFLOW_ERROR);
        if (U_FAILURE(status)) return 1;
        size_t size = static_cast<size_t>(written - buffer);
        if (size <= static_cast<size_t>(dst_end - dst)) {
            std::memcpy(dst, buffer, size);
            dst += size;
            utf16 = span_end;
            continue;
        }
        while (utf16 < span_end) {
            const char16_t* before = utf16;
            if (encode_one_character(converter, utf16, span_end, dst, dst_end) != 0) return 1;
            if (utf16 == before) return 0;
        }
    }
    return 0;
}

Charset* load_generic_icu_charset(const charset_st* row, bool nocptrans) {
    return new _ICUConverterCharset(*row, nocptrans);
}

// Overlong forms and surrogates are excluded by narrowing the second byte's range.
char32_t UTF8::next(const char*& p, const char* end) const {
    ZO_ASSERT(p < end);
    const auto* s = reinterpret_cast<const unsigned char*>(p);
    unsigned lead = s[0];
    if (lead < 0x80) {
        ++p;
        return lead;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        ++p;
        return UNDECODABLE;
    }
    size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    unsigned second_low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned second_high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    size_t available = static_cast<size_t>(end - p);
    char32_t c = lead & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        unsigned byte = i < available ? s[i] : 0;
        bool valid = i < available && (i == 1 ? byte >= second_low && byte <= second_high
                                              : (byte & 0xC0) == 0x80);
        if (!valid) {
            p += i;
            return UNDECODABLE;
        }
        c = (c << 6) | (byte & 0x3F);
    }
    p += length;
    return c;
}

char32_t UTF16LE::next(const char*& p, const char* end) const {
    ZO_ASSERT(p < end);
    auto unit_at = [](const char* q) {
        return static_cast<char32_t>(static_cast<unsigned char>(q[0]) |
                                     static_cast<unsigned char>(q[1]) << 8);
    };
    if (end - p < 2) {
        p = end;
        return UNDECODABLE;
    }
    char32_t unit = unit_at(p);
    p += 2;
    if ((unit & 0xF800) != 0xD800) return unit;
    if ((unit & 0xFC00) == 0xDC00 || end - p < 2) return UNDECODABLE;
    char32_t trail = unit_at(p);
    if ((trail & 0xFC00) != 0xDC00) return UNDECODABLE;
    p += 2;
    return 0x10000 + ((unit - 0xD800) << 10) + (trail - 0xDC00);
}

char32_t UTF32LE::next(const char*& p, const char* end) const {
    ZO_ASSERT(p < end);
    if (end - p < 4) {
        p = end;
        return UNDECODABLE;
    }
    const auto* s = reinterpret_cast<const unsigned char*>(p);
    p += 4;
    return static_cast<char32_t>(s[0] | s[1] << 8 | s[2] << 16 | static_cast<uint32_t>(s[3]) << 24);
}

}  // namespace zobase
