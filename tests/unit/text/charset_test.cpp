#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "text/charset.h"
#include "text/charset_classes.h"
#include "values/error.h"

namespace zobase {
namespace {

const Charset* by_name(const char* name) {
    const Charset* charset = get_charset_by_name(name);
    EXPECT_NE(charset, nullptr) << name;
    return charset;
}

struct converted_st {
    CstranError result;
    std::string bytes;
};

// Sizes with calculate, then converts into a buffer of exactly that size.
converted_st convert_exact(const Charset* from, const std::string& text, const Charset* to,
                           CstranRecovery recovery) {
    size_t size = 0;
    CstranError sized = from->calculate(text.data(), text.data() + text.size(), to, size, recovery);
    if (sized != 0) return {sized, ""};
    std::string out(size, '\0');
    char* dst = out.data();
    CstranError result =
        from->convert(text.data(), text.data() + text.size(), dst, out.data() + size, to, recovery);
    EXPECT_EQ(dst, out.data() + size) << "calculate and convert disagree";
    return {result, out};
}

std::string utf16le(std::u16string text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 2);
}

std::vector<char32_t> decode_all(const Charset* charset, const std::string& bytes,
                                 std::vector<size_t>* steps = nullptr) {
    std::vector<char32_t> chars;
    const char* p = bytes.data();
    const char* end = p + bytes.size();
    while (p < end) {
        const char* start = p;
        chars.push_back(charset->next(p, end));
        if (steps) steps->push_back(static_cast<size_t>(p - start));
    }
    return chars;
}

TEST(CharsetRegistry, ConstantsAreSetByTheFirstLookUp) {
    ASSERT_NE(GetCharsetByCSID(36), nullptr);
    EXPECT_EQ(GetCharsetCSID(Charset::binary), 65538u);
    EXPECT_TRUE(Charset::binary->nocptrans);
    EXPECT_STREQ(Charset::ascii->name(), "ascii");
    EXPECT_EQ(GetCharsetByCSID(1), Charset::ascii);
    EXPECT_EQ(GetCharsetByCSID(2), Charset::binary) << "binary exists only as nocptrans";
    EXPECT_EQ(get_charset_by_name("binary"), Charset::binary);
    EXPECT_EQ(Charset::utf8, GetCharsetByCSID(36));
    EXPECT_EQ(Charset::utf16le, GetCharsetByCSID(37));
    EXPECT_EQ(Charset::utf32le, GetCharsetByCSID(39));
    EXPECT_TRUE(Charset::utf32le->fixed_width);
    EXPECT_FALSE(Charset::utf16le->fixed_width);
    __init_character_sets();
    EXPECT_EQ(Charset::utf8, GetCharsetByCSID(36)) << "a second init must change nothing";
}

TEST(CharsetRegistry, NamesAndAliases) {
    EXPECT_EQ(by_name("UTF-8"), Charset::utf8);
    EXPECT_EQ(by_name("utf8"), Charset::utf8);
    EXPECT_EQ(by_name("Utf-8"), Charset::utf8);
    const Charset* with_bom = by_name("utf-8-bom");
    EXPECT_NE(with_bom, Charset::utf8);
    EXPECT_EQ(GetCharsetCSID(with_bom), 59u);
    EXPECT_STREQ(with_bom->row.icu_name, Charset::utf8->row.icu_name);
    EXPECT_EQ(with_bom->row.bom_size, 3u);
    EXPECT_EQ(by_name("UTF16-LE"), Charset::utf16le);
    EXPECT_EQ(by_name("utf32le"), Charset::utf32le);
    EXPECT_EQ(GetCharsetCSID(by_name("utf16be")), 38u);
    EXPECT_EQ(GetCharsetCSID(by_name("UTF7")), 35u);
    EXPECT_EQ(get_charset_by_name("no-such-charset"), nullptr);
    EXPECT_EQ(get_charset_by_name(static_cast<const char*>(nullptr)), nullptr);
}

TEST(CharsetRegistry, NameGivenAsStringInAnyCharset) {
    std::string name = utf16le(u"Windows-1252");
    String text = String::fromBytes(name.data(), name.size(), Charset::utf16le);
    EXPECT_EQ(get_charset_by_name(text), by_name("windows-1252"));
    std::string accented = utf16le(u"wíndows-1252");
    String not_ascii = String::fromBytes(accented.data(), accented.size(), Charset::utf16le);
    EXPECT_EQ(get_charset_by_name(not_ascii), nullptr);
}

TEST(CharsetRegistry, CodePagesAndTheNocptransVariant) {
    const Charset* plain = get_charset_by_codepage(1252, false);
    const Charset* raw = get_charset_by_codepage(1252, true);
    ASSERT_NE(plain, nullptr);
    ASSERT_NE(raw, nullptr);
    EXPECT_NE(plain, raw);
    EXPECT_EQ(plain, by_name("windows-1252"));
    EXPECT_FALSE(plain->nocptrans);
    EXPECT_TRUE(raw->nocptrans);
    EXPECT_EQ(GetCharsetCSID(raw), 48u | CSID_NOCPTRANS);
    EXPECT_EQ(GetCharsetByCSID(48 | CSID_NOCPTRANS), raw);
    EXPECT_STREQ(raw->name(), "windows-1252");
    EXPECT_EQ(GetCharsetCPID(raw), 1252);
    EXPECT_EQ(GetCharsetCSID(get_charset_by_codepage(895, false)), 33u);
    EXPECT_EQ(GetCharsetCSID(get_charset_by_codepage(620, false)), 34u);
    EXPECT_EQ(get_charset_by_codepage(1200, false), nullptr) << "1200 is a Windows code page only";
    EXPECT_EQ(GetCharsetByCSID(64), nullptr);
    EXPECT_EQ(GetCharsetByCSID(0), nullptr);
}

TEST(CharsetRegistry, WindowsCodePages) {
    EXPECT_EQ(GetCharsetByWindowsCodepage(1200), Charset::utf16le);
    EXPECT_EQ(GetCharsetByWindowsCodepage(20127), Charset::ascii);
    EXPECT_EQ(GetCharsetCSID(GetCharsetByWindowsCodepage(28591)), 4u);
    try {
        GetCharsetByWindowsCodepage(4242);
        FAIL() << "an unknown Windows code page must raise";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number, 1001);
    }
}

TEST(CharsetRegistry, CountryAndLanguage) {
    EXPECT_EQ(get_charset_by_country_lang("cs_CZ"), by_name("windows-1250"));
    EXPECT_EQ(get_charset_by_country_lang("ja_JP"), by_name("windows-932"));
    EXPECT_EQ(get_charset_by_country_lang("ru_RU"), by_name("windows-1251"));
    EXPECT_EQ(get_charset_by_country_lang("xx_YY"), by_name("ibm-437"));
    EXPECT_NE(get_charset_by_country_lang(nullptr), nullptr) << "the default locale always gives one";
}

TEST(CharsetRegistry, ListsAllRowsInTableOrderAndEveryRowConverts) {
    std::vector<std::string> names;
    list_supported_charset(&names, [](void* context, const char* name) {
        static_cast<std::vector<std::string>*>(context)->push_back(name);
    });
    ASSERT_EQ(names.size(), 63u);
    EXPECT_EQ(names.front(), "ascii");
    EXPECT_EQ(names[36], "utf-8-bom");
    EXPECT_EQ(names.back(), "x-mac-centraleu");
    for (const std::string& name : names) {
        const Charset* charset = by_name(name.c_str());
        ASSERT_NE(charset, nullptr);
        EXPECT_EQ(charset->name(), name);
        if (charset == Charset::binary) continue;
        // A round trip through each charset proves its converter opened.
        converted_st there = convert_exact(Charset::utf8, "Az", charset, CSTRAN_STRICT);
        ASSERT_EQ(there.result, 0) << name;
        EXPECT_EQ(convert_exact(charset, there.bytes, Charset::utf8, CSTRAN_STRICT).bytes, "Az")
            << name;
    }
}

TEST(CharsetDecoders, Utf8RejectsOverlongsSurrogatesAndTruncation) {
    std::vector<size_t> steps;
    auto chars = decode_all(Charset::utf8, "\xC0\x80" "\xE0\x80\xAF" "\xED\xA0\x80" "A", &steps);
    // Each bad lead is consumed alone, the stray trail bytes after it likewise.
    for (size_t i = 0; i + 1 < chars.size(); ++i) EXPECT_EQ(chars[i], U'\uFFFD') << i;
    EXPECT_EQ(chars.back(), U'A');
    EXPECT_EQ(chars.size(), 9u);

    chars = decode_all(Charset::utf8, "\xF4\x90\x80\x80");
    EXPECT_EQ(chars.front(), U'\uFFFD') << "above U+10FFFF";

    steps.clear();
    chars = decode_all(Charset::utf8, "\xE2\x82" "A\xF0\x9F\x98", &steps);
    ASSERT_EQ(chars.size(), 3u);
    EXPECT_EQ(chars[0], U'\uFFFD');
    EXPECT_EQ(steps[0], 2u) << "the valid prefix goes with the error";
    EXPECT_EQ(chars[1], U'A');
    EXPECT_EQ(chars[2], U'\uFFFD');
    EXPECT_EQ(steps[2], 3u);

    EXPECT_EQ(decode_all(Charset::utf8, "\xF0\x9F\x98\x80\xC3\xA9"),
              (std::vector<char32_t>{U'\U0001F600', U'é'}));
}

TEST(CharsetDecoders, Utf16LeLoneSurrogatesAndOddTail) {
    std::vector<size_t> steps;
    std::string text = utf16le(u"\xD83D" u"A" u"\xDE00" u"\xD83D\xDE00") + "Z";
    auto chars = decode_all(Charset::utf16le, text, &steps);
    EXPECT_EQ(chars, (std::vector<char32_t>{U'\uFFFD', U'A', U'\uFFFD', U'\U0001F600', U'\uFFFD'}));
    EXPECT_EQ(steps, (std::vector<size_t>{2, 2, 2, 4, 1}));
    EXPECT_EQ(decode_all(Charset::utf16le, utf16le(u"\xD83D")), std::vector<char32_t>{U'\uFFFD'});
}

TEST(CharsetDecoders, Utf32LeAndBinary) {
    std::vector<size_t> steps;
    auto chars = decode_all(Charset::utf32le, std::string("\x00\xF6\x01\x00" "ab\x00", 7), &steps);
    EXPECT_EQ(chars, (std::vector<char32_t>{U'\U0001F600', U'\uFFFD'}));
    EXPECT_EQ(steps, (std::vector<size_t>{4, 3}));

    chars = decode_all(Charset::binary, "\xFF" "A");
    EXPECT_NE(chars[0], U'\u00FF');
    EXPECT_EQ(chars[0], static_cast<char32_t>(-1));
    EXPECT_EQ(chars[1], U'A');
    const char* end = "";
    EXPECT_THROW(Charset::utf8->next(end, end), assert_failed_exception);
}

TEST(CharsetDecoders, IcuDecoderSeesUnmappedBytesAsUndecodable) {
    const Charset* shift_jis = by_name("windows-932");
    auto chars = decode_all(shift_jis, "\x93\xFA" "A\x81");
    EXPECT_EQ(chars, (std::vector<char32_t>{U'日', U'A', U'\uFFFD'}));
    EXPECT_EQ(decode_all(by_name("iso-8859-6"), "\xA1"), std::vector<char32_t>{U'\uFFFD'})
        << "not the converter's substitute U+001A";
}

TEST(CharsetDecoders, VerifyCountsGoodAndBad) {
    size_t good_bytes = 0, good_chars = 0, bad = 0, first_bad = 0;
    std::string text = "a\xC3\xA9\xFF" "b\x80";
    Charset::utf8->verify(text.data(), text.size(), good_bytes, good_chars, bad, first_bad);
    EXPECT_EQ(good_bytes, 4u);
    EXPECT_EQ(good_chars, 3u);
    EXPECT_EQ(bad, 2u);
    EXPECT_EQ(first_bad, 4u);

    good_bytes = good_chars = bad = first_bad = 0;
    by_name("windows-1252")->verify("ab\x81", 3, good_bytes, good_chars, bad, first_bad);
    EXPECT_EQ(good_chars, 2u);
    EXPECT_EQ(first_bad, 3u);

    good_bytes = good_chars = bad = first_bad = 0;
    Charset::binary->verify("\xFF\x81", 2, good_bytes, good_chars, bad, first_bad);
    EXPECT_EQ(good_bytes, 2u);
    EXPECT_EQ(bad, 0u);
}

TEST(CharsetStepping, PrevStepsBackOverWholeCharacters) {
    std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const char* begin = text.data();
    const char* p = begin + text.size();
    EXPECT_EQ(Charset::utf8->prev(p, begin), U'\U0001F600');
    EXPECT_EQ(p - begin, 6);
    EXPECT_EQ(Charset::utf8->prev(p, begin), U'€');
    EXPECT_EQ(Charset::utf8->prev(p, begin), U'é');
    EXPECT_EQ(Charset::utf8->prev(p, begin), U'a');
    EXPECT_EQ(p, begin);
    EXPECT_THROW(Charset::utf8->prev(p, begin), assert_failed_exception);

    std::string wide = utf16le(u"x\xD83D\xDE00");
    p = wide.data() + wide.size();
    EXPECT_EQ(Charset::utf16le->prev(p, wide.data()), U'\U0001F600');
    EXPECT_EQ(p - wide.data(), 2);

    // The trail byte of 本 is '{' on its own.
    std::string sjis = "A\x93\xFA\x96\x7B";
    p = sjis.data() + sjis.size();
    EXPECT_EQ(by_name("windows-932")->prev(p, sjis.data()), U'本');
    EXPECT_EQ(by_name("windows-932")->prev(p, sjis.data()), U'日');
    EXPECT_EQ(p - sjis.data(), 1);

    std::string broken = "a\xC3\xA9\x80\x80";
    p = broken.data() + broken.size();
    EXPECT_EQ(Charset::utf8->prev(p, broken.data()), U'é') << "stray trail bytes are stepped over";
    EXPECT_EQ(p - broken.data(), 1);
}

TEST(CharsetStepping, CountAndScan) {
    std::string text = "a\xC3\xA9\xE2\x82\xAC";
    EXPECT_EQ(Charset::utf8->count_chars(text.data(), text.data() + text.size()), 3u);
    EXPECT_EQ(Charset::utf32le->count_chars(text.data(), text.data() + 4), 1u);
    const char* p = "\xFF";
    EXPECT_FALSE(Charset::utf8->scan(p, p + 1));
    p = "\xC3\xA9";
    EXPECT_EQ(Charset::utf8->peek_next(p, p + 2), U'é');
}

TEST(CharsetConversion, CalculateSizes) {
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    size_t size = 99;
    EXPECT_EQ(Charset::utf8->calculate(text.data(), text.data() + text.size(), Charset::utf16le,
                                       size, CSTRAN_STRICT), 0);
    EXPECT_EQ(size, 10u);
    Charset::utf8->calculate(text.data(), text.data() + text.size(), Charset::utf32le, size,
                             CSTRAN_STRICT);
    EXPECT_EQ(size, 16u);
    Charset::binary->calculate(text.data(), text.data() + text.size(), Charset::utf32le, size,
                               CSTRAN_STRICT);
    EXPECT_EQ(size, text.size());
    EXPECT_EQ(Charset::utf8->calculate(text.data(), text.data() + text.size(),
                                       by_name("windows-1252"), size, CSTRAN_STRICT), 1);
    EXPECT_EQ(Charset::utf8->calculate(text.data(), text.data(), Charset::utf16le, size,
                                       CSTRAN_STRICT), 0);
    EXPECT_EQ(size, 0u);
}

TEST(CharsetConversion, SubstituteAndStrict) {
    const Charset* windows = by_name("windows-1252");
    const Charset* dos = by_name("ibm-850");
    const Charset* cyrillic = by_name("ibm-866");
    const std::string euro = "\xE2\x82\xAC";

    EXPECT_EQ(convert_exact(Charset::utf8, "x" + euro, Charset::ascii, CSTRAN_SUBSTITUTE).bytes,
              "x\x1A");
    EXPECT_EQ(convert_exact(Charset::utf8, euro, Charset::ascii, CSTRAN_STRICT).result, 1);
    EXPECT_EQ(convert_exact(Charset::utf8, euro + "\xC3\xA9", windows, CSTRAN_STRICT).bytes,
              "\x80\xE9");
    EXPECT_EQ(convert_exact(Charset::utf8, euro + "\xC3\xA9", dos, CSTRAN_SUBSTITUTE).bytes,
              "\x7F\x82");
    EXPECT_EQ(convert_exact(Charset::utf8, euro, dos, CSTRAN_STRICT).result, 1);
    EXPECT_EQ(convert_exact(Charset::utf8, "\xF0\x9F\x98\x80", dos, CSTRAN_SUBSTITUTE).bytes,
              "\x7F") << "a surrogate pair is one character";

    EXPECT_EQ(convert_exact(Charset::utf8, "\xD0\x96x", cyrillic, CSTRAN_STRICT).bytes, "\x86x");
    EXPECT_EQ(convert_exact(Charset::utf8, euro, cyrillic, CSTRAN_STRICT).result, 1);
    EXPECT_EQ(convert_exact(Charset::utf8, euro, cyrillic, CSTRAN_SUBSTITUTE).bytes.size(), 1u);
    EXPECT_EQ(convert_exact(cyrillic, "\x86", Charset::utf16le, CSTRAN_STRICT).bytes,
              utf16le(u"Ж"));
    EXPECT_EQ(convert_exact(dos, "\x82", windows, CSTRAN_STRICT).bytes, "\xE9");
    EXPECT_EQ(convert_exact(windows, "\xE9", cyrillic, CSTRAN_STRICT).result, 1);
    EXPECT_EQ(convert_exact(by_name("windows-932"), "\x93\xFA\x96\x7B", Charset::utf8,
                            CSTRAN_STRICT).bytes, "日本");
    EXPECT_EQ(convert_exact(Charset::utf8, "\xFF", Charset::utf16le, CSTRAN_SUBSTITUTE).bytes,
              utf16le(u"\xFFFD"));
}

TEST(CharsetConversion, LongTextCrossesThePivotBothWays) {
    std::string text;
    for (int i = 0; i < 5000; ++i) text += "\xC3\xA9" "a\xE2\x82\xAC";
    const Charset* windows = by_name("windows-1252");
    // UTF-7 keeps state between characters: calculate must size exactly what convert writes.
    for (const Charset* middle : {windows, Charset::utf16le, by_name("utf-16be"),
                                  by_name("ibm-1375"), by_name("utf-7")}) {
        converted_st there = convert_exact(Charset::utf8, text, middle, CSTRAN_STRICT);
        ASSERT_EQ(there.result, 0) << middle->name();
        converted_st back = convert_exact(middle, there.bytes, Charset::utf8, CSTRAN_STRICT);
        ASSERT_EQ(back.result, 0) << middle->name();
        EXPECT_TRUE(back.bytes == text) << middle->name();
    }
    // Double-byte characters cut at the decoder's span ends must be continued.
    std::string japanese;
    for (int i = 0; i < 3000; ++i) japanese += "日本a";
    converted_st there = convert_exact(Charset::utf8, japanese, by_name("windows-932"), CSTRAN_STRICT);
    EXPECT_EQ(there.bytes.size(), 15000u);
    EXPECT_TRUE(convert_exact(by_name("windows-932"), there.bytes, Charset::utf8, CSTRAN_STRICT).bytes ==
                japanese);
}

TEST(CharsetConversion, FullOutputStopsAtACharacterBoundary) {
    std::string text;
    for (int i = 0; i < 6; ++i) text += "\xC3\xA9";
    const std::pair<const char*, int> cases[] = {{"utf-16le", 4}, {"windows-1252", 5}, {"utf-16be", 4}};
    for (const auto& [name, fitting] : cases) {
        char out[5];
        char* dst = out;
        const char* src = text.data();
        EXPECT_EQ(Charset::utf8->convert_stream(src, text.data() + text.size(), dst, out + 5,
                                                by_name(name), CSTRAN_STRICT), -1) << name;
        EXPECT_EQ(dst - out, fitting) << name;
    }
    char out[2];
    char* dst = out;
    EXPECT_EQ(Charset::binary->convert("abc", "abc" + 3, dst, out + 2, Charset::utf8,
                                       CSTRAN_STRICT), -1);
    EXPECT_EQ(std::string(out, 2), "ab");
}

TEST(CharsetTables, AgreeWithTheConvertersOfTheSameCodePage) {
    for (const char* name : {"iso-8859-1", "windows-1250", "windows-1251", "windows-1252", "ibm-850"}) {
        const Charset* manual = by_name(name);
        std::unique_ptr<Charset> icu(load_generic_icu_charset(&manual->row, false));
        for (int byte = 0x20; byte < 0x100; ++byte) {
            if (byte == 0x7F) continue;
            const char text[1] = {static_cast<char>(byte)};
            char32_t expected = icu->peek_next(text, text + 1);
            char32_t actual = manual->peek_next(text, text + 1);
            if (actual == U'\uFFFD') continue;
            EXPECT_EQ(actual, expected) << name << " byte " << byte;
        }
    }
    const char* letters = "\x80\x86\x9C";
    EXPECT_EQ(by_name("kamenicky")->peek_next(letters, letters + 1), U'Č');
    EXPECT_EQ(by_name("mazovia")->peek_next(letters + 1, letters + 2), U'ą');
    EXPECT_EQ(by_name("mazovia")->peek_next(letters + 2, letters + 3), U'Ł');
    EXPECT_EQ(convert_exact(Charset::utf8, "\xC5\x99", by_name("kamenicky"), CSTRAN_STRICT).bytes,
              "\xA9");
}

TEST(CharsetThreads, EachThreadUsesItsOwnConverter) {
    const Charset* cyrillic = by_name("ibm-866");
    std::string text;
    for (int i = 0; i < 3000; ++i) text += "\xD0\x96\xD0\xB4";
    std::vector<std::thread> threads;
    std::vector<int> failures(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 20; ++round) {
                converted_st there = convert_exact(Charset::utf8, text, cyrillic, CSTRAN_STRICT);
                converted_st back = convert_exact(cyrillic, there.bytes, Charset::utf8, CSTRAN_STRICT);
                if (back.bytes != text) ++failures[t];
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(failures, std::vector<int>(4, 0));
}

// Threads that ask for charsets nobody used yet (here the untranslated
// forms) load each of them once and all get that one.
TEST(CharsetThreads, FirstUsesFromSeveralThreadsLoadOneCharset) {
    const int codepages[] = {437, 850, 852, 866, 874, 932, 936, 949, 950, 1250, 1251, 1252, 1253, 1254, 1255, 1256};
    std::vector<std::vector<const Charset*>> seen(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int codepage : codepages) seen[t].push_back(get_charset_by_codepage(codepage, true));
        });
    for (auto& thread : threads) thread.join();
    for (int t = 1; t < 4; ++t) EXPECT_EQ(seen[t], seen[0]);
    for (size_t i = 0; i < std::size(codepages); ++i) {
        ASSERT_NE(seen[0][i], nullptr) << codepages[i];
        EXPECT_EQ(seen[0][i], get_charset_by_codepage(codepages[i], true));
    }
}

}  // namespace
}  // namespace zobase
