#include "tables/fpt_file.h"

#include <algorithm>
#include <cstring>

#include "tables/byte_order.h"
#include "tables/file_lock.h"
#include "tables/lock_positions.h"
#include "text/charset.h"
#include "base/call_trace.h"

namespace zobase {

namespace {

uint64_t round_up(uint64_t value, uint64_t unit) { return (value + unit - 1) / unit * unit; }

}  // namespace

FptFile* FptFile::create(File* empty, int block_size) {
    ZO_TRACE();
    std::unique_ptr<FptFile> fpt(new FptFile(empty));
    if (file_offset(empty->seek(0, FILE_SEEK_END)) != 0) throw fpt_error_file_exists();
    uint64_t size = block_size <= 0 ? FPT_DEFAULT_BLOCK_SIZE
                                    : std::min<uint64_t>(block_size, FPT_MAX_BLOCK_SIZE);
    uint64_t header_area = round_up(FPT_HEADER_AREA, size);
    fpt->block_size = size;
    fpt->next_free_block = header_area / size;
    fpt->write_fpt_header();
    // One byte at the end of the header area gives the file its full length.
    const char zero = 0;
    empty->writeex(static_cast<std::streamoff>(header_area - 1), &zero, 1);
    fpt->read_fpt_header();
    return fpt.release();
}

void FptFile::read_fpt_header() {
    char header[8];
    if (file->readex(0, header, sizeof header) < sizeof header) throw dbf_error_file_corruption();
    next_free_block = read_be32(header);
    block_size = read_be16(header + 6);
    if (block_size == 0) throw dbf_error_file_corruption();
}

void FptFile::write_fpt_header() {
    char header[8];
    write_be32(header, static_cast<uint32_t>(next_free_block));
    write_be16(header + 4, 0);
    write_be16(header + 6, static_cast<uint16_t>(block_size));
    file->writeex(0, header, sizeof header);
}

String FptFile::load(unsigned int block, const Charset* charset, int* type) {
    ZO_TRACE();
    char head[FPT_BODY_HEADER_SIZE] = {};
    uint64_t at = block_position(block);
    file->readex(static_cast<std::streamoff>(at), head, sizeof head);
    *type = static_cast<int>(read_be32(head));
    uint64_t length = read_be32(head + 4);
    // A length beyond the end of the file is cut to the bytes that are there,
    // so a damaged block number never asks for gigabytes.
    int64_t file_size = file->size();
    uint64_t data_at = at + FPT_BODY_HEADER_SIZE;
    uint64_t available = file_size > 0 && static_cast<uint64_t>(file_size) > data_at
                             ? static_cast<uint64_t>(file_size) - data_at
                             : 0;
    String body(std::min(length, available), charset);
    if (body.size() == 0) return body;
    uint64_t got = file->readex(static_cast<std::streamoff>(data_at), body.write(), body.size());
    if (got < body.size()) body.resize(got);
    return body;
}

uint64_t FptFile::body_length(unsigned int block) {
    char head[FPT_BODY_HEADER_SIZE] = {};
    file->readex(static_cast<std::streamoff>(block_position(block)), head, sizeof head);
    return read_be32(head + 4);
}

// Reserves the blocks for a body under the allocation lock: the header is
// read again so the next free block is current across processes, and the
// last byte of the new space is written before the header claims it.
unsigned int FptFile::allocate(uint64_t body_size) {
    ScopedFileLock<file_lock_failed, file_unlock_failed> lock(file.get(),
                                                             FPT_ALLOCATION_LOCK_POSITION);
    read_fpt_header();
    uint64_t first = next_free_block;
    uint64_t end = round_up(first * block_size + FPT_BODY_HEADER_SIZE + body_size, block_size);
    if (end / block_size > UINT32_MAX) throw file_write_failed();
    const char zero = 0;
    file->writeex(static_cast<std::streamoff>(end - 1), &zero, 1);
    next_free_block = end / block_size;
    write_fpt_header();
    return static_cast<unsigned int>(first);
}

unsigned int FptFile::store(String value, const Charset* charset, int type) {
    ZO_TRACE();
    try {
        value.convert(charset, 0, CSTRAN_STRICT);
    } catch (const cstran_chars_lost&) {
        throw dbf_error_cptrans_char_lost();
    }
    if (value.size() > UINT32_MAX) throw dbf_error_buffer_overflow();
    unsigned int block = allocate(value.size());
    // The data follow outside the lock: these blocks belong to this writer
    // alone, and no record names them until it is written later.
    char head[FPT_BODY_HEADER_SIZE];
    write_be32(head, FPT_TYPE_TEXT);
    write_be32(head + 4, static_cast<uint32_t>(value.size()));
    uint64_t at = block_position(block);
    file->writeex(static_cast<std::streamoff>(at), head, sizeof head);
    if (value.size())
        file->writeex(static_cast<std::streamoff>(at + FPT_BODY_HEADER_SIZE), value.read(),
                      value.size());
    return block;
}

}  // namespace zobase
