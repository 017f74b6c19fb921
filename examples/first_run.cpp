// A host that builds small programs of instructions in memory and runs them
// on the runtime's stack machine: no source text, no compiler.
#include <initializer_list>
#include <string>

#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "vm/vm_run.h"

using namespace zobase;

namespace {

// Runs `ops` followed by a return of the top value, and prints the result.
void show(Screen* screen, VmStack* stack, const char* label, std::initializer_list<VmOp*> ops) {
    Program program;
    for (VmOp* op : ops) program.emit(op);
    program.emit(new VmOpReturnValue());
    Variant result;
    execute_program(stack, 0, false, &program, &result);
    std::string line = std::string(label) + " = " + result.to_string().u8str() + "  (" +
                       result.vartype().u8str() + ")";
    screen->outendl(String(line.c_str()));
    result.release(stack);
}

money_type_st money(long long ten_thousandths) {
    return {static_cast<int32_t>(ten_thousandths >> 63), static_cast<uint32_t>(ten_thousandths >> 32),
            static_cast<uint32_t>(ten_thousandths), 0};
}

}  // namespace

int main() {
    Screen* screen = CreateScreen(0);
    Runtime* runtime = CreateRuntime(screen);
    VmStack* stack = nullptr;
    GetMainStack(runtime, &stack);

    show(screen, stack, "7 / 2", {new VmOpReadConstInteger(7), new VmOpReadConstInteger(2),
                                  new VmOpBinaryDiv()});
    show(screen, stack, "6 / 2", {new VmOpReadConstInteger(6), new VmOpReadConstInteger(2),
                                  new VmOpBinaryDiv()});
    show(screen, stack, "2 ^ 10", {new VmOpReadConstInteger(2), new VmOpReadConstInteger(10),
                                   new VmOpBinaryPow()});
    show(screen, stack, "$1.2345 * 2", {new VmOpReadConstMoney(money(12345)),
                                        new VmOpReadConstInteger(2), new VmOpBinaryMul()});
    show(screen, stack, "{^2026-11-21} + 30", {new VmOpReadConstDate(date_st{2461366}),
                                               new VmOpReadConstInteger(30),
                                               new VmOpBinaryAdd()});
    show(screen, stack, "0.1 + 0.2 = 0.3",
         {new VmOpReadConstNumeric({0.1, 1}), new VmOpReadConstNumeric({0.2, 1}),
          new VmOpBinaryAdd(), new VmOpReadConstNumeric({0.3, 1}), new VmOpBinaryEq()});
    show(screen, stack, "9223372036854775807 + 1",
         {new VmOpReadConstInteger(9223372036854775807LL), new VmOpReadConstInteger(1),
          new VmOpBinaryAdd()});
    show(screen, stack, ".NULL. - 1", {new VmOpReadConstNull(), new VmOpReadConstInteger(1),
                                       new VmOpBinarySub()});
    show(screen, stack, "7 % -3", {new VmOpReadConstInteger(7), new VmOpReadConstInteger(-3),
                                   new VmOpBinaryMod()});

    ReleaseRuntime(runtime);
    ReleaseScreen(screen);
    return 0;
}
