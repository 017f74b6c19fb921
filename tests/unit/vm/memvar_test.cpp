// LOCAL, PRIVATE, PUBLIC and PARAMETERS over real frames.
#include "tests/unit/vm/vm_test_support.h"

using namespace zobase;
using namespace zobase::testing;

namespace {

class VmMemvar : public VmFixture {};

}  // namespace

// The slot form is declarations/scopes.prg; this is the by-name form of macros.
TEST_F(VmMemvar, DynamicLocalOverAPrivateOfTheSameFrameIs1960) {
    std::string name;
    Program dynamic;
    emit_assign(dynamic, SYM_Y, 1);
    dynamic.emit(new VmOpDefLocal(SYM_Y));
    dynamic.emit(new VmOpReturn());
    EXPECT_EQ(error_of(dynamic, &name), 1960);
    EXPECT_EQ(name, "Y");
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmMemvar, AFrameSlotHidesOnlyOnceDeclaredLocal) {
    // x = 1 in the caller; the callee reads x before and after LOCAL x.
    auto* body = new Program;
    body->local_names = {{SYM_X, 1}};
    body->emit(new VmOpReadMemvarByName(SYM_X));  // caller's private: 1
    body->emit(new VmOpDefLocalOffset(1, SYM_X));
    emit_integer(*body, 10);
    body->emit(new VmOpWriteMemvarByOffset(1));
    body->emit(new VmOpReadMemvarByName(SYM_X));  // the local now: 10
    body->emit(new VmOpBinaryAdd());
    body->emit(new VmOpReturnValue());
    UserFunction f(body);

    Program main;
    emit_assign(main, SYM_X, 1);
    main.emit(new VmOpEspAlloc());
    emit_call(main, &f);
    main.emit(new VmOpReadMemvarByName(SYM_X));
    main.emit(new VmOpBinaryAdd());  // 11 + 1: the caller's x untouched
    main.emit(new VmOpReturnValue());
    run(main);
    EXPECT_EQ(result.integer, 12);
}

TEST_F(VmMemvar, ParametersMakeTheArgumentVisibleByName) {
    // PROCEDURE g: PARAMETERS x; RETURN f() where f reads x
    auto* reader_body = new Program;
    reader_body->emit(new VmOpReadMemvarByName(SYM_X));
    reader_body->emit(new VmOpReturnValue());
    UserFunction reader(reader_body);

    auto* body = new Program;
    body->parameter_count = 1;
    body->local_names = {{SYM_X, 1}};
    body->emit(new VmOpInitParameter(1, SYM_X));
    body->emit(new VmOpEspAlloc());
    emit_call(*body, &reader);
    body->emit(new VmOpReturnValue());
    UserFunction g(body);

    Program main;
    emit_assign(main, SYM_X, 1);
    main.emit(new VmOpEspAlloc());
    emit_integer(main, 42);
    emit_call(main, &g, 1);
    main.emit(new VmOpReadMemvarByName(SYM_X));
    main.emit(new VmOpBinarySub());
    main.emit(new VmOpReturnValue());
    run(main);
    EXPECT_EQ(result.integer, 41);
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmMemvar, AnErrorThreeFramesDeepRestoresEveryHiddenVariable) {
    auto* deepest_body = new Program;
    deepest_body->emit(new VmOpDefPrivateSymbol(SYM_X));
    emit_assign(*deepest_body, SYM_X, 3);
    deepest_body->emit(new VmOpReadMemvarByName(SYM_Y));  // 12
    deepest_body->emit(new VmOpReturnValue());
    UserFunction deepest(deepest_body);

    std::vector<std::unique_ptr<UserFunction>> chain;
    const UserFunction* next = &deepest;
    for (long long level = 2; level >= 1; --level) {
        auto* body = new Program;
        body->emit(new VmOpDefPrivateSymbol(SYM_X));
        emit_assign(*body, SYM_X, level);
        body->emit(new VmOpEspAlloc());
        emit_call(*body, next);
        body->emit(new VmOpReturnValue());
        chain.emplace_back(new UserFunction(body));
        next = chain.back().get();
    }

    Program main;
    emit_assign(main, SYM_X, 100);
    main.emit(new VmOpEspAlloc());
    emit_call(main, next);
    main.emit(new VmOpReturnValue());
    EXPECT_EQ(error_of(main), 12);
    EXPECT_TRUE(stack_at_rest());
    EXPECT_TRUE(stack.names.empty());  // main's own private went with main's frame

    // A private made at rest is hidden by the frames and comes back.
    Memvar* x;
    stack.alloc_undefined_memvar(SYM_X, &x);
    x->set_integer(55LL);
    Program caller;
    caller.emit(new VmOpEspAlloc());
    emit_call(caller, next);
    caller.emit(new VmOpReturnValue());
    EXPECT_EQ(error_of(caller), 12);
    ASSERT_EQ(stack.names.count(SYM_X), 1u);
    EXPECT_EQ(stack.names.at(SYM_X), x);
    EXPECT_EQ(x->integer, 55);
    EXPECT_EQ(x->kind, MEMVAR_PRIVATE);
}

TEST_F(VmMemvar, AFullUndoStackRaises103AndUnwinds) {
    VmStack small(nullptr, 64, 2);
    small.resolver = &resolver;
    Program main;
    emit_assign(main, SYM_X, 1);
    emit_assign(main, SYM_Y, 2);
    emit_assign(main, SYM_Z, 3);
    main.emit(new VmOpReturn());
    int number = 0;
    try {
        execute_program(&small, 0, false, &main, &result);
    } catch (const RuntimeError& error) {
        number = error.number;
    }
    EXPECT_EQ(number, 103);
    EXPECT_EQ(small.esp, small.end());
    EXPECT_EQ(small.undo_top, small.undo_end());
    EXPECT_TRUE(small.names.empty());
}
