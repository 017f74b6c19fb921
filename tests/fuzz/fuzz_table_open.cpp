// libFuzzer target: opening a damaged table and reading it. The first two
// bytes of the input (little-endian) are the size of the table; the rest of
// the input after the table is its memo file. Both are written to a scratch folder and opened as a user's files would
// be. Every input must open and read, or end in the table engine's own
// exceptions (dbf_exception, file_error); anything else is a finding.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "tables/dbf_file.h"
#include "tables/file.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/variant.h"

using namespace zobase;

namespace {

constexpr uint64_t RECORDS_READ = 16;

const std::filesystem::path& scratch_folder() {
    static const std::filesystem::path folder = [] {
        auto path = std::filesystem::temp_directory_path() / ("zobase_fuzz_" + std::to_string(::getpid()));
        std::filesystem::create_directories(path);
        return path;
    }();
    return folder;
}

void write_file(const std::filesystem::path& path, const uint8_t* data, size_t size) {
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(data),
                                                                  static_cast<std::streamsize>(size));
}

void read_fields(DbfFile* table) {
    for (uint64_t i = 0; i < table->visible_fields.size(); ++i) {
        try {
            Variant value;
            table->get_variant(i, &value);
            value.release(nullptr);
            if (table->get_field(i)->is_memo()) table->get_memo_size(i);
        } catch (const dbf_exception&) {
            // A damaged value refuses; the other fields still read.
        }
    }
}

void open_and_read(const String& name) {
    File* file = open_file(name, FILE_OPEN_READ);
    std::unique_ptr<DbfFile> table;
    try {
        table.reset(DbfFile::open(file));
    } catch (...) {
        delete file;
        throw;
    }
    uint64_t last = std::min<uint64_t>(table->record_count, RECORDS_READ);
    for (uint64_t recno = 1; recno <= last; ++recno) {
        uint64_t got = table->file->readex(static_cast<std::streamoff>(table->record_position(recno)),
                                           table->shown_record, table->record_length);
        if (got != table->record_length) break;
        read_fields(table.get());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    size_t table_size = std::min<size_t>(data[0] | (data[1] << 8), size - 2);
    const std::filesystem::path& folder = scratch_folder();
    write_file(folder / "t.dbf", data + 2, table_size);
    write_file(folder / "t.fpt", data + 2 + table_size, size - 2 - table_size);
    try {
        open_and_read(String(folder / "t.dbf"));
    } catch (const dbf_exception&) {
    } catch (const file_error&) {
    }
    return 0;
}
