#include "tables/dbf_codepages.h"

#include <iterator>
#include <unordered_map>

namespace zobase {

namespace {

struct codepage_byte_st {
    uint8_t byte;
    int codepage;
};

const codepage_byte_st codepage_bytes[] = {
    {0x01, 437},   {0x02, 850},   {0x03, 1252},  {0x04, 10000}, {0x64, 852},   {0x65, 866},
    {0x66, 865},   {0x67, 861},   {0x68, 895},   {0x69, 620},   {0x6A, 737},   {0x6B, 857},
    {0x78, 950},   {0x79, 949},   {0x7A, 936},   {0x7B, 932},   {0x7C, 874},   {0x7D, 1255},
    {0x7E, 1256},  {0x96, 10007}, {0x97, 10029}, {0x98, 10006}, {0xC8, 1250},  {0xC9, 1251},
    {0xCA, 1254},  {0xCB, 1253},  {0xF1, 65001},
};
static_assert(std::size(codepage_bytes) == 27);

const std::unordered_map<uint8_t, int> codepage_by_byte = [] {
    std::unordered_map<uint8_t, int> map;
    for (const codepage_byte_st& row : codepage_bytes) map.emplace(row.byte, row.codepage);
    return map;
}();

}  // namespace

int codepage_of_dbf_byte(uint8_t byte) noexcept {
    auto found = codepage_by_byte.find(byte);
    return found == codepage_by_byte.end() ? 0 : found->second;
}

uint8_t dbf_byte_of_codepage(int64_t codepage) noexcept {
    uint8_t byte = 0;
    for (const codepage_byte_st& row : codepage_bytes)
        if (row.codepage == codepage) byte = row.byte;
    return byte;
}

}  // namespace zobase
