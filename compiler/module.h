#pragma once
// A compiled source file: its main program, its functions and what it
// imports. Modules belong to the module cache and live as long as the runtime.
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

#include "compiler/build_input.h"
#include "text/collation.h"
#include "values/string.h"
#include "vm/user_function.h"

namespace zobase {

class Charset;
class Class;
class Library;
class Module;
class Symtable;
class UserClass;
struct ModuleDomain;

// Modules by file name, as the module cache and a compile of a file keep them.
typedef std::map<String, Module*, StringLessThan_Unicode_Machine> module_map;

class Module : public SourceModule {
public:
    explicit Module(const String& file) : SourceModule(file) {}
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    UserFunction* main = nullptr;  // the statements before the first FUNCTION; owned
    std::unordered_map<uint32_t, UserFunction*> functions;  // owned
    std::unordered_map<uint32_t, UserClass*> classes;       // owned, by the symbol of the name
    std::vector<const Module*> imported_modules;             // in import order
    std::vector<const Library*> libraries;                   // in import order
    ModuleDomain* domain = nullptr;
    // What running the file runs: the main program, or the function named as
    // the file's stem; null when there is neither.
    const UserFunction* entry = nullptr;

    const UserFunction* find_function(uint32_t symbol) const;
    // The module's own class of that symbol, else the first of its imports'.
    Class* find_class(uint32_t symbol) const;
};

// A function or method body: compiles statements up to the next outline
// statement. An empty body defines nothing and gives null. With
// COMPILER_METHOD, THIS is the first slot.
UserFunction* compile_function(BuildInput& input, int flags, const String& name, const statement_iterator& end,
                               statement_iterator& it, const Stmt_Declaration* parameters,
                               const document_location_st& start);
// DEFINE CLASS ... ENDDEFINE: the class enters the module; `it` ends past ENDDEFINE.
void compile_class_definition(BuildInput& input, Module* module, const statement_iterator& end,
                              statement_iterator& it);
// Links a class's methods in the module, looks for its parent among the
// module's classes and libraries, and compiles its members.
void link_userclass(LinkerInfo& info, UserClass* user_class, const Module* module);

// Unresolved calls become direct calls where the target is known, else calls
// by name; then the entry is settled.
void link_module(LinkerInfo& info, Module* module);
// The module's own function of that symbol, else the first of its imports'.
const UserFunction* find_module_function(const Module* module, unsigned symbol);
// The function named like the file, without directory and extension.
const UserFunction* select_entry_by_stem(Symtable& symbols, const Module& module);
// A source file's text in the charset its BOM names, else in `fallback`
// (UTF-8 when null). A file that can't be read is error 1104.
String read_source_file(const String& path, const Charset* fallback);
// The stem of a file name: no directory, no extension.
String file_stem(const String& file_name);
// The module of a program; every SourceModule that the compiler links a
// program to is one of its Modules.
inline const Module* module_of(const Program* program) {
    return static_cast<const Module*>(program->module);
}

}  // namespace zobase
