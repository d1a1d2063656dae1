// A program that a test runs beside itself, to read what it prints and to kill it.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

class ChildProcess {
  public:
    // Starts `program` with the environment of the test; its standard output is the test's to read.
    explicit ChildProcess(const std::string& program,
                          const std::vector<std::string>& arguments = {});
    // Kills it if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Reads lines until one starts with `prefix` and returns it. Throws when the output ends
    // before, or after ten seconds.
    std::string readUntil(const std::string& prefix);
    void signal(int number) const;
    // Waits for its end; returns the exit code, or minus the signal that ended it.
    int wait();
    // The same, but ends it with SIGABRT when it has not ended in time.
    int wait(std::chrono::seconds time);

    pid_t pid() const { return mPid; }

  private:
    pid_t mPid = -1;
    int mOutput = -1;
    std::string mUnread;
};
