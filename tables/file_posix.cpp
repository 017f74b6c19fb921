// The operating system file: positioned reads and writes, blocking
// exclusive byte-range locks held per open file description, and Windows
// share modes emulated with a lock on a reserved byte.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string>
#include <utility>

#include "tables/file.h"
#include "tables/file_posix.h"
#include "tables/lock_positions.h"
#include "base/call_trace.h"

namespace zobase {

namespace {

// One transfer never asks the kernel for more than this.
constexpr uint64_t MAX_TRANSFER = 1u << 30;

// A descriptor that closes itself unless handed over.
struct descriptor_st {
    int fd = -1;
    ~descriptor_st() {
        if (fd >= 0) ::close(fd);
    }
    int release() noexcept { return std::exchange(fd, -1); }
};

// Opens for reading and writing whenever the system allows, even when the
// caller asked for reading only: an exclusive lock needs a writable
// descriptor. What the caller may do is then held by the flags. Returns
// whether the descriptor could only be opened for reading.
bool open_descriptor(const std::string& path, int extra_flags, bool need_write, descriptor_st& out) {
    out.fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC | extra_flags, 0666);
    if (out.fd >= 0) return false;
    bool read_only_file = errno == EACCES || errno == EROFS || errno == ETXTBSY;
    if (!read_only_file || need_write) return false;
    out.fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | extra_flags);
    return true;
}

// A lock of one kind on a range; F_OFD_SETLK (no waiting) or F_OFD_SETLKW.
int set_lock(int fd, int command, short type, int64_t start, uint64_t length) {
    struct flock range = {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = start;
    range.l_len = static_cast<off_t>(length);
    int result;
    do result = ::fcntl(fd, command, &range);
    while (result < 0 && errno == EINTR);
    return result;
}

void take_share_mode(int fd, uint32_t flags, bool read_only_fd) {
    bool shared = (flags & FILE_OPEN_SHARED) != 0;
    // A descriptor open for reading only cannot hold a write lock; such a
    // file is read-only for everybody, so a read lock still keeps writers out.
    short type = shared || read_only_fd ? F_RDLCK : F_WRLCK;
    if (set_lock(fd, F_OFD_SETLK, type, SHARE_MODE_LOCK_POSITION, 1) == 0) return;
    if (errno == EAGAIN || errno == EACCES) throw file_sharing_violation();
    throw file_error();
}

[[noreturn]] void raise_open_failure(int code, bool creating) {
    if (code == EEXIST && creating) throw file_error_exists();
    throw file_error();
}

void require_regular_file(int fd) {
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) throw file_error();
}

}  // namespace

FilePosix::FilePosix(const String& file_name, uint32_t open_flags, int descriptor,
                     bool read_only_descriptor, bool delete_on_close)
    : File(file_name, open_flags), fd_(descriptor), path_(file_name.u8str()),
      read_only_fd_(read_only_descriptor), delete_on_close_(delete_on_close) {}

FilePosix::~FilePosix() { close(); }

FilePosix* FilePosix::create(const String& name, uint32_t flags) {
    ZO_TRACE();
    flags |= FILE_OPEN_READ | FILE_OPEN_WRITE;
    std::string path = name.u8str();
    descriptor_st fd;
    open_descriptor(path, O_CREAT, true, fd);
    if (fd.fd < 0) raise_open_failure(errno, true);
    require_regular_file(fd.fd);
    // Truncation waits until the share mode is ours: emptying a file that is
    // open elsewhere would be the worst way to report a sharing violation.
    take_share_mode(fd.fd, flags, false);
    if (::ftruncate(fd.fd, 0) != 0) throw file_error();
    bool temporary = (flags & FILE_OPEN_TEMPORARY) != 0;
    return new FilePosix(name, flags, fd.release(), false, temporary);
}

FilePosix* FilePosix::open(const String& name, uint32_t flags) {
    ZO_TRACE();
    std::string path = name.u8str();
    descriptor_st fd;
    bool read_only_fd = open_descriptor(path, 0, (flags & FILE_OPEN_WRITE) != 0, fd);
    if (fd.fd < 0) raise_open_failure(errno, false);
    require_regular_file(fd.fd);
    take_share_mode(fd.fd, flags, read_only_fd);
    bool delete_on_close = (flags & FILE_OPEN_DELETE_ON_CLOSE) != 0;
    return new FilePosix(name, flags, fd.release(), read_only_fd, delete_on_close);
}

std::streampos FilePosix::seek(std::streampos pos) { return ::lseek(fd_, file_offset(pos), SEEK_SET); }

std::streampos FilePosix::seek(int64_t offset, int origin) {
    static const int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (origin < FILE_SEEK_START || origin > FILE_SEEK_END) return -1;
    return ::lseek(fd_, offset, whence[origin]);
}

std::streampos FilePosix::tell() { return ::lseek(fd_, 0, SEEK_CUR); }

void FilePosix::write(const char* data, uint64_t size) {
    while (size > 0) {
        ssize_t n = ::write(fd_, data, std::min(size, MAX_TRANSFER));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        data += n;
        size -= static_cast<uint64_t>(n);
    }
}

uint64_t FilePosix::read(char* data, uint64_t size) {
    uint64_t done = 0;
    while (done < size) {
        ssize_t n = ::read(fd_, data + done, std::min(size - done, MAX_TRANSFER));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return 0;
        if (n == 0) break;
        done += static_cast<uint64_t>(n);
    }
    return done;
}

uint64_t FilePosix::readex(std::streampos pos, char* data, uint64_t size) {
    int64_t at = file_offset(pos);
    if (at < 0) throw file_read_failed();
    uint64_t done = 0;
    while (done < size) {
        ssize_t n = ::pread(fd_, data + done, std::min(size - done, MAX_TRANSFER),
                            static_cast<off_t>(at + done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) throw file_read_failed();
        if (n == 0) break;  // the end of the file: a short count, no failure
        done += static_cast<uint64_t>(n);
    }
    return done;
}

void FilePosix::writeex(std::streampos pos, const char* data, uint64_t size) {
    int64_t at = file_offset(pos);
    if (!is_writable()) throw file_access_denied();
    if (at < 0) throw file_write_failed();
    uint64_t done = 0;
    while (done < size) {
        ssize_t n = ::pwrite(fd_, data + done, std::min(size - done, MAX_TRANSFER),
                             static_cast<off_t>(at + done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && (errno == EACCES || errno == EPERM || errno == EBADF || errno == EROFS))
            throw file_access_denied();
        if (n <= 0) throw file_write_failed();
        done += static_cast<uint64_t>(n);
    }
}

bool FilePosix::lock(std::streampos pos, uint64_t size) {
    short type = read_only_fd_ ? F_RDLCK : F_WRLCK;
    if (set_lock(fd_, F_OFD_SETLKW, type, file_offset(pos), size) != 0) throw file_lock_failed();
    return true;
}

bool FilePosix::unlock(std::streampos pos, uint64_t size) {
    if (set_lock(fd_, F_OFD_SETLK, F_UNLCK, file_offset(pos), size) != 0)
        throw file_unlock_failed();
    return true;
}

int64_t FilePosix::size() {
    struct stat info;
    return ::fstat(fd_, &info) == 0 ? info.st_size : 0;
}

void FilePosix::truncate(uint64_t size) {
    if (!is_writable()) throw file_access_denied();
    unmap();
    int result;
    do result = ::ftruncate(fd_, static_cast<off_t>(size));
    while (result < 0 && errno == EINTR);
    if (result != 0) throw file_write_failed();
}

int64_t FilePosix::modified_time() {
    struct stat info;
    return ::fstat(fd_, &info) == 0 ? info.st_mtim.tv_sec : 0;
}

int64_t FilePosix::created_time() {
    struct statx info;
    if (::statx(fd_, "", AT_EMPTY_PATH, STATX_BTIME, &info) != 0) return 0;
    return (info.stx_mask & STATX_BTIME) ? info.stx_btime.tv_sec : 0;
}

// A mapping is made again only when the file has grown by an eighth (and
// at least a megabyte), so that a growing file costs few new mappings; the
// reads in between go to the caller's own path.
const char* FilePosix::view(uint64_t position, uint64_t size, bool may_map) {
    if (position + size <= mapped_) return map_ + position;
    if (fd_ < 0 || !may_map) return nullptr;
    int64_t now = this->size();
    constexpr uint64_t MIN_GROWTH = 1 << 20;
    if (now <= 0 || position + size > static_cast<uint64_t>(now) ||
        static_cast<uint64_t>(now) < mapped_ + std::max<uint64_t>(MIN_GROWTH, mapped_ / 8))
        return nullptr;
    unmap();
    void* map = ::mmap(nullptr, static_cast<size_t>(now), PROT_READ, MAP_SHARED, fd_, 0);
    if (map == MAP_FAILED) return nullptr;
    map_ = static_cast<char*>(map);
    mapped_ = static_cast<uint64_t>(now);
    return map_ + position;
}

void FilePosix::unmap() noexcept {
    if (map_) ::munmap(map_, static_cast<size_t>(mapped_));
    map_ = nullptr;
    mapped_ = 0;
}

void FilePosix::close() {
    unmap();
    if (fd_ < 0) return;
    ::close(fd_);
    fd_ = -1;
    if (delete_on_close_) ::unlink(path_.c_str());
}

void FilePosix::remove() {
    if (::unlink(path_.c_str()) != 0 && errno != ENOENT) throw file_error();
}

}  // namespace zobase
