// The translation lists of the work-area operations, row by row, and what
// becomes of an exception that no list names.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tables/table_errors.h"

namespace zobase {
namespace {

// The number an operation gives the exception that `raise` throws; 0 when
// it passes on untranslated.
int number_of(TableOperation operation, const std::function<void()>& raise) {
    try {
        table_operation(operation, [] { return String("detail"); }, raise);
    } catch (const RuntimeError& error) {
        return error.number;
    } catch (const Exception&) {
        return 0;
    }
    return -1;
}

template <typename E>
std::function<void()> raising() {
    return [] { throw E(); };
}

struct row_st {
    TableOperation operation;
    std::function<void()> raise;
    int number;
    const char* what;
};

TEST(TableErrors, EveryRowOfTheLists) {
    const row_st rows[] = {
        {TABLE_USE, raising<file_sharing_violation>(), 1705, "use: sharing"},
        {TABLE_USE, raising<dbf_unsupported_version>(), 15, "use: version"},
        {TABLE_USE, raising<dbf_error_codepage_not_supported>(), 1001, "use: codepage"},
        {TABLE_USE, raising<dbf_invalid_reccount_detected>(), 2091, "use: record count"},
        {TABLE_USE, raising<dbf_error_file_corruption>(), 2091, "use: corruption"},
        {TABLE_USE, raising<dbf_error_field_name_dup_or_inv>(), 1712, "use: field name"},
        {TABLE_USE, raising<dbf_fpt_file_missing>(), 41, "use: memo file"},
        {TABLE_USE, raising<file_read_failed>(), 9901, "use: other file error"},
        {TABLE_USE, raising<dbf_error_buffer_underrun>(), 9902, "use: other table error"},
        {TABLE_CREATE, raising<dbf_error_field_name_dup_or_inv>(), 1712, "create: field name"},
        {TABLE_CREATE, raising<file_error_exists>(), 7, "create: exists"},
        {TABLE_CREATE, raising<file_sharing_violation>(), 3, "create: sharing"},
        {TABLE_CREATE, raising<file_access_denied>(), 1705, "create: other file error"},
        {TABLE_CREATE, raising<dbf_error_codepage_not_supported>(), 2091, "create: other table error"},
        {TABLE_FIELD_READ, raising<dbf_error_field_incompatible>(), 9902, "field read"},
        {TABLE_GET_CHARS, raising<dbf_error_cptrans_char_lost>(), 9011, "chars: charset"},
        {TABLE_GET_CHARS, raising<dbf_error_buffer_underrun>(), 1001, "chars: underrun"},
        {TABLE_GET_CHARS, raising<dbf_error_buffer_overflow>(), 9902, "chars: overflow"},
        {TABLE_SET_NULL, raising<dbf_error_field_readonly>(), 2088, "null: read-only"},
        {TABLE_SET_NULL, raising<dbf_error_field_no_null_support>(), 1581, "null: not nullable"},
        {TABLE_SET_VALUE, raising<dbf_error_field_readonly>(), 2088, "value: read-only"},
        {TABLE_SET_VALUE, raising<dbf_error_field_type_conflict>(), 107, "value: type"},
        {TABLE_SET_NUMBER, raising<dbf_error_field_readonly>(), 2088, "number: read-only"},
        {TABLE_SET_NUMBER, raising<dbf_error_field_type_conflict>(), 107, "number: type"},
        {TABLE_SET_NUMBER, raising<overflow_error>(), 39, "number: overflow"},
        {TABLE_SET_STRING, raising<dbf_error_field_readonly>(), 2088, "string: read-only"},
        {TABLE_SET_STRING, raising<dbf_error_field_type_conflict>(), 107, "string: type"},
        {TABLE_SET_STRING, raising<dbf_error_cptrans_char_lost>(), 9011, "string: charset"},
        {TABLE_GO, raising<dbf_error_record_out_of_range>(), 5, "go"},
        {TABLE_UPDATE, raising<dbf_illegal_recursion>(), 1887, "update: recursion"},
        {TABLE_UPDATE, raising<dbf_index_file_corrupted>(), 2066, "update: index"},
        {TABLE_UPDATE, raising<dbf_error_index_cannot_store_null>(), 1886, "update: null key"},
        {TABLE_UPDATE, raising<dbf_invalid_index_key_len>(), 112, "update: key length"},
        {TABLE_UPDATE, raising<dbf_unique_key_violation>(), 1884, "update: unique"},
        {TABLE_UPDATE, raising<dbf_error_file_readonly>(), 111, "update: read-only"},
        {TABLE_REMOVE, raising<file_sharing_violation>(), 1705, "remove: sharing"},
        {TABLE_REMOVE, raising<file_error>(), 1, "remove: other file error"},
    };
    for (const row_st& row : rows) EXPECT_EQ(number_of(row.operation, row.raise), row.number) << row.what;
}

TEST(TableErrors, TheDetailGoesWhereTheMessageTakesOne) {
    try {
        table_operation(TABLE_SET_NULL, [] { return String("PRICE"); },
                        [] { throw dbf_error_field_no_null_support(); });
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message.u8str(), "Field PRICE does not accept null values.");
    }
    try {
        table_operation(TABLE_USE, [] { return String("/x/t.dbf"); }, [] { throw dbf_error_file_corruption(); });
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message.u8str(),
                  "Table '/x/t.dbf' has become corrupted. The table will need to be repaired before using again.");
    }
}

// An exception an operation does not name goes on to the operation around
// it, which may name it; the outermost one turns what is left into 9006.
TEST(TableErrors, UnnamedExceptionsGoOnOutward) {
    EXPECT_EQ(number_of(TABLE_GO, raising<dbf_error_eof>()), 9006);
    EXPECT_EQ(number_of(TABLE_OTHER, [] { table_operation(TABLE_GO, no_detail, raising<dbf_error_eof>()); }),
              9006);
    try {
        table_operation(TABLE_USE, no_detail, [] {
            table_operation(TABLE_OTHER, no_detail, [] { throw dbf_error_file_corruption(); });
        });
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number, 2091);
    }
    try {
        table_operation(TABLE_OTHER, no_detail, [] { throw dbf_error_record_in_use(); });
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number, 9006);
        EXPECT_EQ(error.message.u8str(), "Native error in table engine: 'dbf_error_record_in_use'");
    }
}

TEST(TableErrors, RuntimeErrorsPassUntouched) {
    EXPECT_EQ(number_of(TABLE_USE, [] { throw RuntimeError(ERR_END_OF_FILE); }), 4);
}

}  // namespace
}  // namespace zobase
