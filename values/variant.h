#pragma once
// Variant: the one value type of the language. 40 bytes: the tag byte, then a
// 32-byte payload at offset 8. The VM relies on three facts: the tag is the
// first byte, a tag below 10 owns nothing, and tag 0 is both logical false
// and a clean slot.
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

#include "base/export.h"
#include "values/array.h"
#include "values/number_types.h"
#include "values/object_ref.h"
#include "values/string.h"

namespace zobase {

class VmStack;
class Object;

enum VariantTag : uint8_t {
    TAG_FALSE = 0,
    TAG_NULL = 1,
    TAG_TRUE = 2,
    TAG_INTEGER = 3,
    TAG_NUMERIC = 4,
    TAG_MONEY = 5,
    TAG_DATE = 6,
    TAG_DATETIME = 7,
    TAG_STRING = 10,
    TAG_OBJECT = 11,
    TAG_ARRAY = 12,
    TAG_POINTER = 13,
};
constexpr int VARIANT_TAG_COUNT = 14;
constexpr uint8_t TAG_FIRST_OWNING = 10;

// The pair key of a binary operation: left tag times 16 plus right tag.
constexpr unsigned pair_key(unsigned left, unsigned right) { return left * 16 + right; }

class Variant;

// By-reference slot: the target and an optional owner keeping its object alive.
struct pointer_st {
    Variant* target;
    object_ptr_st owner;
};

class ZO_API Variant {
public:
    uint8_t tag;
    union alignas(8) {
        integer_type_st integer;
        numeric_type_st numeric;
        money_type_st money;
        date_st date;
        datetime_st datetime;
        object_ptr_st object;
        Array array;
        pointer_st pointer;
        unsigned char payload[32];
    };

    // Plain function pointers indexed by tag: a call through them is one
    // indirect jump, with no member-pointer adjustment on the hot path.
    typedef void (*acquire_fn)(Variant* self);
    typedef void (*release_fn)(Variant* self, VmStack* stack);
    typedef void (*val_fn)(const Variant* self, Variant* dest);
    static const acquire_fn acquire_functions[VARIANT_TAG_COUNT];
    static const release_fn release_functions[VARIANT_TAG_COUNT];
    static const val_fn val_functions[VARIANT_TAG_COUNT];

    Variant() noexcept : tag(TAG_FALSE) {}
    // Copies never release the destination: it must be clean.
    Variant(const Variant& other) noexcept { set_variant(&other); }
    Variant& operator=(const Variant& other) noexcept {
        set_variant(&other);
        return *this;
    }
    // A move hands the reference over and leaves the source .F., so that
    // containers relocating their elements take no extra references.
    Variant(Variant&& other) noexcept {
        std::memcpy(static_cast<void*>(this), &other, sizeof(Variant));
        other.tag = TAG_FALSE;
    }
    Variant& operator=(Variant&& other) noexcept {
        if (this != &other) {
            std::memcpy(static_cast<void*>(this), &other, sizeof(Variant));
            other.tag = TAG_FALSE;
        }
        return *this;
    }

    bool owns() const noexcept { return tag >= TAG_FIRST_OWNING; }
    bool is_logical() const noexcept { return tag == TAG_FALSE || tag == TAG_TRUE; }
    bool is_null() const noexcept { return tag == TAG_NULL; }
    bool is_number() const noexcept { return tag >= TAG_INTEGER && tag <= TAG_MONEY; }

    String& str() noexcept { return *reinterpret_cast<String*>(payload); }
    const String& str() const noexcept { return *reinterpret_cast<const String*>(payload); }

    void set_variant(const Variant* source) noexcept {
        std::memcpy(static_cast<void*>(this), source, sizeof(Variant));
        if (owns()) acquire_functions[tag](this);
    }
    void copy(Variant* dest) const noexcept { dest->set_variant(this); }
    void release(VmStack* stack) {
        if (owns()) release_functions[tag](this, stack);
        tag = TAG_FALSE;
    }

    void set_null() noexcept { tag = TAG_NULL; }
    void set_true() noexcept { tag = TAG_TRUE; }
    void set_false() noexcept { tag = TAG_FALSE; }
    void set_bool(bool value) noexcept { tag = value ? TAG_TRUE : TAG_FALSE; }
    void set_integer(int16_t v) noexcept { set_integer(static_cast<long long>(v)); }
    void set_integer(int32_t v) noexcept { set_integer(static_cast<long long>(v)); }
    void set_integer(uint32_t v) noexcept { set_integer(static_cast<long long>(v)); }
    void set_integer(long long v) noexcept {
        tag = TAG_INTEGER;
        integer = v;
    }
    void set_integer(long v) noexcept { set_integer(static_cast<long long>(v)); }
    void set_float(double value, uint64_t decimals) noexcept {
        tag = TAG_NUMERIC;
        numeric = {value, decimals};
    }
    void set(const numeric_type_st& v) noexcept {
        tag = TAG_NUMERIC;
        numeric = v;
    }
    void set(const money_type_st& v) noexcept {
        tag = TAG_MONEY;
        money = v;
    }
    void set(const date_st& v) noexcept {
        tag = TAG_DATE;
        date = v;
    }
    void set(const datetime_st& v) noexcept {
        tag = TAG_DATETIME;
        datetime = v;
    }
    void set_string(const String& s) noexcept {
        new (payload) String(s);
        tag = TAG_STRING;
    }
    void set_string(String&& s) noexcept {
        new (payload) String(std::move(s));
        tag = TAG_STRING;
    }
    // A new reference to the object (see objects/object.h for making objects).
    void set(const object_ptr_st& ptr) noexcept;
    void set_array(const Array* source) noexcept {
        tag = TAG_ARRAY;
        array = *source;
        array.acquire();
    }

    // Makes dest a by-reference slot to this variable (or to this pointer's
    // target). An owner, when given, is the object whose storage holds this
    // value: the slot keeps it alive.
    void ref(VmStack* stack, Variant* dest, const object_ptr_st* owner);
    // Delivers this value to dest, writing through dest when it is a pointer.
    void copy_follow_pointer(VmStack* stack, Variant* dest) const;
    // Assignment to a whole variable: an array takes the value in every element.
    void store_recursive(VmStack* stack, Variant* value);
    // The target of a pointer, or this value.
    const Variant* follow() const noexcept { return tag == TAG_POINTER ? pointer.target : this; }
    Variant* follow() noexcept { return tag == TAG_POINTER ? pointer.target : this; }

    // Readers of this tag only; a wrong type raises 107 (1924 for objects, 232 for arrays).
    explicit operator integer_type_st() const;
    explicit operator unsigned int() const;
    explicit operator unsigned long long() const;
    explicit operator numeric_type_st() const;
    explicit operator double() const;
    explicit operator money_type_st() const;
    explicit operator bool() const;
    explicit operator date_st() const;
    explicit operator datetime_st() const;
    explicit operator String() const;
    // A live object; anything else, the empty object or one whose last use
    // ended, raises 1924.
    explicit operator Object*() const;
    explicit operator Array*();

    // The cast family follows one pointer first and reports 11 where the readers report 107.
    void cast(Array** out);
    void cast(String** out);
    void cast(String* out) const;
    void cast(date_st* out) const;
    void cast(datetime_st* out) const;
    void cast(integer_type_st* out) const;
    void cast(money_type_st* out) const;
    void cast(numeric_type_st* out) const;

    String to_string(bool flag) const;
    String to_string() const { return to_string(false); }
    // As to_string, but numbers, money, dates and datetimes follow the current
    // session's formats; it reads the session, so it lives in vm/regional_text.cpp.
    String to_string_regional(VmStack* stack, bool flag) const;
    String vartype() const;
    bool is_empty() const;

    // Arithmetic in place on this (the left) operand.
    void add(VmStack* stack, const Variant& right);
    void sub(VmStack* stack, const Variant& right);
    void mul(VmStack* stack, const Variant& right);
    void div(VmStack* stack, const Variant& right);
    void pow(VmStack* stack, const Variant& right);
    void round(VmStack* stack, long long decimals);
    void floor(VmStack* stack);
    void ceil(VmStack* stack);
    void sqrt(VmStack* stack);
    void val_negative(VmStack* stack, Variant* dest) const;

    // Makes this variable an array of that shape, keeping the overlapping part.
    Array* dimension(VmStack* stack, uint64_t rows, uint64_t columns);

    static void acquire_C(Variant* self);
    static void acquire_O(Variant* self);
    static void acquire_A(Variant* self);
    static void acquire_P(Variant* self);
    static void release_C(Variant* self, VmStack* stack);
    static void release_O(Variant* self, VmStack* stack);
    static void release_A(Variant* self, VmStack* stack);
    static void release_P(Variant* self, VmStack* stack);
    static void val_L_false(const Variant* self, Variant* dest);
    static void val_X(const Variant* self, Variant* dest);
    static void val_L_true(const Variant* self, Variant* dest);
    static void val_I(const Variant* self, Variant* dest);
    static void val_N(const Variant* self, Variant* dest);
    static void val_Y(const Variant* self, Variant* dest);
    static void val_D(const Variant* self, Variant* dest);
    static void val_T(const Variant* self, Variant* dest);
    static void val_C(const Variant* self, Variant* dest);
    static void val_O(const Variant* self, Variant* dest);
    static void val_A(const Variant* self, Variant* dest);
    static void val_P(const Variant* self, Variant* dest);

    // Delivers this value into a clean dest through the val table.
    void deliver(Variant* dest) const { val_functions[tag](this, dest); }
};

static_assert(sizeof(Variant) == 40, "Variant is 40 bytes");

// The VM's add: a pair-keyed jump table, no generic binary path.
void inline_variant_add(Variant* left, const Variant* right);
// a - floor(a / b) * b through the Variant operations.
void variant_mod(VmStack* stack, const Variant* a, const Variant* b, Variant* dest);

ZO_API int VarGetInt(const Variant* v);
ZO_API int32_t VarGetInt32(const Variant* v);
ZO_API int64_t VarGetInt64(const Variant* v);
ZO_API String VarGetString(const Variant* v);
ZO_API const char* VarReadString(const Variant* v, size_t* len);
ZO_API char* VarWriteString(Variant* v, size_t* len);
ZO_API void VarSetBool(Variant* v, bool value);
ZO_API void VarSetTrue(Variant* v);
ZO_API void VarSetFalse(Variant* v);
ZO_API void VarSetNull(Variant* v);
ZO_API void VarSetInt(Variant* v, long long value);
ZO_API void VarSetDouble(Variant* v, double value);
ZO_API void VarSetString(Variant* v, const String& value);
ZO_API void VarSetUtf8(Variant* v, const char* text);
ZO_API void VarSetUtf8Len(Variant* v, const char* text, size_t len);
ZO_API void VarSetVariant(Variant* v, const Variant* source);
ZO_API void ReleaseVar(VmStack* stack, Variant* v);
ZO_API Array* VarDimArray(VmStack* stack, Variant* v, uint64_t rows);
ZO_API Array* VarDimArray(VmStack* stack, Variant* v, uint64_t rows, uint64_t columns);

}  // namespace zobase
