// The marker of a table swap: the temporary table's file name on the first
// line, the companion extensions the new table has on the second.
#include "tables/table_swap.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <string>
#include <system_error>

#include "tables/file.h"
#include "values/error.h"

namespace zobase {

namespace fs = std::filesystem;

namespace {

const char* const COMPANION_EXTENSIONS[] = {"cdx", "fpt"};

fs::path marker_of(const fs::path& table) { return table.parent_path() / (table.stem().string() + "~swap"); }

// Written through to the disk, so that the marker never names files that a
// power failure could still lose. Best effort: a file system that can't
// sync still gets the ordering of the renames.
void sync_path(const fs::path& path) {
    int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return;
    ::fsync(descriptor);
    ::close(descriptor);
}

// A rename that finds its source gone was made by another process finishing
// the same swap.
void rename_if_there(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::rename(from, to, error);
    if (error && error != std::errc::no_such_file_or_directory) throw fs::filesystem_error("rename", from, to, error);
}

// Memo and index files first, the table last: the table is what an open
// finds, and while the temporary table is there the marker is still needed.
void move_files(const fs::path& from, const fs::path& to, const std::string& companions) {
    for (const char* extension : COMPANION_EXTENSIONS) {
        fs::path target = fs::path(to).replace_extension(extension);
        if (companions.find(extension) != std::string::npos) rename_if_there(fs::path(from).replace_extension(extension), target);
        else fs::remove(target);
    }
    rename_if_there(from, to);
}

}  // namespace

void remove_table_files(const fs::path& table) {
    std::error_code ignored;
    fs::remove(table, ignored);
    for (const char* extension : COMPANION_EXTENSIONS) fs::remove(fs::path(table).replace_extension(extension), ignored);
}

void swap_table_into_place(const fs::path& from, const fs::path& to, const std::function<void()>& release) {
    std::string companions;
    for (const char* extension : COMPANION_EXTENSIONS) {
        fs::path companion = fs::path(from).replace_extension(extension);
        if (!fs::exists(companion)) continue;
        sync_path(companion);
        companions += std::string(extension) + " ";
    }
    sync_path(from);
    fs::path marker = marker_of(to);
    fs::path written = marker.parent_path() / (marker.filename().string() + ".tmp");
    try {
        std::ofstream out(written, std::ios::trunc);
        out << from.filename().string() << '\n' << companions << '\n';
        if (!out.flush()) throw fs::filesystem_error("marker", written, std::make_error_code(std::errc::io_error));
        out.close();
        sync_path(written);
        fs::rename(written, marker);
    } catch (...) {
        std::error_code ignored;
        fs::remove(written, ignored);
        remove_table_files(from);
        throw;
    }
    sync_path(to.parent_path());
    try {
        move_files(from, to, companions);
        sync_path(to.parent_path());
        fs::remove(marker);
    } catch (...) {
        release();
        throw;
    }
    release();
}

// A table held exclusively is being swapped by the process that holds it
// (or is open and whole): its marker is not ours to act on.
void finish_interrupted_swap(const fs::path& table) {
    fs::path marker = marker_of(table);
    std::error_code error;
    if (!fs::exists(marker, error)) return;
    if (fs::exists(table, error)) {
        try {
            std::unique_ptr<File> probe(open_file(String(table), FILE_OPEN_READ | FILE_OPEN_WRITE));
            probe->close();
        } catch (const file_error&) {
            return;  // held, or not ours to write: the open that follows says which
        }
    }
    std::ifstream in(marker);
    std::string name, companions;
    std::getline(in, name);
    std::getline(in, companions);
    // Only a name beside the table: a marker can't move files elsewhere.
    fs::path from = table.parent_path() / name;
    if (!name.empty() && fs::path(name).filename() == name && fs::exists(from, error))
        move_files(from, table, companions);
    fs::remove(marker, error);
}

}  // namespace zobase
