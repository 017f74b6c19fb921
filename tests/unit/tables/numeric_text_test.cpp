// Numeric fields read back exactly what the general number parser reads,
// whatever form the text takes.
#include <gtest/gtest.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "tables/dbf_file.h"
#include "tests/unit/tables/table_test_support.h"
#include "values/variant.h"

namespace zobase {
namespace {

using testing::create_table;
using testing::field_def;

// The value from_chars reads after the blanks, as the field's contract says.
double reference(const std::string& text) {
    size_t start = text.find_first_not_of(' ');
    if (start == std::string::npos) return 0;
    double value = 0;
    const char* begin = text.data() + start;
    if (*begin == '+') ++begin;
    std::from_chars(begin, text.data() + text.size(), value);
    return value;
}

TEST(NumericText, ReadsAsTheGeneralParserDoes) {
    auto table = create_table(String("memory:///numbers.dbf"), {field_def("N", FIELD_TYPE_NUMERIC, 20, 0)});
    const DbfField* field = table->get_field(0);
    std::mt19937_64 random(20260124);
    std::vector<std::string> texts = {"", "-", ".", "-.", "1.", ".5", "-0.00", "+12.5", "12.5e3", "1,5", "007",
                                      "999999999999999", "9999999999999999", "0.000000000000001",
                                      "123456789.123456789", " 1 2", "-  4"};
    for (int i = 0; i < 20000; ++i) {
        char text[32];
        uint64_t mantissa = random() % 10000000000000000ull;
        int decimals = static_cast<int>(random() % 12);
        std::string digits = std::to_string(mantissa);
        if (decimals > 0 && decimals < static_cast<int>(digits.size()))
            digits.insert(digits.size() - decimals, ".");
        std::snprintf(text, sizeof text, "%s%s", random() % 2 ? "-" : "", digits.c_str());
        texts.push_back(text);
    }
    for (const std::string& text : texts) {
        if (text.size() > 20) continue;
        std::string padded = std::string(20 - text.size(), ' ') + text;
        std::memcpy(table->shown_record + field->offset, padded.data(), 20);
        Variant value;
        table->get_variant(0, &value);
        double expected = reference(padded);
        EXPECT_EQ(std::memcmp(&value.numeric.value, &expected, sizeof expected), 0)
            << "[" << padded << "] read " << value.numeric.value << ", expected " << expected;
    }
}

}  // namespace
}  // namespace zobase
