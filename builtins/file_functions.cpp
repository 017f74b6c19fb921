// Whole files and folders: file, filetostr, strtofile, directory, adir,
// curdir, fdate and ftime. Relative names start at the current directory,
// and a name not found as written is matched without regard to case.
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/array_helpers.h"
#include "builtins/file_paths.h"
#include "builtins/handlers.h"
#include "builtins/machine_charset.h"
#include "values/date.h"
#include "vm/screen.h"

namespace zobase {

namespace fs = std::filesystem;

namespace {

constexpr int ADIR_COLUMNS = 5;  // name, size, date, time, attributes

// strtofile's numeric options.
enum WriteFlag { WRITE_APPEND = 1, WRITE_UTF16_BOM = 2, WRITE_UTF8_BOM = 4 };
constexpr long long WRITE_ALL_FLAGS = 7;
constexpr char UTF8_BOM[] = "\xEF\xBB\xBF";
constexpr char UTF16LE_BOM[] = "\xFF\xFE";

struct local_time_st {
    int year, month, day, hour, minute, second;
};

local_time_st local_time_of(time_t seconds) {
    std::tm parts{};
    localtime_r(&seconds, &parts);
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}

String clock_text(const local_time_st& t) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", t.hour, t.minute, t.second);
    return String(text);
}

// The status of a file the program names; error 1 when there is none.
struct stat status_of(const String& name, fs::path* found) {
    struct stat status;
    if (!find_existing(name, found) || ::stat(found->c_str(), &status) != 0)
        throw RuntimeError(ERR_FILE_NOT_FOUND, name);
    return status;
}

std::string read_whole_file(const fs::path& path, const String& name) {
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status;
    if (fd < 0 || ::fstat(fd, &status) != 0 || S_ISDIR(status.st_mode)) {
        if (fd >= 0) ::close(fd);
        throw RuntimeError(ERR_FILE_ACCESS_DENIED, name);
    }
    std::string bytes;
    bytes.reserve(static_cast<size_t>(status.st_size));
    char buffer[65536];
    for (;;) {
        ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            ::close(fd);
            throw RuntimeError(ERR_FILE_READ, name);
        }
        if (got == 0) break;
        bytes.append(buffer, static_cast<size_t>(got));
    }
    ::close(fd);
    return bytes;
}

// Without a charset named, a byte order mark tells UTF-8 or UTF-16 and is
// dropped; other bytes are text of the machine's charset.
String text_of_file(VmStack* stack, const std::string& bytes) {
    if (bytes.compare(0, 3, UTF8_BOM) == 0)
        return String::fromBytes(bytes.data() + 3, bytes.size() - 3, Charset::utf8);
    if (bytes.compare(0, 2, UTF16LE_BOM) == 0)
        return String::fromBytes(bytes.data() + 2, bytes.size() - 2, Charset::utf16le);
    return String::fromBytes(bytes.data(), bytes.size(), machine_charset(stack));
}

// The text in another charset; a character it lacks is 9011.
String converted(const String& text, const Charset* target) {
    String copy = text;
    try {
        copy.convert(target, 0, CSTRAN_STRICT);
    } catch (const cstran_chars_lost&) {
        throw RuntimeError(ERR_CHARSET_TRANSLATION, String(target->name()));
    }
    return copy;
}

struct write_request_st {
    bool append = false;
    std::string prefix;  // a byte order mark
    String text;
};

// strtofile's third argument: .T. appends; a number is a set of WriteFlag
// bits; a text names the charset to write the text in.
write_request_st write_request(VmStack* stack, unsigned long long argc) {
    write_request_st request;
    request.text = string_argument(stack, 1);
    if (argc < 3) return request;
    const Variant& option = argument(stack, 3);
    if (option.is_logical()) {
        request.append = option.tag == TAG_TRUE;
    } else if (option.tag == TAG_STRING) {
        request.text = converted(request.text, charset_argument(option.str()));
    } else if (option.is_number()) {
        long long flags = static_cast<integer_type_st>(option);
        if (flags < 0 || flags > WRITE_ALL_FLAGS || (flags & WRITE_UTF16_BOM && flags & WRITE_UTF8_BOM))
            throw RuntimeError(ERR_ARGUMENT_INVALID);
        request.append = flags & WRITE_APPEND;
        if (flags & WRITE_UTF16_BOM) {
            request.prefix = UTF16LE_BOM;
            request.text = converted(request.text, Charset::utf16le);
        } else if (flags & WRITE_UTF8_BOM) {
            request.prefix = UTF8_BOM;
            request.text = converted(request.text, Charset::utf8);
        }
    } else {
        throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
    return request;
}

bool write_all(int fd, const char* bytes, size_t size) {
    while (size > 0) {
        ssize_t written = ::write(fd, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

// An existing file keeps the spelling it has on disk.
void write_file(const String& name, const write_request_st& request) {
    fs::path path(name);
    fs::path existing;
    if (find_existing(name, &existing)) path = existing;
    int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (request.append ? O_APPEND : O_TRUNC);
    int fd = ::open(path.c_str(), flags, 0666);
    if (fd < 0) throw RuntimeError(ERR_CANNOT_CREATE_FILE, name);
    bool ok = write_all(fd, request.prefix.data(), request.prefix.size()) &&
              write_all(fd, request.text.read(), request.text.size());
    if (::close(fd) != 0) ok = false;
    if (!ok) throw RuntimeError(ERR_FILE_WRITE, name);
}

// adir's entry filter: folders with "D", hidden names with "H".
struct adir_filter_st {
    std::string pattern;  // lower case, for fnmatch
    bool folders = false;
    bool hidden = false;
};

adir_filter_st adir_filter(const std::string& pattern, const String& attributes) {
    adir_filter_st filter;
    String lowered = String(pattern.c_str()).lower();
    filter.pattern = lowered.u8str();
    if (filter.pattern.empty() || filter.pattern == "*.*") filter.pattern = "*";
    for (char c : attributes.u8str()) {
        switch (c) {
        case 'd': case 'D': filter.folders = true; break;
        case 'h': case 'H': filter.hidden = true; break;
        case 's': case 'S': case 'v': case 'V': break;  // no such entries here
        default: throw RuntimeError(ERR_ARGUMENT_INVALID);
        }
    }
    return filter;
}

bool adir_accepts(const adir_filter_st& filter, const fs::directory_entry& entry) {
    std::string name = entry.path().filename().string();
    if (name.front() == '.' && !filter.hidden) return false;
    std::error_code error;
    if (entry.is_directory(error) && !filter.folders) return false;
    std::string lowered = String(name.c_str()).lower().u8str();
    return fnmatch(filter.pattern.c_str(), lowered.c_str(), FNM_NOESCAPE) == 0;
}

// "RHSAD": read-only, hidden, system, archive, directory, "." for each not set.
String attribute_text(const fs::path& path, const struct stat& status) {
    std::string text = ".....";
    if (::access(path.c_str(), W_OK) != 0) text[0] = 'R';
    if (path.filename().string().front() == '.') text[1] = 'H';
    if (S_ISDIR(status.st_mode)) text[4] = 'D';
    else text[3] = 'A';
    return String(text.c_str());
}

struct adir_row_st {
    std::string name;
    fs::path path;
    struct stat status;
};

void fill_adir_row(VmStack* stack, Array* array, uint64_t row, const adir_row_st& entry) {
    uint64_t first = (row - 1) * ADIR_COLUMNS;
    local_time_st changed = local_time_of(entry.status.st_mtime);
    date_st day{};
    serial_julian_date(changed.year, static_cast<unsigned>(changed.month), static_cast<unsigned>(changed.day), &day);
    Variant date_value;
    date_value.set(day);
    store_string(stack, array, first + 1, String(entry.name.c_str()));
    store_integer(stack, array, first + 2, S_ISDIR(entry.status.st_mode) ? 0 : entry.status.st_size);
    store_element(stack, array, first + 3, date_value);
    store_string(stack, array, first + 4, clock_text(changed));
    store_string(stack, array, first + 5, attribute_text(entry.path, entry.status));
}

}  // namespace

// file(name [, flags]): whether the file exists, as written, without regard
// to case, or along SET PATH. Flag 1 lets folders count too.
void stackcall_file(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    const String& name = string_argument(stack, 1);
    long long flags = argc >= 2 ? argument(stack, 2).integer : 0;
    if (flags < 0 || flags > 1) throw RuntimeError(ERR_ARGUMENT_INVALID);
    fs::path found;
    std::error_code error;
    if (find_existing(name, &found) && (fs::is_regular_file(found, error) || (flags && fs::is_directory(found, error))))
        return result->set_true();
    String on_path;
    result->set_bool(name.size() && stack->services && stack->services->find_file(name, &on_path));
}

// filetostr(name [, charset]): the whole file as text of that charset.
void stackcall_filetostr(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    const String& name = string_argument(stack, 1);
    const Charset* charset = argc >= 2 ? charset_argument(string_argument(stack, 2)) : nullptr;
    if (console_stream_of(name) == CONSOLE_STDIN) {
        String input = read_console_input(stack);
        if (charset) input = String::fromBytes(input.read(), input.size(), charset);
        return result->set_string(input);
    }
    fs::path found;
    if (!find_existing(name, &found)) throw RuntimeError(ERR_FILE_NOT_FOUND, name);
    std::string bytes = read_whole_file(found, name);
    result->set_string(charset ? String::fromBytes(bytes.data(), bytes.size(), charset) : text_of_file(stack, bytes));
}

// strtofile(text, name [, option]): writes the text's bytes, returns their count.
void stackcall_strtofile(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    const String& name = string_argument(stack, 2);
    write_request_st request = write_request(stack, argc);
    ConsoleStream stream = console_stream_of(name);
    if (stream == CONSOLE_STDOUT || stream == CONSOLE_STDERR) {
        Screen* screen = stack->services->screen();
        if (stream == CONSOLE_STDOUT) screen->out(request.text);
        else screen->err(request.text);
    } else {
        if (stream != CONSOLE_NONE || name.size() == 0) throw RuntimeError(ERR_CANNOT_CREATE_FILE, name);
        write_file(name, request);
    }
    result->set_integer(static_cast<long long>(request.prefix.size() + request.text.size()));
}

// directory(name [, flags]): the folder's full path as spelled on disk, or
// "" when there is none; hidden folders (".name") only with flag 1.
void stackcall_directory(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    long long flags = argc >= 2 ? argument(stack, 2).integer : 0;
    if (flags < 0 || flags > 1) throw RuntimeError(ERR_ARGUMENT_INVALID);
    fs::path found;
    std::error_code error;
    if (!find_existing(string_argument(stack, 1), &found) || !fs::is_directory(found, error))
        return result->set_string(String(""));
    fs::path full = fs::weakly_canonical(fs::absolute(found, error), error);
    std::string last = full.filename().string();
    if (!flags && !last.empty() && last.front() == '.') return result->set_string(String(""));
    result->set_string(String(full.string().c_str()));
}

// curdir(): the current directory with a separator at its end.
void stackcall_curdir(VmStack*, unsigned long long, Variant* result) {
    std::error_code error;
    std::string folder = fs::current_path(error).string();
    if (folder.empty() || folder.back() != '/') folder += '/';
    result->set_string(String(folder.c_str()));
}

// adir(@a [, skeleton [, attributes [, flags]]]): a row per matching entry:
// name, size, date, time ("hh:mm:ss") and attributes ("RHSAD"). Entries are
// in name order; with none found the array is left as it was. The names
// keep their case, so the flags (0 to 2) change nothing.
void stackcall_adir(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    std::string skeleton = argc >= 2 ? string_argument(stack, 2).u8str() : "*";
    String attributes = argc >= 3 ? string_argument(stack, 3) : String("");
    long long flags = argc >= 4 ? argument(stack, 4).integer : 0;
    if (flags < 0 || flags > 2) throw RuntimeError(ERR_ARGUMENT_INVALID);
    size_t slash = skeleton.find_last_of('/');
    std::string folder_name = slash == std::string::npos ? "" : skeleton.substr(0, slash + 1);
    adir_filter_st filter = adir_filter(skeleton.substr(folder_name.size()), attributes);

    std::vector<adir_row_st> rows;
    fs::path folder;
    std::error_code error;
    if (folder_name.empty() || find_existing(String(folder_name.c_str()), &folder)) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder.empty() ? "." : folder, error)) {
            adir_row_st row{entry.path().filename().string(), entry.path(), {}};
            if (adir_accepts(filter, entry) && ::stat(row.path.c_str(), &row.status) == 0) rows.push_back(row);
        }
    }
    std::sort(rows.begin(), rows.end(), [](const adir_row_st& a, const adir_row_st& b) { return a.name < b.name; });
    if (!rows.empty()) {
        Array* array = Param(stack, 1)->dimension(stack, rows.size(), ADIR_COLUMNS);
        for (uint64_t row = 1; row <= rows.size(); ++row) fill_adir_row(stack, array, row, rows[row - 1]);
    }
    result->set_integer(static_cast<long long>(rows.size()));
}

// fdate(name [, type]): when the file last changed, local time; type 0
// gives the day at midnight, type 1 the time as well.
void stackcall_fdate(VmStack* stack, unsigned long long argc, Variant* result) {
    long long type = argc >= 2 ? argument(stack, 2).integer : 0;
    if (type < 0 || type > 1) throw RuntimeError(ERR_ARGUMENT_INVALID);
    fs::path found;
    local_time_st t = local_time_of(status_of(string_argument(stack, 1), &found).st_mtime);
    if (type == 0) t.hour = t.minute = t.second = 0;
    datetime_st when{};
    serial_julian_date(t.year, static_cast<unsigned>(t.month), static_cast<unsigned>(t.day),
                       static_cast<unsigned>(t.hour), static_cast<unsigned>(t.minute),
                       static_cast<unsigned>(t.second), &when);
    result->set(when);
}

// ftime(name): the time of day the file last changed, "hh:mm:ss".
void stackcall_ftime(VmStack* stack, unsigned long long, Variant* result) {
    fs::path found;
    result->set_string(clock_text(local_time_of(status_of(string_argument(stack, 1), &found).st_mtime)));
}

}  // namespace zobase
