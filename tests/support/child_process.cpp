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
#include <stdexcept>

#include <android-base/strings.h>

#include "tests/support/eventually.h"

using std::chrono::steady_clock;

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           Errors errors) {
    android::base::unique_fd input;
    if (!Pipe(&mOutput, &input)) throw std::runtime_error("no pipe");
    // A test may read the output late; until then it must not block the program.
    fcntl(mOutput.get(), F_SETPIPE_SZ, 1 << 20);
    // Under an emulator the command line starts with the emulator, because the kernel cannot start
    // a program of another architecture by itself.
    const char* const emulator = getenv("DOV_EMULATOR");
    auto words = android::base::Tokenize(emulator == nullptr ? "" : emulator, " ");
    words.push_back(program);
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.get(), STDOUT_FILENO);
    if (errors == Errors::kRead) {
        posix_spawn_file_actions_adddup2(&actions, input.get(), STDERR_FILENO);
    }
    const int error = posix_spawnp(&mPid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error(program + " cannot be started");
}

ChildProcess::~ChildProcess() {
    if (mPid <= 0) return;
    signal(SIGKILL);
    wait();
}

std::optional<std::string> ChildProcess::line(steady_clock::time_point end) {
    size_t length = 0;
    while ((length = mUnread.find('\n')) == std::string::npos) {
        const std::chrono::duration<double, std::milli> left = end - steady_clock::now();
        pollfd event = {.fd = mOutput.get(), .events = POLLIN};
        std::array<char, 4096> buffer;
        if (poll(&event, 1, std::max(0, static_cast<int>(left.count()))) <= 0) return {};
        const ssize_t bytes = read(mOutput.get(), buffer.data(), buffer.size());
        if (bytes <= 0) return {};
        mUnread.append(buffer.data(), static_cast<size_t>(bytes));
    }
    std::string line = mUnread.substr(0, length);
    mUnread.erase(0, length + 1);
    // A sanitizer's symbolizer complains on the program's standard error, and aborts if the program
    // ends before it. Programs with libc++ use other words.
    for (const char* const words : {"LLVM", "pure virtual method called", "terminate called"})
        if (line.starts_with(words)) return this->line(end);
    return line;
}

std::string ChildProcess::readUntil(const std::string& prefix) {
    const auto end = steady_clock::now() + kLongestWait;
    while (const auto next = line(end)) {
        if (next->starts_with(prefix)) return *next;
    }
    throw std::runtime_error("the output ended, or a minute has passed, before a line with '" +
                             prefix + "'");
}

std::vector<std::string> ChildProcess::lines(size_t count, std::chrono::seconds time) {
    const auto end = steady_clock::now() + time;
    std::vector<std::string> lines;
    while (lines.size() < count) {
        const auto next = line(end);
        if (!next) break;
        lines.push_back(*next);
    }
    return lines;
}

int ChildProcess::wait(std::chrono::seconds time) {
    int status = 0;
    if (!eventually([&] { return waitpid(mPid, &status, WNOHANG) != 0; }, time)) {
        signal(SIGABRT);
        waitpid(mPid, &status, 0);
    }
    mPid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}
