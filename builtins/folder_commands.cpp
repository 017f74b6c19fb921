// CD, MKDIR and DELETE FILE: the process's folder and files by name, and
// WAIT, which the screen answers.
#include <filesystem>
#include <system_error>

#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "vm/runtime_services.h"
#include "vm/screen.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

std::filesystem::path path_argument(VmStack* stack, unsigned long long i) {
    return std::filesystem::path(string_argument(stack, i).u8str());
}

// The name as written after CD, quotes around it taken away.
std::filesystem::path unquoted(std::string text) {
    if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.back() == text.front())
        text = text.substr(1, text.size() - 2);
    return std::filesystem::path(text);
}

}  // namespace

// A folder that cannot be entered is error 202.
void void_stackcall_cd(VmStack* stack, unsigned long long) {
    std::error_code error;
    std::filesystem::current_path(unquoted(string_argument(stack, 1).u8str()), error);
    if (error) throw RuntimeError(ERR_INVALID_PATH, string_argument(stack, 1));
}

// Parent folders are made as needed; a folder that exists already, or one
// that cannot be made, is error 202.
void void_stackcall_mkdir(VmStack* stack, unsigned long long) {
    std::error_code error;
    if (!std::filesystem::create_directories(path_argument(stack, 1), error) || error)
        throw RuntimeError(ERR_INVALID_PATH, string_argument(stack, 1));
}

void void_stackcall_delete_file(VmStack* stack, unsigned long long) {
    std::error_code error;
    std::filesystem::path path = path_argument(stack, 1);
    if (!std::filesystem::is_regular_file(path, error) || !std::filesystem::remove(path, error) || error)
        throw RuntimeError(ERR_FILE_NOT_FOUND, string_argument(stack, 1));
}

void void_stackcall_wait(VmStack* stack, unsigned long long) { stack->services->screen()->wait(stack); }

}  // namespace zobase
