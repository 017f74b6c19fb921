#pragma once
// The settings a data session holds: what SET EXACT, SET DATE, SET POINT and
// their kin change, and what a new session starts with. This struct is their
// one home; the VM reaches the current session's copy through the stack's
// DataSessions (vm/data_sessions.h). Settings held elsewhere: SET SPACE and
// SET TEXTMERGE by the stack, SET ASSERTS and SET FDOW by the runtime; SET
// SYSFORMATS is no setting of its own, it compares `formats` with the
// machine's formats that the runtime keeps.
#include <cstdint>
#include <string_view>

namespace zobase {

// SET DATE TO <name>: the style numbers of the date style table.
enum DateStyle : int32_t {
    DATE_STYLE_AMERICAN = 0,
    DATE_STYLE_ANSI = 1,
    DATE_STYLE_BRITISH = 2,
    DATE_STYLE_DMY = 3,
    DATE_STYLE_FRENCH = 4,
    DATE_STYLE_GERMAN = 5,
    DATE_STYLE_ITALIAN = 6,
    DATE_STYLE_JAPAN = 7,
    DATE_STYLE_LONG = 8,
    DATE_STYLE_MDY = 9,
    DATE_STYLE_SHORT = 10,
    DATE_STYLE_TAIWAN = 11,
    DATE_STYLE_USA = 12,
    DATE_STYLE_YMD = 13,
};

// One row of the date style table: the name SET DATE takes and set("DATE")
// gives back, the style, and the mark and hours the style sets (null mark and
// 0 hours: LONG and SHORT leave both as they are).
struct date_style_st {
    const char* name;
    int32_t style;
    const char* mark;
    int32_t hours;
    int32_t abbreviate_to;
};

// The row of a style name in upper case, or of an abbreviation as long as the
// row's abbreviate_to or longer; null for none.
const date_style_st* find_date_style(std::string_view upper_name) noexcept;
// The row of a style number, or null.
const date_style_st* find_date_style(int32_t style) noexcept;

// One character of a setting: its code point, its encoded bytes, and whether
// those are a single ASCII byte.
struct setting_char_st {
    char32_t code_point;
    char bytes[4];
    uint8_t length;
    bool ascii;
};

// The block that SET SYSFORMATS ON copies from the machine's formats.
struct format_settings_st {
    setting_char_st point = {U'.', {'.', 0, 0, 0}, 1, true};  // SET POINT
    char32_t separator = U',';                                 // SET SEPARATOR
    int32_t decimals = 2;                                      // SET DECIMALS
    int32_t date_style = DATE_STYLE_AMERICAN;                  // SET DATE
    char date_mark[5] = "/";  // SET DATE: up to 4 bytes, zero-terminated
    bool century = false;     // SET CENTURY
    int32_t hours = 12;       // SET HOURS: 12 or 24
    bool seconds = true;      // SET SECONDS
};

// A new data session starts with these, the language's traditional values,
// never the machine's.
struct session_settings_st {
    format_settings_st formats;
    bool exact = false;      // SET EXACT: "=" on text compares whole strings, not a prefix
    bool near = false;       // SET NEAR: a failed SEEK stays at the next key
    bool exclusive = true;   // SET EXCLUSIVE: USE opens unshared unless told SHARED
    bool deleted = false;    // SET DELETED: deleted records are out of every range
    uint64_t blocksize = 64;  // SET BLOCKSIZE, in bytes
};

}  // namespace zobase
