// Throughput of the String text paths on a few MB of single-byte
// (windows-1252) and UTF-8 text. Fixed-width length and substr should not
// depend on the size at all, so they are also shown per call.
#include <chrono>
#include <cstdio>
#include <string>

#include "text/charset.h"
#include "values/string.h"

using namespace zobase;

namespace {

constexpr size_t TEXT_BYTES = 4u << 20;

struct timing_st {
    double seconds;
    size_t rounds;
};

template <typename Work>
timing_st measure(Work work) {
    using clock = std::chrono::steady_clock;
    size_t rounds = 0;
    size_t batch = 1;
    auto start = clock::now();
    double elapsed = 0;
    do {
        for (size_t i = 0; i < batch; ++i) work();
        rounds += batch;
        elapsed = std::chrono::duration<double>(clock::now() - start).count();
        if (elapsed < 0.01) batch *= 2;  // keeps the clock out of constant-time figures
    } while (elapsed < 0.3);
    return {elapsed, rounds};
}

volatile size_t sink;

void report(const char* label, const String& text, timing_st t) {
    double mb = static_cast<double>(text.size()) * t.rounds / (1024.0 * 1024.0);
    std::printf("  %-28s %10.1f MB/s  %12.1f ns/call\n", label, mb / t.seconds,
                t.seconds * 1e9 / t.rounds);
}

// Latin prose with a few accented letters, so UTF-8 has multi-byte characters.
std::string sample_utf8() {
    const std::string line = "Le caf\xc3\xa9 est pr\xc3\xaat, la cr\xc3\xa8me aussi; "
                             "the quick brown fox jumps over the lazy dog.\n";
    std::string text;
    while (text.size() < TEXT_BYTES) text += line;
    return text;
}

void run_suite(const char* title, const String& text) {
    std::printf("%s (%zu bytes, %zu characters)\n", title, text.size(), text.length());
    String needle("fox");
    String replacement("wolf");
    report("length", text, measure([&] { sink = text.length(); }));
    report("substr (middle, 100 chars)", text,
           measure([&] { sink = text.substr(text.length() / 2, 100).size(); }));
    size_t count = 0;
    report("scan (needle in UTF-8)", text, measure([&] {
               count = 0;
               sink = text.scan(needle.as_const(), count, nullptr, nullptr);
           }));
    String same_needle(needle);
    same_needle.convert(text.get_charset(), 0, CSTRAN_SUBSTITUTE);
    report("scan (needle in own charset)", text, measure([&] {
               count = 0;
               sink = text.scan(same_needle.as_const(), count, nullptr, nullptr);
           }));
    report("strtran", text, measure([&] {
               sink = text.strtran(same_needle.as_const(), replacement.as_const()).size();
           }));
    report("convert to UTF-16LE", text, measure([&] {
               String copy(text);
               copy.convert(Charset::utf16le, 0, CSTRAN_SUBSTITUTE);
               sink = copy.size();
           }));
    report("lower", text, measure([&] { sink = text.lower().size(); }));
}

}  // namespace

int main() {
    __init_character_sets();
    String utf8 = String(sample_utf8().c_str());
    String single(utf8);
    single.convert(get_charset_by_name("windows-1252"), CON_EXACT, CSTRAN_STRICT);
    run_suite("windows-1252", single);
    run_suite("utf-8", utf8);
    return 0;
}
