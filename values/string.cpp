// String storage, construction, conversion and joining.
#include "values/string.h"

#include <unicode/uchar.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

#include "base/call_trace.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/string_detail.h"

namespace zobase {

using namespace string_detail;

namespace string_detail {

namespace {
// Four zero bytes behind every empty view satisfy CON_TERMINATE for any
// charset.
alignas(8) char empty_bytes[8] = {};
}  // namespace

// Record and bytes come from one allocation; freeing the record frees both.
// A size out of range, or one the heap refuses, is error 39.
string_buffer_st* new_buffer(size_t capacity) {
    if (capacity > MAX_STRING_SIZE + MAX_TERMINATOR_SIZE) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    void* block = std::malloc(sizeof(string_buffer_st) + capacity);
    if (!block) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    auto* record = static_cast<string_buffer_st*>(block);
    char* bytes = static_cast<char*>(block) + sizeof(string_buffer_st);
    return new (record) string_buffer_st{bytes, capacity, 1, capacity, 0};
}

string_buffer_st* new_growing_buffer(size_t size, size_t capacity) {
    string_buffer_st* buffer = new_buffer(capacity);
    buffer->used.store(size, std::memory_order_relaxed);
    return buffer;
}

size_t ascii_prefix(const char* p, size_t n) {
    constexpr uint64_t high_bits = 0x8080808080808080ull;
    size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        uint64_t word;
        std::memcpy(&word, p + i, 8);
        if (word & high_bits) break;
    }
    while (i < n && static_cast<unsigned char>(p[i]) < 0x80) ++i;
    return i;
}

void raise_to(std::atomic<uint64_t>& mark, uint64_t value) {
    uint64_t seen = mark.load();
    while (seen < value && !mark.compare_exchange_weak(seen, value)) {
    }
}

CstranError transcoded_size(const char* begin, const char* end, const Charset* from,
                            const Charset* to, CstranRecovery recovery, size_t& size) {
    if (copies_raw(from, to)) {
        size = static_cast<size_t>(end - begin);
        return 0;
    }
    return from->calculate(begin, end, to, size, recovery);
}

CstranError transcode(const char* begin, const char* end, const Charset* from, char*& out,
                      char* out_end, const Charset* to, CstranRecovery recovery) {
    if (copies_raw(from, to)) {
        size_t wanted = static_cast<size_t>(end - begin);
        size_t room = static_cast<size_t>(out_end - out);
        size_t n = wanted < room ? wanted : room;
        if (n) std::memcpy(out, begin, n);
        out += n;
        return n == wanted ? 0 : -1;
    }
    // The by-value begin selects the pointer form over the virtual one.
    return from->convert(static_cast<const char*>(begin), end, out, out_end, to, recovery);
}

}  // namespace string_detail

namespace {
constinit std::array<char, 256> byte_values = [] {
    std::array<char, 256> values{};
    for (int i = 0; i < 256; ++i) values[i] = static_cast<char>(i);
    return values;
}();
}  // namespace

// Every byte of a constant buffer counts as used, so no append ever claims
// room there; a byte below 0x80 is known ASCII.
#define ZO_BYTE_BUFFER(i) {&byte_values[i], 1, 1, 1, (i) < 128 ? 1u : 0u}
#define ZO_BYTE_BUFFERS_4(i) ZO_BYTE_BUFFER(i), ZO_BYTE_BUFFER(i + 1), ZO_BYTE_BUFFER(i + 2), ZO_BYTE_BUFFER(i + 3)
#define ZO_BYTE_BUFFERS_16(i) ZO_BYTE_BUFFERS_4(i), ZO_BYTE_BUFFERS_4(i + 4), ZO_BYTE_BUFFERS_4(i + 8), ZO_BYTE_BUFFERS_4(i + 12)
#define ZO_BYTE_BUFFERS_64(i) ZO_BYTE_BUFFERS_16(i), ZO_BYTE_BUFFERS_16(i + 16), ZO_BYTE_BUFFERS_16(i + 32), ZO_BYTE_BUFFERS_16(i + 48)
constinit string_buffer_st String::constant_buffers_[257] = {
    {empty_bytes, 4, 1, 4, 4},
    ZO_BYTE_BUFFERS_64(0), ZO_BYTE_BUFFERS_64(64), ZO_BYTE_BUFFERS_64(128), ZO_BYTE_BUFFERS_64(192),
};
#undef ZO_BYTE_BUFFERS_64
#undef ZO_BYTE_BUFFERS_16
#undef ZO_BYTE_BUFFERS_4
#undef ZO_BYTE_BUFFER

String String::single_byte(unsigned char byte, const Charset* charset) noexcept {
    String text;
    text.buffer_ = &constant_buffers_[1 + byte];
    text.data_ = text.buffer_->bytes;
    text.size_ = 1;
    text.charset_ = charset;
    return text;
}

// Only heap records ever reach it.
void String::free_buffer(string_buffer_st* buffer) noexcept {
    buffer->~string_buffer_st();
    std::free(buffer);
}

namespace {

bool all_zero(const char* p, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (p[i]) return false;
    return true;
}

String copy_of(const char* bytes, size_t n, const Charset* charset) {
    String s(n, charset);
    if (n) std::memcpy(s.write(), bytes, n);
    return s;
}

// Reads a charset constant after making sure the registry has set it.
const Charset* const& known_charset(const Charset* const& constant) {
    require_charsets();
    return constant;
}

template <typename Unit>
size_t units_until_nul(const Unit* text) {
    size_t n = 0;
    if (text)
        while (text[n]) ++n;
    return n;
}

}  // namespace

// ---- construction and assignment ------------------------------------------

String::String() noexcept : data_(nullptr), charset_(nullptr), buffer_(nullptr), size_(0) {
    require_charsets();
    buffer_ = empty_buffer();
    data_ = buffer_->bytes;
    charset_ = Charset::binary;
}

String::String(size_t bytes, const Charset* charset)
    : data_(nullptr), charset_(charset), buffer_(nullptr), size_(bytes) {
    ZO_ASSERT(charset != nullptr);
    buffer_ = bytes ? new_buffer(bytes) : empty_buffer();
    data_ = buffer_->bytes;
}

String::String(size_t bytes, const Charset* charset, size_t capacity)
    : data_(nullptr), charset_(charset), buffer_(nullptr), size_(bytes) {
    ZO_ASSERT(charset != nullptr && capacity >= bytes);
    buffer_ = capacity ? new_growing_buffer(bytes, capacity) : empty_buffer();
    data_ = buffer_->bytes;
}

String::String(const char* utf8)
    : String(copy_of(utf8, units_until_nul(utf8), known_charset(Charset::utf8))) {}

String::String(const char16_t* utf16)
    : String(copy_of(reinterpret_cast<const char*>(utf16), units_until_nul(utf16) * 2,
                     known_charset(Charset::utf16le))) {}

String::String(const char32_t* utf32)
    : String(copy_of(reinterpret_cast<const char*>(utf32), units_until_nul(utf32) * 4,
                     known_charset(Charset::utf32le))) {}

// Linux paths are UTF-8 bytes already.
String::String(const std::filesystem::path& path)
    : String(copy_of(path.native().data(), path.native().size(), known_charset(Charset::utf8))) {}

String String::fromBytes(const char* bytes, const Charset* charset) {
    return copy_of(bytes, units_until_nul(bytes), charset);
}

String String::fromBytes(const char* bytes, size_t size, const Charset* charset) {
    return copy_of(bytes, size, charset);
}

String String::create_from_path(const std::filesystem::path& path, const Charset* charset) {
    const std::string& text = path.native();
    return copy_of(text.data(), text.size(), charset);
}

String String::create_from_scan_string(const scan_string_st& scan) {
    return copy_of(scan.begin, scan.size, scan.charset);
}

// ---- access -----------------------------------------------------------------

// The sole owner may change any byte, so what was known about them goes.
char* String::write() {
    if (is_constant(buffer_) || buffer_->refs.load() >= 2) do_copy_on_write();
    else buffer_->ascii.store(0, std::memory_order_relaxed);
    return data_;
}

// Copies the whole buffer so that views with other offsets stay meaningful.
void String::do_copy_on_write() {
    ZO_TRACE();
    string_buffer_st* old = buffer_;
    string_buffer_st* fresh = new_buffer(old->capacity);
    if (old->capacity) std::memcpy(fresh->bytes, old->bytes, old->capacity);
    fresh->used.store(old->used.load(), std::memory_order_relaxed);
    data_ = fresh->bytes + (data_ - old->bytes);
    buffer_ = fresh;
    release(old);
}

// Claims [end, end + n) when the view ends where the used bytes end.
bool String::append_in_place(const String& other) {
    string_buffer_st* buffer = buffer_;
    uint64_t end_offset = static_cast<uint64_t>(data_ - buffer->bytes) + size_;
    uint64_t n = other.size_;
    if (is_constant(buffer) || end_offset + n > buffer->capacity) return false;
    uint64_t expected = end_offset;
    if (!buffer->used.compare_exchange_strong(expected, end_offset + n)) return false;
    if (n) std::memcpy(data_ + size_, other.data_, n);
    size_ += n;
    // The ASCII prefix grows with the append when it reached the old end.
    // No one else moves the mark past end_offset before this append returns:
    // the claimed bytes are in no other view yet.
    if (buffer->ascii.load(std::memory_order_relaxed) == end_offset && ascii_prefix(other.data_, n) == n)
        buffer->ascii.store(end_offset + n, std::memory_order_relaxed);
    return true;
}

// Extends the buffer's ASCII prefix as far as this view's end when it can.
size_t String::ascii_span() const {
    string_buffer_st* buffer = buffer_;
    uint64_t start_offset = static_cast<uint64_t>(data_ - buffer->bytes);
    uint64_t end_offset = start_offset + size_;
    uint64_t known = buffer->ascii.load(std::memory_order_relaxed);
    if (end_offset <= known) return size_;
    // Stopping at the first other byte keeps the next look from scanning again.
    known += ascii_prefix(buffer->bytes + known, end_offset - known);
    raise_to(buffer->ascii, known);
    return known > start_offset ? known - start_offset : 0;
}

bool String::known_ascii() const { return ascii_span() == size_; }

size_t String::length() const {
    if (charset_->fixed_width) return size_ / charset_->min_char();
    size_t count = charset_ == Charset::utf8 ? ascii_span() : 0;
    const char* end = data_ + size_;
    for (const char* p = data_ + count; p < end; ++count) next_char(charset_, p, end);
    return count;
}

bool String::is_empty() const {
    const char* p = data_ + size_;
    while (p > data_) {
        char32_t c = prev_char(charset_, p, data_);
        if (!is_code_point(c) || !u_isspace(static_cast<UChar32>(c))) return false;
    }
    return true;
}

std::string String::u8str() const {
    String copy(*this);
    copy.convert(Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    return std::string(copy.read(), copy.size());
}

std::u16string String::u16str() const {
    String copy(*this);
    copy.convert(Charset::utf16le, 0, CSTRAN_SUBSTITUTE);
    std::u16string out(copy.size() / 2, u'\0');
    if (!out.empty()) std::memcpy(out.data(), copy.read(), out.size() * 2);
    return out;
}

String::operator std::filesystem::path() const { return std::filesystem::path(u8str()); }

int String::strcpy(char* out, size_t capacity, const Charset* target,
                   CstranRecovery recovery) const {
    size_t terminator = target->min_char();
    ZO_ASSERT(capacity >= terminator);
    char* cursor = out;
    int result = transcode(data_, end(), charset_, cursor, out + capacity - terminator, target,
                           recovery);
    std::memset(cursor, 0, terminator);
    return result;
}

void String::resize(size_t n) {
    if (n > static_cast<size_t>(buffer_->bytes + buffer_->capacity - data_))
        throw std::runtime_error("string resize heap overflow");
    size_ = n;
    raise_to(buffer_->used, static_cast<uint64_t>(data_ - buffer_->bytes) + n);
}

// ---- convert ----------------------------------------------------------------

namespace {

// The terminator's bytes are claimed as used, so no append overwrites them
// while someone reads the text as terminated.
bool has_zero_tail(const String& s, size_t width) {
    auto* buffer = const_cast<string_buffer_st*>(s.get_buffer());
    uint64_t end_offset = static_cast<uint64_t>(s.end() - buffer->bytes);
    if (end_offset + width > buffer->capacity) return false;
    uint64_t used = buffer->used.load();
    if (used < end_offset + width) {
        if (used != end_offset || !buffer->used.compare_exchange_strong(used, end_offset + width)) return false;
    }
    return all_zero(s.end(), width);
}

bool convert_is_settled(const String& s, const Charset* target, unsigned flags) {
    bool terminated = !(flags & CON_TERMINATE) || has_zero_tail(s, s.get_charset()->min_char());
    bool shared = (flags & CON_UNSHARE) &&
                  (String::is_constant(s.get_buffer()) || s.get_buffer()->refs.load() > 1);
    return terminated && target == s.get_charset() && !shared;
}

// Bytes tagged binary are taken as already being text in `target`; returns
// how many leading bytes are a byte-order mark to skip.
size_t adopted_bom_size(const String& s, const Charset* target, CstranRecovery recovery) {
    size_t good_bytes = 0, good_chars = 0, bad_count = 0, first_bad = 0;
    target->verify(s.read(), s.size(), good_bytes, good_chars, bad_count, first_bad);
    if (bad_count && recovery == CSTRAN_STRICT) throw string_buffer_invalid_exception(first_bad);
    size_t bom = target->row.bom_size;
    bool marked = bom && s.size() > bom && std::memcmp(s.read(), target->row.bom, bom) == 0;
    return marked ? bom : 0;
}

size_t conversion_estimate(const String& s, const Charset* target, unsigned flags,
                           CstranRecovery recovery) {
    const Charset* source = s.get_charset();
    if (flags & CON_EXACT) {
        size_t exact = 0;
        if (transcoded_size(s.read(), s.end(), source, target, recovery, exact) != 0)
            throw cstran_chars_lost();
        return exact;
    }
    if (copies_raw(source, target)) return s.size();
    size_t min = source->min_char();
    return (s.size() + min - 1) / min * target->max_char();
}

}  // namespace

void String::convert(const Charset* target, unsigned flags, CstranRecovery recovery) {
    ZO_TRACE();
    if (convert_is_settled(*this, target, flags)) return;
    if (target == Charset::binary) {
        charset_ = target;
        return;
    }
    if (charset_ == Charset::binary) {
        size_t skip = adopted_bom_size(*this, target, recovery);
        data_ += skip;
        size_ -= skip;
        charset_ = target;
        // Termination and privacy still apply to the adopted bytes.
        if (convert_is_settled(*this, target, flags)) return;
    }
    size_t terminator = (flags & CON_TERMINATE) ? target->min_char() : 0;
    size_t estimate = conversion_estimate(*this, target, flags, recovery);
    String output(estimate + terminator, target);
    char* cursor = output.data_;
    if (transcode(data_, end(), charset_, cursor, output.data_ + estimate, target, recovery) != 0)
        throw cstran_chars_lost();
    std::memset(cursor, 0, terminator);
    output.size_ = static_cast<uint64_t>(cursor - output.data_);
    *this = std::move(output);
}

// ---- add --------------------------------------------------------------------

namespace {

inline bool writes_ascii_as_itself(const Charset* charset) {
    uint32_t id = charset->csid & 0xFFFF;
    constexpr uint32_t ASCII = 1, ISO_8859_1 = 4, ISO_8859_15 = 17, UTF_8 = 36, WINDOWS_1250 = 46,
                       WINDOWS_1258 = 54;
    return id == ASCII || id == UTF_8 || (id >= ISO_8859_1 && id <= ISO_8859_15) ||
           (id >= WINDOWS_1250 && id <= WINDOWS_1258);
}

// Room for the next appends: a string that grows by pieces costs linear time.
size_t grown_capacity(size_t size) { return size < 64 ? size : size + size / 2; }

String join_bytes(const String& left, const String& right, const Charset* charset) {
    String joined(left.size() + right.size(), charset, grown_capacity(left.size() + right.size()));
    char* out = joined.write();
    if (left.size()) std::memcpy(out, left.read(), left.size());
    if (right.size()) std::memcpy(out + left.size(), right.read(), right.size());
    return joined;
}

// One attempt of add: both sides into `target`, or false when a character would be lost.
bool join_converted(const String& left, const String& right, const Charset* target,
                    String& joined) {
    size_t left_size = 0, right_size = 0;
    if (transcoded_size(left.read(), left.end(), left.get_charset(), target, CSTRAN_STRICT,
                        left_size) != 0 ||
        transcoded_size(right.read(), right.end(), right.get_charset(), target, CSTRAN_STRICT,
                        right_size) != 0)
        return false;
    String result(left_size + right_size, target);
    char* out = left_size + right_size ? result.write() : nullptr;
    char* out_end = out + left_size + right_size;
    if (transcode(left.read(), left.end(), left.get_charset(), out, out_end, target,
                  CSTRAN_STRICT) != 0 ||
        transcode(right.read(), right.end(), right.get_charset(), out, out_end, target,
                  CSTRAN_STRICT) != 0)
        return false;
    joined = std::move(result);
    return true;
}

}  // namespace

bool ascii_transparent(const Charset* charset) { return writes_ascii_as_itself(charset); }

void String::append_bytes(const String& other) {
    if (!append_in_place(other)) *this = join_bytes(*this, other, charset_);
}

void String::add(const String& other) {
    if (charset_ == other.charset_ || charset_->nocptrans) {
        append_bytes(other);
        return;
    }
    ZO_TRACE();
    if (other.charset_->nocptrans) {
        const Charset* flagged = GetCharsetByCSID(charset_->csid | CSID_NOCPTRANS);
        ZO_ASSERT(flagged != nullptr);
        *this = join_bytes(*this, other, flagged);
        return;
    }
    // ASCII text converts to itself: chr(97) joins UTF-8 text without a conversion.
    if (writes_ascii_as_itself(charset_) && writes_ascii_as_itself(other.charset_) &&
        ascii_prefix(other.data_, other.size_) == other.size_) {
        append_bytes(other);
        return;
    }
    String joined;
    for (const Charset* target : {charset_, other.charset_, Charset::utf8}) {
        if (join_converted(*this, other, target, joined)) {
            *this = std::move(joined);
            return;
        }
    }
    throw cstran_chars_lost();
}

// ---- case mapping -------------------------------------------------------------

namespace {

typedef UChar32 (*case_mapping)(UChar32);

// The letters whose case flips: in Unicode's locale-free mappings the only
// ASCII characters with another case are the 26 Latin letters, and their
// other case is ASCII again, 0x20 away.
struct ascii_letters_st {
    unsigned char first;
    unsigned char last;
};

ascii_letters_st letters_changed_by(case_mapping map) {
    return map == u_toupper ? ascii_letters_st{'a', 'z'} : ascii_letters_st{'A', 'Z'};
}

// Eight bytes at once, all below 0x80: a byte's high bit marks first <= byte
// <= last after adding a bias; no sum carries into the next byte.
inline uint64_t flip_letters(uint64_t word, ascii_letters_st letters) {
    constexpr uint64_t ones = 0x0101010101010101ull, high_bits = 0x8080808080808080ull;
    uint64_t from_first = word + ones * (0x80u - letters.first);
    uint64_t past_last = word + ones * (0x7Fu - letters.last);
    return word ^ ((from_first & ~past_last & high_bits) >> 2);
}

inline char flip_letter(char c, ascii_letters_st letters) {
    auto byte = static_cast<unsigned char>(c);
    return byte >= letters.first && byte <= letters.last ? static_cast<char>(byte ^ 0x20) : c;
}

// Binary bytes are not characters; only their ASCII letters change case.
// The same pass serves text known to be ASCII, whose copy is marked so.
String map_binary_case(const String& s, case_mapping map, bool ascii) {
    constexpr uint64_t high_bits = 0x8080808080808080ull;
    ascii_letters_st letters = letters_changed_by(map);
    size_t n = s.size();
    String out(n, s.get_charset());
    char* to = out.write();
    const char* from = s.read();
    size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        uint64_t word;
        std::memcpy(&word, from + i, 8);
        if (word & high_bits) {
            for (size_t j = i; j < i + 8; ++j) to[j] = flip_letter(from[j], letters);
            continue;
        }
        word = flip_letters(word, letters);
        std::memcpy(to + i, &word, 8);
    }
    for (; i < n; ++i) to[i] = flip_letter(from[i], letters);
    // The new buffer is this string's alone: its ASCII mark may be set outright.
    if (ascii) const_cast<string_buffer_st*>(out.get_buffer())->ascii.store(n, std::memory_order_relaxed);
    return out;
}

String map_case(const String& s, case_mapping map, bool ascii) {
    if (s.size() == 0) return s;
    // ASCII letters map to ASCII letters in every locale-free mapping.
    if (s.get_charset() == Charset::binary || ascii) return map_binary_case(s, map, ascii);
    String wide(s.length() * 4, Charset::utf32le);
    char* out = wide.write();
    const Charset* cs = s.get_charset();
    for (const char* p = s.read(); p < s.end(); out += 4) {
        char32_t c = next_char(cs, p, s.end());
        uint32_t mapped = is_code_point(c) ? static_cast<uint32_t>(map(static_cast<UChar32>(c))) : c;
        std::memcpy(out, &mapped, 4);
    }
    wide.convert(cs, 0, CSTRAN_SUBSTITUTE);
    return wide;
}

}  // namespace

// Text that is all ASCII maps byte by byte in any charset that writes ASCII as itself.
String String::lower() const { return map_case(*this, u_tolower, writes_ascii_as_itself(charset_) && known_ascii()); }

String String::upper() const { return map_case(*this, u_toupper, writes_ascii_as_itself(charset_) && known_ascii()); }

}  // namespace zobase
