#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "runtime/file_search.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "values/error.h"
#include "vm/vm_stack.h"

using namespace zobase;
namespace fs = std::filesystem;

namespace {

class NullScreen : public Screen {
public:
    void internal_out(const String&) override {}
    void internal_err(const String&) override {}
};

class FileSearch : public ::testing::Test {
protected:
    fs::path root = fs::temp_directory_path() / ("zobase_find_" + std::to_string(::getpid()));
    NullScreen screen;
    Runtime* runtime = nullptr;

    void SetUp() override {
        fs::create_directories(root / "lib");
        std::ofstream(root / "CUSTOMER.DBF") << "x";
        std::ofstream(root / "lib" / "Tools.PRG") << "x";
        runtime = CreateRuntime(&screen);
    }
    void TearDown() override {
        ReleaseRuntime(runtime);
        fs::remove_all(root);
    }
    String at(const char* name) { return String(root / name); }
};

}  // namespace

TEST_F(FileSearch, CaseInsensitiveInTheNamedDirectory) {
    String found;
    ASSERT_TRUE(FindFile(runtime, at("customer.dbf"), found, false, false));
    EXPECT_EQ(fs::path(found).filename(), "CUSTOMER.DBF");
    EXPECT_FALSE(FindFile(runtime, at("orders.dbf"), found, false, false));
}

TEST_F(FileSearch, SearchPathAndDefaultExtension) {
    String found;
    EXPECT_FALSE(FindFile(runtime, String("tools"), found, true, true));
    runtime->set_path_to(String((root / "nowhere").string().c_str()), false);
    runtime->set_path_to(String((" " + (root / "lib").string() + " ;").c_str()), true);
    ASSERT_TRUE(FindFile(runtime, String("tools"), found, true, true));
    EXPECT_EQ(fs::path(found).filename(), "Tools.PRG");
    EXPECT_FALSE(FindFile(runtime, String("tools"), found, false, true));
    EXPECT_FALSE(FindFile(runtime, String("tools"), found, true, false));
    runtime->set_path_to_null();
    EXPECT_FALSE(FindFile(runtime, String("tools"), found, true, true));
}

TEST_F(FileSearch, UnknownBuiltInClassIs1733) {
    String name("NoSuchClass");
    try {
        GetClass(runtime->get_main_stack(), &name);
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 1733);
        EXPECT_EQ(e.message.u8str(), "Class definition NoSuchClass not found");
    }
}
