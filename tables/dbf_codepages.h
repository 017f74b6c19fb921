#pragma once
// The codepage byte of a DBF header and the code page it stands for.
#include <cstdint>

namespace zobase {

// 0 for a byte that names no code page (byte 0 among them).
int codepage_of_dbf_byte(uint8_t byte) noexcept;
// The byte for a code page, the last match of the table winning; 0 for none.
uint8_t dbf_byte_of_codepage(int64_t codepage) noexcept;

}  // namespace zobase
