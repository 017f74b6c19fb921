#pragma once
// File: the byte-level view the table engine has of its storage. Everything
// above addresses a file by absolute position (readex, writeex); the
// sequential operations serve the reading of field descriptors at open.
//
// Two kinds exist. An operating system file works with positioned reads and
// writes and open-file-description locks; a memory file, made for names
// under "memory:///", keeps 4096-byte pages in process memory and serves
// temporary tables, so the engine above never knows the difference.
#include <cstdint>
#include <filesystem>
#include <ios>

#include "values/error.h"
#include "values/string.h"

namespace zobase {

enum FileOpenFlags : uint32_t {
    FILE_OPEN_READ = 1,
    FILE_OPEN_WRITE = 2,
    // Others may read and write at the same time; record and file locks are
    // taken only under this flag.
    FILE_OPEN_SHARED = 4,
    // On create: the file disappears when closed, and table headers are not
    // rewritten for it.
    FILE_OPEN_TEMPORARY = 8,
    // On open: the file disappears when closed.
    FILE_OPEN_DELETE_ON_CLOSE = 16,
};

// Origins of the relative seek.
enum FileSeekOrigin : int { FILE_SEEK_START = 0, FILE_SEEK_CURRENT = 1, FILE_SEEK_END = 2 };

// The name prefix that makes create_file build a memory file.
constexpr const char MEMORY_FILE_PREFIX[] = "memory:///";

inline int64_t file_offset(std::streampos pos) noexcept { return std::streamoff(pos); }

class File {
public:
    String name;
    uint32_t flags = 0;

    File(const String& file_name, uint32_t open_flags) : name(file_name), flags(open_flags) {}
    virtual ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // Both return the new position, -1 when the seek failed.
    virtual std::streampos seek(std::streampos pos) = 0;
    virtual std::streampos seek(int64_t offset, int origin) = 0;
    // Sequential write at the current position; a failure is ignored.
    virtual void write(const char* data, uint64_t size) = 0;
    // Raises file_access_denied or file_write_failed.
    virtual void writeex(std::streampos pos, const char* data, uint64_t size) = 0;
    // Sequential read; returns the bytes read, 0 on failure.
    virtual uint64_t read(char* data, uint64_t size) = 0;
    // Returns the bytes read: short at the end of the file, which is no
    // failure. Raises file_read_failed for anything else.
    virtual uint64_t readex(std::streampos pos, char* data, uint64_t size) = 0;
    virtual std::streampos tell() = 0;
    virtual void close() = 0;
    // Deletes the named file; runs after close as well, and does not close.
    virtual void remove() = 0;
    // Exclusive lock of a byte range; blocks until the range is free. True on
    // success; raises file_lock_failed when the system refuses.
    virtual bool lock(std::streampos pos, uint64_t size) = 0;
    // Raises file_unlock_failed when the system refuses.
    virtual bool unlock(std::streampos pos, uint64_t size) = 0;
    // In bytes; 0 when the query fails.
    virtual int64_t size() = 0;
    // Cuts the file to `size` bytes. Raises file_write_failed.
    virtual void truncate(uint64_t size) = 0;
    // Whole seconds since 1970-01-01; 0 when unknown.
    virtual int64_t modified_time() = 0;
    virtual int64_t created_time() = 0;
    // The bytes at a position read in place, as the file stands now (what
    // writes through this object put there shows at once); null when the
    // file offers no such view or the range lies beyond what it covers. Only
    // for a file no other process can cut short while this one holds it:
    // reading a view past the end of the file is fatal. Without `may_map`
    // only what is mapped already shows, at no cost beyond a comparison.
    virtual const char* view(uint64_t, uint64_t, bool = true) { return nullptr; }

    bool is_shared() const noexcept { return (flags & FILE_OPEN_SHARED) != 0; }
    bool is_writable() const noexcept { return (flags & FILE_OPEN_WRITE) != 0; }
    bool is_temporary() const noexcept { return (flags & FILE_OPEN_TEMPORARY) != 0; }
};

// A new, empty file; its flags always hold read and write. A name beginning
// with "memory:///" makes a memory file named by its own address. Raises
// file_sharing_violation when the file is open elsewhere in a mode that
// excludes this one, file_error_exists or file_error otherwise.
File* create_file(const String& name, uint32_t flags);

// An existing operating system file (memory files can only be created).
// Raises file_sharing_violation, or file_error for anything else, a
// missing file included.
//
// Windows share modes are emulated with a lock on a byte far beyond every
// data and lock position: an open without FILE_OPEN_SHARED takes it
// exclusively, a shared open takes it for reading, and neither waits. So an
// exclusive open fails while any other open exists, in this process or
// another, and a shared open fails while an exclusive one exists.
File* open_file(const String& name, uint32_t flags);

bool is_memory_file_name(const String& name);

// The regular file of that name, or the one in its directory whose name
// matches without regard to case (tables are often stored as CUSTOMER.DBF).
bool exists_ci(const std::filesystem::path& name, std::filesystem::path* found);

}  // namespace zobase
