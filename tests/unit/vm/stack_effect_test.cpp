// The instruction table and the checked dispatch loop: the rows are
// consistent, the check catches an instruction that moves the stack
// otherwise, and the instructions the other tests rarely run pass it.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/unit/vm/vm_test_support.h"
#include "values/date.h"
#include "values/money.h"
#include "vm/vm_run.h"

using namespace zobase;
using namespace zobase::testing;

namespace {

const std::set<std::string> shapes_with_count = {"COUNT",    "SYMBOL_COUNT", "OFFSET_COUNT", "FUNCTION",
                                                 "COMMAND",  "CALL",         "UNRESOLVED"};

bool is_marker(StackCount count) { return count < 0; }

TEST(InstructionTable, EveryRowIsConsistent) {
    std::set<std::string> names;
    for (int opcode = 0; opcode < OPCODE_COUNT; ++opcode) {
        const instruction_info_st& row = instruction_info(static_cast<uint8_t>(opcode));
        SCOPED_TRACE(row.name);
        EXPECT_EQ(std::string(row.name).rfind("VmOp", 0), 0u);
        EXPECT_TRUE(names.insert(row.name).second) << "a class name twice";
        EXPECT_NE(std::string(row.meaning), "");
        EXPECT_GE(row.pops, STACK_FRAME) << "TAKEN counts pushes only";
        EXPECT_NE(row.pushes, STACK_FRAME) << "FRAME counts pops only";
        bool counted = row.pops == STACK_N || row.pops == STACK_N1 || row.pushes == STACK_N || row.pushes == STACK_N1;
        if (counted) {
            EXPECT_TRUE(shapes_with_count.count(row.operands)) << "N needs an n operand";
        }
        if (row.pushes == STACK_TAKEN) {
            EXPECT_STREQ(row.operands, "JUMP");
        }
        if (!is_marker(row.pops)) {
            EXPECT_LE(row.pops, 3);
        }
        if (!is_marker(row.pushes)) {
            EXPECT_LE(row.pushes, 1) << "an instruction leaves at most one slot";
        }
    }
    EXPECT_EQ(OPCODE_COUNT, 107);
    EXPECT_STREQ(opcode_class_name(OP_WRITE_MEMVAR_BY_NAME), "VmOpWriteMemarByName");
    EXPECT_STREQ(opcode_class_name(OPCODE_COUNT), "VmOp");
}

TEST(InstructionTable, CountOperandReadsTheRightField) {
    VmOpObjectCall call(7, 3);
    VmOpWriteArrayByOffset write(2, 4);
    VmOpReadConstInteger constant(9);
    EXPECT_EQ(count_operand(&call), 3u);
    EXPECT_EQ(count_operand(&write), 4u);
    EXPECT_EQ(count_operand(&constant), 0u);
}

// Pops a slot beneath its arguments, which no command may: the check must
// name the call. (A slot too many is no fault: the call pops back to its
// arguments' base whatever the handler left.)
void greedy_command(VmStack* stack, unsigned long long) { stack->pop(); }

class CheckedLoop : public VmFixture {
protected:
    Program program;

    void emit_value(VmOp* push) { program.emit(push); }
    void finish() { program.emit(new VmOpReturnValue()); }
};

TEST_F(CheckedLoop, IsOnInTheUnitTests) { EXPECT_TRUE(vm_check_stack_effects); }

TEST_F(CheckedLoop, CatchesAnInstructionThatMovesTheStackOtherwise) {
    emit_integer(program, 1);
    program.emit(new VmOpCallNativeVoid(greedy_command, 0));
    program.emit(new VmOpReturnValue());
    try {
        run(program);
        FAIL() << "the lost slot went unnoticed";
    } catch (const assert_failed_exception& e) {
        EXPECT_STREQ(e.what, "stack effect of VmOpCallNativeVoid: depth 1 became 0, the instruction table says 1");
    }
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(CheckedLoop, IsOffWithoutTheFlag) {
    struct unchecked_st {
        unchecked_st() { vm_check_stack_effects = false; }
        ~unchecked_st() { vm_check_stack_effects = true; }
    } unchecked;
    emit_integer(program, 1);
    program.emit(new VmOpCallNativeVoid(greedy_command, 0));
    program.emit(new VmOpReturn());
    EXPECT_EQ(error_of(program), 0);
}

// The comparisons and arithmetic the language tests reach least.
TEST_F(CheckedLoop, RarerOperatorsKeepTheirRows) {
    emit_integer(program, 2);
    emit_integer(program, 10);
    program.emit(new VmOpBinaryPow());  // 1024
    emit_integer(program, 1024);
    program.emit(new VmOpBinaryLtEq());  // true
    emit_integer(program, 1);
    emit_integer(program, 2);
    program.emit(new VmOpBinaryGtEq());  // false
    program.emit(new VmOpBinaryLtGt());  // true <> false
    finish();
    ASSERT_EQ(error_of(program), 0);
    EXPECT_EQ(result.tag, TAG_TRUE);
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(CheckedLoop, CastsReplaceTheTop) {
    emit_value(new VmOpReadConstTrue());
    program.emit(new VmOpCastToBooleanImplicitly(false));
    program.emit(new VmOpEspFree());
    emit_integer(program, 3);
    program.emit(new VmOpCastToNumericImplicitly(false));
    program.emit(new VmOpCastToMoneyImplicitly(false));
    program.emit(new VmOpEspFree());
    emit_value(new VmOpReadConstDate(date_st{2451545}));
    program.emit(new VmOpCastToDatetimeImplicitly(false));
    program.emit(new VmOpCastToDateImplicitly(false));
    program.emit(new VmOpEspFree());
    emit_value(new VmOpReadConstNull());
    program.emit(new VmOpCastToObjectImplicitly(true));
    finish();
    ASSERT_EQ(error_of(program), 0);
    EXPECT_EQ(result.tag, TAG_NULL);
}

TEST_F(CheckedLoop, ConstantsPushOneSlot) {
    emit_value(new VmOpReadConstMoney(money_from_double(1.5)));
    program.emit(new VmOpEspFree());
    emit_value(new VmOpReadConstDatetime(datetime_st{2451545, 1000}));
    finish();
    ASSERT_EQ(error_of(program), 0);
    EXPECT_EQ(result.tag, TAG_DATETIME);
}

// STORE leaves the value; DefLocal names a dynamic local of the frame.
TEST_F(CheckedLoop, StoreLeavesTheValueAndLocalsPushNothing) {
    program.emit(new VmOpDefLocal(SYM_X));
    emit_integer(program, 5);
    program.emit(new VmOpReadMemvarPointerCreate(SYM_X));
    program.emit(new VmOpStore());
    program.emit(new VmOpReadMemvarByName(SYM_X));
    program.emit(new VmOpBinaryAdd());
    finish();
    ASSERT_EQ(error_of(program), 0);
    EXPECT_EQ(result.integer, 10);
    EXPECT_TRUE(stack_at_rest());
}

}  // namespace
