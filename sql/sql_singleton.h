#pragma once
// SQL pass-through over ODBC (unixODBC's wide API; all text crosses in
// UTF-16). One SqlSingleton per Runtime holds the ODBC environment and the
// statements by handle number; a handle number names one SqlStatement, and
// statements on the same ODBC connection share one SqlConnection, which dies
// with its last statement.
//
// Lock order: the process-wide runtime table (shared, released at once), the
// singleton (shared to resolve a handle, exclusive to add or remove one), the
// statement (exclusive for a whole call), the connection (exclusive while its
// statement list changes). The singleton's lock is dropped as soon as the
// statement's is held, so calls on different statements run at once.
#include <sql.h>
#include <sqlext.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include "values/string.h"
#include "values/variant.h"
#include "vm/program.h"

namespace zobase {

class Runtime;
class SqlSingleton;
class VmStack;

// One `?expr` of the SQL text: the compiled expression, run at each execution.
struct prepared_operand_st {
    std::unique_ptr<Program> program;
};

// What SQLBindParameter points into for one parameter; the storage for the
// value in the C type chosen for it stays put until the execution is done.
struct bound_value_st {
    Variant value;
    SQLLEN indicator = 0;
    String text;  // strings in UTF-16, money as decimal text
    union {
        SQLCHAR bit;
        SQLBIGINT integer;
        SQLDOUBLE number;
        SQL_DATE_STRUCT date;
        SQL_TIMESTAMP_STRUCT timestamp;
    };
};

class SqlConnection {
public:
    SqlConnection(SqlSingleton* owner, SQLHDBC handle, bool is_shared) : singleton(owner), dbc(handle), shared(is_shared) {}
    ~SqlConnection();

    std::map<int64_t, class SqlStatement*> statements;
    SqlSingleton* singleton;
    SQLHDBC dbc;
    std::shared_mutex lock;  // guards `statements`
    std::atomic<bool> batch_mode{true};
    const bool shared;
};

class SqlStatement {
public:
    SqlStatement(int64_t number, SqlConnection* owner, SQLHSTMT handle) : hstmt(handle), id(number), connection(owner) {}
    ~SqlStatement();

    std::shared_mutex lock;  // exclusive for the duration of a call
    SQLHSTMT hstmt;
    const int64_t id;
    SqlConnection* connection;
    bool prepared = false;
    std::vector<prepared_operand_st> parameters;
    std::vector<bound_value_st> bound_values;
    String sql;  // UTF-16
    // The cursor name of the last execution and the cursors made since, for
    // the result sets that sqlmoreresults reads later.
    String cursor_base;
    int64_t cursor_count = 0;

    // Closes any open result, drops the parameters and the text.
    void reset_prepare(VmStack* stack);
    // Releases the values bound for the last execution.
    void release_bound_values(VmStack* stack);
};

// A statement resolved from its number, locked for the caller's call.
struct SqlStatementAccess {
    SqlStatement* statement;
    std::unique_lock<std::shared_mutex> guard;
    SqlStatement* operator->() const noexcept { return statement; }
};

class SqlSingleton {
public:
    SqlSingleton();
    ~SqlSingleton();
    SqlSingleton(const SqlSingleton&) = delete;
    SqlSingleton& operator=(const SqlSingleton&) = delete;

    SQLHENV env = SQL_NULL_HENV;
    int64_t next_id = 1;  // never reused
    std::shared_mutex lock;
    std::map<int64_t, SqlStatement*> statements;

    // The runtime's singleton; 1466 for a stack whose runtime has none.
    static SqlSingleton& of(VmStack* stack);

    // The one door to a statement: 1466 for an unknown number.
    SqlStatementAccess get_handle_by_id(int64_t id);
    // A new connection by data source name (SQLConnectW) or by connection
    // string (SQLDriverConnectW) with its first statement: its number, or -1
    // with the diagnostics logged.
    int64_t connect(VmStack* stack, const String& source, bool by_string, bool shared);
    // A further statement on the connection of an existing handle, or -1.
    int64_t add_statement(VmStack* stack, int64_t existing);
    // Destroys the statement, and its connection with the last one.
    void disconnect(VmStack* stack, int64_t id);
    std::vector<int64_t> handle_numbers();

private:
    int64_t register_statement(VmStack* stack, SqlConnection* connection);
};

// Made and destroyed with the runtime: a process-wide table maps each
// runtime to its singleton.
void attach_runtime_sql(const Runtime* runtime);
void deattach_runtime_sql(const Runtime* runtime);

// Appends the first diagnostic record of an ODBC handle to the stack's error
// records (aerror()): no exception is raised.
void _sql_log_diag_rec(VmStack* stack, int64_t handle_id, SQLSMALLINT handle_type, SQLHANDLE handle);
// ODBC's two results of success.
inline bool sql_succeeded(SQLRETURN rc) noexcept { return rc == SQL_SUCCESS || rc == SQL_SUCCESS_WITH_INFO; }

// Text to and from the UTF-16 that crosses to ODBC; the conversion to it is
// strict (9011).
String sql_wide_text(const String& text);
String sql_text_of_wide(const SQLWCHAR* text, size_t units);

}  // namespace zobase
