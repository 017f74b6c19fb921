// The error table and the conversions of error numbers to text.
#include <cstring>
#include <string>

#include "values/error.h"

namespace zobase {

namespace {

// Historical order, not numeric; the row of code 0 ends the table.
const error_st error_table[] = {
    {1, "File does not exist.", "File '%s' does not exist."},
    {4, "End of file encountered.", nullptr},
    {10, "Syntax error.", nullptr},
    {11, "Function argument value, type or count is invalid.", nullptr},
    {12, "Variable is not found.", "Variable '%s' is not found."},
    {13, "Alias is not found.", "Alias '%s' is not found."},
    {38, "Beginning of file encountered.", nullptr},
    {39, "Numeric overflow. Data was lost.", nullptr},
    {52, "No table is open in the current work area.", nullptr},
    {61, "SQRT() argument cannot be negative.", nullptr},
    {78, "** or ^ domain error.", nullptr},
    {96, "Nesting Error.", nullptr},
    {103, "Allowed DO nesting or expression evaluation level exceeded.", nullptr},
    {107, "Operator / operand type mismatch.", nullptr},
    {202, "Invalid path or file name.", "Invalid path or file name: %s"},
    {232, "Not an array.", "'%s' is not an array."},
    {1098, "User defined Error.", "%s"},
    {1229, "Too few arguments.", nullptr},
    {1234, "Subscript is outside defined range.", nullptr},
    {1466, "Connection handle is invalid", nullptr},
    {1472, "SQL statement parameter is required for non-prepared SQLEXEC() calls.", nullptr},
    {1526, "Connectivity error.", "Connectivity error. %s"},
    {1533, "This property is read-only.", nullptr},
    {1705, "File access denied.", "File access denied %s."},
    {1733, "Class definition not found.", "Class definition %s not found"},
    {1734, "Property not found.", "Property %s not found"},
    {1743, "Property is read-only.", "Property '%s' is read-only."},
    {1760, "Property is a class-member.", "Property '%s' is a class-member."},
    {1540, "Session number is invalid.", nullptr},
    {1924, "Not an object.", "%o is not an object."},
    {1927, "Statement is not valid in a class definition.", nullptr},
    {1960, "Illegal redefinition of variable.", "Illegal redefinition of variable '%s'."},
    {2027, "Declare DLL call caused an exception.", nullptr},
    {2034, "Date / datetime evaluated to an invalid value.", nullptr},
    {2044, "Textmerge is recursive.", nullptr},
    {2059, "Unhandled Structured Exception.", nullptr},
    {2061, "Index or expression does not match an existing member of the collection.", nullptr},
    {9001, "Debugger not available. Connect the debugger and try again(r).", nullptr},
    {1001, "Feature is not available.", "Feature '%s' is not available."},
    {9003, "Charset not supported.", "Charset '%s' not supported."},
    {9004, "Temporary R-Value cannot be passed by reference.", nullptr},
    {9005, "Class is abstract.", "Class '%s' is abstract."},
    {9006, "Native error in table engine, please close the workearea.", "Native error in table engine: '%s'"},
    {9007, "Syntax error in pattern reported by matching engine.", nullptr},
    {9008, "Unable to create pointer from property.", nullptr},
    {1104, "Error reading file.", "Error reading file '%s'."},
    {1105, "Error writing to file.", "Error writing to file '%s'."},
    {1988, "Currency value is out of range.", nullptr},
    {94, "Must specify additional parameters.", nullptr},
    {1102, "Cannot create file.", "Cannot create file '%s'."},
    {1101, "Cannot create temporary file.", "Cannot create temporary file in '%s'."},
    {9009, "Cannot convert byte sequence to valid characters.", "Cannot convert byte sequence to valid '%s' characters."},
    {1156, "Duplicate field names.", nullptr},
    {1683, "Index tag is not found.", "Index tag '%s' is not found."},
    {111, "Cannot update the cursor, since it is read-only.", "Cannot update the cursor %s, since it is read-only."},
    {3, "File is in use.", nullptr},
    {5, "Record is out of range.", nullptr},
    {9010, "Stack overflow.", nullptr},
    {9011, "Character set translation failed.", "Cannot convert string to charset '%s'."},
    {1713, "Field width or number of decimal places is invalid.", nullptr},
    {26, "Table has no index order set.", nullptr},
    {1581, "Field does not accept null values.", "Field %s does not accept null values."},
    {1731, "Field width or number of decimal places is invalid.", nullptr},
    {1590, "BEGIN TRANSACTION command failed.", "BEGIN TRANSACTION command failed. %s"},
    {1591, "END TRANSACTION command cannot be issued without a corresponding BEGIN TRANSACTION command.", nullptr},
    {1592, "ROLLBACK command cannot be issued without a corresponding BEGIN TRANSACTION command.", nullptr},
    {1211, "An IF | ELSE | ENDIF statement is missing.", nullptr},
    {1206, "Recursive macro definition.", nullptr},
    {1940, "Expression is not valid outside of WITH/ENDWITH.", nullptr},
    {2062, "The specified Key already exists.", nullptr},
    {1429, "OLE IDispatch exception.", "%s"},
    {231, "Invalid argument used with the SET function.", nullptr},
    {9013, "Parser stack exhausted.", nullptr},
    {9012, "Syntax is ambiguous.", nullptr},
    {9014, "Cannot pass unsafe pointer in this context.", nullptr},
    {230, "Array dimensions are invalid.", nullptr},
    {9, "Data type mismatch.", nullptr},
    {9015, "Integer value is out of range.", nullptr},
    {7, "File already exists.", "File '%s' already exists."},
    {1585, "Update conflict.", "Update conflict in cursor '%s'."},
    {1887, "Illegal recursion in rule evaluation.", nullptr},
    {2201, "Cannot determine data type of the expression.", nullptr},
    {112, "Invalid key length.", nullptr},
    {1884, "Uniqueness of index is violated.", "Uniqueness of index %s is violated."},
    {17, "Table number is invalid.", nullptr},
    {24, "Alias name is already in use.", nullptr},
    {9016, "File BOM is missing or invalid.", nullptr},
    {110, "File must be opened exclusively.", nullptr},
    {1718, "File is read-only.", "File %s is read-only."},
    {37, "You must use a logical expression with FILTER.", nullptr},
    {1871, "Cannot DROP all existing columns.", nullptr},
    {1531, "The table changes cannot be performed.", "The table changes cannot be performed as the index or filter expression for index %s would be invalid."},
    {2088, "Field is read-only", "Field %s is read-only"},
    {1127, "You must use a logical expression with a FOR or WHILE clause.", nullptr},
    {34, "Operation is invalid for a Memo, Blob, General or Picture field.", nullptr},
    {1707, "Structural .CDX file is not found.", nullptr},
    {1712, "Field name is a duplicate or invalid.", nullptr},
    {41, "Memo file is missing or is invalid.", "Memo file %s is missing or is invalid."},
    {1886, "Index does not accept NULL.", nullptr},
    {15, "Is not a table.", "%s is not a table."},
    {2091, "Table has become corrupted. The table will need to be repaired before using again.", "Table '%s' has become corrupted. The table will need to be repaired before using again."},
    {1888, "Tag name is too long.", "Tag name '%s' is too long."},
    {1899, "Tag name contains invalid characters.", "Tag name '%s' contains invalid characters."},
    {9902, "Generic table error.", nullptr},
    {9901, "Generic filesystem error.", nullptr},
    {2156, "Invalid index expression for a Binary index.", nullptr},
    {2066, "Index file is corrupted. Please rebuild it.", "Index file '%s' is corrupted. Please rebuild it."},
    {0, nullptr, nullptr},
};

constexpr int ERROR_ROW_COUNT = sizeof(error_table) / sizeof(error_table[0]) - 1;
static_assert(ERROR_ROW_COUNT == 107);

// Formatting happens in a buffer of this size; longer results are cut.
constexpr size_t FORMAT_BUFFER_SIZE = 4096;

// Fills the format's %s with the detail. Only %s is a placeholder: the one
// format with another directive is never given a detail.
std::string fill_format(const char* format, const std::string& detail) {
    std::string out;
    const char* hole = std::strstr(format, "%s");
    if (!hole) {
        out = format;
    } else {
        out.append(format, hole);
        out += detail;
        out += hole + 2;
    }
    if (out.size() > FORMAT_BUFFER_SIZE - 1) out.resize(FORMAT_BUFFER_SIZE - 1);
    return out;
}

void copy_cut(const std::string& text, char* buffer, size_t size) {
    // A zero size wraps to the largest count, as callers of the C API expect.
    size_t limit = size - 1;
    size_t n = text.size() < limit ? text.size() : limit;
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
}

}  // namespace

Exception::~Exception() = default;
const char* Exception::name() const noexcept { return "zobase::Exception"; }
const char* RuntimeError::name() const noexcept { return "zobase::RuntimeError"; }
const char* assert_failed_exception::name() const noexcept {
    return "zobase::assert_failed_exception";
}

const error_st* find_error_row(int code) noexcept {
    for (const error_st* row = error_table; row->code != 0; ++row)
        if (row->code == code) return row;
    return nullptr;
}

String format_error_message(int code, const String& detail) {
    const error_st* row = find_error_row(code);
    if (!row) return String("");
    if (!row->format) return String(row->message);
    return String(fill_format(row->format, detail.u8str()).c_str());
}

RuntimeError::RuntimeError() : message(""), parameter("") {}

RuntimeError::RuntimeError(int n) : number(n), parameter("") {
    const error_st* row = find_error_row(n);
    message = String(row ? row->message : "");
}

RuntimeError::RuntimeError(int n, const String& detail)
    : number(n), message(format_error_message(n, detail)), parameter(detail) {}

void raise_not_available(const char* feature) {
    throw RuntimeError(1001, String(feature));
}

int TranslateError(int code, char* buffer, size_t size) {
    const error_st* row = find_error_row(code);
    copy_cut(row ? row->message : "", buffer, size);
    return 0;
}

int TranslateErrorEx(int code, const String& detail, char* buffer, size_t size) {
    const error_st* row = find_error_row(code);
    std::string text;
    if (row) text = row->format ? fill_format(row->format, detail.u8str()) : row->message;
    copy_cut(text, buffer, size);
    return 0;
}

int get_list_of_errors(const error_st** rows) {
    *rows = error_table;
    return ERROR_ROW_COUNT;
}

}  // namespace zobase
