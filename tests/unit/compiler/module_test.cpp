// Building a whole source file into a module, and linking it.
#include <gtest/gtest.h>

#include <memory>

#include "compiler/build_input.h"
#include "compiler/module.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "values/symtable.h"
#include "vm/vm_stack.h"

namespace zobase::testing {
namespace {

class ModuleScreen : public Screen {
public:
    std::string output, errors;
    void internal_out(const String& text) override { output += text.u8str(); }
    void internal_err(const String& text) override { errors += text.u8str(); }
};

class ModuleBuildTest : public ::testing::Test {
protected:
    ModuleScreen screen;
    Runtime* runtime = Runtime::create_instance(&screen);

    ~ModuleBuildTest() override { ReleaseRuntime(runtime); }

    std::unique_ptr<Module> build(const char* name, const char* text) {
        BuildInput input(runtime->get_main_stack());
        input.import_library(runtime->library());
        return std::unique_ptr<Module>(input.build_module(String(name), String(text)));
    }
    unsigned symbol(const char* name) { return runtime->symbols().symbolize(name); }

    static const VmOp* find_op(const UserFunction* function, uint8_t opcode) {
        const Program* program = function->program();
        for (size_t i = 0; i < program->instruction_count(); ++i)
            if (program->code()[i]->opcode == opcode) return program->code()[i];
        return nullptr;
    }
};

TEST_F(ModuleBuildTest, MainProgramCallsALaterFunctionDirectly) {
    auto module = build("/src/main.prg", "x = later(1)\nFUNCTION later(n)\nRETURN n + 1\n");
    ASSERT_NE(module->main, nullptr);
    EXPECT_EQ(module->entry, module->main);
    const UserFunction* later = module->find_function(symbol("LATER"));
    ASSERT_NE(later, nullptr);
    const auto* call = static_cast<const VmOpCallUserFunction*>(find_op(module->main, OP_CALL_USER_FUNCTION));
    ASSERT_NE(call, nullptr) << "the call was linked to the function";
    EXPECT_EQ(call->function, later);
    EXPECT_EQ(call->n, 1u);
    EXPECT_EQ(find_op(module->main, OP_UNRESOLVED_CALL), nullptr);
}

TEST_F(ModuleBuildTest, UnknownCallsGoByNameAndEmptyFunctionsAreNotDefined) {
    auto module = build("/src/calls.prg", "? elsewhere()\nFUNCTION empty\nFUNCTION other\nRETURN 1\n");
    EXPECT_NE(find_op(module->main, OP_CALL_BY_NAME), nullptr);
    EXPECT_EQ(module->find_function(symbol("empty")), nullptr);
    EXPECT_NE(module->find_function(symbol("other")), nullptr);
}

// The report travels with the error, so that a TRY around a DO can keep it
// from the screen; whoever shows the uncaught error shows the report.
TEST_F(ModuleBuildTest, AllErrorsAreReportedAndTheFirstIsRaised) {
    std::string report;
    try {
        build("/src/bad.prg", "? 1 +\nENDIF\n? (\n");
        FAIL() << "the build succeeded";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number, 10);
        report = error.compile_report.u8str();
    }
    EXPECT_NE(report.find("line 1"), std::string::npos) << report;
    EXPECT_NE(report.find("line 2"), std::string::npos) << report;
    EXPECT_NE(report.find("line 3"), std::string::npos) << report;
    EXPECT_NE(report.find("/src/bad.prg"), std::string::npos);
    EXPECT_EQ(screen.errors, "");
}

}  // namespace
}  // namespace zobase::testing
