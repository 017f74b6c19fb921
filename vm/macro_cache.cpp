#include "vm/macro_cache.h"

#include <functional>
#include <string_view>

#include "vm/program.h"

namespace zobase {

size_t macro_key_hash_st::operator()(const macro_key_st& key) const noexcept {
    size_t hash = std::hash<std::string_view>()(key.text);
    hash ^= std::hash<const void*>()(key.charset) + 0x9e3779b97f4a7c15ull + (hash << 6) + (hash >> 2);
    hash ^= std::hash<uint64_t>()(key.program_id * 1000003ull + key.position) + (hash << 6) + (hash >> 2);
    return hash;
}

std::shared_ptr<Program> MacroCache::find(const macro_key_st& key) const {
    auto found = programs_.find(key);
    return found == programs_.end() ? nullptr : found->second;
}

void MacroCache::keep(macro_key_st key, std::shared_ptr<Program> program) {
    if (programs_.size() >= CAPACITY) programs_.clear();
    programs_.emplace(std::move(key), std::move(program));
}

}  // namespace zobase
