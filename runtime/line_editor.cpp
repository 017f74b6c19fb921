#include "runtime/line_editor.h"

#include <histedit.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "text/charset.h"
#include "values/string.h"
#include "vm/interrupt.h"

namespace zobase {

namespace {

constexpr int HISTORY_SIZE = 1000;
constexpr size_t MAX_UTF8_BYTES = 4;

std::wstring wide_of(const std::string& utf8) {
    String text(utf8.c_str());
    text.convert(Charset::utf32le, 0, CSTRAN_SUBSTITUTE);
    return std::wstring(reinterpret_cast<const wchar_t*>(text.read()), text.size() / sizeof(wchar_t));
}

std::string utf8_of(const wchar_t* wide, size_t length) {
    return String::fromBytes(reinterpret_cast<const char*>(wide), length * sizeof(wchar_t), Charset::utf32le)
        .u8str();
}

size_t utf8_sequence_length(unsigned char lead) {
    if (lead < 0x80) return 1;
    if ((lead & 0xE0) == 0xC0) return 2;
    if ((lead & 0xF0) == 0xE0) return 3;
    if ((lead & 0xF8) == 0xF0) return 4;
    return 1;  // a stray byte decodes to U+FFFD on its own
}

}  // namespace

struct LineEditor::state_st {
    EditLine* editor = nullptr;
    HistoryW* history = nullptr;
    std::string history_path;
    std::wstring prompt;
    bool interrupted = false;

    ~state_st() {
        if (editor) el_end(editor);
        if (history) history_wend(history);
    }
};

namespace {

LineEditor::state_st* state_of(EditLine* editor) {
    void* data = nullptr;
    el_wget(editor, EL_CLIENTDATA, &data);
    return static_cast<LineEditor::state_st*>(data);
}

wchar_t* prompt_of(EditLine* editor) { return state_of(editor)->prompt.data(); }

// Whole UTF-8 characters from standard input. A Ctrl-C while waiting (the
// read returns EINTR and the VM's request is set) ends the line as an error.
int read_character(EditLine* editor, wchar_t* out) {
    char bytes[MAX_UTF8_BYTES];
    size_t wanted = 1, got = 0;
    while (got < wanted) {
        ssize_t n = ::read(STDIN_FILENO, bytes + got, 1);
        if (n < 0 && errno == EINTR) {
            if (!vm_interrupt_requested.exchange(false)) continue;
            state_of(editor)->interrupted = true;
            return -1;
        }
        if (n <= 0) return n == 0 && got == 0 ? 0 : -1;
        if (got == 0) wanted = utf8_sequence_length(static_cast<unsigned char>(bytes[0]));
        ++got;
    }
    const char* p = bytes;
    *out = static_cast<wchar_t>(Charset::utf8->next(p, bytes + got));
    return 1;
}

// The history file's folder is private to its user.
void prepare_history_folder(const std::string& path) {
    std::error_code ignored;
    std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::filesystem::create_directories(folder, ignored);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all, ignored);
}

void configure(LineEditor::state_st* state) {
    EditLine* editor = state->editor;
    el_wset(editor, EL_CLIENTDATA, state);
    el_wset(editor, EL_EDITOR, L"emacs");
    // libedit keeps the terminal right across Ctrl-Z and window changes and
    // passes SIGINT on to the runtime's handler.
    el_wset(editor, EL_SIGNAL, 1);
    el_wset(editor, EL_GETCFN, read_character);
    el_wset(editor, EL_PROMPT, prompt_of);
    el_wset(editor, EL_HIST, history_w, state->history);
    el_wset(editor, EL_BIND, L"^R", L"em-inc-search-prev", nullptr);
    el_wset(editor, EL_BIND, L"\\e[1~", L"ed-move-to-beg", nullptr);
    el_wset(editor, EL_BIND, L"\\e[4~", L"ed-move-to-end", nullptr);
    el_wset(editor, EL_BIND, L"\\e[3~", L"ed-delete-next-char", nullptr);
    // The user's ~/.editrc may change any of this.
    el_source(editor, nullptr);
}

}  // namespace

std::string history_file_path(const Runtime* runtime) {
    String value;
    if (runtime->getenv(String("XDG_STATE_HOME"), &value) && value.size())
        return value.u8str() + "/zobase/history";
    if (runtime->getenv(String("HOME"), &value) && value.size())
        return value.u8str() + "/.local/state/zobase/history";
    return std::string();
}

std::unique_ptr<LineEditor> LineEditor::for_terminal(Runtime* runtime) {
    if (!dynamic_cast<ConsoleScreen*>(runtime->screen)) return nullptr;
    if (!::isatty(STDIN_FILENO) || !::isatty(STDOUT_FILENO)) return nullptr;
    auto state = std::make_unique<state_st>();
    state->history = history_winit();
    state->editor = el_init("zosh", stdin, stdout, stderr);
    if (!state->history || !state->editor) return nullptr;
    HistEventW event;
    history_w(state->history, &event, H_SETSIZE, HISTORY_SIZE);
    history_w(state->history, &event, H_SETUNIQUE, 1);
    state->history_path = history_file_path(runtime);
    if (!state->history_path.empty()) history_w(state->history, &event, H_LOAD, state->history_path.c_str());
    configure(state.get());
    return std::unique_ptr<LineEditor>(new LineEditor(std::move(state)));
}

LineEditor::LineEditor(std::unique_ptr<state_st> state) : state_(std::move(state)) {}

LineEditor::~LineEditor() = default;

// Each line goes to the history file at once, so a shell that is killed
// keeps what was typed.
LineRead LineEditor::read_line(const std::string& prompt, std::string* line) {
    state_->prompt = wide_of(prompt);
    state_->interrupted = false;
    int count = 0;
    const wchar_t* text = el_wgets(state_->editor, &count);
    if (state_->interrupted) return LineRead::INTERRUPTED;
    if (!text || count <= 0) return LineRead::END;
    size_t length = static_cast<size_t>(count);
    while (length > 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r')) --length;
    *line = utf8_of(text, length);
    if (line->find_first_not_of(" \t") == std::string::npos) return LineRead::LINE;
    HistEventW event;
    std::wstring entry(text, length);
    history_w(state_->history, &event, H_ENTER, entry.c_str());
    if (!state_->history_path.empty()) {
        prepare_history_folder(state_->history_path);
        history_w(state_->history, &event, H_SAVE, state_->history_path.c_str());
    }
    return LineRead::LINE;
}

}  // namespace zobase
