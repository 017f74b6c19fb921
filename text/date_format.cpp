#include "text/date_format.h"

#include <unicode/uchar.h>
#include <unicode/ucal.h>
#include <unicode/ustring.h>

#include <cctype>
#include <cstring>
#include <vector>

#include "base/call_trace.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/error.h"

namespace zobase {

namespace {

constexpr double UNIX_EPOCH_JULIAN = 2440588.0;
constexpr double MSECS_PER_DAY_D = 86400000.0;
// Earlier than any day number: dates before 1582 stay Gregorian.
constexpr UDate PROLEPTIC_CHANGE = -1.0e300;
constexpr const UChar* UTC_ZONE = u"UTC";

// Styles by their own numbers (vm/session_settings.h's DateStyle).
constexpr int32_t STYLE_LONG = 8;
constexpr int32_t STYLE_SHORT = 10;
constexpr int32_t STYLE_TAIWAN = 11;

struct icu_status_st {
    UErrorCode code = U_ZERO_ERROR;
    void check(const char* what) const {
        if (U_FAILURE(code)) throw assert_failed_exception(what);
    }
};

std::u16string utf16_of(const char* utf8) {
    std::u16string text;
    if (!utf8 || !*utf8) return text;
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(nullptr, 0, &length, utf8, -1, &status);
    text.resize(static_cast<size_t>(length));
    status = U_ZERO_ERROR;
    u_strFromUTF8(text.data(), length, nullptr, utf8, -1, &status);
    return text;
}

String utf8_string(const UChar* text, int32_t length) {
    char buffer[512];
    int32_t size = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(buffer, sizeof buffer, &size, text, length, &status);
    if (U_SUCCESS(status) && size <= static_cast<int32_t>(sizeof buffer))
        return String::fromBytes(buffer, static_cast<size_t>(size), Charset::utf8);
    std::vector<char> wide(static_cast<size_t>(size));
    status = U_ZERO_ERROR;
    u_strToUTF8(wide.data(), size, &size, text, length, &status);
    return String::fromBytes(wide.data(), static_cast<size_t>(size), Charset::utf8);
}

std::u16string read_pattern(const UDateFormat* handle) {
    UChar buffer[256];
    icu_status_st status;
    int32_t length = udat_toPattern(handle, false, buffer, 256, &status.code);
    status.check("udat_toPattern");
    return std::u16string(buffer, static_cast<size_t>(length));
}

// Dates count on the Gregorian calendar back to day 1, as the day numbers do.
void make_proleptic(UDateFormat* handle) {
    icu_status_st status;
    UCalendar* calendar = ucal_clone(udat_getCalendar(handle), &status.code);
    status.check("ucal_clone");
    ucal_setGregorianChange(calendar, PROLEPTIC_CHANGE, &status.code);
    if (U_SUCCESS(status.code)) udat_setCalendar(handle, calendar);  // a calendar of its own has no change
    ucal_close(calendar);
}

// Removes the zone letter, trims the blanks, and writes every run of year
// letters as the century asks. Quoted text is left alone.
std::u16string normalise_pattern(const std::u16string& pattern, bool century, bool roc) {
    // Years of the Republic of China have three digits: with the century
    // they are shown whole.
    std::u16string year = century ? (roc ? u"yyy" : u"yyyy") : u"yy";
    std::u16string out;
    bool quoted = false;
    for (size_t i = 0; i < pattern.size(); ++i) {
        char16_t c = pattern[i];
        if (c == u'\'') quoted = !quoted;
        if (quoted || c == u'\'') {
            out += c;
        } else if (c == u'z') {
            continue;
        } else if (c == u'y') {
            while (i + 1 < pattern.size() && pattern[i + 1] == u'y') ++i;
            out += year;
        } else {
            out += c;
        }
    }
    size_t first = out.find_first_not_of(u' ');
    if (first == std::u16string::npos) return u"";
    size_t last = out.find_last_not_of(u' ');
    return out.substr(first, last - first + 1);
}

// The date part of a style's pattern: its template, or for SHORT and LONG
// the default locale's medium and full forms (SHORT is not ICU's short one).
std::u16string date_template(int32_t style, const char* mark) {
    std::u16string m = utf16_of(mark);
    switch (style) {
    case 0:
    case 9:
    case 12: return u"MM" + m + u"dd" + m + u"y";
    case 1:
    case 7:
    case 11:
    case 13: return u"y" + m + u"MM" + m + u"dd";
    default: return u"dd" + m + u"MM" + m + u"y";
    }
}

std::u16string time_template(int32_t hours, bool seconds, const char* separator,
                             const char* time_mark) {
    std::u16string mark = utf16_of(time_mark);
    std::u16string part = utf16_of(separator) + (hours == 12 ? u"hh" : u"HH") + mark + u"mm";
    if (seconds) part += mark + u"ss";
    if (hours == 12) part += u" aa";
    return part;
}

// The pieces of a pattern made of numeric fields and literals only; empty
// when any other field (names of months or weekdays, eras, zones) occurs.
std::vector<DateFormatter::piece_st> direct_pieces(const std::u16string& pattern) {
    std::vector<DateFormatter::piece_st> pieces;
    auto literal = [&pieces](char c) {
        if (pieces.empty() || pieces.back().field) pieces.push_back({0, 0, ""});
        pieces.back().literal += c;
    };
    for (size_t i = 0; i < pattern.size();) {
        char16_t c = pattern[i];
        if (c == u'\'') {
            size_t close = pattern.find(u'\'', i + 1);
            if (close == std::u16string::npos) return {};
            if (close == i + 1) literal('\'');
            for (size_t k = i + 1; k < close; ++k) {
                if (pattern[k] > 0x7F) return {};
                literal(static_cast<char>(pattern[k]));
            }
            i = close + 1;
            continue;
        }
        if (c > 0x7F) return {};
        if (!std::isalpha(c)) {
            literal(static_cast<char>(c));
            ++i;
            continue;
        }
        size_t run = 1;
        while (i + run < pattern.size() && pattern[i + run] == c) ++run;
        bool numeric = (c == u'y' && (run == 2 || run == 4)) || (c == u'a' && run <= 3) ||
                       (std::strchr("MdHhms", static_cast<char>(c)) && run == 2);
        if (!numeric) return {};
        pieces.push_back({static_cast<char>(c), static_cast<uint8_t>(run), ""});
        i += run;
    }
    return pieces;
}

void append_two_digits(std::string& out, int value) {
    out += static_cast<char>('0' + value / 10 % 10);
    out += static_cast<char>('0' + value % 10);
}

struct udat_closer_st {
    void operator()(UDateFormat* handle) const { udat_close(handle); }
};
typedef std::unique_ptr<UDateFormat, udat_closer_st> udat_handle;

udat_handle open_pattern(const std::u16string& pattern, const char* locale, const UChar* zone) {
    icu_status_st status;
    udat_handle handle(udat_open(UDAT_PATTERN, UDAT_PATTERN, locale, zone, -1, pattern.data(),
                                 static_cast<int32_t>(pattern.size()), &status.code));
    status.check("udat_open");
    return handle;
}

udat_handle open_style(int32_t style, const char* mark) {
    if (style != STYLE_SHORT && style != STYLE_LONG) {
        const char* locale = style == STYLE_TAIWAN ? "@calendar=roc" : "@calendar=gregorian";
        return open_pattern(date_template(style, mark), locale, UTC_ZONE);
    }
    icu_status_st status;
    udat_handle handle(udat_open(UDAT_NONE, style == STYLE_SHORT ? UDAT_MEDIUM : UDAT_FULL,
                                 nullptr, UTC_ZONE, -1, nullptr, 0, &status.code));
    status.check("udat_open");
    return handle;
}

// Opens the formatter of a style with its date pattern, then gives it the
// normalised pattern with the time part (empty for a date) behind the date.
std::unique_ptr<DateFormatter> build_formatter(int32_t style, bool century, const char* mark,
                                               const std::u16string& time_part) {
    ZO_TRACE();
    if (style < 0 || style >= DATE_STYLE_COUNT) throw RuntimeError(ERR_NOT_AVAILABLE);
    udat_handle handle = open_style(style, mark);
    std::u16string pattern =
        normalise_pattern(read_pattern(handle.get()) + time_part, century, style == STYLE_TAIWAN);
    udat_applyPattern(handle.get(), false, pattern.data(), static_cast<int32_t>(pattern.size()));
    make_proleptic(handle.get());
    bool direct = style != STYLE_SHORT && style != STYLE_LONG && style != STYLE_TAIWAN;
    return std::make_unique<DateFormatter>(handle.release(), direct);
}

void copy_key_text(char (&out)[FORMAT_TEXT_SIZE], const char* text) {
    if (!text) return;
    size_t length = std::strlen(text);
    if (length >= FORMAT_TEXT_SIZE) throw assert_failed_exception("date format text too long");
    std::memcpy(out, text, length);
}

DateFormatCache::key_st make_key(int32_t style, bool century, const char* mark, int32_t hours,
                                 bool seconds, const char* separator, const char* time_mark) {
    DateFormatCache::key_st key;
    std::memset(&key, 0, sizeof key);
    key.style = style;
    key.century = century;
    key.hours = hours;
    key.seconds = seconds;
    copy_key_text(key.mark, mark);
    copy_key_text(key.separator, separator);
    copy_key_text(key.time_mark, time_mark);
    return key;
}

}  // namespace

DateFormatter::DateFormatter(UDateFormat* handle, bool direct)
    : handle_(handle), pattern_(read_pattern(handle)) {
    if (direct) pieces_ = direct_pieces(pattern_);
}

DateFormatter::~DateFormatter() { udat_close(handle_); }

// Years outside 1 to 9999 have eras or more digits: ICU writes those.
String DateFormatter::format(datetime_st value) const {
    if (pieces_.empty()) return format_moment(moment_of(value));
    int year, month, day, hour, minute, second, msec;
    unserial_julian_date(value, &year, &month, &day, &hour, &minute, &second, &msec);
    if (year < 1 || year > 9999) return format_moment(moment_of(value));
    std::string out;
    for (const piece_st& piece : pieces_) {
        switch (piece.field) {
        case 0: out += piece.literal; break;
        case 'y':
            if (piece.width == 4) append_two_digits(out, year / 100);
            append_two_digits(out, year % 100);
            break;
        case 'M': append_two_digits(out, month); break;
        case 'd': append_two_digits(out, day); break;
        case 'H': append_two_digits(out, hour); break;
        case 'h': append_two_digits(out, hour % 12 == 0 ? 12 : hour % 12); break;
        case 'm': append_two_digits(out, minute); break;
        case 's': append_two_digits(out, second); break;
        case 'a': out += hour < 12 ? "AM" : "PM"; break;
        }
    }
    return String::fromBytes(out.data(), out.size(), Charset::utf8);
}

String DateFormatter::format_moment(UDate moment) const {
    UChar buffer[128];
    UErrorCode status = U_ZERO_ERROR;
    std::lock_guard<std::mutex> hold(lock_);
    int32_t length = udat_format(handle_, moment, buffer, 128, nullptr, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR) {
        if (U_FAILURE(status)) throw assert_failed_exception("udat_format");
        return utf8_string(buffer, length);
    }
    std::u16string wide(static_cast<size_t>(length), u'\0');
    status = U_ZERO_ERROR;
    udat_format(handle_, moment, wide.data(), length, nullptr, &status);
    return utf8_string(wide.data(), length);
}

UDate moment_of(date_st date) noexcept {
    return (static_cast<double>(date.julian) - UNIX_EPOCH_JULIAN) * MSECS_PER_DAY_D;
}

UDate moment_of(datetime_st datetime) noexcept {
    return moment_of(date_st{datetime.julian}) + static_cast<double>(datetime.msecs);
}

String empty_date_text(const DateFormatter& formatter) {
    datetime_st sample;
    serial_julian_date(2000, 12, 28, 22, 22, 22, &sample);
    std::u16string text = formatter.format(sample).u16str();
    for (char16_t& c : text)
        if (u_isalnum(c)) c = u' ';
    return utf8_string(reinterpret_cast<const UChar*>(text.data()),
                       static_cast<int32_t>(text.size()));
}

String format_date(const DateFormatter& formatter, date_st date) {
    if (date.julian == 0) return empty_date_text(formatter);
    return formatter.format(datetime_st{date.julian, 0});
}

String format_datetime(const DateFormatter& formatter, datetime_st datetime) {
    if (datetime.julian == 0 && datetime.msecs == 0) return empty_date_text(formatter);
    return formatter.format(datetime);
}

// ---- the cache -----------------------------------------------------------

struct DateFormatCache::names_st {
    String weekdays[7];
    String months[12];
};

struct DateFormatCache::mime_st {
    std::unique_ptr<DateFormatter> formatter;
    UCalendar* calendar = nullptr;  // reads a datetime as local time
    std::mutex lock;
    ~mime_st() {
        if (calendar) ucal_close(calendar);
    }
};

size_t DateFormatCache::key_hash_st::operator()(const key_st& key) const noexcept {
    // FNV-1a over the zero-filled bytes.
    const auto* bytes = reinterpret_cast<const unsigned char*>(&key);
    uint64_t hash = 14695981039346656037ull;
    for (size_t i = 0; i < sizeof key; ++i) hash = (hash ^ bytes[i]) * 1099511628211ull;
    return static_cast<size_t>(hash);
}

bool DateFormatCache::key_equal_st::operator()(const key_st& a, const key_st& b) const noexcept {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

DateFormatCache::DateFormatCache() = default;
DateFormatCache::~DateFormatCache() = default;

// Readers share the lock; a missing format is built under the writer's lock,
// so no format is ever built twice.
template <typename Map, typename Build>
const typename Map::mapped_type::element_type& DateFormatCache::find_or_build(Map& map, const key_st& key,
                                                                             Build build) {
    {
        std::shared_lock<std::shared_mutex> read(lock_);
        auto found = map.find(key);
        if (found != map.end()) return *found->second;
    }
    std::unique_lock<std::shared_mutex> write(lock_);
    auto found = map.find(key);
    if (found != map.end()) return *found->second;
    auto entry = build();
    ++built_;
    return *map.emplace(key, std::move(entry)).first->second;
}

const date_format_st& DateFormatCache::date_format(int32_t style, bool century, const char* mark) {
    key_st key = make_key(style, century, mark, 0, false, nullptr, nullptr);
    return find_or_build(dates_, key, [&] {
        auto entry = std::make_unique<date_format_st>();
        entry->style = style;
        entry->century = century;
        std::memcpy(entry->mark, key.mark, sizeof key.mark);
        entry->formatter = build_formatter(style, century, mark, u"");
        return entry;
    });
}

const datetime_format_st& DateFormatCache::datetime_format(int32_t style, bool century,
                                                           const char* mark, int32_t hours,
                                                           bool seconds, const char* separator,
                                                           const char* time_mark) {
    key_st key = make_key(style, century, mark, hours, seconds, separator, time_mark);
    return find_or_build(datetimes_, key, [&] {
        auto entry = std::make_unique<datetime_format_st>();
        entry->style = style;
        entry->century = century;
        std::memcpy(entry->mark, key.mark, sizeof key.mark);
        entry->hours = hours;
        entry->seconds = seconds;
        std::memcpy(entry->separator, key.separator, sizeof key.separator);
        std::memcpy(entry->time_mark, key.time_mark, sizeof key.time_mark);
        entry->formatter = build_formatter(style, century, mark,
                                           time_template(hours, seconds, separator, time_mark));
        return entry;
    });
}

String DateFormatCache::mime_text(datetime_st datetime) {
    std::call_once(mime_once_, [this] {
        auto mime = std::make_unique<mime_st>();
        const char* locale = "en_US@calendar=gregorian";
        udat_handle handle = open_pattern(u"EEE, dd MMM yyyy HH:mm:ss ZZZ", locale, nullptr);
        make_proleptic(handle.get());
        mime->formatter = std::make_unique<DateFormatter>(handle.release(), false);
        icu_status_st status;
        mime->calendar = ucal_open(nullptr, 0, locale, UCAL_GREGORIAN, &status.code);
        status.check("ucal_open");
        ucal_setGregorianChange(mime->calendar, PROLEPTIC_CHANGE, &status.code);
        ++built_;
        mime_ = std::move(mime);
    });
    int year, month, day, hour, minute, second, msec;
    unserial_julian_date(datetime, &year, &month, &day, &hour, &minute, &second, &msec);
    UDate moment;
    {
        std::lock_guard<std::mutex> hold(mime_->lock);
        icu_status_st status;
        ucal_clear(mime_->calendar);
        ucal_setDateTime(mime_->calendar, year, month - 1, day, hour, minute, second, &status.code);
        ucal_set(mime_->calendar, UCAL_MILLISECOND, msec);
        moment = ucal_getMillis(mime_->calendar, &status.code);
        status.check("ucal_getMillis");
    }
    return mime_->formatter->format_moment(moment);
}

const DateFormatCache::names_st& DateFormatCache::names() {
    std::call_once(names_once_, [this] {
        auto names = std::make_unique<names_st>();
        icu_status_st status;
        udat_handle handle(
            udat_open(UDAT_DEFAULT, UDAT_DEFAULT, nullptr, UTC_ZONE, -1, nullptr, 0, &status.code));
        status.check("udat_open");
        UChar buffer[64];
        for (int day = 0; day < 7; ++day) {
            int32_t length = udat_getSymbols(handle.get(), UDAT_WEEKDAYS, UCAL_SUNDAY + day, buffer,
                                             64, &status.code);
            status.check("udat_getSymbols");
            names->weekdays[day] = utf8_string(buffer, length);
        }
        for (int month = 0; month < 12; ++month) {
            int32_t length =
                udat_getSymbols(handle.get(), UDAT_MONTHS, month, buffer, 64, &status.code);
            status.check("udat_getSymbols");
            names->months[month] = utf8_string(buffer, length);
        }
        names_ = std::move(names);
    });
    return *names_;
}

String DateFormatCache::weekday_name(int weekday) { return names().weekdays[(weekday - 1) % 7]; }
String DateFormatCache::month_name(int month) { return names().months[(month - 1) % 12]; }

}  // namespace zobase
