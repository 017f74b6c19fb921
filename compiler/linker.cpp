// Module linking: direct calls where the target is known, and the entry.
#include "base/call_trace.h"
#include "compiler/build_input.h"
#include "compiler/module.h"
#include "objects/user_class.h"
#include "values/symtable.h"

namespace zobase {

namespace {

// The module owns its functions, so linking may edit their code in place.
Program* code_of(const UserFunction* function) { return const_cast<Program*>(function->program()); }

}  // namespace

const UserFunction* find_module_function(const Module* module, unsigned symbol) {
    if (const UserFunction* own = module->find_function(symbol)) return own;
    for (const Module* import : module->imported_modules)
        if (const UserFunction* imported = import->find_function(symbol)) return imported;
    return nullptr;
}

const UserFunction* select_entry_by_stem(Symtable& symbols, const Module& module) {
    return module.find_function(symbols.symbolize(file_stem(module.file_name)));
}

void link_module(LinkerInfo& info, Module* module) {
    ZO_TRACE();
    if (module->main) link_program(info, code_of(module->main), module);
    for (auto& [symbol, function] : module->functions) link_program(info, code_of(function), module);
    for (auto& [symbol, user_class] : module->classes) link_userclass(info, user_class, module);
    module->entry = module->main ? module->main : select_entry_by_stem(*info.symbols, *module);
}

}  // namespace zobase
