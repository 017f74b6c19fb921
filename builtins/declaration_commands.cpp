// PRIVATE ALL LIKE | EXCEPT: hides every visible variable whose name matches.
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <memory>
#include <vector>

#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "values/error.h"
#include "vm/vm_instructions.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// Names compare without regard to case, so the patterns do too.
std::unique_ptr<icu::RegexPattern> compile_name_pattern(const String& pattern) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString text = icu::UnicodeString::fromUTF8(pattern.u8str());
    std::unique_ptr<icu::RegexPattern> compiled(
        icu::RegexPattern::compile(text, UREGEX_CASE_INSENSITIVE, status));
    if (U_FAILURE(status)) throw RuntimeError(ERR_PATTERN_SYNTAX);
    return compiled;
}

bool matches(const icu::RegexPattern& pattern, const icu::UnicodeString& name) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(pattern.matcher(name, status));
    return U_SUCCESS(status) && matcher->matches(status) && U_SUCCESS(status);
}

}  // namespace

// Arguments: the LIKE and the EXCEPT pattern, already turned into regular expressions.
void void_stackcall_private(VmStack* stack, unsigned long long argc) {
    std::unique_ptr<icu::RegexPattern> like = compile_name_pattern(string_argument(stack, 1));
    std::unique_ptr<icu::RegexPattern> except = compile_name_pattern(string_argument(stack, 2));
    std::vector<uint32_t> hidden;
    for (const auto& [symbol, variable] : stack->names) {
        icu::UnicodeString name = icu::UnicodeString::fromUTF8(stack->symbol_text(symbol).u8str());
        if (matches(*like, name) && !matches(*except, name)) hidden.push_back(symbol);
    }
    for (uint32_t symbol : hidden) def_private_symbol(stack, symbol);
}

}  // namespace zobase
