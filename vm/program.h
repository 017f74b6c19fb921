#pragma once
// A compiled unit of code: the instruction array and what a frame needs to
// run it (parameter count, local names). Owns its instructions.
#include <cstdint>
#include <memory>
#include <vector>

#include "values/export.h"
#include "vm/vm_op.h"

namespace zobase {

struct local_name_st {
    uint32_t symbol;
    uint64_t offset;  // the slot `offset` positions below the frame's locals
};

class ZO_API Program {
public:
    Program() = default;
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

    uint64_t parameter_count = 0;
    std::vector<local_name_st> local_names;
    uint64_t frame_size() const noexcept { return local_names.size(); }
    // The slot offset of a compiled local name.
    bool find_local(uint32_t symbol, uint64_t* offset) const noexcept;

private:
    std::vector<VmOp*> code_;
    std::vector<std::pair<size_t, size_t>> jumps_;  // re-pointed whenever the array moves
    void relink();
};

}  // namespace zobase
