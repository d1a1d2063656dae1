// The two streams that the program writes to, in whole lines from any thread.
#pragma once

#include <mutex>
#include <ostream>
#include <string>
#include <string_view>

#include <android-base/thread_annotations.h>

namespace dovctl {

// A stream, and whether it is a terminal, which gets no control characters.
struct Output {
    std::ostream& stream;
    bool terminal = false;
};

// Every function writes and flushes one line, or a text that ends with its own newline. Callbacks
// and the library's log arrive on binder threads while a command writes, hence the lock.
class Console {
  public:
    Console(Output out, Output err) : mOut(out), mErr(err) {}

    // A result, to `out`: what a script reads. Returns whether it could be written.
    bool print(std::string_view text);
    // A remark to the user, to `err`.
    void say(std::string_view text);
    // Writes an error to `err` after the program's name.
    void fail(std::string_view text);

    // Why a result could not be written; empty if all could. Nothing is written after that.
    std::string outputProblem() const;

  private:
    mutable std::mutex mMutex;
    Output mOut GUARDED_BY(mMutex);
    Output mErr GUARDED_BY(mMutex);
    std::string mProblem GUARDED_BY(mMutex);
};

}  // namespace dovctl
