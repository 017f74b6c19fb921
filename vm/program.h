#pragma once
// A compiled unit of code: the instruction array and what a frame needs to
// run it (parameter count, local names). Owns its instructions.
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "base/document_location.h"
#include "base/export.h"
#include "vm/vm_op.h"

namespace zobase {

// What the VM knows of the compiled file a program belongs to: its name, for
// error reports and the stack trace. The compiler's Module derives from it.
class SourceModule {
public:
    explicit SourceModule(const String& file) : file_name(file) {}
    String file_name;
};

struct local_name_st {
    uint32_t symbol;
    uint64_t offset;  // the slot `offset` positions below the frame's locals
};

class ZO_API Program {
public:
    Program() noexcept;
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // Appends an instruction and returns its index; the program owns it.
    size_t emit(VmOp* op);
    size_t size() const noexcept { return code_.size(); }
    // Points a jump at the instruction with the given index.
    void set_jump_target(size_t jump_index, size_t target_index);
    VmOp** code() noexcept { return code_.data(); }
    VmOp* const* code() const noexcept { return code_.data(); }

    // Takes a finished array from the compiler: the instructions, then one
    // null element that a jump to the end may point at. Jumps are resolved.
    void adopt_code(std::vector<VmOp*>&& code);
    size_t instruction_count() const noexcept { return terminated_ ? code_.size() - 1 : code_.size(); }
    // Replaces an instruction (the linker's step); the old one is deleted.
    void replace_instruction(size_t position, VmOp* op);

    String name;
    const SourceModule* module = nullptr;  // null for a command line
    document_location_st last_location{};
    // Array position to source location, ascending by position.
    std::vector<std::pair<size_t, document_location_st>> locations;
    // Statement number to the first array position of that statement.
    std::map<uint64_t, size_t> statement_positions;
    // The location of the instruction at `position`, or of the nearest before it.
    bool location_of(size_t position, document_location_st* out) const noexcept;
    bool first_position_of_statement(uint64_t statement, size_t* out) const noexcept;

    // Never reused, unlike the address: what the VM keeps about a program
    // (vm/name_cache.h) is keyed by it.
    const uint64_t id;
    uint64_t parameter_count = 0;
    std::vector<local_name_st> local_names;
    uint64_t frame_size() const noexcept { return local_names.size(); }
    // The slot offset of a compiled local name.
    bool find_local(uint32_t symbol, uint64_t* offset) const noexcept;

private:
    std::vector<VmOp*> code_;
    std::vector<std::pair<size_t, size_t>> jumps_;  // re-pointed whenever the array moves
    bool terminated_ = false;
    void relink();
};

}  // namespace zobase
