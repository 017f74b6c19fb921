#include "runtime/runtime_resolver.h"

#include "base/call_trace.h"
#include "builtins/library.h"
#include "builtins/native_extensions.h"
#include "compiler/build_input.h"
#include "compiler/module.h"
#include "runtime/module_cache.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// A loaded program answers to its own functions and, through its main
// program, to the stem of its file, as DO would call it.
const UserFunction* find_in_module(const Module& module, uint32_t symbol, const String& name) {
    if (const UserFunction* function = module.find_function(symbol)) return function;
    if (module.main && Collation::unicode_machine_ci->compare(file_stem(module.file_name), name) == 0)
        return module.main;
    return nullptr;
}

// A script compiled by execscript: its module lives as long as this function.
class ScriptFunction : public UserFunction {
public:
    explicit ScriptFunction(Module* module) : UserFunction(nullptr), module_(module) {}

    void exec(VmStack* stack, unsigned long long argc, bool has_this, Variant* ret) const override {
        if (module_->entry) module_->entry->exec(stack, argc, has_this, ret);
        else ret->set_true();
    }

private:
    std::unique_ptr<Module> module_;
};

class RuntimeResolver : public CallResolver {
public:
    explicit RuntimeResolver(Runtime* runtime) : runtime_(runtime) {}

    String symbol_text(uint32_t symbol) const override { return runtime_->symbols().resolve(symbol); }

    // DECLAREd functions, then the SET LIBRARY list.
    const library_function_st* find_library_function(const String& name) const override {
        return runtime_->services()->native_extensions().find_function(name);
    }

    const UserFunction* find_procedure(uint32_t symbol) const override {
        return runtime_->module_cache().first_procedure<const UserFunction>(
            [symbol](const Module* module) { return module->find_function(symbol); });
    }

    const UserFunction* find_loaded_program(uint32_t symbol) const override {
        String name = symbol_text(symbol);
        return runtime_->module_cache().first_loaded<const UserFunction>(
            [&](const Module* module) { return find_in_module(*module, symbol, name); });
    }

    uint32_t symbolize(const String& name) const override {
        return runtime_->symbols().symbolize(name);
    }

    const UserFunction* find_in_module_of(const Program* program, uint32_t symbol) const override {
        if (!program || !program->module) return nullptr;
        return module_of(program)->find_function(symbol);
    }

    bool has_program_file(const String& file) const override {
        String found;
        return runtime_->find_file(file, &found, true, true);
    }

    const UserFunction* load_from_file(VmStack* stack, const String& file,
                                       uint32_t symbol) const override {
        const Module* module = runtime_->module_cache().load_from_disk(stack, file, CachePolicy(0));
        if (!module) return nullptr;
        return symbol ? module->find_function(symbol) : module->entry;
    }

    std::unique_ptr<Program> compile_macro(VmStack* stack, const String& text,
                                           const document_location_st* written_at) const override {
        ZO_TRACE();
        BuildInput build(stack);
        prepare(build, stack);
        build.forced_location = written_at;
        return std::unique_ptr<Program>(build.build_command(text));
    }

    std::unique_ptr<UserFunction> compile_script(VmStack* stack, const String& text) const override {
        ZO_TRACE();
        BuildInput build(stack);
        prepare(build, stack);
        return std::make_unique<ScriptFunction>(build.build_module(String("<script>"), text));
    }

    std::unique_ptr<Program> compile_expression(VmStack* stack, const String& text,
                                                const compiler_table_context_st* table) const override {
        ZO_TRACE();
        BuildInput build(stack);
        prepare(build, stack);
        build.table = table;
        const Program* program = nullptr;
        build.build_expression(text, &program);
        return std::unique_ptr<Program>(const_cast<Program*>(program));
    }

    Class* find_class(VmStack* stack, uint32_t symbol, const String* file) const override {
        ZO_TRACE();
        if (file) return find_class_in(*runtime_->module_cache().load_from_disk(stack, *file, CACHE_CHECK_TIME), symbol);
        if (stack->frame && stack->frame->program->module)
            if (Class* found = module_of(stack->frame->program)->find_class(symbol)) return found;
        if (Class* found = runtime_->library()->find_class(symbol)) return found;
        auto in_module = [symbol](const Module* module) { return module->find_class(symbol); };
        const ModuleCache& cache = runtime_->module_cache();
        if (Class* found = cache.first_procedure<Class>(in_module)) return found;
        return cache.first_loaded<Class>(in_module);
    }

    Class* find_builtin_class(uint32_t symbol) const override { return runtime_->library()->find_class(symbol); }

private:
    // A file's classes: those of its entry module and of what it compiled along.
    static Class* find_class_in(const Module& entry, uint32_t symbol) {
        if (Class* found = entry.find_class(symbol)) return found;
        if (!entry.domain) return nullptr;
        for (const auto& [path, module] : entry.domain->modules)
            if (Class* found = module->find_class(symbol)) return found;
        return nullptr;
    }

    // Macro text sees the built-ins and the functions of the code around it.
    void prepare(BuildInput& build, VmStack* stack) const {
        build.import_library(runtime_->library());
        build.set_module_context_from_frame(stack);
    }

    Runtime* runtime_;
};

}  // namespace

std::unique_ptr<CallResolver> create_runtime_resolver(Runtime* runtime) {
    return std::make_unique<RuntimeResolver>(runtime);
}

}  // namespace zobase
