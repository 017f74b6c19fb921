// SET LIBRARY's list of extension libraries and DECLARE's functions.
#include "builtins/native_extensions.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>

#include "base/call_trace.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// The tag a signature's type code asks of an argument.
uint8_t parameter_tag(uint8_t formal_type) {
    switch (formal_type & ~FORMAL_NULLABLE) {
    case FORMAL_LOGICAL: return TAG_TRUE;
    case FORMAL_INTEGER: return TAG_INTEGER;
    case FORMAL_NUMERIC: return TAG_NUMERIC;
    case FORMAL_MONEY: return TAG_MONEY;
    case FORMAL_DATE: return TAG_DATE;
    case FORMAL_DATETIME: return TAG_DATETIME;
    case FORMAL_STRING: return TAG_STRING;
    case FORMAL_OBJECT: return TAG_OBJECT;
    default: return LIBRARY_PARAMETER_ANY;
    }
}

library_parameter_st library_parameter(const formal_st& formal) {
    bool array = (formal.type & ~FORMAL_NULLABLE) == FORMAL_ARRAY;
    return {array ? LIBRARY_PARAMETER_ANY : parameter_tag(formal.type), array,
            (formal.type & FORMAL_NULLABLE) != 0};
}

// A late-bound call checks its arguments against the listed formals; a
// variadic signature repeats its last formal for arguments beyond them, up
// to the count a call can pass.
constexpr size_t VARIADIC_ARGUMENTS = 255;

}  // namespace

std::vector<library_parameter_st> late_bound_parameters(const function_signature_st& signature) {
    std::vector<library_parameter_st> parameters;
    for (const formal_st& formal : signature.formals) parameters.push_back(library_parameter(formal));
    if (signature.variadic)
        while (parameters.size() < VARIADIC_ARGUMENTS) parameters.push_back(library_parameter(signature.variadic_formal));
    return parameters;
}

namespace {

[[noreturn]] void raise_no_description(const String& file) {
    raise_not_available((std::string(DESCRIBE_MODULE_SYMBOL) + " in " + file.u8str()).c_str());
}

}  // namespace

struct NativeExtensions::opened_library_st {
    String path;
    void* handle;
    std::unique_ptr<Library> library;
    std::map<String, library_function_st, NameLess> late_bound;  // the functions as late-bound calls take them
};

NativeExtensions::NativeExtensions(Runtime* runtime) : runtime_(runtime) {}

NativeExtensions::~NativeExtensions() {
    declared_.clear();
    retired_.clear();
    for (auto& opened : libraries_) unload_library_tables(opened->library.get());
    libraries_.clear();
    for (void* handle : handles_) dlclose(handle);
}

void NativeExtensions::clear_libraries() {
    std::unique_lock lock(mutex_);
    for (auto& opened : libraries_) unload_library_tables(opened->library.get());
    libraries_.clear();
}

std::vector<String> NativeExtensions::libraries() const {
    std::vector<String> paths;
    std::shared_lock lock(mutex_);
    for (const auto& opened : libraries_) paths.push_back(opened->path);
    return paths;
}

// As written, along SET PATH, and as the dynamic loader finds a bare name
// ("libc.so.6"), also with ".so" added.
void* NativeExtensions::find_shared_object(VmStack* stack, const String& file, int mode) const {
    String found;
    std::string path = stack->services->find_file(file, &found) ? found.u8str() : file.u8str();
    void* handle = dlopen(path.c_str(), mode);
    if (!handle && std::filesystem::path(path).extension() != ".so") handle = dlopen((path + ".so").c_str(), mode);
    return handle;
}

// The loader counts each open; one reference per library is kept.
void* NativeExtensions::open_shared_object(VmStack* stack, const String& file) {
    void* handle = find_shared_object(stack, file, RTLD_NOW | RTLD_LOCAL);
    if (!handle) throw RuntimeError(ERR_FILE_NOT_FOUND, file);
    std::unique_lock lock(mutex_);
    if (std::find(handles_.begin(), handles_.end(), handle) != handles_.end()) dlclose(handle);
    else handles_.push_back(handle);
    return handle;
}

void NativeExtensions::add_library(VmStack* stack, const String& file) {
    ZO_TRACE();
    void* handle = open_shared_object(stack, file);
    Dl_info info{};
    String path = file;
    auto describe = reinterpret_cast<describe_module_fn>(dlsym(handle, DESCRIBE_MODULE_SYMBOL));
    if (!describe) raise_no_description(file);
    if (dladdr(reinterpret_cast<void*>(describe), &info) && info.dli_fname) path = String(info.dli_fname);
    std::unique_lock lock(mutex_);
    for (const auto& opened : libraries_)
        if (opened->path.u8str() == path.u8str()) return;
    const module_description_st* description = describe();
    if (!description) raise_no_description(file);
    auto opened = std::make_unique<opened_library_st>();
    opened->path = path;
    opened->handle = handle;
    opened->library = std::make_unique<Library>(runtime_, &stack->services->symbols());
    load_library_tables(opened->library.get(), description);
    for (const auto& [name, function] : opened->library->functions)
        opened->late_bound.emplace(name, library_function_st{function.handler, late_bound_parameters(function.parameters),
                                                             function.parameters.required});
    libraries_.push_back(std::move(opened));
}

void NativeExtensions::declare(VmStack* stack, DeclareType result, const String& name, const String& file,
                               const String& alias, const std::vector<declare_parameter_st>& parameters) {
    ZO_TRACE();
    void* handle = open_shared_object(stack, file);
    void* entry = dlsym(handle, name.u8str().c_str());
    if (!entry) throw RuntimeError(ERR_FILE_NOT_FOUND, name);
    const String& key = alias.size() ? alias : name;
    std::unique_lock lock(mutex_);
    auto found = declared_.find(key);
    if (found != declared_.end()) {
        if (declared_function_matches(*found->second.function, entry, result, parameters)) return;
        retire(found->second);
        declared_.erase(found);
    }
    declared_.emplace(key, declared_st{make_declared_function(entry, result, parameters), handle});
}

void NativeExtensions::retire(declared_st& declared) { retired_.push_back(std::move(declared.function)); }

// Asking the loader without loading: a library never opened is no library
// of ours, whatever the file.
void NativeExtensions::release_library(VmStack* stack, const String& file) {
    ZO_TRACE();
    void* handle = find_shared_object(stack, file, RTLD_NOW | RTLD_NOLOAD);
    std::unique_lock lock(mutex_);
    bool ours = handle && std::find(handles_.begin(), handles_.end(), handle) != handles_.end();
    if (handle) dlclose(handle);  // the reference RTLD_NOLOAD took
    if (!ours) throw RuntimeError(ERR_FILE_NOT_FOUND, file);
    for (auto entry = declared_.begin(); entry != declared_.end();) {
        if (entry->second.handle != handle) {
            ++entry;
            continue;
        }
        retire(entry->second);
        entry = declared_.erase(entry);
    }
    std::erase_if(libraries_, [handle](const std::unique_ptr<opened_library_st>& opened) {
        if (opened->handle != handle) return false;
        unload_library_tables(opened->library.get());
        return true;
    });
}

void NativeExtensions::clear_declared() {
    std::unique_lock lock(mutex_);
    for (auto& [alias, declared] : declared_) retire(declared);
    declared_.clear();
}

void NativeExtensions::clear_declared(const String& alias) {
    std::unique_lock lock(mutex_);
    auto found = declared_.find(alias);
    if (found == declared_.end()) throw RuntimeError(ERR_FILE_NOT_FOUND, alias);
    retire(found->second);
    declared_.erase(found);
}

const library_function_st* NativeExtensions::find_function(const String& name) const {
    std::shared_lock lock(mutex_);
    auto declared = declared_.find(name);
    if (declared != declared_.end()) return &declared_function_entry(*declared->second.function);
    for (const auto& opened : libraries_) {
        auto found = opened->late_bound.find(name);
        if (found != opened->late_bound.end()) return &found->second;
    }
    return nullptr;
}

const library_command_def_st* NativeExtensions::find_command(const String& name) const {
    std::shared_lock lock(mutex_);
    for (const auto& opened : libraries_)
        if (const library_command_def_st* command = opened->library->find_command(name)) return command;
    return nullptr;
}

}  // namespace zobase
