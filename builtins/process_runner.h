#pragma once
// Running another program: exec, system and RUN start it with pipes on its
// standard streams and read both outputs until it ends, feeding it its input
// at the same time, so that no side waits on a full pipe.
#include <functional>
#include <string>
#include <vector>

namespace zobase {

enum ProcessStream { PROCESS_OUTPUT = 1, PROCESS_ERRORS = 2 };

struct process_request_st {
    std::vector<std::string> argv;  // argv[0] is looked up along PATH
    const std::string* input = nullptr;  // null: no input (/dev/null)
    bool inherit_input = false;          // the process's own standard input instead
};

// Receives the outputs piece by piece, as they arrive.
typedef std::function<void(ProcessStream stream, const char* bytes, size_t size)> process_sink;

// Runs the program to its end and returns its exit status, 128 plus the
// signal's number when a signal ended it. False, with errno set, when it
// could not be started (a missing program is ENOENT).
bool run_process(const process_request_st& request, const process_sink& sink, int* status);

// The words of a command line as a POSIX shell splits them, without any
// expansion: blanks separate, '...' is literal, "..." keeps \" \\ \$ \`,
// and a backslash outside quotes takes the next character. False for an
// unterminated quote.
bool split_arguments(const std::string& line, std::vector<std::string>* words);

// One word quoted so that split_arguments and /bin/sh read it back unchanged.
std::string quote_argument(const std::string& word);

}  // namespace zobase
