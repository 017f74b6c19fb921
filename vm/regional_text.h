#pragma once
// Numbers, money, dates and datetimes as text under the current session's
// formats: SET POINT, SET DECIMALS, SET DATE and its mark, SET CENTURY, SET
// HOURS and SET SECONDS. This is the text of ?, ??, text merge and
// transform; Variant::to_string_regional is defined with these.
#include <string>

#include "values/number_types.h"
#include "values/string.h"
#include "vm/session_settings.h"

namespace zobase {

class DateFormatCache;
class VmStack;
struct date_format_st;
struct datetime_format_st;

// ttoc's text between the date and the time, and between time fields.
constexpr const char* SESSION_DATETIME_SEPARATOR = ", ";
constexpr const char* SESSION_TIME_MARK = ":";

// The runtime's cache of date formats. A stack without a runtime has none:
// error 1001.
DateFormatCache& date_formats(VmStack* stack);
// The formats of the stack's session, from the runtime's cache.
const date_format_st& session_date_format(VmStack* stack);
const datetime_format_st& session_datetime_format(VmStack* stack);

// A numeric with its own decimals, or with SET DECIMALS when they are not
// known, and the session's decimal point. `padded` right-aligns it in the
// widest numeric field's width.
String regional_numeric_text(const format_settings_st& formats, const numeric_type_st& value,
                             bool padded);

// The session's decimal point in place of the "." of a formatted number.
void apply_point(const format_settings_st& formats, std::string& text);

}  // namespace zobase
