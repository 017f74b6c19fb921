// Shared copy-on-write arrays.
#include "values/array.h"

#include <new>

#include "values/error.h"
#include "values/variant.h"

namespace zobase {

namespace {

array_storage_st* allocate_storage(uint64_t elements) {
    Variant* slots = nullptr;
    try {
        if (elements) slots = new Variant[elements];
    } catch (const std::bad_alloc&) {
        throw RuntimeError(ERR_ARRAY_DIMENSIONS_INVALID);
    }
    auto* storage = new array_storage_st;
    storage->elements = slots;
    storage->capacity = elements;
    storage->shares.store(1, std::memory_order_relaxed);
    return storage;
}

}  // namespace

Array Array::create(uint64_t rows, uint64_t columns) {
    bool too_many = rows > MAX_ARRAY_ELEMENTS || columns > MAX_ARRAY_ELEMENTS ||
                    (columns && rows > MAX_ARRAY_ELEMENTS / columns);
    if (too_many) throw RuntimeError(ERR_ARRAY_DIMENSIONS_INVALID);
    uint64_t elements = columns ? rows * columns : rows;
    return Array{allocate_storage(elements), elements, columns};
}

uint64_t Array::element_number(uint64_t row, uint64_t column) const {
    if (row == 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (column == 0) return row;  // one subscript reads in storage order
    return columns ? (row - 1) * columns + column : row - 1 + column;
}

// One subscript is the element number itself; 0 is outside the range.
const Variant* Array::read(uint64_t index) const {
    if (index == 0 || index > count) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
    return &storage->elements[index - 1];
}

const Variant* Array::read(uint64_t row, uint64_t column) const {
    return read(element_number(row, column));
}

// A value holding the only share writes in place: nobody else can take
// a share of it meanwhile, since that needs a holder to copy from.
Variant* Array::write(VmStack* stack, uint64_t index) {
    if (storage->shares.load(std::memory_order_acquire) > 1) unshare(stack);
    if (index == 0 || index > count) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
    return &storage->elements[index - 1];
}

Variant* Array::write(VmStack* stack, uint64_t row, uint64_t column) {
    return write(stack, element_number(row, column));
}

void Array::unshare(VmStack* stack) {
    array_storage_st* copy = allocate_storage(count);
    for (uint64_t i = 0; i < count; ++i) copy->elements[i].set_variant(&storage->elements[i]);
    release(stack);
    storage = copy;
}

void Array::release(VmStack* stack) {
    if (storage->shares.load(std::memory_order_acquire) != 1 &&
        storage->shares.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    for (uint64_t i = 0; i < count; ++i) storage->elements[i].release(stack);
    delete[] storage->elements;
    delete storage;
}

uint64_t Array::asubscript_row(uint64_t index) const noexcept {
    return columns ? (index - 1) / columns + 1 : index;
}

uint64_t Array::asubscript_column(uint64_t index) const noexcept {
    return columns ? (index - 1) % columns + 1 : 0;
}

Array* Variant::dimension(VmStack* stack, uint64_t rows, uint64_t new_columns) {
    Variant* target = follow();
    Array fresh = Array::create(rows, new_columns);
    if (target->tag == TAG_ARRAY && target->array.count) {
        const Array& old = target->array;
        uint64_t old_columns = old.columns ? old.columns : 1;
        uint64_t keep_rows = std::min(old.rows(), rows);
        uint64_t keep_columns = std::min(old_columns, new_columns ? new_columns : 1);
        for (uint64_t r = 0; r < keep_rows; ++r)
            for (uint64_t c = 0; c < keep_columns; ++c)
                fresh.storage->elements[r * (new_columns ? new_columns : 1) + c].set_variant(
                    &old.storage->elements[r * old_columns + c]);
    }
    target->release(stack);
    target->tag = TAG_ARRAY;
    target->array = fresh;
    return &target->array;
}

namespace {

const Array& array_of(const Variant* v) {
    const Variant* target = v->follow();
    if (target->tag != TAG_ARRAY) throw RuntimeError(ERR_NOT_AN_ARRAY);
    return target->array;
}

}  // namespace

uint64_t ArrayNumElements(const Variant* v) { return array_of(v).count; }
uint64_t ArrayNumRows(const Variant* v) { return array_of(v).rows(); }
uint64_t ArrayNumColumns(const Variant* v) { return array_of(v).columns; }
const Variant* ReadArrayItem(const Variant* v, uint64_t index) { return array_of(v).read(index); }
const Variant* ReadArrayItem(const Variant* v, uint64_t row, uint64_t column) {
    return array_of(v).read(row, column);
}
Variant* WriteArrayItem(VmStack* stack, Variant* v, uint64_t row, uint64_t column) {
    Variant* target = v->follow();
    if (target->tag != TAG_ARRAY) throw RuntimeError(ERR_NOT_AN_ARRAY);
    return target->array.write(stack, row, column);
}

}  // namespace zobase
