#pragma once
// The syntax tree of one logical line: a Statement, or an Operand for an
// expression. Nodes own their children; the parser builds each tree once,
// after the parallel parses of an ambiguous line have been settled.
#include <cstdint>
#include <memory>
#include <vector>

#include "frontend/token.h"
#include "values/string.h"
#include "values/variant.h"

namespace zobase {

class VmStack;

// Statement kinds; the numbers are the command ids of the native command table.
enum StatementTypes : int32_t {
    STMT_INVALID = 0,
    STMT_PRAGMA = 1,
    STMT_ADD_COLUMN = 2,
    STMT_APPEND = 3,
    STMT_ASSERT = 4,
    STMT_ASSIGN = 5,
    STMT_BEGIN_TRANSACTION = 6,
    STMT_BROWSE = 7,
    STMT_CANCEL = 8,
    STMT_CASE = 9,
    STMT_CATCH = 10,
    STMT_CD = 11,
    STMT_CLEAR = 12,
    STMT_CONTINUE = 13,
    STMT_COPY_TO = 14,
    STMT_CREATE_TABLE = 15,
    STMT_DECLARE = 16,
    STMT_DEFINE_CLASS = 17,
    STMT_DELETE_ALL_TAGS = 18,
    STMT_DELETE_FILE = 19,
    STMT_DELETE_TAG = 20,
    STMT_DELETE_RECORD = 21,
    STMT_DIMENSION = 22,
    STMT_DISPLAY_STRUCTURE = 23,
    STMT_DO = 24,
    STMT_DO_CASE = 25,
    STMT_DROP_COLUMN = 26,
    STMT_DROP_TABLE = 27,
    STMT_DO_WHILE = 28,
    STMT_ECHO = 29,
    STMT_ELSE = 30,
    STMT_END_TRANSACTION = 31,
    STMT_ENDCASE = 32,
    STMT_ENDDEFINE = 33,
    STMT_ENDDO = 34,
    STMT_ENDFOR = 35,
    STMT_ENDFUNC = 36,
    STMT_ENDIF = 37,
    STMT_ENDSCAN = 38,
    STMT_ENDTEXT = 39,
    STMT_ENDTRY = 40,
    STMT_ENDWITH = 41,
    STMT_ERROR = 42,
    STMT_EXIT = 43,
    STMT_DUMMY = 44,
    STMT_FINALLY = 45,
    STMT_FOR = 46,
    STMT_FOR_EACH = 47,
    STMT_FUNCTION = 48,
    STMT_GATHER_FROM = 49,
    STMT_GATHER_MEMVAR = 50,
    STMT_GATHER_NAME = 51,
    STMT_GO_BOTTOM = 52,
    STMT_GO_RECORD = 53,
    STMT_GO_TOP = 54,
    STMT_HIDDEN = 55,
    STMT_IF = 56,
    STMT_IMPORT = 58,
    STMT_INDEX = 59,
    STMT_INCOMPLETE = 60,
    STMT_LOCAL = 61,
    STMT_LOCATE = 62,
    STMT_LOOP = 63,
    STMT_LPARAMETERS = 64,
    STMT_MKDIR = 65,
    STMT_MODIFY_COMMAND = 66,
    STMT_OTHERWISE = 68,
    STMT_PACK = 69,
    STMT_PARAMETERS = 70,
    STMT_PRIVATE = 71,
    STMT_PRIVATE_PATTERN = 72,
    STMT_PROTECTED = 73,
    STMT_PUBLIC = 74,
    STMT_QUIT = 75,
    STMT_RECALL_RECORD = 76,
    STMT_REINDEX = 77,
    STMT_RENAME_TABLE = 78,
    STMT_REPLACE = 79,
    STMT_RETURN = 80,
    STMT_ROLLBACK = 81,
    STMT_RUN = 82,
    STMT_SCAN = 83,
    STMT_SCATTER_MEMVAR = 84,
    STMT_SCATTER_NAME = 85,
    STMT_SCATTER_TO = 86,
    STMT_SEEK = 87,
    STMT_SELECT = 88,
    STMT_SET = 89,
    STMT_SET_CENTURY_TO = 90,
    STMT_SET_DATASESSION_TO = 91,
    STMT_SET_DATE_TO = 92,
    STMT_SET_FDOW_TO = 93,
    STMT_SET_FILTER_TO = 94,
    STMT_SET_HOURS_TO = 95,
    STMT_SET_LIBRARY_TO = 96,
    STMT_SET_ORDER_TO = 97,
    STMT_SET_PATH_TO = 98,
    STMT_SET_POINT_TO = 99,
    STMT_SET_PROCEDURE_TO = 100,
    STMT_SET_SECONDS_TO = 101,
    STMT_SET_SEPARATOR_TO = 102,
    STMT_SET_SYSFORMATS_TO = 103,
    STMT_SET_TEXTMERGE_TO = 104,
    STMT_SKIP = 105,
    STMT_STORE = 106,
    STMT_SUSPEND = 107,
    STMT_TEXT = 108,
    STMT_TEXTMERGE = 109,
    STMT_THROW = 110,
    STMT_TRY = 111,
    STMT_UNLOCK = 112,
    STMT_USE = 113,
    STMT_WAIT = 114,
    STMT_WITH = 115,
    STMT_ZAP = 116,
    // A line between TEXT and ENDTEXT; no command of its own.
    STMT_TEXT_LINE = 117,
    // Native extensions: one library dropped, DECLAREd functions dropped.
    STMT_RELEASE_LIBRARY = 118,
    STMT_CLEAR_DLLS = 119,
    STMT_SET_KEY_TO = 120,
};

enum OperandKinds : int32_t {
    OPERAND_NAME = 2,
    OPERAND_CONST = 3,
    OPERAND_VARIABLE = 4,
    OPERAND_VARIABLE_INDEX = 5,
    OPERAND_PATH = 6,
    OPERAND_REFERENCE = 7,
    OPERAND_UNARY = 8,
    OPERAND_BINARY = 9,
    OPERAND_CALL = 10,
};

enum UnaryKinds : int32_t { UNARY_NOT = 0, UNARY_NEG = 1, UNARY_PLUS = 2 };

enum BinaryKinds : int32_t {
    BINARY_ADD = 0,
    BINARY_SUB = 1,
    BINARY_MUL = 2,
    BINARY_DIV = 3,
    BINARY_MOD = 4,
    BINARY_POW = 5,
    BINARY_EQ = 6,
    BINARY_LT = 7,
    BINARY_LTEQ = 8,
    BINARY_GT = 9,
    BINARY_GTEQ = 10,
    BINARY_LTGT = 11,
    BINARY_EQEQ = 12,
    BINARY_AND = 13,
    BINARY_OR = 14,
    BINARY_IN_STR = 15,
};

class Operand {
public:
    int32_t kind;
    document_location_st location{};
    bool parenthesized = false;  // written in parentheses: a value, never a reference

    explicit Operand(int32_t k) : kind(k) {}
    virtual ~Operand();
    Operand(const Operand&) = delete;
    Operand& operator=(const Operand&) = delete;
    // Only constants know their value without compiling.
    virtual void val(VmStack* stack, Variant* result) const;
};

typedef std::unique_ptr<Operand> operand_ptr;

// A list of operands; an omitted argument (`f(1,,2)`) holds the constant false.
class OperandList {
public:
    std::vector<operand_ptr> items;
    void add(Operand* operand) { items.emplace_back(operand); }
    size_t size() const noexcept { return items.size(); }
    Operand* at(size_t i) const noexcept { return items[i].get(); }
};

// A bare name taken as text: a file name, an alias, a tag.
class Operand_Name : public Operand {
public:
    String name;
    explicit Operand_Name(const String& n) : Operand(OPERAND_NAME), name(n) {}
};

class Const_Value : public Operand {
public:
    Variant value;
    Const_Value() : Operand(OPERAND_CONST) {}
    ~Const_Value() override;
    void val(VmStack* stack, Variant* result) const override;
};

class Const_String : public Const_Value {
public:
    explicit Const_String(const String& text) { value.set_string(text); }
};

class Operand_Variable : public Operand {
public:
    String name;
    bool memvar_only;  // written as M.name or M->name
    Operand_Variable(const String& n, bool memvar) : Operand(OPERAND_VARIABLE), name(n), memvar_only(memvar) {}
};

// `a[1, 2]`, and `a(1)` where it is an assignment target or a declaration.
class Operand_VariableIndex : public Operand {
public:
    std::unique_ptr<Operand_Variable> variable;
    std::unique_ptr<OperandList> subscripts;
    Operand_VariableIndex(Operand_Variable* v, OperandList* s)
        : Operand(OPERAND_VARIABLE_INDEX), variable(v), subscripts(s) {}
};

class Operand_Reference : public Operand {
public:
    operand_ptr inner;
    explicit Operand_Reference(Operand* o) : Operand(OPERAND_REFERENCE), inner(o) {}
};

class Operand_Unary : public Operand {
public:
    int32_t op;
    operand_ptr inner;
    Operand_Unary(int32_t o, Operand* i) : Operand(OPERAND_UNARY), op(o), inner(i) {}
};

class BinaryOperator : public Operand {
public:
    int32_t op;
    operand_ptr left, right;
    BinaryOperator(int32_t o, Operand* l, Operand* r) : Operand(OPERAND_BINARY), op(o), left(l), right(r) {}
};

class Operand_Call : public Operand {
public:
    String name;
    std::unique_ptr<OperandList> arguments;
    Operand_Call(const String& n, OperandList* a)
        : Operand(OPERAND_CALL), name(n), arguments(a ? a : new OperandList) {}
};

// Root kinds: 0 name, 1 name with index, 2 function, 4 WITH.
// Further kinds: 0 name, 1 name with index, 2 function, 3 index.
enum PathItemKinds : int32_t {
    PATH_ITEM_NAME = 0,
    PATH_ITEM_NAME_INDEX = 1,
    PATH_ITEM_FUNCTION = 2,
    PATH_ITEM_INDEX = 3,
    PATH_ITEM_WITH = 4,
};

class PathItem {
public:
    int32_t kind;
    document_location_st location{};
    explicit PathItem(int32_t k) : kind(k) {}
    virtual ~PathItem();
    PathItem(const PathItem&) = delete;
    PathItem& operator=(const PathItem&) = delete;
};

class NamePathItem : public PathItem {
public:
    String name;
    explicit NamePathItem(const String& n) : PathItem(PATH_ITEM_NAME), name(n) {}
};

class NameIndexPathItem : public PathItem {
public:
    String name;
    std::unique_ptr<OperandList> subscripts;
    NameIndexPathItem(const String& n, OperandList* s) : PathItem(PATH_ITEM_NAME_INDEX), name(n), subscripts(s) {}
};

class FunctionPathItem : public PathItem {
public:
    String name;
    std::unique_ptr<OperandList> arguments;
    FunctionPathItem(const String& n, OperandList* a)
        : PathItem(PATH_ITEM_FUNCTION), name(n), arguments(a ? a : new OperandList) {}
};

class IndexPathItem : public PathItem {
public:
    std::unique_ptr<OperandList> subscripts;
    explicit IndexPathItem(OperandList* s) : PathItem(PATH_ITEM_INDEX), subscripts(s) {}
};

// The root of `.member` inside WITH ... ENDWITH.
class WithPathItem : public PathItem {
public:
    WithPathItem() : PathItem(PATH_ITEM_WITH) {}
};

class Path : public Operand {
public:
    std::unique_ptr<PathItem> root;
    std::vector<std::unique_ptr<PathItem>> items;
    bool memvar_root = false;  // M.root.member
    Path() : Operand(OPERAND_PATH) {}
    void add(PathItem* item) { items.emplace_back(item); }
};

// A piece of a macro line: 'S' literal text, 'V' a variable whose value is text.
struct MacroItem {
    char kind;
    String text;
    document_location_st location;
};

class Option {
public:
    const char* key;                  // upper case, as the command's option spec names it
    operand_ptr value;                // none for a flag
    std::unique_ptr<OperandList> list;  // for options that take a list
    document_location_st location{};
    Option(const char* k, Operand* v) : key(k), value(v) {}
    Option(const char* k, OperandList* l) : key(k), list(l) {}
};

// Options in the order given; a key may appear once.
class option_ptr_list {
public:
    typedef void (*duplicate_callback)(const Option* duplicate, void* context);
    std::vector<std::unique_ptr<Option>> items;

    // Takes the option; a repeated key goes to the callback and is dropped.
    void push(Option* option, duplicate_callback callback, void* context);
    const Option* find(const char* key) const noexcept;
    bool has(const char* key) const noexcept { return find(key) != nullptr; }
    size_t size() const noexcept { return items.size(); }
};

class Statement {
public:
    StatementTypes type;
    document_location_st location{};
    explicit Statement(StatementTypes t) : type(t) {}
    virtual ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
};

class BasicCommand : public Statement {
public:
    option_ptr_list options;
    std::vector<MacroItem> macro;  // SCAN whose clauses come from a macro
    explicit BasicCommand(StatementTypes t = STMT_INVALID) : Statement(t) {}
};

// `x = y`, and with no target `= y` or a line that is a call or path alone.
class Stmt_Assign : public Statement {
public:
    operand_ptr target, value;
    Stmt_Assign(Operand* t, Operand* v) : Statement(STMT_ASSIGN), target(t), value(v) {}
};

// `?` (with line feed first) and `??`.
class Stmt_Echo : public Statement {
public:
    bool linefeed;
    std::unique_ptr<OperandList> values;
    Stmt_Echo(bool lf, OperandList* v) : Statement(STMT_ECHO), linefeed(lf), values(v ? v : new OperandList) {}
};

// IF, CASE, DO WHILE, WITH, and the conditional part of others. A macro
// condition leaves `condition` empty and fills `macro`.
class Stmt_Condition : public Statement {
public:
    operand_ptr condition;
    std::vector<MacroItem> macro;
    Stmt_Condition(StatementTypes t, Operand* c) : Statement(t), condition(c) {}
};

// Text after `\`, `\\`, NOTE, a text line, CD and the like.
class Stmt_Text : public Statement {
public:
    String text;
    bool no_linefeed = false;  // the `\\` form
    document_position_st text_start{};  // where `text` begins in the source
    Stmt_Text(StatementTypes t, const String& s) : Statement(t), text(s) {}
    Stmt_Text(StatementTypes t, const String& s, const document_position_st& start)
        : Statement(t), text(s), text_start(start) {}
};

class Stmt_For : public Statement {
public:
    std::unique_ptr<Operand_Variable> variable;
    operand_ptr from, to, step;  // step holds integer 1 when not given
    Stmt_For() : Statement(STMT_FOR) {}
};

// `AS type [OF class]` of a parameter, variable or function.
struct type_clause_st {
    String type_name;
    String of_class;
};

// One name of LOCAL, PUBLIC, PRIVATE, PARAMETERS, DIMENSION and the like.
struct declared_variable_st {
    operand_ptr target;                     // Operand_Variable, or a Path for DIMENSION a.b[2]
    std::unique_ptr<OperandList> bounds;    // none without bounds
    type_clause_st type;
};

class Stmt_Declaration : public Statement {
public:
    std::vector<declared_variable_st> variables;
    explicit Stmt_Declaration(StatementTypes t) : Statement(t) {}
};

// PRIVATE ALL [LIKE p | EXCEPT p], patterns as written.
class Stmt_PrivatePattern : public Statement {
public:
    String like, except;
    Stmt_PrivatePattern(const String& l, const String& e) : Statement(STMT_PRIVATE_PATTERN), like(l), except(e) {}
};

enum FunctionVisibility : int32_t { VISIBILITY_PUBLIC = 0, VISIBILITY_PROTECTED = 1, VISIBILITY_HIDDEN = 2 };

class Stmt_Function : public Statement {
public:
    String name;
    bool procedure = false;
    int32_t visibility = VISIBILITY_PUBLIC;
    std::unique_ptr<Stmt_Declaration> parameters;  // none without a parenthesised list
    type_clause_st result_type;
    Stmt_Function() : Statement(STMT_FUNCTION) {}
};

class Stmt_Return : public Statement {
public:
    operand_ptr value;  // constant true for a bare RETURN; Operand_Reference for RETURN @x
    explicit Stmt_Return(Operand* v) : Statement(STMT_RETURN), value(v) {}
};

class Stmt_Store : public Statement {
public:
    operand_ptr value;
    std::unique_ptr<OperandList> targets;
    Stmt_Store(Operand* v, OperandList* t) : Statement(STMT_STORE), value(v), targets(t) {}
};

class Stmt_DefineClass : public Statement {
public:
    String name;
    type_clause_st parent;
    bool olepublic = false;
    Stmt_DefineClass() : Statement(STMT_DEFINE_CLASS) {}
};

class Stmt_Catch : public Statement {
public:
    std::unique_ptr<Operand_Variable> variable;  // none without TO
    operand_ptr when;                            // constant true without WHEN
    Stmt_Catch() : Statement(STMT_CATCH) {}
};

// IMPORTS file; the file name is an expression evaluated at build time.
class Stmt_Import : public Statement {
public:
    operand_ptr file;
    explicit Stmt_Import(Operand* f) : Statement(STMT_IMPORT), file(f) {}
};

class Stmt_Pragma : public Statement {
public:
    String name;
    std::unique_ptr<OperandList> arguments;
    Stmt_Pragma(const String& n, OperandList* a) : Statement(STMT_PRAGMA), name(n), arguments(a) {}
};

// A line whose text is only known at run time.
class Stmt_Macro : public Statement {
public:
    std::vector<MacroItem> items;
    Stmt_Macro() : Statement(STMT_INCOMPLETE) {}
};

enum ColumnFlags : uint32_t {
    COLUMN_NULL = 1,
    COLUMN_NOT_NULL = 2,
    COLUMN_NOCPTRANS = 4,
    COLUMN_AUTOINC = 8,
};

struct column_st {
    operand_ptr name;
    char type_letter;  // the field type letter: C, N, I, ...
    operand_ptr width, decimals;
    operand_ptr nextvalue, step;
    uint32_t flags = 0;
    document_location_st location{};
};

// CREATE TABLE / CREATE CURSOR, ALTER TABLE ADD COLUMN / DROP COLUMN.
class Stmt_Table : public Statement {
public:
    operand_ptr table;
    bool cursor = false;
    operand_ptr codepage, engine;
    std::vector<std::unique_ptr<column_st>> columns;
    operand_ptr drop_column;
    explicit Stmt_Table(StatementTypes t) : Statement(t) {}
};

struct declare_param_st {
    String type_name;  // empty for none
    bool by_reference = false;
    String name;
};

class Stmt_Declare : public Statement {
public:
    String result_type;
    String name;
    operand_ptr library;
    String alias;  // what calls name it by; empty: its own name
    std::vector<declare_param_st> parameters;
    Stmt_Declare() : Statement(STMT_DECLARE) {}
};

}  // namespace zobase
