#pragma once
// Finding files as users name them: tables and programs are often stored in
// upper case (CUSTOMER.DBF), so a name not found as written is looked up in
// its directory without regard to case, and then along the search path.
#include <filesystem>
#include <vector>

#include "values/string.h"

namespace zobase {

// The regular file of that name, or the one in its directory whose name
// matches without regard to case.
bool exists_ci(const std::filesystem::path& name, std::filesystem::path* found);

// `name` as written or case-insensitively, then, for a relative name, in each
// directory of `search_path` in order.
bool find_file(const String& name, const std::vector<String>& search_path, String* found);

// Splits a SET PATH list at ";" and ",", dropping blanks around each entry.
std::vector<String> split_search_path(const String& paths);

}  // namespace zobase
