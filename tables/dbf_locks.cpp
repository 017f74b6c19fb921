// Record locks: one byte per record, counting down from the append lock,
// held only by a shared writable table. An exclusive or read-only table has
// no one to keep out, so locking succeeds there without taking anything.
#include <vector>

#include "tables/dbf_file.h"

namespace zobase {

bool DbfFile::lock() {
    DbfRecursionGuard guard(this);
    return internal_lock();
}

bool DbfFile::unlock_record() {
    DbfRecursionGuard guard(this);
    return internal_unlock();
}

// The record is read again once the lock is held, whatever the result, so
// that what another process wrote before is seen. At the beginning of the
// file the first record is still shown, and is locked; only the end of the
// file (where an empty table stands as well) has no record.
bool DbfFile::internal_lock() {
    if (eof) return false;
    if (!shared_writable()) return true;
    if (isrlocked(recno)) return true;
    bool locked = file->lock(static_cast<std::streamoff>(record_lock_position(recno)), 1);
    if (locked) locked_records.insert(recno);
    refresh();
    return locked;
}

bool DbfFile::internal_unlock() {
    if (eof) return false;
    if (!shared_writable()) return true;
    if (!isrlocked(recno)) return false;
    bool unlocked = file->unlock(static_cast<std::streamoff>(record_lock_position(recno)), 1);
    if (unlocked) locked_records.erase(recno);
    return unlocked;
}

// At end of file nothing happens at all: the locks stay held. A lock that
// cannot be released stays in the set.
void DbfFile::unlock_all_records() {
    DbfRecursionGuard guard(this);
    if (eof || !shared_writable()) return;
    std::vector<uint64_t> released;
    for (uint64_t number : locked_records)
        if (file->unlock(static_cast<std::streamoff>(record_lock_position(number)), 1)) released.push_back(number);
    for (uint64_t number : released) locked_records.erase(number);
}

bool DbfFile::unlock_record_number(uint64_t number) {
    if (!shared_writable() || !isrlocked(number)) return false;
    bool unlocked = file->unlock(static_cast<std::streamoff>(record_lock_position(number)), 1);
    if (unlocked) locked_records.erase(number);
    return unlocked;
}

void DbfFile::hold_append_lock() {
    if (append_lock_held || !file->is_shared()) return;
    if (!file->lock(static_cast<std::streamoff>(append_lock_position()), 1)) throw dbf_error_lock_for_append_failed();
    append_lock_held = true;
}

void DbfFile::release_append_lock() {
    if (!append_lock_held) return;
    append_lock_held = false;
    if (!file->unlock(static_cast<std::streamoff>(append_lock_position()), 1))
        throw dbf_error_release_append_lock_failed();
}

}  // namespace zobase
