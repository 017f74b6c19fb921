// Searching, replacing, splitting and comparing. A needle may be in any
// charset; only a needle in the string's own fixed-width charset is matched
// on raw units, everything else compares decoded code points.
#include <unicode/uchar.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "base/call_trace.h"
#include "text/charset.h"
#include "text/collation.h"
#include "values/error.h"
#include "values/string.h"
#include "values/string_detail.h"

namespace zobase {

using namespace string_detail;

namespace {

typedef std::vector<char32_t> code_points;

code_points decode(const const_string_st& text) {
    code_points out;
    for (const char* p = text.begin; p < text.end;) out.push_back(next_char(text.charset, p, text.end));
    return out;
}

// End of the needle's match when it starts at p with `first` already decoded
// up to q; null when it doesn't match.
const char* match_rest(const Charset* cs, const char* q, const char* end, const code_points& needle) {
    for (size_t i = 1; i < needle.size(); ++i) {
        if (q == end || next_char(cs, q, end) != needle[i]) return nullptr;
    }
    return q;
}

bool report(string_match_callback callback, const String& searched, const char* begin,
            const char* end, size_t index, size_t needle, size_t chars, void* context) {
    return !callback || callback(searched, begin, end, index, needle, chars, context);
}

// Single-needle scan over 1-byte units of one shared charset.
size_t scan_bytes(const String& s, const const_string_st& needle, size_t& count,
                  string_match_callback callback, void* context) {
    const char* p = s.read();
    const char* end = s.end();
    size_t n = static_cast<size_t>(needle.end - needle.begin);
    size_t found = 0;
    while (static_cast<size_t>(end - p) >= n) {
        auto* hit = static_cast<const char*>(std::memchr(p, *needle.begin, static_cast<size_t>(end - p) - n + 1));
        if (!hit) break;
        count += static_cast<size_t>(hit - p);
        if (std::memcmp(hit + 1, needle.begin + 1, n - 1) != 0) {
            ++count;
            p = hit + 1;
            continue;
        }
        ++found;
        if (!report(callback, s, hit, hit + n, count, 1, n, context)) return found;
        count += n;
        p = hit + n;
    }
    count += static_cast<size_t>(end - p);
    return found;
}

uint32_t unit_at(const char* p) {
    uint32_t unit;
    std::memcpy(&unit, p, 4);
    return unit;
}

// Single-needle scan over 4-byte units of one shared charset.
size_t scan_units32(const String& s, const const_string_st& needle, size_t& count,
                    string_match_callback callback, void* context) {
    size_t units = s.size() / 4;
    size_t n = static_cast<size_t>(needle.end - needle.begin) / 4;
    ZO_ASSERT(n > 0);
    const char* base = s.read();
    uint32_t lead = unit_at(needle.begin);
    size_t found = 0;
    size_t i = 0;
    while (i + n <= units) {
        if (unit_at(base + i * 4) != lead || std::memcmp(base + i * 4, needle.begin, n * 4) != 0) {
            ++i;
            ++count;
            continue;
        }
        ++found;
        if (!report(callback, s, base + i * 4, base + (i + n) * 4, count, 1, n, context)) return found;
        count += n;
        i += n;
    }
    count += units - i + (s.size() % 4 ? 1 : 0);
    return found;
}

// Code points on both sides, the needle decoded once.
size_t scan_decoded(const String& s, const code_points& needle, size_t& count,
                    string_match_callback callback, void* context) {
    const Charset* cs = s.get_charset();
    const char* end = s.end();
    size_t found = 0;
    for (const char* p = s.read(); p < end;) {
        const char* q = p;
        const char* match_end = next_char(cs, q, end) == needle[0] ? match_rest(cs, q, end, needle) : nullptr;
        if (!match_end) {
            ++count;
            p = q;
            continue;
        }
        ++found;
        if (!report(callback, s, p, match_end, count, 1, needle.size(), context)) return found;
        count += needle.size();
        p = match_end;
    }
    return found;
}

}  // namespace

size_t String::scan(const const_string_st& needle, size_t& count, string_match_callback callback,
                    void* context) const {
    ZO_ASSERT(needle.begin < needle.end);
    if (needle.charset == charset_ && charset_->fixed_width) {
        if (charset_->min_char() == 1) return scan_bytes(*this, needle, count, callback, context);
        if (charset_->min_char() == 4) return scan_units32(*this, needle, count, callback, context);
    }
    return scan_decoded(*this, decode(needle), count, callback, context);
}

// The needles are tried in table order at each position; the first to match wins.
size_t String::scan(const const_string_st* needles, size_t n, size_t& count,
                    string_match_callback callback, void* context) const {
    ZO_TRACE();
    std::vector<code_points> decoded;
    decoded.reserve(n);
    for (size_t i = 0; i < n; ++i) {
        ZO_ASSERT(needles[i].begin < needles[i].end);
        decoded.push_back(decode(needles[i]));
    }
    const char* end = data_ + size_;
    size_t found = 0;
    for (const char* p = data_; p < end;) {
        const char* q = p;
        char32_t c = next_char(charset_, q, end);
        const char* match_end = nullptr;
        size_t which = 0;
        for (; which < n; ++which) {
            if (decoded[which][0] != c) continue;
            match_end = match_rest(charset_, q, end, decoded[which]);
            if (match_end) break;
        }
        if (!match_end) {
            ++count;
            p = q;
            continue;
        }
        ++found;
        size_t chars = decoded[which].size();
        if (!report(callback, *this, p, match_end, count, which, chars, context)) return found;
        count += chars;
        p = match_end;
    }
    return found;
}

// ---- single character search ------------------------------------------------------

namespace {

char32_t same(char32_t c) { return c; }

char32_t folded(char32_t c) {
    if (!is_code_point(c)) return c;
    return static_cast<char32_t>(u_tolower(u_toupper(static_cast<UChar32>(c))));
}

bool find_char(const String& s, char32_t c, char32_t (*fold)(char32_t), size_t& index,
               size_t& first, size_t& last) {
    const Charset* cs = s.get_charset();
    char32_t wanted = fold(c);
    size_t at = 0;
    for (const char* p = s.read(); p < s.end(); ++at) {
        const char* start = p;
        if (fold(next_char(cs, p, s.end())) != wanted) continue;
        index = at;
        first = static_cast<size_t>(start - s.read());
        last = static_cast<size_t>(p - s.read());
        return true;
    }
    index = 0;
    first = 0;
    return false;
}

}  // namespace

bool String::chrstr(char32_t c, size_t& index, size_t& first, size_t& last) const {
    return find_char(*this, c, same, index, first, last);
}

bool String::christr(char32_t c, size_t& index, size_t& first, size_t& last) const {
    return find_char(*this, c, folded, index, first, last);
}

// ---- strstr -----------------------------------------------------------------------

namespace {

struct strstr_context_st {
    size_t skip;
    size_t index;
    const char* begin;
    const char* end;
};

bool stop_after_skipped(const String&, const char* begin, const char* end, size_t index, size_t,
                        size_t, void* context) {
    auto* ctx = static_cast<strstr_context_st*>(context);
    if (ctx->skip) {
        --ctx->skip;
        return true;
    }
    ctx->index = index;
    ctx->begin = begin;
    ctx->end = end;
    return false;
}

}  // namespace

bool String::strstr(const const_string_st& needle, size_t& index, size_t& first, size_t& last,
                    size_t skip) const {
    strstr_context_st ctx{skip, 0, nullptr, nullptr};
    size_t count = 0;
    scan(needle, count, stop_after_skipped, &ctx);
    if (!ctx.begin) return false;
    index = ctx.index;
    first = static_cast<size_t>(ctx.begin - data_);
    last = static_cast<size_t>(ctx.end - data_);
    return true;
}

// ---- replace ----------------------------------------------------------------------

namespace {

struct replacement_st {
    const char* begin;
    size_t size;
};

// The replacements as bytes of the searched string's charset, converted once
// rather than at every match; up to 16 live on the stack.
class PreparedReplacements {
public:
    PreparedReplacements(const const_string_st* replacements, size_t n, const Charset* charset)
        : items_(n < 17 ? on_stack_ : (on_heap_.resize(n), on_heap_.data())) {
        size_t converted = 0;
        for (size_t i = 0; i < n; ++i) {
            const const_string_st& r = replacements[i];
            items_[i] = {r.begin, static_cast<size_t>(r.end - r.begin)};
            if (copies_raw(r.charset, charset)) continue;
            items_[i] = {nullptr, 0};
            r.charset->calculate(r.begin, r.end, charset, items_[i].size, CSTRAN_SUBSTITUTE);
            converted += items_[i].size;
        }
        scratch_.resize(converted);
        char* out = scratch_.data();
        for (size_t i = 0; i < n; ++i) {
            const const_string_st& r = replacements[i];
            if (items_[i].begin) continue;
            items_[i].begin = out;
            transcode(r.begin, r.end, r.charset, out, out + items_[i].size, charset,
                      CSTRAN_SUBSTITUTE);
        }
    }

    const replacement_st& operator[](size_t i) const { return items_[i]; }

private:
    replacement_st on_stack_[16];
    std::vector<replacement_st> on_heap_;
    replacement_st* items_;
    std::string scratch_;
};

bool sum_delta(const String&, const char* begin, const char* end, size_t, size_t needle, size_t,
               void* context) {
    auto* ctx = static_cast<std::pair<const PreparedReplacements*, int64_t>*>(context);
    ctx->second += static_cast<int64_t>((*ctx->first)[needle].size) - (end - begin);
    return true;
}

struct tran_copy_st {
    const PreparedReplacements* replacements;
    const char* copied_to;
    char* out;
    char* out_end;
};

void copy_bytes(tran_copy_st* ctx, const char* begin, const char* end) {
    size_t n = static_cast<size_t>(end - begin);
    ZO_ASSERT(n <= static_cast<size_t>(ctx->out_end - ctx->out));
    if (n) std::memcpy(ctx->out, begin, n);
    ctx->out += n;
}

bool copy_replacing(const String&, const char* begin, const char* end, size_t, size_t needle,
                    size_t, void* context) {
    auto* ctx = static_cast<tran_copy_st*>(context);
    copy_bytes(ctx, ctx->copied_to, begin);
    const replacement_st& r = (*ctx->replacements)[needle];
    copy_bytes(ctx, r.begin, r.begin + r.size);
    ctx->copied_to = end;
    return true;
}

}  // namespace

// Counts first so that the result is allocated once, at its exact size.
String String::strmultitran(const const_string_st* needles, size_t n,
                            const const_string_st* replacements) const {
    ZO_TRACE();
    PreparedReplacements prepared(replacements, n, charset_);
    std::pair<const PreparedReplacements*, int64_t> counted{&prepared, 0};
    size_t count = 0;
    scan(needles, n, count, sum_delta, &counted);

    size_t total = static_cast<size_t>(static_cast<int64_t>(size_) + counted.second);
    String result(total, charset_);
    char* out = total ? result.write() : nullptr;
    tran_copy_st copying{&prepared, data_, out, out + total};
    count = 0;
    scan(needles, n, count, copy_replacing, &copying);
    copy_bytes(&copying, copying.copied_to, data_ + size_);
    return result;
}

String String::strtran(const const_string_st& search, const const_string_st& replacement) const {
    return strmultitran(&search, 1, &replacement);
}

// ---- explode ------------------------------------------------------------------------

namespace {

struct explode_context_st {
    bool keep_separator;
    const char* piece_begin;
    std::vector<String>* list;
};

bool cut_piece(const String& searched, const char* begin, const char* end, size_t, size_t, size_t,
               void* context) {
    auto* ctx = static_cast<explode_context_st*>(context);
    ctx->list->emplace_back(searched, ctx->piece_begin, ctx->keep_separator ? end : begin);
    ctx->piece_begin = end;
    return true;
}

}  // namespace

void String::explode(const const_string_st* needles, size_t n, bool keep_separator,
                     std::vector<String>& list) const {
    ZO_TRACE();
    explode_context_st ctx{keep_separator, data_, &list};
    size_t count = 0;
    scan(needles, n, count, cut_piece, &ctx);
    if (ctx.piece_begin < data_ + size_) list.emplace_back(*this, ctx.piece_begin, data_ + size_);
}

int String::cmp(const String& other, const Collation* collation) const {
    return collation->compare(data_, data_ + size_, charset_, other.data_, other.end(),
                              other.charset_);
}

// ---- free functions -------------------------------------------------------------------

namespace {

constexpr size_t SYMBOL_MAX_CHARS = 1020;

bool is_symbol_char(char32_t c) {
    return c == U'_' || (is_code_point(c) && u_isalnum(static_cast<UChar32>(c)));
}

bool is_symbol_start(char32_t c) {
    return c == U'_' || (is_code_point(c) && u_isalpha(static_cast<UChar32>(c)));
}

}  // namespace

String symbolify(const String& text, bool* changed, const Charset* charset) {
    ZO_TRACE();
    std::vector<char32_t> chars;
    const Charset* cs = text.get_charset();
    for (const char* p = text.read(); p < text.end() && chars.size() < SYMBOL_MAX_CHARS;)
        chars.push_back(next_char(cs, p, text.end()));
    bool replaced = chars.empty();
    for (char32_t& c : chars) {
        if (is_symbol_char(c)) continue;
        c = U'_';
        replaced = true;
    }
    if (!chars.empty() && !is_symbol_start(chars[0])) {
        chars[0] = U'_';
        replaced = true;
    }
    if (changed) *changed = replaced;
    String symbol = String::fromBytes(reinterpret_cast<const char*>(chars.data()), chars.size() * 4,
                                      Charset::utf32le);
    symbol.convert(charset, 0, CSTRAN_SUBSTITUTE);
    return symbol;
}

String stringToEncodedHexBinary(const String& text) {
    static const char digits[] = "0123456789ABCDEF";
    require_charsets();
    String hex(text.size() * 2, Charset::utf8);
    if (text.size() == 0) return hex;
    char* out = hex.write();
    for (const char* p = text.read(); p < text.end(); ++p) {
        auto byte = static_cast<unsigned char>(*p);
        *out++ = digits[byte >> 4];
        *out++ = digits[byte & 15];
    }
    return hex;
}

}  // namespace zobase
