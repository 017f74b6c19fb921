#pragma once
// The parser driver: one logical line's tokens in, one Statement or Operand
// out through a callback, parse errors collected with their locations.
#include <cstdint>
#include <vector>

#include "frontend/scanner.h"
#include "frontend/syntax_tree.h"
#include "frontend/token.h"

namespace zobase {

enum ParseCallbackKinds : int {
    PARSE_BAD_LITERAL = 0,
    PARSE_STATEMENT = 1,    // value: Statement*, the callee takes it
    PARSE_OPERAND = 2,      // value: Operand*, the callee takes it
    PARSE_CLASSIFY = 3,     // value: the class number
};

enum ClassifyClasses : int {
    CLASSIFY_KEYWORD = 1,
    CLASSIFY_OPERATOR = 2,
    CLASSIFY_COMMENT = 4,
    CLASSIFY_DIRECTIVE = 5,
};

typedef void (*parse_callback)(int kind, void* value, const document_location_st& location, void* context);

struct parse_error_st {
    int32_t number;  // 10 syntax error, 9012 ambiguous, 9013 stack exhausted, or a literal's
    document_location_st location;
};

// What the grammar's actions see during one parse.
struct ParseContext {
    Scanner* scanner;
    const token_st* begin;
    const token_st* end;
    parse_callback callback;
    void* callback_context;
    std::vector<parse_error_st>* errors;
    std::vector<uint32_t> keyword_names;  // byte offsets of keywords read as names
    // Held until the whole range has parsed: a reduction may run before a later token fails.
    Statement* statement = nullptr;
    Operand* operand = nullptr;
    uint32_t resolution_depth = 0;  // see grammar_enter_resolution
    uint32_t operator_count = 0;    // see MAX_LINE_OPERATORS
};

// Operators of one logical line. A chain of binary operators grows the tree
// without growing the parser's stack, and every later pass (compiling,
// folding, freeing) walks the tree by recursion; bounding the operators bounds
// its depth. Past the limit the line fails with 9013.
constexpr uint32_t MAX_LINE_OPERATORS = 10000;

// While a line is ambiguous the parser defers its actions; it settles them by
// recursion, one level of some kilobytes of machine stack per deferred action
// below the one it settles. The generated parser asks grammar_enter_resolution
// before each level (scripts/bound_glr_resolution.py): past this depth the
// parse ends as "memory exhausted", error 9013. Real lines stay below 50.
constexpr uint32_t MAX_RESOLUTION_DEPTH = 512;

struct parse_options_st {
    parse_callback callback = nullptr;
    void* callback_context = nullptr;
    bool classify = false;  // report keywords and operator characters with kind 3
};

// Parses [begin, end) from the start token (ParserToken::start_*). Returns 0
// or the number of the first error of this parse; errors are appended.
int parse_tokens(const token_st* begin, const token_st* end, int start_token, const parse_options_st& options,
                 std::vector<parse_error_st>& errors);

// One operand from the head of a token range. In retry mode a failed parse is
// repeated with one token less at the end until it succeeds; `used_end` tells
// where the operand ended. Raises the parse's error when nothing parses.
Operand* parse_operand(const token_st* begin, const token_st* end, bool retry, const token_st** used_end);

// Convenience for tests and tools: tokenizes UTF-8 text and parses it whole.
Statement* parse_statement_text(const char* utf8, std::vector<parse_error_st>& errors,
                                int start_token = static_cast<int>(ParserToken::start_statement));
// `origin` is where the text stands in a larger source: locations count from there.
Operand* parse_expression_text(const char* utf8, std::vector<parse_error_st>& errors,
                               const document_position_st& origin = {0, 0, 1, 1});

// ---- used by the grammar's actions ----

// Text collected from tokens that touch; joined once at the end.
class TextPieces {
public:
    std::vector<scan_string_st> pieces;
    scan_string_st delimiter{};  // of a quoted string
    void add(const scan_string_st& piece) { pieces.push_back(piece); }
};

class MacroPieces {
public:
    struct piece_st {
        char kind;
        scan_string_st text;
        document_location_st location;
    };
    std::vector<piece_st> pieces;
    void add(char kind, const scan_string_st& text, const document_location_st& location) {
        pieces.push_back({kind, text, location});
    }
};

int grammar_next_token(ParseContext* ctx, scan_string_st& value, document_location_st& location);
bool grammar_enter_resolution(ParseContext* ctx);
void grammar_leave_resolution(ParseContext* ctx);
void grammar_report_error(ParseContext* ctx, const document_location_st& location, const char* message);
void grammar_statement(ParseContext* ctx, Statement* statement, const document_location_st& location);
void grammar_operand(ParseContext* ctx, Operand* operand, const document_location_st& location);
void grammar_mark_name(ParseContext* ctx, const document_location_st& location);
String grammar_join(const TextPieces* text);
String grammar_source_text(ParseContext* ctx, const document_location_st& location);

Option* grammar_option(const char* key, Operand* value, const document_location_st& location);
// An option whose value is the source text of an expression, compiled later
// for a table (LOCATE FOR, SET FILTER TO); the parsed expression is dropped.
Option* grammar_text_option(ParseContext* ctx, const char* key, Operand* parsed,
                            const document_location_st& location);
// A field named with its alias, "alias.field" or "alias->field", as text.
Operand* grammar_field_name(const scan_string_st& alias, const char* separator, const scan_string_st& field,
                            const document_location_st& location);
void grammar_push(ParseContext* ctx, BasicCommand* command, Option* option);
BasicCommand* grammar_key_range(ParseContext* ctx, const scan_string_st& word, const document_location_st& location,
                                BasicCommand* bounds);
BasicCommand* grammar_command_to(ParseContext* ctx, StatementTypes type, const char* key, Operand* value,
                                 const document_location_st& location);
BasicCommand* grammar_command_text(ParseContext* ctx, StatementTypes type, const char* key, TextPieces* text,
                                   const document_location_st& location);
BasicCommand* grammar_set(ParseContext* ctx, const char* flag, Operand* value, const document_location_st& location);
BasicCommand* grammar_path_list(ParseContext* ctx, StatementTypes type, OperandList* files, bool additive,
                                const document_location_st& location);
Statement* grammar_macro_statement(ParseContext* ctx, StatementTypes type, MacroPieces* pieces,
                                   const document_location_st& location);
Statement* grammar_function(long long head, const scan_string_st& name, Stmt_Declaration* parameters,
                            type_clause_st* type);
Statement* grammar_create_table(ParseContext* ctx, Stmt_Table* columns, Operand* name, bool cursor,
                                BasicCommand* options);
declare_param_st* grammar_declare_param(const char* type, bool by_reference, const scan_string_st* name);
declared_variable_st* grammar_declared(Operand* target, OperandList* bounds, type_clause_st* type);
void grammar_declare_add(Stmt_Declaration* declaration, declared_variable_st* variable);
column_st* grammar_column(Operand* name, long long letter, Operand* width, Operand* decimals, BasicCommand* options,
                          const document_location_st& location);

// Past MAX_LINE_OPERATORS these record 9013 and return the left or inner
// operand alone, so that the tree stops growing.
Operand* grammar_binary(ParseContext* ctx, int op, Operand* left, Operand* right,
                        const document_location_st& location);
Operand* grammar_unary(ParseContext* ctx, int op, Operand* inner, const document_location_st& location);
Operand* grammar_at(Operand_Reference* reference, const document_location_st& at,
                    const document_location_st& target);
Operand* grammar_cast(Operand* value, const scan_string_st& type, const document_location_st& location);
Path* grammar_path(PathItem* root, Path* tail, bool memvar, const document_location_st& location);
void grammar_prepend(Path* path, PathItem* item, const document_location_st& location);
void grammar_omitted(OperandList* list, const document_location_st& location);

Operand* grammar_bool(bool value);
Operand* grammar_null();
Operand* grammar_integer(long long value, const document_location_st& location);
// These three take the pieces and delete them.
long long grammar_decimal_integer(ParseContext* ctx, scan_string_list_st* digits,
                                  const document_location_st& location);
long long grammar_hex_integer(ParseContext* ctx, const scan_string_st& token, const document_location_st& location);
Operand* grammar_numeric(ParseContext* ctx, scan_string_list_st* pieces, const document_location_st& location);
Operand* grammar_money(ParseContext* ctx, scan_string_list_st* pieces, const document_location_st& location);
Operand* grammar_binary_string(const scan_string_st& token, const document_location_st& location);
Operand* grammar_string(TextPieces* text, bool utf32);
Operand* grammar_empty_date(bool datetime);
Operand* grammar_date(ParseContext* ctx, long long year, long long month, long long day,
                      const document_location_st& location);
Operand* grammar_datetime(ParseContext* ctx, long long year, long long month, long long day, long long hour,
                          long long minute, long long second, const document_location_st& location);

}  // namespace zobase
