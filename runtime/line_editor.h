#pragma once
// Line editing at the interactive prompt, through libedit: arrow keys,
// Home/End, Ctrl-R search, and a history kept across runs. Only a terminal
// gets it; redirected input is read as plain lines by the screen.
#include <memory>
#include <string>

namespace zobase {

class Runtime;

enum class LineRead { LINE, INTERRUPTED, END };

class LineEditor {
public:
    // The editor for the runtime's console screen when standard input and
    // output are both a terminal; null otherwise.
    static std::unique_ptr<LineEditor> for_terminal(Runtime* runtime);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    // Shows the prompt and reads one line, UTF-8 without its line end. A
    // Ctrl-C while the line is typed drops the line: INTERRUPTED.
    LineRead read_line(const std::string& prompt, std::string* line);

    struct state_st;

private:
    explicit LineEditor(std::unique_ptr<state_st> state);
    std::unique_ptr<state_st> state_;
};

// Where the history lives: $XDG_STATE_HOME/zobase/history, else
// $HOME/.local/state/zobase/history, from the runtime's environment; empty
// when neither variable is known.
std::string history_file_path(const Runtime* runtime);

}  // namespace zobase
