// Data sessions and work areas through a runtime: sessions with their own
// work areas and settings, work-area numbers, SET BLOCKSIZE, DISPLAY
// STRUCTURE, and what a stack leaves on disk when it ends.
#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>

#include "runtime/runtime.h"
#include "tables/table_object_zodbf.h"
#include "tables/table_sessions.h"
#include "tests/unit/runtime/runtime_test_support.h"
#include "tests/unit/tables/table_test_support.h"
#include "values/symtable.h"
#include "vm/vm_stack.h"

namespace zobase {
namespace {

using testing::CaptureScreen;
using testing::TableFolder;

class Sessions : public ::testing::Test {
protected:
    TableFolder folder;
    CaptureScreen screen;
    Runtime* runtime = nullptr;
    VmStack* stack = nullptr;

    void SetUp() override {
        runtime = CreateRuntime(&screen);
        GetMainStack(runtime, &stack);
    }
    void TearDown() override {
        if (runtime) ReleaseRuntime(runtime);
    }

    int run(const std::string& line) { return runtime->run_command(String(line.c_str())); }
    // A table of the scratch folder, as the commands name it.
    std::string table(const std::string& name) const { return "\"" + (folder.path / name).string() + "\""; }

    // Runs the lines and returns what they printed.
    std::string output_of(std::initializer_list<std::string> lines) {
        screen.output.clear();
        for (const std::string& line : lines) EXPECT_EQ(run(line), 0) << line << ": " << screen.errors;
        return screen.output;
    }

    DataSession_Object& session() { return current_session(stack); }
};

TEST_F(Sessions, EachSessionHasItsOwnWorkAreasAndSettings) {
    Variant second;
    table_sessions(stack).create_session(&second);
    output_of({"CREATE CURSOR first (x N(1))", "SET DELETED ON", "SET EXACT ON", "SELECT 3"});
    EXPECT_EQ(session().id, 1);
    EXPECT_TRUE(stack->sessions->settings().deleted);

    output_of({"SET DATASESSION TO 2"});
    EXPECT_EQ(session().id, 2);
    EXPECT_EQ(stack->sessions->session_id(), 2);
    // A new session starts with the traditional values and its own areas.
    EXPECT_FALSE(stack->sessions->settings().deleted);
    EXPECT_FALSE(stack->sessions->settings().exact);
    EXPECT_TRUE(stack->sessions->settings().exclusive);
    EXPECT_EQ(session().current_area(), 1);
    EXPECT_EQ(output_of({"? used(\"first\"), select()"}), "false 1\n");
    output_of({"CREATE CURSOR other (y N(1))", "SET EXCLUSIVE OFF"});

    output_of({"SET DATASESSION TO"});
    EXPECT_EQ(session().id, 1);
    EXPECT_EQ(output_of({"? select(), used(\"first\"), used(\"other\")"}), "3 true false\n");
    EXPECT_TRUE(stack->sessions->settings().exclusive);

    EXPECT_EQ(run("SET DATASESSION TO 7"), ERR_SESSION_INVALID);
    EXPECT_EQ(run("SET DATASESSION TO 2"), 0);
    EXPECT_FALSE(stack->sessions->settings().exclusive);
    EXPECT_EQ(run("SET DATASESSION TO 1"), 0);

    // The session object tells its id, and goes when its last holder lets go.
    auto* object = static_cast<DataSession_Object*>(second.object.object);
    Variant id;
    object->virtual_access(stack, SYMBOL_DATASESSIONID, 0, &id);
    EXPECT_EQ(id.integer, 2);
    second.release(stack);
    EXPECT_EQ(run("SET DATASESSION TO 2"), ERR_SESSION_INVALID);
}

TEST_F(Sessions, WorkAreaNumbers) {
    output_of({"CREATE CURSOR a (x N(1))", "SELECT 2", "CREATE CURSOR b (x N(1))"});
    DataSession_Object& s = session();
    EXPECT_EQ(s.select(0), 3);
    EXPECT_EQ(s.current_table(), nullptr);
    EXPECT_EQ(s.select(7), 7);  // a free number is legal
    EXPECT_FALSE(s.used(7));
    EXPECT_TRUE(s.used(2));
    EXPECT_THROW(s.used(0), RuntimeError);
    EXPECT_THROW(s.used(MAX_WORK_AREA + 1), RuntimeError);
    EXPECT_EQ(s.select(1), 1);
    EXPECT_NE(s.current_table(), nullptr);
    s.close(stack, 1);
    EXPECT_EQ(s.current_table(), nullptr);
    EXPECT_FALSE(s.used(1));
}

TEST_F(Sessions, BlocksizeSetsTheMemoBlocksOfNewTables) {
    auto block_of = [&](const std::string& name) {
        output_of({"CREATE TABLE " + table(name) + " (m M)"});
        return static_cast<Table_Object_ZoDbf*>(session().current_table())->file()->fpt->block_size;
    };
    EXPECT_EQ(block_of("default"), 64u);
    EXPECT_EQ(run("SET BLOCKSIZE TO 33"), 0);
    EXPECT_EQ(stack->sessions->settings().blocksize, 33u);
    EXPECT_EQ(block_of("bytes"), 33u);
    EXPECT_EQ(run("SET BLOCKSIZE TO 32"), 0);
    EXPECT_EQ(block_of("units"), 16384u);
    EXPECT_EQ(run("SET BLOCKSIZE TO 0"), 0);
    EXPECT_EQ(stack->sessions->settings().blocksize, 1u);
    EXPECT_EQ(run("SET BLOCKSIZE TO 32769"), ERR_SYNTAX);
    EXPECT_EQ(run("SET BLOCKSIZE TO -1"), ERR_SYNTAX);
    EXPECT_EQ(stack->sessions->settings().blocksize, 1u);
}

TEST_F(Sessions, DisplayStructure) {
    std::string shown = output_of({"CREATE TABLE " + table("shown") + " CODEPAGE = 1252 (id I AUTOINC NEXTVALUE 5 STEP 2, "
                                   "name C(10) NOCPTRANS, amount N(8,2) NULL)",
                                   "APPEND BLANK", "DISPLAY STRUCTURE"});
    shown = std::regex_replace(shown, std::regex("\\d{4}-\\d{2}-\\d{2}"), "YYYY-MM-DD");
    std::string expected = "Structure for table:     " + (folder.path / "shown.dbf").string() + "\n" +
                           "Number of data records:  1\n"
                           "Date of last update:     YYYY-MM-DD\n"
                           "DBF-Codepage:            1252 (windows-1252)\n"
                           "DBF-Version:             50 (0x32)\n"
                           "\n"
                           "#   NAME                                         TYPE                PREC SCALE NULL "
                           "      NEXT STEP\n"
                           "  1 id                                           Integer                4     0    N "
                           "         7    2\n"
                           "  2 name                                         Character (binary)    10     0    N "
                           "         0    0\n"
                           "  3 amount                                       Numeric                8     2    Y "
                           "         0    0\n"
                           "\n";
    EXPECT_EQ(shown, expected);
}

// Appended records an unshared table holds in memory reach the file when
// the runtime ends.
TEST_F(Sessions, EndingTheRuntimeWritesWhatIsPending) {
    output_of({"CREATE TABLE " + table("kept") + " (n N(4))",
               "FOR i = 1 TO 25\nAPPEND BLANK\nREPLACE n WITH i\nNEXT"});
    ReleaseRuntime(runtime);
    runtime = nullptr;
    auto table = testing::open_table(folder.name("kept.dbf"));
    EXPECT_EQ(table->record_count, 25u);
    table->go_bottom();
    Variant n;
    table->get_variant(0, &n);
    EXPECT_EQ(n.numeric.value, 25.0);
}

}  // namespace
}  // namespace zobase
