// Names found without regard to case, folder by folder, and the UTF-8 checks.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "builtins/file_paths.h"
#include "builtins/utf8_text.h"
#include "text/charset.h"
#include "text/collation.h"

using namespace zobase;
namespace fs = std::filesystem;

namespace {

class FolderTree : public ::testing::Test {
protected:
    fs::path root;

    void SetUp() override {
        __init_character_sets();
        __init_collations();
        char pattern[] = "/tmp/zobase_paths_XXXXXX";
        root = mkdtemp(pattern);
        fs::create_directories(root / "Data" / "Sales2024");
        std::ofstream(root / "Data" / "Sales2024" / "ORDERS.DBF") << "x";
        std::ofstream(root / "Data" / "notes.txt") << "y";
    }
    void TearDown() override { fs::remove_all(root); }

    std::string found(const fs::path& name) {
        fs::path hit;
        return find_path_ci(name, &hit) ? hit.string() : "<none>";
    }
};

}  // namespace

TEST_F(FolderTree, EachPartMatchesWithoutCase) {
    std::string orders = (root / "Data" / "Sales2024" / "ORDERS.DBF").string();
    EXPECT_EQ(found(root / "data" / "sales2024" / "orders.dbf"), orders);
    EXPECT_EQ(found(root / "DATA" / "SALES2024" / "Orders.Dbf"), orders);
    EXPECT_EQ(found(root / "Data" / "Sales2024" / "ORDERS.DBF"), orders);
    EXPECT_EQ(found(root / "data" / "." / "NOTES.TXT"), (root / "Data" / "." / "notes.txt").string());
    EXPECT_EQ(found(root / "data" / "sales2024" / ".." / "Notes.txt"),
              (root / "Data" / "Sales2024" / ".." / "notes.txt").string());
    EXPECT_EQ(found(root / "data" / "missing" / "orders.dbf"), "<none>");
    EXPECT_EQ(found(root / "data" / "orders.dbf"), "<none>");
}

TEST_F(FolderTree, RelativeNamesStartAtTheCurrentFolder) {
    fs::path saved = fs::current_path();
    fs::current_path(root);
    EXPECT_EQ(found("DATA/NOTES.TXT"), "Data/notes.txt");
    fs::path hit;
    EXPECT_TRUE(find_existing(String("data/sales2024"), &hit));
    EXPECT_FALSE(find_existing(String(""), &hit));
    fs::current_path(saved);
}

TEST(Utf8Text, SequenceLengths) {
    auto length = [](const std::string& bytes) {
        return utf8_sequence_length(bytes.data(), bytes.data() + bytes.size());
    };
    EXPECT_EQ(length("a"), 1u);
    EXPECT_EQ(length("\xC3\xA9"), 2u);
    EXPECT_EQ(length("\xE2\x82\xAC"), 3u);
    EXPECT_EQ(length("\xF0\x9D\x84\x9E"), 4u);
    EXPECT_EQ(length("\xC0\x80"), 0u);          // overlong NUL
    EXPECT_EQ(length("\xE0\x80\xAF"), 0u);      // overlong "/"
    EXPECT_EQ(length("\xED\xA0\x80"), 0u);      // a surrogate
    EXPECT_EQ(length("\xF4\x90\x80\x80"), 0u);  // above U+10FFFF
    EXPECT_EQ(length("\xE2\x82"), 0u);          // cut short
    EXPECT_EQ(length("\x80"), 0u);              // a lone continuation byte
    EXPECT_EQ(length("\xFF"), 0u);
}

TEST(Utf8Text, ValidPrefix) {
    std::string text = "0123456789abcdef\xC3\xA9xyz";
    EXPECT_EQ(utf8_valid_prefix(text.data(), text.size()), text.size());
    std::string bad = "0123456789abcdefgh\xC3(tail";
    EXPECT_EQ(utf8_valid_prefix(bad.data(), bad.size()), 18u);
    std::string early = "ab\xFF";
    EXPECT_EQ(utf8_valid_prefix(early.data(), early.size()), 2u);
    EXPECT_EQ(utf8_valid_prefix("", 0), 0u);
}
