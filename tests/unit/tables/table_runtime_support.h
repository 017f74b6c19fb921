#pragma once
// Tests of tables through a runtime: a scratch folder, a runtime that runs
// command lines, and the entries of a tag as its CDX file holds them.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "runtime/runtime.h"
#include "tables/file.h"
#include "tables/index.h"
#include "tables/index_file.h"
#include "tests/unit/runtime/runtime_test_support.h"
#include "tests/unit/tables/table_test_support.h"

namespace zobase::testing {

class TableRuntimeTest : public ::testing::Test {
protected:
    TableFolder folder;
    CaptureScreen screen;
    Runtime* runtime = nullptr;

    void SetUp() override { runtime = CreateRuntime(&screen); }
    void TearDown() override {
        if (runtime) ReleaseRuntime(runtime);
    }
    int run(const std::string& line) { return runtime->run_command(String(line.c_str())); }
    std::string path(const std::string& name) const { return "\"" + (folder.path / name).string() + "\""; }
};

// The entries of a tag in order, after the structure check; `binary` is
// what the tag's header must say.
inline std::vector<std::pair<std::string, uint32_t>> tag_entries(const std::filesystem::path& cdx, const char* tag,
                                                                 bool binary = false) {
    IndexFile file(open_file(String(cdx), 0), nullptr);
    Index directory(&file, 0);
    directory.read_header();
    index_cursor_st cursor;
    for (bool on = directory.go_top(&cursor); on; on = directory.go_next(&cursor)) {
        std::string name(cursor.key(), directory.key_length());
        if (name.substr(0, name.find(' ')) != tag) continue;
        Index index(&file, cursor.record());
        index.read_header();
        EXPECT_EQ(index.binary(), binary) << tag;
        return index.check_structure();
    }
    ADD_FAILURE() << "no tag " << tag;
    return {};
}

}  // namespace zobase::testing
