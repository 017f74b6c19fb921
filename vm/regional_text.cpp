#include "vm/regional_text.h"

#include "text/date_format.h"
#include "values/error.h"
#include "values/money.h"
#include "values/numeric.h"
#include "values/variant.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

DateFormatCache& date_formats(VmStack* stack) {
    if (!stack->services) raise_not_available("date formats without a runtime");
    return stack->services->date_formats();
}

const date_format_st& session_date_format(VmStack* stack) {
    const format_settings_st& formats = stack->sessions->settings().formats;
    return date_formats(stack).date_format(formats.date_style, formats.century, formats.date_mark);
}

const datetime_format_st& session_datetime_format(VmStack* stack) {
    const format_settings_st& formats = stack->sessions->settings().formats;
    return date_formats(stack).datetime_format(formats.date_style, formats.century,
                                             formats.date_mark, formats.hours, formats.seconds,
                                             SESSION_DATETIME_SEPARATOR, SESSION_TIME_MARK);
}

void apply_point(const format_settings_st& formats, std::string& text) {
    replace_decimal_point(text, formats.point.code_point);
}

String regional_numeric_text(const format_settings_st& formats, const numeric_type_st& value,
                             bool padded) {
    uint64_t decimals = value.decimals == DECIMALS_UNKNOWN
                            ? static_cast<uint64_t>(formats.decimals)
                            : value.decimals;
    std::string text = format_number(value.value, decimals, padded ? NUMBER_PADDED_WIDTH : 0);
    apply_point(formats, text);
    return String(text.c_str());
}

// Dates need the runtime's formatters: a stack without a runtime shows the
// plain forms.
String Variant::to_string_regional(VmStack* stack, bool flag) const {
    if (!stack) return to_string(flag);
    const format_settings_st& formats = stack->sessions->settings().formats;
    switch (tag) {
    case TAG_NUMERIC: return regional_numeric_text(formats, numeric, flag);
    case TAG_MONEY: return money_to_string(money, formats.point.code_point);
    case TAG_DATE:
        if (!stack->services) break;
        return format_date(*session_date_format(stack).formatter, date);
    case TAG_DATETIME:
        if (!stack->services) break;
        return format_datetime(*session_datetime_format(stack).formatter, datetime);
    case TAG_POINTER: return pointer.target->to_string_regional(stack, flag);
    default: break;
    }
    return to_string(flag);
}

}  // namespace zobase
