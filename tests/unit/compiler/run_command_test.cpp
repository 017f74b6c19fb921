// The road of one command: compile, run in the caller's state, report.
#include "compiler_test_support.h"

namespace zobase::testing {
namespace {

using RunCommandTest = CompilerFixture;

TEST_F(RunCommandTest, AssignmentIsSeenByTheNextCommand) {
    EXPECT_EQ(run("x = 40"), 0);
    EXPECT_EQ(run("x = x + 2"), 0);
    EXPECT_EQ(run("? X"), 0);
    EXPECT_EQ(screen.output, "42\n");
}

TEST_F(RunCommandTest, SyntaxErrorPrintsTheDiagnosticBlock) {
    EXPECT_EQ(run("? 1 +* 2"), 10);
    EXPECT_EQ(screen.output, "");
    EXPECT_NE(screen.errors.find("(Parser error) 10 - Syntax error."), std::string::npos) << screen.errors;
    EXPECT_NE(screen.errors.find(" in <command prompt>, line 1, column "), std::string::npos) << screen.errors;
    EXPECT_NE(screen.errors.find("somwhere behind: ? 1 +"), std::string::npos) << screen.errors;
}

TEST_F(RunCommandTest, AllErrorsArePrintedAndTheFirstReturned) {
    EXPECT_EQ(run("? iif(1, 2)\n? upper(1)"), 11);
    size_t first = screen.errors.find("(Compiler error) 11");
    ASSERT_NE(first, std::string::npos) << screen.errors;
    EXPECT_NE(screen.errors.find("(Compiler error) 11", first + 1), std::string::npos) << screen.errors;
    EXPECT_NE(screen.errors.find("line 2"), std::string::npos) << screen.errors;
    EXPECT_EQ(screen.output, "");
}

TEST_F(RunCommandTest, ParserAndCompilerErrorsTogether) {
    EXPECT_EQ(run("? 1 +\n? iif(1)"), 10);
    EXPECT_NE(screen.errors.find("(Parser error) 10"), std::string::npos);
    EXPECT_NE(screen.errors.find("(Compiler error) 11"), std::string::npos);
}

TEST_F(RunCommandTest, ReferenceToALiteralIsReported) {
    EXPECT_EQ(run("? acharset(1)"), 9004);
    EXPECT_NE(screen.errors.find("Temporary R-Value cannot be passed by reference."), std::string::npos);
}

TEST_F(RunCommandTest, ExpressionStatementDiscardsItsValue) {
    Memvar* top = stack->esp;
    EXPECT_EQ(run("= upper(\"x\")"), 0);
    EXPECT_EQ(stack->esp, top);
}

TEST_F(RunCommandTest, BuildExpressionReturnsTheValue) {
    BuildInput build(stack);
    build.import_library(runtime->library());
    const Program* program = nullptr;
    build.build_expression(String("substr(\"hello\", 2, 3) + \"!\""), &program);
    std::unique_ptr<const Program> owned(program);
    Variant result;
    execute_program(stack, 0, false, program, &result);
    EXPECT_EQ(static_cast<String>(result).u8str(), "ell!");
    result.release(stack);
}

TEST(DiagnosticFormat, PlaceNameAndBlockShape) {
    BuildInput build(nullptr);
    EXPECT_EQ(build.place_name(), "<command prompt>");
    build.file_name = String("/src/x");
    EXPECT_EQ(build.place_name(), "<command prompt>");
    build.file_name = String("/src/main.prg");
    EXPECT_EQ(build.place_name(), "/src/main.prg");
    diagnostic_st diagnostic{DIAGNOSTIC_CATEGORY_GENERIC, 10, {}, String("abc def")};
    diagnostic.location.start = {4, 4, 1, 5};
    diagnostic.location.end = {7, 7, 1, 8};
    EXPECT_EQ(build.format_diagnostic(diagnostic),
              "(Generic error) 10 - Syntax error.\n in /src/main.prg, line 1, column 5, somewhere at: def\n"
              "  somwhere behind: abc\n\n");
    diagnostic.location.start = {0, 0, 1, 1};
    diagnostic.location.end = {3, 3, 1, 4};
    EXPECT_EQ(build.format_diagnostic(diagnostic),
              "(Generic error) 10 - Syntax error.\n in /src/main.prg, line 1, column 1, somewhere at: abc\n\n");
}

// An expression the compiler cannot build is a diagnostic at the operand.
TEST_F(RunCommandTest, ExpressionThatCannotBeBuiltIsADiagnosticAtItsPlace) {
    BuildInput build(stack);  // no library: the factory function is missing
    const Program* program = nullptr;
    EXPECT_THROW(build.build_expression(String("1 + createobject(\"x\")"), &program), RuntimeError);
    EXPECT_EQ(program, nullptr);
    ASSERT_EQ(build.diagnostics.size(), 1u);
    EXPECT_EQ(build.diagnostics[0].detail.u8str(), "createobject");
    EXPECT_EQ(build.diagnostics[0].location.start.column, 1u);
}

}  // namespace
}  // namespace zobase::testing

namespace zobase::testing {
namespace {

// Under the sanitizer build this is the leak check of the whole road.
TEST_F(RunCommandTest, ManyCommandsLeaveTheStackAsTheyFoundIt) {
    Memvar* top = stack->esp;
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(run("n = iif(.T., \"a\" + \"b\", 0) + substr(\"xyz\", 2)"), 0);
        EXPECT_EQ(run("? n, 1 +"), 10);
        EXPECT_NE(run("? unknown_function_name(n)"), 0);
    }
    EXPECT_EQ(stack->esp, top);
}

}  // namespace
}  // namespace zobase::testing
