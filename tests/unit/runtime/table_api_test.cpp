// The table interface driven by a host with no language code: a table made
// by CREATE TABLE's engine call, filled, read back and moved through.
#include <gtest/gtest.h>

#include <string>

#include "runtime/runtime.h"
#include "runtime/table_api.h"
#include "tests/unit/runtime/runtime_test_support.h"
#include "tests/unit/tables/table_test_support.h"
#include "values/error.h"
#include "values/variant.h"

namespace zobase {
namespace {

using testing::CaptureScreen;
using testing::TableFolder;

class TableApi : public ::testing::Test {
protected:
    TableFolder folder;
    CaptureScreen screen;
    Runtime* runtime = nullptr;
    VmStack* stack = nullptr;

    void SetUp() override {
        runtime = CreateRuntime(&screen);
        GetMainStack(runtime, &stack);
        std::string name = (folder.path / "api").string();
        ASSERT_EQ(runtime->run_command(String(("CREATE TABLE \"" + name + "\" (i I, n N(8,2), b B, l L, d D, "
                                                "c C(5), m M, z I NULL, a I AUTOINC NEXTVALUE 5 STEP 2)\nUSE")
                                                   .c_str())),
                  0);
    }
    void TearDown() override {
        if (runtime) ReleaseRuntime(runtime);
    }
    String table_name() const { return String((folder.path / "api").string().c_str()); }
};

TEST_F(TableApi, FillsReadsAndMovesWithoutTheLanguage) {
    void* table = OpenTable(stack, table_name());
    ASSERT_EQ(GetFieldCount(table), 9u);
    EXPECT_EQ(GetNextAutoInc(table, 8), 5u);
    EXPECT_EQ(GetAutoIncStep(table, 8), 2u);
    EXPECT_EQ(GetAutoIncStep(table, 0), 0u);
    EXPECT_EQ(GetFieldNum(table, String("D")), 4u);
    EXPECT_THROW(GetFieldNum(table, String("nothing")), RuntimeError);
    for (int k = 1; k <= 3; ++k) {
        BeginAppendRecord(table, 0);
        SetFieldInt32(table, 0, k * 10);
        SetFieldDouble(table, 1, k + 0.25);
        SetFieldDouble(table, 2, k / 4.0);
        SetFieldLogical(table, 3, k % 2 == 1);
        SetFieldDateYMD(table, 4, 2024, 2, static_cast<uint64_t>(k), false);
        if (k == 2) SetFieldNull(table, 7);
        else SetFieldInt32(table, 7, -k);
        TableUpdate(stack, table, 0);
    }
    EXPECT_EQ(RecordCount(table), 3u);
    EXPECT_EQ(GetNextAutoInc(table, 8), 11u);
    GotoTop(stack, table);
    EXPECT_EQ(RecordNumber(table), 1u);
    EXPECT_EQ(GetFieldInt32(table, 0), 10);
    EXPECT_DOUBLE_EQ(GetFieldDouble(table, 1), 1.25);
    EXPECT_DOUBLE_EQ(GetFieldDouble(table, 2), 0.25);
    EXPECT_TRUE(GetFieldLogical(table, 3));
    uint64_t y, m, d;
    bool empty;
    GetFieldDateYMD(table, 4, &y, &m, &d, &empty);
    EXPECT_EQ(y * 10000 + m * 100 + d, 20240201u);
    EXPECT_FALSE(empty);
    EXPECT_EQ(GetFieldInt32(table, 7), -1);
    EXPECT_THROW(GetFieldLogical(table, 0), RuntimeError);

    GotoRecord(stack, table, 2);
    EXPECT_TRUE(IsFieldNull(table, 7));
    EXPECT_FALSE(GetFieldLogical(table, 3));
    // A revert drops what was not updated.
    SetFieldInt32(table, 0, 999);
    TableRevert(table, 0);
    EXPECT_EQ(GetFieldInt32(table, 0), 20);
    DeleteRecord(table);
    TableUpdate(stack, table, 0);
    EXPECT_TRUE(IsRecordDeleted(table));
    // Empty dates and a date that cannot be.
    SetFieldDateYMD(table, 4, 0, 0, 0, true);
    TableUpdate(stack, table, 0);
    GetFieldDateYMD(table, 4, &y, &m, &d, &empty);
    EXPECT_TRUE(empty);
    EXPECT_THROW(SetFieldDateYMD(table, 4, 2024, 13, 1, false), RuntimeError);

    GotoBottom(stack, table);
    EXPECT_EQ(RecordNumber(table), 3u);
    EXPECT_FALSE(Eof(table));
    GotoEof(table);
    EXPECT_TRUE(Eof(table));
    EXPECT_EQ(GetIndexCount(table), 0u);
    EXPECT_NE(GetTableCharset(table), nullptr);
    EXPECT_FALSE(IsCurrentRecordLocked(table));
    CloseTable(stack, table);

    // What was written is on disk for the next opener.
    table = OpenTable(stack, table_name());
    GotoRecord(stack, table, 3);
    EXPECT_EQ(GetFieldInt32(table, 0), 30);
    Variant value;
    GetFieldVariant(table, 5, &value);
    EXPECT_EQ(value.to_string().u8str(), "     ");
    CloseTable(stack, table);
}

}  // namespace
}  // namespace zobase
