#pragma once
// Native extensions: shared libraries opened by SET LIBRARY TO, which
// describe functions and commands in the core library's table shape
// (compiler/library.h) through the exported symbol `zo1_describe_module`,
// and C functions of any shared library made callable by DECLARE. Late-bound
// calls find both by name (CallResolver::find_library_function), the
// declared functions first; DO finds the libraries' commands.
//
// Opened shared objects stay loaded until the runtime ends: code may still
// hold their handlers after SET LIBRARY TO, RELEASE LIBRARY or CLEAR DLLS
// has dropped them from the lists. Threads share the lists under a lock;
// a declared function replaced or dropped stays callable until the runtime
// ends, since another thread may be inside it (declaring the same function
// again keeps the one there is).
#include <map>
#include <memory>
#include <shared_mutex>
#include <vector>

#include "compiler/library.h"
#include "vm/call_resolver.h"

namespace zobase {

class Runtime;
class VmStack;
struct declared_function_st;

// What an extension library exports: its description, by this name, with C linkage.
typedef const module_description_st* (*describe_module_fn)();
constexpr const char* DESCRIBE_MODULE_SYMBOL = "zo1_describe_module";

// A parameter or result type of DECLARE.
enum DeclareType : uint8_t {
    DECLARE_VOID,
    DECLARE_SHORT,
    DECLARE_INTEGER,  // also LONG: 32 bits
    DECLARE_LONG_LONG,
    DECLARE_SINGLE,
    DECLARE_DOUBLE,
    DECLARE_STRING,  // text passed as UTF-8, NUL-terminated
    DECLARE_BINARY,  // bytes passed as they are
};

struct declare_parameter_st {
    DeclareType type;
    bool by_reference;  // "@": the callee gets the address of a copy, written back afterwards
    bool operator==(const declare_parameter_st&) const = default;
};

// A signature as a late-bound call converts the arguments to it.
std::vector<library_parameter_st> late_bound_parameters(const function_signature_st& signature);

// The callable form of a declaration: a handler made for it (a libffi
// closure) and its parameters as the late-bound call converts them.
void release_declared_function(declared_function_st* function);
struct declared_function_deleter_st {
    void operator()(declared_function_st* function) const { release_declared_function(function); }
};
typedef std::unique_ptr<declared_function_st, declared_function_deleter_st> declared_function_ptr;
declared_function_ptr make_declared_function(void* entry, DeclareType result,
                                             const std::vector<declare_parameter_st>& parameters);
const library_function_st& declared_function_entry(const declared_function_st& function);
// Whether a declaration would make the same function again.
bool declared_function_matches(const declared_function_st& function, void* entry, DeclareType result,
                               const std::vector<declare_parameter_st>& parameters);

class NativeExtensions {
public:
    explicit NativeExtensions(Runtime* runtime);
    ~NativeExtensions();
    NativeExtensions(const NativeExtensions&) = delete;
    NativeExtensions& operator=(const NativeExtensions&) = delete;

    // SET LIBRARY TO: empties the list, or adds a library to its end (one
    // already listed stays where it is). A file that can't be found or
    // opened is error 1; one without `zo1_describe_module` is 1001.
    void clear_libraries();
    void add_library(VmStack* stack, const String& file);
    std::vector<String> libraries() const;

    // DECLARE: binds `alias` to the C function `name` of the shared library
    // `file`; a second DECLARE of the alias replaces the first. A missing
    // library or function is error 1.
    void declare(VmStack* stack, DeclareType result, const String& name, const String& file, const String& alias,
                 const std::vector<declare_parameter_st>& parameters);

    // RELEASE LIBRARY: drops the library from SET LIBRARY's list and the
    // functions DECLAREd in it. A file not loaded is error 1.
    void release_library(VmStack* stack, const String& file);
    // CLEAR DLLS: drops every declared function, or those of the names
    // given; a name not declared is error 1.
    void clear_declared();
    void clear_declared(const String& alias);

    // The declared function, else the listed libraries' function, by name
    // without regard to case; null when none has it.
    const library_function_st* find_function(const String& name) const;
    const library_command_def_st* find_command(const String& name) const;

private:
    struct opened_library_st;
    Runtime* runtime_;
    struct declared_st {
        declared_function_ptr function;
        void* handle;  // of the library it is in
    };
    std::vector<void*> handles_;  // every shared object opened, once each, closed at the end
    std::vector<std::unique_ptr<opened_library_st>> libraries_;  // SET LIBRARY's list, in order
    mutable std::shared_mutex mutex_;  // guards every list here
    std::map<String, declared_st, NameLess> declared_;
    std::vector<declared_function_ptr> retired_;  // replaced or dropped, kept until the end
    // Moves a declaration out of the list into retired_.
    void retire(declared_st& declared);
    // The handle of a library as a file name finds it, `mode` as dlopen
    // takes it; null when there is none.
    void* find_shared_object(VmStack* stack, const String& file, int mode) const;
    void* open_shared_object(VmStack* stack, const String& file);
};

}  // namespace zobase
