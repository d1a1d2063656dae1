// Catches what the library under test logs.
#include "tests/support/log_capture.h"

#include <mutex>
#include <ostream>
#include <set>
#include <utility>

namespace {

std::mutex gMutex;
std::vector<LogLine> gLines;

// Whatever has another tag comes from the binder stack or the test's own service manager.
const std::set<std::string> kLibraryTags = {"MIRXFramework-lib-vendor", "MirxFramework-lib-vendor",
                                            "[DOV_CLIENT]", "[DOV_CLIENT_WRAPPER]", "(null)"};

void capture(const __android_log_message* message) {
    const std::string tag = message->tag == nullptr ? "(null)" : message->tag;
    if (!kLibraryTags.contains(tag)) return;
    std::lock_guard lock(gMutex);
    gLines.push_back({message->priority, tag, message->message});
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
    return out << line.priority << " " << line.tag << ": " << line.text;
}

LogCapture::LogCapture() {
    take();
    __android_log_set_logger(capture);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

LogCapture::~LogCapture() {
    __android_log_set_logger([](const __android_log_message*) {});
}

std::vector<LogLine> LogCapture::take() {
    std::lock_guard lock(gMutex);
    return std::exchange(gLines, {});
}
