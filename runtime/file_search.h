#pragma once
// Finding files as users name them: tables and programs are often stored in
// upper case (CUSTOMER.DBF), so a name not found as written is looked up in
// its directory without regard to case, and then along the search path.
#include <filesystem>
#include <vector>

#include "tables/file.h"
#include "values/string.h"

namespace zobase {

// exists_ci, the case-insensitive look-up below, belongs to the file layer.

// `name` as written or case-insensitively, then, for a relative name, in each
// directory of `search_path` in order.
bool find_file(const String& name, const std::vector<String>& search_path, String* found);

// Splits a SET PATH list at ";" and ",", dropping blanks around each entry.
std::vector<String> split_search_path(const String& paths);

}  // namespace zobase
