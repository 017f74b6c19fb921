// The runtime's ODBC environment, its connections and statements by handle
// number, and the error records ODBC failures leave.
#include "sql/sql_singleton.h"

#include <cstring>

#include "base/call_trace.h"
#include "base/error_numbers.h"
#include "text/charset.h"
#include "values/error.h"
#include "vm/program.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

std::shared_mutex runtime_table_lock;
std::map<const Runtime*, std::unique_ptr<SqlSingleton>>& runtime_table() {
    static std::map<const Runtime*, std::unique_ptr<SqlSingleton>> table;
    return table;
}

constexpr SQLSMALLINT DIAG_MESSAGE_CHARS = 2048;
constexpr SQLSMALLINT CONNECT_OUT_CHARS = 2048;

void free_statement_handle(SQLHSTMT handle) {
    if (handle != SQL_NULL_HSTMT) SQLFreeHandle(SQL_HANDLE_STMT, handle);
}

}  // namespace

// ---- text

String sql_wide_text(const String& text) {
    String wide = text;
    try {
        wide.convert(Charset::utf16le, CON_TERMINATE | CON_UNSHARE, CSTRAN_STRICT);
    } catch (const cstran_chars_lost&) {
        throw RuntimeError(ERR_CHARSET_TRANSLATION, String(Charset::utf16le->name()));
    }
    return wide;
}

String sql_text_of_wide(const SQLWCHAR* text, size_t units) {
    String wide = String::fromBytes(reinterpret_cast<const char*>(text), units * sizeof(SQLWCHAR), Charset::utf16le);
    wide.convert(Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    return wide;
}

static const SQLWCHAR* wide_pointer(const String& wide) {
    return reinterpret_cast<const SQLWCHAR*>(wide.read());
}

// ---- diagnostics

void _sql_log_diag_rec(VmStack* stack, int64_t handle_id, SQLSMALLINT handle_type, SQLHANDLE handle) {
    SQLWCHAR state[6] = {};
    SQLWCHAR message[DIAG_MESSAGE_CHARS] = {};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    SQLRETURN rc = SQLGetDiagRecW(handle_type, handle, 1, state, &native, message, DIAG_MESSAGE_CHARS, &length);
    String state_text("000000"), message_text("SQLGetDiagRecW caused a low level ODBC error");
    if (sql_succeeded(rc)) {
        state_text = sql_text_of_wide(state, 5);
        size_t units = length < DIAG_MESSAGE_CHARS ? static_cast<size_t>(length) : DIAG_MESSAGE_CHARS - 1;
        message_text = sql_text_of_wide(message, units);
    }
    Error row;
    row.values[0].set_integer(static_cast<long long>(ERR_CONNECTIVITY));
    row.values[1].set_string(RuntimeError(ERR_CONNECTIVITY, message_text).message);
    row.values[2].set_string(message_text);
    row.values[3].set_string(state_text);
    row.values[4].set_integer(static_cast<long long>(native));
    row.values[5].set_integer(static_cast<long long>(handle_id));
    stack->errors.push_back(row);
}

// ---- statements and connections

SqlStatement::~SqlStatement() { free_statement_handle(hstmt); }

void SqlStatement::release_bound_values(VmStack* stack) {
    for (bound_value_st& bound : bound_values) bound.value.release(stack);
    bound_values.clear();
}

void SqlStatement::reset_prepare(VmStack* stack) {
    SQLFreeStmt(hstmt, SQL_CLOSE);
    SQLFreeStmt(hstmt, SQL_RESET_PARAMS);
    release_bound_values(stack);
    parameters.clear();
    prepared = false;
    sql = String();
}

SqlConnection::~SqlConnection() {
    SQLDisconnect(dbc);
    SQLFreeHandle(SQL_HANDLE_DBC, dbc);
}

// ---- the singleton

SqlSingleton::SqlSingleton() {
    if (!sql_succeeded(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env))) {
        env = SQL_NULL_HENV;
        return;
    }
    SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3_80), 0);
}

SqlSingleton::~SqlSingleton() {
    std::map<SqlConnection*, bool> connections;
    for (auto& [id, statement] : statements) {
        connections[statement->connection] = true;
        delete statement;
    }
    for (auto& [connection, unused] : connections) delete connection;
    if (env != SQL_NULL_HENV) SQLFreeHandle(SQL_HANDLE_ENV, env);
}

SqlSingleton& SqlSingleton::of(VmStack* stack) {
    std::shared_lock guard(runtime_table_lock);
    auto found = runtime_table().find(stack->runtime);
    if (found == runtime_table().end()) throw RuntimeError(ERR_CONNECTION_HANDLE_INVALID);
    return *found->second;
}

SqlStatementAccess SqlSingleton::get_handle_by_id(int64_t id) {
    std::shared_lock guard(lock);
    auto found = statements.find(id);
    if (found == statements.end()) throw RuntimeError(ERR_CONNECTION_HANDLE_INVALID);
    return SqlStatementAccess{found->second, std::unique_lock(found->second->lock)};
}

// The caller holds the singleton exclusively.
int64_t SqlSingleton::register_statement(VmStack* stack, SqlConnection* connection) {
    SQLHSTMT hstmt = SQL_NULL_HSTMT;
    if (!sql_succeeded(SQLAllocHandle(SQL_HANDLE_STMT, connection->dbc, &hstmt))) {
        _sql_log_diag_rec(stack, 0, SQL_HANDLE_DBC, connection->dbc);
        return -1;
    }
    int64_t id = next_id++;
    auto* statement = new SqlStatement(id, connection, hstmt);
    {
        std::unique_lock connection_guard(connection->lock);
        connection->statements.emplace(id, statement);
    }
    statements.emplace(id, statement);
    return id;
}

int64_t SqlSingleton::connect(VmStack* stack, const String& source, bool by_string, bool shared) {
    ZO_TRACE();
    String wide = sql_wide_text(source);
    if (env == SQL_NULL_HENV) throw RuntimeError(ERR_CONNECTIVITY, String("No ODBC environment"));
    SQLHDBC dbc = SQL_NULL_HDBC;
    if (!sql_succeeded(SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc))) {
        _sql_log_diag_rec(stack, 0, SQL_HANDLE_ENV, env);
        return -1;
    }
    SQLRETURN rc;
    if (by_string) {
        SQLWCHAR out[CONNECT_OUT_CHARS];
        SQLSMALLINT out_length = 0;
        rc = SQLDriverConnectW(dbc, nullptr, const_cast<SQLWCHAR*>(wide_pointer(wide)), SQL_NTS, out,
                               CONNECT_OUT_CHARS, &out_length, SQL_DRIVER_NOPROMPT);
    } else {
        rc = SQLConnectW(dbc, const_cast<SQLWCHAR*>(wide_pointer(wide)), SQL_NTS, nullptr, 0, nullptr, 0);
    }
    if (!sql_succeeded(rc)) {
        _sql_log_diag_rec(stack, 0, SQL_HANDLE_DBC, dbc);
        SQLFreeHandle(SQL_HANDLE_DBC, dbc);
        return -1;
    }
    auto* connection = new SqlConnection(this, dbc, shared);
    std::unique_lock guard(lock);
    int64_t id = register_statement(stack, connection);
    if (id < 0) delete connection;
    return id;
}

int64_t SqlSingleton::add_statement(VmStack* stack, int64_t existing) {
    std::unique_lock guard(lock);
    auto found = statements.find(existing);
    if (found == statements.end()) throw RuntimeError(ERR_CONNECTION_HANDLE_INVALID);
    std::unique_lock statement_guard(found->second->lock);
    return register_statement(stack, found->second->connection);
}

void SqlSingleton::disconnect(VmStack* stack, int64_t id) {
    ZO_TRACE();
    SqlStatement* statement;
    {
        std::unique_lock guard(lock);
        auto found = statements.find(id);
        if (found == statements.end()) throw RuntimeError(ERR_CONNECTION_HANDLE_INVALID);
        statement = found->second;
        // Waits for a call that is running on it.
        std::unique_lock statement_guard(statement->lock);
        statements.erase(found);
    }
    SqlConnection* connection = statement->connection;
    statement->release_bound_values(stack);
    delete statement;
    bool last;
    {
        std::unique_lock connection_guard(connection->lock);
        connection->statements.erase(id);
        last = connection->statements.empty();
    }
    if (last) delete connection;
}

std::vector<int64_t> SqlSingleton::handle_numbers() {
    std::shared_lock guard(lock);
    std::vector<int64_t> numbers;
    for (auto& [id, statement] : statements) numbers.push_back(id);
    return numbers;
}

// ---- the runtime table

void attach_runtime_sql(const Runtime* runtime) {
    auto singleton = std::make_unique<SqlSingleton>();
    std::unique_lock guard(runtime_table_lock);
    runtime_table()[runtime] = std::move(singleton);
}

void deattach_runtime_sql(const Runtime* runtime) {
    std::unique_ptr<SqlSingleton> singleton;
    {
        std::unique_lock guard(runtime_table_lock);
        auto found = runtime_table().find(runtime);
        if (found == runtime_table().end()) return;
        singleton = std::move(found->second);
        runtime_table().erase(found);
    }
}

}  // namespace zobase
