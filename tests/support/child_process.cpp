// A program that a test starts, reads from and kills.
#include "tests/support/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace {

// The command line of `program`. Under an emulator it starts with the emulator, because the kernel
// cannot start a program of another architecture by itself.
std::vector<std::string> commandLine(const std::string& program) {
    std::vector<std::string> words;
    const char* const emulator = getenv("DOV_EMULATOR");
    std::istringstream in(emulator == nullptr ? "" : emulator);
    for (std::string word; in >> word;) words.push_back(word);
    words.push_back(program);
    return words;
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments) {
    std::array<int, 2> pipes = {};
    if (pipe2(pipes.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    std::vector<std::string> words = commandLine(program);
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipes[1], STDOUT_FILENO);
    const int error = posix_spawnp(&mPid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipes[1]);
    mOutput = pipes[0];
    if (error != 0) throw std::runtime_error(program + " cannot be started");
}

ChildProcess::~ChildProcess() {
    if (mPid > 0) {
        signal(SIGKILL);
        wait();
    }
    close(mOutput);
}

std::string ChildProcess::readUntil(const std::string& prefix) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (true) {
        for (size_t lineEnd = mUnread.find('\n'); lineEnd != std::string::npos;
             lineEnd = mUnread.find('\n')) {
            std::string line = mUnread.substr(0, lineEnd);
            mUnread.erase(0, lineEnd + 1);
            if (line.starts_with(prefix)) return line;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - std::chrono::steady_clock::now());
        pollfd event = {.fd = mOutput, .events = POLLIN};
        std::array<char, 4096> buffer;
        if (left.count() <= 0 || poll(&event, 1, static_cast<int>(left.count())) <= 0) {
            throw std::runtime_error("timed out waiting for a line with '" + prefix + "'");
        }
        const ssize_t length = read(mOutput, buffer.data(), buffer.size());
        if (length <= 0)
            throw std::runtime_error("the output ended before a line with '" + prefix + "'");
        mUnread.append(buffer.data(), static_cast<size_t>(length));
    }
}

void ChildProcess::signal(int number) const {
    kill(mPid, number);
}

int ChildProcess::wait(std::chrono::seconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    siginfo_t ended = {};
    while (ended.si_pid == 0 && std::chrono::steady_clock::now() < end) {
        waitid(P_PID, static_cast<id_t>(mPid), &ended, WEXITED | WNOHANG | WNOWAIT);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (ended.si_pid == 0) signal(SIGABRT);
    return wait();
}

int ChildProcess::wait() {
    int status = 0;
    waitpid(mPid, &status, 0);
    mPid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}
