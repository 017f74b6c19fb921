#include "tables/field_names.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <string>
#include <vector>

#include "text/charset.h"

namespace zobase {

namespace {

// Bytes the character takes in the charset, or 0 if the charset lacks it.
size_t encoded_size(char32_t c, const Charset* charset) {
    char utf8[U8_MAX_LENGTH];
    size_t n = 0;
    U8_APPEND_UNSAFE(utf8, n, c);
    size_t size = 0;
    if (Charset::utf8->calculate(utf8, utf8 + n, charset, size, CSTRAN_STRICT) != 0) return 0;
    return size;
}

// A name with the byte size of each of its characters in the charset.
struct sized_name_st {
    std::u32string text;
    std::vector<size_t> sizes;
    size_t total = 0;

    void push_back(char32_t c, size_t size) {
        text.push_back(c);
        sizes.push_back(size);
        total += size;
    }
    void cut_to(size_t limit) {
        while (!text.empty() && total > limit) {
            total -= sizes.back();
            sizes.pop_back();
            text.pop_back();
        }
    }
};

bool valid_at(char32_t c, size_t index) {
    if (c == U'_') return true;
    return index == 0 ? u_isalpha(static_cast<UChar32>(c)) : u_isalnum(static_cast<UChar32>(c));
}

std::u32string digits_of(unsigned long long n) {
    std::string text = std::to_string(n);
    return std::u32string(text.begin(), text.end());
}

}  // namespace

std::u32string FieldNameSet::fold(const std::u32string& name) {
    std::u32string key;
    for (char32_t c : name) key.push_back(static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT)));
    return key;
}

std::u32string uniqify(const std::u32string& name, size_t limit, const Charset* charset,
                       FieldNameSet& taken, uniqify_report_st* report) {
    const size_t underscore_size = encoded_size(U'_', charset);
    sized_name_st valid;
    *report = uniqify_report_st();
    for (size_t i = 0; i < name.size(); ++i) {
        size_t size = name[i] <= 0x10FFFF ? encoded_size(name[i], charset) : 0;
        if (size && valid_at(name[i], i)) {
            valid.push_back(name[i], size);
        } else {
            valid.push_back(U'_', underscore_size);
            report->changed = true;
        }
    }
    if (name.empty()) {
        valid.push_back(U'_', underscore_size);
        report->changed = true;
    }
    size_t full = valid.text.size();
    valid.cut_to(limit);
    report->cut = valid.text.size() < full;
    std::u32string result = valid.text;
    for (unsigned long long n = 2; taken.contains(result); ++n) {
        report->renamed = true;
        std::u32string suffix = digits_of(n);
        sized_name_st base = valid;
        // Digits take one byte in every table charset.
        base.cut_to(limit > suffix.size() ? limit - suffix.size() : 0);
        result = base.text + suffix;
    }
    taken.insert(result);
    return result;
}

}  // namespace zobase
