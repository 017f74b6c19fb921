// The thrown-object exception: copies share the object, each owning a reference.
#include "values/error.h"

namespace zobase {

RuntimeThrow::RuntimeThrow(const Variant& thrown, const VmFrame* frame, uint32_t catch_symbol,
                           long long code_position)
    : RuntimeInterrupt(INTERRUPT_THROW),
      value(thrown),
      target(frame),
      symbol(catch_symbol),
      position(code_position) {}

RuntimeThrow::RuntimeThrow(const RuntimeThrow& other)
    : RuntimeInterrupt(INTERRUPT_THROW),
      value(other.value),
      target(other.target),
      symbol(other.symbol),
      position(other.position) {}

RuntimeThrow& RuntimeThrow::operator=(const RuntimeThrow& other) {
    if (this == &other) return *this;
    Variant kept(other.value);  // other may be owned by the value released below
    value.release(nullptr);
    std::memcpy(static_cast<void*>(&value), &kept, sizeof(Variant));
    target = other.target;
    symbol = other.symbol;
    position = other.position;
    return *this;
}

RuntimeThrow::~RuntimeThrow() { value.release(nullptr); }

const char* RuntimeThrow::name() const noexcept { return "zobase::RuntimeThrow"; }

}  // namespace zobase
