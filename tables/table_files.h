#pragma once
// A table's files as a whole: the table file and the memo and index files
// beside it, dropped or renamed together. The table may be open nowhere:
// an exclusive open of its file proves it (error 1705 otherwise).
#include <filesystem>

#include "values/string.h"

namespace zobase {

// A table's name as a path: one without extension gets ".dbf".
std::filesystem::path with_table_extension(const String& name);

// Error 1 for a table that does not exist.
void drop_table_files(const String& name);
// Error 1 for a table that does not exist, 7 when the new name is taken.
// The memo and index files go first, so a failure half way leaves the
// table under its old name with what USE needs of it, or under the new one
// with all of it.
void rename_table_files(const String& from, const String& to);

}  // namespace zobase
