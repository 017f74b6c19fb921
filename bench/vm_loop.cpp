// Nanoseconds per instruction of the dispatch loop on hand-built loops:
// add, compare and jump over integers, the same over numerics, and a loop
// that also copies a string between locals (the acquire and release tables).
#include <chrono>
#include <cstdio>

#include "vm/vm_run.h"

using namespace zobase;

namespace {

// i = 0; DO WHILE i < limit; i = i + step; ENDDO; RETURN i
// Each round runs 9 instructions.
template <typename Constant>
double ns_per_instruction(const char* label, Constant zero, Constant step, Constant limit,
                          long long rounds) {
    VmStack stack(nullptr, 1024, 64);
    Program p;
    p.local_names = {{1, 1}};
    p.emit(new Constant(zero.value));
    p.emit(new VmOpWriteMemvarByOffset(1));
    size_t test = p.emit(new VmOpReadLocalMemvarByOffset(1));
    p.emit(new Constant(limit.value));
    p.emit(new VmOpBinaryLt());
    size_t exit_jump = p.emit(new VmOpCondFalseOrNullJump());
    p.emit(new VmOpReadLocalMemvarByOffset(1));
    p.emit(new Constant(step.value));
    p.emit(new VmOpBinaryAdd());
    p.emit(new VmOpWriteMemvarByOffset(1));
    size_t back = p.emit(new VmOpJump());
    p.set_jump_target(back, test);
    size_t done = p.emit(new VmOpReadLocalMemvarByOffset(1));
    p.emit(new VmOpReturnValue());
    p.set_jump_target(exit_jump, done);

    Variant result;
    auto start = std::chrono::steady_clock::now();
    execute_program(&stack, 0, false, &p, &result);
    auto elapsed = std::chrono::steady_clock::now() - start;
    double ns = std::chrono::duration<double, std::nano>(elapsed).count();
    double per = ns / (static_cast<double>(rounds) * 9);
    std::printf("%-10s %lld rounds, %.2f ns/instruction, result %s\n", label, rounds, per,
                result.to_string().u8str().c_str());
    return per;
}

// i = 0; s = "text"; DO WHILE i < limit; t = s; i = i + 1; ENDDO; RETURN i
// Each round runs 11 instructions, two of them on a string payload.
double ns_per_instruction_copying_strings(long long rounds) {
    VmStack stack(nullptr, 1024, 64);
    Program p;
    p.local_names = {{1, 1}, {2, 2}, {3, 3}};
    p.emit(new VmOpReadConstInteger(0));
    p.emit(new VmOpWriteMemvarByOffset(1));
    p.emit(new VmOpReadConstString(String("text")));
    p.emit(new VmOpWriteMemvarByOffset(2));
    size_t test = p.emit(new VmOpReadLocalMemvarByOffset(1));
    p.emit(new VmOpReadConstInteger(rounds));
    p.emit(new VmOpBinaryLt());
    size_t exit_jump = p.emit(new VmOpCondFalseOrNullJump());
    p.emit(new VmOpReadLocalMemvarByOffset(2));
    p.emit(new VmOpWriteMemvarByOffset(3));
    p.emit(new VmOpReadLocalMemvarByOffset(1));
    p.emit(new VmOpReadConstInteger(1));
    p.emit(new VmOpBinaryAdd());
    p.emit(new VmOpWriteMemvarByOffset(1));
    size_t back = p.emit(new VmOpJump());
    p.set_jump_target(back, test);
    size_t done = p.emit(new VmOpReadLocalMemvarByOffset(1));
    p.emit(new VmOpReturnValue());
    p.set_jump_target(exit_jump, done);

    Variant result;
    auto start = std::chrono::steady_clock::now();
    execute_program(&stack, 0, false, &p, &result);
    auto elapsed = std::chrono::steady_clock::now() - start;
    double per = std::chrono::duration<double, std::nano>(elapsed).count() / (static_cast<double>(rounds) * 11);
    std::printf("%-10s %lld rounds, %.2f ns/instruction, result %s\n", "string", rounds, per,
                result.to_string().u8str().c_str());
    return per;
}

}  // namespace

int main() {
    const long long rounds = 20'000'000;
    ns_per_instruction("integer", VmOpReadConstInteger(0), VmOpReadConstInteger(1),
                       VmOpReadConstInteger(rounds), rounds);
    ns_per_instruction("numeric", VmOpReadConstNumeric({0.0, 1}), VmOpReadConstNumeric({1.0, 1}),
                       VmOpReadConstNumeric({static_cast<double>(rounds), 1}), rounds);
    ns_per_instruction_copying_strings(rounds);
    return 0;
}
