// zosh: a screen, a runtime, the arguments and the shell.
#include <clocale>
#include <csignal>
#include <exception>

#include "runtime/runtime.h"
#include "runtime/screen.h"

extern char** environ;

int main(int argc, char** argv) {
    using namespace zobase;
    old_sig_ABRT_handler = std::signal(SIGABRT, sig_ABRT_handler);
    old_sig_SEGV_handler = std::signal(SIGSEGV, sig_SEGV_handler);
    old_terminate_handler = std::set_terminate(terminate_handler);
    if (old_sig_ABRT_handler == SIG_DFL || old_sig_ABRT_handler == SIG_ERR) old_sig_ABRT_handler = nullptr;
    if (old_sig_SEGV_handler == SIG_DFL || old_sig_SEGV_handler == SIG_ERR) old_sig_SEGV_handler = nullptr;

    // The terminal's encoding, for the line editor.
    std::setlocale(LC_CTYPE, "");
    Screen* screen = CreateScreen(0);
    Runtime* runtime = CreateRuntime(screen);
    runtime->pass_arguments(argc, argv);
    runtime->pass_environment(environ);
    int status = RunZosh(runtime);
    ReleaseRuntime(runtime);
    ReleaseScreen(screen);
    return status;
}
