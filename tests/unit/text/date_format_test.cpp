#include "text/date_format.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/support/locale_scope.h"
#include "values/date.h"
#include "values/error.h"

using namespace zobase;
using zobase::testing::LocaleScope;

namespace {

std::string pattern_of(const DateFormatter& formatter) {
    return String(formatter.pattern().c_str()).u8str();
}

date_st day(int year, unsigned month, unsigned day) {
    date_st date;
    EXPECT_EQ(serial_julian_date(year, month, day, &date), 0);
    return date;
}

datetime_st moment(int year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                   unsigned second) {
    datetime_st datetime;
    EXPECT_EQ(serial_julian_date(year, month, day, hour, minute, second, &datetime), 0);
    return datetime;
}


}  // namespace

TEST(DateFormatCache, EachFormatIsBuiltOnceWhateverTheCallCount) {
    DateFormatCache cache;
    const date_format_st* first = &cache.date_format(0, false, "/");
    for (int i = 0; i < 1000; ++i) {
        const date_format_st& format = cache.date_format(0, false, "/");
        EXPECT_EQ(&format, first);
        format_date(*format.formatter, date_st{2461043u + static_cast<uint32_t>(i)});
    }
    EXPECT_EQ(cache.built(), 1u);
    cache.date_format(0, true, "/");
    cache.date_format(0, false, "-");
    cache.datetime_format(0, false, "/", 12, true, ", ", ":");
    cache.datetime_format(0, false, "/", 12, true, ", ", ":");
    EXPECT_EQ(cache.built(), 4u);
}

TEST(DateFormatCache, PatternsFollowStyleCenturyAndMark) {
    DateFormatCache cache;
    EXPECT_EQ(pattern_of(*cache.date_format(0, false, "/").formatter), "MM/dd/yy");
    EXPECT_EQ(pattern_of(*cache.date_format(1, true, ".").formatter), "yyyy.MM.dd");
    EXPECT_EQ(pattern_of(*cache.date_format(5, false, ".").formatter), "dd.MM.yy");
    EXPECT_EQ(pattern_of(*cache.date_format(11, true, "/").formatter), "yyy/MM/dd");
    EXPECT_EQ(pattern_of(*cache.date_format(13, true, "").formatter), "yyyyMMdd");
    EXPECT_EQ(pattern_of(*cache.datetime_format(0, false, "/", 12, true, ", ", ":").formatter),
              "MM/dd/yy, hh:mm:ss aa");
    EXPECT_EQ(pattern_of(*cache.datetime_format(2, true, "/", 24, false, ", ", ":").formatter),
              "dd/MM/yyyy, HH:mm");
    EXPECT_EQ(pattern_of(*cache.datetime_format(13, true, "-", 24, true, "'T'", ":").formatter),
              "yyyy-MM-dd'T'HH:mm:ss");
}

TEST(DateFormatCache, TextOfDatesAndDatetimes) {
    DateFormatCache cache;
    date_st d = day(2026, 1, 2);
    EXPECT_EQ(format_date(*cache.date_format(0, false, "/").formatter, d).u8str(), "01/02/26");
    EXPECT_EQ(format_date(*cache.date_format(0, true, "/").formatter, d).u8str(), "01/02/2026");
    EXPECT_EQ(format_date(*cache.date_format(5, false, ".").formatter, d).u8str(), "02.01.26");
    EXPECT_EQ(format_date(*cache.date_format(1, false, ".").formatter, d).u8str(), "26.01.02");
    EXPECT_EQ(format_date(*cache.date_format(11, true, "/").formatter, d).u8str(), "115/01/02");
    datetime_st t = moment(2026, 1, 2, 3, 4, 5);
    EXPECT_EQ(format_datetime(*cache.datetime_format(13, true, "-", 24, true, "'T'", ":").formatter, t)
                  .u8str(),
              "2026-01-02T03:04:05");
    EXPECT_EQ(format_datetime(*cache.datetime_format(0, false, "/", 12, false, ", ", ":").formatter,
                              moment(2026, 1, 2, 0, 30, 0))
                  .u8str(),
              "01/02/26, 12:30 AM");
    // Before the Gregorian reform the days still count on the Gregorian calendar.
    EXPECT_EQ(format_date(*cache.date_format(13, true, "-").formatter, day(1200, 2, 29)).u8str(),
              "1200-02-29");
}

TEST(DateFormatCache, EmptyValuesKeepTheFormatsShape) {
    DateFormatCache cache;
    EXPECT_EQ(format_date(*cache.date_format(0, false, "/").formatter, date_st{0}).u8str(), "  /  /  ");
    EXPECT_EQ(format_datetime(*cache.datetime_format(5, true, ".", 24, true, ", ", ":").formatter,
                              datetime_st{0, 0})
                  .u8str(),
              "  .  .    ,   :  :  ");
}

TEST(DateFormatCache, ShortAndLongComeFromTheDefaultLocale) {
    LocaleScope german("de_DE");
    DateFormatCache cache;
    date_st d = day(2026, 1, 2);
    EXPECT_EQ(format_date(*cache.date_format(10, false, "/").formatter, d).u8str(), "02.01.26");
    EXPECT_EQ(format_date(*cache.date_format(10, true, "/").formatter, d).u8str(), "02.01.2026");
    EXPECT_EQ(format_date(*cache.date_format(8, true, "/").formatter, d).u8str(),
              "Freitag, 2. Januar 2026");
    EXPECT_EQ(cache.weekday_name(6).u8str(), "Freitag");
    EXPECT_EQ(cache.month_name(3).u8str(), "M\xc3\xa4rz");
}

TEST(DateFormatCache, StylesOutsideTheTableAreNotAvailable) {
    DateFormatCache cache;
    for (int32_t style : {14, -1, 99}) {
        try {
            cache.date_format(style, false, "/");
            ADD_FAILURE() << "style " << style << " was accepted";
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.number, ERR_NOT_AVAILABLE);
        }
    }
    EXPECT_EQ(cache.built(), 0u);
}

// Threads that ask for the same formats get one build of each and the same texts.
TEST(DateFormatCache, ThreadsShareTheCache) {
    DateFormatCache cache;
    std::vector<std::thread> threads;
    std::vector<std::string> last(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&cache, &last, i] {
            for (int n = 0; n < 2000; ++n) {
                const date_format_st& format = cache.date_format(n % 2 ? 5 : 0, false, n % 2 ? "." : "/");
                last[i] = format_date(*format.formatter, day(2026, 1, 2)).u8str();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(cache.built(), 2u);
    for (const std::string& text : last) EXPECT_EQ(text, "02.01.26");
}

// Numeric patterns are written without ICU; the text must be ICU's own.
TEST(DateFormatCache, DirectPatternsWriteWhatIcuWrites) {
    DateFormatCache cache;
    std::mt19937 random(2026);
    std::uniform_int_distribution<int> years(1, 9999), months(1, 12), days(1, 28), hours(0, 23),
        sixty(0, 59);
    for (int32_t style : {0, 1, 2, 3, 4, 5, 6, 7, 9, 12, 13}) {
        for (bool century : {false, true}) {
            for (int32_t clock : {12, 24}) {
                for (bool seconds : {false, true}) {
                    const DateFormatter& formatter =
                        *cache.datetime_format(style, century, style == 5 ? "." : "/", clock, seconds,
                                               style == 13 ? "'T'" : ", ", ":")
                             .formatter;
                    ASSERT_TRUE(formatter.direct()) << pattern_of(formatter);
                    for (int n = 0; n < 100; ++n) {
                        datetime_st t = moment(years(random), static_cast<unsigned>(months(random)),
                                               static_cast<unsigned>(days(random)),
                                               static_cast<unsigned>(n < 3 ? n * 12 % 24 : hours(random)),
                                               static_cast<unsigned>(sixty(random)),
                                               static_cast<unsigned>(sixty(random)));
                        EXPECT_EQ(formatter.format(t).u8str(), formatter.format_moment(moment_of(t)).u8str())
                            << pattern_of(formatter);
                    }
                }
            }
        }
    }
    EXPECT_FALSE(cache.date_format(10, false, "/").formatter->direct());
    EXPECT_FALSE(cache.date_format(8, false, "/").formatter->direct());
    EXPECT_FALSE(cache.date_format(11, false, "/").formatter->direct());
}
