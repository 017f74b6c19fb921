#pragma once
// Dates as Julian day numbers (0 is the empty date) and datetimes as a day
// number plus milliseconds since midnight.
#include <cstdint>

#include "base/error_numbers.h"
#include "values/number_types.h"

namespace zobase {

constexpr uint32_t MSECS_PER_DAY = 86400000;

// Return 0, or 2034 for a date or time that cannot be built. Day numbers are
// not checked against the month's length: February 31 lands in March.
int serial_julian_date(int year, unsigned month, unsigned day, date_st* out);
int serial_julian_date(int year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                       unsigned second, datetime_st* out);

void unserial_julian_date(date_st date, int* year, int* month, int* day);
void unserial_julian_date(datetime_st datetime, int* year, int* month, int* day, int* hour,
                          int* minute, int* second, int* msec);

// The day of the week of a date that is not empty: 1 is Sunday, 7 Saturday.
int day_of_week(date_st date) noexcept;

// Date and datetime arithmetic. An empty value stays empty; a result outside
// the day numbers 1 to 2^32 - 1 raises 2034.
date_st date_add_days(date_st date, long long days);
// Truncates the days toward zero.
date_st date_add_days(date_st date, double days);
datetime_st datetime_add_seconds(datetime_st datetime, long long seconds);
// Rounds the seconds half away from zero.
datetime_st datetime_add_seconds(datetime_st datetime, double seconds);
// Days from b to a; 0 when either is empty.
long long date_diff_days(date_st a, date_st b) noexcept;

}  // namespace zobase
