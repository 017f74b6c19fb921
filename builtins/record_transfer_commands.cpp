// SCATTER and GATHER: the current record's fields to an array, to private
// variables or to an object, and back. Memo and blob fields take part only
// with MEMO; BLANK scatters the empty values.
#include <cstring>
#include <vector>

#include "base/call_trace.h"
#include "builtins/handlers.h"
#include "builtins/work_area.h"
#include "objects/object.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

constexpr long long TRANSFER_MEMO = 1;
constexpr long long TRANSFER_BLANK = 2;
constexpr long long SCATTER_ADDITIVE = 4;

// The fields a transfer visits, by position.
std::vector<uint64_t> visited_fields(Table_Object* table, long long flags) {
    std::vector<uint64_t> fields;
    for (uint64_t i = 0; i < table->cnt_fields(); ++i) {
        int32_t type = table->get_field_info(i).type;
        bool memo_like = type == FIELD_TYPE_MEMO || type == FIELD_TYPE_BLOB;
        if (!memo_like || (flags & TRANSFER_MEMO)) fields.push_back(i);
    }
    return fields;
}

// The field's value, or its empty value with BLANK, into a clean dest.
void scattered_value(VmStack* stack, Table_Object* table, uint64_t index, long long flags, Variant* dest) {
    if (flags & TRANSFER_BLANK) table->get_blank(stack, index, dest);
    else table->get_field(stack, index, dest);
}

// Sets the fields through `body`, then commits. A field that refuses its
// value leaves none of them set, unless the table buffers its rows.
template <typename Body>
void gather(VmStack* stack, Table_Object* table, Body&& body) {
    try {
        body();
    } catch (...) {
        if (table->buffering == BUFFERING_NONE) table->revert();
        throw;
    }
    table->commit(stack);
}

}  // namespace

void void_stackcall_scatter_to(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    Table_Object* table = current_table(stack);
    long long flags = argument(stack, 1).integer;
    std::vector<uint64_t> fields = visited_fields(table, flags);
    Array* array = Param(stack, 2)->dimension(stack, fields.size(), 0);
    for (uint64_t k = 0; k < fields.size(); ++k) {
        Variant value;
        scattered_value(stack, table, fields[k], flags, &value);
        Variant* element = array->write(stack, k + 1);
        element->release(stack);
        std::memcpy(static_cast<void*>(element), &value, sizeof(Variant));
    }
}

void void_stackcall_scatter_memvar(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    Table_Object* table = current_table(stack);
    long long flags = argument(stack, 1).integer;
    for (uint64_t index : visited_fields(table, flags)) {
        Variant value;
        scattered_value(stack, table, index, flags, &value);
        Memvar* var = nullptr;
        stack->alloc_undefined_memvar(table->get_symbol_id_by_field(index), &var);
        var->release(stack);
        std::memcpy(static_cast<void*>(static_cast<Variant*>(var)), &value, sizeof(Variant));
    }
}

// A new Empty object, or with ADDITIVE the object given, which keeps what it
// has and takes the fields as properties.
void void_stackcall_scatter_name(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    Table_Object* table = current_table(stack);
    long long flags = argument(stack, 1).integer;
    Variant* target = Param(stack, 2)->follow();
    std::vector<uint64_t> fields = visited_fields(table, flags);
    std::vector<Variant> values(fields.size());
    std::vector<new_property_st> properties;
    try {
        for (size_t k = 0; k < fields.size(); ++k) {
            scattered_value(stack, table, fields[k], flags, &values[k]);
            properties.push_back({table->get_symbol_id_by_field(fields[k]), nullptr, &values[k]});
        }
        Object* record;
        if ((flags & SCATTER_ADDITIVE) && target->tag == TAG_OBJECT && target->object.control) {
            record = target->object.object;
        } else {
            target->release(stack);
            record = create_empty_object(stack, target);
        }
        add_properties(stack, record, properties.data(), properties.size());
    } catch (...) {
        for (Variant& value : values) value.release(stack);
        throw;
    }
    for (Variant& value : values) value.release(stack);
}

// Elements from 1 on, in storage order, as far as the array reaches.
void void_stackcall_gather_from(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    Table_Object* table = current_table(stack);
    long long flags = argument(stack, 1).integer;
    const Array& array = argument(stack, 2).array;
    std::vector<uint64_t> fields = visited_fields(table, flags);
    gather(stack, table, [&] {
        for (uint64_t k = 0; k < fields.size() && k < array.count; ++k)
            table->set_field(stack, fields[k], array.read(k + 1));
    });
}

// A field without a variable of its name keeps its value.
void void_stackcall_gather_memvar(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    Table_Object* table = current_table(stack);
    long long flags = argument(stack, 1).integer;
    gather(stack, table, [&] {
        for (uint64_t index : visited_fields(table, flags)) {
            Memvar* var = nullptr;
            if (stack->get_memvar(table->get_symbol_id_by_field(index), &var)) table->set_field(stack, index, var);
        }
    });
}

// A field without a property of its name keeps its value.
void void_stackcall_gather_name(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    Table_Object* table = current_table(stack);
    long long flags = argument(stack, 1).integer;
    Object* object = static_cast<Object*>(argument(stack, 2));
    if (!object) throw RuntimeError(ERR_ARGUMENT_INVALID);
    gather(stack, table, [&] {
        for (uint64_t index : visited_fields(table, flags)) {
            Variant value;
            try {
                object->virtual_access(stack, table->get_symbol_id_by_field(index), 0, &value);
            } catch (const RuntimeError& error) {
                if (error.number != ERR_PROPERTY_NOT_FOUND) throw;
                continue;
            }
            try {
                table->set_field(stack, index, &value);
            } catch (...) {
                value.release(stack);
                throw;
            }
            value.release(stack);
        }
    });
}

}  // namespace zobase
