// What a program knows of itself and of the runtime: program, pcount,
// parameters, astackinfo, execscript and sys.
#include <pwd.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "base/call_trace.h"
#include "base/version.h"
#include "builtins/arguments.h"
#include "builtins/array_helpers.h"
#include "builtins/handlers.h"
#include "values/date.h"
#include "vm/call_resolver.h"
#include "vm/error_handling.h"
#include "vm/program.h"
#include "vm/runtime_services.h"
#include "vm/user_function.h"

namespace zobase {

namespace fs = std::filesystem;

namespace {

constexpr int STACKINFO_COLUMNS = 6;

// The frames from the outermost (level 1) to the running one.
std::vector<const VmFrame*> frames_of(VmStack* stack) {
    std::vector<const VmFrame*> frames;
    for (const VmFrame* frame = stack->frame; frame; frame = frame->previous) frames.insert(frames.begin(), frame);
    return frames;
}

std::string upper_name(const std::string& name) { return String(name.c_str()).upper().u8str(); }

// The text of a line of a source file; "" when it can't be read.
std::string source_line(const std::string& file, uint32_t line) {
    std::ifstream in(file);
    std::string text;
    for (uint32_t i = 1; i <= line && std::getline(in, text); ++i) {
        if (i == line) return text;
    }
    return "";
}

// sys(2015) and sys(3): names no other call of the process gives, from the
// clock in milliseconds, base 36.
uint64_t unique_number() {
    static std::atomic<uint64_t> last{0};
    uint64_t now = static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                             std::chrono::system_clock::now().time_since_epoch())
                                             .count());
    uint64_t previous = last.load();
    uint64_t next;
    do {
        next = now > previous ? now : previous + 1;
    } while (!last.compare_exchange_weak(previous, next));
    return next;
}

std::string base36(uint64_t n, size_t width) {
    static const char digits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string text(width, '0');
    for (size_t i = width; i-- > 0; n /= 36) text[i] = digits[n % 36];
    return text;
}

std::string user_name() {
    if (const passwd* entry = getpwuid(getuid())) return entry->pw_name;
    return "";
}

std::string current_folder() {
    std::error_code error;
    return fs::current_path(error).string();
}

std::string with_slash(std::string folder) {
    if (folder.empty() || folder.back() != '/') folder += '/';
    return folder;
}

std::string temporary_folder(VmStack* stack) {
    String value;
    if (stack->services && stack->services->getenv(String("TMPDIR"), &value) && value.size()) {
        std::string folder = value.u8str();
        while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
        return folder;
    }
    return "/tmp";
}

std::string today_julian() {
    time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    date_st today{};
    serial_julian_date(parts.tm_year + 1900, static_cast<unsigned>(parts.tm_mon + 1),
                       static_cast<unsigned>(parts.tm_mday), &today);
    return std::to_string(today.julian);
}

std::string seconds_since_midnight() {
    time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    return std::to_string(parts.tm_hour * 3600 + parts.tm_min * 60 + parts.tm_sec);
}

std::string free_disk_bytes() {
    struct statvfs info;
    if (::statvfs(".", &info) != 0) return "0";
    return std::to_string(static_cast<unsigned long long>(info.f_bavail) * info.f_frsize);
}

// sys(16 [, level]): the file of the program running at that level (the
// running one when omitted).
std::string program_file(VmStack* stack, unsigned long long argc) {
    std::vector<const VmFrame*> frames = frames_of(stack);
    if (frames.empty()) return "";
    long long level = argc >= 2 ? static_cast<integer_type_st>(argument(stack, 2)) : 0;
    if (level < 0 || static_cast<size_t>(level) > frames.size()) return "";
    return place_of(level ? frames[static_cast<size_t>(level) - 1] : frames.back()).module;
}

enum SysCode : long long {
    SYS_MACHINE = 0,
    SYS_TODAY_JULIAN = 1,
    SYS_SECONDS = 2,
    SYS_UNIQUE_FILE = 3,
    SYS_DRIVE = 5,
    SYS_PROGRAM_FILE = 16,
    SYS_PROCESSOR = 17,
    SYS_CURRENT_FOLDER = 2003,
    SYS_START_FOLDER = 2004,
    SYS_UNIQUE_NAME = 2015,
    SYS_ERROR_DETAIL = 2018,
    SYS_FREE_DISK = 2020,
    SYS_TEMP_FOLDER = 2023,
    SYS_PROCESS_ID = 9000,
    SYS_VERSION = 9001,
};

bool sys_text(VmStack* stack, long long code, unsigned long long argc, std::string* text) {
    char host[256] = {};
    switch (code) {
    case SYS_MACHINE: ::gethostname(host, sizeof host - 1); *text = std::string(host) + " # " + user_name(); return true;
    case SYS_TODAY_JULIAN: *text = today_julian(); return true;
    case SYS_SECONDS: *text = seconds_since_midnight(); return true;
    case SYS_UNIQUE_FILE: *text = base36(unique_number(), 8); return true;
    case SYS_DRIVE: *text = ""; return true;
    case SYS_PROGRAM_FILE: *text = program_file(stack, argc); return true;
    case SYS_PROCESSOR: *text = ZOBASE_ARCH; return true;
    case SYS_CURRENT_FOLDER: *text = current_folder(); return true;
    case SYS_START_FOLDER: {
        std::error_code error;
        *text = with_slash(fs::read_symlink("/proc/self/exe", error).parent_path().string());
        return true;
    }
    case SYS_UNIQUE_NAME: *text = "_" + base36(unique_number(), 9); return true;
    case SYS_ERROR_DETAIL:
        *text = stack->errors.empty() ? "" : stack->errors.back().values[2].to_string().u8str();
        return true;
    case SYS_FREE_DISK: *text = free_disk_bytes(); return true;
    case SYS_TEMP_FOLDER: *text = temporary_folder(stack); return true;
    case SYS_VERSION: *text = ZOBASE_VERSION; return true;
    default: return false;
    }
}

}  // namespace

// program([level]): the name, in upper case, of the program or function
// running at that level (1 the outermost; omitted, the running one); ""
// beyond the running level. program(-1) is the running level as text.
void stackcall_program(VmStack* stack, unsigned long long argc, Variant* result) {
    std::vector<const VmFrame*> frames = frames_of(stack);
    long long level = argc >= 1 ? argument(stack, 1).integer : static_cast<long long>(frames.size());
    if (level == -1) return result->set_string(String(std::to_string(frames.size()).c_str()));
    if (level < 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (level == 0) level = 1;
    if (frames.empty() || static_cast<size_t>(level) > frames.size()) return result->set_string(String(""));
    result->set_string(String(upper_name(place_of(frames[static_cast<size_t>(level) - 1]).program).c_str()));
}

// pcount(): the arguments the running program or function received.
void stackcall_pcount(VmStack* stack, unsigned long long, Variant* result) {
    result->set_integer(stack->frame ? static_cast<long long>(stack->argc) : 0LL);
}

// parameters(): the arguments of the program or function called last.
void stackcall_parameters(VmStack* stack, unsigned long long, Variant* result) {
    result->set_integer(static_cast<long long>(stack->pending_args));
}

// astackinfo(@a): a row per level, outermost first: level, file, program,
// source file, line, the line's text.
void stackcall_astackinfo(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    std::vector<const VmFrame*> frames = frames_of(stack);
    Array* array = Param(stack, 1)->dimension(stack, frames.size(), STACKINFO_COLUMNS);
    for (uint64_t level = 1; level <= frames.size(); ++level) {
        frame_place_st place = place_of(frames[level - 1]);
        uint64_t first = (level - 1) * STACKINFO_COLUMNS;
        store_integer(stack, array, first + 1, static_cast<long long>(level));
        store_string(stack, array, first + 2, String(place.module.c_str()));
        store_string(stack, array, first + 3, String(place.program.c_str()));
        store_string(stack, array, first + 4, String(place.module.c_str()));
        store_integer(stack, array, first + 5, place.line);
        store_string(stack, array, first + 6, String(source_line(place.module, place.line).c_str()));
    }
    result->set_integer(static_cast<long long>(frames.size()));
}

// execscript(text [, arguments ...]): compiles the text as a program of its
// own (FUNCTIONs included) and runs it with the arguments; its RETURN value
// is the result.
void stackcall_execscript(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    if (!stack->resolver) raise_not_available("execscript");
    std::unique_ptr<UserFunction> script = stack->resolver->compile_script(stack, string_argument(stack, 1));
    // The arguments after the text are the top slots of this call, so the
    // script takes them as its parameters where they lie, as DO does.
    unsigned long long passed = argc - 1;
    Variant value;
    stack->pending_args = passed;
    script->exec(stack, passed, false, &value);
    value.copy(result);
    value.release(stack);
}

// sys(code [, ...]): 0 machine and user, 1 today as a Julian day number, 2
// seconds since midnight, 3 a unique file name, 5 the drive (none), 16 the
// running program's file, 17 the processor, 2003 the current folder, 2004 the
// runtime's folder, 2015 a unique name, 2018 the last error's detail, 2020
// free disk bytes, 2023 the temporary folder, 9000 the process id, 9001 the
// version. Other codes are 1001.
void stackcall_sys(VmStack* stack, unsigned long long argc, Variant* result) {
    long long code = argument(stack, 1).integer;
    if (code == SYS_PROCESS_ID) return result->set_integer(static_cast<long long>(::getpid()));
    std::string text;
    if (!sys_text(stack, code, argc, &text)) raise_not_available(("sys(" + std::to_string(code) + ")").c_str());
    result->set_string(String(text.c_str()));
}

}  // namespace zobase
