// The two streams that the program writes to, in whole lines from any thread.
#include "dovctl/console.h"

#include <string>

namespace dovctl {

static void writeLine(std::ostream& stream, std::string_view text) {
    stream << text;
    if (!text.ends_with('\n')) stream << '\n';
    stream.flush();
}

void Console::print(std::string_view text) {
    std::lock_guard lock(mMutex);
    writeLine(mOut, text);
}

void Console::say(std::string_view text) {
    std::lock_guard lock(mMutex);
    writeLine(mErr, text);
}

void Console::fail(std::string_view text) {
    say(std::string("dovctl: ").append(text));
}

}  // namespace dovctl
