#pragma once
// String: a view on a shared, reference-counted buffer that carries the
// charset of its bytes. Copies share; writers unshare (copy on write);
// appending claims the buffer's free tail in place when no view reaches it.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "base/export.h"

namespace zobase {

class Charset;
class Collation;
class String;

enum CstranRecovery : int { CSTRAN_SUBSTITUTE = 0, CSTRAN_STRICT = 1 };

enum ConFlags : unsigned { CON_TERMINATE = 1, CON_UNSHARE = 2, CON_EXACT = 4 };

// The longest string in bytes: counts of the language are signed 32-bit.
// A buffer may hold up to four more, for a terminator in any charset.
constexpr size_t MAX_STRING_SIZE = INT32_MAX;
constexpr size_t MAX_TERMINATOR_SIZE = 4;

// Invariants: every view of the buffer lies within [0, used), and the bytes
// there never change while the buffer is shared. So an append may claim
// [used, capacity) in place, whoever else holds the buffer, by moving `used`
// from its view's end: `c = c + x` costs the new bytes only. `ascii` bytes
// from the start are known to be ASCII (a lower bound, grown by whoever
// looks further), which makes character positions of UTF-8 text byte
// positions.
struct string_buffer_st {
    char* bytes;
    uint64_t capacity;
    std::atomic<uint64_t> refs;
    std::atomic<uint64_t> used;
    std::atomic<uint64_t> ascii;
};

// A needle or replacement that owns nothing.
struct const_string_st {
    const char* begin;
    const char* end;
    const Charset* charset;
};

// A lexeme as the scanner hands it over.
struct scan_string_st {
    const char* begin;
    uint64_t reserved;
    const Charset* charset;
    size_t size;
};

// Called per match by scan, strtran and explode: the searched string, the
// match's first byte and the byte after it, its character index, the index
// of the needle that matched, its length in characters, the caller's context.
// Returns true to go on.
typedef bool (*string_match_callback)(const String& searched, const char* match_begin,
                                      const char* match_end, size_t char_index,
                                      size_t needle_index, size_t match_chars, void* context);

class ZO_API String {
public:
    String() noexcept;
    String(const char* utf8);
    String(const char16_t* utf16);
    String(const char32_t* utf32);
    String(const std::filesystem::path& path);
    String(size_t bytes, const Charset* charset);
    // `bytes` to be written, in a buffer with room for `capacity`: appends
    // fill the rest in place.
    String(size_t bytes, const Charset* charset, size_t capacity);
    // Copies, moves and views count the buffer here, inline: they are on
    // every path that hands a value on.
    String(const String& other) noexcept
        : data_(other.data_), charset_(other.charset_), buffer_(other.buffer_), size_(other.size_) {
        retain(buffer_);
    }
    String(String&& other) noexcept
        : data_(other.data_), charset_(other.charset_), buffer_(other.buffer_), size_(other.size_) {
        other.become_empty();
    }
    String(const String& src, const char* begin, const char* end) noexcept
        : data_(const_cast<char*>(begin)), charset_(src.charset_), buffer_(src.buffer_),
          size_(static_cast<uint64_t>(end - begin)) {
        retain(buffer_);
    }
    ~String() { release(buffer_); }
    String& operator=(const String& other) noexcept {
        retain(other.buffer_);
        release(buffer_);
        data_ = other.data_;
        charset_ = other.charset_;
        buffer_ = other.buffer_;
        size_ = other.size_;
        return *this;
    }
    String& operator=(String&& other) noexcept {
        if (this == &other) return *this;
        release(buffer_);
        data_ = other.data_;
        charset_ = other.charset_;
        buffer_ = other.buffer_;
        size_ = other.size_;
        other.become_empty();
        return *this;
    }

    static String fromBytes(const char* bytes, const Charset* charset);
    static String fromBytes(const char* bytes, size_t size, const Charset* charset);
    static String create_from_path(const std::filesystem::path& path, const Charset* charset);
    static String create_from_scan_string(const scan_string_st& scan);

    const char* read() const noexcept { return data_; }
    char* write();
    const char* end() const noexcept { return data_ + size_; }
    size_t size() const noexcept { return size_; }
    size_t length() const;
    const Charset* get_charset() const noexcept { return charset_; }
    const string_buffer_st* get_buffer() const noexcept { return buffer_; }
    bool is_empty() const;

    std::string u8str() const;
    std::u16string u16str() const;
    operator std::filesystem::path() const;
    int strcpy(char* out, size_t capacity, const Charset* target, CstranRecovery recovery) const;

    String substr(size_t start, size_t count) const;
    size_t align(size_t n);
    void resize(size_t n);
    void ltrim();
    void rtrim();
    void alltrim();
    void rtrim_endl();
    void ltrim_classic_space();
    void ltrim_classic_tab();
    void ltrim_classic_space_or_tab();
    void ltrim(bool (*predicate)(char32_t));
    void rtrim(bool (*predicate)(char32_t));
    void ltrim(const String& unit);
    typedef const String* (*trim_enumerator)(void* context);
    void ltrim(const Collation* collation, trim_enumerator first, trim_enumerator next, void* context);
    void rtrim(const Collation* collation, trim_enumerator first, trim_enumerator next, void* context);

    String lower() const;
    String upper() const;
    bool chrstr(char32_t c, size_t& index, size_t& first, size_t& last) const;
    bool christr(char32_t c, size_t& index, size_t& first, size_t& last) const;
    bool strstr(const const_string_st& needle, size_t& index, size_t& first, size_t& last,
                size_t skip) const;
    size_t scan(const const_string_st& needle, size_t& count, string_match_callback callback,
                void* context) const;
    size_t scan(const const_string_st* needles, size_t n, size_t& count,
                string_match_callback callback, void* context) const;
    void explode(const const_string_st* needles, size_t n, bool keep_separator,
                 std::vector<String>& list) const;
    String strtran(const const_string_st& search, const const_string_st& replacement) const;
    String strmultitran(const const_string_st* needles, size_t n,
                        const const_string_st* replacements) const;
    int cmp(const String& other, const Collation* collation) const;
    void add(const String& other);
    void convert(const Charset* target, unsigned flags, CstranRecovery recovery);

    const_string_st as_const() const noexcept { return {data_, data_ + size_, charset_}; }

    // The one byte as text of `charset`, which must hold it as a whole
    // character: a view of a constant buffer, made without allocating.
    static String single_byte(unsigned char byte, const Charset* charset) noexcept;
    // A buffer no one owns: its bytes never change, appends never claim it.
    static bool is_constant(const string_buffer_st* buffer) noexcept {
        auto offset = reinterpret_cast<uintptr_t>(buffer) - reinterpret_cast<uintptr_t>(constant_buffers_);
        return offset < sizeof(constant_buffers_);
    }

private:
    char* data_;
    const Charset* charset_;
    string_buffer_st* buffer_;
    uint64_t size_;

    // Buffers made with the program, never counted nor freed: the first backs
    // every empty view (four zero bytes, all used), so a moved-from string
    // costs no atomic operation; then one per byte value, for single_byte.
    static string_buffer_st constant_buffers_[257];
    static string_buffer_st* empty_buffer() noexcept { return &constant_buffers_[0]; }
    static void retain(string_buffer_st* buffer) noexcept {
        if (!is_constant(buffer)) buffer->refs.fetch_add(1, std::memory_order_relaxed);
    }
    static void release(string_buffer_st* buffer) noexcept {
        if (!is_constant(buffer) && buffer->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
            free_buffer(buffer);
    }
    static void free_buffer(string_buffer_st* buffer) noexcept;
    // Keeps the charset: an empty view of the same text.
    void become_empty() noexcept {
        buffer_ = empty_buffer();
        data_ = buffer_->bytes;
        size_ = 0;
    }

    void do_copy_on_write();
    // Appends other's bytes into the free tail of this buffer; false when
    // the tail is too short or another view has claimed it.
    bool append_in_place(const String& other);
    // other's bytes as they are, in place when there is room, else into a
    // new buffer with room to spare.
    void append_bytes(const String& other);
    // How many bytes from the start of this view are ASCII, each one
    // character, as far as the buffer's mark (extended here) shows.
    size_t ascii_span() const;
    // True when every character of this view is one ASCII byte.
    bool known_ascii() const;
    friend class Concat;
};

static_assert(sizeof(String) == 32, "String is four words");

ZO_API String symbolify(const String& text, bool* changed, const Charset* charset);
ZO_API String stringToEncodedHexBinary(const String& text);
// Charsets in which each ASCII character is that one byte.
ZO_API bool ascii_transparent(const Charset* charset);

// Collects pieces and joins them with one size estimate and one allocation.
class ZO_API Concat {
public:
    Concat() = default;
    explicit Concat(const Charset* charset) : charset_(charset) {}
    void append(const String& piece);
    String to_string(bool terminate = false) const;
    const Charset* get_charset() const noexcept { return charset_; }
    size_t piece_count() const noexcept { return pieces_.size(); }

protected:
    mutable const Charset* charset_ = nullptr;
    std::vector<String> pieces_;
    mutable uint64_t total_ = 0;
};

class ZO_API StringBuilder : public Concat {
public:
    using Concat::Concat;
};
ZO_API StringBuilder& operator<<(StringBuilder& builder, const String& piece);
ZO_API StringBuilder& operator<<(StringBuilder& builder, const char* utf8);

}  // namespace zobase
