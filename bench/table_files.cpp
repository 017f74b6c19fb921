// Writes, then reads, 1,000,000 records of a table with C(30), N(12,2), D
// and I fields through the table files directly: field codecs into record
// buffers, records through the file layer. Python's sqlite3 does the same
// work beside it as the peer.
//
// Reading goes a read-ahead block at a time and must allocate nothing per
// record; every malloc of the process is counted to show it.
#include <mimalloc.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

#include "tables/dbf_file.h"
#include "text/charset.h"
#include "text/collation.h"
#include "values/variant.h"

using namespace zobase;

namespace {

std::atomic<uint64_t> malloc_calls{0};

}  // namespace

// Every allocation of the process passes here on its way to mimalloc.
extern "C" void* malloc(size_t size) {
    malloc_calls.fetch_add(1, std::memory_order_relaxed);
    return mi_malloc(size);
}

namespace {

constexpr uint64_t RECORDS = 1000000;
constexpr uint64_t NAME_POOL = 1000;
constexpr uint32_t FIRST_DAY = 2451545;  // 2000-01-01

using clock_type = std::chrono::steady_clock;

double seconds_since(clock_type::time_point start) {
    return std::chrono::duration<double>(clock_type::now() - start).count();
}

fielddef_st field(const char* name, int32_t type, uint64_t length, uint64_t decimals) {
    fielddef_st def = {};
    def.type = type;
    std::snprintf(def.name, sizeof def.name, "%s", name);
    def.length = length;
    def.default_length = length == 0;
    def.decimals = decimals;
    def.default_decimals = decimals == 0;
    def.nullable = FIELD_NOT_NULLABLE;
    return def;
}

std::unique_ptr<DbfFile> create_bench_table(const std::string& path) {
    std::vector<fielddef_st> defs = {field("NAME", FIELD_TYPE_CHARACTER, 30, 0),
                                     field("AMOUNT", FIELD_TYPE_NUMERIC, 12, 2),
                                     field("DAY", FIELD_TYPE_DATE, 0, 0),
                                     field("COUNT", FIELD_TYPE_INTEGER, 0, 0)};
    createopts_st options;
    options.codepage = 1252;
    File* file = create_file(String(path.c_str()), 0);
    return std::unique_ptr<DbfFile>(DbfFile::create(file, &options, defs.data(), defs.size()));
}

std::vector<String> name_pool(const Charset* charset) {
    std::vector<String> names;
    for (uint64_t i = 0; i < NAME_POOL; ++i) {
        String name(("customer number " + std::to_string(i * 7919)).c_str());
        name.convert(charset, 0, CSTRAN_STRICT);
        names.push_back(name);
    }
    return names;
}

// The fields of record i into the shown record, starting from the blank one.
void fill_record(DbfFile* table, const std::vector<String>& names, uint64_t i) {
    std::memcpy(table->shown_record, table->blank_record.get(), table->record_length);
    table->set_string(0, names[i % NAME_POOL]);
    table->set_numeric(1, {static_cast<double>(i % 1000000) / 100.0, 2});
    table->set_date(2, date_st{FIRST_DAY + static_cast<uint32_t>(i % 3650)});
    table->set_integer(3, static_cast<integer_type_st>(i));
}

// One write per record, as an update of a single record makes it.
double write_each(const std::string& path, const std::vector<String>& names) {
    auto table = create_bench_table(path);
    auto start = clock_type::now();
    for (uint64_t i = 0; i < RECORDS; ++i) {
        fill_record(table.get(), names, i);
        table->file->writeex(static_cast<std::streamoff>(table->record_position(i + 1)),
                             table->shown_record, table->record_length);
    }
    table->record_count = table->stored_count = RECORDS;
    table->write_dbf_header();
    return RECORDS / seconds_since(start);
}

// Records gathered in the read-ahead block and written a block at a time.
double write_blocks(const std::string& path, const std::vector<String>& names) {
    auto table = create_bench_table(path);
    uint64_t length = table->record_length;
    uint64_t capacity = table->readahead_capacity;
    char* block = table->readahead.get();
    auto start = clock_type::now();
    for (uint64_t first = 0; first < RECORDS; first += capacity) {
        uint64_t count = std::min(capacity, RECORDS - first);
        for (uint64_t k = 0; k < count; ++k) {
            fill_record(table.get(), names, first + k);
            std::memcpy(block + k * length, table->shown_record, length);
        }
        table->file->writeex(static_cast<std::streamoff>(table->record_position(first + 1)), block,
                             count * length);
    }
    table->record_count = table->stored_count = RECORDS;
    table->write_dbf_header();
    return RECORDS / seconds_since(start);
}

struct read_sums_st {
    uint64_t name_bytes = 0;
    double amount = 0;
    uint64_t days = 0;
    int64_t count = 0;
};

double read_blocks(const std::string& path, read_sums_st* sums, uint64_t* allocations) {
    File* file = open_file(String(path.c_str()), FILE_OPEN_READ);
    std::unique_ptr<DbfFile> table(DbfFile::open(file));
    uint64_t length = table->record_length;
    uint64_t capacity = table->readahead_capacity;
    char* block = table->readahead.get();
    char name[64];
    uint64_t before = malloc_calls.load();
    auto start = clock_type::now();
    for (uint64_t first = 1; first <= table->record_count; first += capacity) {
        uint64_t got = table->file->readex(static_cast<std::streamoff>(table->record_position(first)),
                                           block, capacity * length) / length;
        for (uint64_t k = 0; k < got; ++k) {
            std::memcpy(table->shown_record, block + k * length, length);
            uint64_t name_length = sizeof name;
            const Charset* charset = nullptr;
            table->get_char(0, name, &name_length, &charset);
            Variant amount, day, count;
            table->get_variant(1, &amount);
            table->get_variant(2, &day);
            table->get_variant(3, &count);
            sums->name_bytes += static_cast<unsigned char>(name[name_length - 1]);
            sums->amount += amount.numeric.value;
            sums->days += day.date.julian;
            sums->count += count.integer;
        }
    }
    double rate = table->record_count / seconds_since(start);
    *allocations = malloc_calls.load() - before;
    return rate;
}

// Python's sqlite3 on the same rows, in a file: rows per second written
// (one transaction) and read.
bool sqlite_peer(const std::string& path, double* write_rate, double* read_rate) {
    std::string script =
        "import sqlite3, time, sys\n"
        "db = sqlite3.connect(sys.argv[1])\n"
        "db.execute('create table t (name text, amount real, day text, count integer)')\n"
        "n = " + std::to_string(RECORDS) + "\n"
        "rows = (('customer number %d' % (i % 1000 * 7919), i / 100.0, '2000%04d' % (i % 3650), i)"
        " for i in range(n))\n"
        "start = time.perf_counter()\n"
        "db.executemany('insert into t values (?, ?, ?, ?)', rows)\n"
        "db.commit()\n"
        "written = n / (time.perf_counter() - start)\n"
        "start = time.perf_counter()\n"
        "total = 0\n"
        "for name, amount, day, count in db.execute('select name, amount, day, count from t'):\n"
        "    total += count\n"
        "read = n / (time.perf_counter() - start)\n"
        "print(written, read)\n";
    std::string script_path = path + ".py";
    if (FILE* out = std::fopen(script_path.c_str(), "w")) {
        std::fputs(script.c_str(), out);
        std::fclose(out);
    }
    std::string command = "python3 " + script_path + " " + path + ".sqlite 2>/dev/null";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return false;
    bool ok = std::fscanf(pipe, "%lf %lf", write_rate, read_rate) == 2;
    ::pclose(pipe);
    return ok;
}

}  // namespace

int main() {
    __init_character_sets();
    __init_collations();
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("zobase_bench_tables_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    std::string path = (folder / "bench.dbf").string();
    std::vector<String> names = name_pool(get_charset_by_codepage(1252, false));

    double each = write_each(path, names);
    std::filesystem::remove(path);
    double blocks = write_blocks(path, names);
    read_sums_st sums;
    uint64_t allocations = 0;
    double read = read_blocks(path, &sums, &allocations);

    std::printf("table files: %llu records of C(30), N(12,2), D, I\n",
                static_cast<unsigned long long>(RECORDS));
    std::printf("  write, one write per record   %12.0f records/s\n", each);
    std::printf("  write, a block at a time      %12.0f records/s\n", blocks);
    std::printf("  read, a block at a time       %12.0f records/s  (%llu allocations while reading, "
                "%llu before)\n",
                read, static_cast<unsigned long long>(allocations),
                static_cast<unsigned long long>(malloc_calls.load() - allocations));
    std::printf("  checksums: %llu %.2f %llu %lld\n", static_cast<unsigned long long>(sums.name_bytes),
                sums.amount, static_cast<unsigned long long>(sums.days), static_cast<long long>(sums.count));
    double peer_write = 0, peer_read = 0;
    if (sqlite_peer((folder / "peer").string(), &peer_write, &peer_read)) {
        std::printf("  python sqlite3: write %10.0f rows/s, read %10.0f rows/s\n", peer_write, peer_read);
        std::printf("  ratio to sqlite3: write %.1fx (block) %.1fx (per record), read %.1fx\n",
                    blocks / peer_write, each / peer_write, read / peer_read);
    }
    std::filesystem::remove_all(folder);
    return allocations == 0 ? 0 : 1;
}
