#include "runtime/screen_input.h"

#include <string>

#include "runtime/screen.h"
#include "text/charset.h"

namespace zobase {

namespace {

constexpr size_t MAX_CHAR_BYTES = 8;

// Whole characters one at a time, so a line never swallows the next one's bytes.
bool append_next_char(Screen* screen, std::string* bytes, const Charset** charset) {
    char buffer[MAX_CHAR_BYTES];
    size_t got = screen->read(buffer, sizeof buffer, 1, charset);
    if (got == 0) return false;
    bytes->append(buffer, got);
    return true;
}

bool ends_line(const std::string& bytes, const Charset* charset) {
    if (bytes.empty()) return false;
    const char* begin = bytes.data();
    const char* last = begin;
    char32_t c = 0;
    while (last != begin + bytes.size()) c = charset->next(last, begin + bytes.size());
    return c == U'\n';
}

// Trailing blanks are part of the line; only "\n" or "\r\n" go.
String without_line_end(const String& text) {
    const char* end = text.end();
    if (end != text.read() && end[-1] == '\n') --end;
    if (end != text.read() && end[-1] == '\r') --end;
    return String(text, text.read(), end);
}

}  // namespace

bool read_screen_line(Screen* screen, String* line) {
    const Charset* charset = nullptr;
    std::string bytes;
    bool any = false;
    while (append_next_char(screen, &bytes, &charset)) {
        any = true;
        if (ends_line(bytes, charset)) break;
    }
    if (!any) return false;
    String text = String::fromBytes(bytes.data(), bytes.size(), charset ? charset : Charset::utf8);
    text.convert(Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    *line = without_line_end(text);
    return true;
}

}  // namespace zobase
