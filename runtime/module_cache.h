#pragma once
// Compiled source files kept in memory, one entry per file however its path
// is spelt, compiled again when the file changed on disk.
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <vector>

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

// Shared by every thread of a runtime: look-ups take the lock shared and
// changes take it alone. Compiling runs outside the lock (it may take long,
// and the compiler may look classes up); a file that two threads compile at
// once is entered by the first to finish, the other's copy set aside.
// Modules are never freed before the cache, so a function or class found
// under the lock stays valid after it.
class ModuleCache {
public:
    ModuleCache() = default;
    ~ModuleCache();
    ModuleCache(const ModuleCache&) = delete;
    ModuleCache& operator=(const ModuleCache&) = delete;

    // Finds the file, compiles it unless the policy lets a cached copy stand,
    // and returns its entry module. A missing file is error 1.
    const Module* load_from_disk(VmStack* stack, const String& file, CachePolicy policy);

    // The current domains in the order they were compiled, as they are now.
    std::vector<ModuleDomain*> domains() const;

    module_compile_fn compile = compile_module_file;

    // SET PROCEDURE: the modules whose functions late-bound calls reach, in
    // the order of their canonical paths.
    void add_procedure(VmStack* stack, const String& file);
    void clear_procedures();
    // The SET PROCEDURE modules by canonical path, as they are now.
    module_map procedures() const;

    // The first non-null answer of visit(module) over the SET PROCEDURE
    // modules, in order; visit runs under the shared lock and must not
    // reach the cache again.
    template <class T, class Visit>
    T* first_procedure(Visit visit) const {
        std::shared_lock guard(mutex_);
        for (const auto& [path, module] : procedures_)
            if (T* found = visit(module)) return found;
        return nullptr;
    }
    // The same over every module of every current domain, domains in the
    // order they were compiled.
    template <class T, class Visit>
    T* first_loaded(Visit visit) const {
        std::shared_lock guard(mutex_);
        for (const ModuleDomain* domain : in_use_order_)
            for (const auto& [path, module] : domain->modules)
                if (T* found = visit(module)) return found;
        return nullptr;
    }

private:
    typedef std::map<String, ModuleDomain*, StringLessThan_Unicode_Machine> domain_map;

    mutable std::shared_mutex mutex_;  // guards everything below
    domain_map by_path_;
    std::list<ModuleDomain*> in_use_order_;
    // Stale domains are out of every look-up but stay alive: running frames
    // and direct calls of other modules may still point into them.
    std::list<ModuleDomain*> retired_;
    module_map procedures_;  // not owned

    // The cached entry module of the path when the policy lets it stand.
    const Module* cached(const String& path, int64_t write_time, CachePolicy policy) const;
    // Enters a freshly compiled domain (under the lock alone).
    const Module* enter(std::unique_ptr<ModuleDomain> domain, CachePolicy policy);
    void retire(domain_map::iterator entry);
};

// The path as the operating system names the file: absolute, no links, no
// "." or "..". Raises the filesystem error "canonical" when it can't.
String canonical_path(const String& path);


}  // namespace zobase
