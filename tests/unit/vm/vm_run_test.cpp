#include <gtest/gtest.h>

#include <functional>

#include "values/error.h"
#include "vm/vm_run.h"

using namespace zobase;

namespace {

class VmRun : public ::testing::Test {
protected:
    VmStack stack{nullptr, 64, 16};
    Program program;
    Variant result;

    void TearDown() override { result.release(&stack); }

    size_t emit(VmOp* op) { return program.emit(op); }
    size_t integer(long long v) { return emit(new VmOpReadConstInteger(v)); }
    size_t null() { return emit(new VmOpReadConstNull()); }
    size_t jump(VmOp* op, size_t target) {
        size_t at = emit(op);
        program.set_jump_target(at, target);
        return at;
    }

    void run() { execute_program(&stack, 0, false, &program, &result); }

    int error_of_run() {
        try {
            run();
        } catch (const RuntimeError& e) {
            return e.number;
        }
        return 0;
    }
};

}  // namespace

TEST_F(VmRun, ArithmeticOnTheStack) {
    integer(7);
    integer(2);
    emit(new VmOpBinaryDiv());
    emit(new VmOpReturnValue());
    run();
    ASSERT_EQ(result.tag, TAG_NUMERIC);
    EXPECT_DOUBLE_EQ(result.numeric.value, 3.5);
    EXPECT_EQ(stack.esp, stack.end());
}

TEST_F(VmRun, NullRuleOnEitherSide) {
    null();
    integer(1);
    emit(new VmOpBinarySub());
    integer(1);
    null();
    emit(new VmOpBinaryMul());
    emit(new VmOpBinaryAdd());
    emit(new VmOpReturnValue());
    run();
    EXPECT_EQ(result.tag, TAG_NULL);
}

TEST_F(VmRun, CompareWithNullGivesNull) {
    null();
    integer(1);
    emit(new VmOpBinaryEq());
    emit(new VmOpReturnValue());
    run();
    EXPECT_EQ(result.tag, TAG_NULL);
}

TEST_F(VmRun, ConditionalJumpTakesFalsePathOnNull) {
    null();
    size_t branch = emit(new VmOpCondFalseOrNullJump());
    integer(1);
    emit(new VmOpReturnValue());
    size_t else_part = integer(2);
    emit(new VmOpReturnValue());
    program.set_jump_target(branch, else_part);
    run();
    EXPECT_EQ(result.integer, 2);
}

TEST_F(VmRun, ConditionOnANumberIsError11) {
    integer(1);
    size_t branch = emit(new VmOpCondFalseOrNullJump());
    size_t end = emit(new VmOpReturn());
    program.set_jump_target(branch, end);
    EXPECT_EQ(error_of_run(), 11);
    EXPECT_EQ(stack.esp, stack.end());
}

// left OR right: a true left jumps over the right side keeping its value;
// otherwise the merge keeps null when the right side is false.
struct OrCase {
    int left, right, expected;  // 0 false, 1 null, 2 true
};

TEST_F(VmRun, OrWithTheNullMerge) {
    for (OrCase c : {OrCase{1, 0, 1}, OrCase{1, 2, 2}, OrCase{2, 1, 2}, OrCase{0, 1, 1},
                     OrCase{0, 0, 0}}) {
        Program p;
        auto push = [&](int v) {
            return p.emit(v == 0 ? static_cast<VmOp*>(new VmOpReadConstFalse())
                          : v == 1 ? static_cast<VmOp*>(new VmOpReadConstNull())
                                   : static_cast<VmOp*>(new VmOpReadConstTrue()));
        };
        push(c.left);
        size_t skip = p.emit(new VmOpCondTrueJumpKeepEsp());
        push(c.right);
        p.emit(new VmOpCondTrueOrNullMerge2P());
        size_t end = p.emit(new VmOpReturnValue());
        p.set_jump_target(skip, end);
        Variant r;
        execute_program(&stack, 0, false, &p, &r);
        EXPECT_EQ(r.tag, c.expected) << c.left << " OR " << c.right;
    }
}

TEST_F(VmRun, ProgramWithoutReturnValueReturnsTrue) {
    emit(new VmOpReturn());
    run();
    EXPECT_EQ(result.tag, TAG_TRUE);
}

TEST_F(VmRun, StackOverflowIs9010AndLeavesEspValid) {
    VmStack small(nullptr, 3, 4);
    for (int i = 0; i < 4; ++i) integer(i);
    emit(new VmOpReturn());
    try {
        execute_program(&small, 0, false, &program, &result);
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 9010);
    }
    EXPECT_EQ(small.esp, small.end());
    // A stack of no slots at all overflows on the first push.
    VmStack none(nullptr, 0, 0);
    EXPECT_THROW(execute_program(&none, 0, false, &program, &result), RuntimeError);
    EXPECT_EQ(none.esp, none.end());
}

// FOR i = start TO limit STEP step: sums i into local 2.
long long run_for_loop(VmStack& stack, long long start, long long limit, long long step) {
    Program p;
    p.local_names = {{1, 1}, {2, 2}};
    p.emit(new VmOpReadConstInteger(start));
    p.emit(new VmOpWriteMemvarByOffset(1));
    p.emit(new VmOpReadConstInteger(0));
    p.emit(new VmOpWriteMemvarByOffset(2));
    size_t test = p.emit(new VmOpReadConstInteger(step));
    p.emit(new VmOpReadConstInteger(limit));
    p.emit(new VmOpReadLocalMemvarByOffset(1));
    size_t exit_jump = p.emit(new VmOpForCondFalseJump());
    p.emit(new VmOpReadLocalMemvarByOffset(1));
    p.emit(new VmOpReadAddWriteLocal(2));
    p.emit(new VmOpReadConstInteger(step));
    p.emit(new VmOpReadAddWriteLocal(1));
    size_t back = p.emit(new VmOpJump());
    p.set_jump_target(back, test);
    size_t done = p.emit(new VmOpReadLocalMemvarByOffset(2));
    p.emit(new VmOpReturnValue());
    p.set_jump_target(exit_jump, done);
    Variant r;
    execute_program(&stack, 0, false, &p, &r);
    return r.integer;
}

TEST_F(VmRun, ForLoopEndTestFollowsTheStepSign) {
    EXPECT_EQ(run_for_loop(stack, 1, 10, 1), 55);
    EXPECT_EQ(run_for_loop(stack, 10, 1, -3), 10 + 7 + 4 + 1);
    EXPECT_EQ(run_for_loop(stack, 5, 1, 1), 0);
    EXPECT_EQ(stack.esp, stack.end());
}

TEST_F(VmRun, UnbuiltInstructionNamesItsClass) {
    emit(new VmOpReadFieldByIndex(1));
    emit(new VmOpReturn());
    try {
        run();
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 1001);
        EXPECT_EQ(e.parameter.u8str(), "VmOpReadFieldByIndex");
    }
}

TEST_F(VmRun, UnaryOperators) {
    null();
    emit(new VmOpUnaryNot());
    integer(5);
    emit(new VmOpUnaryNeg());
    emit(new VmOpBinaryAdd());  // null + -5 stays null
    emit(new VmOpReturnValue());
    run();
    EXPECT_EQ(result.tag, TAG_NULL);

    Program p;
    p.emit(new VmOpReadConstInteger(3));
    p.emit(new VmOpUnaryNot());
    p.emit(new VmOpReturn());
    try {
        execute_program(&stack, 0, false, &p, &result);
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 11);
    }
}
