#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>

#include "tables/file.h"
#include "tables/file_memory.h"
#include "tests/unit/tables/table_test_support.h"

namespace zobase {
namespace {

using testing::TableFolder;

std::unique_ptr<File> memory_file(const char* name = "memory:///dir/table.dbf") {
    return std::unique_ptr<File>(create_file(String(name), FILE_OPEN_TEMPORARY));
}

std::string read_at(File* file, int64_t pos, uint64_t size, uint64_t* got = nullptr) {
    std::string bytes(size, '?');
    uint64_t n = file->readex(pos, bytes.data(), size);
    if (got) *got = n;
    bytes.resize(n);
    return bytes;
}

TEST(MemoryFile, IsNamedByItsAddressKeepingDirectoryAndExtension) {
    auto file = memory_file();
    char expected[64];
    std::snprintf(expected, sizeof expected, "memory:///dir/%llx.dbf",
                  static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(file.get())));
    EXPECT_EQ(file->name.u8str(), expected);
    EXPECT_EQ(file->flags & (FILE_OPEN_READ | FILE_OPEN_WRITE), FILE_OPEN_READ | FILE_OPEN_WRITE);
    EXPECT_NE(memory_file()->name.u8str(), file->name.u8str());
    // Only the first characters decide; the rest of the name may be anything.
    EXPECT_TRUE(is_memory_file_name(String("memory:///x")));
    EXPECT_FALSE(is_memory_file_name(String("Memory:///x")));
}

TEST(MemoryFile, HolesReadAsZerosAndSkippedPagesStayAbsent) {
    auto file = memory_file();
    auto* memory = static_cast<FileMemory*>(file.get());
    file->writeex(10 * FileMemory::PAGE_SIZE + 5, "abc", 3);
    EXPECT_EQ(file->size(), static_cast<int64_t>(10 * FileMemory::PAGE_SIZE + 8));
    EXPECT_EQ(memory->page_count(), 1u);
    EXPECT_EQ(read_at(file.get(), 100, 4), std::string(4, '\0'));
    EXPECT_EQ(read_at(file.get(), 10 * FileMemory::PAGE_SIZE + 4, 5), std::string("\0abc", 4));
    // Reads stop at the size, never beyond.
    uint64_t got = 0;
    read_at(file.get(), 10 * FileMemory::PAGE_SIZE + 6, 100, &got);
    EXPECT_EQ(got, 2u);
    EXPECT_EQ(read_at(file.get(), 1 << 30, 10), "");
}

TEST(MemoryFile, WritesSpanPagesAndEmptyWritesTouchTheirPage) {
    auto file = memory_file();
    auto* memory = static_cast<FileMemory*>(file.get());
    std::string text(3 * FileMemory::PAGE_SIZE, 'x');
    for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>('a' + i % 26);
    file->writeex(FileMemory::PAGE_SIZE - 7, text.data(), text.size());
    EXPECT_EQ(memory->page_count(), 4u);
    EXPECT_EQ(read_at(file.get(), FileMemory::PAGE_SIZE - 7, text.size()), text);

    auto empty = memory_file();
    empty->writeex(5 * FileMemory::PAGE_SIZE + 1, "", 0);
    EXPECT_EQ(static_cast<FileMemory*>(empty.get())->page_count(), 1u);
    EXPECT_EQ(empty->size(), static_cast<int64_t>(5 * FileMemory::PAGE_SIZE + 1));
}

TEST(MemoryFile, SequentialAccessMovesThePosition) {
    auto file = memory_file();
    file->write("hello world", 11);
    EXPECT_EQ(file_offset(file->tell()), 11);
    EXPECT_EQ(file_offset(file->seek(-5, FILE_SEEK_END)), 6);
    char word[8] = {};
    EXPECT_EQ(file->read(word, 8), 5u);
    EXPECT_STREQ(word, "world");
    EXPECT_EQ(file_offset(file->seek(-11, FILE_SEEK_CURRENT)), 0);
    EXPECT_THROW(file->seek(0, 3), assert_failed_exception);
    EXPECT_TRUE(file->lock(0x40000000, 1));
    EXPECT_TRUE(file->unlock(0x40000000, 1));
    EXPECT_EQ(file->modified_time(), 0);
}

class OsFile : public ::testing::Test {
protected:
    TableFolder folder;

    std::unique_ptr<File> create(const char* name, uint32_t flags = 0) {
        return std::unique_ptr<File>(create_file(folder.name(name), flags));
    }
    std::unique_ptr<File> open(const char* name, uint32_t flags) {
        return std::unique_ptr<File>(open_file(folder.name(name), flags));
    }
};

TEST_F(OsFile, PositionedReadsStopShortAtTheEnd) {
    auto file = create("data.bin");
    EXPECT_EQ(file->flags & (FILE_OPEN_READ | FILE_OPEN_WRITE), FILE_OPEN_READ | FILE_OPEN_WRITE);
    file->writeex(4, "abcd", 4);
    EXPECT_EQ(file->size(), 8);
    uint64_t got = 0;
    EXPECT_EQ(read_at(file.get(), 2, 100, &got), std::string("\0\0abcd", 6));
    EXPECT_EQ(got, 6u);
    EXPECT_EQ(read_at(file.get(), 100, 4), "");
    EXPECT_GT(file->modified_time(), 1600000000);
    file->seek(2);
    file->write("xy", 2);
    EXPECT_EQ(file_offset(file->tell()), 4);
    char two[2];
    EXPECT_EQ(file->read(two, 2), 2u);
    EXPECT_EQ(std::string(two, 2), "ab");
}

TEST_F(OsFile, CreateEmptiesAnExistingFile) {
    folder.write("old.bin", "old contents");
    EXPECT_EQ(create("old.bin")->size(), 0);
}

TEST_F(OsFile, OpeningAMissingFileIsAPlainFileError) {
    try {
        open("missing.dbf", FILE_OPEN_READ);
        FAIL() << "opened a missing file";
    } catch (const file_sharing_violation&) {
        FAIL() << "reported as a sharing violation";
    } catch (const file_error&) {
    }
    folder.write("dir.dbf", "");
    std::filesystem::remove(folder.path / "dir.dbf");
    std::filesystem::create_directory(folder.path / "dir.dbf");
    EXPECT_THROW(open("dir.dbf", FILE_OPEN_READ), file_error);
}

TEST_F(OsFile, ShareModesAreEnforcedBetweenOpens) {
    folder.write("t.dbf", "x");
    {
        auto exclusive = open("t.dbf", FILE_OPEN_READ | FILE_OPEN_WRITE);
        EXPECT_THROW(open("t.dbf", FILE_OPEN_READ), file_sharing_violation);
        EXPECT_THROW(open("t.dbf", FILE_OPEN_READ | FILE_OPEN_SHARED), file_sharing_violation);
        EXPECT_THROW(create("t.dbf"), file_sharing_violation);
        // The refused create did not empty the file.
        EXPECT_EQ(exclusive->size(), 1);
    }
    {
        auto first = open("t.dbf", FILE_OPEN_READ | FILE_OPEN_SHARED);
        auto second = open("t.dbf", FILE_OPEN_READ | FILE_OPEN_WRITE | FILE_OPEN_SHARED);
        EXPECT_THROW(open("t.dbf", FILE_OPEN_READ), file_sharing_violation);
    }
    EXPECT_NO_THROW(open("t.dbf", FILE_OPEN_READ));
}

TEST_F(OsFile, WritingAFileOpenedForReadingIsDenied) {
    folder.write("r.dbf", "abc");
    EXPECT_THROW(open("r.dbf", FILE_OPEN_READ)->writeex(0, "x", 1), file_access_denied);
    std::filesystem::permissions(folder.path / "r.dbf", std::filesystem::perms::owner_read);
    if (::geteuid() != 0) {
        EXPECT_THROW(open("r.dbf", FILE_OPEN_READ | FILE_OPEN_WRITE), file_error);
    }
    auto read_only = open("r.dbf", FILE_OPEN_READ | FILE_OPEN_SHARED);
    EXPECT_EQ(read_at(read_only.get(), 0, 3), "abc");
}

// Locks belong to an open file: a second open in the same process waits for
// the first to let go, as another process would.
TEST_F(OsFile, LocksBlockUntilTheRangeIsFree) {
    folder.write("l.dbf", "");
    auto holder = open("l.dbf", FILE_OPEN_READ | FILE_OPEN_WRITE | FILE_OPEN_SHARED);
    auto waiter = open("l.dbf", FILE_OPEN_READ | FILE_OPEN_WRITE | FILE_OPEN_SHARED);
    ASSERT_TRUE(holder->lock(0x7FFFFFFE, 1));
    EXPECT_TRUE(waiter->lock(0x7FFFFFFD, 1));  // a neighbouring byte is free
    std::atomic<bool> locked{false};
    std::thread other([&] {
        waiter->lock(0x7FFFFFFE, 1);
        locked = true;
        waiter->unlock(0x7FFFFFFE, 1);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(locked);
    holder->unlock(0x7FFFFFFE, 1);
    other.join();
    EXPECT_TRUE(locked);
}

// A view shows what writes put there since it was made, covers no byte
// past the end, follows a file that grew by a good part, and goes when the
// file is cut.
TEST_F(OsFile, ViewsFollowWritesGrowthAndCuts) {
    auto file = create("view.dbf");
    EXPECT_EQ(file->view(0, 1), nullptr);  // empty: nothing to show
    std::string block(2 << 20, 'a');
    file->writeex(0, block.data(), block.size());
    const char* view = file->view(100, 4);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(std::string(view, 4), "aaaa");
    file->writeex(100, "WXYZ", 4);
    EXPECT_EQ(std::string(file->view(100, 4), 4), "WXYZ");
    EXPECT_EQ(file->view(block.size() - 2, 4), nullptr);  // past the end
    file->writeex(block.size(), "tail", 4);
    EXPECT_EQ(file->view(block.size(), 4), nullptr);  // grown too little to map again
    EXPECT_EQ(read_at(file.get(), block.size(), 4), "tail");
    file->writeex(block.size(), block.data(), block.size());
    ASSERT_NE(file->view(block.size() * 2 - 4, 4), nullptr);
    file->truncate(10);
    EXPECT_EQ(file->view(100, 4), nullptr);
    EXPECT_EQ(memory_file()->view(0, 0), nullptr);
}

TEST_F(OsFile, TemporaryFilesDisappearWhenClosed) {
    auto temporary = create("tmp.dbf", FILE_OPEN_TEMPORARY);
    EXPECT_TRUE(std::filesystem::exists(folder.path / "tmp.dbf"));
    temporary->close();
    temporary->close();  // harmless
    EXPECT_FALSE(std::filesystem::exists(folder.path / "tmp.dbf"));

    folder.write("gone.dbf", "x");
    open("gone.dbf", FILE_OPEN_READ | FILE_OPEN_DELETE_ON_CLOSE).reset();
    EXPECT_FALSE(std::filesystem::exists(folder.path / "gone.dbf"));

    auto kept = create("kept.dbf");
    kept->close();
    kept->remove();
    EXPECT_FALSE(std::filesystem::exists(folder.path / "kept.dbf"));
}

}  // namespace
}  // namespace zobase
