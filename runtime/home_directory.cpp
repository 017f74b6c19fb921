// The user's folder for the runtime's own files, found by the XDG rules from
// the environment the host passed.
#include <pwd.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "runtime/runtime.h"

namespace zobase {

namespace {

namespace fs = std::filesystem;

// $HOME, else the password database's entry of the user.
fs::path user_home(const Runtime& runtime) {
    String home;
    if (runtime.getenv(String("HOME"), &home) && home.size()) return fs::path(home);
    if (const passwd* entry = getpwuid(getuid())) return fs::path(entry->pw_dir);
    return {};
}

// An XDG variable counts only when it holds an absolute path.
fs::path data_home(const Runtime& runtime) {
    String value;
    if (runtime.getenv(String("XDG_DATA_HOME"), &value) && value.size()) {
        fs::path path(value);
        if (path.is_absolute()) return path;
    }
    fs::path home = user_home(runtime);
    return home.empty() ? home : home / ".local" / "share";
}

}  // namespace

bool Runtime::create_home_dir(String* out) const {
    fs::path base = data_home(*this);
    if (base.empty()) return false;
    fs::path folder = base / "zobase";
    std::error_code error;
    fs::create_directories(folder, error);
    if (!fs::is_directory(folder, error)) return false;
    *out = String(folder.string().c_str());
    return true;
}

}  // namespace zobase
