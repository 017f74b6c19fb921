#pragma once
// The built-in class "Collection": an ordered list of values that may carry
// a string key, and the iterators FOR EACH walks it with. Every member takes
// the object's lock, shared to read and exclusive to change, so a collection
// may be shared between threads; the values are copied in and out under it.
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "objects/class.h"
#include "text/collation.h"
#include "values/variant.h"
#include "vm/object.h"

namespace zobase {

struct collection_entry_st {
    Variant value;
    uint64_t index = 0;  // position from 0 in `entries`, kept up to date
    String key;          // empty without a key
    ~collection_entry_st() { value.release(nullptr); }
};

// The enumeration orders; each has its iterator class.
enum CollectionKeySort : uint32_t {
    KEYSORT_INDEX_FORWARD = 0,
    KEYSORT_INDEX_REVERSE = 1,
    KEYSORT_KEY_FORWARD = 2,
    KEYSORT_KEY_REVERSE = 3,
};

class Collection_Object : public Object {
public:
    explicit Collection_Object(Class* object_class) : Object(object_class) {}
    void destroy(VmStack* stack) override;

    // Keys compare as written, case and all.
    std::map<String, collection_entry_st*, StringLessThan_Unicode_Machine> keys;
    std::vector<std::unique_ptr<collection_entry_st>> entries;
    uint32_t key_sort = KEYSORT_INDEX_FORWARD;
};

// Where an iterator stands: an index form counts positions from 1, a key
// form remembers the key it is on, so removals behind it don't move it.
// MoveNext takes a copy of the entry it comes to: Value and Key answer with
// it even when another thread removes the entry meanwhile.
class CollectionIterator : public Object {
public:
    // `owner` is the object the collection is a link of (itself, or an
    // object of a subclass), held for as long as the iterator lives.
    CollectionIterator(Class* object_class, const object_ptr_st& owner, Collection_Object* collection,
                       uint32_t order);
    ~CollectionIterator() override;
    void destroy(VmStack* stack) override;

    // Under the collection's lock, shared.
    bool move_next(VmStack* stack);
    // 2061 before the first MoveNext and after the last.
    void require_entry() const;

    Variant owner;
    Collection_Object* collection;
    uint32_t order;
    uint64_t position = 0;  // index forms: 0 before the start
    String key;             // key forms: the key it is on; index forms: the entry's key
    Variant value;          // the entry's value as MoveNext found it
    bool started = false;
    bool on_entry = false;

private:
    // Moves to the next entry in the order, setting on_entry.
    void step();
};

extern const builtin_class_data_st collection_class_data;
extern const library_class_member_row_st collection_members[];
extern const builtin_class_data_st collection_iterator_class_data;
extern const library_class_member_row_st collection_iterator_members[];
// The iterator class names, by key_sort value.
extern const char* const collection_iterator_class_names[4];

}  // namespace zobase
