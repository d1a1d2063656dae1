// The two streams that the program writes to, in whole lines from any thread.
#include "dovctl/console.h"

#include <cerrno>
#include <cstring>

#include "dovctl/text.h"

namespace dovctl {

static void writeLine(const Output& output, std::string_view text) {
    output.stream << (output.terminal ? printable(text, true) : text);
    if (!text.ends_with('\n')) output.stream << '\n';
    output.stream.flush();
}

bool Console::print(std::string_view text) {
    std::lock_guard lock(mMutex);
    if (!mProblem.empty()) return false;
    errno = 0;
    writeLine(mOut, text);
    if (mOut.stream) return true;
    mProblem = errno != 0 ? std::strerror(errno) : "the stream is closed";
    return false;
}

void Console::say(std::string_view text) {
    std::lock_guard lock(mMutex);
    writeLine(mErr, text);
}

void Console::fail(std::string_view text) {
    say(std::string("dovctl: ").append(text));
}

std::string Console::outputProblem() const {
    std::lock_guard lock(mMutex);
    return mProblem;
}

}  // namespace dovctl
