#include "objects/array_enumerator.h"

#include "base/call_trace.h"
#include "objects/native_members.h"
#include "values/error.h"

namespace zobase {

namespace {

void move_next_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    require_arguments(argc, 0, 0);
    ret->set_bool(current_object<ArrayEnumerator>(stack)->move_next());
}

void key_access(VmStack* stack, unsigned long long argc, Variant* ret) {
    refuse_subscripts(stack, argc);
    auto* self = current_object<ArrayEnumerator>(stack);
    self->require_current();
    ret->set_integer(static_cast<long long>(self->position));
}

void value_access(VmStack* stack, unsigned long long argc, Variant* ret) {
    refuse_subscripts(stack, argc);
    auto* self = current_object<ArrayEnumerator>(stack);
    self->require_current();
    self->array.array.read(self->position)->copy(ret);
}

}  // namespace

const builtin_class_data_st array_enumerator_class_data = {nullptr, false};

const library_class_member_row_st array_enumerator_members[] = {
    {"Key", nullptr, key_access, nullptr, nullptr},
    {"MoveNext", move_next_call, nullptr, nullptr, nullptr},
    {"Value", nullptr, value_access, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

ArrayEnumerator::ArrayEnumerator(Class* object_class, const Array& source) : Object(object_class) {
    array.set_array(&source);
}

ArrayEnumerator::~ArrayEnumerator() { array.release(nullptr); }

bool ArrayEnumerator::move_next() {
    if (position <= array.array.count) ++position;
    return position <= array.array.count;
}

void ArrayEnumerator::require_current() const {
    if (position == 0 || position > array.array.count) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
}

void create_array_enumerator(VmStack* stack, const Array& source, Variant* dest) {
    ZO_TRACE();
    wrap_new_object(new ArrayEnumerator(builtin_class(stack, "Array.Iterator"), source), dest);
}

}  // namespace zobase
