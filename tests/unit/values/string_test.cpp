#include "values/string.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "text/charset.h"
#include "text/collation.h"
#include "values/error.h"

namespace zobase {
namespace {

const Charset* cp1252() { return get_charset_by_name("windows-1252"); }
const Charset* cp866() { return get_charset_by_name("ibm-866"); }

String bytes(const char* text, const Charset* cs) { return String::fromBytes(text, cs); }

std::string raw(const String& s) { return std::string(s.read(), s.size()); }

class StringTest : public ::testing::Test {
protected:
    void SetUp() override { __init_character_sets(); }
};

// ---- buffers, sharing, copy on write ----------------------------------------

TEST_F(StringTest, EmptyStringsShareOneBufferAndDifferInCharset) {
    String a;
    String b(0, Charset::utf8);
    EXPECT_EQ(a.get_buffer(), b.get_buffer());
    EXPECT_EQ(a.get_charset(), Charset::binary);
    EXPECT_EQ(b.get_charset(), Charset::utf8);
    // The shared empty buffer is never counted: copies and moves leave it alone.
    uint64_t refs = a.get_buffer()->refs.load();
    {
        String c(a);
        String moved("gone");
        String taker(std::move(moved));
        EXPECT_EQ(moved.get_buffer(), a.get_buffer());
        EXPECT_EQ(moved.size(), 0u);
        EXPECT_EQ(a.get_buffer()->refs.load(), refs);
        moved = String("back");  // a moved-from string is usable
        EXPECT_EQ(raw(moved), "back");
    }
    EXPECT_EQ(a.get_buffer()->refs.load(), refs);
    // Writing to an empty string never hands out the shared bytes.
    String d(0, Charset::utf8);
    EXPECT_NE(d.write(), a.read());
    EXPECT_EQ(a.get_buffer()->bytes[0], 0);
}

// One-byte strings live in constant buffers: nothing done with one may
// change what the next caller gets.
TEST_F(StringTest, SingleBytesAreConstantAndNeverChange) {
    for (int b = 0; b < 256; ++b) {
        String one = String::single_byte(static_cast<unsigned char>(b), cp1252());
        ASSERT_EQ(raw(one), std::string(1, static_cast<char>(b)));
        EXPECT_EQ(one.get_charset(), cp1252());
        EXPECT_EQ(one.length(), 1u);
    }
    String a = String::single_byte('A', Charset::utf8);
    uint64_t refs = a.get_buffer()->refs.load();
    String copy = a;
    EXPECT_EQ(a.get_buffer()->refs.load(), refs) << "never counted";
    copy.write()[0] = 'Z';
    EXPECT_NE(copy.get_buffer(), a.get_buffer());
    String joined = a;
    joined.add(String("bc"));
    EXPECT_EQ(raw(joined), "Abc");
    String terminated = String::single_byte('x', Charset::utf8);
    terminated.convert(Charset::utf16le, CON_TERMINATE | CON_UNSHARE, CSTRAN_STRICT);
    EXPECT_EQ(std::string(terminated.read(), 4), std::string("x\0\0\0", 4));
    EXPECT_EQ(raw(String::single_byte('A', Charset::utf8)), "A");
    EXPECT_EQ(raw(String::single_byte('B', Charset::utf8)), "B");
    EXPECT_EQ(raw(String::single_byte(0xE9, cp1252()).upper()), "\xc9");
    EXPECT_EQ(raw(String::single_byte('q', Charset::utf8).upper()), "Q");
    EXPECT_TRUE(String::is_constant(String().get_buffer()));
    EXPECT_FALSE(String::is_constant(String("abc").get_buffer()));
}

TEST_F(StringTest, WriteUnsharesAndKeepsViewOffset) {
    String a("hello world");
    String view = a.substr(6, 5);
    EXPECT_EQ(view.get_buffer(), a.get_buffer());
    EXPECT_EQ(a.get_buffer()->refs.load(), 2u);
    view.write()[0] = 'W';
    EXPECT_NE(view.get_buffer(), a.get_buffer());
    EXPECT_EQ(raw(view), "World");
    EXPECT_EQ(raw(a), "hello world");
    EXPECT_EQ(view.read() - view.get_buffer()->bytes, 6);
    EXPECT_EQ(a.get_buffer()->refs.load(), 1u);
    char* before = a.write();
    EXPECT_EQ(before, a.read()) << "a private buffer is written in place";
}

TEST_F(StringTest, CountsStayExactUnderConcurrentCopies) {
    String shared("compiled constant");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&shared] {
            for (int i = 0; i < 20000; ++i) String copy(shared);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(shared.get_buffer()->refs.load(), 1u);
}

TEST_F(StringTest, TrimOnSharedBufferCopiesNothingAndLeavesOthersAlone) {
    String a("  \tabc  ");
    String b(a);
    b.alltrim();
    EXPECT_EQ(raw(b), "abc");
    EXPECT_EQ(raw(a), "  \tabc  ");
    EXPECT_EQ(a.get_buffer(), b.get_buffer());
    EXPECT_EQ(a.get_buffer()->refs.load(), 2u);
}

TEST_F(StringTest, ConstructorsTagTheirCharsets) {
    String wide(u"h\u00e9");
    EXPECT_EQ(wide.get_charset(), Charset::utf16le);
    EXPECT_EQ(wide.size(), 4u);
    scan_string_st lexeme{"abcdef", 0, cp1252(), 3};
    EXPECT_EQ(raw(String::create_from_scan_string(lexeme)), "abc");
}

// ---- length, substr, align, resize ------------------------------------------------

TEST_F(StringTest, SubstrCountsCharactersAndClamps) {
    String utf8("a\xc3\xa9\xe2\x82\xac" "b");  // a é € b
    EXPECT_EQ(utf8.length(), 4u);
    EXPECT_EQ(raw(utf8.substr(1, 2)), "\xc3\xa9\xe2\x82\xac");
    EXPECT_EQ(raw(utf8.substr(3, 100)), "b");
    EXPECT_EQ(utf8.substr(9, 1).size(), 0u);
    EXPECT_EQ(utf8.substr(1, SIZE_MAX).length(), 3u);

    String single = bytes("abcdef", cp1252());
    EXPECT_EQ(raw(single.substr(2, 3)), "cde");
    EXPECT_EQ(raw(single.substr(4, SIZE_MAX)), "ef");
    EXPECT_EQ(single.substr(SIZE_MAX, SIZE_MAX).size(), 0u);

    String wide(U"abcd");
    EXPECT_EQ(wide.substr(1, 2).length(), 2u);
    EXPECT_EQ(wide.substr(1, 2).read(), wide.read() + 4);
}

TEST_F(StringTest, TrailingHalfUnitCountsAsOneCharacter) {
    String odd = String::fromBytes("a\0b", 3, Charset::utf16le);
    EXPECT_EQ(odd.length(), 2u);
    EXPECT_EQ(odd.substr(0, 1).size(), 2u);
    EXPECT_EQ(odd.substr(1, 1).size(), 1u);
}

TEST_F(StringTest, AlignCutsToCharactersAndStopsAtBadOne) {
    String utf8("\xc3\xa9\xc3\xa9\xc3\xa9");
    EXPECT_EQ(utf8.align(2), 2u);
    EXPECT_EQ(utf8.size(), 4u);
    String bad("a\xff" "bc");
    EXPECT_EQ(bad.align(3), 1u);
    EXPECT_EQ(bad.size(), 2u) << "the bad byte stays in the view";
    String single = bytes("abcdef", cp1252());
    EXPECT_EQ(single.align(4), 4u);
    EXPECT_EQ(single.align(10), 4u);
}

TEST_F(StringTest, ResizeStaysInsideTheBuffer) {
    String s(8, Charset::binary);
    s.resize(3);
    EXPECT_EQ(s.size(), 3u);
    s.resize(8);
    try {
        s.resize(9);
        FAIL();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "string resize heap overflow");
    }
    String tail = s.substr(6, 2);
    EXPECT_THROW(tail.resize(3), std::runtime_error);
}

// ---- trims --------------------------------------------------------------------------

TEST_F(StringTest, IsEmptyTestsBlankness) {
    EXPECT_TRUE(String("  \t").is_empty());
    EXPECT_TRUE(String(u"  \t").is_empty());
    EXPECT_TRUE(bytes("  \t", cp1252()).is_empty());
    EXPECT_TRUE(String().is_empty());
    EXPECT_FALSE(String(" a ").is_empty());
    EXPECT_FALSE(String::fromBytes("\xa0", Charset::binary).is_empty());
}

TEST_F(StringTest, ClassicTrimsRemoveOnlyTheirCharacters) {
    String s(" \t x");
    s.ltrim_classic_space();
    EXPECT_EQ(raw(s), "\t x");
    s.ltrim_classic_tab();
    EXPECT_EQ(raw(s), " x");
    String t("\t \tx ");
    t.ltrim_classic_space_or_tab();
    EXPECT_EQ(raw(t), "x ");
    String wide(u"\u3000 x \u3000");
    wide.alltrim();
    EXPECT_EQ(wide.u8str(), "x");
}

TEST_F(StringTest, RtrimEndlRemovesExactlyOneLineEnd) {
    auto endl = [](const char* text) {
        String s(text);
        s.rtrim_endl();
        return raw(s);
    };
    EXPECT_EQ(endl("abc\r\n"), "abc");
    EXPECT_EQ(endl("abc\n\r"), "abc");
    EXPECT_EQ(endl("abc\n\n"), "abc\n");
    EXPECT_EQ(endl("abc\r\r"), "abc\r");
    EXPECT_EQ(endl("\r"), "");
    EXPECT_EQ(endl("abc \t"), "abc");
    EXPECT_EQ(endl("abc\r\n  "), "abc");
    EXPECT_EQ(endl("abc"), "abc");
    String wide(u"ab\r\n");
    wide.rtrim_endl();
    EXPECT_EQ(wide.size(), 4u);
}

TEST_F(StringTest, LtrimUnitRemovesWholeRepetitions) {
    String s("abababx");
    s.ltrim(String(u"ab"));
    EXPECT_EQ(raw(s), "x");
    String partial("aba");
    partial.ltrim(String("ab"));
    EXPECT_EQ(raw(partial), "a");
    String none("xab");
    none.ltrim(String());
    EXPECT_EQ(raw(none), "xab");
}

struct trim_list_st {
    std::vector<String> items;
    size_t at = 0;
};

const String* first_trim(void* context) {
    auto* list = static_cast<trim_list_st*>(context);
    list->at = 0;
    return list->items.empty() ? nullptr : &list->items[0];
}

const String* next_trim(void* context) {
    auto* list = static_cast<trim_list_st*>(context);
    return ++list->at < list->items.size() ? &list->items[list->at] : nullptr;
}

TEST_F(StringTest, EnumeratedTrimsRestartAfterEachRemoval) {
    trim_list_st list{{String(""), String("xy"), String(u"z")}};
    String s("zxyzxyQxyz");
    s.ltrim(Collation::unicode_machine, first_trim, next_trim, &list);
    EXPECT_EQ(raw(s), "Qxyz");
    s.rtrim(Collation::unicode_machine, first_trim, next_trim, &list);
    EXPECT_EQ(raw(s), "Q");
    trim_list_st ci{{String("AB")}};
    String t("abAbQ");
    t.ltrim(Collation::unicode_machine_ci, first_trim, next_trim, &ci);
    EXPECT_EQ(raw(t), "Q");
    String shorter("y");
    shorter.rtrim(Collation::unicode_machine, first_trim, next_trim, &list);
    EXPECT_EQ(raw(shorter), "y") << "a tail shorter than the trim string is a mismatch";
}

// ---- conversion ---------------------------------------------------------------------

TEST_F(StringTest, ConvertChangesEncodingAndTerminates) {
    String s("\xc3\xa9t\xc3\xa9");
    s.convert(cp1252(), CON_TERMINATE, CSTRAN_STRICT);
    EXPECT_EQ(s.get_charset(), cp1252());
    EXPECT_EQ(raw(s), "\xe9t\xe9");
    ASSERT_LT(s.end(), s.get_buffer()->bytes + s.get_buffer()->capacity);
    EXPECT_EQ(*s.end(), 0);
    s.convert(Charset::utf16le, CON_TERMINATE | CON_EXACT, CSTRAN_STRICT);
    EXPECT_EQ(s.size(), 6u);
    EXPECT_EQ(s.end()[0], 0);
    EXPECT_EQ(s.end()[1], 0);
    EXPECT_EQ(s.u8str(), "\xc3\xa9t\xc3\xa9");
}

TEST_F(StringTest, ConvertToSameCharsetUnsharesOnlyWhenAsked) {
    String a("abc");
    String b(a);
    b.convert(Charset::utf8, 0, CSTRAN_STRICT);
    EXPECT_EQ(a.get_buffer(), b.get_buffer());
    b.convert(Charset::utf8, CON_UNSHARE, CSTRAN_STRICT);
    EXPECT_NE(a.get_buffer(), b.get_buffer());
    EXPECT_EQ(b.get_charset(), Charset::utf8);
    EXPECT_EQ(raw(b), "abc");
    EXPECT_EQ(b.get_buffer()->refs.load(), 1u);
}

TEST_F(StringTest, ConvertSameCharsetTerminatesAView) {
    String whole("abcdef");
    String head = whole.substr(0, 3);
    head.convert(Charset::utf8, CON_TERMINATE, CSTRAN_STRICT);
    EXPECT_EQ(raw(head), "abc");
    EXPECT_STREQ(head.read(), "abc");
    EXPECT_EQ(raw(whole), "abcdef");
}

TEST_F(StringTest, ConvertRecoveriesOnUnmappableText) {
    String euro("a\xe2\x82\xac");
    String strict(euro);
    EXPECT_THROW(strict.convert(Charset::ascii, CON_EXACT, CSTRAN_STRICT), cstran_chars_lost);
    EXPECT_THROW(strict.convert(Charset::ascii, 0, CSTRAN_STRICT), cstran_chars_lost);
    EXPECT_EQ(strict.get_charset(), Charset::utf8) << "a failed convert leaves the string";
    EXPECT_EQ(raw(strict), raw(euro));
    String lenient(euro);
    lenient.convert(Charset::ascii, 0, CSTRAN_SUBSTITUTE);
    EXPECT_EQ(raw(lenient), "a\x1a");
}

TEST_F(StringTest, ConvertFromBinaryVerifiesAndRetags) {
    String good = String::fromBytes("\xef\xbb\xbf" "ab", Charset::binary);
    String b(good);
    b.convert(get_charset_by_name("utf-8-bom"), 0, CSTRAN_STRICT);
    EXPECT_EQ(raw(b), "ab");
    EXPECT_EQ(b.get_buffer(), good.get_buffer()) << "retagging copies nothing";
    String plain(good);
    plain.convert(Charset::utf8, 0, CSTRAN_STRICT);
    EXPECT_EQ(plain.size(), 5u) << "only a charset with a mark skips one";
    plain.convert(Charset::binary, CON_UNSHARE | CON_TERMINATE, CSTRAN_STRICT);
    EXPECT_EQ(plain.get_buffer(), good.get_buffer()) << "to binary only retags";

    String bad = String::fromBytes("ab\xff", Charset::binary);
    try {
        String(bad).convert(Charset::utf8, 0, CSTRAN_STRICT);
        FAIL();
    } catch (const string_buffer_invalid_exception& e) {
        EXPECT_EQ(e.position, 3u);
    }
    String lenient(bad);
    lenient.convert(Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    EXPECT_EQ(lenient.get_charset(), Charset::utf8);
    EXPECT_EQ(lenient.size(), 3u);
}

TEST_F(StringTest, OutwardConversions) {
    String s = bytes("\xe9t\xe9", cp1252());
    EXPECT_EQ(s.u8str(), "\xc3\xa9t\xc3\xa9");
    EXPECT_EQ(s.u16str(), u"\u00e9t\u00e9");
    EXPECT_EQ(std::filesystem::path(s).native(), "\xc3\xa9t\xc3\xa9");
    EXPECT_EQ(s.get_charset(), cp1252()) << "conversions out work on a copy";

    char out[8];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(s.strcpy(out, sizeof out, Charset::utf8, CSTRAN_STRICT), 0);
    EXPECT_STREQ(out, "\xc3\xa9t\xc3\xa9");
    char small[4];
    EXPECT_NE(String("abcdef").strcpy(small, sizeof small, Charset::utf8, CSTRAN_STRICT), 0);
    EXPECT_STREQ(small, "abc");
    EXPECT_THROW(String("a").strcpy(small, 1, Charset::utf16le, CSTRAN_STRICT),
                 assert_failed_exception);
}

TEST_F(StringTest, CaseMappingKeepsCharsetAndLength) {
    String s = bytes("\xe9" "Ab", cp1252());
    String up = s.upper();
    EXPECT_EQ(up.get_charset(), cp1252());
    EXPECT_EQ(raw(up), "\xc9" "AB");
    EXPECT_EQ(raw(String(u"\u0130x").lower().substr(1, 1)), std::string("x\0", 2));
    EXPECT_EQ(String("\xc3\x9f").upper().u8str(), "\xc3\x9f") << "no special casing";
    EXPECT_EQ(raw(String::fromBytes("aB\xe9", Charset::binary).upper()), "AB\xe9");
}

// ASCII text maps eight bytes at a time: every character, at every place in
// a word, must map as ICU maps it; bytes above 0x7F in binary text stay.
TEST_F(StringTest, AsciiCaseMappingAgreesWithIcu) {
    std::string all;
    for (int c = 1; c < 128; ++c) all += static_cast<char>(c);
    for (size_t shift = 0; shift < 8; ++shift) {
        std::string text = std::string(shift, '.') + all;
        std::string up = raw(String(text.c_str()).upper()), low = raw(String(text.c_str()).lower());
        ASSERT_EQ(up.size(), text.size());
        for (size_t i = 0; i < text.size(); ++i) {
            EXPECT_EQ(static_cast<UChar32>(up[i]), u_toupper(text[i])) << int(text[i]);
            EXPECT_EQ(static_cast<UChar32>(low[i]), u_tolower(text[i])) << int(text[i]);
        }
    }
    std::string mixed = "abc\xe0\xfa\x80xyz@[`{ZZaa\xff";
    String binary = String::fromBytes(mixed.data(), mixed.size(), Charset::binary);
    EXPECT_EQ(raw(binary.upper()), "ABC\xe0\xfa\x80XYZ@[`{ZZAA\xff");
    EXPECT_EQ(raw(binary.lower()), "abc\xe0\xfa\x80xyz@[`{zzaa\xff");
    // The ASCII copy counts as ASCII; writing to it forgets that.
    String copy = String("hello world, hello").upper();
    EXPECT_EQ(copy.length(), 18u);
    copy.write()[0] = '\xc3';
    copy.write()[1] = '\xa9';
    EXPECT_EQ(copy.length(), 17u);
}

// ---- add ------------------------------------------------------------------------------

TEST_F(StringTest, AddFallsBackToUtf8WhenNoSingleByteCharsetHoldsBoth) {
    String west = bytes("\xe9", cp1252());   // é
    String east = bytes("\xe4", cp866());    // Cyrillic ф
    String joined(west);
    joined.add(east);
    EXPECT_EQ(joined.get_charset(), Charset::utf8);
    EXPECT_EQ(raw(joined), "\xc3\xa9\xd1\x84");
    EXPECT_EQ(joined.get_buffer()->capacity, 4u) << "sized exactly";
}

TEST_F(StringTest, AddTriesOwnCharsetThenTheOther) {
    String ascii_text = bytes("ab", cp1252());
    ascii_text.add(String("\xc3\xa9"));
    EXPECT_EQ(ascii_text.get_charset(), cp1252());
    EXPECT_EQ(raw(ascii_text), "ab\xe9");
    String russian = bytes("\xe4", cp866());
    String wide(u"\u20ac");  // not in ibm-866
    russian.add(wide);
    EXPECT_EQ(russian.get_charset(), Charset::utf16le);
}

TEST_F(StringTest, AddWithNocptransJoinsBytesUnconverted) {
    const Charset* raw1252 = get_charset_by_codepage(1252, true);
    String flagged = bytes("\xe9", raw1252);
    flagged.add(String("\xc3\xa9"));
    EXPECT_EQ(flagged.get_charset(), raw1252);
    EXPECT_EQ(raw(flagged), "\xe9\xc3\xa9");
    String text = bytes("\xe9", cp1252());
    text.add(String::fromBytes("\xff", Charset::binary));
    EXPECT_EQ(text.get_charset(), raw1252) << "the other side's flag is taken over";
    EXPECT_EQ(raw(text), "\xe9\xff");
}

// ---- appending in place, ASCII knowledge ----------------------------------------

TEST_F(StringTest, AppendingClaimsTheFreeTailWithoutDisturbingOtherHolders) {
    String base = String("x");
    for (int i = 0; i < 80; ++i) base.add(String("y"));  // grows past the exact-size range
    const string_buffer_st* buffer = base.get_buffer();
    String held = base;  // as a variable holds it while the VM adds to a copy
    String first = held;
    first.add(String("AB"));
    EXPECT_EQ(first.get_buffer(), buffer) << "the tail is claimed in place although shared";
    String second = held;
    second.add(String("CD"));
    EXPECT_NE(second.get_buffer(), buffer) << "the tail belongs to `first` now";
    EXPECT_EQ(raw(held), raw(base));
    EXPECT_EQ(raw(first), raw(base) + "AB");
    EXPECT_EQ(raw(second), raw(base) + "CD");
    String self = first;
    self.add(self);
    EXPECT_EQ(raw(self), raw(first) + raw(first));
    EXPECT_EQ(raw(first), raw(base) + "AB");
}

TEST_F(StringTest, BuildingPieceByPieceReallocatesRarely) {
    String text(0, Charset::utf8);
    const string_buffer_st* last = nullptr;
    int buffers = 0;
    for (int i = 0; i < 100000; ++i) {
        String copy = text;  // a second holder, as the variable is
        copy.add(String("abc"));
        text = copy;
        if (text.get_buffer() != last) ++buffers, last = text.get_buffer();
    }
    EXPECT_EQ(text.size(), 300000u);
    EXPECT_LT(buffers, 50) << "a copy per piece would make 100000";
}

TEST_F(StringTest, AsciiPiecesOfAsciiCompatibleCharsetsJoinWithoutConversion) {
    String text("caf");
    text.add(bytes("e", cp1252()));
    EXPECT_EQ(text.get_charset(), Charset::utf8);
    EXPECT_EQ(raw(text), "cafe");
    text.add(bytes("\xe9", cp1252()));
    EXPECT_EQ(text.get_charset(), Charset::utf8) << "a non-ASCII piece converts as before";
    EXPECT_EQ(raw(text), "cafe\xc3\xa9");
    String ebcdic = bytes("a", get_charset_by_name("ibm-37"));
    String joined("x");
    joined.add(ebcdic);
    EXPECT_EQ(raw(joined), "x/") << "ASCII bytes in EBCDIC are other characters";
}

TEST_F(StringTest, PositionsStayRightAroundTheAsciiKnowledge) {
    String text("abcdef");
    EXPECT_EQ(text.length(), 6u);
    EXPECT_EQ(raw(text.substr(2, 3)), "cde");
    String mixed = text;
    mixed.add(String("\xc3\xa9gh"));  // "abcdefégh", appended after the ASCII was known
    EXPECT_EQ(mixed.length(), 9u);
    EXPECT_EQ(raw(mixed.substr(6, 2)), "\xc3\xa9g");
    EXPECT_EQ(raw(mixed.substr(7, 5)), "gh");
    EXPECT_EQ(text.length(), 6u);
    EXPECT_EQ(raw(mixed.upper()), "ABCDEF\xc3\x89GH");
    EXPECT_EQ(raw(text.upper()), "ABCDEF");
    String owned("abcd");
    EXPECT_EQ(owned.length(), 4u);
    char* p = owned.write();  // the sole owner changes its bytes
    p[0] = '\xc3';
    p[1] = '\xa9';
    EXPECT_EQ(owned.length(), 3u);
    EXPECT_EQ(raw(owned.substr(1, 1)), "c");
    // ASCII appended after a non-ASCII piece is not taken for a prefix.
    String grown(std::string(70, 'a').c_str());
    grown.add(String("\xc3\xa9"));  // now with room to append in place
    EXPECT_EQ(grown.length(), 71u);
    const char* before = grown.read();
    grown.add(String("cd"));
    grown.add(String("ef"));
    EXPECT_EQ(grown.read(), before);
    EXPECT_EQ(grown.length(), 75u);
    EXPECT_EQ(raw(grown.substr(71, 3)), "cde");
    EXPECT_EQ(raw(grown.substr(68, 4)), "aa\xc3\xa9" "c");
    EXPECT_EQ(raw(grown.upper()).substr(68), "AA\xc3\x89" "CDEF");
    // Ranges starting at, inside and past the end of the ASCII prefix.
    String accent("abc\xc3\xa9xyz");
    EXPECT_EQ(raw(accent.substr(3, 1)), "\xc3\xa9");
    EXPECT_EQ(raw(accent.substr(2, 2)), "c\xc3\xa9");
    EXPECT_EQ(raw(accent.substr(0, 3)), "abc");
    EXPECT_EQ(raw(accent.substr(4, 10)), "xyz");
    EXPECT_EQ(raw(accent.substr(9, 1)), "");
    EXPECT_EQ(raw(accent.substr(1, SIZE_MAX)), "bc\xc3\xa9xyz");
    String tail = accent.substr(4, 3);  // a view behind the non-ASCII byte
    EXPECT_EQ(tail.length(), 3u);
    EXPECT_EQ(raw(tail.substr(1, 1)), "y");
    EXPECT_EQ(accent.length(), 7u);
}

TEST_F(StringTest, AnAppendNeverOverwritesATerminatorSomeoneReads) {
    String text(0, Charset::utf8);
    for (int i = 0; i < 70; ++i) text.add(String("a"));
    String terminated = text;
    terminated.convert(Charset::utf8, CON_TERMINATE, CSTRAN_SUBSTITUTE);
    String other = text;
    other.add(String("zz"));
    EXPECT_EQ(terminated.read()[terminated.size()], '\0');
    EXPECT_EQ(raw(other), raw(text) + "zz");
}

// ---- search and replace ------------------------------------------------------------------

struct hit_st {
    size_t index, needle, chars;
    std::string text;
};

bool record_hit(const String&, const char* begin, const char* end, size_t index, size_t needle,
                size_t chars, void* context) {
    static_cast<std::vector<hit_st>*>(context)->push_back({index, needle, chars, std::string(begin, end)});
    return true;
}

bool stop_at_first(const String&, const char*, const char*, size_t, size_t, size_t, void*) {
    return false;
}

TEST_F(StringTest, ScanReportsCharacterIndexesOnEveryPath) {
    struct case_st {
        String haystack;
        String needle;
    };
    std::vector<case_st> cases = {
        {bytes("xabyabab", cp1252()), bytes("ab", cp1252())},  // bytes
        {String(U"xabyabab"), String(U"ab")},                   // 32-bit units
        {String("xabyabab"), String(u"ab")},                    // decoded
    };
    for (const case_st& c : cases) {
        std::vector<hit_st> hits;
        size_t count = 10;
        EXPECT_EQ(c.haystack.scan(c.needle.as_const(), count, record_hit, &hits), 3u);
        ASSERT_EQ(hits.size(), 3u);
        EXPECT_EQ(hits[0].index, 11u);
        EXPECT_EQ(hits[1].index, 14u);
        EXPECT_EQ(hits[2].index, 16u);
        EXPECT_EQ(hits[0].needle, 1u);
        EXPECT_EQ(hits[0].chars, 2u);
        EXPECT_EQ(count, 18u) << "every character passed is counted";
    }
}

TEST_F(StringTest, ScanMatchesDoNotOverlapAndStopEarly) {
    size_t count = 0;
    EXPECT_EQ(String("aaaa").scan(String("aa").as_const(), count, nullptr, nullptr), 2u);
    EXPECT_EQ(String("aab").scan(String("ab").as_const(), count, nullptr, nullptr), 1u)
        << "a failed start resumes one character later";
    EXPECT_EQ(String("aaaa").scan(String("aa").as_const(), count, stop_at_first, nullptr), 1u);
    EXPECT_EQ(String(U"aaaa").scan(String(U"aa").as_const(), count, stop_at_first, nullptr), 1u);
    String single = bytes("aaaa", cp1252());
    EXPECT_EQ(single.scan(single.substr(0, 2).as_const(), count, stop_at_first, nullptr), 1u);
    EXPECT_THROW(single.scan(String().as_const(), count, nullptr, nullptr), assert_failed_exception);
}

TEST_F(StringTest, MultiScanPrefersTableOrder) {
    String s("abcab");
    String n1("abc"), n2("ab");
    const_string_st needles[] = {n2.as_const(), n1.as_const()};
    std::vector<hit_st> hits;
    size_t count = 0;
    EXPECT_EQ(s.scan(needles, 2, count, record_hit, &hits), 2u);
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_EQ(hits[0].text, "ab");
    EXPECT_EQ(hits[0].needle, 0u);
    EXPECT_EQ(hits[1].index, 3u);
    const_string_st reversed[] = {n1.as_const(), n2.as_const()};
    hits.clear();
    count = 0;
    s.scan(reversed, 2, count, record_hit, &hits);
    EXPECT_EQ(hits[0].text, "abc");
    EXPECT_EQ(hits[1].needle, 1u);
}

TEST_F(StringTest, StrstrSkipsMatchesAndReportsOffsets) {
    String s("\xc3\xa9-ab-ab");
    size_t index = 99, first = 99, last = 99;
    ASSERT_TRUE(s.strstr(String("ab").as_const(), index, first, last, 1));
    EXPECT_EQ(index, 5u);
    EXPECT_EQ(first, 6u);
    EXPECT_EQ(last, 8u);
    EXPECT_FALSE(s.strstr(String("ab").as_const(), index, first, last, 2));
    EXPECT_EQ(index, 5u) << "outputs left alone";
}

TEST_F(StringTest, ChrstrFindsCharactersAndFoldsCase) {
    String s("x\xc3\xa9Y");
    size_t index = 0, first = 0, last = 77;
    ASSERT_TRUE(s.chrstr(U'\u00e9', index, first, last));
    EXPECT_EQ(index, 1u);
    EXPECT_EQ(first, 1u);
    EXPECT_EQ(last, 3u);
    EXPECT_FALSE(s.chrstr(U'y', index, first, last));
    EXPECT_EQ(index, 0u);
    EXPECT_EQ(first, 0u);
    EXPECT_EQ(last, 3u) << "last is left as it was";
    ASSERT_TRUE(s.christr(U'y', index, first, last));
    EXPECT_EQ(index, 2u);
    ASSERT_TRUE(s.christr(U'\u00c9', index, first, last));
    EXPECT_EQ(index, 1u);
}

TEST_F(StringTest, StrtranAcrossCharsetsKeepsTheStringsCharset) {
    String s("a\xc3\xa9" "b\xc3\xa9");
    String result = s.strtran(String(u"\u00e9").as_const(), bytes("\xe8\xe8", cp1252()).as_const());
    EXPECT_EQ(result.get_charset(), Charset::utf8);
    EXPECT_EQ(raw(result), "a\xc3\xa8\xc3\xa8" "b\xc3\xa8\xc3\xa8");
    EXPECT_EQ(result.get_buffer()->capacity, result.size()) << "sized by the counting pass";
}

TEST_F(StringTest, StrtranNeverSharesAndHandlesEdges) {
    String s("abc");
    String same = s.strtran(String("x").as_const(), String("y").as_const());
    EXPECT_EQ(raw(same), "abc");
    EXPECT_NE(same.get_buffer(), s.get_buffer());
    EXPECT_EQ(raw(s.strtran(String("abc").as_const(), String().as_const())), "");
    EXPECT_EQ(raw(String("aXbXc").strtran(String("X").as_const(), String("--").as_const())),
              "a--b--c");
    String wide(U"aXb");
    EXPECT_EQ(wide.strtran(String(U"X").as_const(), String("yz").as_const()).u8str(), "ayzb");
}

TEST_F(StringTest, StrmultitranBeyondSixteenPairs) {
    std::vector<String> from, to;
    std::vector<const_string_st> needles, replacements;
    for (char c = 'a'; c < 'a' + 20; ++c) {
        from.push_back(String(std::string(1, c).c_str()));
        to.push_back(String(std::string(2, static_cast<char>(c - 32)).c_str()));
    }
    for (size_t i = 0; i < from.size(); ++i) needles.push_back(from[i].as_const());
    for (size_t i = 0; i < to.size(); ++i) replacements.push_back(to[i].as_const());
    String s("a-s-t");
    EXPECT_EQ(raw(s.strmultitran(needles.data(), 20, replacements.data())), "AA-SS-TT");
}

std::vector<std::string> explode(const char* text, const char* separator, bool keep = false) {
    String s(text), sep(separator);
    const_string_st needle = sep.as_const();
    std::vector<String> list;
    s.explode(&needle, 1, keep, list);
    std::vector<std::string> out;
    for (const String& piece : list) {
        EXPECT_EQ(piece.get_buffer(), s.get_buffer());
        out.push_back(raw(piece));
    }
    return out;
}

TEST_F(StringTest, ExplodeEdgeCases) {
    using list = std::vector<std::string>;
    EXPECT_EQ(explode("a,b,", ","), (list{"a", "b"}));
    EXPECT_EQ(explode(",a", ","), (list{"", "a"}));
    EXPECT_EQ(explode("a,,b", ","), (list{"a", "", "b"}));
    EXPECT_EQ(explode("", ","), list{});
    EXPECT_EQ(explode("abc", ","), list{"abc"});
    EXPECT_EQ(explode("a::b", "::", true), (list{"a::", "b"}));
}

// ---- free functions and Concat -------------------------------------------------------

TEST_F(StringTest, SymbolifyMakesIdentifiers) {
    bool changed = false;
    String symbol = symbolify(String("1a-b"), &changed, Charset::utf8);
    EXPECT_EQ(raw(symbol), "_a_b");
    EXPECT_TRUE(changed);
    EXPECT_EQ(raw(symbolify(String("\xc3\xa9t\xc3\xa9_1"), &changed, cp1252())), "\xe9t\xe9_1");
    EXPECT_FALSE(changed);
    symbolify(String(), &changed, Charset::utf8);
    EXPECT_TRUE(changed) << "empty input counts as changed";
    std::string longer(1500, 'x');
    EXPECT_EQ(symbolify(String(longer.c_str()), &changed, Charset::utf8).size(), 1020u);
    EXPECT_FALSE(changed);
}

TEST_F(StringTest, HexEncodingIsUppercaseHighNibbleFirst) {
    EXPECT_EQ(raw(stringToEncodedHexBinary(String::fromBytes("\x01\xab\xff", Charset::binary))), "01ABFF");
}

TEST_F(StringTest, ConcatOfOneCharsetAllocatesExactly) {
    StringBuilder builder;
    builder << "ab" << String("cd") << "ef";
    String joined = builder.to_string(true);
    EXPECT_EQ(raw(joined), "abcdef");
    EXPECT_EQ(joined.get_charset(), Charset::utf8);
    EXPECT_EQ(joined.get_buffer()->capacity, 7u);
    EXPECT_EQ(*joined.end(), 0);
}

TEST_F(StringTest, ConcatPassesASinglePieceThrough) {
    String piece("abc");
    Concat concat;
    concat.append(piece);
    EXPECT_EQ(concat.to_string(true).get_buffer(), piece.get_buffer());
    Concat empty;
    EXPECT_EQ(empty.to_string().get_charset(), Charset::ascii);
    Concat decided(cp1252());
    EXPECT_EQ(decided.to_string().get_charset(), cp1252());
}

TEST_F(StringTest, ConcatFallsBackToTheFailingPiecesCharset) {
    StringBuilder builder;
    builder << bytes("a\xe9", cp1252()) << String("\xd1\x84");  // ф is not in windows-1252
    String joined = builder.to_string();
    EXPECT_EQ(joined.get_charset(), Charset::utf8);
    EXPECT_EQ(raw(joined), "a\xc3\xa9\xd1\x84");
    EXPECT_EQ(builder.get_charset(), Charset::utf8) << "the settled charset is kept";
}

TEST_F(StringTest, ConcatFallsBackToUtf16WhenNoPieceCharsetHoldsAll) {
    StringBuilder builder;
    builder << bytes("\xe9", cp1252()) << bytes("\xe4", cp866()) << bytes("\xe9", cp1252());
    String joined = builder.to_string();
    EXPECT_EQ(joined.get_charset(), Charset::utf16le);
    EXPECT_EQ(joined.u8str(), "\xc3\xa9\xd1\x84\xc3\xa9");
}

}  // namespace
}  // namespace zobase
