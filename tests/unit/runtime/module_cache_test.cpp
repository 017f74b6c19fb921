// The module cache's file logic, with a compile step that only counts.
#include <gtest/gtest.h>

#include <chrono>

#include "compiler/module.h"
#include "runtime/module_cache.h"
#include "runtime_test_support.h"
#include "vm/vm_stack.h"

namespace zobase::testing {
namespace {

namespace fs = std::filesystem;

int compile_count = 0;

Module* counting_compile(VmStack*, const String& path, module_map*) {
    ++compile_count;
    return new Module(path);
}

Module* failing_compile(VmStack*, const String&, module_map*) { throw RuntimeError(10); }

class ModuleCacheTest : public ::testing::Test {
protected:
    CaptureScreen screen;
    Runtime* runtime = Runtime::create_instance(&screen);
    VmStack* stack = runtime->get_main_stack();
    ModuleCache& cache = runtime->module_cache();
    ScratchFolder folder;

    ModuleCacheTest() {
        compile_count = 0;
        cache.compile = counting_compile;
    }
    ~ModuleCacheTest() override { ReleaseRuntime(runtime); }

    const Module* load(const fs::path& file, CachePolicy policy = CACHE_CHECK_TIME) {
        return cache.load_from_disk(stack, String(file), policy);
    }
};

TEST_F(ModuleCacheTest, TwoSpellingsOfOnePathShareOneEntry) {
    fs::path file = folder.write("prog.prg", "? 1\n");
    fs::create_directory(folder.path / "sub");
    fs::create_symlink(file, folder.path / "link.prg");
    const Module* first = load(file);
    EXPECT_EQ(first, load(folder.path / "sub" / ".." / "." / "prog.prg"));
    EXPECT_EQ(first, load(folder.path / "link.prg"));
    EXPECT_EQ(compile_count, 1);
    EXPECT_EQ(cache.domains().size(), 1u);
    EXPECT_EQ(first->domain->path.u8str(), fs::canonical(file).string());
}

TEST_F(ModuleCacheTest, ChangedFileCompilesAgainUnderTimeCheck) {
    fs::path file = folder.write("prog.prg", "? 1\n");
    const Module* old = load(file);
    load(file);
    EXPECT_EQ(compile_count, 1);
    fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(5));
    const Module* fresh = load(file);
    EXPECT_EQ(compile_count, 2);
    EXPECT_NE(fresh, old);
    ASSERT_EQ(cache.domains().size(), 1u) << "the stale entry is out of the look-ups";
    EXPECT_EQ(cache.domains().front()->entry, fresh);
    EXPECT_EQ(old->file_name.u8str(), fresh->file_name.u8str()) << "a stale module stays alive";
}

TEST_F(ModuleCacheTest, ProcedureFollowsItsFileWhenCompiledAgain) {
    fs::path file = folder.write("lib.prg", "");
    runtime->set_procedure_to(stack, String(file), false);
    fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(5));
    const Module* fresh = load(file);
    ASSERT_EQ(cache.procedures().size(), 1u);
    EXPECT_EQ(cache.procedures().begin()->second, fresh);
}

TEST_F(ModuleCacheTest, PolicyAsIsKeepsAStaleCopyAndReloadAlwaysCompiles) {
    fs::path file = folder.write("prog.prg", "? 1\n");
    load(file);
    fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(5));
    load(file, CACHE_AS_IS);
    EXPECT_EQ(compile_count, 1);
    load(file, CACHE_RELOAD);
    load(file, CACHE_RELOAD);
    EXPECT_EQ(compile_count, 3);
}

TEST_F(ModuleCacheTest, FindsNamesWithoutRegardToCaseAndWithDefaultExtension) {
    folder.write("UPPER.PRG", "? 1\n");
    const Module* module = load(folder.path / "upper.prg");
    EXPECT_EQ(fs::path(module->file_name.u8str()).filename(), "UPPER.PRG");
    EXPECT_EQ(module, load(folder.path / "Upper"));
    EXPECT_EQ(compile_count, 1);
}

TEST_F(ModuleCacheTest, MissingFileIsErrorOneWithItsName) {
    fs::path missing = folder.path / "nothing.prg";
    try {
        load(missing);
        FAIL() << "no error";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number, 1);
        EXPECT_EQ(error.message.u8str(), "File '" + missing.string() + "' does not exist.");
    }
    EXPECT_EQ(compile_count, 0);
}

TEST_F(ModuleCacheTest, FailedCompileLeavesNoEntry) {
    fs::path file = folder.write("bad.prg", "?? (\n");
    cache.compile = failing_compile;
    EXPECT_THROW(load(file), RuntimeError);
    EXPECT_TRUE(cache.domains().empty());
    cache.compile = counting_compile;
    load(file);
    EXPECT_EQ(compile_count, 1);
}

TEST_F(ModuleCacheTest, ProceduresAreKeptInPathOrderAndClearedByNull) {
    fs::path b = folder.write("b.prg", "");
    fs::path a = folder.write("a.prg", "");
    runtime->set_procedure_to(stack, String(b), false);
    runtime->set_procedure_to(stack, String(a), true);
    ASSERT_EQ(cache.procedures().size(), 2u);
    EXPECT_EQ(fs::path(cache.procedures().begin()->first.u8str()).filename(), "a.prg");
    runtime->set_procedure_to(stack, String(b), false);
    EXPECT_EQ(cache.procedures().size(), 1u);
    runtime->set_procedure_to_null();
    EXPECT_TRUE(cache.procedures().empty());
}

}  // namespace
}  // namespace zobase::testing
