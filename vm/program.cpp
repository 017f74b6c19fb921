#include "vm/program.h"

#include "values/error.h"

namespace zobase {

Program::~Program() {
    for (VmOp* op : code_) delete op;
}

size_t Program::emit(VmOp* op) {
    VmOp** before = code_.data();
    code_.push_back(op);
    if (code_.data() != before) relink();
    return code_.size() - 1;
}

void Program::set_jump_target(size_t jump_index, size_t target_index) {
    ZO_ASSERT(jump_index < code_.size());
    jumps_.emplace_back(jump_index, target_index);
    relink();
}

// Frames hold few names, so a scan beats hashing and keeps the table a
// plain vector the compiler can fill directly.
bool Program::find_local(uint32_t symbol, uint64_t* offset) const noexcept {
    for (const local_name_st& name : local_names) {
        if (name.symbol == symbol) {
            *offset = name.offset;
            return true;
        }
    }
    return false;
}

// Jump targets are addresses inside the code array, so they follow it when
// the array grows. A target may name the position one past the last
// instruction while the program is still being built.
void Program::relink() {
    for (auto [jump, target] : jumps_)
        static_cast<VmOpJumpBase*>(code_[jump])->target = code_.data() + target;
}

}  // namespace zobase
