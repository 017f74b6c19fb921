// sqlprepare, sqlexec and sqlmoreresults on a locked statement.
#include "sql/sql_execute.h"

#include <string>

#include "base/call_trace.h"
#include "base/error_numbers.h"
#include "tables/table_sessions.h"
#include "values/symtable.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

const SQLWCHAR* wide_sql(const SqlStatement& statement) {
    return reinterpret_cast<const SQLWCHAR*>(statement.sql.read());
}

// Stores the text and cuts its host expressions out.
void take_sql(VmStack* stack, SqlStatement& statement, const String& sql) {
    statement.reset_prepare(stack);
    statement.sql = sql_wide_text(_sql_prepare_bind(stack, sql, &statement.parameters));
}

// The cursor of one result set goes where a work area of that alias stands,
// else into the lowest free one, which becomes current.
Table_Object* create_cursor(VmStack* stack, const String& name, std::vector<fielddef_st>& fields) {
    DataSession_Object& session = current_session(stack);
    int32_t area = 0;
    if (!session.resolve(name, &stack->services->symbols(), &area)) area = 0;
    session.select(area);
    createopts_st options;
    options.temporary = true;
    options.rename_allowed = true;
    options.clamp_allowed = true;
    session.create(stack, name, &options, fields.data(), fields.size());
    return session.current_table();
}

String numbered_cursor(const String& base, int64_t count) {
    if (count <= 1) return base;
    String name = base;
    name.add(String(std::to_string(count).c_str()));
    return name;
}

// One result set: its cursor when it has columns. False after an ODBC failure.
bool read_result_set(VmStack* stack, SqlStatement& statement, const String& cursor_name,
                     std::vector<sql_pass_st>* passes, bool* made_cursor) {
    std::vector<fielddef_st> fields = _sql_map_columns(stack, statement.hstmt);
    SQLLEN row_count = -1;
    SQLRowCount(statement.hstmt, &row_count);
    *made_cursor = !fields.empty();
    if (fields.empty()) {
        if (passes) passes->push_back({String(""), static_cast<int64_t>(row_count)});
        return true;
    }
    Table_Object* table = create_cursor(stack, cursor_name, fields);
    int64_t rows = _sql_fetch_records(stack, statement.id, statement.hstmt, fields, table);
    table->movefirst(stack);
    if (rows < 0) return false;
    if (passes) passes->push_back({table->alias, rows});
    return true;
}

// The loop over the result sets of an execution, from the current one on:
// the number of cursors made, at least 1; -1 after a failure. With BATCHMODE
// off it stops after the first cursor, and sqlmoreresults goes on.
int64_t read_result_sets(VmStack* stack, SqlStatement& statement, std::vector<sql_pass_st>* passes) {
    int64_t made = 0;
    for (;;) {
        bool made_cursor = false;
        String name = numbered_cursor(statement.cursor_base, statement.cursor_count + 1);
        if (!read_result_set(stack, statement, name, passes, &made_cursor)) return -1;
        if (made_cursor) {
            ++made;
            ++statement.cursor_count;
        }
        if (made > 0 && !statement.connection->batch_mode.load()) return 1;
        SQLRETURN rc = SQLMoreResults(statement.hstmt);
        if (rc == SQL_NO_DATA) return made ? made : 1;
        if (!sql_succeeded(rc)) {
            _sql_log_diag_rec(stack, statement.id, SQL_HANDLE_STMT, statement.hstmt);
            return -1;
        }
    }
}

void name_cursors(SqlStatement& statement, const String* cursor) {
    statement.cursor_base = cursor && !cursor->is_empty() ? *cursor : String("sqlresult");
    statement.cursor_count = 0;
}

}  // namespace

int64_t sql_prepare(VmStack* stack, SqlStatement& statement, const String& sql) {
    ZO_TRACE();
    take_sql(stack, statement, sql);
    if (!sql_succeeded(SQLPrepareW(statement.hstmt, const_cast<SQLWCHAR*>(wide_sql(statement)), SQL_NTS))) {
        _sql_log_diag_rec(stack, statement.id, SQL_HANDLE_STMT, statement.hstmt);
        return -1;
    }
    statement.prepared = true;
    return 1;
}

int64_t sql_execute(VmStack* stack, SqlStatement& statement, const String* sql, const String* cursor,
                    std::vector<sql_pass_st>* passes) {
    ZO_TRACE();
    if (sql) take_sql(stack, statement, *sql);
    else if (!statement.prepared) throw RuntimeError(ERR_SQL_STATEMENT_REQUIRED);
    SQLFreeStmt(statement.hstmt, SQL_CLOSE);
    struct release_st {
        VmStack* stack;
        SqlStatement& statement;
        ~release_st() { statement.release_bound_values(stack); }
    } release{stack, statement};
    if (!statement.parameters.empty() &&
        !_sql_bind_parameters(stack, statement.id, statement.hstmt, statement.parameters, &statement.bound_values))
        return -1;
    SQLRETURN rc = statement.prepared ? SQLExecute(statement.hstmt)
                                      : SQLExecDirectW(statement.hstmt, const_cast<SQLWCHAR*>(wide_sql(statement)), SQL_NTS);
    // A statement that changed nothing answers SQL_NO_DATA: no failure.
    if (!sql_succeeded(rc) && rc != SQL_NO_DATA) {
        _sql_log_diag_rec(stack, statement.id, SQL_HANDLE_STMT, statement.hstmt);
        SQLFreeStmt(statement.hstmt, SQL_RESET_PARAMS);
        return -1;
    }
    if (!sql_succeeded(SQLFreeStmt(statement.hstmt, SQL_RESET_PARAMS))) {
        _sql_log_diag_rec(stack, statement.id, SQL_HANDLE_STMT, statement.hstmt);
        return -1;
    }
    name_cursors(statement, cursor);
    return read_result_sets(stack, statement, passes);
}

int64_t sql_more_results(VmStack* stack, SqlStatement& statement, const String* cursor,
                         std::vector<sql_pass_st>* passes) {
    ZO_TRACE();
    SQLRETURN rc = SQLMoreResults(statement.hstmt);
    if (rc == SQL_NO_DATA) return 2;
    if (!sql_succeeded(rc)) {
        _sql_log_diag_rec(stack, statement.id, SQL_HANDLE_STMT, statement.hstmt);
        return -1;
    }
    if (cursor && !cursor->is_empty()) name_cursors(statement, cursor);
    return read_result_sets(stack, statement, passes);
}

}  // namespace zobase
