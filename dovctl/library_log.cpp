// Where the library's log lines go while a command runs.
#include "dovctl/library_log.h"

#include <mutex>
#include <string>

#include <android-base/thread_annotations.h>
#include <android/log.h>

namespace dovctl {
namespace {

// The logger is a plain function, so what it writes to has to be found from here.
struct Sink {
    std::mutex mutex;
    Console* console GUARDED_BY(mutex) = nullptr;
};

Sink& sink() {
    // Never destroyed: binder threads may log until the process is gone.
    static Sink& instance = *new Sink;
    return instance;
}

char letterOf(int32_t priority) {
    constexpr std::string_view kLetters = "??VDIWEFS";
    const auto index = static_cast<size_t>(priority);
    return index < kLetters.size() ? kLetters[index] : '?';
}

const char* orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

void writeMessage(const __android_log_message* message) {
    std::lock_guard lock(sink().mutex);
    if (sink().console == nullptr) return;
    sink().console->say(std::string(1, letterOf(message->priority))
                                .append(" ")
                                .append(orEmpty(message->tag))
                                .append(" ")
                                .append(orEmpty(message->message)));
}

void setConsole(Console* console) {
    std::lock_guard lock(sink().mutex);
    sink().console = console;
}

}  // namespace

LibraryLog::LibraryLog(Console& console, bool verbose) {
    setConsole(verbose ? &console : nullptr);
    __android_log_set_logger(writeMessage);
}

LibraryLog::~LibraryLog() {
    setConsole(nullptr);
}

}  // namespace dovctl
