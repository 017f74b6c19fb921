#pragma once
// One- or two-dimensional arrays of Variant, shared between copies and copied
// on write. Subscripts count from 1.
#include <atomic>
#include <cstdint>

#include "base/export.h"

namespace zobase {

class Variant;
class VmStack;

struct array_storage_st {
    Variant* elements;
    uint64_t capacity;
    // The values holding it. Atomic: an array in a property of an object
    // that threads share is copied and released on several stacks.
    std::atomic<uint64_t> shares;
};

class ZO_API Array {
public:
    array_storage_st* storage;
    uint64_t count;
    uint64_t columns;  // 0 for one dimension

    const Variant* read(uint64_t index) const;
    const Variant* read(uint64_t row, uint64_t column) const;
    Variant* write(VmStack* stack, uint64_t index);
    Variant* write(VmStack* stack, uint64_t row, uint64_t column);
    void release(VmStack* stack);
    void acquire() noexcept { storage->shares.fetch_add(1, std::memory_order_relaxed); }

    uint64_t rows() const noexcept { return columns ? count / columns : count; }
    uint64_t asubscript_row(uint64_t index) const noexcept;
    uint64_t asubscript_column(uint64_t index) const noexcept;

    // A fresh storage of `elements` clean slots with one share. More than
    // MAX_ARRAY_ELEMENTS, or storage the heap refuses, is error 230.
    static Array create(uint64_t rows, uint64_t columns);

private:
    uint64_t element_number(uint64_t row, uint64_t column) const;
    void unshare(VmStack* stack);
};

// Some 670 MB of elements: far above what a program keeps in one array, far
// below the sizes whose request would only end in the OOM killer.
constexpr uint64_t MAX_ARRAY_ELEMENTS = uint64_t(1) << 24;

static_assert(sizeof(Array) == 24, "Array header is three words");

ZO_API uint64_t ArrayNumElements(const Variant* array);
ZO_API uint64_t ArrayNumRows(const Variant* array);
ZO_API uint64_t ArrayNumColumns(const Variant* array);
ZO_API const Variant* ReadArrayItem(const Variant* array, uint64_t index);
ZO_API const Variant* ReadArrayItem(const Variant* array, uint64_t row, uint64_t column);
ZO_API Variant* WriteArrayItem(VmStack* stack, Variant* array, uint64_t row, uint64_t column);

}  // namespace zobase
