#pragma once
// The comparison of the language's relational operators. It lives with the
// VM because text compares under the SET EXACT setting of the stack's session.
#include "base/export.h"
#include "values/variant.h"

namespace zobase {

class VmStack;

// Three-way comparison; a null operand sets *null_seen and gives 0. With a
// stack, text compares under the session's EXACT setting; without, whole strings.
int inline_variant_cmp(const Variant* left, const Variant* right, bool* null_seen, VmStack* stack);
ZO_API int variant_cmp(const Variant* left, const Variant* right, bool* null_seen, VmStack* stack);

}  // namespace zobase
