// A program that a test starts, reads from and kills.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

class ChildProcess {
  public:
    // Starts `program` with the test's environment and connects its standard output to the test.
    explicit ChildProcess(const std::string& program,
                          const std::vector<std::string>& arguments = {});
    // Kills the program if it is still running.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Reads lines until one starts with `prefix`, and returns that line. Throws if the output ends
    // first, or after ten seconds.
    std::string readUntil(const std::string& prefix);
    void signal(int number) const;
    // Waits until the program ends. Returns its exit code, or minus the signal that ended it.
    int wait();
    // Like wait(), but sends SIGABRT if the program has not ended after `time`.
    int wait(std::chrono::seconds time);

    pid_t pid() const { return mPid; }

  private:
    pid_t mPid = -1;
    int mOutput = -1;
    std::string mUnread;
};
