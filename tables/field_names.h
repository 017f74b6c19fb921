#pragma once
// Field names of a new table: made valid, short enough and unique.
#include <cstddef>
#include <set>
#include <string>

namespace zobase {

class Charset;

// What uniqify had to do to a name.
struct uniqify_report_st {
    bool changed = false;  // characters replaced by "_"
    bool cut = false;      // characters cut from the end
    bool renamed = false;  // a number appended to tell it from a name taken

    bool any() const noexcept { return changed || cut || renamed; }
};

// Names compared without regard to case.
class FieldNameSet {
public:
    bool contains(const std::u32string& name) const { return keys_.count(fold(name)) != 0; }
    void insert(const std::u32string& name) { keys_.insert(fold(name)); }

private:
    static std::u32string fold(const std::u32string& name);
    std::set<std::u32string> keys_;
};

// Replaces each character that is neither alphanumeric nor "_", or that
// the charset cannot hold, with "_", and a first character that is not a
// letter or "_" likewise (an empty name becomes "_"); cuts characters from
// the end until the name takes at most `limit` bytes in `charset`; then,
// while the name is taken, appends "2", "3", ... cutting the base further
// so the whole fits. The result joins `taken`; `report` says what was done.
std::u32string uniqify(const std::u32string& name, size_t limit, const Charset* charset,
                       FieldNameSet& taken, uniqify_report_st* report);

}  // namespace zobase
