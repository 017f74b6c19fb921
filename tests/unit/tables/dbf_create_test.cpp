// Creating tables: names, widths, the null bits, the bytes on disk, and the
// round trip of every field type through a fresh open.
#include <gtest/gtest.h>

#include <cstring>

#include "tables/byte_order.h"
#include "tables/dbf_file.h"
#include "tables/field_names.h"
#include "tests/unit/support/error_number.h"
#include "tests/unit/tables/table_test_support.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/money.h"
#include "values/variant.h"

namespace zobase {
namespace {

using testing::create_table;
using testing::error_number_of;
using testing::field_def;
using testing::nullable;
using testing::open_table;
using testing::TableFolder;
using testing::table_options;

// A Variant that lets go of what it holds.
struct value_st {
    Variant v;
    ~value_st() { v.release(nullptr); }
};

std::string text_of(DbfFile* table, uint64_t index) {
    value_st value;
    table->get_variant(index, &value.v);
    return value.v.tag == TAG_STRING ? value.v.str().u8str() : "<not a string>";
}

TEST(Uniqify, MakesNamesValidShortAndUnique) {
    const Charset* cp1252 = get_charset_by_codepage(1252, false);
    FieldNameSet taken;
    uniqify_report_st report;
    EXPECT_EQ(uniqify(U"ABCDEFGHIJKL", 10, cp1252, taken, &report), U"ABCDEFGHIJ");
    EXPECT_TRUE(report.cut);
    EXPECT_FALSE(report.changed || report.renamed);
    EXPECT_EQ(uniqify(U"abcdefghijkm", 10, cp1252, taken, &report), U"abcdefghi2");
    EXPECT_TRUE(report.cut && report.renamed);
    EXPECT_EQ(uniqify(U"ABCDEFGHIJ", 10, cp1252, taken, &report), U"ABCDEFGHI3");
    EXPECT_EQ(uniqify(U"1st prïce-€", 20, cp1252, taken, &report), U"_st_prïce__");
    EXPECT_TRUE(report.changed);
    EXPECT_FALSE(report.cut || report.renamed);
    // A character the charset lacks is invalid too.
    EXPECT_EQ(uniqify(U"Ωmega", 20, cp1252, taken, &report), U"_mega");
    EXPECT_TRUE(report.changed);
    EXPECT_EQ(uniqify(U"", 20, cp1252, taken, &report), U"_");
    EXPECT_EQ(uniqify(U"_", 20, cp1252, taken, &report), U"_2");
    EXPECT_TRUE(report.renamed && !report.changed);
    // Limits count bytes in the charset.
    FieldNameSet fresh;
    EXPECT_EQ(uniqify(U"ääääää", 10, Charset::utf8, fresh, &report), U"äääää");
    EXPECT_TRUE(report.cut);
}

class DbfCreate : public ::testing::Test {
protected:
    TableFolder folder;
};

TEST_F(DbfCreate, LongNamesNeedRenameAllowedAndAreWrittenBack) {
    std::vector<fielddef_st> defs = {field_def("ABCDEFGHIJKL", FIELD_TYPE_CHARACTER, 5),
                                     field_def("ABCDEFGHIJKM", FIELD_TYPE_CHARACTER, 5)};
    EXPECT_THROW(create_table(folder.name("a.dbf"), defs), dbf_error_field_name_dup_or_inv);
    createopts_st options = table_options();
    options.rename_allowed = true;
    auto table = create_table(folder.name("b.dbf"), defs, options);
    EXPECT_EQ(table->field_name(table->get_field(0)).u8str(), "ABCDEFGHIJ");
    EXPECT_EQ(table->field_name(table->get_field(1)).u8str(), "ABCDEFGHI2");

    std::vector<fielddef_st> duplicates = {field_def("Name", FIELD_TYPE_CHARACTER, 5),
                                           field_def("NAME", FIELD_TYPE_CHARACTER, 5),
                                           field_def("bad name", FIELD_TYPE_CHARACTER, 5)};
    EXPECT_THROW(create_table(folder.name("c.dbf"), {duplicates[0], duplicates[1]}),
                 dbf_error_field_name_dup_or_inv);
    EXPECT_THROW(create_table(folder.name("d.dbf"), {duplicates[2]}), dbf_error_field_name_dup_or_inv);
    auto renamed = testing::create_table_from(folder.name("e.dbf"), duplicates.data(), 3, options);
    EXPECT_STREQ(duplicates[1].name, "NAME2");
    EXPECT_STREQ(duplicates[2].name, "bad_name");
}

TEST_F(DbfCreate, TemporaryTablesKeepLongNamesInMemory) {
    std::vector<fielddef_st> defs = {field_def("customer_number", FIELD_TYPE_INTEGER)};
    createopts_st options = table_options();
    options.temporary = options.rename_allowed = true;
    auto table = create_table(String("memory:///cursor.dbf"), defs, options);
    EXPECT_EQ(table->field_name(table->get_field(0)).u8str(), "customer_number");
}

TEST_F(DbfCreate, WidthRulesRefuseOrClamp) {
    auto width_error = [&](fielddef_st def, bool clamp = false) {
        createopts_st options = table_options();
        options.clamp_allowed = clamp;
        return error_number_of([&] { create_table(folder.name("w.dbf"), {def}, options); });
    };
    fielddef_st zero = field_def("C", FIELD_TYPE_CHARACTER, 0);
    zero.default_length = false;
    EXPECT_EQ(width_error(zero), 1731);
    EXPECT_EQ(width_error(field_def("C", FIELD_TYPE_CHARACTER, 255)), 1731);
    EXPECT_EQ(width_error(field_def("N", FIELD_TYPE_NUMERIC, 21)), 1731);
    EXPECT_EQ(width_error(field_def("N", FIELD_TYPE_NUMERIC, 10, 256)), 39);
    EXPECT_EQ(width_error(field_def("N", FIELD_TYPE_NUMERIC, 10, 10)), 1731);
    EXPECT_EQ(width_error(field_def("B", FIELD_TYPE_DOUBLE, 0, 19)), 1731);
    EXPECT_EQ(width_error(field_def("N", FIELD_TYPE_NUMERIC, 21), true), 0);

    createopts_st clamp = table_options();
    clamp.clamp_allowed = true;
    auto table = create_table(folder.name("clamped.dbf"),
                              {field_def("C", FIELD_TYPE_CHARACTER, 300),
                               field_def("N", FIELD_TYPE_NUMERIC, 8, 9),
                               field_def("B", FIELD_TYPE_DOUBLE, 0, 30)},
                              clamp);
    EXPECT_EQ(table->get_field(0)->length, 254u);
    EXPECT_EQ(table->get_field(1)->decimals, 8u);
    EXPECT_EQ(table->get_field(2)->decimals, 18u);
}

TEST_F(DbfCreate, DefaultsAndFixedWidths) {
    auto table = create_table(
        folder.name("d.dbf"),
        {field_def("C", FIELD_TYPE_CHARACTER), field_def("N", FIELD_TYPE_NUMERIC),
         field_def("Y", FIELD_TYPE_CURRENCY, 30, 1), field_def("I", FIELD_TYPE_INTEGER, 9),
         field_def("B", FIELD_TYPE_DOUBLE), field_def("L", FIELD_TYPE_LOGICAL, 5),
         field_def("M", FIELD_TYPE_MEMO), field_def("T", FIELD_TYPE_DATETIME)});
    const uint64_t widths[] = {1, 10, 8, 4, 8, 1, 4, 8};
    for (uint64_t i = 0; i < 8; ++i) EXPECT_EQ(table->get_field(i)->length, widths[i]) << i;
    EXPECT_EQ(table->get_field(2)->decimals, 4u);
    EXPECT_EQ(table->get_field(4)->decimals, 2u);
    // I, T and B are always binary.
    EXPECT_TRUE(table->get_field(3)->binary && table->get_field(7)->binary);
    EXPECT_FALSE(table->get_field(0)->binary);
    // Character widths count the charset's widest character.
    auto utf8 = create_table(folder.name("u.dbf"), {field_def("C", FIELD_TYPE_CHARACTER, 10)},
                             table_options(65001));
    EXPECT_EQ(utf8->get_field(0)->length, 40u);
}

// A stated B decimals of 18 or less comes from the first definition.
TEST_F(DbfCreate, DoubleDecimalsComeFromTheFirstDefinition) {
    auto table = create_table(folder.name("b.dbf"), {field_def("N", FIELD_TYPE_NUMERIC, 10, 3),
                                                     field_def("B", FIELD_TYPE_DOUBLE, 0, 7)});
    EXPECT_EQ(table->get_field(1)->decimals, 3u);
}

TEST_F(DbfCreate, GeneralFieldsCannotBeCreated) {
    EXPECT_THROW(create_table(folder.name("g.dbf"), {field_def("G", FIELD_TYPE_GENERAL)}),
                 dbf_error_field_name_dup_or_inv);
    EXPECT_THROW(create_table(folder.name("x.dbf"), {field_def("X", 99)}),
                 dbf_error_field_name_dup_or_inv);
}

TEST_F(DbfCreate, RefusesUnknownCodepagesAndFilesThatAreNotEmpty) {
    EXPECT_THROW(create_table(folder.name("a.dbf"), {}, table_options(0)),
                 dbf_error_codepage_not_supported);
    EXPECT_THROW(create_table(folder.name("a.dbf"), {}, table_options(1257)),
                 dbf_error_codepage_not_supported);
    File* file = create_file(folder.name("full.dbf"), 0);
    file->writeex(0, "x", 1);
    createopts_st options = table_options();
    EXPECT_THROW(DbfFile::create(file, &options, nullptr, 0), dbf_error_file_exists);
    delete file;
}

TEST_F(DbfCreate, WritesTheLayoutByteForByte) {
    create_table(folder.name("t.dbf"),
                 {field_def("NAME", FIELD_TYPE_CHARACTER, 3), nullable(field_def("QTY", FIELD_TYPE_INTEGER)),
                  field_def("TAG", FIELD_TYPE_VARCHAR, 4), field_def("NOTES", FIELD_TYPE_MEMO)},
                 table_options(850));
    std::string bytes = folder.read("t.dbf");
    ASSERT_EQ(bytes.size(), 32u * 6 + 264);
    EXPECT_EQ(static_cast<uint8_t>(bytes[0]), 0x32);
    std::time_t now = std::time(nullptr);
    std::tm today;
    localtime_r(&now, &today);
    EXPECT_EQ(bytes[1], today.tm_year % 100);
    EXPECT_EQ(bytes[2], today.tm_mon);  // counted from 0
    EXPECT_EQ(read_le32(bytes.data() + 4), 0u);
    EXPECT_EQ(read_le16(bytes.data() + 8), 32u * 6 + 264);
    EXPECT_EQ(read_le16(bytes.data() + 10), 1u + 3 + 4 + 4 + 4 + 1);
    EXPECT_EQ(bytes[28], 0x02);  // has a memo file
    EXPECT_EQ(static_cast<uint8_t>(bytes[29]), 0x02);  // code page 850
    const char* flags = bytes.data() + 5 * 32;
    EXPECT_EQ(std::string(flags), "_NullFlags");
    EXPECT_EQ(flags[11], '0');
    EXPECT_EQ(read_le32(flags + 12), 16u);
    EXPECT_EQ(flags[16], 1);           // QTY's null bit and TAG's length bit
    EXPECT_EQ(flags[18], 0x05);        // system and binary
    EXPECT_EQ(bytes.data()[32 + 32 + 18], DBF_FIELD_NULLABLE | DBF_FIELD_BINARY);
    EXPECT_EQ(bytes[6 * 32], 0x0D);
    EXPECT_EQ(bytes.substr(6 * 32 + 1), std::string(263, '\0'));
    EXPECT_EQ(folder.read("t.fpt").size(), 512u);
}

// Set, written, and read back through a fresh open of the file.
TEST_F(DbfCreate, EveryFieldTypeRoundTrips) {
    std::vector<fielddef_st> defs = {
        field_def("C", FIELD_TYPE_CHARACTER, 10),  field_def("V", FIELD_TYPE_VARCHAR, 10),
        field_def("Q", FIELD_TYPE_VARBINARY, 6),   field_def("D", FIELD_TYPE_DATE),
        field_def("T", FIELD_TYPE_DATETIME),       field_def("L", FIELD_TYPE_LOGICAL),
        field_def("I", FIELD_TYPE_INTEGER),        field_def("Y", FIELD_TYPE_CURRENCY),
        field_def("B", FIELD_TYPE_DOUBLE),         field_def("N", FIELD_TYPE_NUMERIC, 12, 2),
        field_def("F", FIELD_TYPE_FLOAT, 10, 3),   field_def("M", FIELD_TYPE_MEMO),
        field_def("W", FIELD_TYPE_BLOB),           nullable(field_def("NC", FIELD_TYPE_CHARACTER, 4)),
        nullable(field_def("NI", FIELD_TYPE_INTEGER)), nullable(field_def("NV", FIELD_TYPE_VARCHAR, 5)),
    };
    date_st day;
    serial_julian_date(2024, 2, 29, &day);
    datetime_st moment;
    serial_julian_date(2023, 12, 31, 23, 59, 58, &moment);
    {
        auto table = create_table(folder.name("all.dbf"), defs);
        for (int pass = 0; pass < 2; ++pass) {
            table->set_string(0, String("héllo"));
            table->set_string(1, String(pass ? "" : "var"));
            table->set_string(2, String::fromBytes("\x00\x01\xFF", 3, Charset::binary));
            table->set_date(3, day);
            table->set_datetime(4, moment);
            table->set_logical(5, true);
            table->set_integer(6, -2147483648LL);
            table->set_money(7, money_from_i128(-123456789));
            table->set_numeric(8, {3.25, 3});
            table->set_numeric(9, {-1234.567, 2});
            table->set_integer(10, 42);
            table->set_string(11, String(pass ? "second memo" : "memo body"));
            table->set_string(12, String::fromBytes("\x01\x02", 2, Charset::binary));
            table->set_null(13);
            table->set_null(14);
            table->set_string(15, String("12345"));
            testing::append_shown_record(table.get());
        }
    }
    auto table = open_table(folder.name("all.dbf"), FILE_OPEN_READ);
    ASSERT_EQ(table->record_count, 2u);
    ASSERT_TRUE(testing::read_into_shown(table.get(), 1));
    value_st v[16];
    for (uint64_t i = 0; i < 16; ++i) table->get_variant(i, &v[i].v);
    EXPECT_EQ(v[0].v.str().u8str(), "héllo     ");
    EXPECT_EQ(v[1].v.str().u8str(), "var");
    EXPECT_EQ(std::string(v[2].v.str().read(), v[2].v.str().size()), std::string("\x00\x01\xFF", 3));
    EXPECT_EQ(v[2].v.str().get_charset(), Charset::binary);
    EXPECT_EQ(v[3].v.date.julian, day.julian);
    EXPECT_EQ(v[4].v.datetime.julian, moment.julian);
    EXPECT_EQ(v[4].v.datetime.msecs, moment.msecs);
    EXPECT_EQ(v[5].v.tag, TAG_TRUE);
    EXPECT_EQ(v[6].v.integer, -2147483648LL);
    EXPECT_EQ(static_cast<long long>(money_to_i128(v[7].v.money)), -123456789);
    EXPECT_EQ(v[8].v.numeric.value, 3.25);
    EXPECT_EQ(v[8].v.numeric.decimals, 2u);
    EXPECT_DOUBLE_EQ(v[9].v.numeric.value, -1234.57);
    EXPECT_EQ(v[9].v.numeric.decimals, 2u);
    EXPECT_EQ(v[10].v.numeric.value, 42.0);
    EXPECT_EQ(v[11].v.str().u8str(), "memo body");
    EXPECT_EQ(std::string(v[12].v.str().read(), 2), "\x01\x02");
    EXPECT_TRUE(v[13].v.is_null());
    EXPECT_TRUE(v[14].v.is_null());
    EXPECT_EQ(v[15].v.str().u8str(), "12345");
    EXPECT_EQ(table->get_memo_size(11), 9u);

    ASSERT_TRUE(testing::read_into_shown(table.get(), 2));
    EXPECT_EQ(text_of(table.get(), 1), "");
    EXPECT_EQ(text_of(table.get(), 11), "second memo");
}

// Tables are often stored in upper case; the memo file is found all the same.
TEST_F(DbfCreate, MemoFilesAreFoundWithoutRegardToCase) {
    {
        auto table = create_table(folder.name("lower.dbf"), {field_def("M", FIELD_TYPE_MEMO)});
        table->set_string(0, String("found"));
        testing::append_shown_record(table.get());
    }
    std::filesystem::rename(folder.path / "lower.dbf", folder.path / "UPPER.DBF");
    std::filesystem::rename(folder.path / "lower.fpt", folder.path / "UPPER.FPT");
    auto table = open_table(folder.name("UPPER.DBF"));
    ASSERT_TRUE(testing::read_into_shown(table.get(), 1));
    EXPECT_EQ(text_of(table.get(), 0), "found");
    EXPECT_EQ(table->fpt->file->name.u8str(), (folder.path / "UPPER.FPT").string());
}

TEST_F(DbfCreate, BlankRecordHoldsEmptyValuesNotNulls) {
    auto table = create_table(String("memory:///blank.dbf"),
                              {nullable(field_def("C", FIELD_TYPE_CHARACTER, 3)),
                               field_def("V", FIELD_TYPE_VARCHAR, 3), field_def("D", FIELD_TYPE_DATE),
                               nullable(field_def("N", FIELD_TYPE_NUMERIC, 5, 1)),
                               field_def("M", FIELD_TYPE_MEMO)});
    EXPECT_EQ(table->blank_record[0], ' ');
    value_st c, v, d, n, m;
    table->get_blank_value(0, &c.v);
    table->get_blank_value(1, &v.v);
    table->get_blank_value(2, &d.v);
    table->get_blank_value(3, &n.v);
    table->get_blank_value(4, &m.v);
    EXPECT_EQ(c.v.str().u8str(), "   ");
    EXPECT_EQ(v.v.str().u8str(), "");
    EXPECT_EQ(d.v.date.julian, 0u);
    EXPECT_EQ(n.v.tag, TAG_NUMERIC);
    EXPECT_EQ(n.v.numeric.value, 0.0);
    EXPECT_EQ(m.v.str().size(), 0u);
    // The read-ahead block keeps its formula: quotient plus remainder.
    uint64_t r = table->record_length;
    EXPECT_EQ(table->readahead_capacity, 4096 / r + 4096 % r);
}

TEST_F(DbfCreate, MemoryTablesGetAMemoryMemoFile) {
    createopts_st options = table_options();
    options.temporary = true;
    options.memo_block_size = 33;
    auto table = create_table(String("memory:///cursor.dbf"), {field_def("M", FIELD_TYPE_MEMO)}, options);
    ASSERT_TRUE(table->fpt);
    EXPECT_EQ(table->fpt->block_size, 33u);
    EXPECT_EQ(table->fpt->next_free_block, 16u);
    EXPECT_TRUE(is_memory_file_name(table->fpt->file->name));
    table->set_string(0, String("kept in memory"));
    EXPECT_EQ(text_of(table.get(), 0), "kept in memory");
}

TEST_F(DbfCreate, AutoincrementFieldsAreReadOnly) {
    fielddef_st id = field_def("ID", FIELD_TYPE_INTEGER);
    id.autoincrement = true;
    auto table = create_table(folder.name("a.dbf"), {id, field_def("NAME", FIELD_TYPE_CHARACTER, 4)});
    ASSERT_EQ(table->autoinc_fields.size(), 1u);
    EXPECT_EQ(table->autoinc_fields[0]->autoinc_next, 1u);
    EXPECT_EQ(table->autoinc_fields[0]->autoinc_step, 1u);
    EXPECT_THROW(table->set_integer(0, 5), dbf_error_field_readonly);
    EXPECT_THROW(table->set_numeric(0, {5, 0}), dbf_error_field_readonly);
    EXPECT_THROW(table->set_string(0, String("5")), dbf_error_field_type_conflict);
    // The record layer stamps the value through the writable slot.
    const DbfField* field = table->get_field(0);
    field->writable.set_integer(table.get(), field, 7, table->shown_record);
    value_st value;
    table->get_variant(0, &value.v);
    EXPECT_EQ(value.v.integer, 7);
}

}  // namespace
}  // namespace zobase
