#pragma once
// The number of the RuntimeError an action raises, or 0 when it raises none.
#include "values/error.h"

namespace zobase::testing {

template <typename Action>
int error_number_of(Action&& action) {
    try {
        action();
    } catch (const RuntimeError& e) {
        return e.number;
    }
    return 0;
}

}  // namespace zobase::testing
