#include "text/mapped_collation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "values/error.h"

namespace zobase {
namespace {

constexpr int WINDOWS_1252_GENERAL = 2020;
constexpr int WINDOWS_1252_GERMAN = 4020;
constexpr int WINDOWS_1252_SPANISH = 15020;
constexpr int WINDOWS_1250_CZECH = 12018;
constexpr int WINDOWS_1250_HUNGARY = 14018;
constexpr int WINDOWS_1251_RUSSIAN = 10019;

const Mapped_Collation& mapped(int colid) {
    __init_collations();
    auto* c = dynamic_cast<Mapped_Collation*>(GetCollationByCOLID(colid));
    if (!c) throw std::runtime_error("no mapped collation " + std::to_string(colid));
    return *c;
}

// The key of raw bytes in the collation's charset; bytes the call doesn't
// write show as '#'.
std::string key(int colid, const std::string& source, bool full_length, size_t length) {
    char buffer[64];
    memset(buffer, '#', sizeof buffer);
    uint64_t n =
        mapped(colid).create_char_key(source.data(), source.size(), full_length, buffer, length);
    return std::string(buffer, n);
}

std::string full_key(int colid, const std::string& source, size_t length = 20) {
    return key(colid, source, true, length);
}

std::string search_key(int colid, const std::string& source, size_t length = 20) {
    return key(colid, source, false, length);
}

// The weights of a single byte, as the key of that byte alone shows them.
std::string primary_of(int colid, const std::string& letter) {
    return search_key(colid, letter).substr(0, 1);
}

TEST(MappedCollationKey, OnlySpacesGiveOnlyPadBytes) {
    EXPECT_EQ(full_key(WINDOWS_1252_GENERAL, "     ", 8), std::string(8, '\0'));
    EXPECT_EQ(full_key(WINDOWS_1252_GENERAL, "", 8), std::string(8, '\0'));
    EXPECT_EQ(search_key(WINDOWS_1252_GENERAL, "   ", 8), "");
    // Trailing spaces go before anything is mapped; inner ones count.
    EXPECT_EQ(full_key(WINDOWS_1252_GENERAL, "AB   "), full_key(WINDOWS_1252_GENERAL, "AB"));
    EXPECT_LT(full_key(WINDOWS_1252_GENERAL, "A"), full_key(WINDOWS_1252_GENERAL, "A B"));
}

TEST(MappedCollationKey, HalfTheKeyLengthBoundsTheSource) {
    // 20 key bytes take 10 source bytes at most.
    EXPECT_EQ(full_key(WINDOWS_1252_GENERAL, "ABCDEFGHIJ", 20),
              full_key(WINDOWS_1252_GENERAL, "ABCDEFGHIJKLMNOP", 20));
    EXPECT_NE(full_key(WINDOWS_1252_GENERAL, "ABCDEFGHI", 20),
              full_key(WINDOWS_1252_GENERAL, "ABCDEFGHIJ", 20));
    // A source that reaches half the key gives the whole key even for a search.
    EXPECT_EQ(search_key(WINDOWS_1252_GENERAL, "ABCDEFGHIJKL", 20),
              full_key(WINDOWS_1252_GENERAL, "ABCDEFGHIJ", 20));
    // An odd length takes the smaller half and leaves the last byte to the pad.
    EXPECT_EQ(full_key(WINDOWS_1252_GENERAL, "ABC", 5), full_key(WINDOWS_1252_GENERAL, "AB", 5));
    EXPECT_EQ(full_key(WINDOWS_1252_GENERAL, "AB", 5)[4], '\0');
}

TEST(MappedCollationKey, SequenceAtTheEndOfTheLimitReadsOnButNotPastTheSource) {
    // Four key bytes take two source bytes: the c at the limit still pairs with
    // the h behind it into the Czech letter ch.
    std::string ach = full_key(WINDOWS_1250_CZECH, "ach", 4);
    EXPECT_EQ(ach.substr(1, 1), primary_of(WINDOWS_1250_CZECH, "ch"));
    EXPECT_NE(ach, full_key(WINDOWS_1250_CZECH, "ac", 4));
    // The same three bytes with the source ending at the c: no pairing.
    const char* bytes = "ach";
    char buffer[4];
    ASSERT_EQ(mapped(WINDOWS_1250_CZECH).create_char_key(bytes, 2, true, buffer, 4), 4u);
    EXPECT_EQ(std::string(buffer, 4), full_key(WINDOWS_1250_CZECH, "ac", 4));
    // A three-byte letter at the limit: Hungarian dzs.
    EXPECT_EQ(full_key(WINDOWS_1250_HUNGARY, "adzs", 4).substr(1, 1),
              primary_of(WINDOWS_1250_HUNGARY, "dzs"));
    EXPECT_EQ(full_key(WINDOWS_1250_HUNGARY, "adz", 4).substr(1, 1),
              primary_of(WINDOWS_1250_HUNGARY, "dz"));
}

TEST(MappedCollationKey, SecondariesAreCutAndPrimariesStayWhole) {
    // e-acute carries a secondary, and sharp s weighs two primaries and two
    // secondaries: three primaries and three secondaries for four bytes.
    std::string k = full_key(WINDOWS_1252_GENERAL, "\xDF\xE9", 4);
    std::string s = primary_of(WINDOWS_1252_GENERAL, "s");
    std::string e = primary_of(WINDOWS_1252_GENERAL, "e");
    EXPECT_EQ(k.substr(0, 3), s + s + e);
    std::string whole = full_key(WINDOWS_1252_GENERAL, "\xDF\xE9", 8);
    EXPECT_EQ(k[3], whole[3]);  // the first secondary, the others cut
    EXPECT_NE(whole[4], '\0');
    EXPECT_NE(whole[5], '\0');
    EXPECT_EQ(whole.substr(6), std::string(2, '\0'));
}

TEST(MappedCollationKey, SearchKeyIsThePrimariesOfAShortSource) {
    // Without full length a short source gives its primaries only, which begin
    // the stored key of every longer text, whatever its case or accents.
    std::string search = search_key(WINDOWS_1252_GERMAN, "M\xFC");  // Mü
    EXPECT_EQ(search.size(), 3u);                                   // M, u, e
    EXPECT_EQ(search, search_key(WINDOWS_1252_GERMAN, "mue"));
    EXPECT_EQ(full_key(WINDOWS_1252_GERMAN, "M\xFCller").substr(0, 3), search);
    EXPECT_EQ(full_key(WINDOWS_1252_GERMAN, "MUELLER").substr(0, 3), search);
    // A letter of two bytes is one primary.
    EXPECT_EQ(search_key(WINDOWS_1250_CZECH, "ch").size(), 1u);
    EXPECT_EQ(search_key(WINDOWS_1252_SPANISH, "Llama").size(), 4u);
}

TEST(MappedCollationKey, CaseFoldsAndAccentsSettleTies) {
    EXPECT_EQ(full_key(WINDOWS_1252_GENERAL, "abc"), full_key(WINDOWS_1252_GENERAL, "ABC"));
    // cote < coté < côte < côté: the first accent that differs decides.
    std::string a = full_key(WINDOWS_1252_GENERAL, "cote");
    std::string b = full_key(WINDOWS_1252_GENERAL, "cot\xE9");
    std::string c = full_key(WINDOWS_1252_GENERAL, "c\xF4te");
    std::string d = full_key(WINDOWS_1252_GENERAL, "C\xD4T\xC9");
    EXPECT_LT(a, b);
    EXPECT_LT(b, c);
    EXPECT_LT(c, d);
    // Accents never outweigh a letter: côte < cotf.
    EXPECT_LT(c, full_key(WINDOWS_1252_GENERAL, "cotf"));
    // A shorter text sorts first even where the longer one's letters are low.
    EXPECT_LT(full_key(WINDOWS_1252_GENERAL, "\xE9"), full_key(WINDOWS_1252_GENERAL, "e!"));
}

TEST(MappedCollationKey, NationalLetters) {
    // Czech: ch follows h; Spanish: ll follows l, ch follows c.
    EXPECT_LT(full_key(WINDOWS_1250_CZECH, "hz"), full_key(WINDOWS_1250_CZECH, "cha"));
    EXPECT_LT(full_key(WINDOWS_1250_CZECH, "cz"), full_key(WINDOWS_1250_CZECH, "ch"));
    EXPECT_LT(full_key(WINDOWS_1252_SPANISH, "luz"), full_key(WINDOWS_1252_SPANISH, "llama"));
    EXPECT_LT(full_key(WINDOWS_1252_SPANISH, "cz"), full_key(WINDOWS_1252_SPANISH, "CHA"));
    // German phone book: ä as ae, just behind it; sharp s as ss, just behind it.
    EXPECT_LT(full_key(WINDOWS_1252_GERMAN, "Mueller"), full_key(WINDOWS_1252_GERMAN, "M\xFCller"));
    EXPECT_LT(full_key(WINDOWS_1252_GERMAN, "M\xFCller"), full_key(WINDOWS_1252_GERMAN, "Muf"));
    const std::string sharp = full_key(WINDOWS_1252_GERMAN, std::string("Stra\xDF") + "e");
    EXPECT_LT(full_key(WINDOWS_1252_GERMAN, "Strasse"), sharp);
    EXPECT_LT(sharp, full_key(WINDOWS_1252_GERMAN, "Strast"));
    // Russian numero sign: replaced by N and o.
    EXPECT_EQ(full_key(WINDOWS_1251_RUSSIAN, "\xB9"), full_key(WINDOWS_1251_RUSSIAN, "No"));
}

TEST(MappedCollationKey, ConvertsTextIntoTheCollationCharset) {
    __init_collations();
    const Collation& c = mapped(WINDOWS_1252_GERMAN);
    String text = String::fromBytes("M\xC3\xBCller", 7, Charset::utf8);
    char buffer[20];
    ASSERT_EQ(c.create_char_key(text, true, buffer, sizeof buffer), sizeof buffer);
    EXPECT_EQ(std::string(buffer, sizeof buffer), full_key(WINDOWS_1252_GERMAN, "M\xFCller"));
    EXPECT_THROW(c.create_char_key(String::fromBytes("\xCE\xA9", 2, Charset::utf8), true, buffer,
                                   sizeof buffer),
                 collation_not_impl);
}

// A table of test rows: a replacement whose bytes pair up, a row for a
// sequence among the single bytes, and bytes that no row names.
TEST(MappedCollationTable, ReplacementMapsItsBytesInTurn) {
    collation_entry_st rows[5] = {
        {COLLATION_ENTRY_PRIMARY, {'a'}, {10}, 0, {}, 0},
        {COLLATION_ENTRY_PAIR, {'a', 'b'}, {30}, 0, {}, 0},
        {COLLATION_ENTRY_PRIMARY_SECONDARY, {'b'}, {11}, 0, {2}, 0},
        {COLLATION_ENTRY_REPLACEMENT, {'x'}, {'a', 'b'}, 0, {}, 0},
        {COLLATION_ENTRY_REPLACEMENT, {'y'}, {'b', 'a'}, 0, {}, 0},
    };
    __init_collations();
    Mapped_Collation c(&collation_table[0], get_charset_by_codepage(1252, false), rows, 5);
    char k[8];
    ASSERT_EQ(c.create_char_key("x", 1, true, k, 8), 8u);
    EXPECT_EQ(std::string(k, 8), std::string("\x1E\0\0\0\0\0\0\0", 8));  // one pair
    ASSERT_EQ(c.create_char_key("y", 1, true, k, 8), 8u);
    EXPECT_EQ(std::string(k, 8), std::string("\x0B\x0A\x02\0\0\0\0\0", 8));
    // Bytes without a row weigh nothing.
    ASSERT_EQ(c.create_char_key("aza", 3, false, k, 8), 2u);
    EXPECT_EQ(std::string(k, 2), "\x0A\x0A");
    EXPECT_EQ(c.pad, '\0');
    EXPECT_EQ(c.key_size_factor, 2u);
}

TEST(MappedCollationTable, EveryKindEmitsItsWeights) {
    collation_entry_st rows[7] = {
        {COLLATION_ENTRY_TWO_PRIMARIES, {'p'}, {20, 21}, 0, {1, 2}, 0},
        {COLLATION_ENTRY_TWO_PRIMARIES_SECONDARY, {'q'}, {22, 23}, 0, {3, 4}, 0},
        {COLLATION_ENTRY_TWO_PRIMARIES_SECONDARIES, {'r'}, {24, 25}, 0, {5, 6}, 0},
        {COLLATION_ENTRY_PAIR_SECONDARY, {'s', 't'}, {26}, 0, {7}, 0},
        {COLLATION_ENTRY_TRIPLE, {'s', 't', 'u'}, {27}, 0, {8}, 0},
        {COLLATION_ENTRY_PRIMARY, {'s'}, {28}, 0, {9}, 0},
        {COLLATION_ENTRY_PRIMARY, {'t'}, {29}, 0, {}, 0},
    };
    __init_collations();
    Mapped_Collation c(&collation_table[0], Charset::ascii, rows, 7);
    char k[16];
    auto key_of = [&](const char* text) {
        return std::string(k, c.create_char_key(text, strlen(text), true, k, 16));
    };
    EXPECT_EQ(key_of("pqr"), std::string("\x14\x15\x16\x17\x18\x19\x03\x05\x06\0\0\0\0\0\0\0", 16));
    // Three bytes before two, and the primary alone of a three-byte letter.
    EXPECT_EQ(key_of("stus"), std::string("\x1B\x1C\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 16));
    EXPECT_EQ(key_of("stst"), std::string("\x1A\x1A\x07\x07\0\0\0\0\0\0\0\0\0\0\0\0", 16));
    // A sequence cut by the end of the source falls back to its bytes.
    EXPECT_EQ(key_of("ts"), std::string("\x1D\x1C\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 16));
}

TEST(MappedCollationTable, ReplacementMustNotChain) {
    collation_entry_st rows[2] = {
        {COLLATION_ENTRY_REPLACEMENT, {'x'}, {'y', 'y'}, 0, {}, 0},
        {COLLATION_ENTRY_REPLACEMENT, {'y'}, {'x', 'x'}, 0, {}, 0},
    };
    __init_collations();
    EXPECT_THROW(Mapped_Collation(&collation_table[0], Charset::ascii, rows, 2),
                 assert_failed_exception);
}

TEST(MappedCollationLookup, EveryNationalRowIsMapped) {
    __init_collations();
    int count = 0;
    for (const collation_st& row : collation_table) {
        if (row.group == COLLATION_GROUP_MACHINE) continue;
        ++count;
        Collation* c = GetCollationByCOLID(row.colid);
        ASSERT_NE(dynamic_cast<Mapped_Collation*>(c), nullptr) << row.name;
        EXPECT_EQ(c->charset, get_charset_by_codepage(row.codepage, false)) << row.name;
        EXPECT_EQ(GetCollationFromGroup(row.codepage, row.group), c) << row.name;
        EXPECT_EQ(collation_for_group(c->charset, String(collation_group_name(row.group))), c);
    }
    EXPECT_EQ(count, 48);
    String general("general");
    EXPECT_EQ(collation_for_group(get_charset_by_codepage(1252, false), general)->colid(), 2020);
    EXPECT_THROW(collation_for_group(get_charset_by_codepage(1251, false), general),
                 dbf_error_collation_not_supported);
}

}  // namespace
}  // namespace zobase
