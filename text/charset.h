#pragma once
// Charsets: how bytes are text. Immortal singletons from one registry, so two
// strings share an encoding exactly when they hold the same pointer.
#include <cstddef>
#include <cstdint>

#include "base/export.h"
#include "values/string.h"

namespace zobase {

// 0 success, 1 a character cannot be converted, -1 the output is full.
typedef int CstranError;

class Charset;
struct charset_st;
typedef Charset* (*charset_loader)(const charset_st* row, bool nocptrans);

// One row of the static registry table.
struct charset_st {
    uint64_t csid;
    const char* name;
    uint32_t windows_codepage;
    uint32_t codepage;
    const char* icu_name;
    uint64_t min_char;
    uint64_t max_char;
    uint64_t bom_size;
    const char* bom;
    charset_loader loader;
    uint64_t unicode;
};

constexpr uint32_t CSID_NOCPTRANS = 0x10000;

class ZO_API Charset {
public:
    charset_st row;
    uint32_t csid;  // row csid in the low 16 bits, CSID_NOCPTRANS for the variant
    bool fixed_width;
    bool nocptrans;

    static const Charset* ascii;
    static const Charset* binary;
    static const Charset* utf8;
    static const Charset* utf16le;
    static const Charset* utf32le;

    Charset(const charset_st& row, bool nocptrans);
    virtual ~Charset();

    virtual CstranError calculate(const char* begin, const char* end, const Charset* target,
                                  size_t& size, CstranRecovery recovery) const;
    virtual CstranError convert(const char*& src, const char* src_end, char*& dst,
                                char* dst_end, const Charset* target,
                                CstranRecovery recovery) const;
    // Decodes one character and advances p; U+FFFD means undecodable.
    virtual char32_t next(const char*& p, const char* end) const = 0;
    virtual void verify(const char* bytes, size_t size, size_t& good_bytes, size_t& good_chars,
                        size_t& bad_count, size_t& first_bad) const;
    virtual CstranError out(const char*& src, const char* src_end, char16_t*& utf16,
                            char16_t* utf16_end) const;
    virtual CstranError in(const char16_t*& utf16, const char16_t* utf16_end, char*& dst,
                           char* dst_end, CstranRecovery recovery) const;

    bool scan(const char*& p, const char* end) const;
    char32_t peek_next(const char* p, const char* end) const;
    char32_t prev(const char*& p, const char* begin) const;
    size_t count_chars(const char* begin, const char* end) const;
    bool is_equal(const Charset* other) const noexcept { return this == other; }
    CstranError convert(const char* begin, const char* end, char*& out, char* out_end,
                        const Charset* target, CstranRecovery recovery) const;
    // The advancing form under a name of its own: with lvalue pointers the two
    // `convert` overloads are ambiguous.
    CstranError convert_stream(const char*& src, const char* src_end, char*& dst,
                               char* dst_end, const Charset* target,
                               CstranRecovery recovery) const;

    size_t min_char() const noexcept { return row.min_char; }
    size_t max_char() const noexcept { return row.max_char; }
    const char* name() const noexcept { return row.name; }
};

void __init_character_sets();
void __shutdown_character_sets();

ZO_API const Charset* GetCharsetByCSID(uint32_t csid);
ZO_API const Charset* GetCharsetByWindowsCodepage(int codepage);
ZO_API const Charset* get_charset_by_codepage(int codepage, bool nocptrans);
ZO_API const Charset* get_charset_by_name(const String& name);
ZO_API const Charset* get_charset_by_name(const char* name);
ZO_API const Charset* get_charset_by_country_lang(const char* country_lang);
ZO_API int GetCharsetCPID(const Charset* charset);
ZO_API uint32_t GetCharsetCSID(const Charset* charset);
typedef void (*charset_list_callback)(void* context, const char* name);
ZO_API void list_supported_charset(void* context, charset_list_callback callback);

}  // namespace zobase
