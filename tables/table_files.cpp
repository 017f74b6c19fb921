// DROP TABLE and RENAME TABLE on the files.
#include "tables/table_files.h"

#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "tables/file.h"
#include "tables/table_errors.h"

namespace zobase {

namespace fs = std::filesystem;

fs::path with_table_extension(const String& name) {
    fs::path path(name.u8str());
    if (!path.has_extension()) path += ".dbf";
    return path;
}

namespace {

// The table file as found without regard to case; error 1 when there is none.
fs::path existing_table_file(const String& name) {
    fs::path path = with_table_extension(name);
    fs::path found;
    if (!exists_ci(path, &found)) throw RuntimeError(ERR_FILE_NOT_FOUND, String(path));
    return found;
}

// Opened exclusively once, so that nobody else holds it.
void prove_unused(const fs::path& found, bool remove) {
    String file_name(found);
    table_operation(TABLE_REMOVE, [&] { return file_name; }, [&] {
        std::unique_ptr<File> file(open_file(file_name, FILE_OPEN_READ | FILE_OPEN_WRITE));
        file->close();
        if (remove) file->remove();
    });
}

}  // namespace

void drop_table_files(const String& name) {
    fs::path found = existing_table_file(name);
    prove_unused(found, true);
    std::error_code ignored;
    for (const char* extension : {"fpt", "cdx"}) {
        fs::path companion;
        if (exists_ci(fs::path(found).replace_extension(extension), &companion)) fs::remove(companion, ignored);
    }
}

// The memo and index files get the new name as second links first; renaming
// the table is the one step that moves it, and the old links go last. A
// crash at any point leaves the whole table under one of its names (and at
// worst unused links under the other).
void rename_table_files(const String& from, const String& to) {
    fs::path found = existing_table_file(from);
    fs::path target = with_table_extension(to);
    if (fs::exists(target)) throw RuntimeError(ERR_FILE_EXISTS, String(target));
    prove_unused(found, false);
    std::vector<fs::path> linked, links;
    std::error_code failure;
    for (const char* extension : {"fpt", "cdx"}) {
        fs::path companion;
        if (!exists_ci(fs::path(found).replace_extension(extension), &companion)) continue;
        fs::path link = fs::path(target).replace_extension(extension);
        fs::remove(link, failure);  // left by a table of that name that is gone
        fs::create_hard_link(companion, link, failure);
        if (failure) break;
        linked.push_back(companion);
        links.push_back(link);
    }
    if (!failure) fs::rename(found, target, failure);
    if (failure) {
        std::error_code ignored;
        for (const fs::path& link : links) fs::remove(link, ignored);
        throw RuntimeError(ERR_FILESYSTEM_GENERIC, String("rename"));
    }
    for (const fs::path& companion : linked) fs::remove(companion, failure);
}

}  // namespace zobase
