// Variant ownership, readers, casts and text forms.
#include "values/variant.h"

#include <cmath>
#include <cstdio>

#include "base/call_trace.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/error.h"
#include "values/money.h"
#include "values/numeric.h"

namespace zobase {

const Variant::acquire_fn Variant::acquire_functions[VARIANT_TAG_COUNT] = {
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    &Variant::acquire_C, &Variant::acquire_O, &Variant::acquire_A, &Variant::acquire_P,
};

const Variant::release_fn Variant::release_functions[VARIANT_TAG_COUNT] = {
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    &Variant::release_C, &Variant::release_O, &Variant::release_A, &Variant::release_P,
};

const Variant::val_fn Variant::val_functions[VARIANT_TAG_COUNT] = {
    &Variant::val_L_false, &Variant::val_X, &Variant::val_L_true, &Variant::val_I,
    &Variant::val_N,       &Variant::val_Y, &Variant::val_D,      &Variant::val_T,
    nullptr,               nullptr,         &Variant::val_C,      &Variant::val_O,
    &Variant::val_A,       &Variant::val_P,
};

// Acquiring a string raises the buffer's count without touching the view.
void Variant::acquire_C(Variant* self) { new (self->payload) String(self->str()); }

void Variant::acquire_O(Variant* self) { object_ptr_acquire(self->object); }

void Variant::acquire_A(Variant* self) { self->array.acquire(); }

// Copying a by-reference slot yields the target's value, not a second pointer.
void Variant::acquire_P(Variant* self) {
    const Variant* target = self->pointer.target;
    std::memcpy(static_cast<void*>(self), target, sizeof(Variant));
    if (self->owns()) acquire_functions[self->tag](self);
}

void Variant::release_C(Variant* self, VmStack*) { self->str().~String(); }

void Variant::release_O(Variant* self, VmStack* stack) { object_ptr_release(stack, self->object); }

void Variant::release_A(Variant* self, VmStack* stack) {
    self->array.release(stack);
    self->array.storage = nullptr;
}

void Variant::release_P(Variant* self, VmStack* stack) {
    if (self->pointer.owner.control) object_ptr_release(stack, self->pointer.owner);
}

// The release of the destination already left tag 0, so false writes nothing.
void Variant::val_L_false(const Variant*, Variant*) {}
void Variant::val_X(const Variant*, Variant* dest) { dest->tag = TAG_NULL; }
void Variant::val_L_true(const Variant*, Variant* dest) { dest->tag = TAG_TRUE; }
void Variant::val_I(const Variant* self, Variant* dest) { dest->set_integer(self->integer); }
void Variant::val_N(const Variant* self, Variant* dest) { dest->set(self->numeric); }
void Variant::val_Y(const Variant* self, Variant* dest) { dest->set(self->money); }
void Variant::val_D(const Variant* self, Variant* dest) { dest->set(self->date); }
void Variant::val_T(const Variant* self, Variant* dest) { dest->set(self->datetime); }
void Variant::val_C(const Variant* self, Variant* dest) { dest->set_string(self->str()); }
void Variant::val_O(const Variant* self, Variant* dest) { dest->set(self->object); }
void Variant::val_A(const Variant* self, Variant* dest) { dest->set_array(&self->array); }
void Variant::val_P(const Variant* self, Variant* dest) { dest->set_variant(self->pointer.target); }

void Variant::set(const object_ptr_st& ptr) noexcept {
    tag = TAG_OBJECT;
    object = ptr;
    object_ptr_acquire(object);
}

void Variant::ref(VmStack* stack, Variant* dest, const object_ptr_st* owner) {
    if (dest->owns()) dest->release(stack);
    dest->tag = TAG_POINTER;
    if (tag == TAG_POINTER) {
        dest->pointer = pointer;
    } else {
        dest->pointer.target = this;
        dest->pointer.owner = owner ? *owner : object_ptr_st{nullptr, nullptr};
    }
    if (dest->pointer.owner.control) object_ptr_acquire(dest->pointer.owner);
}

void Variant::copy_follow_pointer(VmStack* stack, Variant* dest) const {
    Variant* target = dest->follow();
    target->release(stack);
    deliver(target);
}

void Variant::store_recursive(VmStack* stack, Variant* value) {
    if (tag == TAG_POINTER) {
        pointer.target->store_recursive(stack, value);
    } else if (tag == TAG_ARRAY) {
        for (uint64_t i = 1; i <= array.count; ++i) {
            Variant* element = array.write(stack, i);
            element->release(stack);
            value->deliver(element);
        }
    } else {
        release(stack);
        value->deliver(this);
    }
}

// ---- readers -------------------------------------------------------------

Variant::operator integer_type_st() const {
    switch (tag) {
    case TAG_INTEGER: return integer;
    case TAG_NUMERIC: return static_cast<integer_type_st>(std::trunc(numeric.value));
    case TAG_MONEY: return money_to_integer(money);
    default: throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    }
}

Variant::operator unsigned int() const {
    return static_cast<unsigned int>(static_cast<integer_type_st>(*this));
}

Variant::operator unsigned long long() const {
    return static_cast<unsigned long long>(static_cast<integer_type_st>(*this));
}

Variant::operator numeric_type_st() const {
    switch (tag) {
    case TAG_INTEGER: return {static_cast<double>(integer), 0};
    case TAG_NUMERIC: return numeric;
    case TAG_MONEY: return {money_to_double(money), 4};
    default: throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    }
}

Variant::operator double() const { return static_cast<numeric_type_st>(*this).value; }

Variant::operator money_type_st() const {
    switch (tag) {
    case TAG_MONEY: return money;
    case TAG_NUMERIC: return money_from_double(numeric.value);
    case TAG_INTEGER: return money_from_integer(integer);
    default: throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    }
}

Variant::operator bool() const {
    if (tag == TAG_TRUE) return true;
    if (tag == TAG_FALSE) return false;
    throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
}

Variant::operator date_st() const {
    if (tag != TAG_DATE) throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    return date;
}

Variant::operator datetime_st() const {
    if (tag != TAG_DATETIME) throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    return datetime;
}

Variant::operator String() const {
    if (tag != TAG_STRING) throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    return str();
}

Variant::operator Object*() const {
    if (tag != TAG_OBJECT || !object_alive(object)) throw RuntimeError(ERR_NOT_AN_OBJECT);
    return object.object;
}

Variant::operator Array*() {
    if (tag != TAG_ARRAY) throw RuntimeError(ERR_NOT_AN_ARRAY);
    return &array;
}

void Variant::cast(Array** out) {
    Variant* v = follow();
    if (v->tag != TAG_ARRAY) throw RuntimeError(ERR_ARGUMENT_INVALID);
    *out = &v->array;
}

void Variant::cast(String** out) {
    Variant* v = follow();
    if (v->tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    *out = &v->str();
}

void Variant::cast(String* out) const {
    const Variant* v = follow();
    if (v->tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    *out = v->str();
}

void Variant::cast(date_st* out) const {
    const Variant* v = follow();
    if (v->tag == TAG_DATE) *out = v->date;
    else if (v->tag == TAG_DATETIME) *out = {v->datetime.julian};
    else throw RuntimeError(ERR_ARGUMENT_INVALID);
}

void Variant::cast(datetime_st* out) const {
    const Variant* v = follow();
    if (v->tag == TAG_DATETIME) *out = v->datetime;
    else if (v->tag == TAG_DATE) *out = {v->date.julian, 0};
    else throw RuntimeError(ERR_ARGUMENT_INVALID);
}

void Variant::cast(integer_type_st* out) const { *out = static_cast<integer_type_st>(*this); }
void Variant::cast(money_type_st* out) const { *out = static_cast<money_type_st>(*this); }
void Variant::cast(numeric_type_st* out) const { *out = static_cast<numeric_type_st>(*this); }

// ---- text ----------------------------------------------------------------

namespace {

String date_text(uint32_t julian, bool with_time, uint32_t msecs) {
    char buffer[64];
    if (julian == 0 && (!with_time || msecs == 0))
        return String(with_time ? "0000-00-00 00:00:00" : "0000-00-00");
    int year, month, day;
    unserial_julian_date(date_st{julian}, &year, &month, &day);
    const char* sign = year < 0 ? "-" : "";
    int abs_year = year < 0 ? -year : year;
    if (!with_time) {
        std::snprintf(buffer, sizeof buffer, "%s%04d-%02d-%02d", sign, abs_year, month, day);
    } else {
        unsigned seconds = msecs / 1000;
        std::snprintf(buffer, sizeof buffer, "%s%04d-%02d-%02d %02u:%02u:%02u", sign, abs_year,
                      month, day, seconds / 3600, seconds / 60 % 60, seconds % 60);
    }
    return String(buffer);
}

}  // namespace

String Variant::to_string(bool flag) const {
    switch (tag) {
    case TAG_FALSE: return String("false");
    case TAG_NULL: return String("null");
    case TAG_TRUE: return String("true");
    case TAG_INTEGER: {
        char buffer[32];
        std::snprintf(buffer, sizeof buffer, "%lld", integer);
        return String(buffer);
    }
    case TAG_NUMERIC: return numeric_to_string(numeric, flag, '.');
    case TAG_MONEY: return money_to_string(money, '.');
    case TAG_DATE: return date_text(date.julian, false, 0);
    case TAG_DATETIME: return date_text(datetime.julian, true, datetime.msecs);
    case TAG_STRING: return str();
    case TAG_OBJECT: return String(object.control ? "object" : "null");
    case TAG_ARRAY: return String("array");
    case TAG_POINTER: return pointer.target->to_string(flag);
    default: raise_not_available("to_string of this value");
    }
}

String Variant::vartype() const {
    switch (tag) {
    case TAG_FALSE:
    case TAG_TRUE: return String("L");
    case TAG_NULL: return String("X");
    case TAG_INTEGER:
    case TAG_NUMERIC: return String("N");
    case TAG_MONEY: return String("Y");
    case TAG_DATE: return String("D");
    case TAG_DATETIME: return String("T");
    case TAG_STRING: return String(str().get_charset() == Charset::binary ? "Q" : "C");
    case TAG_OBJECT: return String(object.control ? "O" : "X");
    case TAG_ARRAY: return String("A");
    case TAG_POINTER: return pointer.target->vartype();
    default: throw assert_failed_exception("vartype of an unknown tag");
    }
}

bool Variant::is_empty() const {
    switch (tag) {
    case TAG_FALSE: return true;
    case TAG_NULL:
    case TAG_TRUE:
    case TAG_OBJECT: return false;
    case TAG_INTEGER: return integer == 0;
    case TAG_NUMERIC: return cmp_double_with_tollerance(numeric.value, 0.0) == 0;
    case TAG_MONEY: return money.high == 0 && money.mid == 0 && money.low == 0;
    case TAG_DATE: return date.julian == 0;
    case TAG_DATETIME: return datetime.julian == 0 && datetime.msecs == 0;
    case TAG_STRING: return str().is_empty();
    case TAG_ARRAY: return array.count == 0 || array.read(1)->is_empty();
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
}

// ---- exported helpers for hosts ------------------------------------------

int VarGetInt(const Variant* v) { return static_cast<int>(static_cast<integer_type_st>(*v)); }
int32_t VarGetInt32(const Variant* v) {
    return static_cast<int32_t>(static_cast<integer_type_st>(*v));
}
int64_t VarGetInt64(const Variant* v) { return static_cast<integer_type_st>(*v); }
String VarGetString(const Variant* v) { return static_cast<String>(*v); }

const char* VarReadString(const Variant* v, size_t* len) {
    const Variant* target = v->follow();
    if (target->tag != TAG_STRING) throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    *len = target->str().size();
    return target->str().read();
}

char* VarWriteString(Variant* v, size_t* len) {
    Variant* target = v->follow();
    if (target->tag != TAG_STRING) throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    *len = target->str().size();
    return target->str().write();
}

void VarSetBool(Variant* v, bool value) { v->release(nullptr); v->set_bool(value); }
void VarSetTrue(Variant* v) { v->release(nullptr); v->set_true(); }
void VarSetFalse(Variant* v) { v->release(nullptr); }
void VarSetNull(Variant* v) { v->release(nullptr); v->set_null(); }
void VarSetInt(Variant* v, long long value) { v->release(nullptr); v->set_integer(value); }
void VarSetDouble(Variant* v, double value) {
    v->release(nullptr);
    v->set_float(value, DECIMALS_UNKNOWN);
}
void VarSetString(Variant* v, const String& value) { v->release(nullptr); v->set_string(value); }
void VarSetUtf8(Variant* v, const char* text) { VarSetString(v, String(text)); }
void VarSetUtf8Len(Variant* v, const char* text, size_t len) {
    VarSetString(v, String::fromBytes(text, len, Charset::utf8));
}
void VarSetVariant(Variant* v, const Variant* source) {
    v->release(nullptr);
    v->set_variant(source);
}
void ReleaseVar(VmStack* stack, Variant* v) { v->release(stack); }
Array* VarDimArray(VmStack* stack, Variant* v, uint64_t rows) {
    return v->dimension(stack, rows, 0);
}
Array* VarDimArray(VmStack* stack, Variant* v, uint64_t rows, uint64_t columns) {
    return v->dimension(stack, rows, columns);
}

}  // namespace zobase
