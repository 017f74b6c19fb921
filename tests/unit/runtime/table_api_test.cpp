// The table interface driven by a host with no language code: tables made,
// filled, read back on every field type, indexed and sought, locked,
// renamed and dropped.
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <functional>
#include <string>

#include "runtime/runtime.h"
#include "runtime/table_api.h"
#include "tests/unit/runtime/runtime_test_support.h"
#include "tests/unit/tables/table_test_support.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/variant.h"

namespace zobase {
namespace {

using testing::CaptureScreen;
using testing::field_def;
using testing::nullable;
using testing::table_options;
using testing::TableFolder;

// The number of the error the call raises; 0 when it raises none.
int error_of(const std::function<void()>& call) {
    try {
        call();
    } catch (const RuntimeError& error) {
        return error.number;
    }
    return 0;
}

// A host with a runtime and a folder for its tables.
class TableHost : public ::testing::Test {
protected:
    TableFolder folder;
    CaptureScreen screen;
    Runtime* runtime = nullptr;
    VmStack* stack = nullptr;

    void SetUp() override {
        runtime = CreateRuntime(&screen);
        GetMainStack(runtime, &stack);
    }
    void TearDown() override {
        if (runtime) ReleaseRuntime(runtime);
    }
};

class TableApi : public TableHost {
protected:
    void SetUp() override {
        TableHost::SetUp();
        std::string name = (folder.path / "api").string();
        ASSERT_EQ(runtime->run_command(String(("CREATE TABLE \"" + name + "\" (i I, n N(8,2), b B, l L, d D, "
                                                "c C(5), m M, z I NULL, a I AUTOINC NEXTVALUE 5 STEP 2)\nUSE")
                                                   .c_str())),
                  0);
    }
    String table_name() const { return String((folder.path / "api").string().c_str()); }
};

TEST_F(TableApi, FillsReadsAndMovesWithoutTheLanguage) {
    void* table = OpenTable(stack, table_name());
    ASSERT_EQ(GetFieldCount(table), 9u);
    EXPECT_EQ(GetNextAutoInc(table, 8), 5u);
    EXPECT_EQ(GetAutoIncStep(table, 8), 2u);
    EXPECT_EQ(GetAutoIncStep(table, 0), 0u);
    EXPECT_EQ(GetFieldNum(table, String("D")), 4u);
    EXPECT_THROW(GetFieldNum(table, String("nothing")), RuntimeError);
    for (int k = 1; k <= 3; ++k) {
        BeginAppendRecord(table, 0);
        SetFieldInt32(table, 0, k * 10);
        SetFieldDouble(table, 1, k + 0.25);
        SetFieldDouble(table, 2, k / 4.0);
        SetFieldLogical(table, 3, k % 2 == 1);
        SetFieldDateYMD(table, 4, 2024, 2, static_cast<uint64_t>(k), false);
        if (k == 2) SetFieldNull(table, 7);
        else SetFieldInt32(table, 7, -k);
        TableUpdate(stack, table, 0);
    }
    EXPECT_EQ(RecordCount(table), 3u);
    EXPECT_EQ(GetNextAutoInc(table, 8), 11u);
    GotoTop(stack, table);
    EXPECT_EQ(RecordNumber(table), 1u);
    EXPECT_EQ(GetFieldInt32(table, 0), 10);
    EXPECT_DOUBLE_EQ(GetFieldDouble(table, 1), 1.25);
    EXPECT_DOUBLE_EQ(GetFieldDouble(table, 2), 0.25);
    EXPECT_TRUE(GetFieldLogical(table, 3));
    uint64_t y, m, d;
    bool empty;
    GetFieldDateYMD(table, 4, &y, &m, &d, &empty);
    EXPECT_EQ(y * 10000 + m * 100 + d, 20240201u);
    EXPECT_FALSE(empty);
    EXPECT_EQ(GetFieldInt32(table, 7), -1);
    EXPECT_THROW(GetFieldLogical(table, 0), RuntimeError);

    GotoRecord(stack, table, 2);
    EXPECT_TRUE(IsFieldNull(table, 7));
    EXPECT_FALSE(GetFieldLogical(table, 3));
    // A revert drops what was not updated.
    SetFieldInt32(table, 0, 999);
    TableRevert(table, 0);
    EXPECT_EQ(GetFieldInt32(table, 0), 20);
    DeleteRecord(table);
    TableUpdate(stack, table, 0);
    EXPECT_TRUE(IsRecordDeleted(table));
    // Empty dates and a date that cannot be.
    SetFieldDateYMD(table, 4, 0, 0, 0, true);
    TableUpdate(stack, table, 0);
    GetFieldDateYMD(table, 4, &y, &m, &d, &empty);
    EXPECT_TRUE(empty);
    EXPECT_THROW(SetFieldDateYMD(table, 4, 2024, 13, 1, false), RuntimeError);

    GotoBottom(stack, table);
    EXPECT_EQ(RecordNumber(table), 3u);
    EXPECT_FALSE(Eof(table));
    GotoEof(table);
    EXPECT_TRUE(Eof(table));
    EXPECT_EQ(GetIndexCount(table), 0u);
    EXPECT_NE(GetTableCharset(table), nullptr);
    EXPECT_FALSE(IsCurrentRecordLocked(table));
    CloseTable(stack, table);

    // What was written is on disk for the next opener.
    table = OpenTable(stack, table_name());
    GotoRecord(stack, table, 3);
    EXPECT_EQ(GetFieldInt32(table, 0), 30);
    Variant value;
    GetFieldVariant(table, 5, &value);
    EXPECT_EQ(value.to_string().u8str(), "     ");
    value.release(stack);
    CloseTable(stack, table);
}

// A table of every field type the engine creates, made through the
// interface alone.
class TableApiHost : public TableHost {
protected:
    enum Field : uint64_t { ID, NAME, NOTE, MEMO, PRICE, QTY, RATIO, WEIGHT, BORN, STAMP, OK, RAW, BLOB, CODE, MAYBE };

    static std::vector<fielddef_st> every_type() {
        fielddef_st id = field_def("id", FIELD_TYPE_INTEGER);
        id.autoincrement = true;
        id.next_value = 100;
        id.has_next_value = true;
        id.step = 5;
        id.has_step = true;
        fielddef_st code = field_def("code", FIELD_TYPE_CHARACTER, 6);
        code.binary = true;
        return {id,
                field_def("name", FIELD_TYPE_CHARACTER, 10),
                nullable(field_def("note", FIELD_TYPE_VARCHAR, 20)),
                field_def("memo", FIELD_TYPE_MEMO),
                field_def("price", FIELD_TYPE_CURRENCY),
                field_def("qty", FIELD_TYPE_NUMERIC, 8, 2),
                field_def("ratio", FIELD_TYPE_FLOAT, 10, 3),
                field_def("weight", FIELD_TYPE_DOUBLE),
                field_def("born", FIELD_TYPE_DATE),
                field_def("stamp", FIELD_TYPE_DATETIME),
                field_def("ok", FIELD_TYPE_LOGICAL),
                field_def("raw", FIELD_TYPE_VARBINARY, 8),
                field_def("blob", FIELD_TYPE_BLOB),
                code,
                nullable(field_def("maybe", FIELD_TYPE_INTEGER))};
    }

    void* create(const std::string& file, std::vector<indexdef_st> tags = {}) {
        std::vector<fielddef_st> fields = every_type();
        createopts_st options = table_options(1252);
        return CreateTable(stack, folder.name(file), &options, fields.data(), fields.size(), tags.data(), tags.size());
    }

    static std::string text_of(void* table, uint64_t field, const Charset* wanted = nullptr) {
        char buffer[2048];
        uint64_t length = sizeof buffer;
        GetFieldText(table, field, buffer, &length, &wanted);
        return std::string(buffer, length);
    }
    static std::string binary_of(void* table, uint64_t field) {
        char buffer[2048];
        uint64_t length = sizeof buffer;
        GetFieldBinary(table, field, buffer, &length);
        return std::string(buffer, length);
    }
    static std::string money_of(void* table, uint64_t field) {
        char buffer[64];
        uint64_t length = sizeof buffer;
        GetFieldMoneyString(table, field, buffer, &length);
        return std::string(buffer, length);
    }
    static void set_text(void* table, uint64_t field, const std::string& text, const Charset* charset) {
        SetFieldText(table, field, text.data(), text.size(), charset);
    }
    static std::string index_key_of(void* table) {
        char key[256];
        uint64_t length = sizeof key;
        GetIndexKey(table, key, &length);
        return std::string(key, length);
    }
    void append_named(void* table, const char* name, double qty) {
        BeginAppendRecord(table, 0);
        set_text(table, NAME, name, nullptr);
        SetFieldDouble(table, QTY, qty);
        TableUpdate(stack, table, 0);
    }
};

TEST_F(TableApiHost, EveryFieldTypeWrittenAndReadBack) {
    const Charset* utf8 = get_charset_by_codepage(65001, false);
    void* table = create("every");
    ASSERT_EQ(GetFieldCount(table), 15u);
    const std::string memo_text(1000, 'm');
    const std::string raw("\x00\x01\xff", 3);
    std::string blob(300, '\0');
    for (size_t i = 0; i < blob.size(); ++i) blob[i] = static_cast<char>(i * 7);

    BeginAppendRecord(table, 0);
    set_text(table, NAME, "M\xc3\xbcller", utf8);
    set_text(table, NOTE, "short", nullptr);
    set_text(table, MEMO, memo_text, nullptr);
    char price[] = "1,234.5678";
    SetFieldMoneyString(table, PRICE, price, sizeof price - 1);
    SetFieldDouble(table, QTY, 12.5);
    SetFieldDouble(table, RATIO, 3.125);
    SetFieldDouble(table, WEIGHT, 2.5e10);
    SetFieldDateYMD(table, BORN, 2024, 2, 29, false);
    SetFieldDateTimeYMDHIS(table, STAMP, 2024, 2, 29, 13, 45, 59);
    SetFieldLogical(table, OK, true);
    SetFieldBinary(table, RAW, raw.data(), raw.size());
    SetFieldBinary(table, BLOB, blob.data(), blob.size());
    SetFieldBinary(table, CODE, "\x01\x02", 2);
    SetFieldNull(table, MAYBE);
    TableUpdate(stack, table, 0);
    // The second record: blank except for what is set, nulls on both kinds.
    BeginAppendRecord(table, 0);
    SetFieldNull(table, NOTE);
    SetFieldInt32(table, MAYBE, 7);
    TableUpdate(stack, table, 0);
    EXPECT_EQ(GetNextAutoInc(table, ID), 110u);
    CloseTable(stack, table);

    // What was written is on disk for the next opener.
    table = OpenTable(stack, folder.name("every"));
    GotoTop(stack, table);
    EXPECT_EQ(GetFieldInt32(table, ID), 100);
    const Charset* charset = nullptr;
    EXPECT_EQ(text_of(table, NAME), "M\xfcller    ");  // the table's own bytes
    EXPECT_EQ(text_of(table, NAME, utf8), "M\xc3\xbcller    ");
    char buffer[16];
    uint64_t length = 16;
    GetFieldText(table, NAME, buffer, &length, &charset);
    EXPECT_EQ(charset, GetTableCharset(table));
    EXPECT_EQ(text_of(table, NOTE), "short");
    EXPECT_FALSE(IsFieldNull(table, NOTE));
    EXPECT_EQ(text_of(table, MEMO), memo_text);
    EXPECT_EQ(GetMemoSize(table, MEMO), 1000u);
    EXPECT_EQ(money_of(table, PRICE), "1234.5678");
    EXPECT_DOUBLE_EQ(GetFieldDouble(table, PRICE), 1234.5678);
    EXPECT_DOUBLE_EQ(GetFieldDouble(table, QTY), 12.5);
    EXPECT_DOUBLE_EQ(GetFieldDouble(table, RATIO), 3.125);
    EXPECT_DOUBLE_EQ(GetFieldDouble(table, WEIGHT), 2.5e10);
    uint64_t y, m, d, h, i, s;
    bool empty;
    GetFieldDateYMD(table, BORN, &y, &m, &d, &empty);
    EXPECT_EQ(y * 10000 + m * 100 + d, 20240229u);
    GetFieldDateTimeYMDHIS(table, STAMP, &y, &m, &d, &h, &i, &s, &empty);
    EXPECT_EQ(y * 10000 + m * 100 + d, 20240229u);
    EXPECT_EQ(h * 10000 + i * 100 + s, 134559u);
    EXPECT_FALSE(empty);
    // A date reads as its midnight.
    GetFieldDateTimeYMDHIS(table, BORN, &y, &m, &d, &h, &i, &s, &empty);
    EXPECT_EQ(y * 10000 + m * 100 + d + h + i + s, 20240229u);
    EXPECT_TRUE(GetFieldLogical(table, OK));
    EXPECT_EQ(binary_of(table, RAW), raw);
    EXPECT_EQ(binary_of(table, BLOB), blob);
    EXPECT_EQ(GetMemoSize(table, BLOB), 300u);
    EXPECT_EQ(binary_of(table, CODE), std::string("\x01\x02    ", 6));
    EXPECT_TRUE(IsFieldNull(table, MAYBE));

    GotoRecord(stack, table, 2);
    EXPECT_EQ(GetFieldInt32(table, ID), 105);
    EXPECT_TRUE(IsFieldNull(table, NOTE));
    EXPECT_EQ(GetFieldInt32(table, MAYBE), 7);
    EXPECT_EQ(text_of(table, NAME), std::string(10, ' '));
    EXPECT_EQ(GetMemoSize(table, MEMO), 0u);
    GetFieldDateTimeYMDHIS(table, STAMP, &y, &m, &d, &h, &i, &s, &empty);
    EXPECT_TRUE(empty);
    EXPECT_EQ(y + m + d + h + i + s, 0u);
    CloseTable(stack, table);
}

TEST_F(TableApiHost, FieldInfoDescribesWhatCreateTableTook) {
    void* table = create("info");
    std::vector<fielddef_st> asked = every_type();
    for (uint64_t f = 0; f < asked.size(); ++f) {
        fielddef_st info;
        GetFieldInfo(table, f, &info);
        SCOPED_TRACE(info.name);
        EXPECT_STRCASEEQ(info.name, asked[f].name);
        EXPECT_EQ(info.type, asked[f].type);
        EXPECT_EQ(info.nullable, asked[f].nullable);
        if (!asked[f].default_length) {
            EXPECT_EQ(info.length, asked[f].length);
        }
        if (!asked[f].default_decimals) {
            EXPECT_EQ(info.decimals, asked[f].decimals);
        }
    }
    fielddef_st id;
    GetFieldInfo(table, ID, &id);
    EXPECT_TRUE(id.autoincrement);
    EXPECT_EQ(id.next_value, 100u);
    EXPECT_EQ(id.step, 5u);
    fielddef_st code;
    GetFieldInfo(table, CODE, &code);
    EXPECT_TRUE(code.binary);
    // The definitions the table reports make the same table again.
    std::vector<fielddef_st> copied(asked.size());
    for (uint64_t f = 0; f < asked.size(); ++f) GetFieldInfo(table, f, &copied[f]);
    void* copy = CreateTable(stack, folder.name("copy"), nullptr, copied.data(), copied.size(), nullptr, 0);
    for (uint64_t f = 0; f < asked.size(); ++f) {
        fielddef_st a, b;
        GetFieldInfo(table, f, &a);
        GetFieldInfo(copy, f, &b);
        // Creation takes the decimals of a B field from the first field.
        if (a.type == FIELD_TYPE_DOUBLE) b.decimals = a.decimals;
        EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0) << a.name;
    }
    EXPECT_EQ(error_of([&] { GetFieldInfo(table, 15, &code); }), ERR_ARGUMENT_INVALID);
    CloseTable(stack, copy);
    CloseTable(stack, table);
}

TEST_F(TableApiHost, RefusalsOfFieldsAndBuffers) {
    void* table = create("refusals");
    BeginAppendRecord(table, 0);
    set_text(table, NAME, "abcdefghij", nullptr);
    // Too small a buffer writes nothing and leaves the room as it was.
    char small[4] = {'x', 'x', 'x', 'x'};
    uint64_t length = sizeof small;
    const Charset* charset = nullptr;
    EXPECT_EQ(error_of([&] { GetFieldText(table, NAME, small, &length, &charset); }), ERR_TABLE_GENERIC);
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(error_of([&] { GetFieldBinary(table, NAME, small, &length); }), ERR_TABLE_GENERIC);
    EXPECT_EQ(std::string(small, 4), "xxxx");
    EXPECT_EQ(error_of([&] { GetFieldBinary(table, QTY, small, &length); }), ERR_OPERAND_TYPE_MISMATCH);
    // A character the table's charset lacks.
    const Charset* utf8 = get_charset_by_codepage(65001, false);
    EXPECT_EQ(error_of([&] { set_text(table, NAME, "\xe2\x82\xac\xe4\xb8\x80", utf8); }), ERR_CHARSET_TRANSLATION);
    // Kinds the field has no place for.
    EXPECT_EQ(error_of([&] { SetFieldLogical(table, NAME, true); }), ERR_OPERAND_TYPE_MISMATCH);
    EXPECT_EQ(error_of([&] { SetFieldNull(table, NAME); }), ERR_FIELD_NOT_NULLABLE);
    EXPECT_EQ(error_of([&] { SetFieldInt32(table, 99, 1); }), ERR_TABLE_ENGINE_NATIVE);
    EXPECT_EQ(error_of([&] { GetMemoSize(table, NAME); }), ERR_TABLE_GENERIC);
    char bad_money[] = "12x";
    EXPECT_EQ(error_of([&] { SetFieldMoneyString(table, PRICE, bad_money, 3); }), ERR_ARGUMENT_INVALID);
    EXPECT_EQ(error_of([&] { SetFieldDateTimeYMDHIS(table, STAMP, 2024, 1, 1, 24, 0, 0); }), ERR_ARGUMENT_INVALID);
    EXPECT_EQ(error_of([&] { SetFieldDateTimeYMDHIS(table, STAMP, 2024, 0, 1, 0, 0, 0); }), ERR_ARGUMENT_INVALID);
    // An autoincrement field starts read-only, and a field can be made so.
    EXPECT_EQ(error_of([&] { SetFieldInt32(table, ID, 5); }), ERR_FIELD_READ_ONLY);
    SetFieldReadonly(table, ID, false);
    SetFieldInt32(table, ID, 500);
    SetFieldReadonly(table, QTY, true);
    EXPECT_EQ(error_of([&] { SetFieldDouble(table, QTY, 1); }), ERR_FIELD_READ_ONLY);
    SetFieldReadonly(table, NAME, true);
    EXPECT_EQ(error_of([&] { set_text(table, NAME, "x", nullptr); }), ERR_OPERAND_TYPE_MISMATCH);
    TableUpdate(stack, table, 0);
    // A caller's value above the next one moves it on.
    EXPECT_EQ(GetFieldInt32(table, ID), 500);
    EXPECT_EQ(GetNextAutoInc(table, ID), 501u);
    EXPECT_EQ(error_of([&] { GetFieldInt32(nullptr, 0); }), ERR_ARGUMENT_INVALID);
    CloseTable(stack, table);
}

TEST_F(TableApiHost, TagsSeekAndOrder) {
    std::vector<indexdef_st> tags = {
        {"name", "UPPER(name)", nullptr, nullptr, false, false, false, false},
        {"qty", "qty", "qty > 0", "", false, false, true, false},
    };
    void* table = create("tags", tags);
    const char* names[] = {"miller", "adams", "brown", "clark", "young"};
    for (int k = 0; k < 5; ++k) append_named(table, names[k], k);
    ASSERT_EQ(GetIndexCount(table), 2u);
    indexdef_st* info = GetIndexInfo(table, 1);
    EXPECT_STREQ(info->tag, "QTY");
    EXPECT_STREQ(info->key_expression, "qty");
    EXPECT_STREQ(info->filter_expression, "qty > 0");
    EXPECT_TRUE(info->descending);
    EXPECT_FALSE(info->unique);
    FreeIndexInfo(info);
    EXPECT_EQ(error_of([&] { GetIndexInfo(table, 2); }), ERR_TAG_NOT_FOUND);

    // CreateTable leaves file order: there is no key to read.
    EXPECT_EQ(error_of([&] { index_key_of(table); }), ERR_NO_INDEX_ORDER);
    EXPECT_EQ(error_of([&] { SeekRawKey(stack, table, "B", 1, SEEK_RANGE_INCLUSIVE, SEEK_FORWARD, false); }),
              ERR_NO_INDEX_ORDER);
    SelectIndex(stack, table, 0);
    GotoTop(stack, table);
    EXPECT_EQ(text_of(table, NAME), "adams     ");
    EXPECT_EQ(index_key_of(table), "ADAMS     ");
    Skip(stack, table, SKIP_FORWARD, 2);
    EXPECT_EQ(text_of(table, NAME), "clark     ");
    Skip(stack, table, SKIP_BACKWARD, 1);
    EXPECT_EQ(text_of(table, NAME), "brown     ");

    EXPECT_TRUE(SeekRawKey(stack, table, "MI", 2, SEEK_RANGE_INCLUSIVE, SEEK_FORWARD, false));
    EXPECT_EQ(RecordNumber(table), 1u);
    // A miss goes to the end, or with `near` to the next greater key.
    EXPECT_FALSE(SeekRawKey(stack, table, "D", 1, SEEK_RANGE_INCLUSIVE, SEEK_FORWARD, false));
    EXPECT_TRUE(Eof(table));
    EXPECT_EQ(index_key_of(table), "");
    EXPECT_FALSE(SeekRawKey(stack, table, "D", 1, SEEK_RANGE_INCLUSIVE, SEEK_FORWARD, true));
    EXPECT_EQ(text_of(table, NAME), "miller    ");
    EXPECT_EQ(error_of([&] { SeekRawKey(stack, table, nullptr, 1, SEEK_RANGE_INCLUSIVE, SEEK_FORWARD, false); }),
              ERR_ARGUMENT_INVALID);

    // A scope from "B" to "C" inclusive keeps the moves to brown and clark.
    SetScope(stack, table, "B", 1, SEEK_FORWARD, SEEK_RANGE_INCLUSIVE);
    SetScope(stack, table, "C", 1, SEEK_BACKWARD, SEEK_RANGE_INCLUSIVE);
    GotoTop(stack, table);
    EXPECT_EQ(text_of(table, NAME), "brown     ");
    GotoBottom(stack, table);
    EXPECT_EQ(text_of(table, NAME), "clark     ");
    Skip(stack, table, SKIP_FORWARD, 1);
    EXPECT_TRUE(Eof(table));
    EXPECT_EQ(error_of([&] { SetScope(stack, table, "B", 0, SEEK_FORWARD, SEEK_RANGE_INCLUSIVE); }),
              ERR_ARGUMENT_INVALID);
    ClearScope(stack, table);
    GotoBottom(stack, table);
    EXPECT_EQ(text_of(table, NAME), "young     ");

    // A deleted record is passed over while SET DELETED is on.
    SeekRawKey(stack, table, "BROWN", 5, SEEK_RANGE_INCLUSIVE, SEEK_FORWARD, false);
    DeleteRecord(table);
    TableUpdate(stack, table, 0);
    SetDeleted(stack, true);
    EXPECT_FALSE(SeekRawKey(stack, table, "BROWN", 5, SEEK_RANGE_INCLUSIVE, SEEK_FORWARD, false));
    GotoTop(stack, table);
    Skip(stack, table, SKIP_FORWARD, 1);
    EXPECT_EQ(text_of(table, NAME), "clark     ");
    SetDeleted(stack, false);

    // The descending tag with its filter: the key of a record finds it again.
    SelectIndex(stack, table, 1);
    GotoTop(stack, table);
    EXPECT_EQ(text_of(table, NAME), "young     ");
    GotoRecord(stack, table, 3);
    char key[256];
    uint64_t length = sizeof key;
    EvalIndexKey(stack, table, key, &length);
    EXPECT_EQ(std::string(key, length), index_key_of(table));
    GotoTop(stack, table);
    EXPECT_TRUE(SeekRawKey(stack, table, key, length, SEEK_RANGE_INCLUSIVE, static_cast<SeekDir>(0), false));
    EXPECT_EQ(RecordNumber(table), 3u);
    // miller has qty 0 and is not in the tag.
    GotoBottom(stack, table);
    EXPECT_EQ(text_of(table, NAME), "adams     ");

    UnselectIndex(table);
    GotoTop(stack, table);
    EXPECT_EQ(RecordNumber(table), 1u);
    EXPECT_EQ(error_of([&] { SelectIndex(stack, table, 2); }), ERR_TAG_NOT_FOUND);
    CloseTable(stack, table);
}

TEST_F(TableApiHost, SkipStopsAtBothEnds) {
    void* table = create("ends");
    for (int k = 0; k < 3; ++k) append_named(table, "x", k);
    GotoTop(stack, table);
    Skip(stack, table, SKIP_FORWARD, 0);
    EXPECT_EQ(RecordNumber(table), 1u);
    Skip(stack, table, SKIP_BACKWARD, 1);
    EXPECT_TRUE(Bof(table));
    EXPECT_EQ(error_of([&] { Skip(stack, table, SKIP_BACKWARD, 1); }), ERR_BEGINNING_OF_FILE);
    Skip(stack, table, SKIP_FORWARD, 10);
    EXPECT_TRUE(Eof(table));
    EXPECT_EQ(error_of([&] { Skip(stack, table, SKIP_FORWARD, 1); }), ERR_END_OF_FILE);
    EXPECT_EQ(error_of([&] { Skip(stack, table, static_cast<SkipDir>(3), 1); }), ERR_ARGUMENT_INVALID);
    CloseTable(stack, table);
}

// Enough records for a tree of more than one level; the quantities are
// appended out of order, so that the tags' order is not file order.
TEST_F(TableApiHost, IndexPositionRunsFromZeroToOne) {
    std::vector<indexdef_st> tags = {{"up", "qty", nullptr, nullptr, false, false, false, false},
                                     {"down", "qty", nullptr, nullptr, false, false, true, false}};
    void* table = create("position", tags);
    const int count = 3000;
    for (int k = 0; k < count; ++k) append_named(table, "x", (k * 7919) % count);
    EXPECT_EQ(error_of([&] { GetIndexPos(table); }), ERR_NO_INDEX_ORDER);
    for (uint64_t tag : {0, 1}) {
        SCOPED_TRACE(tag);
        SelectIndex(stack, table, tag);
        GotoTop(stack, table);
        EXPECT_EQ(GetIndexPos(table), 0.0);
        double last = -1;
        int seen = 0;
        for (; !Eof(table); Skip(stack, table, SKIP_FORWARD, 1), ++seen) {
            double position = GetIndexPos(table);
            ASSERT_GT(position, last) << "record " << seen;
            ASSERT_NEAR(position, static_cast<double>(seen) / count, 0.05) << "record " << seen;
            last = position;
        }
        EXPECT_EQ(seen, count);
        EXPECT_EQ(GetIndexPos(table), 1.0);
    }
    CloseTable(stack, table);
}

TEST_F(TableApiHost, RecordLocksOfTwoHandles) {
    void* table = create("locks");
    for (int k = 0; k < 3; ++k) append_named(table, "x", k);
    // A table opened exclusively takes no record locks.
    LockState state = LOCK_STATE_REFUSED;
    GotoTop(stack, table);
    EXPECT_TRUE(LockCurrentRecord(stack, table, state));
    EXPECT_EQ(state, LOCK_STATE_NOT_NEEDED);
    EXPECT_FALSE(IsCurrentRecordLocked(table));
    CloseTable(stack, table);

    void* first = OpenTable(stack, folder.name("locks"));
    void* second = OpenTable(stack, folder.name("locks"));
    GotoRecord(stack, first, 1);
    EXPECT_TRUE(LockCurrentRecord(stack, first, state));
    EXPECT_EQ(state, LOCK_STATE_TAKEN);
    EXPECT_TRUE(IsCurrentRecordLocked(first));
    EXPECT_TRUE(LockCurrentRecord(stack, first, state));
    EXPECT_EQ(state, LOCK_STATE_HELD);
    // A record locked by the caller stays locked after its update, and the
    // other handle sees the change.
    SetFieldDouble(first, QTY, 42);
    TableUpdate(stack, first, 0);
    EXPECT_TRUE(IsCurrentRecordLocked(first));
    GotoRecord(stack, second, 1);
    EXPECT_DOUBLE_EQ(GetFieldDouble(second, QTY), 42);
    GotoRecord(stack, second, 2);
    EXPECT_TRUE(LockCurrentRecord(stack, second, state));
    EXPECT_EQ(state, LOCK_STATE_TAKEN);
    UnlockCurrentRecord(second);
    EXPECT_FALSE(IsCurrentRecordLocked(second));

    GotoEof(first);
    EXPECT_FALSE(LockCurrentRecord(stack, first, state));
    EXPECT_EQ(state, LOCK_STATE_NO_RECORD);
    GotoRecord(stack, first, 3);
    LockCurrentRecord(stack, first, state);
    UnlockAll(first);
    EXPECT_FALSE(IsCurrentRecordLocked(first));
    GotoRecord(stack, first, 1);
    EXPECT_FALSE(IsCurrentRecordLocked(first));
    CloseTable(stack, second);
    CloseTable(stack, first);
}

TEST_F(TableApiHost, CreateRenameAndDropTheFiles) {
    namespace fs = std::filesystem;
    std::vector<indexdef_st> tags = {{"name", "name", nullptr, nullptr, false, false, false, false}};
    void* table = create("first", tags);
    for (int k = 0; k < 4; ++k) append_named(table, "name", k);
    uint64_t size = GetTableFileSize(table);
    EXPECT_EQ(size, fs::file_size(folder.path / "first.dbf"));
    int64_t now = static_cast<int64_t>(std::time(nullptr));
    EXPECT_NEAR(static_cast<double>(TableLastModified(table)), static_cast<double>(now), 60);
    int64_t created = TableCreateTime(table);
    EXPECT_TRUE(created == 0 || std::abs(created - now) < 60) << created;
    for (const char* file : {"first.dbf", "first.fpt", "first.cdx"}) EXPECT_TRUE(fs::exists(folder.path / file));
    // Nothing is dropped or renamed while it is open.
    EXPECT_EQ(error_of([&] { DropTable(stack, folder.name("first")); }), ERR_FILE_ACCESS_DENIED);
    EXPECT_EQ(error_of([&] { RenameTable(stack, folder.name("first"), folder.name("second")); }),
              ERR_FILE_ACCESS_DENIED);
    // Nor is a table created over it.
    EXPECT_EQ(error_of([&] { create("first"); }), ERR_FILE_IN_USE);
    EXPECT_EQ(RecordCount(table), 4u);
    CloseTable(stack, table);

    RenameTable(stack, folder.name("first"), folder.name("second"));
    for (const char* file : {"first.dbf", "first.fpt", "first.cdx"}) EXPECT_FALSE(fs::exists(folder.path / file));
    table = OpenTable(stack, folder.name("second.dbf"));
    SelectIndex(stack, table, 0);
    EXPECT_TRUE(SeekRawKey(stack, table, "name", 4, SEEK_RANGE_INCLUSIVE, SEEK_FORWARD, false));
    CloseTable(stack, table);
    CloseTable(stack, create("third"));
    EXPECT_EQ(error_of([&] { RenameTable(stack, folder.name("second"), folder.name("third")); }), ERR_FILE_EXISTS);

    DropTable(stack, folder.name("SECOND"));
    for (const char* file : {"second.dbf", "second.fpt", "second.cdx"})
        EXPECT_FALSE(fs::exists(folder.path / file));
    EXPECT_EQ(error_of([&] { DropTable(stack, folder.name("second")); }), ERR_FILE_NOT_FOUND);
}

TEST_F(TableApiHost, ATagThatCannotBeMadeTakesTheTableAway) {
    namespace fs = std::filesystem;
    std::vector<indexdef_st> tags = {{"name", "name", nullptr, nullptr, false, false, false, false},
                                     {"bad", "nosuchfield", nullptr, nullptr, false, false, false, false}};
    EXPECT_NE(error_of([&] { create("broken", tags); }), 0);
    for (const char* file : {"broken.dbf", "broken.fpt", "broken.cdx"}) EXPECT_FALSE(fs::exists(folder.path / file));
}

}  // namespace
}  // namespace zobase
