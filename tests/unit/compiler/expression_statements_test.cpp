// The statements of a command line: echo, assignment, bare expressions.
#include "compiler_test_support.h"

namespace zobase::testing {
namespace {

class ExpressionStatementTest : public CompilerFixture {
protected:
    void compile_statement(const char* text) {
        std::vector<parse_error_st> errors;
        statement_list statements;
        statements.emplace_back(parse_statement_text(text, errors));
        ASSERT_TRUE(errors.empty()) << text;
        ASSERT_NE(statements.front(), nullptr);
        statement_iterator it = statements.cbegin();
        compile_statement_list(statements.cend(), it, &compiler.code, path);
        EXPECT_EQ(it, statements.cend());
    }
};

TEST_F(ExpressionStatementTest, SelfAddIsOneAddToTheBareName) {
    compile_statement("x = x + 1");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_CONST_INTEGER, OP_ADD_TO_BARE_NAME}));
    compiler.code.clear();
    compile_statement("X = x + 1");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_CONST_INTEGER, OP_ADD_TO_BARE_NAME}));
}

// Only a right side that is one bare name joins the add: m.y, an expression
// or a constant keep their own instructions.
TEST_F(ExpressionStatementTest, SelfAddOfABareNameIsOneInstruction) {
    compile_statement("x = x + y");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ADD_BARE_TO_BARE}));
    compiler.code.clear();
    compile_statement("x = x + m.y");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_MEMVAR_BY_NAME, OP_ADD_TO_BARE_NAME}));
    compiler.code.clear();
    compile_statement("x = x + y * 2");
    EXPECT_EQ(opcodes().back(), OP_ADD_TO_BARE_NAME);
}

TEST_F(ExpressionStatementTest, AddWithTheNameOnTheRightIsAPlainStore) {
    compile_statement("x = 1 + x");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_CONST_INTEGER, OP_ADD_BY_BARE, OP_WRITE_MEMVAR_BY_NAME}));
}

// x = x * a + b updates the variable in one instruction only when both
// constants are of one number type and the read is the target's own.
TEST_F(ExpressionStatementTest, MulAddOfTheTargetIsOneUpdate) {
    using ops = std::vector<uint8_t>;
    compile_statement("x = x * 10 + 7");
    ASSERT_EQ(opcodes(), (ops{OP_MUL_ADD_INTEGER_TO_BARE}));
    const auto* whole = static_cast<const VmOpMulAddIntegerToBare*>(instruction(0));
    EXPECT_EQ(whole->factor, 10);
    EXPECT_EQ(whole->addend, 7);
    EXPECT_EQ(whole->offset, 0u);
    compiler.code.clear();
    compile_statement("x = x * 1.5 + 0.25");
    ASSERT_EQ(opcodes(), (ops{OP_MUL_ADD_NUMERIC_TO_BARE}));
    const auto* number = static_cast<const VmOpMulAddNumericToBare*>(instruction(0));
    EXPECT_EQ(number->factor.value, 1.5);
    EXPECT_EQ(number->addend.value, 0.25);
    EXPECT_EQ(number->addend.decimals, 2u);
    for (const char* text : {"x = x * 2 + 0.5", "x = y * 2 + 1", "x = m.x * 2 + 1", "x = x * 2 * 3", "x = x * 2 - 1"}) {
        compiler.code.clear();
        compile_statement(text);
        EXPECT_GT(opcodes().size(), 1u) << text;
        EXPECT_EQ(opcodes().back(), OP_WRITE_MEMVAR_BY_NAME) << text;
    }
}

// Bare names on the right of +, * and / are read by the operator; with a
// bare name on the left too, one instruction reads both.
TEST_F(ExpressionStatementTest, BareOperandsJoinTheOperator) {
    using ops = std::vector<uint8_t>;
    const std::pair<const char*, ops> cases[] = {
        {"z = a / b", {OP_DIV_BARE_BY_BARE, OP_WRITE_MEMVAR_BY_NAME}},
        {"z = a * b", {OP_MUL_BARE_BY_BARE, OP_WRITE_MEMVAR_BY_NAME}},
        {"z = a + b", {OP_ADD_BARE_BY_BARE, OP_WRITE_MEMVAR_BY_NAME}},
        {"z = 2 / b", {OP_READ_CONST_INTEGER, OP_DIV_BY_BARE, OP_WRITE_MEMVAR_BY_NAME}},
        {"z = (a + 1) * b", {OP_READ_BY_NAME, OP_ADD_CONST_INTEGER, OP_MUL_BY_BARE, OP_WRITE_MEMVAR_BY_NAME}},
        {"z = a - b", {OP_READ_BY_NAME, OP_READ_BY_NAME, OP_BINARY_SUB, OP_WRITE_MEMVAR_BY_NAME}},
        {"z = a / m.b", {OP_READ_BY_NAME, OP_READ_MEMVAR_BY_NAME, OP_BINARY_DIV, OP_WRITE_MEMVAR_BY_NAME}},
        {"z = m.a / b", {OP_READ_MEMVAR_BY_NAME, OP_DIV_BY_BARE, OP_WRITE_MEMVAR_BY_NAME}},
    };
    for (const auto& [text, expected] : cases) {
        compiler.code.clear();
        compile_statement(text);
        EXPECT_EQ(opcodes(), expected) << text;
    }
    compiler.code.clear();
    compile_statement("z = a / b");
    const auto* both = static_cast<const VmOpDivBareByBare*>(instruction(0));
    EXPECT_EQ(both->left, runtime->symbols().symbolize("a"));
    EXPECT_EQ(both->symbol, runtime->symbols().symbolize("b"));
}

TEST_F(ExpressionStatementTest, SystemVariableAssignmentCallsItsWriter) {
    compile_statement("_pcopies = 2");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_CONST_INTEGER, OP_CALL_NATIVE_VOID}));
}

TEST_F(ExpressionStatementTest, EchoIsAVoidCallWithItsValues) {
    compile_statement("? 1, \"a\"");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_CONST_INTEGER, OP_READ_CONST_STRING, OP_CALL_NATIVE_VOID}));
    EXPECT_EQ(static_cast<const VmOpCallNativeVoid*>(instruction(2))->n, 2u);
    EXPECT_EQ(instruction(0)->statement, 1u);
}

TEST_F(ExpressionStatementTest, BareExpressionIsFreed) {
    compile_statement("= upper(x)");
    EXPECT_EQ(opcodes().back(), OP_ESP_FREE);
}

TEST_F(ExpressionStatementTest, LocalSlotIsUsedOnlyWhenCertain) {
    compiler.reset(COMPILER_FLAGS_FUNCTION, true);
    unsigned symbol = runtime->symbols().symbolize("n");
    unsigned long long offset;
    ASSERT_TRUE(compiler.compile_time_define_memvar(symbol, &offset));
    compile_statement("n = 5");
    EXPECT_EQ(opcodes().back(), OP_WRITE_MEMVAR_BY_NAME);
    compiler.code.clear();
    path.known_locals.insert(symbol);
    compile_statement("n = 5");
    EXPECT_EQ(opcodes().back(), OP_WRITE_MEMVAR_BY_OFFSET);
    compiler.code.clear();
    compile_statement("? n");
    // A plain name may still be a field: the instruction asks before it reads the slot.
    EXPECT_EQ(opcodes().front(), OP_READ_BARE_LOCAL);
}

TEST_F(ExpressionStatementTest, MethodBodyTakesThisAndEndsWithReturn) {
    compiler.reset(COMPILER_FLAGS_METHOD, true);
    statement_list statements;
    std::vector<parse_error_st> errors;
    statements.emplace_back(parse_statement_text("? 1", errors));
    statement_iterator it = statements.cbegin();
    compile_program(statements.cend(), it, nullptr, path);
    std::vector<uint8_t> ops = opcodes();
    ASSERT_EQ(ops.front(), OP_INIT_LPARAMETERS);
    EXPECT_EQ(static_cast<const VmOpInitLparameters*>(instruction(0))->n, 1u);
    EXPECT_EQ(ops.back(), OP_RETURN);
}

}  // namespace
}  // namespace zobase::testing
