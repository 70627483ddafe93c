// Starting a worker, and talking with it over two pipes.

#include "bench/compare/worker.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace tavo::bench {

Worker::Worker(const std::string& program) : program_(program) {
    // A worker that has ended is told by its missing answer.
    std::signal(SIGPIPE, SIG_IGN);
    int toChild[2], fromChild[2];
    if (pipe2(toChild, O_CLOEXEC) != 0 || pipe2(fromChild, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for " + program);
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, toChild[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fromChild[1], STDOUT_FILENO);
    char* const arguments[] = {program_.data(), nullptr};
    const int failure =
        posix_spawn(&child_, program_.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(toChild[0]);
    close(fromChild[1]);
    requests_.reset(fdopen(toChild[1], "w"));
    answers_.reset(fdopen(fromChild[0], "r"));
    if (failure != 0) child_ = -1;
    if (failure != 0 || !requests_ || !answers_) {
        throw std::runtime_error("cannot start " + program);
    }
}

Worker::~Worker() {
    // The end of the requests ends the program.
    requests_.reset();
    if (child_ > 0) waitpid(child_, nullptr, 0);
}

std::string Worker::Ask(const std::string& line) {
    char answer[256];
    const bool isSent = std::fprintf(requests_.get(), "%s\n", line.c_str()) > 0 &&
                        std::fflush(requests_.get()) == 0;
    if (!isSent || !std::fgets(answer, sizeof answer, answers_.get())) {
        throw std::runtime_error(program_ + " has ended");
    }
    std::string text = answer;
    if (!text.empty() && text.back() == '\n') text.pop_back();
    if (text.rfind("error", 0) == 0) throw std::runtime_error(program_ + ": " + text);
    return text;
}

}  // namespace tavo::bench
