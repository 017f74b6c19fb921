// Comparison, hashing and keys of the machine collations, and the registry
// that makes collations on first use.
#include "text/collation.h"

#include <unicode/uchar.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "base/call_trace.h"
#include "values/error.h"

namespace zobase {

constinit LazyCollation Collation::unicode_machine;
constinit LazyCollation Collation::unicode_machine_ci;

namespace {

constexpr int UNICODE_MACHINE_ID = 1;
constexpr int UNICODE_MACHINE_CI_ID = 1002;
constexpr uint32_t FNV_OFFSET_BASIS = 0x811C9DC5u;
constexpr uint32_t FNV_PRIME = 0x1000193u;
constexpr size_t KEY_CONVERSION_BUFFER = 256;

// Made on first use and kept until shutdown. The lock only guards filling the
// map; a collation is immutable once made.
struct collation_registry_st {
    std::recursive_mutex lock;
    std::unordered_map<int, std::unique_ptr<Collation>> made;
};

collation_registry_st& registry() {
    static collation_registry_st instance;
    return instance;
}

int compare_values(char32_t a, char32_t b) noexcept { return a < b ? -1 : (a > b ? 1 : 0); }

// Binary code points lie above the Unicode range and must stay as they are.
char32_t fold_case(char32_t c) noexcept {
    return c <= 0x10FFFF ? static_cast<char32_t>(u_toupper(static_cast<UChar32>(c))) : c;
}

const collation_st* find_row(int colid) noexcept {
    for (const collation_st& row : collation_table)
        if (row.colid == colid) return &row;
    return nullptr;
}

int group_by_name(const String& name) {
    if (name.size() == 0) return COLLATION_GROUP_MACHINE;
    const Collation* ci = Collation::unicode_machine_ci;
    for (const collation_group_st& g : collation_groups) {
        const char* text = g.name;
        if (ci->compare(name.read(), name.end(), name.get_charset(), text, text + strlen(text),
                        Charset::ascii) == 0)
            return g.group;
    }
    return 0;
}

}  // namespace

int TEqEq::finish(const char* p1, const char* e1, const Charset*, const char* p2,
                  const char* e2, const Charset*) noexcept {
    if (p1 == e1) return p2 == e2 ? 0 : -1;
    return 1;
}

int TEqExactOff::finish(const char* p1, const char* e1, const Charset*, const char* p2,
                        const char* e2, const Charset*) noexcept {
    if (p2 == e2) return 0;
    return -1;
}

Collation* LazyCollation::load() const {
    __init_collations();
    Collation* c = object_.load(std::memory_order_acquire);
    ZO_ASSERT(c != nullptr);
    return c;
}

Collation::Collation(const collation_st* row, const Charset* charset, char pad,
                     uint64_t key_size_factor) noexcept
    : row(*row), charset(charset), pad(pad), key_size_factor(key_size_factor) {}

Collation::~Collation() = default;

int Collation::compare_char(char32_t a, char32_t b) const noexcept { return compare_values(a, b); }

uint32_t Collation::hash(const char* begin, const char* end, const Charset* cs) const {
    uint32_t h = FNV_OFFSET_BASIS;
    while (begin != end) {
        h ^= static_cast<uint32_t>(cs->next(begin, end));
        h *= FNV_PRIME;
    }
    return h;
}

uint64_t Collation::create_char_key(const char* bytes, uint64_t size, bool full_length,
                                    char* key, uint64_t key_length) const {
    uint64_t n = size < key_length ? size : key_length;
    memcpy(key, bytes, n);
    return n;
}

uint64_t Collation::create_char_key(const String& text, bool full_length, char* key,
                                    uint64_t key_length) const {
    ZO_TRACE();
    const Charset* from = text.get_charset();
    if (!charset || from == charset || from == Charset::binary)
        return create_char_key(text.read(), text.size(), full_length, key, key_length);
    char buffer[KEY_CONVERSION_BUFFER];
    char* out = buffer;
    CstranError result =
        from->convert(text.read(), text.end(), out, buffer + sizeof buffer, charset, CSTRAN_STRICT);
    if (result != 0 && result != -1) throw collation_not_impl(text);
    return create_char_key(buffer, static_cast<uint64_t>(out - buffer), full_length, key,
                           key_length);
}

int Collation::compare(const char* b1, const char* e1, const Charset* c1, const char* b2,
                       const char* e2, const Charset* c2) const {
    return compare_internal<TEqEq>(b1, e1, c1, b2, e2, c2);
}

int Collation::compare_exact_off(const char* b1, const char* e1, const Charset* c1,
                                 const char* b2, const char* e2, const Charset* c2) const {
    return compare_internal<TEqExactOff>(b1, e1, c1, b2, e2, c2);
}

int Collation::compare_exact_on(const char* b1, const char* e1, const Charset* c1,
                                const char* b2, const char* e2, const Charset* c2) const {
    if (c1 == Charset::binary || c2 == Charset::binary)
        return compare_internal<TEqExactOn<TIsBlank_Binary>>(b1, e1, c1, b2, e2, c2);
    return compare_internal<TEqExactOn<TIsBlank_Text>>(b1, e1, c1, b2, e2, c2);
}

int Collation::compare(const String& a, const String& b) const {
    return compare(a.read(), a.end(), a.get_charset(), b.read(), b.end(), b.get_charset());
}

int Collation::compare_exact_on(const String& a, const String& b) const {
    return compare_exact_on(a.read(), a.end(), a.get_charset(), b.read(), b.end(),
                            b.get_charset());
}

int Collation::compare_exact_off(const String& a, const String& b) const {
    return compare_exact_off(a.read(), a.end(), a.get_charset(), b.read(), b.end(),
                             b.get_charset());
}

uint32_t Collation::hash(const String& text) const {
    return hash(text.read(), text.end(), text.get_charset());
}

int Unicode_Machine_CI::compare_char(char32_t a, char32_t b) const noexcept {
    return compare_values(fold_case(a), fold_case(b));
}

uint32_t Unicode_Machine_CI::hash(const char* begin, const char* end, const Charset* cs) const {
    uint32_t h = FNV_OFFSET_BASIS;
    while (begin != end) {
        h ^= static_cast<uint32_t>(fold_case(cs->next(begin, end)));
        h *= FNV_PRIME;
    }
    return h;
}

uint64_t Generic_Machine_Coll::create_char_key(const char* bytes, uint64_t size,
                                               bool full_length, char* key,
                                               uint64_t key_length) const {
    uint64_t n = Collation::create_char_key(bytes, size, full_length, key, key_length);
    if (!full_length) return n;
    memset(key + n, static_cast<unsigned char>(pad), key_length - n);
    return key_length;
}

Collation* GetCollationByCOLID(int colid) {
    ZO_TRACE();
    collation_registry_st& reg = registry();
    std::lock_guard<std::recursive_mutex> guard(reg.lock);
    auto found = reg.made.find(colid);
    if (found != reg.made.end()) return found->second.get();
    const collation_st* row = find_row(colid);
    if (!row) return nullptr;
    Collation* made = row->factory(row);
    reg.made.emplace(colid, std::unique_ptr<Collation>(made));
    return made;
}

Collation* GetCollationFromGroup(int codepage, int group) {
    ZO_TRACE();
    for (const collation_st& row : collation_table)
        if (row.codepage == codepage && row.group == group) return GetCollationByCOLID(row.colid);
    return nullptr;
}

Collation* collation_for_group(const Charset* charset, const String& name) {
    ZO_TRACE();
    int group = group_by_name(name);
    Collation* found =
        group && charset ? GetCollationFromGroup(static_cast<int>(charset->row.codepage), group)
                         : nullptr;
    if (!found) throw dbf_error_collation_not_supported(name);
    return found;
}

const char* collation_group_name(int group) noexcept {
    for (const collation_group_st& g : collation_groups)
        if (g.group == group) return g.name;
    return nullptr;
}

void __init_collations() {
    ZO_TRACE();
    collation_registry_st& reg = registry();
    std::lock_guard<std::recursive_mutex> guard(reg.lock);
    if (Collation::unicode_machine_ci.object_.load(std::memory_order_acquire)) return;
    __init_character_sets();
    Collation::unicode_machine.object_.store(GetCollationByCOLID(UNICODE_MACHINE_ID),
                                             std::memory_order_release);
    Collation::unicode_machine_ci.object_.store(GetCollationByCOLID(UNICODE_MACHINE_CI_ID),
                                                std::memory_order_release);
}

void __shutdown_collations() {
    ZO_TRACE();
    collation_registry_st& reg = registry();
    std::lock_guard<std::recursive_mutex> guard(reg.lock);
    Collation::unicode_machine.object_.store(nullptr, std::memory_order_release);
    Collation::unicode_machine_ci.object_.store(nullptr, std::memory_order_release);
    reg.made.clear();
}

}  // namespace zobase
