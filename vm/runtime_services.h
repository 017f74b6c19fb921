#pragma once
// What code running on a stack asks of the runtime that owns it: the screen,
// the symbol table, the settings the runtime holds, the search lists and the
// exception object that CATCH receives. The runtime installs one on every
// stack it makes (VmStack::services), beside its CallResolver; so the VM, the
// compiler and the built-in library never include runtime/. A stack made
// without a runtime has none.
#include <cstdint>
#include <memory>

#include "values/string.h"

namespace zobase {

class Charset;
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

    // The built-in exception object for an error, with its number, message
    // and detail, as the value of dest, which must be clean.
    virtual void create_exception_object(const RuntimeError& error, Variant* dest) const = 0;

    // A thread of the language (objects/thread_object.h): gives it a stack of
    // its own, attached like every stack of the runtime, and an id from 2,
    // and enters it in the runtime's thread map, under the map's lock. The
    // runtime joins what is still running when it ends.
    virtual void register_thread(const std::shared_ptr<VmThread>& thread) = 0;
};

}  // namespace zobase
