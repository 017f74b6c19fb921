#include "frontend/preprocessor.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "frontend/preprocessor_expression.h"
#include "text/charset.h"

namespace zobase {
namespace {

struct parsed_line_st {
    int start;
    std::string text;
    document_location_st first;
};

std::string text_of(const token_st* begin, const token_st* end) {
    std::string out;
    for (const token_st* t = begin; t != end; ++t) out.append(t->value.begin, t->value.size);
    return out;
}

// Stands in for the parser: keeps every line; TEXT and ENDTEXT finish their
// statements, and a word BAD fails the line there.
struct FakeParser {
    std::vector<parsed_line_st> lines;
    std::vector<document_location_st> marks;

    static void parse_line(void* context, ParserToken start, const token_st* begin, const token_st* end,
                           line_parse_result_st& result) {
        auto* self = static_cast<FakeParser*>(context);
        self->lines.push_back({static_cast<int>(start), text_of(begin, end), begin->location});
        const token_st* first = begin;
        while (first != end && first->type == TOKEN_BLANK) ++first;
        if (first != end && token_is_word(*first, "TEXT")) result.statement_type = 108;
        if (first != end && token_is_word(*first, "ENDTEXT")) result.statement_type = 39;
        for (const token_st* t = begin; t != end; ++t)
            if (t->type == TOKEN_WORD && token_is_word(*t, "BAD")) {
                result.error = 10;
                result.error_location = t->location;
            }
    }
    static void classify(void* context, uint32_t mark_class, const document_location_st& location) {
        if (mark_class == 5) static_cast<FakeParser*>(context)->marks.push_back(location);
    }
    preprocessor_client_st client() { return {this, parse_line, classify}; }
};

constexpr int STATEMENT = static_cast<int>(ParserToken::start_statement);
constexpr int MACRO = static_cast<int>(ParserToken::start_macro);
constexpr int TEXT = static_cast<int>(ParserToken::start_text);

class PreprocessorTest : public ::testing::Test {
protected:
    void SetUp() override { __init_character_sets(); }

    int run(const char* utf8, const char* file = "") {
        source_ = String(utf8);
        return pre_.run(source_, String(file));
    }

    std::vector<std::string> texts() const {
        std::vector<std::string> out;
        for (const parsed_line_st& l : parser_.lines) out.push_back(l.text);
        return out;
    }

    std::string comments() const {
        return text_of(pre_.comments.data(), pre_.comments.data() + pre_.comments.size());
    }

    FakeParser parser_;
    Preprocessor pre_{parser_.client()};
    String source_;
};

// ---- the logical line reader -----------------------------------------------------

TEST_F(PreprocessorTest, SemicolonContinuesTheLine) {
    EXPECT_EQ(run("a = 1 ; \n+ 2\nb = 3 ; && note\n + 4\n"), 0);
    EXPECT_EQ(texts(), (std::vector<std::string>{"a = 1 + 2\n", "b = 3 + 4\n"}));
    EXPECT_EQ(comments(), "&& note");
}

// The grammar wants one blank between words: indentation after a ';' joins
// the blank before it, but not the text of an open string.
TEST_F(PreprocessorTest, IndentedContinuationKeepsOneBlank) {
    EXPECT_EQ(run("a = 1 + ;\n   2\nb = 1 +;\n\t2\nc = \"x ;\n  y\"\n"), 0);
    EXPECT_EQ(texts(), (std::vector<std::string>{"a = 1 + 2\n", "b = 1 +\t2\n", "c = \"x   y\"\n"}));
}

TEST_F(PreprocessorTest, SemicolonContinuesInsideStringsAndStaysElsewhere) {
    run("x = \"ab ;\ncd\"\ny = 'p;q'\n");
    EXPECT_EQ(texts(), (std::vector<std::string>{"x = \"ab cd\"\n", "y = 'p;q'\n"}));
}

TEST_F(PreprocessorTest, DoubleAmpersandIsACommentOutsideQuotes) {
    run("x = \"a && b\"\nx[1] && note\n[a && b]\ny = 'a && b'\n");
    EXPECT_EQ(texts(), (std::vector<std::string>{"x = \"a && b\"\n", "x[1] \n", "[a \n",
                                                 "y = 'a && b'\n"}));
    EXPECT_EQ(comments(), "&& note&& b]");
}

TEST_F(PreprocessorTest, CommentContinuesWithSemicolon) {
    run("x = 1 && first ;\nsecond\ny = 2\n");
    EXPECT_EQ(texts(), (std::vector<std::string>{"x = 1 \n", "y = 2\n"}));
    EXPECT_EQ(comments(), "&& first second");
}

TEST_F(PreprocessorTest, MacroDetectionDropsTheTerminatingPoint) {
    run("? \"&name\"\n? '&name'\n? [&name]\n? &name.suffix\n");
    ASSERT_EQ(parser_.lines.size(), 4u);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(parser_.lines[i].start, STATEMENT) << i;
    EXPECT_EQ(parser_.lines[3].start, MACRO);
    EXPECT_EQ(parser_.lines[3].text, "? &namesuffix\n");
}

TEST_F(PreprocessorTest, StarLinesAreCommentsAndContinue) {
    run("* comment ;\nmore\n   x = 1\n\n  \n");
    EXPECT_EQ(texts(), (std::vector<std::string>{"x = 1\n"}));
    EXPECT_EQ(comments(), "* comment more");
}

TEST_F(PreprocessorTest, BackslashLinesKeepEverything) {
    run("#define x 1\n\\text x && keep ;\nnext\n");
    EXPECT_EQ(texts(), (std::vector<std::string>{"\\text 1 && keep ;\n", "next\n"}));
}

TEST_F(PreprocessorTest, TextModeHandsRawLinesToTheParser) {
    run("TEXT\nhello && not a comment ;\n* nor this\nENDTEXT\n? 1");
    ASSERT_EQ(parser_.lines.size(), 5u);
    EXPECT_EQ(parser_.lines[1].start, TEXT);
    EXPECT_EQ(parser_.lines[1].text, "hello && not a comment ;\n");
    EXPECT_EQ(parser_.lines[2].text, "* nor this\n");
    EXPECT_EQ(parser_.lines[3].start, TEXT);
    EXPECT_EQ(parser_.lines[4].start, STATEMENT);
    EXPECT_EQ(parser_.lines[4].text, "? 1");
}

TEST_F(PreprocessorTest, ParseFailuresAreRecordedAndTheLoopGoesOn) {
    EXPECT_EQ(run("x = BAD\ny = 1\n"), 0);
    EXPECT_EQ(parser_.lines.size(), 2u);
    ASSERT_EQ(pre_.errors.size(), 1u);
    EXPECT_EQ(pre_.errors[0].category, DIAGNOSTIC_PARSER);
    EXPECT_EQ(pre_.errors[0].number, 10);
    EXPECT_EQ(pre_.errors[0].location.start.column, 5u);
}

// ---- #define and predefined names ---------------------------------------------------

TEST_F(PreprocessorTest, DefineReplacesWordsWithTheWordsLocation) {
    run("#define LIMIT  10 + 1  \n? limit\n");
    ASSERT_EQ(texts(), (std::vector<std::string>{"? 10 + 1\n"}));
    ASSERT_EQ(pre_.replaced_words.size(), 1u);
    EXPECT_EQ(pre_.replaced_words[0].location.start.line, 2u);
    EXPECT_EQ(parser_.lines[0].first.start.line, 2u);
    ASSERT_EQ(parser_.marks.size(), 2u);
    EXPECT_EQ(parser_.marks[1].start.column, 2u);
}

TEST_F(PreprocessorTest, UndefAndNoReplacement) {
    run("#define A 1\n#undef a\n? A\n");
    EXPECT_EQ(texts(), (std::vector<std::string>{"? A\n"}));
    FakeParser other;
    Preprocessor raw(other.client());
    raw.no_replacement = true;
    raw.define(String("B"), String("2"));
    String text("? B");
    raw.run(text, String());
    EXPECT_EQ(other.lines[0].text, "? B");
}

TEST_F(PreprocessorTest, PredefinedNames) {
    run("? __LINE__, __column__, __file__, __ZO__\n", "/src/app/main.prg");
    EXPECT_EQ(texts(), (std::vector<std::string>{"? 1, 13, \"/src/app/main.prg\", .T.\n"}));
    parser_.lines.clear();
    run("? __dir__");
    EXPECT_EQ(texts(), (std::vector<std::string>{"? \"\""}));
}

// ---- conditions --------------------------------------------------------------------

TEST_F(PreprocessorTest, IfElseEndifChoosesOneBranch) {
    run("#define N 3\n"
        "#if N * 2 >= 6 .AND. !(N = 4)\na\n#else\nb\n#endif\n"
        "#IF .F. OR 0\nc\n#if 1\nd\n#else\ne\n#endif\n#else\nf\n#endif\n"
        "#ifdef N\ng\n#endif\n#ifndef N\nh\n#endif\n#if defined(M) or defined N\ni\n#endif\n");
    EXPECT_TRUE(pre_.errors.empty());
    EXPECT_EQ(texts(), (std::vector<std::string>{"a\n", "f\n", "g\n", "i\n"}));
}

TEST_F(PreprocessorTest, ConditionErrorsEndTheLoop) {
    EXPECT_EQ(run("#else\nx\n"), -1211);
    EXPECT_TRUE(parser_.lines.empty());
    ASSERT_EQ(pre_.errors.size(), 1u);
    EXPECT_EQ(pre_.errors[0].category, DIAGNOSTIC_PREPROCESSOR);

    FakeParser p2;
    Preprocessor open_if(p2.client());
    String unterminated("#if 1\nx\n");
    EXPECT_EQ(open_if.run(unterminated, String()), -1211);
    EXPECT_EQ(open_if.errors[0].location.start.line, 1u);

    const char* bad[] = {"#if\n", "#if unknown\n", "#if 1 + .T.\n", "#if 1 / 0\n", "#if (1\n",
                         "#error stop here\n"};
    const int numbers[] = {10, 12, 107, 39, 10, 1098};
    for (size_t i = 0; i < std::size(bad); ++i) {
        FakeParser p;
        Preprocessor pre(p.client());
        String text(bad[i]);
        EXPECT_EQ(pre.run(text, String()), -numbers[i]) << bad[i];
    }
}

TEST_F(PreprocessorTest, ShebangOnlyOnTheFirstLine) {
    EXPECT_EQ(run("#!/usr/bin/zosh -x\n? 1\n#!x\n"), 0);
    EXPECT_EQ(texts(), (std::vector<std::string>{"? 1\n", "#!x\n"}));
    EXPECT_EQ(comments(), "#!/usr/bin/zosh -x");
}

TEST_F(PreprocessorTest, UnknownDirectiveGoesToTheParser) {
    run("#pragma foo(1)\n");
    EXPECT_EQ(texts(), (std::vector<std::string>{"#pragma foo(1)\n"}));
}

// ---- #include ----------------------------------------------------------------------

class IncludeTest : public PreprocessorTest {
protected:
    void SetUp() override {
        PreprocessorTest::SetUp();
        root_ = std::filesystem::temp_directory_path() / ("zobase_pp_" + std::to_string(::getpid()));
        std::filesystem::create_directories(root_ / "src");
        std::filesystem::create_directories(root_ / "lib");
        write("src/common.h", "beside\n");
        write("lib/common.h", "from path\n");
        write("lib/only.h", "#define ONLY 7\n#include \"nested.h\"\n");
        write("lib/nested.h", "nested __file__\n");
        write("src/self.h", "#include self.h\n");
    }
    void TearDown() override { std::filesystem::remove_all(root_); }

    void write(const char* name, const char* text) { std::ofstream(root_ / name) << text; }
    std::string main_file() const { return (root_ / "src" / "main.prg").string(); }

    std::filesystem::path root_;
};

TEST_F(IncludeTest, SearchesBesideTheFileThenThePath) {
    pre_.include_path.push_back(root_ / "lib");
    EXPECT_EQ(run("#include \"common.h\"\n#include <only.h>\n? ONLY\n", main_file().c_str()), 0);
    std::string nested = "nested \"" + (root_ / "lib" / "nested.h").string() + "\"\n";
    EXPECT_EQ(texts(), (std::vector<std::string>{"beside\n", nested, "? 7\n"}));
}

TEST_F(IncludeTest, MissingAndRecursiveIncludesFail) {
    EXPECT_EQ(run("#include none.h\nx\n", main_file().c_str()), -1);
    EXPECT_TRUE(parser_.lines.empty());
    FakeParser p;
    Preprocessor pre(p.client());
    String text("#include self.h\n");
    EXPECT_EQ(pre.run(text, String(main_file().c_str())), -103);
}

// ---- robustness --------------------------------------------------------------------

TEST_F(PreprocessorTest, RandomInputOnlyRecordsErrors) {
    static const char* pieces[] = {"#", "define ", "if ", "else", "endif", "undef ", "ifdef ", ";",
                                   "&", "&&", "\"", "'", "[", "]", "\n", "\r", " ", "*", "\\",
                                   "x", "1", ".T.", "TEXT", "ENDTEXT", "(", ")", "=", "\xff", "\xc3"};
    std::mt19937 random(4711);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (size_t n = random() % 40; n > 0; --n)
            text += (random() % 4 == 0) ? std::string(1, static_cast<char>(random()))
                                         : pieces[random() % std::size(pieces)];
        FakeParser p;
        Preprocessor pre(p.client());
        String source = String::fromBytes(text.data(), text.size(), Charset::utf8);
        int result = pre.run(source, String());
        ASSERT_LE(result, 0);
        if (result < 0) {
            ASSERT_FALSE(pre.errors.empty());
        }
        for (const parsed_line_st& line : p.lines) ASSERT_FALSE(line.text.empty());
    }
}

}  // namespace
}  // namespace zobase
