#include "frontend/syntax_tree.h"

#include <cstring>

#include "base/call_trace.h"
#include "values/error.h"

namespace zobase {

Operand::~Operand() = default;
PathItem::~PathItem() = default;
Statement::~Statement() = default;

// Anything but a constant needs the compiler to yield a value.
void Operand::val(VmStack* stack, Variant* result) const {
    raise_not_available("Operand::val");
}

Const_Value::~Const_Value() { value.release(nullptr); }

void Const_Value::val(VmStack* stack, Variant* result) const { value.copy(result); }

void option_ptr_list::push(Option* option, duplicate_callback callback, void* context) {
    std::unique_ptr<Option> owned(option);
    if (find(option->key)) {
        if (callback) callback(option, context);
        return;
    }
    items.push_back(std::move(owned));
}

const Option* option_ptr_list::find(const char* key) const noexcept {
    for (const auto& item : items)
        if (std::strcmp(item->key, key) == 0) return item.get();
    return nullptr;
}

}  // namespace zobase
