// Numbers to text and back: str, val, transform and scale. The session's
// decimal point (SET POINT) stands in every text; val also skips the
// session's separator (SET SEPARATOR) between digits.
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "text/charset.h"
#include "values/money.h"
#include "values/numeric.h"
#include "vm/regional_text.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr long long STR_DEFAULT_WIDTH = 10;
constexpr long long STR_MAX_WIDTH = 255;
constexpr size_t TRANSFORM_MAX_PLACES = 20;
constexpr int MONEY_DECIMALS = 4;

const format_settings_st& session_formats(VmStack* stack) {
    return stack->sessions->settings().formats;
}

std::u32string code_points(const String& text) {
    std::u32string out;
    const char* p = text.read();
    while (p != text.end()) out += text.get_charset()->next(p, text.end());
    return out;
}

// ---- str ------------------------------------------------------------------

// Half away from zero, at `decimals` places.
double rounded(double value, long long decimals) {
    if (decimals >= POWERS_OF_TEN_COUNT) return value;
    double scale = powers_of_ten[decimals];
    return std::round(value * scale) / scale;
}

std::string integer_text(long long value, long long decimals) {
    std::string text = std::to_string(value);
    if (decimals > 0) text += "." + std::string(static_cast<size_t>(decimals), '0');
    return text;
}

// Money is exact: its units are rounded to the decimals, never through a double.
std::string money_text(const money_type_st& money, long long decimals) {
    __int128 units = money_to_i128(money);
    bool negative = units < 0;
    unsigned __int128 magnitude = negative ? -static_cast<unsigned __int128>(units) : units;
    long long kept = decimals < MONEY_DECIMALS ? decimals : MONEY_DECIMALS;
    unsigned __int128 step = static_cast<unsigned __int128>(powers_of_ten[MONEY_DECIMALS - kept]);
    magnitude = (magnitude + step / 2) / step;
    unsigned __int128 scale = static_cast<unsigned __int128>(powers_of_ten[kept]);
    std::string text = std::to_string(static_cast<unsigned long long>(magnitude / scale));
    if (decimals > 0) {
        std::string fraction = std::to_string(static_cast<unsigned long long>(magnitude % scale));
        if (kept > 0) text += "." + std::string(static_cast<size_t>(kept) - fraction.size(), '0') + fraction;
        else text += ".";
        text += std::string(static_cast<size_t>(decimals - kept), '0');
    }
    return negative && magnitude != 0 ? "-" + text : text;
}

// A double shows at most 15 significant digits; decimals beyond them are zeros.
std::string numeric_text(double value, long long decimals) {
    std::string text = format_number(rounded(value, decimals), static_cast<uint64_t>(decimals), 0);
    size_t point = text.find('.');
    long long shown = point == std::string::npos ? 0 : static_cast<long long>(text.size() - point - 1);
    if (shown < decimals) {
        if (point == std::string::npos) text += ".";
        text += std::string(static_cast<size_t>(decimals - shown), '0');
    }
    return text;
}

std::string fixed_text(const Variant& value, long long decimals) {
    switch (value.tag) {
    case TAG_INTEGER: return integer_text(value.integer, decimals);
    case TAG_MONEY: return money_text(value.money, decimals);
    default: return numeric_text(value.numeric.value, decimals);
    }
}

// Right-aligned in the width; fewer decimals when they don't fit, stars when
// the whole part doesn't.
std::string str_text(const Variant& value, long long width, long long decimals) {
    for (long long shown = std::min(decimals, width); shown >= 0; --shown) {
        std::string text = fixed_text(value, shown);
        if (static_cast<long long>(text.size()) <= width)
            return std::string(static_cast<size_t>(width) - text.size(), ' ') + text;
    }
    return std::string(static_cast<size_t>(width), '*');
}

// ---- val ------------------------------------------------------------------

bool is_ascii_digit(char32_t c) { return c >= U'0' && c <= U'9'; }

// The leading number of a text, as digits, point and exponent in C syntax.
struct number_reading_st {
    std::string text;
    size_t fraction_digits = 0;
    long long exponent = 0;
    bool digits = false;
    bool fraction = false;  // a fraction digit or an exponent was read
};

number_reading_st read_number(const std::u32string& text, char32_t point, char32_t separator) {
    number_reading_st number;
    size_t i = 0;
    while (i < text.size() && (text[i] == U' ' || text[i] == U'\t')) ++i;
    if (i < text.size() && (text[i] == U'-' || text[i] == U'+')) {
        if (text[i] == U'-') number.text += '-';
        ++i;
    }
    for (; i < text.size(); ++i) {
        bool grouped = text[i] == separator && separator != point && number.digits &&
                       i + 1 < text.size() && is_ascii_digit(text[i + 1]);
        if (grouped) continue;
        if (!is_ascii_digit(text[i])) break;
        number.text += static_cast<char>(text[i]);
        number.digits = true;
    }
    if (i < text.size() && text[i] == point) {
        ++i;
        size_t start = number.text.size();
        for (; i < text.size() && is_ascii_digit(text[i]); ++i) number.text += static_cast<char>(text[i]);
        number.fraction_digits = number.text.size() - start;
        if (number.fraction_digits) {
            number.text.insert(start, ".");
            number.digits = number.fraction = true;
        }
    }
    if (!number.digits || i >= text.size() || (text[i] != U'e' && text[i] != U'E')) return number;
    size_t j = i + 1;
    std::string exponent;
    if (j < text.size() && (text[j] == U'-' || text[j] == U'+')) exponent += static_cast<char>(text[j++]);
    if (j >= text.size() || !is_ascii_digit(text[j])) return number;
    for (; j < text.size() && is_ascii_digit(text[j]) && exponent.size() < 6; ++j)
        exponent += static_cast<char>(text[j]);
    number.exponent = std::atoll(exponent.c_str());
    number.text += "e" + exponent;
    number.fraction = true;
    return number;
}

// Decimals shown of a number read with a fraction or exponent: the fraction
// digits the exponent leaves behind the point.
uint64_t read_decimals(const number_reading_st& number) {
    long long decimals = static_cast<long long>(number.fraction_digits) - number.exponent;
    if (decimals < 0) return 0;
    return decimals > static_cast<long long>(NUMERIC_MAX_DECIMALS) ? DECIMALS_UNKNOWN
                                                                   : static_cast<uint64_t>(decimals);
}

// ---- transform ------------------------------------------------------------

bool is_digit_place(char32_t c) { return c == U'#' || c == U'9'; }

struct picture_st {
    std::u32string places;  // the picture proper
    bool zero_padding = false;
};

// "@L" before the picture pads with zeros; any other function code is 1001.
picture_st read_picture(const String& text) {
    picture_st picture;
    std::u32string chars = code_points(text);
    size_t start = 0;
    if (!chars.empty() && chars[0] == U'@') {
        if (chars.size() < 2 || (chars[1] != U'L' && chars[1] != U'l'))
            raise_not_available("transform picture function");
        picture.zero_padding = true;
        start = 2;
        while (start < chars.size() && chars[start] == U' ') ++start;
    }
    picture.places = chars.substr(start);
    return picture;
}

// A grouping separator with nothing but blanks to its left is a blank itself.
void blank_leading_separators(std::u32string& out) {
    for (char32_t& c : out) {
        if (c == U',') c = U' ';
        else if (c != U' ') break;
    }
}

// Digits from the right into the integer places; then blanks (or zeros with
// "@L") and the sign to their left; stars in every place when they don't fit.
std::u32string fill_picture(const picture_st& picture, long long value,
                            const format_settings_st& formats) {
    std::u32string out = picture.places;
    std::vector<size_t> integer_places;
    size_t place_count = 0;
    bool fraction = false;
    for (size_t i = 0; i < out.size(); ++i) {
        if (out[i] == U'.' && !fraction) {
            fraction = true;
            out[i] = formats.point.code_point;
        } else if (is_digit_place(out[i])) {
            ++place_count;
            if (fraction) out[i] = U'0';
            else integer_places.push_back(i);
        }
    }
    if (place_count > TRANSFORM_MAX_PLACES) throw RuntimeError(ERR_ARGUMENT_INVALID);
    bool negative = value < 0;
    std::string digits = std::to_string(negative ? -static_cast<unsigned long long>(value)
                                                 : static_cast<unsigned long long>(value));
    bool fits = digits.size() <= integer_places.size();
    size_t free_places = fits ? integer_places.size() - digits.size() : 0;
    if (negative && free_places == 0) fits = false;
    if (!fits) {
        for (size_t i = 0; i < picture.places.size(); ++i)
            if (is_digit_place(picture.places[i])) out[i] = U'*';
    } else {
        for (size_t k = 0; k < digits.size(); ++k)
            out[integer_places[free_places + k]] = static_cast<char32_t>(digits[k]);
        for (size_t k = 0; k < free_places; ++k)
            out[integer_places[k]] = picture.zero_padding ? U'0' : U' ';
        if (negative) out[integer_places[picture.zero_padding ? 0 : free_places - 1]] = U'-';
        if (!picture.zero_padding) blank_leading_separators(out);
    }
    for (char32_t& c : out)
        if (c == U',') c = formats.separator;
    return out;
}

String text_in(const std::u32string& text, const Charset* charset) {
    String out(text.c_str());
    out.convert(charset, 0, CSTRAN_SUBSTITUTE);
    return out;
}

}  // namespace

// str(number[, width[, decimals]]): width 10 and no decimals by default.
void stackcall_str(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    if (any_null_argument(stack, argc)) return result->set_null();
    const Variant& value = argument(stack, 1);
    if (!value.is_number()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    long long width = argc >= 2 ? static_cast<integer_type_st>(argument(stack, 2)) : STR_DEFAULT_WIDTH;
    long long decimals = argc >= 3 ? static_cast<integer_type_st>(argument(stack, 3)) : 0;
    if (width < 1 || width > STR_MAX_WIDTH || decimals < 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (value.tag == TAG_NUMERIC && !std::isfinite(value.numeric.value))
        return result->set_string(String(std::string(static_cast<size_t>(width), '*').c_str()));
    std::string text = str_text(value, width, decimals);
    apply_point(session_formats(stack), text);
    result->set_string(String(text.c_str()));
}

// The leading number of a text: an integer without fraction or exponent, else
// a numeric; 0 when the text has none.
void stackcall_val(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    const format_settings_st& formats = session_formats(stack);
    number_reading_st number =
        read_number(code_points(string_argument(stack, 1)), formats.point.code_point, formats.separator);
    if (!number.digits) return result->set_integer(0LL);
    if (!number.fraction) {
        errno = 0;
        long long whole = std::strtoll(number.text.c_str(), nullptr, 10);
        if (errno != ERANGE) return result->set_integer(whole);
        return result->set_float(std::strtod(number.text.c_str(), nullptr), 0);
    }
    result->set_float(std::strtod(number.text.c_str(), nullptr), read_decimals(number));
}

// transform(value[, picture]): without a picture, or for any value but an
// integer, the value's text as ? shows it; an integer fills the picture's
// "9" and "#" places.
void stackcall_transform(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    const Variant& value = argument(stack, 1);
    if (argc < 2 || is_null_argument(argument(stack, 2)))
        return result->set_string(value.to_string_regional(stack, false));
    const String& text = string_argument(stack, 2);
    picture_st picture = read_picture(text);
    if (value.tag != TAG_INTEGER) return result->set_string(value.to_string_regional(stack, false));
    result->set_string(text_in(fill_picture(picture, value.integer, session_formats(stack)),
                               text.get_charset()));
}

// The decimals a number shows: its own, or SET DECIMALS when not known.
void stackcall_scale(VmStack* stack, unsigned long long, Variant* result) {
    numeric_type_st value = static_cast<numeric_type_st>(argument(stack, 1));
    if (value.decimals == DECIMALS_UNKNOWN) return result->set_integer(session_formats(stack).decimals);
    result->set_integer(static_cast<long long>(value.decimals));
}

}  // namespace zobase
