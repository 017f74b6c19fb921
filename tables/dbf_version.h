#pragma once
// The version byte of a DBF table selects which field types it may hold, its
// maximal record count (also the base of its lock positions) and whether a
// backlink area follows the field descriptors.
#include <cstdint>

namespace zobase {

class DbfFile;
class DbfField;

// Gives a field its slots; one per type letter and version.
typedef void (*field_setup_fn)(DbfFile* table, DbfField* field);

struct field_type_table_st {
    field_setup_fn by_letter[128];

    // Null for a letter the version does not allow.
    field_setup_fn find(char letter) const noexcept {
        auto index = static_cast<unsigned char>(letter);
        return index < 128 ? by_letter[index] : nullptr;
    }
};

struct dbf_version_st {
    uint8_t version;
    const field_type_table_st* field_types;  // null: no field type is assigned
    uint64_t max_record_count;
    bool has_backlink;

    // Record N is locked at the maximal record count minus N, so the record
    // locks count down from the append lock and never meet it.
    uint64_t append_lock_position() const noexcept { return max_record_count; }
    uint64_t record_lock_position(uint64_t recno) const noexcept { return max_record_count - recno; }
};

// Null for a byte that names no supported version.
const dbf_version_st* find_dbf_version(uint8_t version) noexcept;

constexpr uint8_t DBF_VERSION_CREATED = 0x32;  // every new table
constexpr uint64_t DBF_HEADER_SIZE = 32;
constexpr uint64_t DBF_BACKLINK_SIZE = 263;
constexpr char DBF_TERMINATOR = 0x0D;

}  // namespace zobase
