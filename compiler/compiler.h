#pragma once
// The compiler's containers: the list that instructions and labels are
// appended to, the per-function state, the per-block state, and the step that
// flattens a finished list into a Program with every jump resolved.
//
// Statements are compiled through a table keyed by StatementTypes. Families of
// statements fill the table from their own files: each offers a
// `register_*_statements(StatementTable&)` and lists it once in
// register_statement_families (compiler/statement_table.cpp).
#include <cstdint>
#include <list>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "compiler/library.h"
#include "frontend/syntax_tree.h"
#include "frontend/token.h"
#include "values/string.h"
#include "vm/program.h"
#include "vm/table_context.h"
#include "vm/vm_op.h"

namespace zobase {

class Compiler;
class Symtable;
class VmStack;
class Module;

// A jump target under construction; `position` is set once placed.
struct AddressLabelRecord {
    String name;
    int64_t position = -1;
};

// A jump whose target holds its label until create_program resolves it.
template <class Jump>
Jump* jump_to(AddressLabelRecord* label) {
    auto* jump = new Jump();
    jump->target = reinterpret_cast<VmOp**>(label);
    return jump;
}

// A position field of VmOpTryEnter holds its label until create_program
// resolves it, as a jump's target does.
inline uint64_t label_placeholder(AddressLabelRecord* label) { return reinterpret_cast<uint64_t>(label); }

enum CodeItemKind : uint8_t { CODE_ITEM_INSTRUCTION = 0, CODE_ITEM_LABEL = 1 };

struct code_item_st {
    uint8_t kind;
    VmOp* op;                    // kind 0
    AddressLabelRecord* label;   // kind 1
    document_location_st location;
    bool has_location;
};

// Instructions and labels in emit order. Owns the instructions until
// create_program (or a splice) takes them.
class CompiledCodeCollection {
public:
    explicit CompiledCodeCollection(Compiler* owner) : compiler(owner) {}
    ~CompiledCodeCollection();
    CompiledCodeCollection(const CompiledCodeCollection&) = delete;
    CompiledCodeCollection& operator=(const CompiledCodeCollection&) = delete;

    Compiler* compiler;
    std::list<code_item_st> items;

    void push_back(const document_location_st& location, VmOp* op);
    void push_back(VmOp* op);  // no location
    void push_back(AddressLabelRecord* label);
    // An instruction ahead of everything emitted so far.
    void push_front(VmOp* op);
    // Deletes what was appended after the first `count` items.
    void truncate(size_t count);
    // Moves every item of `other` to the end of this list.
    void splice_back(CompiledCodeCollection& other);
    void clear();

    size_t size() const noexcept { return items.size(); }
    bool empty() const noexcept { return items.empty(); }
    // The last item's instruction, or null when the list is empty or ends in a label.
    VmOp* last_instruction() const noexcept;
};

// A source error kept for the build's report.
struct compile_error_st {
    int32_t number;
    document_location_st location;
    String detail{};  // what the message's format takes, or empty
};

enum CompilerFlags : int {
    COMPILER_LOCAL_SLOTS = 1,
    COMPILER_ALWAYS_WITH_SLOTS = 2,
    COMPILER_METHOD = 4,
    COMPILER_MUST_RETURN = 8,
};
constexpr int COMPILER_FLAGS_FUNCTION = 11;
constexpr int COMPILER_FLAGS_METHOD = 15;
// A command line runs in the caller's frame: no slots, every name by name.
constexpr int COMPILER_FLAGS_COMMAND = COMPILER_MUST_RETURN;

enum ParameterModes : int { PARAMETERS_LOCAL = 0, PARAMETERS_PRIVATE = 1, PARAMETERS_NONE = 2 };

typedef std::unordered_map<unsigned, unsigned long long> compiler_locals_map;

class Compiler {
public:
    explicit Compiler(VmStack* stack);
    Compiler(const Compiler&) = delete;
    Compiler& operator=(const Compiler&) = delete;

    int flags = 0;
    compiler_locals_map locals;
    uint64_t parameter_count = 0;
    int parameter_mode = PARAMETERS_NONE;
    std::vector<size_t> unresolved;
    std::list<std::unique_ptr<AddressLabelRecord>> labels;
    uint64_t statement_number = 0;
    uint64_t instruction_count = 0;
    CompiledCodeCollection code;
    bool has_forced_location = false;
    document_location_st forced_location{};
    VmStack* stack;
    const compiler_table_context_st* table = nullptr;
    // What calls may reach, searched in order.
    std::vector<const Library*> libraries;
    const Module* module = nullptr;
    std::vector<compile_error_st> errors;
    // Blocks open around the statement being compiled; see MAX_BLOCK_DEPTH.
    uint32_t block_depth = 0;
    // Operands open around the one being compiled; see MAX_EXPRESSION_DEPTH.
    uint32_t expression_depth = 0;
    // Set once blocks nested too deep: the rest of the body was passed over,
    // and what its closers would report is no news.
    bool blocks_exhausted = false;

    Symtable& symbols() const;

    void reset(int new_flags, bool full);
    AddressLabelRecord* create_addresslabel(const String& name);
    bool compile_time_define_memvar(const unsigned& symbol, unsigned long long* offset);
    void record_error(int32_t number, const document_location_st& location, const String& detail = String());

    // Flattens `list` into a Program; the program owns the instructions.
    Program* create_program(const String& name, CompiledCodeCollection* list, const compiler_locals_map& frame_locals,
                            uint64_t parameters, const document_location_st& start,
                            std::vector<size_t>* unresolved_calls);

    // The library function of any accepted spelling, searched in order.
    const library_func_def_st* find_function(const String& spelling, const Library** owner = nullptr) const;
    const library_command_def_st* find_command(const String& name) const;
    const library_func_def_st* find_variable_reader(const String& name) const;
    const library_command_def_st* find_variable_writer(const String& name) const;
};

// Blocks (IF, DO WHILE, TRY...) nest by recursion in the compiler. Deeper
// nesting is error 9013 and ends the body's compilation.
constexpr uint32_t MAX_BLOCK_DEPTH = 1000;
// Operands nest by recursion too, some kilobytes of machine stack a level in
// an instrumented build. A deeper expression is error 9013 for its statement.
constexpr uint32_t MAX_EXPRESSION_DEPTH = 3000;

// One level of a compiler depth counter for as long as it lives.
class CompileDepth {
public:
    explicit CompileDepth(uint32_t* counter) : counter_(counter) { ++*counter; }
    ~CompileDepth() { --*counter_; }
    CompileDepth(const CompileDepth&) = delete;
    CompileDepth& operator=(const CompileDepth&) = delete;

private:
    uint32_t* counter_;
};

enum LoopKinds : int { LOOP_NONE = 0, LOOP_DO_WHILE = 1, LOOP_FOR = 2, LOOP_FOR_EACH = 3, LOOP_SCAN = 4 };

// The state of one nested block. A copy inherits what its parent knows and
// the labels of the loop around it, but is no loop itself and no IF branch
// until its opener says so: so a closing statement finds the block that
// opened it, never a copy made inside it.
class CodePath {
public:
    explicit CodePath(Compiler* owner) : compiler(owner) {}
    explicit CodePath(CodePath& parent_path);
    CodePath& operator=(const CodePath&) = delete;

    Compiler* compiler;
    CodePath* parent = nullptr;
    std::unordered_set<unsigned> known_locals;
    bool in_if = false;
    int loop_kind = LOOP_NONE;
    struct {
        AddressLabelRecord* condition = nullptr;
        AddressLabelRecord* body = nullptr;
        AddressLabelRecord* end = nullptr;
    } dowhile;
    struct {
        AddressLabelRecord* condition = nullptr;
        AddressLabelRecord* body = nullptr;
        AddressLabelRecord* end = nullptr;
        const Statement* statement = nullptr;
        unsigned to_symbol = 0;
        unsigned step_symbol = 0;
    } for_loop;
    struct {
        AddressLabelRecord* next = nullptr;
        AddressLabelRecord* body = nullptr;
        AddressLabelRecord* end = nullptr;
    } for_each;
    struct {
        AddressLabelRecord* condition = nullptr;
        AddressLabelRecord* end_of_body = nullptr;
        AddressLabelRecord* end = nullptr;
        unsigned work_area_symbol = 0;
    } scan;
    std::vector<unsigned> with_stack;

    bool variable_get(const unsigned& symbol, unsigned long long* offset, bool* certain) const;
    unsigned symbolize(const String& name) const;
    unsigned symbolize(const char* name) const;
    // A compiler-made variable ".local~<prefix>~<n>"; the caller deletes the operand.
    Operand_Variable* compile_create_temp_memvar(const document_location_st& location, const char* prefix,
                                                 CompiledCodeCollection* code);
};

// ---- statements ----

typedef std::vector<std::unique_ptr<Statement>> statement_list;
typedef statement_list::const_iterator statement_iterator;

// Returns 0 to go on, -1 to end the enclosing statement list; advances `it`
// past its own statement first.
typedef int (*compile_statement_fn)(const statement_iterator& end, statement_iterator& it,
                                    CompiledCodeCollection* code, CodePath& path);

class StatementTable {
public:
    void add(StatementTypes type, compile_statement_fn routine) { routines_[type] = routine; }
    compile_statement_fn find(int32_t type) const noexcept;

private:
    std::unordered_map<int32_t, compile_statement_fn> routines_;
};

// The table, filled once by register_statement_families.
const StatementTable& statement_table();
void register_statement_families(StatementTable& table);
// The family built here: `?`, `??`, assignment and expression statements.
void register_expression_statements(StatementTable& table);

// Compiles statements until one that ends the list (see ends_statement_list)
// or the end. A statement the compiler can't handle, or whose routine
// raises, becomes a diagnostic at its location and leaves no code.
int compile_statement_list(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                           CodePath& path);
// Closers and branches, which hand the list back to the statement that
// opened it, and the statements of a module's outline (FUNCTION, ENDFUNC,
// DEFINE CLASS, IMPORT), which end a function's body.
bool ends_statement_list(int32_t type) noexcept;
// Parameter code, the body, and the closing return the flags ask for.
void compile_program(const statement_iterator& end, statement_iterator& it, const Stmt_Declaration* parameters,
                     CodePath& path);
void create_parameters_initalization_code(const Stmt_Declaration* parameters, int mode,
                                          CompiledCodeCollection* code, CodePath& path);

int compile_stmt_echo(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                      CodePath& path);
int compile_stmt_assign(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                        CodePath& path);

// An instruction that reads one bare name: its symbol and frame slot (0: by name).
bool bare_read_of(const VmOp* op, uint32_t* symbol, uint64_t* offset);
// The frame slot an assignment to the name writes; 0: it goes by name.
uint64_t assignment_slot(const unsigned& symbol, CodePath& path);
// Stores the top of the stack into a variable.
void compile_assign_to_variable(const unsigned& symbol, const document_location_st& location,
                                CompiledCodeCollection* code, CodePath& path);

}  // namespace zobase
