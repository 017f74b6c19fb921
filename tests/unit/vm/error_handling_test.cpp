// Error handling in frames: TRY scopes across frames, catch filters, THROW,
// QUIT, and the report and dialog for errors nothing catches.
#include <deque>
#include <string>
#include <vector>

#include "builtins/error_functions.h"
#include "compiler/module.h"
#include "objects/exception_object.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "tests/unit/vm/vm_test_support.h"
#include "values/symtable.h"
#include "vm/error_handling.h"
#include "vm/try_scope.h"

using namespace zobase;
using namespace zobase::testing;

namespace {

enum : uint32_t { SYM_USERVALUE = 300 };

// Answers the error dialog from a script and keeps what was written to stderr.
class ScriptedScreen : public Screen {
public:
    std::vector<int> answers;
    std::vector<int> buttons_asked;
    std::string errors;

    int msgbox(const String&, const String&, int buttons, int default_button, int) override {
        EXPECT_EQ(default_button, MSGBOX_ABORT);
        buttons_asked.push_back(buttons);
        size_t asked = buttons_asked.size() - 1;
        return asked < answers.size() ? answers[asked] : MSGBOX_ABORT;
    }
    void internal_out(const String&) override {}
    void internal_err(const String& text) override { errors += text.u8str(); }
};

void delete_object(VmStack*, Object* object) { delete object; }

// What the probe command saw of the stack when the catch block ran.
struct probe_st {
    int calls = 0;
    size_t privates_x = 0;
    long long x = 0;
} probe;

void probe_command(VmStack* stack, unsigned long long) {
    ++probe.calls;
    probe.privates_x = stack->names.count(SYM_X);
    Memvar* x;
    probe.x = stack->get_memvar(SYM_X, &x) ? x->integer : -1;
}

void quit_command(VmStack*, unsigned long long) { throw RuntimeQuit(INTERRUPT_CANCEL); }
void fail_command(VmStack*, unsigned long long) { throw RuntimeError(12, String("G")); }

// Raises 12 while the private X is below 2.
void fail_while_x_small(VmStack* stack, unsigned long long) {
    Memvar* x;
    if (!stack->get_memvar(SYM_X, &x) || x->integer < 2) throw RuntimeError(12, String("X"));
}

class VmErrors : public VmFixture {
protected:
    object_destroy_hook saved_hook = destroy_object_hook;
    ScriptedScreen screen;
    Runtime runtime{&screen};
    Module module{String("test.prg")};

    VmErrors() {
        destroy_object_hook = delete_object;
        resolver.names[SYM_USERVALUE] = "UserValue";
        probe = {};
    }
    ~VmErrors() override {
        result.release(&stack);
        destroy_object_hook = saved_hook;
    }

    void with_dialog() { stack.runtime = &runtime; }

    static size_t emit_at(Program& p, VmOp* op, uint64_t statement) {
        op->statement = statement;
        return p.emit(op);
    }

    UserFunction* make_function(Program* p) {
        functions.emplace_back(p);
        return &functions.back();
    }

    // A function whose body makes X private with the given value and then runs tail.
    UserFunction* private_x_then(long long value, VmOp* tail) {
        auto* p = new Program;
        p->emit(new VmOpDefPrivateSymbol(SYM_X));
        emit_assign(*p, SYM_X, value);
        p->emit(tail);
        p->emit(new VmOpReturn());
        return make_function(p);
    }

    ExceptionObject* object_in_result() {
        EXPECT_EQ(result.tag, TAG_OBJECT);
        return static_cast<ExceptionObject*>(result.object.object);
    }

    std::deque<UserFunction> functions;
};

// Filter that compares the caught object's ErrorNo with a number.
Program* error_number_filter(long long number) {
    auto* filter = new Program;
    filter->parameter_count = 1;
    filter->local_names = {{SYM_Y, 1}};
    filter->emit(new VmOpEspAlloc());
    filter->emit(new VmOpReadLocalMemvarByOffset(1));
    filter->emit(new VmOpObjectRead(SYMBOL_ERRORNO, 0));
    emit_integer(*filter, number);
    filter->emit(new VmOpBinaryEq());
    filter->emit(new VmOpReturnValue());
    return filter;
}

Program* constant_filter(bool accepts) {
    auto* filter = new Program;
    filter->emit(accepts ? static_cast<VmOp*>(new VmOpReadConstTrue())
                         : static_cast<VmOp*>(new VmOpReadConstFalse()));
    filter->emit(new VmOpReturnValue());
    return filter;
}

}  // namespace

// TRY  <call f>  CATCH TO Z  <probe>  RETURN Z; the call fails three frames down.
TEST_F(VmErrors, TryInCallerCatchesErrorThreeFramesDeepAfterTheirPrivatesAreGone) {
    UserFunction* deepest = private_x_then(30, new VmOpReadMemvarByName(SYM_G));
    UserFunction* middle = private_x_then(20, new VmOpCallUserFunction(deepest, 0));
    UserFunction* outer = private_x_then(10, new VmOpCallUserFunction(middle, 0));

    Program main;
    emit_assign(main, SYM_X, 1);
    auto* scope = new VmOpTryEnter(2, 5);
    main.emit(scope);                                // 2
    main.emit(new VmOpEspAlloc());                   // 3
    main.emit(new VmOpCallUserFunction(outer, 0));   // 4
    size_t jump = main.emit(new VmOpJump());         // 5
    size_t handler = main.emit(new VmOpResetEsp());  // 6
    main.emit(new VmOpCallNativeVoid(probe_command, 0));
    main.emit(new VmOpReadMemvarByName(SYM_Z));
    main.emit(new VmOpReturnValue());
    size_t end = main.emit(new VmOpReturn());
    main.set_jump_target(jump, end);
    scope->add_catch(handler, SYM_Z, nullptr);

    EXPECT_EQ(error_of(main), 0);
    EXPECT_EQ(probe.calls, 1);
    EXPECT_EQ(probe.privates_x, 1u);
    EXPECT_EQ(probe.x, 1) << "the caller's X is visible again in the catch block";
    ExceptionObject* caught = object_in_result();
    EXPECT_EQ(caught->error_no.integer, 12);
    EXPECT_EQ(caught->message.str().u8str(), "Variable 'G' is not found.");
    EXPECT_EQ(caught->detail.str().u8str(), "G");
    EXPECT_EQ(stack.errors.size(), 1u);
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmErrors, FailingFilterFallsToTheNextCatchRecord) {
    Program main;
    auto* scope = new VmOpTryEnter(0, 2);
    main.emit(scope);                                     // 0
    main.emit(new VmOpCallNativeVoid(fail_command, 0));  // 1
    size_t first = main.emit(new VmOpReadConstInteger(1));
    main.emit(new VmOpReturnValue());
    size_t second = main.emit(new VmOpReadConstInteger(2));
    main.emit(new VmOpReturnValue());
    size_t third = main.emit(new VmOpReadConstInteger(3));
    main.emit(new VmOpReturnValue());
    scope->add_catch(first, 0, constant_filter(false));
    scope->add_catch(second, 0, error_number_filter(11));
    scope->add_catch(third, SYM_Z, error_number_filter(12));

    EXPECT_EQ(error_of(main), 0);
    EXPECT_EQ(result.integer, 3);
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmErrors, ScopeCountsOnlyInsideItsRegionAndInnerScopeWinsFirst) {
    Program main;
    auto* outer = new VmOpTryEnter(0, 4);
    auto* inner = new VmOpTryEnter(1, 3);
    main.emit(outer);                                    // 0
    main.emit(inner);                                    // 1
    main.emit(new VmOpCallNativeVoid(fail_command, 0));  // 2: both regions
    main.emit(new VmOpCallNativeVoid(fail_command, 0));  // 3: outer region only
    size_t inner_handler = main.emit(new VmOpJump());    // 4
    size_t outer_handler = main.emit(new VmOpReadConstInteger(20));
    main.emit(new VmOpReturnValue());
    main.set_jump_target(inner_handler, 3);
    inner->add_catch(inner_handler, 0, nullptr);
    outer->add_catch(outer_handler, 0, nullptr);

    EXPECT_EQ(error_of(main), 0);
    EXPECT_EQ(result.integer, 20);
}

TEST_F(VmErrors, ErrorOutsideEveryRegionLeavesWithItsNumberAndTheHandledFlag) {
    Program main;
    auto* scope = new VmOpTryEnter(0, 1);
    main.emit(scope);
    main.emit(new VmOpCallNativeVoid(fail_command, 0));
    main.emit(new VmOpReturn());
    scope->add_catch(2, 0, nullptr);

    try {
        run(main);
        FAIL() << "the error was swallowed";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number, 12);
        EXPECT_NE(error.recovery, 0);
    }
    EXPECT_EQ(GetLastError(&stack), 12u);
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmErrors, ThrowReachesTheCallersHandlerWithTheValueInUserValue) {
    auto* thrower = new Program;
    emit_integer(*thrower, 42);
    thrower->emit(new VmOpCallNativeVoid(void_stackcall_throw, 1));
    thrower->emit(new VmOpReturn());
    UserFunction* function = make_function(thrower);

    Program main;
    auto* scope = new VmOpTryEnter(0, 3);
    main.emit(scope);
    main.emit(new VmOpEspAlloc());
    main.emit(new VmOpCallUserFunction(function, 0));
    size_t handler = main.emit(new VmOpResetEsp());
    main.emit(new VmOpEspAlloc());
    main.emit(new VmOpReadMemvarByName(SYM_Z));
    main.emit(new VmOpObjectRead(SYM_USERVALUE, 0));
    main.emit(new VmOpReturnValue());
    scope->add_catch(handler, SYM_Z, nullptr);

    EXPECT_EQ(error_of(main), 0);
    EXPECT_EQ(result.integer, 42);
    EXPECT_EQ(stack.pending_throw.value.tag, TAG_FALSE) << "the handler frame released it";
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmErrors, ThrowWithoutHandlerRaises2059) {
    Program main;
    emit_integer(main, 1);
    main.emit(new VmOpCallNativeVoid(void_stackcall_throw, 1));
    main.emit(new VmOpReturn());
    EXPECT_EQ(error_of(main), 2059);
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmErrors, QuitInsideTryIsNotCaughtAndUnwindsEveryFrame) {
    UserFunction* function = private_x_then(5, new VmOpCallNativeVoid(quit_command, 0));

    Program main;
    auto* scope = new VmOpTryEnter(0, 3);
    main.emit(scope);
    main.emit(new VmOpEspAlloc());
    main.emit(new VmOpCallUserFunction(function, 0));
    size_t handler = main.emit(new VmOpReturn());
    scope->add_catch(handler, 0, nullptr);

    try {
        run(main);
        FAIL() << "QUIT was caught";
    } catch (const RuntimeQuit& quit) {
        EXPECT_EQ(quit.type, INTERRUPT_CANCEL);
    }
    EXPECT_TRUE(stack.names.empty());
    EXPECT_TRUE(stack_at_rest());
}

// X = 0 (statement 1); X += 1, fail while X < 2 (statement 2); RETURN X (statement 3).
TEST_F(VmErrors, RetryRunsTheWholeStatementAgain) {
    with_dialog();
    screen.answers = {MSGBOX_RETRY};
    Program main;
    main.module = &module;
    emit_at(main, new VmOpReadConstInteger(0LL), 1);
    emit_at(main, new VmOpWriteMemarByName(SYM_X), 1);
    emit_at(main, new VmOpReadConstInteger(1LL), 2);
    emit_at(main, new VmOpReadAddWrite(SYM_X), 2);
    emit_at(main, new VmOpCallNativeVoid(fail_while_x_small, 0), 2);
    emit_at(main, new VmOpReadMemvarByName(SYM_X), 3);
    emit_at(main, new VmOpReturnValue(), 3);

    EXPECT_EQ(error_of(main), 0);
    EXPECT_EQ(result.integer, 2);
    EXPECT_EQ(screen.buttons_asked, std::vector<int>{104});
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmErrors, IgnoreContinuesWithTheNextStatementAndReportsThePlace) {
    with_dialog();
    screen.answers = {MSGBOX_IGNORE};
    Program main;
    main.module = &module;
    main.name = String("MAIN");
    emit_at(main, new VmOpReadConstInteger(7LL), 1);
    size_t failing = emit_at(main, new VmOpCallNativeVoid(fail_command, 0), 1);
    emit_at(main, new VmOpReadConstInteger(5LL), 2);
    emit_at(main, new VmOpReturnValue(), 2);
    document_location_st place{};
    place.start.line = 3;
    place.start.column = 9;
    main.locations.push_back({failing, place});

    EXPECT_EQ(error_of(main), 0);
    EXPECT_EQ(result.integer, 5);
    EXPECT_EQ(screen.errors,
              "(Runtime error) 12 - Variable 'G' is not found.\n"
              " in test.prg, line 3, column 9, program MAIN\n");
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmErrors, IgnoreInTheLastStatementStaysInsideTheCode) {
    with_dialog();
    screen.answers = {MSGBOX_IGNORE};
    Program main;
    main.module = &module;
    emit_at(main, new VmOpCallNativeVoid(fail_command, 0), 1);
    emit_at(main, new VmOpReturn(), 1);
    EXPECT_EQ(error_of(main), 0);
    EXPECT_EQ(result.tag, TAG_TRUE);
}

TEST_F(VmErrors, AbortPrintsTheTraceCountingDownToOneAndAsksOnce) {
    with_dialog();
    screen.answers = {MSGBOX_ABORT};
    auto named = [this](Program* p, const char* name) {
        p->module = &module;
        p->name = String(name);
        return p;
    };
    auto* deepest = named(new Program, "DEEPEST");
    deepest->emit(new VmOpCallNativeVoid(fail_command, 0));
    deepest->emit(new VmOpReturn());
    auto* middle = named(new Program, "MIDDLE");
    middle->emit(new VmOpEspAlloc());
    middle->emit(new VmOpCallUserFunction(make_function(deepest), 0));
    middle->emit(new VmOpReturn());
    Program main;
    named(&main, "MAIN");
    main.emit(new VmOpEspAlloc());
    main.emit(new VmOpCallUserFunction(make_function(middle), 0));
    main.emit(new VmOpReturn());

    EXPECT_EQ(error_of(main), 12);
    EXPECT_EQ(screen.buttons_asked.size(), 1u);
    std::string expected_trace =
        "(Stack trace)\n"
        " #003 in test.prg, line 0, column 0, program DEEPEST\n"
        " #002 in test.prg, line 0, column 0, program MIDDLE\n"
        " #001 in test.prg, line 0, column 0, program MAIN\n";
    ASSERT_GE(screen.errors.size(), expected_trace.size());
    EXPECT_EQ(screen.errors.substr(screen.errors.size() - expected_trace.size()), expected_trace);
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmErrors, ProgramWithoutModuleGetsNoReportAndNoDialog) {
    with_dialog();
    Program text;
    text.emit(new VmOpCallNativeVoid(fail_command, 0));
    text.emit(new VmOpReturn());
    EXPECT_EQ(error_of(text), 12);
    EXPECT_TRUE(screen.buttons_asked.empty());
    EXPECT_TRUE(screen.errors.empty());
}

TEST_F(VmErrors, UnknownDialogAnswerIsAnAssertion) {
    with_dialog();
    screen.answers = {1};
    Program main;
    main.module = &module;
    main.emit(new VmOpCallNativeVoid(fail_command, 0));
    main.emit(new VmOpReturn());
    EXPECT_THROW(run(main), assert_failed_exception);
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmErrors, TryInsideALoopIsEnteredOnceInTheScopeList) {
    VmFrame frame{};
    VmOpTryEnter scope(0, 1);
    enter_try_scope(&frame, &scope);
    enter_try_scope(&frame, &scope);
    ASSERT_NE(frame.try_scopes, nullptr);
    EXPECT_EQ(frame.try_scopes->next, nullptr);
    free_try_scopes(&frame);
    EXPECT_EQ(frame.try_scopes, nullptr);
}
