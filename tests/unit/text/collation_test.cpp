#include "text/collation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "values/error.h"

namespace zobase {
namespace {

// Charsets come up with the collations; each helper makes sure of that
// before it reads a charset constant.
const Charset* codepage(int number) {
    __init_collations();
    return get_charset_by_codepage(number, false);
}
const Charset* cp1252() { return codepage(1252); }
const Charset* utf16le() {
    __init_collations();
    return Charset::utf16le;
}

String bytes(const std::string& text, const Charset* charset) {
    return String::fromBytes(text.data(), text.size(), charset);
}

String utf8(const std::string& text) {
    __init_collations();
    return bytes(text, Charset::utf8);
}

String binary(const std::string& text) {
    __init_collations();
    return bytes(text, Charset::binary);
}

const Charset* binary_charset() {
    __init_collations();
    return Charset::binary;
}

const Charset* utf8_charset() {
    __init_collations();
    return Charset::utf8;
}

const Collation& machine() { return *Collation::unicode_machine; }
const Collation& machine_ci() { return *Collation::unicode_machine_ci; }

TEST(CollationCompare, WholeStringsOrderShorterFirst) {
    EXPECT_EQ(machine().compare(utf8("AB"), utf8("AB")), 0);
    EXPECT_EQ(machine().compare(utf8("AB"), utf8("ABC")), -1);
    EXPECT_EQ(machine().compare(utf8("ABC"), utf8("AB")), 1);
    EXPECT_EQ(machine().compare(utf8(""), utf8("")), 0);
    EXPECT_LT(machine().compare(utf8("ABC"), utf8("ABD")), 0);
    EXPECT_GT(machine().compare(utf8("b"), utf8("aaaa")), 0);
    EXPECT_EQ(machine().compare(utf8("AB "), utf8("AB")), 1);
}

TEST(CollationCompare, ExactOffIsThePrefixRule) {
    EXPECT_EQ(machine().compare_exact_off(utf8("ABC"), utf8("AB")), 0);
    EXPECT_EQ(machine().compare_exact_off(utf8("AB"), utf8("ABC")), -1);
    EXPECT_EQ(machine().compare_exact_off(utf8("ABC"), utf8("")), 0);
    EXPECT_EQ(machine().compare_exact_off(utf8(""), utf8("A")), -1);
    EXPECT_LT(machine().compare_exact_off(utf8("ABC"), utf8("AC")), 0);
}

TEST(CollationCompare, ExactOnIgnoresTrailingBlanksOnly) {
    EXPECT_EQ(machine().compare_exact_on(utf8("AB  "), utf8("AB")), 0);
    EXPECT_EQ(machine().compare_exact_on(utf8("AB"), utf8("AB  ")), 0);
    EXPECT_EQ(machine().compare_exact_on(utf8("AB  x"), utf8("AB")), 1);
    EXPECT_EQ(machine().compare_exact_on(utf8("AB"), utf8("AB x")), -1);
    EXPECT_EQ(machine().compare_exact_on(utf8("ABC"), utf8("AB")), 1);
    // In text only the space is blank, not the zero byte.
    EXPECT_EQ(machine().compare_exact_on(utf8(std::string("AB\0", 3)), utf8("AB")), 1);
}

TEST(CollationCompare, ExactOnWithBinaryTreatsZeroAsBlank) {
    String padded = binary(std::string("AB\0\0", 4));
    EXPECT_EQ(machine().compare_exact_on(padded, binary("AB")), 0);
    EXPECT_EQ(machine().compare_exact_on(utf8("AB"), padded), 0);
    EXPECT_EQ(machine().compare_exact_on(binary("AB  "), binary("AB")), 1);
    EXPECT_EQ(machine().compare_exact_on(binary("AB"), binary("AB  ")), -1);
}

TEST(CollationCompare, MixedCharsetsCompareByCodePoint) {
    // e-acute is C3 A9 in UTF-8 and E9 in windows-1252: one code point.
    EXPECT_EQ(machine().compare(utf8("caf\xC3\xA9"), bytes("caf\xE9", cp1252())), 0);
    // Euro is byte 0x80 in windows-1252 but U+20AC, above y-diaeresis (U+FF,
    // bytes C3 BF): byte order and code point order disagree here.
    EXPECT_EQ(machine().compare(bytes("\x80", cp1252()), utf8("\xC3\xBF")), 1);
    EXPECT_EQ(machine().compare(utf8("\xC3\xBF"), bytes("\x80", cp1252())), -1);
    // UTF-16LE "AB" against UTF-8 "AB".
    EXPECT_EQ(machine().compare(bytes(std::string("A\0B\0", 4), utf16le()), utf8("AB")),
              0);
}

TEST(CollationCompare, BinaryOperandReadsBothSidesAsBytes) {
    // Without a binary side these differ in bytes yet are the same text.
    EXPECT_EQ(machine().compare(utf8("\xC3\xA9"), bytes("\xE9", cp1252())), 0);
    // With one, no conversion happens: the UTF-8 bytes meet the binary bytes.
    EXPECT_EQ(machine().compare(binary("\xC3\xA9"), utf8("\xC3\xA9")), 0);
    EXPECT_EQ(machine().compare(utf8("\xC3\xA9"), binary("\xC3\xA9")), 0);
    EXPECT_NE(machine().compare(binary("\xE9"), utf8("\xC3\xA9")), 0);
    EXPECT_EQ(machine().compare(binary("\xE9"), bytes("\xE9", cp1252())), 0);
    // Bytes from 0x80 up sort above every text code point.
    EXPECT_EQ(machine().compare(binary("\xFF"), binary("a")), 1);
    EXPECT_EQ(machine().compare(binary("\x7F"), binary("\x80")), -1);
}

TEST(CollationCompare, MachineIsCaseSensitive) {
    EXPECT_LT(machine().compare(utf8("A"), utf8("a")), 0);
    EXPECT_NE(machine().hash(utf8("abc")), machine().hash(utf8("ABC")));
}

TEST(CollationCaseInsensitive, FoldsCaseInCompareAndHash) {
    EXPECT_EQ(machine_ci().compare(utf8("a"), utf8("A")), 0);
    EXPECT_EQ(machine_ci().compare(utf8("Hello"), utf8("hELLO")), 0);
    EXPECT_EQ(machine_ci().hash(utf8("Hello")), machine_ci().hash(utf8("hELLO")));
    EXPECT_LT(machine_ci().compare(utf8("abc"), utf8("ABD")), 0);
    EXPECT_EQ(machine_ci().compare_exact_off(utf8("Abcdef"), utf8("aBC")), 0);
    // Beyond ASCII too, and across charsets: e-acute against E-acute.
    EXPECT_EQ(machine_ci().compare(utf8("\xC3\xA9t\xC3\xA9"), bytes("\xC9T\xC9", cp1252())), 0);
    EXPECT_EQ(machine_ci().hash(utf8("\xC3\xA9t\xC3\xA9")),
              machine_ci().hash(bytes("\xC9T\xC9", cp1252())));
}

TEST(CollationCaseInsensitive, LeavesBinaryBytesAlone) {
    // Sign-extended bytes lie outside Unicode; folding must not touch them.
    EXPECT_NE(machine_ci().compare(binary("\xE9"), binary("\xC9")), 0);
    EXPECT_EQ(machine_ci().compare(binary("a"), binary("A")), 0);
}

uint32_t fnv1a(std::initializer_list<uint32_t> code_points) {
    uint32_t h = 0x811C9DC5u;
    for (uint32_t c : code_points) h = (h ^ c) * 0x1000193u;
    return h;
}

TEST(CollationHash, IsFnv1aOverWholeCodePoints) {
    EXPECT_EQ(machine().hash(utf8("")), 0x811C9DC5u);
    EXPECT_EQ(machine().hash(utf8("a")), 0xE40C292Cu);
    // One step per code point, not per byte, whatever the charset.
    EXPECT_EQ(machine().hash(utf8("\xE2\x82\xAC")), fnv1a({0x20AC}));
    EXPECT_EQ(machine().hash(bytes("\x80", cp1252())), fnv1a({0x20AC}));
    EXPECT_EQ(machine().hash(bytes(std::string("x\0y\0", 4), utf16le())),
              machine().hash(utf8("xy")));
    EXPECT_EQ(machine_ci().hash(utf8("aB")), fnv1a({'A', 'B'}));
}

TEST(CollationLookup, StaticsAndIdsAgree) {
    Collation* first = GetCollationByCOLID(1);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, Collation::unicode_machine.get());
    EXPECT_EQ(GetCollationByCOLID(1002), Collation::unicode_machine_ci.get());
    EXPECT_NE(dynamic_cast<Unicode_Machine*>(first), nullptr);
    EXPECT_NE(dynamic_cast<Unicode_Machine_CI*>(GetCollationByCOLID(1002)), nullptr);
    __init_collations();
    EXPECT_EQ(GetCollationByCOLID(1), first);
    EXPECT_EQ(GetCollationByCOLID(999), nullptr);
    EXPECT_EQ(GetCollationByCOLID(0), nullptr);
}

TEST(CollationLookup, MachineRowsAreGenericWithTheirCharset) {
    Collation* c = GetCollationByCOLID(20);
    ASSERT_NE(c, nullptr);
    EXPECT_NE(dynamic_cast<Generic_Machine_Coll*>(c), nullptr);
    EXPECT_EQ(c->charset, cp1252());
    EXPECT_EQ(c->pad, ' ');
    EXPECT_EQ(c->key_size_factor, 1u);
    EXPECT_STREQ(c->name(), "windows_1252_machine");
    EXPECT_EQ(GetCollationByCOLID(2)->charset, utf8_charset());
}

TEST(CollationLookup, TableIsConsistent) {
    for (const collation_st& row : collation_table) {
        int expected_group = row.colid < 1000 ? COLLATION_GROUP_MACHINE : row.colid / 1000;
        EXPECT_EQ(row.group, expected_group) << row.name;
        for (const collation_st& other : collation_table)
            if (&other != &row) {
                EXPECT_NE(other.colid, row.colid) << row.name;
            }
    }
}

TEST(CollationLookup, ByCodepageAndGroup) {
    EXPECT_EQ(GetCollationFromGroup(1255, COLLATION_GROUP_GENERAL), nullptr);
    ASSERT_NE(GetCollationFromGroup(1255, COLLATION_GROUP_MACHINE), nullptr);
    EXPECT_EQ(GetCollationFromGroup(1255, COLLATION_GROUP_MACHINE)->colid(), 23);
    EXPECT_EQ(GetCollationFromGroup(437, COLLATION_GROUP_MACHINE)->colid(), 3);
    EXPECT_EQ(GetCollationFromGroup(12345, COLLATION_GROUP_MACHINE), nullptr);
}

TEST(CollationForGroup, NamesMatchWithoutCase) {
    EXPECT_EQ(collation_for_group(cp1252(), utf8("MACHINE"))->colid(), 20);
    EXPECT_EQ(collation_for_group(cp1252(), utf8("machine"))->colid(), 20);
    EXPECT_EQ(collation_for_group(cp1252(), utf8(""))->colid(), 20);
    EXPECT_EQ(collation_for_group(utf8_charset(), utf8("Machine"))->colid(), 2);
    String wide = bytes(std::string("m\0a\0c\0h\0i\0n\0e\0", 14), utf16le());
    EXPECT_EQ(collation_for_group(codepage(850), wide)->colid(), 6);
}

TEST(CollationForGroup, UnknownNameOrMissingGroupRaises) {
    EXPECT_THROW(collation_for_group(cp1252(), utf8("BOGUS")), dbf_error_collation_not_supported);
    EXPECT_THROW(collation_for_group(cp1252(), utf8("MACHIN")), dbf_error_collation_not_supported);
    EXPECT_THROW(collation_for_group(codepage(1255), utf8("GENERAL")),
                 dbf_error_collation_not_supported);
    EXPECT_THROW(collation_for_group(nullptr, utf8("MACHINE")), dbf_error_collation_not_supported);
    EXPECT_THROW(collation_for_group(binary_charset(), utf8("MACHINE")),
                 dbf_error_collation_not_supported);
}

std::string key_of(const Collation* c, const String& text, bool full_length, size_t length) {
    char key[64];
    memset(key, '#', sizeof key);
    uint64_t n = c->create_char_key(text, full_length, key, length);
    return std::string(key, n);
}

TEST(CollationKey, GenericPadsUnderFullLength) {
    const Collation* c = GetCollationByCOLID(20);
    EXPECT_EQ(key_of(c, bytes("AB", cp1252()), true, 5), "AB   ");
    EXPECT_EQ(key_of(c, bytes("AB", cp1252()), false, 5), "AB");
    EXPECT_EQ(key_of(c, bytes("ABCDEFG", cp1252()), true, 4), "ABCD");
    EXPECT_EQ(key_of(c, bytes("ABCDEFG", cp1252()), false, 4), "ABCD");
    EXPECT_EQ(key_of(c, bytes("", cp1252()), true, 3), "   ");
}

TEST(CollationKey, ConvertsIntoTheCollationCharset) {
    const Collation* c = GetCollationByCOLID(20);
    EXPECT_EQ(key_of(c, utf8("\xC3\xA9\xE2\x82\xAC"), false, 10), "\xE9\x80");
    EXPECT_EQ(key_of(c, utf8("\xC3\xA9"), true, 3), "\xE9  ");
    // Binary bytes go in as they are.
    EXPECT_EQ(key_of(c, binary("\xC3\xA9"), false, 10), "\xC3\xA9");
    // Omega has no place in windows-1252.
    EXPECT_THROW(key_of(c, utf8("\xCE\xA9"), false, 10), collation_not_impl);
}

TEST(CollationKey, UnicodeMachineCopiesRawBytes) {
    EXPECT_EQ(key_of(Collation::unicode_machine, utf8("\xC3\xA9z"), false, 10), "\xC3\xA9z");
    EXPECT_EQ(key_of(Collation::unicode_machine, utf8("abcdef"), true, 3), "abc");
}

TEST(CollationStartup, ShutdownClearsAndLookupRemakes) {
    // In a child process, so that no other test sees the collations vanish.
    EXPECT_EXIT(
        {
            int before = GetCollationByCOLID(20)->colid();
            __shutdown_collations();
            bool remade = Collation::unicode_machine->compare(utf8("a"), utf8("a")) == 0;
            Collation* after = GetCollationByCOLID(20);
            std::_Exit(remade && after != nullptr && after->colid() == before ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(CollationStartup, StringLessThanOrdersByCodePoint) {
    StringLessThan_Unicode_Machine less;
    EXPECT_TRUE(less(utf8("AB"), utf8("ABC")));
    EXPECT_FALSE(less(utf8("ABC"), utf8("AB")));
    EXPECT_FALSE(less(utf8("AB"), utf8("AB")));
    EXPECT_TRUE(StringEqual_Unicode_Machine_CI()(utf8("Ab"), utf8("aB")));
}

}  // namespace
}  // namespace zobase
