// Number and date text through a whole runtime: the machine's formats read
// from ICU at start-up, the formatter cache behind dtoc and ?, and the
// corners of str, val and transform.
#include <gtest/gtest.h>

#include <string>

#include "runtime/runtime.h"
#include "tests/unit/runtime/runtime_test_support.h"
#include "tests/unit/support/locale_scope.h"
#include "text/date_format.h"
#include "vm/session_settings.h"

using namespace zobase;
using zobase::testing::CaptureScreen;
using zobase::testing::LocaleScope;

namespace {


class FormatFunctions : public ::testing::Test {
protected:
    explicit FormatFunctions(const char* locale = "en_US") : locale_(locale) {
        runtime = CreateRuntime(&screen);
    }
    ~FormatFunctions() override { ReleaseRuntime(runtime); }

    // What ? prints of an expression, without the line end.
    std::string shown(const std::string& expression) {
        screen.output.clear();
        RunCommand(runtime, String(("? " + expression).c_str()));
        EXPECT_EQ(screen.errors, "") << expression;
        screen.errors.clear();
        std::string text = screen.output;
        if (!text.empty() && text.back() == '\n') text.pop_back();
        return text;
    }
    void run(const std::string& text) { RunCommand(runtime, String(text.c_str())); }

    LocaleScope locale_;
    CaptureScreen screen;
    Runtime* runtime = nullptr;
};

class GermanMachine : public FormatFunctions {
protected:
    GermanMachine() : FormatFunctions("de_DE") {}
};

}  // namespace

TEST_F(GermanMachine, TheMachinesFormatsComeFromTheLocale) {
    EXPECT_EQ(runtime->decimal_point.code_point, U',');
    EXPECT_EQ(runtime->group_separator, U'.');
    EXPECT_EQ(runtime->first_day_of_week, 2);
    format_settings_st machine = runtime->system_formats();
    EXPECT_EQ(std::string(machine.point.bytes, machine.point.length), ",");
    EXPECT_EQ(machine.date_style, DATE_STYLE_SHORT);
    EXPECT_EQ(machine.decimals, 2);
    EXPECT_EQ(machine.hours, 12);
    EXPECT_TRUE(machine.seconds);
    EXPECT_FALSE(machine.century);
    // A new session keeps the language's own formats until SET SYSFORMATS ON.
    EXPECT_EQ(shown("1.5, {^2026-01-02}, set('SYSFORMATS')"), "1.5 01/02/26 OFF");
    run("SET SYSFORMATS ON");
    EXPECT_EQ(shown("1.5, {^2026-01-02}, set('SYSFORMATS'), set('FDOW')"), "1,5 02.01.26 ON 2");
}

TEST_F(FormatFunctions, DtocAndQuestionMarkBuildTheirFormatOnce) {
    run("d = {^2026-01-02}\nFOR i = 1 TO 20000\n  x = dtoc(d + i)\nNEXT");
    EXPECT_EQ(shown("x"), "10/05/80");
    EXPECT_EQ(runtime->date_formats().built(), 1u);
    run("FOR i = 1 TO 1000\n  ?? d\nNEXT");
    EXPECT_EQ(runtime->date_formats().built(), 1u);
    run("SET CENTURY ON");
    EXPECT_EQ(shown("dtoc(d), dtoc(d + 1)"), "01/02/2026 01/03/2026");
    EXPECT_EQ(runtime->date_formats().built(), 2u);
    EXPECT_EQ(&runtime->dateFormat(DATE_STYLE_AMERICAN, true, "/"),
              &runtime->dateFormat(DATE_STYLE_AMERICAN, true, "/"));
}

TEST_F(FormatFunctions, StrIsExactForIntegersAndMoney) {
    EXPECT_EQ(shown("str(9223372036854775807, 20)"), " 9223372036854775807");
    EXPECT_EQ(shown("str(-9223372036854775807 - 1, 20)"), "-9223372036854775808");
    EXPECT_EQ(shown("str($922337203685477.5807, 25, 4)"), "     922337203685477.5807");
    EXPECT_EQ(shown("str($922337203685477.5807, 25, 2)"), "       922337203685477.58");
    EXPECT_EQ(shown("str(-$0.005, 6, 2)"), " -0.01");
    EXPECT_EQ(shown("str(0.125, 6, 2)"), "  0.13");
    EXPECT_EQ(shown("str(10 ** 15, 10)"), "**********");
    EXPECT_EQ(shown("str(1 / 0)"), "**********");
}

TEST_F(FormatFunctions, ValKeepsTheDecimalsItRead) {
    EXPECT_EQ(shown("val('1.500'), val('2.5e2'), val('2.5e-2'), val('1e30')"),
              "1.500 250 0.025 1000000000000000000000000000000");
    EXPECT_EQ(shown("val('-9223372036854775808'), vartype(val('9223372036854775808'))"),
              "-9223372036854775808 N");
    EXPECT_EQ(shown("val('12e'), val('1e+'), val('--1'), val('1 000')"), "12 1 0 1");
}

TEST_F(FormatFunctions, TransformFillsAtMostTwentyPlaces) {
    EXPECT_EQ(shown("transform(-9223372036854775807 - 1, '99999999999999999999')"),
              "-9223372036854775808");
    EXPECT_EQ(shown("transform(123, '@L')"), "");
    EXPECT_EQ(shown("transform(123, '')"), "");
    EXPECT_EQ(shown("transform(-1, '9')"), "*");
    EXPECT_EQ(shown("transform(-1, '@L 99')"), "-1");
    EXPECT_EQ(shown("transform(1234, '9,999.99')"), "1,234.00");
}
