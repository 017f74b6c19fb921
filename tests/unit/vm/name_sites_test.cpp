// What by-name instructions keep about a name, seen from two stacks that run
// the same code, and the loop's short path answering Ctrl-C.
#include <gtest/gtest.h>

#include <memory>

#include "runtime/runtime.h"
#include "tests/unit/compiler/compiler_test_support.h"
#include "vm/interrupt.h"
#include "vm/vm_run.h"

namespace zobase::testing {
namespace {

class NameSitesTest : public CompilerFixture {
protected:
    std::unique_ptr<Program> build(const char* text) {
        BuildInput input(stack);
        input.import_library(runtime->library());
        return std::unique_ptr<Program>(input.build_command(String(text)));
    }

    long long result_on(VmStack* on, const Program& program) {
        Variant result;
        execute_program(on, 0, false, &program, &result);
        long long value = result.integer;
        result.release(on);
        return value;
    }
};

// The first stack to keep an answer keeps it inside the instruction; the
// other keeps its own elsewhere, and neither ever takes the other's.
TEST_F(NameSitesTest, EachStackFindsItsOwnVariables) {
    VmStack* worker = nullptr;
    ASSERT_EQ(CreateStack(runtime, 256, &worker), 0);
    auto main_values = build("PUBLIC n, i\nn = 0\ni = 1");
    auto worker_values = build("PUBLIC n, i\nn = 100\ni = 10");
    result_on(stack, *main_values);
    result_on(worker, *worker_values);

    auto add = build("n = n + i\nRETURN n");
    auto loop = build("FOR i = 1 TO 3\n   n = n + i\nNEXT\nRETURN n");
    EXPECT_EQ(result_on(stack, *add), 1);
    EXPECT_EQ(result_on(worker, *add), 110);
    EXPECT_EQ(result_on(stack, *add), 2);
    EXPECT_EQ(result_on(worker, *add), 120);
    EXPECT_EQ(result_on(worker, *loop), 126);
    EXPECT_EQ(result_on(stack, *loop), 8);
    EXPECT_EQ(result_on(worker, *loop), 132);
    EXPECT_EQ(result_on(stack, *loop), 14);
    EXPECT_EQ(screen.errors, "");
    ReleaseStack(worker);
}

// Ctrl-C is answered at the loop's way round, which its short path takes
// too; the variables made before stay.
TEST_F(NameSitesTest, ALoopEndsAtItsFirstRoundAfterCtrlC) {
    ASSERT_EQ(run("n = 0"), 0);
    request_interrupt();
    RunCommand(runtime, String("FOR i = 1 TO 2000000000\n   n = n + 1\nNEXT"));
    EXPECT_NE(screen.errors.find("(Interrupted)"), std::string::npos) << screen.errors;
    screen.output.clear();
    ASSERT_EQ(run("? n <= 1"), 0);
    EXPECT_EQ(screen.output, "true\n");
}

}  // namespace
}  // namespace zobase::testing
