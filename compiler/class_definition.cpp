// DEFINE CLASS name AS parent [OF file] ... ENDDEFINE: the class body's
// statements, each through the class body table, and the link step that
// makes the class ready for instances.
#include <cstring>
#include <memory>
#include <unordered_map>

#include "base/call_trace.h"
#include "compiler/build_input.h"
#include "compiler/expression.h"
#include "compiler/module.h"
#include "objects/user_class.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

struct class_build_st {
    BuildInput* input;
    UserClass* user_class;
    statement_iterator end;
};

typedef void (*class_item_fn)(class_build_st& build, statement_iterator& it);

uint32_t visibility_mask(int32_t declared) {
    switch (declared) {
    case VISIBILITY_PROTECTED: return MEMBER_PROTECTED;
    case VISIBILITY_HIDDEN: return MEMBER_HIDDEN;
    default: return MEMBER_PUBLIC;
    }
}

void record(class_build_st& build, int32_t number, const Statement* statement) {
    build.input->add_diagnostic(DIAGNOSTIC_CATEGORY_COMPILER, number, statement->location);
}

const Operand_Variable* plain_name(const Operand* target) {
    return target && target->kind == OPERAND_VARIABLE ? static_cast<const Operand_Variable*>(target) : nullptr;
}

// A default is computed here, once: every instance starts with a copy of it.
// Objects, arrays and references can't be defaults: they would be shared.
bool compute_default(class_build_st& build, const Operand* value, Variant* out) {
    Compiler compiler(build.input->stack);
    build.input->init_compiler(compiler);
    compiler.reset(COMPILER_FLAGS_FUNCTION, false);
    CodePath path(&compiler);
    bool computed = evaluate_at_compile_time(value, path, out);
    build.input->log_compiler_errors(compiler);
    if (computed && (out->tag == TAG_OBJECT || out->tag == TAG_ARRAY || out->tag == TAG_POINTER)) {
        build.input->add_diagnostic(DIAGNOSTIC_CATEGORY_COMPILER, ERR_STATEMENT_INVALID_IN_CLASS, value->location);
        return false;
    }
    return computed;
}

void set_default(ClassMember* member, Variant* value) {
    member->type = MEMBER_PROPERTY;
    member->default_value.release(nullptr);
    std::memcpy(static_cast<void*>(&member->default_value), value, sizeof(Variant));
    value->tag = TAG_FALSE;
}

// name = expression
void compile_class_item_assign(class_build_st& build, statement_iterator& it) {
    const auto* statement = static_cast<const Stmt_Assign*>((it++)->get());
    const Operand_Variable* target = plain_name(statement->target.get());
    if (!target) return record(build, ERR_STATEMENT_INVALID_IN_CLASS, statement);
    Variant value;
    if (compute_default(build, statement->value.get(), &value))
        set_default(build.user_class->define(target->name), &value);
    value.release(build.input->stack);
}

// DIMENSION name[rows [, columns]]: the default is an array of .F.
void compile_class_item_dimension(class_build_st& build, statement_iterator& it) {
    const auto* statement = static_cast<const Stmt_Declaration*>((it++)->get());
    for (const declared_variable_st& declared : statement->variables) {
        const Operand_Variable* target = plain_name(declared.target.get());
        size_t count = declared.bounds ? declared.bounds->size() : 0;
        if (!target || count < 1 || count > 2) {
            record(build, ERR_STATEMENT_INVALID_IN_CLASS, statement);
            continue;
        }
        uint64_t bounds[2] = {0, 0};
        bool valid = true;
        for (size_t i = 0; i < count && valid; ++i) {
            Variant bound;
            valid = compute_default(build, declared.bounds->at(i), &bound) && bound.is_number();
            if (valid) {
                long long value = static_cast<integer_type_st>(bound);
                valid = value >= 1;
                bounds[i] = static_cast<uint64_t>(value);
            }
            bound.release(build.input->stack);
        }
        if (!valid) {
            record(build, ERR_ARRAY_DIMENSIONS_INVALID, statement);
            continue;
        }
        Variant array;
        array.dimension(build.input->stack, bounds[0], bounds[1]);
        ClassMember* member = build.user_class->define(target->name);
        member->type = MEMBER_PROPERTY;
        member->default_value.release(nullptr);
        std::memcpy(static_cast<void*>(&member->default_value), &array, sizeof(Variant));
    }
}

// FUNCTION or PROCEDURE: a method; its ENDFUNC or ENDPROC, if any, closes it.
void compile_class_item_function(class_build_st& build, statement_iterator& it) {
    const auto* head = static_cast<const Stmt_Function*>((it++)->get());
    std::unique_ptr<UserFunction> method(compile_function(*build.input, COMPILER_FLAGS_METHOD, head->name, build.end, it,
                                                          head->parameters.get(), head->location));
    if (it != build.end && (*it)->type == STMT_ENDFUNC) ++it;
    if (method) build.user_class->add_method(head->name, visibility_mask(head->visibility), std::move(method));
}

void set_visibility(class_build_st& build, statement_iterator& it, uint32_t visibility) {
    const auto* statement = static_cast<const Stmt_Declaration*>((it++)->get());
    for (const declared_variable_st& declared : statement->variables) {
        const Operand_Variable* target = plain_name(declared.target.get());
        if (!target) {
            record(build, ERR_STATEMENT_INVALID_IN_CLASS, statement);
            continue;
        }
        build.user_class->define(target->name)->visibility = visibility;
    }
}

void compile_class_item_hidden(class_build_st& build, statement_iterator& it) {
    set_visibility(build, it, MEMBER_HIDDEN);
}

void compile_class_item_protected(class_build_st& build, statement_iterator& it) {
    set_visibility(build, it, MEMBER_PROTECTED);
}

const std::unordered_map<int32_t, class_item_fn>& class_body_table() {
    static const std::unordered_map<int32_t, class_item_fn> table = {
        {STMT_ASSIGN, compile_class_item_assign},     {STMT_DIMENSION, compile_class_item_dimension},
        {STMT_FUNCTION, compile_class_item_function}, {STMT_HIDDEN, compile_class_item_hidden},
        {STMT_PROTECTED, compile_class_item_protected},
    };
    return table;
}

// The parent clause as written: AS name [OF file].
parent_clause_st parent_of(const Stmt_DefineClass* head, Symtable& symbols) {
    parent_clause_st parent;
    parent.name = head->parent.type_name;
    parent.name.alltrim();
    parent.symbol = symbols.symbolize(parent.name);
    parent.file = head->parent.of_class;
    return parent;
}

}  // namespace

// A statement with no row is 1927 and is passed over; the body goes on to
// its ENDDEFINE, whose absence at the end of the file is a syntax error.
void compile_class_definition(BuildInput& input, Module* module, const statement_iterator& end,
                              statement_iterator& it) {
    ZO_TRACE();
    const auto* head = static_cast<const Stmt_DefineClass*>((it++)->get());
    Symtable& symbols = input.stack->services->symbols();
    uint32_t symbol = symbols.symbolize(head->name);
    auto user_class = std::make_unique<UserClass>(head->name, symbol, parent_of(head, symbols));
    class_build_st build{&input, user_class.get(), end};
    const auto& table = class_body_table();
    for (;;) {
        if (it == end) {
            input.add_diagnostic(DIAGNOSTIC_CATEGORY_COMPILER, ERR_SYNTAX, head->location);
            break;
        }
        if ((*it)->type == STMT_ENDDEFINE) {
            ++it;
            break;
        }
        auto row = table.find((*it)->type);
        if (row == table.end()) {
            record(build, ERR_STATEMENT_INVALID_IN_CLASS, (it++)->get());
            continue;
        }
        row->second(build, it);
    }
    if (module->classes.try_emplace(symbol, user_class.get()).second) user_class.release();
}

void link_userclass(LinkerInfo& info, UserClass* user_class, const Module* module) {
    for (const user_method_st& method : user_class->methods())
        link_program(info, const_cast<Program*>(method.function->program()), module);
    const parent_clause_st& parent = user_class->parent_clause();
    if (parent.file.size() == 0) {
        Class* found = module->find_class(parent.symbol);
        for (size_t i = 0; !found && i < module->libraries.size(); ++i)
            found = module->libraries[i]->find_class(parent.symbol);
        if (found) user_class->set_parent(found);
    }
    user_class->compile(*info.symbols);
}

}  // namespace zobase
