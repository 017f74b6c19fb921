#pragma once
// Collations: how two strings compare and how a string becomes a character
// index key. Comparison works on the code points that charsets deliver, so
// strings of different charsets compare with each other without conversion.
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "base/export.h"
#include "text/charset.h"
#include "values/string.h"

namespace zobase {

class Collation;

// Idempotent; the shutdown destroys every collation made and clears the statics.
ZO_API void __init_collations();
ZO_API void __shutdown_collations();

typedef Collation* (*collation_factory)(const struct collation_st* row);

// One row of the fixed collation table. The id is group * 1000 plus a
// charset number; the machine rows carry the bare number.
struct collation_st {
    int32_t colid;
    const char* name;
    int32_t codepage;
    int32_t group;
    collation_factory factory;
};

enum CollationGroup : int32_t {
    COLLATION_GROUP_MACHINE = 1,
    COLLATION_GROUP_GENERAL = 2,
    COLLATION_GROUP_GREEK = 3,
    COLLATION_GROUP_GERMAN = 4,
    COLLATION_GROUP_POLISH = 5,
    COLLATION_GROUP_TURKISH = 6,
    COLLATION_GROUP_ICELAND = 7,
    COLLATION_GROUP_NORDAN = 8,
    COLLATION_GROUP_SWEFIN = 9,
    COLLATION_GROUP_RUSSIAN = 10,
    COLLATION_GROUP_THAI = 11,
    COLLATION_GROUP_CZECH = 12,
    COLLATION_GROUP_SLOVAK = 13,
    COLLATION_GROUP_HUNGARY = 14,
    COLLATION_GROUP_SPANISH = 15,
    COLLATION_GROUP_DUTCH = 16,
};

struct collation_group_st {
    const char* name;
    int32_t group;
};

constexpr size_t COLLATION_ROW_COUNT = 77;
constexpr size_t COLLATION_GROUP_COUNT = 16;
extern const collation_st collation_table[COLLATION_ROW_COUNT];
extern const collation_group_st collation_groups[COLLATION_GROUP_COUNT];

// Blank tests for the trailing rest under SET EXACT ON.
struct TIsBlank_Text {
    static bool is_blank(char32_t c) noexcept { return c == U' '; }
};
struct TIsBlank_Binary {
    static bool is_blank(char32_t c) noexcept { return c == 0; }
};

// What a comparison answers once one of the strings has run out; at least
// one of the two positions is at its end when these are called.
struct TEqEq {
    static int finish(const char*, const char*, const Charset*, const char*, const char*,
                      const Charset*) noexcept;
};

// The prefix rule of `=` under SET EXACT OFF: the left string need only
// begin with the right one.
struct TEqExactOff {
    static int finish(const char*, const char*, const Charset*, const char*, const char*,
                      const Charset*) noexcept;
};

template <class TIsBlank>
struct TEqExactOn {
    static int finish(const char* p1, const char* e1, const Charset* c1, const char* p2,
                      const char* e2, const Charset* c2) {
        if (p1 != e1) return rest_is_blank(p1, e1, c1) ? 0 : 1;
        if (p2 != e2) return rest_is_blank(p2, e2, c2) ? 0 : -1;
        return 0;
    }

private:
    static bool rest_is_blank(const char* p, const char* end, const Charset* charset) {
        while (p != end)
            if (!TIsBlank::is_blank(charset->next(p, end))) return false;
        return true;
    }
};

// A static collation that makes itself on first use, so that code reading
// Collation::unicode_machine never depends on start-up order.
class ZO_API LazyCollation {
public:
    constexpr LazyCollation() noexcept = default;
    LazyCollation(const LazyCollation&) = delete;
    LazyCollation& operator=(const LazyCollation&) = delete;

    Collation* get() const {
        Collation* c = object_.load(std::memory_order_acquire);
        return c ? c : load();
    }
    operator Collation*() const { return get(); }
    Collation* operator->() const { return get(); }

private:
    friend void __init_collations();
    friend void __shutdown_collations();
    Collation* load() const;
    std::atomic<Collation*> object_{nullptr};
};

class ZO_API Collation {
public:
    collation_st row;
    const Charset* charset;  // null for the Unicode rows, which take any charset as it is
    char pad;
    uint64_t key_size_factor;

    static LazyCollation unicode_machine;     // id 1
    static LazyCollation unicode_machine_ci;  // id 1002

    Collation(const collation_st* row, const Charset* charset, char pad,
              uint64_t key_size_factor) noexcept;
    virtual ~Collation();

    // Negative, 0 or positive, as a sorts before, with or after b.
    virtual int compare_char(char32_t a, char32_t b) const noexcept;
    // 32-bit FNV-1a over the code points, one whole code point per step.
    virtual uint32_t hash(const char* begin, const char* end, const Charset* charset) const;
    // Key from bytes already in this collation's charset. The base form copies
    // what fits and returns the bytes copied.
    virtual uint64_t create_char_key(const char* bytes, uint64_t size, bool full_length,
                                     char* key, uint64_t key_length) const;

    uint64_t create_char_key(const String& text, bool full_length, char* key,
                             uint64_t key_length) const;

    // Both strings are read with their own charsets, or both as bytes when
    // either is binary; TEq settles what happens when one runs out.
    template <class TEq>
    int compare_internal(const char* b1, const char* e1, const Charset* c1, const char* b2,
                         const char* e2, const Charset* c2) const {
        if (c1 == Charset::binary || c2 == Charset::binary) c1 = c2 = Charset::binary;
        while (b1 != e1 && b2 != e2) {
            char32_t a = c1->next(b1, e1);
            char32_t b = c2->next(b2, e2);
            if (int r = compare_char(a, b)) return r;
        }
        return TEq::finish(b1, e1, c1, b2, e2, c2);
    }

    int compare(const char* b1, const char* e1, const Charset* c1, const char* b2,
                const char* e2, const Charset* c2) const;
    int compare_exact_on(const char* b1, const char* e1, const Charset* c1, const char* b2,
                         const char* e2, const Charset* c2) const;
    int compare_exact_off(const char* b1, const char* e1, const Charset* c1, const char* b2,
                          const char* e2, const Charset* c2) const;

    int compare(const String& a, const String& b) const;
    int compare_exact_on(const String& a, const String& b) const;
    int compare_exact_off(const String& a, const String& b) const;
    uint32_t hash(const String& text) const;

    int colid() const noexcept { return row.colid; }
    int group() const noexcept { return row.group; }
    const char* name() const noexcept { return row.name; }
};

class ZO_API Unicode_Machine : public Collation {
public:
    using Collation::Collation;
};

class ZO_API Unicode_Machine_CI : public Collation {
public:
    using Collation::Collation;
    using Collation::hash;
    int compare_char(char32_t a, char32_t b) const noexcept override;
    uint32_t hash(const char* begin, const char* end, const Charset* charset) const override;
};

class ZO_API Generic_Machine_Coll : public Collation {
public:
    using Collation::Collation;
    using Collation::create_char_key;
    // Pads with the pad byte under full length, so every stored key fills the tag.
    uint64_t create_char_key(const char* bytes, uint64_t size, bool full_length, char* key,
                             uint64_t key_length) const override;
};

ZO_API Collation* GetCollationByCOLID(int colid);
ZO_API Collation* GetCollationFromGroup(int codepage, int group);
ZO_API Collation* collation_for_group(const Charset* charset, const String& name);
// The group's name as an index header stores it; null for an unknown group.
ZO_API const char* collation_group_name(int group) noexcept;

// Ordered and hashed containers keyed by String.
struct StringLessThan_Unicode_Machine {
    bool operator()(const String& a, const String& b) const {
        return Collation::unicode_machine->compare(a, b) < 0;
    }
};

struct StringHash_Unicode_Machine_CI {
    size_t operator()(const String& s) const { return Collation::unicode_machine_ci->hash(s); }
};

struct StringEqual_Unicode_Machine_CI {
    bool operator()(const String& a, const String& b) const {
        return Collation::unicode_machine_ci->compare(a, b) == 0;
    }
};

}  // namespace zobase
