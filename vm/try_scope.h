#pragma once
// TRY regions. Entering a TRY puts its instruction on the frame's list of
// scopes; an error then looks for a scope around the frame's position whose
// catch filter accepts the exception object.
#include <cstdint>
#include <memory>
#include <vector>

#include "vm/program.h"
#include "vm/vm_op.h"

namespace zobase {

struct VmFrame;

// Positions are indexes into the code array of the program holding the TRY.
struct catch_record_st {
    uint64_t target;
    uint32_t symbol;                 // the TO variable, 0 when the clause has none
    std::unique_ptr<Program> filter;  // the WHEN expression; null accepts everything
};

class VmOpTryEnter : public VmOp {
public:
    uint64_t region_start;
    uint64_t region_end;  // first position after the region
    std::vector<catch_record_st> catches;

    VmOpTryEnter(uint64_t start, uint64_t end) : VmOp(OP_TRY_ENTER), region_start(start), region_end(end) {}
    void add_catch(uint64_t target, uint32_t symbol, Program* filter) {
        catches.push_back({target, symbol, std::unique_ptr<Program>(filter)});
    }
    bool covers(uint64_t position) const noexcept {
        return position >= region_start && position < region_end;
    }
};

struct try_scope_st {
    const VmOpTryEnter* scope;
    try_scope_st* next;
};

// Pushes the scope on the frame's list unless it is there already, so a TRY
// inside a loop doesn't grow the list.
void enter_try_scope(VmFrame* frame, const VmOpTryEnter* scope);
// Frees the frame's list.
void free_try_scopes(VmFrame* frame);

}  // namespace zobase
