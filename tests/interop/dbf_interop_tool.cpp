// Writes and dumps tables through the table engine for the interoperability
// test (dbf_interop.py), which checks them against python3-dbf.
//
//   dbf_interop_tool write TABLE.dbf SPEC   creates the table SPEC describes
//   dbf_interop_tool dump TABLE.dbf         prints its fields and records
//
// Both use one tab-separated text form, UTF-8:
//   codepage <number>
//   version <byte>            optional: the version byte set after creation
//   field <name> <letter> <length> <decimals> <flags: N nullable, B binary>
//   record <value> ...        one value per field
// A value is "\N" for null, otherwise text with "\t", "\n" and "\\"
// escaped: dates as YYYYMMDD, datetimes as YYYYMMDDhhmmss (both empty when
// empty), logicals as T or F, currency with four decimals, binary strings
// in hexadecimal.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tables/dbf_file.h"
#include "text/charset.h"
#include "text/collation.h"
#include "values/date.h"
#include "values/money.h"
#include "values/variant.h"

using namespace zobase;

namespace {

std::vector<std::string> split_tabs(const std::string& line) {
    std::vector<std::string> parts;
    std::stringstream in(line);
    std::string part;
    while (std::getline(in, part, '\t')) parts.push_back(part);
    if (!line.empty() && line.back() == '\t') parts.push_back("");
    return parts;
}

std::string unescape(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out += text[i];
            continue;
        }
        char next = text[++i];
        out += next == 't' ? '\t' : next == 'n' ? '\n' : next;
    }
    return out;
}

std::string escape(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\t') out += "\\t";
        else if (c == '\n') out += "\\n";
        else if (c == '\\') out += "\\\\";
        else out += c;
    }
    return out;
}

struct spec_field_st {
    fielddef_st def;
    char letter;
};

void set_value(DbfFile* table, uint64_t index, char letter, const std::string& text) {
    if (text == "\\N") return table->set_null(index);
    std::string value = unescape(text);
    switch (letter) {
    case 'D': {
        date_st date = {0};
        if (!value.empty())
            serial_julian_date(std::stoi(value.substr(0, 4)), std::stoi(value.substr(4, 2)),
                               std::stoi(value.substr(6, 2)), &date);
        return table->set_date(index, date);
    }
    case 'T': {
        datetime_st moment = {0, 0};
        if (!value.empty())
            serial_julian_date(std::stoi(value.substr(0, 4)), std::stoi(value.substr(4, 2)),
                               std::stoi(value.substr(6, 2)), std::stoi(value.substr(8, 2)),
                               std::stoi(value.substr(10, 2)), std::stoi(value.substr(12, 2)), &moment);
        return table->set_datetime(index, moment);
    }
    case 'L': return table->set_logical(index, value == "T");
    case 'I': return table->set_integer(index, std::stoll(value));
    case 'Y': {
        money_type_st money;
        if (string_to_money(value.data(), value.size(), nullptr, &money, U'.', U',') != 0)
            throw std::runtime_error("bad currency " + value);
        return table->set_money(index, money);
    }
    case 'B':
    case 'N':
    case 'F': return table->set_numeric(index, {std::strtod(value.c_str(), nullptr), table->get_field(index)->decimals});
    default: return table->set_string(index, String::fromBytes(value.data(), value.size(), Charset::utf8));
    }
}

int write_table(const char* name, const char* spec_path) {
    std::ifstream spec(spec_path);
    createopts_st options;
    int version = 0;
    std::vector<spec_field_st> fields;
    std::vector<std::vector<std::string>> records;
    for (std::string line; std::getline(spec, line);) {
        std::vector<std::string> parts = split_tabs(line);
        if (parts.empty()) continue;
        if (parts[0] == "codepage") options.codepage = std::stoll(parts[1]);
        if (parts[0] == "version") version = std::stoi(parts[1], nullptr, 0);
        if (parts[0] == "record") records.emplace_back(parts.begin() + 1, parts.end());
        if (parts[0] != "field") continue;
        spec_field_st field = {};
        field.letter = parts[2][0];
        field.def.type = field_type_number(field.letter);
        std::snprintf(field.def.name, sizeof field.def.name, "%s", parts[1].c_str());
        field.def.length = std::stoull(parts[3]);
        field.def.default_length = field.def.length == 0;
        field.def.decimals = std::stoull(parts[4]);
        field.def.default_decimals = field.letter != 'B' && field.def.decimals == 0;
        std::string flags = parts.size() > 5 ? parts[5] : "";
        field.def.nullable = flags.find('N') != std::string::npos ? FIELD_NULLABLE : FIELD_NOT_NULLABLE;
        field.def.binary = flags.find('B') != std::string::npos;
        fields.push_back(field);
    }
    std::vector<fielddef_st> defs;
    for (const spec_field_st& field : fields) defs.push_back(field.def);
    File* file = create_file(String(name), 0);
    std::unique_ptr<DbfFile> table(DbfFile::create(file, &options, defs.data(), defs.size()));
    for (const std::vector<std::string>& record : records) {
        table->begin_append();
        for (size_t i = 0; i < fields.size() && i < record.size(); ++i)
            set_value(table.get(), i, fields[i].letter, record[i]);
        table->update(nullptr);
    }
    table->flush();
    if (version) {
        const char byte = static_cast<char>(version);
        table->file->writeex(0, &byte, 1);
    }
    return 0;
}

std::string hex_of(const String& bytes) {
    std::string out;
    char digits[3];
    for (size_t i = 0; i < bytes.size(); ++i) {
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(bytes.read()[i]));
        out += digits;
    }
    return out;
}

std::string text_of(const Variant& value) {
    char buffer[64];
    int y, mo, d, h, mi, s, ms;
    switch (value.tag) {
    case TAG_NULL: return "\\N";
    case TAG_FALSE: return "F";
    case TAG_TRUE: return "T";
    case TAG_INTEGER: return std::to_string(value.integer);
    case TAG_NUMERIC: std::snprintf(buffer, sizeof buffer, "%.17g", value.numeric.value); return buffer;
    case TAG_MONEY: return money_to_string(value.money).u8str();
    case TAG_DATE:
        if (value.date.julian == 0) return "";
        unserial_julian_date(value.date, &y, &mo, &d);
        std::snprintf(buffer, sizeof buffer, "%04d%02d%02d", y, mo, d);
        return buffer;
    case TAG_DATETIME:
        if (value.datetime.julian == 0) return "";
        unserial_julian_date(value.datetime, &y, &mo, &d, &h, &mi, &s, &ms);
        std::snprintf(buffer, sizeof buffer, "%04d%02d%02d%02d%02d%02d", y, mo, d, h, mi, s);
        return buffer;
    case TAG_STRING:
        if (value.str().get_charset() == Charset::binary) return hex_of(value.str());
        return escape(value.str().u8str());
    default: return "?";
    }
}

int dump_table(const char* name) {
    // A table that fails to open leaves its file to the caller.
    std::unique_ptr<File> file(open_file(String(name), FILE_OPEN_READ));
    std::unique_ptr<DbfFile> table(DbfFile::open(file.get()));
    file.release();
    std::printf("version\t%d\ncodepage\t%s\n", table->version, table->charset->name());
    for (const DbfField* field : table->visible_fields)
        std::printf("field\t%s\t%c\t%" PRIu64 "\t%" PRIu64 "\t%s%s\n", table->field_name(field).u8str().c_str(),
                    field->type, field->length, field->decimals, field->nullable ? "N" : "",
                    field->binary ? "B" : "");
    for (uint64_t recno = 1; recno <= table->record_count; ++recno) {
        table->file->readex(static_cast<std::streamoff>(table->record_position(recno)), table->shown_record,
                            table->record_length);
        std::string line = table->shown_record[0] == ' ' ? "record" : "deleted";
        for (uint64_t i = 0; i < table->visible_fields.size(); ++i) {
            Variant value;
            table->get_variant(i, &value);
            line += "\t" + text_of(value);
            value.release(nullptr);
        }
        std::printf("%s\n", line.c_str());
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    __init_character_sets();
    __init_collations();
    try {
        if (argc == 4 && std::strcmp(argv[1], "write") == 0) return write_table(argv[2], argv[3]);
        if (argc == 3 && std::strcmp(argv[1], "dump") == 0) return dump_table(argv[2]);
    } catch (const Exception& e) {
        std::fprintf(stderr, "dbf_interop_tool: %s\n", e.name());
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "dbf_interop_tool: %s\n", e.what());
        return 2;
    }
    std::fprintf(stderr, "usage: dbf_interop_tool write TABLE SPEC | dump TABLE\n");
    return 1;
}
