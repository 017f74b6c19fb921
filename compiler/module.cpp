// The module product of a build: a source file's main program and functions.
#include "compiler/module.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <unordered_map>

#include "base/call_trace.h"
#include "compiler/build_input.h"
#include "objects/user_class.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

// An empty body defines nothing: a call to it fails like a call to an unknown name.
UserFunction* compile_function(BuildInput& input, int flags, const String& name, const statement_iterator& end,
                               statement_iterator& it, const Stmt_Declaration* parameters,
                               const document_location_st& start) {
    ZO_TRACE();
    Compiler compiler(input.stack);
    input.init_compiler(compiler);
    compiler.reset(flags, false);
    CodePath path(&compiler);
    if (flags & COMPILER_METHOD) {
        unsigned long long offset;
        compiler.compile_time_define_memvar(SYMBOL_THIS, &offset);
        path.known_locals.insert(SYMBOL_THIS);
    }
    compile_program(end, it, parameters, path);
    input.log_compiler_errors(compiler);
    std::unique_ptr<Program> program(compiler.create_program(name, &compiler.code, compiler.locals,
                                                             compiler.parameter_count, start, nullptr));
    if (compiler.statement_number == 0) return nullptr;
    return new UserFunction(program.release());
}

namespace {

struct module_build_st {
    BuildInput* input;
    Module* module;
    statement_iterator end;
};

typedef void (*compile_module_stmt_fn)(module_build_st& build, statement_iterator& it);

// The first definition of a name stands; a later one is compiled for its
// errors and dropped.
void compile_module_stmt_function(module_build_st& build, statement_iterator& it) {
    const auto* head = static_cast<const Stmt_Function*>(it->get());
    ++it;
    std::unique_ptr<UserFunction> function(compile_function(*build.input, COMPILER_FLAGS_FUNCTION, head->name,
                                                            build.end, it, head->parameters.get(),
                                                            head->location));
    if (!function) return;
    unsigned symbol = build.input->stack->services->symbols().symbolize(head->name);
    if (build.module->functions.try_emplace(symbol, function.get()).second) function.release();
}

// ENDFUNC closes the body before it, which ended there already.
void compile_module_stmt_endfunc(module_build_st&, statement_iterator& it) { ++it; }

// A statement of the outline that isn't built yet: a diagnostic at its place.
void not_available_at(module_build_st& build, const Statement* statement, const char* feature) {
    build.input->add_diagnostic(DIAGNOSTIC_CATEGORY_COMPILER, ERR_NOT_AVAILABLE, statement->location,
                                String(feature));
}

void compile_module_stmt_define(module_build_st& build, statement_iterator& it) {
    compile_class_definition(*build.input, build.module, build.end, it);
}

void compile_module_stmt_import(module_build_st& build, statement_iterator& it) {
    not_available_at(build, (it++)->get(), "import");
}

// What the outline can't place: a closer without its opener (ENDDEFINE
// without DEFINE CLASS) or a syntax error. The lines are still compiled, so
// that their errors are reported too.
void compile_module_stray_statement(module_build_st& build, statement_iterator& it) {
    document_location_st location = (*it)->location;
    if (ends_statement_list((*it)->type)) {
        build.input->add_diagnostic(DIAGNOSTIC_CATEGORY_COMPILER, ERR_SYNTAX, location);
        ++it;
    }
    delete compile_function(*build.input, COMPILER_FLAGS_FUNCTION, String(), build.end, it, nullptr, location);
}

const std::unordered_map<int32_t, compile_module_stmt_fn>& module_statement_table() {
    static const std::unordered_map<int32_t, compile_module_stmt_fn> table = {
        {STMT_DEFINE_CLASS, compile_module_stmt_define},
        {STMT_ENDFUNC, compile_module_stmt_endfunc},
        {STMT_FUNCTION, compile_module_stmt_function},
        {STMT_IMPORT, compile_module_stmt_import},
    };
    return table;
}

void compile_module_statement(module_build_st& build, statement_iterator& it) {
    const auto& table = module_statement_table();
    auto row = table.find((*it)->type);
    if (row == table.end()) compile_module_stray_statement(build, it);
    else row->second(build, it);
}

struct bom_st {
    const char* bytes;
    size_t size;
    const char* charset;
};

// Longest first: the UTF-32LE mark begins with the UTF-16LE one.
constexpr bom_st BOMS[] = {
    {"\xFF\xFE\x00\x00", 4, "utf-32le"}, {"\x00\x00\xFE\xFF", 4, "utf-32be"}, {"\xEF\xBB\xBF", 3, "utf-8"},
    {"\xFF\xFE", 2, "utf-16le"},         {"\xFE\xFF", 2, "utf-16be"},
};

}  // namespace

String read_source_file(const String& path, const Charset* fallback) {
    std::ifstream in(std::filesystem::path(path), std::ios::binary);
    if (!in) throw RuntimeError(ERR_FILE_READ, path);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (const bom_st& bom : BOMS) {
        if (bytes.size() < bom.size || std::memcmp(bytes.data(), bom.bytes, bom.size) != 0) continue;
        if (const Charset* charset = get_charset_by_name(bom.charset))
            return String::fromBytes(bytes.data() + bom.size, bytes.size() - bom.size, charset);
    }
    return String::fromBytes(bytes.data(), bytes.size(), fallback ? fallback : Charset::utf8);
}

Module::~Module() {
    delete main;
    for (auto& [symbol, function] : functions) delete function;
    for (auto& [symbol, user_class] : classes) delete user_class;
}

Class* Module::find_class(uint32_t symbol) const {
    auto found = classes.find(symbol);
    if (found != classes.end()) return found->second;
    for (const Module* import : imported_modules)
        if (Class* imported = import->find_class(symbol)) return imported;
    return nullptr;
}

const UserFunction* Module::find_function(uint32_t symbol) const {
    auto found = functions.find(symbol);
    return found == functions.end() ? nullptr : found->second;
}

String file_stem(const String& file_name) { return String(std::filesystem::path(file_name).stem()); }

Module* BuildInput::build_module(const String& name, const String& text) {
    ZO_TRACE();
    file_name = name;
    source = text;
    statement_list statements;
    parse_statements(text, statements);
    auto module = std::make_unique<Module>(name);
    module->libraries = libraries;
    module_build_st build{this, module.get(), statements.cend()};
    statement_iterator it = statements.cbegin();
    document_location_st start = it != build.end ? (*it)->location : document_location_st{};
    module->main = compile_function(*this, COMPILER_FLAGS_FUNCTION, file_stem(name), build.end, it, nullptr, start);
    while (it != build.end) compile_module_statement(build, it);
    raise_diagnostics();
    LinkerInfo info{&stack->services->symbols(), find_module_function};
    link_module(info, module.get());
    return module.release();
}

}  // namespace zobase
