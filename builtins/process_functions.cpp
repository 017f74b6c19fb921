// The process and its surroundings: getenv, setenv, unsetenv, os, sleep,
// exec, system, escapearg, parseargs, RUN, userhomedir, curexe, version,
// sigabort and messagebox.
#include <signal.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "base/call_trace.h"
#include "base/version.h"
#include "builtins/arguments.h"
#include "builtins/array_helpers.h"
#include "builtins/handlers.h"
#include "builtins/machine_charset.h"
#include "builtins/process_runner.h"
#include "vm/screen.h"

namespace zobase {

namespace {

String machine_text(VmStack* stack, const std::string& bytes) {
    return String::fromBytes(bytes.data(), bytes.size(), machine_charset(stack));
}

// The bytes a program receives: the text in the machine's charset.
std::string machine_bytes(VmStack* stack, const String& text) {
    String copy = text;
    copy.convert(machine_charset(stack), 0, CSTRAN_SUBSTITUTE);
    return std::string(copy.read(), copy.size());
}

std::vector<std::string> command_words(VmStack* stack, const String& line) {
    std::vector<std::string> words;
    if (!split_arguments(machine_bytes(stack, line), &words) || words.empty())
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    return words;
}

// What exec and system share: standard output is the result, standard error
// goes to `errors` when asked for, else to the screen's error stream; the
// exit status goes to `status` when asked for.
struct captured_run_st {
    process_request_st request;
    std::string input;
    Variant* status = nullptr;
    Variant* errors = nullptr;
};

void run_captured(VmStack* stack, captured_run_st& run, Variant* result) {
    std::string output, errors;
    auto sink = [&](ProcessStream stream, const char* bytes, size_t size) {
        (stream == PROCESS_OUTPUT ? output : errors).append(bytes, size);
    };
    int status = 0;
    if (!run_process(run.request, sink, &status)) {
        if (errno == ENOENT || errno == EACCES) throw RuntimeError(ERR_FILE_NOT_FOUND, String(run.request.argv[0].c_str()));
        throw RuntimeError(ERR_FILE_ACCESS_DENIED, String(run.request.argv[0].c_str()));
    }
    if (run.status) {
        run.status->release(stack);
        run.status->set_integer(status);
    }
    if (run.errors) {
        run.errors->release(stack);
        run.errors->set_string(machine_text(stack, errors));
    } else if (!errors.empty() && stack->services) {
        stack->services->screen()->err(machine_text(stack, errors));
    }
    result->set_string(machine_text(stack, output));
}

// A by-reference argument that is there, else null.
Variant* out_argument(VmStack* stack, unsigned long long argc, unsigned long long i) {
    if (argc < i) return nullptr;
    Memvar* slot = Param(stack, i);
    return slot->tag == TAG_POINTER ? slot->pointer.target : nullptr;
}

// An environment variable's name: not empty, no "=".
std::string variable_name(VmStack* stack, unsigned long long i) {
    std::string name = string_argument(stack, i).u8str();
    if (name.empty() || name.find('=') != std::string::npos) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return name;
}

RuntimeServices& services_of(VmStack* stack, const char* function) {
    if (!stack->services) raise_not_available(function);
    return *stack->services;
}

std::atomic<bool> abort_requested{false};

void note_abort(int) { abort_requested = true; }

// messagebox's button sets, by the low four bits of its flags.
constexpr int MESSAGEBOX_BUTTON_SETS[] = {
    MSGBOX_OK,
    MSGBOX_OK | MSGBOX_CANCEL,
    MSGBOX_ABORT | MSGBOX_RETRY | MSGBOX_IGNORE,
    MSGBOX_YES | MSGBOX_NO | MSGBOX_CANCEL,
    MSGBOX_YES | MSGBOX_NO,
    MSGBOX_RETRY | MSGBOX_CANCEL,
};
constexpr int MESSAGEBOX_ICON_BITS = 0xF0;

// The dialect's numbers of the answers.
int messagebox_answer(int button) {
    switch (button) {
    case MSGBOX_OK: return 1;
    case MSGBOX_CANCEL: return 2;
    case MSGBOX_ABORT: return 3;
    case MSGBOX_RETRY: return 4;
    case MSGBOX_IGNORE: return 5;
    case MSGBOX_YES: return 6;
    case MSGBOX_NO: return 7;
    default: return -1;  // no answer: a screen without dialogs, or the time ran out
    }
}

}  // namespace

void stackcall_getenv(VmStack* stack, unsigned long long, Variant* result) {
    String value;
    if (!stack->services || !stack->services->getenv(string_argument(stack, 1), &value)) value = String("");
    result->set_string(value);
}

void stackcall_setenv(VmStack* stack, unsigned long long, Variant* result) {
    std::string name = variable_name(stack, 1);
    services_of(stack, "setenv").setenv(String(name.c_str()), string_argument(stack, 2));
    result->set_true();
}

// unsetenv(name): whether the variable was set.
void stackcall_unsetenv(VmStack* stack, unsigned long long, Variant* result) {
    std::string name = variable_name(stack, 1);
    result->set_bool(services_of(stack, "unsetenv").unsetenv(String(name.c_str())));
}

// os([part]): "Linux 6.1.0" for 0 or 1; 3, 4 and 5 the parts of the kernel's
// version; anything else is "".
void stackcall_os(VmStack* stack, unsigned long long argc, Variant* result) {
    long long part = argc >= 1 ? argument(stack, 1).integer : 0;
    utsname names{};
    ::uname(&names);
    std::string release = names.release;
    if (part == 0 || part == 1) return result->set_string(String((std::string(names.sysname) + " " + release).c_str()));
    std::vector<std::string> numbers(3);
    size_t at = 0;
    for (int i = 0; i < 3 && at <= release.size(); ++i) {
        size_t end = i < 2 ? release.find('.', at) : release.size();
        if (end == std::string::npos) end = release.size();
        numbers[i] = release.substr(at, end - at);
        at = end + 1;
    }
    result->set_string(String(part >= 3 && part <= 5 ? numbers[part - 3].c_str() : ""));
}

// sleep(milliseconds)
void stackcall_sleep(VmStack* stack, unsigned long long, Variant* result) {
    long long milliseconds = argument(stack, 1).integer;
    if (milliseconds < 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    result->set_true();
}

// exec(command line [, @status [, @errors [, input]]]): runs the program
// directly, its words split as parseargs splits them; returns its standard output.
void stackcall_exec(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    captured_run_st run;
    run.request.argv = command_words(stack, string_argument(stack, 1));
    run.status = out_argument(stack, argc, 2);
    run.errors = out_argument(stack, argc, 3);
    if (argc >= 4) {
        run.input = machine_bytes(stack, string_argument(stack, 4));
        run.request.input = &run.input;
    }
    run_captured(stack, run, result);
}

// system(command [, @status [, input]]): the command through /bin/sh.
void stackcall_system(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    captured_run_st run;
    run.request.argv = {"/bin/sh", "-c", machine_bytes(stack, string_argument(stack, 1))};
    run.status = out_argument(stack, argc, 2);
    if (argc >= 3) {
        run.input = machine_bytes(stack, string_argument(stack, 3));
        run.request.input = &run.input;
    }
    run_captured(stack, run, result);
}

// RUN command: through /bin/sh, reading the console's input; what it
// writes reaches the screen as it comes.
void void_stackcall_run(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    Screen* screen = services_of(stack, "run").screen();
    process_request_st request;
    request.argv = {"/bin/sh", "-c", machine_bytes(stack, string_argument(stack, 1))};
    request.inherit_input = true;
    screen->flush();
    auto sink = [&](ProcessStream stream, const char* bytes, size_t size) {
        String text = machine_text(stack, std::string(bytes, size));
        if (stream == PROCESS_OUTPUT) screen->out(text);
        else screen->err(text);
    };
    int status;
    if (!run_process(request, sink, &status)) throw RuntimeError(ERR_FILE_NOT_FOUND, String("/bin/sh"));
}

void stackcall_escapearg(VmStack* stack, unsigned long long, Variant* result) {
    result->set_string(machine_text(stack, quote_argument(machine_bytes(stack, string_argument(stack, 1)))));
}

// parseargs(line, @a): the words of a command line; returns their count.
void stackcall_parseargs(VmStack* stack, unsigned long long, Variant* result) {
    std::vector<std::string> words;
    if (!split_arguments(machine_bytes(stack, string_argument(stack, 1)), &words))
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    std::vector<String> texts;
    for (const std::string& word : words) texts.push_back(machine_text(stack, word));
    fill_column(stack, Param(stack, 2), texts);
    result->set_integer(static_cast<long long>(words.size()));
}

// userhomedir(): the user's folder for the runtime's files, with a
// separator at its end; "" when there is none.
void stackcall_userhomedir(VmStack* stack, unsigned long long, Variant* result) {
    String folder;
    if (!stack->services || !stack->services->home_directory(&folder)) return result->set_string(String(""));
    folder.add(String("/"));
    result->set_string(folder);
}

// curexe(): the full path of the running executable.
void stackcall_curexe(VmStack*, unsigned long long, Variant* result) {
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", error).string();
    result->set_string(String(path.c_str()));
}

// version([kind]): 0 and 1 the product line, 4 the version number alone.
void stackcall_version(VmStack* stack, unsigned long long argc, Variant* result) {
    long long kind = argc >= 1 ? argument(stack, 1).integer : 0;
    std::string text;
    switch (kind) {
    case 0:
    case 1: text = std::string("zobase ") + ZOBASE_VERSION + " for Linux (" + ZOBASE_ARCH + ")"; break;
    case 4: text = ZOBASE_VERSION; break;
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
    result->set_string(String(text.c_str()));
}

// sigabort(): whether the process has been asked to end (SIGTERM or SIGHUP)
// since the first call, which installs the handlers: a program that asks
// is told instead of being ended.
void stackcall_sigabort(VmStack*, unsigned long long, Variant* result) {
    static std::once_flag installed;
    std::call_once(installed, [] {
        struct sigaction action{};
        action.sa_handler = note_abort;
        sigemptyset(&action.sa_mask);
        sigaction(SIGTERM, &action, nullptr);
        sigaction(SIGHUP, &action, nullptr);
    });
    result->set_bool(abort_requested);
}

// messagebox(text [, flags [, title [, timeout]]]): the screen's dialog;
// the low four bits of flags choose the buttons, bits 16 to 128 the icon.
// Answers: 1 OK, 2 Cancel, 3 Abort, 4 Retry, 5 Ignore, 6 Yes, 7 No, -1 none.
void stackcall_messagebox(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    long long flags = argc >= 2 ? argument(stack, 2).integer : 0;
    size_t set = static_cast<size_t>(flags & 15);
    if (flags < 0 || set >= std::size(MESSAGEBOX_BUTTON_SETS)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    String title = argc >= 3 ? string_argument(stack, 3) : String("");
    int timeout = argc >= 4 ? integer_argument(stack, 4) : 0;
    Screen* screen = services_of(stack, "messagebox").screen();
    int answer = screen->msgbox(string_argument(stack, 1), title, MESSAGEBOX_BUTTON_SETS[set],
                                static_cast<int>(flags & MESSAGEBOX_ICON_BITS), timeout);
    result->set_integer(messagebox_answer(answer));
}

}  // namespace zobase
