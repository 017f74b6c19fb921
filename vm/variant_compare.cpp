// The comparison matrix of the language's relational operators.
#include "vm/variant_compare.h"

#include "base/call_trace.h"
#include "text/collation.h"
#include "values/error.h"
#include "values/money.h"
#include "values/numeric.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

template <typename T>
int three_way(T a, T b) {
    return (a > b) - (a < b);
}

double as_double(const Variant* v) {
    switch (v->tag) {
    case TAG_INTEGER: return static_cast<double>(v->integer);
    case TAG_NUMERIC: return v->numeric.value;
    default: return money_to_double(v->money);
    }
}

// Text compares under the machine collation: with a stack, by SET EXACT;
// without one (the == operator), as whole strings.
int compare_text(const String& a, const String& b, VmStack* stack) {
    const Collation* machine = Collation::unicode_machine;
    if (!stack) return machine->compare(a, b);
    if (stack->sessions->settings().exact) return machine->compare_exact_on(a, b);
    return machine->compare_exact_off(a, b);
}

}  // namespace

int inline_variant_cmp(const Variant* left, const Variant* right, bool* null_seen,
                       VmStack* stack) {
    left = left->follow();
    right = right->follow();
    if (left->tag == TAG_NULL || right->tag == TAG_NULL) {
        *null_seen = true;
        return 0;
    }
    switch (pair_key(left->tag, right->tag)) {
    case pair_key(TAG_FALSE, TAG_FALSE):
    case pair_key(TAG_TRUE, TAG_TRUE): return 0;
    case pair_key(TAG_FALSE, TAG_TRUE): return -1;
    case pair_key(TAG_TRUE, TAG_FALSE): return 1;
    case pair_key(TAG_INTEGER, TAG_INTEGER): return three_way(left->integer, right->integer);
    case pair_key(TAG_INTEGER, TAG_NUMERIC):
    case pair_key(TAG_NUMERIC, TAG_INTEGER):
    case pair_key(TAG_NUMERIC, TAG_NUMERIC):
    case pair_key(TAG_NUMERIC, TAG_MONEY):
    case pair_key(TAG_MONEY, TAG_NUMERIC):
        return cmp_double_with_tollerance(as_double(left), as_double(right));
    case pair_key(TAG_INTEGER, TAG_MONEY): return cmp_int_to_money_exact(left->integer, right->money);
    case pair_key(TAG_MONEY, TAG_INTEGER): return cmp_money_to_int_exact(left->money, right->integer);
    case pair_key(TAG_MONEY, TAG_MONEY): return money_cmp(left->money, right->money);
    case pair_key(TAG_DATE, TAG_DATE): return three_way(left->date.julian, right->date.julian);
    case pair_key(TAG_DATETIME, TAG_DATETIME):
        if (int r = three_way(left->datetime.julian, right->datetime.julian)) return r;
        return three_way(left->datetime.msecs, right->datetime.msecs);
    case pair_key(TAG_STRING, TAG_STRING): return compare_text(left->str(), right->str(), stack);
    case pair_key(TAG_OBJECT, TAG_OBJECT):
        return three_way(reinterpret_cast<uintptr_t>(left->object.object),
                         reinterpret_cast<uintptr_t>(right->object.object));
    default: throw RuntimeError(ERR_OPERAND_TYPE_MISMATCH);
    }
}

int variant_cmp(const Variant* left, const Variant* right, bool* null_seen, VmStack* stack) {
    ZO_TRACE();
    return inline_variant_cmp(left, right, null_seen, stack);
}

}  // namespace zobase
