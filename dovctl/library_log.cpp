// The log of the library and of libbinder while a command runs.
#include "dovctl/library_log.h"

#include <algorithm>
#include <deque>
#include <mutex>

#include <android-base/stringprintf.h>
#include <android-base/thread_annotations.h>
#include <android/log.h>

namespace dovctl {
namespace {

constexpr size_t kMostProblems = 100;

// The logger is a plain function without a context, so its state is global.
struct Sink {
    std::mutex mutex;
    Console* console GUARDED_BY(mutex) = nullptr;
    std::deque<std::string> problems GUARDED_BY(mutex);
};

Sink& sink() {
    // Never destroyed: binder threads may log until the process is gone.
    static Sink& instance = *new Sink;
    return instance;
}

const char* orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

void writeMessage(const __android_log_message* message) {
    std::lock_guard lock(sink().mutex);
    if (message->priority >= ANDROID_LOG_WARN) {
        if (sink().problems.size() == kMostProblems) sink().problems.pop_front();
        sink().problems.emplace_back(orEmpty(message->message));
    }
    if (sink().console == nullptr) return;
    const char letter = "??VDIWEFS"[std::clamp(message->priority, 0, 8)];
    sink().console->say(android::base::StringPrintf("%c %s %s", letter, orEmpty(message->tag),
                                                    orEmpty(message->message)));
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
    forget();
}

std::vector<std::string> LibraryLog::problems() const {
    std::lock_guard lock(sink().mutex);
    return {sink().problems.begin(), sink().problems.end()};
}

bool LibraryLog::has(std::string_view part) const {
    const std::vector<std::string> all = problems();
    return std::any_of(all.begin(), all.end(), [part](const std::string& text) {
        return text.find(part) != std::string::npos;
    });
}

void LibraryLog::forget() {
    std::lock_guard lock(sink().mutex);
    sink().problems.clear();
}

}  // namespace dovctl
