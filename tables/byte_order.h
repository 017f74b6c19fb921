#pragma once
// Integers in table files: little-endian in DBF and CDX headers, big-endian
// in the FPT and inside CDX nodes. Byte-wise access keeps these free of
// alignment and aliasing concerns; the compiler folds them to single loads.
#include <cstdint>

namespace zobase {

inline uint16_t read_le16(const char* p) noexcept {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return static_cast<uint16_t>(b[0] | b[1] << 8);
}

inline uint32_t read_le32(const char* p) noexcept {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return static_cast<uint32_t>(b[0]) | static_cast<uint32_t>(b[1]) << 8 |
           static_cast<uint32_t>(b[2]) << 16 | static_cast<uint32_t>(b[3]) << 24;
}

inline uint64_t read_le64(const char* p) noexcept {
    return static_cast<uint64_t>(read_le32(p)) | static_cast<uint64_t>(read_le32(p + 4)) << 32;
}

inline void write_le16(char* p, uint16_t v) noexcept {
    p[0] = static_cast<char>(v);
    p[1] = static_cast<char>(v >> 8);
}

inline void write_le32(char* p, uint32_t v) noexcept {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<char>(v >> (8 * i));
}

inline void write_le64(char* p, uint64_t v) noexcept {
    write_le32(p, static_cast<uint32_t>(v));
    write_le32(p + 4, static_cast<uint32_t>(v >> 32));
}

inline uint16_t read_be16(const char* p) noexcept {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return static_cast<uint16_t>(b[0] << 8 | b[1]);
}

inline uint32_t read_be32(const char* p) noexcept {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return static_cast<uint32_t>(b[0]) << 24 | static_cast<uint32_t>(b[1]) << 16 |
           static_cast<uint32_t>(b[2]) << 8 | static_cast<uint32_t>(b[3]);
}

inline void write_be16(char* p, uint16_t v) noexcept {
    p[0] = static_cast<char>(v >> 8);
    p[1] = static_cast<char>(v);
}

inline void write_be32(char* p, uint32_t v) noexcept {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<char>(v >> (24 - 8 * i));
}

inline void write_be64(char* p, uint64_t v) noexcept {
    write_be32(p, static_cast<uint32_t>(v >> 32));
    write_be32(p + 4, static_cast<uint32_t>(v));
}

}  // namespace zobase
