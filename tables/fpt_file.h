#pragma once
// FptFile: the memo file beside a table, holding the bodies of memo, blob
// and general fields in blocks; a record holds only a block number.
//
// Layout, big-endian: the next free block (4 bytes), 2 unused bytes, the
// block size (2 bytes), and zeros up to 512 bytes rounded up to a block.
// A body starts at its block number times the block size with a type word
// (always 1) and its length, then the data, unpadded; the next body starts
// at the next block boundary. Block 0 in a record means empty.
//
// The store only grows: every value is written at the end, no block is ever
// freed or reused, and space comes back only when the table is rewritten.
// That keeps allocation constant-time and lets readers in other processes
// never see a block that a record points to before its data are written.
#include <cstdint>
#include <memory>

#include "tables/file.h"
#include "values/string.h"

namespace zobase {

class Charset;

constexpr uint32_t FPT_DEFAULT_BLOCK_SIZE = 64;
constexpr uint32_t FPT_MAX_BLOCK_SIZE = 0x100000;
constexpr uint64_t FPT_HEADER_AREA = 512;
constexpr uint64_t FPT_BODY_HEADER_SIZE = 8;
constexpr int FPT_TYPE_TEXT = 1;

class FptFile {
public:
    uint64_t block_size = 0;
    uint64_t next_free_block = 0;
    std::unique_ptr<File> file;

    // Takes the file over.
    explicit FptFile(File* opened) : file(opened) {}

    // Writes a new memo file into an empty file, which it takes over. A block
    // size of 0 means 64; above 0x100000 it is cut to that. The header keeps
    // 16 bits of it, so a caller must not ask for more than 65535. Raises
    // fpt_error_file_exists if the file is not empty.
    static FptFile* create(File* empty, int block_size);

    // Reads the header of an opened memo file.
    void open() { read_fpt_header(); }
    void close() { file->close(); }

    // Raises dbf_error_file_corruption for fewer than 8 bytes, or for a
    // block size of 0, which no block arithmetic survives.
    void read_fpt_header();
    void write_fpt_header();

    // The body at `block` as a string in `charset`, its type word in *type.
    // A body cut short by the end of the file keeps the bytes that came.
    String load(unsigned int block, const Charset* charset, int* type);
    // The length word of the body at `block`.
    uint64_t body_length(unsigned int block);
    // Converts the value into `charset` and appends it; returns its block.
    // The type argument is accepted for the callers' sake: bodies are always
    // written with type 1. Raises dbf_error_cptrans_char_lost when the value
    // has characters the charset lacks.
    unsigned int store(String value, const Charset* charset, int type);

private:
    uint64_t block_position(unsigned int block) const noexcept { return block * block_size; }
    unsigned int allocate(uint64_t body_size);
};

}  // namespace zobase
