// Host expressions in SQL text: `?expr` is cut out by the language's own
// scanner and operand parser and replaced by the ODBC marker `?`; at each
// execution the expression runs and its value is bound by its type.
#include <cstring>

#include "base/call_trace.h"
#include "base/error_numbers.h"
#include "frontend/parser.h"
#include "frontend/scanner.h"
#include "sql/sql_execute.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/money.h"
#include "vm/call_resolver.h"
#include "vm/vm_run.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

bool is_quote(const token_st& token) { return token.type == '"' || token.type == '\''; }

// The end of the tokens that may belong to the operand starting at `begin`:
// the first blank, line end, comma or semicolon outside brackets and quotes,
// or a bracket that closes one opened before. The parser then takes the
// longest operand inside.
const token_st* operand_bound(const token_st* begin, const token_st* end) {
    int depth = 0;
    for (const token_st* t = begin; t != end; ++t) {
        if (is_quote(*t)) {
            const token_st* close = t + 1;
            while (close != end && close->type != t->type) ++close;
            if (close == end) return end;
            t = close;
            continue;
        }
        switch (t->type) {
        case '(': case '[': case '{': ++depth; break;
        case ')': case ']': case '}':
            if (--depth < 0) return t;
            break;
        case TOKEN_BLANK: case TOKEN_LINE_END: case ',': case ';':
            if (depth == 0 && t != begin) return t;
            break;
        default: break;
        }
    }
    return end;
}

String source_between(const String& sql, const token_st* first, const token_st* last_end) {
    const char* from = first->value.begin;
    const char* to = last_end == nullptr ? sql.end() : last_end->value.begin;
    return String(sql, from, to);
}

}  // namespace

String _sql_prepare_bind(VmStack* stack, const String& sql, std::vector<prepared_operand_st>* parameters) {
    ZO_TRACE();
    token_vector tokens;
    tokenize(sql, tokens);
    const token_st* end = tokens.data() + tokens.size();
    String output(size_t{0}, sql.get_charset());
    const char* copied = sql.read();
    for (const token_st* t = tokens.data(); t != end; ++t) {
        if (is_quote(*t)) {
            const token_st* close = t + 1;
            while (close != end && close->type != t->type) ++close;
            if (close == end) break;
            t = close;
            continue;
        }
        if (t->type != '?') continue;
        const char* after_marker = t->value.begin + t->value.size;
        output.add(String(sql, copied, after_marker));
        const token_st* first = t + 1;
        while (first != end && first->type == TOKEN_BLANK) ++first;
        if (first == end) throw RuntimeError(ERR_SYNTAX);
        const token_st* used = nullptr;
        std::unique_ptr<Operand> operand(parse_operand(first, operand_bound(first, end), true, &used));
        String expression = source_between(sql, first, used == end ? nullptr : used);
        prepared_operand_st parameter;
        parameter.program = stack->resolver->compile_expression(stack, expression);
        parameters->push_back(std::move(parameter));
        copied = used == end ? sql.end() : used->value.begin;
        t = used - 1;
    }
    output.add(String(sql, copied, sql.end()));
    return output;
}

namespace {

constexpr SQLSMALLINT TIMESTAMP_DIGITS = 3;
constexpr SQLULEN TIMESTAMP_SIZE = 23;
constexpr SQLULEN MONEY_PRECISION = 19;
constexpr SQLSMALLINT MONEY_SCALE_DIGITS = 4;

struct binding_st {
    SQLSMALLINT c_type;
    SQLSMALLINT sql_type;
    SQLULEN size;
    SQLSMALLINT digits;
    SQLPOINTER data;
    SQLLEN buffer_length;
};

// The C and SQL types of a value and where its bytes stand.
binding_st prepare_binding(bound_value_st& bound) {
    const Variant& v = bound.value;
    switch (v.tag) {
    case TAG_NULL:
        bound.indicator = SQL_NULL_DATA;
        return {SQL_C_CHAR, SQL_VARCHAR, 1, 0, nullptr, 0};
    case TAG_FALSE:
    case TAG_TRUE:
        bound.bit = v.tag == TAG_TRUE;
        return {SQL_C_BIT, SQL_BIT, 1, 0, &bound.bit, 0};
    case TAG_INTEGER:
        bound.integer = v.integer;
        return {SQL_C_SBIGINT, SQL_BIGINT, 19, 0, &bound.integer, 0};
    case TAG_NUMERIC:
        bound.number = v.numeric.value;
        return {SQL_C_DOUBLE, SQL_DOUBLE, 15, 0, &bound.number, 0};
    case TAG_MONEY: {
        String text = money_to_string(v.money);
        std::string ascii = text.u8str();
        bound.text = String::fromBytes(ascii.c_str(), ascii.size() + 1, Charset::ascii);
        bound.indicator = static_cast<SQLLEN>(ascii.size());
        return {SQL_C_CHAR, SQL_DECIMAL, MONEY_PRECISION, MONEY_SCALE_DIGITS,
                const_cast<char*>(bound.text.read()), bound.indicator + 1};
    }
    case TAG_DATE: {
        int year, month, day;
        unserial_julian_date(v.date, &year, &month, &day);
        bound.date = {static_cast<SQLSMALLINT>(year), static_cast<SQLUSMALLINT>(month),
                      static_cast<SQLUSMALLINT>(day)};
        if (v.date.julian == 0) bound.indicator = SQL_NULL_DATA;
        return {SQL_C_TYPE_DATE, SQL_TYPE_DATE, 10, 0, &bound.date, 0};
    }
    case TAG_DATETIME: {
        int year, month, day, hour, minute, second, msec;
        unserial_julian_date(v.datetime, &year, &month, &day, &hour, &minute, &second, &msec);
        bound.timestamp = {static_cast<SQLSMALLINT>(year), static_cast<SQLUSMALLINT>(month),
                           static_cast<SQLUSMALLINT>(day), static_cast<SQLUSMALLINT>(hour),
                           static_cast<SQLUSMALLINT>(minute), static_cast<SQLUSMALLINT>(second),
                           static_cast<SQLUINTEGER>(msec) * 1000000u};
        if (v.datetime.julian == 0 && v.datetime.msecs == 0) bound.indicator = SQL_NULL_DATA;
        return {SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, TIMESTAMP_SIZE, TIMESTAMP_DIGITS, &bound.timestamp, 0};
    }
    case TAG_STRING: {
        const String& s = v.str();
        if (s.get_charset() == Charset::binary) {
            bound.text = s;
            bound.indicator = static_cast<SQLLEN>(s.size());
            return {SQL_C_BINARY, SQL_VARBINARY, s.size() ? s.size() : 1, 0, const_cast<char*>(s.read()),
                    bound.indicator};
        }
        bound.text = sql_wide_text(s);
        bound.indicator = static_cast<SQLLEN>(bound.text.size());
        SQLULEN chars = bound.text.size() / sizeof(SQLWCHAR);
        return {SQL_C_WCHAR, SQL_WVARCHAR, chars ? chars : 1, 0, const_cast<char*>(bound.text.read()),
                bound.indicator + static_cast<SQLLEN>(sizeof(SQLWCHAR))};
    }
    default: throw RuntimeError(ERR_DATA_TYPE_MISMATCH);
    }
}

}  // namespace

bool _sql_bind_parameters(VmStack* stack, int64_t id, SQLHSTMT hstmt,
                          const std::vector<prepared_operand_st>& parameters, std::vector<bound_value_st>* values) {
    ZO_TRACE();
    // SQLBindParameter keeps pointers into the entries: they may not move.
    values->clear();
    values->reserve(parameters.size());
    for (const prepared_operand_st& parameter : parameters) {
        values->emplace_back();
        Variant result;
        vm_run_expression(stack, parameter.program.get(), &result);
        values->back().value.set_variant(result.follow());
        result.release(stack);
    }
    SQLUSMALLINT number = 1;
    for (bound_value_st& bound : *values) {
        binding_st b = prepare_binding(bound);
        SQLRETURN rc = SQLBindParameter(hstmt, number++, SQL_PARAM_INPUT, b.c_type, b.sql_type, b.size, b.digits,
                                        b.data, b.buffer_length, &bound.indicator);
        if (!sql_succeeded(rc)) {
            _sql_log_diag_rec(stack, id, SQL_HANDLE_STMT, hstmt);
            return false;
        }
    }
    return true;
}

}  // namespace zobase
