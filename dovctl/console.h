// The two streams that the program writes to, in whole lines from any thread.
#pragma once

#include <mutex>
#include <ostream>
#include <string_view>

#include <android-base/thread_annotations.h>

namespace dovctl {

// Every function writes and flushes one line, or a text that ends with its own newline. Callbacks
// and the library's log arrive on binder threads while a command writes, hence the lock.
class Console {
  public:
    Console(std::ostream& out, std::ostream& err) : mOut(out), mErr(err) {}

    // A result, to `out`: what a script reads.
    void print(std::string_view text);
    // A remark to the person in front of it, to `err`.
    void say(std::string_view text);
    // What went wrong, to `err` behind the program's name.
    void fail(std::string_view text);

  private:
    std::mutex mMutex;
    std::ostream& mOut GUARDED_BY(mMutex);
    std::ostream& mErr GUARDED_BY(mMutex);
};

}  // namespace dovctl
