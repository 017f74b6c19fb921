#pragma once
// One compile from text to runnable code: the front end, the compiler, the
// diagnostics, and the linker step that binds calls to known functions.
// Source errors collect as diagnostics and are raised together at the end,
// as a RuntimeError with the number of the first.
#include <cstdint>
#include <vector>

#include "compiler/compiler.h"
#include "frontend/parser.h"
#include "frontend/preprocessor.h"
#include "frontend/token.h"
#include "values/string.h"

namespace zobase {

class Screen;
class Symtable;
class UserFunction;
class Module;
class VmStack;

enum DiagnosticCategories : int32_t {
    DIAGNOSTIC_CATEGORY_PREPROCESSOR = 0,
    DIAGNOSTIC_CATEGORY_PARSER = 1,
    DIAGNOSTIC_CATEGORY_COMPILER = 2,
    DIAGNOSTIC_CATEGORY_GENERIC = 3,
};

struct diagnostic_st {
    int32_t category;
    int32_t number;
    document_location_st location;
    String source;  // the text the location points into
    String detail{};  // what the message's format takes, or empty
};

// What a link needs: the symbols, and how a module's functions are found
// (its own first, then its imports in order). Without a finder every
// unresolved call goes by name.
struct LinkerInfo {
    Symtable* symbols;
    const UserFunction* (*find_function)(const Module* module, unsigned symbol) = nullptr;
};

// Binds each unresolved call through the module, else by name at run time.
void link_program(LinkerInfo& info, Program* program, const Module* module);
// For a program of no module: every unresolved call goes by name.
void link_anonymous_program(LinkerInfo& info, Program* program);

class BuildInput {
public:
    explicit BuildInput(VmStack* stack);
    BuildInput(const BuildInput&) = delete;
    BuildInput& operator=(const BuildInput&) = delete;

    VmStack* stack;
    String file_name;  // empty for a command line
    std::vector<const Library*> libraries;
    const Module* module = nullptr;
    std::vector<diagnostic_st> diagnostics;
    String source;  // the text being built
    // Where a macro's text counts as written: every instruction carries it.
    const document_location_st* forced_location = nullptr;
    // The table whose fields an expression reads first (filters, FOR clauses).
    const compiler_table_context_st* table = nullptr;

    void import_library(const Library* library);
    void set_module_context_from_frame(VmStack* running);
    void init_compiler(Compiler& compiler) const;
    void log_compiler_errors(Compiler& compiler);
    void add_diagnostic(int32_t category, int32_t number, const document_location_st& location,
                        const String& detail = String());
    // Raises the first diagnostic's number when any was recorded, with the
    // report of them all as the error's compile report.
    void raise_diagnostics() const;

    // The statement form: a free-standing program of a command line. The
    // caller owns the result.
    Program* build_command(const String& text);
    // A whole source file: the main program under the file's stem, its
    // functions, linked. The caller owns the result.
    Module* build_module(const String& name, const String& text);
    // A program returning the value of one expression.
    void build_expression(const String& text, const Program** out);
    void build_operand(const token_st* begin, const token_st* end, const Program** out);
    void compile_operand(const Operand* operand, const Program** out);
    // One operand from the head of a token range, with the parser's retry mode.
    Operand* parse_operand(const token_st* begin, const token_st* end, const token_st** used_end);

    // Parses `text` as lines of statements, appending them to `statements`;
    // parse failures become diagnostics.
    void parse_statements(const String& text, statement_list& statements);

    // The report block of one diagnostic, and the blocks of all of them.
    std::string format_diagnostic(const diagnostic_st& diagnostic) const;
    std::string diagnostics_report() const;
    // The place name of reports: the file, or "<command prompt>".
    std::string place_name() const;

    static const char* category_name(int32_t category) noexcept;
};

// The front end's line parser, collecting statements and parse errors.
struct statement_collector_st {
    BuildInput* build;
    statement_list* statements;
    int32_t category = DIAGNOSTIC_CATEGORY_PARSER;
};
preprocessor_client_st make_statement_client(statement_collector_st* collector);

}  // namespace zobase
