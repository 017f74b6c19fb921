#pragma once
// A runtime on a screen that keeps what it is given, and a scratch folder.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "runtime/runtime.h"
#include "runtime/screen.h"

namespace zobase::testing {

class CaptureScreen : public Screen {
public:
    std::string output, errors;
    void internal_out(const String& text) override { output += text.u8str(); }
    void internal_err(const String& text) override { errors += text.u8str(); }
};

class ScratchFolder {
public:
    std::filesystem::path path;
    ScratchFolder() {
        path = std::filesystem::temp_directory_path() /
               ("zobase_runtime_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~ScratchFolder() { std::filesystem::remove_all(path); }

    std::filesystem::path write(const std::string& name, const std::string& text) const {
        std::filesystem::path file = path / name;
        std::ofstream(file, std::ios::binary) << text;
        return file;
    }
};

}  // namespace zobase::testing
