#pragma once
// Running SQL on a statement: the `?expr` rewrite and the binding of host
// values, execution, and the loop that makes each result set a cursor in the
// current data session.
#include <cstdint>
#include <vector>

#include "sql/sql_singleton.h"
#include "tables/table_definition.h"

namespace zobase {

class Table_Object;

// One result set as the info array of sqlexec tells it: the cursor's name
// (empty for a result without columns) and its row count.
struct sql_pass_st {
    String cursor;
    int64_t rows;
};

// sqlprepare: 1, or -1 with the diagnostics logged.
int64_t sql_prepare(VmStack* stack, SqlStatement& statement, const String& sql);
// sqlexec: a null `sql` runs the prepared statement (1472 when there is
// none). Returns the number of cursors made (at least 1), or -1.
int64_t sql_execute(VmStack* stack, SqlStatement& statement, const String* sql, const String* cursor,
                    std::vector<sql_pass_st>* passes);
// sqlmoreresults: reads the next result set; 2 when there is none left.
int64_t sql_more_results(VmStack* stack, SqlStatement& statement, const String* cursor,
                         std::vector<sql_pass_st>* passes);

// Replaces each `?expr` outside quotes by a bare `?` and appends the
// expression's compiled code to `parameters`; the expression is one operand
// of the language (a name, a call, a literal, a parenthesized expression).
String _sql_prepare_bind(VmStack* stack, const String& sql, std::vector<prepared_operand_st>* parameters);
// Evaluates the parameters into `values` and binds them; false after an
// ODBC failure (logged).
bool _sql_bind_parameters(VmStack* stack, int64_t id, SQLHSTMT hstmt, const std::vector<prepared_operand_st>& parameters,
                          std::vector<bound_value_st>* values);
// The cursor fields of the current result set; none for a statement
// without columns. 1001 for an SQL type without a field, 1988 for a money
// column too wide for currency.
std::vector<fielddef_st> _sql_map_columns(VmStack* stack, SQLHSTMT hstmt);
// Appends every row of the current result set; the number of rows, or -1.
int64_t _sql_fetch_records(VmStack* stack, int64_t id, SQLHSTMT hstmt, const std::vector<fielddef_st>& fields,
                           Table_Object* table);

}  // namespace zobase
