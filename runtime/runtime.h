#pragma once
// The runtime: everything hangs from one instance. The handle holds the
// settings read on hot paths; the rest lives in a private record.
#include <cstdint>
#include <utility>
#include <vector>
#include <memory>

#include "base/export.h"
#include "values/string.h"

namespace zobase {

class Screen;
class Charset;
class VmStack;
class Symtable;
class Class;
class Library;
class Module;
class ModuleCache;
class CallResolver;
class RuntimeServices;
struct RuntimeRecord;
class DateFormatCache;
struct date_format_st;
struct datetime_format_st;
struct format_settings_st;
struct VmThread;

class ZO_API Runtime {
public:
    Screen* screen;
    const Charset* default_charset = nullptr;
    struct flags_st {
        bool asserts = false;
        bool reserved[8] = {};
    } flags;
    // The machine's formats, read from ICU's default locale by init. A new
    // data session starts with the language's own; SET SYSFORMATS ON copies
    // these (system_formats()).
    struct decimal_point_st {
        char encoded[4] = {'.', 0, 0, 0};  // ASCII when `ascii`, else UTF-8
        uint8_t length = 0;
        char32_t code_point = U'.';
        bool ascii = true;
    } decimal_point;
    char32_t group_separator = U',';
    int32_t system_decimals = 2;
    int32_t system_date_style = 0;  // SHORT once init has run
    int32_t system_date_mark = '/';
    int32_t system_century = 0;
    int32_t first_day_of_week = 1;  // 1 is Sunday; SET FDOW changes the runtime's current one
    int32_t system_hours = 12;
    int32_t system_seconds = 1;
    RuntimeRecord* impl;

    explicit Runtime(Screen* screen);
    ~Runtime();
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;

    static Runtime* create_instance(Screen* screen);
    void init();
    VmStack* get_main_stack();
    uint64_t create_stack_id();
    // Both return 0 or the number of the error that ended the run. QUIT ends
    // a program quietly; from a command it passes out as RuntimeQuit. Ctrl-C
    // passes out of both as RuntimeInterrupt (INTERRUPT_BREAK).
    int run_program(const String& file, int argc, const char* const* argv);
    int run_command(const String& text);
    // The module of a file, compiled unless a fresh copy is cached.
    void load_module(const String& file, VmStack* stack, const Module** out);
    ModuleCache& module_cache();
    // What the VM's late-bound calls resolve through; installed on every stack.
    const CallResolver* call_resolver() const;
    // What code on a stack asks of the runtime; installed on every stack.
    RuntimeServices* services();
    // Installs the runtime's doors on a stack it made: the resolver, the
    // services and the stack's id.
    void attach_stack(VmStack* stack);
    // A thread of the language: its stack, attached, and its id from 2; it
    // enters the thread map, from which finished threads whose object is
    // gone are taken out (and joined) meanwhile.
    void register_thread(const std::shared_ptr<VmThread>& thread);
    // Waits for every thread of the language to end; `shutdown` does it first.
    void join_threads();
    void set_procedure_to(VmStack* stack, const String& file, bool additive);
    void set_procedure_to_null();
    void pass_arguments(int argc, const char* const* argv);
    void pass_arguments(int argc, const char16_t* const* argv);
    void pass_environment(const char* const* envp);
    void pass_environment(const char16_t* const* envp);
    bool getenv(const String& key, String* out) const;
    // Sets or removes a variable of the passed environment and of the process's.
    void setenv(const String& key, const String& value);
    bool unsetenv(const String& key);
    std::vector<std::pair<String, String>> environment() const;
    // The user's folder for the runtime's files, by the XDG rules:
    // $XDG_DATA_HOME/zobase, else $HOME/.local/share/zobase. Made when missing.
    bool create_home_dir(String* out) const;
    void set_module_file_name(const char* path);
    void set_module_file_name(const char16_t* path);
    // The file as written or without regard to case; optionally along the SET PATH
    // list and with ".prg" added to a name without extension.
    bool find_file(const String& name, String* found, bool use_search_path, bool default_prg) const;
    void set_path_to(const String& paths, bool additive);
    void set_path_to_null();
    // The SET PATH folders in order.
    std::vector<String> search_path() const;
    // The cached formats of dates and datetimes, each built on its first request.
    const date_format_st& dateFormat(int32_t style, bool century, const char* mark);
    const datetime_format_st& dateTimeFormat(int32_t style, bool century, const char* mark,
                                             int32_t hours, bool seconds, const char* separator,
                                             const char* time_mark);
    DateFormatCache& date_formats();
    // The machine's format block, as SET SYSFORMATS ON copies it.
    format_settings_st system_formats() const;
    // SET FDOW: the current first day of the week, 1 (Sunday) to 7.
    int32_t current_first_day_of_week() const;
    void set_first_day_of_week(int32_t day);
    bool set_codepage_by_id(int id);
    bool set_codepage_by_name(const char* name);
    void shutdown();

    int argument_count() const;
    const char* argument(int index) const;
    Symtable& symbols();
    // The built-in library description registered by init.
    Library* library();
};

ZO_API Runtime* CreateRuntime(Screen* screen);
ZO_API void ReleaseRuntime(Runtime* runtime);
ZO_API int CreateStack(Runtime* runtime, uint64_t size, VmStack** out);
ZO_API int GetMainStack(Runtime* runtime, VmStack** out);
ZO_API int ReleaseStack(VmStack* stack);
ZO_API Runtime* GetRuntime(VmStack* stack);
// The exported calls never throw: QUIT, CANCEL and Ctrl-C end the run, and
// errors have been reported on the screen. A host that wants the error's
// number, or to know that the text asked to QUIT, calls the members
// run_program and run_command instead.
ZO_API void RunProgram(Runtime* runtime, const String& file);
ZO_API void RunCommand(Runtime* runtime, const String& text);
ZO_API void RunScript(Runtime* runtime, const String& text);
ZO_API void SetRuntimeAsserts(Runtime* runtime, bool on);
ZO_API int RunZosh(Runtime* runtime);
ZO_API int RunInteractiveShell(Runtime* runtime);
ZO_API int CollectPrintSysinfo(Runtime* runtime);
ZO_API bool FindFile(Runtime* runtime, const String& name, String& found, bool use_search_path,
                     bool default_prg);
ZO_API Class* GetClass(VmStack* stack, const String* name);
ZO_API int AllocArgsW(const wchar_t* const* argv, int argc, char*** out);
ZO_API int FreeArgsW(char** args);

// Asks the running program to stop at its next jump or call, with
// RuntimeInterrupt: what a host installs for SIGINT. RunZosh installs it.
ZO_API void sig_INT_handler(int signal);
ZO_API void sig_ABRT_handler(int signal);
ZO_API void sig_SEGV_handler(int signal);
ZO_API void terminate_handler();
ZO_API extern void (*old_sig_ABRT_handler)(int);
ZO_API extern void (*old_sig_SEGV_handler)(int);
ZO_API extern void (*old_terminate_handler)();

}  // namespace zobase
