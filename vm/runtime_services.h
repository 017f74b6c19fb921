#pragma once
// What code running on a stack asks of the runtime that owns it: the screen,
// the symbol table, the settings the runtime holds, the search lists and the
// exception object that CATCH receives. The runtime installs one on every
// stack it makes (VmStack::services), beside its CallResolver; so the VM, the
// compiler and the built-in library never include runtime/. A stack made
// without a runtime has none.
#include <cstdint>
#include <utility>
#include <vector>
#include <memory>

#include "values/string.h"
#include "vm/session_settings.h"

namespace zobase {

class Charset;
class DateFormatCache;
class NativeExtensions;
class RuntimeError;
class Screen;
class Symtable;
class Variant;
class VmStack;
struct VmThread;

class RuntimeServices {
public:
    virtual ~RuntimeServices() = default;

    // Where output and error reports go.
    virtual Screen* screen() const = 0;
    // Sends output to another screen and returns the one it replaces. The
    // compiler silences the code it runs for itself this way.
    virtual Screen* replace_screen(Screen* screen) = 0;

    virtual Symtable& symbols() const = 0;
    // The charset of the machine's locale.
    virtual const Charset* default_charset() const = 0;

    // SET ASSERTS: whether ASSERT lines are checked.
    virtual bool asserts() const = 0;
    virtual void set_asserts(bool on) = 0;

    // SET PATH: the folders where files are looked for after the current one.
    virtual void clear_search_path() = 0;
    // One entry of SET PATH, itself a list separated by "," or ";".
    virtual void add_search_path(const String& paths) = 0;
    // SET PROCEDURE: the modules whose functions late-bound calls reach.
    virtual void clear_procedures() = 0;
    // Loads the file as a module and adds it; a missing file is error 1.
    virtual void add_procedure(VmStack* stack, const String& file) = 0;
    // SET LIBRARY and DECLARE (builtins/native_extensions.h).
    virtual NativeExtensions& native_extensions() = 0;

    // The environment the host passed (Runtime::pass_environment); setenv and
    // unsetenv change the process's own as well, so that started programs see it.
    virtual bool getenv(const String& key, String* out) const = 0;
    virtual void setenv(const String& key, const String& value) = 0;
    // False when the name was not set.
    virtual bool unsetenv(const String& key) = 0;
    // Every variable as name and value, ordered by name.
    virtual std::vector<std::pair<String, String>> environment() const = 0;

    // A file as written, without regard to case, then along SET PATH.
    virtual bool find_file(const String& name, String* found) const = 0;
    // The user's folder for the runtime's own files, made when missing; false
    // when it can't be made.
    virtual bool home_directory(String* out) const = 0;

    // The built-in exception object for an error, with its number, message
    // and detail, as the value of dest, which must be clean.
    virtual void create_exception_object(const RuntimeError& error, Variant* dest) const = 0;

    // ---- formats of numbers and dates ----
    // The runtime's date and datetime formatters, each built once.
    virtual DateFormatCache& date_formats() = 0;
    // The machine's formats, which SET SYSFORMATS ON copies into the session.
    virtual format_settings_st system_formats() const = 0;
    // SET FDOW: the current first day of the week, 1 (Sunday) to 7, and the
    // machine's.
    virtual int32_t first_day_of_week() const = 0;
    virtual void set_first_day_of_week(int32_t day) = 0;
    virtual int32_t system_first_day_of_week() const = 0;
    // What set() shows of SET PATH and SET PROCEDURE: the folders, and the
    // files' full paths.
    virtual std::vector<String> search_path() const = 0;
    virtual std::vector<String> procedures() const = 0;
    // A thread of the language (objects/thread_object.h): gives it a stack of
    // its own, attached like every stack of the runtime, and an id from 2,
    // and enters it in the runtime's thread map, under the map's lock. The
    // runtime joins what is still running when it ends.
    virtual void register_thread(const std::shared_ptr<VmThread>& thread) = 0;
};

}  // namespace zobase
