// The open sequence and its checks, on table images written byte by byte.
#include <gtest/gtest.h>

#include "tables/dbf_file.h"
#include "tables/dbf_version.h"
#include "tables/lock_positions.h"
#include "text/charset.h"
#include "tests/unit/tables/table_test_support.h"
#include "values/variant.h"

namespace zobase {
namespace {

using testing::dbf_image_st;
using testing::open_table;
using testing::TableFolder;

class DbfOpen : public ::testing::Test {
protected:
    TableFolder folder;

    // A version 0x30 table: NAME C(5), QTY N(4), one record.
    dbf_image_st sample() {
        dbf_image_st image;
        image.fields = {{"NAME", 'C', 5}, {"QTY", 'N', 4}};
        image.records = {" Anna   12"};
        return image;
    }

    // Opens the image and reports the exception class it raised, "" if none.
    template <typename Expected>
    ::testing::AssertionResult opening_raises(const dbf_image_st& image,
                                              uint32_t flags = FILE_OPEN_READ | FILE_OPEN_WRITE) {
        folder.write("t.dbf", image.bytes());
        try {
            open_table(folder.name("t.dbf"), flags);
        } catch (const Expected&) {
            return ::testing::AssertionSuccess();
        } catch (const Exception& e) {
            return ::testing::AssertionFailure() << "raised " << e.name();
        }
        return ::testing::AssertionFailure() << "opened";
    }
};

TEST_F(DbfOpen, ReadsHeaderFieldsAndRecords) {
    folder.write("t.dbf", sample().bytes());
    auto table = open_table(folder.name("t.dbf"));
    EXPECT_EQ(table->version, 0x30);
    EXPECT_EQ(table->record_count, 1u);
    EXPECT_EQ(table->header_length, 32u * 3 + 264);
    EXPECT_EQ(table->record_length, 10u);
    EXPECT_EQ(table->terminator_position, 96u);
    EXPECT_EQ(table->backlink_position, 97u);
    EXPECT_FALSE(table->is_in_database());
    ASSERT_EQ(table->visible_fields.size(), 2u);
    EXPECT_EQ(table->field_name(table->get_field(1)).u8str(), "QTY");
    EXPECT_EQ(table->get_field(2), nullptr);
    // The month byte counts from 0: 5 is June.
    std::time_t updated = table->last_update / TIME_UNITS_PER_SECOND;
    std::tm broken;
    localtime_r(&updated, &broken);
    EXPECT_EQ(broken.tm_mon, 5);
    EXPECT_EQ(broken.tm_mday, 17);
    EXPECT_EQ(broken.tm_year % 100, 24);

    ASSERT_TRUE(testing::read_into_shown(table.get(), 1));
    Variant name, qty;
    table->get_variant(0, &name);
    table->get_variant(1, &qty);
    EXPECT_EQ(name.str().u8str(), "Anna ");
    EXPECT_EQ(qty.numeric.value, 12.0);
    name.release(nullptr);
    EXPECT_THROW(table->get_variant(2, &name), dbf_error_invalid_field_number);
}

TEST_F(DbfOpen, HeaderLengthMustMatchTheDescriptors) {
    dbf_image_st image = sample();
    image.header_length_delta = 1;
    EXPECT_TRUE(opening_raises<dbf_error_file_corruption>(image));
    image.header_length_delta = -1;
    EXPECT_TRUE(opening_raises<dbf_error_file_corruption>(image));
}

TEST_F(DbfOpen, FieldsMustFollowEachOtherWithoutGap) {
    dbf_image_st image = sample();
    image.gap_after_first_field = 1;
    image.records = {" Anna    12"};
    EXPECT_TRUE(opening_raises<dbf_error_file_corruption>(image));
}

TEST_F(DbfOpen, RecordCountIsCheckedOnlyForWriting) {
    dbf_image_st image = sample();
    image.record_count_delta = 1;
    EXPECT_TRUE(opening_raises<dbf_invalid_reccount_detected>(image));
    folder.write("t.dbf", image.bytes());
    EXPECT_EQ(open_table(folder.name("t.dbf"), FILE_OPEN_READ)->record_count, 2u);
    // A partial last record or an end-of-file byte is tolerated.
    image.record_count_delta = 0;
    image.records[0] += "\x1A";
    folder.write("t.dbf", image.bytes());
    EXPECT_NO_THROW(open_table(folder.name("t.dbf")));
}

TEST_F(DbfOpen, FieldTypesAreThoseOfTheVersion) {
    dbf_image_st image;
    image.version = 0x03;
    image.fields = {{"ID", 'I', 4}};
    EXPECT_TRUE(opening_raises<dbf_error_field_name_dup_or_inv>(image));
    image.version = 0x30;
    EXPECT_NO_THROW(opening_raises<dbf_error_field_name_dup_or_inv>(image));
    image.fields = {{"V", 'V', 4}};
    EXPECT_TRUE(opening_raises<dbf_error_field_name_dup_or_inv>(image));
    // Version 0x02 opens, but has no field types at all.
    image.version = 0x02;
    image.fields = {{"NAME", 'C', 4}};
    EXPECT_TRUE(opening_raises<dbf_unsupported_version>(image));
}

TEST_F(DbfOpen, TablesOfNoFieldsOpenWhenTheHeaderAgrees) {
    for (uint8_t version : {0x02, 0x03, 0x30, 0x32}) {
        dbf_image_st image;
        image.version = version;
        folder.write("t.dbf", image.bytes());
        {
            auto table = open_table(folder.name("t.dbf"));
            EXPECT_EQ(table->header_length, version >= 0x30 ? 296u : 33u);
            EXPECT_TRUE(table->visible_fields.empty());
        }
        image.header_length_delta = 1;
        EXPECT_TRUE(opening_raises<dbf_error_file_corruption>(image));
    }
}

TEST_F(DbfOpen, UnknownVersionsAndCodepagesAreRefused) {
    dbf_image_st image = sample();
    for (uint8_t version : {0x00, 0x01, 0x04, 0x83, 0xF6, 0xFF}) {
        image.version = version;
        EXPECT_TRUE(opening_raises<dbf_unsupported_version>(image)) << int(version);
    }
    image = sample();
    image.codepage_byte = 0;
    EXPECT_TRUE(opening_raises<dbf_error_codepage_not_supported>(image));
    image.codepage_byte = 0x05;
    EXPECT_TRUE(opening_raises<dbf_error_codepage_not_supported>(image));
    image.codepage_byte = 0xC9;
    folder.write("t.dbf", image.bytes());
    EXPECT_EQ(std::string(open_table(folder.name("t.dbf"))->charset->name()), "windows-1251");
}

TEST_F(DbfOpen, ShortFilesRunOutOfBytes) {
    std::string bytes = sample().bytes();
    for (size_t size : {0, 31, 32, 40, 64}) {
        folder.write("t.dbf", bytes.substr(0, size));
        EXPECT_THROW(open_table(folder.name("t.dbf"), FILE_OPEN_READ), dbf_error_buffer_underrun)
            << size;
    }
    // A terminator met by a short read still ends the list; the missing
    // backlink area is no failure for a reader.
    folder.write("t.dbf", bytes.substr(0, 97));
    EXPECT_EQ(open_table(folder.name("t.dbf"), FILE_OPEN_READ)->visible_fields.size(), 2u);
}

TEST_F(DbfOpen, NullFlagsMustBeNamedSoAndHoldEveryBit) {
    dbf_image_st image;
    image.fields = {{"A", 'C', 2, 0, DBF_FIELD_NULLABLE}, {"_NULLFLAGS", '0', 1, 0, 5}};
    image.records = {" ab\x01"};
    folder.write("t.dbf", image.bytes());
    {
        auto table = open_table(folder.name("t.dbf"));
        ASSERT_TRUE(testing::read_into_shown(table.get(), 1));
        Variant value;
        table->get_variant(0, &value);
        EXPECT_TRUE(value.is_null());
        EXPECT_EQ(table->visible_fields.size(), 1u);
    }

    image.fields[1].name = "FLAGS";
    EXPECT_TRUE(opening_raises<dbf_error_file_corruption>(image));
    image.fields.pop_back();
    image.records = {" ab"};
    EXPECT_TRUE(opening_raises<dbf_error_file_corruption>(image));
}

TEST_F(DbfOpen, FieldsWiderOrNarrowerThanTheirByteFormAreCorrupt) {
    for (dbf_image_st::field_st field : std::vector<dbf_image_st::field_st>{
             {"D", 'D', 6}, {"I", 'I', 8}, {"T", 'T', 4}, {"Y", 'Y', 4}, {"B", 'B', 7}, {"L", 'L', 0}}) {
        dbf_image_st image;
        image.fields = {field};
        EXPECT_TRUE(opening_raises<dbf_error_file_corruption>(image)) << field.name;
    }
}

TEST_F(DbfOpen, MemoFieldsNeedTheirMemoFile) {
    dbf_image_st image;
    image.fields = {{"NOTES", 'M', 4}};
    EXPECT_TRUE(opening_raises<dbf_fpt_file_missing>(image));
    folder.write("t.xyz", image.bytes());
    EXPECT_THROW(open_table(folder.name("t.xyz")), dbf_fpt_file_missing);
}

TEST_F(DbfOpen, BacklinkAreaTellsTablesOfADatabase) {
    std::string bytes = sample().bytes();
    bytes.replace(97, 7, "..\\a.dbc");
    folder.write("t.dbf", bytes);
    EXPECT_TRUE(open_table(folder.name("t.dbf"))->is_in_database());
}

TEST(DbfVersions, LockPositionsCountDownFromTheAppendLock) {
    for (uint8_t version : {0x02, 0x03, 0xF5}) {
        const dbf_version_st* v = find_dbf_version(version);
        ASSERT_NE(v, nullptr);
        EXPECT_EQ(v->append_lock_position(), 0x40000000u);
        EXPECT_EQ(v->record_lock_position(1), 0x3FFFFFFFu);
        EXPECT_FALSE(v->has_backlink);
    }
    for (uint8_t version : {0x30, 0x31, 0x32}) {
        const dbf_version_st* v = find_dbf_version(version);
        ASSERT_NE(v, nullptr);
        EXPECT_EQ(v->append_lock_position(), 0x7FFFFFFEu);
        EXPECT_EQ(v->record_lock_position(1), 0x7FFFFFFDu);
        EXPECT_TRUE(v->has_backlink);
    }
    // The CDX lock and the append lock of the visual versions share a number
    // but not a file; the memo lock lies below both.
    EXPECT_EQ(CDX_LOCK_POSITION, find_dbf_version(0x30)->append_lock_position());
    EXPECT_EQ(FPT_ALLOCATION_LOCK_POSITION, 0x40000000u);
    EXPECT_GT(static_cast<uint64_t>(SHARE_MODE_LOCK_POSITION), 0xFFFFull * 0x7FFFFFFE);
    EXPECT_EQ(find_dbf_version(0x04), nullptr);
}

// Two opens of a shared table take its append lock in turn.
TEST_F(DbfOpen, AppendLockIsTakenOnlyOnSharedTables) {
    folder.write("t.dbf", sample().bytes());
    uint32_t shared = FILE_OPEN_READ | FILE_OPEN_WRITE | FILE_OPEN_SHARED;
    auto first = open_table(folder.name("t.dbf"), shared);
    auto second = open_table(folder.name("t.dbf"), shared);
    {
        DbfAppendLock lock(first.get());
        EXPECT_TRUE(lock.held());
    }
    DbfAppendLock again(second.get());
    EXPECT_TRUE(again.held());
    folder.write("u.dbf", sample().bytes());
    auto exclusive = open_table(folder.name("u.dbf"));
    EXPECT_FALSE(DbfAppendLock(exclusive.get()).held());
}

}  // namespace
}  // namespace zobase
