// The settings of number and date text: SET DATE, CENTURY, HOURS, SECONDS,
// POINT, SEPARATOR, DECIMALS, FDOW and SYSFORMATS, and set(), which reads
// every setting back.
#include <unicode/uchar.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "frontend/keywords.h"
#include "text/charset.h"
#include "values/numeric.h"
#include "vm/runtime_services.h"
#include "vm/session_settings.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr int32_t MAX_DECIMALS = 18;
constexpr int32_t FIRST_DAY = 1;  // Sunday
constexpr int32_t LAST_DAY = 7;   // Saturday

format_settings_st& session_formats(VmStack* stack) {
    return stack->sessions->settings().formats;
}

RuntimeServices& services_of(VmStack* stack) {
    if (!stack->services) raise_not_available("runtime settings");
    return *stack->services;
}

// The first character of a setting's text, as a code point and UTF-8 bytes.
// An empty text or one that doesn't decode is error 11.
setting_char_st first_character(const String& text) {
    if (text.size() == 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const char* p = text.read();
    const char* begin = p;
    if (!text.get_charset()->scan(p, text.end())) throw RuntimeError(ERR_ARGUMENT_INVALID);
    String first = String(text, begin, p);
    first.convert(Charset::utf8, 0, CSTRAN_STRICT);
    setting_char_st c{};
    if (first.size() > sizeof c.bytes) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const char* q = begin;
    c.code_point = text.get_charset()->next(q, text.end());
    std::memcpy(c.bytes, first.read(), first.size());
    c.length = static_cast<uint8_t>(first.size());
    c.ascii = c.code_point < 0x80;
    return c;
}

String text_of(char32_t code_point) {
    char32_t text[2] = {code_point, 0};
    String out(text);
    out.convert(Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    return out;
}

bool same_formats(const format_settings_st& a, const format_settings_st& b) {
    return a.point.code_point == b.point.code_point && a.separator == b.separator &&
           a.decimals == b.decimals && a.date_style == b.date_style &&
           std::strcmp(a.date_mark, b.date_mark) == 0 && a.century == b.century &&
           a.hours == b.hours && a.seconds == b.seconds;
}

String on_off(bool on) { return String(on ? "ON" : "OFF"); }

String joined(const std::vector<String>& entries) {
    Concat text;
    for (size_t i = 0; i < entries.size(); ++i) {
        if (i > 0) text.append(String(";"));
        text.append(entries[i]);
    }
    return entries.empty() ? String("") : text.to_string();
}

}  // namespace

void void_stackcall_set_date_to(VmStack* stack, unsigned long long) {
    String name = string_argument(stack, 1).upper();
    name.alltrim();
    const date_style_st* row = find_date_style(name.u8str());
    if (!row) throw RuntimeError(ERR_ARGUMENT_INVALID);
    format_settings_st& formats = session_formats(stack);
    formats.date_style = row->style;
    if (row->mark) {
        std::memset(formats.date_mark, 0, sizeof formats.date_mark);
        std::strncpy(formats.date_mark, row->mark, sizeof formats.date_mark - 1);
    }
    if (row->hours) formats.hours = row->hours;
}

void void_stackcall_set_century_to(VmStack* stack, unsigned long long) {
    session_formats(stack).century = argument(stack, 1).tag == TAG_TRUE;
}

void void_stackcall_set_seconds_to(VmStack* stack, unsigned long long) {
    session_formats(stack).seconds = argument(stack, 1).tag == TAG_TRUE;
}

void void_stackcall_set_hours_to(VmStack* stack, unsigned long long) {
    integer_type_st hours = static_cast<integer_type_st>(argument(stack, 1));
    if (hours != 12 && hours != 24) throw RuntimeError(ERR_ARGUMENT_INVALID);
    session_formats(stack).hours = static_cast<int32_t>(hours);
}

void void_stackcall_set_fdow_to(VmStack* stack, unsigned long long) {
    integer_type_st day = static_cast<integer_type_st>(argument(stack, 1));
    if (day < FIRST_DAY || day > LAST_DAY) throw RuntimeError(ERR_ARGUMENT_INVALID);
    services_of(stack).set_first_day_of_week(static_cast<int32_t>(day));
}

void void_stackcall_set_point_to(VmStack* stack, unsigned long long) {
    session_formats(stack).point = first_character(string_argument(stack, 1));
}

// A digit can't separate digits.
void void_stackcall_set_separator_to(VmStack* stack, unsigned long long) {
    setting_char_st c = first_character(string_argument(stack, 1));
    if (u_isdigit(static_cast<UChar32>(c.code_point))) throw RuntimeError(ERR_ARGUMENT_INVALID);
    session_formats(stack).separator = c.code_point;
}

// ON takes the machine's formats and first day of the week; OFF changes nothing.
void void_stackcall_set_sysformats_to(VmStack* stack, unsigned long long) {
    if (argument(stack, 1).tag != TAG_TRUE) return;
    RuntimeServices& services = services_of(stack);
    session_formats(stack) = services.system_formats();
    services.set_first_day_of_week(services.system_first_day_of_week());
}

// SET DECIMALS TO n: the decimals shown of numbers whose own are not known.
void set_decimals(VmStack* stack, const Variant& value) {
    if (!value.is_number()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    double decimals = static_cast<double>(value);
    if (!(decimals >= 0 && decimals <= MAX_DECIMALS)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    session_formats(stack).decimals = static_cast<int32_t>(decimals);
}

// ---- set() ----------------------------------------------------------------

namespace {

typedef void (*setting_reader)(VmStack* stack, Variant* result);

struct setting_row_st {
    const char32_t* keyword;
    setting_reader read;
};

void read_asserts(VmStack* stack, Variant* result) {
    result->set_string(on_off(services_of(stack).asserts()));
}
void read_blocksize(VmStack* stack, Variant* result) {
    result->set_integer(static_cast<long long>(stack->sessions->settings().blocksize));
}
void read_century(VmStack* stack, Variant* result) {
    result->set_string(on_off(session_formats(stack).century));
}
void read_datasession(VmStack* stack, Variant* result) {
    result->set_integer(stack->sessions->session_id());
}
void read_date(VmStack* stack, Variant* result) {
    const date_style_st* row = find_date_style(session_formats(stack).date_style);
    if (!row) raise_not_available("date region to string const");
    result->set_string(String(row->name));
}
void read_decimals(VmStack* stack, Variant* result) {
    result->set_integer(session_formats(stack).decimals);
}
void read_deleted(VmStack* stack, Variant* result) {
    result->set_string(on_off(stack->sessions->settings().deleted));
}
void read_exact(VmStack* stack, Variant* result) {
    result->set_string(on_off(stack->sessions->settings().exact));
}
void read_exclusive(VmStack* stack, Variant* result) {
    result->set_string(on_off(stack->sessions->settings().exclusive));
}
void read_near(VmStack* stack, Variant* result) {
    result->set_string(on_off(stack->sessions->settings().near));
}
void read_seconds(VmStack* stack, Variant* result) {
    result->set_string(on_off(session_formats(stack).seconds));
}
void read_space(VmStack* stack, Variant* result) { result->set_string(on_off(stack->space)); }
void read_fdow(VmStack* stack, Variant* result) {
    result->set_integer(services_of(stack).first_day_of_week());
}
void read_hours(VmStack* stack, Variant* result) {
    result->set_integer(session_formats(stack).hours);
}
void read_path(VmStack* stack, Variant* result) {
    result->set_string(joined(services_of(stack).search_path()));
}
void read_procedure(VmStack* stack, Variant* result) {
    result->set_string(joined(services_of(stack).procedures()));
}
void read_point(VmStack* stack, Variant* result) {
    result->set_string(text_of(session_formats(stack).point.code_point));
}
void read_separator(VmStack* stack, Variant* result) {
    result->set_string(text_of(session_formats(stack).separator));
}
void read_sysformats(VmStack* stack, Variant* result) {
    RuntimeServices& services = services_of(stack);
    bool same = same_formats(session_formats(stack), services.system_formats()) &&
                services.first_day_of_week() == services.system_first_day_of_week();
    result->set_string(on_off(same));
}
void read_textmerge(VmStack* stack, Variant* result) {
    result->set_string(on_off(stack->textmerge));
}

constexpr setting_row_st SETTING_ROWS[] = {
    {U"ASSERT", read_asserts},         {U"ASSERTS", read_asserts},
    {U"BLOCKSIZE", read_blocksize},    {U"CENTURY", read_century},
    {U"DATASESSION", read_datasession}, {U"DATE", read_date},
    {U"DECIMALS", read_decimals},      {U"DELETE", read_deleted},
    {U"DELETED", read_deleted},        {U"EXACT", read_exact},
    {U"EXCLUSIVE", read_exclusive},    {U"NEAR", read_near},
    {U"SECONDS", read_seconds},        {U"SPACE", read_space},
    {U"FDOW", read_fdow},              {U"HOURS", read_hours},
    {U"PATH", read_path},              {U"PROCEDURE", read_procedure},
    {U"POINT", read_point},            {U"SEPARATOR", read_separator},
    {U"SYSFORMATS", read_sysformats},  {U"TEXT", read_textmerge},
    {U"TEXTMERGE", read_textmerge},
};
constexpr size_t SETTING_COUNT = sizeof SETTING_ROWS / sizeof SETTING_ROWS[0];

// The keyword's token of each row, looked up once.
const std::vector<uint32_t>& setting_tokens() {
    static const std::vector<uint32_t> tokens = [] {
        std::vector<uint32_t> list;
        for (const setting_row_st& row : SETTING_ROWS) list.push_back(keyword_token(row.keyword));
        return list;
    }();
    return tokens;
}

}  // namespace

// The name is read as the language reads keywords, abbreviations included.
void stackcall_set(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    String name = string_argument(stack, 1);
    name.alltrim();
    uint32_t token = 0;
    if (!lookup_keyword(name.read(), name.end(), name.get_charset(), token))
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    const std::vector<uint32_t>& tokens = setting_tokens();
    for (size_t i = 0; i < SETTING_COUNT; ++i)
        if (tokens[i] == token) return SETTING_ROWS[i].read(stack, result);
    throw RuntimeError(ERR_ARGUMENT_INVALID);
}

}  // namespace zobase
