// Starting programs, splitting command lines and quoting words.
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "builtins/process_runner.h"

using namespace zobase;

namespace {

struct run_st {
    bool started = false;
    int status = -1;
    std::string output, errors;
};

run_st run(std::vector<std::string> argv, const std::string* input = nullptr) {
    run_st result;
    process_request_st request;
    request.argv = std::move(argv);
    request.input = input;
    result.started = run_process(
        request,
        [&](ProcessStream stream, const char* bytes, size_t size) {
            (stream == PROCESS_OUTPUT ? result.output : result.errors).append(bytes, size);
        },
        &result.status);
    return result;
}

std::vector<std::string> split(const std::string& line) {
    std::vector<std::string> words;
    EXPECT_TRUE(split_arguments(line, &words)) << line;
    return words;
}

}  // namespace

TEST(SplitArguments, ShellQuoting) {
    using words = std::vector<std::string>;
    EXPECT_EQ(split("  a  b\tc\n"), (words{"a", "b", "c"}));
    EXPECT_EQ(split(R"('a b' "c d" e\ f)"), (words{"a b", "c d", "e f"}));
    EXPECT_EQ(split(R"(x'y'"z"w)"), (words{"xyzw"}));
    EXPECT_EQ(split(R"("a\"b\\c\$d\`e\f")"), (words{"a\"b\\c$d`e\\f"}));
    EXPECT_EQ(split(R"('a\b' "" '')"), (words{"a\\b", "", ""}));
    EXPECT_EQ(split(""), words{});
    std::vector<std::string> unused;
    EXPECT_FALSE(split_arguments("'open", &unused));
    EXPECT_FALSE(split_arguments("\"open", &unused));
    EXPECT_FALSE(split_arguments("\"ends in a backslash\\", &unused));
}

// Every byte but NUL, in words of every kind, reads back unchanged through
// split_arguments and through /bin/sh.
TEST(QuoteArgument, RoundTrips) {
    std::string all_bytes;
    for (int c = 1; c < 256; ++c) all_bytes += static_cast<char>(c);
    std::vector<std::string> samples = {"plain", "", "'", "''", "a'b", "\\", "\"", "$HOME", "*", "a b", "-n",
                                        "new\nline", "é", all_bytes};
    for (const std::string& word : samples) {
        EXPECT_EQ(split("cmd " + quote_argument(word) + " end"), (std::vector<std::string>{"cmd", word, "end"}));
        run_st shell = run({"/bin/sh", "-c", "printf %s " + quote_argument(word)});
        EXPECT_EQ(shell.output, word);
    }
    EXPECT_EQ(quote_argument("safe/name-1.txt"), "safe/name-1.txt");
    EXPECT_EQ(quote_argument("it's"), "'it'\\''s'");
}

TEST(RunProcess, OutputsStatusAndInput) {
    run_st result = run({"sh", "-c", "echo out; echo err >&2; exit 7"});
    ASSERT_TRUE(result.started);
    EXPECT_EQ(result.output, "out\n");
    EXPECT_EQ(result.errors, "err\n");
    EXPECT_EQ(result.status, 7);

    std::string input = "line one\nline two\n";
    result = run({"cat"}, &input);
    EXPECT_EQ(result.output, input);
    EXPECT_EQ(result.status, 0);

    EXPECT_EQ(run({"sh", "-c", "kill -9 $$"}).status, 128 + 9);
    // Without input the program reads nothing at all.
    EXPECT_EQ(run({"wc", "-c"}).output.find('0') != std::string::npos, true);
}

// Megabytes both ways at once: neither side may wait on a full pipe.
TEST(RunProcess, LargeInputAndOutputTogether) {
    std::string input(4 << 20, 'x');
    for (size_t i = 0; i < input.size(); i += 61) input[i] = '\n';
    run_st result = run({"sh", "-c", "tee /dev/stderr"}, &input);
    EXPECT_EQ(result.output.size(), input.size());
    EXPECT_EQ(result.errors.size(), input.size());
    EXPECT_EQ(result.status, 0);
}

// A program that stops reading early must not take the caller down with SIGPIPE.
TEST(RunProcess, ReaderThatLeavesEarly) {
    std::string input(4 << 20, 'y');
    run_st result = run({"head", "-c", "10"}, &input);
    EXPECT_EQ(result.output, std::string(10, 'y'));
    EXPECT_EQ(result.status, 0);
}

TEST(RunProcess, MissingProgram) {
    errno = 0;
    run_st result = run({"no-such-program-for-zobase-tests"});
    EXPECT_FALSE(result.started);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(run({}).started);
}
