// PACK, ZAP, COPY TO and RENAME TABLE.
#include <filesystem>
#include <memory>
#include <system_error>

#include "base/call_trace.h"
#include "builtins/handlers.h"
#include "builtins/work_area.h"
#include "tables/file.h"
#include "tables/table_errors.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace fs = std::filesystem;

void void_stackcall_pack(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    current_table(stack)->pack(stack);
}

void void_stackcall_zap(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    current_table(stack)->zap(stack);
}

// Arguments: the file name, the WITH CDX flag.
void void_stackcall_copy_to(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    const Variant& tags = argument(stack, 2);
    current_table(stack)->copyto(stack, string_argument(stack, 1), !is_null_argument(tags) && tags.integer != 0);
}

// The table may not be open anywhere (an exclusive open proves it); its memo
// and index files follow it under the new name. Memo and index files go
// first, so a failure half way leaves the table under its old name with
// what USE needs of it, or under the new one with all of it.
void void_stackcall_rename_table(VmStack* stack, unsigned long long) {
    ZO_TRACE();
    fs::path from(string_argument(stack, 1).u8str());
    fs::path to(string_argument(stack, 2).u8str());
    if (!from.has_extension()) from += ".dbf";
    if (!to.has_extension()) to += ".dbf";
    fs::path found;
    if (!exists_ci(from, &found)) throw RuntimeError(ERR_FILE_NOT_FOUND, String(from));
    if (fs::exists(to)) throw RuntimeError(ERR_FILE_EXISTS, String(to));
    String name(found);
    table_operation(TABLE_REMOVE, [&] { return name; }, [&] {
        std::unique_ptr<File> file(open_file(name, FILE_OPEN_READ | FILE_OPEN_WRITE));
        file->close();
    });
    std::error_code failure;
    for (const char* extension : {"fpt", "cdx"}) {
        fs::path companion;
        if (!exists_ci(fs::path(found).replace_extension(extension), &companion)) continue;
        fs::rename(companion, fs::path(to).replace_extension(extension), failure);
        if (failure) throw RuntimeError(ERR_FILESYSTEM_GENERIC, String("rename"));
    }
    fs::rename(found, to, failure);
    if (failure) throw RuntimeError(ERR_FILESYSTEM_GENERIC, String("rename"));
}

}  // namespace zobase
