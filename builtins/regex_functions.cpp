// Regular expressions through ICU, on UTF-16 copies of the texts; results
// are UTF-16 strings. umatch finds the first match, ureplace replaces all.
#include <unicode/regex.h>

#include <memory>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "text/charset.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// The language's flag bits and ICU's.
constexpr long long MATCH_CASE_INSENSITIVE = 1;
constexpr long long MATCH_DOTALL = 2;
constexpr long long MATCH_MULTILINE = 4;

uint32_t icu_flags(long long flags) {
    uint32_t out = UREGEX_ERROR_ON_UNKNOWN_ESCAPES;
    if (flags & MATCH_CASE_INSENSITIVE) out |= UREGEX_CASE_INSENSITIVE;
    if (flags & MATCH_DOTALL) out |= UREGEX_DOTALL;
    if (flags & MATCH_MULTILINE) out |= UREGEX_MULTILINE;
    return out;
}

icu::UnicodeString utf16_of(const String& text) {
    std::u16string units = text.u16str();
    return icu::UnicodeString(units.data(), static_cast<int32_t>(units.size()));
}

String string_of(const icu::UnicodeString& text) {
    return String::fromBytes(reinterpret_cast<const char*>(text.getBuffer()),
                             static_cast<size_t>(text.length()) * 2, Charset::utf16le);
}

// A pattern that doesn't compile is 9007.
std::unique_ptr<icu::RegexMatcher> open_matcher(const String& pattern, const icu::UnicodeString& subject,
                                                long long flags) {
    UErrorCode status = U_ZERO_ERROR;
    auto matcher = std::make_unique<icu::RegexMatcher>(utf16_of(pattern), subject, icu_flags(flags), status);
    if (U_FAILURE(status)) throw RuntimeError(ERR_PATTERN_SYNTAX);
    return matcher;
}

long long flags_argument(VmStack* stack, unsigned long long argc, unsigned long long i) {
    return argc >= i ? static_cast<integer_type_st>(argument(stack, i)) : 0;
}

void store_text(VmStack* stack, unsigned long long i, const icu::UnicodeString& text) {
    Variant value;
    value.set_string(string_of(text));
    set_reference_argument(stack, i, value);
    value.release(stack);
}

// Element 1 the whole match, element k + 1 group k; a group that took no
// part is the empty string.
void store_groups(VmStack* stack, icu::RegexMatcher& matcher) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t groups = matcher.groupCount();
    Array* array = Param(stack, 3)->dimension(stack, static_cast<uint64_t>(groups) + 1, 0);
    for (int32_t k = 0; k <= groups; ++k) {
        Variant value;
        value.set_string(string_of(matcher.group(k, status)));
        set_array_element(stack, array, static_cast<uint64_t>(k) + 1, value);
        value.release(stack);
    }
    if (U_FAILURE(status)) throw RuntimeError(ERR_PATTERN_SYNTAX);
}

}  // namespace

// umatch(pattern, subject[, @groups[, flags[, @rest]]]): whether the pattern
// matches; the by-reference arguments are written only on a match.
void stackcall_umatch(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    if (is_null_argument(argument(stack, 1)) || is_null_argument(argument(stack, 2)))
        return result->set_null();
    icu::UnicodeString subject = utf16_of(string_argument(stack, 2));
    auto matcher = open_matcher(string_argument(stack, 1), subject, flags_argument(stack, argc, 4));
    UErrorCode status = U_ZERO_ERROR;
    if (!matcher->find(0, status) || U_FAILURE(status)) return result->set_false();
    if (argc >= 3) store_groups(stack, *matcher);
    if (argc >= 5) {
        int32_t end = matcher->end(status);
        store_text(stack, 5, icu::UnicodeString(subject, end));
    }
    result->set_true();
}

// ureplace(pattern, subject, replacement[, flags[, @count]]): every match
// replaced, "$1" and the like standing for groups; the count of
// replacements goes into argument 5.
void stackcall_ureplace(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    for (unsigned long long i = 1; i <= 3; ++i)
        if (is_null_argument(argument(stack, i))) return result->set_null();
    icu::UnicodeString subject = utf16_of(string_argument(stack, 2));
    icu::UnicodeString replacement = utf16_of(string_argument(stack, 3));
    auto matcher = open_matcher(string_argument(stack, 1), subject, flags_argument(stack, argc, 4));
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString out;
    long long count = 0;
    while (matcher->find(status) && U_SUCCESS(status)) {
        matcher->appendReplacement(out, replacement, status);
        if (U_FAILURE(status)) break;
        ++count;
    }
    matcher->appendTail(out);
    if (U_FAILURE(status)) throw RuntimeError(ERR_PATTERN_SYNTAX);
    if (argc >= 5) {
        Variant replaced;
        replaced.set_integer(count);
        set_reference_argument(stack, 5, replaced);
    }
    result->set_string(string_of(out));
}

}  // namespace zobase
