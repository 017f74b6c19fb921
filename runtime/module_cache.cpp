#include "runtime/module_cache.h"

#include <filesystem>
#include <memory>
#include <system_error>

#include "base/call_trace.h"
#include "compiler/build_input.h"
#include "compiler/module.h"
#include "compiler/module_codec.h"
#include "runtime/file_search.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "text/charset.h"
#include "values/error.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace fs = std::filesystem;

namespace {

int64_t last_write_time(const String& path) {
    return fs::last_write_time(fs::path(path)).time_since_epoch().count();
}

}  // namespace

ModuleDomain::~ModuleDomain() {
    for (auto& [name, module] : modules) delete module;
}

ModuleCache::~ModuleCache() {
    for (ModuleDomain* domain : in_use_order_) delete domain;
    for (ModuleDomain* domain : retired_) delete domain;
}

String canonical_path(const String& path) { return String(fs::canonical(fs::path(path))); }

void ModuleCache::retire(domain_map::iterator entry) {
    in_use_order_.remove(entry->second);
    retired_.push_back(entry->second);
    by_path_.erase(entry);
}

std::vector<ModuleDomain*> ModuleCache::domains() const {
    std::shared_lock guard(mutex_);
    return {in_use_order_.begin(), in_use_order_.end()};
}

module_map ModuleCache::procedures() const {
    std::shared_lock guard(mutex_);
    return procedures_;
}

const Module* ModuleCache::cached(const String& path, int64_t write_time, CachePolicy policy) const {
    auto found = by_path_.find(path);
    if (found == by_path_.end()) return nullptr;
    const ModuleDomain* domain = found->second;
    if (policy == CACHE_AS_IS || (policy == CACHE_CHECK_TIME && domain->write_time == write_time))
        return domain->entry;
    return nullptr;
}

// Another thread may have entered the same file while this one compiled:
// a copy of the same write time that the policy takes wins, and ours is
// set aside unused.
const Module* ModuleCache::enter(std::unique_ptr<ModuleDomain> domain, CachePolicy policy) {
    std::unique_lock guard(mutex_);
    if (policy != CACHE_RELOAD)
        if (const Module* other = cached(domain->path, domain->write_time, policy)) {
            retired_.push_back(domain.release());
            return other;
        }
    auto stale = by_path_.find(domain->path);
    if (stale != by_path_.end()) retire(stale);
    in_use_order_.push_back(domain.get());
    by_path_.emplace(domain->path, domain.get());
    // A SET PROCEDURE module that was compiled again is reached in its new form.
    auto procedure = procedures_.find(domain->path);
    if (procedure != procedures_.end()) procedure->second = domain->entry;
    return domain.release()->entry;
}

// The standard library's filesystem errors are reported as the generic one.
const Module* ModuleCache::load_from_disk(VmStack* stack, const String& file, CachePolicy policy) {
    ZO_TRACE();
    String found;
    if (!stack->runtime->find_file(file, &found, true, true)) throw RuntimeError(ERR_FILE_NOT_FOUND, file);
    try {
        String path = canonical_path(found);
        stack->runtime->screen->on_load_module(stack, path);
        int64_t write_time = last_write_time(path);
        {
            std::shared_lock guard(mutex_);
            if (const Module* module = cached(path, write_time, policy)) return module;
        }
        auto domain = std::make_unique<ModuleDomain>();
        domain->path = path;
        domain->write_time = write_time;
        domain->entry = compile(stack, path, &domain->modules);
        domain->modules.try_emplace(path, domain->entry);
        domain->entry->domain = domain.get();
        return enter(std::move(domain), policy);
    } catch (const fs::filesystem_error& error) {
        throw RuntimeError(ERR_FILESYSTEM_GENERIC, String(error.what()));
    }
}

Module* compile_module_file(VmStack* stack, const String& path, module_map*) {
    ZO_TRACE();
    Runtime* runtime = stack->runtime;
    String text = read_source_file(path, runtime->default_charset);
    text.convert(Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    BuildInput input(stack);
    input.import_library(runtime->library());
    Module* module = input.build_module(path, text);
    // A check of the instruction codecs: run every program as decoded.
    String round_trip;
    if (runtime->getenv(String("ZOBASE_CODEC_ROUND_TRIP"), &round_trip)) round_trip_module(module, runtime->symbols());
    return module;
}

void ModuleCache::add_procedure(VmStack* stack, const String& file) {
    const Module* module = load_from_disk(stack, file, CACHE_CHECK_TIME);
    std::unique_lock guard(mutex_);
    procedures_.insert_or_assign(module->domain->path, const_cast<Module*>(module));
}

void ModuleCache::clear_procedures() {
    std::unique_lock guard(mutex_);
    procedures_.clear();
}

}  // namespace zobase
