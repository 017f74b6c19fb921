// The date style table of SET DATE.
#include "vm/session_settings.h"

namespace zobase {

namespace {

constexpr date_style_st DATE_STYLES[] = {
    {"AMERICAN", DATE_STYLE_AMERICAN, "/", 12, 4},
    {"ANSI", DATE_STYLE_ANSI, ".", 24, 0},
    {"BRITISH", DATE_STYLE_BRITISH, "/", 12, 4},
    {"DMY", DATE_STYLE_DMY, "/", 12, 0},
    {"FRENCH", DATE_STYLE_FRENCH, "/", 24, 4},
    {"GERMAN", DATE_STYLE_GERMAN, ".", 24, 4},
    {"ITALIAN", DATE_STYLE_ITALIAN, "-", 24, 4},
    {"JAPAN", DATE_STYLE_JAPAN, "/", 24, 4},
    {"MDY", DATE_STYLE_MDY, "/", 12, 0},
    {"SHORT", DATE_STYLE_SHORT, nullptr, 0, 4},
    {"TAIWAN", DATE_STYLE_TAIWAN, "/", 24, 4},
    {"USA", DATE_STYLE_USA, "-", 12, 0},
    {"LONG", DATE_STYLE_LONG, nullptr, 0, 0},
    {"YMD", DATE_STYLE_YMD, "/", 12, 0},
};

}  // namespace

// A row whose abbreviate_to is not 0 also answers to its prefixes of at least
// that many letters: SET DATE AMER is AMERICAN.
const date_style_st* find_date_style(std::string_view upper_name) noexcept {
    for (const date_style_st& row : DATE_STYLES) {
        std::string_view name = row.name;
        if (upper_name == name) return &row;
        bool abbreviates = row.abbreviate_to > 0 &&
                           upper_name.size() >= static_cast<size_t>(row.abbreviate_to) &&
                           name.starts_with(upper_name);
        if (abbreviates) return &row;
    }
    return nullptr;
}

const date_style_st* find_date_style(int32_t style) noexcept {
    for (const date_style_st& row : DATE_STYLES)
        if (row.style == style) return &row;
    return nullptr;
}

}  // namespace zobase
