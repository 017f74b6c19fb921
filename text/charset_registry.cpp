#include <unicode/uloc.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

#include "base/call_trace.h"
#include "text/charset_classes.h"
#include "values/error.h"

namespace zobase {

namespace {

constexpr charset_loader generic_icu = load_generic_icu_charset;
constexpr charset_loader custom = load_custom_charset;

template <const char16_t* Table>
constexpr charset_loader windows_sbcs = load_manual_sbcs_charset<Table, 26>;
template <const char16_t* Table>
constexpr charset_loader dos_sbcs = load_manual_sbcs_charset<Table, 127>;

// The order is the order list_supported_charset reports.
const charset_st charset_rows[] = {
    {1, "ascii", 20127, 0, "US-ASCII", 1, 1, 0, "", windows_sbcs<ascii_map>, 0},
    {2, "binary", 0, 0, nullptr, 1, 1, 0, "", custom, 0},
    {3, "gsm", 0, 0, "gsm-03.38-2009", 1, 2, 0, "", generic_icu, 0},
    {4, "iso-8859-1", 28591, 0, "ISO-8859-1", 1, 1, 0, "", windows_sbcs<iso_8859_1_map>, 0},
    {5, "iso-8859-2", 28592, 0, "ibm-912_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {6, "iso-8859-3", 28593, 0, "ibm-913_P100-2000", 1, 1, 0, "", generic_icu, 0},
    {7, "iso-8859-4", 28594, 0, "ibm-914_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {8, "iso-8859-5", 28595, 0, "ibm-915_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {9, "iso-8859-6", 28596, 0, "ibm-1089_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {10, "iso-8859-7", 28597, 0, "ibm-9005_X110-2007", 1, 1, 0, "", generic_icu, 0},
    {11, "iso-8859-8", 28598, 0, "ibm-5012_P100-1999", 1, 1, 0, "", generic_icu, 0},
    {12, "iso-8859-9", 28599, 0, "ibm-920_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {13, "iso-8859-10", 0, 0, "iso-8859_10-1998", 1, 1, 0, "", generic_icu, 0},
    {14, "iso-8859-11", 0, 0, "iso-8859_11-2001", 1, 1, 0, "", generic_icu, 0},
    {15, "iso-8859-13", 28603, 0, "ibm-921_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {16, "iso-8859-14", 0, 0, "iso-8859_14-1998", 1, 1, 0, "", generic_icu, 0},
    {17, "iso-8859-15", 28605, 0, "ibm-923_P100-1998", 1, 1, 0, "", generic_icu, 0},
    {18, "ibm-37", 37, 0, "ibm-37_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {19, "ibm-437", 437, 437, "ibm-437_P100-1995", 1, 1, 0, "", dos_sbcs<ibm_437_map>, 0},
    {20, "ibm-737", 737, 737, "ibm-737_P100-1997", 1, 1, 0, "", generic_icu, 0},
    {21, "ibm-500", 500, 0, "ibm-500_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {22, "ibm-850", 850, 850, "ibm-850_P100-1995", 1, 1, 0, "", dos_sbcs<ibm_850_map>, 0},
    {23, "ibm-852", 852, 852, "ibm-852_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {24, "ibm-857", 857, 857, "ibm-857_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {25, "ibm-861", 861, 861, "ibm-861_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {26, "ibm-863", 863, 0, "ibm-863_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {27, "ibm-865", 865, 865, "ibm-865_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {28, "ibm-866", 866, 866, "ibm-866_P100-1995", 1, 1, 0, "", generic_icu, 0},
    {29, "ibm-950", 0, 0, "ibm-950_P110-1999", 1, 2, 0, "", generic_icu, 0},
    {30, "ibm-1373", 0, 0, "ibm-1373_P100-2002", 1, 2, 0, "", generic_icu, 0},
    {31, "ibm-1375", 0, 0, "ibm-1375_P100-2008", 1, 2, 0, "", generic_icu, 0},
    {32, "ibm-5471", 0, 0, "ibm-5471_P100-2006", 1, 2, 0, "", generic_icu, 0},
    {33, "kamenicky", 0, 895, nullptr, 1, 1, 0, "", dos_sbcs<kamenicky_map>, 0},
    {34, "mazovia", 0, 620, nullptr, 1, 1, 0, "", dos_sbcs<mazovia_map>, 0},
    {35, "utf-7", 65000, 0, "UTF-7", 1, 1, 5, "\x2B\x2F\x76\x00\x75", generic_icu, 1},
    {36, "utf-8", 65001, 65001, "UTF-8", 1, 4, 0, "", load_optimized_icu_charset<UTF8>, 1},
    {59, "utf-8-bom", 0, 0, "UTF-8", 1, 4, 3, "\xEF\xBB\xBF", load_optimized_icu_charset<UTF8>, 1},
    {37, "utf-16le", 1200, 0, "UTF-16LE", 2, 4, 0, "", load_optimized_icu_charset<UTF16LE>, 1},
    {60, "utf-16le-bom", 0, 0, "UTF-16LE", 2, 4, 2, "\xFF\xFE",
     load_optimized_icu_charset<UTF16LE>, 1},
    {38, "utf-16be", 1201, 0, "UTF-16BE", 2, 4, 0, "", generic_icu, 1},
    {61, "utf-16be-bom", 0, 0, "UTF-16BE", 2, 4, 2, "\xFE\xFF", generic_icu, 1},
    {39, "utf-32le", 12000, 0, "UTF-32LE", 4, 4, 0, "", load_optimized_icu_charset<UTF32LE>, 1},
    {62, "utf-32le-bom", 0, 0, "UTF-32LE", 4, 4, 4, "\xFF\xFE\x00\x00",
     load_optimized_icu_charset<UTF32LE>, 1},
    {40, "utf-32be", 12001, 0, "UTF-32BE", 4, 4, 0, "", generic_icu, 1},
    {63, "utf-32be-bom", 0, 0, "UTF-32BE", 4, 4, 4, "\x00\x00\xFE\xFF", generic_icu, 1},
    {41, "windows-874", 874, 874, "windows-874-2000", 1, 1, 0, "", generic_icu, 0},
    {42, "windows-932", 932, 932, "ibm-943_P15A-2003", 1, 2, 0, "", generic_icu, 0},
    {43, "windows-936", 936, 936, "windows-936-2000", 1, 2, 0, "", generic_icu, 0},
    {44, "windows-949", 949, 949, "windows-949-2000", 1, 2, 0, "", generic_icu, 0},
    {45, "windows-950", 950, 950, "windows-950-2000", 1, 2, 0, "", generic_icu, 0},
    {46, "windows-1250", 1250, 1250, "ibm-5346_P100-1998", 1, 1, 0, "",
     windows_sbcs<windows_1250_map>, 0},
    {47, "windows-1251", 1251, 1251, "ibm-5347_P100-1998", 1, 1, 0, "",
     windows_sbcs<windows_1251_map>, 0},
    {48, "windows-1252", 1252, 1252, "ibm-5348_P100-1997", 1, 1, 0, "",
     windows_sbcs<windows_1252_map>, 0},
    {49, "windows-1253", 1253, 1253, "ibm-5349_P100-1998", 1, 1, 0, "", generic_icu, 0},
    {50, "windows-1254", 1254, 1254, "ibm-5350_P100-1998", 1, 1, 0, "", generic_icu, 0},
    {51, "windows-1255", 1255, 1255, "ibm-9447_P100-2002", 1, 1, 0, "", generic_icu, 0},
    {52, "windows-1256", 1256, 1256, "ibm-9448_X100-2005", 1, 1, 0, "", generic_icu, 0},
    {53, "windows-1257", 1257, 0, "ibm-9449_P100-2002", 1, 1, 0, "", generic_icu, 0},
    {54, "windows-1258", 1258, 0, "ibm-5354_P100-1998", 1, 1, 0, "", generic_icu, 0},
    {55, "macintosh", 10000, 10000, "macos-0_2-10.2", 1, 1, 0, "", generic_icu, 0},
    {56, "x-mac-greek", 10006, 10006, "macos-6_2-10.4", 1, 1, 0, "", generic_icu, 0},
    {57, "x-mac-cyrillic", 10007, 10007, "macos-7_3-10.2", 1, 1, 0, "", generic_icu, 0},
    {58, "x-mac-centraleu", 10029, 10029, "macos-29-10.2", 1, 1, 0, "", generic_icu, 0},
};
static_assert(std::size(charset_rows) == 63);

struct country_codepage_st {
    const char* country_lang;
    int codepage;
};

const country_codepage_st country_codepages[] = {
    {"ar_AA", 1256}, {"be_BY", 1251}, {"bg_BG", 1251}, {"ca_ES", 1252}, {"cs_CZ", 1250},
    {"da_DK", 1252}, {"de_CH", 1252}, {"de_DE", 1252}, {"de_AT", 1252}, {"el_GR", 1253},
    {"en_AU", 1252}, {"en_BE", 1252}, {"en_GB", 1252}, {"en_JP", 1252}, {"en_US", 1252},
    {"en_ZA", 1252}, {"es_BR", 1252}, {"es_ES", 1252}, {"es_MX", 1252}, {"fi_FI", 1252},
    {"fr_BE", 1252}, {"fr_CA", 1252}, {"fr_CH", 1252}, {"fr_FR", 1252}, {"hr_HR", 1250},
    {"hu_HU", 1250}, {"is_IS", 1252}, {"it_CH", 1252}, {"it_IT", 1252}, {"iw_IL", 1255},
    {"ja_JP", 932},  {"ko_KR", 949},  {"mk_MK", 1251}, {"nl_BE", 1252}, {"nl_NL", 1252},
    {"no_NO", 1252}, {"pl_PL", 1250}, {"pt_BR", 1252}, {"pt_PT", 1252}, {"ro_RO", 1250},
    {"ru_RU", 1251}, {"sh_SP", 1250}, {"sk_SK", 1250}, {"sl_SL", 1250}, {"sq_AL", 1252},
    {"sv_SE", 1252}, {"th_TH", 874},  {"tr_TR", 1254}, {"uk_UA", 1251}, {"zh_CN", 936},
    {"zh_TW", 950},
};

constexpr int FALLBACK_CODEPAGE = 437;

struct registry_st {
    // Threads load charsets on first use: `loaded` changes under the lock.
    // The other maps are filled once, before any thread asks.
    std::shared_mutex loaded_mutex;
    std::unordered_map<uint32_t, Charset*> loaded;
    std::unordered_map<uint64_t, const charset_st*> rows;
    std::unordered_map<std::string, uint32_t> names;
    std::unordered_map<int, uint32_t> windows_codepages;
    std::unordered_map<int, uint32_t> codepages;
};

// Built on first use, since static initialisers of other files may look
// charsets up, and never destroyed, like the charsets it holds.
registry_st& registry() {
    static registry_st* maps = new registry_st;
    return *maps;
}

std::mutex init_mutex;

void add_row(const charset_st& row) {
    uint32_t csid = static_cast<uint32_t>(row.csid);
    registry().rows[row.csid] = &row;
    registry().names[row.name] = csid;
    if (row.windows_codepage > 0) registry().windows_codepages[row.windows_codepage] = csid;
    if (row.codepage > 0) registry().codepages[row.codepage] = csid;
}

void add_aliases() {
    const struct {
        const char* alias;
        uint32_t csid;
    } aliases[] = {{"utf7", 35},     {"utf8", 36},     {"utf16le", 37},  {"utf16-le", 37},
                   {"utf16be", 38},  {"utf16-be", 38}, {"utf32le", 39},  {"utf32-le", 39},
                   {"utf32be", 40},  {"utf32-be", 40}};
    for (const auto& entry : aliases) registry().names[entry.alias] = entry.csid;
}

// Loads on first use; the caller has made sure the maps are filled. Binary
// text is never translated, so binary exists only as its nocptrans variant.
const Charset* load_charset(uint32_t csid) {
    constexpr uint32_t BINARY_CSID = 2;
    if ((csid & 0xFFFF) == BINARY_CSID) csid |= CSID_NOCPTRANS;
    registry_st& maps = registry();
    {
        std::shared_lock lock(maps.loaded_mutex);
        auto found = maps.loaded.find(csid);
        if (found != maps.loaded.end()) return found->second;
    }
    auto row = maps.rows.find(csid & 0xFFFF);
    if (row == maps.rows.end()) return nullptr;
    std::unique_lock lock(maps.loaded_mutex);
    auto found = maps.loaded.find(csid);
    if (found != maps.loaded.end()) return found->second;
    Charset* charset = row->second->loader(row->second, (csid & CSID_NOCPTRANS) != 0);
    maps.loaded.emplace(csid, charset);
    return charset;
}

void ensure_character_sets() {
    if (!Charset::binary) __init_character_sets();
}

const Charset* lookup_by_name(std::string name) {
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    auto found = registry().names.find(name);
    return found == registry().names.end() ? nullptr : load_charset(found->second);
}

void default_country_lang(char* text, size_t capacity) {
    char language[ULOC_LANG_CAPACITY] = "";
    char country[ULOC_COUNTRY_CAPACITY] = "";
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLanguage(uloc_getDefault(), language, sizeof language, &status);
    status = U_ZERO_ERROR;
    uloc_getCountry(uloc_getDefault(), country, sizeof country, &status);
    std::snprintf(text, capacity, "%s_%s", language, country);
}

}  // namespace

void __init_character_sets() {
    ZO_TRACE();
    if (Charset::binary) return;
    std::lock_guard<std::mutex> lock(init_mutex);
    if (Charset::binary) return;
    Charset* ascii = charset_rows[0].loader(&charset_rows[0], false);
    registry().loaded[1] = ascii;
    Charset::ascii = ascii;
    for (const charset_st& row : charset_rows) add_row(row);
    add_aliases();
    Charset::utf8 = load_charset(36);
    Charset::utf16le = load_charset(37);
    Charset::utf32le = load_charset(39);
    // Last: a set binary tells everyone the registry is complete.
    Charset::binary = load_charset(2);
}

void __shutdown_character_sets() {
    ZO_TRACE();
    std::lock_guard<std::mutex> lock(init_mutex);
    Charset::binary = nullptr;
    Charset::ascii = nullptr;
    Charset::utf8 = nullptr;
    Charset::utf16le = nullptr;
    Charset::utf32le = nullptr;
    registry_st& maps = registry();
    for (auto& [csid, charset] : maps.loaded) delete charset;
    maps.loaded.clear();
    maps.rows.clear();
    maps.names.clear();
    maps.windows_codepages.clear();
    maps.codepages.clear();
}

const Charset* GetCharsetByCSID(uint32_t csid) {
    ensure_character_sets();
    return load_charset(csid);
}

const Charset* GetCharsetByWindowsCodepage(int codepage) {
    ZO_TRACE();
    ensure_character_sets();
    auto found = registry().windows_codepages.find(codepage);
    if (found == registry().windows_codepages.end()) {
        raise_not_available(("windows code page " + std::to_string(codepage)).c_str());
    }
    return load_charset(found->second);
}

const Charset* get_charset_by_codepage(int codepage, bool nocptrans) {
    ensure_character_sets();
    auto found = registry().codepages.find(codepage);
    if (found == registry().codepages.end()) return nullptr;
    return load_charset(found->second | (nocptrans ? CSID_NOCPTRANS : 0));
}

const Charset* get_charset_by_name(const String& name) {
    ZO_TRACE();
    ensure_character_sets();
    char buffer[64];
    char* out = buffer;
    CstranError result = name.get_charset()->convert(name.read(), name.end(), out,
                                                     buffer + sizeof buffer - 1, Charset::ascii,
                                                     CSTRAN_STRICT);
    if (result != 0) return nullptr;
    return lookup_by_name(std::string(buffer, out));
}

const Charset* get_charset_by_name(const char* name) {
    ensure_character_sets();
    return name ? lookup_by_name(name) : nullptr;
}

const Charset* get_charset_by_country_lang(const char* country_lang) {
    ZO_TRACE();
    ensure_character_sets();
    char locale_text[ULOC_LANG_CAPACITY + ULOC_COUNTRY_CAPACITY + 2];
    if (!country_lang || !*country_lang) {
        default_country_lang(locale_text, sizeof locale_text);
        country_lang = locale_text;
    }
    for (const country_codepage_st& entry : country_codepages) {
        if (std::strcmp(entry.country_lang, country_lang) != 0) continue;
        if (const Charset* charset = get_charset_by_codepage(entry.codepage, false)) return charset;
        break;
    }
    return get_charset_by_codepage(FALLBACK_CODEPAGE, false);
}

int GetCharsetCPID(const Charset* charset) {
    return charset ? static_cast<int>(charset->row.codepage) : 0;
}

uint32_t GetCharsetCSID(const Charset* charset) {
    return charset ? charset->csid : 0;
}

void list_supported_charset(void* context, charset_list_callback callback) {
    for (const charset_st& row : charset_rows) callback(context, row.name);
}

}  // namespace zobase
