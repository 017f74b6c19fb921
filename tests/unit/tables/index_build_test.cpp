// Building tags from their records: the sort of the entries, and keys read
// straight from the records (a field, UPPER() of a character field) that
// must be byte for byte what the key program makes, which a twin key the
// reader cannot take ("+ 0", "+ ''") gives.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tables/index.h"
#include "tests/unit/tables/table_runtime_support.h"

namespace zobase {
namespace {

typedef std::pair<std::string, uint32_t> entry_t;

// Long runs of keys equal in their first 8 and 16 bytes, many keys equal
// throughout, short keys, records not in order: the order is the bytes',
// equal keys by record.
TEST(IndexBuild, SortOrdersKeysByTheirBytesAndEqualKeysByRecord) {
    std::mt19937 random(7);
    for (uint32_t key_length : {1u, 4u, 8u, 9u, 24u, 60u}) {
        node_entries_st entries;
        entries.clear(key_length);
        std::vector<entry_t> expected;
        for (uint32_t n = 1; n <= 20000; ++n) {
            // Records out of order in the second half.
            uint32_t record = n <= 10000 ? n : 30001 - n;
            std::string key = "customer-number-" + std::to_string(random() % 700) + std::string(random() % 3, 'z');
            if (random() % 5 == 0) key = std::to_string(random() % 40);
            key.resize(key_length, ' ');
            entries.push(key.data(), record, NO_NODE);
            expected.emplace_back(key, record);
        }
        std::sort(expected.begin(), expected.end());
        sort_entries(&entries);
        ASSERT_EQ(entries.size(), expected.size());
        for (size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(std::string(entries.key(i), key_length), expected[i].first) << key_length << " at " << i;
            ASSERT_EQ(entries.records[i], expected[i].second) << key_length << " at " << i;
        }
    }
}

class TagKeys : public testing::TableRuntimeTest {
protected:
    // Names in both cases, with letters beyond ASCII in some, and nulls.
    void make_table(int codepage) {
        ASSERT_EQ(run("CREATE TABLE " + path("t") + " CODEPAGE = " + std::to_string(codepage) +
                      " (id I, name C(12), n N(8,2), d D, nn N(6,1) NULL, cn C(8) NULL)"),
                  0)
            << screen.errors;
        const char* names[] = {"anna", "Bert", "\xC3\xA9mile", "zo\xC3\xAB", "Anna", "stra\xC3\x9F" "e", "", "b"};
        for (int i = 1; i <= 400; ++i) {
            ASSERT_EQ(run("APPEND BLANK"), 0);
            std::string name = std::string(names[i % 8]) + std::to_string(i * 7919 % 97);
            ASSERT_EQ(run("REPLACE id WITH " + std::to_string(i * 7919 % 1009 - 500)), 0) << screen.errors;
            ASSERT_EQ(run("REPLACE name WITH \"" + name + "\""), 0) << screen.errors;
            ASSERT_EQ(run("REPLACE n WITH " + std::to_string(i % 37) + ".25"), 0);
            ASSERT_EQ(run("REPLACE d WITH DATE(2020, 1, 1) + " + std::to_string(i * 13 % 50)), 0);
            std::string nn = i % 3 ? std::to_string(i % 11) : ".NULL.";
            ASSERT_EQ(run("REPLACE nn WITH " + nn), 0) << screen.errors;
            ASSERT_EQ(run("REPLACE cn WITH " + (i % 4 ? "\"" + name + "\"" : ".NULL.")), 0) << screen.errors;
        }
    }

    std::vector<entry_t> tag_entries(const char* tag) { return testing::tag_entries(folder.path / "t.cdx", tag); }

    // The same records in the same order under the same keys; a key may be
    // longer in one tag by pad bytes only (a field's width against the
    // width of its value).
    void expect_same_entries(const char* a, const char* b) {
        std::vector<entry_t> x = tag_entries(a), y = tag_entries(b);
        ASSERT_EQ(x.size(), y.size()) << a;
        for (size_t i = 0; i < x.size(); ++i) {
            ASSERT_EQ(x[i].second, y[i].second) << a << " at " << i;
            std::string p = x[i].first, q = y[i].first;
            if (p.size() < q.size()) std::swap(p, q);
            ASSERT_EQ(p.substr(0, q.size()), q) << a << " at " << i;
            ASSERT_EQ(p.find_first_not_of(' ', q.size()), std::string::npos) << a << " at " << i;
        }
    }
};

TEST_F(TagKeys, KeysReadFromRecordsAreTheKeyProgramsKeys) {
    for (int codepage : {65001, 1252}) {
        SCOPED_TRACE(codepage);
        std::filesystem::remove(folder.path / "t.dbf");
        std::filesystem::remove(folder.path / "t.cdx");
        make_table(codepage);
        const char* pairs[][3] = {
            {"id", "id + 0", ""},
            {"n", "n + 0", ""},
            {"d", "d + 0", ""},
            {"name", "name + ''", ""},
            {"UPPER(name)", "UPPER(name + '')", ""},
            {"upper( Name )", "UPPER(name + '')", ""},
            {"UPPER(name)", "UPPER(name + '')", " FOR n > 10"},
            {"id", "id + 0", " DESCENDING"},
            {"UPPER(name)", "UPPER(name + '')", " DESCENDING"},
        };
        int made = 0;
        for (const auto& pair : pairs) {
            std::string a = "a" + std::to_string(made), b = "b" + std::to_string(made++);
            ASSERT_EQ(run("INDEX ON " + std::string(pair[0]) + " TAG " + a + pair[2]), 0) << pair[0] << screen.errors;
            ASSERT_EQ(run("INDEX ON " + std::string(pair[1]) + " TAG " + b + pair[2]), 0) << pair[1] << screen.errors;
        }
        // Nullable fields keep the program's keys: a null is all zero bytes,
        // any other value starts with its marker byte.
        ASSERT_EQ(run("INDEX ON nn TAG nn"), 0) << screen.errors;
        ASSERT_EQ(run("INDEX ON cn TAG cn"), 0) << screen.errors;
        ASSERT_EQ(run("USE"), 0);
        for (int i = 0; i < made; ++i)
            expect_same_entries(("A" + std::to_string(i)).c_str(), ("B" + std::to_string(i)).c_str());
        for (const char* tag : {"NN", "CN"}) {
            std::vector<entry_t> entries = tag_entries(tag);
            ASSERT_EQ(entries.size(), 400u);
            size_t nulls = 0;
            for (const entry_t& e : entries) {
                if (e.first.find_first_not_of('\0') == std::string::npos) ++nulls;
                else EXPECT_EQ(static_cast<unsigned char>(e.first[0]), 0x80) << tag;
            }
            EXPECT_EQ(nulls, std::string(tag) == "NN" ? 400u - 267u : 100u) << tag;
        }
    }
}

}  // namespace
}  // namespace zobase
