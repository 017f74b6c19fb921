#pragma once
// A stack slot or a variable: a Variant and the kind of its declaration.
#include <cstdint>

#include "values/variant.h"

namespace zobase {

enum MemvarKind : uint8_t {
    MEMVAR_NONE = 0,     // a temporary or a free slot
    MEMVAR_LOCAL = 1,
    MEMVAR_PRIVATE = 2,  // also assigned-undeclared names and PARAMETERS
    MEMVAR_PUBLIC = 3,
};

struct Memvar : Variant {
    uint8_t kind = MEMVAR_NONE;

    // Releases the value and forgets the declaration: the slot is clean again.
    void clear(VmStack* stack) {
        release(stack);
        kind = MEMVAR_NONE;
    }
};

static_assert(sizeof(Memvar) == 48, "a slot is 48 bytes");

}  // namespace zobase
