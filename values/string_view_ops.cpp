// Operations that only move the view: substr, align and the trims. None of
// them copies or unshares, so other holders of the buffer see nothing.
#include <unicode/uchar.h>

#include "base/call_trace.h"
#include "text/charset.h"
#include "text/collation.h"
#include "values/error.h"
#include "values/string.h"
#include "values/string_detail.h"

namespace zobase {

using namespace string_detail;

namespace {

// Steps up to `count` characters from p; never past end.
const char* skip_chars(const Charset* cs, const char* p, const char* end, size_t count) {
    for (; count && p < end; --count) next_char(cs, p, end);
    return p;
}

// Characters can't be narrower than min_char, except a cut-off last one, hence the rounding up.
bool covers_rest(size_t count, const char* p, const char* end, size_t min) {
    return count >= (static_cast<size_t>(end - p) + min - 1) / min;
}

bool is_blank(char32_t c) { return is_code_point(c) && u_isblank(static_cast<UChar32>(c)); }
bool is_classic_space(char32_t c) { return c == U' '; }
bool is_classic_tab(char32_t c) { return c == U'\t'; }
bool is_classic_space_or_tab(char32_t c) { return c == U' ' || c == U'\t'; }
bool is_line_end(char32_t c) { return c == U'\r' || c == U'\n'; }

}  // namespace

String String::substr(size_t start, size_t count) const {
    const char* end = data_ + size_;
    const char* first;
    const char* last;
    size_t width = charset_->min_char();
    if (charset_->fixed_width) {
        first = start < size_ / width ? data_ + start * width : end;
        last = count < static_cast<size_t>(end - first) / width ? first + count * width : end;
        return String(*this, first, last);
    }
    // Characters within the known ASCII prefix are bytes; the walk starts where it ends.
    size_t ascii = charset_ == Charset::utf8 ? ascii_span() : 0;
    const char* walked = data_ + ascii;
    if (start <= ascii) first = data_ + start;
    else first = covers_rest(start - ascii, walked, end, width) ? end : skip_chars(charset_, walked, end, start - ascii);
    size_t ascii_after = first < walked ? static_cast<size_t>(walked - first) : 0;
    if (count <= ascii_after) last = first + count;
    else if (covers_rest(count, first, end, width)) last = end;
    else last = skip_chars(charset_, first + ascii_after, end, count - ascii_after);
    return String(*this, first, last);
}

size_t String::align(size_t n) {
    if (charset_->fixed_width) {
        size_t width = charset_->min_char();
        if (n < size_ / width) size_ = n * width;
        return size_ / width;
    }
    const char* end = data_ + size_;
    const char* p = data_;
    size_t kept = 0;
    // A character that does not decode stays in the view but is not counted.
    while (kept < n && p < end && charset_->scan(p, end)) ++kept;
    size_ = static_cast<uint64_t>(p - data_);
    return kept;
}

void String::ltrim(bool (*predicate)(char32_t)) {
    const char* end = data_ + size_;
    const char* p = data_;
    while (p < end) {
        const char* next = p;
        if (!predicate(next_char(charset_, next, end))) break;
        p = next;
    }
    size_ -= static_cast<uint64_t>(p - data_);
    data_ = const_cast<char*>(p);
}

void String::rtrim(bool (*predicate)(char32_t)) {
    const char* p = data_ + size_;
    while (p > data_) {
        const char* prev = p;
        if (!predicate(prev_char(charset_, prev, data_))) break;
        p = prev;
    }
    size_ = static_cast<uint64_t>(p - data_);
}

void String::ltrim() { ltrim(is_blank); }
void String::rtrim() { rtrim(is_blank); }

void String::alltrim() {
    ltrim();
    rtrim();
}

void String::ltrim_classic_space() { ltrim(is_classic_space); }
void String::ltrim_classic_tab() { ltrim(is_classic_tab); }
void String::ltrim_classic_space_or_tab() { ltrim(is_classic_space_or_tab); }

// Deliberately one line end only, with CR LF and LF CR both counting as one.
void String::rtrim_endl() {
    rtrim();
    const char* tail = data_ + size_;
    if (tail == data_) return;
    char32_t last = prev_char(charset_, tail, data_);
    if (!is_line_end(last)) return;
    const char* before = tail;
    if (before > data_) {
        char32_t previous = prev_char(charset_, before, data_);
        if (is_line_end(previous) && previous != last) tail = before;
    }
    size_ = static_cast<uint64_t>(tail - data_);
}

void String::ltrim(const String& unit) {
    ZO_TRACE();
    size_t unit_bytes = 0;
    transcoded_size(unit.read(), unit.end(), unit.get_charset(), charset_, CSTRAN_SUBSTITUTE,
                    unit_bytes);
    if (unit_bytes == 0) return;
    const Collation* machine = Collation::unicode_machine;
    while (unit_bytes <= size_ &&
           machine->compare_exact_off(data_, data_ + size_, charset_, unit.read(), unit.end(),
                                      unit.get_charset()) == 0) {
        data_ += unit_bytes;
        size_ -= unit_bytes;
    }
}

namespace {

// Whether `trim` matches the head of [p, end); on success p moves behind it.
bool match_head(const Collation* collation, const char*& p, const char* end, const Charset* cs,
                const String& trim) {
    const Charset* trim_cs = trim.get_charset();
    const char* t = trim.read();
    const char* q = p;
    if (t == trim.end()) return false;
    while (t < trim.end()) {
        if (q == end) return false;
        char32_t wanted = next_char(trim_cs, t, trim.end());
        if (collation->compare_char(next_char(cs, q, end), wanted) != 0) return false;
    }
    p = q;
    return true;
}

// Whether `trim` matches the tail of [begin, p); on success p moves before it.
bool match_tail(const Collation* collation, const char* begin, const char*& p, const Charset* cs,
                const String& trim) {
    const Charset* trim_cs = trim.get_charset();
    const char* t = trim.end();
    const char* q = p;
    if (t == trim.read()) return false;
    while (t > trim.read()) {
        if (q == begin) return false;
        char32_t wanted = prev_char(trim_cs, t, trim.read());
        if (collation->compare_char(prev_char(cs, q, begin), wanted) != 0) return false;
    }
    p = q;
    return true;
}

}  // namespace

// After every removal the enumeration starts over from the first trim string.
void String::ltrim(const Collation* collation, trim_enumerator first, trim_enumerator next,
                   void* context) {
    ZO_TRACE();
    const char* end = data_ + size_;
    const char* p = data_;
    for (const String* trim = first(context); trim;)
        trim = match_head(collation, p, end, charset_, *trim) ? first(context) : next(context);
    size_ -= static_cast<uint64_t>(p - data_);
    data_ = const_cast<char*>(p);
}

void String::rtrim(const Collation* collation, trim_enumerator first, trim_enumerator next,
                   void* context) {
    ZO_TRACE();
    const char* p = data_ + size_;
    for (const String* trim = first(context); trim;)
        trim = match_tail(collation, data_, p, charset_, *trim) ? first(context) : next(context);
    size_ = static_cast<uint64_t>(p - data_);
}

}  // namespace zobase
