// Expression compilation: folding, static types, jumps and calls.
#include "compiler_test_support.h"

#include "values/error.h"

namespace zobase::testing {
namespace {

using ExpressionTest = CompilerFixture;

TEST_F(ExpressionTest, SumOfLiteralsFoldsToOneConstant) {
    compiler_type_info_st type = compile("1 + 2");
    ASSERT_EQ(opcodes(), std::vector<uint8_t>{OP_READ_CONST_INTEGER});
    EXPECT_EQ(static_cast<long long>(static_cast<const VmOpReadConstInteger*>(instruction(0))->value), 3);
    EXPECT_TRUE(type.is_constant);
    EXPECT_EQ(type.type, FORMAL_INTEGER);
}

TEST_F(ExpressionTest, StringConcatenationFoldsWithItsLength) {
    compiler_type_info_st type = compile("\"a\" + \"bc\"");
    ASSERT_EQ(opcodes(), std::vector<uint8_t>{OP_READ_CONST_STRING});
    EXPECT_EQ(static_cast<const VmOpReadConstString*>(instruction(0))->value.u8str(), "abc");
    EXPECT_EQ(type.type, FORMAL_STRING);
    EXPECT_EQ(type.length, 3u);
}

TEST_F(ExpressionTest, ComparisonsAreNotFolded) {
    compiler_type_info_st type = compile("1 = 1");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_CONST_INTEGER, OP_READ_CONST_INTEGER, OP_BINARY_EQ}));
    EXPECT_FALSE(type.is_constant);
    EXPECT_EQ(type.type, FORMAL_LOGICAL);
}

TEST_F(ExpressionTest, FoldingStopsAtAComparisonInside) {
    compile("(1 < 2) AND .T.");
    EXPECT_GT(opcodes().size(), 1u);
}

TEST_F(ExpressionTest, VariableIsReadByNameOutsideFunctions) {
    compiler_type_info_st type = compile("x + 1");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_BY_NAME, OP_ADD_CONST_INTEGER}));
    EXPECT_FALSE(type.is_constant);
}

TEST_F(ExpressionTest, TableFieldsResolveBeforeVariables) {
    compiler_table_context_st table;
    table.fields.push_back({runtime->symbols().symbolize("NAME"), 2, 20, 3});
    compiler.table = &table;
    compiler_type_info_st type = compile("name");
    ASSERT_EQ(opcodes(), std::vector<uint8_t>{OP_READ_FIELD_BY_INDEX});
    EXPECT_EQ(static_cast<const VmOpReadFieldByIndex*>(instruction(0))->value, 3);
    EXPECT_EQ(type.type, FORMAL_STRING);
    EXPECT_EQ(type.length, 20u);
}

TEST_F(ExpressionTest, SystemVariableReadsThroughItsReader) {
    compile("_unix");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ESP_ALLOC, OP_CALL_NATIVE}));
}

TEST_F(ExpressionTest, AndLeavesTheFalseValueAsResult) {
    compile("a AND b");
    EXPECT_EQ(opcodes(),
              (std::vector<uint8_t>{OP_READ_BY_NAME, OP_COND_FALSE_OR_NULL_JUMP_KEEP_ESP, OP_READ_BY_NAME}));
}

TEST_F(ExpressionTest, OrMergesANullLeftSide) {
    compile("a OR b");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_BY_NAME, OP_COND_TRUE_JUMP_KEEP_ESP, OP_READ_BY_NAME,
                                               OP_COND_TRUE_OR_NULL_MERGE_2P}));
}

TEST_F(ExpressionTest, ContainsIsACallOfAt) {
    compile("a $ b");
    std::vector<uint8_t> ops = opcodes();
    ASSERT_GE(ops.size(), 3u);
    EXPECT_EQ(ops[0], OP_ESP_ALLOC);
    EXPECT_EQ(ops[ops.size() - 3], OP_CALL_NATIVE);
    EXPECT_EQ(ops[ops.size() - 2], OP_READ_CONST_INTEGER);
    EXPECT_EQ(ops.back(), OP_BINARY_GT);
}

TEST_F(ExpressionTest, AbbreviatedNameCallsTheFullFunction) {
    // substr's hook makes a call with constant arguments constant, so it folds.
    compiler_type_info_st type = compile("SUBS(\"abc\", 2)");
    ASSERT_EQ(opcodes(), std::vector<uint8_t>{OP_READ_CONST_STRING});
    EXPECT_EQ(static_cast<const VmOpReadConstString*>(instruction(0))->value.u8str(), "bc");
    EXPECT_TRUE(type.is_constant);
    compiler.code.clear();
    compile("SUBS(x, 2)");
    const library_func_def_st* substr = runtime->library()->find_function(String("substr"));
    ASSERT_NE(substr, nullptr);
    ASSERT_EQ(opcodes().back(), OP_CALL_NATIVE);
    const VmOp* call = instruction(opcodes().size() - 1);
    EXPECT_EQ(static_cast<const VmOpCallNative*>(call)->handler, substr->handler);
}

TEST_F(ExpressionTest, StaticTypeSparesTheCast) {
    compile("upper(\"x\")");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ESP_ALLOC, OP_READ_CONST_STRING, OP_CALL_NATIVE}));
    compiler.code.clear();
    compile("upper(x)");
    EXPECT_EQ(opcodes(),
              (std::vector<uint8_t>{OP_ESP_ALLOC, OP_READ_BY_NAME, OP_CAST_TO_STRING, OP_CALL_NATIVE}));
}

TEST_F(ExpressionTest, WrongConstantTypeOrCountIsErrorEleven) {
    compile("upper(1)");
    ASSERT_EQ(compiler.errors.size(), 1u);
    EXPECT_EQ(compiler.errors[0].number, 11);
    compile("upper(\"a\", \"b\")");
    EXPECT_EQ(compiler.errors.size(), 2u);
}

TEST_F(ExpressionTest, IifWithTwoArgumentsLeavesNullAndErrorEleven) {
    compile("iif(a, b)");
    EXPECT_EQ(opcodes(), std::vector<uint8_t>{OP_READ_CONST_NULL});
    ASSERT_EQ(compiler.errors.size(), 1u);
    EXPECT_EQ(compiler.errors[0].number, 11);
}

TEST_F(ExpressionTest, IifEvaluatesOneBranch) {
    compile("iif(a, 1, 2)");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_READ_BY_NAME, OP_COND_FALSE_OR_NULL_JUMP, OP_READ_CONST_INTEGER,
                                               OP_JUMP, OP_READ_CONST_INTEGER}));
}

TEST_F(ExpressionTest, ValuesPassedByReferenceAre9004) {
    compile("acharset(1)");
    compile("foo(@1)");
    compile("foo(@(x))");
    ASSERT_EQ(compiler.errors.size(), 3u);
    for (const compile_error_st& error : compiler.errors) EXPECT_EQ(error.number, 9004);
}

TEST_F(ExpressionTest, ReferenceToAVariableGoesByName) {
    compile("foo(@x)");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ESP_ALLOC, OP_READ_MEMVAR_POINTER_BY_NAME, OP_UNRESOLVED_CALL}));
}

TEST_F(ExpressionTest, UnknownFunctionIsUnresolvedAndMayBeNull) {
    compiler_type_info_st type = compile("later(1)");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ESP_ALLOC, OP_READ_CONST_INTEGER, OP_UNRESOLVED_CALL}));
    EXPECT_TRUE(type.type & FORMAL_NULLABLE);
}

TEST_F(ExpressionTest, DottedBuiltinIsNoObjectPath) {
    compile("http.urlencode(\"x\")");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ESP_ALLOC, OP_READ_CONST_STRING, OP_CALL_NATIVE}));
}

// The root and its first member go as one instruction, which pushes its
// own result; the members after it reserve their slots before it.
TEST_F(ExpressionTest, PathReservesResultSlotsBeforeTheRoot) {
    compile("a.b.c");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ESP_ALLOC, OP_READ_NAME_MEMBER, OP_OBJECT_READ}));
}

// A root read as a variable only, or a member with subscripts, keeps the two steps.
TEST_F(ExpressionTest, MemvarRootPathReadsItsMembersOneByOne) {
    compile("m.a.b.c");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ESP_ALLOC, OP_ESP_ALLOC, OP_READ_MEMVAR_BY_NAME, OP_OBJECT_READ,
                                               OP_OBJECT_READ}));
}

TEST_F(ExpressionTest, SubscriptedFirstMemberReadsTheRootAlone) {
    compile("a.b[1]");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ESP_ALLOC, OP_READ_FILE_OBJECT_OR_MEMVAR_BY_NAME,
                                               OP_READ_CONST_INTEGER, OP_OBJECT_READ}));
}

TEST_F(ExpressionTest, ArrayElementReadsByName) {
    compile("a[1, 2]");
    EXPECT_EQ(opcodes(), (std::vector<uint8_t>{OP_ESP_ALLOC, OP_READ_CONST_INTEGER, OP_READ_CONST_INTEGER,
                                               OP_READ_ARRAY_BY_NAME}));
}

TEST_F(ExpressionTest, TrimOfAConstantFoldsThroughItsHook) {
    compiler_type_info_st type = compile("alltrim(\"  ab  \")");
    ASSERT_EQ(opcodes(), std::vector<uint8_t>{OP_READ_CONST_STRING});
    EXPECT_EQ(static_cast<const VmOpReadConstString*>(instruction(0))->value.u8str(), "ab");
    EXPECT_TRUE(type.is_constant);
}

TEST_F(ExpressionTest, FailingFoldIsACompileErrorAtTheOperand) {
    compile("1 + \"a\"");
    ASSERT_EQ(compiler.errors.size(), 1u);
    EXPECT_NE(compiler.errors[0].number, 0);
    EXPECT_EQ(opcodes(), std::vector<uint8_t>{OP_READ_CONST_NULL});
}

TEST_F(ExpressionTest, UnaryPlusEmitsNothing) {
    compile("+x");
    EXPECT_EQ(opcodes(), std::vector<uint8_t>{OP_READ_BY_NAME});
}

}  // namespace
}  // namespace zobase::testing
