#pragma once
// Dates and datetimes as text, through ICU date formatters shaped by SET DATE,
// its mark, SET CENTURY, SET HOURS and SET SECONDS. Building a formatter is
// expensive, so a DateFormatCache keeps each one it builds, keyed by those
// settings; an entry is never changed or removed, so a reference to one stays
// valid as long as the cache lives.
#include <unicode/udat.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "values/number_types.h"
#include "values/string.h"

namespace zobase {

// The style numbers below DATE_STYLE_COUNT have a format; the names are those
// of the date style table (vm/session_settings.h).
constexpr int32_t DATE_STYLE_COUNT = 14;

// Marks, separators and time marks of a key: up to 7 bytes and a zero.
constexpr size_t FORMAT_TEXT_SIZE = 8;

// One ICU formatter and the pattern it ended with. A pattern of numeric
// fields only (years, months, days, hours, minutes, seconds, "aa" and
// literal text) in the Gregorian calendar is also kept as a list of pieces
// and written without ICU, to the same text; the rest goes through ICU, and
// since a formatter is not for two threads at once, under the formatter's
// own lock.
class DateFormatter {
public:
    // Takes ownership of an opened formatter. `direct` allows writing the
    // pattern without ICU: its calendar is Gregorian and its locale the root.
    DateFormatter(UDateFormat* handle, bool direct);
    ~DateFormatter();
    DateFormatter(const DateFormatter&) = delete;
    DateFormatter& operator=(const DateFormatter&) = delete;

    // The text of a wall-clock date and time, in UTF-8.
    String format(datetime_st value) const;
    // The text of a moment in milliseconds since 1970, always through ICU.
    String format_moment(UDate moment) const;
    const std::u16string& pattern() const noexcept { return pattern_; }
    bool direct() const noexcept { return !pieces_.empty(); }

    // A field or literal text of a direct pattern.
    struct piece_st {
        char field;  // the pattern letter, 0 for literal text
        uint8_t width;
        std::string literal;
    };

private:
    UDateFormat* handle_;
    std::u16string pattern_;
    std::vector<piece_st> pieces_;
    mutable std::mutex lock_;
};

// Key and payload of one cached date format.
struct date_format_st {
    int32_t style;
    bool century;
    char mark[FORMAT_TEXT_SIZE];
    std::unique_ptr<DateFormatter> formatter;
};

// A datetime format: the date's settings, then the time part's.
struct datetime_format_st {
    int32_t style;
    bool century;
    char mark[FORMAT_TEXT_SIZE];
    int32_t hours;  // 12 or 24
    bool seconds;
    char separator[FORMAT_TEXT_SIZE];  // between date and time, in pattern syntax
    char time_mark[FORMAT_TEXT_SIZE];  // between time fields
    std::unique_ptr<DateFormatter> formatter;
};

// Formats are built in UTC from day numbers, so no zone shifts a date.
UDate moment_of(date_st date) noexcept;
UDate moment_of(datetime_st datetime) noexcept;

// The text of an empty date or datetime in a format: the text of a sample
// with every letter and digit blanked, so it keeps the format's shape.
String empty_date_text(const DateFormatter& formatter);
// A date or datetime in a format; the empty one as empty_date_text.
String format_date(const DateFormatter& formatter, date_st date);
String format_datetime(const DateFormatter& formatter, datetime_st datetime);

class DateFormatCache {
public:
    DateFormatCache();
    ~DateFormatCache();
    DateFormatCache(const DateFormatCache&) = delete;
    DateFormatCache& operator=(const DateFormatCache&) = delete;

    // The cached format, built on the first request. A style outside the
    // table is 1001.
    const date_format_st& date_format(int32_t style, bool century, const char* mark);
    const datetime_format_st& datetime_format(int32_t style, bool century, const char* mark,
                                              int32_t hours, bool seconds, const char* separator,
                                              const char* time_mark);

    // "EEE, dd MMM yyyy HH:mm:ss ZZZ" in English, in the machine's time zone,
    // for datetimes read as the machine's local time.
    String mime_text(datetime_st datetime);
    // The names of the default locale: weekday 1 is Sunday, month 1 January.
    String weekday_name(int weekday);
    String month_name(int month);

    // How many formatters were built: each format once.
    uint64_t built() const noexcept { return built_.load(); }

    // The settings of a format as plain bytes, zero-filled, so that keys
    // hash and compare as bytes.
    struct key_st {
        int32_t style;
        int32_t hours;
        bool century;
        bool seconds;
        char mark[FORMAT_TEXT_SIZE];
        char separator[FORMAT_TEXT_SIZE];
        char time_mark[FORMAT_TEXT_SIZE];
    };

private:
    struct key_hash_st {
        size_t operator()(const key_st& key) const noexcept;
    };
    struct key_equal_st {
        bool operator()(const key_st& a, const key_st& b) const noexcept;
    };
    struct names_st;
    struct mime_st;

    const names_st& names();
    template <typename Map, typename Build>
    const typename Map::mapped_type::element_type& find_or_build(Map& map, const key_st& key,
                                                                 Build build);

    std::shared_mutex lock_;
    std::unordered_map<key_st, std::unique_ptr<date_format_st>, key_hash_st, key_equal_st> dates_;
    std::unordered_map<key_st, std::unique_ptr<datetime_format_st>, key_hash_st, key_equal_st>
        datetimes_;
    std::once_flag names_once_;
    std::unique_ptr<names_st> names_;
    std::once_flag mime_once_;
    std::unique_ptr<mime_st> mime_;
    std::atomic<uint64_t> built_{0};
};

}  // namespace zobase
