#include "values/date.h"

#include <cmath>

#include "values/error.h"

namespace zobase {

namespace {

constexpr long long SECONDS_PER_DAY = 86400;
constexpr long long MAX_DAY_NUMBER = UINT32_MAX;
// Any shift of more days than the range holds overflows, whatever the start.
constexpr double MAX_DAY_SHIFT = 4294967296.0;

bool valid_day_number(long long day) noexcept { return day >= 1 && day <= MAX_DAY_NUMBER; }

[[noreturn]] void raise_invalid_date() { throw RuntimeError(ERR_DATE_INVALID); }

// The standard Gregorian conversion, in truncating integer arithmetic.
long long gregorian_day_number(long long year, long long month, long long day) noexcept {
    long long a = (14 - month) / 12;
    long long y = year - a + 4800;
    long long m = month + 12 * a - 3;
    return day + (153 * m + 2) / 5 + 365 * y + y / 4 - y / 100 + y / 400 - 32045;
}

}  // namespace

int serial_julian_date(int year, unsigned month, unsigned day, date_st* out) {
    if (year == 0) {
        if (month != 0 || day != 0) return ERR_DATE_INVALID;
        out->julian = 0;
        return 0;
    }
    if (month == 0 || day == 0) return ERR_DATE_INVALID;
    if (year < -4712 && month < 12 && day < 25) return ERR_DATE_INVALID;
    long long number = gregorian_day_number(year, month, day);
    // Day numbers must stay within the 32-bit payload and clear of the empty date.
    if (!valid_day_number(number)) return ERR_DATE_INVALID;
    out->julian = static_cast<uint32_t>(number);
    return 0;
}

int serial_julian_date(int year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                       unsigned second, datetime_st* out) {
    date_st date;
    if (int error = serial_julian_date(year, month, day, &date)) return error;
    out->julian = date.julian;
    if (hour > 23 || minute > 59 || second > 59) return ERR_DATE_INVALID;
    out->msecs = ((hour * 60 + minute) * 60 + second) * 1000;
    return 0;
}

void unserial_julian_date(date_st date, int* year, int* month, int* day) {
    if (date.julian == 0) {
        *year = *month = *day = 0;
        return;
    }
    long long a = static_cast<long long>(date.julian) + 32044;
    long long b = (4 * a + 3) / 146097;
    long long c = a - 146097 * b / 4;
    long long e = (4 * c + 3) / 1461;
    long long f = c - 1461 * e / 4;
    long long g = (5 * f + 2) / 153;
    *day = static_cast<int>(f - (153 * g + 2) / 5 + 1);
    *month = static_cast<int>(g + 3 - 12 * (g / 10));
    *year = static_cast<int>(100 * (b - 48) + e + g / 10);
}

void unserial_julian_date(datetime_st datetime, int* year, int* month, int* day, int* hour,
                          int* minute, int* second, int* msec) {
    unserial_julian_date(date_st{datetime.julian}, year, month, day);
    uint32_t ms = datetime.msecs;
    *msec = static_cast<int>(ms % 1000);
    *second = static_cast<int>(ms / 1000 % 60);
    *minute = static_cast<int>(ms / 60000 % 60);
    *hour = static_cast<int>(ms / 3600000);
}

date_st date_add_days(date_st date, long long days) {
    if (date.julian == 0) return date;
    if (days > MAX_DAY_NUMBER || days < -MAX_DAY_NUMBER) raise_invalid_date();
    long long number = static_cast<long long>(date.julian) + days;
    if (!valid_day_number(number)) raise_invalid_date();
    return date_st{static_cast<uint32_t>(number)};
}

date_st date_add_days(date_st date, double days) {
    if (date.julian == 0) return date;
    double whole = std::trunc(days);
    if (!(std::fabs(whole) < MAX_DAY_SHIFT)) raise_invalid_date();
    return date_add_days(date, static_cast<long long>(whole));
}

datetime_st datetime_add_seconds(datetime_st datetime, long long seconds) {
    if (datetime.julian == 0 && datetime.msecs == 0) return datetime;
    if (seconds > MAX_DAY_NUMBER * SECONDS_PER_DAY || seconds < -MAX_DAY_NUMBER * SECONDS_PER_DAY)
        raise_invalid_date();
    long long msecs = static_cast<long long>(datetime.msecs) + seconds % SECONDS_PER_DAY * 1000;
    long long days = static_cast<long long>(datetime.julian) + seconds / SECONDS_PER_DAY;
    if (msecs < 0) msecs += MSECS_PER_DAY, --days;
    if (msecs >= MSECS_PER_DAY) msecs -= MSECS_PER_DAY, ++days;
    if (!valid_day_number(days)) raise_invalid_date();
    return datetime_st{static_cast<uint32_t>(days), static_cast<uint32_t>(msecs)};
}

datetime_st datetime_add_seconds(datetime_st datetime, double seconds) {
    if (datetime.julian == 0 && datetime.msecs == 0) return datetime;
    double whole = std::round(seconds);
    if (!(std::fabs(whole) < MAX_DAY_SHIFT * SECONDS_PER_DAY)) raise_invalid_date();
    return datetime_add_seconds(datetime, static_cast<long long>(whole));
}

long long date_diff_days(date_st a, date_st b) noexcept {
    if (a.julian == 0 || b.julian == 0) return 0;
    return static_cast<long long>(a.julian) - static_cast<long long>(b.julian);
}

// Day number 0 fell on a Monday.
int day_of_week(date_st date) noexcept { return static_cast<int>((date.julian + 1) % 7) + 1; }

}  // namespace zobase
