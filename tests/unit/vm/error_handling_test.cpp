// Error handling in frames: TRY regions, THROW to a caller, QUIT, and the
// dialog's edge cases (Retry, Ignore, Abort and the trace: tests/lang/errors/).
#include <deque>
#include <string>
#include <vector>

#include "builtins/handlers.h"
#include "compiler/module.h"
#include "objects/exception_object.h"
#include "objects/object.h"
#include "runtime/error_api.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "tests/unit/vm/vm_test_support.h"
#include "values/symtable.h"
#include "vm/error_handling.h"
#include "vm/try_scope.h"

using namespace zobase;
using namespace zobase::testing;

namespace {


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

void quit_command(VmStack*, unsigned long long) { throw RuntimeQuit(INTERRUPT_CANCEL); }
void fail_command(VmStack*, unsigned long long) { throw RuntimeError(12, String("G")); }

class VmErrors : public VmFixture {
protected:
    ScriptedScreen screen;
    Runtime runtime{&screen};
    Module module{String("test.prg")};

    TestClasses classes;
    uint32_t SYM_USERVALUE;

    VmErrors() {
        install_object_destruction();
        classes.add(resolver, "Exception", &exception_class_data, exception_members);
        SYM_USERVALUE = classes.symbols.symbolize("UserValue");
    }
    ~VmErrors() override { result.release(&stack); }

    void with_dialog() {
        stack.runtime = &runtime;
        stack.services = runtime.services();
    }

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

    std::deque<UserFunction> functions;
};

}  // namespace

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
