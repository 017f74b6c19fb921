#include "frontend/scanner.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "frontend/keywords.h"
#include "frontend/literals.h"
#include "frontend/syntax_tree.h"
#include "text/charset.h"
#include "values/error.h"

namespace zobase {
namespace {

class ScannerTest : public ::testing::Test {
protected:
    void SetUp() override { __init_character_sets(); }

    token_vector scan(const char* utf8) {
        text_ = String(utf8);
        token_vector tokens;
        tokenize(text_, tokens);
        return tokens;
    }

    static std::string lexeme(const token_st& t) { return std::string(t.value.begin, t.value.size); }

    static std::vector<uint32_t> kinds(const token_vector& tokens) {
        std::vector<uint32_t> out;
        for (const token_st& t : tokens) out.push_back(t.type);
        return out;
    }

    // A literal's pieces, each a separate piece as the grammar would collect them.
    scan_string_list_st pieces(std::initializer_list<const char*> texts) {
        scan_string_list_st list;
        for (const char* t : texts) {
            held_.push_back(String(t));
            list.add({held_.back().read(), 0, held_.back().get_charset(), held_.back().size()});
        }
        return list;
    }

    String text_;
    std::vector<String> held_;
};

// ---- tokenize ------------------------------------------------------------------

TEST_F(ScannerTest, CutsWordsPunctuationBlanksAndDigits) {
    token_vector t = scan("USE x\t  IN 12ab;");
    std::vector<uint32_t> expected = {TOKEN_WORD, TOKEN_BLANK, TOKEN_WORD, TOKEN_BLANK, TOKEN_WORD,
                                      TOKEN_BLANK, TOKEN_DIGITS, TOKEN_WORD, ';'};
    EXPECT_EQ(kinds(t), expected);
    EXPECT_EQ(lexeme(t[3]), "\t  ");
    EXPECT_EQ(lexeme(t[6]), "12");
    EXPECT_EQ(lexeme(t[7]), "ab");
}

TEST_F(ScannerTest, HexFormsTakeEmptyDigitRuns) {
    token_vector t = scan("0hello 0x 0h 0XfF9g");
    ASSERT_EQ(t.size(), 9u);
    EXPECT_EQ(t[0].type, TOKEN_HEX_BINARY);
    EXPECT_EQ(lexeme(t[0]), "0he");
    EXPECT_EQ(t[1].type, TOKEN_WORD);
    EXPECT_EQ(lexeme(t[1]), "llo");
    EXPECT_EQ(t[3].type, TOKEN_HEX_INTEGER);
    EXPECT_EQ(lexeme(t[3]), "0x");
    EXPECT_EQ(t[5].type, TOKEN_HEX_BINARY);
    EXPECT_EQ(lexeme(t[7]), "0XfF9");
    EXPECT_EQ(lexeme(t[8]), "g");
}

TEST_F(ScannerTest, OtherCharactersAndPunctuationRanges) {
    token_vector t = scan("`|~{}[]^@\\\x7f");
    std::vector<uint32_t> expected = {TOKEN_OTHER_CHAR, TOKEN_OTHER_CHAR, TOKEN_OTHER_CHAR, '{', '}', '[',
                                      ']', '^', '@', '\\', TOKEN_OTHER_CHAR};
    EXPECT_EQ(kinds(t), expected);
}

TEST_F(ScannerTest, UndecodableBytesAreWordCharacters) {
    token_vector t = scan("a\xff\xfe" "b c");
    ASSERT_EQ(t.size(), 3u);
    EXPECT_EQ(t[0].type, TOKEN_WORD);
    EXPECT_EQ(t[0].value.size, 4u);
}

TEST_F(ScannerTest, EachLineEndFormCountsOnce) {
    token_vector t = scan("a\r\nb\n\rc\rd\ne\r\rf");
    std::vector<uint32_t> lines;
    for (const token_st& tok : t)
        if (tok.type == TOKEN_WORD) lines.push_back(tok.location.start.line);
    EXPECT_EQ(lines, (std::vector<uint32_t>{1, 2, 3, 4, 5, 7}));
    EXPECT_EQ(lexeme(t[1]), "\r\n");
    EXPECT_EQ(lexeme(t[3]), "\n\r");
}

TEST_F(ScannerTest, LocationsCountCharactersAndBytesSeparately) {
    token_vector t = scan("\xc3\xa4x = 1\n  \xe2\x82\xac");
    const token_st& word = t[0];
    EXPECT_EQ(lexeme(word), "\xc3\xa4x");
    EXPECT_EQ(word.location.start.column, 1u);
    EXPECT_EQ(word.location.end.offset_chars, 2u);
    EXPECT_EQ(word.location.end.offset_bytes, 3u);
    EXPECT_EQ(word.location.end.column, 3u);
    const token_st& one = t[4];
    EXPECT_EQ(lexeme(one), "1");
    EXPECT_EQ(one.location.start.offset_chars, 5u);
    EXPECT_EQ(one.location.start.offset_bytes, 6u);
    EXPECT_EQ(one.location.start.column, 6u);
    const token_st& line_end = t[5];
    EXPECT_EQ(line_end.location.end.line, 2u);
    EXPECT_EQ(line_end.location.end.column, 1u);
    const token_st& euro = t[7];
    EXPECT_EQ(euro.type, TOKEN_OTHER_CHAR);
    EXPECT_EQ(euro.location.start.line, 2u);
    EXPECT_EQ(euro.location.start.column, 3u);
    EXPECT_EQ(euro.location.start.offset_chars, 9u);
    EXPECT_EQ(euro.location.start.offset_bytes, 10u);
    EXPECT_EQ(euro.location.end.offset_bytes, 13u);
}

TEST_F(ScannerTest, Utf16TextGivesTheSameTokens) {
    String wide(u"IF x\r\n");
    token_vector t;
    tokenize(wide, t);
    ASSERT_EQ(t.size(), 4u);
    EXPECT_EQ(t[0].type, TOKEN_WORD);
    EXPECT_EQ(t[0].value.size, 4u);
    EXPECT_EQ(t[2].location.start.offset_chars, 3u);
    EXPECT_EQ(t[2].location.start.offset_bytes, 6u);
    EXPECT_EQ(t[3].type, TOKEN_LINE_END);
}

TEST_F(ScannerTest, RandomBytesAreCoveredByContiguousTokens) {
    std::mt19937 random(12345);
    for (int round = 0; round < 3000; ++round) {
        std::string bytes(random() % 64, '\0');
        for (char& b : bytes) b = static_cast<char>(random());
        String text = String::fromBytes(bytes.data(), bytes.size(), Charset::utf8);
        token_vector t;
        tokenize(text, t);
        const char* expected = text.read();
        uint32_t offset = 0;
        for (const token_st& tok : t) {
            ASSERT_EQ(tok.value.begin, expected);
            ASSERT_GT(tok.value.size, 0u);
            ASSERT_EQ(tok.location.start.offset_bytes, offset);
            expected += tok.value.size;
            offset = tok.location.end.offset_bytes;
        }
        ASSERT_EQ(expected, text.end());
    }
}

// ---- keywords and lex_token -----------------------------------------------------

TEST_F(ScannerTest, KeywordTableHasItsRowsInOrder) {
    ASSERT_NO_THROW(keyword_token(U"ADD"));
    EXPECT_EQ(keyword_token(U"ADD"), 264u);
    EXPECT_EQ(keyword_token(U"ZAP"), 264u + 230);
    EXPECT_EQ(keyword_token(U"FIELDS"), 264u + KEYWORD_COUNT - 1);
    EXPECT_LE(keyword_token(U"FIELDS"), static_cast<uint32_t>(ParserToken::keyword_last));
    EXPECT_EQ(std::u32string(keyword_rows()[KEYWORD_COUNT - 1].name), U"FIELDS");
}

TEST_F(ScannerTest, KeywordsAbbreviateAndIgnoreCase) {
    token_vector t = scan("FUNC func FUNCTION FUN ENDD ENDDE DELE DELETE DELETED fUnCtIoN x");
    std::vector<int> got;
    token_st start{static_cast<uint32_t>(ParserToken::start_statement), {}, {}};
    Scanner scanner(t.data(), t.data() + t.size(), start);
    scan_string_st value;
    document_location_st location;
    scanner.lex(value, location);
    for (int token; (token = scanner.lex(value, location)) != 0;)
        if (token != TOKEN_BLANK) got.push_back(token);
    int function = static_cast<int>(keyword_token(U"FUNCTION"));
    int word = static_cast<int>(ParserToken::word);
    int deleted = static_cast<int>(keyword_token(U"DELETED"));
    int del = static_cast<int>(keyword_token(U"DELETE"));
    std::vector<int> expected = {function, function, function, word, word,
                                 static_cast<int>(keyword_token(U"ENDDEFINE")),
                                 del, del, deleted, function, word};
    EXPECT_EQ(got, expected);
}

TEST_F(ScannerTest, LexBootstrapReturnsStartTokenWithoutConsuming) {
    token_vector t = scan("0h1 0x1 1 ` +");
    token_st start{static_cast<uint32_t>(ParserToken::start_operand), {}, {}};
    start.location.start.line = 7;
    Scanner scanner(t.data(), t.data() + t.size(), start);
    scan_string_st value;
    document_location_st location;
    EXPECT_EQ(scanner.lex(value, location), 263);
    EXPECT_EQ(location.start.line, 7u);
    std::vector<int> got;
    for (int token; (token = scanner.lex(value, location)) != 0;) got.push_back(token);
    const int hex_binary = static_cast<int>(ParserToken::hex_binary), hex_integer = hex_binary + 1,
              digits = static_cast<int>(ParserToken::digits);
    EXPECT_EQ(got, (std::vector<int>{hex_binary, 32, hex_integer, 32, digits, 32, 258, 32, '+'}));
    EXPECT_EQ(location.start.offset_bytes, 12u);
    EXPECT_EQ(scanner.lex(value, location), 0);
}

TEST_F(ScannerTest, UnknownTokenKindIsAnInternalError) {
    token_vector t = scan("x");
    t[0].type = 1027;
    token_st start{static_cast<uint32_t>(ParserToken::start_statement), {}, {}};
    Scanner scanner(t.data(), t.data() + t.size(), start);
    scan_string_st value;
    document_location_st location;
    scanner.lex(value, location);
    EXPECT_THROW(scanner.lex(value, location), tokenizer_returned_unsupported_token_type_exception);
}

// ---- literals --------------------------------------------------------------------

TEST_F(ScannerTest, IntegerRoundTripCatchesOverflow) {
    integer_type_st v = -1;
    EXPECT_TRUE(create_integer(pieces({"007"}), v));
    EXPECT_EQ(v, 7);
    EXPECT_TRUE(create_integer(pieces({"0"}), v));
    EXPECT_EQ(v, 0);
    EXPECT_TRUE(create_integer(pieces({"000"}), v));
    EXPECT_EQ(v, 0);
    EXPECT_TRUE(create_integer(pieces({"9223372036854775807"}), v));
    EXPECT_EQ(v, INT64_MAX);
    EXPECT_FALSE(create_integer(pieces({"9223372036854775808"}), v));
    EXPECT_FALSE(create_integer(pieces({"99999999999999999999999"}), v));
    EXPECT_TRUE(create_integer(pieces({"12", "", "34"}), v));
    EXPECT_EQ(v, 1234);
    EXPECT_TRUE(create_integer(pieces({"42", ".", "5"}), v));
    EXPECT_EQ(v, 42);
}

TEST_F(ScannerTest, HexIntegerNeedsDigitsAndRange) {
    integer_type_st v = 0;
    EXPECT_FALSE(create_integer_from_hex(pieces({"0x"}), v));
    EXPECT_TRUE(create_integer_from_hex(pieces({"0xfF"}), v));
    EXPECT_EQ(v, 255);
    EXPECT_TRUE(create_integer_from_hex(pieces({"0x0"}), v));
    EXPECT_EQ(v, 0);
    EXPECT_TRUE(create_integer_from_hex(pieces({"0xFFFFFFFFFFFFFFFF"}), v));
    EXPECT_EQ(v, -1);
    EXPECT_FALSE(create_integer_from_hex(pieces({"0x10000000000000000"}), v));
}

TEST_F(ScannerTest, NumericCountsDecimals) {
    numeric_type_st n{};
    EXPECT_TRUE(create_numeric(pieces({"9223372036854775808", ".", "0"}), n));
    EXPECT_DOUBLE_EQ(n.value, 9223372036854775808.0);
    EXPECT_EQ(n.decimals, 1u);
    EXPECT_TRUE(create_numeric(pieces({"001", ".", "250"}), n));
    EXPECT_DOUBLE_EQ(n.value, 1.25);
    EXPECT_EQ(n.decimals, 3u);
    EXPECT_TRUE(create_numeric(pieces({".", "5"}), n));
    EXPECT_DOUBLE_EQ(n.value, 0.5);
    EXPECT_TRUE(create_numeric(pieces({"7", "."}), n));
    EXPECT_EQ(n.decimals, 0u);
    std::string long_text(300, '1');
    EXPECT_THROW(create_numeric(pieces({long_text.c_str()}), n), copy_buffer_too_small);
}

TEST_F(ScannerTest, MoneyKeepsFourDecimals) {
    money_type_st m{};
    EXPECT_TRUE(create_money(pieces({"12", ".", "3456"}), m));
    EXPECT_EQ(m.high, 0);
    EXPECT_EQ(m.mid, 0u);
    EXPECT_EQ(m.low, 123456u);
    EXPECT_TRUE(create_money(String("1.5"), m));
    EXPECT_EQ(m.low, 15000u);
    EXPECT_FALSE(create_money(String("x"), m));
}

TEST_F(ScannerTest, BinaryStringsPairNibblesHighFirst) {
    token_vector t = scan("0h 0hABC 0h1f");
    String empty = create_binary_const_string(t[0].location, t[0].value);
    EXPECT_EQ(empty.size(), 0u);
    EXPECT_EQ(empty.get_charset(), Charset::binary);
    String odd = create_binary_const_string(t[2].location, t[2].value);
    EXPECT_EQ(std::string(odd.read(), odd.size()), std::string("\x0a\xbc"));
    EXPECT_EQ(odd.get_charset(), Charset::binary);
    String even = create_binary_const_string(t[4].location, t[4].value);
    EXPECT_EQ(std::string(even.read(), even.size()), std::string("\x1f"));
}

TEST_F(ScannerTest, DocumentContentEscapesUnprintableBytes) {
    String shown = Scanner::canoncializeDocumentContent(String::fromBytes("a\tb\xff\xc3\xa4", Charset::utf8));
    EXPECT_EQ(shown.get_charset(), Charset::utf32le);
    std::u32string chars(reinterpret_cast<const char32_t*>(shown.read()), shown.size() / 4);
    EXPECT_EQ(chars, U"a<09>b<FF>\u00e4");
}

// ---- macro lines -------------------------------------------------------------------

TEST_F(ScannerTest, MacroPiecesJoinTextRuns) {
    auto* items = new std::vector<MacroItem>{{'S', String("? "), {}}, {'S', String("x"), {}},
                                             {'V', String("name"), {}}, {'S', String("."), {}}};
    std::vector<MacroItem>* result = nullptr;
    ASSERT_EQ(Scanner::parse_macro_endl({}, items, result), 0);
    ASSERT_EQ(result->size(), 3u);
    EXPECT_EQ((*result)[0].kind, 'S');
    EXPECT_EQ((*result)[0].text.u8str(), "? x");
    EXPECT_EQ((*result)[1].kind, 'V');
    EXPECT_EQ((*result)[2].text.u8str(), ".");
    delete result;

    auto* plain = new std::vector<MacroItem>{{'S', String("a"), {}}};
    EXPECT_EQ(Scanner::parse_macro_endl({}, plain, result), 10);
    EXPECT_EQ(result, nullptr);
}

}  // namespace
}  // namespace zobase
