#include "frontend/parser.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>

#include "base/call_trace.h"
#include "frontend/literals.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/error.h"

int kestroparse(zobase::ParseContext* ctx);

namespace zobase {

namespace {


void record_error(ParseContext* ctx, int number, const document_location_st& location) {
    ctx->errors->push_back({number, location});
}

void bad_literal(ParseContext* ctx, const document_location_st& location) {
    record_error(ctx, ERR_SYNTAX, location);
    if (ctx->callback) ctx->callback(PARSE_BAD_LITERAL, nullptr, location, ctx->callback_context);
}

bool count_operator(ParseContext* ctx, const document_location_st& location) {
    if (++ctx->operator_count <= MAX_LINE_OPERATORS) return true;
    if (ctx->operator_count == MAX_LINE_OPERATORS + 1) record_error(ctx, ERR_PARSER_STACK_EXHAUSTED, location);
    return false;
}

void report_duplicate_option(const Option* option, void* context) {
    record_error(static_cast<ParseContext*>(context), ERR_SYNTAX, option->location);
}

String join_pieces(const scan_string_st* pieces, size_t count, const Charset* charset) {
    if (count == 1) return String::create_from_scan_string(pieces[0]);
    Concat concat(charset);
    for (size_t i = 0; i < count; ++i)
        if (pieces[i].size) concat.append(String::create_from_scan_string(pieces[i]));
    if (concat.piece_count() == 0) return String(size_t(0), charset ? charset : Charset::utf8);
    return concat.to_string();
}

bool is_operator_char(uint32_t type) {
    return type < 128 && type != 0 && std::strchr("+-*/%^=<>#$!", static_cast<int>(type)) != nullptr;
}

void report_classification(ParseContext& ctx) {
    std::sort(ctx.keyword_names.begin(), ctx.keyword_names.end());
    size_t names = 0;
    for (const token_st* t = ctx.begin; t != ctx.end; ++t) {
        uint32_t keyword;
        int cls = 0;
        if (t->type == TOKEN_WORD && Scanner::is_keyword(*t, keyword)) {
            while (names < ctx.keyword_names.size() && ctx.keyword_names[names] < t->location.start.offset_bytes)
                ++names;
            bool is_name = names < ctx.keyword_names.size() &&
                           ctx.keyword_names[names] == t->location.start.offset_bytes;
            if (!is_name) cls = CLASSIFY_KEYWORD;
        } else if (is_operator_char(t->type)) {
            cls = CLASSIFY_OPERATOR;
        }
        if (cls)
            ctx.callback(PARSE_CLASSIFY, reinterpret_cast<void*>(static_cast<intptr_t>(cls)), t->location,
                         ctx.callback_context);
    }
}

document_location_st span(const document_location_st& first, const document_location_st& last) {
    return {first.start, last.end};
}

Operand* with_location(Operand* operand, const document_location_st& location) {
    operand->location = location;
    return operand;
}

}  // namespace

int grammar_next_token(ParseContext* ctx, scan_string_st& value, document_location_st& location) {
    return ctx->scanner->lex(value, location);
}

bool grammar_enter_resolution(ParseContext* ctx) {
    if (ctx->resolution_depth >= MAX_RESOLUTION_DEPTH) return false;
    ++ctx->resolution_depth;
    return true;
}

void grammar_leave_resolution(ParseContext* ctx) { --ctx->resolution_depth; }

void grammar_report_error(ParseContext* ctx, const document_location_st& location, const char* message) {
    int number = ERR_SYNTAX;
    if (std::strcmp(message, "syntax is ambiguous") == 0) number = ERR_SYNTAX_AMBIGUOUS;
    else if (std::strcmp(message, "memory exhausted") == 0) number = ERR_PARSER_STACK_EXHAUSTED;
    record_error(ctx, number, location);
}

void grammar_statement(ParseContext* ctx, Statement* statement, const document_location_st& location) {
    statement->location = location;
    delete ctx->statement;
    ctx->statement = statement;
}

void grammar_operand(ParseContext* ctx, Operand* operand, const document_location_st& location) {
    delete ctx->operand;
    ctx->operand = operand;
}

void grammar_mark_name(ParseContext* ctx, const document_location_st& location) {
    ctx->keyword_names.push_back(location.start.offset_bytes);
}

String grammar_join(const TextPieces* text) {
    if (!text) return String();
    const Charset* charset = text->pieces.empty() ? text->delimiter.charset : text->pieces.front().charset;
    if (text->pieces.empty()) return String(size_t(0), charset ? charset : Charset::utf8);
    return join_pieces(text->pieces.data(), text->pieces.size(), charset);
}

String grammar_source_text(ParseContext* ctx, const document_location_st& location) {
    std::vector<scan_string_st> pieces;
    for (const token_st* t = ctx->begin; t != ctx->end; ++t)
        if (t->location.start.offset_bytes >= location.start.offset_bytes &&
            t->location.end.offset_bytes <= location.end.offset_bytes)
            pieces.push_back(t->value);
    if (pieces.empty()) return String();
    return join_pieces(pieces.data(), pieces.size(), pieces.front().charset);
}

Option* grammar_option(const char* key, Operand* value, const document_location_st& location) {
    Option* option = new Option(key, value);
    option->location = location;
    return option;
}

Operand* grammar_field_name(const scan_string_st& alias, const char* separator, const scan_string_st& field,
                            const document_location_st& location) {
    std::string text = String::create_from_scan_string(alias).u8str() + separator +
                       String::create_from_scan_string(field).u8str();
    Operand* name = new Operand_Name(String(text.c_str()));
    name->location = location;
    return name;
}

Option* grammar_text_option(ParseContext* ctx, const char* key, Operand* parsed,
                            const document_location_st& location) {
    delete parsed;
    Operand* text = new Const_String(grammar_source_text(ctx, location));
    text->location = location;
    return grammar_option(key, text, location);
}

void grammar_push(ParseContext* ctx, BasicCommand* command, Option* option) {
    command->options.push(option, report_duplicate_option, ctx);
}

BasicCommand* grammar_command_to(ParseContext* ctx, StatementTypes type, const char* key, Operand* value,
                                 const document_location_st& location) {
    BasicCommand* command = new BasicCommand(type);
    grammar_push(ctx, command, grammar_option(key, value, location));
    return command;
}

// SET KEY TO RANGE low, high: the word must be RANGE.
BasicCommand* grammar_key_range(ParseContext* ctx, const scan_string_st& word, const document_location_st& location,
                                BasicCommand* bounds) {
    std::string text = String::create_from_scan_string(word).u8str();
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (text != "RANGE") grammar_report_error(ctx, location, "syntax error");
    bounds->type = STMT_SET_KEY_TO;
    return bounds;
}

BasicCommand* grammar_command_text(ParseContext* ctx, StatementTypes type, const char* key, TextPieces* text,
                                   const document_location_st& location) {
    Operand* value = with_location(new Const_String(grammar_join(text)), location);
    delete text;
    return grammar_command_to(ctx, type, key, value, location);
}

BasicCommand* grammar_set(ParseContext* ctx, const char* flag, Operand* value, const document_location_st& location) {
    BasicCommand* command = new BasicCommand(STMT_SET);
    grammar_push(ctx, command, grammar_option(flag, nullptr, location));
    grammar_push(ctx, command, grammar_option("TO", value, location));
    return command;
}

BasicCommand* grammar_path_list(ParseContext* ctx, StatementTypes type, OperandList* files, bool additive,
                                const document_location_st& location) {
    BasicCommand* command = new BasicCommand(type);
    Option* paths = new Option("PATH", files);
    paths->location = location;
    grammar_push(ctx, command, paths);
    if (additive) grammar_push(ctx, command, grammar_option("ADDITIVE", nullptr, location));
    return command;
}

Statement* grammar_macro_statement(ParseContext* ctx, StatementTypes type, MacroPieces* pieces,
                                   const document_location_st& location) {
    ZO_TRACE();
    std::unique_ptr<MacroPieces> owned(pieces);
    std::vector<MacroItem> items;
    bool has_variable = false;
    const auto& list = pieces->pieces;
    for (size_t i = 0; i < list.size();) {
        if (list[i].kind == 'V') {
            items.push_back({'V', String::create_from_scan_string(list[i].text), list[i].location});
            has_variable = true;
            ++i;
            continue;
        }
        size_t run = i;
        std::vector<scan_string_st> texts;
        while (run < list.size() && list[run].kind == 'S') texts.push_back(list[run++].text);
        items.push_back({'S', join_pieces(texts.data(), texts.size(), texts.front().charset),
                         span(list[i].location, list[run - 1].location)});
        i = run;
    }
    if (!has_variable) {
        record_error(ctx, ERR_SYNTAX, location);
        return new Statement(STMT_INVALID);
    }
    if (type == STMT_INCOMPLETE) {
        Stmt_Macro* macro = new Stmt_Macro();
        macro->items = std::move(items);
        return macro;
    }
    if (type == STMT_SCAN) {
        BasicCommand* scan = new BasicCommand(STMT_SCAN);
        scan->macro = std::move(items);
        return scan;
    }
    Stmt_Condition* condition = new Stmt_Condition(type, nullptr);
    condition->macro = std::move(items);
    return condition;
}

Statement* grammar_function(long long head, const scan_string_st& name, Stmt_Declaration* parameters,
                            type_clause_st* type) {
    Stmt_Function* function = new Stmt_Function();
    function->name = String::create_from_scan_string(name);
    function->procedure = (head & 1) != 0;
    function->visibility = static_cast<int32_t>(head >> 1);
    function->parameters.reset(parameters);
    if (type) {
        function->result_type = std::move(*type);
        delete type;
    }
    return function;
}

Statement* grammar_create_table(ParseContext* ctx, Stmt_Table* columns, Operand* name, bool cursor,
                                BasicCommand* options) {
    columns->type = STMT_CREATE_TABLE;
    columns->table.reset(name);
    columns->cursor = cursor;
    if (options) {
        for (auto& option : options->options.items) {
            if (std::strcmp(option->key, "CODEPAGE") == 0) columns->codepage = std::move(option->value);
            else columns->engine = std::move(option->value);
        }
        delete options;
    }
    return columns;
}

declare_param_st* grammar_declare_param(const char* type, bool by_reference, const scan_string_st* name) {
    declare_param_st* param = new declare_param_st();
    param->type_name = String(type);
    param->by_reference = by_reference;
    if (name) param->name = String::create_from_scan_string(*name);
    return param;
}

declared_variable_st* grammar_declared(Operand* target, OperandList* bounds, type_clause_st* type) {
    declared_variable_st* variable = new declared_variable_st();
    variable->target.reset(target);
    variable->bounds.reset(bounds);
    if (type) {
        variable->type = std::move(*type);
        delete type;
    }
    return variable;
}

void grammar_declare_add(Stmt_Declaration* declaration, declared_variable_st* variable) {
    declaration->variables.push_back(std::move(*variable));
    delete variable;
}

column_st* grammar_column(Operand* name, long long letter, Operand* width, Operand* decimals, BasicCommand* options,
                          const document_location_st& location) {
    static const struct {
        const char* key;
        uint32_t flag;
    } flags[] = {{"NULL", COLUMN_NULL}, {"NOT NULL", COLUMN_NOT_NULL}, {"NOCPTRANS", COLUMN_NOCPTRANS},
                 {"AUTOINC", COLUMN_AUTOINC}};
    column_st* column = new column_st();
    column->name.reset(name);
    column->type_letter = static_cast<char>(letter);
    column->width.reset(width);
    column->decimals.reset(decimals);
    column->location = location;
    if (options) {
        for (auto& option : options->options.items) {
            for (const auto& f : flags)
                if (std::strcmp(option->key, f.key) == 0) column->flags |= f.flag;
            if (std::strcmp(option->key, "NEXTVALUE") == 0) column->nextvalue = std::move(option->value);
            if (std::strcmp(option->key, "STEP") == 0) column->step = std::move(option->value);
        }
        delete options;
    }
    return column;
}

Operand* grammar_binary(ParseContext* ctx, int op, Operand* left, Operand* right,
                        const document_location_st& location) {
    if (!count_operator(ctx, location)) {
        delete right;
        return left;
    }
    return with_location(new BinaryOperator(op, left, right), location);
}

Operand* grammar_unary(ParseContext* ctx, int op, Operand* inner, const document_location_st& location) {
    if (!count_operator(ctx, location)) return inner;
    return with_location(new Operand_Unary(op, inner), location);
}

Operand* grammar_at(Operand_Reference* reference, const document_location_st& at,
                    const document_location_st& target) {
    return with_location(reference, span(at, target));
}

Operand* grammar_cast(Operand* value, const scan_string_st& type, const document_location_st& location) {
    OperandList* arguments = new OperandList();
    arguments->add(value);
    arguments->add(new Const_String(String::create_from_scan_string(type)));
    return with_location(new Operand_Call(String("cast"), arguments), location);
}

Path* grammar_path(PathItem* root, Path* tail, bool memvar, const document_location_st& location) {
    tail->root.reset(root);
    tail->memvar_root = memvar;
    tail->location = location;
    return tail;
}

void grammar_prepend(Path* path, PathItem* item, const document_location_st& location) {
    item->location = location;
    path->items.emplace(path->items.begin(), item);
}

void grammar_omitted(OperandList* list, const document_location_st& location) {
    list->add(with_location(grammar_bool(false), location));
}

Operand* grammar_bool(bool value) {
    Const_Value* constant = new Const_Value();
    constant->value.set_bool(value);
    return constant;
}

Operand* grammar_null() {
    Const_Value* constant = new Const_Value();
    constant->value.set_null();
    return constant;
}

Operand* grammar_integer(long long value, const document_location_st& location) {
    Const_Value* constant = new Const_Value();
    constant->value.set_integer(value);
    return with_location(constant, location);
}

long long grammar_decimal_integer(ParseContext* ctx, scan_string_list_st* digits,
                                  const document_location_st& location) {
    std::unique_ptr<scan_string_list_st> owned(digits);
    integer_type_st value = 0;
    if (!create_integer(*digits, value)) bad_literal(ctx, location);
    return value;
}

long long grammar_hex_integer(ParseContext* ctx, const scan_string_st& token, const document_location_st& location) {
    scan_string_list_st pieces;
    pieces.add(token);
    integer_type_st value = 0;
    if (!create_integer_from_hex(pieces, value)) bad_literal(ctx, location);
    return value;
}

Operand* grammar_numeric(ParseContext* ctx, scan_string_list_st* pieces, const document_location_st& location) {
    std::unique_ptr<scan_string_list_st> owned(pieces);
    numeric_type_st value{0.0, 0};
    if (!create_numeric(*pieces, value)) bad_literal(ctx, location);
    Const_Value* constant = new Const_Value();
    constant->value.set(value);
    return constant;
}

Operand* grammar_money(ParseContext* ctx, scan_string_list_st* pieces, const document_location_st& location) {
    std::unique_ptr<scan_string_list_st> owned(pieces);
    money_type_st value{};
    if (!create_money(*pieces, value)) bad_literal(ctx, location);
    Const_Value* constant = new Const_Value();
    constant->value.set(value);
    return constant;
}

Operand* grammar_binary_string(const scan_string_st& token, const document_location_st& location) {
    return new Const_String(create_binary_const_string(location, token));
}

Operand* grammar_string(TextPieces* text, bool utf32) {
    String value = grammar_join(text);
    delete text;
    if (utf32) value.convert(Charset::utf32le, 0, CSTRAN_SUBSTITUTE);
    return new Const_String(value);
}

Operand* grammar_empty_date(bool datetime) {
    Const_Value* constant = new Const_Value();
    if (datetime) constant->value.set(datetime_st{0, 0});
    else constant->value.set(date_st{0});
    return constant;
}

Operand* grammar_date(ParseContext* ctx, long long year, long long month, long long day,
                      const document_location_st& location) {
    date_st date{0};
    if (serial_julian_date(static_cast<int>(year), static_cast<unsigned>(month), static_cast<unsigned>(day), &date))
        bad_literal(ctx, location);
    Const_Value* constant = new Const_Value();
    constant->value.set(date);
    return constant;
}

Operand* grammar_datetime(ParseContext* ctx, long long year, long long month, long long day, long long hour,
                          long long minute, long long second, const document_location_st& location) {
    datetime_st datetime{0, 0};
    if (serial_julian_date(static_cast<int>(year), static_cast<unsigned>(month), static_cast<unsigned>(day),
                           static_cast<unsigned>(hour), static_cast<unsigned>(minute), static_cast<unsigned>(second),
                           &datetime))
        bad_literal(ctx, location);
    Const_Value* constant = new Const_Value();
    constant->value.set(datetime);
    return constant;
}

// ---- the driver ----

int parse_tokens(const token_st* begin, const token_st* end, int start_token, const parse_options_st& options,
                 std::vector<parse_error_st>& errors) {
    ZO_TRACE();
    token_st start{};
    start.type = static_cast<uint32_t>(start_token);
    if (begin != end) start.location.start = start.location.end = begin->location.start;
    Scanner scanner(begin, end, start);
    ParseContext ctx{&scanner, begin, end, options.callback, options.callback_context, &errors, {}};
    size_t first_error = errors.size();
    int result = kestroparse(&ctx);
    if (result != 0 && errors.size() == first_error) {
        document_location_st where = scanner.position() != begin ? scanner.position()[-1].location : start.location;
        record_error(&ctx, result == 2 ? ERR_PARSER_STACK_EXHAUSTED : ERR_SYNTAX, where);
    }
    bool too_many_operators = ctx.operator_count > MAX_LINE_OPERATORS;
    if (result == 0 && !too_many_operators && options.callback) {
        if (options.classify) report_classification(ctx);
        if (ctx.statement) options.callback(PARSE_STATEMENT, ctx.statement, ctx.statement->location,
                                            options.callback_context);
        if (ctx.operand) options.callback(PARSE_OPERAND, ctx.operand, ctx.operand->location,
                                          options.callback_context);
    } else {
        delete ctx.statement;
        delete ctx.operand;
    }
    return errors.size() == first_error ? 0 : errors[first_error].number;
}

namespace {

struct single_result_st {
    Statement* statement = nullptr;
    Operand* operand = nullptr;
};

void keep_single_result(int kind, void* value, const document_location_st&, void* context) {
    auto* result = static_cast<single_result_st*>(context);
    if (kind == PARSE_STATEMENT) result->statement = static_cast<Statement*>(value);
    if (kind == PARSE_OPERAND) result->operand = static_cast<Operand*>(value);
}

}  // namespace

Operand* parse_operand(const token_st* begin, const token_st* end, bool retry, const token_st** used_end) {
    ZO_TRACE();
    for (const token_st* stop = end;; --stop) {
        single_result_st result;
        parse_options_st options;
        options.callback = keep_single_result;
        options.callback_context = &result;
        std::vector<parse_error_st> errors;
        int number = parse_tokens(begin, stop, static_cast<int>(ParserToken::start_operand), options, errors);
        if (number == 0 && result.operand) {
            if (used_end) *used_end = stop;
            return result.operand;
        }
        delete result.operand;
        if (!retry || stop == begin || stop - 1 == begin) throw RuntimeError(number ? number : ERR_SYNTAX);
    }
}

Statement* parse_statement_text(const char* utf8, std::vector<parse_error_st>& errors, int start_token) {
    String text(utf8);
    token_vector tokens;
    tokenize(text, tokens);
    single_result_st result;
    parse_options_st options;
    options.callback = keep_single_result;
    options.callback_context = &result;
    parse_tokens(tokens.data(), tokens.data() + tokens.size(), start_token, options, errors);
    delete result.operand;
    return result.statement;
}

namespace {

// A position counted from the start of a text, moved to where the text stands.
void place_at(document_position_st& position, const document_position_st& origin) {
    if (position.line == 1) position.column += origin.column - 1;
    position.line += origin.line - 1;
    position.offset_chars += origin.offset_chars;
    position.offset_bytes += origin.offset_bytes;
}

}  // namespace

Operand* parse_expression_text(const char* utf8, std::vector<parse_error_st>& errors,
                               const document_position_st& origin) {
    String text(utf8);
    token_vector tokens;
    tokenize(text, tokens);
    for (token_st& token : tokens) {
        place_at(token.location.start, origin);
        place_at(token.location.end, origin);
    }
    single_result_st result;
    parse_options_st options;
    options.callback = keep_single_result;
    options.callback_context = &result;
    parse_tokens(tokens.data(), tokens.data() + tokens.size(), static_cast<int>(ParserToken::start_expression),
                 options, errors);
    delete result.statement;
    return result.operand;
}

}  // namespace zobase
