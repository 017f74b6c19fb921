// The data sessions a stack has before the table engine installs its own.
#include "vm/data_sessions.h"

#include <atomic>

#include "values/error.h"

namespace zobase {

// 2^40 changes apart: no run makes that many.
uint64_t DataSessions::first_names_epoch() noexcept {
    static std::atomic<uint64_t> next{1};
    return next.fetch_add(1ull << 40, std::memory_order_relaxed);
}

void PlainDataSessions::read_field(VmStack*, const field_ref_st&, Variant*) {
    throw assert_failed_exception("a field read without work areas");
}

void PlainDataSessions::write_field(VmStack*, const field_ref_st&, const Variant&) {
    throw assert_failed_exception("a field write without work areas");
}

void PlainDataSessions::read_expression_field(VmStack*, uint16_t, Variant*) {
    raise_not_available("VmOpReadFieldByIndex");
}

}  // namespace zobase
