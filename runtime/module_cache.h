#pragma once
// Compiled source files kept in memory, one entry per file however its path
// is spelt, compiled again when the file changed on disk.
#include <cstdint>
#include <list>
#include <map>

#include "compiler/module.h"
#include "text/collation.h"
#include "values/string.h"

namespace zobase {

class VmStack;

enum CachePolicy : int {
    CACHE_CHECK_TIME = 0,  // recompile when the file's write time changed
    CACHE_AS_IS = 1,       // take a cached copy as it stands
    CACHE_RELOAD = 2,      // any other value: always compile
};

// One loaded source file and every module compiled along with it.
struct ModuleDomain {
    String path;  // canonical
    int64_t write_time = 0;
    Module* entry = nullptr;
    module_map modules;  // owned, by file name; holds the entry too

    ModuleDomain() = default;
    ~ModuleDomain();
    ModuleDomain(const ModuleDomain&) = delete;
    ModuleDomain& operator=(const ModuleDomain&) = delete;
};

// Compiles a source file into a module; what it imports goes into `modules`,
// and the cache enters the result there itself. The compiler's own driver by
// default; tests count compiles through it.
typedef Module* (*module_compile_fn)(VmStack* stack, const String& path, module_map* modules);

// The default compile step: reads the file in its BOM's charset or the
// runtime's default one and builds it as a module.
Module* compile_module_file(VmStack* stack, const String& path, module_map* modules);

class ModuleCache {
public:
    ModuleCache() = default;
    ~ModuleCache();
    ModuleCache(const ModuleCache&) = delete;
    ModuleCache& operator=(const ModuleCache&) = delete;

    // Finds the file, compiles it unless the policy lets a cached copy stand,
    // and returns its entry module. A missing file is error 1.
    const Module* load_from_disk(VmStack* stack, const String& file, CachePolicy policy);

    // The current domains in the order they were compiled.
    const std::list<ModuleDomain*>& domains() const noexcept { return in_use_order_; }

    module_compile_fn compile = compile_module_file;

    // SET PROCEDURE: the modules whose functions late-bound calls reach, in
    // the order of their canonical paths.
    void add_procedure(VmStack* stack, const String& file);
    void clear_procedures() { procedures_.clear(); }
    const module_map& procedures() const noexcept { return procedures_; }

private:
    std::map<String, ModuleDomain*, StringLessThan_Unicode_Machine> by_path_;
    std::list<ModuleDomain*> in_use_order_;
    // Stale domains are out of every look-up but stay alive: running frames
    // and direct calls of other modules may still point into them.
    std::list<ModuleDomain*> retired_;
    module_map procedures_;  // not owned

    void retire(std::map<String, ModuleDomain*, StringLessThan_Unicode_Machine>::iterator entry);
};

// The path as the operating system names the file: absolute, no links, no
// "." or "..". Raises the filesystem error "canonical" when it can't.
String canonical_path(const String& path);


}  // namespace zobase
