// A result set of a million rows becomes a cursor without the fetch keeping
// more than the cursor itself: the rows stream from the driver into records.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "runtime/runtime.h"
#include "tables/table_object_zodbf.h"
#include "tables/table_sessions.h"
#include "tests/unit/runtime/runtime_test_support.h"

using namespace zobase;
using zobase::testing::CaptureScreen;

namespace {

// A field of /proc/self/status in kB.
long long status_kb(const std::string& field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(field + ":", 0) == 0) return std::stoll(line.substr(field.size() + 1));
    return -1;
}

// Starts the peak resident size over from the present one.
void reset_peak() { std::ofstream("/proc/self/clear_refs") << "5"; }

TEST(SqlLongResult, MillionRowsStreamIntoTheCursor) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "resident sizes mean nothing under the address sanitizer's shadow memory";
#endif
    CaptureScreen screen;
    Runtime* runtime = CreateRuntime(&screen);
    // StepAPI=1: the SQLite driver steps through the result instead of
    // reading all of it into memory before the first fetch.
    RunCommand(runtime, String("h = sqlstringconnect('Driver=SQLite3;Database=:memory:;StepAPI=1')"));
    RunCommand(runtime, String("= sqlexec(h, 'create table big (id integer, amount double precision, "
                               "bucket integer, name varchar(10))')"));
    RunCommand(runtime, String("= sqlexec(h, [insert into big with recursive c(x) as (select 1 union all "
                               "select x + 1 from c where x < 1000000) select x, x * 0.5, x % 7, 'row' from c])"));
    reset_peak();
    long long before = status_kb("VmRSS");
    RunCommand(runtime, String("? sqlexec(h, 'select * from big'), RECCOUNT()"));
    long long peak = status_kb("VmHWM");
    EXPECT_EQ(screen.errors, "");
    EXPECT_EQ(screen.output, "1 1000000\n");

    VmStack* stack = nullptr;
    GetMainStack(runtime, &stack);
    auto* cursor = dynamic_cast<Table_Object_ZoDbf*>(current_session(stack).current_table());
    ASSERT_NE(cursor, nullptr);
    long long cursor_kb = static_cast<long long>(cursor->reccount() * cursor->file()->record_length / 1024);
    // The cursor's memory file may hold spare room as it grows; the rows in
    // flight may not add up.
    EXPECT_LT(peak - before, cursor_kb * 2 + 32 * 1024) << "cursor " << cursor_kb << " kB";
    RunCommand(runtime, String("? sqldisconnect(h)"));
    ReleaseRuntime(runtime);
}

}  // namespace
