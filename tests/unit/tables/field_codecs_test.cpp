// The byte form of each field type and the refusals of the slots, on
// memory tables.
#include <gtest/gtest.h>

#include <cstring>

#include "tables/byte_order.h"
#include "tables/field_codecs.h"
#include "tests/unit/support/error_number.h"
#include "tests/unit/tables/table_test_support.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/money.h"
#include "values/variant.h"

namespace zobase {
namespace {

using testing::error_number_of;
using testing::field_def;
using testing::nullable;

struct value_st {
    Variant v;
    ~value_st() { v.release(nullptr); }
};

class FieldCodecs : public ::testing::Test {
protected:
    std::unique_ptr<DbfFile> table;

    void make(std::vector<fielddef_st> defs, int64_t codepage = 1252) {
        table = testing::create_table(String("memory:///codecs.dbf"), std::move(defs),
                                      testing::table_options(codepage));
    }
    // The field's bytes in the shown record.
    std::string bytes(uint64_t index) const {
        const DbfField* field = table->get_field(index);
        return std::string(table->shown_record + field->offset, field->length);
    }
    void put_bytes(uint64_t index, const std::string& raw) {
        const DbfField* field = table->get_field(index);
        std::memcpy(table->shown_record + field->offset, raw.data(), raw.size());
    }
    std::string text(uint64_t index) {
        value_st value;
        table->get_variant(index, &value.v);
        EXPECT_EQ(value.v.tag, TAG_STRING);
        return value.v.tag == TAG_STRING ? value.v.str().u8str() : "";
    }
    double number(uint64_t index) {
        value_st value;
        table->get_variant(index, &value.v);
        return value.v.tag == TAG_NUMERIC ? value.v.numeric.value : -999999;
    }
    // The text written for a numeric value, or the error number.
    std::string numeric_text(double value, uint64_t index = 0) {
        int error = error_number_of([&] { table->set_numeric(index, {value, 2}); });
        return error ? "error " + std::to_string(error) : bytes(index);
    }
};

TEST_F(FieldCodecs, LogicalBytes) {
    make({field_def("L", FIELD_TYPE_LOGICAL)});
    for (char c : std::string("TtYyf?")) {
        put_bytes(0, std::string(1, c));
        value_st value;
        table->get_variant(0, &value.v);
        EXPECT_EQ(value.v.tag, TAG_TRUE) << c;
    }
    for (char c : std::string(" F\0", 3)) {
        put_bytes(0, std::string(1, c));
        value_st value;
        table->get_variant(0, &value.v);
        EXPECT_EQ(value.v.tag, TAG_FALSE) << int(c);
    }
    table->set_logical(0, true);
    EXPECT_EQ(bytes(0), "T");
    table->set_logical(0, false);
    EXPECT_EQ(bytes(0), " ");
}

TEST_F(FieldCodecs, DateDigitsAreReadUnchecked) {
    make({field_def("D", FIELD_TYPE_DATE), field_def("T", FIELD_TYPE_DATETIME)});
    date_st date;
    serial_julian_date(987, 3, 4, &date);
    table->set_date(0, date);
    EXPECT_EQ(bytes(0), "09870304");
    table->set_date(0, date_st{0});
    EXPECT_EQ(bytes(0), "        ");
    datetime_st moment;
    serial_julian_date(2020, 1, 2, 3, 4, 5, &moment);
    table->set_datetime(0, moment);  // the time is dropped
    EXPECT_EQ(bytes(0), "20200102");
    // A space counts as the digit value minus 16: "202 " is the year 2004.
    put_bytes(0, "202 0101");
    value_st value;
    table->get_variant(0, &value.v);
    int y, m, d;
    unserial_julian_date(value.v.date, &y, &m, &d);
    EXPECT_EQ(y * 10000 + m * 100 + d, 20040101);
    put_bytes(0, "00000101");  // year 0 has no days
    value_st invalid;
    table->get_variant(0, &invalid.v);
    EXPECT_EQ(invalid.v.date.julian, 0u);
}

TEST_F(FieldCodecs, DatetimesRoundToSecondsOnReadOnly) {
    make({field_def("T", FIELD_TYPE_DATETIME)});
    auto read_msecs = [&](uint32_t day, uint32_t msecs) {
        table->set_datetime(0, datetime_st{day, msecs});
        EXPECT_EQ(read_le32(bytes(0).data() + 4), msecs);
        value_st value;
        table->get_variant(0, &value.v);
        return std::make_pair(value.v.datetime.julian, value.v.datetime.msecs);
    };
    EXPECT_EQ(read_msecs(2460000, 1500), std::make_pair(2460000u, 1000u));
    EXPECT_EQ(read_msecs(2460000, 1501), std::make_pair(2460000u, 2000u));
    EXPECT_EQ(read_msecs(2460000, MSECS_PER_DAY - 200), std::make_pair(2460001u, 0u));
    table->set_date(0, date_st{2460000});
    EXPECT_EQ(read_le32(bytes(0).data()), 2460000u);
    EXPECT_EQ(read_le32(bytes(0).data() + 4), 0u);
}

TEST_F(FieldCodecs, NumericTextKeepsWholeDigitsAndMayCutDecimals) {
    make({field_def("N", FIELD_TYPE_NUMERIC, 5, 2), field_def("P", FIELD_TYPE_NUMERIC, 3, 2),
          field_def("W", FIELD_TYPE_NUMERIC, 5, 0), field_def("S", FIELD_TYPE_NUMERIC, 4, 2)});
    EXPECT_EQ(numeric_text(12.345), "12.35");
    EXPECT_EQ(numeric_text(123.456), "123.4");
    EXPECT_EQ(numeric_text(123456.0), "error 39");
    EXPECT_EQ(numeric_text(12345.0), "12345");
    // Cut at its point, the text is made again from the rounded value.
    EXPECT_EQ(numeric_text(1234.7), "1235.");
    EXPECT_EQ(numeric_text(-1.5), "-1.50");
    EXPECT_EQ(numeric_text(0.5, 1), ".50");
    // Below 1 and filling the width exactly: refused, as it always was.
    EXPECT_EQ(numeric_text(0.5, 3), "error 39");
    EXPECT_EQ(numeric_text(2.5, 2), "    3");
    EXPECT_EQ(numeric_text(99999.4, 2), "99999");
    EXPECT_EQ(numeric_text(100000.0, 2), "error 39");
    EXPECT_EQ(numeric_text(1.0 / 0.0), "error 39");
    table->set_integer(0, 5);
    EXPECT_EQ(bytes(0), " 5.00");
    EXPECT_EQ(error_number_of([&] { table->set_integer(2, 123456); }), 39);
    table->set_money(0, money_from_i128(-12345));
    EXPECT_EQ(bytes(0), "-1.23");
    put_bytes(0, "  -7.");
    EXPECT_EQ(number(0), -7.0);
    put_bytes(0, "     ");
    EXPECT_EQ(number(0), 0.0);
    put_bytes(0, " +1.5");
    EXPECT_EQ(number(0), 1.5);
    put_bytes(0, "abcde");
    EXPECT_EQ(number(0), 0.0);
}

TEST_F(FieldCodecs, IntegersHoldTo32BitsWithOverflowErrors) {
    make({field_def("I", FIELD_TYPE_INTEGER)});
    table->set_integer(0, 2147483647);
    EXPECT_EQ(read_le32(bytes(0).data()), 0x7FFFFFFFu);
    try {
        table->set_integer(0, 2147483648LL);
        FAIL();
    } catch (const overflow_error& e) {
        EXPECT_EQ(e.detail.u8str(), "positive overflow");
    }
    try {
        table->set_money(0, money_from_integer(-2147483649LL));
        FAIL();
    } catch (const overflow_error& e) {
        EXPECT_EQ(e.detail.u8str(), "negative overflow");
    }
    table->set_money(0, money_from_i128(-25000));
    EXPECT_EQ(static_cast<int32_t>(read_le32(bytes(0).data())), -3);
    table->set_numeric(0, {2.5, 1});
    EXPECT_EQ(static_cast<int32_t>(read_le32(bytes(0).data())), 3);
    // Numeric values are not range-checked: the low 32 bits stay.
    table->set_numeric(0, {4294967297.0, 0});
    EXPECT_EQ(read_le32(bytes(0).data()), 1u);
}

TEST_F(FieldCodecs, CurrencyAndDouble) {
    make({field_def("Y", FIELD_TYPE_CURRENCY), field_def("B", FIELD_TYPE_DOUBLE)});
    auto chars = [&](int64_t units) {
        write_le64(table->shown_record + table->get_field(0)->offset, static_cast<uint64_t>(units));
        char out[32];
        uint64_t length = sizeof out;
        const Charset* charset = nullptr;
        table->get_char(0, out, &length, &charset);
        return std::string(out, length);
    };
    EXPECT_EQ(chars(12345), "1.2345");
    EXPECT_EQ(chars(5000), ".5000");
    EXPECT_EQ(chars(0), "-.0000");
    EXPECT_EQ(chars(-123456789), "-12345.6789");
    char tiny[4];
    uint64_t length = sizeof tiny;
    const Charset* charset = nullptr;
    EXPECT_THROW(table->get_char(0, tiny, &length, &charset), dbf_error_buffer_overflow);

    table->set_integer(0, 7);
    EXPECT_EQ(read_le64(bytes(0).data()), 70000u);
    EXPECT_THROW(table->set_integer(0, 1000000000000000LL), overflow_error);
    table->set_numeric(0, {-1.23459, 5});
    EXPECT_EQ(static_cast<int64_t>(read_le64(bytes(0).data())), -12345);
    value_st y;
    table->get_variant(0, &y.v);
    EXPECT_EQ(static_cast<long long>(money_to_i128(y.v.money)), -12345);

    table->set_money(1, money_from_i128(12345));
    value_st b;
    table->get_variant(1, &b.v);
    EXPECT_EQ(b.v.numeric.value, 1.2345);
    EXPECT_EQ(b.v.numeric.decimals, 2u);
}

TEST_F(FieldCodecs, VarcharLengthByteAndFullWidth) {
    make({field_def("V", FIELD_TYPE_VARCHAR, 4), field_def("Q", FIELD_TYPE_VARBINARY, 3)});
    const DbfField* v = table->get_field(0);
    table->set_string(0, String("ab"));
    EXPECT_EQ(bytes(0), std::string("ab \x02", 4));
    EXPECT_TRUE(varlen_bit_set(table.get(), v, table->shown_record));
    // Filled to its width the field has no length byte: the last byte is data.
    table->set_string(0, String("abcd"));
    EXPECT_EQ(bytes(0), "abcd");
    EXPECT_FALSE(varlen_bit_set(table.get(), v, table->shown_record));
    EXPECT_EQ(text(0), "abcd");
    table->set_string(0, String("abcdef"));
    EXPECT_EQ(text(0), "abcd");
    table->set_string(1, String::fromBytes("\x01", 1, Charset::binary));
    EXPECT_EQ(bytes(1), std::string("\x01\0\x01", 3));
    // A length byte beyond the field is damage.
    put_bytes(0, "ab \x09");
    set_varlen_bit(table.get(), v, table->shown_record);
    value_st value;
    EXPECT_THROW(table->get_variant(0, &value.v), dbf_error_file_corruption);
}

TEST_F(FieldCodecs, CharactersAreConvertedIntoTheTableCharset) {
    fielddef_st raw = field_def("R", FIELD_TYPE_CHARACTER, 4);
    raw.binary = true;
    make({field_def("C", FIELD_TYPE_CHARACTER, 6), raw});
    table->set_string(0, String("Größe"));
    EXPECT_EQ(bytes(0), "Gr\xF6\xDF" "e ");
    EXPECT_EQ(text(0), "Größe ");
    EXPECT_THROW(table->set_string(0, String("Ωmega")), dbf_error_cptrans_char_lost);
    table->set_string(0, String("a longer text"));
    EXPECT_EQ(bytes(0), "a long");
    // Binary fields keep the bytes as given.
    table->set_string(1, String("é"));
    EXPECT_EQ(bytes(1), "\xC3\xA9  ");

    char out[16];
    uint64_t length = sizeof out;
    const Charset* charset = nullptr;
    table->set_string(0, String("Größe"));
    table->get_char(0, out, &length, &charset);
    EXPECT_EQ(std::string(out, length), "Gr\xF6\xDF" "e ");
    EXPECT_EQ(charset, table->charset);
    length = sizeof out;
    charset = Charset::utf8;
    table->get_char(0, out, &length, &charset);
    EXPECT_EQ(std::string(out, length), "Größe ");
    length = 5;
    charset = nullptr;
    EXPECT_THROW(table->get_char(0, out, &length, &charset), dbf_error_buffer_overflow);
}

TEST_F(FieldCodecs, MultibyteTablesKeepWholeCharacters) {
    make({field_def("C", FIELD_TYPE_CHARACTER, 3)}, 65001);
    EXPECT_EQ(table->get_field(0)->length, 12u);
    table->set_string(0, String("äöüß"));
    EXPECT_EQ(text(0), "äöü");
    EXPECT_EQ(bytes(0), "äöü      ");
    table->set_string(0, String("ab"));
    EXPECT_EQ(text(0), "ab ");
}

TEST_F(FieldCodecs, NullableFieldsKeepTheirBytesUnderTheNullBit) {
    make({nullable(field_def("C", FIELD_TYPE_CHARACTER, 3)), field_def("N", FIELD_TYPE_NUMERIC, 4)});
    const DbfField* c = table->get_field(0);
    table->set_string(0, String("abc"));
    table->set_null(0);
    EXPECT_TRUE(null_bit_set(table.get(), c, table->shown_record));
    EXPECT_EQ(bytes(0), "abc");
    value_st value;
    table->get_variant(0, &value.v);
    EXPECT_TRUE(value.v.is_null());
    table->set_string(0, String("x"));
    EXPECT_FALSE(null_bit_set(table.get(), c, table->shown_record));
    EXPECT_THROW(table->set_null(1), dbf_error_field_no_null_support);
    // A refused write leaves the bit alone.
    table->set_null(0);
    EXPECT_THROW(table->set_logical(0, true), dbf_error_field_type_conflict);
    EXPECT_TRUE(null_bit_set(table.get(), c, table->shown_record));
}

TEST_F(FieldCodecs, KindsAFieldDoesNotTakeAreRefused) {
    make({field_def("C", FIELD_TYPE_CHARACTER, 3), field_def("I", FIELD_TYPE_INTEGER),
          field_def("D", FIELD_TYPE_DATE)});
    EXPECT_THROW(table->set_logical(0, true), dbf_error_field_type_conflict);
    EXPECT_THROW(table->set_integer(0, 1), dbf_error_field_type_conflict);
    EXPECT_THROW(table->set_date(0, date_st{1}), dbf_error_field_type_conflict);
    EXPECT_THROW(table->set_string(1, String("1")), dbf_error_field_type_conflict);
    EXPECT_THROW(table->set_numeric(2, {1, 0}), dbf_error_field_type_conflict);
    EXPECT_THROW(table->get_memo_size(0), dbf_error_field_type_conflict);
    EXPECT_THROW(table->set_integer(3, 1), dbf_error_invalid_field_number);
    {
        DbfRecursionGuard busy(table.get());
        EXPECT_THROW(table->set_integer(1, 1), dbf_illegal_recursion);
    }
    table->set_integer(1, 1);
}

TEST_F(FieldCodecs, VariantsGoToTheSlotOfTheirKind) {
    make({field_def("N", FIELD_TYPE_NUMERIC, 8, 2), nullable(field_def("L", FIELD_TYPE_LOGICAL)),
          field_def("C", FIELD_TYPE_CHARACTER, 4)});
    Variant value;
    value.set_integer(12LL);
    table->set_variant(0, &value);
    EXPECT_EQ(bytes(0), "   12.00");
    value.set(money_from_i128(15000));
    table->set_variant(0, &value);
    EXPECT_EQ(bytes(0), "    1.50");
    value.set_true();
    table->set_variant(1, &value);
    EXPECT_EQ(bytes(1), "T");
    value.set_null();
    table->set_variant(1, &value);
    value_st read;
    table->get_variant(1, &read.v);
    EXPECT_TRUE(read.v.is_null());
    Variant text;
    text.set_string(String("ok"));
    Variant reference;
    reference.tag = TAG_POINTER;
    reference.pointer = {&text, {}};
    table->set_variant(2, &reference);
    EXPECT_EQ(bytes(2), "ok  ");
    text.release(nullptr);
    Variant array;
    array.tag = TAG_ARRAY;
    EXPECT_THROW(table->set_variant(2, &array), dbf_error_not_impl);
}

TEST_F(FieldCodecs, OtherFieldsHandOutTheirValuesAsText) {
    make({field_def("N", FIELD_TYPE_NUMERIC, 8, 2), field_def("D", FIELD_TYPE_DATE)});
    table->set_numeric(0, {3.5, 2});
    char out[32];
    uint64_t length = sizeof out;
    const Charset* charset = Charset::utf16le;
    table->get_char(0, out, &length, &charset);
    EXPECT_EQ(length, 8u);
    EXPECT_EQ(std::string(out, length), std::string("3\0.\0" "5\0" "0\0", 8));
}

}  // namespace
}  // namespace zobase
