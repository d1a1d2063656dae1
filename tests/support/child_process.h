// A program that a test starts, reads from and kills.
#pragma once

#include <signal.h>
#include <stdint.h>
#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <android-base/unique_fd.h>

class ChildProcess {
  public:
    enum class Errors { kNotRead, kRead };

    // Starts `program` with the test's environment and connects its standard output to the test.
    // With Errors::kRead its standard error goes there too.
    explicit ChildProcess(const std::string& program,
                          const std::vector<std::string>& arguments = {},
                          Errors errors = Errors::kNotRead);
    // Kills the program if it is still running.
    ~ChildProcess();

    // Reads lines until one starts with `prefix`, and returns that line. Throws if the output ends
    // first, or after a minute.
    std::string readUntil(const std::string& prefix);
    // Reads `count` lines; fewer if the output ends first, or after `time`.
    std::vector<std::string> lines(size_t count, std::chrono::seconds time = kLongestWait);
    // The lines that have arrived and were not read.
    std::vector<std::string> unread() { return lines(SIZE_MAX, std::chrono::seconds(0)); }

    void signal(int number) const { kill(mPid, number); }
    // Waits until the program ends, and sends SIGABRT if it has not ended after `time`. Returns its
    // exit code, or minus the signal that ended it.
    int wait(std::chrono::seconds time = kLongestWait);

    pid_t pid() const { return mPid; }

  private:
    static constexpr std::chrono::minutes kLongestWait{1};

    // The next line; none if the output ends first, or does not have it at `end`.
    std::optional<std::string> line(std::chrono::steady_clock::time_point end);

    pid_t mPid = -1;
    android::base::unique_fd mOutput;
    std::string mUnread;
};
