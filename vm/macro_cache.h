#pragma once
// Programs compiled from macro statements, kept per stack so that the same
// text run again is not compiled again.
//
// A kept program is found by everything its code depends on:
//   - the text's bytes and charset;
//   - the running frame's program, by Program::id (never reused): macro text
//     links to the functions of that program's module;
//   - the place of the macro statement in that program: every instruction
//     of the text carries it for error reports.
// What the text means when it runs (its names, fields, work areas, SET
// values) is looked up by the instructions at run time, as for any code, so
// no change of those can make a kept program stale.
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "values/string.h"

namespace zobase {

class Program;

struct macro_key_st {
    std::string text;
    const Charset* charset = nullptr;
    uint64_t program_id = 0;  // 0: no frame around the macro
    uint64_t position = 0;    // the macro instruction's index in that program

    bool operator==(const macro_key_st&) const = default;
};

struct macro_key_hash_st {
    size_t operator()(const macro_key_st& key) const noexcept;
};

class MacroCache {
public:
    // At most this many programs are kept; past it the cache starts afresh.
    static constexpr size_t CAPACITY = 256;

    // Shared: a program stays alive while it runs even if the cache lets it go.
    std::shared_ptr<Program> find(const macro_key_st& key) const;
    void keep(macro_key_st key, std::shared_ptr<Program> program);
    size_t size() const noexcept { return programs_.size(); }

private:
    std::unordered_map<macro_key_st, std::shared_ptr<Program>, macro_key_hash_st> programs_;
};

}  // namespace zobase
