#include "values/symtable.h"

#include "base/call_trace.h"
#include "values/error.h"

namespace zobase {

const symtable_fixed_st symtable_fixed[SYMTABLE_FIXED_COUNT] = {
    {"ADD", 5}, {"ADDITIVE", 22}, {"ADDOBJECT", 39}, {"ADDPROPERTY", 40}, {"AGAIN", 14},
    {"ALIAS", 13}, {"ARGC", 56}, {"ARGV", 57}, {"AT", 52}, {"B", 66}, {"BASECLASS", 41},
    {"BATCHMODE", 32}, {"BOTTOM", 28}, {"CLASS", 42}, {"CLASSLIBRARY", 43}, {"CODEPAGE", 95},
    {"COLLECTION", 75}, {"COMMENT", 44}, {"COMPAT", 58}, {"CONTROLCOUNT", 45},
    {"CONTROLS", 46}, {"COUNT", 7}, {"CREATEOBJECT", 92}, {"CURRENCY", 100},
    {"DATASESSION", 36}, {"DATASESSIONID", 38}, {"DELETED", 93}, {"DESTROY", 4},
    {"DIMENSION", 16}, {"DODEFAULT", 91}, {"DOUBLE", 67}, {"EMPTY", 71}, {"ENGINE", 96},
    {"EOF", 81}, {"ERROR", 47}, {"ERRORNO", 33}, {"EVL", 54}, {"EXACT", 30}, {"EXCEPTION", 35},
    {"F", 64}, {"FLOOR", 76}, {"FOR", 77}, {"GET_ENUMERATOR", 94}, {"I", 60}, {"IIF", 53},
    {"IN", 11}, {"INIT", 3}, {"INTEGER", 61}, {"KESOBJECT", 97}, {"KESTRO", 59}, {"KEY", 98},
    {"M", 31}, {"MD5", 89}, {"MEMVAR", 51}, {"MESSAGE", 34}, {"MONEY", 63}, {"N", 68},
    {"NEWOBJECT", 90}, {"NOSHOW", 24}, {"NUMERIC", 69}, {"NVL", 55}, {"ODBCHDBC", 83},
    {"ODBCHSTMT", 84}, {"OFF", 17}, {"ON", 18}, {"PATH", 48}, {"RECORD", 29}, {"REMOVE", 8},
    {"REST", 78}, {"SELECT", 15}, {"SESSION", 37}, {"SHA1", 88}, {"SHA2_256", 85},
    {"SHA2_384", 86}, {"SHA2_512", 87}, {"SHARED", 12}, {"SHOW", 23}, {"STEP", 19},
    {"STORE", 70}, {"TEXT", 82}, {"TEXTMERGE", 20}, {"THIS", 1}, {"THISFORM", 2}, {"TO", 25},
    {"TOP", 27}, {"TO_MEMVAR", 21}, {"TXMBUF", 26}, {"VALUE", 99}, {"WHILE", 79}, {"Y", 62},
    {"[]", 6}, {"__COLUMN__", 73}, {"__DIR__", 49}, {"__FILE__", 50}, {"__LINE__", 72},
    {"__OFFSET__", 74}, {"__ZO__", 80},
};

Symtable::Symtable() {
    ZO_TRACE();
    for (const symtable_fixed_st& fixed : symtable_fixed) enter(String(fixed.name), fixed.id);
}

// The stored name is a copy of its own, so that a name cut from a larger
// text (a source file, a macro) does not keep that whole text alive.
void Symtable::enter(const String& name, unsigned id) {
    String stored = String::fromBytes(name.read(), name.size(), name.get_charset());
    ids_.emplace(stored, id);
    names_.emplace(id, stored);
    if (id >= next_id_) next_id_ = id + 1;
}

unsigned Symtable::symbolize(const String& name) {
    ZO_TRACE();
    {
        std::shared_lock reading(lock_);
        auto found = ids_.find(name);
        if (found != ids_.end()) return found->second;
    }
    std::unique_lock writing(lock_);
    auto found = ids_.find(name);
    if (found != ids_.end()) return found->second;
    unsigned id = next_id_;
    enter(name, id);
    return id;
}

unsigned Symtable::symbolize(const char* utf8) { return symbolize(String(utf8)); }

String Symtable::resolve(unsigned id) const {
    std::shared_lock reading(lock_);
    auto found = names_.find(id);
    ZO_ASSERT(found != names_.end());
    return found->second;
}

}  // namespace zobase
