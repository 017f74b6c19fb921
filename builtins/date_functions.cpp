// Dates and datetimes: building them, taking them apart and reading the
// clock. A null argument gives a null result where the result may be null;
// an empty date has 0 for each of its parts.
#include <ctime>

#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "values/date.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// The machine's local time now.
struct local_now_st {
    std::tm fields;
    long nanoseconds;
};

local_now_st local_now() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    local_now_st local{};
    localtime_r(&now.tv_sec, &local.fields);
    local.nanoseconds = now.tv_nsec;
    return local;
}

void throw_unless_built(int error) {
    if (error) throw RuntimeError(error);
}

// A date or time part of a call: an integer that fits 32 bits. Months, days
// and times below 0 can't be built: 2034.
int part_argument(VmStack* stack, unsigned long long i) {
    long long value = static_cast<integer_type_st>(argument(stack, i));
    int part = checked_count(value);
    if (i > 1 && part < 0) throw RuntimeError(ERR_DATE_INVALID);
    return part;
}

struct date_parts_st {
    int year, month, day;
};

date_parts_st parts_of(date_st date) {
    date_parts_st parts;
    unserial_julian_date(date, &parts.year, &parts.month, &parts.day);
    return parts;
}

// Hours, minutes and seconds of a datetime; the empty one has 0 for each.
int seconds_of_day(datetime_st datetime) { return static_cast<int>(datetime.msecs / 1000); }

}  // namespace

// date(): today; date(year, month, day): that day.
void stackcall_date(VmStack* stack, unsigned long long argc, Variant* result) {
    date_st date;
    if (argc == 0) {
        std::tm now = local_now().fields;
        throw_unless_built(serial_julian_date(now.tm_year + 1900, static_cast<unsigned>(now.tm_mon + 1),
                                              static_cast<unsigned>(now.tm_mday), &date));
        return result->set(date);
    }
    if (any_null_argument(stack, argc)) return result->set_null();
    if (argc != 3) throw RuntimeError(ERR_ARGUMENT_INVALID);
    throw_unless_built(serial_julian_date(part_argument(stack, 1),
                                          static_cast<unsigned>(part_argument(stack, 2)),
                                          static_cast<unsigned>(part_argument(stack, 3)), &date));
    result->set(date);
}

// datetime(): now, to the second; datetime(year, month, day[, hour[, minute[, second]]]).
void stackcall_datetime(VmStack* stack, unsigned long long argc, Variant* result) {
    datetime_st datetime;
    if (argc == 0) {
        std::tm now = local_now().fields;
        throw_unless_built(serial_julian_date(
            now.tm_year + 1900, static_cast<unsigned>(now.tm_mon + 1),
            static_cast<unsigned>(now.tm_mday), static_cast<unsigned>(now.tm_hour),
            static_cast<unsigned>(now.tm_min), static_cast<unsigned>(now.tm_sec), &datetime));
        return result->set(datetime);
    }
    if (any_null_argument(stack, argc)) return result->set_null();
    if (argc < 3) throw RuntimeError(ERR_ARGUMENT_INVALID);
    unsigned parts[6] = {};
    for (unsigned long long i = 2; i <= argc; ++i)
        parts[i - 1] = static_cast<unsigned>(part_argument(stack, i));
    throw_unless_built(serial_julian_date(part_argument(stack, 1), parts[1], parts[2], parts[3],
                                          parts[4], parts[5], &datetime));
    result->set(datetime);
}

void stackcall_day(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_integer(parts_of(date_argument(stack, 1)).day);
}

void stackcall_month(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_integer(parts_of(date_argument(stack, 1)).month);
}

void stackcall_year(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_integer(parts_of(date_argument(stack, 1)).year);
}

// dow(date[, first]): 1 for the first day of the week. `first` 1 (the
// default) is Sunday, up to 7 Saturday; 0 takes SET FDOW. An empty date is 0.
void stackcall_dow(VmStack* stack, unsigned long long argc, Variant* result) {
    date_st date = date_argument(stack, 1);
    long long first = argc >= 2 ? static_cast<integer_type_st>(argument(stack, 2)) : 1;
    if (first < 0 || first > 7) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (first == 0) first = stack->services ? stack->services->first_day_of_week() : 1;
    if (date.julian == 0) return result->set_integer(0LL);
    result->set_integer((day_of_week(date) - first + 7) % 7 + 1);
}

void stackcall_hour(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_integer(seconds_of_day(datetime_argument(stack, 1)) / 3600);
}

void stackcall_minute(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set_integer(seconds_of_day(datetime_argument(stack, 1)) / 60 % 60);
}

// Its result is never null, so a null datetime has 0 seconds.
void stackcall_sec(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_integer(0LL);
    result->set_integer(seconds_of_day(datetime_argument(stack, 1)) % 60);
}

// Seconds since midnight, local time.
void stackcall_seconds(VmStack*, unsigned long long, Variant* result) {
    std::tm now = local_now().fields;
    result->set_integer(static_cast<long long>(now.tm_hour) * 3600 + now.tm_min * 60 + now.tm_sec);
}

// "hh:mm:ss" of the local time; with any argument ".cc" hundredths follow.
void stackcall_time(VmStack*, unsigned long long argc, Variant* result) {
    local_now_st now = local_now();
    char text[32];
    if (argc == 0)
        std::snprintf(text, sizeof text, "%02d:%02d:%02d", now.fields.tm_hour, now.fields.tm_min,
                      now.fields.tm_sec);
    else
        std::snprintf(text, sizeof text, "%02d:%02d:%02d.%02ld", now.fields.tm_hour,
                      now.fields.tm_min, now.fields.tm_sec, now.nanoseconds / 10000000);
    result->set_string(String(text));
}

// The date's day number; the empty date is 0.
void stackcall_julian(VmStack* stack, unsigned long long, Variant* result) {
    result->set_integer(date_argument(stack, 1).julian);
}

void stackcall_dtot(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set(datetime_st{date_argument(stack, 1).julian, 0});
}

void stackcall_ttod(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    result->set(date_st{datetime_argument(stack, 1).julian});
}

// "yyyymmdd" whatever the settings; the empty date is eight blanks.
void stackcall_dtos(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    date_st date = date_argument(stack, 1);
    if (date.julian == 0) return result->set_string(String("        "));
    date_parts_st parts = parts_of(date);
    char text[32];
    std::snprintf(text, sizeof text, "%04d%02d%02d", parts.year, parts.month, parts.day);
    result->set_string(String(text));
}

}  // namespace zobase
