#pragma once
// A scratch folder per test, and helpers to make and patch table files.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tables/dbf_file.h"
#include "tables/file.h"
#include "tables/table_definition.h"

namespace zobase::testing {

class TableFolder {
public:
    std::filesystem::path path;

    TableFolder() {
        const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
        path = std::filesystem::temp_directory_path() /
               ("zobase_tables_" + std::to_string(::getpid()) + "_" + test->test_suite_name() + "_" +
                test->name());
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~TableFolder() { std::filesystem::remove_all(path); }

    String name(const std::string& file) const { return String(path / file); }

    std::string read(const std::string& file) const {
        std::ifstream in(path / file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    void write(const std::string& file, const std::string& bytes) const {
        std::ofstream(path / file, std::ios::binary | std::ios::trunc) << bytes;
    }
};

// One definition, with the defaults of a definition written by hand.
inline fielddef_st field_def(const char* name, int32_t type, uint64_t length = 0,
                             uint64_t decimals = 0) {
    fielddef_st def = {};
    def.type = type;
    std::snprintf(def.name, sizeof def.name, "%s", name);
    def.default_length = length == 0;
    def.length = length;
    def.default_decimals = decimals == 0 && type != FIELD_TYPE_DOUBLE;
    def.decimals = decimals;
    def.nullable = FIELD_NOT_NULLABLE;
    return def;
}

inline fielddef_st nullable(fielddef_st def) {
    def.nullable = FIELD_NULLABLE;
    return def;
}

inline createopts_st table_options(int64_t codepage = 1252) {
    createopts_st options;
    options.codepage = codepage;
    return options;
}

// Creates a table in a new file of that name.
inline std::unique_ptr<DbfFile> create_table(const String& name, std::vector<fielddef_st> defs,
                                             createopts_st options = table_options()) {
    File* file = create_file(name, 0);
    try {
        return std::unique_ptr<DbfFile>(DbfFile::create(file, &options, defs.data(), defs.size()));
    } catch (...) {
        delete file;
        throw;
    }
}

inline std::unique_ptr<DbfFile> open_table(const String& name, uint32_t flags = FILE_OPEN_READ | FILE_OPEN_WRITE) {
    File* file = open_file(name, flags);
    try {
        return std::unique_ptr<DbfFile>(DbfFile::open(file));
    } catch (...) {
        delete file;
        throw;
    }
}

}  // namespace zobase::testing
