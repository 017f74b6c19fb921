#pragma once
// A scratch folder per test, and helpers to make and patch table files.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <algorithm>
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
    def.default_decimals = decimals == 0;
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
inline std::unique_ptr<DbfFile> create_table_from(const String& name, fielddef_st* defs, size_t count,
                                                  createopts_st options = table_options()) {
    File* file = create_file(name, options.temporary ? uint32_t(FILE_OPEN_TEMPORARY) : 0u);
    try {
        return std::unique_ptr<DbfFile>(DbfFile::create(file, &options, defs, count));
    } catch (...) {
        delete file;
        throw;
    }
}

inline std::unique_ptr<DbfFile> create_table(const String& name, std::vector<fielddef_st> defs,
                                             createopts_st options = table_options()) {
    return create_table_from(name, defs.data(), defs.size(), options);
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

// The shown record appended after the last one through the record layer.
inline void append_shown_record(DbfFile* table) {
    std::string record(table->shown_record, table->record_length);
    table->begin_append();
    std::memcpy(table->shown_record, record.data(), record.size());
    table->update(nullptr);
}

// Record `recno` into the shown record; false when it is not all there.
inline bool read_into_shown(DbfFile* table, uint64_t recno) {
    return table->file->readex(static_cast<std::streamoff>(table->record_position(recno)),
                               table->shown_record, table->record_length) == table->record_length;
}

// A table image built byte by byte, for files no engine would write.
struct dbf_image_st {
    struct field_st {
        std::string name;
        char type;
        uint8_t length;
        uint8_t decimals = 0;
        uint8_t flags = 0;
    };
    uint8_t version = 0x30;
    uint8_t codepage_byte = 0x03;
    std::vector<field_st> fields;
    std::vector<std::string> records;
    int header_length_delta = 0;
    int record_count_delta = 0;
    int gap_after_first_field = 0;

    uint64_t record_length() const {
        uint64_t length = 1 + gap_after_first_field;
        for (const field_st& f : fields) length += f.length;
        return length;
    }

    std::string bytes() const {
        bool backlink = version == 0x30 || version == 0x31 || version == 0x32;
        uint64_t header_length = 32 * (fields.size() + 1) + (backlink ? 264 : 1) + header_length_delta;
        std::string out(32, '\0');
        out[0] = static_cast<char>(version);
        out[1] = 24;
        out[2] = 5;
        out[3] = 17;
        uint32_t count = static_cast<uint32_t>(records.size() + record_count_delta);
        for (int i = 0; i < 4; ++i) out[4 + i] = static_cast<char>(count >> (8 * i));
        out[8] = static_cast<char>(header_length);
        out[9] = static_cast<char>(header_length >> 8);
        out[10] = static_cast<char>(record_length());
        out[11] = static_cast<char>(record_length() >> 8);
        out[29] = static_cast<char>(codepage_byte);
        uint32_t offset = 1;
        for (size_t i = 0; i < fields.size(); ++i) {
            const field_st& f = fields[i];
            std::string d(32, '\0');
            d.replace(0, std::min<size_t>(f.name.size(), 11), f.name.substr(0, 11));
            d[11] = f.type;
            for (int b = 0; b < 4; ++b) d[12 + b] = static_cast<char>(offset >> (8 * b));
            d[16] = static_cast<char>(f.length);
            d[17] = static_cast<char>(f.decimals);
            d[18] = static_cast<char>(f.flags);
            out += d;
            offset += f.length + (i == 0 ? gap_after_first_field : 0);
        }
        out += '\x0D';
        if (backlink) out += std::string(263, '\0');
        out.resize(header_length, '\0');
        for (const std::string& record : records) out += record;
        return out;
    }
};

}  // namespace zobase::testing
