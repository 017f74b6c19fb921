#pragma once
// How the engine's exceptions become numbered errors: each operation of a
// work area has its own list, and the same exception may become different
// numbers in different operations. An exception that an operation's list
// does not name goes on unchanged to the operation around it; when no
// operation is around it any more, it becomes error 9006 naming it, so that
// the language never meets an engine exception.
#include <utility>

#include "values/error.h"

namespace zobase {

enum TableOperation : int {
    TABLE_USE,
    TABLE_CREATE,
    TABLE_FIELD_READ,
    TABLE_GET_CHARS,   // a value as text into a caller's buffer
    TABLE_SET_NULL,
    TABLE_SET_VALUE,   // logical, date, datetime
    TABLE_SET_NUMBER,  // integer, numeric, money
    TABLE_SET_STRING,
    TABLE_GO,
    TABLE_UPDATE,
    TABLE_REMOVE,      // dropping a table's files
    TABLE_OTHER,       // moves, locks, closing: nothing of their own to translate
    // ---- indexes
    TABLE_CREATE_INDEX,
    TABLE_SELECT_INDEX,  // selecting and dropping tags
    TABLE_CREATE_KEY,    // a search key from a value
    TABLE_SEEK,
    TABLE_MOVE,          // moves in index order
};

// Raises the number that the operation's list gives the exception being
// handled, with the detail where the message takes one; returns when the
// list does not name it.
void translate_table_exception(TableOperation operation, const String& detail);

// Counts the operations running on this thread, so that the outermost one
// knows it is the last to see an exception.
class TableOperationDepth {
public:
    TableOperationDepth() noexcept { ++depth_; }
    ~TableOperationDepth() { --depth_; }
    TableOperationDepth(const TableOperationDepth&) = delete;
    TableOperationDepth& operator=(const TableOperationDepth&) = delete;
    static bool outermost() noexcept { return depth_ == 1; }

private:
    // The library is loaded with the program, so the static TLS model holds;
    // the dynamic one costs a call on every field read.
    static thread_local int depth_ __attribute__((tls_model("initial-exec")));
};

// The exception being handled, unnamed by every list: 9006 at the outermost
// operation, else on as it is.
[[noreturn]] void pass_table_exception();

// Runs one operation of a work area. `detail` is called only when an error
// needs it: the field, table or file in question.
template <typename Detail, typename Body>
decltype(auto) table_operation(TableOperation operation, Detail&& detail, Body&& body) {
    TableOperationDepth depth;
    try {
        return std::forward<Body>(body)();
    } catch (const dbf_exception&) {
        translate_table_exception(operation, detail());
        pass_table_exception();
    } catch (const file_error&) {
        translate_table_exception(operation, detail());
        pass_table_exception();
    } catch (const overflow_error&) {
        translate_table_exception(operation, detail());
        pass_table_exception();
    }
}

// For operations without a detail.
inline String no_detail() { return String(); }

}  // namespace zobase
