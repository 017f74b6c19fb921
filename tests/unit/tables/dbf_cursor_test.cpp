// The record cursor, updates and record locks of DbfFile.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "tables/dbf_file.h"
#include "tests/unit/tables/table_test_support.h"
#include "values/variant.h"

namespace zobase {
namespace {

using testing::create_table;
using testing::field_def;
using testing::open_table;
using testing::TableFolder;

constexpr uint32_t SHARED = FILE_OPEN_READ | FILE_OPEN_WRITE | FILE_OPEN_SHARED;

class DbfCursor : public ::testing::Test {
protected:
    TableFolder folder;

    // NAME C(6), QTY N(4), closed again; `records` rows "r1".."rN" with QTY = N.
    String make(int records) {
        String name = folder.name("t.dbf");
        auto table = create_table(name, {field_def("NAME", FIELD_TYPE_CHARACTER, 6),
                                         field_def("QTY", FIELD_TYPE_NUMERIC, 4)});
        for (int i = 1; i <= records; ++i) append(table.get(), "r" + std::to_string(i), i);
        table->close();
        return name;
    }

    static void append(DbfFile* table, const std::string& name, int qty) {
        table->begin_append();
        table->set_string(0, String(name.c_str()));
        table->set_integer(1, qty);
        table->update(nullptr);
    }

    static std::string name_of(DbfFile* table) {
        Variant value;
        table->get_variant(0, &value);
        std::string text = value.str().u8str();
        value.release(nullptr);
        return text.substr(0, text.find(' '));
    }

    static long long qty_of(DbfFile* table) {
        Variant value;
        table->get_variant(1, &value);
        return static_cast<long long>(value.numeric.value);
    }

    // The record count the header on disk holds.
    uint32_t header_count() const {
        std::string bytes = folder.read("t.dbf");
        uint32_t count = 0;
        std::memcpy(&count, bytes.data() + 4, 4);
        return count;
    }
};

TEST_F(DbfCursor, EmptyTableSetsBothFlags) {
    auto table = open_table(make(0));
    table->go_top();
    EXPECT_TRUE(table->bof);
    EXPECT_TRUE(table->eof);
    table->go_next();
    EXPECT_TRUE(table->bof && table->eof);
    EXPECT_EQ(table->recno, 1u);
    table->go_bottom();
    EXPECT_TRUE(table->bof && table->eof);
    EXPECT_EQ(table->recno, 1u);
}

TEST_F(DbfCursor, WalksBothWaysAndStopsAtTheEnds) {
    auto table = open_table(make(3));
    table->go_top();
    EXPECT_EQ(name_of(table.get()), "r1");
    table->go_next();
    table->go_next();
    EXPECT_EQ(name_of(table.get()), "r3");
    table->go_next();
    EXPECT_TRUE(table->eof);
    EXPECT_FALSE(table->bof);
    EXPECT_EQ(table->recno, 4u);
    EXPECT_EQ(name_of(table.get()), "");
    table->go_prev();  // from end of file: the last record
    EXPECT_EQ(table->recno, 3u);
    EXPECT_FALSE(table->eof);
    table->go_prev();
    table->go_prev();
    EXPECT_EQ(table->recno, 1u);
    EXPECT_FALSE(table->bof);
    // Before record 1: bof is set, the record stays, and the move is refused.
    EXPECT_THROW(table->go_prev(), dbf_error_record_out_of_range);
    EXPECT_TRUE(table->bof);
    EXPECT_EQ(name_of(table.get()), "r1");
    EXPECT_THROW(table->go_prev(), dbf_error_bof);
}

TEST_F(DbfCursor, GoToReadsOneRecordAndRefusesNumbersPastTheEnd) {
    auto table = open_table(make(5));
    table->go_to(nullptr, 4);
    EXPECT_EQ(name_of(table.get()), "r4");
    EXPECT_THROW(table->go_to(nullptr, 6), dbf_error_record_out_of_range);
    EXPECT_THROW(table->go_to(nullptr, 0), dbf_error_record_out_of_range);
    table->go_eof();
    EXPECT_TRUE(table->eof);
    EXPECT_EQ(table->recno, 6u);
}

// Many records pass through the read-ahead block; a record written and then
// read again through the block shows what was written.
TEST_F(DbfCursor, BlockReadsSeeWrittenRecords) {
    auto table = open_table(make(300));
    table->go_top();
    int count = 1;
    while (table->go_next(), !table->eof) ++count;
    EXPECT_EQ(count, 300);
    table->go_top();
    table->go_next();
    table->set_integer(1, 77);
    table->update(nullptr);
    table->go_prev();
    table->go_next();
    EXPECT_EQ(qty_of(table.get()), 77);
}

// A table held alone fills its block from the mapping of the file: every
// record in its place, up to the last block that the file cuts short, and
// records written to the file after the mapping was made.
TEST_F(DbfCursor, UnsharedWalksReadEveryRecordInPlace) {
    String name = make(301);
    auto table = open_table(name);
    // QTY holds four digits: record n carries n modulo 10,000.
    auto walk = [&](int expected) {
        int seen = 0;
        for (table->go_top(); !table->eof; table->go_next()) {
            if (qty_of(table.get()) != ++seen % 10000) break;
        }
        EXPECT_EQ(seen, expected);
    };
    walk(301);
    int total = 301 + static_cast<int>(table->pending_capacity) + 5;
    for (int i = 302; i <= total; ++i) append(table.get(), "g", i % 10000);
    table->flush();
    walk(total);
}

// A shared table's block is read when the walk reaches it, so what another
// opener wrote before that moment shows.
TEST_F(DbfCursor, SharedWalksSeeWritesMadeBeforeTheirBlock) {
    String name = make(2000);
    auto reader = open_table(name, SHARED);
    auto writer = open_table(name, SHARED);
    reader->go_top();
    uint32_t target = static_cast<uint32_t>(reader->readahead_capacity) + 10;  // in the second block
    ASSERT_LE(target, 2000u);
    writer->go_to(nullptr, target);
    writer->set_integer(1, 9999);
    writer->update(nullptr);
    while (reader->recno < target) reader->go_next();
    EXPECT_EQ(qty_of(reader.get()), 9999);
}

TEST_F(DbfCursor, UpdateWithoutChangeWritesNothing) {
    auto table = open_table(make(1), FILE_OPEN_READ);
    table->go_top();
    EXPECT_NO_THROW(table->update(nullptr));  // read-only, but nothing to write
    table->set_integer(1, 9);
    EXPECT_THROW(table->update(nullptr), dbf_error_file_readonly);
}

TEST_F(DbfCursor, DeletionFlagCountsAsChange) {
    String name = make(2);
    {
        auto table = open_table(name);
        table->go_top();
        table->delete_record();
        EXPECT_TRUE(table->deleted());
        table->update(nullptr);
    }
    auto table = open_table(name);
    table->go_top();
    EXPECT_TRUE(table->deleted());
    table->recall_record();
    table->update(nullptr);
    table->go_to(nullptr, 1);
    EXPECT_FALSE(table->deleted());
}

TEST_F(DbfCursor, RevertDuringAppendAddsNothing) {
    auto table = open_table(make(2));
    table->begin_append();
    table->set_string(0, String("new"));
    table->revert();
    EXPECT_TRUE(table->eof);
    EXPECT_FALSE(table->appending);
    table->update(nullptr);
    EXPECT_EQ(table->reccount(), 2u);
}

TEST_F(DbfCursor, RecursionGuardRefusesNestedWork) {
    auto table = open_table(make(1));
    table->busy = true;
    EXPECT_THROW(table->go_top(), dbf_illegal_recursion);
    EXPECT_THROW(table->update(nullptr), dbf_illegal_recursion);
    EXPECT_THROW(table->lock(), dbf_illegal_recursion);
    EXPECT_THROW(table->delete_record(), dbf_illegal_recursion);
    EXPECT_NO_THROW(table->go_bottom());
    EXPECT_NO_THROW(table->reccount());
    table->busy = false;
}

// An unshared table writes its appended records in runs; the header on disk
// only ever counts records that are all there.
TEST_F(DbfCursor, UnsharedAppendsReachTheDiskWithTheHeader) {
    String name = make(0);
    auto table = open_table(name);
    ASSERT_GT(table->pending_capacity, 10u);
    for (int i = 1; i <= 10; ++i) append(table.get(), "a", i);
    EXPECT_EQ(table->record_count, 10u);
    EXPECT_EQ(header_count(), 0u);
    table->go_to(nullptr, 7);  // read back while still pending
    EXPECT_EQ(qty_of(table.get()), 7);
    table->set_integer(1, 70);
    table->update(nullptr);
    int total = static_cast<int>(table->pending_capacity);
    for (int i = 11; i <= total + 1; ++i) append(table.get(), "b", i % 1000);
    EXPECT_EQ(header_count(), static_cast<uint32_t>(total));
    table->close();
    EXPECT_EQ(header_count(), static_cast<uint32_t>(total + 1));
    auto again = open_table(name);
    again->go_to(nullptr, 7);
    EXPECT_EQ(qty_of(again.get()), 70);
    again->go_bottom();
    EXPECT_EQ(again->recno, static_cast<uint64_t>(total + 1));
}

TEST_F(DbfCursor, SharedAppendsWriteTheHeaderAtOnce) {
    auto table = open_table(make(0), SHARED);
    EXPECT_EQ(table->pending_capacity, 0u);
    append(table.get(), "a", 1);
    EXPECT_EQ(header_count(), 1u);
}

// From end of file the same number is tried again, so a record that another
// process appended meanwhile is found.
TEST_F(DbfCursor, NextAtEndOfFileFindsRecordsAppendedElsewhere) {
    String name = make(1);
    auto reader = open_table(name, SHARED);
    auto writer = open_table(name, SHARED);
    reader->go_top();
    reader->go_next();
    EXPECT_TRUE(reader->eof);
    append(writer.get(), "late", 2);
    reader->go_next();
    EXPECT_FALSE(reader->eof);
    EXPECT_EQ(name_of(reader.get()), "late");
    EXPECT_EQ(reader->reccount(), 2u);
}

TEST_F(DbfCursor, AutoincrementValuesMovePastSuppliedOnes) {
    String name = folder.name("a.dbf");
    fielddef_st id = field_def("ID", FIELD_TYPE_INTEGER);
    id.autoincrement = true;
    id.has_next_value = true;
    id.next_value = 1;
    id.has_step = true;
    id.step = 1;
    auto table = create_table(name, {id, field_def("NAME", FIELD_TYPE_CHARACTER, 4)});
    auto id_of = [&] {
        Variant value;
        table->get_variant(0, &value);
        return value.integer;
    };
    table->begin_append();
    table->update(nullptr);
    EXPECT_EQ(id_of(), 1);
    // A value supplied above the next one moves the next one past it.
    table->begin_append();
    table->fields[0].writable.set_integer(table.get(), &table->fields[0], 10, table->shown_record);
    table->update(nullptr);
    EXPECT_EQ(id_of(), 10);
    table->begin_append();
    table->update(nullptr);
    EXPECT_EQ(id_of(), 11);
    EXPECT_EQ(table->fields[0].autoinc_next, 12u);
    table->close();
    auto again = open_table(name);
    EXPECT_EQ(again->fields[0].autoinc_next, 12u);
}

TEST_F(DbfCursor, ExclusiveTablesNeedNoRecordLocks) {
    auto table = open_table(make(2));
    table->go_top();
    EXPECT_TRUE(table->lock());
    EXPECT_TRUE(table->locked_records.empty());
    EXPECT_FALSE(table->isrlocked(1));
}

TEST_F(DbfCursor, RecordLocksAndUpdate) {
    auto table = open_table(make(3), SHARED);
    table->go_top();
    EXPECT_FALSE(table->isrlocked(1));
    ASSERT_TRUE(table->lock());
    EXPECT_TRUE(table->isrlocked(1));
    // A record the caller locked stays locked after update...
    table->set_integer(1, 5);
    table->update(nullptr);
    EXPECT_TRUE(table->isrlocked(1));
    // ...and one that update locked for itself is released.
    table->go_next();
    table->set_integer(1, 6);
    table->update(nullptr);
    EXPECT_FALSE(table->isrlocked(2));
    // At end of file unlocking all does nothing at all.
    table->go_eof();
    table->unlock_all_records();
    EXPECT_TRUE(table->isrlocked(1));
    table->go_top();
    table->unlock_all_records();
    EXPECT_TRUE(table->locked_records.empty());
}

// A second open description of the same file waits for the lock.
TEST_F(DbfCursor, RecordLocksExcludeOtherOpens) {
    String name = make(2);
    auto first = open_table(name, SHARED);
    auto second = open_table(name, SHARED);
    first->go_top();
    second->go_top();
    ASSERT_TRUE(first->lock());
    std::atomic<bool> locked{false};
    std::thread waiter([&] {
        second->lock();
        locked = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(locked);
    first->unlock_record();
    waiter.join();
    EXPECT_TRUE(locked);
    EXPECT_TRUE(second->isrlocked(1));
}

// After a lock, fields changed elsewhere and not here come from the file;
// a field changed here keeps this object's value.
TEST_F(DbfCursor, RefreshMergesChangesFromElsewhere) {
    String name = make(1);
    auto here = open_table(name, SHARED);
    auto elsewhere = open_table(name, SHARED);
    here->go_top();
    elsewhere->go_top();
    elsewhere->set_string(0, String("other"));
    elsewhere->set_integer(1, 40);
    elsewhere->update(nullptr);
    here->set_integer(1, 50);
    ASSERT_TRUE(here->lock());
    EXPECT_EQ(name_of(here.get()), "other");
    EXPECT_EQ(qty_of(here.get()), 50);
    here->update(nullptr);
    here->unlock_record();
    elsewhere->go_to(nullptr, 1);
    EXPECT_EQ(name_of(elsewhere.get()), "other");
    EXPECT_EQ(qty_of(elsewhere.get()), 50);
}

// Bytes of a record past the header's count are an append that never
// finished: the end of the table. A counted record cut short is damage.
TEST_F(DbfCursor, PartialRecordsPastTheCountEndTheTable) {
    String name = make(2);
    std::string bytes = folder.read("t.dbf");
    folder.write("t.dbf", bytes + "  x");
    {
        auto table = open_table(name, FILE_OPEN_READ);
        table->go_top();
        table->go_next();
        table->go_next();
        EXPECT_TRUE(table->eof);
        EXPECT_EQ(table->recno, 3u);
    }
    folder.write("t.dbf", bytes.substr(0, bytes.size() - 3));
    auto table = open_table(name, FILE_OPEN_READ);
    table->go_top();
    EXPECT_THROW(table->go_next(), dbf_error_file_corruption);
}

}  // namespace
}  // namespace zobase
