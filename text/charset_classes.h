#pragma once
// The concrete charset classes; only the registry and the classes themselves
// need to see them, everyone else holds a `const Charset*`.
#include <unicode/ucnv.h>

#include <unordered_map>

#include "text/charset.h"

namespace zobase {

class Binary : public Charset {
public:
    using Charset::Charset;
    using Charset::convert;
    CstranError calculate(const char* begin, const char* end, const Charset* target,
                          size_t& size, CstranRecovery recovery) const override;
    CstranError convert(const char*& src, const char* src_end, char*& dst, char* dst_end,
                        const Charset* target, CstranRecovery recovery) const override;
    char32_t next(const char*& p, const char* end) const override;
    void verify(const char* bytes, size_t size, size_t& good_bytes, size_t& good_chars,
                size_t& bad_count, size_t& first_bad) const override;
};

class Manual_SBCSCharset : public Charset {
public:
    Manual_SBCSCharset(const charset_st& row, bool nocptrans, const char16_t* table,
                       char substitute);
    char32_t next(const char*& p, const char* end) const override;
    void verify(const char* bytes, size_t size, size_t& good_bytes, size_t& good_chars,
                size_t& bad_count, size_t& first_bad) const override;
    CstranError out(const char*& src, const char* src_end, char16_t*& utf16,
                    char16_t* utf16_end) const override;
    CstranError in(const char16_t*& utf16, const char16_t* utf16_end, char*& dst, char* dst_end,
                   CstranRecovery recovery) const override;

private:
    const char16_t* table_;
    std::unordered_map<char16_t, char> reverse_;
    char substitute_;
};

class _ICUConverterCharset : public Charset {
public:
    _ICUConverterCharset(const charset_st& row, bool nocptrans);
    ~_ICUConverterCharset() override;
    char32_t next(const char*& p, const char* end) const override;
    void verify(const char* bytes, size_t size, size_t& good_bytes, size_t& good_chars,
                size_t& bad_count, size_t& first_bad) const override;
    CstranError out(const char*& src, const char* src_end, char16_t*& utf16,
                    char16_t* utf16_end) const override;
    CstranError in(const char16_t*& utf16, const char16_t* utf16_end, char*& dst, char* dst_end,
                   CstranRecovery recovery) const override;

    // UConverter is not thread-safe: every thread works on its own clone of the master.
    UConverter* get_thread_local_converter() const;

private:
    UConverter* master_;
    uint64_t serial_;  // tells a thread's clone of a destroyed charset from one of its successor
};

class UTF8 : public _ICUConverterCharset {
public:
    using _ICUConverterCharset::_ICUConverterCharset;
    char32_t next(const char*& p, const char* end) const override;
};

class UTF16LE : public _ICUConverterCharset {
public:
    using _ICUConverterCharset::_ICUConverterCharset;
    char32_t next(const char*& p, const char* end) const override;
};

class UTF32LE : public _ICUConverterCharset {
public:
    using _ICUConverterCharset::_ICUConverterCharset;
    char32_t next(const char*& p, const char* end) const override;
};

// Byte tables of the table-driven code pages: 256 UTF-16 units, U+FFFD where unmapped.
extern const char16_t ascii_map[256];
extern const char16_t iso_8859_1_map[256];
extern const char16_t windows_1250_map[256];
extern const char16_t windows_1251_map[256];
extern const char16_t windows_1252_map[256];
extern const char16_t ibm_437_map[256];
extern const char16_t ibm_850_map[256];
extern const char16_t kamenicky_map[256];
extern const char16_t mazovia_map[256];

// Loaders named by the registry rows.
Charset* load_custom_charset(const charset_st* row, bool nocptrans);
Charset* load_generic_icu_charset(const charset_st* row, bool nocptrans);

template <class T>
Charset* load_optimized_icu_charset(const charset_st* row, bool nocptrans) {
    return new T(*row, nocptrans);
}

template <const char16_t* Table, char Substitute>
Charset* load_manual_sbcs_charset(const charset_st* row, bool nocptrans) {
    return new Manual_SBCSCharset(*row, nocptrans, Table, Substitute);
}

constexpr char16_t UNMAPPED_UNIT = 0xFFFD;
constexpr char32_t UNDECODABLE = 0xFFFD;

}  // namespace zobase
