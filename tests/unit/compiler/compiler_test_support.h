#pragma once
// A runtime whose screen keeps what it is given, and helpers to compile
// one expression and look at the instructions.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "builtins/library.h"
#include "compiler/build_input.h"
#include "compiler/compiler.h"
#include "compiler/expression.h"
#include "frontend/parser.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "values/symtable.h"
#include "vm/vm_run.h"
#include "vm/vm_stack.h"

namespace zobase::testing {

class CaptureScreen : public Screen {
public:
    std::string output, errors;
    void internal_out(const String& text) override { output += text.u8str(); }
    void internal_err(const String& text) override { errors += text.u8str(); }
};

class CompilerFixture : public ::testing::Test {
protected:
    CaptureScreen screen;
    Runtime* runtime = Runtime::create_instance(&screen);
    VmStack* stack = runtime->get_main_stack();
    Compiler compiler{stack};
    CodePath path{&compiler};

    CompilerFixture() {
        compiler.libraries.push_back(runtime->library());
        compiler.reset(COMPILER_FLAGS_COMMAND, true);
    }
    ~CompilerFixture() override { ReleaseRuntime(runtime); }

    // Compiles one expression with folding into the compiler's list.
    compiler_type_info_st compile(const char* text) {
        std::vector<parse_error_st> errors;
        std::unique_ptr<Operand> operand(parse_expression_text(text, errors));
        EXPECT_TRUE(errors.empty()) << text;
        compiler_type_info_st type{};
        if (operand) __compiletime_compact_constexpr(operand.get(), &compiler.code, path, &type);
        return type;
    }

    std::vector<uint8_t> opcodes() const {
        std::vector<uint8_t> result;
        for (const code_item_st& item : compiler.code.items)
            if (item.kind == CODE_ITEM_INSTRUCTION) result.push_back(item.op->opcode);
        return result;
    }

    const VmOp* instruction(size_t n) const {
        for (const code_item_st& item : compiler.code.items)
            if (item.kind == CODE_ITEM_INSTRUCTION && n-- == 0) return item.op;
        return nullptr;
    }

    int run(const char* text) { return runtime->run_command(String(text)); }
};

}  // namespace zobase::testing
