// Opening a DBF table: the header and descriptor images, the open sequence
// with its checks, and the memo file that belongs to the table.
#include "tables/dbf_file.h"
#include "tables/index.h"
#include "tables/index_file.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <ctime>
#include <string>

#include "tables/byte_order.h"
#include "tables/dbf_codepages.h"
#include "tables/field_codecs.h"
#include "text/charset.h"
#include "base/call_trace.h"

namespace zobase {

namespace {

// Set once when the library is loaded.
const int64_t load_time = static_cast<int64_t>(std::time(nullptr)) * TIME_UNITS_PER_SECOND;

// More descriptors than a 16-bit header length can describe.
constexpr uint64_t MAX_DESCRIPTORS = (0xFFFF - DBF_HEADER_SIZE - 1) / DBF_DESCRIPTOR_SIZE;

std::tm local_time_of(int64_t units) {
    std::time_t seconds = static_cast<std::time_t>(units / TIME_UNITS_PER_SECOND);
    std::tm broken = {};
    localtime_r(&seconds, &broken);
    return broken;
}

// The date bytes complete the broken-down time of the process start: its
// century, and its hour, minute and second.
int64_t header_date_to_units(uint8_t year, uint8_t month, uint8_t day) {
    std::tm broken = local_time_of(runtime_load_time());
    int century = (broken.tm_year + 1900) / 100 * 100;
    broken.tm_year = century + year - 1900;
    broken.tm_mon = month;
    broken.tm_mday = day;
    broken.tm_isdst = -1;
    return static_cast<int64_t>(std::mktime(&broken)) * TIME_UNITS_PER_SECOND;
}

std::string lower_ascii(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// The memo file extension for a table extension, compared without regard to
// case; null for a table kind that has no memo file.
const char* memo_extension_for(const std::string& table_extension) {
    static const struct {
        const char* table;
        const char* memo;
    } pairs[] = {{".dbf", "fpt"}, {".scx", "sct"}, {".vcx", "vct"},
                 {".mnx", "mnt"}, {".dbc", "dct"}, {".frx", "frt"}};
    std::string lower = lower_ascii(table_extension);
    for (const auto& pair : pairs)
        if (lower == pair.table) return pair.memo;
    return nullptr;
}

}  // namespace

int64_t runtime_load_time() noexcept { return load_time; }

// A failure to write what is pending can only be dropped here; close()
// reports it to a caller that closes explicitly.
DbfFile::~DbfFile() {
    try {
        close();
    } catch (const Exception&) {
    }
}

DbfFile* DbfFile::open(File* file) {
    ZO_TRACE();
    std::unique_ptr<DbfFile> table(new DbfFile);
    table->file.reset(file);
    try {
        table->run_open_sequence();
    } catch (...) {
        table->file.release();
        throw;
    }
    return table.release();
}

void DbfFile::run_open_sequence() {
    read_dbf_header();
    read_field_descriptors();
    std::memset(backlink, 0, sizeof backlink);
    file->readex(static_cast<std::streamoff>(backlink_position), backlink, sizeof backlink);
    setup_record_engine();
    for (DbfField& field : fields) set_field_readwrite(&field);
    for (DbfField* field : autoinc_fields) set_field_readonly(field);
    if (file->is_writable()) check_record_count();
    open_memo_file();
    setup_pending_appends();
}

// Appended records of an unshared writable table collect in memory up to
// this size before they go out together.
constexpr uint64_t PENDING_APPEND_BYTES = 256 * 1024;

void DbfFile::setup_pending_appends() {
    stored_count = record_count;
    pending_capacity = 0;
    pending.reset();
    if (!file->is_writable() || file->is_shared()) return;
    pending_capacity = std::max<uint64_t>(1, PENDING_APPEND_BYTES / record_length);
    pending.reset(new char[pending_capacity * record_length]);
}

// The memo file closes even when the pending records fail to go out.
void DbfFile::close() {
    struct memo_closer {
        FptFile* fpt;
        ~memo_closer() {
            if (fpt) fpt->close();
        }
    } memo{fpt.get()};
    if (!file) return;
    try {
        flush();
        if (cdx) cdx->close();
    } catch (...) {
        file->close();
        throw;
    }
    file->close();
}

void DbfFile::free() {
    memo_fields.clear();
    autoinc_fields.clear();
    system_fields.clear();
    visible_fields.clear();
    fields.clear();
    nullflags = nullptr;
    field_count = 0;
    nullflag_bits = 0;
    version = 0;
    version_info = nullptr;
    codepage_byte = 0;
    has_memo = has_structural_cdx = false;
    terminator_position = backlink_position = record1_position = 0;
    header_length = record_length = record_count = max_record_count = 0;
    last_update = 0;
    std::memset(backlink, 0, sizeof backlink);
    std::memset(kept_header_bytes, 0, sizeof kept_header_bytes);
}

void DbfFile::read_dbf_header() {
    char header[DBF_HEADER_SIZE];
    if (file->readex(0, header, sizeof header) < sizeof header) throw dbf_error_buffer_underrun();
    const dbf_version_st* found = find_dbf_version(static_cast<uint8_t>(header[0]));
    if (!found) throw dbf_unsupported_version();
    version = found->version;
    version_info = found;
    max_record_count = found->max_record_count;
    last_update = header_date_to_units(header[1], header[2], header[3]);
    record_count = read_le32(header + 4);
    header_length = read_le16(header + 8);
    record_length = read_le16(header + 10);
    std::memcpy(kept_header_bytes, header + 20, sizeof kept_header_bytes);
    has_structural_cdx = (header[28] & 0x01) != 0;
    has_memo = (header[28] & 0x02) != 0;
    codepage_byte = static_cast<uint8_t>(header[29]);
    int codepage = codepage_of_dbf_byte(codepage_byte);
    if (codepage == 0) throw dbf_error_codepage_not_supported();
    charset = get_charset_by_codepage(codepage, false);
    charset_nocptrans = get_charset_by_codepage(codepage, true);
    if (!charset || !charset_nocptrans) throw dbf_error_codepage_not_supported();
}

void DbfFile::write_dbf_header() {
    char header[DBF_HEADER_SIZE] = {};
    std::tm updated = local_time_of(last_update);
    header[0] = static_cast<char>(version);
    header[1] = static_cast<char>((updated.tm_year + 1900) % 100);
    header[2] = static_cast<char>(updated.tm_mon);  // 0-based, see dbf_file.h
    header[3] = static_cast<char>(updated.tm_mday);
    write_le32(header + 4, static_cast<uint32_t>(record_count));
    write_le16(header + 8, static_cast<uint16_t>(header_length));
    write_le16(header + 10, static_cast<uint16_t>(record_length));
    std::memcpy(header + 20, kept_header_bytes, sizeof kept_header_bytes);
    header[28] = static_cast<char>((has_structural_cdx ? 0x01 : 0) | (has_memo ? 0x02 : 0));
    header[29] = static_cast<char>(codepage_byte);
    file->writeex(0, header, sizeof header);
}

// The descriptor list ends at a byte 0x0D; the position before each read is
// the candidate terminator position. A terminator found by a short read
// still ends the list correctly.
void DbfFile::read_field_descriptors() {
    std::vector<uint64_t> positions;
    file->seek(static_cast<std::streamoff>(DBF_HEADER_SIZE));
    for (uint64_t at = DBF_HEADER_SIZE;; at += DBF_DESCRIPTOR_SIZE) {
        char raw[DBF_DESCRIPTOR_SIZE];
        uint64_t got = file->read(raw, sizeof raw);
        if (got == 0) throw dbf_error_buffer_underrun();
        if (raw[0] == DBF_TERMINATOR) {
            terminator_position = at;
            backlink_position = at + 1;
            break;
        }
        if (got < sizeof raw) throw dbf_error_buffer_underrun();
        // No header length could describe more: the length check would fail.
        if (positions.size() == MAX_DESCRIPTORS) throw dbf_error_file_corruption();
        positions.push_back(at);
    }
    fields.assign(positions.size(), DbfField());
    field_count = fields.size();
    for (size_t i = 0; i < fields.size(); ++i) {
        fields[i].descriptor_position = positions[i];
        read_dbf_field_header(&fields[i]);
    }
}

void DbfFile::read_dbf_field_header(DbfField* field) {
    char* raw = field->descriptor;
    if (file->readex(static_cast<std::streamoff>(field->descriptor_position), raw,
                     DBF_DESCRIPTOR_SIZE) < DBF_DESCRIPTOR_SIZE)
        throw dbf_error_buffer_underrun();
    std::memset(field->name, 0, sizeof field->name);
    std::memcpy(field->name, raw, strnlen(raw, 11));
    field->type = raw[11];
    field->offset = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(read_le32(raw + 12))));
    field->length = static_cast<uint8_t>(raw[16]);
    field->decimals = static_cast<uint8_t>(raw[17]);
    auto flags = static_cast<uint8_t>(raw[18]);
    field->system = (flags & DBF_FIELD_SYSTEM) != 0;
    field->nullable = (flags & DBF_FIELD_NULLABLE) != 0;
    field->binary = (flags & DBF_FIELD_BINARY) != 0;
    field->autoincrement = (flags & DBF_FIELD_AUTOINC) != 0;
    field->autoinc_next = read_le32(raw + 19);
    field->autoinc_step = static_cast<uint8_t>(raw[23]);
}

void DbfFile::write_dbf_field_header(DbfField* field) {
    char* raw = field->descriptor;
    std::memset(raw, 0, 11);
    std::memcpy(raw, field->name, strnlen(field->name, 11));
    raw[11] = field->type;
    write_le32(raw + 12, static_cast<uint32_t>(field->offset));
    raw[16] = static_cast<char>(field->length);
    raw[17] = static_cast<char>(field->decimals);
    uint8_t flags = static_cast<uint8_t>(raw[18]) & 0xF0;
    if (field->system) flags |= DBF_FIELD_SYSTEM;
    if (field->nullable) flags |= DBF_FIELD_NULLABLE;
    if (field->binary) flags |= DBF_FIELD_BINARY;
    if (field->autoincrement) flags |= DBF_FIELD_AUTOINC;
    raw[18] = static_cast<char>(flags);
    write_le32(raw + 19, field->autoinc_next);
    raw[23] = static_cast<char>(field->autoinc_step);
    file->writeex(static_cast<std::streamoff>(field->descriptor_position), raw, DBF_DESCRIPTOR_SIZE);
}

// Whole records only: a partial last record or a trailing end-of-file byte
// is tolerated.
void DbfFile::check_record_count() {
    DbfAppendLock lock(this);
    read_dbf_header();
    if (record_length == 0) throw dbf_error_file_corruption();
    int64_t size = file->size();
    uint64_t whole = size > static_cast<int64_t>(header_length)
                         ? (static_cast<uint64_t>(size) - header_length) / record_length
                         : 0;
    if (whole != record_count) throw dbf_invalid_reccount_detected();
}

void DbfFile::open_memo_file() {
    if (memo_fields.empty() || fpt) return;
    std::filesystem::path table_path(file->name);
    const char* memo_extension = memo_extension_for(table_path.extension().string());
    if (!memo_extension) throw dbf_fpt_file_missing();
    std::filesystem::path found;
    if (!exists_ci(std::filesystem::path(table_path).replace_extension(memo_extension), &found))
        throw dbf_fpt_file_missing();
    fpt.reset(new FptFile(open_file(String(found), file->flags)));
    fpt->open();
}

String DbfFile::field_name(const DbfField* field) const {
    return String::fromBytes(field->name, std::strlen(field->name), charset);
}

}  // namespace zobase
