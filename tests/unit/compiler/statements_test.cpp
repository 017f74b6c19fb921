// Statement compilation checked on the code it yields; what the statements
// do when run is in tests/lang/statements/ and tests/lang/textmerge/.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "../runtime/runtime_test_support.h"
#include "compiler/build_input.h"
#include "compiler/module.h"
#include "compiler/statements.h"
#include "values/symtable.h"
#include "vm/try_scope.h"
#include "vm/user_function.h"
#include "vm/vm_stack.h"

namespace zobase::testing {
namespace {

class StatementsTest : public ::testing::Test {
protected:
    CaptureScreen screen;
    Runtime* runtime = Runtime::create_instance(&screen);
    VmStack* stack = runtime->get_main_stack();
    std::unique_ptr<BuildInput> input;

    ~StatementsTest() override { ReleaseRuntime(runtime); }

    BuildInput& fresh_input() {
        input = std::make_unique<BuildInput>(stack);
        input->import_library(runtime->library());
        return *input;
    }

    std::unique_ptr<Program> command(const std::string& text) {
        return std::unique_ptr<Program>(fresh_input().build_command(String(text.c_str())));
    }

    // The error numbers a build recorded, in order.
    std::vector<int> errors_of(const std::string& text) {
        BuildInput& build = fresh_input();
        try {
            delete build.build_command(String(text.c_str()));
        } catch (const RuntimeError&) {
        }
        std::vector<int> numbers;
        for (const diagnostic_st& diagnostic : build.diagnostics) numbers.push_back(diagnostic.number);
        return numbers;
    }

    std::string run(const std::string& text) {
        screen.output.clear();
        runtime->run_command(String(text.c_str()));
        return screen.output;
    }

    static size_t count_ops(const Program& program, uint8_t opcode) {
        size_t n = 0;
        for (size_t i = 0; i < program.instruction_count(); ++i) n += program.code()[i]->opcode == opcode;
        return n;
    }
};

TEST_F(StatementsTest, StoreEvaluatesItsValueOnce) {
    auto program = command("STORE nextval() TO a, b, c\n");
    EXPECT_EQ(count_ops(*program, OP_CALL_BY_NAME), 1u);
    EXPECT_EQ(count_ops(*program, OP_CALL_NATIVE), 3u);  // one "store" per target
}

TEST_F(StatementsTest, ForLimitAndStepAreReadOnce) {
    auto program = command("n = 3\nFOR i = 1 TO n * 1\nn = 10\nENDFOR\n");
    EXPECT_EQ(count_ops(*program, OP_MUL_CONST_INTEGER), 1u);
}

TEST_F(StatementsTest, LoopInForAppliesTheStepOnce) {
    auto program = command("FOR i = 1 TO 9 STEP 2\nLOOP\nENDFOR\n");
    EXPECT_EQ(count_ops(*program, OP_READ_ADD_WRITE), 2u);  // LOOP and NEXT each step once
}

TEST_F(StatementsTest, SelfAddCompilesToOneAdd) {
    EXPECT_EQ(count_ops(*command("x = 1\nX = x + 1\n"), OP_ADD_TO_BARE_NAME), 1u);
    EXPECT_EQ(count_ops(*command("x = 1\nx = 1 + x\n"), OP_ADD_TO_BARE_NAME), 0u);
}

TEST_F(StatementsTest, StrayClosersAreRecordedAndLaterLinesStillCompile) {
    EXPECT_EQ(errors_of("ENDIF\nx = 1\nEXIT\n"), (std::vector<int>{1211, 96}));
    EXPECT_EQ(errors_of("IF .T.\nx = 1\n"), (std::vector<int>{1211}));
    EXPECT_EQ(errors_of("ELSE\n"), (std::vector<int>{1211}));
    EXPECT_EQ(errors_of("EXIT\nLOOP\nENDDO\nNEXT\n"), (std::vector<int>{96, 96, 96, 96}));
    EXPECT_EQ(errors_of("ENDWITH\n"), (std::vector<int>{1940}));
    EXPECT_EQ(errors_of("DO CASE\nCASE .T.\n"), (std::vector<int>{10}));
}

// What the compiler can't handle is a diagnostic where it stands, with its
// text; the statements after it still compile.
TEST_F(StatementsTest, StatementsNotBuiltAreDiagnosedWhereTheyStand) {
    BuildInput& build = fresh_input();
    try {
        delete build.build_command(String("x = 1\nIF x = 1\n  SUSPEND\nENDIF\nEXIT\n"));
        FAIL() << "SUSPEND compiled";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number, 1001);
        EXPECT_EQ(error.message.u8str(), "Feature 'statement' is not available.");
    }
    ASSERT_EQ(build.diagnostics.size(), 2u);
    const diagnostic_st& suspend = build.diagnostics[0];
    EXPECT_EQ(suspend.number, 1001);
    EXPECT_EQ(suspend.location.start.line, 3u);
    EXPECT_EQ(suspend.location.start.column, 3u);
    std::string block = build.format_diagnostic(suspend);
    EXPECT_EQ(block.rfind("(Compiler error) 1001 - Feature 'statement' is not available.\n in <command prompt>, line 3, "
                          "column 3, somewhere at: SUSPEND",
                          0),
              0u)
        << block;
    EXPECT_EQ(build.diagnostics[1].number, 96) << "EXIT after the ENDIF";
}

// A routine that raises, here for want of the echo command, leaves a
// diagnostic at its statement and none of its code.
TEST_F(StatementsTest, ARoutineThatRaisesBecomesADiagnosticOfItsStatement) {
    BuildInput build(stack);
    EXPECT_THROW(delete build.build_command(String("x = 1\n? x\ny = 2\n")), RuntimeError);
    ASSERT_EQ(build.diagnostics.size(), 1u);
    EXPECT_EQ(build.diagnostics[0].number, 1001);
    EXPECT_EQ(build.diagnostics[0].detail.u8str(), "echo_linefeed");
    EXPECT_EQ(build.diagnostics[0].location.start.line, 2u);
}

TEST_F(StatementsTest, OutlineStatementsNotBuiltArePassedOver) {
    BuildInput& build = fresh_input();
    EXPECT_THROW(delete build.build_module(String("outline.prg"),
                                           String("IMPORTS lib\nx = 1\n\nFUNCTION f\nEXIT\n")),
                 RuntimeError);
    ASSERT_EQ(build.diagnostics.size(), 2u);
    EXPECT_EQ(build.diagnostics[0].detail.u8str(), "import");
    EXPECT_EQ(build.diagnostics[0].location.start.line, 1u);
    EXPECT_EQ(build.diagnostics[1].number, 96);
    EXPECT_EQ(build.diagnostics[1].location.start.line, 5u);
    EXPECT_NE(build.diagnostics_report().find("line 1, column 1"), std::string::npos);
}

TEST_F(StatementsTest, EnddoInsideAnIfJumpsButEndsNothing) {
    std::vector<int> errors = errors_of("DO WHILE .T.\nIF .T.\nENDDO\n");
    EXPECT_EQ(errors, (std::vector<int>{1211, 96}));
    EXPECT_EQ(run("x = 0\nDO WHILE x < 3\nIF .T.\nx = x + 1\nENDIF\nENDDO\n? x\n"), "3\n");
}

// Command text runs at rest, with no frame to hold a TRY scope: the catching
// side is covered by the language tests, which run in a program's frame.
TEST_F(StatementsTest, ThrowWithoutHandlerIs2059) {
    EXPECT_EQ(runtime->run_command(String("THROW 'nobody'\n")), 2059);
}

TEST_F(StatementsTest, TryWithoutCatchFallsIntoFinally) {
    auto program = command("TRY\nx = 1\nFINALLY\nx = 2\nENDTRY\n");
    EXPECT_EQ(count_ops(*program, OP_RESET_ESP), 0u);  // no handler code between region and FINALLY
    EXPECT_EQ(count_ops(*program, OP_JUMP), 1u);
}

TEST_F(StatementsTest, PrivatePatternBecomesARegularExpression) {
    EXPECT_EQ(compile_private_rx_pattern(String("a*.b")), "^a.*.b$");
    EXPECT_EQ(compile_private_rx_pattern(String("x?")), "^x.$");
    EXPECT_EQ(compile_private_rx_pattern(String("")), "^$");
}

TEST_F(StatementsTest, TryRegionAndCatchTargetsAreResolved) {
    auto program = command("TRY\nx = 1\nCATCH TO e WHEN e.errorno = 12\nx = 2\nCATCH\nx = 3\nENDTRY\n");
    const VmOpTryEnter* scope = nullptr;
    for (size_t i = 0; i < program->instruction_count(); ++i)
        if (program->code()[i]->opcode == OP_TRY_ENTER) scope = static_cast<const VmOpTryEnter*>(program->code()[i]);
    ASSERT_NE(scope, nullptr);
    EXPECT_EQ(scope->region_start, 0u);
    EXPECT_LT(scope->region_end, scope->catches[0].target);
    ASSERT_EQ(scope->catches.size(), 2u);
    EXPECT_NE(scope->catches[0].filter, nullptr);
    EXPECT_EQ(scope->catches[1].filter, nullptr);  // no WHEN: no filter to run
    EXPECT_EQ(program->code()[scope->catches[0].target]->opcode, OP_RESET_ESP);
    EXPECT_LE(scope->catches[1].target, program->instruction_count());
}

TEST_F(StatementsTest, BadTextMergeFieldIsASyntaxError) {
    EXPECT_EQ(errors_of("TEXT TO t TEXTMERGE NOSHOW\n<<1 +>>\nENDTEXT\n"), (std::vector<int>{10}));
}

TEST_F(StatementsTest, FunctionLocalsGoBySlot) {
    Module* module = fresh_input().build_module(
        String("m"), String("FUNCTION f\nLOCAL i, s\ns = 0\nFOR i = 1 TO 3\ns = s + i\nENDFOR\nRETURN s\n"));
    std::unique_ptr<Module> owned(module);
    const UserFunction* f = module->find_function(runtime->symbols().symbolize("f"));
    ASSERT_NE(f, nullptr);
    const Program& program = *f->program();
    // s = s + i in place, both by their slots; the FOR round's end steps i by its slot.
    ASSERT_EQ(count_ops(program, OP_ADD_BARE_TO_BARE), 1u);
    for (size_t k = 0; k < program.instruction_count(); ++k)
        if (program.code()[k]->opcode == OP_ADD_BARE_TO_BARE) {
            const auto* add = static_cast<const VmOpAddBareToBare*>(program.code()[k]);
            EXPECT_NE(add->offset, 0u);
            EXPECT_NE(add->source_offset, 0u);
            EXPECT_NE(add->offset, add->source_offset);
        }
    EXPECT_EQ(count_ops(program, OP_READ_ADD_WRITE_LOCAL), 0u);
    EXPECT_EQ(count_ops(program, OP_READ_ADD_WRITE), 0u);
    ASSERT_EQ(count_ops(program, OP_FOR_NEXT_JUMP), 1u);
    for (size_t k = 0; k < program.instruction_count(); ++k) {
        if (program.code()[k]->opcode == OP_FOR_NEXT_JUMP) {
            EXPECT_NE(static_cast<const VmOpForNextJump*>(program.code()[k])->variable, 0u);
        }
    }
    EXPECT_EQ(count_ops(program, OP_WRITE_MEMVAR_BY_NAME), 0u);
}

TEST_F(StatementsTest, BareOperandsOfLocalsGoBySlot) {
    Module* module = fresh_input().build_module(
        String("m"), String("FUNCTION f\nLOCAL a, b\na = 1\nb = 2\na = a * 2 + 1\nRETURN a / b\n"));
    std::unique_ptr<Module> owned(module);
    const Program& program = *module->find_function(runtime->symbols().symbolize("f"))->program();
    ASSERT_EQ(count_ops(program, OP_MUL_ADD_INTEGER_TO_BARE), 1u);
    ASSERT_EQ(count_ops(program, OP_DIV_BARE_BY_BARE), 1u);
    for (size_t k = 0; k < program.instruction_count(); ++k) {
        const VmOp* op = program.code()[k];
        if (op->opcode == OP_MUL_ADD_INTEGER_TO_BARE) {
            EXPECT_NE(static_cast<const VmOpMulAddIntegerToBare*>(op)->offset, 0u);
        }
        if (op->opcode == OP_DIV_BARE_BY_BARE) {
            const auto* divide = static_cast<const VmOpDivBareByBare*>(op);
            EXPECT_NE(divide->left_offset, 0u);
            EXPECT_NE(divide->offset, 0u);
            EXPECT_NE(divide->left_offset, divide->offset);
        }
    }
}

}  // namespace
}  // namespace zobase::testing
