#include "frontend/preprocessor_expression.h"

#include <unicode/uchar.h>

#include "base/call_trace.h"
#include "text/charset.h"

namespace zobase {

namespace {

struct pp_value_st {
    bool logical;
    long long number;  // 0 or 1 for a logical
};

pp_value_st logical(bool b) { return {true, b ? 1 : 0}; }
pp_value_st integer(long long n) { return {false, n}; }

class ConditionParser {
public:
    ConditionParser(const token_st* begin, const token_st* end, const document_location_st& directive,
                    defined_test defined, void* context)
        : p_(begin), end_(end), directive_(directive), defined_(defined), context_(context) {}

    pp_value_st parse_all() {
        pp_value_st v = parse_or();
        skip_blanks();
        if (p_ != end_) fail(ERR_SYNTAX);
        return v;
    }

private:
    const token_st* p_;
    const token_st* end_;
    document_location_st directive_;
    defined_test defined_;
    void* context_;

    [[noreturn]] void fail(int32_t number) const {
        throw DirectiveFailure(number, p_ != end_ ? p_->location : directive_);
    }

    void skip_blanks() {
        while (p_ != end_ && p_->type == TOKEN_BLANK) ++p_;
    }

    // The next token that is not blank, or null at the end.
    const token_st* peek() {
        skip_blanks();
        return p_ != end_ ? p_ : nullptr;
    }

    bool type_at(size_t ahead, uint32_t type) const {
        return static_cast<size_t>(end_ - p_) > ahead && p_[ahead].type == type;
    }

    // ".WORD." with all three tokens touching.
    bool dotted_word_ahead(const char* word) {
        skip_blanks();
        return type_at(0, '.') && type_at(1, TOKEN_WORD) && token_is_word(p_[1], word) &&
               type_at(2, '.');
    }

    bool accept_word_operator(const char* word) {
        const token_st* t = peek();
        if (t && t->type == TOKEN_WORD && token_is_word(*t, word)) {
            ++p_;
            return true;
        }
        if (dotted_word_ahead(word)) {
            p_ += 3;
            return true;
        }
        return false;
    }

    bool truth(const pp_value_st& v) const { return v.number != 0; }

    pp_value_st parse_or() {
        pp_value_st left = parse_and();
        while (accept_word_operator("OR")) {
            pp_value_st right = parse_and();
            left = logical(truth(left) || truth(right));
        }
        return left;
    }

    pp_value_st parse_and() {
        pp_value_st left = parse_not();
        while (accept_word_operator("AND")) {
            pp_value_st right = parse_not();
            left = logical(truth(left) && truth(right));
        }
        return left;
    }

    pp_value_st parse_not() {
        const token_st* t = peek();
        if (t && t->type == '!' && !type_at(1, '=')) {
            ++p_;
            return logical(!truth(parse_not()));
        }
        if (accept_word_operator("NOT")) return logical(!truth(parse_not()));
        return parse_relation();
    }

    // 0 when no relational operator follows; else a code for it.
    int accept_relation() {
        const token_st* t = peek();
        if (!t) return 0;
        uint32_t first = t->type;
        uint32_t second = type_at(1, '=') ? '=' : type_at(1, '<') ? '<' : type_at(1, '>') ? '>' : 0;
        struct relation_st { uint32_t first, second; int code; };
        static const relation_st relations[] = {
            {'=', '=', '='}, {'=', '<', 'l'}, {'=', '>', 'g'}, {'<', '=', 'l'}, {'<', '>', '#'},
            {'>', '=', 'g'}, {'!', '=', '#'}, {'=', 0, '='},   {'#', 0, '#'},   {'<', 0, '<'},
            {'>', 0, '>'},
        };
        for (const relation_st& r : relations) {
            if (r.first != first || (r.second && r.second != second)) continue;
            p_ += r.second ? 2 : 1;
            return r.code;
        }
        return 0;
    }

    pp_value_st parse_relation() {
        pp_value_st left = parse_additive();
        int code = accept_relation();
        if (!code) return left;
        pp_value_st right = parse_additive();
        if (left.logical != right.logical) fail(ERR_OPERAND_TYPE_MISMATCH);
        if (left.logical && code != '=' && code != '#') fail(ERR_OPERAND_TYPE_MISMATCH);
        long long a = left.number, b = right.number;
        switch (code) {
            case '=': return logical(a == b);
            case '#': return logical(a != b);
            case '<': return logical(a < b);
            case '>': return logical(a > b);
            case 'l': return logical(a <= b);
            default: return logical(a >= b);
        }
    }

    long long arithmetic(uint32_t op, const pp_value_st& left, const pp_value_st& right) {
        if (left.logical || right.logical) fail(ERR_OPERAND_TYPE_MISMATCH);
        long long a = left.number, b = right.number, r = 0;
        bool overflow = false;
        switch (op) {
            case '+': overflow = __builtin_add_overflow(a, b, &r); break;
            case '-': overflow = __builtin_sub_overflow(a, b, &r); break;
            case '*': overflow = __builtin_mul_overflow(a, b, &r); break;
            default:
                overflow = b == 0 || (a == INT64_MIN && b == -1);
                if (!overflow) r = op == '/' ? a / b : a % b;
        }
        if (overflow) fail(ERR_NUMERIC_OVERFLOW);
        return r;
    }

    pp_value_st parse_additive() {
        pp_value_st left = parse_multiplicative();
        for (const token_st* t = peek(); t && (t->type == '+' || t->type == '-'); t = peek()) {
            ++p_;
            left = integer(arithmetic(t->type, left, parse_multiplicative()));
        }
        return left;
    }

    pp_value_st parse_multiplicative() {
        pp_value_st left = parse_unary();
        for (const token_st* t = peek(); t && (t->type == '*' || t->type == '/' || t->type == '%');
             t = peek()) {
            ++p_;
            left = integer(arithmetic(t->type, left, parse_unary()));
        }
        return left;
    }

    pp_value_st parse_unary() {
        const token_st* t = peek();
        if (t && (t->type == '-' || t->type == '+')) {
            ++p_;
            pp_value_st v = parse_unary();
            return integer(arithmetic(t->type, integer(0), v));
        }
        return parse_primary();
    }

    long long number_of(const token_st& t, int base) {
        const char* p = t.value.begin;
        const char* end = p + t.value.size;
        if (base == 16) {
            t.value.charset->next(p, end);
            t.value.charset->next(p, end);
            if (p == end) fail(ERR_SYNTAX);
        }
        unsigned long long n = 0;
        while (p < end) {
            char32_t c = t.value.charset->next(p, end);
            int digit = base == 16 ? u_digit(static_cast<UChar32>(c), 16)
                                   : u_charDigitValue(static_cast<UChar32>(c));
            if (__builtin_mul_overflow(n, static_cast<unsigned long long>(base), &n) ||
                __builtin_add_overflow(n, static_cast<unsigned long long>(digit), &n))
                fail(ERR_NUMERIC_OVERFLOW);
        }
        if (base == 10 && n > static_cast<unsigned long long>(INT64_MAX)) fail(ERR_NUMERIC_OVERFLOW);
        return static_cast<long long>(n);
    }

    void expect(uint32_t type) {
        const token_st* t = peek();
        if (!t || t->type != type) fail(ERR_SYNTAX);
        ++p_;
    }

    pp_value_st parse_defined() {
        bool parenthesised = peek() && p_->type == '(';
        if (parenthesised) ++p_;
        const token_st* name = peek();
        if (!name || name->type != TOKEN_WORD) fail(ERR_SYNTAX);
        ++p_;
        if (parenthesised) expect(')');
        return logical(defined_(context_, *name));
    }

    pp_value_st parse_primary() {
        const token_st* t = peek();
        if (!t) fail(ERR_SYNTAX);
        if (dotted_word_ahead("T") || dotted_word_ahead("F")) {
            bool value = token_is_word(p_[1], "T");
            p_ += 3;
            return logical(value);
        }
        switch (t->type) {
            case TOKEN_DIGITS: ++p_; return integer(number_of(*t, 10));
            case TOKEN_HEX_INTEGER: ++p_; return integer(number_of(*t, 16));
            case '(': {
                ++p_;
                pp_value_st v = parse_or();
                expect(')');
                return v;
            }
            case TOKEN_WORD:
                ++p_;
                if (token_is_word(*t, "TRUE")) return logical(true);
                if (token_is_word(*t, "FALSE")) return logical(false);
                if (token_is_word(*t, "DEFINED")) return parse_defined();
                --p_;
                fail(ERR_VARIABLE_NOT_FOUND);
            default: fail(ERR_SYNTAX);
        }
    }
};

}  // namespace

bool token_is_word(const token_st& token, const char* ascii) {
    const char* p = token.value.begin;
    const char* end = p + token.value.size;
    while (p < end && *ascii) {
        char32_t c = token.value.charset->next(p, end);
        if (u_toupper(static_cast<UChar32>(c)) != u_toupper(static_cast<unsigned char>(*ascii++)))
            return false;
    }
    return p == end && *ascii == 0;
}

bool evaluate_directive_condition(const token_st* begin, const token_st* end,
                                  const document_location_st& directive, defined_test defined,
                                  void* context) {
    ZO_TRACE();
    ConditionParser parser(begin, end, directive, defined, context);
    return parser.parse_all().number != 0;
}

}  // namespace zobase
