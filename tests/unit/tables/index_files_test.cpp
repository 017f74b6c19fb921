// CDX files through a runtime: tags opening with their table, and damaged
// index files (truncated, mutated, a header bit that must not be set) that
// give numbered errors and never a crash or a hang.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <string>

#include "runtime/runtime.h"
#include "tables/file.h"
#include "tables/index.h"
#include "tables/index_file.h"
#include "tests/unit/runtime/runtime_test_support.h"
#include "tests/unit/tables/table_runtime_support.h"
#include "tests/unit/tables/table_test_support.h"

namespace zobase {
namespace {

class IndexFiles : public testing::TableRuntimeTest {
protected:
    // A table of 300 records with a character, a numeric, a filtered and a binary tag.
    void make_table() {
        ASSERT_EQ(run("CREATE TABLE " + path("t") + " (name C(12), n N(8,2), d D)"), 0) << screen.errors;
        for (int i = 1; i <= 300; ++i) {
            ASSERT_EQ(run("APPEND BLANK"), 0);
            run("REPLACE name WITH 'k" + std::to_string(i * 7919 % 1000) + "'");
            run("REPLACE n WITH " + std::to_string(i % 37) + ".5");
            run("REPLACE d WITH DATE(2020, 1, 1) + " + std::to_string(i % 50));
        }
        ASSERT_EQ(run("INDEX ON name TAG name"), 0) << screen.errors;
        ASSERT_EQ(run("INDEX ON n TAG n DESCENDING"), 0) << screen.errors;
        ASSERT_EQ(run("INDEX ON d TAG d FOR n > 10"), 0) << screen.errors;
        ASSERT_EQ(run("INDEX ON n > 20 TAG big BINARY"), 0) << screen.errors;
        ASSERT_EQ(run("USE"), 0);
    }
    // Every way the tags are read and changed; the first error's number.
    int exercise() {
        const char* lines[] = {"USE " , "SET ORDER TO name", "GO TOP", "SCAN\nENDSCAN", "SEEK 'k5'",
                               "SET ORDER TO n",  "GO BOTTOM", "SKIP -1", "REPLACE n WITH 99",
                               "SET ORDER TO d", "SCAN\nENDSCAN", "APPEND BLANK", "REPLACE name WITH 'zz'"};
        for (const char* line : lines) {
            std::string command = line;
            if (command == "USE ") command += path("t");
            if (int error = run(command)) {
                run("USE");
                return error;
            }
        }
        run("USE");
        return 0;
    }
};

TEST_F(IndexFiles, TagsOpenWithTheirTableAndHoldWhatTheirConditionTakes) {
    make_table();
    EXPECT_EQ(exercise(), 0) << screen.errors;
    int expected = 1;  // the appended record: 99 > 10
    for (int i = 1; i <= 300; ++i) expected += i % 37 + 0.5 > 10;
    screen.output.clear();
    ASSERT_EQ(run("USE " + path("t")), 0);
    ASSERT_EQ(run("SET ORDER TO d"), 0);
    ASSERT_EQ(run("counted = 0"), 0);
    ASSERT_EQ(run("SCAN\ncounted = counted + 1\nENDSCAN"), 0);
    ASSERT_EQ(run("? ataginfo(a), counted"), 0);
    EXPECT_EQ(screen.output, "4 " + std::to_string(expected) + "\n");
}

// Appends give every record its bit, REPLACE sets and clears it, and PACK
// and REINDEX build the tag again from the records, past one bitmap leaf.
TEST_F(IndexFiles, BinaryTagsHoldABitForEveryRecord) {
    ASSERT_EQ(run("CREATE TABLE " + path("b") + " (n N(6), active L)"), 0) << screen.errors;
    ASSERT_EQ(run("INDEX ON active TAG act BINARY"), 0) << screen.errors;
    ASSERT_EQ(run("INDEX ON n TAG n"), 0) << screen.errors;
    ASSERT_EQ(run("FOR i = 1 TO 4000\nAPPEND BLANK\nREPLACE n WITH i\nREPLACE active WITH i % 3 = 0\nNEXT"), 0)
        << screen.errors;
    ASSERT_EQ(run("GO 3969\nREPLACE active WITH .T.\nGO 3\nREPLACE active WITH .F."), 0)
        << screen.errors;
    auto expect_bits = [&](uint32_t count, uint32_t first_n) {
        std::vector<std::pair<std::string, uint32_t>> expected;
        for (uint32_t record = 1; record <= count; ++record) {
            uint32_t n = record + first_n - 1;
            bool on = n == 3969 || (n % 3 == 0 && n != 3);
            expected.emplace_back(on ? "T" : "F", record);
        }
        ASSERT_EQ(run("USE"), 0);
        EXPECT_EQ(testing::tag_entries(folder.path / "b.cdx", "ACT", true), expected);
        ASSERT_EQ(run("USE " + path("b") + " EXCLUSIVE"), 0) << screen.errors;
    };
    expect_bits(4000, 1);
    ASSERT_EQ(run("FOR i = 1 TO 10\nGO i\nDELETE\nNEXT\nPACK"), 0) << screen.errors;
    expect_bits(3990, 11);
    ASSERT_EQ(run("REINDEX"), 0) << screen.errors;
    expect_bits(3990, 11);
}

TEST_F(IndexFiles, AHeaderBitThatMustNotBeSetIsRefused) {
    make_table();
    std::string bytes = folder.read("t.cdx");
    bytes[14] = static_cast<char>(bytes[14] | 0x10);  // the directory's option bits
    folder.write("t.cdx", bytes);
    EXPECT_EQ(run("USE " + path("t")), 1001);
    EXPECT_NE(screen.errors.find("Index header unknown bit 5 is set"), std::string::npos) << screen.errors;
}

TEST_F(IndexFiles, ATruncatedOrMissingFileIsReported) {
    make_table();
    std::string bytes = folder.read("t.cdx");
    folder.write("t.cdx", bytes.substr(0, 1500));
    EXPECT_EQ(exercise(), 2066);
    std::filesystem::remove(folder.path / "t.cdx");
    EXPECT_EQ(run("USE " + path("t")), 1707);
}

// 1,000 copies with a few bytes changed or the end cut off
// (ZOBASE_CDX_MUTATIONS for more): each gives a numbered error or works.
TEST_F(IndexFiles, MutatedFilesNeverCrash) {
    make_table();
    const std::string original = folder.read("t.cdx");
    const std::string table = folder.read("t.dbf");
    const char* setting = std::getenv("ZOBASE_CDX_MUTATIONS");
    const int rounds = setting ? std::atoi(setting) : 1000;
    std::mt19937 random(7);
    std::map<int, int> outcomes;
    for (int round = 0; round < rounds; ++round) {
        std::string bytes = original;
        if (round % 10 == 9) {
            bytes.resize(random() % bytes.size());
        } else {
            int changes = 1 + static_cast<int>(random() % 6);
            for (int i = 0; i < changes; ++i) {
                size_t at = random() % bytes.size();
                // Mostly in the node headers and entries, where a change matters.
                if (random() % 2) at = at / 512 * 512 + random() % 32;
                bytes[at] = static_cast<char>(random());
            }
        }
        folder.write("t.cdx", bytes);
        folder.write("t.dbf", table);
        int outcome = exercise();
        ++outcomes[outcome];
    }
    for (const auto& [error, count] : outcomes) std::printf("error %d: %d files\n", error, count);
    EXPECT_GT(outcomes[2066], 0);
    EXPECT_EQ(outcomes.count(ERR_TABLE_ENGINE_NATIVE), 0u) << "an engine exception went unnamed";
}

}  // namespace
}  // namespace zobase
