// The cursor of a table: reading records through the read-ahead block, and
// the moves in file order. Nothing here writes.
#include <cstring>

#include "tables/dbf_file.h"

namespace zobase {

namespace {

// Nobody else writes a table held alone, so its records are read in place
// from the mapping of the file, without a call to the system and without the
// block; null for a shared table, or past the mapped end (the last records of
// a file that has grown), where the block is read.
const char* record_in_place(DbfFile& table, uint64_t number) {
    if (table.file->is_shared()) return nullptr;
    return table.file->view(table.record_position(number), table.record_length);
}

}  // namespace

bool DbfFile::go(uint64_t number, char* target, unsigned bits) {
    if (bits & READAHEAD_DROP) readahead_count = 0;
    uint64_t got = 0;
    if (bits & READAHEAD_BLOCK) {
        for (;;) {
            if (number >= readahead_first && number - readahead_first < readahead_count) {
                std::memcpy(target, readahead.get() + (number - readahead_first) * record_length, record_length);
                return true;
            }
            if (number == 0) throw dbf_error_record_out_of_range();
            if (in_pending(number)) {
                std::memcpy(target, pending_record(number), record_length);
                return true;
            }
            if (const char* in_place = record_in_place(*this, number)) {
                std::memcpy(target, in_place, record_length);
                return true;
            }
            readahead_first = number;
            got = file->readex(static_cast<std::streamoff>(record_position(number)), readahead.get(),
                               readahead_capacity * record_length);
            readahead_count = got / record_length;
            if (readahead_count == 0) break;
        }
    } else {
        if (!(bits & READAHEAD_DIRECT)) throw dbf_error_not_impl();
        if (number == 0) throw dbf_error_record_out_of_range();
        if (in_pending(number)) {
            std::memcpy(target, pending_record(number), record_length);
            return true;
        }
        if (const char* in_place = record_in_place(*this, number)) {
            std::memcpy(target, in_place, record_length);
            got = record_length;
        } else {
            got = file->readex(static_cast<std::streamoff>(record_position(number)), target, record_length);
        }
        if (got == record_length) {
            // Another process has appended meanwhile.
            if (number > record_count) record_count = number;
            update_buffer(number, target);
            return true;
        }
    }
    // A single byte is the end-of-file mark. A record cut short past the
    // records the header counts is an append still being written, or one a
    // crash left unfinished: the header says it is no part of the table.
    if (got <= 1 || number > record_count) return false;
    throw dbf_error_file_corruption();
}

// Patched by record number, so that a record written and then read again
// through the block shows what was written.
void DbfFile::update_buffer(uint64_t number, const char* record) {
    if (number >= readahead_first && number - readahead_first < readahead_count)
        std::memcpy(readahead.get() + (number - readahead_first) * record_length, record, record_length);
}

void DbfFile::show_blank() {
    std::memcpy(shown_record, blank_record.get(), record_length);
}

void DbfFile::go_top() {
    DbfRecursionGuard guard(this);
    if (order.index) return (this->*order.to_top)();
    go_top_in_file();
}

void DbfFile::go_next() {
    DbfRecursionGuard guard(this);
    if (order.index) return (this->*order.next)();
    go_next_in_file();
}

void DbfFile::go_bottom() {
    if (order.index) return (this->*order.to_bottom)();
    go_last_in_file();
}

void DbfFile::go_top_in_file() {
    bof = eof = false;
    recno = 1;
    if (!go(1, shown_record, READAHEAD_DROP | READAHEAD_BLOCK)) {
        show_blank();
        bof = eof = true;
    }
    std::memcpy(saved_record.get(), shown_record, record_length);
}

// From end of file the same number is tried again, so that a record another
// process appended meanwhile is found.
void DbfFile::go_next_in_file() {
    bool was_eof = eof;
    bof = eof = false;
    if (!was_eof) ++recno;
    if (!go(recno, shown_record, READAHEAD_BLOCK)) {
        show_blank();
        eof = true;
        if (recno == 1) bof = true;
    }
    std::memcpy(saved_record.get(), shown_record, record_length);
}

// The last record by the header's count; an empty or unreadable end shows
// the blank record at number 1 with both flags set.
void DbfFile::go_last_in_file() {
    bof = eof = false;
    refresh_dbf_header();
    if (record_count > 0 && go(record_count, shown_record, READAHEAD_DROP | READAHEAD_DIRECT)) {
        recno = record_count;
    } else {
        recno = 1;
        show_blank();
        bof = eof = true;
    }
    std::memcpy(saved_record.get(), shown_record, record_length);
}

// Backward moves read one record each. Before record 1 the flag bof is set
// and dbf_error_record_out_of_range raised, the record left as it was: the
// table object looks at bof first.
void DbfFile::go_prev() {
    DbfRecursionGuard guard(this);
    if (bof) throw dbf_error_bof();
    if (eof) {
        if (order.index) return (this->*order.to_bottom)();
        return go_last_in_file();
    }
    if (order.index) return (this->*order.previous)();
    bof = eof = false;
    if (recno == 1) bof = true;
    readahead_count = 0;
    if (recno == 1) throw dbf_error_record_out_of_range();
    if (!go(recno - 1, shown_record, READAHEAD_DIRECT)) throw dbf_error_eof();
    --recno;
    std::memcpy(saved_record.get(), shown_record, record_length);
}

void DbfFile::go_eof() {
    recno = record_count + 1;
    bof = false;
    eof = true;
    show_blank();
    std::memcpy(saved_record.get(), blank_record.get(), record_length);
}

void DbfFile::go_to_in_file(uint64_t number) {
    if (!go(number, scratch_record.get(), READAHEAD_DROP | READAHEAD_DIRECT))
        throw dbf_error_record_out_of_range();
    std::memcpy(saved_record.get(), scratch_record.get(), record_length);
    std::memcpy(shown_record, scratch_record.get(), record_length);
    recno = number;
    bof = eof = false;
}

void DbfFile::go_to(VmStack* stack, uint64_t number) {
    DbfRecursionGuard guard(this);
    go_to_in_file(number);
    if (order.index) go_to_in_index(stack);
}


uint64_t DbfFile::reccount() {
    refresh_dbf_header();
    return record_count;
}

// Only a shared table can have grown behind this object's back.
void DbfFile::refresh_dbf_header() {
    if (file->is_shared()) read_dbf_header();
}

}  // namespace zobase
