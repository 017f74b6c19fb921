// Starting programs with posix_spawn and talking to them through pipes.
#include "builtins/process_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

extern char** environ;

namespace zobase {

namespace {

struct pipe_st {
    int read_end = -1;
    int write_end = -1;
};

void close_fd(int& fd) {
    if (fd >= 0) ::close(fd);
    fd = -1;
}

bool make_pipe(pipe_st* p) {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) return false;
    p->read_end = fds[0];
    p->write_end = fds[1];
    return true;
}

// The child's standard streams; the parent's ends stay close-on-exec.
struct child_pipes_st {
    pipe_st input, output, errors;

    ~child_pipes_st() {
        for (pipe_st* p : {&input, &output, &errors}) {
            close_fd(p->read_end);
            close_fd(p->write_end);
        }
    }
};

bool spawn(const process_request_st& request, child_pipes_st& pipes, pid_t* pid) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (request.input) posix_spawn_file_actions_adddup2(&actions, pipes.input.read_end, STDIN_FILENO);
    else if (!request.inherit_input)
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, pipes.output.write_end, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, pipes.errors.write_end, STDERR_FILENO);
    std::vector<char*> argv;
    for (const std::string& word : request.argv) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    int failed = posix_spawnp(pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed) errno = failed;
    return failed == 0;
}

// Writes what the pipe takes now; a reader that has gone ends the input.
// SIGPIPE is held back on this thread meanwhile, so it can't end the process.
void feed(int& fd, const std::string& input, size_t* written) {
    sigset_t pipe_signal, saved;
    sigemptyset(&pipe_signal);
    sigaddset(&pipe_signal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_signal, &saved);
    ssize_t n = ::write(fd, input.data() + *written, input.size() - *written);
    if (n > 0) *written += static_cast<size_t>(n);
    if ((n < 0 && errno != EINTR && errno != EAGAIN) || *written == input.size()) close_fd(fd);
    if (n < 0 && errno == EPIPE) {
        timespec no_wait{0, 0};
        sigtimedwait(&pipe_signal, nullptr, &no_wait);
    }
    pthread_sigmask(SIG_SETMASK, &saved, nullptr);
}

// Passes what the pipe holds to the sink; closes it at its end.
void drain(int& fd, ProcessStream stream, const process_sink& sink) {
    char buffer[65536];
    ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n > 0) sink(stream, buffer, static_cast<size_t>(n));
    else if (n == 0 || errno != EINTR) close_fd(fd);
}

void exchange(child_pipes_st& pipes, const std::string* input, const process_sink& sink) {
    size_t written = 0;
    if (input) ::fcntl(pipes.input.write_end, F_SETFL, O_NONBLOCK);
    while (pipes.output.read_end >= 0 || pipes.errors.read_end >= 0) {
        pollfd watched[3];
        nfds_t count = 0;
        int* owners[3];
        auto watch = [&](int& fd, short events) {
            if (fd < 0) return;
            watched[count] = {fd, events, 0};
            owners[count++] = &fd;
        };
        watch(pipes.output.read_end, POLLIN);
        watch(pipes.errors.read_end, POLLIN);
        if (input) watch(pipes.input.write_end, POLLOUT);
        if (::poll(watched, count, -1) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        for (nfds_t i = 0; i < count; ++i) {
            if (!watched[i].revents) continue;
            int& fd = *owners[i];
            if (&fd == &pipes.input.write_end) feed(fd, *input, &written);
            else drain(fd, &fd == &pipes.output.read_end ? PROCESS_OUTPUT : PROCESS_ERRORS, sink);
        }
    }
}

int exit_status(int wait_status) {
    if (WIFEXITED(wait_status)) return WEXITSTATUS(wait_status);
    if (WIFSIGNALED(wait_status)) return 128 + WTERMSIG(wait_status);
    return -1;
}

}  // namespace

bool run_process(const process_request_st& request, const process_sink& sink, int* status) {
    if (request.argv.empty()) {
        errno = ENOENT;
        return false;
    }
    child_pipes_st pipes;
    if ((request.input && !make_pipe(&pipes.input)) || !make_pipe(&pipes.output) || !make_pipe(&pipes.errors))
        return false;
    pid_t pid;
    if (!spawn(request, pipes, &pid)) return false;
    // The child holds its own copies; the parent keeps only its ends.
    close_fd(pipes.input.read_end);
    close_fd(pipes.output.write_end);
    close_fd(pipes.errors.write_end);
    exchange(pipes, request.input, sink);
    int wait_status = 0;
    while (::waitpid(pid, &wait_status, 0) < 0 && errno == EINTR) {
    }
    *status = exit_status(wait_status);
    return true;
}

bool split_arguments(const std::string& line, std::vector<std::string>* words) {
    std::string word;
    bool in_word = false;
    for (size_t i = 0; i < line.size(); ++i) {
        char c = line[i];
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            if (in_word) words->push_back(word);
            word.clear();
            in_word = false;
            continue;
        }
        in_word = true;
        if (c == '\\') {
            if (++i < line.size()) word += line[i];
        } else if (c == '\'') {
            size_t end = line.find('\'', i + 1);
            if (end == std::string::npos) return false;
            word.append(line, i + 1, end - i - 1);
            i = end;
        } else if (c == '"') {
            for (++i;; ++i) {
                if (i >= line.size()) return false;
                if (line[i] == '"') break;
                if (line[i] == '\\' && i + 1 < line.size() && std::strchr("\"\\$`", line[i + 1])) ++i;
                word += line[i];
            }
        } else {
            word += c;
        }
    }
    if (in_word) words->push_back(word);
    return true;
}

std::string quote_argument(const std::string& word) {
    static const char safe[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_@%+=:,./-";
    if (!word.empty() && word.find_first_not_of(safe) == std::string::npos) return word;
    std::string quoted = "'";
    for (char c : word) {
        if (c == '\'') quoted += "'\\''";
        else quoted += c;
    }
    return quoted + "'";
}

}  // namespace zobase
