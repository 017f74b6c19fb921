#include "frontend/keywords.h"

#include <mutex>
#include <unordered_map>

#include "base/call_trace.h"
#include "text/charset.h"
#include "text/collation.h"
#include "values/error.h"
#include "values/string_detail.h"

namespace zobase {

namespace {

const keyword_st keyword_table[KEYWORD_COUNT] = {
    {U"ADD", 0},
    {U"ADDITIVE", 4},
    {U"AFTER", 0},
    {U"AND", 0},
    {U"AGAIN", 0},
    {U"ALIAS", 0},
    {U"ALL", 0},
    {U"ALTER", 0},
    {U"APPEND", 4},
    {U"ARRAY", 0},
    {U"AS", 0},
    {U"ASCENDING", 4},
    {U"ASSERT", 4},
    {U"ASSERTS", 0},
    {U"AT", 0},
    {U"AUTOINC", 0},
    {U"B", 0},
    {U"BEGIN", 0},
    {U"BINARY", 0},
    {U"BOTTOM", 4},
    {U"BLANK", 4},
    {U"BLOB", 0},
    {U"BLOCKSIZE", 4},
    {U"BROWSE", 4},
    {U"C", 0},
    {U"CANCEL", 4},
    {U"CANDIDATE", 0},
    {U"CASE", 0},
    {U"CAST", 0},
    {U"CATCH", 0},
    {U"CD", 0},
    {U"CDX", 0},
    {U"CENTURY", 4},
    {U"CHAR", 0},
    {U"COMPACT", 0},
    {U"CODEPAGE", 0},
    {U"COLLATE", 0},
    {U"COLUMN", 5},
    {U"COMMAND", 4},
    {U"CONTINUE", 4},
    {U"COPY", 0},
    {U"CLASS", 4},
    {U"CLEAR", 0},
    {U"CLS", 0},
    {U"CREATE", 0},
    {U"CURSOR", 0},
    {U"CURRENCY", 0},
    {U"D", 0},
    {U"DATASESSION", 5},
    {U"DATE", 0},
    {U"DATETIME", 0},
    {U"DECIMALS", 4},
    {U"DEFINE", 4},
    {U"DELETE", 4},
    {U"DELETED", 0},
    {U"DESCENDING", 4},
    {U"DIMENSION", 4},
    {U"DISPLAY", 4},
    {U"DECLARE", 4},
    {U"DO", 0},
    {U"DOUBLE", 0},
    {U"DROP", 0},
    {U"EACH", 0},
    {U"ELSE", 0},
    {U"END", 0},
    {U"ENDCASE", 4},
    {U"ENDDEFINE", 5},
    {U"ENDDO", 0},
    {U"ENDFOR", 5},
    {U"ENDFUNC", 5},
    {U"ENDIF", 0},
    {U"ENDPROC", 4},
    {U"ENDSCAN", 0},
    {U"ENDTEXT", 0},
    {U"ENDTRY", 0},
    {U"ENDWITH", 0},
    {U"ENGINE", 4},
    {U"ERROR", 0},
    {U"EQUAL", 0},
    {U"EXACT", 4},
    {U"EXCEPT", 0},
    {U"EXCLUSIVE", 4},
    {U"EXIT", 0},
    {U"EXTERNAL", 0},
    {U"F", 0},
    {U"FALSE", 0},
    {U"FDOW", 0},
    {U"FINALLY", 0},
    {U"FIND", 0},
    {U"FILE", 0},
    {U"FILTER", 4},
    {U"FLAGS", 0},
    {U"FLOAT", 0},
    {U"KESOBJECT", 4},
    {U"FROM", 0},
    {U"FUNCTION", 4},
    {U"FOR", 0},
    {U"G", 0},
    {U"GATHER", 4},
    {U"GENERAL", 0},
    {U"GO", 0},
    {U"GOTO", 0},
    {U"GREATER", 0},
    {U"HIDDEN", 0},
    {U"HOURS", 4},
    {U"I", 0},
    {U"IF", 0},
    {U"IFDEF", 0},
    {U"IFNDEF", 0},
    {U"IMPORT", 4},
    {U"IMPORTS", 0},
    {U"IN", 0},
    {U"INCLUDE", 0},
    {U"INDEX", 0},
    {U"INTEGER", 0},
    {U"KEY", 0},
    {U"L", 0},
    {U"LIBRARY", 4},
    {U"LIKE", 0},
    {U"LOCAL", 0},
    {U"LOCATE", 4},
    {U"LOGICAL", 0},
    {U"LOOP", 0},
    {U"LONG", 0},
    {U"LPARAMETERS", 5},
    {U"M", 0},
    {U"MEMO", 0},
    {U"MEMVAR", 4},
    {U"MKDIR", 0},
    {U"MODIFY", 4},
    {U"N", 0},
    {U"NAME", 0},
    {U"NEAR", 0},
    {U"NEXT", 0},
    {U"NEXTVALUE", 0},
    {U"NOCPTRANS", 0},
    {U"NOT", 0},
    {U"NOTE", 0},
    {U"NOMENU", 0},
    {U"NOOPTIMIZE", 0},
    {U"NOSHOW", 0},
    {U"NOUPDATE", 0},
    {U"NOWAIT", 0},
    {U"NULL", 0},
    {U"NUMERIC", 0},
    {U"OBJECT", 0},
    {U"OF", 0},
    {U"OFF", 0},
    {U"OLEPUBLIC", 0},
    {U"ON", 0},
    {U"OR", 0},
    {U"ORDER", 0},
    {U"OTHERWISE", 4},
    {U"PACK", 0},
    {U"PATH", 0},
    {U"PARAMETERS", 4},
    {U"POINT", 4},
    {U"PRAGMA", 0},
    {U"PREFIX", 0},
    {U"PRETEXT", 0},
    {U"PRIVATE", 0},
    {U"PROCEDURE", 4},
    {U"PROTECTED", 0},
    {U"PUBLIC", 0},
    {U"Q", 0},
    {U"QUIT", 0},
    {U"RECALL", 0},
    {U"RECORD", 0},
    {U"REINDEX", 0},
    {U"RENAME", 0},
    {U"REPLACE", 4},
    {U"REST", 0},
    {U"RETURN", 4},
    {U"ROLLBACK", 0},
    {U"RUN", 0},
    {U"SAME", 0},
    {U"SCAN", 0},
    {U"SCATTER", 4},
    {U"SECONDS", 4},
    {U"SEPARATOR", 4},
    {U"SELECT", 4},
    {U"SEEK", 0},
    {U"SET", 0},
    {U"SINGLE", 0},
    {U"SKIP", 0},
    {U"STEP", 0},
    {U"STORE", 0},
    {U"STRING", 0},
    {U"STRUCTURE", 4},
    {U"SHARED", 0},
    {U"SHORT", 0},
    {U"SHOW", 0},
    {U"SPACE", 4},
    {U"SUSPEND", 4},
    {U"SYSFORMATS", 4},
    {U"T", 0},
    {U"TABLE", 0},
    {U"TAG", 0},
    {U"TEXT", 0},
    {U"TEXTMERGE", 5},
    {U"THEN", 0},
    {U"THIS", 0},
    {U"THISFORM", 0},
    {U"TIMEOUT", 0},
    {U"TO", 0},
    {U"TOP", 0},
    {U"TRY", 0},
    {U"TRANSACTION", 4},
    {U"TRUE", 0},
    {U"THROW", 0},
    {U"U", 0},
    {U"U8", 0},
    {U"U16", 0},
    {U"U32", 0},
    {U"USE", 0},
    {U"UNDEF", 0},
    {U"UNICODE", 0},
    {U"UNIQUE", 0},
    {U"UNLOCK", 4},
    {U"V", 0},
    {U"VALUE", 0},
    {U"VARBINARY", 0},
    {U"VARCHAR", 0},
    {U"W", 0},
    {U"WAIT", 0},
    {U"WHEN", 0},
    {U"WHILE", 4},
    {U"WITH", 0},
    {U"WINDOW", 0},
    {U"Y", 0},
    {U"ZAP", 0},
    // Added after the first table, so that the earlier rows keep their tokens.
    {U"DLLS", 0},
    {U"RELEASE", 4},
    {U"FIELDS", 4},
};

// A key is a span of text in its own charset; the table's names are UTF-32.
struct keyword_key_st {
    const char* begin;
    const char* end;
    const Charset* charset;
};

struct KeywordHash {
    size_t operator()(const keyword_key_st& k) const {
        return Collation::unicode_machine_ci->hash(k.begin, k.end, k.charset);
    }
};

struct KeywordEqual {
    bool operator()(const keyword_key_st& a, const keyword_key_st& b) const {
        return Collation::unicode_machine_ci->compare(a.begin, a.end, a.charset, b.begin, b.end,
                                                      b.charset) == 0;
    }
};

typedef std::unordered_map<keyword_key_st, uint32_t, KeywordHash, KeywordEqual> keyword_map;

size_t name_length(const char32_t* name) {
    size_t n = 0;
    while (name[n]) ++n;
    return n;
}

keyword_key_st name_prefix(const char32_t* name, size_t chars) {
    const char* begin = reinterpret_cast<const char*>(name);
    return {begin, begin + chars * sizeof(char32_t), Charset::utf32le};
}

void enter_abbreviations(keyword_map& map, const keyword_st& row, uint32_t token) {
    size_t length = name_length(row.name);
    for (size_t n = row.abbreviation; n < length; ++n) {
        auto inserted = map.emplace(name_prefix(row.name, n), token);
        if (!inserted.second) throw duplicate_keyword_exception(String(row.name));
    }
}

const keyword_map& keywords() {
    static std::once_flag once;
    static keyword_map map;
    std::call_once(once, [] {
        ZO_TRACE();
        string_detail::require_charsets();
        map.reserve(KEYWORD_COUNT * 4);
        for (size_t i = 0; i < KEYWORD_COUNT; ++i) {
            const keyword_st& row = keyword_table[i];
            uint32_t token = static_cast<uint32_t>(ParserToken::keyword_first) + i;
            if (row.abbreviation) enter_abbreviations(map, row, token);
            map[name_prefix(row.name, name_length(row.name))] = token;
        }
    });
    return map;
}

}  // namespace

const keyword_st* keyword_rows() noexcept { return keyword_table; }

uint32_t keyword_token(const char32_t* name) {
    uint32_t token = 0;
    const char* begin = reinterpret_cast<const char*>(name);
    bool found = lookup_keyword(begin, begin + name_length(name) * sizeof(char32_t),
                                Charset::utf32le, token);
    ZO_ASSERT(found);
    return token;
}

bool lookup_keyword(const char* begin, const char* end, const Charset* charset, uint32_t& token) {
    const keyword_map& map = keywords();
    auto it = map.find(keyword_key_st{begin, end, charset});
    if (it == map.end()) return false;
    token = it->second;
    return true;
}

}  // namespace zobase
