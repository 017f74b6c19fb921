#include "vm/program.h"

#include <atomic>

#include <algorithm>
#include <iterator>

#include "values/error.h"

namespace zobase {

namespace {
std::atomic<uint64_t> last_program_id{0};
}  // namespace

Program::Program() noexcept : id(last_program_id.fetch_add(1, std::memory_order_relaxed) + 1) {}

Program::~Program() {
    for (VmOp* op : code_) delete op;
}

size_t Program::emit(VmOp* op) {
    ZO_ASSERT(!terminated_);
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

void Program::adopt_code(std::vector<VmOp*>&& code) {
    ZO_ASSERT(code_.empty() && !code.empty() && code.back() == nullptr);
    code_ = std::move(code);
    terminated_ = true;
}

void Program::replace_instruction(size_t position, VmOp* op) {
    ZO_ASSERT(position < instruction_count());
    delete code_[position];
    code_[position] = op;
}

bool Program::location_of(size_t position, document_location_st* out) const noexcept {
    auto after = std::upper_bound(locations.begin(), locations.end(), position,
                                  [](size_t p, const auto& entry) { return p < entry.first; });
    if (after == locations.begin()) return false;
    *out = std::prev(after)->second;
    return true;
}

bool Program::first_position_of_statement(uint64_t statement, size_t* out) const noexcept {
    auto found = statement_positions.find(statement);
    if (found == statement_positions.end()) return false;
    *out = found->second;
    return true;
}

}  // namespace zobase
