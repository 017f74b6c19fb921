#include "tables/file.h"

#include <cstring>
#include <system_error>

#include "tables/file_memory.h"
#include "tables/file_posix.h"
#include "text/collation.h"

namespace zobase {

namespace fs = std::filesystem;

File::~File() = default;

bool is_memory_file_name(const String& name) {
    constexpr size_t prefix = sizeof MEMORY_FILE_PREFIX - 1;
    return name.size() >= prefix && std::memcmp(name.read(), MEMORY_FILE_PREFIX, prefix) == 0;
}

File* create_file(const String& name, uint32_t flags) {
    if (is_memory_file_name(name)) return new FileMemory(name, flags);
    return FilePosix::create(name, flags);
}

File* open_file(const String& name, uint32_t flags) { return FilePosix::open(name, flags); }

namespace {

bool same_name_ci(const fs::path& a, const fs::path& b) {
    return Collation::unicode_machine_ci->compare(String(a), String(b)) == 0;
}

}  // namespace

bool exists_ci(const fs::path& name, fs::path* found) {
    std::error_code error;
    if (fs::is_regular_file(name, error)) {
        *found = name;
        return true;
    }
    fs::path directory = name.has_parent_path() ? name.parent_path() : fs::path(".");
    fs::directory_iterator it(directory, error);
    if (error) return false;
    for (const fs::directory_entry& entry : it) {
        if (!same_name_ci(entry.path().filename(), name.filename())) continue;
        if (!entry.is_regular_file(error)) continue;
        *found = name.has_parent_path() ? entry.path() : entry.path().filename();
        return true;
    }
    return false;
}

}  // namespace zobase
