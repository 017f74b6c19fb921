#pragma once
// A counted reference to an object, kept the way the language keeps one: in
// a Variant. Work areas hold their tables and stacks their sessions this way,
// so an object lives while the engine or the language still holds it.
#include "values/variant.h"
#include "objects/object.h"

namespace zobase {

template <typename T>
class ObjectHolder {
public:
    ObjectHolder() = default;
    ObjectHolder(const ObjectHolder& other) : value_(other.value_) {}
    ObjectHolder(ObjectHolder&& other) noexcept : value_(std::move(other.value_)) {}
    ObjectHolder& operator=(const ObjectHolder& other) {
        if (this != &other) {
            Variant copy(other.value_);
            value_.release(nullptr);
            std::memcpy(static_cast<void*>(&value_), &copy, sizeof(Variant));
        }
        return *this;
    }
    ~ObjectHolder() { value_.release(nullptr); }

    // Takes over an object just made: the holder is its first reference.
    static ObjectHolder adopt(T* fresh) {
        ObjectHolder holder;
        wrap_new_object(fresh, &holder.value_);
        return holder;
    }

    // Another reference to an object that a value of the language refers to.
    static ObjectHolder of(const object_ptr_st& reference) {
        ObjectHolder holder;
        holder.value_.set(reference);
        return holder;
    }

    // A reference to an object known only by its record (a list that
    // doesn't count): empty when its last use already ended.
    static ObjectHolder if_alive(const object_ptr_st& reference) {
        ObjectHolder holder;
        if (!object_ptr_try_acquire(reference)) return holder;
        holder.value_.tag = TAG_OBJECT;
        holder.value_.object = reference;
        return holder;
    }

    T* get() const noexcept {
        return value_.tag == TAG_OBJECT ? static_cast<T*>(value_.object.object) : nullptr;
    }
    T* operator->() const noexcept { return get(); }
    explicit operator bool() const noexcept { return get() != nullptr; }

    // Another reference, as a value of the language, into a clean dest.
    void copy_to(Variant* dest) const { value_.copy(dest); }
    void reset(VmStack* stack) { value_.release(stack); }

private:
    Variant value_;
};

}  // namespace zobase
