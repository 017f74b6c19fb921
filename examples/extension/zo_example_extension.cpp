// An extension library: SET LIBRARY TO finds its description through
// zo1_describe_module and registers its functions and its command as the
// core library's are registered (the row shapes of compiler/library.h). It
// also exports plain C functions for DECLARE.
//
//   SET LIBRARY TO libzo_example_extension.so
//   ? zoex_add(2, 3)                 && 5
//   ? zoex_greet("Ada")              && Hello, Ada!
//   DO zoex_remember WITH "note"
//   ? zoex_recall()                  && note
#include <csignal>
#include <cstring>
#include <string>

#include "compiler/library.h"
#include "values/variant.h"
#include "vm/param.h"

using namespace zobase;

namespace {

String remembered;

// Arguments arrive converted to the row's signature: "II" gives two integers.
void zoex_add(VmStack* stack, unsigned long long, Variant* result) {
    result->set_integer(Param(stack, 1)->integer + Param(stack, 2)->integer);
}

void zoex_greet(VmStack* stack, unsigned long long, Variant* result) {
    std::string text = "Hello, " + Param(stack, 1)->follow()->str().u8str() + "!";
    result->set_string(String(text.c_str()));
}

// The second argument is optional.
void zoex_repeat(VmStack* stack, unsigned long long argc, Variant* result) {
    long long times = argc > 1 ? Param(stack, 2)->integer : 2;
    std::string one = Param(stack, 1)->follow()->str().u8str(), text;
    for (long long i = 0; i < times; ++i) text += one;
    result->set_string(String(text.c_str()));
}

void zoex_remember(VmStack* stack, unsigned long long) { remembered = Param(stack, 1)->follow()->str(); }

void zoex_recall(VmStack*, unsigned long long, Variant* result) { result->set_string(remembered); }

const library_function_row_st functions[] = {
    {"zoex_add", "II", zoex_add, "I", 0},
    {"zoex_greet", "C", zoex_greet, "C", 0},
    {"zoex_repeat", "C|I", zoex_repeat, "C", 0},
    {"zoex_recall", "", zoex_recall, "C", 0},
    {nullptr, nullptr, nullptr, nullptr, 0},
};

const library_command_row_st commands[] = {
    {"zoex_remember", "C", zoex_remember},
    {nullptr, nullptr, nullptr},
};

const module_description_st description = {nullptr, nullptr, functions, commands, nullptr, nullptr, nullptr};

}  // namespace

extern "C" {

__attribute__((visibility("default"))) const module_description_st* zo1_describe_module() { return &description; }

// For DECLARE: each parameter kind. Writes "<text> x <factor>" into `buffer`
// (at most `*count` bytes with its NUL), the length into `*count`, and
// returns `base` plus the length.
__attribute__((visibility("default"))) int zoex_describe(int base, double factor, const char* text, char* buffer,
                                                         int* count) {
    std::string made = std::string(text) + " x " + std::to_string(factor).substr(0, 4);
    if (*count > 0) {
        size_t room = static_cast<size_t>(*count) - 1;
        std::memcpy(buffer, made.c_str(), std::min(room, made.size()));
        buffer[std::min(room, made.size())] = 0;
    }
    *count = static_cast<int>(made.size());
    return base + static_cast<int>(made.size());
}

__attribute__((visibility("default"))) double zoex_half(double value) { return value / 2; }

// Crashes as a read through a bad pointer would: DECLARE reports error 2027.
// The signal is raised rather than provoked so that sanitizer builds see no
// undefined behaviour here, only the fault the caller must survive.
__attribute__((visibility("default"))) int zoex_crash(int*) {
    raise(SIGSEGV);
    return 0;
}
}
