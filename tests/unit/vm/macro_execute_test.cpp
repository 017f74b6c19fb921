// Macro statements at run time: the checks before compiling on a bare stack,
// the rest through a whole runtime.
#include <gtest/gtest.h>

#include <memory>

#include "../runtime/runtime_test_support.h"
#include "objects/operand_object.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm_test_support.h"

namespace zobase::testing {
namespace {

class MacroExecuteVm : public ::testing::Test {
protected:
    TestResolver resolver;
    VmStack stack{nullptr, 64, 16};
    Program program;
    Variant result;

    MacroExecuteVm() { stack.resolver = &resolver; }
    ~MacroExecuteVm() override { result.release(&stack); }

    int error_of_run() {
        program.emit(new VmOpMacroExecute());
        program.emit(new VmOpReturn());
        try {
            execute_program(&stack, 0, false, &program, &result);
        } catch (const RuntimeError& e) {
            return e.number;
        }
        return 0;
    }
};

TEST_F(MacroExecuteVm, TextThatIsNotAStringRaises107) {
    program.emit(new VmOpReadConstInteger(5));
    program.locations.push_back({0, document_location_st{}});
    EXPECT_EQ(error_of_run(), 107);
}

TEST_F(MacroExecuteVm, InstructionWithoutSourceLocationRaises1206) {
    program.emit(new VmOpReadConstString(String("y = 1")));
    EXPECT_EQ(error_of_run(), 1206);
}

TEST_F(MacroExecuteVm, LocatedInstructionGoesOnToTheCompiler) {
    program.emit(new VmOpReadConstString(String("y = 1")));
    program.locations.push_back({0, document_location_st{}});
    EXPECT_EQ(error_of_run(), 1001);  // the test resolver has no compiler
}

class MacroExecuteTest : public ::testing::Test {
protected:
    CaptureScreen screen;
    Runtime* runtime = Runtime::create_instance(&screen);
    VmStack* stack = runtime->get_main_stack();
    ScratchFolder folder;

    ~MacroExecuteTest() override { ReleaseRuntime(runtime); }

    int command(const char* text) { return runtime->run_command(String(text)); }
    int program_text(const std::string& text) {
        return runtime->run_program(String(folder.write("main.prg", text)), 0, nullptr);
    }
};

TEST_F(MacroExecuteTest, StatementAtRestMakesVariablesOfTheCaller) {
    ASSERT_EQ(command("cmd = \"y = 6 * 7\""), 0);
    ASSERT_EQ(command("&cmd"), 0);
    ASSERT_EQ(command("? y"), 0);
    EXPECT_NE(screen.output.find("42"), std::string::npos) << screen.output;
}

TEST_F(MacroExecuteTest, MacroConditionIsCompiledOnceAndEvaluatedEachRound) {
    ASSERT_EQ(program_text("cond = \"i < 4\"\n"
                           "i = 0\n"
                           "DO WHILE &cond\n"
                           "  cond = \"i < 100\"\n"  // too late: the text was compiled
                           "  i = i + 1\n"
                           "ENDDO\n"
                           "? \"rounds\", i\n"),
              0)
        << screen.errors;
    EXPECT_NE(screen.output.find("rounds 4"), std::string::npos) << screen.output;
}

TEST_F(MacroExecuteTest, ErrorInsideTextIsCaughtByTheSurroundingTry) {
    ASSERT_EQ(program_text("cmd = \"? nosuchvar\"\n"
                           "TRY\n"
                           "  &cmd\n"
                           "CATCH TO e\n"
                           "  ? \"caught\", e.errorno\n"
                           "ENDTRY\n"),
              0)
        << screen.errors;
    EXPECT_NE(screen.output.find("caught 12"), std::string::npos) << screen.output;
}

TEST_F(MacroExecuteTest, OperandObjectAnswersOnlyEvaluateWithoutArguments) {
    Variant object;
    create_operand_object(stack, stack->resolver->compile_expression(stack, String("20 + 22")), &object);
    Object* target = object.object.object;
    unsigned evaluate = runtime->symbols().symbolize(String("evaluate"));
    unsigned other = runtime->symbols().symbolize(String("other"));
    Variant value;
    target->virtual_call(stack, evaluate, 0, &value);
    EXPECT_EQ(value.tag, TAG_INTEGER);
    EXPECT_EQ(value.integer, 42);
    value.release(stack);
    EXPECT_THROW(target->virtual_call(stack, other, 0, &value), RuntimeError);
    EXPECT_THROW(target->virtual_call(stack, evaluate, 1, &value), RuntimeError);
    object.release(stack);
}

}  // namespace
}  // namespace zobase::testing
