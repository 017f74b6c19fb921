#pragma once
// The constant expressions of #if: integers, logicals, comparisons and
// defined(name), evaluated straight from the tokens of the directive line.
#include <cstdint>

#include "frontend/token.h"
#include "values/error.h"

namespace zobase {

// A directive that cannot be carried out: the error number and where.
class DirectiveFailure : public Exception {
public:
    int32_t number;
    document_location_st location;
    DirectiveFailure(int32_t n, const document_location_st& where) : number(n), location(where) {}
    const char* name() const noexcept override { return "DirectiveFailure"; }
};

typedef bool (*defined_test)(void* context, const token_st& name);

// True when the condition holds; an integer holds when it is not 0. Raises
// DirectiveFailure: 10 for bad syntax (at `directive` when the text ends
// early), 12 for an unknown name, 107 for mixed types, 39 for overflow or a
// zero divisor.
bool evaluate_directive_condition(const token_st* begin, const token_st* end,
                                  const document_location_st& directive, defined_test defined,
                                  void* context);

// Case-insensitive comparison of a token's text with an ASCII word.
bool token_is_word(const token_st& token, const char* ascii);

}  // namespace zobase
