#include <gtest/gtest.h>

#include "values/date.h"
#include "values/error.h"
#include "tests/unit/support/error_number.h"

using zobase::testing::error_number_of;

namespace zobase {
namespace {


struct ymd_st {
    int year, month, day;
    bool operator==(const ymd_st&) const = default;
};

ymd_st unserial(uint32_t julian) {
    ymd_st r{};
    unserial_julian_date(date_st{julian}, &r.year, &r.month, &r.day);
    return r;
}

uint32_t serial(int year, unsigned month, unsigned day) {
    date_st d{12345};
    EXPECT_EQ(serial_julian_date(year, month, day, &d), 0);
    return d.julian;
}

TEST(JulianDate, KnownDaysRoundTripsAndLenientDays) {
    EXPECT_EQ(serial(1970, 1, 1), 2440588u);
    EXPECT_EQ(unserial(2451604), (ymd_st{2000, 2, 29}));
    for (uint32_t julian = 2299161; julian < 2299161 + 800 * 366; julian += 97) {
        ymd_st d = unserial(julian);
        ASSERT_EQ(serial(d.year, d.month, d.day), julian) << d.year << "-" << d.month;
    }
    EXPECT_EQ(unserial(serial(2023, 2, 31)), (ymd_st{2023, 3, 3}));
}

TEST(JulianDate, EmptyAndInvalidParts) {
    date_st d{99};
    EXPECT_EQ(serial_julian_date(0, 0, 0, &d), 0);
    EXPECT_EQ(d.julian, 0u);
    EXPECT_EQ(unserial(0), (ymd_st{0, 0, 0}));
    d.julian = 99;
    EXPECT_EQ(serial_julian_date(0, 1, 1, &d), 2034);
    EXPECT_EQ(serial_julian_date(2020, 0, 1, &d), 2034);
    EXPECT_EQ(serial_julian_date(-4713, 11, 24, &d), 2034);
    EXPECT_EQ(serial_julian_date(100000000, 1, 1, &d), 2034);
    EXPECT_EQ(d.julian, 99u);

    datetime_st t{0, 777};
    EXPECT_EQ(serial_julian_date(1970, 1, 1, 24, 0, 0, &t), 2034);
    EXPECT_EQ(serial_julian_date(1970, 1, 1, 0, 0, 60, &t), 2034);
    EXPECT_EQ(t.msecs, 777u);
    ASSERT_EQ(serial_julian_date(1970, 1, 1, 23, 59, 59, &t), 0);
    EXPECT_EQ(t.msecs, 86399000u);
    int y, mo, day, h, mi, s, ms;
    unserial_julian_date(datetime_st{2440588, 45296789}, &y, &mo, &day, &h, &mi, &s, &ms);
    EXPECT_EQ((ymd_st{h, mi, s}), (ymd_st{12, 34, 56}));
    EXPECT_EQ(ms, 789);
}

TEST(DateArithmetic, EmptyStaysEmptyCarriesAndRangeGuard) {
    EXPECT_EQ(date_add_days(date_st{0}, 1LL).julian, 0u);
    EXPECT_EQ(date_add_days(date_st{2440588}, -2.9).julian, 2440586u);
    EXPECT_EQ(error_number_of([] { date_add_days(date_st{5}, -5LL); }), 2034);
    EXPECT_EQ(error_number_of([] { date_add_days(date_st{UINT32_MAX}, 1LL); }), 2034);
    EXPECT_EQ(error_number_of([] { date_add_days(date_st{5}, 1e300); }), 2034);
    EXPECT_EQ(date_diff_days(date_st{0}, date_st{2440588}), 0);

    datetime_st t = datetime_add_seconds(datetime_st{2440588, 86399000}, 2LL);
    EXPECT_EQ((ymd_st{int(t.julian), int(t.msecs), 0}), (ymd_st{2440589, 1000, 0}));
    t = datetime_add_seconds(datetime_st{2440588, 500}, -1LL);
    EXPECT_EQ((ymd_st{int(t.julian), int(t.msecs), 0}), (ymd_st{2440587, 86399500, 0}));
    EXPECT_EQ(datetime_add_seconds(datetime_st{2440588, 0}, 1.5).msecs, 2000u);
    EXPECT_EQ(datetime_add_seconds(datetime_st{0, 0}, 100LL).msecs, 0u);
    EXPECT_EQ(error_number_of([] { datetime_add_seconds(datetime_st{1, 0}, -1LL); }), 2034);
    EXPECT_EQ(error_number_of([] { datetime_add_seconds(datetime_st{1, 0}, 1e300); }), 2034);
}

}  // namespace
}  // namespace zobase
