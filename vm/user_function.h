#pragma once
// The callable form of a compiled function or procedure; owns its Program.
#include "base/export.h"
#include "values/variant.h"
#include "vm/program.h"

namespace zobase {

class VmStack;

class ZO_API UserFunction {
public:
    explicit UserFunction(Program* program) : program_(program) {}
    virtual ~UserFunction();
    UserFunction(const UserFunction&) = delete;
    UserFunction& operator=(const UserFunction&) = delete;

    // Runs the function over the argc arguments already on the stack.
    virtual void exec(VmStack* stack, unsigned long long argc, bool has_this, Variant* ret) const;

    const Program* program() const noexcept { return program_; }

private:
    Program* program_;
};

}  // namespace zobase
