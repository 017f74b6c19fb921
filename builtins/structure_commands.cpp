// PACK, ZAP, COPY TO, RENAME TABLE and ALTER TABLE.
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "base/call_trace.h"
#include "builtins/column_arguments.h"
#include "builtins/handlers.h"
#include "builtins/work_area.h"
#include "tables/file.h"
#include "tables/table_files.h"
#include "tables/table_object_zodbf.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace fs = std::filesystem;

namespace {

// A rewrite replaces the files whose records a transaction would put back,
// and can't be undone by ROLLBACK: refused inside one.
void refuse_in_transaction(VmStack* stack, const char* command) {
    if (current_session(stack).in_transaction())
        raise_not_available((std::string(command) + " inside a transaction").c_str());
}

}  // namespace

void void_stackcall_pack(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    refuse_in_transaction(stack, "PACK");
    current_table(stack)->pack(stack);
}

void void_stackcall_zap(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    refuse_in_transaction(stack, "ZAP");
    current_table(stack)->zap(stack);
}

namespace {

// The flags of COPY TO's option list.
constexpr long long COPY_WITH_CDX = 1;
constexpr long long COPY_ALL = 2;
constexpr long long COPY_REST = 4;

// A count or record number of a scope clause: a whole number from 1 (NEXT
// 0 takes nothing).
uint64_t scope_number(const Variant& value, bool zero_allowed) {
    const Variant* v = value.follow();
    double number = v->tag == TAG_INTEGER ? static_cast<double>(v->integer)
                    : v->tag == TAG_NUMERIC ? v->numeric.value
                                            : -1;
    if (number < (zero_allowed ? 0 : 1) || number > 4294967295.0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return static_cast<uint64_t>(number);
}

// Without a scope clause WHILE starts on the current record, as REST does;
// otherwise the whole table is taken.
record_scope_st scope_arguments(VmStack* stack, long long flags, unsigned long long first) {
    record_scope_st scope;
    const Variant& for_condition = argument(stack, first);
    const Variant& while_condition = argument(stack, first + 1);
    const Variant& next = argument(stack, first + 2);
    const Variant& record = argument(stack, first + 3);
    if (!is_null_argument(for_condition)) scope.for_condition = for_condition.str();
    if (!is_null_argument(while_condition)) scope.while_condition = while_condition.str();
    if (!is_null_argument(record)) {
        scope.kind = SCOPE_RECORD;
        scope.count = scope_number(record, false);
    } else if (!is_null_argument(next)) {
        scope.kind = SCOPE_NEXT;
        scope.count = scope_number(next, true);
    } else if (flags & COPY_REST) {
        scope.kind = SCOPE_REST;
    } else if (!(flags & COPY_ALL) && scope.while_condition.size()) {
        scope.kind = SCOPE_REST;
    }
    return scope;
}

}  // namespace

// Arguments: the file name, the flags, FOR and WHILE as text, NEXT's count,
// RECORD's number, then the names of FIELDS. A name the table lacks is 12.
void void_stackcall_copy_to(VmStack* stack, unsigned long long argc) {
    ZO_TRACE();
    Table_Object* table = current_table(stack);
    long long flags = argument(stack, 2).integer;
    copy_to_st options;
    options.with_tags = (flags & COPY_WITH_CDX) != 0;
    options.scope = scope_arguments(stack, flags, 3);
    for (unsigned long long i = 7; i <= argc; ++i) {
        uint64_t field = table->field_by_name(stack, string_argument(stack, i));
        options.fields.push_back(table->get_field_definition(field));
        options.sources.push_back(field);
    }
    table->copyto(stack, string_argument(stack, 1), options);
}

void void_stackcall_rename_table(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    rename_table_files(string_argument(stack, 1), string_argument(stack, 2));
}

namespace {

// The table ALTER TABLE names: a work area of this session that holds it
// must hold it exclusively (error 110) and writable (111), and is closed
// for the change and opened again afterwards, whether the change succeeded
// or not; a table open anywhere else refuses the exclusive open.
template <typename Change>
void alter_table(VmStack* stack, const String& name, Change&& change) {
    refuse_in_transaction(stack, "ALTER TABLE");
    fs::path path(name.u8str());
    if (!path.has_extension()) path += ".dbf";
    fs::path found;
    if (!exists_ci(path, &found)) throw RuntimeError(ERR_FILE_NOT_FOUND, String(path));
    std::error_code ignored;
    fs::path canonical = fs::canonical(found, ignored);
    DataSession_Object& session = current_session(stack);
    int32_t area = 0;
    String alias;
    uint64_t order = 0;
    for (const auto& [number, table] : session.work_areas()) {
        if (fs::path(table->filename().u8str()) != canonical) continue;
        if (table->is_shared()) throw RuntimeError(ERR_EXCLUSIVE_REQUIRED);
        if (table->is_read_only()) throw RuntimeError(ERR_CURSOR_READ_ONLY, table->alias);
        area = number;
        alias = table->alias;
        order = table->current_index();
        break;
    }
    if (area) session.close(stack, area);
    auto reopen = [&] {
        if (!area) return;
        ObjectHolder<Table_Object> table = Table_Object_ZoDbf::use(stack, String(canonical), false, false);
        if (order && order <= table->cnt_indizes()) table->select_index(stack, order, 0);
        session.assign(table, &stack->services->symbols(), alias, area, false);
    };
    try {
        ObjectHolder<Table_Object> table = Table_Object_ZoDbf::use(stack, String(canonical), false, false);
        change(table.get());
    } catch (...) {
        reopen();
        throw;
    }
    reopen();
}

}  // namespace

// Arguments: the table, the column count, then the columns.
void void_stackcall_add_columns(VmStack* stack, unsigned long long argc) {
    ZO_TRACE();
    uint64_t count = static_cast<uint64_t>(argument(stack, 2).integer);
    if (argc < 2 + count * COLUMN_ARGUMENTS) throw RuntimeError(ERR_ARGUMENT_INVALID);
    std::vector<fielddef_st> added;
    for (uint64_t i = 0; i < count; ++i) added.push_back(column_definition(stack, 3 + i * COLUMN_ARGUMENTS));
    alter_table(stack, string_argument(stack, 1), [&](Table_Object* table) {
        std::vector<fielddef_st> fields;
        std::vector<int64_t> sources;
        for (uint64_t i = 0; i < table->cnt_fields(); ++i) {
            fields.push_back(table->get_field_definition(i));
            sources.push_back(static_cast<int64_t>(i));
        }
        for (const fielddef_st& column : added) {
            fields.push_back(column);
            sources.push_back(-1);
        }
        table->alter(stack, std::move(fields), sources);
    });
}

// Arguments: the table, the column's name. Error 12 for a name the table
// lacks, 1871 for its last column.
void void_stackcall_drop_columns(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    String column = argument(stack, 2).to_string();
    alter_table(stack, string_argument(stack, 1), [&](Table_Object* table) {
        uint64_t dropped = table->field_by_name(stack, column);
        if (table->cnt_fields() == 1) throw RuntimeError(ERR_DROP_ALL_COLUMNS);
        std::vector<fielddef_st> fields;
        std::vector<int64_t> sources;
        for (uint64_t i = 0; i < table->cnt_fields(); ++i) {
            if (i == dropped) continue;
            fields.push_back(table->get_field_definition(i));
            sources.push_back(static_cast<int64_t>(i));
        }
        table->alter(stack, std::move(fields), sources);
    });
}

}  // namespace zobase
