#pragma once
// Byte positions of the one-byte locks that processes sharing a table take.
// They lie far beyond any byte that is read, so a lock never hides data.
#include <cstdint>

namespace zobase {

// The record locks of a table count down from its append lock, whose
// position is the maximal record count of the table's version (see
// dbf_version.h): record N is locked at that count minus N.
constexpr uint64_t FPT_ALLOCATION_LOCK_POSITION = 0x40000000;
constexpr uint64_t CDX_LOCK_POSITION = 0x7FFFFFFE;

// Where the file layer emulates exclusive and shared opens (see file.h):
// beyond every data and lock position above, and beyond the end of any
// table this engine can write.
constexpr int64_t SHARE_MODE_LOCK_POSITION = 0x4000000000000000;

}  // namespace zobase
