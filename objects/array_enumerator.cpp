#include "objects/array_enumerator.h"

#include <memory>

#include "base/call_trace.h"
#include "text/collation.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// "movenext" has no fixed symbol, and interning it would need the compiler's
// table: the text is compared instead.
bool is_move_next(VmStack* stack, unsigned symbol) {
    static const String move_next("movenext");
    return StringEqual_Unicode_Machine_CI{}(stack->symbol_text(symbol), move_next);
}

bool is_item_symbol(unsigned symbol) { return symbol == SYMBOL_KEY || symbol == SYMBOL_VALUE; }

}  // namespace

ArrayEnumerator::ArrayEnumerator(const Array& array) { array_.set_array(&array); }

ArrayEnumerator::~ArrayEnumerator() { array_.release(nullptr); }

bool ArrayEnumerator::move_next() {
    if (position_ <= array_.array.count) ++position_;
    return position_ <= array_.array.count;
}

void ArrayEnumerator::require_current() const {
    if (position_ == 0 || position_ > array_.array.count) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
}

void ArrayEnumerator::virtual_call(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    if (!is_move_next(stack, symbol)) throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
    if (argc) throw RuntimeError(ERR_ARGUMENT_INVALID);
    ret->set_bool(move_next());
}

void ArrayEnumerator::virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    if (!is_item_symbol(symbol)) throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
    if (argc) throw RuntimeError(ERR_NOT_AN_ARRAY, stack->symbol_text(symbol));
    require_current();
    if (symbol == SYMBOL_KEY)
        ret->set_integer(static_cast<int64_t>(position_));
    else
        array_.array.read(position_)->copy(ret);
}

// KEY and VALUE are computed, so there is no slot to lend or to overwrite.
void ArrayEnumerator::virtual_access_ref(VmStack* stack, unsigned symbol, size_t, Variant*) {
    if (!is_item_symbol(symbol)) throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
    throw RuntimeError(ERR_PROPERTY_READ_ONLY, stack->symbol_text(symbol));
}

void ArrayEnumerator::virtual_assign(VmStack* stack, unsigned symbol, size_t) {
    if (!is_item_symbol(symbol)) throw RuntimeError(ERR_PROPERTY_NOT_FOUND, stack->symbol_text(symbol));
    throw RuntimeError(ERR_PROPERTY_READ_ONLY, stack->symbol_text(symbol));
}

void create_array_enumerator(const Array& array, Variant* dest) {
    ZO_TRACE();
    auto enumerator = std::make_unique<ArrayEnumerator>(array);
    dest->set_new_object(enumerator.get());
    enumerator.release();
}

}  // namespace zobase
