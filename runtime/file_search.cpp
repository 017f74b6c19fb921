#include "runtime/file_search.h"

#include <system_error>

#include "text/charset.h"

namespace zobase {

namespace fs = std::filesystem;

bool find_file(const String& name, const std::vector<String>& search_path, String* found) {
    fs::path wanted(name);
    fs::path hit;
    bool ok = exists_ci(wanted, &hit);
    for (size_t i = 0; !ok && wanted.is_relative() && i < search_path.size(); ++i)
        ok = exists_ci(fs::path(search_path[i]) / wanted, &hit);
    if (ok) *found = String(hit);
    return ok;
}

std::vector<String> split_search_path(const String& paths) {
    std::vector<String> list;
    std::string text = paths.u8str();
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find_first_of(";,", start);
        if (end == std::string::npos) end = text.size();
        String entry = String::fromBytes(text.data() + start, end - start, Charset::utf8);
        entry.alltrim();
        if (entry.size()) list.push_back(entry);
        start = end + 1;
    }
    return list;
}

}  // namespace zobase
