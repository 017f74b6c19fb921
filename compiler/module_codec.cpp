// Module programs through the instruction codecs.
#include "compiler/module_codec.h"

#include <sstream>

#include "base/call_trace.h"
#include "compiler/library.h"
#include "compiler/module.h"
#include "objects/user_class.h"
#include "values/symtable.h"
#include "vm/try_scope.h"

namespace zobase {

namespace {

template <class Map>
void name_handlers(const Map& map, uint8_t table, std::unordered_map<const void*, native_name_st>& names) {
    for (const auto& [name, definition] : map)
        names.try_emplace(reinterpret_cast<const void*>(definition.handler), native_name_st{table, name});
}

template <class Map>
auto handler_in(const Map& map, const String& name) -> decltype(map.begin()->second.handler) {
    auto found = map.find(name);
    return found == map.end() ? nullptr : found->second.handler;
}

void add_function_symbols(const Module* module, std::unordered_map<const UserFunction*, uint32_t>& symbols) {
    for (const auto& [symbol, function] : module->functions) symbols.try_emplace(function, symbol);
    for (const Module* import : module->imported_modules) add_function_symbols(import, symbols);
}

}  // namespace

ModuleCodeTargets::ModuleCodeTargets(const Module* module) : module_(module) {
    for (const Library* library : module->libraries) {
        name_handlers(library->functions, NATIVE_FUNCTIONS, native_names_);
        name_handlers(library->variable_readers, NATIVE_VARIABLE_READERS, native_names_);
        name_handlers(library->commands, NATIVE_COMMANDS, native_names_);
        name_handlers(library->variable_writers, NATIVE_VARIABLE_WRITERS, native_names_);
    }
    add_function_symbols(module, function_symbols_);
}

bool ModuleCodeTargets::name_handler(const void* handler, native_name_st* out) const {
    auto found = native_names_.find(handler);
    if (found == native_names_.end()) return false;
    *out = found->second;
    return true;
}

bool ModuleCodeTargets::name_function(native_function handler, native_name_st* out) const {
    return name_handler(reinterpret_cast<const void*>(handler), out);
}

bool ModuleCodeTargets::name_command(native_command handler, native_name_st* out) const {
    return name_handler(reinterpret_cast<const void*>(handler), out);
}

native_function ModuleCodeTargets::find_function(const native_name_st& name) const {
    for (const Library* library : module_->libraries) {
        native_function found = name.table == NATIVE_VARIABLE_READERS ? handler_in(library->variable_readers, name.name)
                                : name.table == NATIVE_FUNCTIONS     ? handler_in(library->functions, name.name)
                                                                     : nullptr;
        if (found) return found;
    }
    return nullptr;
}

native_command ModuleCodeTargets::find_command(const native_name_st& name) const {
    for (const Library* library : module_->libraries) {
        native_command found = name.table == NATIVE_VARIABLE_WRITERS ? handler_in(library->variable_writers, name.name)
                               : name.table == NATIVE_COMMANDS       ? handler_in(library->commands, name.name)
                                                                     : nullptr;
        if (found) return found;
    }
    return nullptr;
}

bool ModuleCodeTargets::name_user_function(const UserFunction* function, uint32_t* symbol) const {
    auto found = function_symbols_.find(function);
    if (found == function_symbols_.end()) return false;
    *symbol = found->second;
    return true;
}

const UserFunction* ModuleCodeTargets::find_user_function(uint32_t symbol) const {
    return find_module_function(module_, symbol);
}

namespace {

std::string encode_whole(const Program& program, const CodeTargets& targets, std::stringbuf& buffer,
                         std::unordered_map<uint32_t, uint64_t>* symbol_indexes) {
    module_writer out(&buffer, &targets);
    encode_program(program, out);
    out.patch_jumps();
    *symbol_indexes = out.symbol_indexes;
    return buffer.str();
}

// Catch filters come out of the stream without their module.
void set_filter_modules(Program* program, const SourceModule* module) {
    program->module = module;
    for (size_t i = 0; i < program->instruction_count(); ++i) {
        if (program->code()[i]->opcode != OP_TRY_ENTER) continue;
        for (catch_record_st& record : static_cast<VmOpTryEnter*>(program->code()[i])->catches)
            if (record.filter) set_filter_modules(record.filter.get(), module);
    }
}

// The decoded instructions move into the compiled program's array, and
// their jumps with them.
void take_instructions(Program* program, Program* decoded) {
    VmOp** from = decoded->code();
    for (size_t i = 0; i < program->instruction_count(); ++i) {
        VmOp* op = from[i];
        from[i] = nullptr;
        if (auto* jump = dynamic_cast<VmOpJumpBase*>(op)) jump->target = program->code() + (jump->target - from);
        program->replace_instruction(i, op);
    }
}

void round_trip_program(Program* program, const CodeTargets& targets, Symtable& symbols) {
    ZO_TRACE();
    std::stringbuf buffer(std::ios::in | std::ios::out | std::ios::binary);
    std::unordered_map<uint32_t, uint64_t> indexes;
    std::string written = encode_whole(*program, targets, buffer, &indexes);

    opcode_decoder_stack_st decoder;
    decoder.targets = &targets;
    for (auto [id, index] : indexes) decoder.symbols[index] = symbols.symbolize(symbols.resolve(id));
    std::istream in(&buffer);
    std::unique_ptr<Program> decoded = decode_program(decoder, in);
    decoder.resolve_jumps();
    if (decoded->instruction_count() != program->instruction_count())
        throw assert_failed_exception("a decoded program has another length");
    set_filter_modules(decoded.get(), program->module);

    std::stringbuf again(std::ios::in | std::ios::out | std::ios::binary);
    std::unordered_map<uint32_t, uint64_t> indexes_again;
    if (encode_whole(*decoded, targets, again, &indexes_again) != written)
        throw assert_failed_exception("a decoded program encodes differently");
    take_instructions(program, decoded.get());
}

Program* code_of(const UserFunction* function) { return const_cast<Program*>(function->program()); }

}  // namespace

void round_trip_module(Module* module, Symtable& symbols) {
    ZO_TRACE();
    ModuleCodeTargets targets(module);
    if (module->main) round_trip_program(code_of(module->main), targets, symbols);
    for (auto& [symbol, function] : module->functions) round_trip_program(code_of(function), targets, symbols);
    for (auto& [symbol, user_class] : module->classes)
        for (const user_method_st& method : user_class->methods())
            round_trip_program(code_of(method.function.get()), targets, symbols);
}

}  // namespace zobase
