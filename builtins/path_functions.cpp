// The parts of a file name: justpath, justfname, juststem, justext,
// forceext, forcepath, defaultext and addbs. Names are only text here; both
// "/" and "\" separate folders, so names written for other systems split
// the same way. A name that starts with a dot (".profile") has no extension.
#include <string>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"

namespace zobase {

namespace {

struct name_parts_st {
    std::string folder;     // without the last separator; "/" for the root
    std::string file_name;  // after the last separator
    std::string stem;
    std::string extension;  // without its dot
};

bool is_separator(char c) { return c == '/' || c == '\\'; }

name_parts_st split_name(const std::string& name) {
    name_parts_st parts;
    size_t slash = name.find_last_of("/\\");
    if (slash != std::string::npos) {
        parts.folder = slash == 0 ? name.substr(0, 1) : name.substr(0, slash);
        parts.file_name = name.substr(slash + 1);
    } else {
        parts.file_name = name;
    }
    size_t dot = parts.file_name.find_last_of('.');
    if (dot == std::string::npos || dot == 0) {
        parts.stem = parts.file_name;
    } else {
        parts.stem = parts.file_name.substr(0, dot);
        parts.extension = parts.file_name.substr(dot + 1);
    }
    return parts;
}

// Everything before the file name, separator included.
std::string folder_prefix(const std::string& name) {
    size_t slash = name.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : name.substr(0, slash + 1);
}

std::string with_separator(const std::string& folder) {
    if (folder.empty() || is_separator(folder.back())) return folder;
    return folder + "/";
}

std::string forced_extension(const std::string& name, std::string extension) {
    if (!extension.empty() && extension.front() == '.') extension.erase(0, 1);
    std::string base = folder_prefix(name) + split_name(name).stem;
    return extension.empty() ? base : base + "." + extension;
}

std::string text_argument(VmStack* stack, unsigned long long i) { return string_argument(stack, i).u8str(); }

void set_text(Variant* result, const std::string& text) { result->set_string(String(text.c_str())); }

}  // namespace

void stackcall_justpath(VmStack* stack, unsigned long long, Variant* result) {
    set_text(result, split_name(text_argument(stack, 1)).folder);
}

void stackcall_justfname(VmStack* stack, unsigned long long, Variant* result) {
    set_text(result, split_name(text_argument(stack, 1)).file_name);
}

void stackcall_juststem(VmStack* stack, unsigned long long, Variant* result) {
    set_text(result, split_name(text_argument(stack, 1)).stem);
}

void stackcall_justext(VmStack* stack, unsigned long long, Variant* result) {
    set_text(result, split_name(text_argument(stack, 1)).extension);
}

// forceext(name, ext): the name with that extension; an empty one removes it.
void stackcall_forceext(VmStack* stack, unsigned long long, Variant* result) {
    set_text(result, forced_extension(text_argument(stack, 1), text_argument(stack, 2)));
}

// defaultext(name, ext): the extension only when the name has none.
void stackcall_defaultext(VmStack* stack, unsigned long long, Variant* result) {
    std::string name = text_argument(stack, 1);
    if (!split_name(name).extension.empty()) return result->set_string(string_argument(stack, 1));
    set_text(result, forced_extension(name, text_argument(stack, 2)));
}

// forcepath(name, folder): the file name moved into that folder.
void stackcall_forcepath(VmStack* stack, unsigned long long, Variant* result) {
    set_text(result, with_separator(text_argument(stack, 2)) + split_name(text_argument(stack, 1)).file_name);
}

// addbs(folder): a separator at the end unless there is one; "" stays "".
void stackcall_addbs(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    set_text(result, with_separator(text_argument(stack, 1)));
}

}  // namespace zobase
