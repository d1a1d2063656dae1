// A program that a test starts, reads from and kills.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

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
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Reads lines until one starts with `prefix`, and returns that line. Throws if the output ends
    // first, or after a minute.
    std::string readUntil(const std::string& prefix);
    // Reads `count` lines; fewer if the output ends first, or after a minute.
    std::vector<std::string> lines(size_t count);
    // The lines that have arrived and were not read.
    std::vector<std::string> unread();

    void signal(int number) const { kill(mPid, number); }
    // Waits until the program ends, and sends SIGABRT if it has not ended after `time`. Returns its
    // exit code, or minus the signal that ended it.
    int wait(std::chrono::seconds time = std::chrono::minutes(1));

    pid_t pid() const { return mPid; }

  private:
    using Time = std::chrono::steady_clock::time_point;

    // The next line; none if the output ends first, or does not have it at `end`.
    std::optional<std::string> line(Time end);

    pid_t mPid = -1;
    int mOutput = -1;
    std::string mUnread;
};
