// The command-line front end and its helpers.
#include <unicode/uloc.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "text/charset.h"
#include "values/call_trace.h"
#include "values/error.h"

namespace zobase {

namespace {

std::string locale_name() {
    char language[4] = {}, country[4] = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLanguage(uloc_getDefault(), language, sizeof language, &status);
    status = U_ZERO_ERROR;
    uloc_getCountry(uloc_getDefault(), country, sizeof country, &status);
    return std::string(language) + "_" + country;
}

}  // namespace

int CollectPrintSysinfo(Runtime* runtime) {
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

// The full option set of the shell arrives with the statements; for now it
// runs --sysinfo and reports honestly that programs cannot run yet.
int RunZosh(Runtime* runtime) {
    ZO_TRACE();
    int argc = runtime->argument_count();
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(runtime->argument(i), "--sysinfo") == 0) return CollectPrintSysinfo(runtime);
    if (argc < 2) return RunInteractiveShell(runtime);
    return runtime->run_program(String(runtime->argument(1)), argc - 1, nullptr);
}

int RunInteractiveShell(Runtime* runtime) {
    ZO_TRACE();
    try {
        raise_not_available("interactive shell");
    } catch (const RuntimeError& error) {
        runtime->screen->errendl(error.message);
        return error.number;
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
