// Putting a rewritten table in place: whatever step a crash stops at, the
// next open sees all of the old table or all of the new one. The crash
// states are laid out as the files stand after each rename.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "tables/file.h"
#include "tables/table_swap.h"
#include "tests/unit/tables/table_test_support.h"

namespace zobase {
namespace {

using testing::TableFolder;
namespace fs = std::filesystem;

class TableSwap : public ::testing::Test {
protected:
    TableFolder folder;
    fs::path table() const { return folder.path / "t.dbf"; }
    fs::path fresh() const { return folder.path / "t~new7.dbf"; }

    // Old table with memo and index; new one with `companions` ("fpt", "cdx").
    void lay_out(bool new_memo, bool new_index) {
        for (const char* file : {"t.dbf", "t.fpt", "t.cdx"}) folder.write(file, std::string("old ") + file);
        folder.write("t~new7.dbf", "new dbf");
        if (new_memo) folder.write("t~new7.fpt", "new fpt");
        if (new_index) folder.write("t~new7.cdx", "new cdx");
    }
    std::string leftovers() const {
        std::string names;
        for (const auto& entry : fs::directory_iterator(folder.path))
            if (entry.path().filename().string().find('~') != std::string::npos)
                names += entry.path().filename().string() + " ";
        return names;
    }
};

TEST_F(TableSwap, ReplacesTheTableAndLeavesNothingBehind) {
    lay_out(true, false);
    swap_table_into_place(fresh(), table());
    EXPECT_EQ(folder.read("t.dbf"), "new dbf");
    EXPECT_EQ(folder.read("t.fpt"), "new fpt");
    // The old index belonged to the old records: it goes.
    EXPECT_FALSE(fs::exists(folder.path / "t.cdx"));
    EXPECT_EQ(leftovers(), "");
}

TEST_F(TableSwap, AnOpenFinishesWhatACrashBetweenTheRenamesLeft) {
    lay_out(true, true);
    folder.write("t~swap", "t~new7.dbf\ncdx fpt \n");
    // Killed after the index file moved, before the memo file did.
    fs::rename(folder.path / "t~new7.cdx", folder.path / "t.cdx");
    finish_interrupted_swap(table());
    EXPECT_EQ(folder.read("t.dbf"), "new dbf");
    EXPECT_EQ(folder.read("t.fpt"), "new fpt");
    EXPECT_EQ(folder.read("t.cdx"), "new cdx");
    EXPECT_EQ(leftovers(), "");
    // A second open, or another process finishing the same swap, changes nothing.
    finish_interrupted_swap(table());
    EXPECT_EQ(folder.read("t.dbf"), "new dbf");
}

TEST_F(TableSwap, ASwapStillRunningIsLeftToItsProcess) {
    lay_out(true, true);
    folder.write("t~swap", "t~new7.dbf\ncdx fpt \n");
    // The swapping process holds the old table exclusively until it is done.
    std::unique_ptr<File> held(open_file(String(table()), FILE_OPEN_READ | FILE_OPEN_WRITE));
    finish_interrupted_swap(table());
    EXPECT_EQ(folder.read("t.fpt"), "old t.fpt");
    EXPECT_TRUE(fs::exists(folder.path / "t~swap"));
    held->close();
    held.reset();
    finish_interrupted_swap(table());
    EXPECT_EQ(folder.read("t.fpt"), "new fpt");
    EXPECT_EQ(leftovers(), "");
}

TEST_F(TableSwap, AMarkerWhoseTableWasAlreadyInPlaceIsOnlyRemoved) {
    lay_out(false, false);
    fs::remove(fresh());
    folder.write("t~swap", "t~new7.dbf\n\n");
    finish_interrupted_swap(table());
    // The table was renamed last, so its companions are the new ones: kept.
    EXPECT_EQ(folder.read("t.fpt"), "old t.fpt");
    EXPECT_EQ(leftovers(), "");
}

TEST_F(TableSwap, AMarkerNamingAFileElsewhereMovesNothing) {
    lay_out(false, false);
    folder.write("t~swap", "../t~new7.dbf\n\n");
    finish_interrupted_swap(table());
    EXPECT_EQ(folder.read("t.dbf"), "old t.dbf");
    EXPECT_EQ(folder.read("t.fpt"), "old t.fpt");
    EXPECT_FALSE(fs::exists(folder.path / "t~swap"));
}

TEST_F(TableSwap, NoMarkerNoChange) {
    lay_out(true, true);
    finish_interrupted_swap(table());
    EXPECT_EQ(folder.read("t.dbf"), "old t.dbf");
    EXPECT_TRUE(fs::exists(fresh()));
}

}  // namespace
}  // namespace zobase
