#pragma once
// Symtable: names to small integers. Every run-time look-up of a variable,
// member, class or function goes by this id. Names match without regard to
// case, ids are never reused, and the first spelling entered is the one kept.
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "text/collation.h"
#include "values/string.h"

namespace zobase {

// Ids that the compiler and the VM use as constants. 9, 10 and 65 have no
// name. SYMBOL_DIR and its kin stand for __DIR__ and the other bracketed names.
enum FixedSymbol : unsigned {
    SYMBOL_THIS = 1,
    SYMBOL_THISFORM = 2,
    SYMBOL_INIT = 3,
    SYMBOL_DESTROY = 4,
    SYMBOL_ADD = 5,
    SYMBOL_INDEX = 6,
    SYMBOL_COUNT = 7,
    SYMBOL_REMOVE = 8,
    SYMBOL_IN = 11,
    SYMBOL_SHARED = 12,
    SYMBOL_ALIAS = 13,
    SYMBOL_AGAIN = 14,
    SYMBOL_SELECT = 15,
    SYMBOL_DIMENSION = 16,
    SYMBOL_OFF = 17,
    SYMBOL_ON = 18,
    SYMBOL_STEP = 19,
    SYMBOL_TEXTMERGE = 20,
    SYMBOL_TO_MEMVAR = 21,
    SYMBOL_ADDITIVE = 22,
    SYMBOL_SHOW = 23,
    SYMBOL_NOSHOW = 24,
    SYMBOL_TO = 25,
    SYMBOL_TXMBUF = 26,
    SYMBOL_TOP = 27,
    SYMBOL_BOTTOM = 28,
    SYMBOL_RECORD = 29,
    SYMBOL_EXACT = 30,
    SYMBOL_M = 31,
    SYMBOL_BATCHMODE = 32,
    SYMBOL_ERRORNO = 33,
    SYMBOL_MESSAGE = 34,
    SYMBOL_EXCEPTION = 35,
    SYMBOL_DATASESSION = 36,
    SYMBOL_SESSION = 37,
    SYMBOL_DATASESSIONID = 38,
    SYMBOL_ADDOBJECT = 39,
    SYMBOL_ADDPROPERTY = 40,
    SYMBOL_BASECLASS = 41,
    SYMBOL_CLASS = 42,
    SYMBOL_CLASSLIBRARY = 43,
    SYMBOL_COMMENT = 44,
    SYMBOL_CONTROLCOUNT = 45,
    SYMBOL_CONTROLS = 46,
    SYMBOL_ERROR = 47,
    SYMBOL_PATH = 48,
    SYMBOL_DIR = 49,
    SYMBOL_FILE = 50,
    SYMBOL_MEMVAR = 51,
    SYMBOL_AT = 52,
    SYMBOL_IIF = 53,
    SYMBOL_EVL = 54,
    SYMBOL_NVL = 55,
    SYMBOL_ARGC = 56,
    SYMBOL_ARGV = 57,
    SYMBOL_COMPAT = 58,
    SYMBOL_KESTRO = 59,
    SYMBOL_I = 60,
    SYMBOL_INTEGER = 61,
    SYMBOL_Y = 62,
    SYMBOL_MONEY = 63,
    SYMBOL_F = 64,
    SYMBOL_B = 66,
    SYMBOL_DOUBLE = 67,
    SYMBOL_N = 68,
    SYMBOL_NUMERIC = 69,
    SYMBOL_STORE = 70,
    SYMBOL_EMPTY = 71,
    SYMBOL_LINE = 72,
    SYMBOL_COLUMN = 73,
    SYMBOL_OFFSET = 74,
    SYMBOL_COLLECTION = 75,
    SYMBOL_FLOOR = 76,
    SYMBOL_FOR = 77,
    SYMBOL_REST = 78,
    SYMBOL_WHILE = 79,
    SYMBOL_ZO = 80,
    SYMBOL_EOF = 81,
    SYMBOL_TEXT = 82,
    SYMBOL_ODBCHDBC = 83,
    SYMBOL_ODBCHSTMT = 84,
    SYMBOL_SHA2_256 = 85,
    SYMBOL_SHA2_384 = 86,
    SYMBOL_SHA2_512 = 87,
    SYMBOL_SHA1 = 88,
    SYMBOL_MD5 = 89,
    SYMBOL_NEWOBJECT = 90,
    SYMBOL_DODEFAULT = 91,
    SYMBOL_CREATEOBJECT = 92,
    SYMBOL_DELETED = 93,
    SYMBOL_GET_ENUMERATOR = 94,
    SYMBOL_CODEPAGE = 95,
    SYMBOL_ENGINE = 96,
    SYMBOL_KESOBJECT = 97,
    SYMBOL_KEY = 98,
    SYMBOL_VALUE = 99,
    SYMBOL_CURRENCY = 100,
};

struct symtable_fixed_st {
    const char* name;
    unsigned id;
};

constexpr size_t SYMTABLE_FIXED_COUNT = 97;
// Sorted by name; the ids are not.
extern const symtable_fixed_st symtable_fixed[SYMTABLE_FIXED_COUNT];

// Compiling, the main writer, runs on one thread at a time; a reader-writer
// lock still guards the maps, since threads of the language name members and
// classes at run time too.
class Symtable {
public:
    Symtable();
    Symtable(const Symtable&) = delete;
    Symtable& operator=(const Symtable&) = delete;

    unsigned symbolize(const String& name);
    unsigned symbolize(const char* utf8);
    String resolve(unsigned id) const;

private:
    void enter(const String& name, unsigned id);

    std::unordered_map<String, unsigned, StringHash_Unicode_Machine_CI,
                       StringEqual_Unicode_Machine_CI>
        ids_;
    std::unordered_map<unsigned, String> names_;
    unsigned next_id_ = 1;
    mutable std::shared_mutex lock_;
};

}  // namespace zobase
