#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

#include "base/call_trace.h"
#include "runtime/line_editor.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "values/error.h"
#include "vm/vm_stack.h"

using namespace zobase;

// The terminate tests throw from noexcept functions on purpose.
#pragma GCC diagnostic ignored "-Wterminate"

namespace {

class CapturingScreen : public Screen {
public:
    std::string out, err;
    void internal_out(const String& text) override { out += text.u8str(); }
    void internal_err(const String& text) override { err += text.u8str(); }
};

// Runs `body` in a child process with stderr captured; returns what it wrote.
std::string stderr_of_child(void (*body)()) {
    int pipe_fds[2];
    if (pipe(pipe_fds) != 0) return "";
    pid_t pid = fork();
    if (pid == 0) {
        dup2(pipe_fds[1], STDERR_FILENO);
        close(pipe_fds[0]);
        body();
        _exit(0);
    }
    close(pipe_fds[1]);
    std::string text;
    char buffer[256];
    for (ssize_t n; (n = read(pipe_fds[0], buffer, sizeof buffer)) > 0;) text.append(buffer, n);
    close(pipe_fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return text;
}

}  // namespace

TEST(RuntimeFrame, StacksGetIdsFromOneAndTheMainStackIsKept) {
    CapturingScreen screen;
    Runtime* rt = CreateRuntime(&screen);
    VmStack* main_stack = nullptr;
    GetMainStack(rt, &main_stack);
    EXPECT_EQ(main_stack->id, 1u);
    EXPECT_EQ(main_stack->capacity, 65536u);
    EXPECT_EQ(main_stack->undo_capacity, 8192u);
    VmStack* again = nullptr;
    GetMainStack(rt, &again);
    EXPECT_EQ(again, main_stack);

    VmStack* worker = nullptr;
    EXPECT_EQ(CreateStack(rt, 100, &worker), 0);
    EXPECT_EQ(worker->id, 2u);
    EXPECT_EQ(GetRuntime(worker), rt);
    EXPECT_EQ(ReleaseStack(worker), 0);
    EXPECT_EQ(ReleaseStack(nullptr), 0);
    ReleaseRuntime(rt);
}

TEST(RuntimeFrame, EnvironmentIsOnlyWhatWasPassed) {
    CapturingScreen screen;
    Runtime* rt = CreateRuntime(&screen);
    setenv("ZOBASE_TEST_VARIABLE", "process", 1);
    rt->pass_environment(static_cast<const char* const*>(nullptr));
    String value;
    EXPECT_FALSE(rt->getenv(String("ZOBASE_TEST_VARIABLE"), &value));
    EXPECT_FALSE(rt->getenv(String("PATH"), &value));

    const char* envp[] = {"A=1", "B=x=y", "A=2", "EMPTY=", nullptr};
    rt->pass_environment(envp);
    ASSERT_TRUE(rt->getenv(String("A"), &value));
    EXPECT_EQ(value.u8str(), "2");  // later duplicates win
    ASSERT_TRUE(rt->getenv(String("B"), &value));
    EXPECT_EQ(value.u8str(), "x=y");  // split at the first "="
    ASSERT_TRUE(rt->getenv(String("EMPTY"), &value));
    EXPECT_EQ(value.size(), 0u);
    ReleaseRuntime(rt);
}

TEST(RuntimeFrame, ArgumentsAreCopied) {
    CapturingScreen screen;
    Runtime* rt = CreateRuntime(&screen);
    std::string first = "zosh", second = "prog.prg";
    const char* argv[] = {first.c_str(), second.c_str()};
    rt->pass_arguments(2, argv);
    first = "changed";
    EXPECT_EQ(rt->argument_count(), 2);
    EXPECT_STREQ(rt->argument(0), "zosh");
    EXPECT_STREQ(rt->argument(1), "prog.prg");
    ReleaseRuntime(rt);
}

// The history follows XDG: the state folder when named, else its default
// under HOME, read from the runtime's environment.
TEST(RuntimeFrame, ShellHistoryLivesInTheXdgStateFolder) {
    CapturingScreen screen;
    Runtime* rt = CreateRuntime(&screen);
    const char* both[] = {"HOME=/home/u", "XDG_STATE_HOME=/state", nullptr};
    rt->pass_environment(both);
    EXPECT_EQ(history_file_path(rt), "/state/zobase/history");
    const char* home_only[] = {"HOME=/home/u", nullptr};
    rt->pass_environment(home_only);
    EXPECT_EQ(history_file_path(rt), "/home/u/.local/state/zobase/history");
    rt->pass_environment(static_cast<const char* const*>(nullptr));
    EXPECT_EQ(history_file_path(rt), "");
    ReleaseRuntime(rt);
}

TEST(RuntimeFrame, SysinfoNamesTheLinuxPort) {
    CapturingScreen screen;
    Runtime* rt = CreateRuntime(&screen);
    EXPECT_EQ(CollectPrintSysinfo(rt), 0);
    EXPECT_NE(screen.out.find("VERSION: 0.9.2700\n"), std::string::npos);
    EXPECT_NE(screen.out.find("ARCH: x86_64\n"), std::string::npos);
    EXPECT_NE(screen.out.find("CODEPAGE:"), std::string::npos);
    EXPECT_NE(screen.out.find("OS: LINUX\n"), std::string::npos);
    ReleaseRuntime(rt);
}

TEST(RuntimeFrame, WideArgumentsBecomeUtf8) {
    const wchar_t* argv[] = {L"zosh", L"\u00e9t\u00e9"};
    char** args = nullptr;
    ASSERT_EQ(AllocArgsW(argv, 2, &args), 0);
    EXPECT_STREQ(args[0], "zosh");
    EXPECT_STREQ(args[1], "\xc3\xa9t\xc3\xa9");
    EXPECT_EQ(args[2], nullptr);
    EXPECT_EQ(FreeArgsW(args), 0);
    EXPECT_EQ(FreeArgsW(nullptr), 0);
}

TEST(CrashHandlers, SignalReportPrintsTheCallTrace) {
    std::string text = stderr_of_child([] {
        CallTraceScope outer("outer_function");
        CallTraceScope inner("inner_function");
        std::signal(SIGSEGV, sig_SEGV_handler);
        std::raise(SIGSEGV);
    });
    EXPECT_EQ(text,
              "Program abnormally terminated after SIGSEGV\ninner_function\nouter_function\n");
}

TEST(CrashHandlers, TerminateNamesTheException) {
    // An exception leaving a noexcept function ends in std::terminate.
    EXPECT_EQ(stderr_of_child([]() noexcept {
                  std::set_terminate(terminate_handler);
                  throw assert_failed_exception("x");
              }),
              "Program is being terminated zobase::assert_failed_exception\n");
    EXPECT_EQ(stderr_of_child([]() noexcept {
                  std::set_terminate(terminate_handler);
                  throw std::runtime_error("boom");
              }),
              "Program is being terminated with boom\n");
    EXPECT_EQ(stderr_of_child([] {
                  std::set_terminate(terminate_handler);
                  std::terminate();
              }),
              "Program is being terminated without exception\n");
}
