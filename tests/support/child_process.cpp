// A program that a test starts, reads from and kills.
#include "tests/support/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <climits>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace {

constexpr std::chrono::minutes kLongestWait(1);

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

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           Errors errors) {
    std::array<int, 2> pipes = {};
    if (pipe2(pipes.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    // A test may read the output late; until then it must not block the program.
    fcntl(pipes[0], F_SETPIPE_SZ, 1 << 20);
    std::vector<std::string> words = commandLine(program);
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipes[1], STDOUT_FILENO);
    if (errors == Errors::kRead) {
        posix_spawn_file_actions_adddup2(&actions, pipes[1], STDERR_FILENO);
    }
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

std::optional<std::string> ChildProcess::line(Time end) {
    size_t length = 0;
    while ((length = mUnread.find('\n')) == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - std::chrono::steady_clock::now());
        pollfd event = {.fd = mOutput, .events = POLLIN};
        std::array<char, 4096> buffer;
        const auto patience = std::clamp<int64_t>(left.count(), 0, INT_MAX);
        if (poll(&event, 1, static_cast<int>(patience)) <= 0) return {};
        const ssize_t bytes = read(mOutput, buffer.data(), buffer.size());
        if (bytes <= 0) return {};
        mUnread.append(buffer.data(), static_cast<size_t>(bytes));
    }
    std::string line = mUnread.substr(0, length);
    mUnread.erase(0, length + 1);
    // A sanitizer's symbolizer complains on the program's standard error.
    if (line.starts_with("LLVMSymbolizer: ")) return this->line(end);
    return line;
}

std::string ChildProcess::readUntil(const std::string& prefix) {
    const Time end = std::chrono::steady_clock::now() + kLongestWait;
    while (const auto next = line(end)) {
        if (next->starts_with(prefix)) return *next;
    }
    throw std::runtime_error("the output ended, or a minute has passed, before a line with '" +
                             prefix + "'");
}

std::vector<std::string> ChildProcess::lines(size_t count) {
    const Time end = std::chrono::steady_clock::now() + kLongestWait;
    std::vector<std::string> lines;
    for (auto next = line(end); next; next = line(end)) {
        lines.push_back(*next);
        if (lines.size() == count) break;
    }
    return lines;
}

std::vector<std::string> ChildProcess::unread() {
    std::vector<std::string> lines;
    while (const auto next = line(Time())) lines.push_back(*next);
    return lines;
}

int ChildProcess::wait(std::chrono::seconds time) {
    const Time end = std::chrono::steady_clock::now() + time;
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(mPid, &status, WNOHANG)) == 0 &&
           std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (ended == 0) {
        signal(SIGABRT);
        waitpid(mPid, &status, 0);
    }
    mPid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}
