// Each national table against ICU's own collator on the table's alphabet:
// ordering texts by their keys must agree with ICU at the secondary strength
// (letters, then accents; case is left out). What a byte table can't say as
// ICU says it is listed below with a witness and checked to still differ.
#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/uset.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "text/mapped_collation.h"
#include "text/national_orders.h"

namespace zobase {
namespace {

// Where the key and ICU part ways, each with a text that shows it.
struct known_difference_st {
    int group;  // 0: every order whose code page has the text
    std::u16string text;
    std::u16string witness;
};

const std::vector<known_difference_st> known_differences = {
    // More than two primaries in ICU; the key keeps the first and the last.
    {0, u"\u2026", u".."},
    {0, u"\u00BC", u"14"},
    {0, u"\u00BD", u"12"},
    {0, u"\u00BE", u"34"},
    // Filling the table's rows: ICU reads these as two letters.
    {COLLATION_GROUP_NORDAN, u"aA", u"aa"},
    {COLLATION_GROUP_SPANISH, u"cH", u"ch"},
    {COLLATION_GROUP_SPANISH, u"lL", u"ll"},
    // Hungarian doubled letters are two letters in ICU (ssz as sz sz); a
    // three-byte row holds one.
    {COLLATION_GROUP_HUNGARY, u"ccs", u"cs"},
    {COLLATION_GROUP_HUNGARY, u"Ccs", u"cs"},
    {COLLATION_GROUP_HUNGARY, u"CCS", u"cs"},
    {COLLATION_GROUP_HUNGARY, u"ggy", u"gy"},
    {COLLATION_GROUP_HUNGARY, u"Ggy", u"gy"},
    {COLLATION_GROUP_HUNGARY, u"GGY", u"gy"},
    {COLLATION_GROUP_HUNGARY, u"lly", u"ly"},
    {COLLATION_GROUP_HUNGARY, u"Lly", u"ly"},
    {COLLATION_GROUP_HUNGARY, u"LLY", u"ly"},
    {COLLATION_GROUP_HUNGARY, u"nny", u"ny"},
    {COLLATION_GROUP_HUNGARY, u"Nny", u"ny"},
    {COLLATION_GROUP_HUNGARY, u"NNY", u"ny"},
    {COLLATION_GROUP_HUNGARY, u"ssz", u"sz"},
    {COLLATION_GROUP_HUNGARY, u"Ssz", u"sz"},
    {COLLATION_GROUP_HUNGARY, u"SSZ", u"sz"},
    {COLLATION_GROUP_HUNGARY, u"tty", u"ty"},
    {COLLATION_GROUP_HUNGARY, u"Tty", u"ty"},
    {COLLATION_GROUP_HUNGARY, u"TTY", u"ty"},
    {COLLATION_GROUP_HUNGARY, u"zzs", u"zs"},
    {COLLATION_GROUP_HUNGARY, u"Zzs", u"zs"},
    {COLLATION_GROUP_HUNGARY, u"ZZS", u"zs"},
};

// ICU's own multi-letter units that no table row carries: those that end in
// an accented letter (Danish a with á, Hungarian d with ž), which ICU adds to
// every letter of its order, and the Hungarian ddz and ddzs, whose doubled
// letter a row can't hold. They are read letter by letter here.
bool left_out_by_rule(const std::u16string& contraction) {
    std::u16string lower;
    for (char16_t c : contraction) lower += c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c;
    if (lower == u"ddz" || lower == u"ddzs") return true;
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* nfd = unorm2_getNFDInstance(&status);
    UChar last = contraction.back();
    return !unorm2_isNormalized(nfd, &last, 1, &status);
}

// Secondary strength, the level the tables encode.
constexpr size_t KEY_LENGTH = 32;

class NationalTable : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override {
        __init_collations();
        collation_ = dynamic_cast<Mapped_Collation*>(GetCollationByCOLID(GetParam()));
        ASSERT_NE(collation_, nullptr);
        order_ = national_order(collation_->group());
        ASSERT_NE(order_, nullptr);
        UErrorCode status = U_ZERO_ERROR;
        icu_ = ucol_open(order_->locale, &status);
        ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
        ucol_setStrength(icu_, UCOL_SECONDARY);
        for (const known_difference_st& d : known_differences)
            if ((d.group == 0 || d.group == collation_->group()) && encodable(d.text) &&
                encodable(d.witness))
                differences_.push_back(&d);
    }
    void TearDown() override {
        if (icu_) ucol_close(icu_);
    }

    std::u16string decode(const std::string& bytes) const {
        char16_t buffer[16];
        const char* src = bytes.data();
        char16_t* dst = buffer;
        collation_->charset->out(src, src + bytes.size(), dst, buffer + 16);
        return std::u16string(buffer, dst);
    }

    bool encodable(const std::u16string& text) const { return encode(text).size() == text.size(); }

    std::string encode(const std::u16string& text) const {
        char buffer[16];
        const char16_t* src = text.data();
        char* dst = buffer;
        if (collation_->charset->in(src, src + text.size(), dst, buffer + 16, CSTRAN_STRICT))
            return "";
        return std::string(buffer, dst);
    }

    std::string key(const std::string& bytes) const {
        char buffer[KEY_LENGTH];
        collation_->create_char_key(bytes.data(), bytes.size(), true, buffer, KEY_LENGTH);
        return std::string(buffer, KEY_LENGTH);
    }

    std::string icu_key(const std::u16string& text) const {
        uint8_t buffer[256];
        int32_t n = ucol_getSortKey(icu_, reinterpret_cast<const UChar*>(text.data()),
                                    int32_t(text.size()), buffer, sizeof buffer);
        return std::string(reinterpret_cast<const char*>(buffer), size_t(n));
    }

    bool weightless(const std::u16string& text) const { return icu_key(text) == icu_key(u""); }

    // A text whose order the key can't give as ICU does.
    bool known_to_differ(const std::u16string& text) const {
        for (const known_difference_st* d : differences_)
            if (text.find(d->text) != std::u16string::npos) return true;
        for (const std::u16string& c : left_out_)
            if (text.find(c) != std::u16string::npos) return true;
        return false;
    }

    // ICU's contractions in this code page that are not rows of the table.
    void collect_left_out_contractions() {
        USet* contractions = uset_openEmpty();
        UErrorCode status = U_ZERO_ERROR;
        ucol_getContractionsAndExpansions(icu_, contractions, nullptr, false, &status);
        ASSERT_TRUE(U_SUCCESS(status));
        for (int32_t i = 0; i < uset_getItemCount(contractions); ++i) {
            UChar32 first, last;
            char16_t buffer[16];
            int32_t n = uset_getItem(contractions, i, &first, &last,
                                     reinterpret_cast<UChar*>(buffer), 16, &status);
            std::u16string text(buffer, size_t(std::max(n, 0)));
            if (n <= 0 || !encodable(text)) continue;
            const auto& seq = order_->sequences;
            if (std::find(seq.begin(), seq.end(), text) != seq.end()) continue;
            left_out_.push_back(text);
        }
        uset_close(contractions);
    }

    struct sample_st {
        std::u16string text;
        std::string ours;
        std::string icu;
    };

    sample_st sample(const std::u16string& text) const {
        return {text, key(encode(text)), icu_key(text)};
    }

    static int sign(int v) { return (v > 0) - (v < 0); }

    static std::string show(const std::u16string& text) {
        std::string out;
        for (char16_t c : text) {
            char code[12];
            snprintf(code, sizeof code, "%sU+%04X", out.empty() ? "" : " ", unsigned(c));
            out += code;
        }
        return out;
    }

    // Sorted by key, each neighbour must stand as ICU has it: ahead, or
    // equal exactly when the keys are. ICU's order is transitive, so this
    // makes the two orders one.
    void expect_same_order(std::vector<sample_st> samples) const {
        std::sort(samples.begin(), samples.end(),
                  [](const sample_st& a, const sample_st& b) { return a.ours < b.ours; });
        size_t failures = 0;
        for (size_t i = 1; i < samples.size() && failures < 10; ++i) {
            const sample_st& a = samples[i - 1];
            const sample_st& b = samples[i];
            int ours = sign(a.ours.compare(b.ours));
            int icu = sign(a.icu.compare(b.icu));
            if (ours == icu) continue;
            ++failures;
            ADD_FAILURE() << collation_->name() << ": " << show(a.text) << " against "
                          << show(b.text) << ": key " << ours << ", ICU " << icu;
        }
    }

    Mapped_Collation* collation_ = nullptr;
    const national_order_st* order_ = nullptr;
    UCollator* icu_ = nullptr;
    std::vector<const known_difference_st*> differences_;
    std::vector<std::u16string> left_out_;
};

// Every byte but the space, which a key drops at the end, weighs something
// alone, and every sequence is one letter.
TEST_P(NationalTable, BytesAndSequencesAreLetters) {
    for (int b = 0; b < 256; ++b)
        if (b != ' ') {
            EXPECT_NE(key(std::string(1, char(b))), std::string(KEY_LENGTH, '\0'))
                << collation_->name() << " byte " << b;
        }
    char buffer[KEY_LENGTH];
    for (const std::u16string& s : order_->sequences) {
        std::string bytes = encode(s);
        ASSERT_EQ(bytes.size(), s.size()) << show(s);
        EXPECT_EQ(
            collation_->create_char_key(bytes.data(), bytes.size(), false, buffer, KEY_LENGTH), 1u)
            << collation_->name() << ": " << show(s);
    }
}

TEST_P(NationalTable, LettersAloneOrderAsInIcu) {
    collect_left_out_contractions();
    std::vector<sample_st> samples;
    for (int b = 0; b < 256; ++b) {
        std::u16string text = decode(std::string(1, char(b)));
        // The space alone is a blank field: its key is empty.
        if (text == u" " || text == u"\uFFFD" || weightless(text) || known_to_differ(text))
            continue;
        samples.push_back(sample(text));
    }
    for (const std::u16string& s : order_->sequences)
        if (!known_to_differ(s)) samples.push_back(sample(s));
    // Every pair, not only neighbours, so that a failure names its letters.
    size_t failures = 0;
    for (size_t i = 0; i < samples.size() && failures < 10; ++i)
        for (size_t j = i + 1; j < samples.size() && failures < 10; ++j) {
            int ours = sign(samples[i].ours.compare(samples[j].ours));
            int icu = sign(samples[i].icu.compare(samples[j].icu));
            if (ours == icu) continue;
            ++failures;
            ADD_FAILURE() << collation_->name() << ": " << show(samples[i].text) << " against "
                          << show(samples[j].text) << ": key " << ours << ", ICU " << icu;
        }
}

TEST_P(NationalTable, TwoLetterTextsOrderAsInIcu) {
    collect_left_out_contractions();
    std::vector<std::u16string> letters;
    for (int b = 0; b < 256; ++b) {
        std::u16string text = decode(std::string(1, char(b)));
        UChar32 c = text[0];
        if (text.size() == 1 && (u_isalpha(c) || u_isdigit(c) || c == u' ') && !weightless(text) &&
            !known_to_differ(text))
            letters.push_back(text);
    }
    for (const std::u16string& s : order_->sequences)
        if (!known_to_differ(s)) letters.push_back(s);
    std::vector<sample_st> samples;
    for (const std::u16string& a : letters)
        for (const std::u16string& b : letters) {
            std::u16string text = a + b;
            if (text.back() != u' ' && !known_to_differ(text)) samples.push_back(sample(text));
        }
    ASSERT_GT(samples.size(), 1000u);
    expect_same_order(samples);
}

TEST_P(NationalTable, KnownDifferencesStillDiffer) {
    for (const known_difference_st* d : differences_) {
        sample_st a = sample(d->text);
        sample_st b = sample(d->witness);
        EXPECT_NE(sign(a.ours.compare(b.ours)), sign(a.icu.compare(b.icu)))
            << collation_->name() << ": " << show(d->text) << " now agrees with ICU";
    }
    collect_left_out_contractions();
    for (const std::u16string& c : left_out_)
        EXPECT_TRUE(left_out_by_rule(c)) << collation_->name() << ": ICU's " << show(c);
}

// ICU gives control characters and the soft hyphen no weight at all, and ties
// every byte the code page leaves undefined. Here each is a letter of its
// own, so that no stored byte vanishes from a key: the weightless ones below
// the space, the undefined ones above everything, each kind in byte order.
TEST_P(NationalTable, WeightlessAndUndefinedBytesKeepTheirPlace) {
    std::string space = key(" x").substr(0, 1);
    std::string previous_weightless, previous_undefined;
    std::string highest_defined;
    for (int b = 0; b < 256; ++b) {
        std::string byte(1, char(b));
        std::u16string text = decode(byte);
        std::string k = key(byte);
        if (text == u"\uFFFD") {
            EXPECT_GT(k, previous_undefined) << collation_->name() << " byte " << b;
            previous_undefined = k;
        } else if (weightless(text)) {
            EXPECT_LT(k.substr(0, 1), space) << collation_->name() << " byte " << b;
            EXPECT_GT(k, previous_weightless) << collation_->name() << " byte " << b;
            previous_weightless = k;
        } else {
            highest_defined = std::max(highest_defined, k);
        }
    }
    for (int b = 0; b < 256; ++b) {
        std::string byte(1, char(b));
        if (decode(byte) != u"\uFFFD") continue;
        EXPECT_GT(key(byte), highest_defined) << collation_->name() << " byte " << b;
    }
}

std::vector<int> national_rows() {
    std::vector<int> out;
    for (const collation_st& row : collation_table)
        if (row.group != COLLATION_GROUP_MACHINE) out.push_back(row.colid);
    return out;
}

INSTANTIATE_TEST_SUITE_P(EveryTable, NationalTable, ::testing::ValuesIn(national_rows()),
                         [](const ::testing::TestParamInfo<int>& info) {
                             for (const collation_st& row : collation_table)
                                 if (row.colid == info.param) return std::string(row.name);
                             return std::to_string(info.param);
                         });

}  // namespace
}  // namespace zobase
