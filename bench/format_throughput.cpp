// Rates of dates and numbers turned into text: 1,000,000 calls of dtoc and
// of str in the language, then the formatter cache on its own, for a
// numeric style (written without ICU) and for SHORT (through ICU). The
// cache's count of built formatters shows that each format is built once,
// however many calls use it.
#include <chrono>
#include <cstdio>
#include <string>

#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "text/date_format.h"
#include "values/date.h"

using namespace zobase;

namespace {

constexpr int CALLS = 1000000;

class QuietScreen : public Screen {
public:
    std::string errors;
    void internal_out(const String&) override {}
    void internal_err(const String& text) override { errors += text.u8str(); }
};

double seconds_of(auto work) {
    auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void report(const char* label, double seconds, uint64_t built) {
    std::printf("  %-34s %8.3f s %12.0f calls/s %8.1f ns/call   formatters built: %llu\n", label,
                seconds, CALLS / seconds, seconds * 1e9 / CALLS, static_cast<unsigned long long>(built));
}

// A loop of the language, timed as a whole (the loop itself included).
void language_loop(Runtime* runtime, const char* label, const char* body) {
    std::string program = "d = {^2000-01-01}\nn = 0\nFOR i = 1 TO " + std::to_string(CALLS) +
                          "\n  " + body + "\nNEXT";
    uint64_t before = runtime->date_formats().built();
    double seconds = seconds_of([&] { RunCommand(runtime, String(program.c_str())); });
    report(label, seconds, runtime->date_formats().built() - before);
}

void cache_loop(const char* label, int32_t style) {
    DateFormatCache cache;
    size_t bytes = 0;
    double seconds = seconds_of([&] {
        for (int i = 0; i < CALLS; ++i) {
            const date_format_st& format = cache.date_format(style, false, "/");
            bytes += format_date(*format.formatter, date_st{2451545u + static_cast<uint32_t>(i % 20000)}).size();
        }
    });
    report(label, seconds, cache.built());
    if (bytes == 0) std::printf("nothing formatted\n");
}

}  // namespace

int main() {
    QuietScreen screen;
    Runtime* runtime = CreateRuntime(&screen);
    std::printf("dates and numbers as text, %d calls each\n", CALLS);
    language_loop(runtime, "dtoc(d + i % 20000) in a loop", "n = n + len(dtoc(d + i % 20000))");
    language_loop(runtime, "str(i * 1.25, 12, 2) in a loop", "n = n + len(str(i * 1.25, 12, 2))");
    language_loop(runtime, "the loop alone (len(\"01/01/00\"))", "n = n + len(\"01/01/00\")");
    cache_loop("cache: AMERICAN, written directly", 0);
    cache_loop("cache: SHORT, through ICU", 10);
    ReleaseRuntime(runtime);
    if (!screen.errors.empty()) {
        std::printf("errors: %s\n", screen.errors.c_str());
        return 1;
    }
    return 0;
}
