#pragma once
// The instruction codecs (vm/instruction_codec.h) applied to compiled
// modules: the names of native handlers come from the module's libraries,
// linked calls go by the symbol of the function's name in the module.
#include <unordered_map>
#include <vector>

#include "vm/instruction_codec.h"

namespace zobase {

class Library;
class Module;
class Symtable;

class ModuleCodeTargets : public CodeTargets {
public:
    explicit ModuleCodeTargets(const Module* module);

    bool name_function(native_function handler, native_name_st* out) const override;
    bool name_command(native_command handler, native_name_st* out) const override;
    native_function find_function(const native_name_st& name) const override;
    native_command find_command(const native_name_st& name) const override;
    bool name_user_function(const UserFunction* function, uint32_t* symbol) const override;
    const UserFunction* find_user_function(uint32_t symbol) const override;

private:
    bool name_handler(const void* handler, native_name_st* out) const;
    const Module* module_;
    std::unordered_map<const void*, native_name_st> native_names_;
    std::unordered_map<const UserFunction*, uint32_t> function_symbols_;
};

// Encodes every program of the module (main code, functions, methods),
// decodes it again, checks that the copy encodes to the same bytes, and
// puts the decoded instructions in place of the compiled ones. A check of
// the codecs on real programs, run when the environment names
// ZOBASE_CODEC_ROUND_TRIP; a mismatch raises assert_failed_exception.
void round_trip_module(Module* module, Symtable& symbols);

}  // namespace zobase
