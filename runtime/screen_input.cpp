#include "runtime/screen_input.h"

#include <string>

#include "runtime/screen.h"
#include "text/charset.h"

namespace zobase {

namespace {

constexpr size_t MAX_CHAR_BYTES = 8;

// Whole characters one at a time, so a line never swallows the next one's
// bytes. Tells whether the piece read ends the line; only the new piece is
// decoded, so a long line costs its length once.
bool append_next_char(Screen* screen, std::string* bytes, const Charset** charset, bool* line_end) {
    char buffer[MAX_CHAR_BYTES];
    size_t got = screen->read(buffer, sizeof buffer, 1, charset);
    if (got == 0) return false;
    bytes->append(buffer, got);
    const char* at = buffer;
    char32_t c = 0;
    while (at != buffer + got) c = (*charset)->next(at, buffer + got);
    *line_end = c == U'\n';
    return true;
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
    bool line_end = false;
    while (!line_end && append_next_char(screen, &bytes, &charset, &line_end)) any = true;
    if (!any) return false;
    String text = String::fromBytes(bytes.data(), bytes.size(), charset ? charset : Charset::utf8);
    text.convert(Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    *line = without_line_end(text);
    return true;
}

}  // namespace zobase
