// Low-level file access by handle: fopen, fclose, fread, fgets, fseek,
// ftell, feof and ferror. These never raise for a failing file: they answer
// -1, "" or .F., and ferror() tells the reason by its code until the next
// call of the family. Handles are numbers from 1, shared by the process.
// "zo://stdin", "zo://stdout" and "zo://stderr" open streams through the
// Screen, so a host that captures the console captures these too.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/file_paths.h"
#include "builtins/handlers.h"
#include "builtins/machine_charset.h"
#include "vm/screen.h"

namespace zobase {

namespace {

// ferror() codes, as the dialect numbers them.
enum FileErrorCode {
    FERROR_NONE = 0,
    FERROR_NOT_FOUND = 2,
    FERROR_TOO_MANY_FILES = 4,
    FERROR_ACCESS_DENIED = 5,
    FERROR_INVALID_HANDLE = 6,
    FERROR_OUT_OF_MEMORY = 8,
    FERROR_SEEK = 25,
    FERROR_DISK_FULL = 29,
    FERROR_GENERAL = 31,
};

// fopen's modes; 10 and up ask for unbuffered access, which changes nothing here.
enum OpenMode { OPEN_READ = 0, OPEN_WRITE = 1, OPEN_READ_WRITE = 2 };
constexpr long long OPEN_UNBUFFERED = 10;
constexpr long long FGETS_DEFAULT_BYTES = 254;

thread_local int last_file_error = FERROR_NONE;

int error_code_of(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR: return FERROR_NOT_FOUND;
    case EMFILE:
    case ENFILE: return FERROR_TOO_MANY_FILES;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR: return FERROR_ACCESS_DENIED;
    case EBADF: return FERROR_INVALID_HANDLE;
    case ENOMEM: return FERROR_OUT_OF_MEMORY;
    case ESPIPE:
    case EINVAL: return FERROR_SEEK;
    case ENOSPC: return FERROR_DISK_FULL;
    default: return FERROR_GENERAL;
    }
}

struct open_file_st {
    FILE* stream;
    const Charset* charset;  // of the text that fread and fgets return
};

// The console streams as stdio streams over the Screen.
struct console_cookie_st {
    Screen* screen;
    ConsoleStream stream;
};

ssize_t console_read(void* cookie, char* buffer, size_t size) {
    auto* console = static_cast<console_cookie_st*>(cookie);
    if (console->stream != CONSOLE_STDIN) return 0;
    const Charset* charset = nullptr;
    return static_cast<ssize_t>(console->screen->read(buffer, size, size, &charset));
}

ssize_t console_write(void* cookie, const char* buffer, size_t size) {
    auto* console = static_cast<console_cookie_st*>(cookie);
    String text = String::fromBytes(buffer, size, Charset::utf8);
    if (console->stream == CONSOLE_STDOUT) console->screen->out(text);
    else if (console->stream == CONSOLE_STDERR) console->screen->err(text);
    else return 0;
    return static_cast<ssize_t>(size);
}

int console_close(void* cookie) {
    delete static_cast<console_cookie_st*>(cookie);
    return 0;
}

// The charset the screen reads standard input in.
const Charset* console_input_charset(Screen* screen) {
    const Charset* charset = nullptr;
    char none;
    screen->read(&none, 0, 0, &charset);
    return charset;
}

FILE* open_console(VmStack* stack, ConsoleStream stream, const Charset** charset) {
    if (!stack->services) {
        errno = ENOENT;
        return nullptr;
    }
    Screen* screen = stack->services->screen();
    if (stream == CONSOLE_STDIN && !*charset) *charset = console_input_charset(screen);
    cookie_io_functions_t functions{console_read, console_write, nullptr, console_close};
    FILE* file = fopencookie(new console_cookie_st{screen, stream}, stream == CONSOLE_STDIN ? "r" : "w", functions);
    // Unbuffered, so that a line typed at a terminal is read without waiting for more.
    if (file) setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

FILE* open_disk_file(const String& name, OpenMode mode) {
    std::filesystem::path path;
    if (!find_existing(name, &path)) {
        errno = ENOENT;
        return nullptr;
    }
    static const int flags[] = {O_RDONLY, O_WRONLY, O_RDWR};
    static const char* modes[] = {"rb", "wb", "r+b"};
    int fd = ::open(path.c_str(), flags[mode] | O_CLOEXEC);
    if (fd < 0) return nullptr;
    struct stat status;
    if (::fstat(fd, &status) != 0 || S_ISDIR(status.st_mode)) {
        ::close(fd);
        errno = EISDIR;
        return nullptr;
    }
    FILE* file = ::fdopen(fd, modes[mode]);
    if (!file) ::close(fd);
    return file;
}

// The process's open files by handle.
class HandleTable {
public:
    int add(const open_file_st& file) {
        std::lock_guard<std::mutex> guard(lock_);
        int handle = 1;
        while (files_.count(handle)) ++handle;
        files_[handle] = file;
        return handle;
    }
    bool find(int handle, open_file_st* out) {
        std::lock_guard<std::mutex> guard(lock_);
        auto it = files_.find(handle);
        if (it == files_.end()) return false;
        *out = it->second;
        return true;
    }
    bool remove(int handle, open_file_st* out) {
        std::lock_guard<std::mutex> guard(lock_);
        auto it = files_.find(handle);
        if (it == files_.end()) return false;
        *out = it->second;
        files_.erase(it);
        return true;
    }

private:
    std::mutex lock_;
    std::map<int, open_file_st> files_;
};

HandleTable& handles() {
    static HandleTable table;
    return table;
}

// The open file of argument `i`; false, with ferror() 6, for an unknown handle.
bool file_argument(VmStack* stack, unsigned long long i, open_file_st* out) {
    long long handle = argument(stack, i).integer;
    if (handle >= 1 && handle <= INT32_MAX && handles().find(static_cast<int>(handle), out)) return true;
    last_file_error = FERROR_INVALID_HANDLE;
    return false;
}

void set_bytes(Variant* result, const std::string& bytes, const open_file_st& file) {
    result->set_string(String::fromBytes(bytes.data(), bytes.size(), file.charset));
}

// Ends the operation: a stream error sets the code, anything else clears it.
void settle(FILE* stream) {
    if (ferror(stream)) {
        last_file_error = error_code_of(errno);
        clearerr(stream);
    } else {
        last_file_error = FERROR_NONE;
    }
}

}  // namespace

// fopen(name [, mode [, charset]]): a handle, or -1 with the reason in ferror().
void stackcall_fopen(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    const String& name = string_argument(stack, 1);
    long long mode = argc >= 2 ? argument(stack, 2).integer : static_cast<long long>(OPEN_READ);
    if (mode >= OPEN_UNBUFFERED) mode -= OPEN_UNBUFFERED;
    if (mode < OPEN_READ || mode > OPEN_READ_WRITE) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const Charset* charset = argc >= 3 ? charset_argument(string_argument(stack, 3)) : nullptr;
    ConsoleStream console = console_stream_of(name);
    FILE* stream = console != CONSOLE_NONE ? open_console(stack, console, &charset)
                                           : open_disk_file(name, static_cast<OpenMode>(mode));
    if (!stream) {
        last_file_error = error_code_of(errno);
        return result->set_integer(-1);
    }
    last_file_error = FERROR_NONE;
    result->set_integer(handles().add({stream, charset ? charset : machine_charset(stack)}));
}

void stackcall_fclose(VmStack* stack, unsigned long long, Variant* result) {
    long long handle = argument(stack, 1).integer;
    open_file_st file;
    if (handle < 1 || handle > INT32_MAX || !handles().remove(static_cast<int>(handle), &file)) {
        last_file_error = FERROR_INVALID_HANDLE;
        return result->set_false();
    }
    bool closed = std::fclose(file.stream) == 0;
    last_file_error = closed ? FERROR_NONE : error_code_of(errno);
    result->set_bool(closed);
}

// fread(handle, bytes): up to that many bytes; "" at the end.
void stackcall_fread(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    open_file_st file;
    if (!file_argument(stack, 1, &file)) return result->set_string(String(""));
    long long wanted = argument(stack, 2).integer;
    if (wanted < 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    // In pieces, so that a large count costs memory only for what is there.
    std::string bytes;
    char piece[65536];
    while (bytes.size() < static_cast<size_t>(wanted)) {
        size_t got = std::fread(piece, 1, std::min(sizeof piece, static_cast<size_t>(wanted) - bytes.size()), file.stream);
        if (got == 0) break;
        bytes.append(piece, got);
    }
    settle(file.stream);
    set_bytes(result, bytes, file);
}

// fgets(handle [, bytes]): the next line without its end (CR LF, LF or CR),
// at most `bytes` long (254 unless given); the rest of a longer line comes next.
void stackcall_fgets(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    open_file_st file;
    if (!file_argument(stack, 1, &file)) return result->set_string(String(""));
    long long limit = argc >= 2 ? argument(stack, 2).integer : FGETS_DEFAULT_BYTES;
    if (limit < 1) throw RuntimeError(ERR_ARGUMENT_INVALID);
    std::string line;
    FILE* stream = file.stream;
    while (line.size() < static_cast<size_t>(limit)) {
        int c = getc_unlocked(stream);
        if (c == EOF || c == '\n') break;
        if (c == '\r') {
            int next = getc_unlocked(stream);
            if (next != '\n' && next != EOF) ungetc(next, stream);
            break;
        }
        line += static_cast<char>(c);
    }
    settle(stream);
    set_bytes(result, line, file);
}

// fseek(handle, offset [, origin]): origin 0 the start, 1 the current
// position, 2 the end; the new position, or -1.
void stackcall_fseek(VmStack* stack, unsigned long long argc, Variant* result) {
    open_file_st file;
    if (!file_argument(stack, 1, &file)) return result->set_integer(-1);
    long long offset = argument(stack, 2).integer;
    long long origin = argc >= 3 ? argument(stack, 3).integer : 0;
    static const int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (origin < 0 || origin > 2) throw RuntimeError(ERR_ARGUMENT_INVALID);
    if (fseeko(file.stream, static_cast<off_t>(offset), whence[origin]) != 0) {
        last_file_error = FERROR_SEEK;
        return result->set_integer(-1);
    }
    last_file_error = FERROR_NONE;
    result->set_integer(static_cast<long long>(ftello(file.stream)));
}

void stackcall_ftell(VmStack* stack, unsigned long long, Variant* result) {
    open_file_st file;
    if (!file_argument(stack, 1, &file)) return result->set_integer(-1);
    off_t position = ftello(file.stream);
    last_file_error = position < 0 ? error_code_of(errno) : FERROR_NONE;
    result->set_integer(static_cast<long long>(position));
}

// feof(handle): whether nothing is left to read. It looks at the next byte,
// so on a console stream it waits for input.
void stackcall_feof(VmStack* stack, unsigned long long, Variant* result) {
    open_file_st file;
    if (!file_argument(stack, 1, &file)) return result->set_true();
    int c = getc_unlocked(file.stream);
    if (c != EOF) ungetc(c, file.stream);
    settle(file.stream);
    result->set_bool(c == EOF);
}

void stackcall_ferror(VmStack*, unsigned long long, Variant* result) { result->set_integer(last_file_error); }

}  // namespace zobase
