// A host that keeps a small parts table through the table interface alone,
// with no program of the language: it creates the table with two tags,
// fills it, walks it in the order of a tag, seeks keys, changes a record
// under a lock, and reads it back.
//
// Usage: table_host [folder]   (the table "parts" is made there)
#include <cstdio>
#include <string>

#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "runtime/table_api.h"
#include "values/error.h"

using namespace zobase;

namespace {

struct part_st {
    const char* name;
    const char* price;  // currency as text
    int qty;
    int year, month, day;
    bool active;
    const char* notes;
};

const part_st PARTS[] = {
    {"washer", "0.05", 5000, 2024, 1, 15, true, ""},
    {"bolt M8", "0.4250", 1200, 2023, 11, 2, true, "zinc plated"},
    {"hinge", "3.9900", 40, 2024, 3, 1, false, "discontinued, sell the rest"},
    {"bolt M6", "0.31", 2500, 2023, 11, 2, true, ""},
    {"gasket", "1,250.00", 3, 2022, 6, 30, true, "for the press; order ahead"},
    {"anchor", "12.5", 75, 2024, 2, 29, true, ""},
};

fielddef_st field(const char* name, int32_t type, uint64_t length = 0, uint64_t decimals = 0) {
    fielddef_st definition = {};
    definition.type = type;
    std::snprintf(definition.name, sizeof definition.name, "%s", name);
    definition.default_length = length == 0;
    definition.length = length;
    definition.default_decimals = decimals == 0;
    definition.decimals = decimals;
    definition.nullable = FIELD_NOT_NULLABLE;
    return definition;
}

// The field's text without the padding of its width.
std::string text(void* table, uint64_t number) {
    char buffer[256];
    uint64_t length = sizeof buffer;
    const Charset* charset = nullptr;
    GetFieldText(table, number, buffer, &length, &charset);
    std::string value(buffer, length);
    return value.substr(0, value.find_last_not_of(' ') + 1);
}

std::string money(void* table, uint64_t number) {
    char buffer[64];
    uint64_t length = sizeof buffer;
    GetFieldMoneyString(table, number, buffer, &length);
    return std::string(buffer, length);
}

class PartsTable {
public:
    PartsTable(VmStack* stack, void* table) : stack_(stack), table_(table) {
        id_ = GetFieldNum(table, String("id"));
        name_ = GetFieldNum(table, String("name"));
        price_ = GetFieldNum(table, String("price"));
        qty_ = GetFieldNum(table, String("qty"));
        added_ = GetFieldNum(table, String("added"));
        active_ = GetFieldNum(table, String("active"));
        notes_ = GetFieldNum(table, String("notes"));
    }

    void append(const part_st& part) {
        BeginAppendRecord(table_, 0);
        SetFieldText(table_, name_, part.name, std::string(part.name).size(), nullptr);
        std::string price = part.price;
        SetFieldMoneyString(table_, price_, price.data(), price.size());
        SetFieldInt32(table_, qty_, part.qty);
        SetFieldDateYMD(table_, added_, part.year, part.month, part.day, false);
        SetFieldLogical(table_, active_, part.active);
        SetFieldText(table_, notes_, part.notes, std::string(part.notes).size(), nullptr);
        TableUpdate(stack_, table_, 0);
    }

    void print_record() const {
        uint64_t year, month, day;
        bool empty;
        GetFieldDateYMD(table_, added_, &year, &month, &day, &empty);
        std::string state = GetFieldLogical(table_, active_) ? "active" : "retired";
        std::string notes = text(table_, notes_);
        if (!notes.empty()) state = state + std::string(9 - state.size(), ' ') + notes;
        std::printf("%3d  %-8s %10s %5d  %04d-%02d-%02d  %s\n", GetFieldInt32(table_, id_),
                    text(table_, name_).c_str(), money(table_, price_).c_str(), GetFieldInt32(table_, qty_),
                    static_cast<int>(year), static_cast<int>(month), static_cast<int>(day), state.c_str());
    }

    void print_all() {
        for (GotoTop(stack_, table_); !Eof(table_); Skip(stack_, table_, SKIP_FORWARD, 1)) print_record();
    }

    // The first part whose name begins with `prefix`, in upper case as the
    // tag's key has it.
    void seek(const char* prefix) {
        bool found = SeekRawKey(stack_, table_, prefix, std::string(prefix).size(), SEEK_RANGE_INCLUSIVE,
                                SEEK_FORWARD, false);
        std::printf("seek \"%s\": ", prefix);
        if (!found) {
            std::printf("not found, at the end: %s\n", Eof(table_) ? "yes" : "no");
            return;
        }
        std::printf("record %llu\n", static_cast<unsigned long long>(RecordNumber(table_)));
        print_record();
    }

    void add_to_qty(int amount) {
        LockState state;
        if (!LockCurrentRecord(stack_, table_, state)) {
            std::printf("record %llu could not be locked\n", static_cast<unsigned long long>(RecordNumber(table_)));
            return;
        }
        SetFieldInt32(table_, qty_, GetFieldInt32(table_, qty_) + amount);
        TableUpdate(stack_, table_, 0);
        std::printf("locked record %llu (%s), qty now %d\n", static_cast<unsigned long long>(RecordNumber(table_)),
                    state == LOCK_STATE_TAKEN ? "lock taken" : "no lock needed", GetFieldInt32(table_, qty_));
        UnlockCurrentRecord(table_);
    }

private:
    VmStack* stack_;
    void* table_;
    uint64_t id_, name_, price_, qty_, added_, active_, notes_;
};

void describe(void* table) {
    std::printf("fields:\n");
    for (uint64_t i = 0; i < GetFieldCount(table); ++i) {
        fielddef_st info;
        GetFieldInfo(table, i, &info);
        std::printf("  %-6s type %2d  length %2llu  decimals %llu%s\n", info.name, info.type,
                    static_cast<unsigned long long>(info.length), static_cast<unsigned long long>(info.decimals),
                    info.autoincrement ? "  autoincrement" : "");
    }
    std::printf("tags:\n");
    for (uint64_t i = 0; i < GetIndexCount(table); ++i) {
        indexdef_st* tag = GetIndexInfo(table, i);
        std::printf("  %-6s on %s%s%s%s\n", tag->tag, tag->key_expression, *tag->filter_expression ? " for " : "",
                    tag->filter_expression, tag->descending ? " descending" : "");
        FreeIndexInfo(tag);
    }
}

void run(VmStack* stack, const std::string& folder) {
    String name((folder + "/parts").c_str());
    fielddef_st fields[] = {
        field("id", FIELD_TYPE_INTEGER),        field("name", FIELD_TYPE_CHARACTER, 20),
        field("price", FIELD_TYPE_CURRENCY),    field("qty", FIELD_TYPE_NUMERIC, 6),
        field("added", FIELD_TYPE_DATE),        field("active", FIELD_TYPE_LOGICAL),
        field("notes", FIELD_TYPE_MEMO),
    };
    fields[0].autoincrement = true;
    indexdef_st tags[] = {
        {"name", "UPPER(name)", nullptr, nullptr, false, false, false, false},
        {"qty", "qty", "active", nullptr, false, false, true, false},
    };
    createopts_st options;
    options.codepage = 1252;
    void* table = CreateTable(stack, name, &options, fields, 7, tags, 2);
    {
        PartsTable parts(stack, table);
        for (const part_st& part : PARTS) parts.append(part);
        describe(table);
        std::printf("\nin file order, %llu records:\n", static_cast<unsigned long long>(RecordCount(table)));
        parts.print_all();
    }
    CloseTable(stack, table);

    // Opened again, shared, as another program would.
    table = OpenTable(stack, name);
    PartsTable parts(stack, table);
    SelectIndex(stack, table, 0);
    std::printf("\nby name:\n");
    parts.print_all();
    std::printf("\n");
    parts.seek("BOLT");
    parts.seek("HI");
    parts.seek("NUT");
    parts.seek("GASKET");
    parts.add_to_qty(-1);
    SelectIndex(stack, table, 1);
    std::printf("\nactive parts, most in stock first:\n");
    parts.print_all();
    std::printf("\ntable file: %llu bytes\n", static_cast<unsigned long long>(GetTableFileSize(table)));
    CloseTable(stack, table);
}

}  // namespace

int main(int argc, char** argv) {
    std::string folder = argc > 1 ? argv[1] : ".";
    Screen* screen = CreateScreen(0);
    Runtime* runtime = CreateRuntime(screen);
    VmStack* stack = nullptr;
    GetMainStack(runtime, &stack);
    int status = 0;
    try {
        run(stack, folder);
    } catch (const RuntimeError& error) {
        std::fprintf(stderr, "error %d: %s\n", error.number, error.message.u8str().c_str());
        status = error.number;
    }
    ReleaseRuntime(runtime);
    ReleaseScreen(screen);
    return status;
}
