// Dates and datetimes as text: dtoc and ttoc in the session's formats or a
// fixed one, mime.ttoc for mail and HTTP headers, and the names of weekdays
// and months. Every format comes from the runtime's cache, built once.
#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "text/date_format.h"
#include "values/date.h"
#include "vm/regional_text.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr int32_t STYLE_YMD = DATE_STYLE_YMD;

// ttoc's fixed forms.
enum TtocMode : long long { TTOC_DIGITS = 1, TTOC_ISO = 3 };

const DateFormatter& ttoc_formatter(VmStack* stack, unsigned long long argc) {
    if (argc < 2) return *session_datetime_format(stack).formatter;
    switch (static_cast<integer_type_st>(argument(stack, 2))) {
    case TTOC_DIGITS:
        return *date_formats(stack).datetime_format(STYLE_YMD, true, "", 24, true, "", "").formatter;
    case TTOC_ISO:
        return *date_formats(stack).datetime_format(STYLE_YMD, true, "-", 24, true, "'T'", ":").formatter;
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
}

}  // namespace

// dtoc(date): the session's SET DATE, mark and century; with any second
// argument "yyyymmdd".
void stackcall_dtoc(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    if (is_null_argument(argument(stack, 1))) return result->set_null();
    const date_format_st& format =
        argc >= 2 ? date_formats(stack).date_format(STYLE_YMD, true, "") : session_date_format(stack);
    result->set_string(format_date(*format.formatter, date_argument(stack, 1)));
}

// ttoc(datetime): the session's formats; ttoc(datetime, 1) "yyyymmddhhmmss";
// ttoc(datetime, 3) ISO 8601. Other modes are error 11.
void stackcall_ttoc(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    if (is_null_argument(argument(stack, 1))) return result->set_null();
    result->set_string(format_datetime(ttoc_formatter(stack, argc), datetime_argument(stack, 1)));
}

// "Fri, 02 Jan 2026 03:04:05 +0100": the datetime read as the machine's
// local time. The empty datetime is the empty string.
void stackcall_mime_ttoc(VmStack* stack, unsigned long long, Variant* result) {
    datetime_st datetime = datetime_argument(stack, 1);
    if (datetime.julian == 0) return result->set_string(String(""));
    result->set_string(date_formats(stack).mime_text(datetime));
}

// The weekday's name in the machine's language. Its result is never null:
// a null or empty date has the empty name.
void stackcall_cdow(VmStack* stack, unsigned long long, Variant* result) {
    const Variant& value = argument(stack, 1);
    if (is_null_argument(value) || date_argument(stack, 1).julian == 0)
        return result->set_string(String(""));
    result->set_string(date_formats(stack).weekday_name(day_of_week(date_argument(stack, 1))));
}

void stackcall_cmonth(VmStack* stack, unsigned long long, Variant* result) {
    if (is_null_argument(argument(stack, 1))) return result->set_null();
    date_st date = date_argument(stack, 1);
    if (date.julian == 0) return result->set_string(String(""));
    int year, month, day;
    unserial_julian_date(date, &year, &month, &day);
    result->set_string(date_formats(stack).month_name(month));
}

}  // namespace zobase
