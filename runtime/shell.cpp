// The command-line front end and its helpers.
#include <tclap/CmdLine.h>
#include <unicode/uloc.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "base/call_trace.h"
#include "runtime/keyboard_interrupt.h"
#include "runtime/line_editor.h"
#include "runtime/run_edge.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "runtime/screen_input.h"
#include "text/charset.h"
#include "values/error.h"
#include "vm/interrupt.h"

namespace zobase {

namespace {

constexpr const char* ZOSH_VERSION = "0.9.2700 (x86_64)";
constexpr size_t MAX_SCRIPT_ARGUMENTS = 16;
constexpr const char* CODEPAGE_REFERENCE = " The list of code pages is what acharset() returns.";

std::string locale_name() {
    char language[4] = {}, country[4] = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLanguage(uloc_getDefault(), language, sizeof language, &status);
    status = U_ZERO_ERROR;
    uloc_getCountry(uloc_getDefault(), country, sizeof country, &status);
    return std::string(language) + "_" + country;
}

struct zosh_options_st {
    TCLAP::CmdLine cmd{"zobase shell: runs a program, or commands typed at a prompt.", ' ',
                       ZOSH_VERSION};
    TCLAP::SwitchArg interactive{
        "", "interactive",
        "Allow user interaction. This is the default when starting an interactive shell.", cmd};
    TCLAP::SwitchArg assert_lines{
        "", "assert", "Enable ASSERT-command lines, which are ignored by default.", cmd};
    TCLAP::ValueArg<std::string> codepage{
        "", "codepage", std::string("Set Kestro-codepage manually.") + CODEPAGE_REFERENCE, false,
        "", "kestro codepage", cmd};
    TCLAP::ValueArg<std::string> cstdout{
        "", "cstdout",
        std::string("Set STDOUT charset for redirected output. All codepoints written to STDOUT "
                    "will be encoded to this charset. By default, all codepoints are UTF-8 "
                    "endocded without BOM.") +
            CODEPAGE_REFERENCE,
        false, "", "zo charset name", cmd};
    TCLAP::ValueArg<std::string> cstdin{
        "", "cstdin",
        std::string("Set STDIN charset for redirected input. All codepoints read from STDIN "
                    "will be interpreted using this charset. By default, all codepoints are "
                    "interpreted as UTF-8 codepoints without BOM.") +
            CODEPAGE_REFERENCE,
        false, "", "zo charset name", cmd};
    TCLAP::SwitchArg sysinfo{
        "", "sysinfo", "Print system information for error reporting and quit process.", cmd};
    TCLAP::UnlabeledMultiArg<std::string> arg{"arg", "Script-Name and Arguments.", false,
                                              "argument", cmd};
};

std::vector<std::string> stored_arguments(Runtime* runtime) {
    std::vector<std::string> args;
    for (int i = 0; i < runtime->argument_count(); ++i) args.push_back(runtime->argument(i));
    if (args.empty()) args.push_back("zosh");
    return args;
}

// TCLAP's own reports, but the status comes back instead of ending the process.
bool parse_command_line(zosh_options_st& options, Runtime* runtime, int* status) {
    options.cmd.setExceptionHandling(false);
    std::vector<std::string> args = stored_arguments(runtime);
    try {
        options.cmd.parse(args);
        return true;
    } catch (TCLAP::ArgException& error) {
        try {
            options.cmd.getOutput()->failure(options.cmd, error);
            *status = 1;
        } catch (TCLAP::ExitException& exit) {
            *status = exit.getExitStatus();
        }
    } catch (TCLAP::ExitException& exit) {
        *status = exit.getExitStatus();
    }
    return false;
}

bool apply_codepage(Runtime* runtime, const std::string& value) {
    if (runtime->set_codepage_by_name(value.c_str())) return true;
    return runtime->set_codepage_by_id(std::atoi(value.c_str()));
}

void print_banner(Screen* screen) {
    screen->out(String("zobase shell, version "));
    screen->outendl(String(ZOSH_VERSION));
    screen->outendl(String("Type QUIT or end the input to leave."));
}

std::string prompt_text() {
    std::error_code ignored;
    std::string directory = std::filesystem::current_path(ignored).string();
    return "zo " + directory + "> ";
}

LineRead read_plain_line(Screen* screen, String* line) {
    screen->out(String(prompt_text().c_str()));
    screen->flush();
    return read_screen_line(screen, line) ? LineRead::LINE : LineRead::END;
}

LineRead read_edited_line(LineEditor* editor, String* line) {
    std::string text;
    LineRead read = editor->read_line(prompt_text(), &text);
    *line = String(text.c_str());
    return read;
}

}  // namespace

int CollectPrintSysinfo(Runtime* runtime) {
    ZO_TRACE();
    Screen* screen = runtime->screen;
    screen->outendl(String(locale_name().c_str()));
    screen->outendl(String("VERSION: 0.9.2700"));
    screen->outendl(String("ARCH: x86_64"));
    std::string codepage = "CODEPAGE: ";
    codepage += runtime->default_charset ? runtime->default_charset->name() : "";
    screen->outendl(String(codepage.c_str()));
    screen->outendl(String("OS: LINUX"));
    return 0;
}

int RunZosh(Runtime* runtime) {
    ZO_TRACE();
    zosh_options_st options;
    int status = 0;
    if (!parse_command_line(options, runtime, &status)) return status;

    const std::vector<std::string>& args = options.arg.getValue();
    std::vector<const char*> script_args;
    for (size_t i = 0; i < args.size() && i < MAX_SCRIPT_ARGUMENTS; ++i)
        script_args.push_back(args[i].c_str());

    Screen* screen = runtime->screen;
    SetRuntimeAsserts(runtime, options.assert_lines.getValue());
    screen->set_interactive(script_args.empty() || options.interactive.getValue());
    if (options.sysinfo.getValue()) return CollectPrintSysinfo(runtime);
    // --cstdin names no charset of its own: it applies the --cstdout value.
    if (options.cstdout.isSet()) SetOutputCharset(screen, options.cstdout.getValue().c_str());
    if (options.cstdin.isSet()) SetInputCharset(screen, options.cstdout.getValue().c_str());
    if (options.codepage.isSet() && !apply_codepage(runtime, options.codepage.getValue())) {
        screen->errendl(String("--codepage not supported"));
        return 1;
    }
    InterruptHandlerScope interrupts;
    if (script_args.empty()) {
        print_banner(screen);
        return RunInteractiveShell(runtime);
    }
    clear_interrupt();
    try {
        return runtime->run_program(String(script_args[0]), static_cast<int>(script_args.size()),
                                    script_args.data());
    } catch (const RuntimeInterrupt&) {
        // QUIT ended quietly inside run_program; this is Ctrl-C, reported where it stopped.
        return INTERRUPTED_STATUS;
    } catch (const assert_failed_exception& failure) {
        return report_internal_error(screen, failure);
    }
}

int RunInteractiveShell(Runtime* runtime) {
    ZO_TRACE();
    Screen* screen = runtime->screen;
    std::unique_ptr<LineEditor> editor = LineEditor::for_terminal(runtime);
    for (;;) {
        String line;
        switch (editor ? read_edited_line(editor.get(), &line) : read_plain_line(screen, &line)) {
        case LineRead::END: return 0;
        case LineRead::INTERRUPTED:
            // Ctrl-C at the prompt drops the line typed so far.
            screen->outendl(String("^C"));
            continue;
        case LineRead::LINE: break;
        }
        if (line.size() == 0) continue;
        // A Ctrl-C pressed while nothing ran must not stop this command.
        clear_interrupt();
        try {
            runtime->run_command(line);
        } catch (const RuntimeQuit&) {
            return 0;
        } catch (const RuntimeInterrupt&) {
            // Ctrl-C: reported where the program stopped; the prompt comes back.
        } catch (const assert_failed_exception& failure) {
            report_internal_error(screen, failure);
        }
    }
}

int AllocArgsW(const wchar_t* const* argv, int argc, char*** out) {
    char** args = new char*[static_cast<size_t>(argc) + 1];
    for (int i = 0; i < argc; ++i) {
        std::string text = String(reinterpret_cast<const char32_t*>(argv[i])).u8str();
        args[i] = new char[text.size() + 1];
        std::memcpy(args[i], text.c_str(), text.size() + 1);
    }
    args[argc] = nullptr;
    *out = args;
    return 0;
}

int FreeArgsW(char** args) {
    if (!args) return 0;
    for (char** p = args; *p; ++p) delete[] *p;
    delete[] args;
    return 0;
}

}  // namespace zobase
