#pragma once
// A one-byte file lock held for a scope. Locks are taken only on shared
// files: an exclusive or temporary file has no one to keep out.
#include <exception>
#include <utility>

#include "tables/file.h"

namespace zobase {

// Raises LockRefused when the file answers the lock with false, and
// ReleaseRefused when it answers the unlock so; the file itself raises
// file_lock_failed and file_unlock_failed when the system refuses.
template <typename LockRefused, typename ReleaseRefused>
class ScopedFileLock {
public:
    // Blocks until the byte is free. A null file takes nothing.
    ScopedFileLock(File* file, uint64_t position)
        : file_(file && file->is_shared() ? file : nullptr), position_(position),
          exceptions_(std::uncaught_exceptions()) {
        if (file_ && !file_->lock(pos(), 1)) {
            file_ = nullptr;
            throw LockRefused();
        }
    }
    ScopedFileLock(const ScopedFileLock&) = delete;
    ScopedFileLock& operator=(const ScopedFileLock&) = delete;

    // Releasing may raise, unless an exception is already on its way: then
    // the lock is released quietly and the first failure goes on.
    ~ScopedFileLock() noexcept(false) {
        if (!file_) return;
        if (std::uncaught_exceptions() > exceptions_) {
            try {
                file_->unlock(pos(), 1);
            } catch (...) {
            }
            return;
        }
        if (!file_->unlock(pos(), 1)) throw ReleaseRefused();
    }

    bool held() const noexcept { return file_ != nullptr; }

private:
    std::streampos pos() const { return static_cast<std::streamoff>(position_); }

    File* file_;
    uint64_t position_;
    int exceptions_;
};

}  // namespace zobase
