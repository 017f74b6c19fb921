#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <set>
#include <string>

#include "values/error.h"

using namespace zobase;

TEST(ErrorTable, RowsInOrderAndUnique) {
    const error_st* rows = nullptr;
    ASSERT_EQ(get_list_of_errors(&rows), 107);
    EXPECT_EQ(rows[0].code, 1);
    EXPECT_EQ(rows[107].code, 0);
    std::set<int> codes;
    for (int i = 0; i < 107; ++i) codes.insert(rows[i].code);
    EXPECT_EQ(codes.size(), 107u);
    EXPECT_STREQ(find_error_row(1466)->message, "Connection handle is invalid");
    EXPECT_STREQ(find_error_row(9006)->format, "Native error in table engine: '%s'");
}

TEST(ErrorTable, TranslateCutsAndTerminates) {
    char buffer[64];
    TranslateError(1, buffer, 8);
    EXPECT_STREQ(buffer, "File do");
    TranslateError(0, buffer, 8);
    EXPECT_STREQ(buffer, "");
    TranslateErrorEx(1, String("a.txt"), buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "File 'a.txt' does not exist.");
    TranslateErrorEx(4, String("a.txt"), buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "End of file encountered.");
}

TEST(ErrorTable, RuntimeErrorConstructors) {
    RuntimeError missing(1898, String("x"));
    EXPECT_EQ(missing.message.size(), 0u);
    EXPECT_EQ(missing.parameter.u8str(), "x");
    EXPECT_EQ(RuntimeError(1705).message.u8str(), "File access denied.");
    EXPECT_EQ(RuntimeError(1098, String("boom")).message.u8str(), "boom");
    EXPECT_EQ(RuntimeError(1924, String("x")).message.u8str(), "%o is not an object.");
    try {
        raise_not_available("thing");
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 1001);
        EXPECT_EQ(e.message.u8str(), "Feature 'thing' is not available.");
    }
}

// The named numbers come from the same rows as the table: one name and one
// number per row, in the table's order.
TEST(ErrorTable, NamedNumbersFollowTheRows) {
    struct named_st {
        int number;
        const char* name;
    };
    const named_st named[] = {
#define ZO_ERROR(number, name, message, format) {number, #name},
#include "base/error_table.def"
#undef ZO_ERROR
    };
    const error_st* rows = nullptr;
    ASSERT_EQ(get_list_of_errors(&rows), static_cast<int>(std::size(named)));
    std::set<std::string> names;
    for (size_t i = 0; i < std::size(named); ++i) {
        EXPECT_EQ(named[i].number, rows[i].code) << named[i].name;
        EXPECT_TRUE(names.insert(named[i].name).second) << named[i].name;
    }
    EXPECT_EQ(ERR_ARGUMENT_INVALID, 11);
    EXPECT_EQ(ERR_OPERAND_TYPE_MISMATCH, 107);
    EXPECT_EQ(ERR_NOT_AN_ARRAY, 232);
    EXPECT_EQ(ERR_NOT_AVAILABLE, 1001);
    EXPECT_EQ(ERR_STACK_OVERFLOW, 9010);
}
