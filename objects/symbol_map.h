#pragma once
// A member table keyed by symbol id: open addressing over a power-of-two
// array, probed linearly. Symbol ids are small dense integers, so the look-up
// on every member access is one multiply and, nearly always, one compare.
// Filled once and then only read; a changed table is a new table.
#include <cstdint>
#include <vector>

namespace zobase {

template <class T>
class SymbolMap {
public:
    T find(uint32_t symbol) const noexcept {
        if (slots_.empty()) return T{};
        for (size_t i = home(symbol);; i = (i + 1) & mask_) {
            const slot_st& slot = slots_[i];
            if (slot.symbol == symbol) return slot.value;
            if (slot.symbol == EMPTY) return T{};
        }
    }

    // Enters or replaces the value of a symbol.
    void insert(uint32_t symbol, T value) {
        if ((count_ + 1) * 4 > slots_.size() * 3) grow();
        place(symbol, value);
    }

    size_t size() const noexcept { return count_; }

private:
    static constexpr uint32_t EMPTY = 0;  // symbol 0 is never given out
    struct slot_st {
        uint32_t symbol = EMPTY;
        T value{};
    };

    size_t home(uint32_t symbol) const noexcept {
        return static_cast<size_t>((symbol * 2654435769u) >> shift_) & mask_;
    }

    void place(uint32_t symbol, T value) {
        for (size_t i = home(symbol);; i = (i + 1) & mask_) {
            slot_st& slot = slots_[i];
            if (slot.symbol == symbol) {
                slot.value = value;
                return;
            }
            if (slot.symbol == EMPTY) {
                slot = {symbol, value};
                ++count_;
                return;
            }
        }
    }

    void grow() {
        std::vector<slot_st> old = std::move(slots_);
        size_t capacity = old.empty() ? 8 : old.size() * 2;
        slots_.assign(capacity, slot_st{});
        mask_ = capacity - 1;
        shift_ = 32;
        for (size_t c = capacity; c > 1; c >>= 1) --shift_;
        count_ = 0;
        for (const slot_st& slot : old)
            if (slot.symbol != EMPTY) place(slot.symbol, slot.value);
    }

    std::vector<slot_st> slots_;
    size_t mask_ = 0;
    unsigned shift_ = 32;
    size_t count_ = 0;
};

}  // namespace zobase
