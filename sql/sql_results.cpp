// Result sets as cursors: the field of each column by its SQL type, and the
// rows read into appended records: blocks of rows into bound buffers where
// every column has a bounded size and the driver takes the binding, else one
// row at a time with SQLGetData per value (long text, memo, blob).
#include <cstring>
#include <string>

#include "base/call_trace.h"
#include "base/error_numbers.h"
#include "sql/sql_execute.h"
#include "tables/table_object.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/money.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr uint64_t MAX_CHARACTER_WIDTH = 254;
constexpr uint64_t WIDE_NUMBER_WIDTH = 20;  // BIGINT and unsigned INTEGER as text
constexpr uint64_t TIME_WIDTH = 8;
constexpr SQLLEN MONEY_MAX_PRECISION = 20;
constexpr SQLLEN MONEY_MAX_SCALE = 5;
constexpr SQLLEN CURRENCY_MAX_SCALE = 4;
constexpr SQLLEN CURRENCY_MAX_PRECISION = 19;
constexpr SQLLEN DOUBLE_MAX_WIDTH = 21;
constexpr SQLSMALLINT NAME_BYTES = 256;
constexpr SQLLEN FIRST_CHUNK = 256;

SQLLEN numeric_attribute(SQLHSTMT hstmt, SQLUSMALLINT column, SQLUSMALLINT identifier) {
    SQLLEN value = 0;
    SQLColAttributeW(hstmt, column, identifier, nullptr, 0, nullptr, &value);
    return value;
}

void set_width(fielddef_st& field, int32_t type, SQLLEN width) {
    field.type = type;
    field.default_length = false;
    field.length = width > 0 ? static_cast<uint64_t>(width) : 1;
}

// A character field holds as many characters as its bytes allow in the
// cursor's charset (four per character in UTF-8): text that would not fit
// goes to a memo rather than being cut. A varchar field keeps its bytes.
void map_text(fielddef_st& field, SQLLEN length, int32_t short_type, size_t char_bytes) {
    SQLLEN bytes = short_type == FIELD_TYPE_CHARACTER ? length * static_cast<SQLLEN>(char_bytes) : length;
    if (bytes > static_cast<SQLLEN>(MAX_CHARACTER_WIDTH) || length <= 0) field.type = FIELD_TYPE_MEMO;
    else set_width(field, short_type, length);
}

// NUMERIC and DECIMAL: currency where it holds the value exactly, else double.
void map_decimal(fielddef_st& field, SQLHSTMT hstmt, SQLUSMALLINT column) {
    SQLLEN precision = numeric_attribute(hstmt, column, SQL_COLUMN_PRECISION);
    SQLLEN scale = numeric_attribute(hstmt, column, SQL_COLUMN_SCALE);
    bool money = numeric_attribute(hstmt, column, SQL_COLUMN_MONEY) != 0;
    if (money) {
        if (precision >= MONEY_MAX_PRECISION || scale >= MONEY_MAX_SCALE) throw RuntimeError(ERR_CURRENCY_OUT_OF_RANGE);
        field.type = FIELD_TYPE_CURRENCY;
        return;
    }
    if (scale > CURRENCY_MAX_SCALE || precision > CURRENCY_MAX_PRECISION) {
        field.type = FIELD_TYPE_DOUBLE;
        if (precision + 1 < DOUBLE_MAX_WIDTH) {
            field.default_length = false;
            field.length = static_cast<uint64_t>(precision + 1);
        }
        field.default_decimals = false;
        field.decimals = scale > 0 ? static_cast<uint64_t>(scale) : 0;
        return;
    }
    field.type = FIELD_TYPE_CURRENCY;
}

// The fields of ODBC 3's descriptor: the SQLite driver answers the older
// identifiers (2 for the type, 7 for nullable) wrongly, the PostgreSQL one
// gives no name for 1. A datetime type
// gives its kind by the concise type.
SQLLEN column_type(SQLHSTMT hstmt, SQLUSMALLINT column) {
    SQLLEN type = numeric_attribute(hstmt, column, SQL_DESC_TYPE);
    if (type != SQL_DATETIME) return type;
    SQLLEN concise = numeric_attribute(hstmt, column, SQL_DESC_CONCISE_TYPE);
    return concise == SQL_TYPE_DATE || concise == SQL_TYPE_TIME || concise == SQL_TYPE_TIMESTAMP ? concise : type;
}

fielddef_st map_column(SQLHSTMT hstmt, SQLUSMALLINT column, size_t char_bytes) {
    fielddef_st field = {};
    field.default_length = field.default_decimals = true;
    SQLWCHAR name[NAME_BYTES / sizeof(SQLWCHAR)] = {};
    SQLSMALLINT name_bytes = 0;
    SQLColAttributeW(hstmt, column, SQL_DESC_NAME, name, NAME_BYTES, &name_bytes, nullptr);
    size_t units = std::min<size_t>(static_cast<size_t>(name_bytes > 0 ? name_bytes : 0) / sizeof(SQLWCHAR),
                                    NAME_BYTES / sizeof(SQLWCHAR) - 1);
    std::string utf8 = sql_text_of_wide(name, units).u8str();
    std::snprintf(field.name, sizeof field.name, "%s", utf8.c_str());
    field.nullable = numeric_attribute(hstmt, column, SQL_DESC_NULLABLE) ? FIELD_NULLABLE : FIELD_NOT_NULLABLE;
    switch (SQLLEN type = column_type(hstmt, column)) {
    case SQL_CHAR: case SQL_WCHAR: case SQL_WVARCHAR:
        map_text(field, numeric_attribute(hstmt, column, SQL_COLUMN_DISPLAY_SIZE), FIELD_TYPE_CHARACTER, char_bytes);
        break;
    case SQL_VARCHAR:
        map_text(field, numeric_attribute(hstmt, column, SQL_COLUMN_DISPLAY_SIZE), FIELD_TYPE_VARCHAR, char_bytes);
        break;
    case SQL_NUMERIC: case SQL_DECIMAL: map_decimal(field, hstmt, column); break;
    case SQL_INTEGER:
        if (numeric_attribute(hstmt, column, SQL_COLUMN_UNSIGNED)) set_width(field, FIELD_TYPE_CHARACTER, WIDE_NUMBER_WIDTH);
        else field.type = FIELD_TYPE_INTEGER;
        break;
    case SQL_SMALLINT: case SQL_TINYINT: field.type = FIELD_TYPE_INTEGER; break;
    case SQL_FLOAT: case SQL_REAL: case SQL_DOUBLE: field.type = FIELD_TYPE_DOUBLE; break;
    case SQL_DATE: case SQL_TYPE_TIMESTAMP: case SQL_TIMESTAMP: field.type = FIELD_TYPE_DATETIME; break;
    case SQL_TYPE_DATE: field.type = FIELD_TYPE_DATE; break;
    case SQL_TYPE_TIME: case SQL_TIME: set_width(field, FIELD_TYPE_CHARACTER, TIME_WIDTH); break;
    case SQL_LONGVARCHAR: case SQL_WLONGVARCHAR: field.type = FIELD_TYPE_MEMO; break;
    case SQL_BINARY: {
        field.binary = true;
        SQLLEN length = numeric_attribute(hstmt, column, SQL_DESC_OCTET_LENGTH);
        if (length > static_cast<SQLLEN>(MAX_CHARACTER_WIDTH) || length <= 0) field.type = FIELD_TYPE_BLOB;
        else set_width(field, FIELD_TYPE_CHARACTER, length);
        break;
    }
    case SQL_VARBINARY: case SQL_LONGVARBINARY:
        field.type = FIELD_TYPE_BLOB;
        field.binary = true;
        break;
    case SQL_BIGINT: set_width(field, FIELD_TYPE_CHARACTER, WIDE_NUMBER_WIDTH); break;
    case SQL_BIT: field.type = FIELD_TYPE_LOGICAL; break;
    default:
        throw RuntimeError(ERR_NOT_AVAILABLE, String(("SQL type " + std::to_string(type)).c_str()));
    }
    return field;
}

}  // namespace

std::vector<fielddef_st> _sql_map_columns(VmStack* stack, SQLHSTMT hstmt) {
    ZO_TRACE();
    SQLSMALLINT count = 0;
    if (!sql_succeeded(SQLNumResultCols(hstmt, &count))) count = 0;
    // New cursors take the machine's charset.
    const Charset* charset = stack->services ? stack->services->default_charset() : nullptr;
    size_t char_bytes = charset ? charset->max_char() : 1;
    std::vector<fielddef_st> fields;
    for (SQLSMALLINT column = 1; column <= count; ++column)
        fields.push_back(map_column(hstmt, static_cast<SQLUSMALLINT>(column), char_bytes));
    return fields;
}

namespace {

// How one column is read and stored.
enum ColumnReader : int { READ_TEXT, READ_BINARY, READ_INTEGER, READ_MONEY, READ_DATE, READ_DATETIME, READ_DOUBLE,
                          READ_LOGICAL };

ColumnReader reader_of(const fielddef_st& field) {
    if (field.binary) return READ_BINARY;
    switch (field.type) {
    case FIELD_TYPE_INTEGER: return READ_INTEGER;
    case FIELD_TYPE_CURRENCY: return READ_MONEY;
    case FIELD_TYPE_DATE: return READ_DATE;
    case FIELD_TYPE_DATETIME: return READ_DATETIME;
    case FIELD_TYPE_DOUBLE: return READ_DOUBLE;
    case FIELD_TYPE_LOGICAL: return READ_LOGICAL;
    case FIELD_TYPE_BLOB: return READ_BINARY;
    default: return READ_TEXT;
    }
}

enum ReadResult : int { READ_VALUE, READ_NULL, READ_FAILED };

// The C type each reader asks the driver for; text crosses as UTF-16, money
// as decimal text so that no digit passes through a double.
SQLSMALLINT c_type_of(ColumnReader reader) {
    switch (reader) {
    case READ_TEXT: return SQL_C_WCHAR;
    case READ_BINARY: return SQL_C_BINARY;
    case READ_INTEGER: return SQL_C_SBIGINT;
    case READ_MONEY: return SQL_C_CHAR;
    case READ_DATE: return SQL_C_TYPE_DATE;
    case READ_DATETIME: return SQL_C_TYPE_TIMESTAMP;
    case READ_DOUBLE: return SQL_C_DOUBLE;
    case READ_LOGICAL: return SQL_C_BIT;
    }
    return SQL_C_BINARY;
}

constexpr SQLLEN MONEY_TEXT_BYTES = 64;

// ---- storing one value of the driver's C type into the appended record

// UTF-16 text into the table's charset. Text of plain ASCII, the usual
// case, is the same bytes in UTF-8 and needs no converter.
void store_text(Table_Object* table, uint64_t index, const SQLWCHAR* wide, size_t units) {
    const Charset* charset = table->charset ? table->charset : Charset::utf8;
    if (charset == Charset::utf8) {
        char narrow[FIRST_CHUNK];
        size_t i = 0;
        if (units <= sizeof narrow)
            for (; i < units && wide[i] < 0x80; ++i) narrow[i] = static_cast<char>(wide[i]);
        if (i == units) return table->set_field_string(index, String::fromBytes(narrow, units, charset));
    }
    String text = String::fromBytes(reinterpret_cast<const char*>(wide), units * sizeof(SQLWCHAR), Charset::utf16le);
    text.convert(charset, 0, CSTRAN_SUBSTITUTE);
    table->set_field_string(index, text);
}

void store_money(Table_Object* table, uint64_t index, const char* text) {
    money_type_st value;
    if (int error = string_to_money(text, std::strlen(text), nullptr, &value, U'.', U','); error != 0)
        throw RuntimeError(error);
    table->set_field_money(index, value);
}

void store_date(Table_Object* table, uint64_t index, const SQL_DATE_STRUCT& value) {
    date_st date;
    if (serial_julian_date(value.year, value.month, value.day, &date) != 0) throw RuntimeError(ERR_DATE_INVALID);
    table->set_field_date(index, date);
}

void store_datetime(Table_Object* table, uint64_t index, const SQL_TIMESTAMP_STRUCT& value) {
    datetime_st datetime;
    if (serial_julian_date(value.year, value.month, value.day, value.hour, value.minute, value.second, &datetime))
        throw RuntimeError(ERR_DATE_INVALID);
    datetime.msecs += value.fraction / 1000000u;
    table->set_field_datetime(index, datetime);
}

// A value of a fixed-size type, or text of `size` bytes.
void store_value(Table_Object* table, uint64_t index, ColumnReader reader, const void* value, size_t size) {
    switch (reader) {
    case READ_TEXT:
        return store_text(table, index, static_cast<const SQLWCHAR*>(value), size / sizeof(SQLWCHAR));
    case READ_BINARY:
        return table->set_field_string(index, String::fromBytes(static_cast<const char*>(value), size, Charset::binary));
    case READ_INTEGER: return table->set_field_integer(index, *static_cast<const SQLBIGINT*>(value));
    case READ_MONEY: return store_money(table, index, static_cast<const char*>(value));
    case READ_DATE: return store_date(table, index, *static_cast<const SQL_DATE_STRUCT*>(value));
    case READ_DATETIME: return store_datetime(table, index, *static_cast<const SQL_TIMESTAMP_STRUCT*>(value));
    case READ_DOUBLE:
        return table->set_field_numeric(index, numeric_type_st{*static_cast<const SQLDOUBLE*>(value), DECIMALS_UNKNOWN});
    case READ_LOGICAL: return table->set_field_bool(index, *static_cast<const SQLCHAR*>(value) != 0);
    }
}

void store_null(Table_Object* table, uint64_t index, const fielddef_st& field) {
    if (field.nullable == FIELD_NULLABLE) table->set_field_null(index);
}

// ---- one row at a time, one SQLGetData per value: any column, any driver

// Long data: a first piece of 256 bytes, then the rest in pieces of what the
// driver says is left (doubling when it can't say). Text pieces end with a
// terminator that the next piece overwrites.
ReadResult _sql_read_column_chunked(SQLHSTMT hstmt, SQLUSMALLINT column, SQLSMALLINT c_type, std::string* out) {
    size_t terminator = c_type == SQL_C_WCHAR ? sizeof(SQLWCHAR) : c_type == SQL_C_CHAR ? 1 : 0;
    out->resize(FIRST_CHUNK);
    size_t have = 0;
    for (;;) {
        SQLLEN indicator = 0;
        SQLLEN room = static_cast<SQLLEN>(out->size() - have);
        SQLRETURN rc = SQLGetData(hstmt, column, c_type, out->data() + have, room, &indicator);
        if (rc == SQL_NO_DATA) break;
        if (!sql_succeeded(rc)) return READ_FAILED;
        if (indicator == SQL_NULL_DATA) return READ_NULL;
        bool truncated = indicator == SQL_NO_TOTAL || indicator > room - static_cast<SQLLEN>(terminator);
        if (rc == SQL_SUCCESS || !truncated) {
            have += static_cast<size_t>(indicator);
            break;
        }
        have += static_cast<size_t>(room) - terminator;
        size_t rest = indicator == SQL_NO_TOTAL ? out->size() : static_cast<size_t>(indicator) - (static_cast<size_t>(room) - terminator);
        out->resize(have + rest + terminator);
    }
    out->resize(have);
    return READ_VALUE;
}

// One column of the current row into the appended record.
ReadResult read_column(SQLHSTMT hstmt, SQLUSMALLINT column, ColumnReader reader, Table_Object* table,
                       uint64_t index, std::string* buffer) {
    if (reader == READ_TEXT || reader == READ_BINARY) {
        ReadResult result = _sql_read_column_chunked(hstmt, column, c_type_of(reader), buffer);
        if (result == READ_VALUE) store_value(table, index, reader, buffer->data(), buffer->size());
        return result;
    }
    union {
        SQLBIGINT integer;
        SQLDOUBLE number;
        SQLCHAR bit;
        SQL_DATE_STRUCT date;
        SQL_TIMESTAMP_STRUCT timestamp;
        char text[MONEY_TEXT_BYTES];
    } value = {};
    SQLLEN indicator = 0;
    SQLLEN room = reader == READ_MONEY ? MONEY_TEXT_BYTES : 0;
    if (!sql_succeeded(SQLGetData(hstmt, column, c_type_of(reader), &value, room, &indicator))) return READ_FAILED;
    if (indicator == SQL_NULL_DATA) return READ_NULL;
    store_value(table, index, reader, &value, 0);
    return READ_VALUE;
}

// Fetches until the result set ends. `take` stores what one fetch brought
// and answers how many rows that was, or -1 after a failure it has logged.
template <class Take>
int64_t fetch_all(VmStack* stack, int64_t id, SQLHSTMT hstmt, Take take) {
    int64_t rows = 0;
    for (;;) {
        SQLRETURN rc = SQLFetch(hstmt);
        if (rc == SQL_NO_DATA) return rows;
        if (!sql_succeeded(rc)) {
            _sql_log_diag_rec(stack, id, SQL_HANDLE_STMT, hstmt);
            return -1;
        }
        int64_t taken = take();
        if (taken < 0) return -1;
        rows += taken;
    }
}

int64_t fetch_by_rows(VmStack* stack, int64_t id, SQLHSTMT hstmt, const std::vector<fielddef_st>& fields,
                      const std::vector<ColumnReader>& readers, Table_Object* table) {
    std::string buffer;
    return fetch_all(stack, id, hstmt, [&]() -> int64_t {
        table->begin_append();
        for (size_t i = 0; i < readers.size(); ++i) {
            ReadResult result = read_column(hstmt, static_cast<SQLUSMALLINT>(i + 1), readers[i], table, i, &buffer);
            if (result == READ_NULL) store_null(table, i, fields[i]);
            if (result == READ_FAILED) {
                table->revert();
                _sql_log_diag_rec(stack, id, SQL_HANDLE_STMT, hstmt);
                return -1;
            }
        }
        table->commit(stack);
        return 1;
    });
}

// ---- blocks of rows into bound buffers: one call to the driver per block

constexpr SQLULEN BLOCK_ROWS = 64;

// The values of one column for a whole block, and their length indicators.
struct bound_column_st {
    ColumnReader reader;
    SQLLEN size;  // bytes of one value
    std::vector<char> values;
    std::vector<SQLLEN> indicators;
};

// The bound buffers of a statement, released with it: the binding and the
// block size stay with the statement handle, which runs later statements too.
class BlockBinding {
public:
    explicit BlockBinding(SQLHSTMT hstmt) : hstmt_(hstmt) {}
    ~BlockBinding() { release(); }
    BlockBinding(const BlockBinding&) = delete;
    BlockBinding& operator=(const BlockBinding&) = delete;

    // Binds every column; false, with nothing bound, when a column holds
    // data of no fixed bound (memo, blob, binary) or the driver refuses.
    bool bind(const std::vector<ColumnReader>& readers, Table_Object* table);
    SQLULEN fetched = 0;
    std::vector<SQLUSMALLINT> status;
    std::vector<bound_column_st> columns;

private:
    bool attach();
    void release();
    SQLHSTMT hstmt_;
    bool bound_ = false;
};

// Text is bound with room for twice as many UTF-16 units as the field has
// bytes: whatever the driver cuts off would not have fitted the field.
SQLLEN bound_size(ColumnReader reader, const table_field_info_st& field) {
    switch (reader) {
    case READ_TEXT:
        if (field.type != FIELD_TYPE_CHARACTER && field.type != FIELD_TYPE_VARCHAR) return 0;
        return static_cast<SQLLEN>((2 * field.width + 1) * sizeof(SQLWCHAR));
    case READ_BINARY: return 0;
    case READ_INTEGER: return sizeof(SQLBIGINT);
    case READ_MONEY: return MONEY_TEXT_BYTES;
    case READ_DATE: return sizeof(SQL_DATE_STRUCT);
    case READ_DATETIME: return sizeof(SQL_TIMESTAMP_STRUCT);
    case READ_DOUBLE: return sizeof(SQLDOUBLE);
    case READ_LOGICAL: return sizeof(SQLCHAR);
    }
    return 0;
}

bool BlockBinding::bind(const std::vector<ColumnReader>& readers, Table_Object* table) {
    for (size_t i = 0; i < readers.size(); ++i) {
        SQLLEN size = bound_size(readers[i], table->get_field_info(i));
        if (size == 0) return false;
        columns.push_back({readers[i], size, std::vector<char>(static_cast<size_t>(size) * BLOCK_ROWS),
                           std::vector<SQLLEN>(BLOCK_ROWS)});
    }
    status.resize(BLOCK_ROWS);
    bound_ = true;
    if (attach()) return true;
    release();
    return false;
}

bool BlockBinding::attach() {
    if (!sql_succeeded(SQLSetStmtAttr(hstmt_, SQL_ATTR_ROW_BIND_TYPE, reinterpret_cast<SQLPOINTER>(SQL_BIND_BY_COLUMN), 0)) ||
        !sql_succeeded(SQLSetStmtAttr(hstmt_, SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(BLOCK_ROWS), 0)) ||
        !sql_succeeded(SQLSetStmtAttr(hstmt_, SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0)) ||
        !sql_succeeded(SQLSetStmtAttr(hstmt_, SQL_ATTR_ROW_STATUS_PTR, status.data(), 0)))
        return false;
    for (size_t i = 0; i < columns.size(); ++i) {
        bound_column_st& column = columns[i];
        if (!sql_succeeded(SQLBindCol(hstmt_, static_cast<SQLUSMALLINT>(i + 1), c_type_of(column.reader),
                                      column.values.data(), column.size, column.indicators.data())))
            return false;
    }
    return true;
}

// The statement reads one row per fetch again, into nothing bound.
void BlockBinding::release() {
    if (!bound_) return;
    bound_ = false;
    SQLFreeStmt(hstmt_, SQL_UNBIND);
    SQLSetStmtAttr(hstmt_, SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(1), 0);
    SQLSetStmtAttr(hstmt_, SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
    SQLSetStmtAttr(hstmt_, SQL_ATTR_ROW_STATUS_PTR, nullptr, 0);
}

// The bytes of a text value: what the driver stored, without the
// terminator, when it had to cut.
size_t bound_text_bytes(const bound_column_st& column, SQLLEN indicator) {
    SQLLEN room = column.size - static_cast<SQLLEN>(sizeof(SQLWCHAR));
    return static_cast<size_t>(indicator == SQL_NO_TOTAL || indicator > room ? room : indicator);
}

void store_bound_row(Table_Object* table, const BlockBinding& binding, SQLULEN row,
                     const std::vector<fielddef_st>& fields) {
    for (size_t i = 0; i < binding.columns.size(); ++i) {
        const bound_column_st& column = binding.columns[i];
        SQLLEN indicator = column.indicators[row];
        const char* value = column.values.data() + row * static_cast<size_t>(column.size);
        if (indicator == SQL_NULL_DATA) store_null(table, i, fields[i]);
        else store_value(table, i, column.reader, value, column.reader == READ_TEXT ? bound_text_bytes(column, indicator) : 0);
    }
}

int64_t fetch_by_blocks(VmStack* stack, int64_t id, SQLHSTMT hstmt, const std::vector<fielddef_st>& fields,
                        const BlockBinding& binding, Table_Object* table) {
    return fetch_all(stack, id, hstmt, [&]() -> int64_t {
        int64_t rows = 0;
        for (SQLULEN row = 0; row < binding.fetched; ++row) {
            SQLUSMALLINT status = binding.status[row];
            if (status == SQL_ROW_NOROW) continue;
            if (status == SQL_ROW_ERROR) {
                _sql_log_diag_rec(stack, id, SQL_HANDLE_STMT, hstmt);
                return -1;
            }
            table->begin_append();
            store_bound_row(table, binding, row, fields);
            table->commit(stack);
            ++rows;
        }
        return rows;
    });
}

}  // namespace

int64_t _sql_fetch_records(VmStack* stack, int64_t id, SQLHSTMT hstmt, const std::vector<fielddef_st>& fields,
                           Table_Object* table) {
    ZO_TRACE();
    std::vector<ColumnReader> readers;
    for (const fielddef_st& field : fields) readers.push_back(reader_of(field));
    BlockBinding binding(hstmt);
    if (binding.bind(readers, table)) return fetch_by_blocks(stack, id, hstmt, fields, binding, table);
    return fetch_by_rows(stack, id, hstmt, fields, readers, table);
}

}  // namespace zobase
