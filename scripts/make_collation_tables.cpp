// Builds the national sort tables of the mapped collations from ICU's collator
// and prints them as C++ source. The tables are checked in; run this only to
// build them again (for instance on a newer ICU), from the repository root:
//
//   cmake --build build --target make_collation_tables
//   build/make_collation_tables > text/mapped_collation_tables.cpp
//   build/make_collation_tables --header > text/mapped_collation_tables.h
//
// With --report it prints, instead of source, what each table approximates.
//
// How a table comes about. Every byte of the code page is decoded with the
// runtime's own charset and handed to ICU's collation element iterator; so is
// every multi-letter sequence of the national order. Each distinct ICU primary
// weight becomes one key byte, in ICU's order. The secondary weights that ICU
// files behind a primary (its own and those of following accents) form that
// primary's accent segment; the distinct segments seen with one primary are
// ranked, and the rank becomes the secondary key byte. A primary with one
// segment only carries no secondary at all, so that the secondary bytes of two
// strings with equal primaries always stand at the same places. Case lives in
// ICU's third level and is left out: every mapped collation is case-blind.
//
// Secondary bytes run from 1 up, primary bytes lie above all of them, and 0
// is the pad: a key that ends sorts before every longer one.
#include <unicode/ucol.h>
#include <unicode/ucoleitr.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "text/collation.h"
#include "text/mapped_collation.h"
#include "text/national_orders.h"

using namespace zobase;

namespace {

const national_order_st& order_of(int group) {
    if (const national_order_st* o = national_order(group)) return *o;
    fprintf(stderr, "no national order for group %d\n", group);
    exit(1);
}

// One collation element reduced to the two levels the keys carry.
struct element_st {
    uint32_t primary;
    uint32_t secondary;
};

// ICU's element iterator hands out 32-bit elements: the upper half of the
// primary, then the upper bytes of secondary and tertiary; a continuation
// element (low bits 0xC0) brings the lower halves.
std::vector<element_st> collation_elements(UCollator* collator, const std::u16string& text) {
    UErrorCode status = U_ZERO_ERROR;
    UCollationElements* it = ucol_openElements(
        collator, reinterpret_cast<const UChar*>(text.data()), int32_t(text.size()), &status);
    std::vector<element_st> out;
    for (int32_t ce; (ce = ucol_next(it, &status)) != UCOL_NULLORDER && U_SUCCESS(status);) {
        uint32_t u = uint32_t(ce);
        if ((u & 0xC0) == 0xC0 && !out.empty()) {
            out.back().primary |= u >> 16;
            out.back().secondary |= (u >> 8) & 0xFF;
        } else {
            out.push_back({u & 0xFFFF0000u, u & 0xFF00u});
        }
    }
    ucol_closeElements(it);
    if (U_FAILURE(status)) {
        fprintf(stderr, "ICU: %s\n", u_errorName(status));
        exit(1);
    }
    std::vector<element_st> kept;
    for (const element_st& e : out)
        if (e.primary || e.secondary) kept.push_back(e);
    return kept;
}

typedef std::vector<uint32_t> segment_t;

// One primary weight with the accent segment behind it.
struct weight_st {
    uint32_t primary;
    segment_t segment;
};

// A collation unit: one byte of the code page or one sequence.
struct unit_st {
    std::string source;   // bytes in the code page
    std::u16string text;  // what ICU sees
    std::vector<weight_st> weights;
    bool undefined = false;  // the code page leaves the byte unmapped
    std::string note;        // what the table can't say of ICU's order
};

std::vector<weight_st> weights_of(const std::vector<element_st>& elements) {
    std::vector<weight_st> out;
    for (const element_st& e : elements) {
        if (e.primary)
            out.push_back({e.primary, {e.secondary}});
        else if (!out.empty())
            out.back().segment.push_back(e.secondary);
    }
    return out;
}

std::string utf8_of(const std::u16string& text) {
    std::string out;
    for (char16_t c : text) {
        if (c < 0x80) {
            out += char(c);
        } else if (c < 0x800) {
            out += char(0xC0 | (c >> 6));
            out += char(0x80 | (c & 0x3F));
        } else {
            out += char(0xE0 | (c >> 12));
            out += char(0x80 | ((c >> 6) & 0x3F));
            out += char(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::u16string lower_case(std::u16string text) {
    for (char16_t& c : text)
        if (c >= u'A' && c <= u'Z') c = char16_t(c + 32);
    return text;
}

bool same_two_levels(const std::vector<element_st>& a, const std::vector<element_st>& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i].primary != b[i].primary || a[i].secondary != b[i].secondary) return false;
    return true;
}

std::u16string decode(const Charset* charset, const std::string& bytes) {
    char16_t buffer[8];
    const char* src = bytes.data();
    char16_t* dst = buffer;
    charset->out(src, src + bytes.size(), dst, buffer + 8);
    return std::u16string(buffer, dst);
}

std::string encode(const Charset* charset, const std::u16string& text) {
    char buffer[8];
    const char16_t* src = text.data();
    char* dst = buffer;
    if (charset->in(src, src + text.size(), dst, buffer + 8, CSTRAN_STRICT) != 0) return "";
    return std::string(buffer, dst);
}

struct table_st {
    const collation_st* row;
    std::vector<unit_st> units;  // the 256 bytes, then the sequences
    std::map<uint32_t, uint8_t> primary_byte;
    // Only primaries with more than one segment have secondary bytes.
    std::map<uint32_t, std::map<segment_t, uint8_t>> secondary_byte;
    std::vector<collation_entry_st> entries;
};

// Bytes that weigh nothing in ICU (control characters, the soft hyphen) and
// bytes the code page leaves undefined get primaries of their own, below the
// space and above everything respectively, in byte order: a key never loses
// a byte that the record holds.
constexpr uint32_t IGNORABLE_BASE = 0x00000100u;
constexpr uint32_t UNDEFINED_BASE = 0xFFFFFF00u;
constexpr uint32_t FIRST_ICU_PRIMARY = 0x01000000u;

void collect_units(table_st& t, UCollator* collator, const national_order_st& order) {
    const Charset* charset = get_charset_by_codepage(t.row->codepage, false);
    for (int b = 0; b < 256; ++b) {
        unit_st u;
        u.source = std::string(1, char(b));
        u.text = decode(charset, u.source);
        u.undefined = u.text == u"\uFFFD";
        if (u.undefined) {
            u.weights = {{UNDEFINED_BASE + uint32_t(b), {0}}};
            u.note = "undefined in the code page; ICU ties all of these";
        } else {
            u.weights = weights_of(collation_elements(collator, u.text));
            if (u.weights.empty()) {
                u.weights = {{IGNORABLE_BASE + uint32_t(b), {0}}};
                u.note = "ignored by ICU; here a letter of its own below the space";
            }
        }
        t.units.push_back(u);
    }
    // A sequence weighs what its lower-case form weighs: the mixed forms
    // that ICU reads as two letters are the same letter here.
    for (const std::u16string& text : order.sequences) {
        unit_st u;
        u.text = text;
        u.source = encode(charset, text);
        if (u.source.size() != text.size()) {
            fprintf(stderr, "%s: sequence %s not in the code page\n", t.row->name,
                    utf8_of(text).c_str());
            exit(1);
        }
        std::vector<element_st> own = collation_elements(collator, text);
        std::vector<element_st> lower = collation_elements(collator, lower_case(text));
        if (!same_two_levels(own, lower)) u.note = "two letters in ICU; one letter here";
        u.weights = weights_of(lower);
        t.units.push_back(u);
    }
}

// The first byte of a text's sort key: the lead byte of its first primary.
int sort_key_lead(UCollator* collator, const std::u16string& text) {
    uint8_t key[64];
    int32_t n = ucol_getSortKey(collator, reinterpret_cast<const UChar*>(text.data()),
                                int32_t(text.size()), key, sizeof key);
    return n > 1 ? key[0] : -1;
}

// ICU's element iterator hands out primaries as they stand before the script
// reordering a locale may ask for (Greek and Russian put their own script
// first); the sort key has it. Reordering moves whole lead bytes, so each
// lead byte is looked up once through a text whose first primary has it.
void apply_script_reordering(table_st& t, UCollator* collator) {
    UErrorCode status = U_ZERO_ERROR;
    if (ucol_getReorderCodes(collator, nullptr, 0, &status) == 0) return;
    std::map<uint32_t, int> lead;
    auto learn = [&](const std::u16string& text) {
        std::vector<weight_st> w = weights_of(collation_elements(collator, text));
        if (!w.empty() && !lead.count(w[0].primary >> 24))
            lead[w[0].primary >> 24] = sort_key_lead(collator, text);
    };
    // The table's own letters first, then the rest of the BMP for primaries
    // that only an expansion brings.
    for (const unit_st& u : t.units) learn(u.text);
    for (char16_t c = 0x20; c < 0xFFFD; ++c)
        if (c < 0xD800 || c >= 0xE000) learn(std::u16string(1, c));
    for (unit_st& u : t.units)
        for (weight_st& w : u.weights) {
            if (w.primary < FIRST_ICU_PRIMARY || w.primary >= UNDEFINED_BASE) continue;
            auto found = lead.find(w.primary >> 24);
            if (found == lead.end() || found->second < 0) {
                fprintf(stderr, "%s: no sort key lead for primary %08X\n", t.row->name, w.primary);
                exit(1);
            }
            w.primary = uint32_t(found->second) << 24 | (w.primary & 0x00FFFFFFu);
        }
}

// Units with more weights than their kind can hold keep the first and the
// last; a three-byte sequence keeps its first.
void fit_weights(table_st& t) {
    for (unit_st& u : t.units) {
        size_t room = u.source.size() == 1 ? 2 : 1;
        if (u.weights.size() <= room) continue;
        u.note = "has " + std::to_string(u.weights.size()) + " primaries in ICU; keeps " +
                 std::to_string(room);
        if (room == 1)
            u.weights.resize(1);
        else
            u.weights = {u.weights.front(), u.weights.back()};
    }
}

// Ranking segments one by one keeps ICU's order of whole strings only if a
// segment that is the start of a longer one sorts first however the text
// goes on: every accent behind a primary must weigh more than whatever a
// following primary brings as its first secondary.
void check_segments_rank(const table_st& t,
                         const std::map<uint32_t, std::set<segment_t>>& segments) {
    uint32_t highest_first = 0, lowest_accent = UINT32_MAX;
    for (const auto& [primary, set] : segments)
        for (const segment_t& s : set) {
            highest_first = std::max(highest_first, s.front());
            for (size_t i = 1; i < s.size(); ++i) lowest_accent = std::min(lowest_accent, s[i]);
        }
    if (highest_first >= lowest_accent) {
        fprintf(stderr, "%s: a secondary %04X of a letter reaches the accents from %04X\n",
                t.row->name, highest_first, lowest_accent);
        exit(1);
    }
}

void rank_weights(table_st& t) {
    std::map<uint32_t, std::set<segment_t>> segments;
    for (const unit_st& u : t.units)
        for (const weight_st& w : u.weights) segments[w.primary].insert(w.segment);
    check_segments_rank(t, segments);
    uint32_t secondaries = 0;
    for (auto& [primary, set] : segments) {
        if (set.size() < 2) continue;
        uint8_t rank = 0;
        for (const segment_t& s : set) t.secondary_byte[primary][s] = ++rank;
        secondaries = std::max<uint32_t>(secondaries, rank);
    }
    uint32_t next = secondaries + 1;
    for (auto& [primary, set] : segments) {
        if (next > 255) {
            fprintf(stderr, "%s: %zu primaries and %u secondaries do not fit a byte\n", t.row->name,
                    segments.size(), secondaries);
            exit(1);
        }
        t.primary_byte[primary] = uint8_t(next++);
    }
}

bool needs_secondary(const table_st& t, const weight_st& w) {
    return t.secondary_byte.count(w.primary) != 0;
}

bool same_weight(const weight_st& a, const weight_st& b) {
    return a.primary == b.primary && a.segment == b.segment;
}

// The byte that weighs `w` alone, a lower-case letter where there is a choice.
int byte_weighing(const table_st& t, const weight_st& w) {
    int found = -1;
    for (int b = 0; b < 256; ++b) {
        const unit_st& v = t.units[b];
        if (!v.note.empty() || v.weights.size() != 1 || !same_weight(v.weights[0], w)) continue;
        if (found < 0 || (b >= 'a' && b <= 'z')) found = b;
    }
    return found;
}

collation_entry_st entry_of(const table_st& t, const unit_st& u) {
    collation_entry_st e{};
    memcpy(e.source, u.source.data(), u.source.size());
    std::vector<uint8_t> secondaries;
    for (const weight_st& w : u.weights)
        if (needs_secondary(t, w))
            secondaries.push_back(t.secondary_byte.at(w.primary).at(w.segment));
    for (size_t i = 0; i < u.weights.size(); ++i)
        e.primary[i] = t.primary_byte.at(u.weights[i].primary);
    for (size_t i = 0; i < secondaries.size(); ++i) e.secondary[i] = secondaries[i];
    bool expressible = true;
    if (u.source.size() == 3) {
        e.kind = COLLATION_ENTRY_TRIPLE;
        expressible = secondaries.empty();
    } else if (u.source.size() == 2) {
        e.kind = secondaries.empty() ? COLLATION_ENTRY_PAIR : COLLATION_ENTRY_PAIR_SECONDARY;
    } else if (u.weights.size() == 1) {
        e.kind = secondaries.empty() ? COLLATION_ENTRY_PRIMARY : COLLATION_ENTRY_PRIMARY_SECONDARY;
    } else {
        int first = byte_weighing(t, u.weights[0]);
        int second = byte_weighing(t, u.weights[1]);
        if (first >= 0 && second >= 0) {
            e = collation_entry_st{};
            e.kind = COLLATION_ENTRY_REPLACEMENT;
            e.source[0] = uint8_t(u.source[0]);
            e.primary[0] = uint8_t(first);
            e.primary[1] = uint8_t(second);
        } else {
            e.kind = COLLATION_ENTRY_TWO_PRIMARIES + uint32_t(secondaries.size());
        }
    }
    if (!expressible) {
        fprintf(stderr, "%s: sequence %s needs a secondary weight\n", t.row->name,
                utf8_of(u.text).c_str());
        exit(1);
    }
    return e;
}

std::string table_name(const collation_st& row) { return std::string(row.name) + "_table"; }

std::string describe(const unit_st& u) {
    std::string out;
    for (char16_t c : u.text) {
        char code[16];
        snprintf(code, sizeof code, "%sU+%04X", out.empty() ? "" : " ", unsigned(c));
        out += code;
    }
    bool printable = true;
    for (char16_t c : u.text)
        printable = printable && c >= 0x20 && !(c >= 0x7F && c < 0xA0) && c != 0xAD &&
                    c != 0xFFFD && c != u'\\';
    if (printable) out += " " + utf8_of(u.text);
    return out;
}

void print_entry(const collation_entry_st& e, const unit_st& u) {
    printf("    {%u, {0x%02X, 0x%02X, 0x%02X}, {0x%02X, 0x%02X}, 0, {0x%02X, 0x%02X}, 0},  // %s\n",
           e.kind, e.source[0], e.source[1], e.source[2], e.primary[0], e.primary[1],
           e.secondary[0], e.secondary[1], describe(u).c_str());
}

table_st build_table(const collation_st& row) {
    const national_order_st& order = order_of(row.group);
    UErrorCode status = U_ZERO_ERROR;
    UCollator* collator = ucol_open(order.locale, &status);
    if (U_FAILURE(status)) {
        fprintf(stderr, "%s: ICU locale %s: %s\n", row.name, order.locale, u_errorName(status));
        exit(1);
    }
    table_st t;
    t.row = &row;
    collect_units(t, collator, order);
    apply_script_reordering(t, collator);
    ucol_close(collator);
    fit_weights(t);
    rank_weights(t);
    for (const unit_st& u : t.units) t.entries.push_back(entry_of(t, u));
    return t;
}

void print_source(const std::vector<table_st>& tables) {
    printf(
        "// The national sort tables of the mapped collations, one row per byte of\n"
        "// the code page and one per multi-letter sequence. Generated from ICU %s by\n"
        "// scripts/make_collation_tables.cpp; build them again rather than edit them.\n"
        "#include \"text/mapped_collation_tables.h\"\n\nnamespace zobase {\n",
        U_ICU_VERSION);
    for (const table_st& t : tables) {
        printf("\n// %s: ICU locale %s.\n", t.row->name, order_of(t.row->group).locale);
        printf("const collation_entry_st %s[%zu] = {\n", table_name(*t.row).c_str(),
               t.entries.size());
        for (size_t i = 0; i < t.entries.size(); ++i) print_entry(t.entries[i], t.units[i]);
        printf("};\n");
    }
    printf("\n}  // namespace zobase\n");
}

void print_header(const std::vector<table_st>& tables) {
    printf(
        "#pragma once\n"
        "// The national sort tables of the mapped collations. Generated by\n"
        "// scripts/make_collation_tables.cpp; build them again rather than edit them.\n"
        "#include \"text/mapped_collation.h\"\n\nnamespace zobase {\n\n");
    for (const table_st& t : tables)
        printf("extern const collation_entry_st %s[%zu];\n", table_name(*t.row).c_str(),
               t.entries.size());
    printf("\n}  // namespace zobase\n");
}

void print_report(const std::vector<table_st>& tables) {
    for (const table_st& t : tables) {
        size_t secondaries = 0;
        for (const auto& [p, ranks] : t.secondary_byte)
            secondaries = std::max(secondaries, ranks.size());
        printf("%s (%s): %zu rows, %zu primaries, up to %zu secondaries\n", t.row->name,
               order_of(t.row->group).locale, t.entries.size(), t.primary_byte.size(), secondaries);
        for (size_t i = 0; i < t.units.size(); ++i) {
            const unit_st& u = t.units[i];
            if (!u.note.empty())
                printf("    %s: %s\n", describe(u).c_str(), u.note.c_str());
            else if (t.entries[i].kind >= 2 && t.entries[i].kind <= 5)
                printf("    %s: kind %u\n", describe(u).c_str(), t.entries[i].kind);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const char* mode = argc > 1 ? argv[1] : "";
    __init_collations();
    std::vector<table_st> tables;
    for (const collation_st& row : collation_table)
        if (row.group != COLLATION_GROUP_MACHINE) tables.push_back(build_table(row));
    if (strcmp(mode, "--header") == 0)
        print_header(tables);
    else if (strcmp(mode, "--report") == 0)
        print_report(tables);
    else
        print_source(tables);
}
