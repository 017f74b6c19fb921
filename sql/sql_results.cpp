// Result sets as cursors: the field of each column by its SQL type, and the
// rows read with SQLGetData into appended records.
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

// A value of fixed size.
ReadResult get_fixed(SQLHSTMT hstmt, SQLUSMALLINT column, SQLSMALLINT c_type, void* value) {
    SQLLEN indicator = 0;
    if (!sql_succeeded(SQLGetData(hstmt, column, c_type, value, 0, &indicator))) return READ_FAILED;
    return indicator == SQL_NULL_DATA ? READ_NULL : READ_VALUE;
}

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

ReadResult read_text(SQLHSTMT hstmt, SQLUSMALLINT column, const Charset* charset, std::string* buffer, String* out) {
    ReadResult result = _sql_read_column_chunked(hstmt, column, SQL_C_WCHAR, buffer);
    if (result != READ_VALUE) return result;
    *out = String::fromBytes(buffer->data(), buffer->size(), Charset::utf16le);
    out->convert(charset ? charset : Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    return READ_VALUE;
}

ReadResult read_money(SQLHSTMT hstmt, SQLUSMALLINT column, money_type_st* out) {
    char text[64];
    SQLLEN indicator = 0;
    if (!sql_succeeded(SQLGetData(hstmt, column, SQL_C_CHAR, text, sizeof text, &indicator))) return READ_FAILED;
    if (indicator == SQL_NULL_DATA) return READ_NULL;
    size_t size = std::strlen(text);
    if (int error = string_to_money(text, size, nullptr, out, U'.', U','); error != 0) throw RuntimeError(error);
    return READ_VALUE;
}

// One column of the current row into the appended record.
ReadResult read_column(SQLHSTMT hstmt, SQLUSMALLINT column, ColumnReader reader, Table_Object* table,
                       uint64_t index, std::string* buffer) {
    ReadResult result;
    switch (reader) {
    case READ_TEXT: {
        String text;
        result = read_text(hstmt, column, table->charset, buffer, &text);
        if (result == READ_VALUE) table->set_field_string(index, text);
        return result;
    }
    case READ_BINARY:
        result = _sql_read_column_chunked(hstmt, column, SQL_C_BINARY, buffer);
        if (result == READ_VALUE) table->set_field_string(index, String::fromBytes(buffer->data(), buffer->size(), Charset::binary));
        return result;
    case READ_INTEGER: {
        SQLBIGINT value = 0;
        result = get_fixed(hstmt, column, SQL_C_SBIGINT, &value);
        if (result == READ_VALUE) table->set_field_integer(index, value);
        return result;
    }
    case READ_MONEY: {
        money_type_st value;
        result = read_money(hstmt, column, &value);
        if (result == READ_VALUE) table->set_field_money(index, value);
        return result;
    }
    case READ_DATE: {
        SQL_DATE_STRUCT value = {};
        result = get_fixed(hstmt, column, SQL_C_TYPE_DATE, &value);
        if (result != READ_VALUE) return result;
        date_st date;
        if (serial_julian_date(value.year, value.month, value.day, &date) != 0) throw RuntimeError(ERR_DATE_INVALID);
        table->set_field_date(index, date);
        return result;
    }
    case READ_DATETIME: {
        SQL_TIMESTAMP_STRUCT value = {};
        result = get_fixed(hstmt, column, SQL_C_TYPE_TIMESTAMP, &value);
        if (result != READ_VALUE) return result;
        datetime_st datetime;
        if (serial_julian_date(value.year, value.month, value.day, value.hour, value.minute, value.second, &datetime))
            throw RuntimeError(ERR_DATE_INVALID);
        datetime.msecs += value.fraction / 1000000u;
        table->set_field_datetime(index, datetime);
        return result;
    }
    case READ_DOUBLE: {
        SQLDOUBLE value = 0;
        result = get_fixed(hstmt, column, SQL_C_DOUBLE, &value);
        if (result == READ_VALUE) table->set_field_numeric(index, numeric_type_st{value, DECIMALS_UNKNOWN});
        return result;
    }
    case READ_LOGICAL: {
        SQLCHAR value = 0;
        result = get_fixed(hstmt, column, SQL_C_BIT, &value);
        if (result == READ_VALUE) table->set_field_bool(index, value != 0);
        return result;
    }
    }
    return READ_FAILED;
}

}  // namespace

int64_t _sql_fetch_records(VmStack* stack, int64_t id, SQLHSTMT hstmt, const std::vector<fielddef_st>& fields,
                           Table_Object* table) {
    ZO_TRACE();
    std::vector<ColumnReader> readers;
    for (const fielddef_st& field : fields) readers.push_back(reader_of(field));
    std::string buffer;
    int64_t rows = 0;
    for (;;) {
        SQLRETURN rc = SQLFetch(hstmt);
        if (rc == SQL_NO_DATA) break;
        if (!sql_succeeded(rc)) {
            _sql_log_diag_rec(stack, id, SQL_HANDLE_STMT, hstmt);
            return -1;
        }
        table->begin_append();
        for (size_t i = 0; i < readers.size(); ++i) {
            ReadResult result = read_column(hstmt, static_cast<SQLUSMALLINT>(i + 1), readers[i], table, i, &buffer);
            if (result == READ_NULL && fields[i].nullable == FIELD_NULLABLE) table->set_field_null(i);
            if (result == READ_FAILED) {
                table->revert();
                _sql_log_diag_rec(stack, id, SQL_HANDLE_STMT, hstmt);
                return -1;
            }
        }
        table->commit(stack);
        ++rows;
    }
    return rows;
}

}  // namespace zobase
