// What an ODBC driver costs by itself when a result set is read: the rows
// of bench/sql.py (1,000,000 of id integer, name varchar(20), amount double,
// day date) fetched from SQLite through the SQLite ODBC driver in three ways,
// beside Python's sqlite3 reading the same rows as the peer:
//
//   getdata    SQLFetch, then one SQLGetData per value (text as SQL_C_WCHAR)
//   bound      SQLBindCol into typed buffers, one row per SQLFetch
//   rowset     SQLBindCol with SQL_ATTR_ROW_ARRAY_SIZE rows per SQLFetch
//
// No value is stored anywhere: this is the floor that a fetch into a cursor
// stands on. Figures are processor seconds of this process (the driver runs
// in it) and of the Python process; the ratio is ours over Python's.
//
//   build/bench_sql_fetch_floor [rows]
#include <sql.h>
#include <sqlext.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr SQLULEN ROWSET = 256;
constexpr SQLLEN NAME_UNITS = 64;
const char PYTHON[] = "/usr/bin/python3";

double cpu_seconds() {
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

[[noreturn]] void fail(const char* what, SQLSMALLINT type, SQLHANDLE handle) {
    SQLCHAR state[6] = {}, message[512] = {};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    SQLGetDiagRec(type, handle, 1, state, &native, message, sizeof message, &length);
    std::fprintf(stderr, "%s failed: %s %s\n", what, state, message);
    std::exit(1);
}

void check(SQLRETURN rc, const char* what, SQLSMALLINT type, SQLHANDLE handle) {
    if (!SQL_SUCCEEDED(rc)) fail(what, type, handle);
}

// The table of bench/sql.py, written by Python's sqlite3 so that both sides
// read the very same file.
void make_rows(const std::string& path, long rows) {
    std::string script =
        "import sqlite3,sys\n"
        "db = sqlite3.connect(sys.argv[1])\n"
        "db.execute('create table rows (id integer, name varchar(20), amount double precision, day date)')\n"
        "db.executemany('insert into rows values (?, ?, ?, ?)', ((i, 'name %d' % (i % 1000), i * 0.25,"
        " '2024-%02d-%02d' % (i % 12 + 1, i % 28 + 1)) for i in range(1, int(sys.argv[2]) + 1)))\n"
        "db.commit()\n";
    FILE* pipe = popen((std::string(PYTHON) + " - " + path + " " + std::to_string(rows)).c_str(), "w");
    if (!pipe) std::exit(1);
    std::fputs(script.c_str(), pipe);
    if (pclose(pipe) != 0) {
        std::fprintf(stderr, "python could not make the rows\n");
        std::exit(1);
    }
}

double python_seconds(const std::string& path, double* total) {
    std::string script =
        "import sqlite3,sys,time\n"
        "c = sqlite3.connect(sys.argv[1])\n"
        "start = time.process_time()\n"
        "t = 0.0\n"
        "for row in c.execute('select id, name, amount, day from rows'):\n"
        "    t += row[2]\n"
        "print(time.process_time() - start, t)\n";
    std::string out_path = path + ".py.out";
    FILE* pipe = popen((std::string(PYTHON) + " - " + path + " > " + out_path).c_str(), "w");
    std::fputs(script.c_str(), pipe);
    pclose(pipe);
    double seconds = 0;
    FILE* out = std::fopen(out_path.c_str(), "r");
    if (!out || std::fscanf(out, "%lf %lf", &seconds, total) != 2) std::exit(1);
    std::fclose(out);
    return seconds;
}

struct connection_st {
    SQLHENV env = SQL_NULL_HENV;
    SQLHDBC dbc = SQL_NULL_HDBC;

    explicit connection_st(const std::string& path) {
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env);
        SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3_80), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc);
        std::string text = "Driver=SQLite3;StepAPI=1;Database=" + path;
        SQLCHAR out[1024];
        SQLSMALLINT out_length = 0;
        check(SQLDriverConnect(dbc, nullptr, (SQLCHAR*)text.c_str(), SQL_NTS, out, sizeof out, &out_length,
                               SQL_DRIVER_NOPROMPT),
              "connect", SQL_HANDLE_DBC, dbc);
    }
    ~connection_st() {
        SQLDisconnect(dbc);
        SQLFreeHandle(SQL_HANDLE_DBC, dbc);
        SQLFreeHandle(SQL_HANDLE_ENV, env);
    }
    SQLHSTMT select() {
        SQLHSTMT stmt = SQL_NULL_HSTMT;
        SQLAllocHandle(SQL_HANDLE_STMT, dbc, &stmt);
        return stmt;
    }
};

void run_select(SQLHSTMT stmt) {
    check(SQLExecDirect(stmt, (SQLCHAR*)"select id, name, amount, day from rows", SQL_NTS), "select",
          SQL_HANDLE_STMT, stmt);
}

double by_getdata(connection_st& db, long* rows, double* total) {
    SQLHSTMT stmt = db.select();
    double start = cpu_seconds();
    run_select(stmt);
    SQLWCHAR name[NAME_UNITS];
    for (;;) {
        SQLRETURN rc = SQLFetch(stmt);
        if (rc == SQL_NO_DATA) break;
        check(rc, "fetch", SQL_HANDLE_STMT, stmt);
        SQLBIGINT id;
        SQLDOUBLE amount;
        SQL_DATE_STRUCT day;
        SQLLEN indicator;
        SQLGetData(stmt, 1, SQL_C_SBIGINT, &id, 0, &indicator);
        SQLGetData(stmt, 2, SQL_C_WCHAR, name, sizeof name, &indicator);
        SQLGetData(stmt, 3, SQL_C_DOUBLE, &amount, 0, &indicator);
        SQLGetData(stmt, 4, SQL_C_TYPE_DATE, &day, 0, &indicator);
        *total += amount;
        ++*rows;
    }
    double seconds = cpu_seconds() - start;
    SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    return seconds;
}

// Row-wise binding: one struct per row, `size` rows per fetch.
struct bound_row_st {
    SQLBIGINT id;
    SQLLEN id_indicator;
    SQLWCHAR name[NAME_UNITS];
    SQLLEN name_indicator;
    SQLDOUBLE amount;
    SQLLEN amount_indicator;
    SQL_DATE_STRUCT day;
    SQLLEN day_indicator;
};

double by_binding(connection_st& db, SQLULEN size, long* rows, double* total) {
    SQLHSTMT stmt = db.select();
    std::vector<bound_row_st> block(size);
    SQLULEN fetched = 0;
    SQLSetStmtAttr(stmt, SQL_ATTR_ROW_BIND_TYPE, reinterpret_cast<SQLPOINTER>(sizeof(bound_row_st)), 0);
    check(SQLSetStmtAttr(stmt, SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(size), 0), "row array size",
          SQL_HANDLE_STMT, stmt);
    SQLSetStmtAttr(stmt, SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0);
    double start = cpu_seconds();
    run_select(stmt);
    bound_row_st& first = block[0];
    SQLBindCol(stmt, 1, SQL_C_SBIGINT, &first.id, 0, &first.id_indicator);
    SQLBindCol(stmt, 2, SQL_C_WCHAR, first.name, sizeof first.name, &first.name_indicator);
    SQLBindCol(stmt, 3, SQL_C_DOUBLE, &first.amount, 0, &first.amount_indicator);
    SQLBindCol(stmt, 4, SQL_C_TYPE_DATE, &first.day, 0, &first.day_indicator);
    for (;;) {
        SQLRETURN rc = SQLFetch(stmt);
        if (rc == SQL_NO_DATA) break;
        check(rc, "fetch", SQL_HANDLE_STMT, stmt);
        for (SQLULEN i = 0; i < fetched; ++i) *total += block[i].amount;
        *rows += static_cast<long>(fetched);
    }
    double seconds = cpu_seconds() - start;
    SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    return seconds;
}

}  // namespace

int main(int argc, char** argv) {
    long rows = argc > 1 ? std::atol(argv[1]) : 1000000;
    char folder_template[] = "/tmp/zobase_bench_sql_XXXXXX";
    if (!mkdtemp(folder_template)) return 1;
    std::string folder = folder_template;
    std::string path = folder + "/rows.db";
    make_rows(path, rows);

    double python_total = 0;
    double python = python_seconds(path, &python_total);
    std::printf("%ld rows of 4 columns from SQLite, read and dropped\n", rows);
    std::printf("  %-34s %7.3f s\n", "python sqlite3", python);
    bool agree = true;
    auto report = [&](const char* name, double seconds, long got, double total) {
        bool same = got == rows && total == python_total;
        agree &= same;
        std::printf("  %-34s %7.3f s  ratio to python %5.2f%s\n", name, seconds, seconds / python,
                    same ? "" : "  RESULT DIFFERS");
    };
    {
        connection_st db(path);
        long got = 0;
        double total = 0;
        double seconds = by_getdata(db, &got, &total);
        report("ODBC SQLGetData per value", seconds, got, total);
        got = 0, total = 0;
        seconds = by_binding(db, 1, &got, &total);
        report("ODBC SQLBindCol, 1 row per fetch", seconds, got, total);
        got = 0, total = 0;
        seconds = by_binding(db, ROWSET, &got, &total);
        std::string label = "ODBC SQLBindCol, " + std::to_string(ROWSET) + " rows per fetch";
        report(label.c_str(), seconds, got, total);
    }
    std::filesystem::remove_all(folder);
    return agree ? 0 : 1;
}
