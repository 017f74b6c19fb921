#pragma once
// Hand-built programs for the VM tests: a resolver with a few names, and
// helpers that keep the instruction lists short.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "objects/class.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/call_resolver.h"
#include "vm/user_function.h"
#include "vm/vm_run.h"

namespace zobase::testing {

class TestResolver : public CallResolver {
public:
    std::map<uint32_t, std::string> names;
    std::map<std::string, library_function_st> libraries;
    std::map<uint32_t, const UserFunction*> procedures;
    std::map<uint32_t, const UserFunction*> loaded;
    std::map<uint32_t, Class*> classes;  // not owned

    String symbol_text(uint32_t symbol) const override {
        auto found = names.find(symbol);
        return String(found == names.end() ? "?" : found->second.c_str());
    }
    const library_function_st* find_library_function(const String& name) const override {
        auto found = libraries.find(name.u8str());
        return found == libraries.end() ? nullptr : &found->second;
    }
    const UserFunction* find_procedure(uint32_t symbol) const override {
        return lookup(procedures, symbol);
    }
    const UserFunction* find_loaded_program(uint32_t symbol) const override {
        return lookup(loaded, symbol);
    }
    uint32_t symbolize(const String& name) const override {
        for (const auto& [symbol, text] : names)
            if (text == name.u8str()) return symbol;
        return 0;
    }
    const UserFunction* find_in_module_of(const Program*, uint32_t symbol) const override {
        return lookup(procedures, symbol);
    }
    bool has_program_file(const String&) const override { return false; }
    const UserFunction* load_from_file(VmStack*, const String& file, uint32_t) const override {
        throw RuntimeError(1, file);
    }
    // VM tests build their programs by hand; macro text needs the compiler.
    std::unique_ptr<Program> compile_macro(VmStack*, const String&,
                                           const document_location_st*) const override {
        raise_not_available("compile_macro");
    }
    std::unique_ptr<Program> compile_expression(VmStack*, const String&,
                                                const compiler_table_context_st*) const override {
        raise_not_available("compile_expression");
    }
    std::unique_ptr<UserFunction> compile_script(VmStack*, const String&) const override {
        raise_not_available("compile_script");
    }
    Class* find_class(VmStack*, uint32_t symbol, const String*) const override { return find_builtin_class(symbol); }
    Class* find_builtin_class(uint32_t symbol) const override {
        auto found = classes.find(symbol);
        return found == classes.end() ? nullptr : found->second;
    }

private:
    static const UserFunction* lookup(const std::map<uint32_t, const UserFunction*>& map,
                                      uint32_t symbol) {
        auto found = map.find(symbol);
        return found == map.end() ? nullptr : found->second;
    }
};

// Built-in classes for a stack without a runtime: made with a symbol table
// of their own, whose ids the resolver learns (they stay below the tests' own).
struct TestClasses {
    Symtable symbols;
    std::vector<std::unique_ptr<Class>> made;

    Class* add(TestResolver& resolver, const char* name, const builtin_class_data_st* data,
               const library_class_member_row_st* members) {
        made.emplace_back(create_builtin_class(symbols, name, data, members));
        Class* added = made.back().get();
        resolver.classes[added->symbol] = added;
        resolver.names[added->symbol] = name;
        for (const ClassMember* member : added->member_tables()->members)
            resolver.names[member->symbol] = member->name.u8str();
        return added;
    }
};

// Symbols of the tests, above the fixed ids.
enum : uint32_t { SYM_X = 200, SYM_Y, SYM_Z, SYM_F, SYM_G, SYM_A };

class VmFixture : public ::testing::Test {
protected:
    VmStack stack{nullptr, 1024, 64};
    TestResolver resolver;
    Variant result;

    VmFixture() {
        resolver.names = {{SYM_X, "X"}, {SYM_Y, "Y"}, {SYM_Z, "Z"},
                          {SYM_F, "F"}, {SYM_G, "G"}, {SYM_A, "A"}};
        stack.resolver = &resolver;
    }
    ~VmFixture() override { result.release(&stack); }

    void run(const Program& program) { execute_program(&stack, 0, false, &program, &result); }

    // The error number of a run, 0 when it succeeds; the detail goes to *detail.
    int error_of(const Program& program, std::string* detail = nullptr) {
        try {
            run(program);
        } catch (const RuntimeError& e) {
            if (detail) *detail = e.parameter.u8str();
            return e.number;
        }
        return 0;
    }

    bool stack_at_rest() const {
        return stack.esp == stack.end() && stack.frame == nullptr &&
               stack.undo_top == stack.undo_end() && stack.dynamic_locals == nullptr;
    }
};

inline void emit_integer(Program& p, long long value) { p.emit(new VmOpReadConstInteger(value)); }

// name = value, for a name not declared in the frame.
inline void emit_assign(Program& p, uint32_t symbol, long long value) {
    emit_integer(p, value);
    p.emit(new VmOpWriteMemarByName(symbol));
}

// Pushes the result slot and the arguments, then calls.
inline void emit_call(Program& p, const UserFunction* function, uint64_t argc = 0) {
    p.emit(new VmOpCallUserFunction(function, argc));
}

}  // namespace zobase::testing
