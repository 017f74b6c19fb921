// Damaged tables and memo files never crash the engine: opening and reading
// them through either works or raises one of the table engine's own
// exceptions. Mutations come from a fixed seed, so every run sees the same
// files.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tables/dbf_file.h"
#include "tests/unit/tables/table_test_support.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/money.h"
#include "values/variant.h"

namespace zobase {
namespace {

using testing::field_def;
using testing::nullable;
using testing::TableFolder;

constexpr unsigned MUTATION_SEED = 20240601;
constexpr int DBF_MUTANTS = 1000;
constexpr int FPT_MUTANTS = 1000;
constexpr uint64_t RECORDS_READ = 40;

// What reading a file ended with.
enum class Outcome { read_through, refused };

class BadFiles : public ::testing::Test {
protected:
    TableFolder folder;
    std::string good_dbf;
    std::string good_fpt;
    std::mt19937 random{MUTATION_SEED};

    void SetUp() override {
        std::vector<fielddef_st> defs = {
            field_def("NAME", FIELD_TYPE_CHARACTER, 12), nullable(field_def("CODE", FIELD_TYPE_VARCHAR, 6)),
            field_def("RAW", FIELD_TYPE_VARBINARY, 4),   field_def("BORN", FIELD_TYPE_DATE),
            field_def("SEEN", FIELD_TYPE_DATETIME),      nullable(field_def("OK", FIELD_TYPE_LOGICAL)),
            field_def("QTY", FIELD_TYPE_INTEGER),        field_def("PRICE", FIELD_TYPE_CURRENCY),
            field_def("RATE", FIELD_TYPE_DOUBLE),        nullable(field_def("AMOUNT", FIELD_TYPE_NUMERIC, 10, 2)),
            field_def("NOTES", FIELD_TYPE_MEMO),         field_def("BLOB", FIELD_TYPE_BLOB),
        };
        {
            auto table = testing::create_table(folder.name("good.dbf"), defs);
            for (int i = 0; i < 5; ++i) {
                table->set_string(0, String(("name " + std::to_string(i)).c_str()));
                table->set_string(1, String("ab"));
                table->set_date(3, date_st{2450000u + i});
                table->set_datetime(4, datetime_st{2460000u + i, 1000u * i});
                table->set_integer(6, i * 1000);
                table->set_money(7, money_from_integer(i));
                table->set_numeric(9, {i * 1.5, 2});
                table->set_string(10, String(std::string(20 + 50 * i, 'm').c_str()));
                table->set_string(11, String::fromBytes("\x00\x01", 2, Charset::binary));
                if (i == 3) table->set_null(5);
                testing::append_shown_record(table.get());
            }
        }
        good_dbf = folder.read("good.dbf");
        good_fpt = folder.read("good.fpt");
    }

    size_t pick(size_t bound) { return bound ? random() % bound : 0; }
    char any_byte() { return static_cast<char>(random() & 0xFF); }

    // A few damages of the kinds files suffer: bytes overwritten, a run of
    // garbage, a cut. Most of them fall on the header, where they matter.
    std::string mutate(std::string bytes, size_t header_bias) {
        int damages = 1 + static_cast<int>(pick(6));
        for (int d = 0; d < damages && !bytes.empty(); ++d) {
            size_t span = pick(3) ? std::min(header_bias, bytes.size()) : bytes.size();
            size_t at = pick(span);
            switch (pick(4)) {
            case 0: bytes[at] = any_byte(); break;
            case 1:
                for (size_t n = 1 + pick(16); n-- && at < bytes.size(); ++at) bytes[at] = any_byte();
                break;
            case 2: bytes[at] = static_cast<char>(bytes[at] ^ (1 << pick(8))); break;
            default:
                if (pick(4) == 0) bytes.resize(at);
                break;
            }
        }
        return bytes;
    }

    // Opens the table, read-only or for writing, and reads every record's
    // every field in every way there is. Any exception but the engine's own
    // fails the test.
    Outcome read_through(uint32_t flags, const std::string& what) {
        try {
            auto table = testing::open_table(folder.name("t.dbf"), flags);
            uint64_t last = std::min<uint64_t>(table->record_count + 1, RECORDS_READ);
            for (uint64_t recno = 1; recno <= last; ++recno) {
                if (!testing::read_into_shown(table.get(), recno)) break;
                read_fields(table.get());
            }
            return Outcome::read_through;
        } catch (const dbf_exception&) {
        } catch (const file_error&) {
        } catch (const Exception& e) {
            ADD_FAILURE() << what << " raised " << e.name();
        } catch (const std::exception& e) {
            ADD_FAILURE() << what << " raised " << e.what();
        }
        return Outcome::refused;
    }

    void read_fields(DbfFile* table) {
        for (uint64_t i = 0; i < table->visible_fields.size(); ++i) {
            const DbfField* field = table->get_field(i);
            try {
                Variant value;
                table->get_variant(i, &value);
                value.release(nullptr);
                if (field->is_memo()) table->get_memo_size(i);
                if (field->type == 'C') {
                    char out[300];
                    uint64_t length = sizeof out;
                    const Charset* charset = Charset::utf8;
                    table->get_char(i, out, &length, &charset);
                }
            } catch (const dbf_exception&) {
                // A damaged value refuses; the other fields still read.
            }
        }
    }

    void write_pair(const std::string& dbf, const std::string& fpt) {
        folder.write("t.dbf", dbf);
        folder.write("t.fpt", fpt);
    }
};

TEST_F(BadFiles, TruncatedHeadersAreRefused) {
    size_t header_length = 32 * 14 + 264;  // 12 fields and _NullFlags
    for (size_t size = 0; size < header_length; size += 3) {
        write_pair(good_dbf.substr(0, size), good_fpt);
        EXPECT_EQ(read_through(FILE_OPEN_READ | FILE_OPEN_WRITE, "cut at " + std::to_string(size)),
                  Outcome::refused)
            << size;
    }
}

TEST_F(BadFiles, GarbageDescriptorsAreRefusedOrRead) {
    int refused = 0;
    for (int round = 0; round < 200; ++round) {
        std::string bytes = good_dbf;
        size_t field = pick(13);
        for (size_t i = 0; i < 32; ++i) bytes[32 + 32 * field + i] = any_byte();
        if (bytes[32 + 32 * field] == 0x0D) bytes[32 + 32 * field] = 'X';
        write_pair(bytes, good_fpt);
        refused += read_through(FILE_OPEN_READ, "garbage descriptor") == Outcome::refused;
    }
    EXPECT_GT(refused, 150);
}

TEST_F(BadFiles, MemoBlocksPastTheEndReadWhatIsThere) {
    std::string bytes = good_dbf;
    uint64_t notes = 0;
    {
        auto good = testing::open_table(folder.name("good.dbf"), FILE_OPEN_READ);
        notes = good->record_position(1) + good->get_field(10)->offset;
    }
    // NOTES of record 1 names a block far beyond the memo file.
    bytes.replace(notes, 4, "\xFF\xFF\xFF\x7F", 4);
    write_pair(bytes, good_fpt);
    auto table = testing::open_table(folder.name("t.dbf"), FILE_OPEN_READ);
    ASSERT_TRUE(testing::read_into_shown(table.get(), 1));
    Variant value;
    table->get_variant(10, &value);
    EXPECT_EQ(value.str().size(), 0u);
    value.release(nullptr);
    EXPECT_EQ(table->get_memo_size(10), 0u);
}

TEST_F(BadFiles, MutatedTablesRaiseOnlyTheEnginesExceptions) {
    int read = 0;
    for (int i = 0; i < DBF_MUTANTS; ++i) {
        write_pair(mutate(good_dbf, 32 * 14 + 264), good_fpt);
        uint32_t flags = i % 2 ? FILE_OPEN_READ : FILE_OPEN_READ | FILE_OPEN_WRITE;
        read += read_through(flags, "table mutant " + std::to_string(i)) == Outcome::read_through;
    }
    // Damage in the records leaves the table readable; in the header, not.
    EXPECT_GT(read, DBF_MUTANTS / 10);
    EXPECT_LT(read, DBF_MUTANTS * 9 / 10);
}

TEST_F(BadFiles, MutatedMemoFilesRaiseOnlyTheEnginesExceptions) {
    int read = 0;
    for (int i = 0; i < FPT_MUTANTS; ++i) {
        write_pair(good_dbf, mutate(good_fpt, good_fpt.size()));
        read += read_through(FILE_OPEN_READ, "memo mutant " + std::to_string(i)) == Outcome::read_through;
    }
    EXPECT_GT(read, FPT_MUTANTS / 2);
}

}  // namespace
}  // namespace zobase
