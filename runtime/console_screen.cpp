// The console screen: standard output, error and input of the process.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <vector>

#include "runtime/screen.h"
#include "runtime/screen_input.h"
#include "text/charset.h"
#include "text/collation.h"
#include "vm/interrupt.h"

namespace zobase {

namespace {

void write_all(int fd, const char* bytes, size_t size) {
    while (size > 0) {
        ssize_t written = ::write(fd, bytes, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            return;  // a closed stream loses the text, as a console would
        }
        bytes += written;
        size -= static_cast<size_t>(written);
    }
}

// A binary string is not text: it shows as "0h" and two hex digits per byte.
String hex_form(const String& text) {
    static const char digits[] = "0123456789ABCDEF";
    String result(2 + text.size() * 2, Charset::ascii);
    char* out = result.write();
    *out++ = '0';
    *out++ = 'h';
    for (const char* p = text.read(); p != text.end(); ++p) {
        unsigned char byte = static_cast<unsigned char>(*p);
        *out++ = digits[byte >> 4];
        *out++ = digits[byte & 15];
    }
    return result;
}

// A terminal always receives UTF-8; redirected output the chosen charset.
void write_text(int fd, const String& text, const Charset* redirected) {
    String copy = text;
    copy.convert(::isatty(fd) ? Charset::utf8 : redirected, 0, CSTRAN_SUBSTITUTE);
    write_all(fd, copy.read(), copy.size());
}

struct msgbox_choice_st {
    MsgboxButton button;
    const char* label;  // the first letter is the short answer
    bool cancels;       // what closed input means
};

// The order in which the dialog lists its choices.
constexpr msgbox_choice_st MSGBOX_CHOICES[] = {
    {MSGBOX_OK, "OK", false},      {MSGBOX_YES, "Yes", false},       {MSGBOX_NO, "No", true},
    {MSGBOX_ABORT, "Abort", true}, {MSGBOX_RETRY, "Retry", false},   {MSGBOX_IGNORE, "Ignore", false},
    {MSGBOX_CANCEL, "Cancel", true},
};

// An empty mask offers OK alone.
std::vector<msgbox_choice_st> offered_choices(int buttons) {
    std::vector<msgbox_choice_st> offered;
    for (const msgbox_choice_st& choice : MSGBOX_CHOICES)
        if (buttons & choice.button) offered.push_back(choice);
    if (offered.empty()) offered.push_back(MSGBOX_CHOICES[0]);
    return offered;
}

std::string choices_prompt(const std::vector<msgbox_choice_st>& offered) {
    std::string prompt;
    for (const msgbox_choice_st& choice : offered) {
        if (!prompt.empty()) prompt += ", ";
        prompt += std::string("[") + choice.label[0] + "]" + (choice.label + 1);
    }
    return prompt + "? ";
}

bool answer_matches(const String& answer, const msgbox_choice_st& choice) {
    const Collation* ci = Collation::unicode_machine_ci;
    return ci->compare(answer, String(choice.label)) == 0 ||
           ci->compare(answer, String(std::string(1, choice.label[0]).c_str())) == 0;
}

// Closed input must never leave the user waiting: it takes the last offered
// choice that backs out, or the last choice when none does.
MsgboxButton answer_at_end_of_input(const std::vector<msgbox_choice_st>& offered) {
    for (auto it = offered.rbegin(); it != offered.rend(); ++it)
        if (it->cancels) return it->button;
    return offered.back().button;
}

}  // namespace

// The screen may exist before any runtime, so it loads the charsets itself.
ConsoleScreen::ConsoleScreen() {
    __init_character_sets();
    output_charset = input_charset = Charset::utf8;
}

void ConsoleScreen::set_output_charset(const Charset* charset) { output_charset = charset; }
void ConsoleScreen::set_input_charset(const Charset* charset) { input_charset = charset; }

void ConsoleScreen::internal_out(const String& text) {
    if (text.get_charset() == Charset::binary) write_text(STDOUT_FILENO, hex_form(text), output_charset);
    else write_text(STDOUT_FILENO, text, output_charset);
}

void ConsoleScreen::internal_err(const String& text) {
    write_text(STDERR_FILENO, text, output_charset);
}

void ConsoleScreen::clear() {
    static const char sequence[] = "\x1b[H\x1b[2J";
    write_all(STDOUT_FILENO, sequence, sizeof sequence - 1);
}

// Output is written unbuffered; a host that also prints through stdio is flushed.
void ConsoleScreen::flush() { std::fflush(stdout); }

// Reads until `count` characters are decoded, the buffer is full or the input
// ends; returns the bytes read. Ctrl-C ends a read as the end of input does,
// so that it answers the error dialog with Abort.
size_t ConsoleScreen::read(char* buffer, size_t size, size_t count, const Charset** charset) {
    if (!*charset) *charset = input_charset;
    const Charset* cs = *charset;
    size_t used = 0, chars = 0, char_start = 0;
    while (used < size && chars < count) {
        ssize_t got = ::read(STDIN_FILENO, buffer + used, 1);
        if (got < 0 && errno == EINTR && !vm_interrupt_requested.load()) continue;
        if (got <= 0) break;
        ++used;
        const char* p = buffer + char_start;
        size_t pending = used - char_start;
        char32_t c = cs->next(p, buffer + used);
        if ((c != 0xFFFD && p == buffer + used) || pending >= cs->max_char()) {
            ++chars;
            char_start = used;
        }
    }
    return used;
}

// The console has no timer to close the dialog, so `timeout` and `icon` do not apply.
int ConsoleScreen::msgbox(const String& text, const String& title, int buttons, int icon, int timeout) {
    std::vector<msgbox_choice_st> offered = offered_choices(buttons);
    for (const String* line : {&title, &text}) {
        if (line->size() == 0) continue;
        internal_out(*line);
        internal_out(String("\n"));
    }
    for (;;) {
        internal_out(String(choices_prompt(offered).c_str()));
        String answer;
        if (!read_screen_line(this, &answer)) {
            internal_out(String("\n"));
            return answer_at_end_of_input(offered);
        }
        answer.alltrim();
        for (const msgbox_choice_st& choice : offered)
            if (answer_matches(answer, choice)) return choice.button;
        internal_out(String("invalid input\n"));
    }
}

}  // namespace zobase
