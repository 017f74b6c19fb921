// The console msgbox and line input through a screen, over scripted input.
#include <gtest/gtest.h>

#include <string>

#include "runtime/screen.h"
#include "runtime/screen_input.h"
#include "text/charset.h"

namespace zobase::testing {
namespace {

class ScriptedConsole : public ConsoleScreen {
public:
    std::string input, output;
    size_t position = 0;

    size_t read(char* buffer, size_t size, size_t count, const Charset** charset) override {
        if (!*charset) *charset = input_charset;
        size_t n = 0;
        while (n < size && n < count && position < input.size()) buffer[n++] = input[position++];
        return n;
    }
    void internal_out(const String& text) override { output += text.u8str(); }
    void internal_err(const String& text) override { output += text.u8str(); }
};

constexpr int OK_CANCEL = MSGBOX_OK | MSGBOX_CANCEL;
constexpr int YES_NO = MSGBOX_YES | MSGBOX_NO;
constexpr int ABORT_RETRY_IGNORE = MSGBOX_ABORT | MSGBOX_RETRY | MSGBOX_IGNORE;

TEST(ConsoleMsgboxTest, ShowsTextAndChoicesAndTakesAWordOrItsLetter) {
    ScriptedConsole console;
    console.input = "cancel\n";
    EXPECT_EQ(console.msgbox(String("Save?"), String("Editor"), OK_CANCEL, 0, 0), MSGBOX_CANCEL);
    EXPECT_EQ(console.output, "Editor\nSave?\n[O]K, [C]ancel? ");
    console.input += "  Y \r\n";
    EXPECT_EQ(console.msgbox(String("Go on?"), String(""), YES_NO, 0, 0), MSGBOX_YES);
}

TEST(ConsoleMsgboxTest, AsksAgainAfterAnUnknownAnswer) {
    ScriptedConsole console;
    console.input = "maybe\nr\n";
    EXPECT_EQ(console.msgbox(String("Disk error"), String(""), ABORT_RETRY_IGNORE, 0, 0), MSGBOX_RETRY);
    EXPECT_NE(console.output.find("? invalid input\n[A]bort, [R]etry, [I]gnore? "), std::string::npos);
}

TEST(ConsoleMsgboxTest, EndOfInputBacksOutInsteadOfWaiting) {
    ScriptedConsole console;
    console.input = "what\n";
    EXPECT_EQ(console.msgbox(String("t"), String(""), OK_CANCEL, 0, 0), MSGBOX_CANCEL);
    EXPECT_EQ(console.msgbox(String("t"), String(""), YES_NO, 0, 0), MSGBOX_NO);
    EXPECT_EQ(console.msgbox(String("t"), String(""), ABORT_RETRY_IGNORE, 0, 0), MSGBOX_ABORT);
    EXPECT_EQ(console.msgbox(String("t"), String(""), 0, 0, 0), MSGBOX_OK) << "no mask offers OK";
}

TEST(ConsoleMsgboxTest, TheErrorDialogAsksWithoutTextAndAnswersWithButtonBits) {
    ScriptedConsole console;
    console.input = "i\n";
    EXPECT_EQ(console.msgbox(String(""), String(""), 104, MSGBOX_ABORT, 1), 64);
    EXPECT_EQ(console.output, "[A]bort, [R]etry, [I]gnore? ");
    EXPECT_EQ(console.msgbox(String(""), String(""), 104, MSGBOX_ABORT, 1), 8);
}

TEST(ScreenInputTest, LinesLoseOnlyTheirLineEnd) {
    ScriptedConsole console;
    console.input = "first  \r\n\nlast";
    String line;
    ASSERT_TRUE(read_screen_line(&console, &line));
    EXPECT_EQ(line.u8str(), "first  ");
    ASSERT_TRUE(read_screen_line(&console, &line));
    EXPECT_EQ(line.u8str(), "");
    ASSERT_TRUE(read_screen_line(&console, &line));
    EXPECT_EQ(line.u8str(), "last");
    EXPECT_FALSE(read_screen_line(&console, &line));
}

TEST(ScreenInputTest, InputCharsetIsDecodedToUtf8) {
    ScriptedConsole console;
    console.set_input_charset(get_charset_by_codepage(1252, false));
    console.input = "caf\xE9\n";
    String line;
    ASSERT_TRUE(read_screen_line(&console, &line));
    EXPECT_EQ(line.u8str(), "caf\xC3\xA9");
}

}  // namespace
}  // namespace zobase::testing
