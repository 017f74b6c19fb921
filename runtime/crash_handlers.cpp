// Crash reporting: the handlers print the chain of open CallTraceScopes.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "base/call_trace.h"
#include "runtime/runtime.h"
#include "values/error.h"

namespace zobase {

void (*old_sig_ABRT_handler)(int) = nullptr;
void (*old_sig_SEGV_handler)(int) = nullptr;
void (*old_terminate_handler)() = nullptr;

namespace {

void print_call_trace() {
    for (CallTraceScope* scope = CallTraceScope::newest(); scope; scope = scope->previous)
        std::fprintf(stderr, "%s\n", scope->name);
}

// Ends the process by the signal itself, so the parent sees the real cause.
[[noreturn]] void raise_and_abort(int signal) {
    std::signal(signal, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
    std::raise(signal);
    std::abort();
}

void report_signal(const char* text, int signal, void (*previous)(int)) {
    std::fputs(text, stderr);
    print_call_trace();
    if (previous) previous(signal);
    else raise_and_abort(signal);
}

void continue_termination() {
    if (old_terminate_handler) old_terminate_handler();
    std::exit(1);
}

}  // namespace

void sig_ABRT_handler(int signal) {
    report_signal("Program abnormally terminated after SIGABRT\n", signal, old_sig_ABRT_handler);
}

void sig_SEGV_handler(int signal) {
    report_signal("Program abnormally terminated after SIGSEGV\n", signal, old_sig_SEGV_handler);
}

void terminate_handler() {
    std::exception_ptr current = std::current_exception();
    if (!current) {
        std::fputs("Program is being terminated without exception\n", stderr);
        continue_termination();
    }
    try {
        std::rethrow_exception(current);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "Program is being terminated with %s\n", e.what());
    } catch (const assert_failed_exception&) {
        std::fputs("Program is being terminated zobase::assert_failed_exception\n", stderr);
    } catch (...) {
        std::fputs("Program is being terminated with unknown exception\n", stderr);
    }
    continue_termination();
}

}  // namespace zobase
