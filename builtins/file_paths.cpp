// Finding files as programs name them, and the console streams.
#include "builtins/file_paths.h"

#include <cstring>
#include <string>
#include <system_error>

#include "text/charset.h"
#include "text/collation.h"
#include "values/error.h"
#include "vm/runtime_services.h"
#include "vm/screen.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace fs = std::filesystem;

namespace {

bool same_name_ci(const fs::path& a, const fs::path& b) {
    return Collation::unicode_machine_ci->compare(String(a), String(b)) == 0;
}

// The entry of `folder` named `part` without regard to case.
bool find_entry_ci(const fs::path& folder, const fs::path& part, fs::path* found) {
    std::error_code error;
    fs::directory_iterator it(folder.empty() ? fs::path(".") : folder, error);
    if (error) return false;
    for (const fs::directory_entry& entry : it) {
        if (!same_name_ci(entry.path().filename(), part)) continue;
        *found = folder / entry.path().filename();
        return true;
    }
    return false;
}

}  // namespace

bool find_path_ci(const fs::path& name, fs::path* found) {
    std::error_code error;
    if (fs::exists(fs::symlink_status(name, error))) {
        *found = name;
        return true;
    }
    fs::path walked = name.root_path();
    for (const fs::path& part : name.relative_path()) {
        fs::path next = walked / part;
        if (part == "." || part == ".." || fs::exists(fs::symlink_status(next, error))) {
            walked = next;
            continue;
        }
        if (!find_entry_ci(walked, part, &walked)) return false;
    }
    *found = walked;
    return true;
}

bool find_existing(const String& name, fs::path* found) {
    return name.size() != 0 && find_path_ci(fs::path(name), found);
}

ConsoleStream console_stream_of(const String& name) {
    static const struct {
        const char* name;
        ConsoleStream stream;
    } streams[] = {{"zo://stdin", CONSOLE_STDIN}, {"zo://stdout", CONSOLE_STDOUT}, {"zo://stderr", CONSOLE_STDERR}};
    for (const auto& row : streams)
        if (Collation::unicode_machine_ci->compare(name, String(row.name)) == 0) return row.stream;
    return CONSOLE_NONE;
}

String read_console_input(VmStack* stack) {
    if (!stack->services) return String("");
    Screen* screen = stack->services->screen();
    const Charset* charset = nullptr;
    std::string bytes;
    char buffer[4096];
    while (size_t got = screen->read(buffer, sizeof buffer, sizeof buffer, &charset)) bytes.append(buffer, got);
    return String::fromBytes(bytes.data(), bytes.size(), charset ? charset : Charset::utf8);
}

const Charset* charset_argument(const String& name) {
    const Charset* charset = get_charset_by_name(name);
    if (!charset) throw RuntimeError(ERR_CHARSET_NOT_SUPPORTED, name);
    return charset;
}

}  // namespace zobase
