// The built-in class "Collection" and its four iterator classes.
#include "objects/collection_object.h"

#include <cstring>

#include "base/call_trace.h"
#include "objects/native_members.h"
#include "values/error.h"
#include "values/money.h"
#include "vm/param.h"
#include "vm/runtime_services.h"

namespace zobase {

namespace {

const Variant* argument(VmStack* stack, unsigned long long i) { return Param(stack, i)->follow(); }

bool as_number(const Variant* value, int64_t* out) {
    switch (value->tag) {
    case TAG_INTEGER: *out = value->integer; return true;
    case TAG_NUMERIC: *out = static_cast<int64_t>(value->numeric.value); return true;
    case TAG_MONEY: *out = money_to_integer(value->money); return true;
    default: return false;
    }
}

// An optional argument left out: null or false.
bool absent(const Variant* value) { return value->tag == TAG_NULL || value->tag == TAG_FALSE; }

// A string looks up the keys, a number is a position from 1; a miss of
// either is 2061, anything else 11. The caller holds the lock.
collection_entry_st* find_entry(Collection_Object* collection, const Variant* key_or_index) {
    if (key_or_index->tag == TAG_STRING) {
        auto found = collection->keys.find(key_or_index->str());
        if (found == collection->keys.end()) throw RuntimeError(ERR_COLLECTION_MEMBER_NOT_FOUND);
        return found->second;
    }
    int64_t index;
    if (!as_number(key_or_index, &index)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (index < 1 || static_cast<uint64_t>(index) > collection->entries.size())
        throw RuntimeError(ERR_COLLECTION_MEMBER_NOT_FOUND);
    return collection->entries[index - 1].get();
}

void renumber_from(Collection_Object* collection, uint64_t position) {
    for (uint64_t i = position; i < collection->entries.size(); ++i) collection->entries[i]->index = i;
}

// Values that left the collection are released after its lock is dropped:
// releasing may run a DESTROY that uses the collection.
void release_entries(VmStack* stack, std::vector<std::unique_ptr<collection_entry_st>>& removed) {
    for (auto& entry : removed) entry->value.release(stack);
}

// Add(value [, key [, before [, after]]]): before and after name an entry by
// key or position; the new one goes in front of or behind it.
void add_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    require_arguments(argc, 1, 4);
    auto* self = current_object<Collection_Object>(stack);
    String key;
    if (argc >= 2 && !absent(argument(stack, 2))) {
        if (argument(stack, 2)->tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
        key = argument(stack, 2)->str();
    }
    const Variant* before = argc >= 3 && !absent(argument(stack, 3)) ? argument(stack, 3) : nullptr;
    const Variant* after = argc >= 4 && !absent(argument(stack, 4)) ? argument(stack, 4) : nullptr;
    if (before && after) throw RuntimeError(ERR_ARGUMENT_INVALID);
    StorageWriteGuard guard(self);
    if (key.size() && self->keys.count(key)) throw RuntimeError(ERR_KEY_EXISTS);
    uint64_t position = self->entries.size();
    if (before) position = find_entry(self, before)->index;
    if (after) position = find_entry(self, after)->index + 1;
    auto entry = std::make_unique<collection_entry_st>();
    argument(stack, 1)->copy(&entry->value);
    entry->key = key;
    collection_entry_st* added = entry.get();
    self->entries.insert(self->entries.begin() + static_cast<ptrdiff_t>(position), std::move(entry));
    renumber_from(self, position);
    if (key.size()) self->keys.emplace(key, added);
    ret->set_true();
}

// Remove(-1) empties the collection.
void remove_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    require_arguments(argc, 1, 1);
    auto* self = current_object<Collection_Object>(stack);
    const Variant* which = argument(stack, 1);
    int64_t number;
    std::vector<std::unique_ptr<collection_entry_st>> removed;
    {
        StorageWriteGuard guard(self);
        if (as_number(which, &number) && number == -1) {
            removed = std::move(self->entries);
            self->entries.clear();
            self->keys.clear();
        } else {
            collection_entry_st* entry = find_entry(self, which);
            uint64_t position = entry->index;
            if (entry->key.size()) self->keys.erase(entry->key);
            removed.push_back(std::move(self->entries[position]));
            self->entries.erase(self->entries.begin() + static_cast<ptrdiff_t>(position));
            renumber_from(self, position);
        }
    }
    release_entries(stack, removed);
    ret->set_true();
}

void count_access(VmStack* stack, unsigned long long argc, Variant* ret) {
    refuse_subscripts(stack, argc);
    auto* self = current_object<Collection_Object>(stack);
    StorageReadGuard guard(self);
    ret->set_integer(static_cast<long long>(self->entries.size()));
}

void key_sort_access(VmStack* stack, unsigned long long argc, Variant* ret) {
    refuse_subscripts(stack, argc);
    auto* self = current_object<Collection_Object>(stack);
    StorageReadGuard guard(self);
    ret->set_integer(static_cast<long long>(self->key_sort));
}

void key_sort_assign(VmStack* stack, unsigned long long argc) {
    refuse_subscripts(stack, argc - 1);
    auto* self = current_object<Collection_Object>(stack);
    int64_t order;
    if (!as_number(stack->esp->follow(), &order) || order < 0 || order > KEYSORT_KEY_REVERSE)
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    StorageWriteGuard guard(self);
    self->key_sort = static_cast<uint32_t>(order);
}

// Item(key or position), as a method and as an indexed property.
void item_read(VmStack* stack, unsigned long long argc, Variant* ret) {
    require_arguments(argc, 1, 1);
    auto* self = current_object<Collection_Object>(stack);
    StorageReadGuard guard(self);
    find_entry(self, argument(stack, 1))->value.copy(ret);
}

void item_assign(VmStack* stack, unsigned long long argc) {
    require_arguments(argc, 2, 2);
    auto* self = current_object<Collection_Object>(stack);
    Variant replaced;
    {
        StorageWriteGuard guard(self);
        Variant& value = find_entry(self, argument(stack, 1))->value;
        std::memcpy(static_cast<void*>(&replaced), &value, sizeof(Variant));
        value.tag = TAG_FALSE;
        stack->esp->deliver(&value);
    }
    replaced.release(stack);
}

// GetKey(position) is the entry's key ("" for none, or for a position out of
// range); GetKey(key) is the key's position, 0 when absent.
void get_key_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    require_arguments(argc, 1, 1);
    auto* self = current_object<Collection_Object>(stack);
    const Variant* which = argument(stack, 1);
    StorageReadGuard guard(self);
    if (which->tag == TAG_STRING) {
        auto found = self->keys.find(which->str());
        ret->set_integer(found == self->keys.end() ? 0LL : static_cast<long long>(found->second->index + 1));
        return;
    }
    int64_t index;
    if (!as_number(which, &index)) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (index >= 1 && static_cast<uint64_t>(index) <= self->entries.size()) {
        ret->set_string(self->entries[index - 1]->key);
        return;
    }
    const Charset* charset = stack->services ? stack->services->default_charset() : nullptr;
    ret->set_string(charset ? String::fromBytes("", 0, charset) : String(""));
}

void get_enumerator_call(VmStack* stack, unsigned long long argc, Variant* ret) {
    require_arguments(argc, 0, 0);
    auto* self = current_object<Collection_Object>(stack);
    uint32_t order;
    {
        StorageReadGuard guard(self);
        order = self->key_sort;
    }
    Class* iterator_class = builtin_class(stack, collection_iterator_class_names[order]);
    wrap_new_object(new CollectionIterator(iterator_class, stack->context.this_object->self(), self, order), ret);
}

Object* create_collection(VmStack*, Class* object_class) { return new Collection_Object(object_class); }

// ---- iterators ----

void iterator_move_next(VmStack* stack, unsigned long long argc, Variant* ret) {
    require_arguments(argc, 0, 0);
    ret->set_bool(current_object<CollectionIterator>(stack)->move_next(stack));
}

void iterator_value(VmStack* stack, unsigned long long argc, Variant* ret) {
    refuse_subscripts(stack, argc);
    auto* self = current_object<CollectionIterator>(stack);
    self->require_entry();
    self->value.copy(ret);
}

void iterator_key(VmStack* stack, unsigned long long argc, Variant* ret) {
    refuse_subscripts(stack, argc);
    auto* self = current_object<CollectionIterator>(stack);
    self->require_entry();
    ret->set_string(self->key);
}

}  // namespace

void Collection_Object::destroy(VmStack* stack) {
    std::vector<std::unique_ptr<collection_entry_st>> removed = std::move(entries);
    keys.clear();
    release_entries(stack, removed);
    Object::destroy(stack);
}

CollectionIterator::CollectionIterator(Class* object_class, const object_ptr_st& holder, Collection_Object* data,
                                       uint32_t sort_order)
    : Object(object_class), collection(data), order(sort_order) {
    owner.set(holder);
}

CollectionIterator::~CollectionIterator() {
    owner.release(nullptr);
    value.release(nullptr);
}

void CollectionIterator::destroy(VmStack* stack) {
    value.release(stack);
    owner.release(stack);
    Object::destroy(stack);
}

// The copy of the value it leaves is released after the lock is dropped.
bool CollectionIterator::move_next(VmStack* stack) {
    Variant left;
    std::memcpy(static_cast<void*>(&left), &value, sizeof(Variant));
    value.tag = TAG_FALSE;
    {
        StorageReadGuard guard(collection);
        step();
        if (on_entry) {
            const collection_entry_st& entry = order == KEYSORT_INDEX_FORWARD || order == KEYSORT_INDEX_REVERSE
                                                   ? *collection->entries[position - 1]
                                                   : *collection->keys.find(key)->second;
            entry.value.copy(&value);
            key = entry.key;
        }
    }
    left.release(stack);
    return on_entry;
}

void CollectionIterator::step() {
    const auto& keys = collection->keys;
    uint64_t size = collection->entries.size();
    switch (order) {
    case KEYSORT_INDEX_FORWARD:
        if (position <= size) ++position;
        on_entry = position <= size;
        break;
    case KEYSORT_INDEX_REVERSE:
        if (!started) position = size + 1;
        if (position > size + 1) position = size + 1;
        if (position > 0) --position;
        on_entry = position >= 1;
        break;
    case KEYSORT_KEY_FORWARD: {
        auto next = started ? keys.upper_bound(key) : keys.begin();
        on_entry = next != keys.end();
        if (on_entry) key = next->first;
        break;
    }
    default: {
        auto next = started ? keys.lower_bound(key) : keys.end();
        on_entry = next != keys.begin();
        if (on_entry) key = std::prev(next)->first;
        break;
    }
    }
    started = true;
}

void CollectionIterator::require_entry() const {
    if (!on_entry) throw RuntimeError(ERR_COLLECTION_MEMBER_NOT_FOUND);
}

const builtin_class_data_st collection_class_data = {create_collection, false};

const library_class_member_row_st collection_members[] = {
    {"Add", add_call, nullptr, nullptr, nullptr},
    {"Count", nullptr, count_access, nullptr, nullptr},
    {"GetKey", get_key_call, nullptr, nullptr, nullptr},
    {"get_enumerator", get_enumerator_call, nullptr, nullptr, nullptr},
    {"Item", item_read, item_read, nullptr, item_assign},
    {"KeySort", nullptr, key_sort_access, nullptr, key_sort_assign},
    {"Remove", remove_call, nullptr, nullptr, nullptr},
    {"[]", nullptr, item_read, nullptr, item_assign},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

const builtin_class_data_st collection_iterator_class_data = {nullptr, false};

const library_class_member_row_st collection_iterator_members[] = {
    {"Key", nullptr, iterator_key, nullptr, nullptr},
    {"MoveNext", iterator_move_next, nullptr, nullptr, nullptr},
    {"Value", nullptr, iterator_value, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

const char* const collection_iterator_class_names[4] = {
    "Collection.ForwardIndexIterator",
    "Collection.ReverseIndexIterator",
    "Collection.ForwardKeyIterator",
    "Collection.ReverseKeyIterator",
};

}  // namespace zobase
