// The road of a file: entries, the host's arguments, how a run ends.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "compiler/module.h"
#include "runtime/debug_hook.h"
#include "runtime/module_cache.h"
#include "runtime_test_support.h"
#include "values/array.h"
#include "values/symtable.h"
#include "vm/call_resolver.h"
#include "vm/interrupt.h"
#include "vm/vm_stack.h"

namespace zobase::testing {
namespace {

// Records what a call finds on the stack instead of running code.
class ProbeFunction : public UserFunction {
public:
    std::function<void(VmStack*, unsigned long long)> probe;
    explicit ProbeFunction(Program* program) : UserFunction(program) {}
    void exec(VmStack* stack, unsigned long long argc, bool, Variant*) const override {
        ++calls;
        if (probe) probe(stack, argc);
    }
    mutable int calls = 0;
};

using fs_path = std::filesystem::path;

Module* next_module = nullptr;
Module* hand_over(VmStack*, const String&, module_map*) {
    Module* module = next_module;
    next_module = nullptr;
    return module;
}

class RunProgramTest : public ::testing::Test {
protected:
    CaptureScreen screen;
    Runtime* runtime = Runtime::create_instance(&screen);
    ScratchFolder folder;
    fs_path file = folder.write("prog.prg", "");

    RunProgramTest() { runtime->module_cache().compile = hand_over; }
    ~RunProgramTest() override { ReleaseRuntime(runtime); }

    unsigned symbol(const char* name) { return runtime->symbols().symbolize(name); }

    // An entry declaring the given parameters, in order, and `locals` more names.
    ProbeFunction* install_entry(std::vector<const char*> parameters, std::vector<const char*> locals = {}) {
        auto* program = new Program;
        uint64_t offset = 0;
        for (const char* name : parameters) program->local_names.push_back({symbol(name), ++offset});
        program->parameter_count = offset;
        for (const char* name : locals) program->local_names.push_back({symbol(name), ++offset});
        auto* entry = new ProbeFunction(program);
        next_module = new Module(String(file));
        next_module->main = entry;
        next_module->entry = entry;
        return entry;
    }

    int run(std::vector<const char*> args) {
        return runtime->run_program(String(file), static_cast<int>(args.size()), args.data());
    }
};
TEST_F(RunProgramTest, ArgcAndArgvReachTheirParameters) {
    ProbeFunction* entry = install_entry({"first", "argc", "argv"});
    entry->probe = [](VmStack* stack, unsigned long long argc) {
        ASSERT_EQ(argc, 3u);
        Memvar* top = stack->esp + argc;
        EXPECT_EQ((top - 1)->tag, TAG_FALSE) << "an unnamed parameter stays clean";
        ASSERT_EQ((top - 2)->tag, TAG_INTEGER);
        EXPECT_EQ((top - 2)->integer, 2);
        ASSERT_EQ((top - 3)->tag, TAG_ARRAY);
        EXPECT_EQ(ArrayNumElements(top - 3), 2u);
        EXPECT_EQ(ReadArrayItem(top - 3, 1)->str().u8str(), "prog.prg");
        EXPECT_EQ(ReadArrayItem(top - 3, 2)->str().u8str(), "two words");
    };
    VmStack* stack = runtime->get_main_stack();
    Memvar* top = stack->esp;
    EXPECT_EQ(run({"prog.prg", "two words"}), 0);
    EXPECT_EQ(entry->calls, 1);
    EXPECT_EQ(stack->esp, top) << "the arguments are popped";
}

TEST_F(RunProgramTest, ArgvAloneStillGetsEveryRow) {
    ProbeFunction* entry = install_entry({"argv"});
    entry->probe = [](VmStack* stack, unsigned long long argc) {
        ASSERT_EQ(argc, 1u);
        EXPECT_EQ(ArrayNumElements(stack->esp), 3u);
    };
    EXPECT_EQ(run({"a", "b", "c"}), 0);
    EXPECT_EQ(entry->calls, 1);
}

TEST_F(RunProgramTest, NamesThatAreLocalsNotParametersReceiveNothing) {
    ProbeFunction* entry = install_entry({}, {"argc", "argv"});
    entry->probe = [](VmStack*, unsigned long long argc) { EXPECT_EQ(argc, 0u); };
    EXPECT_EQ(run({"a", "b"}), 0);
    EXPECT_EQ(entry->calls, 1);
}

TEST_F(RunProgramTest, ModuleWithoutEntryIsASuccessfulRunThatDoesNothing) {
    next_module = new Module(String(file));
    EXPECT_EQ(run({}), 0);
    EXPECT_EQ(runtime->get_main_stack()->debug_hook, nullptr);
}

TEST_F(RunProgramTest, QuitEndsQuietlyAndAnErrorIsPrintedAndReturned) {
    ProbeFunction* entry = install_entry({});
    entry->probe = [](VmStack* stack, unsigned long long) {
        EXPECT_NE(stack->debug_hook, nullptr) << "the hook is set during the run";
        throw RuntimeQuit();
    };
    EXPECT_EQ(run({}), 0);
    EXPECT_EQ(screen.errors, "");

    entry = install_entry({});
    runtime->module_cache().compile = [](VmStack*, const String&, module_map*) -> Module* {
        throw RuntimeError(1098, String("custom text"));
    };
    fs_path other = folder.write("other.prg", "");
    EXPECT_EQ(runtime->run_program(String(other), 0, nullptr), 1098);
    EXPECT_EQ(screen.errors, "custom text\n");
    EXPECT_EQ(runtime->get_main_stack()->debug_hook, nullptr);
    delete next_module;
    next_module = nullptr;
}

// The host's arguments reach a program through run_program; RunProgram
// runs it with none, whatever pass_arguments stored for the shell.
TEST_F(RunProgramTest, RunProgramPassesNoArguments) {
    ProbeFunction* entry = install_entry({"argc", "argv"});
    entry->probe = [](VmStack* stack, unsigned long long argc) {
        ASSERT_EQ(argc, 2u);
        EXPECT_EQ((stack->esp + 1)->integer, 0);
        EXPECT_EQ(ArrayNumElements(stack->esp), 0u);
    };
    const char* argv[] = {"host", "one"};
    runtime->pass_arguments(2, argv);
    RunProgram(runtime, String(file));
    EXPECT_EQ(entry->calls, 1);
}

// Nothing passes the exported calls: QUIT, Ctrl-C and a broken invariant
// end the run there, with the stack as it was.
TEST_F(RunProgramTest, ExportedCallsNeverThrow) {
    VmStack* stack = runtime->get_main_stack();
    Memvar* top = stack->esp;
    EXPECT_NO_THROW(RunCommand(runtime, String("QUIT")));
    EXPECT_NO_THROW(RunScript(runtime, String("CANCEL")));
    EXPECT_THROW(runtime->run_command(String("QUIT")), RuntimeQuit);

    ProbeFunction* entry = install_entry({});
    entry->probe = [](VmStack*, unsigned long long) { throw assert_failed_exception("a broken invariant"); };
    EXPECT_NO_THROW(RunProgram(runtime, String(file)));
    EXPECT_NE(screen.errors.find("(Internal error) a broken invariant"), std::string::npos) << screen.errors;

    request_interrupt();
    EXPECT_NO_THROW(RunCommand(runtime, String("x = 1\nDO WHILE .T.\nENDDO\n")));
    EXPECT_NE(screen.errors.find("(Interrupted)"), std::string::npos) << screen.errors;
    screen.output.clear();
    RunCommand(runtime, String("? x"));
    EXPECT_EQ(screen.output, "1\n") << "the variables made before the interrupt stay";
    EXPECT_EQ(stack->esp, top);
}

TEST_F(RunProgramTest, MissingFileReturnsOneWithItsMessage) {
    EXPECT_EQ(runtime->run_program(String("no_such_program.prg"), 0, nullptr), 1);
    EXPECT_EQ(screen.errors, "File 'no_such_program.prg' does not exist.\n");
}

TEST_F(RunProgramTest, ResolverFindsLoadedProgramsAndProcedures) {
    ProbeFunction* entry = install_entry({});
    auto* helper = new UserFunction(new Program);
    next_module->functions[symbol("helper")] = helper;
    EXPECT_EQ(run({}), 0);
    const CallResolver* resolver = runtime->get_main_stack()->resolver;
    ASSERT_NE(resolver, nullptr);
    EXPECT_EQ(resolver->symbol_text(symbol("helper")).u8str(), "helper");
    EXPECT_EQ(resolver->find_loaded_program(symbol("HELPER")), helper);
    EXPECT_EQ(resolver->find_loaded_program(symbol("prog")), entry) << "a program answers to its stem";
    EXPECT_EQ(resolver->find_loaded_program(symbol("unknown")), nullptr);
    EXPECT_EQ(resolver->find_procedure(symbol("helper")), nullptr);
    runtime->set_procedure_to(runtime->get_main_stack(), String(file), false);
    EXPECT_EQ(resolver->find_procedure(symbol("helper")), helper);

    VmStack* worker = nullptr;
    CreateStack(runtime, 64, &worker);
    EXPECT_EQ(worker->resolver, resolver);
    ReleaseStack(worker);
}

TEST(ModuleEntryTest, StemNamesTheEntryWhenThereIsNoMainProgram) {
    CaptureScreen screen;
    Runtime* runtime = Runtime::create_instance(&screen);
    Symtable& symbols = runtime->symbols();
    Module module(String("/some/dir/Foo.Bar.prg"));
    EXPECT_EQ(file_stem(module.file_name).u8str(), "Foo.Bar");
    auto* foo = new UserFunction(new Program);
    module.functions[symbols.symbolize("foo.bar")] = foo;
    module.functions[symbols.symbolize("other")] = new UserFunction(new Program);
    EXPECT_EQ(select_entry_by_stem(symbols, module), foo);
    Module unnamed(String("/some/dir/nothing.prg"));
    unnamed.functions[symbols.symbolize("foo")] = new UserFunction(new Program);
    EXPECT_EQ(select_entry_by_stem(symbols, unnamed), nullptr);
    ReleaseRuntime(runtime);
}

}  // namespace
}  // namespace zobase::testing
