#include "tables/dbf_version.h"

#include "tables/field_codecs.h"

namespace zobase {

namespace {

constexpr uint64_t DBASE_MAX_RECORDS = 0x40000000;
constexpr uint64_t VISUAL_MAX_RECORDS = 0x7FFFFFFE;

const dbf_version_st versions[] = {
    {0x02, nullptr, DBASE_MAX_RECORDS, false},
    {0x03, &dbase_field_types, DBASE_MAX_RECORDS, false},
    {0x30, &visual_field_types, VISUAL_MAX_RECORDS, true},
    {0x31, &visual_field_types, VISUAL_MAX_RECORDS, true},
    {0x32, &varlength_field_types, VISUAL_MAX_RECORDS, true},
    {0xF5, &dbase_field_types, DBASE_MAX_RECORDS, false},
};

}  // namespace

const dbf_version_st* find_dbf_version(uint8_t version) noexcept {
    for (const dbf_version_st& row : versions)
        if (row.version == version) return &row;
    return nullptr;
}

}  // namespace zobase
