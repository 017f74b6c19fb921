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
